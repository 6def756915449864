"""The states of a document, which are called Stagemarks in its dialog."""

from __future__ import annotations

import datetime
import os
from typing import TYPE_CHECKING, Dict, Iterable, Iterator, List, Mapping, Optional, Tuple, Union

from . import _stagemarks as _core
from ._calls import Progress, listening
from .elements import Camera, Layer, Object, Tag, ids

if TYPE_CHECKING:
    from .documents import Document

Path = Union[str, "os.PathLike[str]"]
Names = Union[str, "State", Iterable[Union[str, "State"]]]
"""States by name, by pattern with * and ?, or as State; one or several."""


def _names(given: Optional[Names]) -> List[str]:
    if given is None:
        return []
    if isinstance(given, (str, State)):
        given = [given]
    return [one.name if isinstance(one, State) else one for one in given]


def _moment(text: str) -> Optional[datetime.datetime]:
    return datetime.datetime.fromisoformat(text) if text else None


def _words(parts: Optional[Iterable[str]]) -> List[str]:
    if isinstance(parts, str):
        parts = [parts]
    return [part.replace("_", "-") for part in parts or ()]


class State:
    """A state by its name. One that is not there anymore raises a NotFoundError."""

    __slots__ = ("_document", "_name")

    def __init__(self, document: Document, name: str) -> None:
        self._document = document
        self._name = name

    def _facts(self) -> _core.StateFacts:
        for facts in _core.states(self._document._number):
            if facts.name == self._name:
                return facts
        raise _core.NotFoundError(f'There is no Stagemark "{self._name}" in this scene.')

    @property
    def document(self) -> Document:
        """The document that it belongs to."""
        return self._document

    @property
    def name(self) -> str:
        """Its name; assigning renames it, its preview image goes along."""
        return self._name

    @name.setter
    def name(self, name: str) -> None:
        self._document.states.rename(self._name, name)
        self._name = name

    @property
    def date(self) -> Optional[datetime.datetime]:
        """When it was recorded, local time; None where that is not known."""
        return _moment(self._facts().date)

    @property
    def is_current(self) -> bool:
        """Whether it was recorded or loaded last."""
        return self._facts().is_current

    def load(
        self,
        *,
        parts: Optional[Iterable[str]] = None,
        without: Optional[Iterable[str]] = None,
        progress: Optional[Progress] = None,
    ) -> _core.Loaded:
        """Brings the scene back into this state; see States.load."""
        return self._document.states.load(
            self._name, parts=parts, without=without, progress=progress
        )

    def diff(
        self, other: Optional[Union[str, State]] = None, *, parts: Optional[Iterable[str]] = None
    ) -> List[_core.ElementDifference]:
        """In what it differs from another state, or without one from the scene as it stands; see
        States.diff."""
        return self._document.states.diff(self, other, parts=parts)

    def delete(self) -> None:
        """Deletes it with its preview image, into the trash; an undo step."""
        self._document.states.delete(self)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, State):
            return NotImplemented
        return (self._document, self._name) == (other._document, other._name)

    def __hash__(self) -> int:
        return hash((self._document, self._name))

    def __repr__(self) -> str:
        return f"<State {self._name!r}>"


class DeletedState:
    """A state in the trash of its document, see States.deleted."""

    __slots__ = ("_document", "_facts")

    def __init__(self, document: Document, facts: _core.DeletedFacts) -> None:
        self._document = document
        self._facts = facts

    @property
    def name(self) -> str:
        """The name that it had."""
        return self._facts.name

    @property
    def date(self) -> Optional[datetime.datetime]:
        """When it was recorded, local time; None where that is not known."""
        return _moment(self._facts.recorded)

    @property
    def deleted(self) -> Optional[datetime.datetime]:
        """When it came into the trash, local time; None where that is not known."""
        return _moment(self._facts.deleted)

    @property
    def is_overwritten(self) -> bool:
        """Whether it was recorded over; else it was deleted."""
        return self._facts.is_overwritten

    def restore(self, *, rename: Optional[str] = None) -> State:
        """Gives it back to its document; see States.restore."""
        return self._document.states.restore(self, rename=rename)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, DeletedState):
            return NotImplemented
        return self._facts.number == other._facts.number

    def __hash__(self) -> int:
        return hash(self._facts.number)

    def __repr__(self) -> str:
        return f"<DeletedState {self.name!r}>"


