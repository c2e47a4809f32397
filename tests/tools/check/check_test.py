#!/usr/bin/env python3
"""lumetra-check as a user runs it: stored charts with their expected reports, exit codes, JSON.

Usage: check_test.py TOOL SOURCE_FOLDER [--update]

charts/NAME.txt is the report of charts/NAME.bms with all notes, NAME.modern the one with --modern, NAME.short the one
without --all; the files named reports are those of several charts. --update rewrites these files and docs/findings.md: read the difference before you commit it.
"""
import difflib
import json
import os
import random
import re
import resource
import shutil
import struct
import subprocess
import sys
import tempfile
import wave

TOOL, SOURCE = map(os.path.abspath, sys.argv[1:3])
UPDATE = "--update" in sys.argv
CHARTS = os.path.join(SOURCE, "tests", "tools", "check", "charts")
TONE = os.path.join(SOURCE, "tests", "platform", "substitutes", "data", "tone.mp3")
failures = []
seen = set()  # codes in reports


def expect(condition, what):
    if not condition:
        failures.append(what)


def run(*arguments, folder=CHARTS, output=subprocess.PIPE, text=b""):
    done = subprocess.run([TOOL, *arguments], cwd=folder, stdout=output, stderr=subprocess.PIPE, input=text,
                          timeout=60)
    report = (done.stdout or b"").decode("utf-8", "replace" if "--diff" in arguments else "strict")
    seen.update(re.findall(r"\[([a-z0-9-]+)\]$", report, re.M))
    return done.returncode, report, done.stderr.decode("utf-8")


def charts_of(*arguments, codes=(0, 1)):
    code, output, _ = run("--json", *arguments)
    expect(code in codes, f"exit code {code} for {arguments}")
    report = json.loads(output, parse_constant=lambda name: failures.append("not JSON: " + name))
    expect(report["format"] == "lumetra-check" and report["version"] == 1, "format and version")
    return report["charts"]


def compare(name, got):
    path = os.path.join(SOURCE, name) if "/" in name else os.path.join(CHARTS, name)
    if UPDATE:
        with open(path, "w", encoding="utf-8", newline="") as file:
            file.write(got)
    with open(path, encoding="utf-8", newline="") as file:
        want = file.read()
    difference = difflib.unified_diff(want.splitlines(), got.splitlines(), name, "now", lineterm="", n=0)
    expect(want == got, "\n".join(difference))


def test_reports():
    """Each chart has its stored report, and docs/check.md lists each code."""
    for name in sorted(os.listdir(CHARTS)):
        if name.endswith(".bms"):
            _, report, errors = run("--strict", "--all", name)
            compare(name[:-4] + ".txt", errors + report)
        elif name.endswith((".modern", ".short")):
            options = ["--modern", "--strict", "--all"] if name.endswith(".modern") else []
            compare(name, run(*options, os.path.splitext(name)[0] + ".bms")[1])
    with open(os.path.join(SOURCE, "tools", "check", "codes.h"), encoding="utf-8") as header:
        rows = re.findall(r'^    \{"([a-z0-9-]+)", k(\w+), k(\w+),\s+((?:"[^"]*"\s*)+)\}',
                          header.read(), re.M)
    table = []
    for code, usual, lesser, text in rows:
        severity = usual.lower() + ("" if usual == lesser else ", " + lesser.lower())
        meaning = "".join(re.findall('"([^"]*)"', text))
        table.append(f"| `{code}` | {severity} | {meaning} |\n")
    with open(os.path.join(SOURCE, "docs", "check.md"), encoding="utf-8") as document:
        listed = re.findall(r"^\| `[a-z0-9-]+` \| (?:error|warning|note).*\n", document.read(), re.M)
    expect(listed == table, "docs/check.md needs:\n" + "".join(line for line in table if line not in listed))
    compare("docs/findings.md", "# Findings of lumetra-check\n\n" + run("--explain", "all")[1])
    return {row[0] for row in rows}


