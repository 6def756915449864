#!/usr/bin/env python3
"""Draws the pictures that the plug-in ships: res/default_image.tif and res/icon.tif.

A spotlight falls on a taped cross, the mark that tells an actor where to stand. Everything is a distance
function, sampled several times a pixel in linear light, so that edges are smooth at every size. Needs nothing
but Python's standard library. With a folder as argument the pictures go there, as PNG files for looking at.
"""

import math
import struct
import sys
import zlib
from pathlib import Path

SAMPLES = 5  # per pixel and side


def linear(*rgb):
    return tuple(c / 255 / 12.92 if c <= 10 else ((c / 255 + 0.055) / 1.055) ** 2.4 for c in rgb)


WALL_TOP, WALL_LOW = linear(24, 28, 35), linear(40, 46, 56)
FLOOR_FAR, FLOOR_NEAR = linear(47, 53, 63), linear(23, 26, 32)
LIGHT = linear(255, 228, 178)
TAPE, TAPE_DARK = linear(255, 176, 58), linear(226, 142, 38)
STEEL, STEEL_DARK = linear(112, 122, 137), linear(70, 78, 90)
CORNERS = linear(104, 114, 128)


def mix(a, b, t):
    return tuple(x + (y - x) * t for x, y in zip(a, b))


def smooth(edge0, edge1, x):
    t = min(1.0, max(0.0, (x - edge0) / (edge1 - edge0)))
    return t * t * (3 - 2 * t)


def box(x, y, half_x, half_y, radius):
    dx, dy = abs(x) - half_x + radius, abs(y) - half_y + radius
    return math.hypot(max(dx, 0), max(dy, 0)) + min(max(dx, dy), 0) - radius


def turned(x, y, angle):
    c, s = math.cos(angle), math.sin(angle)
    return x * c + y * s, y * c - x * s


class Stage:
    """The scene in units of the large picture: 160 wide, 120 high, y downwards."""

    def __init__(self, lamp, center, radii, horizon, arm, tape, corners, lamp_size):
        self.lamp, self.center, self.radii, self.horizon = lamp, center, radii, horizon
        self.arm, self.tape, self.corners, self.lamp_size = arm, tape, corners, lamp_size
        self.angle = math.atan2(center[1] - lamp[1], center[0] - lamp[0])

    def room(self, y):
        if y < self.horizon:
            return mix(WALL_TOP, WALL_LOW, max(0, y / self.horizon) ** 1.6)
        return mix(FLOOR_FAR, FLOOR_NEAR, ((y - self.horizon) / (120 - self.horizon)) ** 0.7)

    def pool(self, x, y):
        """How much light falls on the floor here, 0..1."""
        u, v = (x - self.center[0]) / self.radii[0], (y - self.center[1]) / self.radii[1]
        r = math.hypot(u, v)
        return (1 - smooth(0.80, 1.08, r)) * (1 - 0.30 * min(r, 1) ** 2)

    def beam(self, x, y):
        """How bright the lit air is here, 0..1: a cone from the lamp to the widest line of the pool."""
        t = (y - self.lamp[1]) / (self.center[1] - self.lamp[1])
        if t <= 0:
            return 0.0
        if t > 1:
            # In front of that line the cone ends with the rim of the pool.
            t, y = 1.0, self.center[1] - (y - self.center[1])
            if self.pool(x, y) == 0:
                return 0.0
        middle = self.lamp[0] + (self.center[0] - self.lamp[0]) * t
        half = self.lamp_size * 0.6 + (self.radii[0] * 1.04 - self.lamp_size * 0.6) * t
        rim = 1 - smooth(0.62, 1.0, abs(x - middle) / half)
        return rim * (0.62 - 0.50 * t)

    def cross(self, x, y):
        """Which strip of tape lies here: 0 none, 1 the lower, 2 the upper one."""
        u = (x - self.center[0]) / self.radii[0]
        v = (y - self.center[1]) / self.radii[1]
        a, b = (u + v) / math.sqrt(2), (u - v) / math.sqrt(2)
        if box(a, b, self.arm, self.tape, 0.02) < 0:
            return 2
        return 1 if box(b, a, self.arm, self.tape, 0.02) < 0 else 0

    def fixture(self, x, y, below):
        """The lamp on its bar over what is `below`."""
        size = self.lamp_size
        px, py = turned(x - self.lamp[0], y - self.lamp[1], self.angle)
        glow = math.exp(-((px - size * 0.7) ** 2 + py * py) / (size * size * 1.3))
        color = tuple(c + l * glow * 0.30 for c, l in zip(below, LIGHT))
        if box(x - self.lamp[0], y - self.lamp[1] + size * 0.9, size * 0.17, size * 0.9, size * 0.1) < 0:
            color = STEEL_DARK
        if box(px + size * 0.35, py, size * 0.85, size * 0.62, size * 0.26) < 0:
            color = mix(STEEL, STEEL_DARK, smooth(-0.6, 0.6, py / size))
        if box(px - size * 0.62, py, size * 0.2, size * 0.78, size * 0.14) < 0:
            color = mix(LIGHT, STEEL, 0.12)
        return color

    def corner(self, x, y):
        if not self.corners:
            return False
        inset, arm, thick = 9.0, 11.0, 0.75
        dx, dy = 80 - inset - abs(x - 80), 60 - inset - abs(y - 60)
        inside = -thick < dx and -thick < dy and (dx < arm and dy < arm)
        return inside and (dx < thick or dy < thick)

    def color(self, x, y):
        color = self.room(y)
        pool = self.pool(x, y)
        if y >= self.horizon - 1:
            color = tuple(c + l * 0.34 * pool for c, l in zip(color, LIGHT))
        strip = self.cross(x, y)
        if strip:
            tape = TAPE if strip == 2 else TAPE_DARK
            color = tuple(c * (0.28 + 0.80 * pool) for c in tape)
        beam = self.beam(x, y) * (0.45 if strip else 1)
        color = tuple(c + l * 0.30 * beam for c, l in zip(color, LIGHT))
        color = self.fixture(x, y, color)
        return mix(color, CORNERS, 0.8) if self.corner(x, y) else color


