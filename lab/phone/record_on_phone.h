// SPDX-License-Identifier: Apache-2.0
/* kvt-lab record on a phone. */
#pragma once

#include "verbs.h"

namespace lab::adb {

/* Runs kvt on the phone under the recorder that was deployed; the tape, a name, is kept with the
 * others of the phone, from where kvt-lab pull gets it. Returns the exit status. */
int record_on_phone(const Common& common, const RecordOptions& options);

} // namespace lab::adb
