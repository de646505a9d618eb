"""Objects: what they make, how they close, and that calls which would meet are refused."""

import subprocess
import sys
import threading
from pathlib import Path

import numpy as np
import pytest

import vek


def packed(frame):
    """10-bit samples as RAW10."""
    groups = frame.reshape(frame.shape[0], -1, 4)
    low = (groups & 3) << np.arange(0, 8, 2)
    return np.concatenate([groups >> 2, low.sum(-1, keepdims=True)], -1).astype(np.uint8).reshape(frame.shape[0], -1)


def scene(width=64, height=48):
    """A grey wedge under a light that is too red."""
    frame = np.tile(np.linspace(100, 500, width), (height, 1))
    frame[::2, ::2] *= 1.6
    return (frame + 64).astype(np.uint16)


def test_isp():
    frame = packed(scene())
    with vek.Isp((64, 48), black=64, exposure=vek.ExposureSettings(on=False)) as isp:
        isp.process(frame)
        picture = isp.process(frame)
        assert picture.shape == (48, 64, 3) and isp.output_size == (64, 48) and isp.crop == (0, 0, 64, 48)
        middle = picture[8:-8, 8:-8].astype(int)
        assert abs(middle[..., 0].mean() - middle[..., 1].mean()) < 3
        results = isp.results
        assert results.gains.red < 0.7 and results.balance_has_data and 0 < results.brightness < 1023
        for layout, shape in ((vek.Format.i420, (48, 64)), (vek.Format.nv12, (48, 64)), (vek.Format.rgb565, (48, 64)),
                              (vek.Format.bgrx32, (48, 64, 4))):
            made = isp.process(frame, layout)
            assert (made[0] if isinstance(made, tuple) else made).shape == shape
        with pytest.raises(TypeError, match="frame is uint16"):  # words are for plain16 alone
            isp.process(scene())
        with pytest.raises(vek.Error, match="frame has 47 rows|frame"):
            isp.process(frame[:-1])
        isp.set_gains((2, 1, 2))
        isp.set_color(np.eye(3), (1, 1, 1))
        isp.set_curve(np.linspace(0, 1, 1024))
        isp.set_levels(64, 1000)
        with pytest.raises(vek.Error, match="black is -1"):
            isp.set_levels((-1, 0, 0, 0))
        with pytest.raises(vek.Error, match="white is 2000"):
            isp.set_levels(64, 2000)
    with pytest.raises(vek.Error, match="self is closed"):
        isp.process(frame)
    with pytest.raises(vek.Error, match="crop"):
        vek.Isp((64, 48), crop=(1, 0, 32, 32))
    fixed = {"black": 64, "white_balance": False, "gains": (1 / 1.6, 1, 1)}
    words = vek.Isp((64, 48), vek.Raw.plain16, jobs=3, band_rows=8, **{**fixed, "black": (64,) * 4, "white": 1023})
    again = vek.Isp((64, 48), **fixed)
    np.testing.assert_array_equal(words.process(scene()), again.process(frame))


