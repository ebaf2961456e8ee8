"""The catalogue against kvt and against what its transcripts show: catalogue_walk.py SOURCE KVT

Each command of kvt's help has a row and each row that is in the help is there; each pattern is found in
what a transcript or a document shows kvt printing, so that none waits for a line that never comes."""
import glob
import os
import re
import subprocess
import sys
import tomllib

source, kvt = sys.argv[1:]
with open(f"{source}/lab/catalogue.toml", "rb") as file:
    catalogue = tomllib.load(file)
troubles = []


def compare_with_help():
    text = subprocess.run([kvt], capture_output=True, text=True, check=True).stdout
    listed = {(int(group), sub) for group, sub in re.findall(r"^   kvt (\d+) (\d+|)", text, re.M)}
    listed = {row for row in listed if row[0] > 2}
    rows = set()
    for row in catalogue["command"]:
        if row.get("in_help", True):
            words = row["words"].split()
            rows.add((int(words[0]), words[1] if len(words) > 1 else ""))
    for group, sub in sorted(listed ^ rows):
        troubles.append(f"kvt {group} {sub} is only in " + ("the help" if (group, sub) in listed else "the catalogue"))


def patterns():
    """(where, pattern) of each regular expression."""
    def of_rules(where, rules):
        for rule in rules.get("failed", []):
            yield where, rule if isinstance(rule, str) else rule["find"]
        for pattern in rules.get("ok", []):
            yield where, pattern

    for name, rules in catalogue["rules"].items():
        yield from of_rules(f"rules.{name}", rules)
    for name, values in catalogue["values"].items():
        yield from ((f"values.{name}", value["find"]) for value in values)
    for row in catalogue["command"]:
        yield from of_rules(row["words"], row["verdict"])
        yield from ((row["words"], value["find"]) for value in row.get("value", []))
        for way in row.get("verify", []) + row.get("undo", []):
            for pattern in way.get("ok", []):
                yield row["words"], pattern
            yield from ((row["words"], way[key]) for key in ("seen", "unless") if key in way)


def filled(pattern):
    """With something that an argument may be in place of each hole."""
    pattern = re.sub(r"\{[a-z_][a-z_0-9]*:first\}", "0x[0-9A-F]{2}", pattern)
    return re.sub(r"\{[a-z_][a-z_0-9]*(:[a-z0-9]+)?\}", "(?: [0-9A-F]{2})+", pattern)


def compare_with_transcripts():
    files = [name for pattern in ("tests/transcripts/*.txt", "tests/lab/transcripts/*.txt", "docs/*.md")
             for name in glob.glob(os.path.join(source, pattern))]
    shown = ""
    for name in files:
        with open(name, encoding="latin-1") as file:
            shown += file.read().replace(":#]", ":1]") + "\n"
    for where, pattern in patterns():
        if not re.search(filled(pattern), shown, re.M):
            troubles.append(f"{where}: no transcript shows {pattern}")


compare_with_help()
compare_with_transcripts()
print("\n".join(troubles))
sys.exit(bool(troubles))
