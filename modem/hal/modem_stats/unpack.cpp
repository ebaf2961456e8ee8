#include "unpack.h"

#include <cstdarg>
#include <cstdio>

const uint8_t* g_pk_data_ptr;
int32_t g_pk_data_len_max;
int32_t g_pk_data_base;
int32_t g_pk_data_base_bit;
uint32_t g_pk_data_cnt;
uint32_t g_pk_data_id;
int32_t g_pk_print_flag;
uint64_t g_pk_version_not_support_num;

bool MODEM_STATS_DATA_UNPK_START(const uint8_t* payload, uint32_t id) noexcept {
    if (payload == nullptr)
        return unpk_fail("MODEM_STATS_DATA_UNPK_START, payload is NULL, id(0x%x)", id), false;
    g_pk_data_id = id;
    g_pk_data_len_max = UNPK_READ_MAX;
    g_pk_data_ptr = payload;
    g_pk_data_base = 0;
    g_pk_data_base_bit = 0;
    g_pk_data_cnt = 0;
    return true;
}

void unpk_line(const char* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
    std::putchar('\n');
}

void unpk_fail(const char* format, ...) noexcept {
    va_list args;
    va_start(args, format);
    std::vprintf(format, args);
    va_end(args);
    std::putchar('\n');
}

void unpk_version_not_support(uint32_t version, const char* parser) noexcept {
    ++g_pk_version_not_support_num;
    return unpk_fail("VERSION_NOT_SUPPORT, version(%d), not_support_num(%lu), name(%s), id(0x%x)",
                     version, g_pk_version_not_support_num, parser, g_pk_data_id);
}

unpk_hex_text::unpk_hex_text(uint64_t value) noexcept : text("0x") {
    char* end = text + 2;
    for (; value != 0; value >>= 8)
        end += std::snprintf(end, 3, "%02X", static_cast<unsigned>(value & 0xFF));
}
