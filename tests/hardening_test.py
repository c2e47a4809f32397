"""Reads the built files: what cmake/hardening.cmake asks for must have arrived. hardening_test.py FILE...
Programs are judged by their headers, archives (.a) by what their objects call."""
import re
import subprocess
import sys


def readelf(option, path):
    done = subprocess.run(["readelf", "-W", option, path], capture_output=True, text=True, check=True)
    return done.stdout


def faults_of_program(path):
    headers, dynamic = readelf("-lh", path), readelf("-d", path)
    relro = re.search(r"GNU_RELRO\s+\S+\s+(\S+)\s+\S+\s+\S+\s+(\S+)", headers)
    tables = re.findall(r"\((?:PLTGOT|INIT_ARRAY|FINI_ARRAY)\)\s+(0x\w+)", dynamic)
    begin, size = (int(n, 16) for n in relro.groups()) if relro else (0, 0)
    return [what for what, good in (
        ("its code stands at a fixed place", re.search(r"Type:\s+DYN", headers) and "PIE" in dynamic),
        ("symbols are bound after the start", re.search(r"\(FLAGS_1\).*\bNOW\b", dynamic)),
        ("tables of addresses stay writable",
         tables and all(begin <= int(table, 16) < begin + size for table in tables)),
        ("its stack is executable", re.search(r"GNU_STACK.*\bRW\b\s+0x", headers)),
        ("a segment is writable and executable", not re.search(r"LOAD.*\bRWE\b", headers)),
        ("its own folder is searched for libraries", not re.search(r"RPATH|RUNPATH", dynamic)),
    ) if not good]


def faults_of_archive(path):
    called = set(re.findall(r"UND (\w+)$", readelf("-s", path), re.MULTILINE))
    return [what for what, good in (
        ("no function guards its stack", "__stack_chk_fail" in called),
        ("no call checks its bounds", any(re.fullmatch(r"__\w+_chk", name) for name in called)),
    ) if not good]


bad = 0
for name in sys.argv[1:]:
    for fault in faults_of_archive(name) if name.endswith(".a") else faults_of_program(name):
        print(f"{name}: {fault}")
        bad = 1
sys.exit(bad or len(sys.argv) < 2)
