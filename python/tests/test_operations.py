"""Operations beside NumPy, on parts of larger images."""

import warnings

import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

import vek

settings.register_profile("vek", deadline=None, max_examples=25, derandomize=True)
settings.load_profile("vek")


def noise(shape, seed, dtype=np.uint8):
    return np.random.default_rng(seed).integers(0, np.iinfo(dtype).max, shape, dtype, endpoint=True)


@st.composite
def images(draw, count=1, channels=(1, 3), sides=st.integers(1, 40)):
    """Parts of larger images, which have the same size."""
    height, width, c = draw(sides), draw(sides), draw(st.sampled_from(channels))
    parts = []
    for i in range(count):
        left, top, more = draw(st.integers(0, 3)), draw(st.integers(0, 3)), draw(st.integers(0, 5))
        shape = (height + top, width + left + more) + ((c,) if c > 1 else ())
        parts.append(noise(shape, draw(st.integers(0, 99)) + i)[top:, left:left + width])
    return parts


def scaled(exact, scale):
    exact = np.maximum(exact, 0)
    exact = (exact + (1 << (scale - 1))) >> scale if scale > 0 else exact << -scale
    return np.minimum(exact, 255)


BINARY = {
    "add": (lambda a, b, s: scaled(a + b, s)), "sub": (lambda a, b, s: scaled(a - b, s)),
    "mul": (lambda a, b, s: scaled(a * b, s)), "bit_and": (lambda a, b, s: a & b),
    "bit_or": (lambda a, b, s: a | b), "bit_xor": (lambda a, b, s: a ^ b),
}


@given(images(2), st.sampled_from(sorted(BINARY)), st.integers(-8, 16), st.integers(0, 255))
def test_two_images_and_a_value(pair, name, scale, value):
    a, b = pair
    function, more = getattr(vek, name), ({"scale": scale} if name in ("add", "sub", "mul") else {})
    expected = BINARY[name](a.astype(int), b.astype(int), scale)
    np.testing.assert_array_equal(function(a, b, **more), expected)
    values = value if a.ndim == 2 else (value, 255 - value, 7)
    expected = BINARY[name](a.astype(int), np.asarray(values), scale)
    np.testing.assert_array_equal(function(a, values, **more), expected)
    around = noise((50, 60) + a.shape[2:], 1)
    kept, part = around.copy(), around[3:3 + a.shape[0], 5:5 + a.shape[1]]
    assert function(a, values, out=part, **more) is part
    kept[3:3 + a.shape[0], 5:5 + a.shape[1]] = expected
    np.testing.assert_array_equal(around, kept)
    assert function(b, values, out=b, **more) is b


@given(images(), st.integers(0, 255), st.integers(0, 255), st.integers(0, 12))
def test_one_image(parts, low, high, bits):
    a, = parts
    wide, low, high = a.astype(int), min(low, high), max(low, high)
    for result, expected in (
            (vek.bit_not(a), 255 - wide), (vek.copy(a), wide), (vek.sqr(a, bits), scaled(wide * wide, bits)),
            (vek.shift_right(a, bits), wide >> bits), (vek.shift_left(a, bits), (wide << bits) & 255),
            (vek.clamp_above(a, high), np.minimum(wide, high)), (vek.clamp_below(a, low), np.maximum(wide, low)),
            (vek.replace_above(a, high, 9), np.where(wide > high, 9, wide)),
            (vek.replace_outside(a, low, 1, high, 2), np.where(wide < low, 1, np.where(wide > high, 2, wide))),
            (vek.mirror(a, vek.MirrorAxis.horizontal), wide[::-1]),
            (vek.mirror(a, vek.MirrorAxis.both), wide[::-1, ::-1]),
            (vek.set(np.empty_like(a), 77), np.full_like(wide, 77))):
        np.testing.assert_array_equal(result, expected)
    sums = wide.sum((0, 1))
    assert vek.norm_l1(a) == (sums if a.ndim == 2 else tuple(sums))
    assert vek.norm_diff_inf(a, np.zeros_like(a)) == vek.norm_inf(a)


