// SPDX-License-Identifier: Apache-2.0
/* The serving-cell parser against a reader of the same record written by hand: fixed offsets,
 * memcpy and shifts. For each layout once with the two summary lines, printed to a discarded
 * stream, and once the extraction alone, the cursor armed for each record as the tool does it.
 * Compare items_per_second of parser_... and by_hand_... */
#include <array>
#include <cstdio>
#include <cstring>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include "serving_cell.h"
#include "unpack.h"

namespace {

/* Standard output goes nowhere while one is there. */
class DiscardOutput {
  public:
    DiscardOutput() : saved_((std::fflush(stdout), ::dup(STDOUT_FILENO))) {
        const int null = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        ::dup2(null, STDOUT_FILENO);
        ::close(null);
    }
    ~DiscardOutput() {
        std::fflush(stdout);
        ::dup2(saved_, STDOUT_FILENO);
        ::close(saved_);
    }
    DiscardOutput(const DiscardOutput&) = delete;
    DiscardOutput& operator=(const DiscardOutput&) = delete;

  private:
    int saved_;
};

using Payload = std::array<uint8_t, UNPK_MEMORY_SIZE>;

Payload payload(uint32_t version) {
    Payload bytes{};
    std::memcpy(bytes.data(), &version, sizeof version);
    for (size_t i = 4; i < 64; ++i)
        bytes[i] = static_cast<uint8_t>(i * 151 + 7);
    return bytes;
}

/* ==== by hand ==== */

template <typename T> T load(const uint8_t* data) {
    T value;
    std::memcpy(&value, data, sizeof value);
    return value;
}

/* p: where pci lies; q: where dl_earfcn lies. */
void read_bytes(const uint8_t* p, const uint8_t* q, serving_cell& cell) {
    cell.record.mcc = load<uint16_t>(q + 20);
    cell.mnc_num = q[22];
    cell.record.mnc = load<uint16_t>(q + 23);
    cell.record.tac = load<uint32_t>(q + 26);
    cell.record.cgi = load<uint64_t>(q + 12);
    cell.record.pci = load<uint16_t>(p);
    cell.record.freq_band_ind = load<uint16_t>(q + 30);
    cell.record.dl_earfcn = load<uint32_t>(q);
    cell.record.dl_bw = load<uint16_t>(q + 8);
    cell.record.ul_earfcn = load<uint32_t>(q + 4);
    cell.record.ul_bw = load<uint16_t>(q + 10);
    cell.record.allow_access = q[25];
}

/* Every field begins at bit 2 of a byte. */
void read_bits(const uint8_t* p, serving_cell& cell) {
    cell.record.mcc = static_cast<uint16_t>(load<uint32_t>(p + 31) >> 2);
    cell.mnc_num = static_cast<uint8_t>(load<uint16_t>(p + 33) >> 2);
    cell.record.mnc = static_cast<uint16_t>(load<uint32_t>(p + 34) >> 2);
    cell.record.tac = static_cast<uint32_t>(load<uint64_t>(p + 37) >> 2);
    cell.record.cgi = load<uint64_t>(p + 23) >> 2 | static_cast<uint64_t>(p[31]) << 62;
    cell.record.pci = static_cast<uint16_t>(load<uint32_t>(p + 1) >> 2);
    cell.record.freq_band_ind = static_cast<uint16_t>(load<uint32_t>(p + 41) >> 2);
    cell.record.dl_earfcn = static_cast<uint32_t>(load<uint64_t>(p + 11) >> 2);
    cell.record.dl_bw = static_cast<uint16_t>(load<uint32_t>(p + 19) >> 2);
    cell.record.ul_earfcn = static_cast<uint32_t>(load<uint64_t>(p + 15) >> 2);
    cell.record.ul_bw = static_cast<uint16_t>(load<uint32_t>(p + 21) >> 2);
    cell.record.allow_access = static_cast<uint8_t>(load<uint16_t>(p + 36) >> 2);
}

[[gnu::noinline]] bool by_hand_unpack(const uint8_t* data, serving_cell& cell) {
    cell.record.version = load<uint32_t>(data);
    switch (const uint8_t* const p = data + 4; cell.record.version) {
    case 0x30000:
        read_bytes(p, p + 10, cell);
        return true;
    case 0x30001:
        read_bits(p, cell);
        return true;
    case 0x30002:
        read_bytes(p + 3, p + 13, cell);
        return true;
    case 4:
        read_bytes(p, p + 2, cell);
        return true;
    default:
        return false;
    }
}

uint8_t g_area[700];

[[gnu::noinline]] void by_hand_parse(const uint8_t* data) {
    serving_cell cell{};
    if (!by_hand_unpack(data, cell))
        return;
    std::printf("version = %d, mcc = %d, mnc_num %d, mnc %d, tac %d, cgi %lu, pci %d\n",
                cell.record.version, cell.record.mcc, cell.mnc_num, cell.record.mnc,
                cell.record.tac, cell.record.cgi, cell.record.pci);
    std::printf("freq_band_ind = %d, dl_earfcn = %d, dl_bw %d, ul_earfcn %d, ul_bw %d, "
                "allow_access %d, scs %d\n",
                cell.record.freq_band_ind, cell.record.dl_earfcn, cell.record.dl_bw,
                cell.record.ul_earfcn, cell.record.ul_bw, cell.record.allow_access, 0);
    std::memset(g_area + 36, 0, sizeof g_area - 36);
    std::memcpy(g_area, &cell.record, sizeof cell.record);
}

/* ==== the two in turn ==== */

uint32_t version_of(const benchmark::State& state) { return static_cast<uint32_t>(state.range(0)); }

[[gnu::noinline]] bool parser_unpack(const uint8_t* data, serving_cell& cell) {
    return MODEM_STATS_DATA_UNPK_START(data, 0) && serving_cell_unpack(cell);
}

template <bool (*unpack)(const uint8_t* data, serving_cell& cell)>
void extraction(benchmark::State& state) {
    const Payload bytes = payload(version_of(state));
    serving_cell cell{};
    serving_cell wanted{};
    by_hand_unpack(bytes.data(), wanted);
    for (auto _ : state) {
        benchmark::DoNotOptimize(unpack(bytes.data(), cell));
        benchmark::DoNotOptimize(cell);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
    if (cell.record.cgi != wanted.record.cgi || cell.record.tac != wanted.record.tac ||
        cell.record.allow_access != wanted.record.allow_access)
        state.SkipWithError("the two readers differ");
}

void by_hand_printing(benchmark::State& state) {
    const DiscardOutput discard;
    const Payload bytes = payload(version_of(state));
    for (auto _ : state) {
        by_hand_parse(bytes.data());
        benchmark::DoNotOptimize(g_area);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}

void parser_printing(benchmark::State& state) {
    const DiscardOutput discard;
    const Payload bytes = payload(version_of(state));
    for (auto _ : state) {
        MODEM_STATS_DATA_UNPK_START(bytes.data(), 0);
        modem_stats_parse_xxxx_diag_xxxx(0, nullptr, nullptr);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}

void layouts(benchmark::internal::Benchmark* bench) {
    bench->ArgName("version")->Arg(0x30000)->Arg(0x30001)->Arg(0x30002)->Arg(4);
}

BENCHMARK(extraction<by_hand_unpack>)->Name("by_hand_extraction")->Apply(layouts);
BENCHMARK(extraction<parser_unpack>)->Name("parser_extraction")->Apply(layouts);
BENCHMARK(by_hand_printing)->Apply(layouts);
BENCHMARK(parser_printing)->Apply(layouts);

} // namespace
