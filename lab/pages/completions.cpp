// SPDX-License-Identifier: Apache-2.0
/* Completions for shells: one table of rows, "WORDS BEFORE|THEIR PATTERN|WORD|MEANING", and a few
 * lines that look into it. A row without a word is a hint: an argument whose values are too many.
 */
#include <map>

#include "pages.h"
#include "phrases.h"

namespace lab {

namespace {

constexpr size_t meaning_max = 76;
constexpr long long listed_max = 8; /* more values than that are not offered one by one */

/* One line without what separates fields, or means something between single quotes. */
std::string field(const std::string& text) {
    std::string result;
    for (const char c : text)
        if (c != '\'' && c != '`')
            result += c == '|' ? '/' : c;
    if (result.size() > meaning_max)
        result = result.substr(0, result.rfind(' ', meaning_max - 4)) + " ...";
    return result;
}

/* Rows in their order; a word that several commands share gets what they have in common. */
class Table {
  public:
    void add(size_t before, const std::string& pattern, const std::string& word,
             const std::string& meaning) {
        const std::string key = std::to_string(before) + "|" + pattern + "|" + word;
        if (const auto found = places_.find(key); found == places_.end()) {
            places_[key] = rows_.size();
            rows_.push_back({key, meaning});
        } else if (std::string& there = rows_[found->second].meaning; there != meaning) {
            there += "; " + meaning;
        }
    }

    std::string text() const {
        std::string all;
        for (const Row& row : rows_)
            all += row.key + "|" + field(row.meaning) + "\n";
        return all;
    }

  private:
    struct Row {
        std::string key, meaning;
    };
    std::vector<Row> rows_;
    std::map<std::string, size_t> places_;
};

std::string shown(const Argument& argument) {
    return std::string(argument.name) + ": " + std::string(argument.meaning);
}

void add_argument(Table& table, size_t before, const std::string& pattern,
                  const Argument& argument) {
    for (const Name& name : argument.names)
        table.add(before, pattern, std::to_string(name.number), std::string(name.text));
    if (!argument.names.empty())
        return;
    const bool few = argument.kind == ArgumentKind::integer && argument.has_range &&
                     argument.most == 1 && argument.max - argument.min < listed_max;
    for (long long n = argument.min; few && n <= argument.max; ++n)
        table.add(before, pattern, std::to_string(n), shown(argument));
    if (!few)
        table.add(before, pattern, "", shown(argument));
}

std::string rows() {
    Table table;
    for (const Group& group : groups())
        table.add(0, "", std::to_string(group.number), std::string(group.title));
    for (const Command& row : catalogue()) {
        std::string pattern;
        size_t before = 0;
        for (const std::string& word : words_of(row.words)) {
            if (before > 0)
                table.add(before, pattern, word, std::string(row.title));
            pattern += (before++ > 0 ? " " : "") + word;
        }
        for (const Argument& argument : row.arguments) {
            add_argument(table, before++, pattern, argument);
            pattern += " *";
        }
    }
    return table.text();
}

constexpr const char* made = "Made from the catalogue of commands.\n";

} // namespace

std::string bash_completion() {
    return std::string("# bash completion for kvt: words and what they mean. ") + made +
           "_kvt_rows='" + rows() + "'\n" +
           R"sh(_kvt() {
    local IFS=' ' current=${COMP_WORDS[COMP_CWORD]} before count pattern word meaning line
    local -a words=() lines=()
    before=${COMP_WORDS[*]:1:COMP_CWORD-1}
    while IFS='|' read -r count pattern word meaning; do
        # shellcheck disable=SC2053 # the pattern is one
        [[ -n $word && $count == $((COMP_CWORD - 1)) && $before == $pattern && $word == "$current"* ]] ||
            continue
        printf -v line '%-3s -- %s' "$word" "$meaning"
        words+=("$word")
        lines+=("$line")
    done <<<"$_kvt_rows"
    # One word is put in; several are shown with what they mean. Menu completion puts in what is shown.
    if ((${#words[@]} > 1)) && [[ ${COMP_TYPE:-9} != 37 ]]; then
        COMPREPLY=("${lines[@]}")
    else
        COMPREPLY=("${words[@]}")
    fi
}
complete -o nosort -F _kvt kvt 2>/dev/null || complete -F _kvt kvt
)sh";
}

std::string zsh_completion() {
    return std::string("#compdef kvt\n# zsh completion for kvt: words and what they mean. ") +
           made + "_kvt_rows='" + rows() + "'\n" +
           R"sh(_kvt() {
    local before="${words[2,CURRENT-1]}" row
    local -a fields found
    for row in "${(@f)_kvt_rows}"; do
        fields=("${(@s:|:)row}")
        [[ $fields[1] == $((CURRENT - 2)) && $before == ${~fields[2]} ]] || continue
        if [[ -n $fields[3] ]]; then
            found+=("$fields[3]:$fields[4]")
        else
            _message "$fields[4]"
        fi
    done
    (($#found)) && _describe -V word found
}
_kvt "$@"
)sh";
}

} // namespace lab
