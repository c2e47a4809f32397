#!/usr/bin/env python3
"""faults.py [memory|write|handles|slow]... [--every N]: the machine fails, one call after the other.

Too long for a test. Runs each tool on a small package, counts its calls, and runs it again for each of them (or each
N-th), which then fails. No run may crash or hang; each ends with 0 and the whole right output, or with its code for
failed outputs and the old output as it was; nothing else is left, and no input is changed.
"""
import concurrent.futures
import os
import resource
import shutil
import subprocess
import sys
import tempfile

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BUILD = os.environ.get("BUILD", os.path.join(TOP, "build/release"))
MEDIA = os.path.join(TOP, "tests/platform/substitutes/data/")
SOUNDS = os.path.join(TOP, "tests/sound/data/files/")

CHART = """#TITLE faults
#BPM 240
#WAV01 pcm.wav
#WAV02 adpcm.wav
#WAV03 ogg.wav
#WAV04 xa.xa
#WAV0Z gone.wav
#WAVZZ pcm.wav
#BMP01 a.bmp
#BMP02 b.bmp
#00101:0102030Z
#00111:01ZZ04
#00104:0102
#00151:0101
#00211:01
"""
TOOLS = {
    "render": ["tools/render/lumetra-render", "--force", "--modern", "--to", "1", "--wav", "out/a.wav", "--trace",
               "out/a.txt", "--png", "out/pictures", "--at", "1000", "song/song.bms"],
    "audio": ["tools/render/lumetra-render", "--force", "--to", "1", "--audio", "out/a.flac", "--normalize", "-14",
              "song/song.bms"],
    "strip": ["tools/render/lumetra-render", "--force", "--strip", "out/a.png", "song/song.bms"],
    "check": ["tools/check/lumetra-check", "--json", "song/song.bms"],
    "fix": ["tools/check/lumetra-check", "--fix", "out/fixed.bms"],
    "convert": ["tools/convert/lumetra-convert", "--copy", "song/song.bms", "out/package"],
    "encode": ["tools/xa/lumetra-xa", "encode", "--force", "song/pcm.wav", "out/a.xa"],
    "decode": ["tools/xa/lumetra-xa", "decode", "--force", "song/xa.xa", "out/b.wav"],
}


def package(folder):
    """song/ with a file of each kind, out/ with what is to be replaced."""
    os.makedirs(folder + "/song")
    os.makedirs(folder + "/out")
    for name, source in (("pcm.wav", SOUNDS + "short_stereo16"), ("adpcm.wav", SOUNDS + "stream_ms_stereo"),
                         ("xa.xa", SOUNDS + "stream_xa"), ("ogg.ogg", MEDIA + "square.ogg"),
                         ("a.png", MEDIA + "rgb_31.png"), ("b.jpg", MEDIA + "shades.jpg")):
        shutil.copy(source, f"{folder}/song/{name}")
    with open(folder + "/song/song.bms", "w", newline="\r\n") as chart:
        chart.write(CHART)
    for name in ("a.wav", "a.txt", "a.flac", "a.png", "a.xa", "b.wav"):
        with open(f"{folder}/out/{name}", "w") as old:
            old.write("old")
    with open(folder + "/out/fixed.bms", "w") as chart:
        chart.write(CHART.replace("#TITLE faults", "#TITLE faults   "))


def tree(folder):
    """The files of a folder with their bytes; links with their targets."""
    found = {}
    for place, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(place, name)
            with open(path, "rb") as file:
                found[os.path.relpath(path, folder)] = file.read()
    return found


