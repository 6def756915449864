"""Elements of a scene: objects, tags, materials, layers and render settings.

An element is known by its identity: it stays the same element whatever its name or place is, and
using one that was deleted raises a ClosedError. Undo brings it back.
"""

from __future__ import annotations

from typing import (
    TYPE_CHECKING,
    Any,
    Dict,
    Generic,
    Iterable,
    Iterator,
    List,
    Optional,
    Tuple,
    Type,
    TypeVar,
    Union,
    cast,
    overload,
)

from . import _stagemarks as _core
from ._fields import ALL, Attribute, Field, Fielded, Pair, Vector, to_core

if TYPE_CHECKING:
    from .documents import Document

__all__ = [
    "Camera",
    "CompositingTag",
    "Cone",
    "Cube",
    "Cylinder",
    "Disc",
    "Effect",
    "Element",
    "ElementList",
    "Field",
    "Layer",
    "LayerList",
    "Light",
    "Material",
    "MaterialList",
    "Object",
    "ObjectList",
    "Plane",
    "RenderSettings",
    "SettingsList",
    "Sphere",
    "Tag",
    "TextureTag",
    "Torus",
]


def ids(document: Document, elements: Iterable[Element]) -> List[int]:
    """The identities of elements of that document; MisuseError for those of another one."""
    found = []
    for one in elements:
        if not isinstance(one, Element):
            raise TypeError(f"An element is needed, not {type(one).__name__}.")
        if one._number != document._number:
            raise _core.MisuseError(f"{one!r} is an element of another document.")
        found.append(one._element)
    return found


def _numbers(given: Optional[Iterable[float]]) -> List[float]:
    return [] if given is None else [float(number) for number in given]


class Element(Fielded):
    """Something that lives in a document. Two are equal when they are the same element."""

    __slots__ = ("_document",)

    def __init__(self, document: Document, element: int) -> None:
        self._document = document
        self._number = document._number
        self._element = element

    def _wrap(self, kind: str, element: int) -> Any:
        return self._document._wrap(kind, element)

    @property
    def document(self) -> Document:
        """The document that it belongs to."""
        return self._document

    @property
    def exists(self) -> bool:
        """Whether it is still in its document, and that is open."""
        return _core.is_there(self._number, self._element)

    @property
    def type(self) -> str:
        """What kind of thing it is: "Cube", "Texture"."""
        return _core.type_name_of(self._number, self._element)

    @property
    def path(self) -> str:
        """Where it stands: "/Room/Lamp"; of a tag "Wood on Room/Lamp"."""
        return _core.path_of(self._number, self._element)

    def remove(self) -> None:
        """Takes it out of its document, with all below it; an undo step."""
        _core.remove(self._number, [self._element])

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Element):
            return NotImplemented
        return (self._number, self._element) == (other._number, other._element)

    def __hash__(self) -> int:
        return hash((self._number, self._element))

    def __repr__(self) -> str:
        try:
            return f"<{type(self).__name__} {self.path!r}>"
        except _core.Error:
            return f"<{type(self).__name__}, gone>"


class Named(Element):
    """An element with a name."""

    __slots__ = ()

    name = Attribute[str]("Basic", "Name")


class Object(Named):
    """An object of the scene."""

    __slots__ = ()

    layer = Attribute[Optional["Layer"]]("Basic", "Layer")
    editor_mode = Attribute[str]("Basic", "Editor mode")
    render_mode = Attribute[str]("Basic", "Render mode")
    deform_mode = Attribute[str]("Basic", "Deform mode")
    position = Attribute[Vector]("Coordinates", "Position")
    rotation = Attribute[Vector]("Coordinates", "Rotation")
    scale = Attribute[Vector]("Coordinates", "Scale")

    @property
    def parent(self) -> Optional[Object]:
        """The object that it hangs below, None at the top."""
        element, type = _core.above(self._number, self._element)
        return cast(Object, make(self._document, element, type, Object)) if element else None

    def place(
        self,
        at: Optional[Iterable[float]] = None,
        look_at: Optional[Iterable[float]] = None,
        *,
        rotation: Optional[Iterable[float]] = None,
        scale: Optional[Iterable[float]] = None,
    ) -> None:
        """Puts it somewhere in the scene, whatever it hangs below, in one undo step; what is not
        given stays as it is. Three numbers each, angles in degrees. Looking at a point, cameras and
        lights face it upright."""
        where = [_numbers(one) for one in (at, look_at, rotation, scale)]
        _core.place(self._number, [self._element], *where)

    def set_material(self, material: Optional[Material]) -> None:
        """Gives its texture tag a material, or none; an object without such a tag gets one."""
        given = ids(self._document, [material]) if material is not None else [0]
        _core.give_material(self._number, [self._element], given[0])

    @property
    def children(self) -> List[Object]:
        """The objects directly below it, in their order."""
        found = _core.children(self._number, self._element)
        return [cast(Object, make(self._document, *one, Object)) for one in found]

    @property
    def tags(self) -> List[Tag]:
        """Its tags, in their order."""
        found = _core.parts(self._number, self._element)
        return [cast(Tag, make(self._document, *one, Tag)) for one in found]


