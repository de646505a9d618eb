"""Objects that keep something from call to call. Each is a context manager, and can be closed."""

from typing import Any, Dict, NamedTuple, Optional, Sequence, Tuple, TypeVar, Union

from . import _vek
from ._enums import (BalanceMethod, Bayer, Chroma, Format, GammaCurve, MatrixPlace, Metering, Range, Raw, Rotation,
                     Status, ToneCurve)
from ._functions import _documented
from ._types import Image, Kernel, Point, Rect, Size

_S = TypeVar("_S", bound="State")

IDENTITY = ((1, 0, 0), (0, 1, 0), (0, 0, 1))


class State:
    """What all of them have in common."""

    _held: Any

    def close(self) -> None:
        """Releases its memory. Calls are refused from then on."""
        self._held.close()

    def __enter__(self: _S) -> _S:
        return self

    def __exit__(self, *exception: Any) -> None:
        self.close()


class ExposureControls(NamedTuple):
    """The two values that an exposure moves, and what was said about them."""

    step: int
    scale: int
    status: Status = Status.ok


@_documented("AutoExposure")
class AutoExposure(State):
    """Automatic exposure. One call at a time."""

    def __init__(self, *, metering: Metering = Metering.whole_frame, windows: Sequence[Rect] = (),
                 weights: Sequence[int] = (), hist_count_thresh: int = 1, hist_spread_thresh: int = 0,
                 dark_thresh: int = 0, bright_thresh: int = 1023, target: int = 512, tolerance: int = 32,
                 scale_multiplier: int = 2, step_size: int = 1, scale_min: int = 1, scale_max: int = 65535,
                 step_min: int = 0, step_max: int = 65535) -> None:
        self._held = _vek.AutoExposure(metering, windows, weights, dict(
            hist_count_thresh=hist_count_thresh, hist_spread_thresh=hist_spread_thresh, dark_thresh=dark_thresh,
            bright_thresh=bright_thresh, target=target, tolerance=tolerance, scale_multiplier=scale_multiplier,
            step_size=step_size, scale_min=scale_min, scale_max=scale_max, step_min=step_min, step_max=step_max))

    def meter(self, frame: Image, step: int, scale: int) -> ExposureControls:
        """Meters a frame of 10-bit samples and moves the controls."""
        step, scale, status = self._held.meter(frame, step, scale)
        return ExposureControls(step, scale, Status(status))


@_documented("exposureParams")
def recommended_exposure(frame_size: Size, metering: Metering, least: Tuple[int, int],
                         most: Tuple[int, int]) -> Dict[str, Any]:
    """What AutoExposure(**...) takes; `least` and `most` are controls (step, scale)."""
    return dict(_vek._recommended_exposure(frame_size, metering, least, most), metering=metering)


class BalanceGains(NamedTuple):
    """The gains that a white balance moves, and what was said about them."""

    red: int
    green: int
    blue: int
    status: Status = Status.ok


@_documented("AutoWhiteBalance")
class AutoWhiteBalance(State):
    """Automatic white balance. Threads may share one."""

    def __init__(self, *, windows: Sequence[Rect], weights: Sequence[int],
                 method: BalanceMethod = BalanceMethod.gray_world, ref_ratio_r: int = 1024, ref_ratio_b: int = 1024,
                 hold_tol_r: int = 0, hold_tol_b: int = 0, valid_tol_r: int = 65535, valid_tol_b: int = 65535,
                 wpd_limit1: int = 1023, wpd_limit2: int = 1023, wpd_limit3: int = 2047, wpd_low: int = 1,
                 wpd_high: int = 1023, min_white_count: int = 0, max_gain_step: int = 65535, gain_min: int = 0,
                 gain_max: int = 65535, default_gain_r: int = 256, default_gain_g: int = 256,
                 default_gain_b: int = 256) -> None:
        self._held = _vek.AutoWhiteBalance(method, windows, weights, dict(
            ref_ratio_r=ref_ratio_r, ref_ratio_b=ref_ratio_b, hold_tol_r=hold_tol_r, hold_tol_b=hold_tol_b,
            valid_tol_r=valid_tol_r, valid_tol_b=valid_tol_b, wpd_limit1=wpd_limit1, wpd_limit2=wpd_limit2,
            wpd_limit3=wpd_limit3, wpd_low=wpd_low, wpd_high=wpd_high, min_white_count=min_white_count,
            max_gain_step=max_gain_step, gain_min=gain_min, gain_max=gain_max, default_gain_r=default_gain_r,
            default_gain_g=default_gain_g, default_gain_b=default_gain_b))

    def measure(self, frame: Image, gains: Tuple[int, int, int]) -> BalanceGains:
        """Measures a frame of 10-bit samples and moves the gains of red, green and blue."""
        red, green, blue, status = self._held.measure(frame, gains[:3])
        return BalanceGains(red, green, blue, Status(status))


