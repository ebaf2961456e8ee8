#!/bin/sh
# backup.sh FOLDER SUB NAME...: saves NV items (numbers) and EFS files (paths) of a subscription, one file
# each. Stops at the first that can't be saved whole.
folder=$1 sub=$2
shift 2
mkdir -p "$folder/nv" "$folder/efs" || exit 1
for name in "$@"; do
    case $name in
    /*) out=$(kvt 4 4 "$sub" "$name") file=$folder/efs/$(printf '%s' "$name" | tr / %) ;;
    *) out=$(kvt 4 1 "$sub" "$name") file=$folder/nv/$name ;;
    esac
    length=$(printf '%s\n' "$out" | sed -n 's/^data len(\(.*\))$/\1/p')
    whole=$(printf '%s\n' "$out" | sed -n 's/.*data_len_all = \([0-9]*\).*/\1/p' | head -1)
    if [ -z "$length" ] || [ "$length" != "$whole" ]; then
        echo "$name: not saved (${length:-0} of ${whole:-0} bytes)"
        exit 1
    fi
    # The bytes as decimal numbers, as the write commands take them.
    printf '%s\n' "$out" | sed -n 's/^data: //p' | tr ' ' '\n' | sed -n 's/^..$/0x&/p' |
        while read -r byte; do printf '%d ' "$byte"; done > "$file.new" &&
        mv "$file.new" "$file" || exit 1
    echo "$name: $length bytes"
done
