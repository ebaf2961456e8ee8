// SPDX-License-Identifier: Apache-2.0
/* NV items and EFS files of the modem, request kind 2 of the vendor service. They lie in the
 * phone's directory as nv/SUB/ID and efs/SUB/PATH. */
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "phone/bytes.h"

namespace simphone {

/* Results of a request besides 0: for NV items the modem's own status, for EFS files an errno value
 * with a minus sign. */
enum : int32_t {
    NV_FAIL = 4,
    NV_NOT_ACTIVE = 5,
    NV_BAD_PARM = 6,
};

constexpr size_t nv_item_max = 424;
constexpr size_t efs_file_max = 102410;

/* Reads and changes an NV item; also for DIAG. */
std::optional<Bytes> read_nv_item(uint32_t sub, uint32_t id);
int32_t write_nv_item(uint32_t sub, uint32_t id, ByteView data);

/* Reads, writes, deletes an EFS file as a whole, for what the modem itself keeps there. Result 0 or
 * an errno value with a minus sign. */
std::optional<Bytes> read_efs_file(uint32_t sub, const std::string& path);
int32_t write_efs_file(uint32_t sub, const std::string& path, ByteView data);
int32_t delete_efs_file(uint32_t sub, const std::string& path);

/* One client's NV and EFS requests. A file that is read or written in chunks is kept whole here in
 * between: a read gives the version that its first chunk came from, a write becomes visible with
 * its last chunk. */
class NvEfs {
  public:
    /* Takes a request's payload, returns the response's. */
    Bytes handle(ByteView request);

  private:
    Bytes read_chunk(uint32_t sub, const std::string& path, uint32_t offset);
    Bytes write_chunk(uint32_t sub, const std::string& path, uint16_t instance, uint32_t total,
                      uint32_t offset, ByteView chunk);

    struct File {
        uint32_t sub;
        std::string path;
        Bytes content;
        uint32_t total; /* of a write, as its first chunk says */
    };
    std::optional<File> reading_;
    std::map<uint16_t, File> writing_; /* by instance id */
    uint16_t next_instance_ = 0;
};

} // namespace simphone