@_documented("balanceParams")
def recommended_balance(frame_size: Size, method: BalanceMethod, unit: int = 1024) -> Dict[str, Any]:
    """What AutoWhiteBalance(**...) takes."""
    return dict(_vek._recommended_balance(frame_size, method, unit), method=method)


@_documented("RawPipeline")
class RawPipeline(State):
    """The raw pipeline: frames of one size to planes of one size. Threads may share one."""

    def __init__(self, frame_size: Size, *, size: Optional[Size] = None, chroma: Chroma = Chroma.c420,
                 rotation: Rotation = Rotation.none, curve: GammaCurve = GammaCurve.bt709,
                 table: Sequence[int] = (), matrix: Kernel = ((256, 0, 0), (0, 256, 0), (0, 0, 256)),
                 dead_pixels: Sequence[Point] = (), offset: Point = (0, 0), frame_step: Optional[int] = None,
                 steps: Optional[Sequence[int]] = None, border_valid: bool = False) -> None:
        """`dead_pixels` are pairs (row, column) of the sensor, `offset` is where the frame begins there: (x, y)."""
        width, height = frame_size
        if size is None:
            size = (height, width) if rotation in (Rotation.ccw90, Rotation.cw90) else (width, height)
        if frame_step is None:
            frame_step = 2 * (width + 4 if border_valid else width)
        self._held = _vek.RawPipeline(curve, table, matrix, dead_pixels, offset, frame_size, frame_step, chroma, size,
                                      steps, rotation, border_valid)

    def destination(self) -> Any:
        """New planes that process() takes."""
        return self._held.destination()

    def process(self, frame: Image, *, out: Optional[Image] = None) -> Any:
        """Converts a frame of 10-bit samples. Dead pixels are corrected in the frame."""
        return self._held.process(frame, self._held.destination() if out is None else out)


@_documented("RealFft")
class RealFft(State):
    """Fourier transforms of images of one size: powers of two up to 1024. One call at a time."""

    def __init__(self, size: Size) -> None:
        self._held = _vek.RealFft(size)

    def forward(self, src: Image, scale: int = 0, *, out: Optional[Image] = None) -> Any:
        """The spectrum of an image of uint8 or int32, times 2^-scale: int32 (rows, columns / 2 + 1, 2)."""
        return self._held.forward(src, scale, out)

    def inverse(self, src: Image, scale: int, *, wide: bool = False, out: Optional[Image] = None) -> Any:
        """The image of a spectrum, times 2^-scale: uint8, or int32 if `wide`."""
        return self._held.inverse(src, scale, wide, out)


@_documented("Moments")
class Moments(State):
    """The moments of an image. One call at a time."""

    def __init__(self, src: Optional[Image] = None) -> None:
        self._held = _vek.Moments()
        if src is not None:
            self.measure(src)

    def measure(self, src: Image) -> None:
        """Takes the moments of an image."""
        self._held.measure(src)

    def spatial(self, channel: int = 0, origin: Point = (0, 0)) -> Tuple[float, ...]:
        """The spatial moments 00, 10, 01, 20, 11, 02, 30, 21, 12, 03."""
        return self._held.read(0, channel, origin)

    def central(self, channel: int = 0) -> Tuple[float, ...]:
        """The central moments, in the same order."""
        return self._held.read(1, channel, (0, 0))

    def normalized(self, channel: int = 0) -> Tuple[float, ...]:
        """The normalised central moments, in the same order."""
        return self._held.read(2, channel, (0, 0))

    def hu(self, channel: int = 0) -> Tuple[float, ...]:
        """The seven moments of Hu."""
        return self._held.read(3, channel, (0, 0))


class Exposure(NamedTuple):
    """What a frame was taken with: the product of time and gain decides how bright it is."""

    time: float = 1
    gain: float = 1


class ExposureSettings(NamedTuple):
    """The automatic exposure. The time is used first; gain comes where the time ends."""

    on: bool = True
    least: Exposure = Exposure(1, 1)
    most: Exposure = Exposure(1000, 8)
    target: float = 184
    tolerance: float = 0.09

    def _numbers(self) -> Tuple[float, ...]:
        return (float(self.on), *self.least, *self.most, self.target, self.tolerance)


class Gains(NamedTuple):
    """What red, green and blue are multiplied by."""

    red: float = 1
    green: float = 1
    blue: float = 1


