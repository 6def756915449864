"""Pictures for surfaces, reckoned: PNG files that repeat without a seam in both directions."""
import math
import random
import struct
import zlib


def png(width, height, rows, palette=None):
    """The bytes of a PNG file; rows of (red, green, blue), or of places in the palette."""
    raw = bytearray()
    for row in rows:
        raw.append(0)
        if palette:
            raw.extend(row)
        else:
            for pixel in row:
                raw.extend(pixel)

    def chunk(name, data):
        return (
            struct.pack('>I', len(data)) + name + data + struct.pack('>I', zlib.crc32(name + data))
        )

    kind = 3 if palette else 2
    out = b'\x89PNG\r\n\x1a\n' + chunk(
        b'IHDR', struct.pack('>IIBBBBB', width, height, 8, kind, 0, 0, 0)
    )
    if palette:
        out += chunk(b'PLTE', b''.join(bytes(color) for color in palette))
    return out + chunk(b'IDAT', zlib.compress(bytes(raw), 9)) + chunk(b'IEND', b'')


def noise(seed):
    """A smooth field of -1 to 1, f(x, y, period_x, period_y), that repeats after its periods."""
    rng = random.Random(seed)
    table = [rng.random() * 2 - 1 for _ in range(4096)]

    def at(ix, iy, px, py):
        return table[((ix % px) * 57 + (iy % py) * 131 + seed * 17) % 4096]

    def field(x, y, px, py):
        ix, iy = math.floor(x), math.floor(y)
        fx, fy = x - ix, y - iy
        fx, fy = fx * fx * (3 - 2 * fx), fy * fy * (3 - 2 * fy)
        top = at(ix, iy, px, py) * (1 - fx) + at(ix + 1, iy, px, py) * fx
        low = at(ix, iy + 1, px, py) * (1 - fx) + at(ix + 1, iy + 1, px, py) * fx
        return top * (1 - fy) + low * fy

    return field


def ramp(colors, count=64):
    """A palette of colors between those given."""
    palette = []
    for i in range(count):
        t = i / (count - 1) * (len(colors) - 1)
        k = min(int(t), len(colors) - 2)
        palette.append(
            tuple(round(a + (b - a) * (t - k)) for a, b in zip(colors[k], colors[k + 1]))
        )
    return palette


def shades(size, shade, colors):
    """A picture of size x size with the color at `shade(u, v)`, 0 to 1, of a ramp."""
    palette = ramp(colors)
    rows = []
    for y in range(size):
        rows.append(
            bytes(max(0, min(63, int(shade(x / size, y / size) * 63.999))) for x in range(size))
        )
    return png(size, size, rows, palette)


def normals(size, height, strength):
    """The normal map of a relief, given by its height at u, v."""
    field = [[height(x / size, y / size) for x in range(size)] for y in range(size)]
    rows = []
    for y in range(size):
        row = []
        for x in range(size):
            dx = (field[y][(x + 1) % size] - field[y][x - 1]) * strength
            dy = (field[(y + 1) % size][x] - field[y - 1][x]) * strength
            length = math.sqrt(dx * dx + dy * dy + 1)
            # Green points against v.
            row.append(tuple(round(127.5 + 127.5 * part / length) for part in (-dx, dy, 1)))
        rows.append(row)
    return png(size, size, rows)


def wood(colors, seed=3):
    """Grain along u."""
    waves, fibers, spots = noise(seed), noise(seed + 1), noise(seed + 2)

    def shade(u, v):
        bend = 0.5 * waves(u * 2, v * 4, 2, 4) + 0.22 * waves(u * 4, v * 9, 4, 9)
        rings = 0.5 + 0.5 * math.sin(2 * math.pi * (v * 9 + bend * 1.5))
        fiber = fibers(u * 6, v * 170, 6, 170)
        blotch = spots(u * 3, v * 7, 3, 7)
        return 0.5 + 0.24 * (rings - 0.5) + 0.13 * fiber + 0.14 * blotch

    return shades(512, shade, colors)


