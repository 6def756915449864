"""The teapot, and what stands around it on the table."""

import math

from shapes import (
    add,
    box,
    cross,
    curve,
    lathe,
    moved,
    mul,
    rotated,
    rounded,
    sheet,
    sub,
    tube,
    unit,
)

BODY = [
    (0.0, 0.0, 0),
    (0.058, 0.0, 0.004),
    (0.061, 0.007, 0.003),
    (0.074, 0.013, 0.012),
    (0.101, 0.05, 0.045),
    (0.098, 0.095, 0.045),
    (0.068, 0.128, 0.02),
    (0.052, 0.136, 0.004),
    (0.052, 0.142, 0.002),
    (0.047, 0.142, 0.002),
    (0.046, 0.13, 0.006),
    (0.064, 0.122, 0.02),
    (0.092, 0.09, 0.04),
    (0.094, 0.05, 0.04),
    (0.06, 0.014, 0.02),
    (0.0, 0.012, 0),
]
LID = [
    (0.0, 0.139, 0),
    (0.044, 0.139, 0.001),
    (0.0455, 0.1425, 0.001),
    (0.0545, 0.1432, 0.0012),
    (0.0555, 0.1465, 0.0015),
    (0.047, 0.151, 0.01),
    (0.022, 0.161, 0.01),
    (0.0105, 0.1625, 0.002),
    (0.0, 0.1625, 0),
]
KNOB = [
    (0.0, 0.161, 0),
    (0.006, 0.161, 0.001),
    (0.0065, 0.169, 0.003),
    (0.0145, 0.173, 0.006),
    (0.0155, 0.184, 0.008),
    (0.008, 0.1905, 0.006),
    (0.0, 0.191, 0),
]


def add_pot(scene):
    pot = scene.node('Teapot', layer='Product')
    scene.shape('Body', lathe(rounded(BODY, 5), 80, 4), 'Copper', pot)
    way = curve(
        [(0.078, 0.048), (0.108, 0.062), (0.134, 0.092), (0.148, 0.122), (0.168, 0.138)], 10
    )
    radii = [r for r, in curve([(0.03,), (0.0235,), (0.0155,), (0.012,), (0.0105,)], 10)]
    outside = [(x, y, 0.0) for x, y in way]
    # The rim turns round and goes a little way back inside.
    rim = unit(sub(outside[-1], outside[-2]))
    path = outside + [
        add(outside[-1], mul(rim, 0.0012)),
        add(outside[-1], mul(rim, 0.0008)),
        add(outside[-1], mul(rim, -0.02)),
    ]
    scene.shape(
        'Spout', tube(path, radii + [0.0095, 0.0082, 0.0078], 28, 2, caps=False), 'Copper', pot
    )
    grip = curve(
        [
            (-0.088, 0.108, 0),
            (-0.118, 0.124, 0),
            (-0.15, 0.116, 0),
            (-0.164, 0.084, 0),
            (-0.15, 0.052, 0),
            (-0.118, 0.036, 0),
            (-0.09, 0.04, 0),
        ],
        10,
    )
    thick = [
        r
        for r, in curve(
            [(0.0065,), (0.0072,), (0.0088,), (0.0096,), (0.009,), (0.0075,), (0.0065,)], 10
        )
    ]
    scene.shape('Handle', tube(grip, thick, 24, 0.35, per_length=3.0), 'Walnut', pot)
    for number, (a, b) in enumerate(((grip[0], grip[9]), (grip[-1], grip[-10])), 1):
        along = unit(sub(b, a))
        ends = [
            sub(a, mul(along, 0.004)),
            add(a, mul(along, 0.001)),
            add(a, mul(along, 0.012)),
            add(a, mul(along, 0.0135)),
        ]
        scene.shape(
            'Ferrule %d' % number, tube(ends, [0.0082, 0.0088, 0.0084, 0.0078], 24), 'Brass', pot
        )
    hinge = [(-0.0535, 0.1425, -0.011), (-0.0535, 0.1425, 0.011)]
    scene.shape('Hinge', tube([hinge[0], hinge[1]], [0.0032, 0.0032], 16), 'Brass', pot)
    for name, angle in (('Lid', 0.0), ('Lid, open', math.radians(98))):
        lid = scene.node(name, pot, 'Product')

        def about_hinge(patches):
            return moved(
                rotated(moved(patches, (0.0535, -0.1425, 0)), 2, angle), (-0.0535, 0.1425, 0)
            )

        scene.shape(name + ' dome', about_hinge(lathe(rounded(LID, 4), 64, 3)), 'Copper', lid)
        scene.shape(name + ' knob', about_hinge(lathe(rounded(KNOB, 5), 36, 1)), 'Walnut', lid)


