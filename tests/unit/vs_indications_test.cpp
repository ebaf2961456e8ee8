// SPDX-License-Identifier: Apache-2.0
#include "vs_client.h"

#include <cstring>
#include <memory>
#include <mutex>
#include <thread>

#include "eventually.h"
#include "modem_api.h"
#include "phone_test.h"

namespace {

struct Event {
    uint32_t event;
    std::string payload;
};

/* Indications arrive on the framework's thread. */
std::mutex g_mutex;
std::vector<Event> g_events;

void keep(uint32_t event, void* payload, uint32_t size) {
    const std::lock_guard guard(g_mutex);
    g_events.push_back({event, std::string(static_cast<const char*>(payload), size)});
}

std::vector<Event> events() {
    const std::lock_guard guard(g_mutex);
    return g_events;
}

template <typename Payload> Payload payload_of(const Event& event) {
    Payload payload{};
    EXPECT_EQ(event.payload.size(), sizeof payload);
    std::memcpy(&payload, event.payload.data(), std::min(event.payload.size(), sizeof payload));
    return payload;
}

template <typename Record> std::vector<Event> dispatched(uint32_t msg_id, const Record& record) {
    g_events.clear();
    EXPECT_TRUE(vs_client_dispatch_indication(keep, msg_id, &record, sizeof record));
    return g_events;
}

class VsIndicationsTest : public PhoneTest {
  protected:
    VsIndicationsTest() { g_events.clear(); }
    ~VsIndicationsTest() override { vs_client_release(); }

    /* Connects a client; what waits in the folder ind comes before the answer. */
    void connect() {
        vs_init();
        ASSERT_EQ(vs_client_init(keep), 1);
        vs_set_feature_req_v01 req{2, 1, 1, 1, 0};
        vs_set_feature_resp_v01 resp{};
        ASSERT_EQ(vs_client_send_msg_sync(QMI_VS_SET_FEATURE, &req, sizeof req, &resp, sizeof resp),
                  0);
    }
};

/* ---- across the wire: TLVs in, payload out ---- */

std::string bytes(std::initializer_list<int> values) {
    std::string text;
    for (const int value : values)
        text += static_cast<char>(value);
    return text;
}

TEST_F(VsIndicationsTest, SmallIndicationsFromTheirTlvs) {
    put("ind/vs.0x0004", bytes({1, 4, 0, 0x78, 0x56, 0x34, 0x12, 2, 1, 0, 0x80, 3, 1, 0, 0}));
    put("ind/vs.0x0204", bytes({1, 4, 0, 9, 0, 0,    0,    2, 4, 0, 3,    0xFF,
                                0, 7, 3, 2, 0, 0x34, 0x12, 4, 2, 0, 0x78, 0x56}));
    put("ind/vs.0x0601", bytes({1, 1, 0, 0xFE}));
    connect();
    const std::vector<Event> seen = events();
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0].event, 2u);
    EXPECT_EQ(seen[0].payload, bytes({0x78, 0x56, 0x34, 0x12, 1, 0, 0, 0}));
    EXPECT_EQ(seen[1].event, 4u);
    const auto several = payload_of<vs_event_0204>(seen[1]);
    EXPECT_EQ(several.value, 9u);
    EXPECT_EQ(several.count, 3u);
    EXPECT_EQ(several.slots[0], 0xFFu);
    EXPECT_EQ(several.slots[2], 7u);
    EXPECT_EQ(several.first, 0x1234);
    EXPECT_EQ(several.second, 0x5678);
    EXPECT_EQ(seen[2].event, 5u);
    EXPECT_EQ(seen[2].payload, bytes({0xFE}));
    EXPECT_EQ(logged({"android 4 RAVEX vs_client_unsol_ind_cb: function entry"}), 3);
    EXPECT_EQ(logged({"android 4 RAVEX vs_client_ind_hdlr: Handling indication msg 0x204"}), 1);
}

