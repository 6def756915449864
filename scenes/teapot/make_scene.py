#!/usr/bin/env python3
"""Makes the sample scene "Teapot" from nothing: a scene with its pictures in `tex`, and six states.

    make_scene.py PROGRAM FOLDER

PROGRAM is the command line `stagemarks`, FOLDER where teapot.c4d goes. Shapes and pictures are
reckoned here and handed over as a glTF file; the states are made with the program's own verbs, as
anybody would make them. The same script gives the same scene, but for the dates of its states.
"""
import pathlib
import subprocess
import sys
import tempfile

from gltf_file import Scene
from materials import add_materials
from product import add_pot, add_setting
from room import add_light, add_room


def make_scene():
    scene = Scene()
    add_materials(scene)
    add_pot(scene)
    add_setting(scene)
    add_room(scene)
    add_light(scene)
    cameras = scene.node('Cameras')
    scene.camera('Front', (0.53, 0.42, 1.17), (-0.01, 0.125, -0.04), 31, cameras)
    scene.camera('Close-up', (0.345, 0.275, 0.56), (0.0, 0.106, 0.0), 31, cameras)
    scene.camera('From above', (0.05, 1.0, 0.66), (0.03, 0.0, 0.0), 32, cameras)
    return scene


BODY_PARTS = ['Body', 'Spout', 'Lid dome', 'Lid, open dome']


class States:
    """Calls the program: one change, one Stagemark."""

    def __init__(self, program, scene):
        self.program = program
        self.scene = str(scene)

    def run(self, *arguments):
        subprocess.run([self.program, *map(str, arguments)], check=True, stdout=subprocess.DEVNULL)

    def set(self, *arguments):
        self.run('set', self.scene, *arguments, '--write', '-q')

    def layers(self, **shown):
        for name, on in shown.items():
            flags = ['%s=%s' % (flag, 'on' if on else 'off') for flag in ('render', 'view')]
            self.set('--layer', name, *[x for flag in flags for x in ('--flag', flag)])

    def surface(self, material):
        for part in BODY_PARTS:
            self.set('--object', part, '--material', material)

    def lid(self, is_open):
        for name, shown in (('Lid', not is_open), ('Lid, open', is_open)):
            self.set(
                '--object',
                name,
                '--editor',
                'default' if shown else 'off',
                '--render',
                'default' if shown else 'off',
            )

    def record(self, name):
        self.run('record', self.scene, name, '--preview', '--write', '-q')


def record_states(states):
    def light(daylight, evening, studio):
        states.layers(
            Daylight=daylight, Evening=evening, Studio=studio, Room=not studio, Setting=not studio
        )

    states.set('--camera', 'Front', '--size', '1280x720')
    states.lid(False)
    light(True, False, False)
    states.surface('Enamel')
    states.record('2 Enamel, morning')
    states.surface('Copper')
    states.record('1 Copper, morning')
    light(False, True, False)
    states.surface('Brushed steel')
    states.record('3 Steel, evening')
    states.surface('Copper')
    states.set('--camera', 'Close-up')
    states.lid(True)
    states.record('4 Lid open, evening')
    light(True, False, False)
    states.surface('Enamel')
    states.lid(False)
    states.set('--camera', 'From above')
    states.record('5 From above')
    light(False, False, True)
    states.surface('Brushed steel')
    states.set('--camera', 'Close-up', '--size', '900x900')
    states.record('6 Catalog')
    states.run('load', states.scene, '1 Copper, morning', '--write', '-q')


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    folder.mkdir(parents=True, exist_ok=True)
    target = folder / 'teapot.c4d'
    with tempfile.TemporaryDirectory() as scratch:
        source = pathlib.Path(scratch) / 'teapot.gltf'
        make_scene().write(source)
        subprocess.run(
            [program, 'import', str(source), str(target), '--force', '-q'],
            check=True,
            stdout=subprocess.DEVNULL,
        )
    record_states(States(program, target))


if __name__ == '__main__':
    main()
