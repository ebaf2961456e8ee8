#include "modem/maintenance.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "modem/modem.h"
#include "modem/nvefs.h"
#include "phone/phone.h"

namespace simphone {

namespace fs = std::filesystem;

namespace {

constexpr const char* gpio_test_file = "/nv/item_files/modem/orvik/rf_ant_port_config";
constexpr const char* tx_antenna_file = "/nv/item_files/modem/antenna/ant_tx_config";
constexpr uint64_t gpio_max = 50;
constexpr size_t tx_antenna_size = 16;

/* What stands in the phone's folder, one name and size a line. */
std::string inventory(const char* folder) {
    std::string text;
    std::error_code error;
    for (fs::recursive_directory_iterator it(root() / folder, error), end; !error && it != end;
         it.increment(error))
        if (std::error_code ignored; it->is_regular_file(ignored))
            text += it->path().lexically_relative(root()).string() + " " +
                    std::to_string(it->file_size(ignored)) + "\n";
    return text;
}

} // namespace

int32_t typed_restart(ByteView, Bytes&) {
    restart_modem();
    return 0;
}

int32_t typed_full_dump(ByteView, Bytes&) {
    const std::string text = "modem full dump\nrestarts " + std::to_string(restart_count()) +
                             "\ntime " + std::to_string(now_ms()) + "\n" + inventory("nv") +
                             inventory("efs");
    int number = 1;
    const auto name = [&] { return fs::path("dump") / (std::to_string(number) + ".txt"); };
    while (fs::exists(root() / name()))
        ++number;
    write_text(name(), text);
    restart_modem();
    return 0;
}

int32_t typed_nv_sync(ByteView, Bytes&) {
    write_text("nv_syncs", std::to_string(setting_number("nv_syncs", 0) + 1));
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
