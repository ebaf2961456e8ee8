/* Preloaded into a command's shell: what it writes to the AT channel goes to the file that
 * KVT_AT_CHANNEL names, so that a test needs no such device and leaves none behind. */
#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include <dlfcn.h>
#include <fcntl.h>

namespace {

const char* redirected(const char* path) {
    const char* const channel = std::getenv("KVT_AT_CHANNEL");
    return channel != nullptr && std::strcmp(path, "/dev/smd8") == 0 ? channel : path;
}

int call(const char* name, const char* path, int flags, mode_t mode) {
    using Open = int (*)(const char*, int, mode_t);
    const auto next = reinterpret_cast<Open>(::dlsym(RTLD_NEXT, name));
    return next(redirected(path), flags, mode);
}

} // namespace

#define REDIRECTED(name)                                                                           \
    extern "C" int name(const char* path, int flags, ...) {                                        \
        va_list args;                                                                              \
        va_start(args, flags);                                                                     \
        const auto mode = static_cast<mode_t>(va_arg(args, int));                                  \
        va_end(args);                                                                              \
        return call(#name, path, flags, mode);                                                     \
    }

REDIRECTED(open)
REDIRECTED(open64)
