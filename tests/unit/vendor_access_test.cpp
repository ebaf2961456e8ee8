// SPDX-License-Identifier: Apache-2.0
/* The vendor client, common requests, NV and EFS access, against the simulated modem. */
#include <numeric>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "log_lines.h"
#include "orvik_diag_send.h"
#include "orvik_extend_cmn.h"
#include "orvik_extend_nvefs.h"
#include "phone/bytes.h"
#include "phone_test.h"

namespace {

using Buffer = std::vector<uint8_t>;

class VendorAccessTest : public PhoneTest {
  protected:
    VendorAccessTest() { put("prop/persist.vendor.radio.adb_log_ov", "0"); }

    static Buffer pattern(size_t size, unsigned seed) {
        Buffer bytes(size);
        for (size_t i = 0; i < size; ++i)
            bytes[i] = static_cast<uint8_t>((i * 7 + i / 256 + seed) & 0xFF);
        return bytes;
    }

    static int32_t write(const std::string& path, const Buffer& bytes) {
        return orvik_efs_write(0, path.c_str(), static_cast<uint32_t>(path.size()), bytes.data(),
                               static_cast<uint32_t>(bytes.size()));
    }

    /* What came back, cut to the length that was told; nothing when it failed. */
    static Buffer read(const std::string& path, size_t capacity) {
        Buffer bytes(capacity);
        auto length = static_cast<uint32_t>(capacity);
        if (orvik_efs_read(0, path.c_str(), static_cast<uint32_t>(path.size()), bytes.data(),
                           &length) != 0)
            return {};
        bytes.resize(length);
        return bytes;
    }

    /* Makes the modem answer every request so: 20 bytes of head, data, and the length stated. */
    void script(uint32_t data_len, uint32_t all, uint32_t send, int32_t result,
                const Buffer& data) {
        simphone::Bytes payload(4);
        simphone::put_le(payload, all, 4);
        simphone::put_le(payload, send, 4);
        simphone::put_le(payload, 0, 4);
        simphone::put_le(payload, static_cast<uint32_t>(result), 4);
        payload.insert(payload.end(), data.begin(), data.end());
        payload.resize(512);
        simphone::Bytes length;
        simphone::put_le(length, data_len, 4);
        put("faults", "qmi_client_send_msg_sync * reply 01040000000000 020400" +
                          simphone::to_hex(length) + " 100002" + simphone::to_hex(payload) + "\n");
    }
};

/* The first test: what forks must not have started threads. */
TEST_F(VendorAccessTest, SixteenProcessesNeverSeeAMixedFile) {
    const size_t sizes[] = {1000, 30000, 70000, 102410};
    const Buffer first = pattern(sizes[0], 0);
    put("efs/0/shared", std::string(first.begin(), first.end()));
    std::vector<pid_t> children;
    for (unsigned child = 0; child < 16; ++child) {
        const pid_t pid = ::fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            g_orvik_stdout_print_flag = 0;
            bool good = true;
            for (unsigned i = 0; i < 3 && good; ++i) {
                const unsigned which = (child + i) % 4;
                if (child % 2 == 0) {
                    good = write("/shared", pattern(sizes[which], which)) == 0;
                } else {
                    const Buffer seen = read("/shared", 110000);
                    good = false;
                    for (unsigned k = 0; k < 4; ++k)
                        good = good || seen == pattern(sizes[k], k);
                }
            }
            ::_exit(good ? 0 : 1);
        }
        children.push_back(pid);
    }
    for (const pid_t pid : children) {
        int status = -1;
        ASSERT_EQ(::waitpid(pid, &status, 0), pid);
        EXPECT_EQ(status, 0);
    }
    EXPECT_FALSE(has(".aside"));
}

/* Comes before the tests that open the client in this process. */
TEST_F(VendorAccessTest, AFailedOpenIsTriedAgain) {
    put("faults", "qmi_client_init 1 error -16");
    in_own_process([] {
        uint8_t rsp[8];
        uint32_t length = 8;
        const uint8_t data[1] = {};
        EXPECT_EQ(orvik_extend_qmi_send_sync(1, data, 1, rsp, &length), -2);
        EXPECT_EQ(orvik_extend_qmi_send_sync(1, data, 1, rsp, &length), 0);
    });
}

