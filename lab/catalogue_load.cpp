// SPDX-License-Identifier: Apache-2.0
#include "catalogue_load.h"

#include <re2/re2.h>

#include "toml_fields.h"

namespace lab {

/* Lists and texts that rows refer to; they don't move. */
struct CatalogueStorage {
    TomlText source;
    std::deque<std::vector<std::string_view>> text_lists;
    std::deque<std::vector<Name>> names;
    std::deque<std::vector<Argument>> arguments;
    std::deque<std::vector<Value>> values;
    std::deque<std::vector<Rule>> rules;
    std::deque<std::vector<Verify>> verify;
    std::deque<std::vector<Undo>> undo;
};

namespace {

template <typename T>
std::span<const T> kept(std::deque<std::vector<T>>& lists, std::vector<T> list) {
    return lists.emplace_back(std::move(list));
}

class Loader {
  public:
    explicit Loader(LoadedCatalogue& result)
        : result_(result), storage_(*result.storage), source_(storage_.source) {}

    void load(const toml::table& root);

  private:
    using Fields = TomlFields;

    void error(int line, const std::string& message) { source_.error(line, message); }

    std::string_view text_of(const toml::node& node, const std::string& what) {
        return source_.text_of(node, what);
    }

    /* A regular expression with at least so many groups. */
    void check_pattern(std::string_view pattern, int groups, int line, const std::string& what) {
        RE2::Options options(RE2::Latin1);
        options.set_log_errors(false);
        const RE2 compiled("(?m)" + std::string(pattern), options);
        if (!compiled.ok())
            error(line, what + ": bad regular expression: " + compiled.error());
        else if (compiled.NumberOfCapturingGroups() < groups)
            error(line, what + ": the regular expression has no group");
    }

    std::span<const Name> read_names(Fields& fields) {
        std::vector<Name> names;
        const toml::array* const items = fields.array("names");
        for (size_t i = 0; items != nullptr && i < items->size(); ++i) {
            const toml::array* const pair = (*items)[i].as_array();
            if (pair == nullptr || pair->size() != 2 || !(*pair)[0].is_integer() ||
                !(*pair)[1].is_string())
                error(line_of((*items)[i]),
                      fields.named("names") + " must hold [NUMBER, \"TEXT\"]");
            else
                names.push_back({*(*pair)[0].value<int64_t>(), text_of((*pair)[1], "name")});
        }
        return kept(storage_.names, std::move(names));
    }

    Argument read_argument(const toml::table& table, const std::string& what);
    Value read_value(const toml::table& table, const std::string& what);
    void read_values(Fields& fields, std::vector<Value>& values, const std::string& what);
    Rule read_rule(const toml::node& node, const std::string& what);
    void read_rules(const toml::table& table, const std::string& what, std::vector<Rule>& failed,
                    std::vector<std::string_view>& ok, bool shared);
    Verify read_verify(const toml::table& table, const Command& row, const std::string& what);
    Undo read_undo(const toml::table& table, const Command& row, const std::string& what);
    Command read_command(const toml::table& table);
    void check_template(std::string_view text, const Command& row, int line,
                        const std::string& what);
    void check_references(const Command& row);

