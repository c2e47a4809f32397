#!/usr/bin/env python3
"""Holds the rules between the layers (docs/architecture.md) and the paths that documents name.

Prints each offence as file:line and ends with 1 when there is one. With --documents it looks at the documents
only, with --sources at the sources only; with --self-test it checks that every rule catches a made-up offence.
"""
import os
import re
import sys
import tempfile

CORE = ("shell", "playback", "chart", "sound", "display", "system")
# Which folders of src a file may include from.
ALLOWED = {
    "shell": {"shell", "playback", "chart", "sound", "display", "system", "platform"},
    "playback": {"playback", "chart", "sound", "display", "system", "platform"},
    "chart": {"chart", "sound", "display", "system", "platform"},
    "sound": {"chart", "sound", "display", "system", "platform"},
    "display": {"chart", "sound", "display", "system", "platform"},
    "system": {"system", "platform"},
    "dialect": {"dialect"},
    "compile": {"compile", "dialect", "sound", "display", "platform"},
    "report": {"report", "chart", "sound", "display", "platform"},
    "platform": {"platform", "host"},
    "host": {"host"},
}
# The rooms of src/platform, lowest first: a room includes rooms before it and the ground. The ground is the
# files beside the rooms, except for those on top, which include every room and which no room includes.
ROOMS = ("files", "codec", "substitutes", "graphics", "sound", "window")
ON_TOP = ("open", "process")
STANDARD = set("""algorithm array atomic bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits
clocale cmath compare complex concepts condition_variable cstdarg cstddef cstdint cstdio cstdlib cstring ctime cwchar
deque exception execution filesystem format forward_list fstream functional future initializer_list iomanip ios iosfwd
iostream istream iterator limits list locale map memory memory_resource mutex new numbers numeric optional ostream
queue random ranges ratio set shared_mutex source_location span sstream stack stdexcept streambuf string string_view
system_error thread tuple type_traits typeinfo unordered_map unordered_set utility valarray variant vector
version""".split())
OS_MACRO = re.compile(r"\b(_WIN32|_WIN64|WIN32|__linux__|linux|__unix__|__APPLE__|__MACH__|__FreeBSD__|_POSIX_\w+|__GLIBC__)\b")
SCREEN_LIBRARY = re.compile(r"^(FL/|SDL|X11/|fontconfig/)")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
SOURCE_FOLDERS = ("src", "tools", "tests", "bench", "demo")
DOC_PATH = re.compile(r"`((?:\./)?(?:src|docs|tests|tools|demo|bench|cmake|\.ci)/[\w./+-]*|\./[\w.-]+)`")


def files(root, folder, endings):
    for path, folders, names in os.walk(os.path.join(root, folder)):
        folders[:] = sorted(f for f in folders if f not in (".git", "build"))
        for name in sorted(names):
            if name.endswith(endings):
                yield os.path.relpath(os.path.join(path, name), root)


def floor_of(path):
    """Of a path below src/platform: 0 is the ground."""
    parts = path.split("/")[1:]
    if len(parts) > 1:
        return 1 + ROOMS.index(parts[0]) if parts[0] in ROOMS else None
    return 1 + len(ROOMS) if os.path.splitext(parts[0])[0] in ON_TOP else 0


def check_rooms(path, name):
    """The offence of src/platform's file including another of its files, or None."""
    here, there = floor_of(path.split("/", 1)[1]), floor_of(name)
    if here is None or there is None:
        return f"{name if there is None else path} stands in no room of src/platform"
    return f"src/{name} lies above this room" if there > here else None


def check_include(path, quote, name):
    """The offence of one include, or None."""
    parts = path.split("/")
    if SCREEN_LIBRARY.match(name) and parts[:3] != ["src", "host", "desktop"]:
        return f"only src/host/desktop may include {name}"
    if parts[0] != "src" or len(parts) < 3:
        return None
    layer = parts[1]
    if layer not in ALLOWED:
        return None
    if quote == "<":
        if layer in CORE + ("dialect",) and name not in STANDARD:
            return f"src/{layer} knows no library but the standard one: <{name}>"
        return None
    target = name.split("/")[0]
    if target not in ALLOWED[layer]:
        return f"src/{layer} may not include {name}"
    if layer == "platform" and target == "platform":
        return check_rooms(path, name)
    if layer == "platform" and target == "host" and name != "host/host.h":
        return f"src/platform reaches the machine through host/host.h only, not {name}"
    if layer == "host" and parts[2] in ("desktop", "headless"):
        other = {"desktop": "headless", "headless": "desktop"}[parts[2]]
        if name.startswith(f"host/{other}/"):
            return f"the two hosts do not know each other: {name}"
    return None


