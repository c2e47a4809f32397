#!/usr/bin/env python3
"""The real player on a virtual screen: window, keys, dialogs, and instances that command each other."""
import json
import os
import re
import signal
import socket
import struct
import subprocess
import sys
import time
import unittest
import urllib.parse

import harness
from harness import RESTART, SEEK, SPEED, STOP, Screen, until

DIALOG = "Open BMS(BME) file"


class EndToEnd(unittest.TestCase):
    def test_window(self):
        """Title, place, size, state and the picture."""
        with Screen() as screen:
            text = "#GENRE 試験\n#TITLE 曲名ソ\n#ARTIST 作者\n#BPM 150\n#01011:01\n#02011:01\n"
            path = screen.chart(text=text.encode("cp932"))
            player = screen.player("-X40", "-Y60", "-N20", "-M2", path)
            window = player.find("曲名ソ")
            self.assertIn("-試験- 曲名ソ  [作者] ", screen.windows())
            self.assertEqual(screen.client(window)[2:], (452, 280))
            state = screen.property(window, "_NET_WM_STATE", "WM_CLASS", "_NET_FRAME_EXTENTS", "_NET_WM_ICON")
            self.assertIn("_NET_WM_STATE_ABOVE", state)
            self.assertIn('"lumetra", "Lumetra"', state)
            extents = state.split("_NET_FRAME_EXTENTS(CARDINAL) = ")[1].split("\n")[0].split(",")
            self.assertEqual((player.x - int(extents[0]), player.y - int(extents[2])), (40, 60))
            tempo = [(285 + 6 * i, 259) for i in (0, 1, 2, 4, 5)]
            until("the tempo", lambda: [player.number(*place) for place in tempo] == [1, 5, 0, 0, 0])
            self.assertEqual(player.bar(), 20)
            white, grey, dark, green = 0xFFFFFF, 0x808080, 0x2D2D2D, 0x00FF00
            for x, y, colour in ((194, 0, white), (451, 257, white), (20, 100, grey), (175, 279, grey),
                                 (32, 50, dark), (100, 100, 0), (24, 266, 0), (24, 265, green),
                                 (120, 268, green), (20, 268, white)):  # row 268: the line of measure 20
                self.assertEqual(player.pixel(x, y), colour, (x, y))
            player.stands()  # without -P

    def test_enlarged(self):
        """Twice as large, with the same coordinates for the program."""
        with Screen() as screen:
            player = screen.player("-X40", "-Y60", screen.chart(), env={"LUMETRA_SCALE": "2"})
            player.window = screen.window("E2E")
            until("the doubled size", lambda: screen.client(player.window)[2:] == (904, 560))
            x, y = screen.client(player.window)[:2]
            self.assertTrue(80 <= x <= 84 and 120 <= y <= 162, (x, y))
            until("a picture", lambda: any(screen.pixel(x + i, y + 530) for i in range(0, 300, 2)))
            for i in range(0, 300, 2):
                self.assertEqual(screen.pixel(x + i, y + 530), screen.pixel(x + i + 1, y + 531))

    def test_stays_on_top(self):
        for window_manager in (True, False):
            with Screen(window_manager) as screen:
                player = screen.player("-X200", "-Y200", screen.chart())
                if window_manager:
                    player.find()
                else:
                    player.window = screen.search("E2E")
                    player.x, player.y = 200, 200
                    until("its place", lambda: screen.client(player.window)[:2] == (200, 200))
                until("the picture", lambda: player.number(242, 258) is not None)
                screen.start("xev", "-geometry", "700x600+100+100", "-name", "other")
                other = screen.search("other")
                until("the other window's white", lambda: screen.pixel(120, 650) == 0xFFFFFF)
                screen.run("xdotool", "windowraise", other)
                until("the player over it", lambda: player.number(242, 258) is not None)
                self.assertEqual(screen.pixel(120, 650), 0xFFFFFF)

    def test_keys(self):
        with Screen() as screen:
            player = screen.player(screen.chart())
            window = player.find()
            for key, state in (("space", player.stands), ("Return", player.runs), ("space", player.stands),
                               ("space", player.runs)):
                screen.keys(window, key)
                state()
            screen.keys(window, "Escape")
            player.ends(0)
            player = screen.player(screen.chart())
            screen.keys(player.find(), "alt+F4")  # the window manager's own
            player.ends(0)

    def test_commands(self):
        """From the command line, and from the example of docs/remote.md."""
        example = os.path.join(os.path.dirname(__file__), "../../docs/examples/lumetra_remote.py")
        with Screen() as screen:
            def tell(*arguments):
                return subprocess.run([sys.executable, example, *arguments], env=screen.env,
                                      timeout=harness.LIMIT, stderr=subprocess.DEVNULL).returncode

            self.assertEqual(tell("stop"), 1)  # nobody there
            player = screen.player("-P", screen.chart())
            player.find()
            player.runs()
            self.assertEqual(screen.remote("-S"), 1)
            player.stands()
            self.assertEqual(tell("play"), 0)
            player.runs()
            self.assertEqual(screen.remote("-M3", "-N7", "-R"), 1)
            until("measure 7", lambda: player.bar() == 7)
            self.assertEqual(player.messages()[-3:], [(SPEED, 300), (SEEK, 7), (RESTART, 0)])
            for arguments in (("seek", "12"), ("speed", "2.5"), ("stop",)):
                self.assertEqual(tell(*arguments), 0)
            until("all messages", lambda: player.messages()[-3:] == [(SEEK, 12), (SPEED, 250), (STOP, 0)])
            player.stands()
            self.assertEqual(tell("open", screen.chart("二.bms", title="SECOND"), "9"), 0)
            until("measure 9", lambda: player.bar() == 9)
            self.assertEqual(tell("open", screen.chart("empty.bms", "")), 1)
            self.assertEqual(screen.remote("-Q"), 1)
            player.ends(0)
            self.assertEqual(os.listdir(screen.runtime), [])
            player = screen.player(screen.chart())
            player.find()
            player.process.terminate()  # removes its socket
            player.process.wait()
            self.assertEqual(os.listdir(screen.runtime), [])

    def test_about_box_and_menu(self):
        with Screen() as screen:
            player = screen.player("-P", screen.chart())
            window = player.find()
            screen.keys(window, "shift+F10")
            player.stands()
            screen.run("xdotool", "key", "Escape")
            player.runs()
            screen.keys(window, "Menu", "a")  # the menu takes keys typed ahead
            box = screen.window("VersionInfo")
            self.assertEqual(screen.remote("-N30"), 1)  # reaches the program inside the box
            until("the seek", lambda: (SEEK, 30) in player.messages())
            screen.keys(box, "Return")
            until("measure 30", lambda: 30 <= player.bar() <= 32)
            player.runs()
            screen.keys(window, "shift+F10", "Down", "Down", "Down", "Down", "Return")
            screen.window("VersionInfo")
            self.assertEqual(screen.remote("-Q"), 1)  # ends box and program
            player.ends(0)

    def test_file_dialog(self):
        """Another chart by its composed name; a quit inside the dialog; a cancelled first dialog."""
        with Screen() as screen:
            player = screen.player(screen.chart(), env={"LC_ALL": "C.UTF-8"})
            window = player.find()
            self.assertIn("the chart is not playing", player.log())
            screen.chart("二曲目.bms", title="SECOND")
            screen.chart("zz.txt", title="NO CHART")
            screen.keys(window, "shift+F10", "l")
            dialog = screen.window(DIALOG)
            self.assertIn("_NET_WM_ICON(CARDINAL)", screen.property(dialog, "_NET_WM_ICON"))
            screen.keys(dialog, "End", "Return")  # the text file is not in the list
            player.find("SECOND")
            player.runs()
            # What was not meant to open a chart leaves the one that plays; Enter then opens it: it is marked.
            for keys in (("Down", "Tab", "Tab", "Tab", "Tab", "Return"), ("alt+a", "BackSpace", "Escape"),
                         ("Tab", "ctrl+a", "n", "o", "n", "e", "Return", "Escape")):
                screen.keys(window, "shift+F10", "l")
                screen.keys(screen.window(DIALOG), *keys)
                until("the dialog to close", lambda: DIALOG not in screen.windows())
            screen.keys(window, "shift+F10", "l")
            screen.keys(screen.window(DIALOG), "Return")
            player.find("SECOND")
            screen.keys(window, "shift+F10", "l")
            screen.keys(screen.window(DIALOG), "Tab", "ctrl+a", "quotedbl", *"SONG", "quotedbl", "Return")
            player.find("E2E")
            screen.chart("♥.bms", title="THIRD")
            for last in ("Escape", "Return"):  # each dialog has its own connection to the input method
                screen.keys(window, "shift+F10", "l")
                screen.keys(screen.window(DIALOG), "Tab")
                heart = ("Multi_key", "less", "3")
                screen.run("xdotool", "key", "ctrl+a", *heart, "period", "b", "m", "s", last)
                until("the dialog to close", lambda: DIALOG not in screen.windows())
            player.find("THIRD")
            self.assertEqual(screen.remote("--open", screen.folder), 0)  # of several charts it asks which
            screen.keys(screen.window(DIALOG), "Home", "Down", "s", "o", "Return")
            player.find("E2E")
            os.mkdir(os.path.join(screen.folder, "alone"))
            screen.chart("alone/only.BME", title="FOURTH")
            self.assertEqual(screen.remote("--open", os.path.join(screen.folder, "alone")), 0)
            player.find("FOURTH")
            screen.click(player, 700)
            time.sleep(0.3)
            self.assertNotIn(DIALOG, screen.windows())
            time.sleep(0.3)
            screen.click(player, 40)
            screen.window(DIALOG)
            self.assertEqual(screen.remote("-Q"), 1)
            player.ends(0)
            player = screen.player()
            screen.keys(screen.window(DIALOG), "Escape")
            player.ends(255)

    def test_failures(self):
        """Boxes and exit codes."""
        with Screen() as screen:
            for path, caption in ((os.path.join(screen.folder, "missing.bms"), "FileLoadError!"),
                                  (screen.chart("zero.bms", "#BPM 120\n#00011:01\n"), "CompileError!")):
                player = screen.player(path)
                box = screen.window(caption)
                self.assertEqual(screen.remote("-N5"), 1)  # nothing to seek in yet
                until("the message", player.messages)
                screen.keys(box, "Return")
                player.ends(255)
                self.assertEqual(screen.instances(), [])
            nowhere = screen.player(screen.chart(), env={"DISPLAY": ":9999"})
            nowhere.ends(255)
            self.assertIn("lumetra-render", nowhere.log())

    def test_typed_ahead(self):
        """What is typed and clicked while a chart loads does not close the box that says why it failed."""
        with Screen() as screen:
            text = "#BPM 120\n" + ("#00011:" + "01" * 500 + "\n") * 12000
            player = screen.player("-X100", "-Y100", screen.chart(text=text))
            player.window = screen.window("Now Initializing")
            player.x, player.y = screen.client(player.window)[:2]
            os.kill(player.process.pid, signal.SIGSTOP)  # so that all of this comes before the box
            screen.keys(player.window, "Return", "space", "Escape")
            screen.click(player, 40)
            self.assertNotIn("CompileError!", screen.windows())
            os.kill(player.process.pid, signal.SIGCONT)
            box = screen.window("CompileError!")
            time.sleep(0.5)
            self.assertIn("CompileError!", screen.windows())
            screen.keys(box, "Return")
            player.ends(255)

    def test_destroyed(self):
        """Another program destroys the window or a box; the display goes."""
        with Screen() as screen:
            path = screen.chart()
            player = screen.player("-P", path)
            screen.run("xdotool", "windowclose", player.find())
            player.ends(0)
            self.assertEqual(os.listdir(screen.runtime), [])
            player = screen.player("-P", path)
            screen.run("xdotool", "windowclose", screen.about(player.find()))
            player.runs()
            box = screen.about(player.window)
            screen.run("xdotool", "windowclose", player.window)
            screen.keys(box, "Return")
            player.ends(0)
            player = screen.player("-P", path)
            player.find()
            screen.server.terminate()
            player.ends(255)
            self.assertEqual(os.listdir(screen.runtime), [])

    def test_hung_sound(self):
        """A sound device that takes nothing any more: here a pipe that nobody reads."""
        with Screen() as screen:
            pipe = os.path.join(screen.folder, "pipe")
            os.mkfifo(pipe)
            reader = os.open(pipe, os.O_RDWR)
            output = {"SDL_AUDIODRIVER": "disk", "SDL_DISKAUDIOFILE": pipe}
            player = screen.player("-P", screen.chart(), env=output)
            player.find()
            time.sleep(1)  # by now it is full
            screen.keys(player.window, "Escape")
            start = time.monotonic()
            player.ends(0)
            self.assertLess(time.monotonic() - start, 0.5)
            self.assertEqual(os.listdir(screen.runtime), [])
            os.close(reader)

    def test_first_beat(self):
        """A sound at the start measure is heard from its first sample on."""
        with Screen() as screen:
            data = struct.pack("<h", 16384) * 2000
            with open(os.path.join(screen.folder, "a.wav"), "wb") as out:
                out.write(b"RIFF" + struct.pack("<I", 36 + len(data)) + b"WAVEfmt " +
                          struct.pack("<IHHIIHH", 16, 1, 1, 44100, 88200, 2, 16) + b"data" +
                          struct.pack("<I", len(data)) + data)
            sound = os.path.join(screen.folder, "sound.raw")
            path = screen.chart(text="#TITLE E2E\n#WAV01 a.wav\n#00401:01\n#02011:01\n")
            output = {"SDL_AUDIODRIVER": "disk", "SDL_DISKAUDIOFILE": sound}
            player = screen.player("-P", "-N4", path, env=output)
            player.find()
            time.sleep(1)
            self.assertEqual(screen.remote("-Q"), 1)
            player.ends(0)
            with open(sound, "rb") as heard:
                left = [frame[0] for frame in struct.iter_unpack("<ff", heard.read())]
            self.assertEqual(sum(sample != 0 for sample in left), 2000)

    def test_starts(self):
        """Of many starts at once one plays; a start after a quit plays; a stopped instance holds nobody."""
        with Screen() as screen:
            path = screen.chart()
            for _ in range(3):
                players = [screen.player("-P", path) for _ in range(10)]
                until("the others to end", lambda: sum(p.process.poll() is None for p in players) == 1)
                self.assertEqual(len(screen.instances()), 1)
                self.assertEqual(sum(p.process.poll() == 1 for p in players), 9)
                for _ in range(5):
                    self.assertEqual(screen.remote("-Q"), 1)
                    running = screen.player("-P", path)
                    until("its socket", screen.instances)
                    until("the old one to end", lambda: players[0].process.poll() is not None)
                    self.assertIsNone(running.process.poll())
                os.kill(running.process.pid, signal.SIGSTOP)
                for _ in range(6):  # more than the socket holds
                    start = time.monotonic()
                    screen.remote("-M2", "-N3", "-M1", "-N4", "-S")
                    self.assertLess(time.monotonic() - start, 0.5)
                os.kill(running.process.pid, signal.SIGCONT)
                self.assertEqual(screen.remote("-Q"), 1)
                until("the end", lambda: running.process.poll() is not None)

    def test_open(self):
        """One line for every editor: starts a player, changes its chart, and says what it could not do."""
        with Screen() as screen:
            def call(*arguments):
                done = subprocess.run([harness.LUMETRA, *arguments], env=dict(screen.env, LUMETRA_DEBUG=""),
                                      capture_output=True, timeout=harness.LIMIT, text=True)
                return done.returncode, done.stdout, done.stderr

            def status():
                code, out, _ = call("--status")
                return json.loads(out) if code == 0 else {}

            first, second = screen.chart(), screen.chart("二 %.bms", title="SECOND")
            broken = screen.chart("zero.bms", "#BPM 120\n#00011:01\n")
            for command in (("--status",), ("--stop",), ("--seek", "3")):
                self.assertEqual(call(*command)[0], 4)
            for command in (("--open", ""), ("--open", first, "--at", "x"), ("--seek", "x"),
                            ("--stop", "--quit")):
                self.assertEqual(call(*command)[0], 2)
            code, _, text = call("--open", broken)
            self.assertEqual((code, len(text.splitlines()), screen.windows()), (3, 1, {}))
            self.assertEqual(call("-N20", "--open", "song.bms", "-M2")[0], 3)  # not in this folder
            self.assertEqual(call("--wait", "-N20", "--open", first, "-M2")[0], 0)
            now = status()
            self.assertEqual((now["state"], now["speed"], now["title"]), ("running", 2, "E2E"))
            self.assertEqual(now["file"], first)
            self.assertIn(now["measure"], (20, 21))
            pid, line = now["pid"], now["line"]
            self.assertEqual(line, 5 + now["measure"])
            self.assertEqual(now["column"], 8)
            # Another chart, from every state, in the same window.
            for prepare, state in (("--stop", "paused"), ("--restart", "running")):
                self.assertEqual(call(prepare)[0], 0)
                until("the state", lambda: status()["state"] == state)
                self.assertEqual(call("--open", second, "--at", "17:3")[0], 0)
                until("the second chart", lambda: status().get("title") == "SECOND")
                until("its running", lambda: status()["state"] == "running")
                self.assertEqual(status()["measure"], 12)
            now = status()
            self.assertEqual((now["pid"], now["file"], now["speed"]), (pid, second, 2))
            self.assertEqual(now["uri"], "file://" + urllib.parse.quote(second))
            code, _, text = call("--open", broken)
            self.assertEqual((code, len(text.splitlines()), status()["title"]), (3, 1, "SECOND"))
            self.assertEqual(call("--open", first, "-N99")[2].count("last"), 1)
            until("the first chart", lambda: status()["title"] == "E2E")
            # A file dialog makes way, a box does not.
            window = screen.window("E2E")
            screen.keys(window, "shift+F10", "l")
            screen.window(DIALOG)
            self.assertEqual(call("--open", second)[0], 0)
            until("the second chart", lambda: status()["title"] == "SECOND")
            box = screen.about(window)
            code, _, text = call("--open", first)
            self.assertEqual((code, status()["title"]), (0, "SECOND"))
            self.assertIn("box", text)
            screen.keys(box, "Return")
            until("the first chart", lambda: status()["title"] == "E2E")
            for command in (("--seek", "30"), ("--speed", "1.15"), ("--play",), ("--stop",)):
                self.assertEqual(call(*command)[0], 0)
            until("all that", lambda: status()["speed"] == 1.15 and status()["measure"] >= 30)
            self.assertEqual(call("--seek", "99")[0], 5)
            os.kill(pid, signal.SIGSTOP)
            start = time.monotonic()
            self.assertEqual(call("--play")[0], 5)
            self.assertLess(time.monotonic() - start, 0.6)
            os.kill(pid, signal.SIGCONT)
            self.assertEqual(call("--quit")[0], 0)
            self.assertEqual(screen.instances() + screen.instances(".stream"), [])
            self.assertEqual(call("--open", second)[0], 0)  # at once, while the old one may still be ending
            until("the second chart", lambda: status().get("title") == "SECOND")
            self.assertNotEqual(status()["pid"], pid)
            self.assertEqual(call("-Q")[2].count("handed on"), 1)
            until("the end", lambda: not screen.windows())

    def test_recipes(self):
        """The first recipe of docs/editors.md, with the player itself."""
        with Screen() as screen:
            with open(os.path.join(harness.TOP, "docs/editors.md"), encoding="utf-8") as page:
                recipe = re.search(r"^```sh\n(.*?)^```$", page.read(), re.M | re.S)[1]
            screen.env["PATH"] = os.path.dirname(harness.LUMETRA) + ":" + screen.env["PATH"]
            screen.env["LUMETRA_DEBUG"] = ""  # its log would keep the streams open
            chart = screen.chart()
            screen.run("sh", "-c", f"{recipe}\nplay {chart} 25")  # a chart of one measure a line from line 6 on

            def status():
                return json.loads(screen.run("lumetra", "--status"))

            until("its measure", lambda: status()["measure"] in (20, 21))
            screen.run("sh", "-c", recipe + "\nhalt")
            until("its standing", lambda: status()["state"] == "paused")
            self.assertEqual(screen.remote("--quit"), 0)
            until("the end", lambda: not screen.windows())

    def test_place_and_focus(self):
        """--open keeps the keyboard where it is and the window where it was; a plain start takes the keyboard."""
        with Screen() as screen:
            screen.start("xev", "-geometry", "200x200+700+100", "-name", "editor")
            editor = int(screen.search("editor"))
            charts = [screen.chart(), screen.chart("second.bms", title="SECOND")]

            def active():
                return int(screen.run("xdotool", "getactivewindow", check=False) or 0)

            def quit_it():
                pid = json.loads(screen.run(harness.LUMETRA, "--status"))["pid"]
                self.assertEqual(screen.remote("--quit"), 0)
                until("the end", lambda: not os.path.exists(f"/proc/{pid}"))

            def settled(window):  # the window manager moves it in steps
                time.sleep(0.3)
                return screen.client(window)

            screen.run("xdotool", "windowactivate", "--sync", str(editor))
            for press in range(6):
                self.assertEqual(screen.remote("--wait", "--open", charts[press % 2]), 0)
                self.assertEqual(active(), editor, press)
            player = screen.window("SECOND")
            screen.run("xdotool", "windowminimize", player)
            until("its icon", lambda: "Iconic" in screen.property(player, "WM_STATE"))
            self.assertEqual(screen.remote("--wait", "--open", charts[0]), 0)
            until("its window", lambda: "Normal" in screen.property(player, "WM_STATE"))
            self.assertEqual(active(), editor)
            screen.run("xdotool", "windowmove", "--sync", player, "50", "60")
            place = settled(player)
            quit_it()
            for more in ((), ("-X300", "-Y200"), ()):
                self.assertEqual(screen.remote("--wait", *more, "--open", charts[0]), 0)
                player = screen.window("E2E")
                until("its place", lambda: (screen.client(player) == place) == (not more))
                place = settled(player)
                self.assertEqual(active(), editor)
                quit_it()
            screen.env["DESKTOP_STARTUP_ID"] = "launcher_TIME4000000000"
            self.assertEqual(screen.remote("--open", charts[0]), 0)
            until("the keyboard", lambda: active() == int(screen.window("E2E"), 16))
            quit_it()
            del screen.env["DESKTOP_STARTUP_ID"]
            player = screen.player(charts[0])
            until("the keyboard", lambda: active() == int(screen.window("E2E"), 16))
            player.kill()

    def test_watch(self):
        """A thousand saves, by rename and in place: the last one is loaded, and nothing is used up."""
        with Screen() as screen:
            path = screen.chart()
            player = screen.player("--watch", "-P", "-N20", path)

            def status():
                out = subprocess.run([harness.LUMETRA, "--status"], env=screen.env, capture_output=True)
                return json.loads(out.stdout) if out.returncode == 0 else {}

            def save(title, in_place):
                made = screen.chart("new.bms", title=title)
                if in_place:
                    with open(path, "wb") as old, open(made, "rb") as new:
                        old.write(new.read())
                else:
                    os.replace(made, path)

            def used():
                with open(f"/proc/{player.process.pid}/statm", encoding="ascii") as memory:
                    return len(os.listdir(f"/proc/{player.process.pid}/fd")), int(memory.read().split()[1])

            until("its running", lambda: status().get("state") == "running")
            for number in range(1000):
                save(f"SAVE {number}", number % 5 == 0)
                time.sleep(0.1 if number % 10 == 0 else 0.002)
                if number == 300:
                    handles, pages = used()

            def last():
                now = status()
                return now if (now.get("title"), now.get("state")) == ("SAVE 999", "running") else None

            now = until("the last save", last)
            self.assertEqual((now["watch"], now["refused"]), (True, ""))
            self.assertIn(now["measure"], range(20, 40))
            self.assertEqual(used()[0], handles)
            self.assertLess(used()[1] - pages, 512)
            os.remove(path)
            screen.chart(text="#BPM 120\n#00011:01\n")
            until("the refusal", lambda: "no object" in status()["refused"])
            self.assertEqual(status()["title"], "SAVE 999")
            self.assertIn("the loaded chart stays", player.log())
            self.assertEqual(screen.remote("-Q"), 1)
            player.ends(0)

    def test_channel_under_stress(self):
        """Garbage, half lines, a line without end, many connections and one that never reads."""
        with Screen() as screen:
            player = screen.player("-P", screen.chart())
            player.find()
            path = until("its channel", lambda: screen.instances(".stream"))[0]

            def connect():
                client = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
                client.connect(path)
                client.settimeout(harness.LIMIT)
                self.addCleanup(client.close)
                return client

            deaf = connect()
            flood = b'{"command":"status"}\n' * 100
            try:
                deaf.settimeout(2)
                while True:
                    deaf.send(flood)  # its answers pile up until it is dropped
            except OSError:
                pass
            endless = connect()
            with self.assertRaises(OSError):
                for _ in range(100):
                    endless.send(b"x" * 65536)
                    time.sleep(0.01)
            garbage = connect()
            garbage.sendall(b"\xff\0{[\n" * 100 + b'{"id":7,"com')
            many = [connect() for _ in range(200)]
            player.runs()
            for client in many:
                client.close()
            garbage.sendall(b'mand":"status"}\n')
            answers = b""
            while b'"id":7' not in answers:
                answers += garbage.recv(65536)
            self.assertEqual(answers.count(b"not-json"), 100)
            times = []
            for _ in range(50):
                start = time.monotonic()
                garbage.sendall(b'{"id":8,"command":"status"}\n')
                garbage.recv(65536)
                times.append(time.monotonic() - start)
            self.assertLess(sorted(times)[25], 0.005)
            player.runs()
            self.assertEqual(screen.remote("-Q"), 1)
            player.ends(0)


if __name__ == "__main__":
    unittest.main()
