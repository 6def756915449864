"""Documents: opening, saving and undoing, and the way to all that is in them."""

from __future__ import annotations

import os
from types import TracebackType
from typing import Any, List, Optional, Set, Tuple, Type, Union

from . import _stagemarks as _core
from ._calls import Progress, listening
from ._fields import Attribute, Fielded
from .elements import (
    Camera,
    ElementList,
    Layer,
    LayerList,
    Material,
    MaterialList,
    ObjectList,
    RenderSettings,
    SettingsList,
    Tag,
    make,
)
from .states import Names, States, _names, _render

Path = Union[str, "os.PathLike[str]"]

# Documents that a person has open while a script runs at the desktop.
_kept: Set[int] = set()

_BASES = {"layer": Layer, "material": Material, "camera": Camera, "settings": RenderSettings}


class Step:
    """Everything inside is one undo step; an exception takes it all back, recorded states too:

    with doc.step("Night"):
        ...
    """

    __slots__ = ("_document", "_name", "_step")

    def __init__(self, document: Document, name: str) -> None:
        self._document = document
        self._name = name
        self._step = 0

    def __enter__(self) -> Step:
        if self._step:
            raise _core.MisuseError("This step was begun already.")
        self._step = _core.begin_step(self._document._number, self._name)
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        if self._document.is_open:
            _core.end_step(self._step, kind is None)