def check_source(root, path):
    core = path.split("/")[0] == "src" and path.split("/")[1] in CORE
    with open(os.path.join(root, path), encoding="utf-8") as source:
        for number, line in enumerate(source, 1):
            match = INCLUDE.match(line)
            if match:
                offence = check_include(path, match[1], match[2])
                if offence:
                    yield f"{path}:{number}: {offence}"
            elif core and line.lstrip().startswith("#") and OS_MACRO.search(line):
                yield f"{path}:{number}: src/{path.split('/')[1]} tests no operating-system macro"


def check_document(root, path):
    with open(os.path.join(root, path), encoding="utf-8") as document:
        for number, line in enumerate(document, 1):
            for name in DOC_PATH.findall(line):
                if not os.path.exists(os.path.join(root, name)):
                    yield f"{path}:{number}: there is no {name}"


def check(root, sources=True, documents=True):
    offences = []
    for folder in SOURCE_FOLDERS if sources else ():
        for path in files(root, folder, (".h", ".cpp")):
            offences += check_source(root, path)
    for path in files(root, ".", (".md",)) if documents else ():
        offences += check_document(root, os.path.normpath(path))
    return offences


def self_test():
    made_up = {
        "src/chart/a.cpp": "#include <unistd.h>\n",
        "src/display/b.h": '#include "playback/playback.h"\n',
        "src/playback/c.cpp": "#if defined(__linux__)\n#endif\n",
        "src/platform/d.cpp": '#include "host/desktop/desktop.h"\n',
        "src/platform/codec/d.cpp": '#include "platform/window/window.h"\n',
        "src/platform/e.cpp": '#include "platform/files/files.h"\n',
        "src/platform/window/e.cpp": '#include "platform/process.h"\n',
        "src/platform/attic/e.cpp": '#include "platform/debug.h"\n',
        "src/system/e.cpp": '#include "chart/bms.h"\n',
        "src/shell/e.cpp": '#include "host/host.h"\n',
        "src/host/headless/f.cpp": '#include "host/desktop/desktop.h"\n',
        "src/dialect/i.cpp": '#include "chart/bms.h"\n',
        "tools/g.cpp": "#include <FL/Fl.H>\n",
        "docs/h.md": "see `src/nowhere.cpp`\n",
    }
    good = {
        "src/chart/z.cpp": '#include <vector>\n#include "system/diagnostics.h"\n#include "platform/files/files.h"\n',
        "src/platform/open.cpp": '#include "platform/files/files.h"\n#include "platform/debug.h"\n',
        "src/platform/sound/z.cpp": '#include "platform/codec/waveformat.h"\n#include "platform/sound/z.h"\n',
        "src/host/desktop/z.cpp": '#include <FL/Fl.H>\n#ifdef __linux__\n#endif\n#include "host/host.h"\n',
    }
    with tempfile.TemporaryDirectory() as root:
        for path, text in {**made_up, **good}.items():
            os.makedirs(os.path.dirname(os.path.join(root, path)), exist_ok=True)
            with open(os.path.join(root, path), "w", encoding="utf-8") as out:
                out.write(text)
        caught = {offence.split(":")[0] for offence in check(root)}
    if caught != set(made_up):
        print("self-test: missed", sorted(set(made_up) - caught), "wrongly caught", sorted(caught - set(made_up)))
        return 1
    return 0


def main():
    if "--self-test" in sys.argv:
        return self_test()
    root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    offences = check(root, "--documents" not in sys.argv, "--sources" not in sys.argv)
    print("\n".join(offences) if offences else "all rules hold")
    return 1 if offences else 0


sys.exit(main())