class States:
    """The states of a document, in the order of its list: doc.states["Day"], len(doc.states).

    Where several are meant, names and patterns do: doc.states.delete("shot_0*"). Recording,
    renaming, deleting and editing of states is kept in the document at once, and is an undo step
    as every edit is; preview images come and go with it.
    """

    __slots__ = ("_document", "_number")

    def __init__(self, document: Document) -> None:
        self._document = document
        self._number = document._number

    @property
    def names(self) -> List[str]:
        """Their names."""
        return _core.choose_states(self._number, [])

    @property
    def current(self) -> Optional[State]:
        """The one that was recorded or loaded last."""
        for facts in _core.states(self._number):
            if facts.is_current:
                return State(self._document, facts.name)
        return None

    def find(self, names: Optional[Names] = None) -> List[State]:
        """Those that are meant, all without names; NotFoundError for what means none."""
        found = _core.choose_states(self._number, _names(names))
        return [State(self._document, name) for name in found]

    def __iter__(self) -> Iterator[State]:
        return iter([State(self._document, name) for name in self.names])

    def __len__(self) -> int:
        return len(self.names)

    def __contains__(self, name: object) -> bool:
        return (name.name if isinstance(name, State) else name) in self.names

    def __getitem__(self, which: Union[int, str]) -> State:
        """By name or position; NotFoundError, IndexError where there is none."""
        if isinstance(which, int):
            return State(self._document, self.names[which])
        if which not in self.names:
            _core.choose_states(self._number, [which])
            raise _core.NotFoundError(f'There is no Stagemark "{which}" in this scene.')
        return State(self._document, which)

    def __repr__(self) -> str:
        try:
            return repr(list(self))
        except _core.Error:
            return "<states of a closed document>"

    # Recording and loading.

    def record(
        self,
        name: str,
        *,
        overwrite: bool = False,
        preview: bool = False,
        progress: Optional[Progress] = None,
    ) -> State:
        """Records the scene as it stands. RefusedError for a name that is taken, unless that is
        to be recorded anew (overwrite). preview: renders a picture into the folder beside the
        scene's file."""
        with listening(progress):
            _core.record(self._number, name, overwrite, preview)
        return State(self._document, name)

    def load(
        self,
        name: Union[str, State],
        *,
        parts: Optional[Iterable[str]] = None,
        without: Optional[Iterable[str]] = None,
        progress: Optional[Progress] = None,
    ) -> _core.Loaded:
        """Brings the scene back into a state, in one undo step. What it changed is counted in the
        answer: objects, tags, layers, others; render_settings and camera are True or False.

        parts: apply these only, whatever the options say; without: all that the options say but
        these. For this call only. Parts are "render-settings", "camera", "objects", "layers",
        "materials", "compositing", "render-tags", "style", "vray-compositing",
        "vray-physical-camera", "vray-camera-dome" and "mental-ray-camera".
        """
        with listening(progress):
            return _core.load(self._number, _names(name)[0], _words(parts), _words(without))

    # Changing what is recorded.

    def rename(self, name: Union[str, State], to: str) -> State:
        """Gives a state another name; its preview image goes along."""
        _core.rename(self._number, _names(name)[0], to)
        return State(self._document, to)

    def delete(self, names: Names) -> List[str]:
        """Deletes states with their preview images; their names. They go into the trash, and undo
        brings them back."""
        return _core.delete(self._number, _names(names))

    @property
    def deleted(self) -> List[DeletedState]:
        """The trash: the last 20 states that were deleted or recorded over, the latest first. It is
        saved with the scene."""
        return [DeletedState(self._document, facts) for facts in _core.deleted(self._number)]

    def restore(
        self, which: Union[str, DeletedState], *, rename: Optional[str] = None
    ) -> State:
        """Gives a state back from the trash, with its render settings and its preview image; an
        undo step. Of several of that name it is the one that was deleted last. RefusedError where
        there is a state of that name, unless it gets another one (rename)."""
        if isinstance(which, DeletedState) and which._document != self._document:
            raise _core.MisuseError(f"{which!r} is in the trash of another document.")
        number = which._facts.number if isinstance(which, DeletedState) else 0
        name = which.name if isinstance(which, DeletedState) else which
        return State(self._document, _core.restore(self._number, name, number, rename or ""))

    def forget_deleted(self) -> int:
        """Empties the trash, an undo step; how many states were in it."""
        return _core.forget_deleted(self._number)

    def update(self, names: Optional[Names] = None) -> bool:
        """Adds objects, tags and layers that are new in the scene to states, all without names.
        Whether anything changed."""
        return _core.edit(self._number, _core.Bulk.UPDATE, _names(names), [])[1]

    def set_objects(self, objects: Iterable[Object], names: Optional[Names] = None) -> bool:
        """Puts the present switches of objects into states, all without names. Whether anything
        changed."""
        given = ids(self._document, objects)
        return _core.edit(self._number, _core.Bulk.OBJECTS, _names(names), given)[1]

    def set_tags(self, tags: Iterable[Tag], names: Optional[Names] = None) -> bool:
        """The same of the present settings of tags."""
        given = ids(self._document, tags)
        return _core.edit(self._number, _core.Bulk.TAGS, _names(names), given)[1]

    def set_layers(self, layers: Iterable[Layer], names: Optional[Names] = None) -> bool:
        """The same of the present switches of layers."""
        given = ids(self._document, layers)
        return _core.edit(self._number, _core.Bulk.LAYERS, _names(names), given)[1]

    def set_camera(self, camera: Camera, names: Optional[Names] = None) -> bool:
        """Makes a camera the render camera of states, all without names. Whether anything
        changed."""
        given = ids(self._document, [camera])
        return _core.edit(self._number, _core.Bulk.CAMERA, _names(names), given)[1]

    def clean_materials(self) -> List[str]:
        """Deletes the materials that no state uses; their names."""
        return _core.clean_materials(self._number)

    @property
    def options(self) -> Dict[str, bool]:
        """Which parts are recorded and loaded, by the words of load()."""
        return _core.options(self._number)

    def set_options(self, **parts: bool) -> None:
        """Switches parts on or off: set_options(camera=False, render_settings=True)."""
        for part, on in parts.items():
            _core.set_option(self._number, _words([part])[0], on)

    # Told without loading.

    def diff(
        self,
        left: Union[str, State],
        right: Optional[Union[str, State]] = None,
        *,
        parts: Optional[Iterable[str]] = None,
    ) -> List[_core.ElementDifference]:
        """In what two states differ, or without `right` a state from the scene as it stands: what
        loading it would change, the state left and the scene right. Nothing is loaded. `right` may
        be a state of another document.

        Each answer is about one element: part, path, type, kind ("changed", or "left" or "right"
        where only that side has it) and fields, each with label, left and right as texts.
        """
        other = right.document if isinstance(right, State) else self._document
        name = "" if right is None else _names(right)[0]
        return _core.diff(self._number, _names(left)[0], other._number, name, _words(parts))

    def check(self) -> List[_core.Finding]:
        """What is wrong or odd about the states of the document, the worst first: code, severity
        ("error", "warning" or "note"), state, place, text and remedy."""
        return _core.check(self._number)

    # As text.

    def to_text(self, names: Optional[Names] = None) -> str:
        """States as JSON text for version control and other scenes, all without names."""
        return _core.states_as_text(self._number, _names(names))

    def take_in(
        self,
        text: str,
        *,
        only: Optional[Names] = None,
        rename: Optional[Mapping[str, str]] = None,
        same_name: str = "refuse",
        even_empty: bool = False,
    ) -> _core.Taken:
        """Adds the states of a text that to_text() or `stagemarks states export` has made. Elements
        are found by identity, path or unique name; what was found nowhere stands in `missing` and
        `ambiguous` of the answer, and `states` are pairs of a name and "added", "replaced" or
        "kept".

        only: names or patterns of those that are meant; rename: new names by those in the text;
        same_name: "refuse", "replace" or "keep" for names that the document has already;
        even_empty: also those of which the document has no element.
        """
        return _core.take_states_in(
            self._number, text, _names(only), dict(rename or {}), same_name, even_empty
        )

    # Pictures and files.

    def render(
        self,
        name: Union[str, State],
        path: Optional[Path] = None,
        *,
        width: int = 0,
        height: int = 0,
        overwrite: bool = False,
        threads: int = 0,
        progress: Optional[Progress] = None,
    ) -> _core.Pixels:
        """Renders the scene as it would be with a state loaded; the scene stays as it is.

        Without a path the answer is a buffer of height x width x 4 bytes: red, green, blue (sRGB)
        and alpha, from the top left; numpy.asarray() takes it without a copy. With a path the
        picture is written there, as .png, .tif or .exr, and the buffer is empty. width, height: in
        pixels; without them the render settings count, with one of them the shape of those.
        threads: 0 for one for each core.
        """
        return _render(
            self._document, _names(name)[0], path, (width, height), overwrite, threads, progress
        )

    def export(
        self,
        folder: Path,
        names: Optional[Names] = None,
        *,
        layout: str = "folders",
        frames: Optional[Tuple[int, int]] = None,
        isolated: bool = False,
        allow_missing: bool = False,
        progress: Optional[Progress] = None,
    ) -> _core.Exported:
        """Exports states, all without names, as scene files into a folder, which is made where it
        is missing: all, or with an Error what was possible. The answer has scenes, written (all
        files and folders) and missing (textures).

        layout: "file", "folders", "project" or "one-tex", as the dialog has them. frames: first and
        last one of each scene. isolated: each state onto the scene as it is, not onto the state
        before it. allow_missing: also without textures that are not there.
        """
        with listening(progress):
            return _core.export(
                self._number, os.fspath(folder), _names(names), layout, frames, isolated,
                allow_missing,
            )

    def publish(
        self,
        folder: Path,
        names: Optional[Names] = None,
        *,
        format: str = "glb",
        all_in_one: bool = False,
        omit_hidden: bool = True,
        overwrite: bool = False,
        progress: Optional[Progress] = None,
    ) -> List[str]:
        """Publishes states, all without names, as glTF 2.0: a file each, or one with a variant for
        each. The paths of the files. RefusedError for files there that were not published, unless
        they are to be replaced (overwrite).

        format: "glb" or "gltf", which has other files beside it. omit_hidden: leave out objects
        that render in none of the states.
        """
        with listening(progress):
            return _core.publish(
                self._number, os.fspath(folder), _names(names), format, all_in_one, omit_hidden,
                overwrite,
            )


def _render(
    document: Document,
    name: str,
    path: Optional[Path],
    size: Tuple[int, int],
    overwrite: bool,
    threads: int,
    progress: Optional[Progress],
) -> _core.Pixels:
    if min(size) < 0 or threads < 0:
        raise _core.MisuseError("Sizes and threads cannot be below 0.")
    target = "" if path is None else os.fspath(path)
    with listening(progress):
        return _core.render(document._number, name, size, target, overwrite, threads)
