#!/usr/bin/env python3
"""Cost against size: what 1 to 100 times the work costs, from reading a chart to checking a package.

    bench/compare/scale.py BUILD [--rounds N] [--write docs]

BUILD is a build directory with the benchmarks, such as build/release. Prints one table: for each kind of work the time of
its smallest size and, for every size, the time per piece of work as a ratio to that of the smallest. Nothing grows faster
than its work when no ratio is above 1. The programs' own start-up is in the times of the rows marked with a star, so their
ratios fall. --write puts table and plot into performance.md and performance.svg of that folder. Needs an idle machine,
Xvfb and 2 GB of room for temporary files; takes about four minutes.
"""
import argparse
import math
import os
import platform
import random
import shutil
import statistics
import struct
import subprocess
import sys
import tempfile
import time
from pathlib import Path

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../tests/e2e"))
from harness import Screen

SIZES = (1, 3, 10, 30, 100)
DIGITS = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"
MARK = "<!-- cost against size: bench/compare/scale.py writes what follows, up to the next mark -->"


def pair(number):
    return DIGITS[number // 36] + DIGITS[number % 36]


def wav(path, frames, seed):
    data = random.Random(seed).randbytes(4 * frames)
    data = bytes(b // 16 if i % 2 else b for i, b in enumerate(data)) if frames < 2000 else data
    head = struct.pack("<4sI4s4sIHHIIHH4sI", b"RIFF", 36 + len(data), b"WAVE", b"fmt ", 16, 1, 2, 44100, 176400, 4, 16,
                       b"data", len(data))
    path.write_bytes(head + data)


def chart(path, objects, sounds, measures=100, stops=False):
    """So many objects on the measures, spread over the background and the lanes."""
    draw = random.Random(1)
    lines = ["#PLAYER 1", "#TITLE size", "#BPM 150"]
    lines += [f"#WAV{pair(i)} s{i}.wav" for i in range(1, sounds + 1)]
    if stops:
        lines += ["#STOP01 24", "#LNOBJ ZZ"]
    channels = ("01", "01", "11", "12", "13", "14", "15", "18")
    per_line = max(1, objects // (measures * len(channels)))
    for measure in range(1, measures + 1):
        for channel in channels:
            grid = ["00"] * max(per_line * 2, 4)
            for place in draw.sample(range(len(grid)), per_line):
                grid[place] = pair(draw.randint(1, sounds))
            lines.append(f"#{measure:03}{channel}:{''.join(grid)}")
        if stops and measure % 10 == 0:
            lines.append(f"#{measure:03}09:0001")
    path.write_bytes("".join(line + "\r\n" for line in lines).encode())


def warm():
    """A virtual machine's host takes free memory back; touching it again would cost ten times a load."""
    subprocess.run([sys.executable, "-c", "bytearray(b'1') * (512 << 20)"], check=True)


def seconds(command):
    warm()
    begin = time.perf_counter()
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False)
    end = time.perf_counter()
    if done.returncode not in (0, 1):
        sys.exit(f"{' '.join(map(str, command))}: exit code {done.returncode}")
    for line in done.stdout.decode(errors="replace").splitlines():
        parts = line.split("\t")
        if parts[0] == "RESULT" and parts[1] in ("cold_s", "wall_s"):
            return float(parts[2])
        if parts[0] == "RESULT" and parts[1] == "ns_per_voice_frame":
            return float(parts[2]) * 1e-9
    return end - begin


class Player:
    """The real player on a virtual screen, until its chart is heard."""

    def __init__(self, program, screen):
        self.program, self.env = program, {**screen.env, "SDL_AUDIODRIVER": "dummy"}

    def call(self, *arguments, check=True):
        subprocess.run([self.program, *arguments], env=self.env, stderr=subprocess.DEVNULL, check=check)

    def open(self, path):
        begin = time.perf_counter()
        self.call("--open", path, "--wait")
        return time.perf_counter() - begin

    def start(self, path):
        self.call("--quit", check=False)
        warm()
        return self.open(path)

    def reload(self, path):
        self.start(path)
        return self.open(path)


class Row:
    """measured(size) gives the seconds; per_piece tells that they are those of a piece already."""

    def __init__(self, name, unit, measured, starred=False, per_piece=False):
        self.name, self.unit, self.measured = name + ("*" if starred else ""), unit, measured
        self.per_piece, self.times = per_piece, {size: [] for size in SIZES}

    def measure(self):
        for size in SIZES:
            self.measured(size)  # the first run after others is slower
            self.times[size].append(self.measured(size))

    def ratios(self):
        cost = {s: statistics.median(t) / (1 if self.per_piece else s) for s, t in self.times.items()}
        return [cost[s] / cost[1] for s in SIZES]

    def smallest(self):
        return statistics.median(self.times[1])


def rows(build, work, screen):
    tools = {n: build / "tools" / n.split("-")[1] / n for n in ("lumetra-check", "lumetra-render", "lumetra-convert")}
    bench = build / "bench"
    for size in SIZES:
        folder = work / str(size)
        folder.mkdir()
        for i in range(1, 5 * size + 1):
            wav(folder / f"s{i}.wav", 22050, i)
        chart(folder / "text.bms", 800 * size, 575)
        chart(folder / "modern.bms", 800 * size, 575, stops=True)
        chart(folder / "song.bms", 800, 5 * size, measures=30)
        chart(folder / "dense.bms", 240 * size, 5, measures=30)
        long = work / f"long{size}"
        long.mkdir()
        for i in range(1, 6):
            wav(long / f"s{i}.wav", 4410, i)
        chart(long / "long.bms", 72 * size, 5, measures=9 * size)
    of = lambda size, name: work / str(size) / name
    at = ",".join(str(t) for t in range(2000, 42000, 1000))
    player = Player(build / "src/app/lumetra", screen)
    return [
        Row("read and compile a chart", "800 objects", lambda s: seconds([bench / "parse", of(s, "text.bms")])),
        Row("compile a chart of today", "800 objects",
            lambda s: seconds([tools["lumetra-convert"], "--dry-run", of(s, "modern.bms"), work / "none"]), starred=True),
        Row("load sounds", "5 files of 88 kB", lambda s: seconds([bench / "load", work / str(s)])),
        Row("mix", "4 voices", lambda s: seconds([bench / "mix", str(4 * s), "full", work / "100"]), per_piece=True),
        Row("draw 40 frames", "8 objects a measure",
            lambda s: seconds([tools["lumetra-render"], "--png", work / "png", "--at", at, of(s, "dense.bms")]),
            starred=True),
        Row("start until heard", "5 files of 88 kB", lambda s: player.start(of(s, "song.bms")), starred=True),
        Row("reload until heard", "5 files of 88 kB", lambda s: player.reload(of(s, "song.bms")), starred=True),
        Row("render sound", "9 measures",
            lambda s: seconds([tools["lumetra-render"], "--wav", work / "out.wav", work / f"long{s}" / "long.bms"]),
            starred=True),
        Row("check a package", "5 files of 88 kB", lambda s: seconds([tools["lumetra-check"], of(s, "song.bms")]),
            starred=True),
    ]


def machine():
    model = platform.processor() or "unknown"
    for line in Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            model = line.split(":")[1].strip()
            break
    return f"{model}, {os.cpu_count()} cores, {platform.system()} {platform.release()}"


def table(measured, rounds):
    text = f"{machine()}; medians of {rounds} rounds.\n\n"
    text += "| work | its piece | one piece | " + " | ".join(f"×{s}" for s in SIZES) + " |\n"
    text += "| --- | --- | ---: |" + " ---: |" * len(SIZES) + "\n"
    for row in measured:
        one = row.smallest()
        shown = f"{one * 1e9:.2f} ns a frame and voice" if row.per_piece else f"{one * 1000:.2f} ms"
        text += f"| {row.name} | {row.unit} | {shown} | " + " | ".join(f"{r:.2f}" for r in row.ratios()) + " |\n"
    return text


def plot(measured):
    """Time per piece against the number of pieces, both axes logarithmic."""
    width, height, left, top = 640, 360, 60, 20
    x = lambda size: left + math.log(size) / math.log(100) * (width - left - 190)
    y = lambda ratio: top + (math.log10(2) - math.log10(max(ratio, 0.005))) / (math.log10(2) + 2.3) * (height - top - 50)
    colours = ("#c0392b", "#2471a3", "#1e8449", "#b9770e", "#6c3483", "#117a65", "#4d5656", "#d35400", "#2e4053")
    out = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" font-family="sans-serif" font-size="12">',
           f'<rect width="{width}" height="{height}" fill="white"/>']
    for ratio in (0.01, 0.1, 1):
        out.append(f'<path d="M{left} {y(ratio):.1f}H{x(100):.1f}" stroke="#bbb"/>'
                   f'<text x="{left - 8}" y="{y(ratio) + 4:.1f}" text-anchor="end">{ratio}</text>')
    for size in SIZES:
        out.append(f'<text x="{x(size):.1f}" y="{height - 28}" text-anchor="middle">×{size}</text>')
    out.append(f'<text x="{left}" y="{height - 8}">pieces of work; upwards: time per piece, as a ratio to one piece</text>')
    ends = sorted(range(len(measured)), key=lambda i: -measured[i].ratios()[-1])
    at = {}
    for i in ends:
        at[i] = max(y(measured[i].ratios()[-1]), max(at.values(), default=-99) + 14)
    for i, row in enumerate(measured):
        points = " ".join(f"{x(s):.1f},{y(r):.1f}" for s, r in zip(SIZES, row.ratios()))
        colour = colours[i % len(colours)]
        out.append(f'<polyline points="{points}" fill="none" stroke="{colour}" stroke-width="2"/>'
                   f'<text x="{x(100) + 8:.1f}" y="{at[i] + 4:.1f}" fill="{colour}">{row.name}</text>')
    return "\n".join(out) + "\n</svg>\n"


def write(folder, text, picture):
    page = folder / "performance.md"
    parts = page.read_text().split(MARK)
    if len(parts) != 3:
        sys.exit(f"{page}: the two marks are missing")
    page.write_text(parts[0] + MARK + "\n\n" + text + "\n" + MARK + parts[2])
    (folder / "performance.svg").write_text(picture)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path)
    parser.add_argument("--rounds", type=int, default=5)
    parser.add_argument("--write", type=Path)
    arguments = parser.parse_args()
    work = Path(tempfile.mkdtemp(prefix="lumetra-scale-"))
    try:
        with Screen() as screen:
            measured = rows(arguments.build.resolve(), work, screen)
            for _ in range(arguments.rounds):
                for row in measured:
                    row.measure()
        text = table(measured, arguments.rounds)
        print(text)
        if arguments.write:
            write(arguments.write, text, plot(measured))
    finally:
        shutil.rmtree(work)


if __name__ == "__main__":
    main()
