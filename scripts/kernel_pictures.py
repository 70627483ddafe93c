#!/usr/bin/env python3
"""Draws the pictures of docs/kernels/: what each deliberate oddity of the kernels does.

Usage: scripts/kernel_pictures.py    (needs ImageMagick, and the program kernel_picture:
       cmake --preset native -DTAVO_BUILD_BENCH=ON &&
       cmake --build --preset native --target kernel_picture)

Each picture has the source, what the formulas by themselves would give, and what the kernel gives.
The middle one is computed here; the last one is always made by the kernel.
"""

import os
import random
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
TOOL = os.path.join(ROOT, "build/native/bench/kernel_picture")
OUT = os.path.join(ROOT, "docs/kernels")
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"
NEAREST, NEAREST_MMX, BILINEAR, BILINEAR_MMX, BILINEAR_SSE = 3, 4, 6, 7, 8
BLACK, WHITE, RED, BLUE = (0, 0, 0), (255, 255, 255), (220, 30, 30), (30, 60, 220)


def blend(a, b, weight):
    return a + (((b - a) * weight) >> 8)


def axis(source, target):
    """Index and weight of each entry."""
    ratio = source / target
    offset = 0.25 if ratio >= 1 else 0.0
    entries = []
    for i in range(target):
        x = i * ratio
        entries.append((int(x), min(int((x - int(x) + offset) * 256), 255)))
    return entries


# Pictures are lists of rows; a pixel is a number where the picture is a plane, else three.
def size(picture):
    return len(picture[0]), len(picture)


def kernel(family, slot, axes, data, source, target):
    text = ["%dx%d" % source, "%dx%d" % target]
    return subprocess.run(
        [TOOL, family, str(slot), axes] + text, input=bytes(data), stdout=subprocess.PIPE, check=True
    ).stdout


def scale_plane(slot, axes, picture, target):
    data = kernel("planar", slot, axes, sum(picture, []), size(picture), target)
    return [list(data[y * target[0] : (y + 1) * target[0]]) for y in range(target[1])]


def scale_rgb24(slot, axes, picture, target):
    def stride(width):
        return (width * 3 + 3) // 4 * 4

    data = b""
    for row in picture:
        line = b"".join(bytes(reversed(pixel)) for pixel in row)
        data += line.ljust(stride(len(row)), b"\0")
    out = kernel("RGB24", slot, axes, data, size(picture), target)
    rows = []
    for y in range(target[1]):
        line = out[y * stride(target[0]) :]
        rows.append([tuple(reversed(line[x * 3 : x * 3 + 3])) for x in range(target[0])])
    return rows


def scale_yuy2(slot, axes, lumas, chromas, target):
    """lumas: a plane. chromas: rows of (U, V), one for each two pixels. Returns both."""
    data = b""
    for row, pairs in zip(lumas, chromas):
        for i, (u, v) in enumerate(pairs):
            data += bytes([row[2 * i], u, row[2 * i + 1], v])
    out = kernel("YUY2", slot, axes, data, size(lumas), target)
    stride = target[0] * 2
    rows = [out[y * stride : (y + 1) * stride] for y in range(target[1])]
    return (
        [list(row[0::2]) for row in rows],
        [list(zip(row[1::4], row[3::4])) for row in rows],
    )


def to_rgb(luma, chroma):
    y, u, v = luma - 16, chroma[0] - 128, chroma[1] - 128
    parts = (1.164 * y + 1.596 * v, 1.164 * y - 0.392 * u - 0.813 * v, 1.164 * y + 2.017 * u)
    return tuple(max(0, min(255, round(part))) for part in parts)


def colours(lumas, chromas):
    return [[to_rgb(y, chromas[r][x // 2]) for x, y in enumerate(row)] for r, row in enumerate(lumas)]


def bilinear_plane(picture, target, across_first=False):
    """The formula with no departures: at an edge a sample is its own neighbour."""
    width, height = size(picture)
    columns, rows = axis(width, target[0]), axis(height, target[1])
    out = []
    for iy, wy in rows:
        below = min(iy + 1, height - 1)
        line = []
        for ix, wx in columns:
            right = min(ix + 1, width - 1)
            a, b, c, d = picture[iy][ix], picture[iy][right], picture[below][ix], picture[below][right]
            if across_first:
                line.append(blend(blend(a, b, wx), blend(c, d, wx), wy))
            else:
                line.append(blend(blend(a, c, wy), blend(b, d, wy), wx))
        out.append(line)
    return out


def per_colour(function, picture):
    planes = [function([[pixel[i] for pixel in row] for row in picture]) for i in range(3)]
    return [list(zip(*rows)) for rows in zip(*planes)]


def panel(picture, width, label, height=None):
    """A picture enlarged to this width, and to this height if the pixels shall not be square."""
    columns, rows = size(picture)
    height = height or round(rows * width / columns)
    pixels = [p if isinstance(p, tuple) else (p, p, p) for row in picture for p in row]
    ppm = b"P6 %d %d 255\n" % (columns, rows) + b"".join(bytes(p) for p in pixels)
    return ppm, f"{width}x{height}!", label


def draw(name, *panels):
    files, arguments = [], ["convert-im6.q16", "-background", "white"]
    for i, (ppm, shown, label) in enumerate(panels):
        path = os.path.join(OUT, f"{name}.{i}.ppm")
        with open(path, "wb") as file:
            file.write(ppm)
        files.append(path)
        arguments += ["(", "(", path, "-filter", "point", "-resize", shown]
        arguments += ["-bordercolor", "#888888", "-border", "1", ")"]
        arguments += ["(", "-font", FONT, "-pointsize", "12", "-fill", "#222222", f"label:{label}", ")"]
        arguments += ["-gravity", "Center", "-append", "-bordercolor", "white", "-border", "6x4", ")"]
    arguments += ["-gravity", "North", "+append", "-strip", "+dither", "-colors", "256"]
    subprocess.run(arguments + [f"PNG8:{OUT}/{name}.png"], check=True)
    for path in files:
        os.remove(path)


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


def main():
    if not os.access(TOOL, os.X_OK):
        sys.exit(__doc__)
    os.makedirs(OUT, exist_ok=True)
    for picture in (
        quarter, fixed, last_row, right_strip, packed_last_row, packed_nearest, packed_odd_chroma,
        rounding, row_ends, mixed, wrong_ratio, spill, faint_end, group_chroma,
    ):
        picture()


main()