GLASS = [
    (0.0, 0.0, 0),
    (0.024, 0.0, 0.004),
    (0.029, 0.01, 0.008),
    (0.036, 0.04, 0.03),
    (0.038, 0.08, 0.0),
    (0.0372, 0.0812, 0.0006),
    (0.0362, 0.08, 0.0006),
    (0.034, 0.04, 0.03),
    (0.027, 0.012, 0.006),
    (0.0, 0.008, 0),
]
TEA = [
    (0.0, 0.0085, 0),
    (0.0252, 0.0128, 0.006),
    (0.0325, 0.04, 0.03),
    (0.0341, 0.06, 0.0),
    (0.033, 0.0596, 0.001),
    (0.0, 0.0592, 0),
]
SAUCER = [
    (0.0, 0.0, 0),
    (0.034, 0.0, 0.003),
    (0.037, 0.004, 0.004),
    (0.069, 0.0115, 0.003),
    (0.0705, 0.0138, 0.001),
    (0.068, 0.0142, 0.003),
    (0.04, 0.0075, 0.01),
    (0.0, 0.0065, 0),
]
BOWL = [
    (0.0, 0.0, 0),
    (0.022, 0.0, 0.003),
    (0.024, 0.005, 0.003),
    (0.046, 0.022, 0.02),
    (0.05, 0.042, 0.0),
    (0.0485, 0.0435, 0.001),
    (0.047, 0.042, 0.001),
    (0.043, 0.024, 0.02),
    (0.02, 0.008, 0.008),
    (0.0, 0.007, 0),
]


def add_setting(scene):
    layer = 'Setting'
    setting = scene.node('Setting', layer=layer)

    def ripple(x, z):
        edge = max(0.0, abs(z) - 0.16) / 0.05
        return (
            0.0012
            + 0.0016 * math.sin(x * 19 + z * 7) * math.sin(z * 23 - x * 5) ** 2
            + 0.0004 * edge
        )

    scene.shape(
        'Cloth',
        rotated(sheet(1.18, 0.40, ripple, 72, 28, 9.0), 1, 0.05),
        'Linen',
        setting,
        layer,
        (0.04, 0.0006, 0.02),
    )
    tray = [
        (0.0, 0.0, 0),
        (0.168, 0.0, 0.006),
        (0.176, 0.008, 0.006),
        (0.178, 0.020, 0.003),
        (0.172, 0.0215, 0.003),
        (0.166, 0.013, 0.006),
        (0.0, 0.012, 0),
    ]
    # The grain of a tray runs straight on.
    flat = [
        [[(p, n, (p[0] * 3.4, p[2] * 3.4)) for p, n, _ in row] for row in rows]
        for rows in lathe(rounded(tray, 5), 80, 1)
    ]
    scene.shape('Tray', flat, 'Walnut', setting, layer, (0, 0.003, 0))
    for number, place in enumerate(((0.27, 0.005, 0.085), (0.36, 0.004, -0.075)), 1):
        cup = scene.node('Cup %d' % number, setting, layer, translation=list(place))
        scene.shape('Saucer %d' % number, lathe(rounded(SAUCER, 4), 56, 1), 'Porcelain', cup, layer)
        scene.shape(
            'Tea %d' % number, lathe(rounded(TEA, 4), 56, 1), 'Tea', cup, layer, (0, 0.0075, 0)
        )
        scene.shape(
            'Glass %d' % number,
            lathe(rounded(GLASS, 4), 56, 1),
            'Glass',
            cup,
            layer,
            (0, 0.0072, 0),
        )
    add_spoon(scene, setting, layer)
    bowl = scene.node('Sugar', setting, layer, translation=[-0.3, 0.004, 0.055])
    scene.shape('Bowl', lathe(rounded(BOWL, 4), 56, 1), 'Porcelain', bowl, layer)
    for number, (x, y, z, turn, tilt) in enumerate(
        (
            (-0.016, 0.02, -0.01, 0.3, 0.1),
            (0.013, 0.02, 0.012, 1.1, -0.1),
            (0.012, 0.022, -0.018, 0.7, 0.2),
            (-0.014, 0.022, 0.016, 0.1, 0.15),
            (0.0, 0.037, 0.0, 0.5, 0.45),
            (-0.02, 0.038, 0.004, 1.3, -0.35),
        ),
        1,
    ):
        cube = rotated(rotated(box((0.0175, 0.0145, 0.0175), 0.0022, 3), 2, tilt), 1, turn)
        scene.shape('Cube %d' % number, cube, 'Sugar', bowl, layer, (x, y, z))
    scene.shape(
        'Cube 7',
        rotated(box((0.0175, 0.0145, 0.0175), 0.0022, 3), 1, 0.6),
        'Sugar',
        setting,
        layer,
        (-0.222, 0.0098, 0.108),
    )
    add_vase(scene, setting, layer)


