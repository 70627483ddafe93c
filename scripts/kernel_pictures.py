#!/usr/bin/env python3
"""Draws the pictures of docs/kernels/: what each deliberate oddity of the kernels does.

Usage: scripts/kernel_pictures.py    (needs ImageMagick, and the program kernel_picture:
       cmake --preset native -DTAVO_BUILD_BENCH=ON &&
       cmake --build --preset native --target kernel_picture)

Most have the source, what the formulas by themselves would give, and what the kernel gives. The middle
one is computed here; the last one is always made by the kernel.
"""

import os
import random
import subprocess
import sys

sys.dont_write_bytecode = True
from kernel_drawing import (  # beside this file
    FONT, OUT, TOOL, automatic_slots, axis, bilinear_plane, blend, colours, draw, draw_table, kernel, panel,
    per_colour, scale_plane, scale_rgb24, scale_yuy2, to_rgb,
)

AUTO, BILINEAR_AUTO = 0, 2
NEAREST, NEAREST_MMX, BILINEAR, BILINEAR_MMX, BILINEAR_SSE = 3, 4, 6, 7, 8
BLACK, WHITE, RED, BLUE = (0, 0, 0), (255, 255, 255), (220, 30, 30), (30, 60, 220)


def lines(width, height, step, first=0):
    return [[255 if x % step == first else 0 for x in range(width)] for _ in range(height)]


def quarter():
    source = [[255 if x % 5 == 2 or y % 5 == 2 else 0 for x in range(16)] for y in range(16)]
    draw(
        "quarter",
        panel(source, 160, "source, 16 x 16"),
        panel(scale_plane(BILINEAR, "width", source, (16, 16)), 160, "Bi-Linear at the same size"),
        panel(scale_plane(BILINEAR, "both", source, (12, 12)), 160, "Bi-Linear, 12 x 12"),
    )


def fixed():
    source = lines(32, 8, 4, 2)
    draw(
        "fixed_ratio",
        panel(source, 192, "source, 32 wide"),
        panel(scale_plane(BILINEAR, "width", source, (24, 8)), 192, "4 to 3 by a map"),
        panel(scale_plane(BILINEAR, "640", source, (24, 8)), 192, "4 to 3 by the fixed ratio"),
    )


def last_row():
    source = [[WHITE if x % 2 else RED for x in range(6)] for _ in range(4)]
    plain = per_colour(lambda plane: bilinear_plane(plane, (36, 24)), source)
    draw(
        "last_row",
        panel(source, 180, "source, RGB24, 6 x 4"),
        panel(plain, 180, "6 times, by the formula"),
        panel(scale_rgb24(BILINEAR, "both", source, (36, 24)), 180, "the kernel: the last six rows"),
    )


def right_strip():
    source = [[255 if x == 7 else 40 for x in range(8)] for _ in range(6)]
    draw(
        "right_strip",
        panel(source, 160, "source, a plane of 8 x 6"),
        panel(bilinear_plane(source, (12, 9)), 180, "3/2, by the formula"),
        panel(scale_plane(BILINEAR, "both", source, (12, 9)), 180, "the kernel: the last column"),
    )


def packed_last_row():
    lumas = [[235 if x % 4 == 1 else 40 for x in range(8)] for _ in range(4)]
    chromas = [[(128, 128)] * 4 for _ in range(4)]
    draw(
        "packed_last_row",
        panel(lumas, 160, "source, 4:2:2, 8 x 4"),
        panel(bilinear_plane(lumas, (48, 24), True), 192, "6 times, by the formula"),
        panel(scale_yuy2(BILINEAR, "both", lumas, chromas, (48, 24))[0], 192, "the kernel: last six rows"),
    )


def stripes(groups, height):
    red, blue = (90, 230), (230, 100)
    lumas = [[110] * groups * 2 for _ in range(height)]
    return lumas, [[red if g % 2 else blue for g in range(groups)] for _ in range(height)]


