"""What kernel_pictures.py draws with: kernels, the formulas by themselves, and pictures side by side.

Pictures are lists of rows; a pixel is a number where the picture is a plane, else three.
"""

import os
import subprocess

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
TOOL = os.path.join(ROOT, "build/native/bench/kernel_picture")
OUT = os.path.join(ROOT, "docs/kernels")
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"


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


def size(picture):
    return len(picture[0]), len(picture)


def kernel(family, slot, axes, data, source, target, *memory):
    """memory: the BEFORE and LEVEL of the program, if what lies behind the picture is wanted too."""
    text = ["%dx%d" % source, "%dx%d" % target] + [str(number) for number in memory]
    return subprocess.run(
        [TOOL, family, str(slot), axes] + text, input=bytes(data), stdout=subprocess.PIPE, check=True
    ).stdout


def automatic_slots(family, axes, level):
    """Which slots "AUTO", "Nearest Neighbor AUTO" and "Bi-Linear AUTO" stand for."""
    text = subprocess.run([TOOL, family, axes, str(level)], stdout=subprocess.PIPE, check=True).stdout
    return [int(line) for line in text.split()]


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


def draw_table(name, rows):
    """rows: of (text, colour)."""
    arguments = ["convert-im6.q16"]
    for row in rows:
        arguments.append("(")
        for text, colour in row:
            arguments += ["-size", "150x24", "-gravity", "Center", "-background", colour, "-fill", "#222222"]
            arguments += ["-font", FONT, "-pointsize", "12", "(", f"label:{text}"]
            arguments += ["-bordercolor", "white", "-border", "1", ")"]
        arguments += ["+append", ")"]
    arguments += ["-append", "-strip", "+dither", "-colors", "256", f"PNG8:{OUT}/{name}.png"]
    subprocess.run(arguments, check=True)
