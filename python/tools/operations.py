"""The functions on images of the Python interface, each with the C functions behind it.

An operation has a name, parameters, and variants. A variant is a C function and the layouts of the images
that it is for, `a b > out`; the first variant that the arguments fit is called. How the arguments of the C
function are made follows from the names of its parameters: `NAMES` says which belong to which parameter of
the operation.

Layouts of images:

    C1 C3 C4    8-bit samples, one, three or four a pixel: (rows, columns) or (rows, columns, channels)
    C2          interleaved 4:2:2: (rows, columns, 2), an even number of columns
    U16 S16     16-bit samples: (rows, columns)
    P420 P422 P444   three planes (y, cb, cr)
    NV12        two planes (y, cbcr), the second one (rows, columns, 2)
    BLOCK       64 signed 16-bit numbers
    BITS        8 / bits samples in a byte
    value       no image, but a number, or one for each channel
    numbers     no image, but the number, or the three numbers, that are returned
"""

import re

IN_PLACE = "in place"  # the first image, or one of them, may be `out`

# Parameter of a C function -> parameter of the operation.
NAMES = {
    "scaleFactor": "scale",
    "maskSize": "mask",
    "pKernel": "kernel",
    "kernelSize": "kernel",
    "flip": "axis",
    "coeffs": "weights",
    "thresholdLT": "low",
    "valueLT": "low_value",
    "thresholdGT": "high",
    "valueGT": "high_value",
}


class Operation:
    def __init__(self, name, cpp, parameters, variants, flags=(), shape="same", names=None):
        self.name, self.cpp, self.shape = name, cpp, shape
        self.in_place = IN_PLACE in flags
        self.names = {**NAMES, **(names or {})}
        self.parameters = [_parameter(p) for p in re.split(r", (?=\w+: )", parameters)]
        self.variants = []
        for variant in variants:
            for channels in ("C1", "C3") if "{c}" in variant else ("",):
                function, layouts = variant.replace("{c}", channels).split(": ")
                layouts, _, out_format = layouts.partition(" @")
                sources, _, out = layouts.partition("> ")
                self.variants.append((function, sources.split(), out.strip(), out_format))


def _parameter(text):
    """`scale: int = 0` -> (name, kind, default or None)"""
    name, _, rest = text.partition(": ")
    kind, _, default = rest.partition(" = ")
    return name, kind, default or None


def _binary(name, cpp, c, scaled="Sfs", constant=None, names=None):
    scale = ", scale: int = 0" if scaled else ""
    return Operation(
        name, cpp, "a: image, b: image|value" + scale,
        [f"veki{c}_8u_{{c}}R{scaled}: {{c}} {{c}} > {{c}}",
         f"veki{constant or c + 'C'}_8u_{{c}}R{scaled}: {{c}} value > {{c}}"],
        [IN_PLACE], names={"value": "b", **(names or {})})


def _unary(name, cpp, c, parameters="", flags=(IN_PLACE,), **more):
    return Operation(name, cpp, "src: image" + parameters, [f"veki{c}: {{c}} > {{c}}"], flags, **more)


def _convert(name, cpp, c):
    return Operation(name, cpp, "src: image", [f"veki{c}_8u_C3R: C3 > C3"])


_FIELDS = ("RGB565", "RGB555", "RGB444", "BGR565", "BGR555", "BGR444")


def _fields(pattern, layouts):
    return [f"{pattern.format(f)}: {layouts} > U16 @{f.lower()}" for f in _FIELDS]


def _norm(name, cpp, c):
    sources = "a: image, b: image" if "_" in name.replace("norm_", "", 1) else "src: image"
    count = sources.count("image")
    return Operation(name, cpp, sources + ", scale: int = 0",
                     [f"vekiNorm{c}_8u_{{c}}RSfs: {' '.join(['{c}'] * count)} > numbers"])


