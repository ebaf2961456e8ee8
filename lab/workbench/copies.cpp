// SPDX-License-Identifier: Apache-2.0
/* kvt-lab phone new, save and restore: whole phones. */
#include "workbench/phone.h"

#include <cstdlib>
#include <sstream>

#include "workbench/directory.h"
#include "workbench/named_settings.h"
#include "workbench/rules.h"
#include "workbench/scenario.h"

namespace lab::workbench {

namespace fs = std::filesystem;

namespace {

constexpr const char* lock_file = ".lock";
/* What belongs to a moment and not to the phone's state. */
bool is_left_out(const fs::path& name) {
    const std::string text = name.string();
    return text[0] == '.' || text == "log" || text == "log.1";
}

bool copy_phone(const fs::path& from, const fs::path& to, std::string& error) {
    std::error_code failed;
    constexpr auto how = fs::copy_options::recursive | fs::copy_options::copy_symlinks;
    for (fs::directory_iterator entry(from, failed), end; !failed && entry != end;
         entry.increment(failed)) {
        const fs::path name = entry->path().filename();
        /* Sockets and terminals are of a moment too. */
        if (is_left_out(name) || fs::is_other(entry->symlink_status()))
            continue;
        fs::copy(entry->path(), to / name, how, failed);
        if (failed)
            break;
    }
    if (failed)
        error = from.string() + " can't be copied: " + failed.message();
    return !failed;
}

/* Times tell which of two files counts, so copies keep them. */
void keep_times(const fs::path& from, const fs::path& to) {
    std::error_code failed;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(to, failed))
        if (entry.is_regular_file(failed))
            fs::last_write_time(
                entry.path(),
                fs::last_write_time(from / entry.path().lexically_relative(to), failed), failed);
}

/* Our phone, in `directory`, becomes as the scenario says. */
bool apply(const Scenario& scenario, const fs::path& directory, std::string& error) {
    for (const std::string& line : scenario.set) {
        std::istringstream text(line);
        std::vector<std::string> values;
        std::string name;
        text >> name;
        for (std::string word; text >> word;)
            values.push_back(word);
        for (int sub = 0; sub < 2; ++sub)
            if (!set_name(name, values, sub, error))
                return false;
    }
    for (const auto& [name, text] : scenario.files)
        if (!write_phone_file(name, text, error))
            return false;
    std::string rules;
    for (const std::string& rule : scenario.faults) {
        error = wrong_with_rule(rule);
        if (!error.empty())
            return false;
        rules += rule + "\n";
    }
    if (!rules.empty() && !write_phone_file("faults", rules, error))
        return false;
    for (const std::string& name : scenario.remove) {
        std::error_code failed;
        if (!fs::remove(directory / name, failed)) {
            error = "'" + name + "' is no file of a fresh phone";
            return false;
        }
    }
    return true;
}

} // namespace

int make_new(const Options& options) {
    if (options.words.size() != 1)
        return refuse("new takes the directory to make");
    const fs::path target = options.words[0];
    Scenario scenario;
    std::string error;
    if (!options.from.empty() && !load_scenario(options.from, scenario, error))
        return refuse(error);
    std::error_code failed;
    if (fs::exists(target, failed) && !fs::is_empty(target, failed))
        return refuse(target.string() + " is there already");
    NewFolder folder(target);
    ::setenv("KVT_PHONE", folder.path().c_str(), 1);
    if (!seed_phone(error) || !apply(scenario, folder.path(), error))
        return refuse(error);
    return folder.put_in_place(false, error) ? 0 : refuse(error);
}

int save(const Options& options) {
    if (options.words.size() != 1)
        return refuse("save takes the directory to make");
    const fs::path phone = phone_directory(), target = options.words[0];
    std::error_code failed;
    if (fs::exists(target, failed) && !fs::is_empty(target, failed))
        return refuse(target.string() + " is there already");
    if (const fs::path inside =
            fs::weakly_canonical(fs::absolute(target), failed)
                .lexically_relative(fs::weakly_canonical(fs::absolute(phone), failed));
        !inside.empty() && *inside.begin() != "..")
        return refuse(target.string() + " lies in the phone itself");
    const Lock lock(phone);
    if (!lock.held())
        return refuse(phone.string() + ": no phone, or another process holds it");
    NewFolder folder(target);
    std::string error;
    if (!copy_phone(phone, folder.path(), error))
        return refuse(error);
    keep_times(phone, folder.path());
    return folder.put_in_place(false, error) ? 0 : refuse(error);
}

int restore(const Options& options) {
    if (options.words.size() != 1)
        return refuse("restore takes the copy");
    const fs::path from = options.words[0];
    std::error_code failed;
    fs::path phone = fs::weakly_canonical(phone_directory(), failed);
    if (!fs::is_directory(from / "nv", failed))
        return refuse(from.string() + " is no copy of a phone");
    const bool there = fs::exists(phone, failed);
    const Lock lock(phone);
    if (there && !lock.held())
        return refuse(phone.string() + ": another process holds it");
    NewFolder folder(phone);
    std::string error;
    if (!copy_phone(from, folder.path(), error))
        return refuse(error);
    keep_times(from, folder.path());
    /* The log goes on, and the lock that others wait for stays the phone's. */
    for (const char* const name : {lock_file, "log", "log.1"})
        fs::create_hard_link(phone / name, folder.path() / name, failed);
    return folder.put_in_place(there, error) ? 0 : refuse(error);
}

} // namespace lab::workbench