def add_spoon(scene, setting, layer):
    points, radius = (
        curve([(-0.075, 0.003, 0), (-0.03, 0.0045, 0), (0.02, 0.0075, 0), (0.038, 0.006, 0)], 8),
        [],
    )
    for i in range(len(points)):
        t = i / (len(points) - 1)
        radius.append(0.0022 + 0.0016 * max(0.0, 1 - t * 4) + 0.0002 * t)
    stem = [
        [
            [((p[0], 0.006 + (p[1] - 0.006) * 0.75, p[2] * 1.15), n, t) for p, n, t in row]
            for row in rows
        ]
        for rows in tube(points, radius, 16)
    ]
    bowl = []
    for front in (1, -1):
        points = []
        for i in range(17):
            ring = i / 16
            row = []
            for j in range(41):
                angle = 2 * math.pi * j / 40
                x, z = ring * math.cos(angle), ring * math.sin(angle)
                lift = 0.0062 * (ring**2.2) - (0.0 if front > 0 else 0.0009 * (1 - ring**6))
                row.append((0.054 + 0.0185 * x, 0.0012 + lift, (0.0122 - 0.002 * x) * z))
            points.append(row)
        grid = []
        for row in points:
            grid.append(
                [
                    (
                        p,
                        unit(((0.054 - p[0]) * 30, 1.0, -p[2] * 60))
                        if front > 0
                        else unit(((p[0] - 0.054) * 30, -1.0, p[2] * 60)),
                        (0, 0),
                    )
                    for p in row
                ]
            )
        bowl.append(grid)
    spoon = rotated(stem + bowl, 1, -0.9)
    scene.shape('Spoon', spoon, 'Steel', setting, layer, (0.17, 0.0035, 0.165))


def add_vase(scene, setting, layer):
    vase = scene.node('Vase', setting, layer, translation=[-0.42, 0.0, -0.16])
    profile = [
        (0.0, 0.0, 0),
        (0.036, 0.0, 0.006),
        (0.058, 0.03, 0.03),
        (0.062, 0.085, 0.04),
        (0.028, 0.15, 0.03),
        (0.019, 0.185, 0.02),
        (0.0235, 0.205, 0.004),
        (0.0215, 0.2062, 0.001),
        (0.0165, 0.185, 0.02),
        (0.02, 0.15, 0.0),
    ]
    scene.shape('Vase body', lathe(rounded(profile, 4), 56, 2), 'Porcelain', vase, layer)
    twigs, leaves = [], []
    for number, (turn, lean, high) in enumerate(
        ((0.4, 0.10, 0.30), (2.3, 0.16, 0.24), (4.4, 0.13, 0.34), (5.4, 0.2, 0.2))
    ):
        x, z = math.cos(turn), math.sin(turn)
        way = curve(
            [
                (0, 0.12, 0),
                (0.004 * x, 0.2, 0.004 * z),
                (lean * 0.45 * x, 0.2 + high * 0.55, lean * 0.45 * z),
                (lean * x, 0.2 + high, lean * z),
            ],
            10,
        )
        twigs += tube(way, [0.0019 - 0.0012 * i / (len(way) - 1) for i in range(len(way))], 8)
        for k in range(12, len(way), 2):
            for side in (-1, 1):
                leaves += leaf(
                    way[k],
                    unit(sub(way[k], way[k - 1])),
                    turn + side * 1.25 + 0.13 * k,
                    0.034 + 0.012 * ((k * 7 + number) % 3),
                )
    scene.shape('Twigs', twigs, 'Walnut', vase, layer)
    scene.shape('Leaves', leaves, 'Leaf', vase, layer)


def leaf(base, stem, turn, length):
    along = unit((math.cos(turn), 0.55, math.sin(turn)))
    side = unit(cross(along, (0, 1, 0)))
    up = cross(side, along)
    points = []
    for i in range(9):
        t = i / 8
        wide = 0.34 * length * math.sin(math.pi * t**0.8) ** 0.9 if 0 < t < 1 else 0.0
        middle = add(base, add(mul(along, length * t), mul(up, -0.35 * length * t * t)))
        points.append(
            [
                add(middle, add(mul(side, wide * s), mul(up, 0.22 * wide * abs(s))))
                for s in (-1, -0.5, 0, 0.5, 1)
            ]
        )
    rows = []
    for i, row in enumerate(points):
        rows.append(
            [
                (p, unit(add(up, mul(side, -0.3 * s))), (0.5 + 0.5 * s, i / 8))
                for p, s in zip(row, (-1, -0.5, 0, 0.5, 1))
            ]
        )
    return [rows]
