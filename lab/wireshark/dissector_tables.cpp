// SPDX-License-Identifier: Apache-2.0
/* Prints, as a Lua table, what the dissector must know of names and layouts. It runs at build time;
 * the dissector's parts are put behind what it prints. */
#include <cstdarg>
#include <cstdio>
#include <span>
#include <string>

#include "names.h"
#include "qmi_vs_records.h"
#include "wireshark/packet.h"

namespace {

int g_depth = 0;

void line(const char* format, ...) __attribute__((format(printf, 1, 2)));
void line(const char* format, ...) {
    std::printf("%*s", g_depth * 2, "");
    va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
    std::putchar('\n');
}

/* A table, or a member that is one. */
template <typename Body> void table(const std::string& name, Body body) {
    line("%s{", name.empty() ? "" : (name + " = ").c_str());
    ++g_depth;
    body();
    --g_depth;
    line("},");
}

std::string at(long long key) { return "[" + std::to_string(key) + "]"; }

void numbers(const char* name, std::span<const names::Number> rows) {
    table(name, [&] {
        for (const names::Number& row : rows)
            line("[%lld] = \"%s\",", static_cast<long long>(row.value), row.name);
    });
}

/* What is special about a field's bytes. */
const char* role(const names::Service& service, const names::Field& field) {
    if (field.most != 0 && service.id == names::vendor_service)
        return "vendor";
    if (&field == std::data(names::uim_apdu))
        return "command_apdu";
    if (&field == std::data(names::uim_reply))
        return "reply_apdu";
    return &field == std::data(names::vs_entry) + names::vs_entry_data ? "statistics" : "";
}

void fields(const names::Service& service, std::span<const names::Field> rows) {
    table("fields", [&] {
        for (const names::Field& row : rows)
            table("", [&] {
                line("name = \"%s\", wire = %u, memory = %u, at = %u, most = %u, count_at = %u, "
                     "role = \"%s\",",
                     row.name, row.wire, row.memory, row.at, row.most, row.count_at,
                     role(service, row));
                if (!row.values.empty())
                    numbers("values", row.values);
            });
    });
}

void tlvs(const char* name, const names::Service& service, std::span<const names::Tlv> rows) {
    table(name, [&] {
        for (const names::Tlv& row : rows)
            table("", [&] {
                line("type = %u, name = \"%s\",", row.type, row.name);
                if (row.valid_at != names::nowhere)
                    line("valid_at = %u,", row.valid_at);
                if (row.fields.data() == std::data(names::standard_response))
                    line("standard = true,");
                fields(service, row.fields);
                if (row.list.name == nullptr)
                    return;
                table("list", [&] {
                    line("name = \"%s\", wire = %u, count_at = %u, at = %u, stride = %u, most = "
                         "%u,",
                         row.list.name, row.list.wire, row.list.count_at, row.list.at,
                         row.list.stride, row.list.most);
                    fields(service, row.list.fields);
                });
            });
    });
}

void services() {
    table("services", [] {
        for (const names::Service& service : names::services)
            table(at(service.id), [&] {
                line("name = \"%s\", title = \"%s\",", service.name, service.title);
                table("messages", [&] {
                    for (const names::Message& message : service.messages)
                        table(at(message.id), [&] {
                            line("name = \"%s\",", message.name);
                            tlvs("request", service, message.request);
                            tlvs("response", service, message.response);
                            tlvs("indication", service, message.indication);
                        });
                });
            });
    });
}

void records(const char* name, std::span<const vs_records::Record> rows) {
    static constexpr const char* kinds[] = {"u8", "u16", "u32", "u64", "f32"};
    table(name, [&] {
        for (const vs_records::Record& row : rows)
            table("", [&] {
                line("id = %u, name = \"%s\", size = %zu,", row.id, row.name,
                     vs_records::size_of(row.fields));
                table("fields", [&] {
                    for (const vs_records::Field& field : row.fields)
                        line("{ name = \"%s\", kind = \"%s\", width = %zu, unit = \"%s\", since = "
                             "%u },",
                             field.name, kinds[static_cast<size_t>(field.kind)],
                             vs_records::width(field.kind), field.unit, field.since);
                });
            });
    });
}

/* Where the fields of the vendor service's records lie, and the numbers that choose them. */
void vendor_layout() {
    table("nvefs_request", [] {
        using namespace names::nvefs_request;
        line("operation = %zu, subscription = %zu, item = %zu, path_length = %zu, path = %zu,",
             +operation, +subscription, +item, +path_length, +path);
        line("path_most = %zu, whole = %zu, chunk = %zu, offset = %zu, data = %zu,", +path_most,
             +whole, +chunk, +offset, +data);
    });
    table("nvefs_response", [] {
        using namespace names::nvefs_response;
        line("whole = %zu, chunk = %zu, result = %zu, data = %zu,", +whole, +chunk, +result, +data);
    });
    table("common_record", [] {
        using namespace names::common_record;
        line("kind = %zu, result = %zu, data = %zu, type = %zu, length = %zu, payload = %zu,",
             +kind, +result, +data, +type, +length, +payload);
    });
    line("vendor_service = %u, nvefs = %u, common = %u,", names::vendor_service,
         names::vendor_kind_nvefs, names::vendor_kind_common);
    line("nv_write = %u, efs_read = %u, efs_write = %u,", names::nv_write, names::efs_read,
         names::efs_write);
    line("record_typed = %u, record_statistics = %u,", names::record_typed,
         names::record_statistics);
}

} // namespace

int main() {
    using namespace lab::wireshark;
    std::printf("-- SPDX-License-Identifier: Apache-2.0\n"
                "-- Made when kvt was built, from the tables that kvt is built with.\n"
                "local names = {\n");
    g_depth = 1;
    line("link_type = %d, packet_version = %d, head_size = %zu, unknown_service = %u,", link_type,
         packet_version, head_size, unknown_service);
    table("head", [] {
        for (const HeadRow& row : head_rows)
            line("%s = { at = %u, width = %u },", row.name, row.at, row.width);
    });
    services();
    numbers("qmi_errors", names::qmi_errors);
    numbers("transport_results", names::transport_results);
    vendor_layout();
    numbers("nvefs_operations", names::nvefs_operations);
    numbers("common_kinds", names::common_kinds);
    numbers("typed_commands", names::typed_commands);
    numbers("diag_commands", names::diag_commands);
    table("diag_refusals", [] {
        for (const uint8_t refusal : names::diag_refusals)
            line("[%u] = true,", refusal);
    });
    numbers("apdu_instructions", names::apdu_instructions);
    numbers("status_words", names::status_words);
    records("statistics_items", vs_records::items);
    records("debug_blocks", vs_records::debug_blocks);
    std::printf("}\n");
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
}