def test_folders_and_formats():
    """All charts at once, in the order of their names and whatever the number of processes."""
    names = sorted(name for name in os.listdir(CHARTS) if name.endswith(".bms"))
    reports = []
    for name in names:
        with open(os.path.join(CHARTS, name[:-4] + ".txt"), encoding="utf-8") as report:
            reports.append(re.sub("^" + name, "charts/" + name, report.read(), flags=re.M))
    for jobs in "1", "3":
        got = run("--strict", "--all", "-j", jobs, "charts", folder=os.path.dirname(CHARTS))[1]
        expect(got == "\n".join(reports), f"order of {jobs} jobs")
    compare("reports.github", run("--strict", "--format", "github", *names, "gone%.bms", "s")[1])
    compare("reports.statistics", run("--statistics", "--strict", *names)[1])
    log = json.loads(run("--format=sarif", *names, "gone.bms", "s")[1])["runs"][0]
    rules = [rule["id"] for rule in log["tool"]["driver"]["rules"]]
    found = []
    for result in log["results"]:
        place = result["locations"][0]["physicalLocation"]
        expect(rules[result["ruleIndex"]] == result["ruleId"], "index of a rule")
        found.append(f"{place['artifactLocation']['uri']}:{place['region']['startLine']}:"
                     f"{result['properties']['byteColumn']}: {result['level']}: {result['message']['text']} "
                     f"[{result['ruleId']}]")
    listed = re.findall(r"charts/(.*\])$", "\n".join(reports), re.M)
    expect(found == listed, "results of SARIF")
    said, = log["invocations"]
    told = [(note["locations"][0]["physicalLocation"]["artifactLocation"]["uri"], note["message"]["text"])
            for note in said["toolExecutionNotifications"]]
    want = [("s", "no chart found"), ("gone.bms", "No such file or directory")]
    expect(not said["executionSuccessful"] and told == want,
           f"charts that cannot be read: {said}")
    name = "charts/sounds.bms"
    with open(os.path.join(CHARTS, "sounds.bms"), "rb") as chart:
        got = run("--strict", "--all", "--path", name, "-", folder=os.path.dirname(CHARTS), text=chart.read())[1]
    expect(got == reports[names.index("sounds.bms")], "a chart on standard input")


def test_columns(folder):
    """In bytes and in characters, in JSON and SARIF."""
    for title, column, character in [
            ("\u30bd\u8868".encode("cp932"), 12, 10), ("\u30bd\u8868".encode(), 14, 10), ("\U0001f600".encode(), 12, 9),
            ("\uff71".encode("cp932"), 9, 9), (b"\x83 \x83", 11, 11), ("\xe9".encode(), 10, 9)]:
        chart = os.path.join(folder, "title.bms")
        with open(chart, "wb") as file:
            file.write(b"#TITLE " + title + b" \r\n#00111:01")
        found = [(f["column"], f["character"]) for f in charts_of("--select", "trailing-blank", chart)[0]["findings"]]
        result, = json.loads(run("--format=sarif", "--select", "trailing-blank", chart)[1])["runs"][0]["results"]
        region = result["fixes"][0]["artifactChanges"][0]["replacements"][0]["deletedRegion"]
        expect(found == [(column, character)] and result["properties"]["byteColumn"] == column and
               (region["startColumn"], region["byteOffset"]) == (character, column - 1), f"{title}: {found} {result}")


def test_settings(folder):
    os.makedirs(os.path.join(folder, "a", "b"))
    chart = os.path.join(folder, "a", "b", "c.bms")
    with open(chart, "wb") as file:
        file.write(b"#WAV01 no.wav\r\n#XYZ 1\r\n#00111:01")
    for settings, arguments, want, codes in [
            ("", "", 1, "sound-missing unknown-command"), ("", "--select no-tempo", 0, "no-tempo"),
            ("", "--strict", 1, "no-tempo sound-missing unknown-command"),
            ("", "--ignore sound-missing,tab", 1, "unknown-command"),
            ("", "--ignore sound-missing --ignore unknown-command", 0, ""),
            ("fail-on = 'error'", "", 1, "sound-missing unknown-command"),
            ("fail-on = 'error'\nignore = ['sound-missing']", "", 0, "unknown-command"),
            ("fail-on = 'error'\nignore = ['sound-missing']", "--fail-on warning", 1, "unknown-command"),
            ("select = ['tab']", "", 0, ""), ("select = ['tab']", "--select no-tempo", 0, "no-tempo"),
            ("ignore = ['tabb']", "", 2, ""), ("ignore = 'tab'", "", 2, ""), ("[x]", "", 2, ""),
            ("a = [", "", 2, ""), ("select = []", "", 2, "")]:
        with open(os.path.join(folder, "a", "lumetra-check.toml"), "w", encoding="ascii") as file:
            file.write(settings)
        code, report, errors = run(*arguments.split(), chart)
        found = re.findall(r"\[(.*)\]$", report, re.M)
        expect(code == want and found == codes.split(), f"{settings!r} {arguments}: {code} {found} {errors}")
        expect((code == 2) == ("lumetra-check.toml:1: " in errors), errors)
    odd = os.path.join(os.fsencode(folder), b"\xff")
    os.rename(os.path.join(folder, "a"), odd)
    with open(os.path.join(odd, b"lumetra-check.toml"), "w", encoding="ascii") as file:
        file.write(r'ignore = ["\n::warning title=forged::"]')
    for form in "github", "json", "sarif":
        report = run("--format", form, odd)[1]
        expect(r"unknown code: \x0A::warning" in report.replace(r"\\", "\\"), f"{form}: {report[-500:]}")