TEST_F(VsIndicationsTest, EntriesFromTheirTlvsWithAndWithoutTheOptionalValue) {
    const std::string entry = bytes({5, 0, 0, 0, 2, 0, 'a', 'b', 0x11, 0, 0x22, 0});
    const std::string first = bytes({2, 13, 0, 1}) + entry;
    const std::string second = bytes({3, 25, 0, 2}) + entry + entry;
    const std::string value = bytes({1, 4, 0, 3, 0, 0, 0});
    put("ind/vs.0x0203.a", value + first + second + bytes({0x10, 4, 0, 8, 0, 0, 0}));
    put("ind/vs.0x0203.b", value + first + bytes({3, 1, 0, 0}));
    connect();
    const std::vector<Event> seen = events();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].event, 3u);
    const auto whole = payload_of<vs_event_0203>(seen[0]);
    EXPECT_EQ(whole.value, 3u);
    EXPECT_EQ(whole.first_len, 1u);
    EXPECT_EQ(whole.second_len, 2u);
    EXPECT_EQ(whole.extra, 8u);
    for (const vs_event_entry& one : {whole.first[0], whole.second[1]}) {
        EXPECT_EQ(one.value, 5u);
        EXPECT_EQ(one.data_len, 2u);
        EXPECT_EQ(one.data[1], 'b');
        EXPECT_EQ(one.first, 0x11);
        EXPECT_EQ(one.second, 0x22);
    }
    const auto without = payload_of<vs_event_0203>(seen[1]);
    EXPECT_EQ(without.second_len, 0u);
    EXPECT_EQ(without.extra, 0xFFFFFFFFu);
}

TEST_F(VsIndicationsTest, BytesThatNobodyCanDecode) {
    put("ind/vs.0x0004", bytes({1, 4, 0, 1}));
    put("ind/vs.0x0204", bytes({1, 4, 0, 9, 0, 0, 0, 2, 2, 0, 101, 0}));
    put("ind/vs.0x0777", bytes({1, 1, 0, 1}));
    put("ind/vs.0x0601", bytes({1}));
    connect();
    EXPECT_TRUE(events().empty());
    EXPECT_EQ(logged({"android 6 RAVEX vs_client_unsol_ind_cb: Indication decode failed for msg "
                      "0x4 with error -40"}),
              1);
    EXPECT_EQ(logged({"Indication decode failed for msg 0x204 with error -41"}), 1);
    EXPECT_EQ(logged({"Indication decode failed for msg 0x777 with error -17"}), 1);
    EXPECT_EQ(logged({"Indication decode failed for msg 0x601 with error -40"}), 1);
}

TEST_F(VsIndicationsTest, WithoutAHandlerNothingIsDecoded) {
    put("ind/vs.0x0601", bytes({1, 1, 0, 1}));
    vs_init();
    ASSERT_EQ(vs_client_init(nullptr), 1);
    EXPECT_TRUE(eventually([&] { return logged({"vs_client_unsol_ind_cb: function entry"}) == 1; }))
        << "the indication does not come";
    EXPECT_EQ(logged({"call qmi_client_message_decode"}), 0);
}

/* ---- what no decoder should hand over ---- */

TEST(VsIndicationCaps, CountsAndLengthsAboveTheirArrays) {
    auto big = std::make_unique<vs_ind_0203_v01>();
    std::memset(big.get(), 0x5A, sizeof *big);
    big->first_len = 11;
    big->second_len = 0xFFFFFFFF;
    big->first[0].data_len = 701;
    big->first[9].data_len = 0xFFFFFFFF;
    big->second[4].data_len = 1;
    const auto entries = payload_of<vs_event_0203>(dispatched(0x0203, *big).at(0));
    EXPECT_EQ(entries.first_len, 10u);
    EXPECT_EQ(entries.second_len, 5u);
    EXPECT_EQ(entries.first[0].data_len, 700u);
    EXPECT_EQ(entries.first[9].data_len, 700u);
    EXPECT_EQ(entries.first[9].data[699], 0x5A);
    EXPECT_EQ(entries.second[4].data_len, 1u);
    EXPECT_EQ(entries.second[4].data[1], 0); /* only so many are copied */

    vs_ind_0204_v01 several{};
    std::memset(several.bytes, 0xC3, sizeof several.bytes);
    several.bytes_len = 101;
    const auto cut = payload_of<vs_event_0204>(dispatched(0x0204, several).at(0));
    EXPECT_EQ(cut.count, 100u);
    EXPECT_EQ(cut.slots[99], 0xC3u);
    several.bytes_len = 2;
    EXPECT_EQ(payload_of<vs_event_0204>(dispatched(0x0204, several).at(0)).slots[2], 0u);
}

TEST(VsIndicationCaps, StructureThatIsSmallerThanItsRecord) {
    const uint8_t small[4] = {1, 2, 3, 4};
    for (const uint32_t msg_id : {0x0004, 0x0203, 0x0204, 0x0601}) {
        g_events.clear();
        EXPECT_TRUE(vs_client_dispatch_indication(keep, msg_id, small, sizeof small));
        EXPECT_EQ(g_events.at(0).payload[0], 1);
    }
    EXPECT_FALSE(vs_client_dispatch_indication(keep, 0x0005, small, sizeof small));
}

} // namespace
