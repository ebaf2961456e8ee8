#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Levels that move, one answer that is missing, and an end by SIGINT: watch_test.sh KVT_LAB KVT
set -e
lab=$1
export KVT_PROGRAM="$2"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export KVT_PHONE="$work/phone"

"$lab" watch --every 0.2 --out levels.csv 9 10 > shown 2>&1 &
watch=$!
wait_for() { # wait_for TEXT: it is shown
    n=0
    until grep -q -e "$1" shown; do
        n=$((n + 1))
        [ $n -lt 200 ] || { echo "never shown: $1"; cat shown; exit 1; }
        sleep 0.1
    done
}
wait_for 'rsrp_rx0 *-88.00 dBm'
"$lab" phone set nr.pcc.rsrp -101
wait_for 'rsrp_rx0 *-101.00 dBm .* min -101.00  max -88.00'
"$lab" phone fault 'qmi_client_send_msg_sync:vs.*' '*' timeout
wait_for 'rsrp_rx0 *missing .* min -101.00  max -88.00'
"$lab" phone fault --clear
"$lab" phone set nr.pcc.rsrp -95
wait_for 'rsrp_rx0 *-95.00 dBm'
kill -INT $watch
status=0
wait $watch || status=$?
[ $status = 1 ] || { echo "ended with status $status: an answer was missing"; exit 1; }

# Each row is whole; what was missing is empty, never a zero.
head -1 levels.csv | grep -q '^time_s,9 10 rsrp_rx0 dBm,.*,9 10 rsrq dB$'
grep -q '^[0-9.]*,,,,,$' levels.csv
if grep -q ',0\.00' levels.csv || grep -v '^time_s' levels.csv | grep -vqE '^[0-9.]+(,(-[0-9.]+)?){5}$'; then
    cat levels.csv
    exit 1
fi

# A picture, and no picture of nothing: lines are broken where an answer is missing.
"$lab" watch --every 0 --count 2 --out two.svg 9 10 > shown
grep -q '<svg' two.svg
status=0
"$lab" watch --count 1 --out no.svg 9 13 > shown 2>&1 || status=$?
[ $status = 2 ] && [ ! -e no.svg ]
