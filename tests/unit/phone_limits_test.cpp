// SPDX-License-Identifier: Apache-2.0
/* A process that runs out of memory or threads within the platform gets a result, not an end. */
#include <atomic>
#include <cstdlib>
#include <new>

#include <pthread.h>

#include "diag.h"
#include "phone_test.h"
#include "qmi_cci.h"
#include "qmi_common.h"
#include "qmi_sar.h"

namespace {

std::atomic<long> g_fail_at{0}; /* 0: none */

bool fails() { return g_fail_at > 0 && --g_fail_at == 0; }

} // namespace

__attribute__((noinline)) void* operator new(size_t size) {
    void* const memory = fails() ? nullptr : std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

__attribute__((noinline)) void operator delete(void* memory) noexcept { std::free(memory); }
__attribute__((noinline)) void operator delete(void* memory, size_t) noexcept { std::free(memory); }

namespace {

struct PhoneLimitsTest : PhoneTest {};

void ignore_indication(qmi_client_type, unsigned, void*, unsigned, void*) {}
int ignore_packet(unsigned char*, int, void*) { return 0; }

/* A client's life; the first result that is none of success. */
int qmi_life() {
    static const qmi_idl_service_object_type service = &sar_qmi_idl_service_object_v01;
    qmi_client_type client = nullptr;
    const int made = qmi_client_init_instance(service, QMI_CLIENT_INSTANCE_ANY, ignore_indication,
                                              nullptr, nullptr, 1000, &client);
    if (made != QMI_NO_ERR)
        return made;
    sar_rf_get_state_resp_v01 response;
    const int sent = qmi_client_send_msg_sync(client, QMI_SAR_RF_GET_STATE, nullptr, 0, &response,
                                              sizeof response, 1000);
    const int released = qmi_client_release(client);
    return sent != QMI_NO_ERR ? sent : released;
}

/* The same of the DIAG library. */
int diag_life() {
    unsigned char packet[] = {0x7B, 1, 2};
    if (!Diag_LSM_Init(nullptr))
        return -1;
    diag_switch_logging(DIAG_CALLBACK_MODE, nullptr);
    const int registered = diag_register_callback(ignore_packet, nullptr);
    const int sent = diag_callback_send_data(0, packet, sizeof packet);
    const bool down = Diag_LSM_DeInit();
    return registered != 0 ? registered : sent != 0 ? sent : down ? 0 : -1;
}

/* The first test: the process has no thread of the phone's yet. */
TEST_F(PhoneLimitsTest, AThreadThatIsNotThereIsAResult) {
    in_own_process([] {
        EXPECT_EQ(qmi_client_release(nullptr), QMI_CLIENT_INVALID_CLIENT);
        pthread_attr_t normal, huge;
        ::pthread_getattr_default_np(&normal);
        ::pthread_attr_init(&huge);
        ::pthread_attr_setstacksize(&huge, size_t{1} << 46);
        ::pthread_setattr_default_np(&huge);
        const int qmi = qmi_life(), diag = diag_life();
        ::pthread_setattr_default_np(&normal);
        EXPECT_EQ(qmi, QMI_CLIENT_ALLOC_FAILURE);
        EXPECT_EQ(diag, -1);
        EXPECT_EQ(qmi_life(), 0);
        EXPECT_EQ(diag_life(), 0);
    });
}

TEST_F(PhoneLimitsTest, MemoryThatIsNotThereIsAResult) {
    for (int (*const life)() : {qmi_life, diag_life}) {
        EXPECT_EQ(life(), 0);
        int failures = 0, good_in_a_row = 0;
        for (long n = 1; good_in_a_row < 50 && n < 5000; ++n) {
            g_fail_at = n;
            const int result = life();
            good_in_a_row = g_fail_at > 0 ? good_in_a_row + 1 : 0;
            g_fail_at = 0;
            failures += result != 0 ? 1 : 0;
            ASSERT_LE(result, 0);
        }
        EXPECT_GE(good_in_a_row, 50); /* every allocation has had its turn */
        EXPECT_GT(failures, 20);
        EXPECT_EQ(life(), 0);
    }
}

} // namespace
