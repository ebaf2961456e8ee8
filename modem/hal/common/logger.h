/* A small logger: factories by name, one logger in use. */
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include <sys/types.h>

namespace qti::ril::logger {

/* The calling thread's id. */
pid_t my_gettid();

/* Holds what every logger has: the most verbose level it writes. */
class LoggerImpl {
  public:
    static constexpr const char* level_option = "level";
    static constexpr const char* level_description = "Set the maximum level to log at.";

    virtual ~LoggerImpl() = default;
    void set_max_level(int level) { max_level_ = level; }

    /* Writes the line unless its level is above the maximum. */
    void log(int level, const std::string& tag, const std::string& text);

  protected:
    virtual void write(int level, const std::string& tag, const std::string& text) = 0;

  private:
    int max_level_ = 16;
};

/* Writes "[LEVEL:TAG]: TEXT" lines on standard output; registered as "stdout". */
class StdoutLogger : public LoggerImpl {
  protected:
    void write(int level, const std::string& tag, const std::string& text) override;
};

class LoggerFactory {
  public:
    using Make = std::function<std::unique_ptr<LoggerImpl>()>;
    static void add(const std::string& name, Make make);

    /* Null when nobody has registered that name. */
    static std::unique_ptr<LoggerImpl> make(const std::string& name);

  private:
    static std::map<std::string, Make>& factories();
};

class Logger {
  public:
    /* Sets up the logger of that name; says so when it can't and leaves the one in use. */
    static bool init(const std::string& name);

    /* To the logger in use, the stdout logger unless another was set up. */
    static void log(int level, const std::string& tag, const std::string& text);
};

} // namespace qti::ril::logger