def linen(colors, seed=11):
    a, b = noise(seed), noise(seed + 1)

    def shade(u, v):
        warp = 0.5 + 0.5 * math.sin(2 * math.pi * 32 * u) * (1 if int(v * 32) % 2 else -1)
        slub = a(u * 64, v * 5, 64, 5) + b(u * 5, v * 64, 5, 64)
        return 0.5 + 0.16 * (warp - 0.5) + 0.17 * slub

    return shades(256, shade, colors)


def linen_relief(seed=11):
    a, b = noise(seed), noise(seed + 1)

    def height(u, v):
        x, y = u * 32, v * 32
        over = (int(x) + int(y)) % 2
        fx, fy = x % 1 - 0.5, y % 1 - 0.5
        thread = math.cos(math.pi * fy) if over else math.cos(math.pi * fx)
        return thread + 0.3 * (a(u * 64, v * 5, 64, 5) + b(u * 5, v * 64, 5, 64))

    return normals(256, height, 0.9)


def hammered(seed=7, count=90):
    """Dents of a hammer: each place belongs to the nearest of some points, on a torus."""
    rng = random.Random(seed)
    points = []
    while len(points) < count:
        best = max(
            ((rng.random(), rng.random()) for _ in range(12)),
            key=lambda p: min([torus(p, q) for q in points] or [1]),
        )
        points.append(best)

    def height(u, v):
        near = sorted(torus((u, v), p) for p in points)[:3]
        # The nearest dents meet in soft ridges.
        lowest = -math.log(sum(math.exp(-900 * d * d) for d in near)) / 900
        return 14 * lowest

    return normals(256, height, 9.0)


def torus(a, b):
    dx, dy = abs(a[0] - b[0]), abs(a[1] - b[1])
    return math.hypot(min(dx, 1 - dx), min(dy, 1 - dy))


def brushed(seed=5):
    fine, coarse = noise(seed), noise(seed + 1)
    return normals(
        256, lambda u, v: fine(u * 3, v * 128, 3, 128) + 0.5 * coarse(u * 2, v * 40, 2, 40), 0.05
    )


def plaster(seed=23):
    a, b = noise(seed), noise(seed + 1)
    return normals(
        256, lambda u, v: a(u * 12, v * 12, 12, 12) + 0.45 * b(u * 40, v * 40, 40, 40), 0.5
    )


def speckles(base, dots, seed=31, count=260):
    """An even glaze with small darker spots."""
    rng = random.Random(seed)
    spots = [(rng.random(), rng.random(), 0.0012 + 0.003 * rng.random() ** 3) for _ in range(count)]
    cells = {}
    for spot in spots:
        for dx in (-1, 0, 1):
            for dy in (-1, 0, 1):
                cells.setdefault(
                    (int(spot[0] * 16 + dx) % 16, int(spot[1] * 16 + dy) % 16), []
                ).append(spot)
    cloud = noise(seed + 1)

    def shade(u, v):
        value = 0.08 + 0.06 * cloud(u * 6, v * 6, 6, 6)
        for x, y, radius in cells.get((int(u * 16), int(v * 16)), ()):
            away = torus((u, v), (x, y)) / radius
            value = max(value, min(1.0, 1.6 - away))
        return value

    return shades(512, shade, [base, dots])


def painting():
    """Hills and a sun, in five flat colors."""
    colors = [(236, 223, 200), (214, 142, 84), (160, 84, 58), (74, 92, 88), (38, 54, 62)]
    width, height = 240, 320
    rows = []
    for y in range(height):
        row = bytearray()
        for x in range(width):
            u, v = x / width, y / height
            place = 0
            if math.hypot((u - 0.62) * 0.75, v - 0.3) < 0.14:
                place = 1
            if v > 0.52 + 0.06 * math.sin(u * 5 + 0.5):
                place = 2
            if v > 0.66 + 0.05 * math.sin(u * 4.2 + 2.3):
                place = 3
            if v > 0.82 + 0.05 * math.sin(u * 6 + 4.0):
                place = 4
            row.append(place)
        rows.append(bytes(row))
    return png(width, height, rows, colors)
