#!/usr/bin/env python3
"""Asks a shell what it makes of a line that is typed as far as <, and of Tab: bash, zsh or fish."""
import os
import pty
import shlex
import subprocess
import sys
import tempfile
import time

COMPLETIONS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../data/completions")
# Typed, and what it becomes; the same in every shell.
CASES = """
lumetra --ope< lumetra --open
lumetra --vers< lumetra --version
lumetra --modern --open so< lumetra --modern --open song.BMS
lumetra cha< lumetra charts/
lumetra-check --fail< lumetra-check --fail-on
lumetra-check --format sa< lumetra-check --format sarif
lumetra-check --explain long-note-l< lumetra-check --explain long-note-lost
lumetra-check song.BMS --stri< lumetra-check song.BMS --strict
lumetra-convert --dr< lumetra-convert --dry-run
lumetra-render --normal< lumetra-render --normalize
lumetra-render --pacing p< lumetra-render --pacing player
lumetra-render --wav other.w< lumetra-render --wav other.wav
lumetra-render --output-dir c< lumetra-render --output-dir charts/
lumetra-render --fps < lumetra-render --fps
lumetra-xa enc< lumetra-xa encode
lumetra-xa encode --mode fi< lumetra-xa encode --mode fine
lumetra-xa encode oth< lumetra-xa encode other.wav
"""


def bash(folder, typed):
    words = typed.split(" ")
    script = f"""source {COMPLETIONS}/lumetra.bash; COMP_WORDS=({shlex.join(words)}); COMP_CWORD={len(words) - 1}
        [[ $(complete -p {words[0]}) == *'-o filenames -F _lumetra '* ]] && _lumetra {words[0]}
        printf '%s\\n' "${{COMPREPLY[@]}}" """
    found = run(folder, "bash", "--norc", "-c", script)
    return [name + "/" * os.path.isdir(os.path.join(folder, name)) for name in found if name]


def fish(folder, typed):
    lines = run(folder, "fish", "--no-config", "-c", f"source {COMPLETIONS}/lumetra.fish; complete -C {shlex.quote(typed)}")
    return [line.split("\t")[0] for line in lines]


def zsh(folder, typed):
    """Only an interactive zsh completes, so it gets a terminal; the widget writes the line to a file."""
    answer = os.path.join(folder, ".answer")
    rc = f"""fpath=({COMPLETIONS} $fpath); autoload -U compinit; compinit -D -u
        ask() {{ zle complete-word; print -r -- "$BUFFER" > {answer}.new; mv {answer}.new {answer} }}
        zle -N ask; bindkey '^I' ask; : > {folder}/.ready"""
    with open(os.path.join(folder, ".zshrc"), "w", encoding="ascii") as out:
        out.write(rc)
    child, terminal = pty.fork()
    if child == 0:
        os.chdir(folder)
        os.execvpe("zsh", ["zsh", "-d", "-i"], dict(os.environ, ZDOTDIR=folder, TERM="dumb"))
    try:
        wait_for(os.path.join(folder, ".ready"))
        os.write(terminal, typed.encode() + b"\t")
        wait_for(answer)
        with open(answer, encoding="utf-8") as line:
            return line.read().strip()[typed.rfind(" ") + 1:].split()
    finally:
        os.close(terminal)
        os.kill(child, 9)
        os.waitpid(child, 0)


def wait_for(path):
    end = time.monotonic() + 20
    while not os.path.exists(path):
        assert time.monotonic() < end, f"waited in vain for {path}"
        time.sleep(0.01)


def run(folder, *command):
    return subprocess.run(command, cwd=folder, capture_output=True, text=True, check=False).stdout.splitlines()


def main():
    shell, failed = {"bash": bash, "zsh": zsh, "fish": fish}[sys.argv[1]], 0
    os.environ["PATH"] = os.pathsep.join(sys.argv[2:]) + os.pathsep + os.environ["PATH"]
    for typed, wanted in (case.split("<") for case in CASES.strip().splitlines()):
        with tempfile.TemporaryDirectory() as folder:
            for name in ("song.BMS", "song.wav", "other.wav"):
                open(os.path.join(folder, name), "w", encoding="ascii").close()
            os.mkdir(os.path.join(folder, "charts"))
            os.environ["HOME"] = folder
            found = shell(folder, typed)
            last = wanted.strip().split(" ")[-1]
            if found != ([last] if wanted.strip() != typed.strip() else []):
                print(f"{sys.argv[1]}: {typed!r} becomes {found}, not {last!r}")
                failed = 1
    return failed


sys.exit(main())
