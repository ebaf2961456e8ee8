// SPDX-License-Identifier: Apache-2.0
#include "program.h"

#include <cstring>
#include <ctime>

#include <dlfcn.h>
#include <link.h>
#include <sys/stat.h>
#include <sys/utsname.h>

namespace program {

namespace {

struct BuildId {
    char* text;
    size_t size;
};

size_t aligned(size_t size) { return (size + 3) & ~size_t{3}; }

int find_build_id(dl_phdr_info* info, size_t, void* data) {
    auto* const wanted = static_cast<BuildId*>(data);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& header = info->dlpi_phdr[i];
        if (header.p_type != PT_NOTE)
            continue;
        const auto* p = reinterpret_cast<const unsigned char*>(info->dlpi_addr + header.p_vaddr);
        const unsigned char* const end = p + header.p_memsz;
        while (static_cast<size_t>(end - p) >= sizeof(ElfW(Nhdr))) {
            ElfW(Nhdr) note;
            std::memcpy(&note, p, sizeof note);
            const unsigned char* const name = p + sizeof note;
            const unsigned char* const id = name + aligned(note.n_namesz);
            p = id + aligned(note.n_descsz);
            if (p > end || note.n_type != NT_GNU_BUILD_ID || note.n_namesz != 4 ||
                std::memcmp(name, "GNU", 4) != 0)
                continue;
            char* out = wanted->text;
            for (size_t at = 0; at < note.n_descsz && 2 * at + 3 <= wanted->size; ++at) {
                *out++ = "0123456789abcdef"[id[at] >> 4];
                *out++ = "0123456789abcdef"[id[at] & 15];
            }
            *out = '\0';
            return 1;
        }
    }
    return 1; /* the first object is the program: the others don't matter */
}

/* One entry of LD_PRELOAD: is it this library? */
bool is_this(const char* entry, size_t length, const char* own) {
    char path[1024];
    if (length == 0 || length >= sizeof path)
        return false;
    std::memcpy(path, entry, length);
    path[length] = '\0';
    struct stat a = {}, b = {};
    if (std::strchr(path, '/') != nullptr && ::stat(path, &a) == 0 && ::stat(own, &b) == 0)
        return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
    const char* const own_name = std::strrchr(own, '/');
    const char* const name = std::strrchr(path, '/');
    return std::strcmp(name != nullptr ? name + 1 : path,
                       own_name != nullptr ? own_name + 1 : own) == 0;
}

/* In place: the value only gets shorter. */
void remove_entries(char* value, const char* own) {
    char* out = value;
    for (const char* p = value; *p != '\0';) {
        const size_t length = std::strcspn(p, ": ");
        if (!is_this(p, length, own)) {
            if (out != value)
                *out++ = ':';
            std::memmove(out, p, length);
            out += length;
        }
        p += length;
        while (*p == ':' || *p == ' ')
            ++p;
    }
    *out = '\0';
}

/* In hex; empty when the program's file has none. */
void build_id(char* text, size_t size) {
    text[0] = '\0';
    BuildId wanted{text, size};
    ::dl_iterate_phdr(find_build_id, &wanted);
}

/* False where the C library knows no model. */
bool phone_model(char (&text)[96]) {
    using Get = int (*)(const char*, char*);
    const auto get = reinterpret_cast<Get>(::dlsym(RTLD_DEFAULT, "__system_property_get"));
    text[0] = '\0';
    return get != nullptr && get("ro.product.model", text) > 0;
}

} // namespace

const Services& services() {
    static Services rows = {
        {"nas", "nas_qmi_idl_service_object_v01", nullptr},
        {"uim", "uim_qmi_idl_service_object_v01", nullptr},
        {"sar", "sar_qmi_idl_service_object_v01", nullptr},
        {"vs", "vs_qmi_idl_service_object_v01", nullptr},
    };
    static bool looked;
    if (!looked) /* the first time before the program runs */
        for (Service& row : rows)
            row.object =
                static_cast<const qmi_idl_service_object*>(::dlsym(RTLD_DEFAULT, row.symbol));
    looked = true;
    return rows;
}

void describe(Text& head, int argc, char** argv) {
    head.member("tape", 2);
    head.member("time", static_cast<long long>(std::time(nullptr)));
    head.key("args");
    head.add("[");
    for (int i = 1; i < argc; ++i) {
        Text word; /* as a member, of which only the value is wanted */
        word.member_text("", argv[i]);
        if (i > 1)
            head.add(",");
        head.add(word.data() + 3, word.size() - 3);
    }
    head.add("]");
    char build[65];
    build_id(build, sizeof build);
    head.member_text("build", build);
    utsname system = {};
    if (::uname(&system) == 0)
        head.member_text("machine", system.machine);
    char model[96];
    if (phone_model(model))
        head.member_text("model", model);
    head.key("services");
    head.add("{");
    for (const Service& service : services()) {
        if (service.object == nullptr)
            continue;
        head.key(service.name);
        head.add("[");
        head.add_number(service.object->service_id);
        const uint32_t version[] = {service.object->library_version, service.object->idl_version,
                                    service.object->idl_minor_version};
        for (const uint32_t part : version) {
            head.add(",");
            head.add_number(part);
        }
        head.add("]");
    }
    head.add("}");
}

void keep_from_children(char** environment) {
    static constexpr char preload[] = "LD_PRELOAD=", tape[] = "KVT_TAPE=";
    Dl_info self = {};
    static const char here = 0;
    const bool known = ::dladdr(&here, &self) != 0 && self.dli_fname != nullptr;
    char** out = environment;
    for (char** entry = environment; *entry != nullptr; ++entry) {
        bool keep = std::strncmp(*entry, tape, sizeof tape - 1) != 0;
        if (known && std::strncmp(*entry, preload, sizeof preload - 1) == 0) {
            remove_entries(*entry + sizeof preload - 1, self.dli_fname);
            keep = (*entry)[sizeof preload - 1] != '\0';
        }
        if (keep)
            *out++ = *entry;
    }
    *out = nullptr;
}

} // namespace program
