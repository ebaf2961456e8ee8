// SPDX-License-Identifier: Apache-2.0
/* kvt-lab phone log: the phone's log in words, and what is added to it. */
#include "workbench/phone.h"

#include <cstdio>
#include <fstream>

#include <poll.h>
#include <sys/stat.h>

#include "stop.h"
#include "tape/log_page.h"
#include "workbench/directory.h"

namespace lab::workbench {

namespace {

constexpr int pause_ms = 100;

/* A file that is written to, and put aside by renaming when it has grown long. */
class Growing {
  public:
    explicit Growing(std::string path) : path_(std::move(path)) {}

    /* The next whole line; false when there is none yet. */
    bool line(std::string& text) {
        std::string more;
        while (std::getline(file_, more)) {
            rest_ += more;
            if (file_.eof())
                break; /* its end is not written yet */
            text = std::move(rest_);
            rest_.clear();
            return true;
        }
        file_.clear();
        if (!is_another())
            return false;
        file_.close();
        file_.open(path_, std::ios::binary);
        rest_.clear();
        return line(text);
    }

  private:
    /* True once for each file that has taken the name. */
    bool is_another() {
        struct stat info {};
        if (::stat(path_.c_str(), &info) != 0 || (info.st_ino == inode_ && info.st_dev == device_))
            return false;
        inode_ = info.st_ino;
        device_ = info.st_dev;
        return true;
    }

    std::string path_, rest_;
    std::ifstream file_;
    ino_t inode_ = 0;
    dev_t device_ = 0;
};

} // namespace

int log(const Options& options) {
    Growing file((phone_directory() / "log").string());
    const std::atomic<int>& stop = note_signals();
    tape::LogPage page;
    std::string line, text;
    do {
        while (stop == 0 && file.line(line)) {
            text.clear();
            if (page.show(line, text) && std::printf("%s\n", text.c_str()) < 0)
                return 1;
        }
        if (std::fflush(stdout) != 0)
            return 1;
        if (options.follow)
            ::poll(nullptr, 0, pause_ms);
    } while (options.follow && stop == 0);
    return 0;
}

} // namespace lab::workbench
