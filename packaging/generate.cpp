/* generate man|bash|zsh: the man page or a shell's completion, from the tool's own command set. */
#include <cstdio>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "help.h"

namespace {

/* Values that an argument of that name takes; others are free. */
const std::map<std::string, std::string> argument_values = {
    {"sub", "0 1"},  {"opt", "0 1"},     {"print", "0 1"},    {"type", "0 1"},
    {"mode", "0 1"}, {"set_val", "0 1"}, {"v_ant", "0 1"},    {"v_sys", "0 1 2 3 4"},
    {"0", "0"},      {"esim_on", "1 2"}, {"debug_on", "0 1"}, {"qmi_id", "0 1 2 3 4 5"},
    {"1", "1"},
};

struct Command {
    int sub; /* -1: the group has no numbered commands */
    std::vector<std::string> arguments;
    std::string meaning;
};

struct Group {
    int number;
    std::string title;
    std::vector<Command> commands;
    std::vector<std::string> notes;
};

std::string trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? ""
                                      : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

/* What stands between the comment marks, as far as they are there. */
std::string comment(const std::string& text) {
    const size_t from = text.find("/*");
    return from == std::string::npos
               ? ""
               : trimmed(text.substr(from + 2, text.find("*/") == std::string::npos
                                                   ? std::string::npos
                                                   : text.find("*/") - from - 2));
}

std::vector<Group> read_groups() {
    std::vector<Group> groups;
    for (const help_row& row : help_rows()) {
        const std::string text = row.text;
        switch (row.kind) {
        case help_row::title: {
            const std::string title = trimmed(text);
            groups.push_back(
                {row.group, title.substr(0, title.find_last_not_of(": ") + 1), {}, {}});
            break;
        }
        case help_row::command:
        case help_row::usage: {
            Command command{row.kind == help_row::command ? row.sub : -1, {}, comment(text)};
            std::istringstream words(text.substr(0, text.find("/*")));
            for (std::string word; words >> word;)
                command.arguments.push_back(word);
            groups.back().commands.push_back(command);
            break;
        }
        case help_row::line:
            groups.back().notes.push_back(text);
            break;
        }
    }
    return groups;
}

std::string escaped(const std::string& text, const char* special, const char* by) {
    std::string out;
    for (const char c : text) {
        if (std::string(special).find(c) != std::string::npos)
            out += by;
        out += c;
    }
    return out;
}

void write_man(const std::vector<Group>& groups) {
    std::puts(
        ".TH KVT 1 \"\" \"kvt\" \"User Commands\"\n"
        ".SH NAME\n"
        "kvt \\- modem test tool for Android phones\n"
        ".SH SYNOPSIS\n"
        ".B kvt\n"
        ".I GROUP\n"
        ".RI [ SUB ]\n"
        ".RI [ ARGUMENTS ...]\n"
        ".SH DESCRIPTION\n"
        "Each run performs one modem command and prints its outcome. Without a group, or with one\n"
        "that is none, the whole help is printed. Arguments in angle brackets below are decimal\n"
        "numbers unless said otherwise.\n"
        ".PP\n"
        "This build runs against a simulated phone, a directory of plain files.\n"
        ".SH COMMANDS");
    for (const Group& group : groups) {
        std::printf(".SS \"%d: %s\"\n", group.number, group.title.c_str());
        for (const Command& command : group.commands) {
            std::printf(".TP\n\\fBkvt %d", group.number);
            if (command.sub >= 0)
                std::printf(" %d", command.sub);
            std::printf("\\fR");
            for (const std::string& argument : command.arguments)
                std::printf(" \\fI%s\\fR", escaped(argument, "\\", "\\").c_str());
            std::printf("\n%s\n", command.meaning.empty() ? "\\&" : command.meaning.c_str());
        }
        if (group.notes.empty())
            continue;
        std::puts(".PP\n.nf");
        for (const std::string& note : group.notes)
            std::printf("\\&%s\n", trimmed(note).c_str());
        std::puts(".fi");
    }
    std::puts(".SH EXIT STATUS\n"
              "Always 0. Success or failure is told only by the text on standard output.\n"
              ".SH ENVIRONMENT\n"
              ".TP\n"
              ".B KVT_PHONE\n"
              "Directory of the simulated phone. Without it,\n"
              ".I kvt/phone\n"
              "under\n"
              ".B XDG_STATE_HOME\n"
              "(\\fI~/.local/state\\fR). It is made at first use; delete it for a fresh phone.\n"
              ".SH EXAMPLES\n"
              ".nf\n"
              "kvt 4 5 0 /nv/item_files/modem/demo 1 2 255\n"
              "kvt 4 4 0 /nv/item_files/modem/demo\n"
              "kvt 5 0 0 0 1000 0x7c\n"
              ".fi");
}

/* Cases "GROUP", "GROUP SUB" and "GROUP SUB ARGUMENTS..." to the words that may follow. */
void write_cases(const std::vector<Group>& groups) {
    std::string numbers;
    for (const Group& group : groups)
        numbers += (numbers.empty() ? "" : " ") + std::to_string(group.number);
    std::printf("        '') words='%s' ;;\n", numbers.c_str());
    for (const Group& group : groups) {
        std::string subs;
        std::map<std::string, std::string> cases;
        for (const Command& command : group.commands) {
            std::string before = std::to_string(group.number);
            if (command.sub >= 0) {
                const std::string sub = std::to_string(command.sub);
                if ((" " + subs + " ").find(" " + sub + " ") == std::string::npos)
                    subs += (subs.empty() ? "" : " ") + sub;
                before += " " + sub;
            }
            for (const std::string& argument : command.arguments) {
                if (const auto it = argument_values.find(argument); it != argument_values.end()) {
                    std::string& words = cases[before];
                    words += (words.empty() ? "" : " ") + it->second;
                }
                before += " *";
            }
        }
        if (!subs.empty())
            std::printf("        '%d') words='%s' ;;\n", group.number, subs.c_str());
        for (const auto& [before, words] : cases) {
            std::string pattern; /* an argument is any one word */
            for (const char c : before)
                pattern += c == '*' ? "+([[:graph:]])" : c == ' ' ? "\\ " : std::string(1, c);
            std::printf("        %s) words='%s' ;;\n", pattern.c_str(), words.c_str());
        }
    }
}

void write_bash(const std::vector<Group>& groups) {
    std::puts("# bash completion for kvt: groups, sub-commands and the values of their arguments.\n"
              "shopt -s extglob\n"
              "_kvt() {\n"
              "    local before=\"${COMP_WORDS[*]:1:COMP_CWORD-1}\" words=\n"
              "    case $before in");
    write_cases(groups);
    std::puts("    esac\n"
              "    COMPREPLY=($(compgen -W \"$words\" -- \"${COMP_WORDS[COMP_CWORD]}\"))\n"
              "}\n"
              "complete -F _kvt kvt");
}

void write_zsh(const std::vector<Group>& groups) {
    std::puts("#compdef kvt\n"
              "# zsh completion for kvt: groups, sub-commands and the values of their arguments.\n"
              "_kvt() {\n"
              "    setopt localoptions kshglob\n"
              "    local before=\"${words[2,CURRENT-1]}\"\n"
              "    local -a rows\n"
              "    case $before in\n"
              "        '')\n"
              "            rows=(");
    for (const Group& group : groups)
        std::printf("                '%d:%s'\n", group.number,
                    escaped(group.title, "'", "'\\'").c_str());
    std::puts("            )\n"
              "            _describe group rows\n"
              "            return ;;");
    for (const Group& group : groups) {
        if (group.commands.empty() || group.commands.front().sub < 0)
            continue;
        std::printf("        '%d')\n            rows=(\n", group.number);
        for (const Command& command : group.commands)
            std::printf("                '%d:%s'\n", command.sub,
                        escaped(command.meaning, "'", "'\\'").c_str());
        std::puts("            )\n"
                  "            _describe command rows\n"
                  "            return ;;");
    }
    std::puts("    esac\n"
              "    local -a values\n"
              "    local words=\n"
              "    case $before in");
    write_cases(groups);
    std::puts("    esac\n"
              "    values=(${=words})\n"
              "    compadd -a values\n"
              "}\n"
              "_kvt \"$@\"");
}

} // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "";
    const std::vector<Group> groups = read_groups();
    if (what == "man")
        write_man(groups);
    else if (what == "bash")
        write_bash(groups);
    else if (what == "zsh")
        write_zsh(groups);
    else
        return 2;
    return 0;
}
