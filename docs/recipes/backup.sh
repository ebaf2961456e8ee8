#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# backup.sh FOLDER SUB NAME...: saves NV items (numbers) and EFS files (paths) of a subscription (0 or 1), one
# file each, and the subscription with them. Stops at the first that can't be saved whole.
# Needs kvt-lab and jq. Status 0 when all are saved, 1 when not, 2 for a wrong command line.
if [ $# -lt 3 ]; then
    echo "usage: backup.sh FOLDER SUB NAME..." >&2
    exit 2
fi
folder=$1 sub=$2
shift 2
case $sub in
0 | 1) ;;
*)
    echo "backup.sh: the subscription must be 0 or 1: $sub" >&2
    exit 2
    ;;
esac
if [ -e "$folder/subscription" ] && [ "$(cat "$folder/subscription")" != "$sub" ]; then
    echo "backup.sh: $folder holds subscription $(cat "$folder/subscription")" >&2
    exit 1
fi
mkdir -p "$folder" && echo "$sub" >"$folder/subscription" || exit 1
for name in "$@"; do
    case $name in
    */../* | */..)
        echo "$name: not saved: \"..\" in a path"
        exit 1
        ;;
    /*) read=4 file=$folder/efs$name ;;
    *) read=1 file=$folder/nv/$name ;;
    esac
    if ! told=$(kvt-lab check --json 4 "$read" "$sub" "$name"); then
        echo "$name: not saved: $(printf '%s' "$told" | jq -r .why)"
        exit 1
    fi
    length=$(printf '%s' "$told" | jq .values.length.value)
    whole=$(printf '%s' "$told" | jq .values.whole.value)
    if [ "$length" != "$whole" ]; then
        echo "$name: not saved: only $length of $whole bytes can be read"
        exit 1
    fi
    mkdir -p "$(dirname "$file")" &&
        printf '%s' "$told" | jq -r .values.data.value >"$file.new" &&
        mv "$file.new" "$file" || exit 1
    echo "$name: $length bytes"
done
