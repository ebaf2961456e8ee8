// SPDX-License-Identifier: Apache-2.0
/* A record as text, one named value a line, with its unit: "rsrp_rx0 -95.5 dBm". */
#pragma once

#include <string>

#include "qmi_vs_records.h"

#include "phone/bytes.h"

namespace simphone {

/* The fields that lie within bytes. */
std::string text_of_record(vs_records::Record record, unsigned version, ByteView bytes);

/* Puts the values that the text names into the record, of its full length; others stay as they are.
 * What can't be read is told as of that file, and left out. "#" starts a comment. */
void apply_text(const std::string& file, const std::string& text, vs_records::Record record,
                unsigned version, Bytes& bytes);

} // namespace simphone
