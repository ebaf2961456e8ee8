#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# Every command of a transcript on another implementation of the platform: recorded there, and replayed
# with no platform at all. What kvt prints there is not the transcript's, but the same again.
#
#   tape_other.sh BUILD TRANSCRIPT
build=$1 transcript=$2
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin" "$work/phone"
# What the shell of group 8 writes goes to a file of ours, on a platform that has no channel.
: >"$work/channel"
export KVT_AT_REDIRECT_TO="$work/channel" LD_PRELOAD="$build/lib/libkvt_at_redirect.so"
cat >"$work/bin/kvt" <<END
#!/bin/sh
LD_LIBRARY_PATH=$build/lib/other_platform exec "$build/bin/kvt-lab" --kvt "$build/bin/kvt" \
    record "$work/tape" -- "\$@"
END
chmod +x "$work/bin/kvt"
export KVT_PHONE="$work/phone" PATH="$work/bin:$PATH"
cd "$work/phone" || exit 1
# They look for what the simulated phone would have left: what they say about it is not asked for, nor how
# they filter what kvt prints.
sed -n 's/^\$ //p' "$transcript" | grep 'kvt ' | awk -F '|' '!seen[$1]++' | while read -r command; do
    timeout 15 sh -c "$command" </dev/null >/dev/null 2>&1
done
[ -s "$work/tape" ] || {
    echo "nothing was recorded"
    exit 1
}
KVT_PHONE="$work/none" "$build/bin/kvt-lab" --kvt "$build/bin/kvt" replay "$work/tape" >"$work/said" 2>&1
status=$?
grep -v ': same$' "$work/said"
same=$(grep -c ': same$' "$work/said")
echo "$same runs are the same"
[ "$same" -gt 0 ] || status=1
if [ -e "$work/none" ] || [ -e "$work/phone/log" ]; then
    echo "the simulated phone was there"
    status=1
fi
exit $status