@given(images(sides=st.integers(7, 40)), st.integers(2, 5), st.integers(2, 5), st.integers(0, 9))
def test_neighbourhoods(parts, width, height, seed):
    a, = parts
    windows = np.lib.stride_tricks.sliding_window_view(a, (height, width), (0, 1)).astype(int)
    kernel = np.random.default_rng(seed).integers(-4, 5, (height, width))
    # A convolution: the kernel's first entry meets the last pixel.
    sums = (windows * kernel[::-1, ::-1]).sum((-1, -2))
    np.testing.assert_array_equal(vek.filter(a, kernel, 1), np.clip(sums, 0, 255))
    np.testing.assert_array_equal(vek.filter(a, kernel.tolist(), 1, anchor=(0, height - 1)), np.clip(sums, 0, 255))
    row = (np.lib.stride_tricks.sliding_window_view(a, width, 1).astype(int) * kernel[0][::-1]).sum(-1)
    np.testing.assert_array_equal(vek.filter_row(a, kernel[0], 1), np.clip(row, 0, 255))
    three = np.lib.stride_tricks.sliding_window_view(a, (3, 3), (0, 1))
    np.testing.assert_array_equal(vek.erode(a), three.min((-1, -2)))
    np.testing.assert_array_equal(vek.filter_median(a, (3, 3)), np.median(three, (-1, -2)))
    margins = (seed % 4, 1, 2, 3)
    around = ((1, 3), (margins[0], 2)) + ((0, 0),) * (a.ndim - 2)
    np.testing.assert_array_equal(vek.pad(a, margins), np.pad(a, around, "edge"))
    np.testing.assert_array_equal(vek.pad(a, margins, vek.PadBorder.constant, 5), np.pad(a, around, constant_values=5))


