"""What a script on one open scene costs beside calls of the program: the same steps, each a state loaded,
an object changed and the scene recorded, in one process and as calls that read and write the scene. Both
in one run, in turns, so that whatever else the machine does counts for both.

    PYTHONPATH=build/release/lib/python3/dist-packages /usr/bin/python3 bench/python.py PROGRAM SCENE [STEPS]

SCENE has Stagemarks. A step of the program is three calls: load, set and record. The third column are all
steps in a few calls of `run`.
"""

import os
import shutil
import subprocess
import sys
import tempfile
import time

import stagemarks


def by_module(scene, steps):
    begin = time.perf_counter()
    with stagemarks.open(scene) as doc:
        first = doc.objects[0]
        states = doc.states.names
        for step in range(steps):
            doc.states.load(states[step % len(states)])
            first.render_mode = "off" if step % 2 else "on"
            doc.states.record("Bench", overwrite=True)
        doc.save()
    return time.perf_counter() - begin


def by_calls(program, scene, steps, states):
    begin = time.perf_counter()
    for step in range(steps):
        mode = "off" if step % 2 else "on"
        for call in (
            ["load", scene, states[step % len(states)], "--write"],
            ["set", scene, "--object", "#0", "--render", mode, "--write"],
            ["record", scene, "Bench", "--yes", "--write"],
        ):
            subprocess.run([program, *call], check=True, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)
    return time.perf_counter() - begin


def by_run(program, scene, steps, states):
    begin = time.perf_counter()
    lines = []
    for step in range(steps):
        lines.append(f"load '{states[step % len(states)]}'")
        lines.append(f"set --object '#0' --render {'off' if step % 2 else 'on'}")
        lines.append("record Bench --yes")
    subprocess.run([program, "run", scene, "-", "--write"], input="\n".join(lines), text=True,
                   check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.perf_counter() - begin


def main(program, scene, steps):
    with tempfile.TemporaryDirectory() as folder:
        copies = [os.path.join(folder, f"{name}.c4d") for name in ("module", "calls", "run")]
        for copy in copies:
            shutil.copy(scene, copy)
        with stagemarks.open(copies[0]) as doc:
            states = doc.states.names
        seconds = [0.0, 0.0, 0.0]
        for part in range(6):
            some = steps // 6
            seconds[0] += by_module(copies[0], some)
            seconds[1] += by_calls(program, copies[1], some, states)
            seconds[2] += by_run(program, copies[2], some, states)
        print(f"{'steps':>6} {'module s':>9} {'calls s':>9} {'run s':>9} {'module/calls':>13}")
        print(f"{steps:6d} {seconds[0]:9.2f} {seconds[1]:9.2f} {seconds[2]:9.2f} "
              f"{seconds[0] / seconds[1]:13.4f}")


if __name__ == "__main__":
    main(sys.argv[1], sys.argv[2], int(sys.argv[3]) if len(sys.argv) > 3 else 600)
