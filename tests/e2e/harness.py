"""A private screen, a window manager and real instances of the player, for the tests of this folder."""
import mmap
import os
import re
import shutil
import signal
import struct
import subprocess
import tempfile
import time

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
LUMETRA = os.environ.get("LUMETRA") or os.path.join(TOP, "build/release/src/app/lumetra")
LIMIT = float(os.environ.get("E2E_LIMIT", "15"))  # seconds that anything awaited may take
DISPLAY = os.environ.get("E2E_DISPLAY")  # a display number; by default the first free one

STOP, RESTART, SEEK, SPEED = 1126, 1128, 1129, 1130

# The digits of the screen, four by seven pixels, each row as a hexadecimal digit.
GLYPHS = {"0": "6999996", "1": "2622222", "2": "691248F", "3": "6912196", "4": "266AF22", "5": "F8E9196",
          "6": "698E996", "7": "F122444", "8": "6996996", "9": "6997196"}


def until(what, condition, limit=None, tell=lambda: ""):
    """The first true value of the condition; fails when it stays false, with what tell gives."""
    end = time.monotonic() + (limit or LIMIT)
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"waited in vain for {what} {tell()}")
        time.sleep(0.005)


class Screen:
    """Xvfb with openbox, a private run-time folder and a folder for charts; a context manager."""

    def __init__(self, window_manager=True):
        self.folder = tempfile.mkdtemp(prefix="lum", dir="/tmp")
        self.runtime = os.path.join(self.folder, "run")
        os.mkdir(self.runtime, 0o700)
        self.started = []
        self.players = []
        self.server = self._start_server()
        self.env = dict(os.environ, DISPLAY=f":{self.number}", XDG_RUNTIME_DIR=self.runtime, LC_ALL="C",
                        LUMETRA_DEBUG="1", HOME=self.folder, LUMETRA_SCALE="1")
        self.env.setdefault("SDL_AUDIODRIVER", "dummy")
        for name in ("LANG", "XDG_STATE_HOME", "DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN"):
            self.env.pop(name, None)
        with open(os.path.join(self.folder, "Xvfb_screen0"), "rb") as frame:
            self.frame = mmap.mmap(frame.fileno(), 0, access=mmap.ACCESS_READ)
        if window_manager:
            # While openbox starts it may overlook a window, so wait until it says that it has started.
            up = os.path.join(self.folder, "up")
            self.start("openbox", "--startup", "touch " + up)
            until("the window manager", lambda: os.path.exists(up))

    def _start_server(self):
        for _ in range(50):
            ready, told = os.pipe()
            server = subprocess.Popen(
                ["Xvfb", "-screen", "0", "1024x768x24", "-fbdir", self.folder, "-noreset", "-nolisten", "tcp",
                 "-displayfd", str(told), *([f":{DISPLAY}"] if DISPLAY else [])], pass_fds=[told],
                stderr=subprocess.DEVNULL)
            os.close(told)
            with os.fdopen(ready) as answer:
                number = answer.read().strip()  # nothing when the number is taken
            if number:
                self.number = int(number)
                return server
            server.wait()
        raise AssertionError("no screen can be started")

    def start(self, *command):
        self.started.append(subprocess.Popen(command, env=self.env, stdout=subprocess.DEVNULL,
                                             stderr=subprocess.DEVNULL))
        return self.started[-1]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in [p.process for p in self.players] + self.started + [self.server]:
            if process.poll() is None:
                process.kill()
            process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)

    def run(self, *command, check=True):
        done = subprocess.run(command, env=self.env, capture_output=True, timeout=LIMIT * 2)
        if check and done.returncode != 0:
            raise AssertionError(f"{command}: {done.stderr.decode(errors='replace')}")
        return done.stdout.decode("utf-8", "replace")

    # --- the picture ---

    def pixel(self, x, y):
        """0xRRGGBB of the whole screen."""
        header = struct.unpack(">25I", self.frame[:100])
        start = header[0] + header[19] * 12 + y * header[12] + x * 4
        return int.from_bytes(self.frame[start:start + 4], "little") & 0xFFFFFF

    # --- windows ---

    def windows(self):
        """Titles of the managed windows and their numbers."""
        listed = self.run("xprop", "-root", "_NET_CLIENT_LIST")
        found = {}
        for window in re.findall(r"0x[0-9a-f]+", listed):
            name = re.search(r'_NET_WM_NAME\(UTF8_STRING\) = "(.*)"', self.property(window, "_NET_WM_NAME"))
            if name:
                found[name[1]] = window
        return found

    def state(self):
        """What is there, for the message of a failure."""
        players = [(p.process.poll(), p.log()[-500:]) for p in self.players]
        return f"\nwindows: {self.windows()}\nplayers: {players}\nothers: {[p.poll() for p in self.started]}"

    def property(self, window, *names):
        done = subprocess.run(["xprop", "-id", window, *names], env=dict(self.env, LC_ALL="C.UTF-8"),
                              capture_output=True, timeout=LIMIT)
        return done.stdout.decode("utf-8", "replace")

    def window(self, title):
        def find():
            return next((w for name, w in self.windows().items() if title in name), None)
        return until(f"a window called {title}", find, tell=self.state)

    def search(self, name):
        """As window, where no window manager lists them."""
        return until(f"a window called {name}", lambda: self.run(
            "xdotool", "search", "--name", name, check=False).split()[:1])[0]

    def client(self, window):
        """x, y, width, height of its inside on the screen."""
        text = self.run("xwininfo", "-id", window)
        return tuple(int(re.search(key + r":\s+(-?\d+)", text)[1]) for key in
                     ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))

    def keys(self, window, *keys):
        self.run("xdotool", "windowactivate", "--sync", window)
        self.run("xdotool", "key", "--clearmodifiers", *keys)

    def about(self, window):
        """The box that the player's menu opens. Keys are lost while a busy window manager moves the focus."""
        for _ in range(5):
            self.keys(window, "shift+F10", "a")
            try:
                return until("a box", lambda: next((w for n, w in self.windows().items() if "VersionInfo" in n), None), 4)
            except AssertionError:
                pass
        return self.window("VersionInfo")

    def click(self, player, delay, count=2):
        """Presses the left button so often in the player's window, delay ms apart."""
        self.run("xdotool", "mousemove", str(player.x + 100), str(player.y + 100),
                 "click", "--repeat", str(count), "--delay", str(delay), "1")

    # --- the player ---

    def chart(self, name="song.bms", text=None, title="E2E"):
        path = os.path.join(self.folder, name)
        if text is None:
            text = f"#PLAYER 1\n#GENRE test\n#TITLE {title}\n#ARTIST nobody\n#BPM 120\n"
            text += "".join(f"#{measure:03}11:01000100\n" for measure in range(1, 60))
        with open(path, "wb") as out:  # only CR LF ends a line
            out.write((text if isinstance(text, bytes) else text.encode()).replace(b"\n", b"\r\n"))
        return path

    def player(self, *arguments, env=None):
        self.players.append(Player(self, arguments, env))
        return self.players[-1]

    def remote(self, *arguments):
        """Runs an instance to its end; its exit code."""
        return subprocess.run([LUMETRA, *arguments], env=self.env, stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL, timeout=LIMIT).returncode

    def instances(self, ending=""):
        """The sockets of the instances on this screen: for messages, or with ".stream" those with answers."""
        folder = os.path.join(self.runtime, f"lumetra-{self.number}")
        try:
            return sorted(os.path.join(folder, name) for name in os.listdir(folder)
                          if re.fullmatch(r"Lumetra_ZN\.\d+" + re.escape(ending), name))
        except FileNotFoundError:
            return []