OPERATIONS = [
    # Arithmetic, logic, thresholds.
    _binary("add", "add", "Add"),
    # The C function on two images subtracts its first one from the second.
    _binary("sub", "sub", "Sub", names={"pSrcA": "b", "pSrcB": "a"}),
    _binary("mul", "mul", "Mul"),
    _binary("mul_scale", "mulScale", "MulScale", "", constant="MulCScale"),
    _unary("sqr", "sqr", "Sqr_8u_{c}RSfs", ", scale: int = 0"),
    _binary("bit_and", "bitAnd", "And", ""),
    _binary("bit_or", "bitOr", "Or", ""),
    _binary("bit_xor", "bitXor", "Xor", ""),
    _unary("bit_not", "bitNot", "Not_8u_{c}R"),
    _unary("shift_right", "shiftRight", "RShiftC_8u_{c}R", ", bits: shifts", names={"value": "bits"}),
    _unary("shift_left", "shiftLeft", "LShiftC_8u_{c}R", ", bits: shifts", names={"value": "bits"}),
    _unary("clamp_above", "clampAbove", "Threshold_GT_8u_{c}R", ", threshold: value"),
    _unary("clamp_below", "clampBelow", "Threshold_LT_8u_{c}R", ", threshold: value"),
    _unary("replace_above", "replaceAbove", "Threshold_GTVal_8u_{c}R", ", threshold: value, value: value"),
    _unary("replace_below", "replaceBelow", "Threshold_LTVal_8u_{c}R", ", threshold: value, value: value"),
    _unary("replace_outside", "replaceOutside", "Threshold_LTValGTVal_8u_{c}R",
           ", low: value, low_value: value, high: value, high_value: value"),
    _unary("copy", "copy", "Copy_8u_{c}R"),
    Operation("set", "set", "dst: destination, value: value", ["vekiSet_8u_{c}R: > {c}"]),
    # Colour.
    Operation("ycbcr_to_rgb", "yCbCrToRgb", "src: image, format: format = rgb24, chroma: chroma = None",
              ["vekiYCbCrToRGB_8u_C3R: C3 > C3 @rgb24", "vekiYCbCr422ToRGB_8u_C2C3R: C2 > C3 @rgb24"]
              + _fields("vekiYCbCr420To{}_8u16u_P3C3R", "P420") + _fields("vekiYCbCrTo{}_8u16u_P3C3R", "P444")
              + _fields("vekiYCbCr422To{}_8u16u_C2C3R", "C2") + _fields("vekiYCbCrTo{}_8u16u_C3R", "C3")),
    Operation("rgb_to_ycbcr", "rgbToYCbCr", "src: image, format: format = ycbcr24",
              ["vekiRGBToYCbCr_8u_C3R: C3 > C3 @ycbcr24", "vekiRGBToYCbCr422_8u_C3C2R: C3 > C2 @yuy2"]),
    Operation("yuv_to_rgb", "yuvToRgb", "src: image, format: format = rgb24, chroma: chroma = None",
              ["vekiYUVToRGB_8u_C3R: C3 > C3 @rgb24", "vekiYUV422ToRGB_8u_C2C3R: C2 > C3 @rgb24",
               "vekiYUV420ToRGB_8u_P3C3R: P420 > C3 @rgb24", "vekiYUV422ToRGB_8u_P3C3R: P422 > C3 @rgb24",
               "vekiYUVToRGB_8u_P3C3R: P444 > C3 @rgb24"] + _fields("vekiYUV420To{}_8u16u_P3C3R", "P420")),
    Operation("rgb_to_yuv", "rgbToYuv", "src: image, format: format = yuv24",
              ["vekiRGBToYUV_8u_C3R: C3 > C3 @yuv24", "vekiRGBToYUV422_8u_C3C2R: C3 > C2 @yuy2",
               "vekiRGBToYUV420_8u_C3P3R: C3 > P420 @i420", "vekiRGBToYUV422_8u_C3P3R: C3 > P422 @i422",
               "vekiRGBToYUV_8u_C3P3R: C3 > P444 @i444"]),
    Operation("rgb_to_yuv_unpadded", "rgbToYuvUnpadded", "src: image, format: format = i420",
              ["vekiRGBToYUV420_8u_C3P3: C3 > P420 @i420", "vekiRGBToYUV422_8u_C3P3: C3 > P422 @i422"]),
    Operation("yuv_to_rgb_unpadded", "yuvToRgbUnpadded", "src: image, chroma: chroma = None",
              ["vekiYUV420ToRGB_8u_P3C3: P420 > C3", "vekiYUV422ToRGB_8u_P3C3: P422 > C3"]),
    _convert("rgb_to_xyz", "rgbToXyz", "RGBToXYZ"),
    _convert("xyz_to_rgb", "xyzToRgb", "XYZToRGB"),
    _convert("rgb_to_ycc", "rgbToYcc", "RGBToYCC"),
    _convert("ycc_to_rgb", "yccToRgb", "YCCToRGB"),
    _convert("rgb_to_luv", "rgbToLuv", "RGBToLUV"),
    _convert("luv_to_rgb", "luvToRgb", "LUVToRGB"),
    _convert("rgb_to_hls", "rgbToHls", "RGBToHLS"),
    _convert("hls_to_rgb", "hlsToRgb", "HLSToRGB"),
    _convert("rgb_to_hsv", "rgbToHsv", "RGBToHSV"),
    _convert("hsv_to_rgb", "hsvToRgb", "HSVToRGB"),
    Operation("rgb_to_gray", "rgbToGray", "src: image", ["vekiRGBToGray_8u_C3C1R: C3 > C1"]),
    Operation("color_to_gray", "colorToGray", "src: image, weights: integers3",
              ["vekiColorToGrayQ14_8u_C3C1R: C3 > C1"]),
    Operation("color_twist", "colorTwist", "src: image, twist: integers12", ["vekiColorTwistQ14_8u_C3R: C3 > C3"]),
    Operation("permute_channels", "permuteChannels", "src: image, order: order, value: value = 0",
              ["vekiPermuteChannels_8u_C3R: C3 > C3", "vekiPermuteChannels_8u_C4R: C4 > C4",
               "vekiPermuteChannels_8u_C4C3R: C4 > C3", "vekiPermuteChannels_8u_C3C4R: C3 > C4"], [IN_PLACE]),
    Operation("to_nv12", "toNv12", "src: image", ["vekiYCbCr420ToNV12_8u_P3P2R: P420 > NV12"]),
    Operation("to_planes", "toPlanes", "src: image", ["vekiNV12ToYCbCr420_8u_P2P3R: NV12 > P420"]),
    # Filters. Their results are smaller by the neighbourhood.
    _unary("filter_box", "filterBox", "FilterBox_8u_{c}R", ", mask: size, anchor: anchor = None", (), shape="mask"),
    _unary("filter_median", "filterMedian", "FilterMedian_8u_{c}R", ", mask: size, anchor: anchor = None", (),
           shape="mask"),
    _unary("filter", "filter", "Filter_8u_{c}R", ", kernel: kernel, divisor: int, anchor: anchor = None", (),
           shape="kernel"),
    _unary("filter_row", "filterRow", "FilterRow_8u_{c}R", ", taps: taps, divisor: int, anchor: tap = -1", (),
           shape="row", names={"pKernel": "taps", "kernelSize": "taps"}),
    _unary("filter_column", "filterColumn", "FilterColumn_8u_{c}R", ", taps: taps, divisor: int, anchor: tap = -1", (),
           shape="column", names={"pKernel": "taps", "kernelSize": "taps"}),
    _unary("erode", "erode", "Erode3x3_8u_{c}R", "", (), shape="three"),
    _unary("dilate", "dilate", "Dilate3x3_8u_{c}R", "", (), shape="three"),
    Operation("filter_median_color", "filterMedianColor", "src: image, mask: MedianMask",
              ["vekiFilterMedianColor_8u_C3R: C3 > C3"], shape="square"),
    _unary("mirror", "mirror", "Mirror_8u_{c}R", ", axis: MirrorAxis", ()),
    Operation("gamma_forward", "gammaForward", "src: image", ["vekiGammaFwd_8u_C3R: C3 > C3"], [IN_PLACE]),
    Operation("gamma_inverse", "gammaInverse", "src: image", ["vekiGammaInv_8u_C3R: C3 > C3"], [IN_PLACE]),
    # Dithering.
    Operation("dither", "dither", "src: image, levels: int, method: Dither, origin: point = (0, 0)",
              ["vekiDither_8u_C1R: C1 > C1"], [IN_PLACE]),
    Operation("dither_packed", "dither", "src: image, bits: int, method: Dither, origin: point = (0, 0)",
              ["vekiDitherPacked_8u_C1R: C1 > BITS"]),
    Operation("dither_rgb", "dither", "src: image, method: Dither, format: format = rgb565, origin: point = (0, 0)",
              [f"vekiDither{f.replace('BGR', 'RGB')}_8u16u_C3R: C3 > U16 @{f.lower()}" for f in _FIELDS]),
    # Norms.
    _norm("norm_inf", "normInf", "_Inf"),
    _norm("norm_l1", "normL1", "_L1"),
    _norm("norm_l2", "normL2", "_L2"),
    _norm("norm_diff_inf", "normDiffInf", "Diff_Inf"),
    _norm("norm_diff_l1", "normDiffL1", "Diff_L1"),
    _norm("norm_diff_l2", "normDiffL2", "Diff_L2"),
    _norm("norm_rel_inf", "normRelInf", "Rel_Inf"),
    _norm("norm_rel_l1", "normRelL1", "Rel_L1"),
    _norm("norm_rel_l2", "normRelL2", "Rel_L2"),
    # Cosine transforms.
    Operation("dct_forward", "dctForward", "src: image",
              ["vekiBlockDCTFwd_16s_C1R: S16 > S16", "vekiBlockDCTFwd_16s_C1: BLOCK > BLOCK"], [IN_PLACE]),
    Operation("dct_inverse", "dctInverse", "src: image",
              ["vekiBlockDCTInv_16s_C1R: S16 > S16", "vekiBlockDCTInv_16s_C1: BLOCK > BLOCK"], [IN_PLACE]),
]

