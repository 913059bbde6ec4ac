#!/usr/bin/env python3
"""Runs the test programs below tests/programs and compares what they leave behind.

A test is a folder AREA/NAME in one of two forms.

One program: `main.vlq`, `main.vlp`, a project folder with `vorlane.toml`, or a file `app` with an application's path
from the root, and beside it any of
    options         command line options, one a line
    input.jsonl     recorded input, given as --input
    expected.json   global variables at the end; the keys given are compared, others are free, and "!name" with any
                    value stands for a variable that must not be there
    expected.png    the host window's picture, compared pixel by pixel
    expected.err    the last line on standard error; the exit status then is 1
    expected.status another exit status
    known_failure   why it fails today; the test fails when it starts to pass

Many small programs: `cases`, a text of blocks, each a test of its own:
    [case NAME]                     or [case NAME known_failure: REASON]
    ...program text...
    [globals {"x": 1}]              it ends well with these globals
    [error 16 line 3]               or it ends with this error, the last line on standard error naming the line
    [check 16 at 3:7]               or `vorlane check` refuses it at this line and column
Before the expectation, a line `[options ...]` gives command line options, separated by blanks, and each line
`[input {...}]` one event of recorded input.

Usage: tests/run_programs.py [--vorlane PATH] [--walker reference] [--update] [--jobs N] [FILTER...]
    FILTER: a part of AREA/NAME or of AREA/NAME:CASE. --update writes expected.png anew from what came out.
    --walker reference runs them by the plain walk over the tokens.
Failures leave actual.png, difference.png and actual.json in build/programs/AREA/NAME/.
The last line is `N passed, N failed`.
"""

import argparse
import concurrent.futures
import json
import os
import re
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from harness import png  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PROGRAMS = os.path.join(ROOT, "tests", "programs")
TIMEOUT_S = 60


class Failure(Exception):
    pass


def read(path):
    with open(path, encoding="utf-8") as f:
        return f.read()


def run(command):
    # A sanitizer's report must not look like a script error, whose status is 1.
    env = dict(os.environ, ASAN_OPTIONS="exitcode=99:detect_leaks=1", UBSAN_OPTIONS="exitcode=99:print_stacktrace=1")
    try:
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, stdin=subprocess.DEVNULL,
                              timeout=TIMEOUT_S, env=env)
    except subprocess.TimeoutExpired:
        raise Failure(f"no end after {TIMEOUT_S} s") from None
    return done.returncode, done.stdout, done.stderr.decode("utf-8", "replace")


def last_line(text):
    lines = [line for line in text.split("\n") if line.strip()]
    return lines[-1] if lines else ""


def expect_status(status, wanted, stderr):
    if status != wanted:
        raise Failure(f"exit status {status}, expected {wanted}; standard error:\n{stderr[-3000:]}")


def same(actual, wanted):
    """Equal JSON values; 1 and 1.0 are equal, 1 and true are not."""
    if isinstance(wanted, bool) or isinstance(actual, bool) or wanted is None or actual is None:
        return actual is wanted
    if isinstance(wanted, dict):
        return isinstance(actual, dict) and wanted.keys() == actual.keys() and all(
            same(actual[k], wanted[k]) for k in wanted)
    if isinstance(wanted, list):
        return isinstance(actual, list) and len(wanted) == len(actual) and all(map(same, actual, wanted))
    if isinstance(wanted, str) or isinstance(actual, str):
        return actual == wanted and isinstance(actual, str)
    return actual == wanted


def compare_globals(output, wanted):
    try:
        actual = json.loads(output.decode("utf-8"))
    except (UnicodeDecodeError, json.JSONDecodeError) as error:
        raise Failure(f"the globals aren't JSON: {error}: {output[:300]!r}") from None
    wrong = []
    for key, value in wanted.items():
        if key.startswith("!"):
            if key[1:] in actual:
                wrong.append(f"  {key[1:]}: {json.dumps(actual[key[1:]])}, expected none")
        elif key not in actual:
            wrong.append(f"  {key}: missing, expected {json.dumps(value)}")
        elif not same(actual[key], value):
            wrong.append(f"  {key}: {json.dumps(actual[key])}, expected {json.dumps(value)}")
    if wrong:
        raise Failure("globals:\n" + "\n".join(wrong))