TEST_F(VendorAccessTest, TheLargestFileComesBackWhole) {
    const Buffer file = pattern(ORVIK_EFS_FILE_MAX, 1);
    ASSERT_EQ(write("/big", file), 0);
    EXPECT_EQ(read("/big", 200000), file);
    EXPECT_EQ(read("/big", file.size()), file);
    EXPECT_EQ(read("/big", 1000), Buffer(file.begin(), file.begin() + 1000));
    EXPECT_EQ(logged({"call qmi_client_init:vendor"}), 1);
    EXPECT_EQ(write("/big", Buffer(ORVIK_EFS_FILE_MAX + 1)), ORVIK_NVEFS_BUF_LEN_INVALID);
    EXPECT_EQ(read("/big", 200000), file);
}

TEST_F(VendorAccessTest, AWriteOf1000BytesIsThreeChunksUnderOneInstance) {
    ASSERT_EQ(write("/f", pattern(1000, 2)), 0);
    /* op 5, sub 0, instance; total 1000 at 76; chunk at 80; offset at 84; zeros behind the chunk */
    EXPECT_EQ(logged({"1000020500ff00", "e80300009e01000000000000"}), 1);
    EXPECT_EQ(logged({"1000020500", "e80300009e0100009e010000"}), 1);
    EXPECT_EQ(logged({"1000020500", "e8030000ac0000003c030000", std::string(2 * (424 - 172), '0')}),
              1);
    EXPECT_EQ(logged({"1000020500ff00"}), 1);
    EXPECT_EQ(logged({"call qmi_client_send_msg_sync"}), 3);
}

TEST_F(VendorAccessTest, ChecksComeInTheirOrderAndSendNothing) {
    uint8_t byte = 0;
    uint32_t length = 1, zero = 0;
    const std::string path(80, 'p');
    EXPECT_EQ(orvik_nv_read(2, 9999, nullptr, nullptr), -104);
    EXPECT_EQ(orvik_nv_read(1, 7233, nullptr, nullptr), -109);
    EXPECT_EQ(orvik_nv_read(1, 7232, nullptr, nullptr), -107);
    EXPECT_EQ(orvik_nv_read(1, 7232, &byte, nullptr), -108);
    EXPECT_EQ(orvik_nv_read(1, 7232, &byte, &zero), -108);
    EXPECT_EQ(orvik_nv_write_ex(0, 1, nullptr, 0), -107);
    EXPECT_EQ(orvik_nv_write_ex(0, 1, &byte, 0), -108);
    EXPECT_EQ(orvik_nv_write_ex(0, 1, &byte, 425), -108);
    EXPECT_EQ(orvik_nv_delete(2, 1), -104);
    EXPECT_EQ(orvik_nv_delete(0, 7233), -109);
    EXPECT_EQ(orvik_efs_read(2, nullptr, 0, nullptr, nullptr), -104);
    EXPECT_EQ(orvik_efs_read(0, nullptr, 0, nullptr, nullptr), -105);
    EXPECT_EQ(orvik_efs_read(0, path.c_str(), 72, nullptr, nullptr), -106);
    EXPECT_EQ(orvik_efs_read(0, path.c_str(), 71, nullptr, nullptr), -107);
    EXPECT_EQ(orvik_efs_read(0, path.c_str(), 71, &byte, nullptr), -108);
    EXPECT_EQ(orvik_efs_read(0, path.c_str(), 71, &byte, &zero), -108);
    EXPECT_EQ(orvik_efs_write(0, path.c_str(), 71, &byte, 1), -106);
    EXPECT_EQ(orvik_efs_write(0, path.c_str(), 70, nullptr, 0), -107);
    EXPECT_EQ(orvik_efs_write(0, path.c_str(), 70, &byte, 0), -108);
    EXPECT_EQ(orvik_efs_delete(0, path.c_str(), 71), -106);
    EXPECT_EQ(orvik_efs_delete(0, path.c_str(), 0), -106);
    EXPECT_EQ(logged({"qmi_client_send_msg_sync"}), 0);
    EXPECT_EQ(orvik_efs_read(0, path.c_str(), 71, &byte, &length), -2); /* sent: no such file */
}

