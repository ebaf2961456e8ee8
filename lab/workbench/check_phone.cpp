// SPDX-License-Identifier: Apache-2.0
/* kvt-lab phone check: tells what a person wrote into the phone's files and the phone does not
 * understand, before a command runs on it. */
#include "workbench/phone.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <sstream>

#include <fnmatch.h>

#include "phone_lines.h"
#include "workbench/directory.h"
#include "workbench/identity.h"
#include "workbench/levels.h"
#include "workbench/named_settings.h"

namespace lab::workbench {

namespace fs = std::filesystem;

namespace {

/* What else may lie in a phone besides settings; "*" does not reach over a slash. */
constexpr const char* other_files[] = {
    "nv/[01]/*",
    "prop/*",
    "services",
    "restart",
    "dump/*",
    "sim/[12].power",
    "sim/[12].detect",
    "sim/hotswap",
    "euicc/eid",
    "euicc/profiles",
    "euicc/smdp",
    "euicc/channels",
    "features/*",
    "stats/[01].*",
    "stats_debug/*.txt",
    "stats_debug/log_codes",
    "diag/[0-9A-Fa-f][0-9A-Fa-f]*",
    "diag/log_stream",
    "diag/event_stream",
    "ind/*.0x*",
    "at/commands",
    "at/tty",
    "faults",
    "faults.counts",
    "log",
    "log.1",
};

/* Tells what is wrong, and remembers that something was. */
class Complaints {
  public:
    void add(const std::string& file, int line, const std::string& message) {
        std::printf("%s:%s %s\n", file.c_str(),
                    line > 0 ? (std::to_string(line) + ":").c_str() : "", message.c_str());
        any_ = true;
    }
    void add(const std::string& file, const phone_files::Complaints& complaints) {
        for (const phone_files::Complaint& complaint : complaints)
            add(file, complaint.line, complaint.text);
    }
    bool any() const { return any_; }

  private:
    bool any_ = false;
};

/* Calls check(LINE) for each line; what it returns is a complaint. */
template <typename Check>
void check_lines(const std::string& name, Complaints& complaints, Check check) {
    const std::optional<std::string> text = read_phone_file(name);
    if (!text)
        return;
    std::istringstream lines(*text);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (const std::string wrong = check(line); !wrong.empty())
            complaints.add(name, number, wrong);
    }
}

/* A file as one of the phone's readers of it finds it. */
template <typename Value>
void check_read(const std::string& file, Complaints& complaints,
                Value (*read)(const std::string&, phone_files::Complaints&)) {
    const std::optional<std::string> text = setting_text(file);
    if (!text)
        return;
    phone_files::Complaints wrong;
    read(*text, wrong);
    complaints.add(file, wrong);
}

void check_lists(Complaints& complaints) {
    check_read("faults", complaints, phone_files::read_rules);
    check_read("at/commands", complaints, phone_files::read_at_rows);
    for (const std::string slot : {"sim/1", "sim/2"}) {
        check_read(slot + ".power", complaints, phone_files::read_power);
        check_read(slot + ".detect", complaints, phone_files::read_detect);
    }
    check_read("sim/hotswap", complaints, phone_files::read_hotswap);
    check_read("euicc/profiles", complaints, phone_files::read_profiles);
    check_read("euicc/channels", complaints, phone_files::read_channels);
}

void check_values(Complaints& complaints) {
    for (const phone_files::Setting& row : phone_files::settings)
        if (const auto text = setting_text(row.file)) {
            phone_files::Complaints wrong;
            phone_files::value_of(row, *text, wrong);
            complaints.add(row.file, wrong);
        }
    if (const auto text = setting_text("services"); text && !text->empty())
        if (const std::string wrong = wrong_with_services(*text); !wrong.empty())
            complaints.add("services", 1, wrong);
    if (const auto eid = setting_text("euicc/eid"); eid && checked_eid(*eid) != *eid)
        complaints.add("euicc/eid", 1,
                       "'" + *eid +
                           "' is no EID: 32 digits of which the last two are check digits" +
                           (checked_eid(*eid).empty() ? "" : "; right is " + checked_eid(*eid)));
    for (const char* const item : {"nv/0/550", "nv/1/550"})
        if (const auto bytes = read_phone_file(item); bytes && imei_digits(*bytes).empty())
            complaints.add(item, 0, "the item holds no IMEI");
}

bool is_known(const std::string& name) {
    const auto fits = [&](const char* pattern) {
        return ::fnmatch(pattern, name.c_str(), FNM_PATHNAME | FNM_PERIOD) == 0;
    };
    return name.rfind("efs/0/", 0) == 0 || name.rfind("efs/1/", 0) == 0 ||
           std::any_of(std::begin(other_files), std::end(other_files), fits) ||
           std::any_of(std::begin(phone_files::settings), std::end(phone_files::settings),
                       [&](const phone_files::Setting& row) { return name == row.file; });
}

void check_names(Complaints& complaints) {
    std::vector<std::string> strangers;
    std::error_code failed;
    for (fs::recursive_directory_iterator entry(phone_directory(), failed), end;
         !failed && entry != end; entry.increment(failed)) {
        const std::string name = entry->path().lexically_relative(phone_directory()).string();
        if (name[0] == '.')
            entry.disable_recursion_pending();
        else if (entry->is_regular_file(failed) && !is_known(name))
            strangers.push_back(name);
    }
    std::sort(strangers.begin(), strangers.end());
    for (const std::string& name : strangers)
        complaints.add(name, 0, "no file of that name counts");
}

} // namespace

int check_phone(const Options& options) {
    if (!options.words.empty())
        return refuse("check takes no argument");
    std::error_code failed;
    if (!fs::is_directory(phone_directory(), failed))
        return refuse("there is no phone " + phone_directory().string());
    Complaints complaints;
    check_values(complaints);
    check_lists(complaints);
    for (const vs_records::Record& record : vs_records::items)
        for (int sub = 0; sub < 2; ++sub)
            check_lines("stats/" + std::to_string(sub) + "." + std::to_string(record.id) + ".txt",
                        complaints,
                        [&](const std::string& line) { return wrong_with_level(record, line); });
    for (const vs_records::Record& record : vs_records::debug_blocks)
        check_lines(std::string("stats_debug/") + record.name + ".txt", complaints,
                    [&](const std::string& line) { return wrong_with_level(record, line); });
    check_names(complaints);
    return complaints.any() ? 1 : 0;
}

} // namespace lab::workbench
