// SPDX-License-Identifier: Apache-2.0
#include "traced_alloc.h"

#include <algorithm>
#include <thread>
#include <vector>

#include "logger.h"
#include "phone_test.h"

namespace {

using TracedAllocTest = PhoneTest;

/* True when both links of the list tell the same story as its count. */
bool list_is_sound() {
    const ravex_mem_list& list = ravex_mem_trace_list();
    uint64_t count = 0;
    const ravex_mem_record* last = nullptr;
    for (const ravex_mem_record* r = list.head; r != nullptr; last = r, r = r->next, ++count)
        if (r->prev != last)
            return false;
    return count == list.count && last == list.tail;
}

TEST_F(TracedAllocTest, OnlyExactlyTrueTracesAndNothingIsToldOnce) {
    const auto allocate_twice = [] {
        for (int i = 0; i < 2; ++i)
            ravex_free_adv(ravex_malloc_adv(8, "test", 1), "test", 1);
        void* const block = ravex_malloc_adv(8, "test", 1);
        EXPECT_EQ(ravex_mem_trace_list().count, 0u);
        ravex_free_adv(block, "test", 1);
    };
    in_own_process(allocate_twice);
    EXPECT_EQ(logged({"android 3 RAVEX ravex_mem_init: RAVEX_MEM_TRACE_PROP not exist"}), 1);
    EXPECT_EQ(logged({"call property_get:persist.ravex.mem_trace"}), 1);
    put("prop/persist.ravex.mem_trace", "true ");
    in_own_process(allocate_twice);
}

TEST_F(TracedAllocTest, ListStaysRightWhenHeadMiddleAndTailGo) {
    put("prop/persist.ravex.mem_trace", "true");
    void* blocks[3];
    for (int i = 0; i < 3; ++i)
        blocks[i] = ravex_malloc_adv(16u + static_cast<size_t>(i), "three", i);
    ASSERT_EQ(ravex_mem_trace_list().count, 3u);
    EXPECT_STREQ(ravex_mem_trace_list().head->caller, "three");
    EXPECT_EQ(ravex_mem_trace_list().tail->size, 18u);
    EXPECT_GE(ravex_mem_trace_list().head->year, 2024);
    for (const int i : {1, 0, 2}) {
        ravex_free_adv(blocks[i], "three", i);
        EXPECT_TRUE(list_is_sound());
    }
    ravex_free_adv(nullptr, "null", 0);
    EXPECT_EQ(ravex_mem_trace_list().count, 0u);
}

TEST_F(TracedAllocTest, ListSurvivesAllocationFromSeveralThreads) {
    put("prop/persist.ravex.mem_trace", "true");
    ravex_free_adv(ravex_malloc_adv(1, "first", 0), "first", 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([] {
            std::vector<void*> held;
            for (int i = 0; i < 500; ++i) {
                held.push_back(ravex_malloc_adv(32, "thread", i));
                if (i % 3 == 0) {
                    ravex_free_adv(held.back(), "thread", i);
                    held.pop_back();
                }
            }
            for (void* const block : held)
                ravex_free_adv(block, "thread", 0);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(list_is_sound());
    EXPECT_EQ(ravex_mem_trace_list().count, 0u);
}

TEST_F(TracedAllocTest, BlocksAreZeroedAndFailuresTold) {
    auto* const block = static_cast<unsigned char*>(qcril_malloc_adv(256));
    EXPECT_TRUE(std::all_of(block, block + 256, [](unsigned char c) { return c == 0; }));
    qcril_free_adv(block, "test", 1);

    g_orvik_system_malloc = [](size_t) -> void* { return nullptr; };
    EXPECT_EQ(ravex_malloc_adv(8, "test", 1), nullptr);
    const std::string text = printed([] { EXPECT_EQ(qcril_malloc_adv(8), nullptr); });
    g_orvik_system_malloc = std::malloc;
    EXPECT_EQ(logged({"RAVEX ravex_malloc_adv: Fail to allocate memory"}), 1);
    EXPECT_THAT(text, testing::StartsWith("[ERROR:util]: [traced_alloc.cpp: "));
    EXPECT_THAT(text, testing::EndsWith(")] qcril_malloc_adv: Fail to allocate memory\n"));
}

TEST_F(TracedAllocTest, LoggerOfUnknownNameIsRefused) {
    EXPECT_EQ(printed([] { qti::ril::logger::Logger::init("nobody"); }),
              "QCRIL Logger Initialization failure\n");
}

} // namespace
