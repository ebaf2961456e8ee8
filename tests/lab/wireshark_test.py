# SPDX-License-Identifier: Apache-2.0
"""What Wireshark shows of a capture is what `kvt-lab show` says of the tape or log it was made of:
the same entries, names, values and failures.

  wireshark_test.py KVT_LAB KVT DISSECTOR TAPES

TAPES is a folder of NAME.tape, which are compared as one."""
import glob
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

lab, kvt, dissector, tapes = sys.argv[1:]
# For a log: services of each kind, both layouts of what the vendor service carries, and failures.
LOGGED = ["4 1 0 550", "4 5 0 /nv/item_files/demo 1 2 3", "5 1", "5 10 4 1", "7 1 0", "9 10 0", "5 10 3 1", "3 0 2 1"]
SHOWN = re.compile(rb"^(?:\s*\d+\.\d{6} t(?P<thread>\d+)|\d\d:\d\d:\d\d\.\d{3} (?P<process>\d+)) (?P<way>[<> ]) (?P<words>.*)$")
DIRECTIONS = {"0": " ", "1": ">", "2": "<"}
# Values that words leave out where all is well, or that are parts of what stands beside them.
UNSPOKEN = {"kvt.response.result", "kvt.response.error", "kvt.apdu.status_word", "kvt.apdu.instruction",
            "kvt.tlv", "kvt.nvefs.operation", "kvt.nvefs.whole"}
services = {}  # number, name


def text(raw):
    """Bytes that are no UTF-8 are another matter than what is compared here."""
    return re.sub(r"[^ -~]", "?", raw.decode("utf-8", "replace"))


def shown(file):
    """(direction, failed, words) of each entry; a run's head is two lines."""
    entries = []
    for line in subprocess.run([lab, "show", file], stdout=subprocess.PIPE, check=False).stdout.split(b"\n"):
        parts = SHOWN.match(line)
        if parts:
            words = text(parts["words"])
            failed = words.startswith("FAILED: ")
            entries.append((parts["way"].decode(), failed, words[8:] if failed else words))
        elif line.startswith(b"    "):
            entries[-1] = (" ", False, entries[-1][2] + ", " + text(line.strip()))
        elif line:
            entries.append((" ", line.startswith(b"BROKEN: "), text(line)))
    return entries


def leaves(tree):
    """(name, value) of each field without fields of its own."""
    if isinstance(tree, list):
        for part in tree:
            yield from leaves(part)
    elif isinstance(tree, dict):
        for name, value in tree.items():
            for one in value if isinstance(value, list) else [value]:
                if isinstance(one, (dict, list)):
                    yield from leaves(one)
                elif name + "_tree" not in tree:
                    yield name, one


def is_told(name, value, words):
    if name in UNSPOKEN:
        return True
    if name == "kvt.nvefs.path":
        return text(value.encode()) in words
    if ":" in value or name.endswith((".data", ".payload", ".bytes", ".packet", ".stream")):
        return value.replace(":", "")[:64] in words
    if re.fullmatch(r"-?\d+", value) and re.search(rf"(?<![\d.]){re.escape(value)}(?![\d.]\d)", words):
        return True
    if value.startswith("0x"):
        return f"{int(value, 16)}" in words
    try:
        return f"{float(value):.2f}" in words
    except ValueError:
        return value[:64] in words


def check_message(packet, frames, way, words):
    """Number of its values, and whether it is linked with its request."""
    service = re.sub("^(decoded|indication) ", "", words).split(" ")[0]
    assert services.setdefault(packet["kvt.service"], service) == service, "another service"
    if "kvt.message.name" in packet:
        assert f"{service} {packet['kvt.message.name']}" in words, "another message"
    values = list(leaves(packet.get("kvt.tlv_tree", [])))
    for name, value in values:
        assert is_told(name, value, words), f"{name}={value} is not told"
    if "kvt.request_in" not in packet:
        assert way != "<" or words.startswith("indication "), "no link to its request"
        return len(values), False
    asked = frames[int(packet["kvt.request_in"]) - 1]
    for name in ("kvt.run", "kvt.service", "kvt.message"):
        assert asked[name] == packet[name], "linked with another's request"
    assert asked["kvt.direction"] == "1", "linked with an answer"
    return len(values), True


def check(file, work):
    capture = os.path.join(work, "capture")
    subprocess.run([lab, "pcap", file, capture], check=False)
    packets = json.loads(subprocess.run(
        ["tshark", "-r", capture, "-T", "json", "-J", "kvt", "--no-duplicate-keys"], env={**os.environ, "HOME": work},
        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=True).stdout)
    frames = [packet["_source"]["layers"]["kvt"] for packet in packets]
    entries = shown(file)
    assert len(frames) == len(entries) > 0, f"{file}: {len(frames)} packets, {len(entries)} lines"
    values = linked = 0
    for number, (packet, (way, failed, words)) in enumerate(zip(frames, entries), 1):
        try:
            assert text(packet["kvt.summary"].encode()) == ("FAILED: " if failed else "") + words, "other words"
            assert DIRECTIONS[packet["kvt.direction"]] == way, "another direction"
            assert any("kvt.expert.failed" in name for name, _ in leaves(packet)) == failed, "another outcome"
            if packet["kvt.kind"] == "2":
                more, link = check_message(packet, frames, way, words)
                values += more
                linked += link
        except AssertionError as error:
            sys.exit(f"{file}: packet {number}: {error}\n{words}\n{json.dumps(packet, indent=1)}")
    assert values > 0 and linked > 0
    print(f"{os.path.basename(file)}: {len(entries)} entries, {values} values, {linked} answers linked")


with tempfile.TemporaryDirectory() as work:
    tape, phone = os.path.join(work, "all.tape"), os.path.join(work, "phone")
    plugins = os.path.join(work, ".local/lib/wireshark/plugins")  # where it looks itself
    os.makedirs(plugins)
    shutil.copy(dissector, plugins)
    with open(tape, "wb") as all_tapes:
        for name in sorted(glob.glob(os.path.join(tapes, "*.tape"))):
            with open(name, "rb") as one:
                all_tapes.write(one.read())
    check(tape, work)
    for command in LOGGED:
        if command == LOGGED[-2]:
            with open(os.path.join(phone, "faults"), "w", encoding="utf-8") as faults:
                faults.write("qmi_client_send_msg_sync:uim* * short\nqmi_client_send_msg_sync:vendor* * late 10\n")
        subprocess.run([kvt] + command.split(), env={**os.environ, "KVT_PHONE": phone}, stdout=subprocess.DEVNULL, check=True)
    check(os.path.join(phone, "log"), work)
