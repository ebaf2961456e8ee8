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

/* An NV write states the count typed although only buffer_size bytes are stored; the rest, up to
 * what an item may hold, goes out as zeros. */
constexpr size_t write_buffer_size = ORVIK_NV_DATA_MAX;
static_assert(write_buffer_size >= buffer_size);

uint32_t sub_of(char** argv) { return std::atoi(argv[3]) != 0 ? 1 : 0; }
uint32_t nv_id_of(char** argv) { return static_cast<uint32_t>(std::atoi(argv[4])); }
uint32_t path_len_of(char** argv) { return static_cast<uint32_t>(std::strlen(argv[4])); }

int failed(int result) {
    std::puts("orvik_extend_qmi_send_sync fail, REQUEST_ID_EFS");
    return result;
}

int checked(int result) { return result == 0 ? 0 : failed(result); }

bool argc_fits(int argc) {
    if (argc == fixed_argc)
        return true;
    usage_note(GROUP_NVEFS, NOTE_NEED_INPUTS, fixed_argc);
    return false;
}

/* Reads with read(buffer, length) and shows the data. */
template <typename Read> int read_and_show(int argc, Read read) {
    if (!argc_fits(argc))
        return ORVIK_USAGE_ERROR;
    std::array<uint8_t, buffer_size> buffer{};
    uint32_t length = buffer_size;
    if (const int result = read(buffer.data(), &length))
        return failed(result);
    print_read_data({buffer.data(), length});
    return 0;
}

/* Stores the data arguments, decimal, and writes with write(buffer, bytes stored). */
template <typename Write> int store_and_write(int argc, char** argv, Write write) {
    if (argc <= fixed_argc) {
        usage_note(GROUP_NVEFS, NOTE_TOO_FEW_INPUTS);
        return ORVIK_USAGE_ERROR;
    }
    std::array<uint8_t, write_buffer_size> buffer{};
    const size_t count = std::min<size_t>(static_cast<size_t>(argc - fixed_argc), buffer_size);
    for (size_t i = 0; i < count; ++i)
        buffer[i] = static_cast<uint8_t>(std::atoi(argv[fixed_argc + i]));
    return checked(write(buffer.data(), static_cast<uint32_t>(count)));
}

int orvik_nvefs_test_nv_read(int argc, char** argv) {
    return read_and_show(argc, [argv](uint8_t* buffer, uint32_t* length) {
        return orvik_nv_read(sub_of(argv), nv_id_of(argv), buffer, length);
    });
}

int orvik_nvefs_test_nv_write(int argc, char** argv) {
    return store_and_write(argc, argv, [argc, argv](const uint8_t* buffer, uint32_t) {
        return orvik_nv_write_ex(sub_of(argv), nv_id_of(argv), buffer,
                                 static_cast<uint32_t>(argc - fixed_argc));
    });
}

int orvik_nvefs_test_nv_delete(int argc, char** argv) {
    if (!argc_fits(argc))
        return ORVIK_USAGE_ERROR;
    return checked(orvik_nv_delete(sub_of(argv), nv_id_of(argv)));
}

int orvik_nvefs_test_efs_read(int argc, char** argv) {
    return read_and_show(argc, [argv](uint8_t* buffer, uint32_t* length) {
        return orvik_efs_read(sub_of(argv), argv[4], path_len_of(argv), buffer, length);
    });
}

int orvik_nvefs_test_efs_write(int argc, char** argv) {
    return store_and_write(argc, argv, [argv](const uint8_t* buffer, uint32_t count) {
        return orvik_efs_write(sub_of(argv), argv[4], path_len_of(argv), buffer, count);
    });
}

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