# Pixels of pictures.
FORMATS = [
    ("gray8", "one byte"), ("rgb24", "R, G, B"), ("bgr24", "B, G, R"), ("rgbx32", "R, G, B, X"),
    ("bgrx32", "B, G, R, X"),
    ("rgb565", "red in bits 15..11, green 10..5, blue 4..0"), ("rgb555", "red in bits 14..10, green 9..5, blue 4..0"),
    ("rgb444", "red in bits 11..8, green 7..4, blue 3..0"), ("bgr565", "rgb565 with red and blue exchanged"),
    ("bgr555", "rgb555 with red and blue exchanged"), ("bgr444", "rgb444 with red and blue exchanged"),
    ("ycbcr24", "Y, Cb, Cr"), ("yuv24", "Y, U, V"), ("yuy2", "interleaved 4:2:2: Y, Cb, Y, Cr"),
    ("uyvy", "interleaved 4:2:2: Cb, Y, Cr, Y"), ("i420", "planes Y, Cb, Cr: 4:2:0"),
    ("i422", "planes Y, Cb, Cr: 4:2:2"),
    ("i444", "planes Y, Cb, Cr: 4:4:4"), ("nv12", "planes Y and CbCr: 4:2:0"),
    ("raw10", "10-bit samples in 16-bit words"),
]