TEST_F(VendorAccessTest, NvReadFillsASmallBufferAndTellsTheLengthOfASmallItem) {
    const Buffer item = pattern(424, 3);
    ASSERT_EQ(orvik_nv_write_ex(1, 7232, item.data(), 424), 0);
    Buffer buffer(500);
    uint32_t length = 500;
    ASSERT_EQ(orvik_nv_read(1, 7232, buffer.data(), &length), 0);
    EXPECT_EQ(length, 424u);
    EXPECT_TRUE(std::equal(item.begin(), item.end(), buffer.begin()));
    buffer.assign(10, 0xEE);
    length = 9;
    ASSERT_EQ(orvik_nv_read(1, 7232, buffer.data(), &length), 0);
    EXPECT_EQ(length, 9u);
    EXPECT_EQ(buffer[9], 0xEE);
}

TEST_F(VendorAccessTest, LengthsOfAServiceAreNotBelieved) {
    Buffer buffer(2000);
    uint32_t length = 2000;
    script(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0, Buffer(400, 0x11));
    ASSERT_EQ(orvik_nv_read(0, 1, buffer.data(), &length), 0);
    EXPECT_EQ(length, 424u); /* what a response can hold */
    EXPECT_EQ(read("/f", 1000).size(), 1000u);
    const std::string text = printed([&] { EXPECT_EQ(read("/f", 50), Buffer(50, 0x11)); });
    EXPECT_THAT(text, testing::HasSubstr("data_len_send = -1, data_len_recv = 424,"));

    script(20, 0, 0, 0, {});
    length = 100;
    EXPECT_EQ(orvik_nv_read(0, 1, buffer.data(), &length), -108);
    EXPECT_EQ(orvik_efs_read(0, "/f", 2, buffer.data(), &length), -108); /* an empty chunk */

    script(20, 0, 0, 5, {});
    EXPECT_EQ(orvik_nv_read(0, 1, buffer.data(), &length), 5);
    EXPECT_EQ(orvik_efs_delete(0, "/f", 2), 5);
    EXPECT_EQ(orvik_efs_write(0, "/f", 2, buffer.data(), 10), 0); /* 5 is an instance id */
    script(20, 0, 0, -7, {});
    EXPECT_EQ(orvik_efs_write(0, "/f", 2, buffer.data(), 10), -7);

    /* a file that never ends: at most 300 requests */
    script(21, 1000000, 1, 0, {0x22});
    std::remove((phone() / "log").c_str());
    EXPECT_EQ(read("/f", 1000), Buffer(300, 0x22));
    EXPECT_EQ(logged({"call qmi_client_send_msg_sync"}), 300);
}

TEST_F(VendorAccessTest, SendRefusesWhatItsRecordCanNotHold) {
    uint8_t data[513] = {};
    uint8_t rsp[512];
    uint32_t length = 512;
    EXPECT_EQ(
        printed([&] { EXPECT_EQ(orvik_extend_qmi_send_sync(1, data, 513, rsp, &length), -1); }),
        "put data_len 513 > max 512\n");
    EXPECT_EQ(orvik_extend_qmi_send_sync(1, data, -1, rsp, &length), -1);
    length = 513;
    EXPECT_EQ(orvik_extend_qmi_send_sync(1, data, 1, rsp, &length), -1);
    EXPECT_EQ(
        printed([&] { EXPECT_EQ(orvik_extend_qmi_send_sync(1, nullptr, 1, rsp, &length), -1); }),
        "0,  put Invalid param\n");
    length = 512;
    EXPECT_EQ(orvik_extend_qmi_send_sync(1, data, 512, rsp, &length), 0);
    EXPECT_EQ(length, 512u);
    length = 100; /* the longer response is cut */
    EXPECT_EQ(orvik_extend_qmi_send_sync(1, data, 512, rsp, &length), 0);
    EXPECT_EQ(length, 100u);
    put("faults", "qmi_client_send_msg_sync * reply 01040000000000 02040010000000");
    length = 100; /* no data TLV */
    EXPECT_EQ(orvik_extend_qmi_send_sync(1, data, 512, rsp, &length), 0);
    EXPECT_EQ(length, 0u);
}

