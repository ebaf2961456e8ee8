#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# A phone that differs from a new one in all that commands can read, recorded; its twin answers every
# command that only reads with the same output, also where other commands ran in between.
#
#   tape_twin.sh BUILD
lab=$1/bin/kvt-lab kvt=$1/bin/kvt
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
failed=0

mkdir -p phone/nv/0 phone/nv/1 phone/efs/0/nv/item phone/efs/1 phone/prop phone/stats phone/diag \
    phone/stats_debug phone/euicc phone/sar phone/sim
printf '\010\112\001\002\003\004\005\006\007' >phone/nv/0/550
printf 'abc' >phone/nv/1/77
head -c 5000 /dev/urandom >phone/efs/0/nv/item/large
head -c 100 /dev/urandom >phone/efs/1/small
echo 0 >phone/prop/persist.vendor.radio.adb_log_ov
echo 'vendor uim sar nas' >phone/services
echo 89049032000000000000000000000123 >phone/euicc/eid
echo 17 >phone/sar/dsi
echo absent >phone/sim/1
echo 1 >phone/sim/type
head -c 8 /dev/urandom >phone/stats/0.100
printf '\376\001answer' >phone/diag/fe01
printf '\376\002first' >phone/diag/fe02
echo 250 >phone/diag/delay_ms
echo 41 >phone/stats_debug/queries
echo 2 >phone/stats_debug/version

commands='
4 1 0 550
4 1 1 77
4 1 0 1000
4 4 0 /nv/item/large
4 4 1 /small
4 4 0 /missing
5 1
5 5
5 11
5 10 0
7 1 0
7 1 1
9 30 0
11 1
5 0 0 0 2000 0xfe 1
5 0 1 0 2000 0xfe 2
5 0 0 0 2000 0x7c
4 2 0 1000 1 2 3
4 1 0 1000
4 5 0 /missing 9 9
4 4 0 /missing
'
number=0
echo "$commands" | while read -r command; do
    [ -z "$command" ] && continue
    number=$((number + 1))
    # shellcheck disable=SC2086
    KVT_PHONE=$work/phone "$lab" --kvt "$kvt" record tape -- $command >out.$number || exit 1
done || exit 1

"$lab" twin tape twin >took || exit 1
number=0
echo "$commands" | { while read -r command; do
    [ -z "$command" ] && continue
    number=$((number + 1))
    # shellcheck disable=SC2086
    KVT_PHONE=$work/twin "$kvt" $command >twin.$number
    # DIAG commands print on several threads, in an order of their own each time, and the one that
    # watches the time prints how much of it has passed: a twin can't promise that.
    case $command in "5 0 "*)
        for side in out twin; do
            grep -v wait_thread_proc $side.$number | sort -o $side.$number
        done
        ;;
    esac
    cmp -s out.$number twin.$number || {
        echo "$command: the twin differs"
        diff out.$number twin.$number | head -5
        failed=1
    }
done
[ $failed = 0 ]; } || { cat took; exit 1; }

grep -q '^took efs/0/nv/item/large, 5000 bytes$' took || { echo "what was taken is not told"; failed=1; }
"$lab" twin tape twin 2>/dev/null && { echo "a directory with something in it was taken"; failed=1; }
exit $failed
