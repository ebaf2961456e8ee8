#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every scenario gives exactly the verdicts that it names: scenarios_test.py KVT_LAB KVT FOLDER [--write]

With --write the scenarios are given the verdicts that there are now: read the difference before you believe it."""
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import tomllib

lab, kvt, folder = sys.argv[1:4]
write = "--write" in sys.argv


def run(scenario, work):
    """The verdicts on a phone of the scenario's, by step."""
    told = tomllib.loads(scenario.read_text())
    phone = f"{work}/{scenario.stem}"
    environment = dict(os.environ, KVT_PHONE=phone, KVT_PROGRAM=kvt)
    for command in [["new", phone, "--from", str(scenario)], ["check"]]:
        made = subprocess.run([lab, "phone", *command], env=environment, capture_output=True, text=True)
        if made.returncode != 0 or made.stdout + made.stderr:
            return told, {"phone " + command[0]: made.stdout + made.stderr}
    plan = f"{folder}/plans/{told['plan']}.toml"
    report = subprocess.run([lab, "plan", "--json", plan], env=environment, capture_output=True, text=True)
    verdicts = {}
    for step in json.loads(report.stdout)["steps"]:
        outcome = step.get("outcome", {}).get("verdict", "not run")
        verdicts[step["name"]] = f"{step['result']}, {outcome}"
    return told, verdicts


wrong = 0
scenarios = sorted(pathlib.Path(folder).glob("*.toml"))
assert len(scenarios) >= 9, "scenarios are missing"
with tempfile.TemporaryDirectory() as work, concurrent.futures.ThreadPoolExecutor(4) as pool:
    for scenario, (told, verdicts) in zip(scenarios, pool.map(lambda s: run(s, work), scenarios)):
        if write:
            head = scenario.read_text().split("[verdicts]")[0].rstrip("\n")
            rows = "".join(f'"{name}" = "{verdict}"\n' for name, verdict in verdicts.items())
            scenario.write_text(f"{head}\n\n[verdicts]\n{rows}")
        elif verdicts != told.get("verdicts"):
            wrong += 1
            for name in verdicts.keys() | told.get("verdicts", {}).keys():
                if (now := verdicts.get(name)) != (then := told.get("verdicts", {}).get(name)):
                    print(f"{scenario.stem}: {name}: {now}, not {then}")
sys.exit(1 if wrong else 0)
