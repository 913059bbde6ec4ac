#!/usr/bin/env python3
"""Words that stay out of the project: it is described by itself, not by papers that its reader doesn't have."""

import re
import sys

from sources import finish, project_files, read

# Written in pieces, so that this file passes its own check.
WORDS = re.compile(r"\bsp" + r"ec(?:s|ification|ifications)?\b|\bparts? " + r"[0-9]{1,2}\.[0-9]{1,2}\b", re.I)
SKIP = (".png", ".vlp", ".jpg", ".ico")


def main():
    problems = []
    files = [f for f in project_files() if not f.endswith(SKIP) and not f.startswith(("fuzz/corpus/", "tests/pictures/files/"))]
    for path in files:
        for number, line in enumerate(read(path).split("\n"), 1):
            match = WORDS.search(line)
            if match:
                problems.append(f"{path}:{number}: '{match.group(0)}': say it in the project's own words")
        if WORDS.search(path):
            problems.append(f"{path}: the name")
    return finish("words", len(files), problems)


if __name__ == "__main__":
    sys.exit(main())