class Camera(Object):
    """A camera. It looks along the Z axis of its frame."""

    __slots__ = ()

    projection = Attribute[str]("Camera", "Projection")
    field_of_view = Attribute[float]("Camera", "Field of view")
    vertical_field = Attribute[float]("Camera", "Vertical field")
    width = Attribute[float]("Camera", "Width")
    near = Attribute[float]("Camera", "Near")
    far = Attribute[float]("Camera", "Far")


class Light(Object):
    """A light. It shines along the Z axis of its frame."""

    __slots__ = ()

    light_type = Attribute[str]("Light", "Type")
    color = Attribute[Vector]("Light", "Color")
    brightness = Attribute[float]("Light", "Brightness")
    shadow = Attribute[str]("Light", "Shadow")
    inner_angle = Attribute[float]("Light", "Inner angle")
    outer_angle = Attribute[float]("Light", "Outer angle")
    range = Attribute[float]("Light", "Range")
    radius = Attribute[float]("Light", "Radius")


class Cube(Object):
    """A cube."""

    __slots__ = ()

    size = Attribute[Vector]("Cube", "Size")


class Sphere(Object):
    """A sphere."""

    __slots__ = ()

    radius = Attribute[float]("Sphere", "Radius")
    segments = Attribute[int]("Sphere", "Segments")


class Disc(Object):
    """A disc."""

    __slots__ = ()

    radius = Attribute[float]("Disc", "Radius")
    segments = Attribute[int]("Disc", "Segments")


class Cone(Object):
    """A cone."""

    __slots__ = ()

    radius = Attribute[float]("Cone", "Radius")
    height = Attribute[float]("Cone", "Height")
    segments = Attribute[int]("Cone", "Segments")


class Cylinder(Object):
    """A cylinder."""

    __slots__ = ()

    radius = Attribute[float]("Cylinder", "Radius")
    height = Attribute[float]("Cylinder", "Height")
    segments = Attribute[int]("Cylinder", "Segments")


class Torus(Object):
    """A torus."""

    __slots__ = ()

    radius = Attribute[float]("Torus", "Radius")
    tube_radius = Attribute[float]("Torus", "Tube radius")
    segments = Attribute[int]("Torus", "Segments")


class Plane(Object):
    """A plane."""

    __slots__ = ()

    width = Attribute[float]("Plane", "Width")
    depth = Attribute[float]("Plane", "Depth")
    segments = Attribute[int]("Plane", "Segments")


class Tag(Named):
    """A tag of an object."""

    __slots__ = ()

    layer = Attribute[Optional["Layer"]]("Basic", "Layer")

    @property
    def object(self) -> Object:
        """The object that it belongs to."""
        element, type = _core.above(self._number, self._element)
        return cast(Object, make(self._document, element, type, Object))


class TextureTag(Tag):
    """Gives its object a material."""

    __slots__ = ()

    material = Attribute[Optional["Material"]]("Texture", "Material")
    offset = Attribute[Pair]("Texture", "Offset")
    tiles = Attribute[Pair]("Texture", "Tiles")


class CompositingTag(Tag):
    """How its object takes part in pictures; its further values by label: tag["Switch 1003"]."""

    __slots__ = ()

    cast_shadows = Attribute[bool]("Compositing", "Cast shadows")
    receive_shadows = Attribute[bool]("Compositing", "Receive shadows")
    seen_by_camera = Attribute[bool]("Compositing", "Seen by camera")


