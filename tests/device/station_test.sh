#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# The station's recipe on stand-in phones: station_test.sh STATION STAND_IN BUILD
#   STATION   docs/recipes/station.sh
#   STAND_IN  folder of the stand-ins for adb and ssh
#   BUILD     folder of the build, with bin and lib
station=$1 build=$3
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
export PATH="$2:$build/bin:$PATH" ADB_PHONES="$work/phones" SSH_HOSTS="$work/hosts"
cd "$work" || exit 1

add_phone() { # add_phone FOLDER [SETTING WORD]...
    mkdir -p "$1/adb" "$1/vendor" "$1/data/local/tmp/kvt"
    ln -s "$build/lib" "$1/vendor/lib64"
    ln -s "$build/bin/kvt" "$1/data/local/tmp/kvt/kvt"
    folder=$1
    shift
    while [ $# -gt 1 ]; do
        echo "$2" >"$folder/adb/$1"
        shift 2
    done
}
wrong() {
    echo "$*"
    for file in errors reports*/*.csv reports*/*.err; do echo "== $file"; cat "$file"; done
    exit 1
}
expect() { grep -qE "$1" "$2" || wrong "no $1 in $2"; } # expect PATTERN FILE
suites() { # the report is whole: so many suites, in XML that can be read
    python3 -c 'import sys, xml.etree.ElementTree as tree
print(len(tree.parse(sys.argv[1]).getroot().findall("testsuite")))' "$1"
}

cat >plan.toml <<'PLAN'
title = "Receiver"
[[step]]
name = "an item is written"
command = "4 2 0 6000 1 2 255"
yes = true
undo = true
timeout_s = 60
[[step]]
name = "the IMEI is there"
command = "4 1 0 550"
expect.length.is = 9
[[step]]
name = "signal"
command = "9 10 0"
expect.rsrp_rx0 = { min = -105, max = -40 }
PLAN

# Two good phones, of either kind of root; three that can't pass, told apart.
add_phone phones/good
add_phone phones/su root su lines crlf status lost
add_phone phones/pulled root su pulled_at 8
add_phone phones/locked state unauthorized
add_phone phones/closed root none
timeout 120 "$station" plan.toml reports good su pulled locked closed >table
[ $? = 1 ] || wrong "status of a station with bad phones"
expect '^"good",passed,4,0,0,""$' table
expect '^"su",passed,4,0,0,""$' table
expect '^"pulled",failed,.*phone pulled' table
expect '^"locked",failed,0,1,2,"not run: phone locked has not authorised this machine' table
expect '^"closed",failed,0,1,2,"not run: no root on phone closed: adb root says ""adbd cannot' table
cmp -s table reports/station.csv || wrong "the table is not the report"
[ "$(suites reports/station.xml)" = 5 ] || wrong "suites"
[ ! -e phones/good/modem/nv/0/6000 ] || wrong "what the plan set is left"

# A kill: what had ended is not run again, and neither is what was under way.
add_phone phones/slow
rm phones/slow/data/local/tmp/kvt/kvt
cat >phones/slow/data/local/tmp/kvt/kvt <<SLOW
#!/bin/sh
case "\$*" in
"4 2 "*) echo run >>runs && exec sleep 100 ;;
*) exec "$build/bin/kvt" "\$@" ;;
esac
SLOW
chmod +x phones/slow/data/local/tmp/kvt/kvt
rm phones/*/adb/log
setsid "$station" plan.toml reports2 good slow >table &
session=$!
for _ in $(seq 200); do
    [ -e phones/slow/runs ] && [ -e reports2/good.status ] && break
    sleep 0.1
done
# shellcheck disable=SC2046 # one word a process
kill -9 $(ps -o pid= -s "$session") 2>/dev/null
wait 2>/dev/null
[ ! -e reports2/station.csv ] || wrong "the station had ended before the kill"
[ -e reports2/slow.started ] || wrong "the slow phone was not begun"
[ ! -e reports2/slow.status ] || wrong "the slow phone had ended before the kill"
before=$(cat phones/slow/runs phones/good/adb/log | wc -l)
add_phone phones/new
timeout 60 "$station" plan.toml reports2 good slow new >table
expect '^"good",passed' table
expect '^"slow",interrupted' table
expect '^"new",passed' table
[ "$(cat phones/slow/runs phones/good/adb/log | wc -l)" = "$before" ] || wrong "something was run again"
[ "$(suites reports2/station.xml)" = 3 ] || wrong "suites after a kill"
expect 'error message="interrupted' reports2/station.xml
echo "# another" >>plan.toml
"$station" plan.toml reports2 good 2>/dev/null && wrong "another plan's folder was taken"

# Phones of other machines.
for host in one two; do
    add_phone hosts/$host/phones/X
    add_phone hosts/$host/phones/locked state unauthorized
done
timeout 120 "$station" plan.toml reports3 good X@one X@two locked@two Y@nowhere >table 2>errors
for phone in good X@one X@two; do expect "^\"$phone\",passed,4,0,0,\"\"\$" table; done
expect '^"locked@two",failed,0,1,2,"not run: phone locked has not authorised' table
expect '^"Y@nowhere",not run' table
[ "$(suites reports3/station.xml)" = 5 ] || wrong "suites of several machines"
exit 0
