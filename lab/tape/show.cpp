// SPDX-License-Identifier: Apache-2.0
/* kvt-lab show: what crossed, one line each, from a tape or from a simulated phone's log. */
#include "verbs.h"

#include <cstdio>

#include "tape/log_page.h"
#include "tape/tape_crossings.h"

namespace lab {

using namespace tape;

namespace {

constexpr size_t written_at_once = 1 << 16;

/* Standard output in large pieces. */
class Page {
  public:
    ~Page() { flush(); }
    std::string& text() { return text_; }
    void line() {
        text_ += '\n';
        if (text_.size() >= written_at_once)
            flush();
    }
    bool flush() {
        const bool good = std::fwrite(text_.data(), 1, text_.size(), stdout) == text_.size();
        text_.clear();
        return good;
    }

  private:
    std::string text_;
};

class TapePage : public TapeCrossings {
  public:
    TapePage(const Tape& tape, Page& page) : TapeCrossings(tape), page_(page) {}

  private:
    void crossed(const Crossing& crossing) override {
        if ((crossing.flags & crossing_bare) != 0) {
            page_.text() += crossing.bytes;
            return page_.line();
        }
        line_.clear();
        const bool good = teller_.tell(line_, crossing);
        char text[64];
        const int length = std::snprintf(text, sizeof text, "%5lld.%06lld t%lld ",
                                         static_cast<long long>(crossing.at_us / 1000000),
                                         static_cast<long long>(crossing.at_us % 1000000),
                                         static_cast<long long>(crossing.thread));
        page_.text().append(text, static_cast<size_t>(length));
        append_told(page_.text(), crossing.direction, good, line_);
        page_.line();
    }

    Page& page_;
    Teller teller_;
    std::string line_;
};

int show_log(const std::string& text) {
    Page page;
    LogPage log;
    const bool whole = each_log_line(text, [&](std::string_view line) {
        const bool good = log.show(line, page.text());
        if (good)
            page.line();
        return good;
    });
    return page.flush() ? whole ? 0 : 1 : 5;
}

} // namespace

int show(const Common&, const ShowOptions& options) {
    std::string text, error;
    if (!read_file(options.file, text, error)) {
        std::fprintf(stderr, "kvt-lab: %s\n", error.c_str());
        return 5;
    }
    if (is_log(text))
        return show_log(text);
    Tape tape;
    if (!tape.read(std::move(text), error)) {
        std::fprintf(stderr, "kvt-lab: %s: %s\n", options.file.c_str(), error.c_str());
        return 5;
    }
    Page page;
    TapePage shown(tape, page);
    uint32_t number = 0;
    for (const Run& run : tape.runs()) {
        shown.read(run, ++number);
        page.line();
    }
    if (!page.flush())
        return 5;
    return told_whole(tape, options.file) ? 0 : 1;
}

} // namespace lab
