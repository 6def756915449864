"""What the tests of the package share: a folder and settings of their own, and a small scene."""

import os
import shutil
import tempfile
import unittest

SOURCE = os.environ["STAGEMARKS_SOURCE"]
_settings = tempfile.mkdtemp(prefix="stagemarks-python-")
for name in ("CONFIG", "DATA", "CACHE", "STATE"):
    os.environ[f"XDG_{name}_HOME"] = os.path.join(_settings, name)

import stagemarks  # noqa: E402  (after its settings)

SPIDER = os.path.join(SOURCE, "scenes", "spider", "spider.fbx")


class WithScene(unittest.TestCase):
    """Each test has a folder, and in it the scene of a spider."""

    _saved = ""

    @classmethod
    def setUpClass(cls):
        cls._kept = tempfile.mkdtemp(prefix="stagemarks-python-")
        cls._saved = os.path.join(cls._kept, "spider.c4d")
        with stagemarks.import_scene(SPIDER) as doc:
            doc.save(cls._saved)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls._kept)

    def setUp(self):
        self.folder = tempfile.mkdtemp(prefix="stagemarks-python-")
        self.scene = os.path.join(self.folder, "spider.c4d")
        shutil.copy(self._saved, self.scene)
        self.doc = stagemarks.open(self.scene)

    def tearDown(self):
        for doc in stagemarks.documents():
            doc.close(discard=True)
        shutil.rmtree(self.folder)

    def at(self, name):
        return os.path.join(self.folder, name)


def main():
    try:
        unittest.main(verbosity=1)
    finally:
        shutil.rmtree(_settings, ignore_errors=True)