class Runner:
    def __init__(self, args):
        self.vorlane = args.vorlane
        self.update = args.update
        self.walker = ["--walker", args.walker] if args.walker else []
        self.out = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(args.vorlane))), "programs")

    def command(self, app, screenshot, more):
        return [self.vorlane, "run", app, "--headless", "--globals", "-", *self.walker,
                *(["--screenshot", screenshot] if screenshot else []), *more]

    def program(self, folder, name):
        def beside(file):
            path = os.path.join(folder, file)
            return path if os.path.exists(path) else None

        app = beside("vorlane.toml") and folder or beside("main.vlp") or beside("main.vlq")
        if beside("app"):
            app = os.path.join(ROOT, read(beside("app")).strip())
        options = [line for line in read(beside("options")).split("\n") if line] if beside("options") else []
        if beside("input.jsonl"):
            options += ["--input", beside("input.jsonl")]
        wanted_error = read(beside("expected.err")).strip("\n") if beside("expected.err") else None
        wanted_status = int(read(beside("expected.status"))) if beside("expected.status") else int(
            wanted_error is not None)
        wanted_globals = json.loads(read(beside("expected.json"))) if beside("expected.json") else None
        picture = os.path.join(folder, "expected.png") if self.update or beside("expected.png") else None
        if self.update and not beside("expected.png"):
            picture = None
        if wanted_error is None and wanted_globals is None and picture is None and not beside("expected.status"):
            raise Failure("nothing is expected: it can't fail")
        left = os.path.join(self.out, name)
        os.makedirs(left, exist_ok=True)
        shot = os.path.join(left, "actual.png") if picture else None
        if shot and os.path.exists(shot):
            os.remove(shot)
        status, output, stderr = run(self.command(app, shot, options))
        with open(os.path.join(left, "actual.json"), "wb") as f:
            f.write(output)
        expect_status(status, wanted_status, stderr)
        if wanted_error is not None and last_line(stderr) != wanted_error:
            raise Failure(f"last line on standard error: {last_line(stderr)!r}, expected {wanted_error!r}")
        if wanted_globals is not None:
            compare_globals(output, wanted_globals)
        if picture:
            self.compare_picture(picture, shot, left)
            again = os.path.join(left, "again.png")
            _, second, _ = run(self.command(app, again, options))
            if second != output or open(again, "rb").read() != open(shot, "rb").read():
                raise Failure("a second run gave other globals or another picture")

    def compare_picture(self, wanted, shot, left):
        if not os.path.exists(shot):
            raise Failure("no screenshot was written")
        actual = png.load(shot)
        if self.update:
            png.save(wanted, actual)
            return
        expected = png.load(wanted)
        if (actual.width, actual.height, actual.rows) == (expected.width, expected.height, expected.rows):
            return
        count, first, shown = png.differences(actual, expected)
        png.save(os.path.join(left, "difference.png"), shown)
        raise Failure(f"{count} pixels differ, the first at {first}; sizes {actual.width}x{actual.height} and "
                      f"{expected.width}x{expected.height}; see {left}/actual.png and difference.png")

    def case(self, source, options, events, expectation):
        with tempfile.TemporaryDirectory(prefix="vorlane-case-") as folder:
            app = os.path.join(folder, "main.vlq")
            if events:
                options = [*options, "--input", os.path.join(folder, "input.jsonl")]
                with open(options[-1], "w", encoding="utf-8") as f:
                    f.write("".join(line + "\n" for line in events))
            with open(app, "w", encoding="utf-8", newline="") as f:
                f.write(source)
            kind, value = expectation
            if kind == "check":
                code, line, column = value
                status, _, stderr = run([self.vorlane, "check", app])
                expect_status(status, 1, stderr)
                if not re.search(rf":{line}:{column}:.*#{code}\b", last_line(stderr)):
                    raise Failure(f"check said {last_line(stderr)!r}, expected error {code} at {line}:{column}")
                return
            status, output, stderr = run(self.command(app, None, options))
            if kind == "error":
                code, line = value
                expect_status(status, 1, stderr)
                wanted = f"main - main: Error #{code} at line {line}."
                if last_line(stderr) != wanted:
                    raise Failure(f"last line on standard error: {last_line(stderr)!r}, expected {wanted!r}")
            else:
                expect_status(status, 0, stderr)
                compare_globals(output, value)


