// SPDX-License-Identifier: Apache-2.0
/* kvt-doctor's command line. */
#include "doctor.h"

#include <cstdio>

#include <getopt.h>

namespace {

constexpr const char* usage =
    "kvt-doctor [--json] [--services]\n"
    "Holds this phone against what kvt is compiled for, and says which commands can work.\n"
    "The modem is sent nothing.\n"
    "  --json      for a machine\n"
    "  --services  also asks the QMI framework which services are up (a look-up)\n"
    "Exit status: 0 when every command can work, 1 otherwise, 2 for a wrong command line.\n";

} // namespace

int main(int argc, char** argv) {
    static constexpr option long_options[] = {{"json", no_argument, nullptr, 'j'},
                                              {"services", no_argument, nullptr, 's'},
                                              {"help", no_argument, nullptr, 'h'},
                                              {}};
    doctor::Options options;
    bool json = false;
    for (int found; (found = ::getopt_long(argc, argv, "h", long_options, nullptr)) != -1;) {
        switch (found) {
        case 'j':
            json = true;
            break;
        case 's':
            options.services = true;
            break;
        case 'h':
            std::fputs(usage, stdout);
            return 0;
        default:
            std::fputs(usage, stderr);
            return 2;
        }
    }
    if (optind != argc) {
        std::fputs(usage, stderr);
        return 2;
    }
    const doctor::Report report = doctor::examine(options);
    if (json)
        doctor::print_json(report);
    else
        doctor::print_text(report);
    return doctor::all_good(report) ? 0 : 1;
}
