#!/usr/bin/env python3
"""Calls and headers that would break the seam to the machine, each with what to use in its place.

The core is all that also compiles for a page: everything but the native back ends, the desktop host, the command,
and what only runs at a developer's desk.
"""

import re
import sys

from sources import NATIVE_BACK_ENDS, cpp_files, finish, includes, read, strip

FREE = NATIVE_BACK_ENDS + ("tools", "tests", "bench", "fuzz", "examples")
DESKTOP_HOST = "host/desktop"  # makes the interpreter's thread, so it may know threads; the rest binds it too

# Not behind a member access or another scope's name, so that `file.time()` of our own stays free.
HEAD = r"(?<![\w.:])(?<!->)(?:::|std::)?"
CALLS = [
    (HEAD + r"(?:fopen|freopen|fdopen|tmpfile|tmpnam|mkstemp|opendir|mmap)\s*\(", "FileSystem of platform/file_system.h"),
    (HEAD + r"(?:printf|fprintf|vprintf|vfprintf|puts|fputs|putchar|fwrite|perror)\s*\(",
     "a return value, or WindowSystem::showMessage; the command prints"),
    (r"\bstd::(?:cout|cerr|clog|cin)\b", "a return value; the command prints"),
    (HEAD + r"(?:time|clock|gettimeofday|clock_gettime|localtime|localtime_r|gmtime|mktime|strftime)\s*\(",
     "Clock of platform/clock.h"),
    (r"\bstd::chrono::(?:system|steady|high_resolution)_clock\b", "Clock of platform/clock.h"),
    (HEAD + r"(?:rand|srand|random|srandom|drand48|arc4random)\s*\(|\brandom_device\b",
     "a generator seeded from Clock::seed()"),
    (HEAD + r"(?:sleep|usleep|nanosleep)\s*\(|\bsleep_(?:for|until)\b|\bSDL_Delay\b",
     "a loop over EventQueue::waitEvent with a deadline"),
    (HEAD + r"(?:getenv|setenv|putenv|setlocale|localeconv|getpid|gethostname|getcwd|chdir)\s*\(",
     "Environment of platform/environment.h"),
    (HEAD + r"(?:exit|_exit|_Exit|quick_exit|abort|atexit|system|popen|fork|execv|execvp|signal|kill)\s*\(",
     "a status value or a thrown CIError; the host ends the process"),
    # Names such as poll and send are good names of our own; without their headers the system's don't compile anyway.
    (HEAD + r"(?:socket|recvfrom|sendto|getaddrinfo|gethostbyname)\s*\(",
     "the network service of the seam"),
    (r"\bSDL_\w+|\bgl[A-Z]\w+\s*\(", "the seam; only a back end knows the window system"),
    (r"\bstd::(?:thread|jthread|mutex|recursive_mutex|shared_mutex|condition_variable|async|future|promise)\b",
     "the pump: the core owns no thread"),
    (r"\bpthread_\w+|\bthread_local\b", "the pump: the core owns no thread"),
    (r"\bstd::(?:format|vformat|regex|locale|filesystem)\b", "the helpers of base/"),
]
CALLS = [(re.compile(pattern), use) for pattern, use in CALLS]
THREADS = re.compile(r"\bstd::(?:thread|mutex|condition_variable|lock_guard|unique_lock|scoped_lock)\b")

STANDARD = set("""algorithm any array atomic bit bitset cassert cctype cerrno cfloat charconv chrono cinttypes climits cmath
compare complex concepts coroutine cstdarg cstddef cstdint cstdio cstdlib cstring deque exception forward_list functional
initializer_list iterator limits list map memory memory_resource new numbers numeric optional queue random ranges ratio set
source_location span sstream stack stdexcept string string_view system_error tuple type_traits typeindex typeinfo
unordered_map unordered_set utility valarray variant vector version""".split())
STANDARD |= {"stddef.h", "stdint.h", "stdlib.h", "string.h", "math.h", "limits.h", "assert.h"}

NOT_IN_CORE = {
    "thread": "the pump", "mutex": "the pump", "shared_mutex": "the pump", "condition_variable": "the pump",
    "future": "the pump", "semaphore": "the pump", "latch": "the pump", "barrier": "the pump", "stop_token": "the pump",
    "filesystem": "FileSystem of platform/file_system.h", "fstream": "FileSystem of platform/file_system.h",
    "iostream": "a return value", "ostream": "std::string", "istream": "std::string_view", "iomanip": "std::snprintf",
    "regex": "a hand-written scan", "locale": "the tables of base/", "clocale": "the tables of base/",
    "format": "std::snprintf", "ctime": "Clock", "time.h": "Clock", "csignal": "a status value",
    "csetjmp": "a codec wrapper", "setjmp.h": "a codec wrapper", "stdio.h": "<cstdio> for std::snprintf",
}

# Third-party headers and the files that wrap them.
WRAPPERS = [
    (r"zlib\.h", r"(host/appfile|gfx2d|engine3d)/"),
    (r"png\.h|jpeglib\.h|jerror\.h|setjmp\.h|csetjmp", r"gfx2d/images/(png|jpeg)\w*\.(h|cpp)"),
    (r"immintrin\.h", r"gfx2d/(row_kernels_wide|images/line_kernels_wide)\.cpp"),
    (r"emmintrin\.h", r"gfx2d/images/line_kernels\.cpp"),
    (r"ft2build\.h|freetype/.*", r"platform/text/"),
]
WRAPPERS = [(re.compile(header + r"\Z"), re.compile(path)) for header, path in WRAPPERS]


def check_include(path, header):
    """Why this file may not include this header, or None."""
    for wanted, where in WRAPPERS:
        if wanted.match(header):
            return None if where.match(path) else "only its wrapper may include it"
    if path.startswith(DESKTOP_HOST) and NOT_IN_CORE.get(header) == "the pump":
        return None
    if header in NOT_IN_CORE:
        return f"use {NOT_IN_CORE[header]}"
    if header not in STANDARD:
        return "only a back end or a wrapper named in tools/checks/forbidden.py may include it"
    return None


def main():
    problems = []
    files = [f for f in cpp_files() if not any(f.startswith(folder + "/") for folder in FREE)]
    for path in files:
        text = read(path)
        for line, kind, header in includes(text):
            why = check_include(path, header) if kind == "<" else None
            if why:
                problems.append(f"{path}:{line}: <{header}> in the core; {why}")
        for number, code in enumerate(strip(text).split("\n"), 1):
            if code.lstrip().startswith("#"):
                continue
            if path.startswith(DESKTOP_HOST):
                code = THREADS.sub("", code)
            for pattern, use in CALLS:
                match = pattern.search(code)
                if match:
                    problems.append(f"{path}:{number}: {match.group(0).strip()} in the core; use {use}")
    return finish("forbidden calls", len(files), problems)


if __name__ == "__main__":
    sys.exit(main())
