#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# A transcript's commands, recorded and replayed: what they print under the recorder is what the
# transcript demands, and what they print again without a phone is the same.
#
#   tape_transcript.sh BUILD TEST
#
# BUILD is the build's folder, TEST a test of transcript_test. KVT_TEST_ARM64 names a build that is
# recorded and replayed instead, under emulation. Otherwise the tape is left in BUILD/Testing/tapes for
# those who compare what is read from it.
build=$1 test=$2
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
export KVT_TEST_TAPE="$work/tape" KVT_TEST_BUILD="$build"

cat >"$work/record" <<'END'
#!/bin/sh
[ -z "$KVT_TEST_ARM64" ] &&
    exec "$KVT_TEST_BUILD/bin/kvt-lab" --kvt "$KVT_TEST_BUILD/bin/kvt" record "$KVT_TEST_TAPE" -- "$@"
behind=${LD_PRELOAD:+:$LD_PRELOAD}
unset LD_PRELOAD
exec qemu-aarch64 -L /usr/aarch64-linux-gnu -E KVT_TAPE="$KVT_TEST_TAPE" \
    -E LD_PRELOAD="$KVT_TEST_ARM64/lib/libkvt_record.so$behind" "$KVT_TEST_ARM64/bin/kvt" "$@"
END
cat >"$work/replay" <<'END'
#!/bin/sh
unset LD_LIBRARY_PATH LD_PRELOAD
libraries=$KVT_TEST_ARM64/lib/kvt-replay
exec qemu-aarch64 -L /usr/aarch64-linux-gnu -E LD_LIBRARY_PATH="$libraries" \
    -E LD_PRELOAD="$libraries/libqmi_cci.so" "$KVT_TEST_ARM64/bin/kvt" "$@"
END
chmod +x "$work/record" "$work/replay"
[ -z "$KVT_TEST_ARM64" ] || export KVT_EMULATOR=env # record and replay call the real one

KVT_PROGRAM="$work/record" "$build/bin/transcript_test" --gtest_filter="$test" >"$work/out" 2>&1 || {
    cat "$work/out"
    exit 1
}
[ -s "$KVT_TEST_TAPE" ] || {
    echo "nothing was recorded"
    exit 1
}
[ -z "$KVT_TEST_ARM64" ] && mkdir -p "$build/Testing/tapes" && cp "$KVT_TEST_TAPE" "$build/Testing/tapes/$test.tape"

replayed=$build/bin/kvt
[ -n "$KVT_TEST_ARM64" ] && replayed=$work/replay
KVT_PHONE="$work/none" "$build/bin/kvt-lab" --kvt "$replayed" replay "$KVT_TEST_TAPE" >"$work/out" 2>&1
same=$(grep -c ': same$' "$work/out")
echo "$same runs are the same"
# One that the transcript itself ends in the middle is broken, as it should be.
broken=$(grep -c ': broken: it was broken off' "$work/out")
grep -v -e ': same$' -e ': broken: it was broken off' "$work/out" && exit 1
if [ -e "$work/none" ]; then
    echo "the simulated phone was there when the tape was replayed"
    exit 1
fi
[ "$same" -gt 0 ] && [ "$broken" -le 1 ]
