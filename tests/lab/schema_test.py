#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Every kind of JSON that kvt-lab prints is as its schema says: schema_test.py KVT_LAB KVT SCHEMAS"""

import json
import os
import pathlib
import subprocess
import sys
import tempfile

import jsonschema

kvt_lab, kvt, schemas = sys.argv[1:]
SCHEMAS = {name: json.loads((pathlib.Path(schemas) / name).read_text()) for name in ("check.json", "plan.json")}
# The one reference between files, resolved here: libraries differ in how they are told of other files.
SCHEMAS["plan.json"]["$defs"] |= SCHEMAS["check.json"]["$defs"]
assert SCHEMAS["plan.json"]["$defs"]["step"]["properties"]["outcome"] == {"$ref": "check.json"}
SCHEMAS["plan.json"]["$defs"]["step"]["properties"]["outcome"] = SCHEMAS["check.json"]
GARBAGE = b"""#!/bin/sh
printf 'data: FF\\377\\n'
printf '%s\\n' 'RIL[orvik_nv_read:1]: result = 0, rsp.result = -5'
printf '\\377\\200 QMI client init failed: send msg sync failed:-\\377\\n'
"""
PLAN = """
title = "all kinds of results"
[[step]]
name = "passes"
command = "4 2 0 6000 1"
yes = true
undo = true
[[step]]
name = "fails"
command = "9 10 0"
expect.rsrp_rx0.min = 0
[[step]]
name = "is skipped"
command = "5 1"
"""


def output(folder, *words, program=kvt):
    run = subprocess.run([kvt_lab, "--kvt", program, *words], env={**os.environ, "KVT_PHONE": folder + "/phone"},
                         capture_output=True, timeout=60)
    return json.loads(run.stdout.decode("utf-8"))


def valid(report, name):
    jsonschema.Draft202012Validator(SCHEMAS[name]).validate(report)
    return report


with tempfile.TemporaryDirectory() as folder:
    garbage = pathlib.Path(folder) / "garbage"
    garbage.write_bytes(GARBAGE)
    garbage.chmod(0o755)
    plan = pathlib.Path(folder) / "plan.toml"
    plan.write_text(PLAN)
    seen = [valid(output(folder, "check", "--json", *line.split()), "check.json")["verdict"]
            for line in ("4 1 0 550", "5 1", "9 10 0", "9 9 0", "7 1 1", "5 10 3 1", "4 1 0 551", "3 3 1 4 0x4")]
    assert seen == ["ok"] * 6 + ["failed", "not told"], seen
    report = valid(output(folder, "check", "--json", "4", "1", "0", "550", program=str(garbage)), "check.json")
    assert report["verdict"] == "failed", report
    assert valid(output(folder, "check", "--json", "5", "1", program="/nowhere"), "check.json")["status"] == 5
    report = valid(output(folder, "plan", "--json", str(plan)), "plan.json")
    assert [step["result"] for step in report["steps"]] == ["passed", "failed", "skipped", "passed"], report
    try:
        valid({**report, "steps": [{"name": 1}]}, "plan.json")
    except jsonschema.ValidationError:
        sys.exit(0)
    sys.exit("the schema takes anything")