@given(images(channels=(3,)))
def test_colour(parts):
    rgb, = parts
    r, g, b = (rgb[..., i].astype(int) for i in range(3))
    ycbcr = vek.rgb_to_ycbcr(rgb)
    np.testing.assert_array_equal(ycbcr[..., 0], (263 * r + 516 * g + 100 * b + 16896) >> 10)
    pixels = vek.ycbcr_to_rgb(ycbcr, vek.Format.rgb565)
    assert pixels.dtype == np.uint16 and pixels.shape == rgb.shape[:2]
    y, u, v = vek.rgb_to_yuv(rgb, vek.Format.i420)
    assert u.shape == v.shape == ((rgb.shape[0] + 1) // 2, (rgb.shape[1] + 1) // 2)
    both = vek.to_nv12((y, u, v))
    np.testing.assert_array_equal(both[1][..., 1], v)
    for plane, again in zip((y, u, v), vek.to_planes(both)):
        np.testing.assert_array_equal(plane, again)
    np.testing.assert_array_equal(vek.permute_channels(rgb, (2, 1, 0, 3), 9)[..., :3], rgb[..., ::-1])
    assert vek.permute_channels(rgb, (2, 1, 0), out=rgb) is rgb
    pairs = vek.rgb_to_yuv(rgb, vek.Format.yuy2)
    assert pairs.shape == (rgb.shape[0], rgb.shape[1] + rgb.shape[1] % 2, 2)
    odd = np.empty(rgb.shape, np.uint8)  # tells the width
    np.testing.assert_array_equal(vek.yuv_to_rgb(pairs, out=odd), vek.yuv_to_rgb(pairs)[:, :rgb.shape[1]])


def test_planes_of_every_kind():
    rgb = noise((1, 6, 3), 3)
    for chroma, layout in ((vek.Chroma.c420, vek.Format.i420), (vek.Chroma.c422, vek.Format.i422)):
        planes = vek.rgb_to_yuv(rgb, layout)
        with pytest.raises(vek.Error, match="chroma"):  # one row may be either
            vek.yuv_to_rgb(planes)
        assert vek.yuv_to_rgb(planes, chroma=chroma).shape == rgb.shape
    full = vek.rgb_to_yuv(noise((4, 6, 3), 3), vek.Format.i444)
    assert vek.yuv_to_rgb(full).shape == (4, 6, 3)
    with pytest.raises(vek.Error, match="src has planes with steps"):
        vek.yuv_to_rgb((np.empty((4, 8), np.uint8)[:, :6], *full[1:]))
    with pytest.raises(vek.Error, match="src has rows"):
        vek.rgb_to_yuv_unpadded(noise((4, 8, 3), 1)[:, :6])


def test_reservations_are_warnings():
    black = np.zeros((4, 4), np.uint8)
    with pytest.warns(vek.ResultWarning, match="norm_rel_l1: .*zero"):
        assert vek.norm_rel_l1(black + 1, black) > 0
    with warnings.catch_warnings():
        warnings.simplefilter("error")
        assert vek.norm_rel_l1(black, black + 1) == 1
        with pytest.raises(vek.ResultWarning):
            vek.norm_rel_l1(black, black)
    with pytest.warns(vek.ResultWarning):
        vek.Moments(black).hu()


def test_as_opencv():
    cv2 = pytest.importorskip("cv2")
    image, other = noise((40, 61, 3), 1), noise((40, 61, 3), 2)
    plane = np.ascontiguousarray(image[..., 0])
    inner = (slice(1, -1), slice(1, -1))
    for made, expected in (
            (vek.add(image, other), cv2.add(image, other)), (vek.sub(image, other), cv2.subtract(image, other)),
            (vek.bit_xor(image, other), cv2.bitwise_xor(image, other)),
            (vek.clamp_above(image, 99), cv2.threshold(image, 99, 0, cv2.THRESH_TRUNC)[1]),
            (vek.mirror(image, vek.MirrorAxis.both), cv2.flip(image, -1)),
            (vek.pad(image, (3, 2, 1, 5), vek.PadBorder.mirror),
             cv2.copyMakeBorder(image, 2, 5, 3, 1, cv2.BORDER_REFLECT_101)),
            (vek.erode(plane), cv2.erode(plane, np.ones((3, 3)))[inner]),
            (vek.filter_median(plane, (3, 3)), cv2.medianBlur(plane, 3)[inner])):
        np.testing.assert_array_equal(made, expected)
    assert vek.norm_l1(plane) == cv2.norm(plane, cv2.NORM_L1)
    moments = cv2.moments(plane)
    assert vek.Moments(plane).spatial()[:3] == (moments["m00"], moments["m10"], moments["m01"])


def test_dither_and_cosine():
    ramp = np.tile(np.arange(256, dtype=np.uint8), (16, 1))
    packed = vek.dither_packed(ramp, 1, vek.Dither.ordered)
    black = vek.dither(ramp, 2, vek.Dither.ordered)
    np.testing.assert_array_equal(np.unpackbits(packed, axis=1) * 255, black)
    grey = np.repeat(ramp[..., None], 3, 2)
    rgb = vek.dither_rgb(grey, vek.Dither.ordered, vek.Format.rgb565)
    np.testing.assert_array_equal(rgb, vek.dither_rgb(grey, vek.Dither.ordered, vek.Format.bgr565))
    block = np.full((8, 8), 100, np.int16)
    assert vek.dct_forward(block)[0, 0] == 800
    np.testing.assert_array_equal(vek.dct_forward(block.ravel()), vek.dct_forward(block).ravel())
    np.testing.assert_array_equal(vek.dct_inverse(vek.dct_forward(block)), block)


def test_preview_and_warps():
    planes = vek.empty((64, 48), vek.Format.i420)
    for plane, value in zip(planes, (235, 128, 128)):
        vek.set(plane, value)
    small = vek.resize(planes, (32, 16), rotation=vek.Rotation.cw90)
    assert small[0].shape == (32, 16) and (small[0] == 235).all()
    assert (vek.resize(planes, (20, 10), format=vek.Format.bgr24) >= 254).all()
    with pytest.raises(vek.Error, match="resize: src.y begins at|src.* has a step"):
        vek.resize([np.empty((48, 61), np.uint8)[:, 1:], *(np.empty((24, 30), np.uint8),) * 2], (32, 16))
    pairs = np.zeros((16, 32, 2), np.uint8) + np.array([128, 235], np.uint8)
    assert vek.to_420(pairs)[1].shape == (8, 16)
    assert (vek.reduce(pairs, 4) == 0xFFFF).all()
    image = noise((20, 30), 5)
    moved = vek.warp(image, (1, 0, 2, 0, 1, 3), interpolation=vek.Interpolation.nearest, value=9)
    np.testing.assert_array_equal(moved[3:, 2:], image[:-3, :-2])
    assert (moved[:3] == 9).all()
    same = vek.warp(image, np.eye(3), (30, 20), border=vek.WarpBorder.replicate)
    np.testing.assert_array_equal(same, image)
