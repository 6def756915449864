"""The recipes of docs/PYTHON.md, each run as a script where a copy of the sample scene lies."""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import support
import stagemarks

try:
    import numpy
except ImportError:
    numpy = None

RECIPE = re.compile(
    r"^### (\d+)\. (.*?)\n+```python\n(.*?)```\n(?:\n```text\n(.*?)```\n)?", re.M | re.S
)


def page():
    with open(os.path.join(support.SOURCE, "docs", "PYTHON.md"), encoding="utf-8") as file:
        return file.read()


# The program that is built with the package.
PROGRAMS = os.path.join(os.path.dirname(stagemarks.__file__), "../../../../bin")


class Recipes(unittest.TestCase):
    def run_beside_the_sample(self, script):
        sample = os.path.join(support.SOURCE, "scenes", "teapot")
        with tempfile.TemporaryDirectory() as folder:
            shutil.copy(os.path.join(sample, "teapot.c4d"), folder)
            shutil.copytree(os.path.join(sample, "tex"), os.path.join(folder, "tex"))
            path = os.pathsep.join([PROGRAMS, os.environ["PATH"]])
            ran = subprocess.run([sys.executable, "-c", script], cwd=folder, capture_output=True,
                                 text=True, env={**os.environ, "PATH": path})
        self.assertEqual(ran.returncode, 0, ran.stderr)
        return ran.stdout

    def test_each_prints_what_the_page_says(self):
        found = RECIPE.findall(page())
        self.assertEqual([int(number) for number, *_ in found], list(range(1, 11)))
        for number, title, script, printed in found:
            if "numpy" in script and not numpy and os.environ.get("CI") != "true":
                continue
            with self.subTest(title):
                told = self.run_beside_the_sample(script)
                if printed:
                    self.assertEqual(told, printed)

    def test_the_farm_answers_as_the_page_has_it(self):
        script = re.search(r"^## On the farm$.*?```python\n(.*?)```", page(), re.M | re.S)[1]
        told = self.run_beside_the_sample(script)
        self.assertEqual(told, f"1 picture of {960 * 540} pixels\n")


if __name__ == "__main__":
    support.main()