class Material(Named):
    """A material. Textures are file names."""

    __slots__ = ()

    layer = Attribute[Optional["Layer"]]("Basic", "Layer")
    color = Attribute[Vector]("Color", "Color")
    color_texture = Attribute[str]("Color", "Texture")
    luminance = Attribute[Vector]("Luminance", "Color")
    luminance_texture = Attribute[str]("Luminance", "Texture")
    specular = Attribute[float]("Surface", "Specular")
    roughness = Attribute[float]("Surface", "Roughness")
    roughness_texture = Attribute[str]("Surface", "Rough texture")
    metallic = Attribute[float]("Surface", "Metallic")
    metallic_texture = Attribute[str]("Surface", "Metal texture")
    normal_texture = Attribute[str]("Surface", "Normals")
    normal_strength = Attribute[float]("Surface", "Strength")
    occlusion_texture = Attribute[str]("Surface", "Occlusion")
    occlusion_strength = Attribute[float]("Surface", "Strength", 1)
    both_sides = Attribute[bool]("Surface", "Both sides")
    opacity_mode = Attribute[str]("Opacity", "Mode")
    opacity = Attribute[float]("Opacity", "Opacity")
    opacity_texture = Attribute[str]("Opacity", "Texture")
    cutoff = Attribute[float]("Opacity", "Cutoff")


class Layer(Named):
    """A layer with its nine switches."""

    __slots__ = ()

    color = Attribute[Vector]("Layer", "Color")
    solo = Attribute[bool]("Layer", "Solo")
    view = Attribute[bool]("Layer", "View")
    render = Attribute[bool]("Layer", "Render")
    manager = Attribute[bool]("Layer", "Manager")
    locked = Attribute[bool]("Layer", "Locked")
    generators = Attribute[bool]("Layer", "Generators")
    deformers = Attribute[bool]("Layer", "Deformers")
    expressions = Attribute[bool]("Layer", "Expressions")
    animation = Attribute[bool]("Layer", "Animation")


class RenderSettings(Element):
    """Render settings. Sizes in pixels, times as numbers of frames."""

    __slots__ = ()

    name = Attribute[str]("Output", "Name")
    width = Attribute[int]("Output", "Width")
    height = Attribute[int]("Output", "Height")
    frames = Attribute[str]("Output", "Frames")
    frame_from = Attribute[int]("Output", "From")
    frame_to = Attribute[int]("Output", "To")
    frame_rate = Attribute[int]("Output", "Frame rate")
    save_alpha = Attribute[bool]("Saving", "Save alpha")
    save_multipass = Attribute[bool]("Saving", "Save multi-pass")

    @property
    def effects(self) -> List[Effect]:
        """Its post effects, then its multi-passes."""
        found = _core.parts(self._number, self._element)
        return [cast(Effect, make(self._document, *one, Effect)) for one in found]


class Effect(Element):
    """A post effect or a multi-pass of render settings. Values of an effect by label:
    effect["Cache file"]."""

    __slots__ = ()

    in_use = Attribute[bool]("Effect", "In use")


_BY_SECTION: Dict[str, Type[Element]] = {
    "Camera": Camera,
    "Light": Light,
    "Cube": Cube,
    "Sphere": Sphere,
    "Disc": Disc,
    "Cone": Cone,
    "Cylinder": Cylinder,
    "Torus": Torus,
    "Plane": Plane,
    "Texture": TextureTag,
    "Compositing": CompositingTag,
}
_BY_TYPE = {of.type: _BY_SECTION[of.section] for of in ALL if of.section in _BY_SECTION}


def make(document: Document, element: int, type: int, base: Type[Element]) -> Element:
    """An element as an object of the class for its type, `base` where there is none."""
    return _BY_TYPE.get(type, base)(document, element)


E = TypeVar("E", bound=Element)


