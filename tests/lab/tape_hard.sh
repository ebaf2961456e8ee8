#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# shellcheck disable=SC2086,SC2015,SC2016 # a command is its words; complain always succeeds
# What tapes go through: another platform, a changed kvt, a sudden end, two recorders at once, damage.
#
# shellcheck disable=SC2086,SC2015,SC2016 # a command is several words; the rest is meant so
#   tape_hard.sh BUILD
build=$1 lab=$1/bin/kvt-lab kvt=$1/bin/kvt
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
export KVT_PHONE="$work/phone"
failed=0
complain() {
    echo "$*"
    failed=1
}
record() { "$lab" --kvt "$kvt" record "$@"; }
replay() { KVT_PHONE=$work/none "$lab" --kvt "$kvt" replay "$@"; }
recorder=$build/lib/libkvt_record.so

# ---- another platform ----
other=$build/lib/other_platform
for command in '4 1 0 550' '4 4 0 /x' '5 1' '5 5' '5 4 2' '5 0 0 0 2000 0x7b 1' '5 0 1 0 2000 0x7b 1' \
    '9 0 0' '11 1' '7 1 1' '6 1 7' '5 10 0'; do
    LD_LIBRARY_PATH=$other "$kvt" $command >plain
    LD_LIBRARY_PATH=$other record other -- $command >recorded
    # Handles are addresses, which no two runs share; threads have their own order, and one its own
    # end.
    grep -av wait_thread_proc plain | sort >plain.sorted
    grep -av wait_thread_proc recorded | sort >recorded.sorted
    sed -i 's/0x[0-9a-f]*/0x/; s/handle = -*[0-9]*/handle/' plain.sorted recorded.sorted
    cmp -s plain.sorted recorded.sorted || complain "$command: other output under the recorder"
done
replay other >said || complain "the other platform's tape does not replay"
grep -v ': same$' said
[ -e phone ] && complain "the simulated phone was there"

# ---- the same calls in the same order, late packets and a service that goes down included ----
mkdir -p phone/diag
echo 250 >phone/diag/delay_ms
echo 200 >phone/restart_ms
for command in '5 0 0 0 2000 0x7b 1' '5 0 1 0 2000 0x7b 1' '9 7 0'; do
    for side in plain recorded; do
        rm -f phone/log
        [ "$command" != '9 7 0' ] || echo 'qmi_client_send_msg_sync:vs.0x207 1 restart' >phone/faults
        case $side in
        plain) "$kvt" $command >plain ;;
        recorded) record calls -- $command >recorded ;;
        esac
        rm -f phone/faults
        sed -n 's/.* \(call .*\)/\1/p' phone/log >$side.calls
        [ "$command" != '9 7 0' ] || sleep 0.3 # the services are back
    done
    # What is still called while a service goes down depends on how soon the run ends.
    [ "$command" = '9 7 0' ] || cmp -s plain.calls recorded.calls ||
        complain "$command: other calls under the recorder"
    [ -s plain.calls ] || complain "$command: no calls"
    # The thread that watches the time may or may not come to its last line.
    for side in plain recorded; do
        grep -v wait_thread_proc $side | sort >$side.sorted
    done
    cmp -s plain.sorted recorded.sorted || complain "$command: other output under the recorder"
done
replay calls >said || complain "late packets and restarts do not replay: $(cat said)"
rm -r phone

# ---- a kvt that has changed ----
record tape -- 5 0 0 0 100 0x7b 1 2 >/dev/null
cat >changed <<END
#!/bin/sh
LD_PRELOAD=$build/lib/libtape_changed.so:\$LD_PRELOAD exec "$kvt" "\$@"
END
chmod +x changed
KVT_PHONE=$work/none "$lab" --kvt ./changed replay tape >said 2>&1 &&
    complain "a changed kvt is the same"
[ "$(wc -l <said)" = 1 ] && grep -q 'has data=7b0102, the program gives data=7b01025a' said ||
    complain "a byte more is not told in one line: $(cat said)"

# ---- a sudden end ----
record tape -- 4 1 0 550 >/dev/null
echo 5000 >phone/diag/delay_ms 2>/dev/null || { mkdir -p phone/diag; echo 5000 >phone/diag/delay_ms; }
KVT_TAPE=tape LD_PRELOAD=$recorder "$kvt" 5 0 0 0 9000 0x7b >/dev/null &
sleep 0.5
kill -9 $!
wait $! 2>/dev/null
rm phone/diag/delay_ms
record tape -- 4 1 0 550 >/dev/null
replay tape >said 2>&1 && complain "a run that was broken off is the same"
[ "$(grep -c ': same$' said)" = 3 ] || complain "whole runs do not replay: $(cat said)"
grep -q '^3: 5 0 0 0 9000 0x7b: broken: it was broken off' said || complain "broken off, not told: $(cat said)"

