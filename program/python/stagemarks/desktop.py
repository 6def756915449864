"""Scripts and the console of the desktop: a run is one undo step in each document that it changes,
and one that fails leaves every document as it was. Only the desktop imports this module."""

from __future__ import annotations

import atexit
import builtins
import code
import contextlib
import os
import rlcompleter
import sys
import time
import traceback
from types import CodeType
from typing import Any, Callable, Dict, Iterator, List, Optional, Tuple

import stagemarks

from . import _stagemarks as _core
from .documents import _kept

Ended = Tuple[bool, bool, str]
"""Needs more lines, succeeded, what went wrong."""

_goes_on: Callable[[], bool] = lambda: True
_names: Dict[str, Any] = {"__name__": "__console__", "__doc__": None, "stagemarks": stagemarks}
_compile = code.compile_command
_PACKAGE = os.path.dirname(__file__) + os.sep


class _Output:
    """What scripts print goes to the console."""

    encoding = "utf-8"
    errors = "backslashreplace"

    def __init__(self, write: Callable[[str, bool], None], is_error: bool) -> None:
        self._write = write
        self._is_error = is_error

    def write(self, text: str) -> int:
        """Shows a text."""
        self._write(text.encode(errors="backslashreplace").decode(), self._is_error)
        return len(text)

    def flush(self) -> None:
        """Everything is shown at once."""

    def isatty(self) -> bool:
        """No terminal."""
        return False


def _sleep(secs: float) -> None:
    """time.sleep that lets the window live and hears its button."""
    end = time.monotonic() + secs
    while True:
        if not _goes_on():
            raise KeyboardInterrupt
        left = end - time.monotonic()
        if left <= 0:
            return
        _real_sleep(min(left, 0.05))


_real_sleep = time.sleep


def _no_fork(*_: object) -> Any:
    raise RuntimeError("The desktop cannot be forked; subprocess starts another program.")


def _exit(status: int = 0) -> None:
    raise SystemExit(status)


def begin(write: Callable[[str, bool], None], goes_on: Callable[[], bool]) -> None:
    """Called once by the desktop: where output goes, and who is asked whether to go on."""
    global _goes_on
    _goes_on = goes_on
    sys.stdout = _Output(write, False)  # type: ignore[assignment]
    sys.stderr = _Output(write, True)  # type: ignore[assignment]
    sys.stdin = open(os.devnull)
    sys.argv = [""]
    time.sleep = _sleep
    # Calls that would end the program end the script; those that would fork it are refused.
    for name in ("_exit", "abort"):
        setattr(os, name, _exit)
    for name in ("fork", "forkpty"):
        setattr(os, name, _no_fork)
    for name in ("exit", "quit"):
        setattr(builtins, name, sys.exit)
    # Nothing is ended with the interpreter: it lives as long as the desktop.
    atexit.unregister(_core.end)


@contextlib.contextmanager
def _steps(name: str) -> Iterator[None]:
    """One step in each open document; after an exception those that were opened meanwhile close."""
    before = stagemarks.documents()
    _kept.update(doc._number for doc in before)
    active = stagemarks.active()
    with contextlib.ExitStack() as stack:
        try:
            for doc in before:
                stack.enter_context(doc.step(name))
            yield
        except BaseException:
            for doc in stagemarks.documents():
                if doc not in before:
                    doc.close(discard=True)
            raise
        finally:
            _kept.clear()
            if active is not None and active.is_open:
                active.activate()


def _shown(error: BaseException) -> str:
    """Prints what a script failed with, without the insides of this package; its last line."""
    told = traceback.TracebackException.from_exception(error)
    one: Optional[traceback.TracebackException] = told
    while one is not None:
        own = [frame for frame in one.stack if not frame.filename.startswith(_PACKAGE)]
        one.stack = traceback.StackSummary.from_list(own)
        one = one.__cause__ or one.__context__
    lines = list(told.format())
    sys.stderr.write("".join(lines))
    return lines[-1].strip()


def _run(compiled: CodeType, names: Dict[str, Any], step: str) -> Ended:
    failed = ""
    try:
        with _steps(step):
            try:
                exec(compiled, names)
            except SystemExit as end:
                if end.code not in (None, 0):
                    raise
    except SystemExit as end:
        failed = str(end.code) if isinstance(end.code, str) else f"It ended with {end.code}."
        sys.stderr.write(failed + "\n")
    except KeyboardInterrupt:
        failed = "It was stopped."
        sys.stderr.write(failed + "\n")
    except BaseException as error:
        failed = _shown(error)
    return False, not failed, failed


def run_file(path: str, step: str) -> Ended:
    """Runs a file as a program, with its folder as the first place of what it imports."""
    try:
        with open(path, "rb") as file:
            compiled = compile(file.read(), path, "exec", dont_inherit=True)
    except (OSError, SyntaxError, ValueError) as error:
        return False, False, _shown(error)
    sys.argv = [path]
    sys.path.insert(0, os.path.dirname(path))
    known = set(sys.modules)
    try:
        return _run(compiled, {"__name__": "__main__", "__file__": path}, step)
    finally:
        with contextlib.suppress(ValueError):  # the script may have taken it out itself
            sys.path.remove(os.path.dirname(path))
        sys.argv = [""]
        # Modules beside the file are loaded anew the next time: their text may have changed.
        for name in set(sys.modules) - known:
            beside = getattr(sys.modules[name], "__file__", None) or ""
            if beside.startswith(os.path.dirname(path) + os.sep):
                del sys.modules[name]


def run_lines(lines: str, step: str) -> Ended:
    """Runs lines of the console; `doc` is the active document in them."""
    try:
        compiled = _compile(lines, "<console>", "single")
    except (SyntaxError, OverflowError, ValueError) as error:
        return False, False, _shown(error)
    if compiled is None:
        return True, True, ""
    _names["doc"] = stagemarks.active()
    return _run(compiled, _names, step)


def complete(line: str) -> List[str]:
    """What the last word of a line may become."""
    start = len(line)
    while start > 0 and (line[start - 1].isalnum() or line[start - 1] in "._"):
        start -= 1
    _names["doc"] = stagemarks.active()
    completer = rlcompleter.Completer(_names)
    words: List[str] = []
    for state in range(200):
        word: Optional[str] = completer.complete(line[start:], state)
        if word is None:
            break
        if word.strip() and word not in words:
            words.append(word)
    return words
