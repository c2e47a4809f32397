#!/usr/bin/env python3
"""player.py [SECONDS [COMMANDS]] [CHART]...: the real player on a virtual screen with a sound server, for 20 minutes
and 200 commands.

Prints ten times what it holds, with the same chart playing. Half-way the sound server is killed and another started: the
player has to go on without sound, and then with it. The exit code is 1 when memory, handles or threads grow after the
second row, or a command fails.
"""
import os
import random
import subprocess
import sys
import time

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(TOP, "tests/e2e"))
import harness
from harness import Screen, until

ROWS, MAY_GROW = 10, 4096  # KiB


def held(pid):
    """Memory of its own in KiB, handles, threads."""
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as file:
        private = sum(int(line.split()[1]) for line in file if line.startswith("Private_"))
    return private, len(os.listdir(f"/proc/{pid}/fd")), len(os.listdir(f"/proc/{pid}/task"))


def command(charts):
    return random.choice([
        ["--open", random.choice(charts)], ["--open", random.choice(charts), "-N2"], ["--stop"], ["--play"],
        ["--restart"], ["--seek", str(random.randrange(4))], ["--speed", str(random.randrange(1, 8))], ["--status"]])


def heard(screen):
    return "lumetra" in screen.run("pactl", "list", "sink-inputs", check=False).lower()


def main():
    words = sys.argv[1:]
    seconds, commands = (int(words.pop(0)) if words and words[0].isdigit() else n for n in (1200, 200))
    charts = [os.path.abspath(word) for word in words] or [os.path.join(TOP, "demo/demo.bms")]
    rows = []
    with Screen() as screen:
        server = harness.start_sound(screen, 44100)
        player = screen.player("-P", charts[0])
        until("its instance", screen.instances)
        until("its sound", lambda: heard(screen))

        def call(*arguments):
            done = subprocess.run([harness.LUMETRA, *arguments], env=screen.env, capture_output=True, text=True,
                                  timeout=harness.LIMIT)
            assert done.returncode == 0, (arguments, done.returncode, done.stderr)

        print("| minute | commands | memory, KiB | handles | threads |\n| --- | --- | --- | --- | --- |", flush=True)
        start, done = time.monotonic(), 0
        for row in range(ROWS):
            if row == ROWS // 2:
                server.kill()
                server.wait()
                call("--restart")  # without sound
                time.sleep(2)
                server = harness.start_sound(screen, 44100)
                until("its sound, again", lambda: heard(screen))
            end = start + seconds * (row + 1) / ROWS
            for left in range(commands // ROWS, 0, -1):
                call(*command(charts))
                done += 1
                time.sleep(max(0, (end - time.monotonic() - 3) / left))
            call("--open", charts[0])
            time.sleep(2)
            rows.append(held(player.process.pid))
            minute = (time.monotonic() - start) / 60
            print(f"| {minute:.1f} | {done} | " + " | ".join(map(str, rows[-1])) + " |", flush=True)
        call("--quit")
        player.ends(0)
    grown = [row for row in rows[2:] if row[0] > rows[1][0] + MAY_GROW or row[1:] > rows[1][1:]]
    print("IT GREW" if grown else "nothing grew after the second row")
    sys.exit(bool(grown))


main()
