#!/usr/bin/env python3
"""The real player on a real (virtual) screen: window, keys, dialogs, and instances that command each other."""
import os
import stat
import subprocess
import sys
import time
import unittest

import harness
from harness import HOST, LOAD, PLAY, QUIT, RESTART, SEEK, SPEED, STOP, Screen, packet, until


class EndToEnd(unittest.TestCase):
    def test_window(self):
        """Title, place, size, state and the picture."""
        with Screen() as screen:
            path = screen.chart(text="#PLAYER 1\n#GENRE 試験\n#TITLE 曲名ソ\n#ARTIST 作者\n#BPM 150\n#01011:01\n#02011:01\n"
                                .encode("cp932"))
            player = screen.player("-X40", "-Y60", "-N20", "-M2", path)
            window = player.find("曲名ソ")
            self.assertIn("-試験- 曲名ソ  [作者] ", screen.windows())
            self.assertEqual(screen.client(window)[2:], (452, 280))
            state = screen.property(window, "_NET_WM_STATE", "WM_CLASS", "_NET_FRAME_EXTENTS", "_NET_WM_ICON")
            self.assertIn("_NET_WM_STATE_ABOVE", state)
            self.assertIn('"lumetra", "Lumetra"', state)
            left, _, top, _ = map(int, state.split("_NET_FRAME_EXTENTS(CARDINAL) = ")[1].split("\n")[0].split(","))
            self.assertEqual((player.x - left, player.y - top), (40, 60))
            until("the tempo", lambda: [player.number(285 + 6 * i, 259) for i in (0, 1, 2, 4, 5)] == [1, 5, 0, 0, 0])
            self.assertEqual(player.bar(), 20)
            white, grey, dark, green = 0xFFFFFF, 0x808080, 0x2D2D2D, 0x00FF00
            for x, y, colour in ((194, 0, white), (451, 257, white), (20, 100, grey), (175, 279, grey), (32, 50, dark),
                                 (100, 100, 0), (24, 266, 0), (24, 265, green), (120, 268, green), (20, 268, white)):
                self.assertEqual(player.pixel(x, y), colour, (x, y))  # row 268: the line of measure 20
            player.stands()  # without -P

    def test_keys(self):
        with Screen() as screen:
            player = screen.player(screen.chart())
            window = player.find()
            screen.keys(window, "space")
            player.stands()
            screen.keys(window, "Return")
            player.runs()
            screen.keys(window, "space")
            player.stands()
            screen.keys(window, "space")
            player.runs()
            screen.keys(window, "Escape")
            player.ends(0)
            self.assertEqual(os.listdir(screen.runtime), [])
            player = screen.player(screen.chart())
            screen.keys(player.find(), "alt+F4")  # the window manager's own
            player.ends(0)

    def test_remote_commands(self):
        with Screen() as screen:
            player = screen.player("-P", screen.chart())
            player.find()
            player.runs()
            self.assertEqual(screen.remote("-S"), 1)
            until("1126", lambda: (STOP, 0) in player.messages())
            player.stands()
            self.assertEqual(screen.remote("-P"), 1)
            player.runs()
            self.assertEqual(screen.remote("-N40"), 1)
            until("measure 40", lambda: 40 <= player.bar() <= 41)
            self.assertEqual(screen.remote("-M3", "-N7", "-R"), 1)
            until("measure 7", lambda: player.bar() == 7)
            self.assertEqual(player.messages()[-3:], [(SPEED, 300), (SEEK, 7), (RESTART, 0)])
            self.assertEqual(screen.remote("-N20", "-P", "other.bms"), 1)
            until("measure 20", lambda: player.bar() == 20)
            self.assertEqual(screen.remote("-Q"), 1)
            player.ends(0)
            self.assertEqual(os.listdir(screen.runtime), [])
            self.assertEqual(screen.remote("-Q"), 1)  # nobody to tell

    def test_hosts(self):
        """Instances with -D play beside each other and are deaf from then on."""
        with Screen() as screen:
            path = screen.chart()
            first = screen.player("-P", path)
            first.find()
            second = screen.player("-D", path)
            until("two instances", lambda: len(screen.instances()) == 2)
            until("the word to the first", lambda: (HOST, 0) in first.messages())
            self.assertEqual(screen.remote("-Q"), 1)  # two others: nothing is sent
            second.process.terminate()
            second.process.wait()
            self.assertEqual(len(screen.instances()), 1)
            self.assertEqual(screen.remote("-Q"), 1)
            until("1125", lambda: (QUIT, 0) in first.messages())
            first.runs()
            screen.keys(first.window, "Escape")
            first.ends(0)

    def test_many_remotes(self):
        """Two hundred instances in a row: none is lost, out of order or left behind."""
        with Screen() as screen:
            player = screen.player(screen.chart())
            player.find()
            sent = [(SPEED, 10 + i) for i in range(200)]
            for _, speed in sent:
                self.assertEqual(screen.remote(f"-M{speed // 100}.{speed % 100:02}", "-S"), 1)
            until("the last of them", lambda: len(player.messages()) >= 400)
            speeds = [message for message in player.messages() if message[0] == SPEED]
            # Hundredths are truncated from a product of doubles, so some are one less than typed.
            self.assertEqual(len(speeds), 200)
            for (_, got), (_, wanted) in zip(speeds, sent):
                self.assertTrue(got in (wanted, wanted - 1) or wanted == 10, (got, wanted))
            self.assertEqual(len(screen.instances()), 1)
            self.assertEqual(len(os.listdir(screen.runtime)), 1)

    def test_killed(self):
        """An instance that was killed leaves nothing that disturbs the next."""
        with Screen() as screen:
            path = screen.chart()
            player = screen.player(path)
            player.find()
            player.kill()
            self.assertEqual(len(screen.instances()), 1)
            self.assertEqual(screen.remote("-R", "-Q"), 1)  # alone: -R does nothing, -Q ends it
            self.assertEqual(screen.instances(), [])
            player = screen.player("-P", path)
            player.find()
            self.assertEqual(screen.remote("-Q"), 1)
            player.ends(0)
            player = screen.player(path)
            player.find()
            player.process.terminate()  # cleans up behind itself
            player.process.wait()
            self.assertEqual(os.listdir(screen.runtime), [])

    def test_while_loading(self):
        """Five hundred commands to an instance that still loads are all carried out, in their order."""
        with Screen() as screen:
            line = "01" * 500
            text = "#TITLE E2E\n#BPM 120\n" + "".join(f"#{measure:03}01:{line}\n" for measure in range(1, 998)) * 14
            player = screen.player(screen.chart(text=text))
            sending = screen.sender()
            for i in range(500):
                sending.send(packet(SPEED, i))
            self.assertEqual(player.messages(), [])
            screen.window("Now Initializing")  # it still loads, and all have been sent
            until("five hundred messages", lambda: len(player.messages()) == 500, 60)
            self.assertEqual([value for _, value in player.messages()], list(range(500)))

    def test_closed_door(self):
        """What is no message is dropped; so is whatever another user sends."""
        with Screen() as screen:
            player = screen.player("-P", screen.chart())
            player.find()
            sending = screen.sender()
            good = packet(SPEED, 123)
            for bad in (b"", b"x", good[:-1], good + b"\0", b"\0" * 32, good.replace(b"LMTR", b"LMTr"),
                        good[:4] + b"\2" + good[5:], packet(16), packet(70, 0, 1), packet(0xC000), b"x" * 60000,
                        good[:7] + b"\1" + good[8:]):
                sending.send(bad)
            sending.send(good)
            until("the good one", player.messages)
            self.assertEqual(player.messages(), [(SPEED, 123)])
            self.assertEqual(stat.S_IMODE(os.stat(os.path.dirname(screen.instances()[0])).st_mode), 0o700)
            if os.geteuid() == 0:
                # Even with the door held open by this user.
                stranger = os.fork()
                if stranger == 0:
                    os.setuid(65534)
                    os._exit(0 if sending.send(packet(QUIT)) else 1)
                self.assertEqual(os.waitpid(stranger, 0)[1], 0)
            sending.send(packet(SPEED, 124))
            until("the next good one", lambda: (SPEED, 124) in player.messages())
            self.assertEqual(player.messages(), [(SPEED, 123), (SPEED, 124)])
            player.runs()

    def test_unsafe_folder(self):
        """A folder that others may write to, or a link to one, is not used: the instance plays alone and says so."""
        with Screen() as screen:
            path = screen.chart()
            folder = os.path.join(screen.runtime, f"lumetra-{screen.number}")
            os.mkdir(folder)
            os.chmod(folder, 0o777)
            player = screen.player(path)
            player.find()
            self.assertEqual(os.listdir(folder), [])
            self.assertIn("is not a folder of this user alone", player.log())
            player.kill()
            os.rmdir(folder)
            os.mkdir(os.path.join(screen.folder, "elsewhere"), 0o700)
            os.symlink(os.path.join(screen.folder, "elsewhere"), folder)
            player = screen.player(path)
            player.find()
            self.assertEqual(os.listdir(folder), [])

    def test_flood(self):
        """Messages without end do not stop the frames."""
        with Screen() as screen:
            player = screen.player("-P", screen.chart())
            player.find()
            script = ("import socket, sys, time\n"
                      "s = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM); s.connect(sys.argv[1])\n"
                      "while True: s.send(bytes.fromhex(sys.argv[2]))\n")
            flood = screen._start([sys.executable, "-c", script, screen.instances()[0], packet(SPEED, 100).hex()])
            until("the flood", lambda: len(player.messages()) > 2000)
            player.runs()
            player.runs()
            self.assertIsNone(flood.poll())
            flood.kill()
            flood.wait()
            self.assertEqual(screen.remote("-Q"), 1)
            player.ends(0)

    def test_about_box_and_menu(self):
        with Screen() as screen:
            player = screen.player("-P", screen.chart())
            window = player.find()
            screen.keys(window, "shift+F10")
            time.sleep(0.1)
            player.stands()
            screen.run("xdotool", "key", "Escape")
            player.runs()
            screen.keys(window, "Menu", "a")
            screen.window("VersionInfo")
            player.stands()
            self.assertEqual(screen.remote("-N30"), 1)  # reaches the program inside the box
            until("the seek", lambda: (SEEK, 30) in player.messages())
            screen.keys(screen.window("VersionInfo"), "Return")
            until("measure 30", lambda: 30 <= player.bar() <= 32)
            player.runs()
            screen.keys(window, "shift+F10", "Down", "Down", "Down", "Down", "Return")
            screen.window("VersionInfo")
            self.assertEqual(screen.remote("-Q"), 1)  # ends box and program
            player.ends(0)

    def test_file_dialog(self):
        """Another chart by the keyboard, its name composed; a quit inside the dialog; a cancelled first dialog."""
        with Screen() as screen:
            player = screen.player(screen.chart(), env={"LC_ALL": "C.UTF-8"})
            window = player.find()
            screen.chart("二曲目.bms", title="SECOND")
            screen.chart("zz.txt", title="NO CHART")
            screen.keys(window, "shift+F10", "l")
            dialog = screen.window("Open BMS(BME) file")
            screen.keys(dialog, "End", "Return")  # the last of the list: the text file is not in it
            player.find("SECOND")
            player.runs()
            screen.chart("♥.bms", title="THIRD")
            for last in ("Escape", "Return"):  # each dialog has its own connection to the input method
                screen.keys(window, "shift+F10", "l")
                screen.keys(screen.window("Open BMS(BME) file"), "Tab")
                screen.run("xdotool", "key", "ctrl+a", "Multi_key", "less", "3", "period", "b", "m", "s", last)
                until("the dialog to close", lambda: "Open BMS(BME) file" not in screen.windows())
            player.find("THIRD")
            x, y = player.x + 100, player.y + 100
            screen.run("xdotool", "mousemove", str(x), str(y), "click", "--repeat", "2", "--delay", "40", "1")
            screen.window("Open BMS(BME) file")
            self.assertEqual(screen.remote("-Q"), 1)
            player.ends(0)
            player = screen.player()
            screen.keys(screen.window("Open BMS(BME) file"), "Escape")
            player.ends(255)

    def test_failures(self):
        """Boxes and exit codes."""
        with Screen() as screen:
            rows = ((os.path.join(screen.folder, "missing.bms"), "FileLoadError!"),
                    (screen.chart("zero.bms", "#BPM 120\n#00011:01\n"), "CompileError!"), (screen.folder, "FileLoadError!"))
            for path, caption in rows:
                player = screen.player(path)
                box = screen.window(caption)
                screen.keys(box, "Return")
                player.ends(255)
                self.assertEqual(screen.instances(), [])
            player = screen.player(rows[0][0])
            screen.window("FileLoadError!")
            self.assertEqual(screen.remote("-N5"), 1)  # inside a start-up box: nothing to seek in
            until("the message", player.messages)
            screen.keys(screen.window("FileLoadError!"), "Escape")
            player.ends(255)
            nowhere = screen.player(screen.chart(), env={"DISPLAY": ":9999"})
            nowhere.ends(255)
            self.assertIn("lumetra-render", nowhere.log())
            self.assertEqual(len(nowhere.log().splitlines()), 1)

    def test_stays_on_top(self):
        for window_manager in (True, False):
            with Screen(window_manager) as screen:
                player = screen.player("-X200", "-Y200", screen.chart())
                if window_manager:
                    player.find()
                else:
                    player.window = until("the window", lambda: screen.run(
                        "xdotool", "search", "--name", "E2E", check=False).split()[:1])[0]
                    player.x, player.y = until("its place", lambda: screen.client(player.window)[:2] == (200, 200)
                                               and (200, 200))
                until("the picture", lambda: player.pixel(200, 257) != 0 or player.number(242, 258) is not None)
                before = player.number(242, 258)
                screen._start(["xev", "-geometry", "700x600+100+100", "-name", "other"])
                other = until("the other window", lambda: screen.run(
                    "xdotool", "search", "--name", "other", check=False).split()[:1])[0]
                until("the other window's white", lambda: screen.pixel(120, 650) == 0xFFFFFF)
                screen.run("xdotool", "windowraise", other)
                until("the player over it", lambda: player.number(242, 258) == before)
                self.assertEqual(screen.pixel(120, 650), 0xFFFFFF)

    def test_enlarged(self):
        """Twice as large, with the same coordinates for the program."""
        with Screen() as screen:
            player = screen.player("-X40", "-Y60", screen.chart(), env={"LUMETRA_SCALE": "2"})
            player.window = screen.window("E2E")
            until("the doubled size", lambda: screen.client(player.window)[2:] == (904, 560))
            x, y = screen.client(player.window)[:2]
            self.assertTrue(80 <= x <= 84 and 120 <= y <= 162, (x, y))
            until("a doubled picture", lambda: screen.pixel(x + 2 * 195, y + 2 * 130) == screen.pixel(x + 391, y + 261)
                  and any(screen.pixel(x + i, y + 530) for i in range(0, 300, 2)))
            for i in range(0, 300, 2):
                self.assertEqual(screen.pixel(x + i, y + 530), screen.pixel(x + i + 1, y + 531))

    def test_example_for_editors(self):
        """The example of docs/remote.md."""
        example = os.path.join(os.path.dirname(__file__), "../../docs/examples/lumetra_remote.py")
        with Screen() as screen:
            def tell(*arguments):
                return subprocess.run([sys.executable, example, *arguments], env=screen.env, timeout=harness.LIMIT,
                                      stderr=subprocess.DEVNULL).returncode

            self.assertEqual(tell("stop"), 1)  # nobody there
            player = screen.player(screen.chart())
            player.find()
            self.assertEqual(tell("seek", "12"), 0)
            until("measure 12", lambda: player.bar() in (12, 13))
            self.assertEqual(tell("speed", "2.5"), 0)
            self.assertEqual(tell("stop"), 0)
            until("all messages", lambda: len(player.messages()) == 3)
            self.assertEqual(player.messages(), [(SEEK, 12), (SPEED, 250), (STOP, 0)])
            player.stands()
            self.assertEqual(tell("play"), 0)
            player.runs()
            self.assertEqual(tell("quit"), 0)
            player.ends(0)


if __name__ == "__main__":
    unittest.main()
