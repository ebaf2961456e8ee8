// SPDX-License-Identifier: Apache-2.0
/* kvt-lab pcap: a tape or a simulated phone's log as a capture. */
#include "verbs.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include <dlfcn.h>
#include <pcap/pcap.h>

#include "tape/log_page.h"
#include "tape/tape_crossings.h"
#include "wireshark/packet.h"

namespace lab {

using namespace tape;
using namespace wireshark;

namespace {

constexpr int longest_packet = 262144; /* what readers of captures take */

/* libpcap, opened by this verb alone: it brings eight libraries, which no other verb is to wait for. */
class Library {
  public:
    Library() {
        handle_ = ::dlopen("libpcap.so.0.8", RTLD_NOW | RTLD_LOCAL); /* Debian's name for it */
        if (handle_ == nullptr)
            handle_ = ::dlopen("libpcap.so.1", RTLD_NOW | RTLD_LOCAL);
        const bool whole = handle_ != nullptr && find(open_dead, "pcap_open_dead") &&
                           find(close, "pcap_close") && find(geterr, "pcap_geterr") &&
                           find(dump_open, "pcap_dump_open") && find(dump, "pcap_dump") &&
                           find(dump_flush, "pcap_dump_flush") &&
                           find(dump_file, "pcap_dump_file") && find(dump_close, "pcap_dump_close");
        if (!whole)
            trouble_ = std::string("libpcap can't be used: ") + ::dlerror();
    }

    /* Empty when it may be used. */
    const std::string& trouble() const { return trouble_; }

    decltype(&::pcap_open_dead) open_dead = nullptr;
    decltype(&::pcap_close) close = nullptr;
    decltype(&::pcap_geterr) geterr = nullptr;
    decltype(&::pcap_dump_open) dump_open = nullptr;
    decltype(&::pcap_dump) dump = nullptr;
    decltype(&::pcap_dump_flush) dump_flush = nullptr;
    decltype(&::pcap_dump_file) dump_file = nullptr;
    decltype(&::pcap_dump_close) dump_close = nullptr;

  private:
    template <typename Function> bool find(Function& function, const char* name) {
        function = reinterpret_cast<Function>(::dlsym(handle_, name));
        return function != nullptr;
    }

    void* handle_ = nullptr;
    std::string trouble_;
};

/* A capture under a name of its own, until it is whole. */
class Capture {
  public:
    Capture(const Library& library, const std::string& path)
        : library_(library), path_(path), aside_(path + ".new"),
          pcap_(library.open_dead(link_type, longest_packet), library.close),
          file_(library.dump_open(pcap_.get(), aside_.c_str())) {}
    ~Capture() {
        if (file_ != nullptr)
            library_.dump_close(file_);
        if (!done_)
            std::remove(aside_.c_str());
    }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    bool good() const { return file_ != nullptr; }

    void add(const Crossing& crossing) {
        packet_.assign(head_size, '\0');
        put(head_version, packet_version);
        put(head_kind, static_cast<uint64_t>(crossing.kind));
        put(head_direction, static_cast<uint64_t>(crossing.direction));
        put(head_flags, crossing.flags);
        put(head_run, crossing.run);
        put(head_thread, static_cast<uint64_t>(crossing.thread));
        put(head_exchange, crossing.exchange);
        put(head_service, crossing.service != nullptr ? crossing.service->id : unknown_service);
        put(head_type, static_cast<uint64_t>(crossing.type));
        put(head_layout, static_cast<uint64_t>(crossing.layout));
        put(head_message, static_cast<uint64_t>(crossing.message));
        put(head_result, static_cast<uint64_t>(crossing.result));
        packet_ += crossing.bytes;
        pcap_pkthdr header = {};
        header.ts.tv_sec = crossing.time_us / 1000000;
        header.ts.tv_usec = crossing.time_us % 1000000;
        header.len = static_cast<bpf_u_int32>(packet_.size());
        header.caplen = std::min<bpf_u_int32>(header.len, longest_packet);
        library_.dump(reinterpret_cast<u_char*>(file_), &header,
                      reinterpret_cast<const u_char*>(packet_.data()));
    }

    bool finish() {
        const bool written =
            library_.dump_flush(file_) == 0 && std::ferror(library_.dump_file(file_)) == 0;
        reason_ = std::strerror(errno);
        library_.dump_close(file_);
        file_ = nullptr;
        if (!written)
            return false;
        done_ = std::rename(aside_.c_str(), path_.c_str()) == 0;
        reason_ = std::strerror(errno);
        return done_;
    }

    /* Why it is not good, or not finished. */
    std::string trouble() const {
        return path_ +
               " can't be written: " + (reason_.empty() ? library_.geterr(pcap_.get()) : reason_);
    }

  private:
    void put(HeadField field, uint64_t value) {
        for (size_t i = 0; i < head_rows[field].width; ++i)
            packet_[head_rows[field].at + i] = static_cast<char>(value >> (8 * i));
    }

    const Library& library_;
    std::string path_, aside_, packet_, reason_;
    std::unique_ptr<pcap_t, void (*)(pcap_t*)> pcap_;
    pcap_dumper_t* file_;
    bool done_ = false;
};

class TapeCapture : public TapeCrossings {
  public:
    TapeCapture(const Tape& tape, Capture& capture) : TapeCrossings(tape), capture_(capture) {}

  private:
    void crossed(const Crossing& crossing) override { capture_.add(crossing); }
    Capture& capture_;
};

bool add_log(const std::string& text, Capture& capture) {
    LogCrossings log;
    LogLine parts;
    Crossing crossing;
    return each_log_line(text, [&](std::string_view line) {
        if (!read_log_line(line, parts))
            return false;
        log.read(parts, crossing);
        capture.add(crossing);
        return true;
    });
}

int fail(const std::string& message) {
    std::fprintf(stderr, "kvt-lab: %s\n", message.c_str());
    return 5;
}

} // namespace

int pcap(const Common&, const PcapOptions& options) {
    std::string text, error;
    Tape tape;
    if (!read_file(options.in, text, error))
        return fail(error);
    std::error_code ignored;
    if (std::filesystem::equivalent(options.in, options.out, ignored))
        return fail(options.out + " is what the capture is to be made of");
    const bool log = is_log(text);
    if (!log && !tape.read(text, error))
        return fail(options.in + ": " + error);
    const Library library;
    if (!library.trouble().empty())
        return fail(library.trouble());
    Capture capture(library, options.out);
    if (!capture.good())
        return fail(capture.trouble());
    bool whole;
    if (log) {
        whole = add_log(text, capture);
    } else {
        TapeCapture taken(tape, capture);
        uint32_t number = 0;
        for (const Run& run : tape.runs())
            taken.read(run, ++number);
        whole = told_whole(tape, options.in);
    }
    if (!capture.finish())
        return fail(capture.trouble());
    return whole ? 0 : 1;
}

} // namespace lab
