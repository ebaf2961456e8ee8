// SPDX-License-Identifier: Apache-2.0
/* Numbers with check digits. */
#pragma once

#include <string>

namespace lab::workbench {

/* The EID with its two check digits made right: `digits` are 32 of them, or the 30 in front. Empty
 * when they are not. */
std::string checked_eid(const std::string& digits);

/* The NV item that holds an IMEI: `digits` are 14, the check digit is added, or 15 with the right
 * one. Empty when they are not. */
std::string imei_item(const std::string& digits);

/* The digits of such an item; empty when it holds none. */
std::string imei_digits(const std::string& item);

} // namespace lab::workbench
