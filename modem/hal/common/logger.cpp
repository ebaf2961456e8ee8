// SPDX-License-Identifier: Apache-2.0
#include "logger.h"

#include <atomic>
#include <cstdio>
#include <cstring>

#include <sys/syscall.h>
#include <unistd.h>

namespace qti::ril::logger {

namespace {

std::atomic<LoggerImpl*> g_logger{&StdoutLogger};

const char* level_name(int level) {
    return level == 3 ? "DEBUG" : level == 4 || level == 5 ? "ERROR" : "INFO";
}

void write_stdout(int level, const char* tag, const char* text) {
    std::printf("[%s:%s]: %s\n", level_name(level), tag, text);
}

struct LoggerFactory {
    const char* name;
    LoggerImpl* logger;
};

constexpr LoggerFactory factories[] = {{"stdout", &StdoutLogger}};

} // namespace

LoggerImpl StdoutLogger = {write_stdout};

pid_t my_gettid() { return static_cast<pid_t>(::syscall(SYS_gettid)); }

bool Logger::init(const char* name) {
    for (const LoggerFactory& factory : factories) {
        if (std::strcmp(factory.name, name) == 0) {
            g_logger = factory.logger;
            return true;
        }
    }
    std::puts("QCRIL Logger Initialization failure");
    return false;
}

void Logger::log(int level, const char* tag, const char* text) {
    const LoggerImpl* const logger = g_logger;
    if (level <= logger->max_level)
        logger->write(level, tag, text);
}

} // namespace qti::ril::logger
