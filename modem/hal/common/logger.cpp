#include "logger.h"

#include <cstdio>
#include <mutex>

#include <sys/syscall.h>
#include <unistd.h>

#include "immortal.h"

namespace qti::ril::logger {

namespace {

constexpr const char* default_logger = "stdout";

/* A framework thread may log while the process ends. */
struct Current {
    std::mutex mutex;
    std::unique_ptr<LoggerImpl> logger;
};

Current& current() {
    static immortal<Current> instance;
    return instance.value;
}

const char* level_name(int level) {
    switch (level) {
    case 3:
        return "DEBUG";
    case 4:
    case 5:
        return "ERROR";
    default:
        return "INFO";
    }
}

} // namespace

pid_t my_gettid() { return static_cast<pid_t>(::syscall(SYS_gettid)); }

void LoggerImpl::log(int level, const std::string& tag, const std::string& text) {
    if (level <= max_level_)
        write(level, tag, text);
}

void StdoutLogger::write(int level, const std::string& tag, const std::string& text) {
    std::printf("[%s:%s]: %s\n", level_name(level), tag.c_str(), text.c_str());
}

std::map<std::string, LoggerFactory::Make>& LoggerFactory::factories() {
    static immortal<std::map<std::string, Make>> instance(std::map<std::string, Make>{
        {default_logger, [] { return std::make_unique<StdoutLogger>(); }}});
    return instance.value;
}

void LoggerFactory::add(const std::string& name, Make make) { factories()[name] = std::move(make); }

std::unique_ptr<LoggerImpl> LoggerFactory::make(const std::string& name) {
    const auto it = factories().find(name);
    return it == factories().end() ? nullptr : it->second();
}

bool Logger::init(const std::string& name) {
    std::unique_ptr<LoggerImpl> logger = LoggerFactory::make(name);
    if (logger == nullptr) {
        std::puts("QCRIL Logger Initialization failure");
        return false;
    }
    const std::lock_guard guard(current().mutex);
    current().logger = std::move(logger);
    return true;
}

void Logger::log(int level, const std::string& tag, const std::string& text) {
    Current& in_use = current();
    {
        const std::lock_guard guard(in_use.mutex);
        if (in_use.logger != nullptr)
            return in_use.logger->log(level, tag, text);
    }
    if (init(default_logger))
        log(level, tag, text);
}

} // namespace qti::ril::logger
