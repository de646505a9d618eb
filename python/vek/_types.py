"""The types of arguments."""

from typing import Any, Sequence, Tuple, Union

#: An object with the buffer protocol (NumPy, memoryview, array), the array interface or DLPack; or a
#: tuple or list of two or three of them, which are the planes of a picture.
Image = Any
#: (width, height) in pixels
Size = Tuple[int, int]
#: (x, y) in pixels
Point = Tuple[int, int]
#: (x, y, width, height) in pixels
Rect = Tuple[int, int, int, int]
#: A number for all channels, or one for each.
Value = Union[int, Sequence[int]]
#: Whole numbers.
Taps = Sequence[int]
#: Rows of whole numbers.
Kernel = Sequence[Sequence[int]]
