#!/usr/bin/env python3
"""The checks of this folder find what they are for, and leave alone what they should."""

import sys

import forbidden
import layers
import words
from sources import strip

CASES = []


def case(name, actual, wanted):
    CASES.append((name, actual, wanted))


def calls(line):
    return any(pattern.search(strip(line)) for pattern, _ in forbidden.CALLS)


for bad in ('FILE* f = fopen("x", "r");', "auto t = std::time(nullptr);", "int r = rand();", "usleep(20);", "exit(1);",
            'printf("%d", 1);', "std::cout << 1;", "SDL_Event e;", "std::mutex m;", "std::this_thread::sleep_for(x);",
            'const char* home = ::getenv("HOME");', "auto n = std::chrono::steady_clock::now();", "glBegin(1);"):
    case(f"found: {bad}", calls(bad), True)
for good in ("clock.time(1);", "p->exit();", "Clock::time(2);", 'Log("use printf()");', "// sleep(1) would be wrong",
             "std::snprintf(b, n, x);", "int lifetime(int);", "uint32_t runtime(1);", "auto x = 1'000'000; // exit(1)",
             "glyph(3);"):
    case(f"left alone: {good}", calls(good), False)
for path, header, wanted in (("interpreter/a.cpp", "thread", True), ("interpreter/a.cpp", "vector", False),
                             ("host/desktop/run.cpp", "thread", False), ("host/desktop/run.cpp", "fstream", True), ("host/run.cpp", "pthread.h", True),
                             ("gfx2d/images/png_filter.cpp", "png.h", False), ("gfx2d/surface.cpp", "png.h", True),
                             ("ui/window.cpp", "SDL2/SDL.h", True), ("base/text.cpp", "unistd.h", True)):
    case(f"{path} includes <{header}>", forbidden.check_include(path, header) is not None, wanted)
for path, wanted in (("host/appfile/bank.h", "host/appfile"), ("host/run.h", "host"), ("gfx2d/script/a.h", "gfx2d/script"),
                     ("platform/clock.h", "platform"), ("platform/sdl/x.cpp", "platform/sdl"), ("elsewhere/a.h", "")):
    case(f"layer of {path}", layers.layer(path), wanted)
for own, theirs, wanted in (("gfx2d", "interpreter", False), ("gfx2d/script", "interpreter", True),
                            ("interpreter", "gfx2d", False), ("interpreter", "host/appfile", True),
                            ("base", "platform", False), ("ui", "platform/sdl", False), ("tools", "ui", False),
                            ("host/desktop", "platform/sdl", True)):
    case(f"{own} may include {theirs}", theirs in layers.ALLOWED[own], wanted)
case("strip keeps lines", strip("a /* x\n y */ b\n// c\nd").count("\n"), 3)
case("strip takes raw strings", "exit" in strip('R"(exit(1))"'), False)
case("a word", bool(words.WORDS.search("as the " + "sp" + "ec says")), True)
case("a number", bool(words.WORDS.search("see Part " + "2.4")), True)
case("another word", bool(words.WORDS.search("inspect the special aspects of part 2")), False)

wrong = [(name, actual, wanted) for name, actual, wanted in CASES if actual != wanted]
for name, actual, wanted in wrong:
    print(f"{name}: {actual}, expected {wanted}")
print(f"{len(CASES) - len(wrong)} passed, {len(wrong)} failed")
sys.exit(1 if wrong else 0)
