#!/usr/bin/env python3
"""The direction of knowledge between the folders, checked from every #include of our own headers."""

import os
import sys

from sources import NATIVE_BACK_ENDS, ROOT, cpp_files, finish, includes, read

BACK_ENDS = NATIVE_BACK_ENDS + ("platform/headless", "platform/text", "platform/web")

GROUND = {"base", "platform"}
LIBRARY = GROUND | {"host/appfile"}
SCRIPT_BASE = LIBRARY | {"interpreter"}
SCRIPTS = {"classes", "gfx2d/script", "ui", "engine3d/script", "media/script", "input/script", "net/script"}
LIBRARIES = {"gfx2d", "engine3d", "render", "media", "input", "net"}

# Layer: what it may include besides itself. A file belongs to the longest layer name that is its path's prefix.
ALLOWED = {
    "include": set(),
    "base": set(),
    "platform": {"base"},
    **{back_end: GROUND | set(BACK_ENDS) for back_end in BACK_ENDS},
    "host/appfile": GROUND,
    "interpreter": LIBRARY,
    "classes": SCRIPT_BASE,
    "gfx2d": LIBRARY,
    "gfx2d/script": SCRIPT_BASE | {"gfx2d"},
    "ui": SCRIPT_BASE | {"gfx2d", "gfx2d/script"},
    "engine3d": LIBRARY | {"gfx2d", "render"},
    "engine3d/script": SCRIPT_BASE | {"engine3d", "render", "gfx2d", "gfx2d/script"},
    "render": LIBRARY | {"gfx2d", "engine3d"},
    "media": LIBRARY,
    "media/script": SCRIPT_BASE | {"media", "gfx2d", "gfx2d/script", "ui"},
    "input": LIBRARY | {"gfx2d"},
    "input/script": SCRIPT_BASE | {"input", "ui", "gfx2d", "gfx2d/script"},
    "net": LIBRARY,
    "net/script": SCRIPT_BASE | {"net"},
    "host": SCRIPT_BASE | SCRIPTS | LIBRARIES | {"include"},
    "host/desktop": SCRIPT_BASE | SCRIPTS | LIBRARIES | {"include", "host"} | set(BACK_ENDS),
    # `run` goes through include/ alone; `tokens`, `check` and `reference` compile without running; `pack` converts
    # pictures.
    "tools": GROUND | {"include", "host", "host/appfile", "host/desktop", "interpreter", "gfx2d"} | set(BACK_ENDS),
}
FREE = ("tests", "bench", "fuzz", "examples")


def layer(path):
    best = ""
    for name in list(ALLOWED) + list(FREE):
        if path.startswith(name + "/") and len(name) > len(best):
            best = name
    return best


def main():
    problems = []
    files = cpp_files()
    for path in files:
        own = layer(path)
        if not own:
            problems.append(f"{path}: this folder has no place in the table of tools/checks/layers.py")
            continue
        for line, kind, header in includes(read(path)):
            if kind == "<":
                continue
            target = header
            if not os.path.isfile(os.path.join(ROOT, target)):
                target = "include/" + header
                if not os.path.isfile(os.path.join(ROOT, target)):
                    problems.append(f'{path}:{line}: "{header}" is not a path from the root')
                    continue
            theirs = layer(target)
            if own in FREE or theirs == own:
                continue
            if theirs not in ALLOWED[own]:
                may = ", ".join(sorted(ALLOWED[own])) or "nothing but itself"
                problems.append(f'{path}:{line}: {own} must not know {theirs} ("{header}"); it may include {may}')
    return finish("layers", len(files), problems)


if __name__ == "__main__":
    sys.exit(main())
