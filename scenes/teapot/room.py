"""The room, and three kinds of light: daylight, a lamp in the evening, a studio."""

import math

from shapes import box, lathe, moved, rotated, rounded, sheet, tube, unit


def add_room(scene):
    layer = 'Room'
    room = scene.node('Room', layer=layer)
    top = rotated(box((0.92, 0.032, 1.7), 0.006, 3, 1.9), 1, math.pi / 2)
    table = scene.node('Table', room, layer)
    scene.shape('Table top', top, 'Oak', table, layer, (0, -0.016, 0))
    for number, (x, z) in enumerate(
        ((-0.76, -0.38), (0.76, -0.38), (-0.76, 0.38), (0.76, 0.38)), 1
    ):
        leg = [(0.0, -0.74, 0), (0.017, -0.74, 0.002), (0.03, -0.03, 0), (0.0, -0.03, 0)]
        scene.shape(
            'Leg %d' % number, lathe(rounded(leg, 4), 32, 1, 1.1), 'Oak', table, layer, (x, 0, z)
        )
    walls = scene.node('Walls', room, layer)
    scene.shape('Floor', sheet(5.6, 6, uv=0.8), 'Walnut', walls, layer, (1.2, -0.74, 0.4))
    scene.shape(
        'Ceiling', rotated(sheet(5.6, 6), 0, math.pi), 'Ceiling', walls, layer, (1.2, 1.66, 0.4)
    )
    scene.shape(
        'Back wall',
        moved(box((5.6, 2.4, 0.1), 0.0, 1, 1.3), (1.2, 0.46, -1.15)),
        'Wall',
        walls,
        layer,
    )
    scene.shape(
        'Baseboard', box((5.6, 0.1, 0.02), 0.004), 'Paint', walls, layer, (1.2, -0.69, -1.09)
    )
    rail = scene.node('Window', walls, layer)
    x, z0, z1, y0, y1 = -1.55, -0.86, 0.62, 0.06, 1.54
    for number, (z, y, depth, height) in enumerate(
        (
            ((-1.1 + z0) / 2, 0.46, z0 + 1.1, 2.4),
            ((z1 + 3.4) / 2, 0.46, 3.4 - z1, 2.4),
            ((z0 + z1) / 2, (-0.74 + y0) / 2, z1 - z0, y0 + 0.74),
            ((z0 + z1) / 2, (y1 + 1.66) / 2, z1 - z0, 1.66 - y1),
        ),
        1,
    ):
        scene.shape(
            'Left wall %d' % number,
            box((0.12, height, depth), 0.0, 1, 1.3),
            'Wall',
            walls,
            layer,
            (x, y, z),
        )
    bars = [
        ((z0 + z1) / 2, y0 + 0.022, z1 - z0, 0.044),
        ((z0 + z1) / 2, y1 - 0.022, z1 - z0, 0.044),
        (z0 + 0.022, (y0 + y1) / 2, 0.044, y1 - y0),
        (z1 - 0.022, (y0 + y1) / 2, 0.044, y1 - y0),
        ((z0 + z1) / 2, (y0 + y1) / 2, 0.03, y1 - y0),
        ((z0 + z1) / 2, y0 + 0.62 * (y1 - y0), z1 - z0, 0.026),
    ]
    for number, (z, y, depth, height) in enumerate(bars, 1):
        scene.shape(
            'Bar %d' % number, box((0.05, height, depth), 0.004, 3), 'Paint', rail, layer, (x, y, z)
        )
    scene.shape(
        'Sill',
        box((0.26, 0.03, z1 - z0 + 0.1), 0.008, 4),
        'Paint',
        rail,
        layer,
        (x + 0.1, y0 - 0.01, (z0 + z1) / 2),
    )
    frame = scene.node('Framed picture', walls, layer, translation=[0.50, 0.62, -1.085])
    for number, (dx, dy, width, height) in enumerate(
        (
            (0, 0.295, 0.47, 0.03),
            (0, -0.295, 0.47, 0.03),
            (-0.22, 0, 0.03, 0.56),
            (0.22, 0, 0.03, 0.56),
        ),
        1,
    ):
        scene.shape(
            'Frame %d' % number,
            box((width, height, 0.03), 0.005, 4),
            'Oak',
            frame,
            layer,
            (dx, dy, 0),
        )
    scene.shape('Mount', box((0.42, 0.57, 0.012), 0.0, 1), 'Porcelain', frame, layer)
    canvas = [
        [
            [
                ((p[0], -p[2], 0.0), (0, 0, 1), (p[0] / 0.3 + 0.5, p[2] / 0.4 + 0.5))
                for p, _, _ in row
            ]
            for row in rows
        ]
        for rows in sheet(0.3, 0.4)
    ]
    scene.shape('Hills', canvas, 'Picture', frame, layer, (0, 0, 0.0075))
    pendant = scene.node('Pendant', room, layer, translation=[0.1, 0.56, -0.04])
    shade = rounded(
        [
            (0.15, 0.0, 0),
            (0.151, 0.003, 0.001),
            (0.118, 0.072, 0.04),
            (0.04, 0.105, 0.02),
            (0.02, 0.125, 0.004),
            (0.0, 0.126, 0),
        ],
        8,
    )
    scene.shape('Shade', lathe(shade, 64, 1), 'Shade', pendant, layer)
    inside = [(r - 0.0025 if r > 0.003 else r, y - 0.003) for r, y in reversed(shade)]
    scene.shape('Shade lining', lathe(inside[2:-2] + [(0.15, 0.0)], 64, 1), 'Shade', pendant, layer)
    scene.shape(
        'Cord', tube([(0, 0.12, 0), (0, 1.1, 0)], [0.003, 0.003], 10), 'Shade', pendant, layer
    )


