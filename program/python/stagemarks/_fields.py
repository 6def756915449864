"""Fields of elements as attributes of Python objects.

Which fields there are stands once, in the program's own table; here each gets a name and a type.
"""

from __future__ import annotations

import operator
import os
from typing import (
    Any,
    Dict,
    Generic,
    List,
    NamedTuple,
    Optional,
    Tuple,
    TypeVar,
    Union,
    overload,
)

from . import _stagemarks as _core

T = TypeVar("T")
Vector = Tuple[float, float, float]
Pair = Tuple[float, float]

ALL = _core.all_fields()


class Field(NamedTuple):
    """What is known of a field of an element."""

    section: str
    label: str
    kind: str
    """"text", "whole", "real", "switch", "choice", "vector", "pair", "file", "layer", "material",
    "camera" or "settings"."""
    min: float
    max: float
    unit: str
    tip: str
    choices: Tuple[str, ...]


def facts(place: int) -> Field:
    """The facts of the field at a place of the table."""
    of = ALL[place]
    return Field(
        of.section, of.label, of.kind, of.min, of.max, of.unit, of.tip, tuple(of.choices)
    )


def _refuse(label: str, needed: str, value: object) -> TypeError:
    return TypeError(f'"{label}" needs {needed}, not {type(value).__name__}.')


def _numbers(label: str, count: int, value: Any) -> List[float]:
    try:
        numbers = [float(number) for number in value]
    except (TypeError, ValueError):
        raise _refuse(label, f"{count} numbers", value) from None
    if len(numbers) != count:
        raise _core.MisuseError(f'"{label}" needs {count} numbers, not {len(numbers)}.')
    return numbers


def to_core(document: int, place: int, value: Any) -> Any:
    """A value as the compiled part takes it; raises TypeError for one of another type."""
    of = ALL[place]
    if of.kind in ("vector", "pair"):
        return _numbers(of.label, 3 if of.kind == "vector" else 2, value)
    if of.kind == "switch":
        if type(value).__name__ not in ("bool", "bool_"):
            raise _refuse(of.label, "True or False", value)
        return bool(value)
    if of.kind in ("whole", "real"):
        try:
            return operator.index(value) if of.kind == "whole" else float(value)
        except (TypeError, ValueError):
            needed = "a whole number" if of.kind == "whole" else "a number"
            raise _refuse(of.label, needed, value) from None
    if of.kind in ("text", "choice", "file"):
        if of.kind == "file" and isinstance(value, os.PathLike):
            value = os.fspath(value)
        if not isinstance(value, str):
            raise _refuse(of.label, "a text", value)
        return str(value)
    if value is None:
        return None
    if not hasattr(value, "_element") or not hasattr(value, "_number"):
        raise _refuse(of.label, f"a {of.kind} or None", value)
    if value._number != document:
        raise _core.MisuseError(f'"{of.label}" needs an element of the same document.')
    return value._element


class Fielded:
    """Something with fields: an element, or a document, which is element 0 of itself."""

    __slots__ = ("_number", "_element")

    _number: int
    _element: int

    def _wrap(self, kind: str, element: int) -> Any:
        raise NotImplementedError

    def _read(self, place: int) -> Any:
        value = _core.read(self._number, self._element, place)
        kind = ALL[place].kind
        if value is None or kind in ("text", "choice", "file", "whole", "real", "switch"):
            return value
        if kind in ("vector", "pair"):
            return tuple(value)
        return self._wrap(kind, value)

    def _write(self, place: int, value: Any) -> None:
        given = to_core(self._number, place, value)
        _core.write(self._number, [self._element], place, given)

    def _places(self) -> Dict[str, int]:
        places: Dict[str, int] = {}
        for place in _core.fields_of(self._number, self._element):
            places.setdefault(f"{ALL[place].section}/{ALL[place].label}", place)
            places.setdefault(ALL[place].label, place)
        return places

    def _place(self, label: str) -> int:
        places = self._places()
        if label not in places:
            known = ", ".join(name for name in places if "/" not in name)
            raise _core.NotFoundError(f'There is no field "{label}" here. There are: {known}.')
        return places[label]

    @property
    def fields(self) -> List[Field]:
        """All its fields, in the order in which the attributes of the desktop show them."""
        return [facts(place) for place in _core.fields_of(self._number, self._element)]

    def __getitem__(self, label: str) -> Any:
        """A field by its label, "Render mode", or where several have it by section and label,
        "Luminance/Color"."""
        return self._read(self._place(label))

    def __setitem__(self, label: str, value: Any) -> None:
        self._write(self._place(label), value)


class Attribute(Generic[T]):
    """A field as an attribute: reading reads it, assigning is an undo step of its own."""

    def __init__(self, section: str, label: str, nth: int = 0) -> None:
        self._section = section
        self._label = label
        self._nth = nth
        self._known: Dict[type, int] = {}  # by the class of the owner

    def __set_name__(self, owner: type, name: str) -> None:
        # One row for each kind of element that has such a section, "Basic" say.
        self._found = [
            place
            for place, of in enumerate(ALL)
            if (of.section, of.label) == (self._section, self._label)
        ]
        if len(self._found) <= self._nth:
            raise TypeError(f"{owner.__name__}.{name}: no field {self._section}/{self._label}.")
        self.__doc__ = self._told()

    def _told(self) -> str:
        of = ALL[self._found[self._nth]]
        unit = f" Unit: {of.unit.strip()}." if of.unit else ""
        choices = " One of: " + ", ".join(f'"{c}"' for c in of.choices) + "." if of.choices else ""
        number = of.kind in ("real", "whole", "vector", "pair")
        limits = f" From {of.min:g} to {of.max:g}." if number and of.max < 1e9 else ""
        return f"{of.label}.{' ' if of.tip else ''}{of.tip}{unit}{choices}{limits}"

    def place(self, owner: Fielded) -> int:
        """Its place in the table, for elements of this class."""
        if len(self._found) == 1:
            return self._found[0]
        place = self._known.get(type(owner))
        if place is None:
            has = _core.fields_of(owner._number, owner._element)
            place = [place for place in self._found if place in has][self._nth]
            self._known[type(owner)] = place
        return place

    @overload
    def __get__(self, owner: None, cls: type) -> Attribute[T]: ...

    @overload
    def __get__(self, owner: Fielded, cls: type) -> T: ...

    def __get__(self, owner: Optional[Fielded], cls: type) -> Union[Attribute[T], T]:
        if owner is None:
            return self
        value: T = owner._read(self.place(owner))
        return value

    def __set__(self, owner: Fielded, value: Any) -> None:
        owner._write(self.place(owner), value)
