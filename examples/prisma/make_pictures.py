#!/usr/bin/env python3
"""Makes the pictures of this game by formulas: bricks, bat, ball, gifts, sparks and the wall. Needs nothing but Python.

    examples/prisma/make_pictures.py
"""

import math
import os
import struct
import zlib

HERE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "pictures")
SAMPLES = (1 / 6, 1 / 2, 5 / 6)


def write(name, width, height, shade):
    """shade(x, y) gives red, green, blue from 0 to 1 and how much of the point is covered."""
    rows = b""
    for y in range(height):
        rows += b"\0"
        for x in range(width):
            points = [shade(x + a, y + b) for b in SAMPLES for a in SAMPLES]
            cover = sum(p[3] for p in points) / len(points)
            weight = sum(p[3] for p in points) or 1
            colour = [sum(p[i] * p[3] for p in points) / weight for i in range(3)]
            rows += bytes(round(255 * min(1, max(0, c))) for c in colour) + bytes([255 if cover >= 0.5 else 0])
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    with open(os.path.join(HERE, name + ".png"), "wb") as f:
        f.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0)) +
                chunk(b"IDAT", zlib.compress(rows, 9)) + chunk(b"IEND", b""))


def lit(colour, light):
    return tuple(c * light if light <= 1 else c + (1 - c) * (light - 1) for c in colour)


def rounded(x, y, w, h, r):
    """Distance into a box with round corners, below 0 outside."""
    dx, dy = max(r - x, x - (w - r), 0), max(r - y, y - (h - r), 0)
    return r - math.hypot(dx, dy) if dx or dy else min(x, y, w - x, h - y)


def brick(colour, steel=False):
    def shade(x, y):
        inside = rounded(x, y, 44, 18, 4)
        light = 1.5 - y / 18 * 0.9
        if inside < 2.2:
            light *= 1.25 if y < 9 else 0.6
        if steel and (x + y) % 8 < 2:
            light *= 0.8
        return (*lit(colour, light), inside >= 0)
    return shade


def bat(width):
    def shade(x, y):
        inside = rounded(x, y, width, 16, 8)
        colour = (0.85, 0.25, 0.2) if x < 14 or x > width - 14 else (0.62, 0.66, 0.75)
        return (*lit(colour, 1.7 - abs(y - 5) / 7), inside >= 0)
    return shade


def ball(x, y):
    d = math.hypot(x - 7, y - 7)
    shine = math.hypot(x - 5, y - 4.5)
    return (*lit((0.35, 0.75, 1.0), 1.9 - shine / 6), d <= 6.6)


def gift(colour, turn):
    def shade(x, y):
        narrow = abs(math.cos(turn)) * 0.85 + 0.15
        u, v = (x - 12) / narrow, y - 12
        d = math.hypot(u, v)
        light = 1.05 + 0.25 * math.cos(turn) - v / 30
        return (*lit(colour if d < 8.2 else (1, 0.95, 0.6), light), d <= 11)
    return shade


def spark(step):
    def shade(x, y):
        u, v = x - 16, y - 16
        d, a = math.hypot(u, v), math.atan2(v, u)
        ray = abs(math.sin(a * 4)) ** 6
        reach = 4 + step * 2.6
        ring = abs(d - reach) < 2.6 - step * 0.4 + ray * 2
        return (1.0, 0.95 - step * 0.13, 0.5 - step * 0.09, ring)
    return shade


def wall(x, y):
    row = int(y // 16)
    u = (x + (row % 2) * 16) % 32
    edge = u < 1.2 or y % 16 < 1.2
    base = 0.16 + 0.05 * math.sin(x * 0.7 + row * 2.1) * math.cos(y * 0.9)
    light = 0.6 if edge else 1 + 0.25 * (1 - (y % 16) / 16)
    return (base * 0.8 * light, base * 0.85 * light, base * 1.7 * light, 1)


COLOURS = {"a": (0.90, 0.25, 0.28), "b": (0.95, 0.60, 0.20), "c": (0.90, 0.85, 0.25), "d": (0.30, 0.75, 0.35),
           "e": (0.30, 0.55, 0.95), "f": (0.65, 0.40, 0.90)}
GIFTS = {"wide": (0.9, 0.5, 0.2), "slow": (0.3, 0.7, 0.9), "life": (0.9, 0.25, 0.4), "more": (0.4, 0.8, 0.4)}

if __name__ == "__main__":
    os.makedirs(HERE, exist_ok=True)
    for name, colour in COLOURS.items():
        write("brick_" + name, 44, 18, brick(colour))
    write("brick_s", 44, 18, brick((0.6, 0.62, 0.66), True))
    write("bat", 80, 16, bat(80))
    write("bat_wide", 128, 16, bat(128))
    write("ball", 14, 14, ball)
    write("wall", 64, 64, wall)
    for name, colour in GIFTS.items():
        for step in range(8):
            write(f"{name}{step}", 24, 24, gift(colour, step * math.pi / 8))
    for step in range(6):
        write(f"spark{step}", 32, 32, spark(step))
