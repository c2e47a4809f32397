#!/usr/bin/env python3
"""races.py [ROUNDS]: starts, ends and kills players at random moments on a virtual screen, and holds what must stay.

Too long for a test. Each round starts 20 players at once, of which one must play; ends one and starts another at once;
and kills starting and playing ones at random, after which the next command must work and nothing of the dead be left.
"""
import random
import subprocess
import sys
import time

import harness
from harness import Screen, until


def call(screen, *arguments):
    return subprocess.Popen([harness.LUMETRA, *arguments], env=screen.env, stdout=subprocess.DEVNULL,
                            stderr=subprocess.DEVNULL)


def together(screen, chart):
    """Of 20 starts one plays, and the others hand on."""
    starts = [call(screen, "-P", chart) for _ in range(20)]
    until("19 to end", lambda: sum(start.poll() is None for start in starts) == 1)
    codes = sorted(start.poll() for start in starts if start.poll() is not None)
    assert codes == [1] * 19, codes
    assert len(screen.instances()) == 1, screen.instances()
    return next(start for start in starts if start.poll() is None)


def anew(screen, chart, player):
    """A start right after -Q plays."""
    assert call(screen, "-Q").wait() == 1
    after = call(screen, "-P", chart)
    assert player.wait(timeout=harness.LIMIT) == 0
    until("its announcement", screen.instances)
    assert after.poll() is None, "the start was swallowed"
    return after


def killed(screen, chart, player):
    """Whatever is killed, the next command finds or starts one player."""
    running = [player]
    for _ in range(random.randint(1, 8)):
        running.append(call(screen, *random.choice([("-P", chart), ("--open", chart), ("-N3",), ("--stop",), ("-Q",)])))
        time.sleep(random.random() / 50)
        if random.random() < 0.6:
            random.choice(running).kill()
    for process in running:  # what --open has started is no child of this program
        process.kill()
        process.wait()
    opened = call(screen, "--wait", "--open", chart).wait(timeout=harness.LIMIT)
    assert opened in (0, 5), opened
    until("one player", lambda: len(screen.instances()) == len(screen.instances(".stream")) == 1, limit=3)
    ended = subprocess.run([harness.LUMETRA, "--quit"], env=screen.env, capture_output=True, check=False)
    assert ended.returncode == 0, (opened, ended)
    until("the end", lambda: not screen.instances())


def main(rounds=200):
    with Screen() as screen:
        screen.env["LUMETRA_DEBUG"] = ""
        chart = screen.chart()
        for number in range(rounds):
            seed = random.randrange(1 << 30)
            random.seed(seed)
            try:
                player = together(screen, chart)
                for _ in range(3):
                    player = anew(screen, chart, player)
                killed(screen, chart, player)
            except BaseException:
                print(f"round {number}, seed {seed}", file=sys.stderr)
                raise
    print(f"{rounds} rounds")


if __name__ == "__main__":
    main(*map(int, sys.argv[1:2]))
