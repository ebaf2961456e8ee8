#include "esim.h"

#include "log_lines.h"
#include "phone_test.h"

namespace {

class EsimTest : public PhoneTest {
  protected:
    EsimTest() { g_orvik_stdout_print_flag = 1; }
};

TEST_F(EsimTest, CheckDigitsCountLettersByTheirCharacter) {
    EXPECT_TRUE(is_eid_valid("89001000000000000000000001234502"));
    EXPECT_FALSE(is_eid_valid("89001000000000000000000001234520"));
    EXPECT_TRUE(is_eid_valid("00000000000000000000000000000001"));
    /* 34, then 'a' - '0' = 49: 389 = 4 * 97 + 1 */
    EXPECT_TRUE(is_eid_valid("0000000000000000000000000000034a"));
    EXPECT_THAT(printed([] { is_eid_valid("0000000000000000000000000000000f"); }),
                testing::EndsWith("]: eid validate failed, result = 54\n\n"));
}

TEST_F(EsimTest, StatesAreNamedWithoutANewline) {
    const auto names = [](uint8_t first, uint8_t second) {
        const uint8_t states[] = {first, second};
        const std::string text = printed([&] { map_sim_state(states); });
        return text.substr(text.rfind('\n') + 1);
    };
    EXPECT_EQ(names(0, 1), "ABSENT,PRESENT");
    EXPECT_EQ(names(2, 3), "ERROR,UNKNOWN");
    EXPECT_EQ(names(255, 0), "UNKNOWN,ABSENT");
}

/* One test, since what is known of the file lasts as long as the process. */
TEST_F(EsimTest, EidIsWrittenOnceAndAFailedWriteIsTriedAgain) {
    const std::filesystem::path file = "efs/1/nv/item_files/modem/uim/uimdrv/esim_eid";
    const std::string eid = "ABCDEFGHIJKLMNOP";
    const auto save = [&eid] {
        return printed([&] { save_eid_to_efs(reinterpret_cast<const uint8_t*>(eid.data())); });
    };
    put("faults", "qmi_client_send_msg_sync:vendor.0x02 2 timeout");
    EXPECT_THAT(save(), testing::EndsWith("save eid efs result = -103\n"));
    EXPECT_FALSE(has(file));

    put("faults", "");
    g_orvik_stdout_print_flag = 0;
    EXPECT_EQ(save(), "");
    EXPECT_EQ(get(file), eid);
    EXPECT_EQ(logged({"save eid successfully, set IS_EID_SAVE TRUE"}), 1);

    g_orvik_stdout_print_flag = 1;
    std::filesystem::remove(phone() / file);
    EXPECT_THAT(save(), testing::EndsWith("]: EID already saved, skip\n\n"));
    EXPECT_FALSE(has(file));
}

} // namespace
