"""Image-processing primitives for the camera path: every function of the library on NumPy arrays and other
buffers, without copies, and raw frames to pictures (Isp).

Images are arrays: uint8 (rows, columns) or (rows, columns, channels), uint16 (rows, columns), or tuples of
planes. Sizes and points are (width, height) and (x, y). See docs/python.md."""

from . import _vek
from ._vek import *  # noqa: F401,F403
from ._enums import *  # noqa: F401,F403
from ._errors import Error, ResultWarning
from ._functions import (Division, LibraryVersion, camera_version, color_matrix, demosaic, divide, empty,
                         image_version, level, level_limit, levels, pad, raw_region, raw_to_10rggb, reduce, resize,
                         to_420, warp)
from ._states import (AutoExposure, AutoWhiteBalance, BalanceGains, Exposure, ExposureControls, ExposureSettings,
                      Gains, Isp, IspResults, Moments, RawPipeline, RealFft, recommended_balance,
                      recommended_exposure)

version: str = _vek.version()
__version__ = version
# What would hide a function of Python's own is not exported to `from vek import *`.
__all__ = [name for name in dir() if name[0] != "_" and name not in ("set", "filter", "copy")]
