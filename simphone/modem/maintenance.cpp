// SPDX-License-Identifier: Apache-2.0
#include "modem/maintenance.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include <sys/stat.h>

#include "modem/modem.h"
#include "modem/nvefs.h"
#include "phone/phone.h"
#include "phone/settings.h"

namespace simphone {

namespace fs = std::filesystem;

namespace {

constexpr const char* gpio_test_file = "/nv/item_files/modem/orvik/rf_ant_port_config";
constexpr const char* tx_antenna_file = "/nv/item_files/modem/antenna/ant_tx_config";
constexpr uint64_t gpio_max = 50;
constexpr size_t tx_antenna_size = 16;

/* Appends what stands in the phone's folder and those below it, one name and size a line. */
void append_inventory(std::string& text, const fs::path& folder) {
    for (const std::string& name : list_folder(folder)) {
        struct stat info {};
        const fs::path entry = folder / name;
        if (::lstat((root() / entry).c_str(), &info) != 0)
            continue;
        if (S_ISDIR(info.st_mode))
            append_inventory(text, entry);
        else if (S_ISREG(info.st_mode))
            text += entry.string() + " " + std::to_string(info.st_size) + "\n";
    }
}

} // namespace

int32_t typed_restart(ByteView, Bytes&) {
    restart_modem();
    return 0;
}

int32_t typed_full_dump(ByteView, Bytes&) {
    std::string text = "modem full dump\nrestarts " + std::to_string(restart_count()) + "\ntime " +
                       std::to_string(now_ms()) + "\n";
    append_inventory(text, "nv");
    append_inventory(text, "efs");
    int number = 1;
    const auto name = [&] { return fs::path("dump") / (std::to_string(number) + ".txt"); };
    /* Where the folder can't be searched nothing exists, and the write tells what is wrong. */
    for (std::error_code error; fs::exists(root() / name(), error);)
        ++number;
    write_text(name(), text);
    restart_modem();
    return 0;
}

int32_t typed_nv_sync(ByteView, Bytes&) {
    write_text("nv_syncs", std::to_string(setting_number("nv_syncs") + 1));
    return 0;
}

int32_t record_gpio_test(ByteView data, Bytes&) {
    if (data.size() < 4)
        return -EINVAL;
    const uint64_t count = std::min(get_le(data, 4), gpio_max);
    Bytes state;
    put_le(state, count, 4);
    const ByteView values = data.subspan(4).first(std::min<size_t>(4 * count, data.size() - 4));
    state.insert(state.end(), values.begin(), values.end());
    write_efs_file(0, gpio_test_file, state);
    return 0;
}

int32_t record_tx_antenna(ByteView data, Bytes&) {
    if (data.size() < tx_antenna_size)
        return -EINVAL;
    write_efs_file(0, tx_antenna_file, data.first(tx_antenna_size));
    return 0;
}

} // namespace simphone
