"""Develops a packed RAW10 frame: develop.py FRAME.raw WIDTH HEIGHT BLACK >PICTURE.ppm"""
import sys

import numpy as np
import vek

width, height, black = map(int, sys.argv[2:])
with vek.Isp((width, height), vek.Raw.csi2_10, vek.Bayer.rggb, black=black) as isp:
    for _ in range(2):  # the first time finds the white balance
        picture = isp.process(np.fromfile(sys.argv[1], np.uint8).reshape(height, -1))
    sys.stdout.buffer.write(b"P6 %d %d 255\n" % isp.output_size + picture.tobytes())
