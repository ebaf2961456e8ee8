#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Many exchanges and restarts, recorded and replayed: both print the same, and no sanitizer has
# anything to say. A build without kvt-lab takes the development build's beside it; without that it is
# only recorded.
#
#   tape_stress.sh BUILD EXCHANGES RESTARTS
build=$1
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/phone/prop" "$work/phone/diag"
echo 0 >"$work/phone/prop/persist.vendor.radio.adb_log_ov"
echo 2 >"$work/phone/restart_ms"
echo 1 >"$work/phone/diag/delay_ms"
export KVT_PHONE="$work/phone"
export ASAN_OPTIONS="verify_asan_link_order=0:log_path=$work/report:$ASAN_OPTIONS"
export UBSAN_OPTIONS="print_stacktrace=1:log_path=$work/report:$UBSAN_OPTIONS"
export TSAN_OPTIONS="atexit_sleep_ms=0:log_path=$work/report:$TSAN_OPTIONS"
lab=$build/bin/kvt-lab
[ -x "$lab" ] || lab=${build%/*}/dev/bin/kvt-lab
export KVT_TAPE_LIBRARIES="$build/lib"
status=0
try() {
    KVT_TAPE=$work/tape LD_PRELOAD=$build/lib/libkvt_record.so \
        "$build/bin/tape_stress" "$@" >"$work/out" 2>"$work/err" || {
        echo "recording $*:" && tail -5 "$work/out" && cat "$work/err"
        status=1
    }
}
try diag "$2"
try restarts "$3"
if [ -x "$lab" ]; then
    KVT_PHONE=$work/none "$lab" --kvt "$build/bin/tape_stress" replay "$work/tape" || status=1
else
    [ "$(grep -c '"end":' "$work/tape")" = 2 ] || status=1
fi
for report in "$work"/report*; do
    [ -e "$report" ] && head -60 "$report" && status=1
done
exit $status