class IspResults(NamedTuple):
    """What the last frame told."""

    exposure: Exposure  #: for the next frame
    gains: Gains  #: that the next frame is balanced with; green is 1
    brightness: float  #: mean green sample of the frame, 0..1023
    saturated: float  #: part of the green samples that is saturated
    exposure_held: bool  #: the brightness was within the tolerance
    exposure_at_limit: bool  #: the target needs more or less light than the limits allow
    balance_held: bool  #: the gains were right
    balance_at_limit: bool  #: a gain is at its limit
    balance_has_data: bool  #: something in the frame could be used


@_documented("IspSettings")
@_documented("Isp")
class Isp(State):
    """The camera path as one object: raw frames in, pictures with the right colours out. One call at a time."""

    def __init__(self, size: Size, format: Raw = Raw.csi2_10, order: Bayer = Bayer.rggb, *,
                 black: Union[int, Sequence[int]] = 0, white: int = 0, bits: int = 0,
                 crop: Optional[Rect] = None, scale: int = 1, output: Optional[Size] = None,
                 rotation: Rotation = Rotation.none, range: Range = Range.studio, curve: ToneCurve = ToneCurve.srgb,
                 matrix: Sequence[Sequence[float]] = IDENTITY, matrix_gains: Sequence[float] = (0, 0, 0),
                 matrix_place: MatrixPlace = MatrixPlace.linear, gains: Sequence[float] = (1, 1, 1),
                 digital_gain: float = 1, dead_pixels: Sequence[Point] = (),
                 exposure: ExposureSettings = ExposureSettings(), white_balance: bool = True, jobs: int = 1,
                 band_rows: int = 24) -> None:
        """`black` is a number, or one for each of R, Gr, Gb and B; samples saturate at `white`, if it is not 0.

        `dead_pixels` are pairs (row, column); `matrix` is the camera's, and `matrix_gains` balance the camera in
        the light for which it holds. `jobs` bands are worked on at once, each in a thread."""
        settings = dict(locals())
        settings.pop("self")
        settings["exposure"] = exposure._numbers()
        self._held = _vek.Isp(settings)

    @property
    def output_size(self) -> Size:
        """The size of the picture, rotated."""
        return self._held.output_size()

    @property
    def crop(self) -> Rect:
        """The part of the frame that is shown."""
        return self._held.crop()

    @property
    def matrix(self) -> Tuple[Tuple[float, float, float], ...]:
        """The linear matrix that the next frame is given."""
        return self._held.matrix()

    @property
    def results(self) -> IspResults:
        """What the last frame told, and what the next one should be taken with."""
        exposure, gains, *rest = self._held.results()
        return IspResults(Exposure(*exposure), Gains(*gains), *rest)

    def process(self, frame: Image, format: Format = Format.rgb24, *, out: Optional[Image] = None) -> Any:
        """Makes a picture of a frame, and decides about exposure and white balance of the next one.

        `frame` has the bytes of the frame, uint8 (rows, bytes), or its words with Raw.plain16. `format` is rgb24,
        bgr24, rgbx32, bgrx32, rgb565, rgb555, rgb444, i420, i422 or nv12."""
        return self._held.process(frame, out, format)

    def set_levels(self, black: Union[int, Sequence[int]], white: int = 0) -> None:
        """Black level, one or of R, Gr, Gb and B, and where samples saturate; 0 is their largest value."""
        self._held.set_levels(black, white)

    def set_gains(self, gains: Sequence[float], digital_gain: float = 1) -> None:
        """Gains of red, green and blue, and one on top of them."""
        self._held.set_gains(gains, digital_gain)

    def set_white_balance(self, on: bool) -> None:
        """Turns the automatic white balance on or off; the gains stay."""
        self._held.set_white_balance(on)

    def set_exposure_settings(self, exposure: ExposureSettings) -> None:
        """Settings of the automatic exposure."""
        self._held.set_exposure_settings(exposure._numbers())

    def set_exposure(self, time: float, gain: float) -> None:
        """What the next frame that is processed was taken with."""
        self._held.set_exposure(time, gain)

    def set_curve(self, curve: Any) -> None:
        """A ToneCurve, or 1024 numbers of 0..1 that do not fall."""
        self._held.set_curve(curve)

    def set_color(self, matrix: Sequence[Sequence[float]], gains: Sequence[float] = (0, 0, 0),
                  place: MatrixPlace = MatrixPlace.linear) -> None:
        """The camera's colour matrix."""
        self._held.set_color(matrix, gains, place)

    def set_dead_pixels(self, dead_pixels: Sequence[Point]) -> None:
        """Dead samples: pairs (row, column) of the frame."""
        self._held.set_dead_pixels(dead_pixels)
