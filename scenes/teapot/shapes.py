"""Shapes for glTF: smooth meshes with normals and texture coordinates, in metres, y up.

A mesh is a list of patches; a patch is a grid of vertices (position, normal, (u, v)), row by row.
"""
import math


def add(a, b):
    return (a[0] + b[0], a[1] + b[1], a[2] + b[2])


def sub(a, b):
    return (a[0] - b[0], a[1] - b[1], a[2] - b[2])


def mul(a, s):
    return (a[0] * s, a[1] * s, a[2] * s)


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def dot(a, b):
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]


def unit(a):
    length = math.sqrt(dot(a, a))
    return mul(a, 1 / length) if length > 1e-12 else (0.0, 1.0, 0.0)


def grid_normals(points, closed_columns=False):
    """Normals of a grid of points by its neighbors."""
    rows, columns = len(points), len(points[0])
    normals = []
    for i in range(rows):
        row = []
        for j in range(columns):
            above, below = points[max(i - 1, 0)][j], points[min(i + 1, rows - 1)][j]
            if closed_columns:
                left, right = points[i][(j - 1) % (columns - 1)], points[i][(j + 1) % (columns - 1)]
            else:
                left, right = points[i][max(j - 1, 0)], points[i][min(j + 1, columns - 1)]
            row.append(unit(cross(sub(right, left), sub(below, above))))
        normals.append(row)
    return normals


def patch(points, normals, uvs):
    return [[(p, n, t) for p, n, t in zip(a, b, c)] for a, b, c in zip(points, normals, uvs)]


def rounded(corners, steps=6):
    """A way through corners (x, y, radius): each corner becomes a curve of about that radius."""
    points = []
    for i, (x, y, radius) in enumerate(corners):
        if radius <= 0 or i in (0, len(corners) - 1):
            points.append((x, y))
            continue
        ax, ay = corners[i - 1][0] - x, corners[i - 1][1] - y
        bx, by = corners[i + 1][0] - x, corners[i + 1][1] - y
        al, bl = math.hypot(ax, ay), math.hypot(bx, by)
        ax, ay, bx, by = ax / al, ay / al, bx / bl, by / bl
        angle = math.acos(max(-1.0, min(1.0, ax * bx + ay * by)))
        cut = min(radius / math.tan(angle / 2), 0.49 * al, 0.49 * bl)
        # A curve through the two ends of the cut, tangent to both sides.
        for k in range(steps + 1):
            t = k / steps
            w0, w1, w2 = (1 - t) ** 2, 2 * t * (1 - t), t * t
            points.append((x + cut * (ax * w0 + bx * w2), y + cut * (ay * w0 + by * w2)))
    return points


def curve(points, steps=12):
    """A smooth way through points of any number of coordinates (Catmull and Rom's)."""
    out = []
    for i in range(len(points) - 1):
        p0, p1 = points[max(i - 1, 0)], points[i]
        p2, p3 = points[i + 1], points[min(i + 2, len(points) - 1)]
        for k in range(steps):
            t = k / steps
            out.append(
                tuple(
                    0.5
                    * (
                        2 * b
                        + (c - a) * t
                        + (2 * a - 5 * b + 4 * c - d) * t * t
                        + (3 * b - a - 3 * c + d) * t**3
                    )
                    for a, b, c, d in zip(p0, p1, p2, p3)
                )
            )
    out.append(tuple(points[-1]))
    return out


def lathe(profile, segments=72, turns=4.0, per_length=None):
    """A profile of (radius, y) turned around the y axis; what is on its right is outside."""
    lengths = [0.0]
    for (r0, y0), (r1, y1) in zip(profile, profile[1:]):
        lengths.append(lengths[-1] + math.hypot(r1 - r0, y1 - y0))
    slopes = []
    for i in range(len(profile)):
        (r0, y0), (r1, y1) = profile[max(i - 1, 0)], profile[min(i + 1, len(profile) - 1)]
        length = math.hypot(r1 - r0, y1 - y0) or 1.0
        slopes.append(((y1 - y0) / length, -(r1 - r0) / length))
    scale = per_length or turns / max(2 * math.pi * max(r for r, _ in profile), 1e-6)
    rows = []
    for (r, y), (nr, ny), length in zip(profile, slopes, lengths):
        row = []
        for j in range(segments + 1):
            angle = -2 * math.pi * j / segments
            c, s = math.cos(angle), math.sin(angle)
            row.append(
                (
                    (r * c, y, r * s),
                    unit((nr * c, ny, nr * s)),
                    (turns * j / segments, -length * scale),
                )
            )
        rows.append(row)
    return [rows]


