// SPDX-License-Identifier: Apache-2.0
/* Any bytes as a tape: read, made into a script, shown part by part. And as a phone's log. */
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "tape/compile.h"
#include "tape/describe.h"
#include "tape/format.h"
#include "tape/log_page.h"
#include "tape/tape_crossings.h"

using namespace lab::tape;

namespace {

/* What a line's buffers hold, as every message that they could be. */
void describe(const Event& event) {
    std::string text, bytes;
    for (const auto* const fields : {&event.in, &event.out})
        for (const Field& field : *fields) {
            if (!field.is_text || !event.bytes(*fields, field.name, bytes))
                continue;
            bytes.resize(std::min<size_t>(bytes.size(), 1 << 14));
            describe_diag(text, bytes);
            for (const names::Service& service : names::services)
                for (const names::Message& message : service.messages)
                    for (const Layout layout : {Layout::wire, Layout::record}) {
                        Exchange exchange;
                        for (const MessageType type :
                             {MessageType::request, MessageType::response, MessageType::indication})
                            describe_message(text, &service, message.id, type, layout, bytes,
                                             exchange);
                        text.clear();
                    }
        }
}

class Shown : public TapeCrossings {
  public:
    using TapeCrossings::TapeCrossings;

  private:
    void crossed(const Crossing& crossing) override {
        text_.clear();
        teller_.tell(text_, crossing);
    }
    Teller teller_;
    std::string text_;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Tape tape;
    std::string error, shown;
    LogPage log;
    std::string_view rest(reinterpret_cast<const char*>(data), size);
    while (!rest.empty()) {
        const size_t end = std::min(rest.find('\n'), rest.size() - 1);
        log.show(rest.substr(0, end), shown);
        rest.remove_prefix(end + 1);
    }
    if (!tape.read(std::string(reinterpret_cast<const char*>(data), size), error))
        return 0;
    LineParser parser;
    Shown words(tape);
    uint32_t number = 0;
    for (const Run& run : tape.runs()) {
        words.read(run, ++number);
        Script script;
        compile(tape, run, script, error);
        std::string bytes;
        ScriptWriter writer(bytes);
        pass_script(writer, script);
        Script again;
        ScriptReader reader(bytes);
        pass_script(reader, again);
        if (!reader.good() || again.events.size() != script.events.size())
            __builtin_trap();
        Event event;
        for (const LineRef& ref : run.lines)
            if (parser.parse(tape.line(ref), event, error))
                describe(event);
    }
    /* Bytes that are no script at all. */
    Script script;
    ScriptReader reader(std::string_view(reinterpret_cast<const char*>(data), size));
    pass_script(reader, script);
    return 0;
}