class Player:
    def __init__(self, screen, arguments, env):
        self.screen = screen
        self.log_path = os.path.join(screen.folder, f"log{len(screen.players)}")
        with open(self.log_path, "wb") as log:
            self.process = subprocess.Popen([LUMETRA, *arguments], env={**screen.env, **(env or {})},
                                            stderr=log, stdout=log)

    def log(self):
        with open(self.log_path, encoding="utf-8", errors="replace") as log:
            return log.read()

    def messages(self):
        """The messages of other instances that it has taken, in order: number and first parameter."""
        return [(int(number), int(value))
                for number, value in re.findall(r"host: message (\d+) (-?\d+)", self.log())]

    def ends(self, code):
        got = self.process.wait(timeout=LIMIT)
        assert got == code, f"exit code {got}, not {code}\n{self.log()}"

    def kill(self):
        self.process.send_signal(signal.SIGKILL)
        self.process.wait()

    # --- what its window shows ---

    def find(self, title="E2E"):
        self.window = self.screen.window(title)
        self.x, self.y = self.screen.client(self.window)[:2]
        until("the first picture", lambda: self.pixel(195, 257) != 0 or self.number(242, 258) is not None)
        return self.window

    def pixel(self, x, y):  # of its client area
        return self.screen.pixel(self.x + x, self.y + y)

    def number(self, x, y):
        """The digit whose cell has its corner there, None when there is none."""
        rows = ""
        for row in range(1, 8):
            bits = [self.pixel(x + column, y + row) == 0xFFFFFF for column in range(1, 5)]
            rows += "%X" % sum(8 >> i for i in range(4) if bits[i])
        return next((int(digit) for digit, glyph in GLYPHS.items() if glyph == rows), None)

    def read(self, *places):
        """The digits at these places, once the last is there: a picture may just be being drawn."""
        def digits():
            found = [self.number(x, y) for x, y in places]
            return found if found[-1] is not None else None
        return until("the digits", digits)

    def seconds(self):
        """The play time shown."""
        minutes, tens, ones = self.read((224, 258), (236, 258), (242, 258))
        return (minutes or 0) * 60 + (tens or 0) * 10 + ones

    def bar(self):
        """The measure shown, of a chart of two-digit length."""
        tens, ones = self.read((218, 269), (224, 269))
        return (tens or 0) * 10 + ones

    def runs(self):
        first = self.seconds()
        until("the play time to go on", lambda: self.seconds() != first)

    def stands(self):
        """The clock is held while pictures go on being drawn (the first 255 of them show no rate)."""
        first = self.seconds()
        end = time.monotonic() + 1.3
        while time.monotonic() < end:
            assert self.seconds() == first, "the play time goes on"
            time.sleep(0.05)