def bytes_read():
    """By this process and those that it has waited for."""
    with open("/proc/self/io", encoding="ascii") as counts:
        return int(re.search("rchar: (.*)", counts.read())[1])


def test_files_are_found_once():
    """Advice does not depend on the current folder, and no substitute is decoded a second time."""
    for name in "sounds", "substitutes":
        with open(os.path.join(CHARTS, name + ".txt"), encoding="utf-8") as report:
            want = report.read().replace(name + ".bms:", f"charts/{name}.bms:")
        got = run("--strict", "--all", f"charts/{name}.bms", folder=os.path.dirname(CHARTS))[1]
        expect(got == want, "advice depends on the current folder")
    with tempfile.TemporaryDirectory() as folder, open(os.path.join(CHARTS, "song.ogg"), "rb") as song:
        for name in "ab":
            with open(os.path.join(folder, name + ".ogg"), "wb") as sound:
                sound.write(song.read() + bytes(1 << 20))
                song.seek(0)
        with open(os.path.join(folder, "c.bms"), "wb") as chart:
            chart.write(b"#BPM 120\r\n#WAV01 a.wav\r\n#WAV02 b.wav\r\n#00111:0102")
        before = bytes_read()
        run("c.bms", folder=folder)
        expect(bytes_read() - before < 3 << 20, f"{bytes_read() - before} bytes were read")


def test_json():
    code, output, _ = run("--json", "values.bms", "sounds.bms", "pictures.bms", "empty.bms", "gone.bms", "s")
    expect(code == 2, f"exit code {code}")
    output = output.replace(CHARTS, "FOLDER")
    compare("reports.json", re.sub(r'"program":"[0-9.]+"', '"program":"VERSION"', output))
    demo, = charts_of(os.path.join(SOURCE, "demo", "demo.bms"), codes=(0,))
    expect(all("file" in note for note in demo["objects"]["notes"]), "the demo's notes have files")


def test_exit_codes():
    for arguments, want, text in [
            ("clean.bms", 0, "clean.bms: 0 errors, 0 warnings, 0 notes\n"),
            ("no_tempo.bms", 0, "1 note (shown with --strict)\n"),
            ("--strict no_tempo.bms", 1, "[no-tempo]"),
            ("channels.bms", 1, "[zero-length]"),
            ("clean.bms channels.bms no_tempo.bms", 1, "no_tempo.bms: 0 errors"),
            ("channels.bms gone.bms clean.bms", 2, "gone.bms: No such file"),
            ("-- -x.bms", 2, "-x.bms: No such file"), ("", 2, "no chart given"),
            ("--seed 1 clean.bms", 2, "need --modern"), ("--modern --random 1,x clean.bms", 2, "--random takes"),
            ("--modern --strict --all --random 2 young.bms", 1, "branch 2 of 2"),
            ("--modern --strict --all --seed 2 young.bms", 1, "branch 1 of 2"),
            ("--modern --strict --all --seed 3 young.bms", 1, "branch 2 of 2"),
            ("--select tabb clean.bms", 2, "unknown code: tabb"),
            ("--select= channels.bms", 2, "no code given"), ("--format xml .", 2, "format: xml"),
            ("--explain nul", 0, "## nul\n"), ("--path x clean.bms", 2, "--path"),
            ("s", 2, "s: no chart found"),
            ("--color always no_tempo.bms --strict", 1, "\x1b[1;36mnote\x1b[0m: no #BPM"),
            ("--jsno clean.bms", 2, "option: --jsno"), ("--help", 0, "Usage: lumetra-check"),
            ("--version", 0, "lumetra-check ")]:
        code, output, errors = run(*arguments.split())
        expect(code == want and text in errors + output, f"{arguments}: {code}\n{errors}{output}")
    with open("/dev/full", "w") as full:
        expect(run("clean.bms", output=full)[0] == 3, "no space for the report")


