/* The modem API. */
#pragma once
