#!/usr/bin/env python3
"""Measures an editor's loop: the time from a call of lumetra to the sound that it causes.

    cmake --preset release && cmake --build --preset release
    python3 bench/editor_loop.py               # 50 presses of each kind; some 15 minutes
    python3 bench/editor_loop.py --presses 5 --sounds 1,575

Needs Xvfb, openbox, PulseAudio and parec. Plays into a private sound server's null sink and listens to its
monitor. The first table is in ms, the second as ratios to a plain -N to the same instance; both are medians. The third
has the loads of the largest package: the first and the second --open of the same instance.
"""
import argparse
import array
import json
import os
import random
import shutil
import socket
import statistics
import struct
import subprocess
import sys
import threading
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../tests/e2e"))
import harness
from harness import Screen, until

RATE = 44100
LOUD = 8000  # of a click; everything else is below
RENDER = os.path.join(harness.TOP, "build/release/tools/render/lumetra-render")


def wav(frames):
    data = frames.tobytes()
    return (b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt " +
            struct.pack("<IHHIIHH", 16, 1, 2, RATE, RATE * 4, 4, 16) + b"data" + struct.pack("<I", len(data)) + data)


def noise(seconds):
    random.seed(1)
    return array.array("h", (random.randint(-6000, 6000) for _ in range(int(RATE * 2 * seconds))))


