// SPDX-License-Identifier: Apache-2.0
/* The argument vector of the whole tool. The first two bytes choose group and sub-command, the rest
 * is the arguments, NUL between them. Each input meets a fresh phone; sleeps take no time and no
 * shell runs. */
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <time.h>
#include <unistd.h>

#include "fuzz_phone.h"

#define main kvt_main
#include "../modem/hal/kvt/main.cpp"
#undef main

extern "C" {
unsigned sleep(unsigned) { return 0; }
int usleep(useconds_t) { return 0; }
int nanosleep(const timespec*, timespec*) { return 0; }
int clock_nanosleep(clockid_t, int, const timespec*, timespec*) { return 0; }
int system(const char*) { return 0; }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzPhone& phone = *new FuzzPhone;
    if (size < 2)
        return 0;
    phone.reset();
    std::vector<std::string> words = {"kvt", std::to_string(data[0] % 13),
                                      std::to_string(data[1] % 35)};
    std::string rest(reinterpret_cast<const char*>(data + 2), size - 2);
    for (size_t from = 0; from < rest.size();) {
        const size_t end = std::min(rest.find('\0', from), rest.size());
        words.push_back(rest.substr(from, end - from));
        from = end + 1;
    }
    std::vector<char*> argv;
    for (std::string& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    const int status = kvt_main(static_cast<int>(words.size()), argv.data());
    ::funlockfile(stdout); /* a run keeps it to its end, which does not come here */
    return status;
}
