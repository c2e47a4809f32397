#!/usr/bin/env python3
"""What `lumetra-check --json` writes is JSON, whatever the chart holds, and says what docs/check.md tells.

Usage: check_json.py TOOL SOURCE_FOLDER
"""
import json
import os
import random
import re
import subprocess
import sys
import tempfile

TOOL, SOURCE = sys.argv[1:3]
failures = []


def expect(condition, what):
    if not condition:
        failures.append(what)


def check(*arguments, codes=(0, 1)):
    run = subprocess.run([TOOL, "--json", *arguments], capture_output=True, timeout=60)
    expect(run.returncode in codes, f"exit code {run.returncode} for {arguments}")
    report = json.loads(run.stdout.decode("utf-8"), parse_constant=lambda name: failures.append("not JSON: " + name))
    expect(report["format"] == "lumetra-check" and report["version"] == 1, "format and version")
    return report["charts"]


def test_values(folder):
    path = os.path.join(folder, "c.bms")
    lines = [b"#TITLE \x83\x7C\x83\x4E\"\\\x01\x7f", b"#ARTIST \xe3\x83\x9d", b"#BPM 120", b"#WAV01 no\xff.wav", b"#BMP02 x.bmp",
             b"#BGA03 02 0 0 8 8 0 00", b"#BPM01 120", b"#00003:00F0", b"#00102:0.5", b"#00111:0001", b"#00104:03",
             b"#00008:01"]
    with open(path, "wb") as chart:
        chart.write(b"\r\n".join(lines))
    chart, = check(path)
    header = chart["header"]
    expect(header["title"] == "ポク\"\\  ", "title " + repr(header["title"]))
    expect(header["titleBytes"] == "837c834e225c017f", "bytes of the title")
    expect(header["artist"] == "ポ" and "artistBytes" not in header, "artist")
    expect(chart["readable"] and not chart["refused"], "state")
    expect(chart["sounds"][0]["nameBytes"] == b"no\xff.wav".hex(), "bytes of a name")
    note, = chart["objects"]["notes"]
    want = {"measure": 1, "position": 0.5, "channel": "11", "timeMs": 2750.0, "line": 10, "id": "01"}
    expect({key: note[key] for key in want} == want, f"note {note}")
    expect([t["tempo"] for t in chart["objects"]["tempos"]] == [120.0, 240.0], "tempos")
    picture, = chart["objects"]["pictureChanges"]
    expect(picture["rectangle"] == [0, 0, 8, 8, 0, 0] and picture["file"] == "x.bmp" and picture["id"] == "03",
           f"picture {picture}")
    expect([m["startMs"] for m in chart["measures"]] == [1000.0, 2500.0, 3000.0], "measures")
    expect(chart["figures"]["lanes"] == {"11": 1} and chart["figures"]["endMs"] == 3000.0, "figures")
    expect(sum(chart["counts"].values()) == len(chart["findings"]), "counts")


def test_times_without_end(folder):
    path = os.path.join(folder, "slow.bms")
    with open(path, "wb") as chart:
        chart.write(b"#BPM 1e-320\r\n#00103:0000F0\r\n#00211:0101")
    chart, = check(path)
    expect(chart["figures"]["endMs"] is None, "the end of a chart without end")
    expect([note["timeMs"] for note in chart["objects"]["notes"]] == [None, None], "times without end")


def test_unreadable(folder):
    gone = os.path.join(os.fsencode(folder), b"gone\x83.bms")
    chart, = check(gone, codes=(2,))
    expect(chart["readable"] is False and chart["fileBytes"] == gone.hex() and chart["why"], f"unreadable {chart}")


def test_any_bytes(folder):
    generator = random.Random(7)
    words = [b"#", b"#WAV", b"01", b"ZZ", b" ", b"\r\n", b"\n", b"\r", b"\t", b"\0", b"#BPM", b":", b"#00111:", b"#00208:",
             b"#00302:", b"1e999", b"-1", b"\x83\x5c", b"\xe3\x83", b"\"", b"\\", b"#TITLE ", b"#BGA01 01 ", b"_", b"\x1b[2J"]
    paths = []
    for number in range(200):
        path = os.path.join(folder, f"r{number}.bms")
        with open(path, "wb") as chart:
            for _ in range(generator.randrange(200)):
                chart.write(generator.choice(words) if generator.random() < 0.9 else generator.randbytes(3))
        paths.append(path)
    charts = check(*paths)
    expect(len(charts) == len(paths), "one member for each chart")


def test_stored():
    """Inputs that fuzzing once found something with, and those of the player's own fuzzing."""
    for name in ("fuzz_check", "fuzz_chart"):
        folder = os.path.join(SOURCE, "fuzz", "inputs", name)
        charts = [os.path.join(folder, chart) for chart in sorted(os.listdir(folder))]
        expect(charts and len(check(*charts)) == len(charts), "stored inputs of " + name)


def test_demo():
    chart, = check(os.path.join(SOURCE, "demo", "demo.bms"), codes=(0,))
    figures = chart["figures"]
    expect(figures["notes"] + figures["invisibleNotes"] == len(chart["objects"]["notes"]), "notes of the demo")
    expect(all(sound["loaded"] for sound in chart["sounds"]), "sounds of the demo")
    expect(all("file" in note for note in chart["objects"]["notes"]), "files of the demo's notes")


def test_document():
    """The document's table has every code of the sources and no other."""
    folder = os.path.join(SOURCE, "tools", "check")
    text = "".join(open(os.path.join(folder, name), encoding="utf-8").read()
                   for name in os.listdir(folder) if name.endswith(".cpp"))
    with open(os.path.join(SOURCE, "docs", "check.md"), encoding="utf-8") as document:
        table = document.read().split("### Codes")[1].split("## Figures")[0]
    told = set(re.findall(r"^\| `([a-z0-9-]+)` \|", table, re.M))
    used = set(re.findall(r'"([a-z0-9]+(?:-[a-z0-9]+)+|tab|nul|stop|scroll|landmine|refused)"', text))
    used -= {"lumetra-check", "mu-law"}
    expect(told == used, f"codes: only in docs/check.md {sorted(told - used)}, only in the sources {sorted(used - told)}")


with tempfile.TemporaryDirectory() as scratch:
    test_values(scratch)
    test_times_without_end(scratch)
    test_unreadable(scratch)
    test_any_bytes(scratch)
test_stored()
test_demo()
test_document()
for failure in failures:
    print(failure)
sys.exit(1 if failures else 0)
