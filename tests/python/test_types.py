"""The types of the package: the stub of the compiled part against that part, and the package by a
type checker, where there is one; CI has it."""

import ast
import importlib.util
import inspect
import os
import subprocess
import sys
import tempfile
import unittest

import support
import stagemarks
from stagemarks import _stagemarks

PACKAGE = os.path.dirname(stagemarks.__file__)
STUB = os.path.join(PACKAGE, "_stagemarks.pyi")
# Functions whose types in the stub are not those that the bound signature states.
FREER = {"get_listener", "set_listener", "read"}


def stub():
    with open(STUB, encoding="utf-8") as file:
        return ast.parse(file.read()).body


class Stub(unittest.TestCase):
    def test_functions_have_the_signatures_that_they_are_bound_with(self):
        written = {one.name: one for one in stub() if isinstance(one, ast.FunctionDef)}
        bound = {
            name: one for name, one in vars(_stagemarks).items() if inspect.isbuiltin(one)
        }
        self.assertEqual(set(written), set(bound))
        for name in sorted(set(bound) - FREER):
            first = bound[name].__doc__.splitlines()[0].replace("_stagemarks.", "")
            line = first.replace("stagemarks.", "")
            parsed = ast.parse(f"def {line}: ...").body[0]
            self.assertEqual(ast.unparse(written[name]), ast.unparse(parsed))

    def test_classes_have_the_members_that_they_are_bound_with(self):
        for one in stub():
            if not isinstance(one, ast.ClassDef):
                continue
            bound = getattr(_stagemarks, one.name)
            written = {
                member.target.id if isinstance(member, ast.AnnAssign) else member.name
                for member in one.body
                if isinstance(member, (ast.AnnAssign, ast.FunctionDef))
            }
            found = {name for name in vars(bound) if not name.startswith("_")}
            self.assertEqual({name for name in written if not name.startswith("_")}, found)
            bases = [base.id for base in one.bases]
            if bases:
                self.assertEqual([base.__name__ for base in bound.__bases__], bases)


class Package(unittest.TestCase):
    def test_everything_public_says_what_it_is(self):
        for name in stagemarks.__all__:
            one = getattr(stagemarks, name)
            self.assertTrue(inspect.getdoc(one), name)
            if not inspect.isclass(one) or issubclass(one, Exception):
                continue
            for member, value in inspect.getmembers(one):
                if not member.startswith("_"):
                    self.assertTrue(inspect.getdoc(value), f"{name}.{member}")

    @unittest.skipUnless(
        importlib.util.find_spec("mypy") or os.environ.get("CI") == "true", "mypy is not installed"
    )
    def test_a_type_checker_finds_nothing(self):
        script = "\n".join(
            [
                "import stagemarks",
                "with stagemarks.open('x.c4d') as doc:",
                "    width: int = doc.settings.active.width",
                "    for one in doc.objects:",
                "        mode: str = one.render_mode",
                "    camera = doc.objects['Front']",
                "    if isinstance(camera, stagemarks.Camera):",
                "        doc.states.set_camera(camera, ['Day', doc.states['Night']])",
                "    changed: int = doc.states['Day'].load(parts={'camera'}).objects",
            ]
        )
        with tempfile.TemporaryDirectory() as folder:
            used = os.path.join(folder, "used.py")
            with open(used, "w", encoding="utf-8") as file:
                file.write(script)
            result = subprocess.run(
                [sys.executable, "-m", "mypy", "--strict", "--no-incremental", used, PACKAGE],
                capture_output=True,
                text=True,
                cwd=folder,
                env={**os.environ, "MYPYPATH": os.path.dirname(PACKAGE)},
            )
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)


if __name__ == "__main__":
    support.main()