def packed_nearest():
    lumas, chromas = stripes(9, 8)
    target = (12, 8)
    chosen = [[to_rgb(110, chromas[0][i // 2]) for i, _ in axis(18, 12)] for _ in range(8)]
    draw(
        "packed_nearest",
        panel(colours(lumas, chromas), 180, "source, 4:2:2, 18 wide"),
        panel(chosen, 180, "the colours of the chosen pixels"),
        panel(colours(*scale_yuy2(NEAREST, "width", lumas, chromas, target)), 180, "the kernel, 12 wide"),
    )


def packed_odd_chroma():
    lumas, chromas = stripes(3, 6)
    factor, target = 8, (48, 6)
    smooth = []
    for x in range(0, target[0], 2):
        position = max(x / factor / 2, 0)
        g, rest = int(position), position - int(position)
        a, b = chromas[0][g], chromas[0][min(g + 1, 2)]
        smooth.append(tuple(round(p + (q - p) * rest) for p, q in zip(a, b)))
    rows = [[110] * target[0] for _ in range(6)]
    draw(
        "packed_odd_chroma",
        panel(colours(lumas, chromas), 192, "source, 4:2:2, 6 wide", 72),
        panel(colours(rows, [smooth] * 6), 192, "8 times, over both pixels", 72),
        panel(colours(*scale_yuy2(BILINEAR, "width", lumas, chromas, target)), 192,
              "the kernel: over the odd one", 72),
    )


def marked(one, other):
    """White where both are the same, red where they differ."""
    return [[RED if p != q else WHITE for p, q in zip(a, b)] for a, b in zip(one, other)]


def rounding():
    chance = random.Random(1)
    plane = [[chance.randrange(256) for _ in range(36)] for _ in range(12)]
    one = scale_plane(BILINEAR, "720", plane, (24, 12))
    other = scale_plane(BILINEAR_SSE, "720", plane, (24, 12))
    draw(
        "rounding",
        panel(plane, 180, "source, noise"),
        panel(other, 180, "720 to 480 of a plane, _SSE"),
        panel(marked(one, other), 180, "red: 1 above _Portable"),
    )


def row_ends():
    source = [[255 if x == 15 else 0 for x in range(16)] for _ in range(6)]
    target = (12, 6)
    plain = [[row[i] if w is None else blend(row[i], row[i + 1], w)
              for i, w in [(0, None), (1, 85), (2, 170), (4, None), (5, 85), (6, 170), (8, None),
                           (9, 85), (10, 170), (12, None), (13, 85), (14, 170)]] for row in source]
    draw(
        "row_ends",
        panel(source, 192, "source, the last column white"),
        panel(plain, 180, "640 to 480, by the table"),
        panel(scale_plane(BILINEAR, "640", source, target), 180, "the kernel: it is lost"),
    )


def mixed():
    text = subprocess.run(
        ["convert-im6.q16", "-size", "96x24", "xc:white", "-font", FONT, "-pointsize", "17", "+antialias"]
        + ["-annotate", "+2+18", "Mira 640", "-depth", "8", "rgb:-"], stdout=subprocess.PIPE, check=True
    ).stdout
    source = [[tuple(text[(y * 96 + x) * 3 :][:3]) for x in range(96)] for y in range(24)]
    draw(
        "mixed_pixel",
        panel(source, 288, "source, 96 wide"),
        panel(scale_rgb24(NEAREST, "640", source, (72, 24)), 288, "Nearest Neighbor"),
        panel(scale_rgb24(NEAREST_MMX, "640", source, (72, 24)), 288, "Nearest Neighbor MMX"),
    )


def wrong_ratio():
    words = []
    for i in range(9):
        words += ["-annotate", f"+{i * 80 + 30}+28", str(i + 1)]
    ruler = subprocess.run(
        ["convert-im6.q16", "-size", "720x36", "xc:white", "-font", FONT, "-pointsize", "30"]
        + words + ["-depth", "8", "rgb:-"], stdout=subprocess.PIPE, check=True
    ).stdout
    source = [[tuple(ruler[(y * 720 + x) * 3 :][:3]) for x in range(720)] for y in range(36)]
    draw(
        "ratio_of_640",
        panel(source, 360, "source, 720 wide"),
        panel(scale_rgb24(NEAREST, "720", source, (480, 36)), 240, "Nearest Neighbor", 24),
        panel(scale_rgb24(NEAREST_MMX, "720", source, (480, 36)), 240, "Nearest Neighbor MMX", 24),
    )


def spill():
    source = [[BLUE if x == 15 else (250, 220, 60) for x in range(16)] for _ in range(8)]
    draw(
        "spill",
        panel(source, 160, "source, RGB24"),
        panel(scale_rgb24(BILINEAR_MMX, "640", source, (12, 8)), 156, "Bi-Linear MMX: no spill"),
        panel(scale_rgb24(BILINEAR, "640", source, (12, 8)), 156, "Bi-Linear: first column"),
    )


def faint_end():
    source = [[WHITE if x >= 14 else BLACK for x in range(16)] for _ in range(6)]
    plain = [[BLACK] * 10 + [(blend(0, 255, 85),) * 3, WHITE] for _ in range(6)]
    draw(
        "faint_end",
        panel(source, 160, "source, RGB24"),
        panel(plain, 156, "by the table"),
        panel(scale_rgb24(BILINEAR_MMX, "640", source, (12, 6)), 156, "Bi-Linear MMX"),
    )


def group_chroma():
    lumas = [[110] * 16 for _ in range(6)]
    pairs = [(90, 230), (230, 100), (60, 70), (128, 128)] * 2
    chromas = [pairs for _ in range(6)]

    def third(a, b):
        return tuple(blend(p, q, 85) for p, q in zip(a, b))

    def mean(a, b):
        return tuple((p + q) >> 1 for p, q in zip(a, b))

    plain = []
    for first in (0, 4):
        a, b, c, d = pairs[first : first + 4]
        plain += [mean(a, third(a, b)), mean(b, c), mean(third(c, d), d)]
    draw(
        "group_chroma",
        panel(colours(lumas, chromas), 192, "source, 4:2:2, 16 wide"),
        panel(colours([[110] * 12] * 6, [plain] * 6), 192, "640 to 480, column 3 by its own"),
        panel(colours(*scale_yuy2(BILINEAR, "640", lumas, chromas, (12, 6))), 192, "the kernel"),
    )


def dimmed():
    chance = random.Random(2)
    lumas = [[chance.randrange(1, 256) for _ in range(32)] for _ in range(12)]
    chromas = [[(128, 128)] * 16 for _ in range(12)]
    one = scale_yuy2(BILINEAR, "640", lumas, chromas, (24, 12))[0]
    other = scale_yuy2(BILINEAR_SSE, "640", lumas, chromas, (24, 12))[0]
    draw(
        "dimmed",
        panel(lumas, 192, "source, 4:2:2, noise"),
        panel(other, 192, "640 to 480 by _MMX and _SSE"),
        panel(marked(one, other), 192, "red: 1 below _Portable"),
    )


# What pictures of memory are painted with: a picture's own bytes are grey.
UNTOUCHED, STRAY = (150, 190, 240), RED
BEFORE = 2


def memory(data, stride, rows, is_picture):
    """The bytes of these rows: blue where they hold what they held before, red where others do."""
    return [
        [
            data[y * stride + x] if is_picture(x, y)
            else UNTOUCHED if data[y * stride + x] == BEFORE
            else STRAY
            for x in range(stride)
        ]
        for y in range(rows)
    ]


def padding():
    width, stride, target = 3, 12, (3, 6)
    chance = random.Random(3)
    source = []
    for _ in range(4):
        source += [chance.randrange(60, 256) for _ in range(width * 3)] + [0] * (stride - width * 3)

    def shown(data, rows):
        return memory(data, stride, rows, lambda x, y: x < width * 3)

    def scaled(slot):
        return shown(kernel("RGB24", slot, "height", source, (width, 4), target, BEFORE), target[1])

    draw(
        "padding",
        panel(shown(source, 4), 180, "source, RGB24, 3 x 4"),
        panel(scaled(BILINEAR), 180, "Bi-Linear, 3 x 6"),
        panel(scaled(NEAREST), 180, "Nearest Neighbor, 3 x 6"),
    )


def copied(slot, *level):
    """A plane of 9 x 5 as a copy leaves it, and the two rows of memory behind it."""
    source = [60 + 4 * i for i in range(45)]
    data = kernel("planar", slot, "copy", source, (9, 5), (9, 5), BEFORE, *level)
    return memory(data, 9, 7, lambda x, y: y < 5)


def copy_spill():
    source = [[60 + 4 * (9 * y + x) for x in range(9)] for y in range(5)]
    draw(
        "copy_spill",
        panel(source, 162, "source, a plane of 9 x 5"),
        panel(copied(BILINEAR), 162, "by CopyPlane_Portable"),
        panel(copied(BILINEAR_MMX), 162, "by CopyPlane_MMX"),
    )


def automatic_copy():
    draw(
        "automatic_copy",
        panel(copied(AUTO, 0), 162, "AUTO, no MMX"),
        panel(copied(BILINEAR_AUTO, 0), 162, "Bi-Linear AUTO, no MMX"),
        panel(copied(BILINEAR_AUTO, 2), 162, "Bi-Linear AUTO, SSE"),
    )


def automatic_slots_of_thirds():
    variants = {BILINEAR: ("_Portable", "#dddddd"), BILINEAR_MMX: ("_MMX", "#b8d4f4"),
                BILINEAR_SSE: ("_SSE", "#bfe6bf")}
    rows = [[(text, "white") for text in ("AUTO, YUY2", "no MMX", "MMX", "SSE")]]
    for axes, title in (("both", "both axes"), ("width", "width"), ("640", "640 to 480"), ("720", "720 to 480")):
        slots = [automatic_slots("YUY2", axes, level)[AUTO] for level in (0, 1, 2)]
        rows.append([(title, "white")] + [variants[slot] for slot in slots])
    draw_table("automatic_slots", rows)


def main():
    if not os.access(TOOL, os.X_OK):
        sys.exit(__doc__)
    os.makedirs(OUT, exist_ok=True)
    for picture in (
        quarter, fixed, last_row, right_strip, packed_last_row, packed_nearest, packed_odd_chroma,
        rounding, row_ends, mixed, wrong_ratio, spill, faint_end, group_chroma,
        dimmed, padding, copy_spill, automatic_slots_of_thirds, automatic_copy,
    ):
        picture()


main()