def encoded(value):
    value = min(1.0, max(0.0, value))
    value = value * 12.92 if value <= 0.0031308 else 1.055 * value ** (1 / 2.4) - 0.055
    return int(value * 255 + 0.5)


def render(stage, width, height, area):
    """Rows of RGB bytes; `area` is the part of the scene to show: left, top, right, bottom."""
    left, top, right, bottom = area
    rows = []
    for j in range(height):
        row = bytearray()
        for i in range(width):
            total = [0.0, 0.0, 0.0]
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    x = left + (i + (sx + 0.5) / SAMPLES) / width * (right - left)
                    y = top + (j + (sy + 0.5) / SAMPLES) / height * (bottom - top)
                    total = [t + c for t, c in zip(total, stage.color(x, y))]
            # A grain of less than one step keeps the slow gradients free of bands.
            grain = ((i * 1973 + j * 9277 + i * j * 26699) % 251 / 251 - 0.5) * 0.0012
            row += bytes(encoded(t / SAMPLES**2 + grain) for t in total)
        rows.append(bytes(row))
    return rows


def tiff(width, height, rows):
    """A little-endian TIFF file of 24-bit RGB, one strip, deflated."""
    data = zlib.compress(b"".join(rows), 9)
    bits_at, data_at = 8, 14
    directory_at = data_at + len(data) + len(data) % 2
    short, long = 3, 4
    entries = [
        (256, short, 1, width), (257, short, 1, height), (258, short, 3, bits_at), (259, short, 1, 8),
        (262, short, 1, 2), (273, long, 1, data_at), (274, short, 1, 1), (277, short, 1, 3),
        (278, short, 1, height), (279, long, 1, len(data)), (284, short, 1, 1),
    ]  # fmt: skip
    directory = struct.pack("<H", len(entries)) + b"".join(struct.pack("<HHII", *entry) for entry in entries)
    head = struct.pack("<2sHI", b"II", 42, directory_at) + struct.pack("<3H", 8, 8, 8)
    return head + data + b"\0" * (len(data) % 2) + directory + struct.pack("<I", 0)


def png(width, height, rows):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    raw = b"".join(b"\0" + row for row in rows)
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b"")


WIDE = Stage(lamp=(112, 25), center=(74, 86), radii=(43, 18), horizon=62, arm=0.66, tape=0.125, corners=True, lamp_size=7.5)
# The icon shows the same in few, large forms.
CLOSE = Stage(lamp=(110, 20), center=(78, 84), radii=(54, 29), horizon=50, arm=0.76, tape=0.17, corners=False, lamp_size=13)

PICTURES = {
    "default_image": (WIDE, 160, 120, (0, 0, 160, 120)),
    "icon": (CLOSE, 32, 32, (20, 0, 140, 120)),
}


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parents[2] / "res"
    encode, suffix = (png, ".png") if len(sys.argv) > 1 else (tiff, ".tif")
    for name, (stage, width, height, area) in PICTURES.items():
        (folder / (name + suffix)).write_bytes(encode(width, height, render(stage, width, height, area)))


if __name__ == "__main__":
    main()
