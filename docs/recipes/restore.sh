#!/bin/sh
# restore.sh FOLDER SUB: writes back what backup.sh saved, and reads each again to be sure.
folder=$1 sub=$2
status=0
for file in "$folder"/nv/* "$folder"/efs/*; do
    [ -f "$file" ] || continue
    name=${file##*/}
    case $file in
    "$folder"/nv/*) write=2 read=1 ;;
    *) write=5 read=4 name=$(printf '%s' "$name" | tr % /) ;;
    esac
    kvt 4 $write "$sub" "$name" $(cat "$file") > /dev/null
    now=$(kvt 4 $read "$sub" "$name" | sed -n 's/^data: //p')
    want=$(printf ' %02X' $(cat "$file"))
    if [ "$now" = "$want" ]; then
        echo "$name: restored"
    else
        echo "$name: NOT restored"
        status=1
    fi
done
exit $status
