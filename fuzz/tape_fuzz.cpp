// SPDX-License-Identifier: Apache-2.0
/* Any bytes as a tape: read, made into a script, shown part by part. */
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "tape/compile.h"
#include "tape/describe.h"
#include "tape/format.h"

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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Tape tape;
    std::string error;
    if (!tape.read(std::string(reinterpret_cast<const char*>(data), size), error))
        return 0;
    LineParser parser;
    for (const Run& run : tape.runs()) {
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
