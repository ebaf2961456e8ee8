// SPDX-License-Identifier: Apache-2.0
/* What the modem says of its statistics: replies of single items through group 9's readers, and the
 * debug-information blocks of group 7, which come in the 508 bytes of a common reply. */
#include <algorithm>
#include <iterator>
#include <vector>

#include "debug_info.h"
#include "fuzz_phone.h"
#include "stats_query.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static FuzzPhone& phone = *new FuzzPhone;
    if (size < 2)
        return 0;
    const unsigned choice = data[0];
    const uint8_t version = data[1];
    if (choice < 200) {
        std::vector<uint8_t> reply(500); /* the request's data in the reply: exactly as much */
        std::copy_n(data + 1, std::min(size - 1, reply.size()), reply.begin());
        unsigned at = 1;
        const auto block = [&](int (*unpack)(unsigned char*, int)) {
            at = (at + static_cast<unsigned>(unpack(reply.data() + at, version))) & 0xFF;
        };
        block(orvik_modem_stats_main_info_unpk);
        block(orvik_modem_stats_diag_info_unpk);
        block(orvik_modem_stats_cm_info_unpk);
        block(orvik_modem_stats_uim_info_unpk);
        return 0;
    }
    static constexpr struct {
        int opt;
        const char* file;
    } items[] = {{0, "stats/0.82"},   {7, "stats/0.94"},   {8, "stats/0.112"},
                 {9, "stats/0.113"},  {10, "stats/0.135"}, {20, "stats/0.110"},
                 {21, "stats/0.111"}, {30, "stats/0.100"}};
    static const bool ready = (orvik_qmi_modem_stats_api_init(), true);
    const auto& item = items[choice % std::size(items)];
    phone.put(item.file, data + 1, size - 1);
    if (ready)
        orvik_test_qmi_modem_stats_hdl(item.opt, 0);
    return 0;
}
