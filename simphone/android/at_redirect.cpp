// SPDX-License-Identifier: Apache-2.0
/* Preloaded into the shell that the phone runs a command in: what the command writes to the AT
 * channel's device goes to the file that KVT_AT_REDIRECT_TO names. An empty name is a device that
 * can't be opened. */
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>

#include "at_device.h"

namespace {

/* Where the path leads. A channel takes everything at its end, whatever the flags say. */
const char* redirected(const char* path, int& flags) {
    const char* const target = std::getenv(AT_REDIRECT_VARIABLE);
    if (target == nullptr || path == nullptr || std::strcmp(path, AT_DEVICE) != 0)
        return path;
    flags = (flags & ~(O_CREAT | O_EXCL | O_TRUNC)) | O_APPEND;
    if (*target != '\0')
        return target;
    errno = ENODEV;
    return nullptr;
}

template <typename Open> Open next(const char* name) {
    return reinterpret_cast<Open>(::dlsym(RTLD_NEXT, name));
}

} // namespace

#define MODE_OF(last)                                                                              \
    va_list args;                                                                                  \
    va_start(args, last);                                                                          \
    const auto mode = static_cast<mode_t>(va_arg(args, int));                                      \
    va_end(args);

#define REDIRECTED(name)                                                                           \
    extern "C" int name(const char* path, int flags, ...) {                                        \
        MODE_OF(flags)                                                                             \
        const char* const target = redirected(path, flags);                                        \
        using Open = int (*)(const char*, int, mode_t);                                            \
        return target != nullptr ? next<Open>(#name)(target, flags, mode) : -1;                    \
    }

#define REDIRECTED_AT(name)                                                                        \
    extern "C" int name(int folder, const char* path, int flags, ...) {                            \
        MODE_OF(flags)                                                                             \
        const char* const target = redirected(path, flags);                                        \
        using Open = int (*)(int, const char*, int, mode_t);                                       \
        return target != nullptr ? next<Open>(#name)(folder, target, flags, mode) : -1;            \
    }

REDIRECTED(open)
REDIRECTED(open64)
REDIRECTED_AT(openat)
REDIRECTED_AT(openat64)
