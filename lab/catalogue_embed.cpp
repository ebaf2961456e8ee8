// SPDX-License-Identifier: Apache-2.0
/* catalogue_embed CATALOGUE.toml: checks the catalogue and writes it to standard output as a source
 * of tables. Status 1 and the messages on standard error when something is wrong with it. */
#include <cstdio>
#include <fstream>
#include <iterator>

#include "catalogue_load.h"

namespace {

using namespace lab;

/* As a literal of C++: bytes outside of printable ASCII in octal. */
std::string quoted(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\' || c == '?') {
            result += std::string("\\") + c;
        } else if (byte < 0x20 || byte > 0x7E) {
            char octal[5];
            std::snprintf(octal, sizeof octal, "\\%03o", byte);
            result += octal;
        } else {
            result += c;
        }
    }
    return result + "\"";
}

const char* boolean(bool value) { return value ? "true" : "false"; }

std::string real(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

std::string number(long long value) { return std::to_string(value) + "LL"; }

int g_lists;

template <typename T> std::string list(const char* type, std::span<const T> items);

std::string written(std::string_view text) { return quoted(text); }

std::string written(const Name& name) {
    return "{" + number(name.number) + ", " + quoted(name.text) + "}";
}

std::string written(const Argument& a) {
    return "{" + quoted(a.name) + ", " + quoted(a.meaning) + ", " + quoted(a.outside) +
           ", ArgumentKind(" + std::to_string(static_cast<int>(a.kind)) + "), " + boolean(a.hex) +
           ", " + boolean(a.optional) + ", " + boolean(a.has_range) + ", " + number(a.min) + ", " +
           number(a.max) + ", " + std::to_string(a.most) + ", " + list("Name", a.names) + "}";
}

std::string written(const Value& v) {
    return "{" + quoted(v.name) + ", " + quoted(v.meaning) + ", " + quoted(v.unit) + ", " +
           quoted(v.find) + ", ValueKind(" + std::to_string(static_cast<int>(v.kind)) + "), " +
           std::to_string(v.at) + ", " + std::to_string(v.size) + ", " + list("Name", v.names) +
           "}";
}

std::string written(const Rule& r) { return "{" + quoted(r.find) + ", " + quoted(r.why) + "}"; }

std::string written(const Verify& v) {
    return "{" + quoted(v.when_argument) + ", " + quoted(v.when_value) + ", " + quoted(v.seen) +
           ", " + quoted(v.run) + ", " + quoted(v.also) + ", " + quoted(v.unless) + ", " +
           real(v.within_s) + ", " + list("std::string_view", v.ok) + "}";
}

std::string written(const Undo& u) {
    return "{" + quoted(u.read) + ", " + quoted(u.seen) + ", " + quoted(u.unless) + ", " +
           quoted(u.run) + "}";
}

std::string written(const Group& g) {
    return "{" + std::to_string(g.number) + ", " + quoted(g.title) + ", " + quoted(g.about) + "}";
}

std::string written(const Command& c) {
    const std::string needs = list("std::string_view", c.needs);
    const std::string arguments = list("Argument", c.arguments), values = list("Value", c.values);
    const std::string failed = list("Rule", c.failed), ok = list("std::string_view", c.ok);
    const std::string verify = list("Verify", c.verify), undo = list("Undo", c.undo);
    return "{" + quoted(c.words) + ", " + quoted(c.title) + ", " + quoted(c.does) + ", " +
           quoted(c.danger) + ", " + quoted(c.leaves) + ", " + quoted(c.example) + ", " +
           quoted(c.adds_ms) + ", Effect(" + std::to_string(static_cast<int>(c.effect)) + "), " +
           boolean(c.reboot) + ", " + boolean(c.in_help) + ", " + boolean(c.asks) + ", " +
           real(c.ordinary_s) + ", " + real(c.longest_s) + ", " + needs + ", " + arguments + ", " +
           values + ", " + failed + ", " + ok + ", " + verify + ", " + undo + ", " +
           std::to_string(c.line) + "}";
}

/* Writes an array and returns its name. */
template <typename T> std::string list(const char* type, std::span<const T> items) {
    if (items.empty())
        return "{}";
    std::string text;
    for (const T& item : items)
        text += "    " + written(item) + ",\n";
    std::string name = "list_" + std::to_string(g_lists++);
    std::printf("constexpr %s %s[] = {\n%s};\n", type, name.c_str(), text.c_str());
    return name;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    std::ifstream in(argv[1], std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(in)), {});
    const std::string path = argv[1];
    const LoadedCatalogue loaded = load_catalogue(text, path.substr(path.rfind('/') + 1));
    for (const std::string& error : loaded.errors)
        std::fprintf(stderr, "%s\n", error.c_str());
    if (!in || !loaded.errors.empty())
        return 1;
    std::printf("/* Made from the catalogue. */\n#include \"catalogue.h\"\n\nnamespace lab {\n\n"
                "namespace {\n\n");
    const std::string rows = list<Command>("Command", loaded.commands);
    const std::string groups = list<Group>("Group", loaded.groups);
    std::printf("\n} // namespace\n\nstd::span<const Command> catalogue() { return %s; }\n"
                "std::span<const Group> groups() { return %s; }\n\n} // namespace lab\n",
                rows.c_str(), groups.c_str());
    return std::ferror(stdout) != 0 ? 1 : 0;
}