    LoadedCatalogue& result_;
    CatalogueStorage& storage_;
    TomlText& source_;
    const toml::table* shared_rules_ = nullptr;
    const toml::table* shared_values_ = nullptr;
};

Argument Loader::read_argument(const toml::table& table, const std::string& what) {
    Fields fields(source_, table, what);
    Argument argument{};
    argument.name = fields.text("name", true);
    argument.meaning = fields.text("meaning", true);
    argument.outside = fields.text("outside");
    argument.kind = fields.choice<ArgumentKind>("kind", {{"integer", ArgumentKind::integer},
                                                         {"path", ArgumentKind::path},
                                                         {"text", ArgumentKind::text}});
    argument.hex = fields.flag("hex");
    argument.optional = fields.flag("optional");
    const auto min = fields.integer("min"), max = fields.integer("max");
    argument.has_range = max.has_value();
    if (min.has_value() && !max.has_value())
        error(fields.line(), what + ": \"min\" without \"max\"");
    argument.min = min.value_or(0);
    argument.max = max.value_or(0);
    argument.most = static_cast<size_t>(fields.integer("most").value_or(1));
    argument.names = read_names(fields);
    return argument;
}

Value Loader::read_value(const toml::table& table, const std::string& what) {
    Fields fields(source_, table, what);
    Value value{};
    value.name = fields.text("name", true);
    value.meaning = fields.text("meaning", true);
    value.unit = fields.text("unit");
    value.find = fields.text("find", true);
    check_pattern(value.find, 1, fields.line(), what + ": \"find\"");
    value.kind = fields.choice<ValueKind>("kind", {{"integer", ValueKind::integer},
                                                   {"number", ValueKind::number},
                                                   {"text", ValueKind::text},
                                                   {"bytes", ValueKind::bytes},
                                                   {"word", ValueKind::word}});
    value.at = static_cast<int>(fields.integer("at").value_or(0));
    value.size = static_cast<int>(fields.integer("size").value_or(4));
    if (value.at < 0 || value.size < 1 || value.size > 8)
        error(fields.line(), what + ": \"at\" must be 0 or more, \"size\" 1 to 8");
    value.names = read_names(fields);
    return value;
}

/* The row's own and those of the lists that it names. */
void Loader::read_values(Fields& fields, std::vector<Value>& values, const std::string& what) {
    for (const std::string_view list : fields.texts("values")) {
        const toml::array* const shared =
            shared_values_ == nullptr ? nullptr : (*shared_values_)[list].as_array();
        if (shared == nullptr)
            error(fields.line(), what + ": there is no list [[values." + std::string(list) + "]]");
        for (size_t i = 0; shared != nullptr && i < shared->size(); ++i)
            if (const toml::table* const table = (*shared)[i].as_table())
                values.push_back(read_value(*table, "values." + std::string(list)));
    }
    fields.tables("value", [&](const toml::table& table) {
        values.push_back(read_value(table, what + ": value"));
    });
}

/* "PATTERN", or { find = "PATTERN", why = "TEXT" }. */
Rule Loader::read_rule(const toml::node& node, const std::string& what) {
    Rule rule{};
    if (const toml::table* const table = node.as_table()) {
        Fields fields(source_, *table, what);
        rule.find = fields.text("find", true);
        rule.why = fields.text("why", true);
    } else {
        rule.find = text_of(node, what);
    }
    int groups = 0;
    for (size_t i = 0; i + 1 < rule.why.size(); ++i)
        if (rule.why[i] == '\\' && rule.why[i + 1] >= '1' && rule.why[i + 1] <= '9')
            groups = std::max(groups, rule.why[i + 1] - '0');
    check_pattern(rule.find, groups, line_of(node), what);
    return rule;
}

void Loader::read_rules(const toml::table& table, const std::string& what,
                        std::vector<Rule>& failed, std::vector<std::string_view>& ok, bool shared) {
    Fields fields(source_, table, what);
    for (const std::string_view list : fields.texts("use")) {
        const toml::table* const rules =
            shared_rules_ == nullptr ? nullptr : (*shared_rules_)[list].as_table();
        if (shared || rules == nullptr)
            error(fields.line(), what + ": there is no list [rules." + std::string(list) + "]");
        else
            read_rules(*rules, "rules." + std::string(list), failed, ok, true);
    }
    if (const toml::array* const rules = fields.array("failed"))
        for (const toml::node& node : *rules)
            failed.push_back(read_rule(node, what + ": \"failed\""));
    for (const std::string_view pattern : fields.texts("ok")) {
        check_pattern(pattern, 0, fields.line(), what + ": \"ok\"");
        ok.push_back(pattern);
    }
}

/* Every {NAME} or {NAME:FORM} names an argument, or a value that was read before. */
void Loader::check_template(std::string_view text, const Command& row, int line,
                            const std::string& what) {
    const std::string copy(text);
    re2::StringPiece input(copy), name, form;
    static const RE2 hole(R"(\{([a-z_][a-z_0-9.]*)(:[#a-z0-9]+)?\})");
    while (RE2::FindAndConsume(&input, hole, &name, &form)) {
        const std::string_view wanted(name.data(), name.size()), as(form.data(), form.size());
        bool known = wanted.rfind("before.", 0) == 0;
        for (const Argument& argument : row.arguments)
            known |= argument.name == wanted;
        if (!known)
            error(line, what + ": \"" + std::string(wanted) + "\" is no argument");
        if (!as.empty() && as != ":u8" && as != ":u32" && as != ":u64" && as != ":count" &&
            as != ":first")
            error(line, what + ": unknown form \"" + std::string(as.substr(1)) + "\"");
    }
}

Verify Loader::read_verify(const toml::table& table, const Command& row, const std::string& what) {
    Fields fields(source_, table, what);
    Verify verify{};
    verify.when_argument = fields.text("argument");
    verify.when_value = fields.text("is");
    verify.seen = fields.text("seen");
    verify.run = fields.text("run", true);
    verify.also = fields.text("also");
    verify.unless = fields.text("unless");
    check_pattern(verify.seen, 0, fields.line(), what + ": \"seen\"");
    check_pattern(verify.unless, 0, fields.line(), what + ": \"unless\"");
    verify.within_s = fields.number("within_s", 0);
    verify.ok = kept(storage_.text_lists, fields.texts("ok"));
    if (verify.ok.empty())
        error(fields.line(), what + ": \"ok\" is missing");
    for (const std::string_view pattern : verify.ok) {
        check_template(pattern, row, fields.line(), what);
        std::string filled(pattern);
        static const RE2 hole(R"(\{[a-z_][^}]*\})");
        RE2::GlobalReplace(&filled, hole, "0");
        check_pattern(filled, 0, fields.line(), what + ": \"ok\"");
    }
    check_template(verify.run, row, fields.line(), what);
    check_template(verify.also, row, fields.line(), what);
    return verify;
}

Undo Loader::read_undo(const toml::table& table, const Command& row, const std::string& what) {
    Fields fields(source_, table, what);
    Undo undo{};
    undo.read = fields.text("read");
    undo.seen = fields.text("seen");
    undo.unless = fields.text("unless");
    undo.run = fields.text("run", true);
    check_pattern(undo.seen, 0, fields.line(), what + ": \"seen\"");
    check_pattern(undo.unless, 0, fields.line(), what + ": \"unless\"");
    if (undo.read.empty() && !(undo.seen.empty() && undo.unless.empty()))
        error(fields.line(), what + ": \"seen\" and \"unless\" need \"read\"");
    check_template(undo.read, row, fields.line(), what);
    check_template(undo.run, row, fields.line(), what);
    return undo;
}

Command Loader::read_command(const toml::table& table) {
    const auto words = table["words"].value<std::string_view>();
    const std::string what = words.has_value() ? std::string(*words) : "command";
    Fields fields(source_, table, what);
    Command row{};
    row.line = fields.line();
    row.words = fields.text("words", true);
    row.title = fields.text("title", true);
    row.does = fields.text("does", true);
    row.danger = fields.text("danger", true);
    row.leaves = fields.text("leaves");
    row.example = fields.text("example", true);
    row.effect = fields.choice<Effect>(
        "effect",
        {{"none", Effect::none}, {"until restart", Effect::until_restart}, {"kept", Effect::kept}});
    row.reboot = fields.flag("reboot");
    row.in_help = fields.flag("in_help", true);
    row.asks = fields.flag("asks", !row.danger.empty());
    row.ordinary_s = fields.number("ordinary_s", 0, true);
    row.longest_s = fields.number("longest_s", 0, true);
    row.adds_ms = fields.text("adds_ms");
    row.needs = kept(storage_.text_lists, fields.texts("needs"));

    std::vector<Argument> arguments;
    fields.tables("argument", [&](const toml::table& item) {
        arguments.push_back(read_argument(item, what + ": argument"));
    });
    row.arguments = kept(storage_.arguments, std::move(arguments));
    check_template(row.adds_ms.empty() ? "" : "{" + std::string(row.adds_ms) + "}", row, row.line,
                   what + ": \"adds_ms\"");

    std::vector<Value> values;
    read_values(fields, values, what);
    row.values = kept(storage_.values, std::move(values));

    std::vector<Rule> failed;
    std::vector<std::string_view> ok;
    if (const toml::node* const verdict = fields.node("verdict", true)) {
        if (const toml::table* const rules = verdict->as_table())
            read_rules(*rules, what + ": verdict", failed, ok, false);
        else
            error(line_of(*verdict), what + ": \"verdict\" must be a table");
    }
    row.failed = kept(storage_.rules, std::move(failed));
    for (const std::string_view pattern : ok)
        check_template(pattern, row, row.line, what + ": \"ok\"");
    row.ok = kept(storage_.text_lists, std::move(ok));

    std::vector<Verify> verify;
    fields.tables("verify", [&](const toml::table& item) {
        verify.push_back(read_verify(item, row, what + ": verify"));
    });
    row.verify = kept(storage_.verify, std::move(verify));
    std::vector<Undo> undo;
    fields.tables("undo", [&](const toml::table& item) {
        undo.push_back(read_undo(item, row, what + ": undo"));
    });
    row.undo = kept(storage_.undo, std::move(undo));
    return row;
}

/* What a row runs must begin with the words of a row. */
void Loader::check_references(const Command& row) {
    const auto check = [&](std::string_view line, const char* what) {
        size_t count;
        if (!line.empty() && find_command(result_.commands, words_of(line), count) == nullptr)
            error(row.line, std::string(row.words) + ": " + what + " names no row: \"" +
                                std::string(line) + "\"");
    };
    check(row.example, "\"example\"");
    for (const Verify& verify : row.verify) {
        check(verify.run, "verify");
        check(verify.also, "verify's \"also\"");
    }
    for (const Undo& undo : row.undo) {
        check(undo.read, "undo's \"read\"");
        check(undo.run, "undo");
    }
}

void Loader::load(const toml::table& root) {
    Fields fields(source_, root, "catalogue");
    const auto shared = [&](const char* key) -> const toml::table* {
        const toml::node* const node = fields.node(key);
        if (node != nullptr && !node->is_table())
            error(line_of(*node), fields.named(key) + " must be a table");
        return node == nullptr ? nullptr : node->as_table();
    };
    shared_rules_ = shared("rules");
    shared_values_ = shared("values");
    fields.tables("group", [&](const toml::table& table) {
        Fields group(source_, table, "group");
        result_.groups.push_back({static_cast<int>(group.integer("number").value_or(0)),
                                  group.text("title", true), group.text("about", true)});
    });
    fields.tables("command", [&](const toml::table& table) {
        result_.commands.push_back(read_command(table));
    });
    for (const Command& row : result_.commands) {
        const std::string first(row.words.substr(0, row.words.find(' ')));
        if (std::none_of(result_.groups.begin(), result_.groups.end(),
                         [&](const Group& group) { return std::to_string(group.number) == first; }))
            error(row.line, std::string(row.words) + ": there is no group " + first);
    }
    for (size_t i = 0; i < result_.commands.size(); ++i)
        for (size_t j = 0; j < i; ++j)
            if (result_.commands[i].words == result_.commands[j].words)
                error(result_.commands[i].line,
                      "a second row for \"" + std::string(result_.commands[i].words) + "\"");
    for (const Command& row : result_.commands)
        check_references(row);
}

} // namespace

LoadedCatalogue load_catalogue(std::string_view text, const std::string& name) {
    LoadedCatalogue result;
    result.storage = std::make_shared<CatalogueStorage>();
    TomlText& source = result.storage->source;
    source.name = name;
    source.parse(text, [&](const toml::table& root) { Loader(result).load(root); });
    result.errors = source.messages();
    return result;
}

} // namespace lab
