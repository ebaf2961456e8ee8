// SPDX-License-Identifier: Apache-2.0
#include "modem/nvefs.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "phone/phone.h"
#include "phone/settings.h"

namespace simphone {

namespace fs = std::filesystem;

namespace {

enum : uint8_t { nv_read = 1, nv_write, nv_delete, efs_read, efs_write, efs_delete };

/* Request payload, 512 bytes. */
constexpr size_t req_op = 0;
constexpr size_t req_sub = 1;
constexpr size_t req_nv_id = 2; /* u16; of an EFS write the instance id */
constexpr size_t req_path_len = 4;
constexpr size_t req_path = 5;
constexpr size_t req_path_max = 71;
constexpr size_t req_len_all = 76;
constexpr size_t req_len_send = 80;
constexpr size_t req_len_cur = 84;
constexpr size_t req_data = 88;
constexpr size_t req_size = 512;

constexpr size_t chunk_max = 424; /* bytes of data in a request or response */

constexpr uint16_t new_instance = 255;
constexpr uint32_t subscriptions = 2;

/* Response payload: 20 bytes, then data. */
Bytes response(int32_t result, size_t len_all = 0, ByteView data = {}) {
    Bytes bytes(4);
    put_le(bytes, len_all, 4);
    put_le(bytes, data.size(), 4);
    put_le(bytes, 0, 4);
    put_le(bytes, static_cast<uint32_t>(result), 4);
    bytes.insert(bytes.end(), data.begin(), data.end());
    return bytes;
}

fs::path nv_file(uint32_t sub, uint32_t id) {
    return fs::path("nv") / std::to_string(sub) / std::to_string(id);
}

/* Nothing when the path would leave the subscription's folder. */
std::optional<fs::path> efs_file(uint32_t sub, const std::string& path) {
    const fs::path relative = fs::path(path).relative_path();
    if (sub >= subscriptions || !relative.has_filename() || path.find('\0') != std::string::npos ||
        std::any_of(relative.begin(), relative.end(), [](const fs::path& p) { return p == ".."; }))
        return std::nullopt;
    return fs::path("efs") / std::to_string(sub) / relative;
}

} // namespace

std::optional<Bytes> read_nv_item(uint32_t sub, uint32_t id) {
    std::optional<Bytes> item = read_file(nv_file(sub, id));
    if (item && item->size() > nv_item_max)
        item->resize(nv_item_max);
    return item;
}

int32_t write_nv_item(uint32_t sub, uint32_t id, ByteView data) {
    return write_file(nv_file(sub, id), data) == 0 ? 0 : NV_FAIL;
}

std::optional<Bytes> read_efs_file(uint32_t sub, const std::string& path) {
    const std::optional<fs::path> file = efs_file(sub, path);
    if (!file) {
        errno = EINVAL;
        return std::nullopt;
    }
    return read_file(*file);
}

int32_t write_efs_file(uint32_t sub, const std::string& path, ByteView data) {
    const std::optional<fs::path> file = efs_file(sub, path);
    if (setting_number("efs_read_only") != 0)
        return -EROFS;
    return file ? -write_file(*file, data) : -EINVAL;
}

int32_t delete_efs_file(uint32_t sub, const std::string& path) {
    const std::optional<fs::path> file = efs_file(sub, path);
    if (setting_number("efs_read_only") != 0)
        return -EROFS;
    return file ? -remove_file(*file) : -EINVAL;
}

Bytes NvEfs::handle(ByteView request) {
    /* A request may come shorter than its 512 bytes; what is missing counts as zero. */
    Bytes padded(request.begin(), request.end());
    padded.resize(req_size);
    const ByteView all(padded);
    const uint32_t sub = all[req_sub];
    const auto nv_id = static_cast<uint16_t>(get_le(all.subspan(req_nv_id), 2));
    const size_t path_len = std::min<size_t>(all[req_path_len], req_path_max);
    const ByteView named = all.subspan(req_path, path_len);
    const std::string path(named.begin(), named.end());
    const auto len_all = static_cast<uint32_t>(get_le(all.subspan(req_len_all), 4));
    const auto len_send = static_cast<uint32_t>(get_le(all.subspan(req_len_send), 4));
    const auto len_cur = static_cast<uint32_t>(get_le(all.subspan(req_len_cur), 4));

    switch (all[req_op]) {
    case nv_read: {
        const std::optional<Bytes> item = read_nv_item(sub, nv_id);
        return item ? response(0, item->size(), *item) : response(NV_NOT_ACTIVE);
    }
    case nv_write:
        if (sub >= subscriptions || len_all == 0 || len_all > nv_item_max)
            return response(NV_BAD_PARM);
        return response(write_nv_item(sub, nv_id, all.subspan(req_data, len_all)));
    case nv_delete:
        switch (remove_file(nv_file(sub, nv_id))) {
        case 0:
            return response(0);
        case ENOENT:
            return response(NV_NOT_ACTIVE);
        default:
            return response(NV_FAIL);
        }
    case efs_read:
        return read_chunk(sub, path, len_cur);
    case efs_write:
        if (len_send == 0 || len_send > chunk_max)
            return response(-EINVAL);
        return write_chunk(sub, path, nv_id, len_all, len_cur, all.subspan(req_data, len_send));
    case efs_delete:
        return response(delete_efs_file(sub, path));
    default:
        return response(-EINVAL);
    }
}

Bytes NvEfs::read_chunk(uint32_t sub, const std::string& path, uint32_t offset) {
    if (offset == 0 || !reading_ || reading_->sub != sub || reading_->path != path) {
        std::optional<Bytes> content = read_efs_file(sub, path);
        if (!content)
            return response(-errno);
        reading_ = File{sub, path, std::move(*content), 0};
    }
    const ByteView content(reading_->content);
    const ByteView rest = content.subspan(std::min<size_t>(offset, content.size()));
    return response(0, content.size(), rest.first(std::min(rest.size(), chunk_max)));
}

Bytes NvEfs::write_chunk(uint32_t sub, const std::string& path, uint16_t instance, uint32_t total,
                         uint32_t offset, ByteView chunk) {
    if (offset == 0 && instance == new_instance) {
        if (total == 0 || total > efs_file_max)
            return response(-EINVAL);
        instance = next_instance_;
        next_instance_ = static_cast<uint16_t>((next_instance_ + 1) % new_instance);
        writing_[instance] = File{sub, path, {}, total};
    }
    const auto it = writing_.find(instance);
    if (it == writing_.end() || it->second.sub != sub || it->second.path != path ||
        it->second.total != total || it->second.content.size() != offset ||
        chunk.size() > total - offset)
        return response(-EINVAL);
    Bytes& content = it->second.content;
    content.insert(content.end(), chunk.begin(), chunk.end());
    if (content.size() < total)
        return response(instance);
    const int32_t result = write_efs_file(sub, path, content);
    writing_.erase(it);
    return response(result < 0 ? result : instance);
}

} // namespace simphone
