#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# restore.sh FOLDER SUB: writes back what backup.sh has saved of that subscription, and reads each again.
# What the phone holds already is not written. Needs kvt-lab and jq. Status as of backup.sh.
if [ $# -ne 2 ]; then
    echo "usage: restore.sh FOLDER SUB" >&2
    exit 2
fi
folder=$1 sub=$2
if [ ! -f "$folder/subscription" ]; then
    echo "restore.sh: $folder is no backup" >&2
    exit 1
fi
if [ "$(cat "$folder/subscription")" != "$sub" ]; then
    echo "restore.sh: $folder holds subscription $(cat "$folder/subscription"), not $sub" >&2
    exit 1
fi
status=0
list=$(cd "$folder" && find nv efs -type f ! -name '*.new' 2>/dev/null | sort)
while read -r file; do
    case $file in
    nv/*) read=1 write=2 name=${file#nv/} ;;
    efs/*) read=4 write=5 name=${file#efs} ;;
    *) continue ;;
    esac
    saved=$(cat "$folder/$file")
    if [ "$(kvt-lab check --json 4 "$read" "$sub" "$name" | jq -r .values.data.value)" = "$saved" ]; then
        echo "$name: as it was"
        continue
    fi
    bytes=$(for byte in $saved; do printf '%d ' "0x$byte"; done)
    # shellcheck disable=SC2086 # one argument a byte
    if told=$(kvt-lab check --json --verify --yes 4 "$write" "$sub" "$name" $bytes); then
        echo "$name: restored"
    else
        echo "$name: NOT restored: $(printf '%s' "$told" | jq -r .why)"
        status=1
    fi
done <<END
$list
END
exit $status
