"""Takes each recipe from docs/editors.md and runs it; `lumetra` is a program that notes how it was called."""
import json
import os
import re
import shutil
import stat
import subprocess
import tempfile
import time
import unittest

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
STUB = """#!/bin/sh
line=$(printf '%s\\t' "$@")
echo "$line" >> "$CALLS"  # at once: several may run
if [ "$1" = --status ]; then
  printf '{"file":"%s","line":3,"column":4}\\n' "$CHART"
  sleep 10
fi
"""


def recipes(kind):
    """The blocks of that kind on the page, in order."""
    with open(os.path.join(TOP, "docs/editors.md"), encoding="utf-8") as page:
        return re.findall(rf"^```{kind}\n(.*?)^```$", page.read(), re.M | re.S)


def has_jobs(vim):
    return shutil.which(vim) and b"+job" in subprocess.run([vim, "--version"], capture_output=True).stdout


class Editors(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="lumetra-editors")
        self.addCleanup(shutil.rmtree, self.folder)
        self.chart = self.write("my song.bms", "#TITLE x\n" * 20)
        self.calls = os.path.join(self.folder, "calls")
        os.chmod(self.write("lumetra", STUB), stat.S_IRWXU)
        self.env = dict(os.environ, PATH=self.folder + ":" + os.environ["PATH"], CALLS=self.calls, CHART=self.chart,
                        HOME=self.folder, TERM="dumb")

    def write(self, name, text):
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="utf-8") as out:
            out.write(text)
        return path

    def run_it(self, *command):
        subprocess.run(command, env=self.env, cwd=self.folder, stdin=subprocess.DEVNULL, timeout=30, check=True,
                       stdout=subprocess.DEVNULL)

    def expect(self, *calls):
        """What `lumetra` was called with since the last time, whichever came first."""
        expected = sorted(["--open " + self.chart + " --at 12" if call == "play" else call for call in calls])
        end, found = time.monotonic() + 10, []
        while len(found) < len(calls) and time.monotonic() < end:
            time.sleep(0.02)
            if os.path.exists(self.calls):
                with open(self.calls, encoding="utf-8") as noted:
                    found = sorted(line.strip().replace("\t", " ") for line in noted if line.endswith("\n"))
        self.assertEqual(found, expected)
        os.remove(self.calls)

    def test_shell(self):
        for shell in filter(shutil.which, ("dash", "bash", "zsh")):
            lines = recipes("sh")[0] + f'\nplay "{self.chart}" 12\nhalt\n'
            self.run_it(shell, "-c", lines)
            self.expect("play", "--stop")
            self.run_it(shell, "-c", recipes("sh")[0] + "\nplay song.bms\n")
            self.expect("--open song.bms --at 1")

    def test_tools(self):
        for line in "".join(recipes("text")).splitlines():
            self.run_it("sh", "-c", line.replace("FILE", "'" + self.chart + "'").replace("LINE", "12"))
        self.expect("play", "--stop", f"--open {self.chart} -N12")

    def test_tasks(self):
        for task in json.loads(recipes("json")[0])["tasks"]:
            values = {"${file}": self.chart, "${lineNumber}": "12"}
            self.assertEqual(task["type"], "process")
            self.run_it(task["command"], *(values.get(argument, argument) for argument in task["args"]))
        self.expect("play", "--stop")

    @unittest.skipUnless(has_jobs("vim"), "no Vim with jobs is installed")
    def test_vim(self):
        recipe = self.write("recipe.vim", recipes("vim")[0])
        keys = self.write("keys.vim", 'execute "normal! 12GAx"\nexecute "normal \\<F5>"\nexecute "normal \\<F6>"\n'
                          'execute "normal \\<F7>"\nsleep 700m\ncall writefile([line(".") . " " . col(".")], "place")\n'
                          'execute "normal \\<F7>"\nqall!\n')
        self.run_it("vim", "-N", "-u", recipe, "-i", "NONE", "-n", "-es", "-S", keys, self.chart)
        self.expect("play", "--stop", "--status --follow")
        self.followed("3 4")

    @unittest.skipUnless(shutil.which("emacs"), "Emacs is not installed")
    def test_emacs(self):
        recipe = self.write("recipe.el", recipes("elisp")[0])
        keys = self.write("keys.el", '(goto-char (point-min)) (forward-line 11) (insert "x")\n'
                          '(dolist (key (list "<f5>" "<f6>" "<f7>")) (call-interactively (key-binding (kbd key))))\n'
                          '(accept-process-output (get-process "lumetra-follow") 10)\n'
                          '(write-region (number-to-string (line-number-at-pos)) nil "place")\n'
                          '(call-interactively (key-binding (kbd "<f7>")))\n')
        self.run_it("emacs", "-Q", "--batch", "-l", recipe, self.chart, "-l", keys)
        self.expect("play", "--stop", "--status --follow")
        self.followed("3")

    def followed(self, where):
        with open(os.path.join(self.folder, "place"), encoding="utf-8") as place:
            self.assertEqual(place.read().strip(), where)
        with open(self.chart, encoding="utf-8") as saved:
            self.assertIn("x", saved.read().splitlines()[11].replace("#TITLE x", "", 1))


if __name__ == "__main__":
    unittest.main()