class ElementList(Generic[E]):
    """The elements of one kind in a document: in their order, and by name."""

    __slots__ = ("_document", "_kind", "_base")

    def __init__(self, document: Document, kind: _core.Kind, base: Type[E]) -> None:
        self._document = document
        self._kind = kind
        self._base = base

    def _make(self, found: Iterable[Tuple[int, int]]) -> List[E]:
        return [cast(E, make(self._document, *one, self._base)) for one in found]

    def _all(self) -> List[E]:
        return self._make(_core.elements(self._document._number, self._kind))

    def find(self, typed: str) -> List[E]:
        """All that a name, a path, a pattern with * and ? or a position (#12) means; at least
        one. NotFoundError for none, and for a name that several have: a pattern means them all."""
        return self._make(_core.find(self._document._number, self._kind, typed))

    def get(self, typed: str) -> Optional[E]:
        """The one of that name or path; None where there is none or several."""
        try:
            found = self.find(typed)
        except _core.NotFoundError:
            return None
        return found[0] if len(found) == 1 else None

    def __iter__(self) -> Iterator[E]:
        return iter(self._all())

    def __len__(self) -> int:
        return len(_core.elements(self._document._number, self._kind))

    def __contains__(self, one: object) -> bool:
        if isinstance(one, str):
            return self.get(one) is not None
        if not isinstance(one, self._base) or one._number != self._document._number:
            return False
        return _core.is_there(one._number, one._element)

    @overload
    def __getitem__(self, which: Union[int, str]) -> E: ...

    @overload
    def __getitem__(self, which: slice) -> List[E]: ...

    def __getitem__(self, which: Union[int, str, slice]) -> Union[E, List[E]]:
        """By name, path or position; NotFoundError, IndexError where there is none."""
        if not isinstance(which, str):
            return self._all()[which]
        found = self.find(which)
        if len(found) > 1:
            names = ", ".join(one.path for one in found[:8])
            raise _core.NotFoundError(f'"{which}" means several: {names}. find() gives them all.')
        return found[0]

    def set(self, elements: Iterable[E], label: str, value: Any) -> None:
        """Gives a field, by its label, of all these elements a value, in one undo step."""
        these = list(elements)
        numbers = ids(self._document, these)
        if not these:
            return
        place = these[0]._place(label)
        given = to_core(self._document._number, place, value)
        _core.write(self._document._number, numbers, place, given)

    def remove(self, elements: Iterable[E]) -> None:
        """Takes elements out of the document, with all below them, in one undo step."""
        _core.remove(self._document._number, ids(self._document, elements))

    @property
    def selected(self) -> List[E]:
        """What is selected of them; assigning selects these and no others. No undo step."""
        return self._make(_core.selected(self._document._number, self._kind))

    @selected.setter
    def selected(self, elements: Iterable[E]) -> None:
        _core.select(self._document._number, self._kind, ids(self._document, elements))

    def __repr__(self) -> str:
        try:
            return repr(self._all())
        except _core.Error:
            return "<elements of a closed document>"


class ObjectList(ElementList[Object]):
    """The objects of a document, all levels, in the order of the tree."""

    __slots__ = ()

    def __init__(self, document: Document) -> None:
        super().__init__(document, _core.Kind.OBJECTS, Object)

    def add(
        self,
        type: str,
        name: str = "",
        *,
        parent: Optional[Object] = None,
        at: Optional[Iterable[float]] = None,
        look_at: Optional[Iterable[float]] = None,
        rotation: Optional[Iterable[float]] = None,
        scale: Optional[Iterable[float]] = None,
    ) -> Object:
        """A new object, in one undo step: "null", "cube", "sphere", "cone", "disc", "cylinder",
        "torus", "plane", "camera" or "light". Where it stands is told in coordinates of the scene,
        see Object.place; without a name it gets that of its type."""
        where = [_numbers(one) for one in (at, look_at, rotation, scale)]
        above = ids(self._document, [parent]) if parent is not None else [0]
        made = _core.add_object(self._document._number, type, name, above[0], *where)
        return self._make([made])[0]

    @property
    def roots(self) -> List[Object]:
        """Those at the top."""
        return [one for one in self if one.parent is None]


class MaterialList(ElementList[Material]):
    """The materials of a document."""

    __slots__ = ()

    def __init__(self, document: Document) -> None:
        super().__init__(document, _core.Kind.MATERIALS, Material)

    def add(self, name: str, color: Optional[Iterable[float]] = None) -> Material:
        """A new material with a plain color (red, green and blue from 0 to 1; without one a light
        gray), in one undo step. MisuseError for another color."""
        made = _core.add_material(self._document._number, name, _numbers(color))
        return self._make([made])[0]


class LayerList(ElementList[Layer]):
    """The layers of a document, all levels."""

    __slots__ = ()

    def __init__(self, document: Document) -> None:
        super().__init__(document, _core.Kind.LAYERS, Layer)

    def add(self, name: str) -> Layer:
        """A new layer, in one undo step. It gets one of eight colors by turns."""
        return self._make([_core.add_layer(self._document._number, name)])[0]


class SettingsList(ElementList[RenderSettings]):
    """The render settings of a document."""

    __slots__ = ()

    def __init__(self, document: Document) -> None:
        super().__init__(document, _core.Kind.SETTINGS, RenderSettings)

    def add(self, name: str) -> RenderSettings:
        """New render settings with the host's defaults, in one undo step."""
        return self._make([_core.add_settings(self._document._number, name)])[0]

    @property
    def active(self) -> RenderSettings:
        """Those that pictures are rendered with; assigning is an undo step."""
        return self._document.render_settings

    @active.setter
    def active(self, settings: RenderSettings) -> None:
        self._document.render_settings = settings
