"""Makes the pictures of the reference by running the functions that they show.

usage: pictures.py SCENE DIRECTORY        SCENE has what `vekcam simulate` writes, and its frames as SCENE/raw;
                                          PYTHONPATH names the package that is run
"""

import sys

import matplotlib.pyplot as plt
import numpy as np
import vek
from drawing import WIDTH, Album
from matplotlib.patches import Rectangle
from PIL import Image

NUMBER = 19  # by then exposure and white balance have settled
scene = np.ascontiguousarray(np.asarray(Image.open(f"{sys.argv[1]}/frames/frame_{NUMBER:04}.png").convert("RGB")))
frame = np.fromfile(f"{sys.argv[1]}/raw", np.uint16, 1280 * 720, offset=NUMBER * 2 * 1280 * 720).reshape(720, 1280)
album = Album(sys.argv[2])
gray = vek.rgb_to_gray(scene)
spheres = np.ascontiguousarray(scene[252:332, 8:232])
letters = np.ascontiguousarray(scene[244:332, 240:484])
detail = np.ascontiguousarray(scene[120:244, 312:592])
ramp = np.arange(256, dtype=np.uint8)
across, down = np.tile(ramp, (256, 1)), np.tile(ramp[:, None], (1, 256))
random = np.random.default_rng(1)
P = vek.PadBorder
SENSOR = np.array(((1.6, -0.5, -0.1), (-0.25, 1.5, -0.25), (0, -0.7, 1.7)))


def row(f, values=ramp):
    """f of every value, as a row of one image."""
    return f(np.ascontiguousarray(values[None, :]))[0]


def padded(image, n=1, border=P.replicate):
    return vek.pad(image, (n, n, n, n), border)


def camera():
    figure, axes = plt.subplots(1, 4, figsize=(WIDTH, 1.75))
    for ax, order in zip(axes, vek.Bayer):
        for y in range(4):
            for x in range(6):
                name = order.name[2 * (y % 2) + x % 2]
                ax.add_patch(Rectangle((x, y), 1, 1, facecolor={"r": "#e07a7a", "g": "#86c58b", "b": "#7ea6e0"}[name],
                                       edgecolor="#fff"))
                ax.text(x + 0.5, y + 0.53, name.upper(), ha="center", va="center", fontsize=8)
        x, y, width, height = vek.raw_region((6, 4), order)
        ax.add_patch(Rectangle((x, y), width, height, fill=False, edgecolor="#111", linewidth=2.2))
        ax.set(xlim=(-0.1, 6.1), ylim=(4.1, -0.1), title=order.name.upper(), aspect="equal")
        ax.axis("off")
    figure.subplots_adjust(0.01, 0.01, 0.99, 0.87, 0.08)
    album.save(figure, ["frontend", "vekiRawRegion"],
               "The four Bayer orders, and the region that vekiRawRegion finds in 6 x 4 samples: it begins with a red "
               "one.",
               "Four Bayer orders of 6 x 4 samples, each with a frame around the region")

    samples = np.arange(1, 9, dtype=np.uint16) * 100
    packed = {vek.Raw.csi2_10: pack(samples, 10), vek.Raw.csi2_12: pack(samples, 12),
              vek.Raw.csi2_14: pack(samples, 14)}
    blocks = []
    for format_, (bits, names) in {vek.Raw.csi2_10: (10, 5), vek.Raw.csi2_12: (12, 3), vek.Raw.csi2_14: (14,
                                                                                                         7)}.items():
        count = {5: 4, 3: 2, 7: 4}[names]
        data = np.tile(packed[format_], (2, 1))
        out = vek.raw_to_10rggb(data, (8, 2), format_, bits=bits)
        assert (abs(out[0] - samples / (1 << (bits - 10))) <= 0.5).all()
        tops = [f"p{i}" for i in range(count)]
        blocks.append((f"{format_.name}: high bytes of {count} samples, then their low {bits - 8} bits",
                       [tops + [f"low{i}" if names - count > 1 else "low" for i in range(names - count)]]))
    album.memory("vekiRawTo10RGGB_8u16u_C1R", "The packed formats: bytes in the order of memory.", blocks, 0.5)
    words = np.ascontiguousarray(frame)
    whole = vek.raw_to_10rggb(words, (1280, 720), vek.Raw.plain16, bits=10, black=(16,) * 4,
                              gain=(8000, 4370, 4370, 7400))
    album.strip("vekiRawTo10RGGB_8u16u_C1R",
                "A part of a raw frame before and after black level and gains; every pixel is "
                "one sample.", [(title, np.minimum(image[56:116, 48:168] >> 1, 255).astype(np.uint8)) for title,
                                image in
                                (("samples of the sensor", words), ("black subtracted, gains applied", whole))],
                interpolation="nearest")

    pictures = []
    for title, matrix in (("without a matrix", np.eye(3)), ("unmixes the channels", SENSOR)):
        with vek.Isp((1280, 720), vek.Raw.plain16, black=0, bits=10, output=(640, 360), matrix=matrix.tolist()) as isp:
            isp.process(words)  # finds the white balance
            pictures.append((title, isp.process(words)))
    album.strip("vekiColorMatrix_10Bayer_16u_C1R",
                "A frame developed without the matrix, and with one that makes its rows "
                "sum to 1 and its colours stronger.", pictures)
    with vek.RawPipeline((1280, 720), size=(640, 360)) as pipeline:
        y, cb, cr = pipeline.process(whole.copy())
    album.strip(["raw", "veki10RGGBtoYCbCr_RotRsz_8u_P3R"],
                "A raw frame, and the planes that one call makes of it at half the "
                "size.", [("raw", (whole[::4, ::4] >> 2).astype(np.uint8)), ("Y", y), ("Cb", cb), ("Cr", cr)])
    curves = []
    for curve in vek.GammaCurve:
        lumas = []
        for level in range(0, 1024, 8):
            flat = np.full((8, 8), level, np.uint16)
            with vek.RawPipeline((8, 8), curve=curve) as pipeline:
                lumas.append(int(pipeline.process(flat)[0][4, 4]))
        curves.append((curve.name, lumas, list(range(0, 1024, 8))))
    album.curves("vekiInitAlloc_10RGGBtoYCbCr_RotRsz_P3R",
                 "Y of a grey frame over its samples, with the two built-in curves.",
                 curves, "raw sample", "Y")
    turned = []
    for rotation in (vek.Rotation.none, vek.Rotation.cw90, vek.Rotation.half, vek.Rotation.ccw90):
        with vek.Isp((1280, 720), vek.Raw.plain16, black=0, bits=10, crop=(0, 0, 720, 720), rotation=rotation) as isp:
            isp.process(words)
            turned.append((rotation.name, isp.process(words)[::2, ::2]))
    album.strip("veki10RGGBtoYCbCr_RotRsz_8u_P3R", "The rotations of the raw pipeline.", turned)


