#!/bin/sh
# A factory script that stops at the first failure although kvt's exit status is always 0: each step
# names what its output must contain.
step() { # step WHAT EXPECTED COMMAND...
    what=$1 expected=$2
    shift 2
    if "$@" | grep -q -e "$expected"; then
        echo "$what: ok"
    else
        echo "$what: FAILED ($*)"
        exit 1
    fi
}
step "IMEI there"       "^data len(9)$"          kvt 4 1 0 550
step "antenna fixed"    "req_cb result:0"        kvt 3 3 1 4 0xff
step "SIM cards there"  "PRESENT,PRESENT"        kvt 5 10 4 0
step "EID"              "^eID="                  kvt 5 10 3 0
step "signal"           "^ASDIV DATA: rsrp_rx0"  kvt 9 10 0
echo "phone passed"