TEST_F(VendorAccessTest, ServiceListThatClaimsTooMuchIsCapped) {
    put("faults", "qmi_client_get_service_list * long");
    uint8_t rsp[8];
    uint32_t length = 8;
    const uint8_t data[1] = {};
    EXPECT_EQ(orvik_extend_qmi_send_sync(1, data, 1, rsp, &length), 0);
}

TEST_F(VendorAccessTest, CommonRequestsKeepTheirLimits) {
    const Buffer data(600, 0x33);
    Buffer rsp(508, 0xEE);
    EXPECT_EQ(orvik_common_qmi_req(9, 500, data.data(), rsp.data()), ORVIK_USAGE_ERROR);
    EXPECT_EQ(orvik_common_qmi_req(9, 1, nullptr, rsp.data()), ORVIK_USAGE_ERROR);
    EXPECT_EQ(orvik_common_qmi_req(9, 0, nullptr, nullptr), ORVIK_USAGE_ERROR);
    EXPECT_EQ(orvik_send_common_qmi_msg(9, 492, data.data(), rsp.data()), ORVIK_USAGE_ERROR);
    EXPECT_EQ(orvik_send_common_qmi_msg(9, 1, nullptr, rsp.data()), ORVIK_USAGE_ERROR);
    EXPECT_EQ(orvik_send_common_qmi_msg(9, 0, nullptr, nullptr), ORVIK_USAGE_ERROR);
    EXPECT_EQ(logged({"qmi_client_send_msg_sync"}), 0);
    EXPECT_EQ(rsp[507], 0); /* cleared */

    EXPECT_EQ(orvik_common_qmi_req(9, 499, data.data(), rsp.data()), 0);
    EXPECT_EQ(orvik_common_qmi_req(9, 0, nullptr, rsp.data()), 0);
    EXPECT_EQ(orvik_send_common_qmi_msg(77, 491, data.data(), rsp.data()), 0);
    EXPECT_EQ(rsp[8], 77); /* the type comes back */
    EXPECT_EQ(logged({"vendor req", "100002"
                                    "09000000"
                                    "00000000"
                                    "3333"}),
              1);
    EXPECT_EQ(logged({"vendor req", "100002"
                                    "02000000"
                                    "00000000"
                                    "4d000000"
                                    "eb010000"
                                    "3333"}),
              1);
}

TEST_F(VendorAccessTest, ResultMapTouchesOnlyTheThreeSendResults) {
    EXPECT_EQ(orvik_qmi_result_map(-1), -101);
    EXPECT_EQ(orvik_qmi_result_map(-2), -102);
    EXPECT_EQ(orvik_qmi_result_map(-3), -103);
    for (const int32_t same : {-4, 0, 1, 5, INT32_MIN})
        EXPECT_EQ(orvik_qmi_result_map(same), same);
}

TEST_F(VendorAccessTest, HexDumpShowsUpTo4096Bytes) {
    const Buffer data(4096, 0xAF);
    const auto dump = [&](const uint8_t* bytes, uint32_t length) {
        return printed([&] { orvik_print_data_with_hex(bytes, length); });
    };
    EXPECT_THAT(dump(data.data(), 2), testing::EndsWith("data hex show, len(2), data: AF AF\n"));
    EXPECT_THAT(dump(data.data(), 4096), testing::EndsWith(" AF AF\n"));
    EXPECT_THAT(dump(data.data(), 0), testing::EndsWith("invalid data len(0)\n"));
    EXPECT_THAT(dump(data.data(), 4097), testing::EndsWith("invalid data len(4097)\n"));
    EXPECT_THAT(dump(nullptr, 1), testing::EndsWith("print_data_with_hex, data is null\n"));
}

} // namespace
