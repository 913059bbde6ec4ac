#!/usr/bin/env python3
"""Random input over every example, with a fixed seed and the virtual clock: no error, no leak, no growth.

    tests/run_soak.py [--vorlane PATH] [--minutes N] [--seed N] [--growth] [EXAMPLE...]

Each example runs N (10) minutes of its own time under keys, mouse, wheel, joystick, focus and sizes at random, then is
closed. With --growth a run of twice the time may not take more memory than the first. With a sanitized player its
reports count. The last line is `N passed, N failed`.
"""

import argparse
import json
import os
import random
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
KEYS = ["LEFT", "RIGHT", "UP", "DOWN", "SPACE", "ENTER", "TAB", "P", "S", "1", "2", "3", "A", "D", "F1", "DELETE", "BACKSPACE"]
SLACK_KB = 4096  # and a tenth: up to 64 MB may wait for a collection


def events(rng, until_ms):
    """Input at random, in order; what is pressed is released."""
    yield {"at": 0, "type": "joystick", "attach": "Stick", "axes": 2, "buttons": 8, "hats": 1}
    at, x, y = 0, 320, 240
    while at < until_ms:
        at += rng.choice((1, 5, 20, 60, 200, 900))
        kind = rng.random()
        if kind < 0.35:
            x, y = rng.randrange(-20, 660), rng.randrange(-20, 500)
            yield {"at": at, "type": "mouse", "x": x, "y": y}
        elif kind < 0.55:
            button = rng.choice(("left", "left", "right", "middle"))
            yield {"at": at, "type": "mouse", "x": x, "y": y, "button": button, "double": rng.random() < 0.1}
            at += rng.randrange(120)
            yield {"at": at, "type": "mouse", "x": x, "y": y, "button": button, "down": False}
        elif kind < 0.80:
            key = rng.choice(KEYS)
            yield {"at": at, "type": "key", "key": key}
            if len(key) == 1:
                yield {"at": at, "type": "char", "char": key}
            at += rng.randrange(300)
            yield {"at": at, "type": "key", "key": key, "down": False}
        elif kind < 0.84:
            yield {"at": at, "type": "wheel", "delta": rng.choice((-240, -120, 120)), "x": x, "y": y}
        elif kind < 0.92:
            yield {"at": at, "type": "joystick", "axis": rng.randrange(2), "value": rng.choice((-65535, 0, 0, 30000, 65535))}
        elif kind < 0.96:
            yield {"at": at, "type": "joystick", "button": rng.randrange(8), "down": rng.random() < 0.5}
        elif kind < 0.98:
            yield {"at": at, "type": "focus", "down": rng.random() < 0.7}
        else:
            yield {"at": at, "type": "resize", "width": rng.randrange(1, 900), "height": rng.randrange(1, 700)}
    yield {"at": at + 1000, "type": "close"}


def run(vorlane, app, seed, minutes):
    """Peak memory in KB. Raises with the player's words."""
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "input.jsonl")
        until = int(minutes * 60000)
        with open(path, "w") as f:
            f.writelines(json.dumps(e) + "\n" for e in events(random.Random(seed), until))
        command = [vorlane, "run", app, "--headless", "--seed", str(seed), "--input", path, "--max-time", str(until + 60000)]
        env = dict(os.environ, ASAN_OPTIONS="exitcode=99:detect_leaks=1", UBSAN_OPTIONS="exitcode=99:print_stacktrace=1")
        with open(os.path.join(folder, "err"), "w+b") as err:
            player = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=err, stdin=subprocess.DEVNULL, env=env)
            _, status, usage = os.wait4(player.pid, 0)
            player.returncode = os.waitstatus_to_exitcode(status)
            err.seek(0)
            words = err.read().decode(errors="replace")
        if player.returncode != 0:
            raise RuntimeError(f"status {player.returncode}: {words[-1500:]}")
        return usage.ru_maxrss


def main():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("examples", nargs="*")
    parser.add_argument("--vorlane", default=os.path.join(ROOT, "build", "tools", "vorlane"))
    parser.add_argument("--minutes", type=float, default=10)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--growth", action="store_true")
    args = parser.parse_args()
    folder = os.path.join(ROOT, "examples")
    names = args.examples or sorted(n for n in os.listdir(folder) if os.path.exists(os.path.join(folder, n, "vorlane.toml")))
    passed = failed = 0
    for name in names:
        try:
            memory = run(os.path.abspath(args.vorlane), os.path.join(folder, name), args.seed, args.minutes)
            grown = memory
            if args.growth:
                grown = run(os.path.abspath(args.vorlane), os.path.join(folder, name), args.seed, args.minutes * 2)
                if grown > memory * 1.1 + SLACK_KB:
                    raise RuntimeError(f"grows from {memory} KB to {grown} KB in twice the time")
            passed += 1
            print(f"soak {name}: {memory} KB" + (f", {grown} KB in twice the time" if args.growth else ""), file=sys.stderr)
        except RuntimeError as error:
            failed += 1
            print(f"FAILED soak {name}: {error}")
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