def test_charts_made_here(folder):
    def write(name, *lines):
        with open(os.path.join(os.fsencode(folder), os.fsencode(name)), "wb") as chart:
            chart.write(b"\r\n".join(lines))

    write("many.bms", b"#00111:01", *[b"#UNKNOWN x"] * 1500)
    report = run("--all", "many.bms", folder=folder)[1]
    expect("500 more of [unknown-command]" in report and "0 errors, 1501 warnings" in report, report[-300:])
    write("path.bms", b"#BPM 120", b"#PATH_WAV " + os.fsencode(CHARTS), b"#WAV01 a.wav", b"#00111:01")
    _, report, _ = run("--strict", "path.bms", folder=folder)
    expect(re.findall(r"\[(.*)\]", report) == ["path-wav", "outside-folder"], report)
    expect("relative" not in report, report)
    os.symlink(os.path.join(CHARTS, "a.wav"), os.path.join(folder, "link.wav"))
    write("link.bms", b"#BPM 120", b"#WAV01 link.wav", b"#WAV02 LINK.WAV", b"#00111:0102")
    report = run("--strict", "link.bms", folder=folder)[1]
    expect("link.bms:2:8: note: `link.wav` and 1 other file are outside" in report, report)
    os.mkdir(os.path.join(folder, "pack"))
    write("pack/up.bms", b"#BPM 120", b"#WAV01 ../pack/../link.wav", b"#00111:01")
    report = run("--strict", "pack/up.bms", folder=folder)[1]
    expect(re.findall(r"\[(.*)\]", report) == ["outside-folder"], report)
    write("big.bms", b"#BPM 120", b"#BMP01 big.bmp", b"#00104:01")
    with open(os.path.join(folder, "big.bmp"), "wb") as picture:
        picture.write(b"BM")
        picture.truncate((1 << 30) + 1)
    report = run("big.bms", folder=folder)[1]
    expect("big.bms:2:8: error: the pictures of the chart together" in report and "too much" in report, report)
    deep = os.path.join(folder, *["deep" * 20] * 4)
    os.makedirs(deep)
    for name in "clean.bms", "a.wav", "a.bmp":
        shutil.copy(os.path.join(CHARTS, name), deep)
    expect("clean.bms: 0 errors, 0 warnings, 0 notes\n" in run("clean.bms", folder=deep)[1], "a deep folder")
    digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"
    ids = [high + low for high in digits for low in digits][1:900]
    shutil.copy(os.path.join(CHARTS, "a.wav"), folder)
    write("share.bms", b"#BPM 120", *[f"#WAV{i} a.wav".encode() for i in ids],
          *[f"#{measure + 1:03}11:{i}".encode() for measure, i in enumerate(ids)])
    report = run("--modern", "--strict", "--all", "share.bms", folder=folder)[1]
    expect(re.findall(r"\[(.*)\]", report) == [], report)  # no sound is mixed: the lengths are known
    name = "e\x1b]0;pwned\x07\nfake.bms:1:1: error: x\x9b\u202e"
    write(name, b"#BPM 120", b"#00111:01")
    for arguments in ([name], ["--json", name], [name + "?"]):
        _, report, errors = run(*arguments, folder=folder)
        bad = re.search(r"[\x00-\x09\x0b-\x1f\x7f-\x9f\u202e]|^fake", report + errors, re.M)
        expect(not bad, f"control characters of a name: {report}{errors}")
    gone = os.path.join(os.fsencode(folder), b"gone\x83.bms")
    chart, = charts_of(gone, codes=(2,))
    expect(chart["readable"] is False and chart["fileBytes"] == gone.hex() and chart["why"], f"{chart}")


