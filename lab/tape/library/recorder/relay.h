// SPDX-License-Identifier: Apache-2.0
/* Callbacks on their way through the recorder: the platform gets a function of ours in place of the
 * program's, which writes down what comes and hands it on. Each function of the program gets one of
 * ours for good, so a callback that comes late still finds its way. */
#pragma once

#include "diag.h"
#include "qmi_cci.h"

namespace relay {

/* number: which of the program's functions of this kind it is, from 1, in the order in which they
 * were first seen. Where there are more than the recorder has room for, the program's own function
 * is given, its calls are not recorded, and number is -1. */
qmi_client_ind_cb to(qmi_client_ind_cb callback, int& number);
qmi_client_error_cb to(qmi_client_error_cb callback, int& number);
qmi_client_notify_cb to(qmi_client_notify_cb callback, int& number);
diag_dci_stream_cb to(diag_dci_stream_cb callback, int& number);
diag_packet_cb to(diag_packet_cb callback, int& number);
diag_dci_response_cb to(diag_dci_response_cb callback, int& number);

} // namespace relay
