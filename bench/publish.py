#!/usr/bin/env python3
"""Measures the checker and the renderer over many charts: time, and peak memory of all their processes together.

    cmake --preset release && cmake --build --preset release --target lumetra-check lumetra-render
    python3 bench/publish.py                              # 500 previews, 1,000 checks; some minutes
    python3 bench/publish.py --previews 6 --checks 20     # whether it works

The charts are generated: two minutes of 16 notes a second on 40 sounds of half a second, WAV in one folder for all.
Single runs are those of the same charts, one after another; batches use all cores.
"""
import argparse
import math
import os
import random
import struct
import subprocess
import tempfile
import threading
import time
import wave

TOP = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SOUNDS, MEASURES, RATE = 40, 60, 44100


def make_sounds(folder):
    for number in range(1, SOUNDS + 1):
        step = 2 * math.pi * 110 * 2 ** (number / 12) / RATE
        frames = b"".join(struct.pack("<h", int(6000 * math.exp(-i / 6000) * math.sin(step * i)))
                          for i in range(RATE // 2))
        with wave.open(os.path.join(folder, f"s{number:02}.wav"), "wb") as file:
            file.setparams((1, 2, RATE, 0, "NONE", ""))
            file.writeframes(frames)


def make_chart(path, seed):
    generator = random.Random(seed)
    lines = ["#TITLE chart", "#BPM 120"] + [f"#WAV{n:02} s{n:02}.wav" for n in range(1, SOUNDS + 1)]
    for measure in range(1, MEASURES + 1):
        for channel in 11, 12, 1, 1:
            data = "".join(f"{generator.randint(1, SOUNDS):02}" for _ in range(8))
            lines.append(f"#{measure:03}{channel:02}:{data}")
    with open(path, "w", encoding="ascii", newline="\r\n") as file:
        file.write("\n".join(lines) + "\n")


def memory_of(group):
    """Bytes of the processes of a group, memory that they share counted once."""
    total = 0
    for process in filter(str.isdigit, os.listdir("/proc")):
        try:
            if os.getpgid(int(process)) != group:
                continue
            with open(f"/proc/{process}/smaps_rollup", encoding="ascii") as rollup:
                total += sum(int(line.split()[1]) * 1024 for line in rollup if line.startswith("Pss:"))
        except OSError:
            pass  # it has ended
    return total


def measure(command):
    """Seconds, and the peak memory as samples every 20 ms find it."""
    peak = 0
    start = time.monotonic()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, start_new_session=True)
    errors = []
    reader = threading.Thread(target=lambda: errors.append(process.stderr.read()))
    reader.start()
    while process.poll() is None:
        peak = max(peak, memory_of(process.pid))
        time.sleep(0.02)
    seconds = time.monotonic() - start
    reader.join()
    if process.returncode not in (0, 1):
        raise SystemExit(f"{command[0]}: {process.returncode}\n{errors[0].decode(errors='replace')}")
    return seconds, peak


def show(what, charts, seconds, peak=None):
    memory = f"{peak / 1e6:8.1f} MB" if peak is not None else " " * 11
    print(f"{what:34}{charts:6} charts {seconds:8.2f} s {seconds * 1000 / charts:8.2f} ms each {memory}", flush=True)


def previews(program, charts, folder):
    start = time.monotonic()
    for number, chart in enumerate(charts):
        subprocess.run([program, chart, "--preview", "--audio", os.path.join(folder, f"single{number}.ogg")],
                       check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    single = time.monotonic() - start
    show("previews, sum of single runs", len(charts), single)
    few = charts[:max(len(charts) // 5, 1)]
    show("previews, a fifth of the batch", len(few),
         *measure([program, *few, "--preview", "--output-dir", os.path.join(folder, "few")]))
    seconds, peak = measure([program, *charts, "--preview", "--output-dir", os.path.join(folder, "all")])
    show("previews, one batch", len(charts), seconds, peak)
    made = len(os.listdir(os.path.join(folder, "all")))
    if made != len(charts):
        raise SystemExit(f"{made} previews of {len(charts)} charts")
    print(f"the batch takes {seconds / single:.2f} of the single runs on {os.cpu_count()} cores")


def main():
    options = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    options.add_argument("--build", default=os.path.join(TOP, "build", "release"))
    options.add_argument("--previews", type=int, default=500)
    options.add_argument("--checks", type=int, default=1000)
    given = options.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        make_sounds(folder)
        charts = [os.path.join(folder, f"c{number:04}.bms") for number in range(max(given.previews, given.checks))]
        for seed, chart in enumerate(charts):
            make_chart(chart, seed)
        check = os.path.join(given.build, "tools", "check", "lumetra-check")
        for jobs in [], ["-j", "1"]:
            for count in max(given.checks // 10, 1), given.checks:
                show(" ".join(["checks", *(jobs or ["on all cores"])]), count,
                     *measure([check, *jobs, *charts[:count]]))
        for name in "few", "all":
            os.mkdir(os.path.join(folder, name))
        previews(os.path.join(given.build, "tools", "render", "lumetra-render"), charts[:given.previews], folder)


main()
