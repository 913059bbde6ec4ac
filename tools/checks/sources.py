"""What the checks share: the project's source files, and C++ text without comments and literals."""

import os
import re
import subprocess

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

# Folders that hold our C++ code. The order is the order of reports.
FOLDERS = ("include", "base", "platform", "host", "interpreter", "classes", "gfx2d", "ui", "engine3d", "render", "media",
           "input", "net", "tools", "tests", "bench", "fuzz", "examples")

# Back ends of the seam that stand on an operating system. The other folders below platform/ are portable.
NATIVE_BACK_ENDS = ("platform/posix", "platform/sdl")


def project_files():
    """Every file of the project, tracked or new but not ignored, relative to the root."""
    out = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT,
                         stdout=subprocess.PIPE, check=True).stdout.decode()
    return sorted(f for f in out.split("\0") if f and os.path.isfile(os.path.join(ROOT, f)))


def cpp_files():
    return [f for f in project_files()
            if f.endswith((".h", ".cpp", ".c", ".inl")) and f.split("/")[0] in FOLDERS]


def read(path):
    with open(os.path.join(ROOT, path), encoding="utf-8", errors="replace") as f:
        return f.read()


_TOKENS = re.compile(r"""
    //[^\n]*                                          # line comment
  | /\*.*?\*/                                         # block comment
  | R"(?P<mark>[^()\\\s]{0,16})\(.*?\)(?P=mark)"      # raw string
  | "(?:\\.|[^"\\\n])*"                               # string
  | (?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])*'               # character (not a digit separator)
  """, re.S | re.X)


def strip(text):
    """C++ without comments and literals; every line keeps its number."""
    return _TOKENS.sub(lambda m: "\n" * m.group(0).count("\n") or " ", text)


_INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]*([<"])([^>"\n]+)[>"]', re.M)


def includes(text):
    """(line, '<' or '"', header) of each include."""
    for match in _INCLUDE.finditer(text):
        yield text.count("\n", 0, match.start()) + 1, match.group(1), match.group(2)


def finish(name, files, problems):
    for problem in problems:
        print(problem)
    print(f"{name}: {files} files, {len(problems)} problems")
    return 1 if problems else 0
