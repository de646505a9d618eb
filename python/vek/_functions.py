"""Functions whose result has another size than their source, and the library itself."""

from typing import Any, Callable, List, NamedTuple, Optional, Sequence, Tuple, TypeVar

from . import _vek
from ._enums import (Bayer, Chroma, Format, Interpolation, PadBorder, Raw, Reduction, Rotation,
                     WarpBorder, WarpDirection)
from ._types import Image, Kernel, Point, Rect, Size, Value

_F = TypeVar("_F", bound=Callable[..., Any])


def _documented(name: str) -> Callable[[_F], _F]:
    """Adds what the headers say about `name`."""

    def add(function: _F) -> _F:
        function.__doc__ = f"{function.__doc__}\n\n{_vek.documentation.get(name, '')}"
        return function

    return add


@_documented("rawRegion")
def raw_region(size: Size, order: Bayer) -> Rect:
    """(x, y, width, height)."""
    return _vek._raw_region(size, order)


@_documented("rawTo10Rggb")
def raw_to_10rggb(src: Image, size: Size, format: Raw = Raw.csi2_10, *, bits: int = 10, order: Bayer = Bayer.rggb,
                  black: Sequence[int] = (0, 0, 0, 0), gain: Sequence[int] = (4096, 4096, 4096, 4096),
                  out: Optional[Image] = None) -> Any:
    """A raw frame of `size` samples as 10-bit samples that begin with a red one, uint16.

    `src` has the bytes of the frame, (rows, bytes), or its words with Raw.plain16."""
    return _vek._raw_to_10rggb(src, out, size, format, bits, order, black, gain)


@_documented("colorMatrix")
def color_matrix(src: Image, matrix: Kernel, order: Bayer = Bayer.rggb, *, border_valid: bool = False,
                 out: Optional[Image] = None) -> Any:
    """Applies a matrix of whole numbers in 1/4096 to the colours of 10-bit samples, uint16.

    With `border_valid`, `src` has one sample more on every side, and `order` is that of the result."""
    return _vek._color_matrix(src, out, matrix, order, border_valid)


@_documented("demosaic")
def demosaic(src: Image, table: Sequence[int], *, bgr: bool = False, border_valid: bool = False,
             out: Optional[Image] = None) -> Any:
    """Pixels of a raw frame, uint16, that begins with a red sample, through a table of 1024 bytes.

    They are R, G, B, or with `bgr` B, G, R. With `border_valid`, `src` has one sample more on every side."""
    return _vek._demosaic(src, out, table, bgr, border_valid)


@_documented("pad")
def pad(src: Image, margins: Rect, border: PadBorder = PadBorder.replicate, value: Value = 0, *,
        out: Optional[Image] = None) -> Any:
    """`src` with `margins` around it: left, top, right, bottom."""
    return _vek._pad(src, out, margins, border, value)


@_documented("resize")
def resize(src: Image, size: Optional[Size] = None, *, format: Optional[Format] = None,
           rotation: Rotation = Rotation.none, interpolation: Interpolation = Interpolation.linear,
           chroma: Optional[Chroma] = None, out: Optional[Image] = None) -> Any:
    """Resizes planes of 4:2:0 or 4:2:2 to `size`, rotates and converts them.

    `size` is that before the rotation. `format` is that of the source, rgb565, rgb555, rgb444 or bgr24.
    What is made has rows at multiples of 64 bytes; so has what empty() makes."""
    return _vek._resize(src, out, size, -1 if format is None else format, rotation, interpolation,
                        -1 if chroma is None else chroma)


@_documented("reduce")
def reduce(src: Image, factor: int, reduction: Reduction = Reduction.average, *, rotation: Rotation = Rotation.none,
           format: Format = Format.rgb565, out: Optional[Image] = None) -> Any:
    """Reduces UYVY, uint8 (rows, columns, 2), by 2, 4 or 8 to rgb565 or rgb555."""
    return _vek._reduce(src, out, factor, reduction, rotation, format)


@_documented("to420")
def to_420(src: Image, rotation: Rotation = Rotation.none, *, out: Optional[Image] = None) -> Any:
    """UYVY, uint8 (rows, columns, 2), or planes of 4:2:2 to planes of 4:2:0."""
    return _vek._to_420(src, out, rotation)


@_documented("warp")
def warp(src: Image, map: Sequence[Any], size: Optional[Size] = None, *,
         direction: WarpDirection = WarpDirection.forward, interpolation: Interpolation = Interpolation.linear,
         border: WarpBorder = WarpBorder.constant, value: Value = 0, place: Point = (0, 0),
         out: Optional[Image] = None) -> Any:
    """Warps an image by the six numbers of an affine map or the nine of a projective one."""
    return _vek._warp(src, out, size, map, direction, interpolation, border, value, place)


def empty(size: Size, format: Format) -> Any:
    """A picture with rows at multiples of 64 bytes, which all functions take: an array, or planes."""
    return _vek._empty(size, format)


class Division(NamedTuple):
    """What a division leaves."""

    quotient: int
    remainder: int


@_documented("divide")
def divide(n: int, d: int, bits: int = 32) -> Division:
    """Divides numbers of 8, 16 or 32 bits."""
    return Division(*_vek._divide(n, d, bits))


class LibraryVersion(NamedTuple):
    """The interface that the functions of a part of the library follow."""

    major: int
    minor: int
    major_build: int
    build: int
    name: str
    version: str
    build_date: str


def image_version() -> LibraryVersion:
    """The interface that the image functions follow."""
    return LibraryVersion(*_vek.image_version())


def camera_version() -> LibraryVersion:
    """The interface that the camera functions follow."""
    return LibraryVersion(*_vek.camera_version())


def levels() -> List[str]:
    """The CPU levels that this library has, the lowest first; level() is the one that functions run at."""
    names: List[str] = []
    while _vek.level_name(len(names)) is not None:
        names.append(_vek.level_name(len(names)))
    return names


def level() -> str:
    """The CPU level that functions run at."""
    return str(_vek.level_name(_vek.level()))


def level_limit() -> int:
    """The highest level that functions may run at."""
    return int(_vek.level_limit())