class Tool:
    """A tool in a copy of the package, and what it does when nothing fails."""

    def __init__(self, name, scratch, preload):
        self.name, self.preload = name, preload
        self.command = [os.path.join(BUILD, TOOLS[name][0])] + TOOLS[name][1:]
        self.start = os.path.join(scratch, name)
        package(self.start)
        self.before = tree(self.start)
        self.code, self.after, self.said = self.run({})
        if self.code != (name in ("check", "fix")):  # which have findings
            sys.exit(f"{name}: exit code {self.code} without any fault: {self.said}")

    def run(self, env, limit=None):
        """Exit code, files and standard error of a run in a fresh copy; None for a hang."""
        with tempfile.TemporaryDirectory(dir=os.path.dirname(self.start)) as folder:
            home = folder + "/home"
            shutil.copytree(self.start, home)
            os.mkdir(folder + "/tmp")

            def bounds():
                if limit:
                    resource.setrlimit(resource.RLIMIT_NOFILE, (limit, limit))
            try:
                done = subprocess.run(self.command, cwd=home, preexec_fn=bounds, timeout=60, capture_output=True,
                                      env={**os.environ, "TMPDIR": folder + "/tmp", **env})
            except subprocess.TimeoutExpired:
                return None, {}, "hangs"
            unique = os.path.basename(folder).encode()  # traces have the chart's path
            files = {name: data.replace(unique, b"") for name, data in tree(home).items()}
            files.update({"TMP/" + name: b"" for name in os.listdir(folder + "/tmp")})
            said = done.stderr + (done.stdout if self.name == "convert" else b"")  # its findings
            return done.returncode, files, said.decode(errors="replace")

    def fault(self, kind, at, limit=None):
        """What is wrong with the run in which that call fails; None when all is well."""
        env = {"LD_PRELOAD": self.preload, "FAULT_KIND": kind, "FAULT_AT": str(at)} if kind else {}
        code, files, said = self.run(env, limit)
        what = f"{self.name}, {kind or 'handles'} {at or limit}: exit code {code}: {said.strip()[:300]}"
        if code is None or code < 0 or code == 99 or "crashed" in said:
            return what
        partial = code == self.code and kind != "write"  # such as without a sound, which it has told
        for name in set(files) | set(self.before) | set(self.after):
            now, old, new = (files.get(name), self.before.get(name), self.after.get(name))
            if now == new or (code != self.code and now == old):
                continue
            # By the system's rules a layer, a title or a list without memory is left out, and nobody is told.
            silent = kind == "memory" and self.name in ("render", "audio", "strip")
            if code == self.code and (kind == "write" or said == self.said) and not silent:
                return f"{what}: {name} is not what it should be, and nothing tells it"
            if not partial and now is not None and now not in (old, new):
                return f"{what}: {name} is neither old nor new"
        return None if code == self.code or said != self.said else what + ": no word of it"

    def count(self, kind):
        with tempfile.NamedTemporaryFile("r") as file:
            self.run({"LD_PRELOAD": self.preload, "FAULT_KIND": kind, "FAULT_COUNT": file.name})
            return int(file.read() or 0)


def main():
    words = sys.argv[1:]
    every = int(words.pop(words.index("--every") + 1)) if "--every" in words else 1
    kinds = [word for word in words if word[0] != "-"] or ["memory", "write", "handles", "slow"]
    bad = 0
    with tempfile.TemporaryDirectory() as scratch, concurrent.futures.ThreadPoolExecutor() as pool:
        preload = scratch + "/preload.so"
        subprocess.run(["g++", "-std=c++20", "-O1", "-fno-builtin", "-U_FORTIFY_SOURCE", "-shared", "-fPIC", "-o",
                        preload, os.path.join(TOP, "tests/machine/preload.cpp")], check=True)
        print(f"{'tool':10} {'fault':8} {'runs':>6} {'wrong':>6}", flush=True)
        for name in TOOLS:
            tool = Tool(name, scratch, preload)
            for kind in kinds:
                if kind == "handles":
                    faults = [(None, 0, limit) for limit in range(3, 21)]
                elif kind == "slow":
                    faults = [("read", at, None) for at in {1, max(tool.count("read"), 1)}]
                else:
                    step = every if kind == "memory" else 1
                    faults = [(kind, at, None) for at in range(1, tool.count(kind) + 1, step)]
                found = [what for what in pool.map(lambda fault: tool.fault(*fault), faults) if what]
                print(f"{name:10} {kind:8} {len(faults):6} {len(found):6}", flush=True)
                print("".join(f"    {what}\n" for what in found[:5]), end="", flush=True)
                bad |= bool(found)
    sys.exit(bad)


main()
