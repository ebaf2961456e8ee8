// SPDX-License-Identifier: Apache-2.0
#include "workbench/scenario.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "find_kvt.h"
#include "toml_fields.h"

namespace lab::workbench {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> own_texts(TomlFields& fields, std::string_view key) {
    std::vector<std::string> list;
    for (const std::string_view text : fields.texts(key))
        list.emplace_back(text);
    return list;
}

} // namespace

std::string scenario_folder() { return own_folder() + "/../share/kvt/scenarios"; }

bool load_scenario(const std::string& name, Scenario& scenario, std::string& error) {
    const bool is_path = name.find('/') != std::string::npos ||
                         (name.size() > 5 && name.compare(name.size() - 5, 5, ".toml") == 0);
    const std::string path = is_path ? name : scenario_folder() + "/" + name + ".toml";
    std::error_code failed;
    std::ifstream file(path, std::ios::binary);
    if (!file || !fs::is_regular_file(path, failed)) {
        error = path + " can't be read; scenarios here:";
        for (fs::directory_iterator entry(scenario_folder(), failed), end; !failed && entry != end;
             entry.increment(failed))
            if (entry->path().extension() == ".toml")
                error += " " + entry->path().stem().string();
        return false;
    }
    TomlText text{path, {}, {}};
    text.parse(std::string(std::istreambuf_iterator<char>(file), {}), [&](const toml::table& root) {
        TomlFields fields(text, root, "scenario");
        scenario.title = fields.text("title", true);
        scenario.about = fields.text("about", true);
        scenario.set = own_texts(fields, "set");
        scenario.faults = own_texts(fields, "faults");
        scenario.remove = own_texts(fields, "remove");
        fields.text("plan", true);
        if (const toml::node* const files = fields.node("files")) {
            if (!files->is_table())
                fields.wrong(*files, "files", "a table");
            else
                for (const auto& [file_name, node] : *files->as_table())
                    scenario.files.emplace_back(file_name.str(),
                                                text.text_of(node, "a file's text"));
        }
        if (const toml::node* const verdicts = fields.node("verdicts", true);
            verdicts != nullptr && !verdicts->is_table())
            fields.wrong(*verdicts, "verdicts", "a table");
    });
    if (!text.errors.empty())
        error = text.messages().front();
    return text.errors.empty();
}

} // namespace lab::workbench