# ---- two at once ----
for i in 1 2 3 4 5 6 7 8; do record both -- 4 4 0 /nv/item_files/nothing$i >/dev/null & done
wait
replay both >said 2>&1 || complain "recorders mixed their lines: $(cat said)"
[ "$(grep -c same said)" = 8 ] || complain "a run is missing"

# ---- damage ----
line() { sed -n "$1p" both; }
count=$(wc -l <both)
damaged() { # what is told, and a status that is not 0
    what=$1
    shift
    for verb in replay show; do
        "$lab" --kvt "$kvt" $verb damaged >said 2>&1
        status=$?
        [ $status = 1 ] || [ $status = 5 ] || [ "$verb,$what" = "show,another length" ] ||
            complain "$verb, $what: status $status"
        if [ $verb = replay ]; then grep -q "$*" said || complain "$what is not told: $(cat said)"; fi
    done
    "$lab" twin damaged twin >/dev/null 2>&1
    [ $? -lt 128 ] || complain "twin crashes: $what"
    "$lab" redact damaged redacted >/dev/null 2>&1
    [ $? -lt 128 ] || complain "redact crashes: $what"
    rm -rf twin
}
: >damaged && damaged "an empty file" "it is empty"
sed 5d both >damaged && damaged "a line less" "missing before it"
{ line 1; cat both; } >damaged && damaged "a line twice" "twice"
{ line 1; echo hello; sed 1d both; } >damaged && damaged "a foreign line" "line 2: not a line of a tape"
head -c -20 both >damaged && damaged "a line that is cut" "line $count: not a line"
{ line 1; echo '{"run":"a","n":0}'; echo '[]'; echo 7; sed 1d both; } >damaged && damaged "other JSON" "line 2: not a line"
sed 's/"req":"../"req":"zz/' both >damaged && damaged "wrong hex" "is not hexadecimal"
sed 's/"req_len":524/"req_len":3/' both >damaged && damaged "a wrong length" "out of range"
sed 's/"result":0/"result":99999999999/' both >damaged && damaged "a number out of range" "out of range"
sed 's/"thread":0/"thread":-1/' both >damaged && damaged "a thread out of range" "out of range"
sed 's/"printed":[0-9]*/"printed":7/' both >damaged && damaged "another length" "its lines tell of"
sed 's/"tape":2/"tape":1/' both >damaged && damaged "another version" "version 1"
# A million lines of a run that is whole but for its end.
{
    line 1 | sed 's/"run":"[^"]*"/"run":"long"/'
    seq 1 1000000 | sed 's/.*/{"run":"long","n":&,"at":1,"took":1,"thread":0,"call":"property_get","in":{"key":"k"},"out":{"value":"v"},"result":1}/'
} >damaged && damaged "a million lines" "broken off"

# ---- a tape that can't be written, and children ----
mkdir folder
KVT_TAPE=folder LD_PRELOAD=$recorder "$kvt" 4 1 0 550 >out 2>err
"$kvt" 4 1 0 550 | cmp -s - out || complain "without a tape, other output"
[ "$(wc -l <err)" = 1 ] && grep -q 'folder: .*: nothing is recorded$' err || complain "no tape: $(cat err)"
if [ -c /dev/full ]; then
    KVT_TAPE=/dev/full LD_PRELOAD=$recorder "$kvt" 4 1 0 550 >out 2>err
    "$kvt" 4 1 0 550 | cmp -s - out || complain "on a full disk, other output"
    [ "$(wc -l <err)" = 1 ] || complain "a full disk: $(cat err)"
fi
KVT_TAPE=tape LD_PRELOAD="$build/lib/libtape_changed.so $recorder:libm.so.6" \
    "$kvt" 8 '$(env|grep^LD_PRELOAD>&2)' >/dev/null 2>&1
KVT_TAPE=tape LD_PRELOAD="$build/lib/libtape_changed.so $recorder:libm.so.6" \
    "$kvt" 8 '`printenv${IFS}LD_PRELOAD${IFS}KVT_TAPE>children`' >/dev/null 2>&1
# The simulated phone adds its redirect of the AT channel, for the shell alone.
[ "$(sed 's#:/proc/[0-9]*/fd/[0-9]*$##' children)" = "$build/lib/libtape_changed.so:libm.so.6" ] ||
    complain "children get: $(cat children)"
exit $failed