def tube(path, radii, segments=20, turns=1.0, per_length=None, caps=True):
    """A tube along points in space, a radius each."""
    tangents = [
        unit(sub(path[min(i + 1, len(path) - 1)], path[max(i - 1, 0)])) for i in range(len(path))
    ]
    side = unit(cross(tangents[0], (0.12, 0.99, 0.08) if abs(tangents[0][1]) < 0.9 else (1, 0, 0)))
    rows, length = [], 0.0
    ways = list(zip(path, tangents, radii))
    if caps:
        first, last = ways[0], ways[-1]
        ways = [(first[0], first[1], 1e-5)] + ways + [(last[0], last[1], 1e-5)]
    scale = per_length or turns / (2 * math.pi * max(radii))
    for i, (place, tangent, radius) in enumerate(ways):
        side = unit(sub(side, mul(tangent, dot(side, tangent))))
        up = cross(tangent, side)
        if i:
            length += math.sqrt(dot(sub(place, ways[i - 1][0]), sub(place, ways[i - 1][0])))
        row = []
        for j in range(segments + 1):
            angle = 2 * math.pi * j / segments
            out = add(mul(side, math.cos(angle)), mul(up, math.sin(angle)))
            normal = out
            if caps and i == 0:
                normal = mul(tangent, -1)
            if caps and i == len(ways) - 1:
                normal = tangent
            row.append(
                (add(place, mul(out, radius)), normal, (turns * j / segments, length * scale))
            )
        rows.append(row)
    return [[list(row) for row in rows]]


def box(size, radius=0.004, steps=3, uv=1.0):
    """A box around the origin with rounded edges; `uv`: repetitions of a picture per metre."""
    half = tuple(s / 2 for s in size)
    radius = min(radius, *(h * 0.999 for h in half))
    inner = tuple(h - radius for h in half)

    def ticks(axis):
        bevel = [inner[axis] + radius * math.sin(math.pi / 2 * k / steps) for k in range(steps + 1)]
        if radius <= 0:
            bevel = [half[axis]]
        return [-b for b in reversed(bevel)] + bevel

    patches = []
    for axis in range(3):
        a, b = (axis + 1) % 3, (axis + 2) % 3
        for sign in (-1, 1):
            rows = []
            for va in ticks(a):
                row = []
                for vb in ticks(b) if sign > 0 else reversed(ticks(b)):
                    p = [0.0, 0.0, 0.0]
                    p[axis], p[a], p[b] = sign * half[axis], va, vb
                    core = [max(-i, min(i, c)) for i, c in zip(inner, p)]
                    away = unit(tuple(c - k for c, k in zip(p, core)))
                    place = tuple(k + radius * n for k, n in zip(core, away))
                    if radius <= 0:
                        away, place = tuple(
                            float(sign) if i == axis else 0.0 for i in range(3)
                        ), tuple(p)
                    flat = (place[a], place[b]) if size[a] < size[b] else (place[b], place[a])
                    row.append(
                        (place, away, (flat[1] * uv + 0.31 * axis, flat[0] * uv + 0.17 * sign))
                    )
                rows.append(row)
            # The cross product of a and b is the axis: rows run along a, columns along b.
            patches.append(turned(rows))
    return patches


def turned(rows):
    """A grid with rows and columns exchanged."""
    return [list(column) for column in zip(*rows)]


def sheet(width, depth, height=None, columns=2, rows=2, uv=1.0):
    """A sheet in the plane of x and z, its front up; `height(x, z)` may lift it."""
    lift = height or (lambda x, z: 0.0)
    points, uvs = [], []
    for i in range(rows + 1):
        z = (i / rows - 0.5) * depth
        xs = [(j / columns - 0.5) * width for j in range(columns + 1)]
        points.append([(x, lift(x, z), z) for x in xs])
        uvs.append([(x * uv, z * uv) for x in xs])
    normals = [[mul(n, -1) for n in row] for row in grid_normals(points)]
    return [[list(reversed(row)) for row in patch(points, normals, uvs)]]


def moved(patches, by):
    return [[[(add(p, by), n, t) for p, n, t in row] for row in rows] for rows in patches]


def rotated(patches, axis, angle):
    c, s = math.cos(angle), math.sin(angle)
    a, b = [(1, 2), (2, 0), (0, 1)][axis]

    def turn(v):
        out = list(v)
        out[a], out[b] = c * v[a] - s * v[b], s * v[a] + c * v[b]
        return tuple(out)

    return [[[(turn(p), turn(n), t) for p, n, t in row] for row in rows] for rows in patches]


def triangles(patches):
    """Positions, normals, texture coordinates and the indices of triangles that have an area."""
    positions, normals, uvs, indices = [], [], [], []
    for rows in patches:
        base, columns = len(positions), len(rows[0])
        for row in rows:
            for p, n, t in row:
                positions.append(p)
                normals.append(n)
                uvs.append(t)
        for i in range(len(rows) - 1):
            for j in range(columns - 1):
                corners = [
                    base + i * columns + j,
                    base + i * columns + j + 1,
                    base + (i + 1) * columns + j + 1,
                    base + (i + 1) * columns + j,
                ]
                for a, b, c in ((0, 1, 2), (0, 2, 3)):
                    a, b, c = corners[a], corners[b], corners[c]
                    across = cross(sub(positions[b], positions[a]), sub(positions[c], positions[a]))
                    if dot(across, across) < 1e-22:
                        continue
                    facing = dot(across, add(add(normals[a], normals[b]), normals[c]))
                    indices.extend((a, b, c) if facing >= 0 else (a, c, b))
    return positions, normals, uvs, indices
