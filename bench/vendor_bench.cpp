// SPDX-License-Identifier: Apache-2.0
/* EFS access against the same number of bare exchanges with the same records, and the converters.
 */
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include <benchmark/benchmark.h>

#include "converters.h"
#include "log_lines.h"
#include "orvik_diag_send.h"
#include "orvik_extend_cmn.h"
#include "orvik_extend_idl.h"
#include "orvik_extend_nvefs.h"

namespace {

constexpr uint32_t file_size = 100 * 1024;
constexpr uint32_t write_chunk = 414;
constexpr uint32_t read_chunk = 424;
constexpr char path[] = "/bench";

/* A phone of its own, log lines off. */
struct Phone {
    Phone() {
        char name[] = "/tmp/kvt-bench-XXXXXX";
        dir = ::mkdtemp(name);
        ::setenv("KVT_PHONE", (dir / "phone").c_str(), 1);
        std::filesystem::create_directories(dir / "phone" / "prop");
        std::ofstream(dir / "phone" / "prop" / "persist.vendor.radio.adb_log_ov") << "0";
        g_orvik_stdout_print_flag = 0;
    }
    ~Phone() {
        std::error_code ignored;
        std::filesystem::remove_all(dir, ignored);
    }
    std::filesystem::path dir;
};

void prepare() { static const Phone phone; }

void efs_access(benchmark::State& state) {
    prepare();
    std::vector<uint8_t> file(file_size, 0x5A), back(file_size + 1);
    for (auto _ : state) {
        uint32_t length = file_size + 1;
        if (orvik_efs_write(0, path, sizeof path - 1, file.data(), file_size) != 0 ||
            orvik_efs_read(0, path, sizeof path - 1, back.data(), &length) != 0 ||
            length != file_size)
            state.SkipWithError("EFS access failed");
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * file_size * 2);
}

/* The records that efs_access sends, without anything around them. */
void bare_exchanges(benchmark::State& state) {
    prepare();
    const qmi_client_type client = orvik_extend_qmi_client_open();
    orvik_extend_common_record request{}, response{};
    request.id = REQUEST_ID_EFS;
    request.data_len = ORVIK_EXTEND_DATA_SIZE;
    request.data_valid = 1;
    const auto put = [&](size_t offset, uint32_t value) {
        std::memcpy(request.data + offset, &value, sizeof value);
    };
    const auto send = [&] {
        if (qmi_client_send_msg_sync(client, ORVIK_EXTEND_REQUEST, &request, sizeof request,
                                     &response, sizeof response, 3000) != 0)
            state.SkipWithError("exchange failed");
    };
    request.data[4] = sizeof path - 1;
    std::memcpy(request.data + 5, path, sizeof path - 1);
    for (auto _ : state) {
        request.data[0] = 5;
        request.data[2] = 255;
        put(76, file_size);
        std::memset(request.data + 88, 0x5A, read_chunk);
        for (uint32_t at = 0; at < file_size; at += write_chunk) {
            put(80, std::min(write_chunk, file_size - at));
            put(84, at);
            send();
            request.data[2] = response.data[16];
        }
        std::memset(request.data + 76, 0, sizeof request.data - 76);
        request.data[0] = 4;
        request.data[2] = 0;
        for (uint32_t at = 0; at < file_size; at += read_chunk) {
            put(84, at);
            send();
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * file_size * 2);
}

void hex_dump(benchmark::State& state) {
    prepare();
    const std::vector<uint8_t> data(4096, 0xAF);
    for (auto _ : state)
        orvik_print_data_with_hex(data.data(), static_cast<uint32_t>(data.size()));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 4096);
}

void byte_to_hex(benchmark::State& state) {
    const std::vector<uint8_t> data(4096, 0xAF);
    std::vector<char> out(8192);
    for (auto _ : state) {
        orvik_byte_to_hex(data.data(), static_cast<int>(data.size()), out.data());
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * 4096);
}

void string_to_int(benchmark::State& state, const char* text) {
    for (auto _ : state)
        benchmark::DoNotOptimize(orvik_string_to_int(text));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(std::strlen(text)));
}

BENCHMARK(bare_exchanges)->Unit(benchmark::kMillisecond);
BENCHMARK(efs_access)->Unit(benchmark::kMillisecond);
BENCHMARK(hex_dump);
BENCHMARK(byte_to_hex);
BENCHMARK_CAPTURE(string_to_int, decimal, "1234567");
BENCHMARK_CAPTURE(string_to_int, hex, "0x7fffffff");

} // namespace
