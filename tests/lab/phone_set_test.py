#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What "kvt-lab phone set" sets is what kvt then shows, for every name of its list:
phone_set_test.py KVT_LAB KVT"""
import os
import re
import subprocess
import sys
import tempfile

lab, kvt = sys.argv[1:3]
work = tempfile.TemporaryDirectory()
environment = dict(os.environ, KVT_PHONE=work.name + "/phone")
failures = []


def run(*command):
    done = subprocess.run(command, env=environment, capture_output=True, text=True, errors="replace")
    return done.returncode, done.stdout, done.stderr


def check(good, message):
    if not good:
        failures.append(message)


def refused(*words):
    status, _, told = run(lab, "phone", "set", *words)
    check(status == 2 and told, f"set {' '.join(words)}: not refused")


def field(path, name=None):
    with open(f"{work.name}/phone/{path}") as file:
        text = file.read()
    return text.strip() if name is None else dict(line.split()[:2] for line in text.splitlines())[name]


# Names whose value some command shows: (value, command, what its output then says).
SHOWN = {
    "eid": ("89049032004008882600012345678900", "5 10 3 1", r"^eID=890490320040088826000123456789\d\d$"),
    "imei": ("356938035643809", "4 1 0 550", "data:  08 3A 65 39 08 53 46 83 90"),
    "imei2": ("35693803564380", "4 1 1 550", "data:  08 3A 65 39 08 53 46 83 90"),
    "services": ("uim nas vs", "5 5", "failed"),
    "sim1": ("absent", "5 10 4 1", "^ABSENT,PRESENT"),
    "sim2": ("error", "5 10 4 1", "^PRESENT,ERROR"),
    "sim2.kind": ("psim", "5 10 3 1", "^value=FAILED"),
    "sim.type": ("7", "5 4", "38 00 00 00 .* 07 00 00 00"),
    "euicc.boot_ms": ("3600 s", None, None),
    "euicc.max_channels": ("0", "5 10 5 1", "orvik_uim_open_channel res = -?[1-9]"),
    "sar.dsi": ("17", "5 5", "^SAR DSI: 17$"),
    "efs_read_only": ("1", "4 5 0 /a 1", r"\[-30\]|rsp.result = -30|-30"),
    "stats_debug.version": ("2", "7 1 1", r"version = 2\b"),
    "stats_debug.enabled": ("0", "7 1 1", "g_modem_stats_feature_enable_status = 0"),
    "diag.silent": ("1", "5 0 0 0 50 0x7c", "stop waiting"),
    "diag.peripherals": ("0", None, None),
}
CARRIERS = {"lte.pcc": 0, "lte.scc1": 1, "lte.scc2": 2, "lte.scc3": 3, "lte.scc4": 4, "lte.scc5": 5, "lte.scc6": 6,
            "nr.rssi": 7, "nr.snr": 8, "nr.antennas": 9, "nr.pcc": 10, "nr.scc1": 11, "nr.scc2": 12, "wcdma": 20,
            "gsm": 21, "antennas": 30}



status, listed, _ = run(lab, "phone", "set", "--list")
names = [line.split()[0] for line in listed.splitlines()]
check(status == 0 and len(names) == len(set(names)) > 150, "the list of names")
columns = [re.match(r"(\S+) +(dBm|dB|ms|bytes)? +(\S.*?)  ", line) for line in listed.splitlines()]
check(all(columns), "name, unit and range of every row")
units = {row[1]: row[2] for row in columns}
ranges = {row[1]: row[3] for row in columns}

run(lab, "phone", "new", work.name + "/phone")
for name in names:
    allowed = ranges[name]
    numbers = re.search(r"(-?\d+) to (\d+)", allowed)
    if name not in ("eid", "imei", "imei2", "services", "smdp", "prop.KEY") and numbers:
        refused(name, str(int(numbers[2]) + 1))
        refused(name, "--", str(int(numbers[1]) - 1))
    if name in SHOWN:
        value, command, shown = SHOWN[name]
        before = run(lab, "phone", "save", work.name + "/before")[0]
        status, _, told = run(lab, "phone", "set", name, *value.split())
        check(before == 0 and status == 0, f"set {name} {value}: {told}")
        if command:
            _, output, complaints = run(kvt, *command.split())
            check(re.search(shown, output, re.M), f"{name}: kvt {command} does not show {value}:\n{output}")
            check("simulated phone" not in complaints, complaints)
        check(run(lab, "phone", "restore", work.name + "/before")[0] == 0, "restore")
        subprocess.run(["rm", "-r", work.name + "/before"], check=True)
        continue
    record, _, short = name.rpartition(".")
    if record in CARRIERS:
        # Levels are all shown; of the other fields some.
        value = "-47" if units[name] in ("dB", "dBm") else "1"
        status, _, told = run(lab, "phone", "set", name, value)
        check(status == 0, f"set {name}: {told}")
        _, output, complaints = run(kvt, "9", str(CARRIERS[record]), "0")
        check("simulated phone" not in complaints, complaints)
        told = re.findall(rf"\b{short}(?:_rx\d)?: (-?[\d.]+)", output)
        check(set(told) <= {"1", "-47.00"} and (told or units[name] is None), f"{name}: kvt shows\n{output}")
    elif record.startswith("debug."):
        check(run(lab, "phone", "set", name, "77")[0] == 0, f"set {name}")
        _, output, complaints = run(kvt, "7", "1", "1")
        check("simulated phone" not in complaints and re.search(rf"{short} = 77\b", output),
              f"{name}: kvt 7 1 1 does not show it:\n{output[-1500:]}{complaints}")
    elif name not in ("rsrp", "rsrq", "rssi", "snr", "smdp", "prop.KEY"):
        value = numbers[1] if numbers else allowed.split()[0]
        check(run(lab, "phone", "set", name, "--", value)[0] == 0, f"set {name} {value}")
        check(field(name.replace(".", "/")) == value, f"{name} is not {value}")

# Antenna by antenna, and what stands there already.
run(lab, "phone", "set", "lte.pcc.rssi", "-71", "-73")
run(lab, "phone", "set", "lte.pcc.rssi", "-", "-", "-75.5")
_, output, _ = run(kvt, "9", "0", "0")
check(all(text in output for text in ("rssi_rx0: -71.00", "rssi_rx1: -73.00", "rssi_rx2: -75.50")), output)
for words in (["rsrp", "1", "2", "3", "4", "5"], ["rsrp", "loud"], ["rsrp", "nan"], ["imei", "356938035643808"],
              ["eid", "12"], ["services", "vendor", "wifi"], ["nothing", "1"], ["sim1", "gone"], ["prop.../x", "1"],
              ["restart_ms", "3", "h"]):
    refused(*words)
check(run(lab, "phone", "check")[1] == "", "check finds " + run(lab, "phone", "check")[1])

print("\n".join(failures))
sys.exit(1 if failures else 0)
