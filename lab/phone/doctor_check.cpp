// SPDX-License-Identifier: Apache-2.0
/* The checks: libraries and their symbols, service objects, message sizes, services, properties,
 * the AT channel. */
#include "doctor.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include "cutils_properties.h"
#include "phone_names.h"
#include "qmi_cci.h"
#include "qmi_services.h"

namespace doctor {

namespace {

struct Symbol {
    const char* library;
    const char* name;
    bool weak; /* kvt starts without it */
};

constexpr Symbol symbols[] = {
#include "symbols.inc"
};

/* Addresses of the symbols that were found. */
using Addresses = std::map<std::string, void*>;

template <typename Function> Function function(const Addresses& addresses, const char* name) {
    const auto found = addresses.find(name);
    return found != addresses.end() ? reinterpret_cast<Function>(found->second) : nullptr;
}

__attribute__((format(printf, 1, 2))) std::string text(const char* format, ...) {
    char buffer[512];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    return buffer;
}

unsigned need_of(const char* service) {
    static constexpr struct {
        const char* name;
        unsigned need;
    } rows[] = {{"vendor", need_vendor},
                {"uim", need_uim},
                {"sar", need_sar},
                {"nas", need_nas},
                {"vs", need_vs}};
    for (const auto& row : rows)
        if (std::strcmp(row.name, service) == 0)
            return row.need;
    return 0;
}

/* ---- libraries ---- */

std::string advice_for_library(const char* name) {
    return text("find it (find / -name %s) and put its folder into LD_LIBRARY_PATH", name);
}

/* One library, whose symbols are rows[0] to rows[count - 1]. It stays open. */
void check_library(const Symbol* rows, size_t count, Report& report, Addresses& addresses) {
    const char* const name = rows[0].library;
    void* const library = ::dlopen(name, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* const why = ::dlerror();
        report.checks.push_back({Check::bad, name,
                                 text("can't be opened (%s)", why != nullptr ? why : "no reason"),
                                 advice_for_library(name), need_start});
        return;
    }
    size_t found = 0;
    const char* path = name;
    for (size_t i = 0; i < count; ++i) {
        void* const address = ::dlsym(library, rows[i].name);
        if (address != nullptr) {
            Dl_info info{};
            if (found++ == 0 && ::dladdr(address, &info) != 0 && info.dli_fname != nullptr)
                path = info.dli_fname;
            addresses[rows[i].name] = address;
            continue;
        }
        Check check{Check::bad, text("%s %s", name, rows[i].name), "symbol is missing",
                    "the library is another version than kvt is made for: look for another copy "
                    "(find / -name " +
                        std::string(name) + ")",
                    need_start};
        if (rows[i].weak)
            check = {Check::note, check.name, "symbol is missing; kvt starts without it", "", 0};
        report.checks.push_back(check);
    }
    report.checks.push_back({found == count ? Check::good : Check::note, name,
                             text("%s, %zu of %zu symbols", path, found, count), "", 0});
}

void check_libraries(Report& report, Addresses& addresses) {
    for (size_t first = 0; first < std::size(symbols);) {
        size_t end = first;
        while (end < std::size(symbols) &&
               std::strcmp(symbols[end].library, symbols[first].library) == 0)
            ++end;
        check_library(symbols + first, end - first, report, addresses);
        first = end;
    }
}

/* ---- service objects and their messages ---- */

constexpr const char* other_layout =
    "the phone's records are laid out in another way: build kvt with this phone's header";

/* Most bytes that the service's table states for the message; negative when it has none. */
int64_t stated_bytes(const qmi_idl_service_object& object, const qmi::UsedMessage& message) {
    const qmi_idl_service_message_table_entry* const rows = object.msgid_to_msg[message.type];
    for (uint32_t i = 0; rows != nullptr && i < object.n_msgs[message.type]; ++i)
        if (rows[i].qmi_message_id == message.id)
            return rows[i].max_msg_len;
    return -1;
}

using StructLen = decltype(&qmi_idl_get_message_c_struct_len);

void check_message(const qmi_idl_service_object& object, const qmi::UsedMessage& message,
                   StructLen struct_len, Report& report, unsigned& good) {
    static constexpr const char* kinds[] = {"request", "response", "indication"};
    const std::string name =
        text("%s 0x%04X %s (%s)", message.service, message.id, kinds[message.type], message.name);
    const auto bad = [&](const std::string& found) {
        report.checks.push_back({Check::bad, name, found, other_layout, need_of(message.service)});
    };
    const int64_t bytes = stated_bytes(object, message);
    uint32_t size = 0;
    if (bytes < 0 || struct_len(&object, message.type, message.id, &size) != 0)
        bad("the service has no such message");
    else if (size != message.record_size)
        bad(text("%u bytes in memory, kvt's record has %u", size, message.record_size));
    else if (bytes < message.most_bytes)
        bad(text("at most %d bytes on the wire, kvt's record takes up to %u",
                 static_cast<int>(bytes), message.most_bytes));
    else
        ++good;
}

void check_service_object(const qmi::UsedService& service, const Addresses& addresses,
                          StructLen struct_len, Report& report) {
    const auto found = addresses.find(service.object);
    if (found == addresses.end())
        return; /* told with its library */
    const auto& object = *static_cast<const qmi_idl_service_object*>(found->second);
    const bool known = object.library_version == QMI_IDL_LIBRARY_VERSION;
    const bool same = known && object.idl_version == QMI_IDL_MAJOR &&
                      object.idl_minor_version == service.idl_minor;
    Check check{Check::good, text("%s object", service.name),
                text("version %u.%u, IDL library %u", object.idl_version,
                     known ? object.idl_minor_version : 0, object.library_version),
                "", 0};
    if (!same) {
        check.state = Check::bad;
        check.found += text("; kvt is made for %u.%u, IDL library %u", unsigned{QMI_IDL_MAJOR},
                            service.idl_minor, unsigned{QMI_IDL_LIBRARY_VERSION});
        check.remedy = other_layout;
        check.lost = need_of(service.name);
    }
    report.checks.push_back(check);
    if (!known || struct_len == nullptr)
        return; /* its tables can't be read */
    unsigned good = 0;
    for (const qmi::UsedMessage& message : qmi::used_messages)
        if (std::strcmp(message.service, service.name) == 0)
            check_message(object, message, struct_len, report, good);
    report.checks.push_back({Check::good, text("%s messages", service.name),
                             text("%u have kvt's size and number of bytes", good), "", 0});
}

/* ---- services ---- */

/* As long as kvt itself waits for a service. */
constexpr int look_ups = 5;
constexpr timespec between_look_ups{0, 200000000};

/* The framework looks a service up by number and version: no tables are needed. */
constexpr qmi_idl_service_object vendor_object = {
    QMI_IDL_LIBRARY_VERSION, QMI_IDL_MAJOR, QMI_VENDOR_SERVICE, 0, {}, {}, nullptr,
    QMI_VENDOR_IDL_MINOR,    nullptr};

void check_service(const char* name, qmi_idl_service_object_type object,
                   decltype(&qmi_client_get_service_list) get_service_list, Report& report) {
    int error = -1;
    unsigned instances = 0;
    for (int i = 0; i < look_ups && (error != 0 || instances == 0); ++i) {
        if (i > 0)
            ::nanosleep(&between_look_ups, nullptr);
        error = get_service_list(object, nullptr, nullptr, &instances);
    }
    if (error == 0 && instances > 0) {
        report.checks.push_back(
            {Check::good, text("%s service", name), text("up, %u of it", instances), "", 0});
        return;
    }
    const bool vendor = object == &vendor_object;
    report.checks.push_back(
        {Check::bad, text("%s service", name), text("not up (result %d)", error),
         vendor ? "only phones of the maker have it; on one of them the modem may be restarting"
                : "run as root; the modem may be restarting",
         need_of(name)});
}

void check_services(const Addresses& addresses, Report& report) {
    const auto get_service_list =
        function<decltype(&qmi_client_get_service_list)>(addresses, "qmi_client_get_service_list");
    if (get_service_list == nullptr)
        return;
    check_service("vendor", &vendor_object, get_service_list, report);
    for (const qmi::UsedService& service : qmi::used_services)
        if (const auto found = addresses.find(service.object); found != addresses.end())
            check_service(service.name, static_cast<qmi_idl_service_object_type>(found->second),
                          get_service_list, report);
}

/* ---- the rest of the phone ---- */

void check_properties(const Addresses& addresses, Report& report) {
    static constexpr const char* names[] = {
        PHONE_PROPERTY_PRINT, PHONE_PROPERTY_TRACE, PHONE_PROPERTY_RESTART_LEVEL,
        PHONE_PROPERTY_RESTART_LEVEL_BACKUP, PHONE_PROPERTY_RESTART_WAIT};
    const auto get = function<decltype(&property_get)>(addresses, "property_get");
    if (get == nullptr)
        return;
    for (const char* const name : names) {
        char value[256] = {};
        get(name, value, "");
        Check check{Check::good, name, value[0] != '\0' ? text("\"%s\"", value) : "not set", "", 0};
        if (std::strcmp(name, PHONE_PROPERTY_PRINT) == 0 && value[0] != '\0' &&
            std::strcmp(value, "1") != 0) {
            check.state = Check::note;
            check.found += ": kvt keeps its log lines to itself, so that few outcomes are told";
            check.remedy = "setprop " PHONE_PROPERTY_PRINT " 1";
        }
        report.checks.push_back(check);
    }
}

std::string first_line(const char* path) {
    char line[64] = {};
    if (std::FILE* const file = std::fopen(path, "r")) {
        if (std::fgets(line, sizeof line, file) != nullptr)
            line[std::strcspn(line, "\n")] = '\0';
        std::fclose(file);
    }
    return line;
}

void check_rights(bool phone, Report& report) {
    const unsigned user = ::geteuid();
    const bool doubtful = phone && user != 0;
    report.checks.push_back({doubtful ? Check::note : Check::good, "user",
                             user == 0 ? "root" : text("number %u", user),
                             doubtful ? "run as root: the modem is closed to others" : "", 0});
    const std::string enforced = first_line("/sys/fs/selinux/enforce");
    if (!enforced.empty())
        report.checks.push_back(
            {Check::good, "SELinux", enforced == "0" ? "permissive" : "enforcing", "", 0});
}

} // namespace

Check check_at_channel(const char* path, bool phone) {
    Check check{Check::bad, path, "", "", need_at};
    struct stat status {};
    const bool there = ::stat(path, &status) == 0;
    const bool device = there && S_ISCHR(status.st_mode);
    const std::string folder(path, std::strrchr(path, '/') + 1);
    if (device && ::access(path, W_OK) == 0) {
        check.state = Check::good;
        check.found = "a device that may be written";
    } else if (device) {
        check.found = "a device that this user may not write";
        check.remedy = "run as root; where SELinux is enforcing, see its log (dmesg | grep avc)";
    } else if (there && (phone || !S_ISREG(status.st_mode))) {
        check.found = "not a device";
        check.remedy =
            std::string("a run without the device leaves a plain file there: rm ") + path;
    } else if (!phone && ::access(there ? path : folder.c_str(), W_OK) == 0) {
        check.state = Check::note;
        check.found = there ? "a plain file" : "not there";
        check.found += "; this is no phone, and AT commands land in a plain file of that name";
    } else {
        check.found = there ? "a plain file that this user may not write" : "not there";
        check.remedy = phone ? "look for the modem's AT device under another name (ls /dev/smd* "
                               "/dev/at*) and link it"
                             : "run as root";
    }
    if (check.state != Check::bad)
        check.lost = 0;
    return check;
}

Report examine(const Options& options) {
    Report report;
    Addresses addresses;
    const bool phone = ::access("/system/bin/app_process64", F_OK) == 0;
    check_libraries(report, addresses);
    const auto struct_len = function<StructLen>(addresses, "qmi_idl_get_message_c_struct_len");
    for (const qmi::UsedService& service : qmi::used_services)
        check_service_object(service, addresses, struct_len, report);
    if (options.services)
        check_services(addresses, report);
    check_properties(addresses, report);
    report.checks.push_back(check_at_channel(PHONE_AT_CHANNEL, phone));
    check_rights(phone, report);
    return report;
}

bool can_work(const Report& report, const CommandNeeds& command) {
    for (const Check& check : report.checks)
        if ((check.lost & (command.needs | need_start)) != 0)
            return false;
    return true;
}

bool all_good(const Report& report) {
    for (const Check& check : report.checks)
        if (check.state == Check::bad)
            return false;
    return true;
}

std::string lost_commands(const Check& check) {
    if ((check.lost & need_start) != 0)
        return "every command, kvt does not start";
    std::string result;
    for (const CommandNeeds* first = command_needs; first != std::end(command_needs);) {
        const CommandNeeds* const end = group_end(first);
        const auto lost = [&](const CommandNeeds& row) { return (check.lost & row.needs) != 0; };
        const auto add = [&](const std::string& words) {
            result += (result.empty() ? "" : ", ") + words;
        };
        if (std::all_of(first, end, lost))
            add(std::to_string(std::atoi(first->words)));
        else
            for (const CommandNeeds* row = first; row != end; ++row)
                if (lost(*row))
                    add(row->words);
        first = end;
    }
    return result.empty() ? "no command, none uses it" : result;
}

const CommandNeeds* group_end(const CommandNeeds* first) {
    const int group = std::atoi(first->words);
    return std::find_if(first, std::end(command_needs),
                        [&](const CommandNeeds& row) { return std::atoi(row.words) != group; });
}

} // namespace doctor
