#!/usr/bin/env python3
"""Runs a GoogleTest binary in shards over the machine's cores and prints one count.

    tests/run_unit.py BINARY [gtest options]

The last line is `N passed, N failed`. A shard that dies counts as one failure, by the name of the test it died in.
"""

import concurrent.futures
import os
import re
import subprocess
import sys

RUN = re.compile(r"^\[ RUN      \] (\S+)", re.M)
OK = re.compile(r"^\[       OK \] (\S+)", re.M)
FAILED = re.compile(r"^\[  FAILED  \] (\S+?),?(?: \(|$| where)", re.M)
SKIPPED = re.compile(r"^\[  SKIPPED \] (\S+)", re.M)
TIMEOUT_S = 900


def run_shard(binary, options, index, count):
    env = dict(os.environ, GTEST_TOTAL_SHARDS=str(count), GTEST_SHARD_INDEX=str(index), GTEST_COLOR="no")
    try:
        done = subprocess.run([binary, *options], env=env, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              timeout=TIMEOUT_S)
        return done.returncode, done.stdout.decode(errors="replace")
    except subprocess.TimeoutExpired as expired:
        return -1, (expired.stdout or b"").decode(errors="replace") + f"\nno end after {TIMEOUT_S} s\n"


def sections(output):
    """Each test's own output, by its name."""
    starts = [(m.start(), m.group(1)) for m in RUN.finditer(output)]
    for (start, name), (end, _) in zip(starts, starts[1:] + [(len(output), "")]):
        yield name, output[start:end]


def main():
    if len(sys.argv) < 2:
        print(__doc__, file=sys.stderr)
        return 64
    binary, options = sys.argv[1], sys.argv[2:]
    shards = max(1, os.cpu_count() or 1)
    with concurrent.futures.ThreadPoolExecutor(shards) as pool:
        results = list(pool.map(lambda i: run_shard(binary, options, i, shards), range(shards)))
    passed, failed, skipped = 0, 0, []
    for index, (status, output) in enumerate(results):
        ended, bad = set(OK.findall(output)), set()
        for name, text in sections(output):
            if name in SKIPPED.findall(text):
                skipped.append(name)
            elif name not in ended:
                bad.add(name)
                print(text.rstrip())
        if status != 0 and not bad:
            bad.add(f"shard {index}")
            print(f"shard {index} ended with status {status}:\n{output[-4000:]}")
        passed += len(ended)
        failed += len(bad)
        for name in sorted(bad):
            print(f"FAILED unit {name}")
    if skipped:
        print(f"skipped: {', '.join(sorted(skipped))}")
    if passed + failed == 0:
        print("no test ran")
        failed = 1
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
