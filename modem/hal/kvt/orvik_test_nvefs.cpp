// SPDX-License-Identifier: Apache-2.0
/* Group 4: NV items and EFS files. */
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "dispatch.h"
#include "handlers.h"
#include "orvik_extend_cmn.h"
#include "orvik_extend_nvefs.h"
#include "print_data.h"
#include "usage.h"

namespace {

constexpr int fixed_argc = 5;       /* group, sub-command, sub, item or path */
constexpr size_t buffer_size = 365; /* bytes read, and data arguments stored */

/* Published: an NV write states the count typed, although only buffer_size bytes are stored. The
 * rest goes out as zeros, up to the size of an item. */
constexpr size_t write_buffer_size = ORVIK_NV_DATA_MAX;
static_assert(write_buffer_size >= buffer_size);

uint32_t sub_of(char** argv) { return std::atoi(argv[3]) != 0 ? 1 : 0; }
uint32_t nv_id_of(char** argv) { return static_cast<uint32_t>(std::atoi(argv[4])); }
uint32_t path_len_of(char** argv) { return static_cast<uint32_t>(std::strlen(argv[4])); }

int checked(int result) {
    if (result != 0)
        std::puts("orvik_extend_qmi_send_sync fail, REQUEST_ID_EFS");
    return result;
}

bool argc_fits(int argc) {
    if (argc == fixed_argc)
        return true;
    usage_note(GROUP_NVEFS, NOTE_NEED_INPUTS, fixed_argc);
    return false;
}

/* Reads an NV item or an EFS file and shows the data. */
int read_and_show(int argc, char** argv, bool nv) {
    if (!argc_fits(argc))
        return ORVIK_USAGE_ERROR;
    std::array<uint8_t, buffer_size> buffer{};
    uint32_t length = buffer_size;
    const int result =
        nv ? orvik_nv_read(sub_of(argv), nv_id_of(argv), buffer.data(), &length)
           : orvik_efs_read(sub_of(argv), argv[4], path_len_of(argv), buffer.data(), &length);
    if (result == 0)
        print_read_data({buffer.data(), length});
    return checked(result);
}

/* Stores the data arguments, decimal, and writes them to an NV item or an EFS file. */
int store_and_write(int argc, char** argv, bool nv) {
    if (argc <= fixed_argc) {
        usage_note(GROUP_NVEFS, NOTE_TOO_FEW_INPUTS);
        return ORVIK_USAGE_ERROR;
    }
    std::array<uint8_t, write_buffer_size> buffer{};
    const auto typed = static_cast<uint32_t>(argc - fixed_argc);
    const uint32_t stored = std::min<uint32_t>(typed, buffer_size);
    for (uint32_t i = 0; i < stored; ++i)
        buffer[i] = static_cast<uint8_t>(std::atoi(argv[fixed_argc + i]));
    return checked(
        nv ? orvik_nv_write_ex(sub_of(argv), nv_id_of(argv), buffer.data(), typed)
           : orvik_efs_write(sub_of(argv), argv[4], path_len_of(argv), buffer.data(), stored));
}

int orvik_nvefs_test_nv_read(int argc, char** argv) { return read_and_show(argc, argv, true); }

int orvik_nvefs_test_nv_write(int argc, char** argv) { return store_and_write(argc, argv, true); }

int orvik_nvefs_test_nv_delete(int argc, char** argv) {
    if (!argc_fits(argc))
        return ORVIK_USAGE_ERROR;
    return checked(orvik_nv_delete(sub_of(argv), nv_id_of(argv)));
}

int orvik_nvefs_test_efs_read(int argc, char** argv) { return read_and_show(argc, argv, false); }

int orvik_nvefs_test_efs_write(int argc, char** argv) { return store_and_write(argc, argv, false); }

int orvik_nvefs_test_efs_delete(int argc, char** argv) {
    if (!argc_fits(argc))
        return ORVIK_USAGE_ERROR;
    return checked(orvik_efs_delete(sub_of(argv), argv[4], path_len_of(argv)));
}

constexpr command_row commands[] = {
    {1, orvik_nvefs_test_nv_read},   {2, orvik_nvefs_test_nv_write},
    {3, orvik_nvefs_test_nv_delete}, {4, orvik_nvefs_test_efs_read},
    {5, orvik_nvefs_test_efs_write}, {6, orvik_nvefs_test_efs_delete},
};

} // namespace

int orvik_test_nvefs_do(int argc, char** argv) {
    dispatch_command(GROUP_NVEFS, commands, argc, argv);
    return 0;
}
