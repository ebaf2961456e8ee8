#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
# A plan of ten steps on eight phones at once: each report tells the fault that its phone was given, and
# all that was set is put back: eight_phones.sh KVT_LAB KVT
set -e
lab=$1
export KVT_PROGRAM="$2"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

cat > plan.toml <<'PLAN'
[[step]]
name = "the antenna is fixed"
command = "3 3 1 4 0x4"
undo = true
keep_going = true
[[step]]
name = "an item is written"
command = "4 2 0 6000 1 2 255"
yes = true
undo = true
keep_going = true
[[step]]
name = "the IMEI is there"
command = "4 1 0 550"
expect.length.is = 9
keep_going = true
[[step]]
name = "both cards are in"
command = "5 1"
expect = { slot1.is = 1, slot2.is = 1 }
keep_going = true
[[step]]
name = "several cards"
command = "5 4"
keep_going = true
[[step]]
name = "signal of 5G"
command = "9 10 0"
expect.rsrp_rx0 = { min = -105, max = -40 }
keep_going = true
[[step]]
name = "SAR"
command = "5 5"
tries = 2
keep_going = true
[[step]]
name = "EID"
command = "5 10 3 1"
keep_going = true
[[step]]
name = "DIAG answers"
command = "5 0 0 0 300 0x7c"
yes = true
keep_going = true
[[step]]
name = "statistics"
command = "7 1 0"
keep_going = true
PLAN

# The step that fails on phone N, which lacks what it needs; 0: none.
step_of() { echo "1 3 4 6 7 8 9 0" | cut -d' ' -f"$1"; }
break_phone() { # break_phone N, in its folder
    case $1 in
    1) echo 'qmi_client_send_msg_sync:vendor.0x02 1 error -1' > faults ;; # also the look before: not run
    2) mkdir -p nv/0 && printf short > nv/0/550 ;;
    3) mkdir -p sim && echo absent > sim/1 ;;
    4) echo 'qmi_client_send_msg_sync:vs.0x207 * error -1' > faults ;;
    5) echo 'vendor uim nas vs' > services ;;
    6) mkdir -p euicc && echo 100000 > euicc/boot_ms && mkdir -p sim && echo psim > sim/2.kind ;;
    7) mkdir -p diag && echo 1 > diag/silent ;;
    esac
}

# Only phone 1's fault hits other vendor commands too: every first exchange of a process.
failed_steps() { sed -n 's/^not ok \([0-9]*\) - .*/\1/p' "$1" | grep -v '^1[1-9]' | tr '\n' ' ' | sed 's/ $//'; }
wanted() { if [ "$1" = 1 ]; then echo "1 2 3 4 5 10"; else step_of "$1" | sed 's/^0$//'; fi; }

check() { # check HOW: reports and phones are as they must be
    for n in 1 2 3 4 5 6 7 8; do
        if [ "$(failed_steps "report.$n")" != "$(wanted $n)" ]; then
            echo "$1, phone $n: failed $(failed_steps "report.$n"), not $(wanted $n)"
            cat "report.$n"
            exit 1
        fi
        for left in efs/0/nv/item_files/modem/antenna/ant_tx_config nv/0/6000; do
            [ ! -e "phone.$n/$left" ] || { echo "$1, phone $n: $left is left" && exit 1; }
        done
    done
}

fresh() {
    rm -rf phone.* report.*
    for n in 1 2 3 4 5 6 7 8; do
        mkdir "phone.$n"
        (cd "phone.$n" && break_phone $n)
    done
}

fresh
parallel -j 8 --will-cite "KVT_PHONE=\$PWD/phone.{} '$lab' plan plan.toml > report.{}" ::: 1 2 3 4 5 6 7 8 || true
check parallel

# The same by prove, a name for each phone.
fresh
cat > one <<SCRIPT
#!/bin/sh
export KVT_PHONE="\$PWD/phone.\$1"
"$lab" plan plan.toml > "report.\$1"
status=\$?
cat "report.\$1"
exit \$status
SCRIPT
chmod +x one
for n in 1 2 3 4 5 6 7 8; do : > $n; done
prove -j 8 -e ./one 1 2 3 4 5 6 7 8 > summary 2>&1 || true
check prove
grep -q '^Result: FAIL' summary
if grep -q "^8 .*Failed\|Parse errors" summary; then
    cat summary
    exit 1
fi
