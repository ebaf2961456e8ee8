#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Verdicts that never lie, shown by making everything go wrong.

    verdict_sweep.py KVT_LAB KVT CATALOGUE PRELOAD [--short] [--jobs N]

Unspoilt: every row's example is ok, or becomes so with --verify; rows where nothing tells stay not told.
Refused: on a modem that refuses everything, in each of the ways it can, no row is ok.
Spoilt: each platform call of each example fails in every way there is. A verdict is ok only when what the
phone holds afterwards, and every value told, are what they are without the fault: then the command did not
depend on it. What is not told is tried again with --verify.

Prints what is wrong and a line of counts; status 1 when anything is."""

import argparse
import concurrent.futures
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import tomllib

# Phones come and go by the hundred: a file system on a disk avoids places that were freed a moment ago.
MEMORY = "/dev/shm" if os.path.isdir("/dev/shm") else None

FAILURES = ["error -16", "garbage", "timeout", "restart", "error -1", "gone", "empty", "short", "long", "late 30"]

# Further forms of commands, whose calls differ from those of the row's example.
MORE = ["4 2 0 550 1 2", "4 3 0 550", "5 0 1 0 500 0x7c", "5 0 0 1 0 0x7c", "5 0 1 1 0 0x7c", "5 10 1 0",
        "5 10 3 0", "11 5 0"]

# Where neither the output nor a command that reads tells what came of it.
NOTHING_TELLS = ["10", "11 1", "11 2", "11 3", "6", "8"]

# What is not what a command is for: restarts that were the fault, defaults that are made when they are first
# asked for, and the switch that group 9 sets before it asks for statistics.
ASIDE = re.compile(r"log|faults|\.lock|restart$|at/|diag/|features/")

# What a DIAG packet is answered with is shown as it comes, right or wrong: only its first byte is known.
AS_IT_COMES = re.compile(r"diag_\w*send\w*:\S* (short|long|garbage)$")

FILES = {
    "nv/0/550": "nv item", "nv/0/6000": "nv item", "nv/1/551": "",
    "efs/0/nv/item_files/modem/demo": "contents",
    "efs/0/nv/item_files/modem/orvik/qmi_print_flag": "1",
    "efs/0/nv/item_files/modem/orvik/rf_ant_port_config": "gpio",
    "efs/0/nv/item_files/modem/antenna/ant_tx_config": "antenna: 16 byte",
    "efs/1/none": "", "prop/persist.radio.ssr_wait_s": "0", "restart_ms": "60",
}

# A refusal in the vendor service's record, where both kinds of record have their result; in the service's
# framework; and in the other services' standard response.
RECORD = "00000000fbffffff0000000000000000fbffffff"
OTHERS = "qmi_client_send_msg_sync * reply 02040001000500\n"
REFUSALS = {
    "record": "qmi_client_send_msg_sync:vendor.0x02 * reply 01040000000000 020400%s000000 10%s00%s00%s\n%s" % (
        "14", "16", "14", RECORD, OTHERS),
    "framework": "qmi_client_send_msg_sync:vendor.0x02 * reply 010400fbffffff 02040000000000\n" + OTHERS,
    "transport": "qmi_client_send_msg_sync * error -5\ndiag_send* * error -5\n",
}
REFUSED_PACKET = "\x13"


class Sweep:
    def __init__(self, options):
        self.options = options
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kvt-verdicts-"))
        self.troubles, self.runs, self.faults = [], 0, 0
        with open(options.catalogue, "rb") as file:
            self.rows = tomllib.load(file)["command"]
        self.program("kvt", "LD_PRELOAD='%s' KVT_FASTER=20" % options.preload)

    def program(self, name, settings):
        path = self.folder / name
        path.write_text("#!/bin/sh\n%s exec '%s' \"$@\"\n" % (settings, self.options.kvt))
        path.chmod(0o755)

    def wrong(self, what):
        self.troubles.append(what)

    def make_phone(self, phone, files):
        shutil.rmtree(phone, ignore_errors=True)
        for name, text in {**FILES, **files}.items():
            (phone / name).parent.mkdir(parents=True, exist_ok=True)
            (phone / name).write_text(text)

    def check(self, line, files, *flags):
        """Runs kvt-lab check on a phone of its own: its report, the phone's state and the fault lines."""
        phone = pathlib.Path(tempfile.mkdtemp(prefix="kvt-verdicts-", dir=MEMORY))
        self.make_phone(phone, files)
        kvt = self.folder / "kvt"
        run = subprocess.run([self.options.kvt_lab, "--kvt", kvt, "check", "--json", "--yes", *flags, *line.split()],
                             env={**os.environ, "KVT_PHONE": str(phone)}, capture_output=True, timeout=120)
        self.runs += 1
        try:
            report = json.loads(run.stdout)
        except ValueError:
            report = {"verdict": "none", "values": {}, "why": run.stderr.decode(errors="replace")}
        if report.get("status") != run.returncode:
            self.wrong("kvt %s: status %d, report %s" % (line, run.returncode, report))
        log = (phone / "log").read_text(errors="replace") if (phone / "log").exists() else ""
        state = {}
        for path in phone.rglob("*"):
            name = str(path.relative_to(phone))
            if path.is_file() and not ASIDE.match(name):
                state[name] = re.sub(rb"\d{10,}", b"TIME", path.read_bytes())
        shutil.rmtree(phone)
        return report, state, re.findall(r"^\S+ \S+ \d+ (call|fault) (.*)$", log, re.M)

    def unspoilt(self, row):
        line = row["example"]
        slow = {"restart_ms": "2000"}  # long enough to be seen
        report, _, _ = self.check(line, slow)
        if report["verdict"] == "not told" and row.get("verify"):
            report, _, _ = self.check(line, slow, "--verify")
        wanted = "not told" if row["words"] in NOTHING_TELLS else "ok"
        if report["verdict"] != wanted:
            self.wrong("kvt %s is %s (%s), not %s" % (line, report["verdict"], report["why"], wanted))

    def refused(self, row, how):
        files = {"faults": REFUSALS[how], "diag/" + "7c": REFUSED_PACKET}
        # The parser's own sample: the modem is not asked.
        if row["words"] == "7 0":
            return
        for flags in ([], ["--verify"] if row.get("verify") else []):
            report, _, _ = self.check(row["example"], files, *flags)
            if report["verdict"] not in ("failed", "not told", "timed out"):
                self.wrong("kvt %s is %s on a modem that refuses (%s)" % (row["example"], report["verdict"], how))

    def calls(self, line):
        report, state, log = self.check(line, {})
        return report, state, [text for kind, text in log if kind == "call"]

    def spoilt(self, line, good, number, call, failure, *flags):
        report, state, log = self.check(line, {"faults": "* %d %s\n" % (number, failure)}, *flags)
        self.faults += any(kind == "fault" for kind, _ in log)
        if report["verdict"] == "none":
            self.wrong("kvt %s, call %d %s %s: no verdict: %s" % (line, number, call, failure, report["why"]))
        if report["verdict"] == "not told" and not flags and "--verify" in report["why"]:
            self.spoilt(line, good, number, call, failure, "--verify")
        if report["verdict"] != "ok":
            return
        differ = [name for name in {**state, **good[1]} if state.get(name) != good[1].get(name) and
                  (name in good[1] or name.startswith(("efs/", "nv/")))]
        if failure == "restart" and "sim/2.power" in differ:
            differ.remove("sim/2.power")  # it powers the slot up by itself
        if not AS_IT_COMES.match(call + " " + failure):
            differ += [name for name, value in good[0]["values"].items() if report["values"].get(name) != value]
        if differ:
            self.wrong("kvt %s, call %d %s %s: ok%s, but %s" % (
                line, number, call, failure, " with".join(("", *flags)), ", ".join(differ)))

    def run(self):
        with concurrent.futures.ThreadPoolExecutor(self.options.jobs) as pool:
            lines = [row["example"] for row in self.rows] + MORE
            jobs = [pool.submit(self.unspoilt, row) for row in self.rows]
            jobs += [pool.submit(self.refused, row, how) for row in self.rows for how in REFUSALS]
            for place, (line, good) in enumerate(zip(lines, pool.map(self.calls, lines))):
                for i, call in enumerate(good[2]):
                    kinds = [FAILURES[(place + i) % len(FAILURES)]] if self.options.short else FAILURES
                    jobs += [pool.submit(self.spoilt, line, good, i + 1, call, kind) for kind in kinds]
            for job in jobs:
                job.result()
        shutil.rmtree(self.folder)
        print("%d commands, %d runs, %d of them with a fault, %d wrong" % (
            len(lines), self.runs, self.faults, len(self.troubles)))
        print(*self.troubles, sep="\n", end="\n" if self.troubles else "")
        return 1 if self.troubles or self.faults == 0 else 0


def main():
    parser = argparse.ArgumentParser()
    for name in ("kvt_lab", "kvt", "catalogue", "preload"):
        parser.add_argument(name)
    parser.add_argument("--short", action="store_true")
    parser.add_argument("--jobs", type=int, default=4 * (os.cpu_count() or 1))
    return Sweep(parser.parse_args()).run()


sys.exit(main())
