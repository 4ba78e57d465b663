#!/usr/bin/env python3
"""Draws the mouse pointer and writes it as PNG.

    assets/draw_cursor.py FILE

A white arrow with a black edge and a soft shadow, 24 pixels wide and 32 high. Its tip is at the point 3,3, the hot spot
of the pointer. The picture is stored without compression, so the same drawing gives the same file everywhere.
"""
import struct
import sys
import zlib

WIDTH, HEIGHT = 24, 32
HOT_SPOT = 3
SAMPLES = 8  # each pixel is sampled SAMPLES times SAMPLES times

# The arrow's outline in pixels from its tip, without its edge, clockwise.
OUTLINE = [(0, 0), (12.5, 12.5), (7.2, 12.9), (10.4, 20.3), (7.4, 21.6), (4.3, 14.2), (0, 18)]
EDGE = 1.1
SHADOW_OFFSET = 1.5
SHADOW_OPACITY = 0.35


def is_inside(x, y):
    inside = False
    for (x1, y1), (x2, y2) in zip(OUTLINE, OUTLINE[1:] + OUTLINE[:1]):
        if (y1 > y) != (y2 > y) and x < x1 + (y - y1) * (x2 - x1) / (y2 - y1):
            inside = not inside
    return inside


def distance(x, y):
    """From a point to the nearest place of the outline."""
    nearest = []
    for (x1, y1), (x2, y2) in zip(OUTLINE, OUTLINE[1:] + OUTLINE[:1]):
        dx, dy = x2 - x1, y2 - y1
        along = max(0, min(1, ((x - x1) * dx + (y - y1) * dy) / (dx * dx + dy * dy)))
        nearest.append(((x - x1 - along * dx) ** 2 + (y - y1 - along * dy) ** 2) ** 0.5)
    return min(nearest)


def sample(x, y):
    """Brightness and opacity, 0 to 1 each, of a point."""
    if is_inside(x, y) and distance(x, y) > EDGE / 2:
        return 1, 1
    if distance(x, y) <= EDGE:
        return 0, 1
    shadow_x, shadow_y = x - SHADOW_OFFSET, y - SHADOW_OFFSET
    return 0, SHADOW_OPACITY if is_inside(shadow_x, shadow_y) else 0


def pixel(column, row):
    light = opacity = 0
    for i in range(SAMPLES * SAMPLES):
        x = column + (i % SAMPLES + 0.5) / SAMPLES - HOT_SPOT - 0.5
        y = row + (i // SAMPLES + 0.5) / SAMPLES - HOT_SPOT - 0.5
        sample_light, sample_opacity = sample(x, y)
        light += sample_light * sample_opacity
        opacity += sample_opacity
    grey = round(255 * light / opacity) if opacity else 0
    return bytes([grey, grey, grey, round(255 * opacity / SAMPLES ** 2)])


def chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def main():
    if len(sys.argv) != 2 or sys.argv[1].startswith("-"):
        print(__doc__.strip())
        sys.exit(0 if sys.argv[1:] in (["-h"], ["--help"]) else 2)
    rows = b"".join(b"\0" + b"".join(pixel(column, row) for column in range(WIDTH)) for row in range(HEIGHT))
    with open(sys.argv[1], "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n")
        file.write(chunk(b"IHDR", struct.pack(">IIBBBBB", WIDTH, HEIGHT, 8, 6, 0, 0, 0)))
        file.write(chunk(b"IDAT", zlib.compress(rows, 0)))
        file.write(chunk(b"IEND", b""))


main()
