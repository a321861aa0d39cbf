#!/usr/bin/env python3
"""Draws the add-in's ribbon button images as 32 x 32 BMP files.

Usage: button-images.py OUTDIR

Writes REPORT.bmp (a sheet with lines of text), STATISTICS.bmp (a bar
chart) and SETTINGS.bmp (a cog wheel): 32 bits per pixel, BI_RGB, bottom-up,
with an alpha channel and the colours premultiplied by it, as Windows'
AlphaBlend and Office's ribbon take them. Each shape is a small function of
the pixel's position, sampled 4 x 4 times per pixel for smooth edges. Only
the standard library: the build needs nothing else.
"""

import math
import os
import struct
import sys

SIZE = 32
SAMPLES = 4

REPORT_BLUE = (43, 87, 154)
STATISTICS_GREEN = (33, 115, 70)
SETTINGS_GREY = (96, 96, 96)
WHITE = (255, 255, 255)


def inside_box(x, y, left, top, right, bottom):
    return left <= x < right and top <= y < bottom


def report(x, y):
    """A sheet with a folded corner and four lines of text."""
    if not inside_box(x, y, 6, 2, 26, 30):
        return None
    # The folded corner: the triangle above the diagonal is cut away.
    if x > 19 and y < 9 and (x - 19) > y - 2:
        return None
    if x > 19 and y < 9 and (x - 19) > y - 3:
        return REPORT_BLUE
    border = not inside_box(x, y, 7.5, 3.5, 24.5, 28.5)
    if border:
        return REPORT_BLUE
    for top in (11, 15, 19, 23):
        right = 17 if top == 23 else 22
        if inside_box(x, y, 10, top, right, top + 2):
            return REPORT_BLUE
    return WHITE


def statistics(x, y):
    """Three rising bars on a base line."""
    if inside_box(x, y, 3, 27, 29, 29.5):
        return STATISTICS_GREEN
    for left, top in ((5, 17), (13, 10), (21, 4)):
        if inside_box(x, y, left, top, left + 6, 27):
            return STATISTICS_GREEN
    return None


def settings(x, y):
    """A cog wheel of eight teeth with a hole in its middle."""
    dx, dy = x - 16, y - 16
    r = math.hypot(dx, dy)
    if r < 4.5:
        return None
    if r < 10:
        return SETTINGS_GREY
    if r < 14:
        angle = math.atan2(dy, dx) % (math.pi / 4)
        # Each tooth spans about a third of its eighth of the circle.
        if abs(angle - math.pi / 8) < math.pi / 16:
            return SETTINGS_GREY
    return None


def pixels(shape):
    """Rows bottom-up of (b, g, r, a) with premultiplied colours."""
    rows = []
    for row in range(SIZE - 1, -1, -1):
        line = []
        for col in range(SIZE):
            acc = [0.0, 0.0, 0.0]
            covered = 0
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    colour = shape(col + (sx + 0.5) / SAMPLES, row + (sy + 0.5) / SAMPLES)
                    if colour is None:
                        continue
                    covered += 1
                    for i in range(3):
                        acc[i] += colour[i]
            n = SAMPLES * SAMPLES
            alpha = round(255 * covered / n)
            # Premultiplied: the colour's average over all samples.
            r, g, b = (round(c / n) for c in acc)
            line.append((b, g, r, alpha))
        rows.append(line)
    return rows


def bmp(shape):
    data = b"".join(struct.pack("<BBBB", *p) for line in pixels(shape) for p in line)
    info = struct.pack("<IiiHHIIiiII", 40, SIZE, SIZE, 1, 32, 0, len(data), 2835, 2835, 0, 0)
    header = struct.pack("<2sIHHI", b"BM", 14 + len(info) + len(data), 0, 0, 14 + len(info))
    return header + info + data


def main():
    if len(sys.argv) != 2:
        sys.exit("usage: button-images.py OUTDIR")
    out = sys.argv[1]
    os.makedirs(out, exist_ok=True)
    for name, shape in (("REPORT", report), ("STATISTICS", statistics), ("SETTINGS", settings)):
        with open(os.path.join(out, name + ".bmp"), "wb") as f:
            f.write(bmp(shape))


if __name__ == "__main__":
    main()
