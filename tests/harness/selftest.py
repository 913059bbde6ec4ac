#!/usr/bin/env python3
"""The test runner's own parts: pictures, blocks of cases, comparison of globals, counting of steps."""

import os
import struct
import subprocess
import sys
import tempfile
import zlib

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
import run_programs  # noqa: E402
from harness import png  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
FAILED = []
COUNT = [0]


def check(name, actual, wanted):
    COUNT[0] += 1
    if actual != wanted:
        FAILED.append(f"{name}: {actual!r}, expected {wanted!r}")


def refused(action):
    try:
        action()
    except (SystemExit, run_programs.Failure):
        return True
    return False


def filtered_png(path, kind):
    """A 3x2 picture of 3 channels whose rows are stored with one PNG filter."""
    rows = [bytes([10, 20, 30, 250, 5, 7, 0, 255, 128]), bytes([11, 18, 33, 1, 2, 3, 200, 100, 50])]
    raw, above = b"", bytes(9)
    for row in rows:
        out = []
        for i, v in enumerate(row):
            a, b, c = row[i - 3] if i >= 3 else 0, above[i], above[i - 3] if i >= 3 else 0
            p = a + b - c
            nearest = min((a, b, c), key=lambda q: abs(p - q))
            out.append((v - (0, a, b, (a + b) // 2, nearest)[kind]) & 255)
        raw += bytes([kind]) + bytes(out)
        above = row

    def chunk(name, data):
        return struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data))

    with open(path, "wb") as f:
        f.write(png.SIGNATURE + chunk(b"IHDR", struct.pack(">IIBBBBB", 3, 2, 8, 2, 0, 0, 0)) +
                chunk(b"IDAT", zlib.compress(raw)) + chunk(b"IEND", b""))
    return rows


def pictures(folder):
    path = os.path.join(folder, "a.png")
    for kind in range(5):
        rows = filtered_png(path, kind)
        check(f"png filter {kind}", png.load(path).rows, rows)
    a = png.Picture(2, 1, [bytes(6)])
    b = png.Picture(2, 1, [bytes([0, 0, 0, 0, 0, 1])])
    png.save(path, b)
    check("png round trip", png.load(path).rows, b.rows)
    check("difference", png.differences(a, b)[:2], (1, (1, 0)))
    check("no difference", png.differences(a, a)[:2], (0, None))
    check("difference in size", png.differences(a, png.Picture(1, 1, [bytes(3)]))[:2], (1, (1, 0)))


def cases():
    parse = run_programs.parse_cases
    text = "# top\n[case a]\nx = 1;\n\ny = 2;\n[options --seed 7]\n[input {}]\n[globals {\"x\": 1}]\n[case b known_failure: why]\n[error 16 line 3]\n[case c]\nz\n[check 6 at 1:2]\n"
    check("cases", parse(text, "t"), [
        ("a", None, "x = 1;\n\ny = 2;", ["--seed", "7"], ["{}"], ("globals", {"x": 1})),
        ("b", "why", "", [], [], ("error", (16, 3))),
        ("c", None, "z", [], [], ("check", (6, 1, 2))),
    ])
    for name, bad in (("no expectation", "[case a]\nx\n"), ("text outside", "x\n"), ("nothing", "# x\n"),
                      ("twice", "[case a]\n[error 1 line 1]\n[case a]\n[error 1 line 1]\n"),
                      ("bad globals", "[case a]\n[globals {]\n")):
        check(f"cases refuse: {name}", refused(lambda: parse(bad, "t")), True)


def globals_compare():
    def same(actual, wanted):
        return not refused(lambda: run_programs.compare_globals(actual, wanted))
    check("a subset fits", same(b'{"a": 1, "b": 2}', {"a": 1}), True)
    check("1 and 1.0", same(b'{"a": 1.0}', {"a": 1}), True)
    for wanted in ({"a": 2}, {"a": True}, {"a": "1"}, {"b": 1}, {"a": None}, {"a": [1]}):
        check(f"1 is not {wanted}", same(b'{"a": 1}', wanted), False)
    check("absent", same(b'{"a": 1}', {"!b": 0}), True)
    check("not absent", same(b'{"a": 1}', {"!a": 0}), False)
    check("nested", same(b'{"a": {"sizes": [2], "elements": [1, null]}}', {"a": {"sizes": [2], "elements": [1, None]}}), True)
    check("longer", same(b'{"a": [1, 2]}', {"a": [1]}), False)
    check("no JSON", same(b"nonsense", {}), False)


def steps():
    def run(body):
        done = subprocess.run(["bash", "-c", f"set -u\n. tools/checks/steps.sh\n{body}\nexit 0"], cwd=ROOT,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        return done.stdout.decode().rstrip("\n").split("\n")[-1], done.returncode
    for body, wanted in (("step a true", ("1 passed, 0 failed", 0)),
                         ("step a false", ("0 passed, 1 failed", 1)),
                         ("step a echo 3 passed, 0 failed", ("3 passed, 0 failed", 0)),
                         ("step a bash -c 'echo 3 passed, 2 failed; exit 1'", ("3 passed, 2 failed", 1)),
                         ("step a bash -c 'echo 3 passed, 0 failed; exit 7'", ("3 passed, 1 failed", 1)),
                         ("step a true\necho $nothing", ("1 passed, 1 failed", 1)),
                         (":", ("0 passed, 0 failed", 1)),
                         ("step a true\nstep b bash -c 'kill -9 $$'", ("1 passed, 1 failed", 1))):
        check(f"steps: {body}", run(body), wanted)


def main():
    with tempfile.TemporaryDirectory() as folder:
        pictures(folder)
    cases()
    globals_compare()
    steps()
    for line in FAILED:
        print(line)
    print(f"{COUNT[0] - len(FAILED)} passed, {len(FAILED)} failed")
    return 1 if FAILED else 0


if __name__ == "__main__":
    sys.exit(main())