def test_raw_and_control():
    frame = scene()
    again = vek.raw_to_10rggb(packed(frame), (64, 48), black=(64,) * 4)
    np.testing.assert_array_equal(again, np.round((frame.astype(int) - 64)))
    unit = np.diag([4096] * 3)
    np.testing.assert_array_equal(vek.color_matrix(again, unit), again)
    mixed = vek.color_matrix(again, [[5000, -904, 0], [-300, 4396, 0], [0, 96, 4000]])
    inner = vek.color_matrix(again[1:-1, 1:-1], [[5000, -904, 0], [-300, 4396, 0], [0, 96, 4000]], vek.Bayer.rggb,
                             border_valid=True)
    np.testing.assert_array_equal(inner, mixed[2:-2, 2:-2])
    linear = [i // 4 for i in range(1024)]
    pixels = vek.demosaic(again, linear)
    assert pixels.shape == (48, 64, 3)
    np.testing.assert_array_equal(pixels[1::2, ::2, 1], again[1::2, ::2] // 4)
    inner = vek.demosaic(again[1:-1, 1:-1], linear, bgr=True, border_valid=True)
    np.testing.assert_array_equal(inner[..., ::-1], pixels[2:-2, 2:-2])
    with pytest.raises(vek.Error, match="table"):
        vek.demosaic(again, linear[1:])
    assert vek.raw_region((64, 48), vek.Bayer.bggr) == (1, 1, 62, 46)
    controls = vek.AutoExposure(target=512).meter(again, 10, 100)
    assert controls[:2] != (10, 100) and controls.status in vek.Status
    with vek.AutoWhiteBalance(windows=[(0, 0, 64, 48)], weights=[1], hold_tol_r=1) as balance:
        gains = balance.measure(again, (256, 256, 256))
        assert gains.red < gains.blue
    with pytest.raises(vek.Error, match="weights"):
        vek.AutoWhiteBalance(windows=[(0, 0, 64, 48)], weights=[])
    params = vek.recommended_exposure((64, 48), vek.Metering.histogram, (0, 1), (320, 16))
    assert (params["step_size"], params["step_max"], params["scale_max"]) == (10, 320, 16)
    assert vek.AutoExposure(**params).meter(again, 10, 4).scale == 8  # too dark
    params = vek.recommended_balance((64, 48), vek.BalanceMethod.gray_world)
    assert len(params["windows"]) == len(params["weights"]) == 48
    gains = vek.AutoWhiteBalance(**params).measure(again, (1024, 1024, 1024))
    assert abs(gains.red * 1.6 / gains.blue - 1) < 0.05 and gains.status == vek.Status.ok
    with pytest.raises(vek.Error, match="target is 65536"):
        vek.AutoExposure(target=65536)
    with pytest.raises(vek.Error, match="frame_size is 8 x 48"):
        vek.recommended_balance((8, 48), vek.BalanceMethod.gray_world)
    with vek.RawPipeline((64, 48), dead_pixels=[(10, 12)]) as pipeline:
        y, cb, cr = pipeline.process(again)
        assert y.shape == (48, 64) and cb.shape == cr.shape == (24, 32)
        with pytest.raises(vek.Error, match="frame is read-only"):  # it is corrected there
            pipeline.process(np.frombuffer(again.tobytes(), np.uint16).reshape(48, 64))
        with pytest.raises(vek.Error, match="out"):
            pipeline.process(again, out=vek.empty((32, 48), vek.Format.i420))


def test_transform_and_moments():
    image = np.random.default_rng(1).integers(0, 256, (32, 64), np.uint8)
    with vek.RealFft((64, 32)) as fft:
        spectrum = fft.forward(image)
        exact = np.fft.rfft2(image)
        np.testing.assert_array_equal(spectrum, np.rint(np.stack([exact.real, exact.imag], -1)))
        np.testing.assert_array_equal(fft.inverse(spectrum, 11), image)
        np.testing.assert_array_equal(fft.inverse(fft.forward(image.astype(np.int32)), 11, wide=True), image)
        with pytest.raises(vek.Error, match="src"):
            fft.forward(image[:16])
    with pytest.raises(vek.Error, match="size is 63 x 32"):
        vek.RealFft((63, 32))
    moments = vek.Moments(image)
    assert moments.spatial()[0] == image.sum() and len(moments.hu()) == 7
    assert vek.divide(17, 5, 8) == (3, 2)


def test_meeting_calls():
    """Of two threads that use one object at a time, none gets a wrong result: one is refused."""
    fft, image = vek.RealFft((1024, 1024)), np.zeros((1024, 1024), np.uint8)
    refused = []

    def work():
        for _ in range(5):
            try:
                fft.forward(image)
            except vek.Error as error:
                refused.append(str(error))

    threads = [threading.Thread(target=work) for _ in range(3)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert all("self is in use by another thread" in text for text in refused)


def test_example(tmp_path):
    (tmp_path / "frame.raw").write_bytes(packed(scene()).tobytes())
    example = Path(__file__).parents[1] / "examples/develop.py"
    assert len([line for line in example.read_text().splitlines() if line]) <= 12
    made = subprocess.run([sys.executable, example, tmp_path / "frame.raw", "64", "48", "64"], check=True,
                          capture_output=True).stdout
    assert made.startswith(b"P6 64 48 255\n") and len(made) == 13 + 64 * 48 * 3
