#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The steps of factory.toml for a phone without kvt-lab: kvt, a shell and grep are enough. Stops at the first
# failure; what a step sets is put back in any case. Status 0 when all passed.
undo=
# shellcheck disable=SC2154 # it is set there
trap 'status=$?; trap "" INT TERM; eval "$undo"; exit $status' EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# step WHAT EXPECTED COMMAND...: the output must hold a line like EXPECTED, and none that tells a failure. That an
# answer came (req_cb result:0) is not success: what a command sets is read back.
step() {
    what=$1 expected=$2
    shift 2
    out=$("$@" 2>&1)
    if printf '%s\n' "$out" | grep -qE "$expected" &&
        ! printf '%s\n' "$out" | grep -qE 'fail|FAIL|Error happen|QMI service framework error|result:-'; then
        echo "$what: ok"
    else
        echo "$what: FAILED ($*)"
        exit 1
    fi
}

# unset_yet WHAT CODE COMMAND...: the output must tell that error code, which means that nothing is there.
unset_yet() {
    what=$1 code=$2
    shift 2
    "$@" | grep -q "error_code($code)" && return
    echo "$what: FAILED (set before, or it can't be read: $*)"
    exit 1
}

step "the IMEI is there" '^data len\(9\)$' kvt 4 1 0 550

unset_yet "an item can be written" 5 kvt 4 1 0 6000
undo="kvt 4 3 0 6000 >/dev/null"
step "an item can be written" 'rsp.result = 0$' kvt 4 2 0 6000 1 2 255
step "the item is there" '^data:  01 02 FF$' kvt 4 1 0 6000

unset_yet "the antenna can be fixed" -2 kvt 3 4
undo="$undo; kvt 3 5 >/dev/null"
step "the antenna can be fixed" 'v_band_list\(4\)' kvt 3 3 1 4 0x4
step "the antenna is fixed" '^data:  01 00 00 00 04 00 00 00 04( 00){7}$' kvt 3 4

step "both SIM cards are in" '^PRESENT,PRESENT$' kvt 5 10 4 0
step "the eSIM tells its EID" '^eID=[0-9a-f]{32}$' kvt 5 10 3 0
step "5G is received" '^ASDIV DATA: rsrp_rx0: -[0-9]' kvt 9 10 0
echo "phone passed"
