// SPDX-License-Identifier: Apache-2.0
/* Group 10: the modem's configuration packages (MBN). Their service can't be initialised in this
 * tool: the command checks its arguments and says that nothing is done. */
#include <cstdint>
#include <cstdlib>
#include <new>

#include "handlers.h"
#include "help.h"
#include "log_lines.h"
#include "qti_shared_mutex.h"
#include "usage.h"

/* The mutex's constructor and destructor under names whose address can be compared with null. */
[[gnu::weak]] void construct_shared_mutex(void*) __asm__("_ZN8qtimutex14QtiSharedMutexC1Ev");
[[gnu::weak]] void destroy_shared_mutex(void*) __asm__("_ZN8qtimutex14QtiSharedMutexD1Ev");

namespace {

constexpr int g_pdc_init_status = -1; /* not initialised */

/* What threads are to share of PDC and MBN; nothing locks it yet. The mutex is made if the phone's
 * library has the class as we know it. */
struct orvik_pdc_mbn_info_type {
    orvik_pdc_mbn_info_type() {
        if (made)
            new (&mutex) qtimutex::QtiSharedMutex;
    }
    ~orvik_pdc_mbn_info_type() {
        if (made)
            mutex.~QtiSharedMutex();
    }

    const bool made = construct_shared_mutex != nullptr && destroy_shared_mutex != nullptr;
    union {
        qtimutex::QtiSharedMutex mutex;
    };
};
orvik_pdc_mbn_info_type ovrik_pdc_mbn_info;

uint32_t orvik_test_mbn_pdc_init(unsigned char force_init) {
    ORVIK_FUNCTION_SCOPE();
    ORVIK_DBG("start orvik pdc init, g_pdc_init_status = %d, force_init = %d", g_pdc_init_status,
              force_init);
    ORVIK_ERR("pdc init failed");
    return UINT32_MAX;
}

} // namespace

int orvik_test_mbn_do(int argc, char** argv) {
    if (!usage_good(GROUP_MBN, argc, argv, 4))
        return show_help(GROUP_MBN);
    if (const int sub_mask = std::atoi(argv[3]); sub_mask < 1 || sub_mask > 3)
        return usage_error(GROUP_MBN, NOTE_SUB_MASK, sub_mask);
    orvik_test_mbn_pdc_init(0);
    ORVIK_ERR("pdc init failed, do nothing");
    return show_help(GROUP_MBN);
}
