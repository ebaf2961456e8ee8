#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# No spelling of what is private is left in a redacted tape, which still replays; the same value is
# replaced by the same one everywhere, and check digits hold.
#
#   tape_redact.sh BUILD
lab=$1/bin/kvt-lab kvt=$1/bin/kvt
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
export KVT_PHONE="$work/phone" XDG_STATE_HOME="$work/state"
failed=0
complain() {
    echo "$1"
    failed=1
}
record() { "$lab" --kvt "$kvt" record tape -- "$@" >/dev/null || exit 1; }

# IMEI 490154203237518, EID 8900...4502 (its remainder is right), ICCID, a number, cell 100.
record 4 1 0 550
record 4 2 1 550 8 74 9 81 36 48 50 87 129
record 5 0 0 0 2000 0x26 0x26 2
record 5 0 0 0 2000 0x7b 52 57 48 49 53 52 50 48 51 50 51 55 53 49 56
record 5 10 1 1
record 4 4 1 /nv/item_files/modem/uim/uimdrv/esim_eid
record 4 5 0 /copy 52 57 48 49 53 52 50 48 51 50 51 55 53 49 56
record 4 5 0 /card 56 57 48 48 49 48 48 48 48 48 48 48 48 48 48 49 50 51 52 49
record 4 4 0 /copy
record 9 0 0
record 8 'ATD+4915112345678;' 2>/dev/null

"$lab" redact tape redacted >said || exit 1
"$lab" --kvt "$kvt" replay redacted >replayed 2>&1 || complain "the redacted tape does not replay"
grep -v ': same$' replayed
for secret in 490154203237518 4a09512430325781 '0x24 0x30 0x32 0x57' '24 30 32 57 81' \
    343930313534323033323337353138 '30 33 32 33 37 35 31' '"50","48","51","50","51","55"' \
    89001000000000000000000001234502 89001000000000012341 4915112345678 'pci: 100,'; do
    grep -qe "$secret" tape || [ "$secret" = 490154203237518 ] || [ "$secret" = 89001000000000012341 ] ||
        complain "$secret was not recorded: the test tests nothing"
    grep -qe "$secret" redacted && complain "$secret is still there"
done
imei=$(sed -n 's/.*"resp":"[0-9a-f]*08\([0-9]a[0-9a-f]\{14\}\)".*/\1/p' redacted | sort -u)
[ "$(echo "$imei" | wc -l)" = 1 ] || complain "one IMEI became several: $imei"
digits=$(echo "$imei" | sed 's/^\(.\)./\1/; s/^\(.\)\(.*\)/\1 \2/' | {
    read -r first rest
    printf %s "$first"
    echo "$rest" | sed 's/\(.\)\(.\)/\2\1/g'
})
echo "$digits" | awk '{ for (i = length($0); i > 0; i--) { d = substr($0, i, 1) * (1 + n++ % 2); s += d > 9 ? d - 9 : d }
    exit s % 10 != 0 || length($0) != 15 }' || complain "$digits is no IMEI"

# At once, and as the same values.
"$lab" --kvt "$kvt" record --redact twice -- 4 1 0 550 >/dev/null || complain "record --redact failed"
grep -q "$imei" twice || complain "another value for the same IMEI"
[ "$(ls)" = "$(printf 'phone\nredacted\nreplayed\nsaid\nstate\ntape\ntwice')" ] || complain "left behind: $(ls)"
exit $failed
