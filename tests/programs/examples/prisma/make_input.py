#!/usr/bin/env python3
"""Makes input.jsonl: the game's own demo plays to the end, and what it did becomes moves and clicks of a mouse.

    tests/programs/examples/prisma/make_input.py [--vorlane PATH]

A copy of the game notes the places where its demo wants the bat and the moments when it serves. To be run again when the
game's rules change; the pictures beside it then change too.
"""

import json
import os
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.normpath(os.path.join(HERE, "..", "..", "..", ".."))
VORLANE = sys.argv[2] if sys.argv[1:2] == ["--vorlane"] else os.path.join(ROOT, "build", "tools", "vorlane")
TITLE_MS = 10000  # the demo begins by itself
LAST_MS = 1200000

NOTE = """
Function Note(what) {
  If (what == noted) Return;
  noted = what;
  noteTimes[noteCount] = System.GetElapsedTime() - first;
  noteWhats[noteCount] = what;
  noteCount++;
}
"""


def replaced(text, old, new):
    if text.count(old) != 1:
        sys.exit(f"make_input: the game has changed, {old!r} isn't there once")
    return text.replace(old, new)


def demo_log(folder):
    app = os.path.join(folder, "prisma")
    shutil.copytree(os.path.join(ROOT, "examples", "prisma"), app)

    def edit(name, *changes):
        path = os.path.join(app, name)
        text = open(path).read()
        for old, new in changes:
            text = replaced(text, old, new)
        open(path, "w").write(text)

    edit("main.vlq", ("mode = TITLE;\n", "mode = TITLE;\nnoted = -1;\nnoteCount = 0;\nnoteTimes[0] = 0;\nnoteWhats[0] = 0;\n"
                      "first = System.GetElapsedTime();\n"),
         ("(demo && modeTime > 800)) ServeBall()", "(demo && modeTime > 800)) { Note(-2); ServeBall(); }"),
         ("    demo = 1;\n", "    demo = 1;\n    Note(-3);\n"))
    # As by mouse: the bat jumps to a whole pixel.
    edit("ball.vlq", ("  Return Limited((target - batX) / 10.0, -1.0, 1.0);",
                      "  target = Floor(Limited(target, 0, WIDE - 1)) & 0xFFFF;\n  Note(target);\n  Return (target - batX) / 10.0;"),
         ("control == BY_MOUSE && !demo", "demo"))
    with open(os.path.join(app, "ball.vlq"), "a") as f:
        f.write(NOTE)
    out = os.path.join(folder, "globals.json")
    subprocess.run([VORLANE, "run", app, "--headless", "--seed", "1", "--max-time", str(LAST_MS), "--globals", out], check=True)
    values = json.load(open(out))
    return list(zip(values["notetimes"]["elements"], values["notewhats"]["elements"])), values


def recording(notes, delay):
    """The notes as input, each `delay` ms late: the bat must not leave before the ball did."""
    lines = [{"at": 3000, "type": "key", "key": "3"}, {"at": 3100, "type": "key", "key": "3", "down": False}]
    x = 320
    for at, what in notes:
        at += delay
        if what == -3 and len(lines) > 2:
            break  # the demo began again
        if what >= 0:
            x = int(what)
            lines.append({"at": at, "type": "mouse", "x": x, "y": 440})
        else:
            lines.append({"at": at, "type": "mouse", "x": x, "y": 440, "button": "left"})
            lines.append({"at": at + 40, "type": "mouse", "x": x, "y": 440, "button": "left", "down": False})
    lines.sort(key=lambda line: line["at"])
    end = lines[-1]["at"] + 6000
    lines.append({"at": end, "type": "mouse", "x": x, "y": 440, "button": "left"})
    lines.append({"at": end + 40, "type": "mouse", "x": x, "y": 440, "button": "left", "down": False})
    lines.append({"at": end + 2000, "type": "key", "key": "ESCAPE"})
    return lines


def main():
    path = os.path.join(HERE, "input.jsonl")
    with tempfile.TemporaryDirectory() as folder:
        notes, demo = demo_log(folder)
        # Events come between two rounds, so a delay may fall badly somewhere in the game.
        for delay in (3, 6, 4, 5, 2, 7, 8):
            lines = recording(notes, delay)
            with open(path, "w") as f:
                f.writelines(json.dumps(line) + "\n" for line in lines)
            out = os.path.join(folder, "replay.json")
            subprocess.run([VORLANE, "run", os.path.join(ROOT, "examples", "prisma"), "--headless", "--seed", "1", "--max-time",
                            str(LAST_MS), "--input", path, "--globals", out], check=True)
            if json.load(open(out))["best"] == demo["best"]:
                print(f"{len(lines)} lines, {lines[-1]['at'] / 1000:.0f} s, score {demo['best']}, {delay} ms late")
                return
    sys.exit("make_input: no recording plays as the demo did")


if __name__ == "__main__":
    main()