def pack(samples, bits):
    """CSI-2's order: high bytes first, then the low bits of a group."""
    group = {10: 4, 12: 2, 14: 4}[bits]
    out = []
    for i in range(0, len(samples), group):
        part = [int(s) for s in samples[i:i + group]]
        out += [s >> (bits - 8) for s in part]
        low = sum((s & ((1 << (bits - 8)) - 1)) << (j * (bits - 8)) for j, s in enumerate(part))
        out += list(low.to_bytes(group * (bits - 8) // 8, "little"))
    return np.array(out, np.uint8)


def control():
    """The loop of a camera: a sensor whose samples are light x exposure, and light that changes."""
    light = [0.02] * 15 + [0.3] * 15 + [0.005] * 20
    step, scale = 0, 64
    brightness, scales = [], []
    with vek.AutoExposure(metering=vek.Metering.whole_frame, target=360, tolerance=130, scale_multiplier=2, scale_min=1,
                          scale_max=4096) as exposure:
        for value in light:
            sample = min(1023, value * scale * 16)
            moved = exposure.meter(np.full((48, 64), int(sample), np.uint16), step, scale)
            brightness.append(sample)
            scales.append(scale)
            scale = moved.scale
    figure, (upper, lower) = plt.subplots(2, 1, figsize=(WIDTH * 0.85, 3.4), sharex=True)
    upper.axhspan(230 / 2, 490 / 2, color="#e5eef5")
    upper.step(range(len(light)), brightness, where="post")
    upper.set_ylabel("sample, 0..1023")
    lower.step(range(len(light)), scales, where="post", color="#c2410c", label="scale-controlled value")
    lower.set_yscale("log", base=2)
    lower.step(range(len(light)), [4096 * v for v in light], where="post", color="#6b7280", label="light")
    lower.set_xlabel("frame")
    lower.legend(loc="upper right", ncol=2)
    figure.tight_layout(pad=0.4)
    album.save(figure, ["exposure", "vekiAE_10RGGB_8u_C1R"],
               "vekiAE_10RGGB_8u_C1R in a loop, once a frame: the light jumps at frames 15 and 30, and the "
               "scale-controlled value follows until the brightness is within the band.",
               "Brightness and the control value over 50 frames")

    gains, course = (256, 256, 256), []
    windows = [(x, y, 160, 120) for y in (0, 120) for x in (0, 160)]
    with vek.AutoWhiteBalance(windows=windows, weights=[64] * 4, max_gain_step=24, gain_min=64,
                              gain_max=1024) as balance:
        for n in range(40):
            red, blue = ((0.5, 0.8), (0.9, 0.35))[n >= 20]
            mosaic = np.full((240, 320), 500, np.uint16)
            mosaic[::2, ::2], mosaic[1::2, 1::2] = int(500 * red * gains[0] / 256), int(500 * blue * gains[2] / 256)
            course.append(gains)
            gains = balance.measure(mosaic, gains)[:3]
    album.curves(["whitebalance", "vekiAWB_10RGGB_8u_C1R"],
                 "vekiAWB_10RGGB_8u_C1R once a frame: the light turns from cold to warm "
                 "at frame 20, and each gain moves by at most its largest step until grey is grey.",
                 [(name, [c[i] for c in course]) for i, name in enumerate(("red", "green", "blue"))], "frame",
                 "gain, in 1/256")


def preview():
    planes = vek.rgb_to_yuv(np.ascontiguousarray(scene), format=vek.Format.i420)
    aligned = vek.empty((640, 360), vek.Format.i420)
    for a, p in zip(aligned, planes):
        a[:] = p
    square = vek.empty((352, 352), vek.Format.i420)
    for a, p in zip(square, vek.rgb_to_yuv(np.ascontiguousarray(scene[:352, 200:552]), format=vek.Format.i420)):
        a[:] = p
    turned = [(r.name, vek.yuv_to_rgb(vek.resize(square, (176, 176), rotation=r))) for r in vek.Rotation]
    album.strip(["preview", "vekiYCbCr420RszRot_8u_P3R"], "The six orientations, made while resizing.", turned, 6)
    small = vek.empty((80, 46), vek.Format.i420)
    for s, p in zip(small, vek.rgb_to_yuv(np.ascontiguousarray(letters[:46, :80]), format=vek.Format.i420)):
        s[:] = p
    enlarged = [(i.name, vek.yuv_to_rgb(vek.resize(small, (320, 184), interpolation=i)))
                for i in (vek.Interpolation.nearest, vek.Interpolation.linear)]
    album.strip(["vekiYCbCr420RszRot_8u_P3R", "vekiYCbCr422RszRot_8u_P3R"], "80 x 46 pixels enlarged four times.",
                enlarged)
    shown = []
    for f in (vek.Format.rgb565, vek.Format.rgb444):
        pixels = vek.resize(aligned, (320, 180), format=f)
        shown.append((f.name, fields(pixels, f)))
    shown.append(("bgr24, red and blue exchanged here", np.ascontiguousarray(
        vek.resize(aligned, (320, 180), format=vek.Format.bgr24)[:, :, ::-1])))
    album.strip(["vekiYCbCr420RszCscRotRGB_8u_P3C3R", "vekiYCbCr422RszCscRotRGB_8u_P3C3R"],
                "Resized to half the size and converted in one pass. Fields of 4 bits show steps.", shown)
    yuy2 = vek.rgb_to_ycbcr(scene, vek.Format.yuy2)
    uyvy = vek.empty((640, 360), vek.Format.uyvy)
    uyvy[:] = yuy2[:, :, ::-1]
    uyvy[:, 0::2, 0], uyvy[:, 1::2, 0] = yuy2[:, 0::2, 1], yuy2[:, 1::2, 1]
    uyvy[:, :, 1] = yuy2[:, :, 0]
    album.strip("vekiResizeCscRotate_8u_C2R", "UYVY reduced by 2, 4 and 8.", [
        (f"factor {n}", fields(vek.reduce(uyvy, n), vek.Format.rgb565)) for n in (2, 4, 8)])
    to420 = [(r.name, vek.to_420(np.ascontiguousarray(uyvy[:, 200:560]), r)[0][::2, ::2]) for r in
             (vek.Rotation.none, vek.Rotation.ccw90, vek.Rotation.cw90, vek.Rotation.half)]
    album.strip("vekiYCbCr422ToYCbCr420Rotate_8u_C2P3R", "Luma of the result: 4:2:2 to 4:2:0 and rotated.", to420)


def fields(pixels, format_):
    """16-bit pixels as they are displayed."""
    bits = {"565": (5, 6, 5), "555": (5, 5, 5), "444": (4, 4, 4)}[format_.name[3:]]
    shift, out = sum(bits), []
    for n in bits:
        shift -= n
        out.append(((pixels >> shift) & ((1 << n) - 1)) * 255 // ((1 << n) - 1))
    return np.stack(out, -1).astype(np.uint8)


def colour():
    for name, f in (("ycbcr", lambda x: vek.rgb_to_ycbcr(x)), ("yuv", lambda x: vek.rgb_to_yuv(x))):
        three = f(scene)
        first, second, third = ("Y", "Cb", "Cr") if name == "ycbcr" else ("Y", "U", "V")
        album.strip({"ycbcr": ["vekiRGBToYCbCr_8u_C3R"], "yuv": ["vekiRGBToYUV_8u_C3R"]}[name],
                    "Studio range: Y is 16..235." if name == "ycbcr" else "Full range: Y is 0..255.",
                    [("RGB", scene)] + [(n, np.ascontiguousarray(three[:, :, i])) for i,
                                        n in enumerate((first, second, third))])
    wide = np.tile(np.linspace(16, 235, 640).astype(np.uint8), (40, 1))
    neutral = np.full_like(wide, 128)
    half = np.full((20, 320), 128, np.uint8)
    for group, planes in (("vekiYCbCr420ToRGB565_8u16u_P3C3R", (wide, half, half)), ("vekiYCbCrToRGB565_8u16u_P3C3R",
                                                                                     (wide, neutral, neutral))):
        album.strip(group, "A ramp of Y in the fields of each format: low bits are dropped.", [
            (f.name, fields(vek.ycbcr_to_rgb(planes, f), f)) for f in (vek.Format.rgb565, vek.Format.rgb555,
                                                                       vek.Format.rgb444)], 1)
    bits = [("rgb565", "R" * 5 + "G" * 6 + "B" * 5), ("rgb555", "X" + "R" * 5 + "G" * 5 + "B" * 5),
            ("rgb444", "XXXX" + "R" * 4 + "G" * 4 + "B" * 4),
            ("bgr565", "B" * 5 + "G" * 6 + "R" * 5)]
    album.memory(["vekiYCbCr420ToRGB565_8u16u_P3C3R", "vekiYCbCr422ToRGB565_8u16u_C2C3R"],
                 "Bits 15 to 0 of a pixel. X is 0.", [(n, [list(b)]) for n, b in bits])
    ys = [[f"Y{4 * y + x}" for x in range(4)] for y in range(2)]
    album.memory(["ycbcr"], "Where samples lie: 4 x 2 pixels in each layout.", [
        ("I420: planes Y, Cb, Cr", [ys[0] + ["", "Cb0", "Cb1"] + ["", "Cr0", "Cr1"], ys[1]]),
        ("I422", [ys[0] + ["", "Cb0", "Cb1", "", "Cr0", "Cr1"], ys[1] + ["", "Cb2", "Cb3", "", "Cr2", "Cr3"]]),
        ("YUY2: one plane", [["Y0", "Cb0", "Y1", "Cr0", "Y2", "Cb1", "Y3", "Cr1"], ["Y4", "Cb2", "Y5", "Cr2", "Y6",
                                                                                    "Cb3", "Y7", "Cr3"]]),
    ])
    there_back = []
    for format_, name in ((vek.Format.i444, "4:4:4"), (vek.Format.i422, "4:2:2"), (vek.Format.i420, "4:2:0")):
        part = np.ascontiguousarray(scene[250:330, 510:620])
        there_back.append((name, vek.yuv_to_rgb(vek.rgb_to_yuv(part, format_))))
    album.strip(["vekiRGBToYUV420_8u_C3P3R", "vekiYUV420ToRGB_8u_P3C3R", "vekiRGBToYUV420_8u_C3P3",
                 "vekiRGBToYUV_8u_C3P3R",
                 "vekiYUVToRGB_8u_P3C3R"],
                "There and back: what sharing chroma does to fine coloured detail.", there_back)

    order = vek.permute_channels(scene, (2, 1, 0))
    album.strip(["vekiPermuteChannels_8u_C3R"], "The order {2, 1, 0} exchanges red and blue; {1, 1, 1} repeats green.",
                [("source", scene), ("{2, 1, 0}", order), ("{1, 1, 1}", vek.permute_channels(scene, (1, 1, 1)))])
    names = {}
    planes = []
    for plane, (count, label) in enumerate(((8, "Y"), (2, "Cb"), (2, "Cr"))):
        values = np.arange(count, dtype=np.uint8) + 50 * plane
        names.update({int(v): f"{label}{i}" for i, v in enumerate(values)})
        planes.append(values.reshape((2, 4) if plane == 0 else (1, 2)))
    y, c = vek.to_nv12(tuple(planes))
    album.memory(["channels", "vekiYCbCr420ToNV12_8u_P3P2R"], "I420 and what vekiYCbCr420ToNV12_8u_P3P2R makes of it.",
                 [
        ("I420", [[names[int(v)] for v in r] for p in planes for r in p]),
        ("NV12", [[names[int(v)] for v in r] for r in y] + [[names[int(v)] for v in c.reshape(-1)]])])

    weights = [("equal", (5461, 5461, 5461)), ("red alone", (16384, 0, 0))]
    album.strip("vekiRGBToGray_8u_C3C1R", "Luma of BT.601.", [("source", scene), ("gray", gray)])
    album.strip("vekiColorToGrayQ14_8u_C3C1R", "Weights of one's own, in 1/16384.",
                [("source", scene)] + [(n, vek.color_to_gray(scene, w)) for n, w in weights])
    sepia = ((6439, 12599, 3097, 0), (5718, 11239, 2753, 0), (4456, 8749, 2146, 0))
    less = ((9833, 5500, 1051, 0), (2800, 12533, 1051, 0), (2800, 5500, 8084, 0))
    album.strip("vekiColorTwistQ14_8u_C3R", "Two matrices: sepia, and half the saturation.", [
        ("source", scene), ("sepia", vek.color_twist(scene, sepia)), ("less saturated", vek.color_twist(scene, less))])
    for keys, f, channels in (
            (["vekiRGBToXYZ_8u_C3R"], vek.rgb_to_xyz, "XYZ"),
            (["vekiRGBToYCC_8u_C3R"], vek.rgb_to_ycc, ("Y", "C1", "C2")),
            (["vekiRGBToLUV_8u_C3R"], vek.rgb_to_luv, "LUV"), (["vekiRGBToHLS_8u_C3R"], vek.rgb_to_hls, "HLS"),
            (["vekiRGBToHSV_8u_C3R"], vek.rgb_to_hsv, "HSV")):
        three = f(scene)
        album.strip(keys, "The three channels of the result.", [("RGB", scene)] + [
            (n, np.ascontiguousarray(three[:, :, i])) for i, n in enumerate(channels)])
    hue = np.stack([across, np.full_like(across, 255), 255 - down], -1)
    album.strip(["vekiHSVToRGB_8u_C3R"],
                "Hue to the right, value downwards, through vekiHSVToRGB_8u_C3R at two saturations.", [
        ("S = 255", vek.hsv_to_rgb(np.ascontiguousarray(hue))),
        ("S = 128", vek.hsv_to_rgb(np.ascontiguousarray(np.stack([across, np.full_like(across, 128), 255 - down],
                                                                 -1))))], 4)
    lightness = np.ascontiguousarray(np.stack([across, 255 - down, np.full_like(across, 255)], -1))
    album.strip(["vekiHLSToRGB_8u_C3R"], "Hue to the right, lightness downwards.",
                [("S = 255", vek.hls_to_rgb(lightness))], 4)


def pointwise():
    tables = [("add", ["vekiAdd_8u_C1RSfs"], [("a + b", vek.add(across, down)), ("(a + b) / 2", vek.add(across, down,
                                                                                                        1))]),
              ("sub", ["vekiSub_8u_C1RSfs"], [("a - b", vek.sub(across, down)), ("(a - b) / 2", vek.sub(across, down,
                                                                                                        1))]),
              ("mul", ["vekiMul_8u_C1RSfs"], [("a b", vek.mul(across, down)), ("a b / 256", vek.mul(across, down, 8))]),
              ("mul_scale", ["vekiMulScale_8u_C1R"], [("a b / 255", vek.mul_scale(across, down))]),
              ("and", ["vekiAnd_8u_C1R"], [("a & b", vek.bit_and(across, down)), ("a | b", vek.bit_or(across, down)),
                                           ("a ^ b", vek.bit_xor(across, down))])]
    for _, keys, images in tables:
        album.strip(keys, "Every pair of samples: a from 0 to 255 to the right, b downwards.", images, 4)
    constants = (0, 32, 64, 128)
    for key, f, label in (("vekiAddC_8u_C1RSfs", lambda v: lambda x: vek.add(x, v), "a + {}"),
                          ("vekiSubC_8u_C1RSfs", lambda v: lambda x: vek.sub(x, v), "a - {}"),
                          ("vekiMulC_8u_C1RSfs", lambda v: lambda x: vek.mul(x, v, 6), "a {} / 64"),
                          ("vekiMulCScale_8u_C1R", lambda v: lambda x: vek.mul_scale(x, v), "a {} / 255"),
                          ("vekiAndC_8u_C1R", lambda v: lambda x: vek.bit_and(x, v), "a & {}"),
                          ("vekiOrC_8u_C1R", lambda v: lambda x: vek.bit_or(x, v), "a | {}"),
                          ("vekiXorC_8u_C1R", lambda v: lambda x: vek.bit_xor(x, v), "a ^ {}")):
        album.curves(key, "The result for every sample.", [(label.format(v), row(f(v))) for v in constants], "a")
    album.curves("vekiSqr_8u_C1RSfs", "Squares with three scale factors: rounded, and saturated to 255.",
                 [(f"a² / 2^{s}", row(lambda x, s=s: vek.sqr(x, s))) for s in (4, 6, 8)], "a")
    album.curves("vekiNot_8u_C1R", "The negative.", [("~a", row(vek.bit_not))], "a", height=1.8)
    album.curves("vekiRShiftC_8u_C1R", "Shifts right.",
                 [(f"a >> {n}", row(lambda x, n=n: vek.shift_right(x, n))) for n in (1, 2, 4)], "a")
    album.curves("vekiLShiftC_8u_C1R", "Shifts left: bits that leave the byte are lost.",
                 [(f"a << {n}", row(lambda x, n=n: vek.shift_left(x, n))) for n in (1, 2)], "a")
    album.curves("vekiThreshold_GT_8u_C1R", "Two thresholds, 80 and 170.", [
        ("GT 170", row(lambda x: vek.clamp_above(x, 170))), ("LT 80", row(lambda x: vek.clamp_below(x, 80)))], "a")
    album.curves(["vekiThreshold_GTVal_8u_C1R"], "Thresholds with values of their own.", [
        ("GTVal 170, 200", row(lambda x: vek.replace_above(x, 170, 200))),
        ("LTVal 80, 20", row(lambda x: vek.replace_below(x, 80, 20))),
        ("LTValGTVal 80, 20, 170, 255", row(lambda x: vek.replace_outside(x, 80, 20, 170, 255)))], "a")
    painted = scene[::4, ::4].copy()
    vek.set(painted[20:60, 30:90], (11, 92, 138))
    album.strip(["logic", "vekiSet_8u_C1R"],
                "A colour set in a region: the pointer is that of its first pixel, the step that of the image.",
                [("before", np.ascontiguousarray(scene[::4, ::4])), ("after", painted)], 3)
    whole = np.zeros((90, 160, 3), np.uint8)
    vek.copy(np.ascontiguousarray(scene[250:340:2, 0:240:2]), out=whole[20:65, 20:140])
    album.strip("vekiCopy_8u_C1R", "A picture copied into a region of a larger one.", [("destination", whole)], 3)
    multiplied = vek.mul_scale(scene, vek.add(scene, 40))
    album.strip("arithmetic",
                "Pictures are numbers: one added to its mirror image, and multiplied with itself as fractions of 255.",
                [
        ("picture", scene), ("average with its mirror", vek.add(scene, vek.mirror(scene, vek.MirrorAxis.vertical), 1)),
        ("multiplied", multiplied)])


def filters():
    dots = np.ascontiguousarray(scene[100:148, 200:296])
    album.strip(["pad", "vekiPad_8u_C1R"], "A part of a picture with 24 pixels around it.", [("source", dots)] + [
        (b.name, vek.pad(dots, (24, 24, 24, 24), b, 90)) for b in P], 4)
    album.strip(["filters", "vekiFilterBox_8u_C1R"], "Means of neighbourhoods.", [("source", detail)] + [
        (f"{n} x {n}", vek.filter_box(padded(detail, n // 2), (n, n))) for n in (5, 11)])
    kernels = [("sharpened", [[0, -1, 0], [-1, 5, -1], [0, -1, 0]], 1),
               ("edges", [[-1, -1, -1], [-1, 8, -1], [-1, -1, -1]], 1),
               ("Gauss 5 x 5", [[1, 4, 6, 4, 1], [4, 16, 24, 16, 4], [6, 24, 36, 24, 6], [4, 16, 24, 16, 4], [1, 4, 6,
                                                                                                              4,
                                                                                                              1]], 256)]
    album.strip(["convolution", "vekiFilter_8u_C1R"], "Three kernels.", [("source", detail)] + [
        (n, vek.filter(padded(detail, len(k) // 2), k, d)) for n, k, d in kernels])
    taps = [1] * 15
    album.strip("vekiFilterRow_8u_C1R", "Fifteen equal taps along rows.", [("source", detail), ("rows", vek.filter_row(
        vek.pad(detail, (7, 0, 7, 0), P.replicate), taps, 15, 7))], 3)
    album.strip("vekiFilterColumn_8u_C1R", "Fifteen equal taps along columns.",
                [("source", detail), ("columns", vek.filter_column(
        vek.pad(detail, (0, 7, 0, 7), P.replicate), taps, 15, 7))], 3)
    noisy = letters.copy()
    spots = random.random(noisy.shape[:2])
    noisy[spots < 0.05], noisy[spots > 0.95] = (0, 0, 0), (255, 255, 255)
    album.strip(["vekiFilterMedian_8u_C1R"], "Salt and pepper: a median removes it, a mean spreads it.", [
        ("source", noisy), ("median 3 x 3", vek.filter_median(padded(noisy), (3, 3))),
        ("mean 3 x 3", vek.filter_box(padded(noisy), (3, 3)))])
    album.strip("vekiFilterMedianColor_8u_C3R",
                "The vector median takes a colour that is there; medians of the channels mix new ones.", [
        ("source", noisy), ("vector median 3 x 3", vek.filter_median_color(padded(noisy), vek.MedianMask.square3)),
        ("5 x 5", vek.filter_median_color(padded(noisy, 2), vek.MedianMask.square5))])
    binary = vek.replace_outside(vek.rgb_to_gray(letters), 90, 255, 90, 0)
    album.strip(["neighbourhood", "vekiErode3x3_8u_C1R"], "Erosion and dilation, and one after the other (opening).", [
        ("source", binary), ("eroded", vek.erode(padded(binary))), ("dilated", vek.dilate(padded(binary))),
        ("opened", vek.dilate(padded(vek.erode(padded(binary)))))])
    album.strip("vekiMirror_8u_C1R", "The three axes.",
                [("source", letters)] + [(a.name, vek.mirror(letters, a)) for a in vek.MirrorAxis])
    gray3 = np.repeat(ramp[None, :, None], 3, 2).copy()
    album.curves("vekiGammaFwd_8u_C3R", "Video gamma and its inverse.", [
        ("forward", vek.gamma_forward(gray3)[0, :, 0]), ("inverse", vek.gamma_inverse(gray3)[0, :, 0])], "sample")


def rest():
    ball = vek.rgb_to_gray(spheres)
    album.strip(["dither", "vekiDither_8u_C1R"], "Two levels, and four.", [("source", ball)] + [
        (f"{method.name}, {n} levels", vek.dither(ball, n, method)) for n in (2, 4) for method in vek.Dither], 3, "nearest")
    packed = vek.dither_packed(ball, 1, vek.Dither.diffusion)
    bits = np.unpackbits(packed, axis=1)[:, :ball.shape[1]] * np.uint8(255)
    album.strip("vekiDitherPacked_8u_C1R",
                f"{ball.shape[1]} x {ball.shape[0]} pixels of one bit in {packed.size} bytes.",
                [("8 bits", ball), ("1 bit", bits)], 3, "nearest")
    album.strip("vekiDitherRGB565_8u16u_C3R", "12 bits a pixel.", [("source", spheres)] + [
        (f"rgb444, {m.name}", fields(vek.dither_rgb(spheres, m, vek.Format.rgb444),
                                     vek.Format.rgb444)) for m in vek.Dither], 3, "nearest")

    shape = np.zeros((150, 200), np.uint8)
    yy, xx = np.mgrid[0:150, 0:200]
    angle = np.radians(28)
    u, v = (xx - 90) * np.cos(angle) + (yy - 70) * np.sin(angle), (yy - 70) * np.cos(angle) - (xx - 90) * np.sin(angle)
    shape[(u / 70) ** 2 + (v / 26) ** 2 < 1] = 200
    with vek.Moments(shape) as moments:
        m00, m10, m01 = moments.spatial()[:3]
        _, _, _, mu20, mu11, mu02 = moments.central()[:6]
    cx, cy, theta = m10 / m00, m01 / m00, 0.5 * np.arctan2(2 * mu11, mu20 - mu02)
    figure, ax = plt.subplots(figsize=(WIDTH * 0.42, WIDTH * 0.32))
    ax.imshow(shape, cmap="gray")
    for length, t in ((70, theta), (26, theta + np.pi / 2)):
        ax.plot([cx - length * np.cos(t), cx + length * np.cos(t)], [cy - length * np.sin(t), cy + length * np.sin(t)],
                color="#f59e0b")
    ax.axis("off")
    figure.subplots_adjust(0, 0, 1, 1)
    album.save(figure, ["moments", "vekiMoments_8u_C1R", "vekiCentralMoments_64f"],
               f"Centroid ({cx:.1f}, {cy:.1f}) from the spatial moments and axes at {np.degrees(theta):.1f} degrees from "
               "the central ones of a shape that was drawn at (90, 70) and 28 degrees.", "An ellipse with its axes")
    hu = []
    for degrees in range(0, 181, 15):
        t = np.radians(degrees)
        c, s = np.cos(t), np.sin(t)
        turned = vek.warp(shape, (c, -s, 100 - c * 90 + s * 70, s, c, 100 - s * 90 - c * 70), (200, 200))
        with vek.Moments(turned) as moments:
            hu.append([np.log10(abs(h) + 1e-30) for h in moments.hu()[:3]])
    album.curves(["vekiHuMoments_64f", "vekiNormalizedMoments_64f"], "Hu moments of the shape while it is rotated.",
                 [(f"Hu {i + 1}", [h[i] for h in hu], list(range(0, 181, 15))) for i in range(3)], "degrees", "log10",
                 (-8, 0))

    a = gray
    ts = list(range(0, 65, 4))
    noise = random.normal(0, 1, a.shape)
    noisy = [np.clip(a + t * noise, 0, 255).astype(np.uint8) for t in ts]
    n = a.size
    album.curves("vekiNormDiff_Inf_8u_C1RSfs", "Differences of a picture with noise of growing strength: Inf is the largest "
                 "one, L1 and L2 are shown a pixel.", [
                     ("Inf", [vek.norm_diff_inf(a, b) for b in noisy], ts),
                     ("L1 / n", [vek.norm_diff_l1(a, b) / n for b in noisy], ts),
                     ("L2 / √n", [vek.norm_diff_l2(a, b) / n ** 0.5 for b in noisy], ts)],
                 "strength of the noise", "norm", (0, 260))
    album.curves("vekiNorm_Inf_8u_C1RSfs",
                 "Norms of a picture that is made darker: Inf is its largest sample, L1 and L2 are shown a pixel.", [
        (name, [f(vek.mul_scale(a, v)) / d for v in range(0, 256, 15)], list(range(0, 256, 15)))
        for name, f, d in (("Inf", vek.norm_inf, 1), ("L1 / n", vek.norm_l1, n), ("L2 / √n", vek.norm_l2, n ** 0.5))],
        "factor, in 1/255", "norm")
    scale = 16  # relative norms are numbers of about 1: in 1/65536 here
    album.curves(["norms", "vekiNormRel_Inf_8u_C1RSfs"], "Relative norms of a picture with noise.", [
        (name, [f(b, a, -scale) / 2 ** scale for b in noisy], ts) for name, f in
        (("Inf", vek.norm_rel_inf), ("L1", vek.norm_rel_l1), ("L2", vek.norm_rel_l2))],
        "strength of the noise", "relative norm")

    turn = (0.94, -0.34, 90, 0.34, 0.94, -60)
    small = np.ascontiguousarray(scene[244:308, 240:340])
    album.strip(["vekiAffineWarp_8u_C1R"], "A rotation, and a part of it enlarged with each interpolation.", [
        ("source", scene), ("rotated", vek.warp(scene, turn))] + [
        (i.name, vek.warp(small, (5.6, -2, 40, 2, 5.6, -60), (400, 260),
                          interpolation=i)) for i in vek.Interpolation], 3)
    side = (1, 0.25, 20, 0.12, 0.9, 20, 0.0003, 0.0012, 1)
    album.strip(["warps", "vekiPerspectiveWarp_8u_C1R"], "The plane of the picture seen from the side, with each border.", [
        (b.name, vek.warp(scene, side, border=b, value=230, out=np.full_like(scene, 60))) for b in vek.WarpBorder])

    crop = np.ascontiguousarray(gray[100:228, 300:556])
    with vek.RealFft((256, 128)) as fft:
        spectrum = fft.forward(crop, 0)
        amplitude = np.log1p(np.hypot(spectrum[..., 0].astype(float), spectrum[..., 1]))
        full = np.concatenate([np.roll(amplitude, 64, 0)[::-1, :0:-1][:, :-1], np.roll(amplitude, 64, 0)], 1)
        restored = fft.inverse(spectrum, 15)
    album.strip(["transforms", "vekiRealFFTFwd_8u32s_C1RSfs", "vekiRealFFTFwd_32s_C1RSfs"],
                "A picture, its spectrum (logarithms of the amplitudes, frequency 0 in the middle), and the picture from the "
                "spectrum.",
                [("picture", crop), ("spectrum", (full / full.max() * 255).astype(np.uint8)), ("inverse", restored)])
    block = np.ascontiguousarray(gray[262:270, 246:254].astype(np.int16)) - 128
    coefficients = vek.dct_forward(block)
    images = [("block", (block + 128).astype(np.uint8)),
              ("coefficients", np.clip(128 + coefficients // 4, 0, 255).astype(np.uint8))]
    for keep in (3, 10):
        kept = np.where(np.abs(coefficients) >= np.sort(np.abs(coefficients), None)[-keep], coefficients,
                        0).astype(np.int16)
        images.append((f"of the largest {keep}", np.clip(vek.dct_inverse(kept) + 128, 0, 255).astype(np.uint8)))
    album.strip("vekiBlockDCTFwd_16s_C1",
                "A block of 8 x 8 samples, its coefficients (grey is 0), and blocks of a few of them.", images)
    rest_of_row = ["X"] * 5
    album.memory("types", "An image of three columns and two rows in memory with a step of 8 bytes: pixel (x, y) of one "
                 "channel is at y * step + x. What is after the row is neither read nor written.", [
                     ("step = 8", [[f"{x},{y}" for x in range(3)] + rest_of_row for y in range(2)])])
    album.curves(["division", "_vekDiv_8u"], "Quotients of 0..255.", [
        (f"n / {d}", [vek.divide(n, d, 8).quotient for n in range(256)]) for d in (3, 10, 40)], "n", "quotient")


for draw in (camera, control, preview, colour, pointwise, filters, rest):
    draw()
album.write()
print(f"{len({p['file'] for shown in album.shown.values() for p in shown})} pictures")
