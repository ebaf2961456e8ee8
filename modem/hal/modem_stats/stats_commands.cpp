// SPDX-License-Identifier: Apache-2.0
#include "stats_commands.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "debug_info.h"
#include "help.h"
#include "serving_cell.h"
#include "unpack.h"
#include "usage.h"

namespace {

constexpr int sample_length = 48;

/* A record of version 0x30001, and zeros: the engine reads 16 bytes for each field. */
uint8_t sample[UNPK_MEMORY_SIZE] = {
    0x01, 0x00, 0x03, 0x00, 0x01, 0x49, 0x27, 0x03, 0xc7, 0xb4, 0xfc, 0x60, 0x17, 0x01, 0x4f, 0x06,
    0x6e, 0x8b, 0x06, 0x00, 0xe8, 0xeb, 0x05, 0x00, 0x14, 0x00, 0x14, 0x00, 0xc7, 0xb4, 0xfc, 0x60,
    0x07, 0x00, 0x00, 0x00, 0xcc, 0x01, 0x02, 0x0b, 0x00, 0x02, 0x0a, 0x8a, 0x76, 0x00, 0x01, 0x00,
};

bool argument_there(int argc) {
    if (argc <= 3)
        usage_note(GROUP_MODEM_STATS, NOTE_TOO_FEW_PARAMETERS);
    return argc > 3;
}

/* Both tests return 0 for a usage error, else 1. */
int orvik_test_modem_stats_parsing_process(int argc, char** argv) {
    if (!argument_there(argc))
        return 0;
    g_pk_print_flag = std::atoi(argv[3]);
    std::printf("length = %d, print_flag = %d\n", sample_length, g_pk_print_flag);
    orvik_test_modem_stats_parsing_process_do(0, sample_length, 0, sample);
    return 1;
}

int orvik_test_modem_stats_get_debug_info(int argc, char** argv) {
    if (!argument_there(argc))
        return 0;
    orvik_test_modem_stats_get_debug_info_do(std::atoi(argv[3]));
    return 1;
}

} // namespace

void orvik_test_modem_stats_parsing_process_do(int, unsigned short, unsigned char,
                                               unsigned char* payload) {
    if (MODEM_STATS_DATA_UNPK_START(payload, 0))
        modem_stats_parse_xxxx_diag_xxxx(0, nullptr, nullptr);
}

int orvik_test_modem_stats_do(int argc, char** argv) {
    if (!usage_good(GROUP_MODEM_STATS, argc, argv, 3))
        return show_help(GROUP_MODEM_STATS);
    switch (const int type = std::atoi(argv[2])) {
    case 1:
        if (const int result = orvik_test_modem_stats_get_debug_info(argc, argv))
            return result;
        std::puts("orvik_test_modem_stats_get_debug_info FAIL");
        break;
    case 0:
        if (const int result = orvik_test_modem_stats_parsing_process(argc, argv))
            return result;
        std::puts("orvik_test_modem_stats_parsing_process FAIL");
        break;
    default:
        std::printf("invalid type = %d\n", type);
    }
    return show_help(GROUP_MODEM_STATS);
}