def add_light(scene):
    day = scene.node('Daylight', layer='Daylight')
    sky = rotated(sheet(9, 9), 2, -math.pi / 2)
    scene.shape('Day sky', sky, 'Day', day, 'Daylight', (-6.0, 1.2, -0.2))
    scene.lamp('Sun', (-4.65, 3.4, 0.1), (1.0, 0.87, 0.68), 1.0, 0.07, day, 'Daylight')
    scene.lamp(
        'Window light', (-1.42, 0.75, -0.15), (0.84, 0.91, 1.0), 0.8, 0.5, day, 'Daylight', 6.0
    )
    evening = scene.node('Evening', layer='Evening')
    scene.shape('Dusk sky', sky, 'Dusk', evening, 'Evening', (-6.0, 1.2, -0.2))
    scene.lamp('Lamp', (0.1, 0.575, -0.04), (1.0, 0.66, 0.34), 1.0, 0.045, evening, 'Evening', 2.8)
    scene.lamp(
        'Dusk light', (-1.42, 0.75, -0.15), (0.3, 0.45, 1.0), 0.16, 0.5, evening, 'Evening', 3.2
    )
    bulb = lathe(
        rounded(
            [
                (0, -0.032, 0),
                (0.03, -0.03, 0.03),
                (0.03, 0.012, 0.02),
                (0.014, 0.04, 0.01),
                (0, 0.042, 0),
            ],
            10,
        ),
        40,
        1,
    )
    scene.shape('Bulb', bulb, 'Bulb', evening, 'Evening', (0.1, 0.622, -0.04))
    lining = lathe(
        rounded(
            [
                (0.0, 0.12, 0),
                (0.017, 0.119, 0.004),
                (0.036, 0.1, 0.02),
                (0.114, 0.068, 0.04),
                (0.146, 0.001, 0),
            ],
            8,
        ),
        80,
        1,
    )
    scene.shape('Glow', lining, 'Shade inside', evening, 'Evening', (0.1, 0.56, -0.04))
    studio = scene.node('Studio', layer='Studio')
    sweep = rounded([(-1.3, 2.2, 0), (-1.3, 0.0, 0.8), (1.6, 0.0, 0)], 24)
    points = [[(x, y - 0.0005, z) for x in (-3.0, -1.0, 1.0, 3.0)] for z, y in sweep]
    normals = []
    for i in range(len(points)):
        z0, y0 = sweep[max(i - 1, 0)]
        z1, y1 = sweep[min(i + 1, len(sweep) - 1)]
        normals.append([unit((0, z1 - z0, y0 - y1))] * 4)
    grid = [[[(p, n, (p[0], p[2])) for p, n in zip(a, b)] for a, b in zip(points, normals)]]
    scene.shape('Backdrop', grid, 'Backdrop', studio, 'Studio')
    scene.lamp('Key', (-0.75, 0.95, 0.75), (1.0, 0.96, 0.9), 0.75, 0.28, studio, 'Studio')
    scene.lamp('Rim', (0.9, 0.7, -0.75), (0.85, 0.92, 1.0), 0.35, 0.2, studio, 'Studio')
