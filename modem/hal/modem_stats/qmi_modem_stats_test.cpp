#include <cstdio>

#include "modem_stats_handlers.h"

int orvik_test_qmi_modem_stats_do(int, char**) {
    return std::puts("orvik_test_qmi_modem_stats_do is not built yet");
}
