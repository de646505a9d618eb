// Chains in Python.
#include "chain/code/dialect.h"

namespace chain {
namespace {

constexpr Text operations[] = {
    {"add", "=vek.add($s, $0, $1)"},
    {"sub", "=vek.sub($s, $0, $1)"},
    {"mul", "=vek.mul($s, $0, $1)"},
    {"mul-scale", "=vek.mul_scale($s, $0)"},
    {"sqr", "=vek.sqr($s, $0)"},
    {"and", "=vek.bit_and($s, $0)"},
    {"or", "=vek.bit_or($s, $0)"},
    {"xor", "=vek.bit_xor($s, $0)"},
    {"not", "=vek.bit_not($s)"},
    {"shift-left", "=vek.shift_left($s, $0)"},
    {"shift-right", "=vek.shift_right($s, $0)"},
    {"threshold", "=vek.replace_above(vek.replace_below($s, $v0, $z0), $m0, $w0)"},
    {"clamp-above", "=vek.clamp_above($s, $0)"},
    {"clamp-below", "=vek.clamp_below($s, $0)"},
    {"replace-above", "=vek.replace_above($s, $0, $1)"},
    {"replace-below", "=vek.replace_below($s, $0, $1)"},
    {"replace-outside", "=vek.replace_outside($s, $0, $1, $2, $3)"},
    {"copy", "=vek.copy($s)"},
    {"set", R"($d = np.empty_like($s)
vek.set($d, $0))"},
    {"gray gray", "=vek.copy($s)"},
    {"gray empty", "=vek.rgb_to_gray($s)"},
    {"gray", "=vek.color_to_gray($s, ($0))"},
    {"color gray", "=np.stack([$s] * 3, axis=2)"},
    {"color", "=vek.copy($s)"},
    {"channel", "=vek.color_to_gray($s, ($k0))"},
    {"order", "=vek.permute_channels($s, ($0))"},
    {"twist", "=vek.color_twist($s, ($0))"},
    {"gamma gray",
     "=vek.color_to_gray(vek.gamma_forward(np.stack([$s] * 3, axis=2)), (16384, 0, 0))"},
    {"gamma", "=vek.gamma_forward($s)"},
    {"linear-light gray",
     "=vek.color_to_gray(vek.gamma_inverse(np.stack([$s] * 3, axis=2)), (16384, 0, 0))"},
    {"linear-light", "=vek.gamma_inverse($s)"},
    {"to-ycbcr", "=vek.rgb_to_ycbcr($s)"},
    {"from-ycbcr", "=vek.ycbcr_to_rgb($s)"},
    {"to-yuv", "=vek.rgb_to_yuv($s)"},
    {"from-yuv", "=vek.yuv_to_rgb($s)"},
    {"to-xyz", "=vek.rgb_to_xyz($s)"},
    {"from-xyz", "=vek.xyz_to_rgb($s)"},
    {"to-luv", "=vek.rgb_to_luv($s)"},
    {"from-luv", "=vek.luv_to_rgb($s)"},
    {"to-ycc", "=vek.rgb_to_ycc($s)"},
    {"from-ycc", "=vek.ycc_to_rgb($s)"},
    {"to-hls", "=vek.rgb_to_hls($s)"},
    {"from-hls", "=vek.hls_to_rgb($s)"},
    {"to-hsv", "=vek.rgb_to_hsv($s)"},
    {"from-hsv", "=vek.hsv_to_rgb($s)"},
    {"subsample 444",
     "=vek.yuv_to_rgb(vek.rgb_to_yuv($s, vek.Format.i444), chroma=vek.Chroma.c444)"},
    {"subsample 422",
     "=vek.yuv_to_rgb(vek.rgb_to_yuv($s, vek.Format.i422), chroma=vek.Chroma.c422)"},
    {"subsample 420",
     "=vek.yuv_to_rgb(vek.rgb_to_yuv($s, vek.Format.i420), chroma=vek.Chroma.c420)"},
    {"subsample nv12",
     "=vek.yuv_to_rgb(vek.to_planes(vek.to_nv12(vek.rgb_to_yuv($s, vek.Format.i420))), "
     "chroma=vek.Chroma.c420)"},
    {"subsample yuy2",
     "=vek.yuv_to_rgb(vek.rgb_to_yuv($s, vek.Format.yuy2), out=np.empty_like($s))"},
    {"subsample ycbcr422",
     "=vek.ycbcr_to_rgb(vek.rgb_to_ycbcr($s, vek.Format.yuy2), out=np.empty_like($s))"},
    {"dither", "=per_channel($s, lambda src: vek.dither(src, $0, $1))"},
    {"dither-bits", "=per_channel($s, lambda src: dithered_to_bits(src, $0, $1))"},
    {"pixels16 none", "=expanded(vek.ycbcr_to_rgb(vek.rgb_to_ycbcr($s), vek.Format.rgb$0), $0)"},
    {"pixels16", "=expanded(vek.dither_rgb($s, $1, vek.Format.rgb$0), $0)"},
    {"box", "=vek.filter_box($p($s), ($mw, $mh))"},
    {"median", "=vek.filter_median($p($s), ($mw, $mh))"},
    {"median-color", "=vek.filter_median_color($p($s), vek.MedianMask.square$mw)"},
    {"filter", "=vek.filter($p($s), ($0), $1)"},
    {"row", "=vek.filter_row($p($s), ($0), $1)"},
    {"column", "=vek.filter_column($p($s), ($0), $1)"},
    {"erode 1", "=vek.erode($p($s))"},
    {"erode", R"($d = $s
for _ in range($0):
    $d = vek.erode($p($d)))"},
    {"dilate 1", "=vek.dilate($p($s))"},
    {"dilate", R"($d = $s
for _ in range($0):
    $d = vek.dilate($p($d)))"},
    {"crop empty", R"(width, height = $0
y, x = ($s.shape[0] - height) // 2, ($s.shape[1] - width) // 2
$d = vek.copy($s[y:y + height, x:x + width]))"},
    {"crop", R"((width, height), (x, y) = ($0), ($1)
$d = vek.copy($s[y:y + height, x:x + width]))"},
    {"pad", "=vek.pad($s, ($q0), $1, $2)"},
    {"mirror", "=vek.mirror($s, $0)"},
    {"rotate 90", R"(height, width = $s.shape[:2]
$d = vek.warp($s, (0, 1, 0, -1, 0, height - 1), (height, width), direction=vek.WarpDirection.inverse,
              interpolation=vek.Interpolation.nearest, border=vek.WarpBorder.replicate))"},
    {"rotate 180", R"(height, width = $s.shape[:2]
$d = vek.warp($s, (-1, 0, width - 1, 0, -1, height - 1), (width, height), direction=vek.WarpDirection.inverse,
              interpolation=vek.Interpolation.nearest, border=vek.WarpBorder.replicate))"},
    {"rotate 270", R"(height, width = $s.shape[:2]
$d = vek.warp($s, (0, -1, width - 1, 1, 0, 0), (height, width), direction=vek.WarpDirection.inverse,
              interpolation=vek.Interpolation.nearest, border=vek.WarpBorder.replicate))"},
    {"transpose", R"(height, width = $s.shape[:2]
$d = vek.warp($s, (0, 1, 0, 1, 0, 0), (height, width), direction=vek.WarpDirection.inverse,
              interpolation=vek.Interpolation.nearest, border=vek.WarpBorder.replicate))"},
    {"resize", R"(x, y = (a / b for a, b in zip($s.shape[1::-1], ($0)))
$d = vek.warp($s, (x, 0, (x - 1) / 2, 0, y, (y - 1) / 2), ($0), direction=vek.WarpDirection.inverse,
              interpolation=$1, border=vek.WarpBorder.replicate))"},
    {"affine", R"(a, b, c, d = $a0, $a1, $a2, $a3  # about the middle, x, y
y, x = ((n - 1) / 2 for n in $s.shape[:2])
$d = vek.warp($s, (a, b, x - a * x - b * y, c, d, y - c * x - d * y),
              interpolation=$3, border=$4, value=$5))"},
    {"perspective", R"(v, u = (1 / max(1, n - 1) for n in $s.shape[:2])
$d = vek.warp($s, ($a0 * u, $a1 * v, $a2, $a3 * u, $a4 * v, $a5, $a6 * u, $a7 * v, 1),
              direction=$4, interpolation=$5))"},
    {"spectrum", "=per_channel($s, spectrum)"},
    {"low-pass", "=per_channel($s, lambda src: band_pass(src, $0, True))"},
    {"high-pass", "=per_channel($s, lambda src: band_pass(src, $0, False))"},
    {"dct", "=per_channel($s, lambda src: block_cosines(src, 0))"},
    {"dct-keep", "=per_channel($s, lambda src: block_cosines(src, $0))"},
    {"norm", "print(vek.norm_$0($s))"},
    {"norm-diff", "print(vek.norm_diff_$1($s, $0))"},
    {"norm-rel", "print(np.divide(vek.norm_rel_$1($s, $0, -16), 65536))"},
    {"moments", R"(with vek.Moments($s) as moments:
    for c in range($n):
        print(moments.$0(c)))"},
};

constexpr Text words[] = {
    {"border", "vek.PadBorder.replicate|vek.PadBorder.mirror|vek.PadBorder.constant"},
    {"method", "vek.Dither.ordered|vek.Dither.diffusion|none"},
    {"interpolation", "vek.Interpolation.nearest|vek.Interpolation.linear|vek.Interpolation.cubic"},
    {"outside", "vek.WarpBorder.constant|vek.WarpBorder.replicate"},
    {"axis", "vek.MirrorAxis.horizontal|vek.MirrorAxis.vertical|vek.MirrorAxis.both"},
    {"direction", "vek.WarpDirection.inverse|vek.WarpDirection.forward"},
    {"norm", "inf|l1|l2"},
    {"format", "565|555|444"},
};

constexpr Text helpers[] = {
    {"read", R"(def read(path):
    with open(path, "rb") as file:
        kind, size, _, pixels = file.read().split(b"\n", 3)
    width, height = map(int, size.split())
    return np.frombuffer(pixels, np.uint8).reshape((height, width, 3) if kind == b"P6" else (height, width))

)"},
    {"write", R"(def write(path, picture):
    height, width = picture.shape[:2]
    with open(path, "wb") as file:
        file.write(b"P%d\n%d %d\n255\n" % (5 if picture.ndim == 2 else 6, width, height))
        file.write(np.ascontiguousarray(picture).tobytes())

)"},
    {"per_channel", R"(def per_channel(picture, f):
    if picture.ndim == 2:
        return f(picture)
    return np.stack([f(np.ascontiguousarray(picture[..., c])) for c in range(3)], axis=2)

)"},
    {"expanded", R"(def expanded(pixels, fields):
    """16-bit pixels with fields of so many bits, such as 565, as bytes."""
    red, green, blue = (int(digit) for digit in str(fields))
    channels = []
    for at, bits in ((green + blue, red), (blue, green), (0, blue)):
        most = (1 << bits) - 1
        channels.append(((pixels.astype(int) >> at & most) * 510 + most) // (2 * most))
    return np.stack(channels, axis=2).astype(np.uint8)

)"},
    {"dithered_to_bits", R"(def dithered_to_bits(src, bits, method):
    packed = vek.dither_packed(src, bits, method).astype(int)
    most = (1 << bits) - 1
    samples = packed[..., None] >> np.arange(8 - bits, -1, -bits) & most
    return (samples.reshape(src.shape[0], -1)[:, :src.shape[1]] * 255 // most).astype(np.uint8)

)"},
    {"logarithm", R"(def logarithm(values):
    """log2(value + 1) in 1/256, rounded down."""
    n = np.array(values, np.uint64, ndmin=1) + np.uint64(1)
    result = sum((n >> np.uint64(k) > 0).astype(np.uint64) for k in range(1, 63))
    mantissa = n << (np.uint64(63) - result) >> np.uint64(32)
    for _ in range(8):
        mantissa = mantissa * mantissa >> np.uint64(31)
        is_set = mantissa >> np.uint64(32)
        mantissa >>= is_set
        result = result * np.uint64(2) + is_set
    return result.astype(int)

)"},
    {"spectrum", R"(def spectrum(src):
    """The logarithm of the spectrum of the middle, frequency 0 in its middle."""
    height, width = (min(1024, 1 << n.bit_length() - 1) for n in src.shape)
    top, left = (src.shape[0] - height) // 2, (src.shape[1] - width) // 2
    with vek.RealFft((width, height)) as fft:
        numbers = fft.forward(src[top:top + height, left:left + width]).astype(np.int64)
    logs = logarithm((numbers ** 2).sum(axis=2))
    ky, kx = np.arange(height)[:, None] - height // 2, np.arange(width) - width // 2
    rows = np.where(kx < 0, -ky, ky) & (height - 1)
    return np.minimum(255, 255 * logs[rows, abs(kx)] // max(1, logs.max())).astype(np.uint8)

)"},
    {"band_pass", R"(def band_pass(src, periods, is_low):
    rows, columns = src.shape
    height, width = (1 << (n - 1).bit_length() for n in src.shape)
    whole = vek.pad(src, (0, 0, width - columns, height - rows), vek.PadBorder.mirror)
    x, y = np.arange(width // 2 + 1) / width, np.arange(height)
    y = np.minimum(y, height - y)[:, None] / height
    limit = periods / max(rows, columns)
    with vek.RealFft((width, height)) as fft:
        numbers = fft.forward(whole)
        numbers[(x * x + y * y <= limit * limit) != is_low] = 0
        if not is_low:
            numbers[0, 0, 0] = 128 * width * height
        return vek.copy(fft.inverse(numbers, width.bit_length() + height.bit_length() - 2)[:rows, :columns])

)"},
    {"block_cosines", R"(def block_cosines(src, count):
    """Blocks of 8 x 8 with their first coefficients, in the order of JPEG; with a count of 0 the logarithms of
    all coefficients."""
    rows, columns = src.shape
    whole = vek.pad(src, (0, 0, -columns % 8, -rows % 8), vek.PadBorder.replicate)
    blocks = vek.dct_forward(whole.astype(np.int16) - np.int16(128))
    if count == 0:
        values = 255 * logarithm(abs(blocks.astype(int))) // logarithm(1024)
    else:
        order = sorted(np.ndindex(8, 8), key=lambda at: (sum(at), at[1 - sum(at) % 2]))
        kept = np.zeros((8, 8), np.int16)
        kept[tuple(zip(*order[:count]))] = 1
        values = vek.dct_inverse(blocks * np.tile(kept, (whole.shape[0] // 8, whole.shape[1] // 8))).astype(int) + 128
    return np.clip(values, 0, 255).astype(np.uint8)[:rows, :columns].copy()

)"},
};

}  // namespace

const Dialect pythonDialect = {"#",
                               R"(# python3 program.py IN OUT: PGM and PPM files
import sys

import numpy as np
import vek


)",
                               R"(p0 = read(sys.argv[1])

@body
write(sys.argv[2], $d)
)",
                               "$d = ",
                               "",
                               "",
                               operations,
                               helpers,
                               words};

}  // namespace chain
