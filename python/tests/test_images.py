"""What counts as an image, and what is refused: by the argument's name, without a copy and with nothing written."""

import array
import threading
import time

import numpy as np
import pytest

import vek

A = np.arange(48 * 64, dtype=np.uint32).astype(np.uint8).reshape(48, 64)


def refused(call, argument, kind=vek.Error):
    with pytest.raises(kind) as caught:
        call()
    assert f": {argument} " in str(caught.value), str(caught.value)
    if kind is vek.Error:
        assert caught.value.argument == argument and caught.value.status < 0 and caught.value.text


def test_any_buffer():
    expected = vek.bit_not(A)
    memory = array.array("B", A.tobytes())
    for image in (memoryview(A), memoryview(memory).cast("B", (48, 64)), A.copy("C").view(), bytearray(A.tobytes())):
        if isinstance(image, bytearray):
            image = memoryview(image).cast("B", (48, 64))
        np.testing.assert_array_equal(vek.bit_not(image), expected)
    view = memoryview(memory).cast("B", (48, 64))
    assert vek.bit_not(view, out=view) is view and memory.tobytes() == expected.tobytes()

    class Interface:
        def __init__(self, a):
            self.__array_interface__ = a.__array_interface__

    class Exchange:
        def __dlpack__(self, **more):
            return A.__dlpack__(**more)

        def __dlpack_device__(self):
            return A.__dlpack_device__()

    np.testing.assert_array_equal(vek.bit_not(Interface(A)), expected)
    np.testing.assert_array_equal(vek.bit_not(Exchange()), expected)
    pillow = pytest.importorskip("PIL.Image")
    np.testing.assert_array_equal(vek.bit_not(pillow.fromarray(A)), expected)


def test_refused_images():
    rgb = np.zeros((4, 5, 3), np.uint8)
    refused(lambda: vek.add(A, A.astype(np.uint16)), "b", TypeError)
    refused(lambda: vek.add(A, rgb), "b", TypeError)
    refused(lambda: vek.add("text", A), "a", TypeError)
    refused(lambda: vek.add(A, 1.5), "b", TypeError)
    refused(lambda: vek.bit_not(A.astype(">u2")), "src", TypeError)
    refused(lambda: vek.bit_not(A[::-1]), "src")
    refused(lambda: vek.bit_not(A[:, ::2]), "src")
    refused(lambda: vek.bit_not(A.T), "src")
    refused(lambda: vek.rgb_to_gray(rgb[..., ::-1]), "src")
    refused(lambda: vek.rgb_to_gray(np.zeros((4, 5, 4), np.uint8)[..., 1:]), "src")
    refused(lambda: vek.bit_not(np.broadcast_to(A[0], (9, 64))), "src")
    refused(lambda: vek.bit_not(A[:0]), "src")
    refused(lambda: vek.add(A, A[:5]), "b")
    refused(lambda: vek.add(A, (1, 2, 3)), "b")
    refused(lambda: vek.add(A, 256), "b")
    refused(lambda: vek.filter_box(A, (65, 1)), "mask")
    refused(lambda: vek.filter_box(A, (3, 3), (3, 0)), "anchor")
    refused(lambda: vek.mirror(A, 7), "axis")
    refused(lambda: vek.ycbcr_to_rgb(rgb, vek.Format.i420), "format")
    refused(lambda: vek.pad(A, (0, -1, 0, 0)), "margins")
    refused(lambda: vek.warp(A, (0, 0, 0, 0, 0, 0)), "map")
    with pytest.raises(TypeError, match="b is missing"):
        vek.add(A)
    with pytest.raises(TypeError, match="scal is no argument"):
        vek.add(A, A, scal=1)
    with pytest.raises(TypeError, match="out is no argument"):
        vek.set(A.copy(), 1, out=A.copy())
    # One row or one column has any stride.
    assert vek.bit_not(A[::-1][:1]).shape == (1, 64) and vek.bit_not(A[:, ::2][:, :1]).shape == (48, 1)


def test_refused_destinations():
    constant = A.copy()
    constant.setflags(write=False)
    refused(lambda: vek.bit_not(A, out=constant), "out")
    refused(lambda: vek.bit_not(A, out=A.tobytes()), "out")
    refused(lambda: vek.bit_not(A, out=A[:, 1:]), "out")
    refused(lambda: vek.bit_not(A, out=np.empty((48, 64, 3), np.uint8)), "out", TypeError)
    memory = A.copy()
    kept = memory.copy()
    refused(lambda: vek.bit_not(memory[:-1], out=memory[1:]), "out")
    refused(lambda: vek.bit_not(memory[:, :40], out=memory[:, 24:]), "out")
    refused(lambda: vek.mirror(memory, vek.MirrorAxis.both, out=memory), "out")
    refused(lambda: vek.erode(memory, out=memory[1:-1, 1:-1]), "out")
    np.testing.assert_array_equal(memory, kept)
    # Halves of the same rows share no byte.
    np.testing.assert_array_equal(vek.bit_not(memory[:, :32], out=memory[:, 32:]), 255 - kept[:, :32])
    flat = np.empty(6 * 8 * 2, np.uint8)
    luma, chroma = flat[:48].reshape(6, 8), flat[40:52].reshape(3, 4)
    refused(lambda: vek.rgb_to_yuv(np.zeros((6, 8, 3), np.uint8), vek.Format.i420, out=(luma, chroma, chroma)), "out")


def test_time_of_a_call():
    """At most 2 microseconds more than in C, on an idle machine; the figure is printed by pytest -s."""
    out, times = np.empty_like(A), []
    for _ in range(200):
        start = time.perf_counter()
        for _ in range(100):
            vek.add(A, A, out=out)
        times.append((time.perf_counter() - start) / 100)
    print(f"\nadd on 64 x 48: {min(times) * 1e6:.2f} microseconds")
    assert min(times) < 10e-6


def test_threads():
    """The interpreter runs while a function does. How well two threads scale is printed by pytest -s."""
    image = np.zeros((3000, 3000), np.uint8)
    outs = [np.empty((2990, 2990), np.uint8) for _ in range(2)]

    def work(i):
        vek.filter(image, [[1] * 11] * 11, 121, out=outs[i])

    def seconds(count):
        threads = [threading.Thread(target=work, args=(i,)) for i in range(count)]
        start, turns = time.perf_counter(), 0
        for thread in threads:
            thread.start()
        while count == 1 and threads[0].is_alive():
            time.sleep(0)
            turns += 1
        for thread in threads:
            thread.join()
        return time.perf_counter() - start, turns

    one, turns = seconds(1)
    two, _ = seconds(2)
    print(f"\ntwo threads do {2 * one / two:.2f} times as much as one")
    assert turns > 20
