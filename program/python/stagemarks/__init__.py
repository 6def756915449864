"""Stagemarks: record, recall and export the states of a 3D scene from Python.

A scene is a document; its elements and its states are read and changed through it:

    import stagemarks

    with stagemarks.open("room.c4d") as doc:
        doc.objects["Lamp"].render_mode = "off"
        doc.states.record("Night")
        doc.save()

Lengths are in units of the scene, angles in degrees, shares in percent, and colors from 0 to 1:
as the attributes of the desktop show them. What fails raises an Error with the sentence that the
command line has for it. Nothing ever waits for an answer: a question is answered by an argument, as
overwrite=True, or raises a RefusedError. All calls belong to the thread that made the first one.
"""

import atexit as _atexit

from . import _stagemarks
from ._stagemarks import (
    ClosedError,
    Error,
    MisuseError,
    NotFoundError,
    RefusedError,
    StoppedError,
    ThreadError,
)
from .documents import Document, Step, active, documents, import_scene, new, open
from .elements import (
    Camera,
    CompositingTag,
    Cone,
    Cube,
    Cylinder,
    Disc,
    Effect,
    Element,
    Field,
    Layer,
    Light,
    Material,
    Object,
    Plane,
    RenderSettings,
    Sphere,
    Tag,
    TextureTag,
    Torus,
)
from .states import DeletedState, State, States

__all__ = [
    "Camera",
    "ClosedError",
    "CompositingTag",
    "Cone",
    "Cube",
    "Cylinder",
    "DeletedState",
    "Disc",
    "Document",
    "Effect",
    "Element",
    "Error",
    "Field",
    "Layer",
    "Light",
    "Material",
    "MisuseError",
    "NotFoundError",
    "Object",
    "Plane",
    "RefusedError",
    "RenderSettings",
    "Sphere",
    "State",
    "States",
    "Step",
    "StoppedError",
    "Tag",
    "TextureTag",
    "ThreadError",
    "Torus",
    "active",
    "documents",
    "import_scene",
    "new",
    "open",
]

_atexit.register(_stagemarks.end)
