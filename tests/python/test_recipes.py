"""The recipes of docs/PYTHON.md, each run as a script where a copy of the sample scene lies."""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import support

try:
    import numpy
except ImportError:
    numpy = None

RECIPE = re.compile(
    r"^### (\d+)\. (.*?)\n+```python\n(.*?)```\n(?:\n```text\n(.*?)```\n)?", re.M | re.S
)


def recipes():
    with open(os.path.join(support.SOURCE, "docs", "PYTHON.md"), encoding="utf-8") as file:
        return RECIPE.findall(file.read())


class Recipes(unittest.TestCase):
    def test_each_prints_what_the_page_says(self):
        found = recipes()
        self.assertEqual([int(number) for number, *_ in found], list(range(1, 11)))
        sample = os.path.join(support.SOURCE, "scenes", "teapot")
        for number, title, script, printed in found:
            if "numpy" in script and not numpy and os.environ.get("CI") != "true":
                continue
            with self.subTest(title), tempfile.TemporaryDirectory() as folder:
                shutil.copy(os.path.join(sample, "teapot.c4d"), folder)
                shutil.copytree(os.path.join(sample, "tex"), os.path.join(folder, "tex"))
                ran = subprocess.run(
                    [sys.executable, "-c", script], cwd=folder, capture_output=True, text=True
                )
                self.assertEqual(ran.returncode, 0, ran.stderr)
                if printed:
                    self.assertEqual(ran.stdout, printed)


if __name__ == "__main__":
    support.main()
