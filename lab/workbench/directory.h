// SPDX-License-Identifier: Apache-2.0
/* The simulated phone's directory, as docs/phone.md tells it. */
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace lab::workbench {

/* The phone that kvt takes: KVT_PHONE, or kvt/phone under XDG_STATE_HOME, or else under
 * ~/.local/state. */
std::filesystem::path phone_directory();

/* What a file of the phone holds; nothing when it is missing or can't be read. */
std::optional<std::string> read_phone_file(const std::string& name);

/* The same without blanks around it. */
std::optional<std::string> setting_text(const std::string& name);

/* Writes a file of the phone whole or not at all, and makes its folder. False with a message. */
bool write_phone_file(const std::string& name, const std::string& text, std::string& error);

/* Gives the phone what every phone is made with, an IMEI for each subscription, unless it has NV
 * items or a folder for them. False with a message. */
bool seed_phone(std::string& error);

/* The phone's own lock: while it is held no command changes the phone. */
class Lock {
  public:
    explicit Lock(const std::filesystem::path& directory);
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    /* False when there is no phone, or another process does not let go of it. */
    bool held() const { return held_; }

  private:
    int fd_ = -1;
    bool held_ = false;
};

/* A folder that appears whole: filled beside its target first, and gone again unless put in place. */
class NewFolder {
  public:
    explicit NewFolder(const std::filesystem::path& target);
    ~NewFolder();
    NewFolder(const NewFolder&) = delete;
    NewFolder& operator=(const NewFolder&) = delete;
    const std::filesystem::path& path() const { return aside_; }
    /* To its target, which must be missing or an empty folder; `replace`: whatever folder is there
     * goes. False with a message. */
    bool put_in_place(bool replace, std::string& error);

  private:
    std::filesystem::path target_, aside_;
};

} // namespace lab::workbench
