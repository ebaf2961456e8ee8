// SPDX-License-Identifier: Apache-2.0
/* Strict reading of TOML: what is missing, not known or of a wrong type is a message with its line.
 * For the few sources that read TOML; nothing else includes it. */
#pragma once

#include <algorithm>
#include <deque>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <toml++/toml.h>

namespace lab {

inline int line_of(const toml::node& node) { return static_cast<int>(node.source().begin.line); }

/* What is kept of a file while its tables are read: its texts, and what is wrong with it. */
struct TomlText {
    std::string name;
    std::deque<std::string> texts;
    std::vector<std::pair<int, std::string>> errors; /* by line */

    void error(int line, const std::string& message) { errors.emplace_back(line, message); }

    std::string_view text_of(const toml::node& node, const std::string& what) {
        if (!node.is_string()) {
            error(line_of(node), what + " must be text");
            return "";
        }
        return texts.emplace_back(*node.value<std::string_view>());
    }

    /* Calls read(TABLE) with the text's root. */
    template <typename Read> void parse(std::string_view text, Read read) {
        try {
            read(toml::parse(text));
        } catch (const toml::parse_error& wrong) {
            error(static_cast<int>(wrong.source().begin.line), std::string(wrong.description()));
        }
    }

    /* "NAME:LINE: MESSAGE", by line. */
    std::vector<std::string> messages() {
        std::stable_sort(errors.begin(), errors.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        std::vector<std::string> all;
        for (const auto& [line, message] : errors)
            all.push_back(name + ":" + std::to_string(line) + ": " + message);
        return all;
    }
};

/* One table: each key is taken once, and what is left at the end is not known. */
class TomlFields {
  public:
    TomlFields(TomlText& source, const toml::table& table, std::string what)
        : source_(source), table_(table), what_(std::move(what)) {}

    ~TomlFields() {
        for (const auto& [key, node] : table_)
            if (std::find(known_.begin(), known_.end(), key.str()) == known_.end())
                source_.error(line_of(node),
                              what_ + ": unknown key \"" + std::string(key.str()) + "\"");
    }

    const toml::node* node(std::string_view key, bool needed = false) {
        known_.push_back(key);
        const toml::node* const found = table_.get(key);
        if (found == nullptr && needed)
            source_.error(line_of(table_), what_ + ": \"" + std::string(key) + "\" is missing");
        return found;
    }

    /* Text that is kept as long as the source; "" when there is none. */
    std::string_view text(std::string_view key, bool needed = false) {
        const toml::node* const found = node(key, needed);
        return found == nullptr ? std::string_view() : source_.text_of(*found, named(key));
    }

    bool flag(std::string_view key, bool otherwise = false) {
        return plain<bool>(key, "true or false").value_or(otherwise);
    }

    std::optional<long long> integer(std::string_view key) {
        return plain<int64_t>(key, "an integer");
    }

    double number(std::string_view key, double otherwise, bool needed = false) {
        const toml::node* const found = node(key, needed);
        if (found == nullptr)
            return otherwise;
        if (!found->is_number())
            wrong(*found, key, "a number");
        return found->value<double>().value_or(otherwise);
    }

    template <typename Enum>
    Enum choice(std::string_view key, std::initializer_list<std::pair<const char*, Enum>> names) {
        const toml::node* const found = node(key, true);
        if (found == nullptr)
            return {};
        std::string all;
        for (const auto& [name, value] : names) {
            if (found->value<std::string_view>() == std::string_view(name))
                return value;
            all += std::string(all.empty() ? "" : ", ") + '"' + name + '"';
        }
        wrong(*found, key, "one of " + all);
        return {};
    }

    std::vector<std::string_view> texts(std::string_view key) {
        std::vector<std::string_view> list;
        if (const toml::array* const items = array(key))
            for (const toml::node& item : *items)
                list.push_back(source_.text_of(item, named(key)));
        return list;
    }

    /* Tables of an array, one after the other. */
    template <typename Each> void tables(std::string_view key, Each each) {
        const toml::array* const items = array(key);
        for (size_t i = 0; items != nullptr && i < items->size(); ++i)
            if (const toml::table* const table = (*items)[i].as_table())
                each(*table);
            else
                wrong((*items)[i], key, "tables");
    }

    const toml::array* array(std::string_view key) {
        const toml::node* const found = node(key);
        if (found != nullptr && !found->is_array())
            wrong(*found, key, "a list");
        return found == nullptr ? nullptr : found->as_array();
    }

    std::string named(std::string_view key) const {
        return what_ + ": \"" + std::string(key) + "\"";
    }

    int line() const { return line_of(table_); }

    void wrong(const toml::node& node, std::string_view key, const std::string& type) {
        source_.error(line_of(node), named(key) + " must be " + type);
    }

  private:
    template <typename T> std::optional<T> plain(std::string_view key, const char* type) {
        const toml::node* const found = node(key);
        if (found == nullptr)
            return std::nullopt;
        if (!found->is<T>())
            wrong(*found, key, type);
        return found->is<T>() ? found->value<T>() : std::nullopt;
    }

    TomlText& source_;
    const toml::table& table_;
    std::string what_;
    std::vector<std::string_view> known_;
};

} // namespace lab
