#include "orvik_diag_send.h"

#include <string>

#include "log_lines.h"

namespace {

constexpr uint32_t hex_dump_max = 4096;

} // namespace

void orvik_print_data_with_hex(const uint8_t* data, uint32_t len) {
    if (data == nullptr) {
        ORVIK_DBG("print_data_with_hex, data is null");
        return;
    }
    if (len < 1 || len > hex_dump_max) {
        ORVIK_DBG("print_data_with_hex, invalid data len(%d)", len);
        return;
    }
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text;
    text.reserve(len * 3);
    for (uint32_t i = 0; i < len; ++i) {
        if (i > 0)
            text += ' ';
        text += digits[data[i] >> 4];
        text += digits[data[i] & 15];
    }
    ORVIK_DBG("data hex show, len(%d), data: %s", len, text.c_str());
}
