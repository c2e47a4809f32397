#!/usr/bin/env python3
"""Commands a running Lumetra directly: lumetra_remote.py play|stop|restart|load|quit, seek MEASURE, speed FACTOR,
open FILE [MEASURE].

The message format and the place of the sockets are those of docs/remote.md; open uses the channel with answers. Ends
with 1 when no instance runs, when more than one does, when the message could not be delivered or the chart is refused.
"""
import json
import os
import re
import socket
import stat
import struct
import sys
import urllib.parse

MESSAGES = {"quit": 1125, "stop": 1126, "play": 1127, "restart": 1128, "seek": 1129, "speed": 1130, "load": 1134}


def private(folder):
    """Only a folder of this user's own, closed to others, is to be trusted."""
    try:
        info = os.lstat(folder)
    except OSError:
        return False
    return stat.S_ISDIR(info.st_mode) and info.st_uid == os.geteuid() and not info.st_mode & 0o077


def display_key(display):
    machine, colon, number = display.rpartition(":")
    name = number.split(".")[0] if colon else display
    if machine not in ("", "unix"):
        name = machine + ":" + name
    return re.sub(r"[^A-Za-z0-9_-]", "_", name)[:40] or "none"


def instance_folder():
    key = display_key(os.environ.get("DISPLAY", ""))
    runtime = os.environ.get("XDG_RUNTIME_DIR", "")
    if runtime.startswith("/") and len(runtime) < 40 and private(runtime):
        return f"{runtime}/lumetra-{key}"
    own = f"/tmp/lumetra-{os.geteuid()}"
    return f"{own}/{key}" if private(own) else None


def instances():
    """A connected socket to each instance that runs."""
    folder = instance_folder()
    found = []
    if not folder or not private(folder):
        return found
    for name in sorted(os.listdir(folder)):
        if not re.fullmatch(r"Lumetra_ZN\.[0-9]+", name):
            continue
        sending = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        try:
            sending.connect(os.path.join(folder, name))
            found.append(sending)
        except OSError:  # left over from an instance that is gone
            sending.close()
    return found


def packet(message, wparam=0, lparam=0):
    return struct.pack("<4sHHIIqq", b"LMTR", 1, 0, message, 0, wparam, lparam)


def open_chart(channel, path, measure):
    """Has the instance play a file from a measure."""
    request = {"id": 1, "command": "open", "uri": "file://" + urllib.parse.quote(os.path.abspath(path)),
               "measure": measure}
    with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as connection:
        connection.settimeout(10)
        connection.connect(channel)
        connection.sendall(json.dumps(request).encode() + b"\n")
        answer = json.loads(connection.makefile("rb").readline())
    if not answer["ok"]:
        raise OSError(answer["error"]["text"])


def main(command=None, value="0", measure="-1"):
    if command not in MESSAGES and command != "open":
        print(__doc__, file=sys.stderr)
        return 1
    running = instances()
    if len(running) != 1:
        print(f"{len(running)} instances are running", file=sys.stderr)
        return 1
    if command == "open":
        open_chart(running[0].getpeername() + ".stream", value, int(measure))
        return 0
    number = round(float(value) * 100) if command == "speed" else int(value)
    running[0].settimeout(1)
    running[0].send(packet(MESSAGES[command], number))
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main(*sys.argv[1:]))
    except (OSError, ValueError, TypeError) as problem:
        print(problem, file=sys.stderr)
        sys.exit(1)
