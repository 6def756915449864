"""The states of a document, which are called Stagemarks in its dialog."""

from __future__ import annotations

import datetime
from typing import TYPE_CHECKING, Dict, Iterable, Iterator, List, Optional, Union

from . import _stagemarks as _core
from ._calls import Progress, listening
from .elements import Camera, Layer, Object, Tag

if TYPE_CHECKING:
    from .documents import Document

Names = Union[str, "State", Iterable[Union[str, "State"]]]
"""States by name, by pattern with * and ?, or as State; one or several."""


def _names(given: Optional[Names]) -> List[str]:
    if given is None:
        return []
    if isinstance(given, (str, State)):
        given = [given]
    return [one.name if isinstance(one, State) else one for one in given]


def _words(parts: Optional[Iterable[str]]) -> List[str]:
    if isinstance(parts, str):
        parts = [parts]
    return [part.replace("_", "-") for part in parts or ()]


class State:
    """A state by its name. One that is not there anymore raises a NotFoundError."""

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
        date = self._facts().date
        return datetime.datetime.fromisoformat(date) if date else None

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

    def delete(self) -> None:
        """Deletes it with its preview image. No undo brings it back."""
        self._document.states.delete(self)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, State):
            return NotImplemented
        return (self._document, self._name) == (other._document, other._name)

    def __hash__(self) -> int:
        return hash((self._document, self._name))

    def __repr__(self) -> str:
        return f"<State {self._name!r}>"


class States:
    """The states of a document, in the order of its list: doc.states["Day"], len(doc.states).

    Where several are meant, names and patterns do: doc.states.delete("shot_0*"). Recording,
    renaming, deleting and editing of states is kept in the document at once; as at the desktop, no
    undo takes it back, but for a step that ends with an exception.
    """

    def __init__(self, document: Document) -> None:
        self._document = document
        self._number = document._number

    @property
    def names(self) -> List[str]:
        """Their names."""
        return [facts.name for facts in _core.states(self._number)]

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
        """Deletes states with their preview images; their names. No undo brings them back."""
        return _core.delete(self._number, _names(names))

    def update(self, names: Optional[Names] = None) -> bool:
        """Adds objects, tags and layers that are new in the scene to states, all without names.
        Whether anything changed."""
        return _core.edit(self._number, _core.Bulk.UPDATE, _names(names), [])[1]

    def set_objects(self, objects: Iterable[Object], names: Optional[Names] = None) -> bool:
        """Puts the present switches of objects into states, all without names. Whether anything
        changed."""
        ids = [one._element for one in objects]
        return _core.edit(self._number, _core.Bulk.OBJECTS, _names(names), ids)[1]

    def set_tags(self, tags: Iterable[Tag], names: Optional[Names] = None) -> bool:
        """The same of the present settings of tags."""
        ids = [one._element for one in tags]
        return _core.edit(self._number, _core.Bulk.TAGS, _names(names), ids)[1]

    def set_layers(self, layers: Iterable[Layer], names: Optional[Names] = None) -> bool:
        """The same of the present switches of layers."""
        ids = [one._element for one in layers]
        return _core.edit(self._number, _core.Bulk.LAYERS, _names(names), ids)[1]

    def set_camera(self, camera: Camera, names: Optional[Names] = None) -> bool:
        """Makes a camera the render camera of states, all without names. Whether anything
        changed."""
        return _core.edit(self._number, _core.Bulk.CAMERA, _names(names), [camera._element])[1]

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
