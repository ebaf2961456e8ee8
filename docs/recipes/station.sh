#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# A plan on many phones at once, with GNU parallel: station.sh PLAN FOLDER PHONE...
#
# PHONE is a serial number, or SERIAL@HOST for a phone of another machine that ssh reaches (it needs
# kvt-lab and adb; a user name or port belongs into ssh's own settings). FOLDER gets, for each phone, PHONE.tap, PHONE.xml (JUnit) and PHONE.err, and for the
# station station.xml and station.csv.
#
# Run again with the same arguments after a kill, it takes up where it stopped. A phone that was under way
# is not run again by itself, since a step may have written already: it is reported as interrupted. Look at
# it, delete its files (rm FOLDER/PHONE.*) and its lines in FOLDER/joblog, and run the station again.
# Status: 0 when every phone passed.

# The plan on one phone, once. Its status is kept when it has ended.
one() { # one PLAN FOLDER PHONE
    plan=$1 report=$2/$3
    (set -C && : >"$report.started") 2>/dev/null || return 0
    kvt-lab --on "${3%@*}" plan "$plan" --junit "$report.xml" >"$report.tap" 2>"$report.err" </dev/null
    echo $? >"$report.status.new" && mv "$report.status.new" "$report.status"
}

# The same on another machine, whose reports come back as a tar file.
one_there() { # one_there ID PHONE
    folder=kvt-station/$1
    mkdir -p "$folder" && printf '%s\n' "$STATION_PLAN" >"$folder/plan.toml" &&
        one "$folder/plan.toml" "$folder" "$2"
    (cd "$folder" && tar -c "$2".*)
}

case $1 in
--one | --one-there)
    how=$1
    shift
    if [ "$how" = --one ]; then one "$@"; else one_there "$@"; fi
    exit 0
    ;;
esac
[ $# -ge 3 ] || {
    sed -n '3,/^$/s/^# \{0,1\}//p' "$0" >&2
    exit 2
}
plan=$1 folder=$2
shift 2
mkdir -p "$folder" || exit 1
if [ -e "$folder/plan.toml" ]; then
    cmp -s "$plan" "$folder/plan.toml" || {
        echo "$folder is of another plan" >&2
        exit 2
    }
else
    { [ -e "$folder/id" ] || echo "$(date +%Y%m%d-%H%M%S)-$$" >"$folder/id"; } &&
        cp "$plan" "$folder/plan.toml.new" && mv "$folder/plan.toml.new" "$folder/plan.toml" || exit 1
fi

# Which phones are of this machine, and which of others.
hosts='' here='' there=''
for phone; do
    case $phone in
    *@*) there="$there $phone" hosts="$hosts,@${phone#*@}/${phone#*@}" ;;
    *) here="$here $phone" ;;
    esac
done
STATION_PLAN=$(cat "$plan") STATION_SCRIPT=$(cat "$0")
SHELL=${SHELL:-/bin/sh} # parallel quotes what it hands on for this shell, and loses it without one
export STATION_PLAN STATION_SCRIPT SHELL
# shellcheck disable=SC2086,SC2016 # one word a phone; some names are for the other machine
{
    [ -z "$here" ] ||
        parallel --will-cite -j0 --joblog "$folder/joblog" --resume \
            sh "$0" --one "$folder/plan.toml" "$folder" ::: $here &
    [ -z "$there" ] ||
        parallel --will-cite -j0 --joblog "$folder/joblog.hosts" --resume --results "$folder/hosts/{#}.tar" \
            --hostgroups --sshlogin "${hosts#,}" --env STATION_PLAN --env STATION_SCRIPT \
            'sh -c "$STATION_SCRIPT" station.sh --one-there '"$(cat "$folder/id")"' {}@$PARALLEL_SSHLOGIN' \
            ::: $there >/dev/null
    wait
}
for reports in "$folder"/hosts/*.tar; do
    [ -s "$reports" ] && tar -x -C "$folder" -f "$reports"
done

# The station's reports. A phone without a status, or whose report says nothing, was not run or not to its
# end.
xml() { sed 's/&/\&amp;/g; s/</\&lt;/g; s/>/\&gt;/g; s/"/\&quot;/g'; }
csv() { printf '"%s"' "$(printf %s "$1" | sed 's/"/""/g')"; }
status=0
{
    echo '<?xml version="1.0" encoding="UTF-8"?>'
    echo '<testsuites>'
    for phone; do
        report=$folder/$phone
        if [ -s "$report.status" ] && grep -q '<testcase ' "$report.xml" 2>/dev/null; then
            sed -n '/<testsuite[ >]/,/<\/testsuite>/p' "$report.xml"
        else
            if [ ! -e "$report.started" ]; then why="not run"
            elif [ ! -e "$report.status" ]; then why="interrupted; not run again by itself"
            else why=$(tail -n 1 "$report.err" 2>/dev/null); fi
            why=$(printf '%s' "${why:-no report}" | xml)
            printf '<testsuite name="%s" tests="1" errors="1"><testcase classname="%s" name="plan">' \
                "$phone" "$phone"
            printf '<error message="%s"/></testcase></testsuite>\n' "$why"
        fi
    done
    echo '</testsuites>'
} >"$folder/station.xml.new" && mv "$folder/station.xml.new" "$folder/station.xml" || exit 1
{
    echo 'phone,result,passed,failed,skipped,first failure'
    for phone; do
        report=$folder/$phone result=failed
        if [ ! -e "$report.started" ]; then result="not run"
        elif [ ! -e "$report.status" ]; then result=interrupted
        elif [ "$(cat "$report.status")" = 0 ]; then result=passed; fi
        [ "$result" = passed ] || status=1
        tap=$(cat "$report.tap" 2>/dev/null)
        count() { printf '%s\n' "$tap" | grep -c "$@"; }
        failure=$(printf '%s\n' "$tap" | grep -A2 '^not ok' | sed -n 's/\\"/"/g; s/^  message: "\(.*\)"$/\1/p' |
            head -n 1)
        printf '%s,%s,%s,%s,%s,%s\n' "$(csv "$phone")" "$result" \
            "$(($(count '^ok') - $(count '^ok .*# SKIP')))" "$(count '^not ok')" "$(count '# SKIP')" \
            "$(csv "${failure:-$(tail -n 1 "$report.err" 2>/dev/null)}")"
    done
} >"$folder/station.csv.new"
for phone; do
    [ "$(cat "$folder/$phone.status" 2>/dev/null)" = 0 ] || status=1
done
mv "$folder/station.csv.new" "$folder/station.csv" && cat "$folder/station.csv"
exit $status
