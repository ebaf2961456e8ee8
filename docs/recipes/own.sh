#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# own.sh: passes on what a command of kvt itself says, without log lines and the trace of the exchange.
#   kvt 3 1 | own.sh
sed -E '/^RIL\[/d; /qmi_client/d; /^orvik_extend_qmi_(send_sync resp_len|handle_req_cb)/d' | cat -s