# C functions that other parts of the module call, and which. tests/test_complete.py reads it.
ELSEWHERE = {
    "vekStatusString": "Error.text", "vekVersionString": "version", "vekLevelName": "levels", "vekLevel": "level",
    "vekLevelLimit": "level_limit", "_vekDiv_8u": "divide", "_vekDiv_16u": "divide", "_vekDiv_32u": "divide",
    "vekiGetLibVersion": "image_version", "_vekGetLibVersion_VekCam": "camera_version",
    "vekiRawTo10RGGB_8u16u_C1R": "raw_to_10rggb", "vekiRawRegion": "raw_region",
    "vekiInitAlloc_AE_10RGGB_8u_C1R": "AutoExposure", "vekiFree_AE_10RGGB_8u_C1R": "AutoExposure",
    "vekiAE_10RGGB_8u_C1R": "AutoExposure", "vekiInitAlloc_AWB_10RGGB_8u_C1R": "AutoWhiteBalance",
    "vekiFree_AWB_10RGGB_8u_C1R": "AutoWhiteBalance", "vekiAWB_10RGGB_8u_C1R": "AutoWhiteBalance",
    "vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R": "RawPipeline", "vekiFree_10RGGBtoYCbCr_RotRsz_P3R": "RawPipeline",
    "veki10RGGBtoYCbCr_RotRsz_8u_P3R": "RawPipeline", "vekiYCbCr420RszRot_8u_P3R": "resize",
    "vekiYCbCr422RszRot_8u_P3R": "resize", "vekiYCbCr420RszCscRotRGB_8u_P3C3R": "resize",
    # Arrays are resized whole.
    "vekiYCbCr420RszRotRows_8u_P3R": "resize", "vekiYCbCr420RszCscRotRGBRows_8u_P3C3R": "resize",
    "vekiYCbCr422RszCscRotRGB_8u_P3C3R": "resize", "vekiYCbCr422ToYCbCr420Rotate_8u_C2P3R": "to_420",
    "vekiYCbCr422ToYCbCr420Rotate_8u_P3R": "to_420", "vekiResizeCscRotate_8u_C2R": "reduce",
    "vekiDemosaic_10RGGB_16u8u_C1C3R": "demosaic",
    "vekiColorMatrix_10Bayer_16u_C1R": "color_matrix", "vekiPad_8u_C1R": "pad",
    "vekiPad_8u_C3R": "pad", "vekiInitAlloc_Moments_8u": "Moments",
    "vekiFree_Moments_8u": "Moments", "vekiMoments_8u_C1R": "Moments", "vekiMoments_8u_C3R": "Moments",
    "vekiSpatialMoments_64f": "Moments", "vekiCentralMoments_64f": "Moments", "vekiNormalizedMoments_64f": "Moments",
    "vekiHuMoments_64f": "Moments", "vekiAffineWarp_8u_C1R": "warp", "vekiAffineWarp_8u_C3R": "warp",
    "vekiPerspectiveWarp_8u_C1R": "warp", "vekiPerspectiveWarp_8u_C3R": "warp",
    "vekiGetSpecSize_RealFFT_32s": "RealFft", "vekiInitAlloc_RealFFT_32s": "RealFft", "vekiFree_RealFFT_32s": "RealFft",
    "vekiRealFFTFwd_8u32s_C1RSfs": "RealFft", "vekiRealFFTFwd_32s_C1RSfs": "RealFft",
    "vekiRealFFTInv_32s8u_C1RSfs": "RealFft", "vekiRealFFTInv_32s_C1RSfs": "RealFft",
    # Memory of the caller's: Python's own objects have that of the library.
    "vekMalloc": None, "vekFree": None, "vekiMalloc": None, "vekiFree": None, "vekiGetSpecSize_Moments_8u": None,
    "vekiInit_Moments_8u": None, "vekiInit_RealFFT_32s": None,
}