def test_hearing(folder):
    """What the samples tell: each chart has this finding and no other of the kind."""
    os.mkdir(folder)

    def sound(name, *parts):
        """parts: milliseconds and level."""
        with wave.open(os.path.join(folder, name), "wb") as file:
            file.setparams((1, 2, 44100, 0, "NONE", ""))
            for ms, level in parts:
                file.writeframes(struct.pack("<h", level) * (ms * 441 // 10))

    sound("late.wav", (60, 100), (100, 20000))
    sound("soon.wav", (60, 300), (100, 20000))
    sound("long.wav", (1200, 9000))
    sound("tail.wav", (400, 9000), (800, 800))
    sound("full.wav", (50, 32767))
    grid = b"".join(b"#%03d11:%s\r\n" % (measure, b"01" * 16) for measure in range(1, 9))
    slip = b"#00512:" + b"00" * 25 + b"01" + b"00" * 166
    for lines, want in [
            (b"#WAV01 late.wav\r\n#00111:01", "2:8: warning: `late.wav` begins with 60 ms of silence"),
            (b"#WAV01 late.wav\r\n#00101:01", ""), (b"#WAV01 soon.wav\r\n#00111:01", ""),
            (b"#WAV01 long.wav\r\n#00101:01010000\r\n#00301:01", "3:10: note: `long.wav` lasts 1200 ms and is started "
             "again after 500 ms or more, 1 time"),
            (b"#WAV01 long.wav\r\n#00101:01\r\n#00201:01", ""), (b"#WAV01 tail.wav\r\n#00101:01010000", ""),
            (b"#WAV01 full.wav\r\n#WAV02 full.wav\r\n#WAV03 full.wav\r\n#00101:01\r\n#00101:02\r\n#00101:0003",
             "6:8: note: the mix passes full scale by up to 6.0 dB, at 0:03.000, and in 1 second in all"),
            (b"#WAV01 full.wav\r\n#WAV02 full.wav\r\n#00101:0102", ""),
            (b"#00611:01\r\n#WAV01 tail.wav", "2:8: note: the first sound comes at 0:13.000"),
            (grid + slip, "10:58: warning: 1 object is up to 2/192 of a measure beside the grid of 1/16 that 99 %"),
            (grid + slip + b"\r\n#00513:" + b"00" * 27 + b"01" + b"00" * 164, ""), (slip, "")]:
        with open(os.path.join(folder, "c.bms"), "wb") as chart:
            chart.write(b"#BPM 120\r\n" + lines)
        for options in [], ["--modern"]:
            report = run("--select", "late-attack,sound-restarted,clipping,late-start,off-grid", *options, "c.bms",
                         folder=folder)[1]
            found = re.findall(r"^c.bms:(\d.*)$", report, re.M)
            expect(len(found) == bool(want) and (not want or found[0].startswith(want)), f"{lines}: {found}")


def apply_edits(chart):
    """The bytes of a chart's file with the edits that JSON lists."""
    with open(chart["file"], "rb") as file:
        text = file.read()
    edits = [edit for finding in chart["findings"] for edit in finding.get("edits", [])]
    expect(len({edit["offset"] for edit in edits}) == len(edits), f"edits at one offset: {edits}")
    for edit in sorted(edits, key=lambda edit: edit["offset"], reverse=True):
        text = text[:edit["offset"]] + edit["text"].encode("ascii") + text[edit["offset"] + edit["length"]:]
    return text


def test_fix(folder):
    def path(name):
        return os.path.join(folder, name)

    def write(name, text):
        with open(path(name), "wb") as file:
            file.write(text)

    def content(name):
        with open(path(name), "rb") as file:
            return file.read()

    os.makedirs(path("snd"))
    os.makedirs(path("d.d"))
    for source, name in ("a.wav", "snd/kick.wav"), ("a.wav", "b.wav"), ("a.wav", "\u30bd.wav"), \
            ("a.wav", "blank.wav "), ("song.ogg", "song.ogg"), ("song.ogg", "d.d/\u30bd.ogg"), ("pic.png", "pic.png"), \
            ("pic.png", "film.png"), (TONE, "tone.ogg"), (TONE, "real.mp3"):
        shutil.copy(os.path.join(CHARTS, source), path(name))
    head = b"#BPM 120\r\n"
    for before, after in [
            (b"#TITLE x \n#00111:01  \n\n#00211:01", b"#TITLE x\r\n#00111:01\r\n\r\n#00211:01"),
            (b"#TITLE a\r\r\n#00111:01\r#00211:01\r", b"#TITLE a\r\n#00111:01\r\n#00211:01\r\n"),
            (b"\xef\xbb\xbf\xef\xbb\xbf#TITLE a\r\n", b"#TITLE a\r\n"),
            (head + b"#WAV01 SND\\Kick.WAV \r\n#WAV02 song.wav\tx\r\n#BMP01 pic.bmp\r\n",
             head + b"#WAV01 snd/kick.wav\r\n#WAV02 song.ogg\tx\r\n#BMP01 pic.png\r\n"),
            (b"#WAV01 snd\\kick.wav\r\n#wav02  \r\n", b"#WAV01 snd/kick.wav\r\n#wav02  \r\n"),
            (b"#WAV01 tone.wav\r\n#WAV02 real.wav\r\n#BMP01 film.mpg\r\n",
             b"#WAV01 tone.wav\r\n#WAV02 real.mp3\r\n#BMP01 film.mpg\r\n"),
            (b"#WAV01 song\t\r\n#WAV02 song\t x\r\n", b"#WAV01 song.ogg\r\n#WAV02 song.ogg\t x\r\n"),
            (b"#WAV01 d.d\\\xe3\x82\xbd\r\n", b"#WAV01 d.d/\xe3\x82\xbd.ogg\r\n"),
            (b"#00111:01\r \r\n#00211:01", b"#00111:01\r\n \r\n#00211:01"),
            (b"#WAV01 d.d/\xe3\x82\xbd\n#WAV02 b.wav\r\n", b"#WAV01 d.d/\xe3\x82\xbd.ogg\r\n#WAV02 b.wav\r\n"),
            (b"#WAV01 song.wav\r#WAV02 b.wav\r\n", b"#WAV01 song.ogg\r\n#WAV02 b.wav\r\n"),
            (b"\x83\x5c \r\n#TITLE \x83\x5c \r\n", b"\x83\x5c \r\n#TITLE \x83\x5c\r\n")] + [
                (same, same) for same in (
                    b"#BPM120 \r\n", b"#BGA02 01 0 0 8 8 0 0 \r\n", b"#PATH_WAV a \r\n", b"#WAV01 blank.wav \r\n",
                    b"#WAV01 \x83\x5c.WAV\r\n", b"#00111: \r\n", b" #00111:01\r\n", b"#TITLE a\0#00111:01\r\n",
                    "#TITLE a \n".encode("utf-16-le"))]:
        write("c.bms", before)
        shown = run("--diff", "c.bms", folder=folder, text=before)
        for _ in range(3):
            write("c.bms", apply_edits(*charts_of(path("c.bms"))))
        expect(content("c.bms") == after, f"edits made {content('c.bms')} of {before}")
        write("c.bms", before)
        run("--fix", "c.bms", folder=folder)
        expect(content("c.bms") == after, f"{before} became {content('c.bms')}")
        expect(shown[0] == 1 if before != after else not shown[1], f"{before}: {shown}")
        mended = subprocess.run([TOOL, "--fix", "-"], cwd=folder, input=before, capture_output=True)
        expect(mended.stdout == after and b"fixed" in mended.stderr, f"standard input: {mended}")
    # By the way that a name is given, by links, and by what protects a file.
    write("c.bms", b"#TITLE a \r\n#00111:01")
    os.chmod(path("c.bms"), 0o640)
    os.symlink("c.bms", path("link.bms"))
    code, report, _ = run("--fix", "--select", "name-case", "link.bms", folder=folder)
    expect(code == 0 and "0 findings fixed" in report, report)
    run("--fix", "--ignore", "no-tempo", "link.bms", "c.bms", folder=folder)
    expect(content("c.bms") == b"#TITLE a\r\n#00111:01" and os.path.islink(path("link.bms")), "through a link")
    expect(os.stat(path("c.bms")).st_mode & 0o777 == 0o640, "the mode")
    for protect, text in (lambda: os.link(path("c.bms"), path("two.bms")), "hard links"), \
            (lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (8, -1)), "too large"), \
            (lambda: os.chmod(path("c.bms"), 0o440), "write-protected"):
        write("c.bms", b"#TITLE a \r\n#00111:01")
        protect()
        code, report, errors = run("--fix", "c.bms", folder=folder)
        chart, = json.loads(run("--fix", "--json", "c.bms", folder=folder)[1])["charts"]
        log = json.loads(run("--fix", "--format=sarif", "c.bms", folder=folder)[1])["runs"][0]
        resource.setrlimit(resource.RLIMIT_FSIZE, (-1, -1))
        expect(code == 3 and text in errors and "--fix mends 1" in report, f"{code} {report} {errors}")
        expect(text in chart["notFixed"] and not log["invocations"][0]["executionSuccessful"], f"{chart} {log}")
        expect(content("c.bms").startswith(b"#TITLE a \r"), "a protected file")
        if os.path.exists(path("two.bms")):
            os.remove(path("two.bms"))
    expect(not [name for name in os.listdir(folder) if name.startswith(".")], "temporary files stay")


def test_any_bytes_are_fixed_once(folder):
    """--fix twice does what it does once, and so do a patch of the diff and the edits of JSON, in some rounds."""
    patched, edited = folder + ".patched", folder + ".edited"
    for copy in patched, edited:
        shutil.copytree(folder, copy)
    with open(os.path.join(patched, "all.diff"), "wb") as patch:
        subprocess.run([TOOL, "--diff", "."], cwd=patched, stdout=patch, check=False)
    subprocess.run(["patch", "-p0", "-s", "-i", "all.diff"], cwd=patched, check=False)
    before = [chart["verdict"]["played"] for chart in charts_of(folder)]
    for _ in range(6):
        for chart in charts_of(edited):
            text = apply_edits(chart)
            with open(chart["file"], "wb") as file:
                file.write(text)
    for chart, played in zip(charts_of("--fix", folder), before):
        expect(chart["fixable"] == 0 and chart["verdict"]["played"] >= played, f"{chart['file']}: {chart['verdict']}")
    expect(all(chart["fixed"] == 0 for chart in charts_of("--fix", folder)), "a second --fix changes something")
    for name in os.listdir(folder):
        texts = []
        for place in folder, patched, edited:
            with open(os.path.join(place, name), "rb") as file:
                texts.append(file.read())
        expect(texts[0] == texts[1] == texts[2], f"{name}: {texts}")


def test_any_bytes(folder):
    generator = random.Random(7)
    words = [b"#", b"#WAV", b"01", b"ZZ", b" ", b"\r\n", b"\n", b"\r", b"\t", b"\0", b"#BPM", b":",
             b"#00111:", b"#00208:", b"#00302:", b"1e999", b"-1", b"\x83\x5c", b"\xe3\x83", b"\"", b"\\",
             b"#TITLE ", b"#BGA01 01 ", b"_", b"\x1b[2J"]
    paths = [os.path.join(SOURCE, "tests", "fuzz", "inputs", target, name) for target in ("fuzz_check", "fuzz_chart")
             for name in os.listdir(os.path.join(SOURCE, "tests", "fuzz", "inputs", target))]
    os.mkdir(os.path.join(folder, "any"))
    for number in range(200):
        paths.append(os.path.join(folder, "any", f"r{number}.bms"))
        with open(paths[-1], "wb") as chart:
            for _ in range(generator.randrange(200)):
                chart.write(generator.choice(words) if generator.random() < 0.9 else generator.randbytes(3))
    expect(len(charts_of(*paths)) == len(paths), "one member for each chart")
    for path in paths:
        if path.startswith(folder):
            continue
        shutil.copy(path, os.path.join(folder, "any", os.path.basename(path) + ".bms"))
    test_any_bytes_are_fixed_once(os.path.join(folder, "any"))


codes = test_reports()
test_folders_and_formats()
test_files_are_found_once()
test_json()
test_exit_codes()
with tempfile.TemporaryDirectory() as scratch:
    test_charts_made_here(scratch)
    test_any_bytes(scratch)
    test_columns(scratch)
    test_settings(scratch)
    test_fix(os.path.join(scratch, "fix"))
    test_hearing(os.path.join(scratch, "hearing"))
expect(seen == codes, f"codes in no report: {sorted(codes - seen)}")
for failure in failures:
    print(failure)
sys.exit(1 if failures else 0)
