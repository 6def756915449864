"""What a script on one open scene costs beside calls of the program: the same steps, in turn a
state loaded, an object switched and the scene recorded, in one process, as a call of the program
each, and as lines of a few calls of `run`. All in one run and in turns, so that whatever else the
machine does counts for all.

    PYTHONPATH=build/release/lib/python3/dist-packages \\
        /usr/bin/python3 bench/python.py PROGRAM SCENE [STEPS]

SCENE has Stagemarks. STEPS is 600 at first. Prints seconds, and the share of the calls that the
module takes.
"""

import os
import shutil
import subprocess
import sys
import tempfile
import time

import stagemarks

TURNS = 6


def steps_of(count, states):
    """(verb, argument) of each step."""
    for step in range(count):
        verb = ("load", "set", "record")[step % 3]
        yield verb, {"load": states[step % len(states)], "set": ("on", "off")[step % 2]}.get(verb)


def by_module(scene, count, states):
    begin = time.perf_counter()
    with stagemarks.open(scene) as doc:
        first = doc.objects[0]
        for verb, argument in steps_of(count, states):
            if verb == "load":
                doc.states.load(argument)
            elif verb == "set":
                first.render_mode = argument
            else:
                doc.states.record("Bench", overwrite=True)
        doc.save()
    return time.perf_counter() - begin


def words_of(verb, argument):
    return {
        "load": ["load", argument],
        "set": ["set", "--object", "#0", "--render", argument],
        "record": ["record", "Bench", "--yes"],
    }[verb]


def call(program, words, text=None):
    subprocess.run([program, *words, "--write", "-q"], input=text, text=True, check=True,
                   stdout=subprocess.DEVNULL)


def by_calls(program, scene, count, states):
    begin = time.perf_counter()
    for step in steps_of(count, states):
        verb, *words = words_of(*step)
        call(program, [verb, scene, *words])
    return time.perf_counter() - begin


def by_run(program, scene, count, states):
    begin = time.perf_counter()
    lines = [" ".join(f"'{word}'" for word in words_of(*step)) for step in steps_of(count, states)]
    call(program, ["run", scene, "-"], "\n".join(lines))
    return time.perf_counter() - begin


def main(program, scene, count):
    with tempfile.TemporaryDirectory() as folder:
        copies = [os.path.join(folder, f"{name}.c4d") for name in ("module", "calls", "run")]
        for copy in copies:
            shutil.copy(scene, copy)
        with stagemarks.open(scene) as doc:
            states = doc.states.names
        seconds = [0.0, 0.0, 0.0]
        for _ in range(TURNS):
            seconds[0] += by_module(copies[0], count // TURNS, states)
            seconds[1] += by_calls(program, copies[1], count // TURNS, states)
            seconds[2] += by_run(program, copies[2], count // TURNS, states)
    print(f"{'steps':>6} {'module s':>9} {'calls s':>9} {'run s':>9} {'module/calls':>13}")
    print(f"{count:6d} {seconds[0]:9.2f} {seconds[1]:9.2f} {seconds[2]:9.2f} "
          f"{seconds[0] / seconds[1]:13.4f}")


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2], int(sys.argv[3]) if len(sys.argv) > 3 else 600)
