#!/usr/bin/env python3
"""Decodes picture files that others made and compares every pixel with what an established decoder gives.

    tests/pictures/run.py [--tool PATH]     against expected.json; needs no network and no other decoder
    tests/pictures/run.py --refresh         compares with Pillow and ImageMagick, which must agree with us or with the
                                            reason that RULES gives, and writes expected.json
    tests/pictures/run.py --packages        fetches the source packages of SOURCES and compares all their pictures

A file is decoded at its own depth, at 24 and at 32 bits. Its entry holds the error, or the hash of its pixels in all
frames. The last line is `N passed, N failed`.
"""

import argparse
import fnmatch
import json
import os
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
FILES = os.path.join(HERE, "files")
EXPECTED = os.path.join(HERE, "expected.json")
SOURCES = ["pillow", "libgd2", "gdk-pixbuf", "libpng1.6", "libjpeg-turbo", "netpbm-free", "imagemagick"]
SUFFIXES = (".bmp", ".dib", ".tga", ".pcx", ".fli", ".flc", ".png", ".jpg", ".jpeg")

# What the filters do by their own rules, where other decoders differ: pattern, why.
RULES = [
    ("*[-_]bottom[-_]right.tga", "lines always go from the left"),
    ("*[-_]top[-_]right.tga", "lines always go from the left"),
    ("*p_16*.tga", "colours of five bits widen with zeros"),
    ("*pal8offs.bmp", "the offset of the pixels isn't looked at"),
    ("*pal8oversizepal.bmp", "more than 256 colours are passed over"),
    ("*rgb24largepal.bmp", "the pixels follow the header at once"),
    ("*rgb24pal.bmp", "the pixels follow the header at once"),
    ("*rgb16-565pal.bmp", "the pixels follow the masks at once"),
    ("*pal8badindex.bmp", "indices past the palette are black"),
    ("*badrle.bmp", "runs are cut at the end of a line"),
    ("*colormap-too-small.tga", "indices past the colour map are black"),
    ("*01r_00.pcx", "lines shorter than the picture leave the rest black"),
    ("*premature-end.jpg", "the lines that are there"),
    ("*truncated_jpeg.jpg", "the lines that are there"),
    ("*bug775697.jpg", "the lines that are there"),
]


def rule_of(path):
    return next((why for pattern, why in RULES if fnmatch.fnmatch(path, pattern)), None)


def run_tool(tool, options, paths):
    """What the tool says of each file: {"error": N}, or the picture with its hash."""
    done = subprocess.run([tool] + options + paths, capture_output=True, text=True, timeout=300)
    if done.returncode not in (0, 1):
        sys.exit(f"{tool} ended with status {done.returncode}\n{done.stderr}")
    results = {}
    for line in done.stdout.splitlines():
        path, what = line.split(" ", 1)
        words = what.split()
        if words[0] == "error":
            results[path] = {"error": int(words[1])}
        else:
            results[path] = {"picture": " ".join(words[:-1]), "hash": words[-1]}
    return results


def decode(tool, paths):
    own = run_tool(tool, ["--frames"], paths)
    results = dict(own)
    for depth in ("24", "32"):
        wide = run_tool(tool, ["--frames", "--depth", depth], paths)
        for path in paths:
            # Black with alpha isn't 0, so it stays apart from transparent when the alpha goes.
            if depth == "24" and " 32 bits" in own[path].get("picture", ""):
                continue
            if wide[path] != own[path]:
                results[path] = {"differs": f"{own[path]}, at {depth} bits {wide[path]}"}
    return results


def find_files(folder):
    found = []
    for base, _, names in os.walk(folder):
        found += [os.path.join(base, name) for name in names if name.lower().endswith(SUFFIXES) and " " not in name]
    return sorted(found)


def our_pixels(tool, path):
    done = subprocess.run([tool, "--ppm", path], capture_output=True, timeout=60)
    if done.returncode:
        return None
    _, size, _, pixels = done.stdout.split(b"\n", 3)
    return tuple(map(int, size.split())), pixels