CASE = re.compile(r"\[case (\S+?)(?: known_failure: (.*))?\]\Z")
ERROR = re.compile(r"\[error (\d+) line (\d+)\]\Z")
CHECK = re.compile(r"\[check (\d+) at (\d+):(\d+)\]\Z")


def parse_cases(text, where):
    """(name, known failure or None, source, options, input events, expectation) of each block."""
    name, known, source, options, events, cases = None, None, [], [], [], []

    def refuse(number, why):
        raise SystemExit(f"{where}:{number}: {why}")

    for number, line in enumerate(text.split("\n"), 1):
        match = CASE.match(line)
        if match:
            if name is not None:
                refuse(number, f"case {name} has no expectation")
            name, known, source, options, events = match.group(1), match.group(2), [], [], []
            continue
        expectation = None
        if line.startswith("[options "):
            options = line[len("[options "):-1].split()
            continue
        if line.startswith("[input "):
            events.append(line[len("[input "):-1])
            continue
        if line.startswith("[globals "):
            try:
                expectation = ("globals", json.loads(line[len("[globals "):-1]))
            except json.JSONDecodeError as error:
                refuse(number, error)
        elif ERROR.match(line):
            expectation = ("error", tuple(map(int, ERROR.match(line).groups())))
        elif CHECK.match(line):
            expectation = ("check", tuple(map(int, CHECK.match(line).groups())))
        if expectation is None:
            if name is not None:
                source.append(line)
            elif line and not line.startswith("#"):
                refuse(number, "text outside a case")
            continue
        if name is None:
            refuse(number, "an expectation outside a case")
        if any(name == other[0] for other in cases):
            refuse(number, f"a second case {name}")
        # No line end behind the last line, so that a block's text is exactly what stands there.
        cases.append((name, known, "\n".join(source), options, events, expectation))
        name = None
    if name is not None:
        refuse("end", f"case {name} has no expectation")
    if not cases:
        refuse("end", "no case")
    return cases


def collect(runner, filters):
    """(test name, known failure or None, function) of every test that a filter names."""
    for folder, _, files in sorted(os.walk(PROGRAMS)):
        name = os.path.relpath(folder, PROGRAMS)
        if "cases" in files:
            where = os.path.relpath(folder, ROOT) + "/cases"
            for case, known, *rest in parse_cases(read(os.path.join(folder, "cases")), where):
                yield f"{name}:{case}", known, lambda r=rest: runner.case(*r)
        elif any(f.startswith("expected.") for f in files) or {"main.vlq", "vorlane.toml", "app"} & set(files):
            known = read(os.path.join(folder, "known_failure")).strip() if "known_failure" in files else None
            yield name, known, lambda f=folder, n=name: runner.program(f, n)


def judge(test):
    name, known, action = test
    try:
        action()
        why = None
    except Failure as failure:
        why = str(failure)
    except Exception as error:  # a fault of the test itself must not hide the other results
        why = f"{type(error).__name__}: {error}"
    if known is not None:
        return name, "passes, yet it is marked as a known failure; take the mark away" if why is None else None, True
    return name, why, False


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--vorlane", default=os.path.join(ROOT, "build", "tools", "vorlane"))
    parser.add_argument("--walker", choices=("prepared", "reference"))
    parser.add_argument("--update", action="store_true")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1)
    parser.add_argument("filters", nargs="*")
    args = parser.parse_args()
    if not os.access(args.vorlane, os.X_OK):
        print(f"{args.vorlane} isn't there; build it first\n0 passed, 1 failed")
        return 1
    tests = [t for t in collect(Runner(args), args.filters)
             if not args.filters or any(f in t[0] for f in args.filters)]
    passed = failed = known = 0
    with concurrent.futures.ThreadPoolExecutor(args.jobs) as pool:
        for name, why, was_known in pool.map(judge, tests):
            if why is None:
                passed += 1
                known += was_known
            else:
                failed += 1
                print(f"FAILED program {name}: {why}")
    if known:
        print(f"{known} known failures among the passed")
    if not tests:
        print("no test fits")
        failed = 1
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
