"""How calls are made: who hears of their progress, and what they take for names."""

from __future__ import annotations

import contextlib
from typing import Callable, Iterator, Optional

from . import _stagemarks as _core

Progress = Callable[[float, str], Optional[bool]]
"""Hears how far work is, from 0 to 1, and what is being done. Answering False stops the work, which
raises a StoppedError; so does an exception, which is raised as it is."""


@contextlib.contextmanager
def listening(progress: Optional[Progress]) -> Iterator[None]:
    """Has `progress` hear of the calls inside."""
    former = _core.get_listener()
    if progress is not None:
        _core.set_listener(progress)
    try:
        yield
    finally:
        _core.set_listener(former)