def pillow_pixels(path):
    try:
        from PIL import Image
    except ImportError:
        return None
    Image.MAX_IMAGE_PIXELS = None
    try:
        image = Image.open(path)
        image.load()
        if image.mode in ("LA", "PA", "RGBA"):
            image = Image.merge("RGB", image.convert("RGBA").split()[:3])
        elif image.mode == "I" or image.mode.startswith("I;16"):
            image = image.point(lambda v: v / 256).convert("L")
        image = image.convert("RGB")
        return image.size, image.tobytes()
    except Exception:  # whatever a decoder says of a broken file
        return None


def magick_pixels(path):
    done = subprocess.run(["convert", path + "[0]", "-auto-orient", "-alpha", "off", "-depth", "8", "ppm:-"],
                          capture_output=True, timeout=120)
    parts = done.stdout.split(b"\n", 3)
    if done.returncode or len(parts) < 4 or parts[0] != b"P6" or parts[1].startswith(b"#"):
        return None
    return tuple(map(int, parts[1].split())), parts[3]


def same(ours, theirs, depth):
    if theirs is None or ours[0] != theirs[0]:
        return False
    if depth > 16 or depth == 8:
        return ours[1] == theirs[1]
    # Others repeat the high bits in the low ones.
    masks = (0xF8, 0xFC, 0xF8) if depth == 16 else (0xF8, 0xF8, 0xF8)
    return all(theirs[1][i] & masks[i % 3] == ours[1][i] for i in range(len(ours[1])))


def compare(tool, path, ours):
    """How other decoders see it: "agrees", "refused", "rule: ..." or "differs"."""
    if "error" in ours:
        return "refused"
    if "differs" in ours:
        return "differs"
    depth = int(ours["picture"].split()[2])
    pixels = our_pixels(tool, path)
    if any(same(pixels, other(path), depth) for other in (pillow_pixels, magick_pixels)):
        return "agrees"
    why = rule_of(path)
    return f"rule: {why}" if why else "differs"


def fetch(folder):
    """The sources, by a configuration of apt's own that leaves the machine's alone."""
    os.makedirs(os.path.join(folder, "lists", "partial"))
    listing = os.path.join(folder, "src.list")
    with open(listing, "w", encoding="ascii") as out:
        out.write("deb-src http://deb.debian.org/debian bookworm main\n")
    apt = ["apt-get", "-qq", "-o", f"Dir::Etc::sourcelist={listing}", "-o", "Dir::Etc::sourceparts=-", "-o",
           f"Dir::State::lists={folder}/lists", "-o", "APT::Sandbox::User=root"]
    subprocess.run(apt + ["update"], check=True)
    subprocess.run(apt + ["source", "--download-only"] + SOURCES, cwd=folder, check=True)
    for name in sorted(os.listdir(folder)):
        if ".orig.tar" in name and not name.endswith(".asc"):
            subprocess.run(["tar", "xf", name], cwd=folder, check=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--tool", default=os.path.join(ROOT, "build", "tests", "vl_decode_picture"))
    parser.add_argument("--refresh", action="store_true")
    parser.add_argument("--packages", action="store_true")
    args = parser.parse_args()
    passed = failed = 0
    if args.refresh or args.packages:
        with tempfile.TemporaryDirectory() as folder:
            if args.packages:
                fetch(folder)
            base = folder if args.packages else FILES
            paths = find_files(base)
            entries = {}
            for path, ours in decode(args.tool, paths).items():
                verdict = compare(args.tool, path, ours)
                entries[os.path.relpath(path, base)] = dict(ours, others=verdict)
                if verdict == "differs":
                    failed += 1
                    print(f"FAILED {os.path.relpath(path, base)}: {ours}")
                else:
                    passed += 1
        if args.refresh:
            with open(EXPECTED, "w", encoding="ascii") as out:
                json.dump(entries, out, indent=1, sort_keys=True)
                out.write("\n")
    else:
        with open(EXPECTED, encoding="ascii") as file:
            expected = json.load(file)
        got = decode(args.tool, find_files(FILES))
        got = {os.path.relpath(path, FILES): what for path, what in got.items()}
        for name in sorted(set(expected) | set(got)):
            want = {k: v for k, v in expected.get(name, {}).items() if k != "others"}
            if got.get(name) == want:
                passed += 1
            else:
                failed += 1
                print(f"FAILED {name}: expected {want}, got {got.get(name)}")
    print(f"{passed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