class Ear:
    """Listens to the null sink, and knows when each sample sounded."""

    def __init__(self, env):
        self.parec = subprocess.Popen(["parec", "-d", "ear.monitor", "--format=s16le", f"--rate={RATE}",
                                       "--channels=2", "--latency-msec=5", "--raw"], env=env,
                                      stdout=subprocess.PIPE)
        self.lock = threading.Lock()
        self.begin = None  # when frame 0 sounded, by the chunk that came soonest after its end
        self.clicks = []  # frames at which silence ended
        threading.Thread(target=self.listen, daemon=True).start()
        until("the monitor", lambda: self.begin)  # takes two seconds

    def listen(self):
        heard, quiet, rest = 0, RATE, b""
        while chunk := os.read(self.parec.stdout.fileno(), 65536):
            now, data = time.monotonic(), rest + chunk
            rest = data[len(data) // 4 * 4:]
            left = array.array("h", data[:len(data) // 4 * 4])[::2]
            with self.lock:
                begin = now - (heard + len(left)) / RATE
                self.begin = begin if self.begin is None else min(self.begin, begin)
                if left and (max(left) > LOUD or min(left) < -LOUD):
                    for at, sample in enumerate(left):
                        if abs(sample) > LOUD:
                            if quiet > RATE // 20:
                                self.clicks.append(heard + at)
                            quiet = 0
                        else:
                            quiet += 1
                else:
                    quiet += len(left)
            heard += len(left)

    def await_click(self, call, what):
        """ms from the call to the first click after it."""
        def find():
            with self.lock:
                times = [self.begin + frame / RATE for frame in self.clicks]
            return next((t - call for t in times if t > call), None)
        return 1000 * until("a click of " + what, find, limit=30)


class Loop:
    def __init__(self, screen, ear, folder, count, kind):
        self.screen, self.ear, self.count = screen, ear, count
        self.folder = os.path.join(folder, f"{kind}{count}")
        os.mkdir(self.folder)
        click = array.array("h", [16000, 16000] * 882)
        with open(os.path.join(self.folder, "s001.wav"), "wb") as out:
            out.write(wav(click))
        for number in range(2, count + 1):
            shutil.copy(os.path.join(folder, "noise." + kind), os.path.join(self.folder, f"s{number:03}.{kind}"))
        self.presses = 0
        self.chart, self.other = self.write("one.bms"), self.write("two.bms")

    def write(self, name):
        """A chart whose measure 4 begins with the click; saved by a rename, each time with other bytes."""
        self.presses += 1
        digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"
        two = lambda n: digits[n // 36] + digits[n % 36]
        lines = [f"#TITLE {name} {self.presses}", "#BPM 120", "#00401:01"]
        lines += [f"#WAV{two(n)} s{n:03}.wav" for n in range(1, self.count + 1)]
        lines += [f"#{500 + n // 36:03}01:{two(n)}" for n in range(1, self.count + 1)]
        path = os.path.join(self.folder, name)
        with open(path + ".new", "w", encoding="ascii", newline="") as out:
            out.write("\r\n".join(lines) + "\r\n")
        os.replace(path + ".new", path)
        return path

    def call(self, *arguments):
        """ms from here to the click."""
        time.sleep(0.25 + random.random() / 10)
        start = time.monotonic()
        done = subprocess.run([harness.LUMETRA, *arguments], env=self.screen.env, capture_output=True)
        if done.returncode != (1 if arguments[0] == "-N4" else 0):
            raise AssertionError(f"{arguments}: {done.returncode} {done.stderr}")
        return self.ear.await_click(start, str(arguments))

    def quit(self):
        self.screen.remote("--quit")
        until("the end", lambda: not self.screen.windows())

    def first(self):
        self.quit()
        return self.call("--open", self.chart, "-N4")

    def changed(self):
        self.write("one.bms")
        return self.call("--open", self.chart, "-N4")

    def another(self):
        self.presses += 1
        return self.call("--open", (self.chart, self.other)[self.presses % 2], "-N4")

    def measure(self, presses):
        """ms of each kind of press; the kinds take turns."""
        kinds = {"-N": lambda: self.call("-N4"), "first start": self.first,
                 "unchanged": lambda: self.call("--open", self.chart, "-N4"), "changed": self.changed,
                 "another": self.another}
        self.call("--open", self.chart, "-N4")
        times = {name: [] for name in kinds}
        for _ in range(presses):
            for name, press in kinds.items():
                times[name].append(press())
        self.quit()
        return {name: statistics.median(values) for name, values in times.items()}

    def loads(self, rounds):
        """ms that an instance takes to load the package: the first time, and the second."""
        small = self.screen.chart("small.bms")
        times = [], []
        for _ in range(rounds):
            self.screen.remote("--open", small)
            observer = socket.socket(socket.AF_UNIX)
            observer.connect(until("the channel", lambda: self.screen.instances(".stream"))[0])
            observer.settimeout(60)
            lines = observer.makefile("rb")
            observer.sendall(b'{"id":1,"command":"observe"}\n')
            until("the first chart", lambda: self.state() == "running")
            for into in times:
                self.screen.remote("--open", self.chart)
                began = None
                while True:
                    state = json.loads(lines.readline()).get("status", {}).get("state")
                    if state == "loading":
                        began = time.monotonic()
                    elif began and state == "running":
                        break
                into.append(1000 * (time.monotonic() - began))
            observer.close()
            self.quit()
        return [statistics.median(values) for values in times]

    def state(self):
        return json.loads(self.screen.run(harness.LUMETRA, "--status"))["state"]


def make_noise(screen):
    """A sound of 1.4 s as wav and ogg."""
    source = os.path.join(screen.folder, "noise.wav")
    with open(source, "wb") as out:
        out.write(wav(noise(1.4)))
    chart = screen.chart("noise.bms", "#BPM 170\n#WAV01 noise.wav\n#00111:01\n#00211:01\n")
    subprocess.run([RENDER, "--audio", os.path.join(screen.folder, "noise.ogg"), "--from", "1", "--to", "1", chart],
                   check=True, stdout=subprocess.DEVNULL)


def print_table(title, rows, value):
    names = list(next(iter(rows.values())))
    print(f"\n{title}\n\n| sounds | " + " | ".join(names) + " |\n" + "| --- " * (len(names) + 1) + "|")
    for row, times in rows.items():
        print(f"| {row} | " + " | ".join(value(times, name) for name in names) + " |")


def main():
    options = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    options.add_argument("--presses", type=int, default=50)
    options.add_argument("--sounds", default="1,165,575")
    options.add_argument("--kinds", default="wav,ogg")
    options = options.parse_args()
    with Screen() as screen:
        harness.start_sound(screen, RATE)
        make_noise(screen)
        ear = Ear(screen.env)
        rows, loads = {}, {}
        counts = [int(count) for count in options.sounds.split(",")]
        for count in counts:
            for kind in options.kinds.split(","):
                loop = Loop(screen, ear, screen.folder, count, kind)
                name = f"{count}, {'PCM' if kind == 'wav' else 'Ogg'}"
                rows[name] = loop.measure(options.presses)
                if count == max(counts):
                    loads[name] = dict(zip(("first", "second"), loop.loads(max(3, options.presses // 10))))
                print(name, {press: round(ms, 1) for press, ms in rows[name].items()}, file=sys.stderr, flush=True)
        ear.parec.kill()
        print_table("Call to sound, ms", rows, lambda times, name: f"{times[name]:.0f}")
        print_table("Call to sound, as a ratio to -N", rows, lambda times, name: f"{times[name] / times['-N']:.2f}")
        for times in loads.values():
            times["second / first"] = times["second"] / times["first"]
        print_table("Loading the package, ms", loads,
                    lambda times, name: f"{times[name]:.2f}" if "/" in name else f"{times[name]:.0f}")


if __name__ == "__main__":
    main()
