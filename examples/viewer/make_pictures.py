#!/usr/bin/env python3
"""Makes the pictures of this example: three landscapes by formulas. Needs ImageMagick for the file forms.

    examples/viewer/make_pictures.py
"""

import math
import os
import random
import subprocess

HERE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "pictures")
W, H = 400, 300


def mix(a, b, t):
    t = max(0.0, min(1.0, t))
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def ridge(rng, low, high, rough):
    """Heights of a line of hills, by midpoint displacement."""
    points = [rng.uniform(low, high), rng.uniform(low, high)]
    spread = (high - low) * rough
    while len(points) < W:
        grown = []
        for a, b in zip(points, points[1:]):
            grown += [a, (a + b) / 2 + rng.uniform(-spread, spread)]
        points = grown + points[-1:]
        spread *= 0.55
    return points


def sunset(rng):
    hills = [(ridge(rng, 150, 175, 0.7), (92, 40, 80)), (ridge(rng, 168, 190, 0.6), (58, 22, 60))]
    for y in range(H):
        for x in range(W):
            if y > 190:
                glint = math.exp(-((x - 260) / (14 + (y - 190) * 0.5)) ** 2) * (0.6 + 0.4 * math.sin(y * 1.9 + x * 0.05))
                c = mix((60, 30, 80), (255, 170, 90), glint * 0.9 + (210 - y) / 160)
            else:
                c = mix((30, 32, 92), (250, 120, 60), y / 175)
                d = math.hypot(x - 260, y - 160)
                c = mix(mix(c, (255, 170, 90), 0.7 - d / 200), (255, 240, 180), (36 - d) / 5)
                for heights, colour in hills:
                    if y > heights[x]:
                        c = mix(colour, c, 0.12)
            yield c


def night(rng):
    stars = {(rng.randrange(W), rng.randrange(190)): rng.uniform(0.3, 1) for _ in range(220)}
    layers = [(ridge(rng, 150, 200, 0.9), (28, 50, 92)), (ridge(rng, 190, 235, 0.7), (16, 32, 64)),
              (ridge(rng, 240, 268, 0.5), (6, 14, 30))]
    for y in range(H):
        for x in range(W):
            c = mix((6, 8, 30), (46, 84, 140), y / 240)
            moon = math.hypot(x - 90, y - 70)
            c = mix(c, (200, 210, 255), 0.35 - moon / 240)
            if moon < 26:
                shade = 0.1 if math.hypot(x - 82, y - 62) < 7 or math.hypot(x - 99, y - 78) < 5 else 0
                c = mix((250, 248, 225), (190, 190, 180), shade * 6)
            elif (x, y) in stars:
                c = mix(c, (255, 255, 255), stars[x, y])
            for heights, colour in layers:
                if y > heights[x]:
                    c = colour
            yield c


def meadow(rng):
    flowers = [(rng.uniform(0, W), rng.uniform(185, H), rng.choice([(240, 60, 60), (250, 210, 60), (250, 250, 250)]))
               for _ in range(90)]
    clouds = [(rng.uniform(0, W), rng.uniform(20, 100), rng.uniform(18, 42)) for _ in range(14)]
    hill = ridge(rng, 140, 165, 0.5)
    for y in range(H):
        for x in range(W):
            if y < hill[x]:
                c = mix((70, 140, 225), (200, 228, 250), y / 160)
                for cx, cy, r in clouds:
                    c = mix(c, (255, 255, 255), 0.8 * (1 - math.hypot((x - cx) / 2.2, y - cy) / r))
            else:
                c = mix((120, 190, 70), (30, 100, 30), (y - 140) / 160)
                c = mix(c, (60, 130, 40), 0.25 + 0.25 * math.sin(x * 0.9 + y * y * 0.02))
            for fx, fy, colour in flowers:
                size = 1.5 + (fy - 180) / 30
                d = math.hypot(x - fx, y - fy)
                if d < size:
                    c = mix((250, 200, 40), colour, d / size * 2)
            yield c


def write(name, pixels, *options):
    body = b"".join(bytes(int(max(0, min(255, v))) for v in c) for c in pixels)
    ppm = b"P6\n%d %d\n255\n" % (W, H) + body
    subprocess.run(["convert", "ppm:-", *options, os.path.join(HERE, name)], input=ppm, check=True)


def main():
    os.makedirs(HERE, exist_ok=True)
    write("sunset.jpg", sunset(random.Random(3)), "-quality", "90")
    write("night.png", night(random.Random(8)), "-define", "png:exclude-chunks=date,time", "-strip")
    write("meadow.pcx", meadow(random.Random(5)), "-colors", "200", "+dither")


if __name__ == "__main__":
    main()
