// SPDX-License-Identifier: Apache-2.0
/* Group 8: one AT command to the modem's AT channel. */
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <pthread.h>
#include <unistd.h>

#include "handlers.h"
#include "help.h"
#include "phone_names.h"
#include "usage.h"

namespace {

constexpr size_t at_cmd_max = 100;

/* 1 or more while the channel is open for reading. Nothing in the tool opens it; it is the hook for
 * a build that does, before the reader thread starts. */
std::atomic<int> g_at_serial_fd{0};
std::array<char, 512> g_at_receive_buffer;

/* Set by the reader thread when it has finished. The thread is detached, so this is how the command
 * knows. */
std::atomic<int> g_at_receive_done{0};

/* A shell line; a part that does not fit is left out. */
struct shell_line {
    std::array<char, 501> text{};

    void append(const char* part) {
        const size_t used = std::strlen(text.data());
        if (std::strlen(part) < text.size() - used)
            std::strcpy(text.data() + used, part);
    }
};

void* orvik_test_at_cmd_receive(void*) {
    std::puts("The thread to receive data from serial is started");
    const int fd = g_at_serial_fd;
    if (fd < 1) {
        std::printf("The at channel is not opened, g_at_serial_fd %d\n", fd);
    } else {
        const ssize_t count = read(fd, g_at_receive_buffer.data(), g_at_receive_buffer.size() - 1);
        if (count >= 1) {
            g_at_receive_buffer[static_cast<size_t>(count)] = '\0';
            std::printf("Receive the AT reponse: len(%d)\n", static_cast<int>(count));
            std::puts(g_at_receive_buffer.data());
        } else {
            std::printf("Failed to receive bytes from server");
        }
    }
    g_at_receive_done = 1;
    return nullptr;
}

int orvik_test_at_cmd_send(const char* cmd) {
    shell_line line;
    line.append("echo \"");
    line.append(cmd);
    line.append("\r\" > ");
    line.append(PHONE_AT_CHANNEL);
    std::printf("at shell cmd: %s\n", line.text.data());
    std::fflush(stdout);
    const int status = std::system(line.text.data());
    std::printf("echo, ret_sys: %d\n", status);
    return std::puts(status == 0 ? "Success to send at shell cmd" : "Fail to send at shell cmd");
}

/* False when the help is to be shown. */
bool at_cmd_exchange(int argc, char** argv) {
    if (argc != 3) {
        usage_note(GROUP_AT_CMD, NOTE_NUMBER_OF_INPUTS);
        return false;
    }
    if (std::atoi(argv[1]) != GROUP_AT_CMD) {
        usage_note(GROUP_AT_CMD, NOTE_FIRST_PARAMETER, GROUP_AT_CMD);
        return false;
    }
    if (std::strlen(argv[2]) > at_cmd_max) {
        usage_note(GROUP_AT_CMD, NOTE_LENGTH, static_cast<int>(at_cmd_max));
        return false;
    }
    std::array<char, 105> word{};
    const int parsed = std::sscanf(argv[2], "%104s\r", word.data());
    word[at_cmd_max] = '\0';
    std::printf("At cmd you input: sscanf(%d), len (%d), %s\n", parsed,
                static_cast<int>(std::strlen(word.data())), word.data());

    std::puts("Will create a thread to receive data from serial");
    pthread_t reader;
    if (pthread_create(&reader, nullptr, orvik_test_at_cmd_receive, nullptr) != 0) {
        std::printf("Fail to create a thread");
        return false;
    }
    pthread_detach(reader);
    orvik_test_at_cmd_send(word.data());
    while (g_at_receive_done == 0)
        sleep(1);
    return true;
}

} // namespace

int orvik_test_at_cmd_do(int argc, char** argv) {
    const bool good = at_cmd_exchange(argc, argv);
    if (const int fd = g_at_serial_fd; fd >= 1) {
        std::printf("Will close channel: %s\n", PHONE_AT_CHANNEL);
        close(fd);
        g_at_serial_fd = 0;
    }
    g_at_receive_done = 0;
    if (!good)
        show_help(GROUP_AT_CMD);
    return 0;
}
