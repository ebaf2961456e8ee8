// SPDX-License-Identifier: Apache-2.0
#include "plan.h"
#include "tape/format.h"
#include "toml_fields.h"

namespace lab {

namespace {

constexpr int tries_max = 1000;

class PlanLoader {
  public:
    PlanLoader(TomlText& source, Plan& plan) : source_(source), plan_(plan) {}

    void load(const toml::table& root) {
        TomlFields fields(source_, root, "plan");
        plan_.title = fields.text("title");
        fields.tables("step",
                      [&](const toml::table& table) { plan_.steps.push_back(step(table)); });
        if (plan_.steps.empty())
            source_.error(1, "plan: there is no [[step]]");
    }

  private:
    std::vector<std::string> words(TomlFields& fields) {
        const toml::node* const node = fields.node("command", true);
        if (node == nullptr)
            return {};
        if (node->is_string())
            return words_of(*node->value<std::string_view>());
        std::vector<std::string> words;
        if (const toml::array* const list = node->as_array())
            for (const toml::node& word : *list)
                words.emplace_back(source_.text_of(word, fields.named("command")));
        else
            fields.wrong(*node, "command", "text or a list of texts");
        return words;
    }

    static const Value* find_value(const Command& row, std::string_view name) {
        for (const Value& value : row.values)
            if (value.name == name)
                return &value;
        return nullptr;
    }

    Limit limit(const toml::table& table, const Value& value, const std::string& what) {
        TomlFields fields(source_, table, what);
        const bool numeric = value.kind == ValueKind::number || value.kind == ValueKind::integer ||
                             value.kind == ValueKind::word;
        Limit limit;
        limit.value = value.name;
        for (auto& [key, bound] : {std::pair<const char*, std::optional<double>&>{"min", limit.min},
                                   {"max", limit.max}}) {
            const toml::node* const node = fields.node(key);
            if (node == nullptr)
                continue;
            if (!numeric)
                source_.error(line_of(*node), fields.named(key) + ": the value is no number");
            else if (!node->is_number())
                fields.wrong(*node, key, "a number");
            bound = node->value<double>();
        }
        if (const toml::node* const node = fields.node("is")) {
            if (numeric && node->is_number()) {
                limit.min = limit.max = node->value<double>();
            } else if (!numeric && node->is_string()) {
                limit.is = node->value<std::string>();
            } else {
                fields.wrong(*node, "is", numeric ? "a number" : "text");
            }
        }
        if (table.empty())
            source_.error(fields.line(), what + ": there is no \"min\", \"max\" or \"is\"");
        return limit;
    }

    void limits(TomlFields& fields, Step& step, const std::string& what) {
        const toml::node* const node = fields.node("expect");
        if (node == nullptr)
            return;
        if (!node->is_table())
            return fields.wrong(*node, "expect", "a table");
        for (const auto& [key, item] : *node->as_table()) {
            const Value* const value =
                step.command.row == nullptr ? nullptr : find_value(*step.command.row, key.str());
            if (value == nullptr)
                source_.error(line_of(item), what + ": the command tells no value \"" +
                                                 std::string(key.str()) + "\"");
            else if (!item.is_table())
                source_.error(line_of(item), what + ": \"" + std::string(key.str()) +
                                                 "\" must be a table of limits");
            else
                step.expect.push_back(
                    limit(*item.as_table(), *value, what + ": " + std::string(key.str())));
        }
    }

    Step step(const toml::table& table) {
        const auto name = table["name"].value<std::string>();
        const std::string what = name.has_value() ? "\"" + *name + "\"" : "step";
        TomlFields fields(source_, table, what);
        Step step;
        step.name = fields.text("name", true);
        const std::vector<std::string> typed = words(fields);
        const toml::node* const command = table.get("command");
        const int line = command == nullptr ? fields.line() : line_of(*command);
        std::string error;
        if (command != nullptr && source_.errors.empty() &&
            !read_command_line(typed, step.command, error))
            source_.error(line, what + ": " + error);
        const Command* const row = step.command.row;
        const bool yes = fields.flag("yes");
        if (row != nullptr && row->asks && !yes)
            source_.error(
                line, what + ": kvt " + std::string(row->words) +
                          " needs \"yes = true\". What can be lost: " + std::string(row->danger));
        const auto tries = fields.integer("tries");
        if (tries && (*tries < 1 || *tries > tries_max))
            source_.error(fields.line(),
                          fields.named("tries") + " must be 1 to " + std::to_string(tries_max));
        else if (tries > 1 && row != nullptr && row->effect != Effect::none)
            source_.error(fields.line(), what + ": kvt " + std::string(row->words) +
                                             " changes the phone and is not tried again");
        step.tries = static_cast<int>(tries.value_or(1));
        step.timeout_s = fields.number("timeout_s", 0);
        if (fields.node("timeout_s") != nullptr && !(step.timeout_s > 0))
            source_.error(fields.line(), fields.named("timeout_s") + " must be more than 0");
        step.undo = fields.flag("undo");
        if (step.undo && row != nullptr && row->undo.empty())
            source_.error(fields.line(),
                          what + ": kvt " + std::string(row->words) + " can't be undone");
        step.keep_going = fields.flag("keep_going");
        step.verify = fields.flag("verify", true);
        step.not_told_passes = fields.flag("not_told_passes");
        limits(fields, step, what);
        return step;
    }

    TomlText& source_;
    Plan& plan_;
};

} // namespace

bool load_plan(const std::string& path, Plan& plan, std::string& error) {
    std::string text;
    if (!tape::read_file(path, text, error))
        return false;
    TomlText source;
    source.name = path;
    source.parse(text, [&](const toml::table& root) { PlanLoader(source, plan).load(root); });
    if (source.errors.empty())
        return true;
    error = source.messages().front();
    return false;
}

} // namespace lab
