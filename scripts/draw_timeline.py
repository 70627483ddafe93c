#!/usr/bin/env python3
"""Draws when the frames of a video come and when the regulator sends them.

Usage: scripts/draw_timeline.py SECONDS OUTPUT.png LABEL=TIMES.csv...

Each file is what slot_times.exe printed for the same video at some rate; LABEL names the rate. The
incoming frames stand above, a row of slots for each file below. Needs ImageMagick.
"""

import csv
import subprocess
import sys

WIDTH = 1180
LEFT = 110
ROW = 44
GAP = 44
TOP = 46
UNITS = 10_000_000
COLOURS = ["#2f6db3", "#e08a1e", "#3a9a5b", "#b8485a", "#7d62b5", "#8a7a2d", "#3b9ba8", "#a3568f"]


def read(path):
    rows = {"in": [], "out": []}
    with open(path, newline="") as file:
        for direction, picture, start, stop in csv.reader(file):
            rows[direction].append((int(picture), int(start), int(stop)))
    return rows


class Drawing:
    def __init__(self, seconds, rows):
        self.scale = (WIDTH - LEFT - 20) / (seconds * UNITS)
        self.end = seconds * UNITS
        self.height = TOP + rows * (ROW + GAP) - GAP + 14
        self.parts = []

    def x(self, time):
        return LEFT + min(time, self.end) * self.scale

    def text(self, x, y, text, anchor="middle", size=13, colour="#222222"):
        self.parts.append(
            f"fill '{colour}' stroke none font-size {size} text-anchor {anchor} "
            f"text {x:.1f},{y:.1f} '{text}'"
        )

    def line(self, x1, y1, x2, y2, colour="#bbbbbb"):
        self.parts.append(f"stroke '{colour}' line {x1:.1f},{y1:.1f} {x2:.1f},{y2:.1f}")

    def frame(self, picture, start, stop, y, label):
        left, right = self.x(start), self.x(stop)
        colour = COLOURS[picture % len(COLOURS)]
        self.parts.append(
            f"fill '{colour}' stroke white "
            f"rectangle {left:.1f},{y} {max(right, left + 2):.1f},{y + ROW}"
        )
        if label:
            self.text((left + right) / 2, y + ROW / 2 + 5, str(picture), colour="#ffffff", size=12)

    def axis(self, seconds):
        for tenth in range(0, int(seconds * 2) + 1):
            x = self.x(tenth * UNITS // 2)
            self.line(x, TOP - 10, x, self.height - 4)
            self.text(x, TOP - 18, f"{tenth / 2:.1f} s", size=12, colour="#666666")

    def write(self, path):
        font = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
        subprocess.run(
            ["convert-im6.q16", "-size", f"{WIDTH}x{self.height}", "xc:white", "-font", font]
            + ["-draw", "\n".join(self.parts), "-depth", "8", "-colors", "64", path],
            check=True,
        )


def main():
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    seconds = float(sys.argv[1])
    runs = [argument.split("=", 1) for argument in sys.argv[3:]]
    drawing = Drawing(seconds, 1 + len(runs))
    drawing.axis(seconds)

    y = TOP
    drawing.text(LEFT - 10, y + ROW / 2 + 5, "as it comes", anchor="end")
    for picture, start, stop in read(runs[0][1])["in"]:
        if start < drawing.end:
            drawing.frame(picture, start, stop, y, True)
    for label, path in runs:
        y += ROW + GAP
        drawing.text(LEFT - 10, y + ROW / 2 + 5, label, anchor="end")
        shown = None
        for picture, start, stop in read(path)["out"]:
            if start < drawing.end:
                drawing.frame(picture, start, stop, y, picture != shown)
                shown = picture
    drawing.write(sys.argv[2])


main()
