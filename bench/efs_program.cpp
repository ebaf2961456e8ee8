// SPDX-License-Identifier: Apache-2.0
/* Writes and reads 100 KiB of EFS, for the benchmarks of tapes: one run of it is what they measure. */
#include <cstdio>
#include <vector>

#include "log_lines.h"
#include "orvik_extend_nvefs.h"

int main() {
    constexpr uint32_t size = 100 * 1024;
    constexpr char path[] = "/bench";
    g_orvik_stdout_print_flag = 0;
    std::vector<uint8_t> file(size, 0x5A), back(size + 1);
    uint32_t length = size + 1;
    const bool good = orvik_efs_write(0, path, sizeof path - 1, file.data(), size) == 0 &&
                      orvik_efs_read(0, path, sizeof path - 1, back.data(), &length) == 0 &&
                      length == size;
    std::puts(good ? "good" : "failed");
    return good ? 0 : 1;
}
