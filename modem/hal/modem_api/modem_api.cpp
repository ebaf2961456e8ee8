#include "modem_api.h"