class Document(Fielded):
    """An open scene. Closed by close(), or at the end of a with statement, where what was not saved
    is given up. Using it or its elements afterwards raises a ClosedError."""

    __slots__ = ("_is_ours", "_notes")

    camera = Attribute[Optional[Camera]]("Document", "Camera")
    render_settings = Attribute[RenderSettings]("Document", "Render settings")
    frame_rate = Attribute[int]("Document", "Frame rate")

    def __init__(self, number: int) -> None:
        self._number = number
        self._element = 0
        self._is_ours = False
        self._notes: Tuple[str, ...] = ()

    def _wrap(self, kind: str, element: int) -> Any:
        return make(self, element, 0, _BASES[kind])

    # Contents.

    @property
    def objects(self) -> ObjectList:
        """All objects: doc.objects["Lamp"], doc.objects.find("Lamp*")."""
        return ObjectList(self)

    @property
    def tags(self) -> ElementList[Tag]:
        """The tags of all objects. Those of one: object.tags."""
        return ElementList(self, _core.Kind.TAGS, Tag)

    @property
    def materials(self) -> MaterialList:
        """All materials."""
        return MaterialList(self)

    @property
    def layers(self) -> LayerList:
        """All layers."""
        return LayerList(self)

    @property
    def settings(self) -> SettingsList:
        """All render settings; doc.settings.active are those in use."""
        return SettingsList(self)

    @property
    def states(self) -> States:
        """Its states: doc.states.record("Day"), doc.states["Day"].load()."""
        return States(self)

    # The file.

    @property
    def path(self) -> Optional[str]:
        """The absolute path of its file, None for one that was never saved."""
        return _core.path_of_document(self._number) or None

    @property
    def name(self) -> str:
        """The name of its file."""
        return _core.name_of_document(self._number)

    @property
    def is_changed(self) -> bool:
        """Whether it has unsaved changes."""
        return _core.is_changed(self._number)

    @property
    def is_open(self) -> bool:
        """Whether it is still open."""
        return self._number in _core.documents()

    @property
    def notes(self) -> Tuple[str, ...]:
        """Of a scene that was imported: what was lost or mended, a sentence each."""
        return self._notes

    def save(
        self,
        path: Optional[Path] = None,
        *,
        overwrite: bool = False,
        wait: float = 60,
        progress: Optional[Progress] = None,
    ) -> str:
        """Writes the scene to its own file, or to `path`, which is its file from then on. The file
        is replaced as a whole or not at all; of the answer it is the absolute path.

        overwrite: also replace a file that is another scene's, or that somebody has changed since
        this one was read from it; else RefusedError or Error. wait: seconds for another program
        that is changing the file.
        """
        target = "" if path is None else os.fspath(path)
        if path is not None and not target:
            raise _core.MisuseError("A file name is needed.")
        with listening(progress):
            return _core.save(self._number, target, overwrite, wait)

    def close(self, *, discard: bool = False) -> None:
        """Closes it. RefusedError for one with unsaved changes, unless they are to be given up.
        Nothing happens to one that is closed."""
        if self._number in _kept:
            raise _core.RefusedError(f'"{self.name}" is open at the desktop: a person closes it.')
        if self.is_open:
            _core.close(self._number, discard)

    def activate(self) -> None:
        """Makes it the active document of the program."""
        _core.activate(self._number)

    def __enter__(self) -> Document:
        return self

    def __exit__(self, *_: object) -> None:
        if self._number not in _kept:
            self.close(discard=self._is_ours)

    def render(
        self,
        path: Optional[Path] = None,
        *,
        width: int = 0,
        height: int = 0,
        overwrite: bool = False,
        threads: int = 0,
        progress: Optional[Progress] = None,
    ) -> _core.Pixels:
        """Renders the scene as it stands, see States.render."""
        return _render(self, "", path, (width, height), overwrite, threads, progress)

    def page(
        self,
        folder: Path,
        states: Optional[Names] = None,
        *,
        title: Optional[str] = None,
        overwrite: bool = False,
        progress: Optional[Progress] = None,
    ) -> str:
        """Makes a web page that shows states in 3D, all without `states`, a scene without any as it
        stands; any browser opens it, without a server or network. The path of its file, index.html
        in the folder, which is made where it is missing. RefusedError for a file there that is no
        such page, unless it is to be replaced (overwrite). Nothing is loaded."""
        with listening(progress):
            return _core.page(
                self._number, os.fspath(folder), _names(states), title or "", overwrite
            )

    def sheet(
        self,
        path: Path,
        states: Optional[Names] = None,
        *,
        size: Optional[Tuple[int, int]] = None,
        overwrite: bool = False,
        threads: int = 0,
        progress: Optional[Progress] = None,
    ) -> str:
        """Makes a contact sheet of states, as page() has them: one picture, .png or .tif. Its
        absolute path. size: width and height in pixels that each picture on it fits into; without
        it they suit their number. threads: 0 for one for each core."""
        if threads < 0 or (size is not None and min(size) < 0):
            raise _core.MisuseError("Sizes and threads cannot be below 0.")
        with listening(progress):
            return _core.sheet(
                self._number, os.fspath(path), _names(states), size, overwrite, threads
            )

    def update_from(
        self,
        path: Path,
        *,
        remove_gone: bool = False,
        allow_outside: bool = False,
        progress: Optional[Progress] = None,
    ) -> _core.SceneUpdate:
        """Brings the scene up to a newer version of the file that it was imported from, in one undo
        step: states stay, and so does what was changed here and not in the file.

        The answer has objects and materials, each with found (a number), changed (path and what:
        "parent", "place", "shape", "settings", "material"), added and gone (paths of the topmost;
        added_count and gone_count count all); removed (a number) and notes. remove_gone: deletes
        objects that the file does not have any more; else they stay. allow_outside: also takes
        textures that lie outside the folder of the file.
        """
        with listening(progress):
            return _core.update_from(self._number, os.fspath(path), remove_gone, allow_outside)

    # Undo.

    def step(self, name: str) -> Step:
        """One undo step of all that is done in a with statement."""
        return Step(self, name)

    def undo(self) -> bool:
        """Takes back the last step, recording and deleting of states, too; False where there is
        none. Not while a step is open, as always in a script at the desktop."""
        return _core.undo(self._number)

    def redo(self) -> bool:
        """Does the last step again that was taken back; False where there is none."""
        return _core.redo(self._number)

    @property
    def undo_names(self) -> List[str]:
        """The steps that can be taken back, the oldest first."""
        return _core.done_steps(self._number)

    @property
    def redo_names(self) -> List[str]:
        """The steps that can be done again, the one first that redo() takes."""
        return _core.undone_steps(self._number)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Document):
            return NotImplemented
        return self._number == other._number

    def __hash__(self) -> int:
        return hash(self._number)

    def __repr__(self) -> str:
        try:
            return f"<Document {self.path or self.name!r}>"
        except _core.Error:
            return "<Document, closed>"


def _opened(came: _core.Opened) -> Document:
    doc = Document(came.document)
    doc._is_ours = True
    doc._notes = tuple(came.notes)
    return doc


def open(path: Path, *, progress: Optional[Progress] = None) -> Document:
    """Opens a scene file and makes it the active document. A file of another format (glTF, FBX,
    OBJ, COLLADA) is imported, see import_scene. Error where that fails: the message says why."""
    with listening(progress):
        return _opened(_core.open(os.fspath(path), False))


def import_scene(
    path: Path, *, allow_outside: bool = False, progress: Optional[Progress] = None
) -> Document:
    """Imports a scene of another format as a new document without a file. What was lost or mended
    stands in its notes; states that the file holds, such as variants of materials, are recorded.
    allow_outside: also takes textures that lie outside the folder of the file; else they are named
    and left out."""
    with listening(progress):
        return _opened(_core.open(os.fspath(path), allow_outside))


def new() -> Document:
    """A new document without objects, which is the active one then."""
    return _opened(_core.new())


def active() -> Optional[Document]:
    """The active document, at the desktop the one in front; None where none is open."""
    number = _core.active()
    return Document(number) if number else None


def documents() -> List[Document]:
    """All open documents."""
    return [Document(number) for number in _core.documents()]
