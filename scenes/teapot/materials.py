"""The materials of the scene."""

import pictures


def srgb(red, green, blue):
    def linear(byte):
        s = byte / 255
        return s / 12.92 if s <= 0.04045 else ((s + 0.055) / 1.055) ** 2.4

    return tuple(linear(part) for part in (red, green, blue))


def add_materials(scene):
    m = scene.material
    hammer = ('hammered.png', pictures.hammered())
    brush = ('brushed.png', pictures.brushed())
    oak = ('oak.png', pictures.wood([(112, 72, 42), (170, 118, 74), (206, 156, 108)]))
    walnut = ('walnut.png', pictures.wood([(38, 23, 15), (74, 46, 29), (104, 68, 44)], 8))
    m('Copper', (0.93, 0.49, 0.33), 0.2, 1.0, relief=hammer, tiles=(3, 3), strength=0.6)
    m('Brushed steel', (0.62, 0.61, 0.59), 0.27, 1.0, relief=brush, tiles=(2, 2))
    m(
        'Enamel',
        (1, 1, 1),
        0.12,
        texture=('enamel.png', pictures.speckles((112, 137, 122), (44, 54, 50))),
        tiles=(1.5, 1.5),
    )
    m('Brass', (0.86, 0.62, 0.28), 0.25, 1.0)
    m('Steel', (0.66, 0.66, 0.66), 0.18, 1.0)
    m('Oak', (1, 1, 1), 0.42, texture=oak)
    m('Walnut', (1, 1, 1), 0.35, texture=walnut)
    m(
        'Linen',
        (1, 1, 1),
        0.95,
        texture=('linen.png', pictures.linen([(168, 156, 134), (219, 210, 190), (240, 234, 220)])),
        relief=('linen relief.png', pictures.linen_relief()),
        strength=0.8,
        both=True,
        specular=0.3,
    )
    m('Glass', (0.64, 0.74, 0.72), 0.03, alpha=0.18)
    m('Tea', (0.40, 0.125, 0.015), 0.05, glow=(0.05, 0.012, 0.0), alpha=0.92)
    m('Porcelain', srgb(232, 226, 214), 0.2)
    m('Sugar', srgb(240, 236, 228), 0.9, specular=0.4)
    m(
        'Wall',
        srgb(112, 134, 136),
        0.9,
        relief=('plaster.png', pictures.plaster()),
        strength=0.35,
        specular=0.3,
    )
    m('Ceiling', srgb(214, 208, 196), 0.9, specular=0.3)
    m('Paint', srgb(222, 216, 204), 0.45)
    m('Picture', (1, 1, 1), 0.6, texture=('picture.png', pictures.painting()))
    m('Shade', srgb(34, 40, 42), 0.4)
    m('Shade inside', srgb(230, 196, 130), 0.5, glow=(0.75, 0.42, 0.16))
    m('Bulb', (0, 0, 0), 0.5, glow=(4.0, 2.6, 1.3))
    m('Day', (0, 0, 0), 1.0, glow=(0.95, 1.05, 1.2), specular=0)
    m('Dusk', (0, 0, 0), 1.0, glow=(0.07, 0.12, 0.27), specular=0)
    m('Leaf', srgb(74, 98, 62), 0.5, both=True)
    m('Backdrop', srgb(206, 200, 190), 0.85, specular=0.3)
