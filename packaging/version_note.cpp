// SPDX-License-Identifier: Apache-2.0
/* Which kvt this is, as an ELF note that `readelf -n` and `strings` show: owner "kvt", type 1, text
 * "VERSION (what git says of the sources)". kvt itself never prints it. */
#include <cstddef>
#include <cstdint>

#include "kvt_version.h"

namespace {

constexpr char description[] = KVT_VERSION " (" KVT_GIT ")";

/* An ELF note: sizes of name and description, type, both padded to 4 bytes. */
struct Note {
    uint32_t name_size;
    uint32_t text_size;
    uint32_t type;
    char name[4];
    char text[(sizeof description + 3) / 4 * 4];
};
static_assert(offsetof(Note, text) == 16);

constexpr Note make_note() {
    Note note{4, sizeof description, 1, "kvt", {}};
    for (size_t i = 0; i < sizeof description; ++i)
        note.text[i] = description[i];
    return note;
}

} // namespace

extern const Note kvt_version_note;
__attribute__((used, section(".note.kvt"), aligned(4))) constinit const Note kvt_version_note =
    make_note();
