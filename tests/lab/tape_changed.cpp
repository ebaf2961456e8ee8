// SPDX-License-Identifier: Apache-2.0
/* Stands before a kvt and makes it send one byte more: a kvt that has changed. */
#include <cstring>

#include <dlfcn.h>

extern "C" int diag_callback_send_data(int proc, unsigned char* buf, int len) {
    using Send = int (*)(int, unsigned char*, int);
    static const auto next = reinterpret_cast<Send>(::dlsym(RTLD_NEXT, "diag_callback_send_data"));
    unsigned char longer[4097];
    std::memcpy(longer, buf, static_cast<size_t>(len));
    longer[len] = 0x5A;
    return next(proc, longer, len + 1);
}
