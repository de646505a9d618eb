"""Frames on a cluster of two processes, one of which is killed."""

import os
import signal

import numpy as np
import pytest

import vek

pytest.importorskip("dask.distributed")
import dask.array  # noqa: E402
import dask.bag  # noqa: E402
from dask.distributed import Client, LocalCluster  # noqa: E402

import vek.dask  # noqa: E402

PARAMETERS = {"size": (64, 48), "format": vek.Raw.bytes, "black": 4}


def frames(folder, count):
    paths = []
    for i in range(count):
        paths.append(folder / f"frame{i:03}.raw")
        np.random.default_rng(i).integers(0, 256, (48, 64), np.uint8).tofile(paths[-1])
    return paths


@pytest.fixture(scope="module")
def client():
    with LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None,
                      scheduler_port=0) as cluster, Client(cluster) as client:
        yield client


def test_a_worker_is_lost(client, tmp_path):
    paths = frames(tmp_path, 60)
    alone = {}
    for path in paths[::10]:
        with vek.Isp(**PARAMETERS) as isp:
            for _ in range(2):
                picture = isp.process(np.fromfile(path, np.uint8).reshape(48, 64))
        alone[path.stem] = picture
    steps, made_before = [], {}
    victim = next(iter(client.run(os.getpid).values()))

    def kill(done, total):
        steps.append((done, total))
        if done == 10:
            made_before.update({p.name: p.stat() for p in (tmp_path / "out").iterdir() if p.name[0] != "."})
            os.kill(victim, signal.SIGKILL)

    results = vek.dask.develop(paths, PARAMETERS, tmp_path / "out", suffix=".npy", progress=kill, retries=5)
    assert [r.frame for r in results] == [str(p) for p in paths]
    assert sorted(p.name for p in (tmp_path / "out").iterdir() if p.name[0] != ".") == [p.stem + ".npy" for p in paths]
    assert steps[-1] == (60, 60) and len(made_before) >= 10
    for name, before in made_before.items():  # none is made twice
        after = (tmp_path / "out" / name).stat()
        assert (after.st_ino, after.st_mtime_ns) == (before.st_ino, before.st_mtime_ns)
    for stem, picture in alone.items():
        np.testing.assert_array_equal(np.load(tmp_path / "out" / f"{stem}.npy"), picture)


def test_frames_of_arrays_and_bags(client):
    frames = np.random.default_rng(1).integers(0, 256, (6, 10, 12, 3), np.uint8)
    expected = np.stack([vek.rgb_to_gray(frame) for frame in frames])
    array = dask.array.from_array(frames, chunks=(2, 5, 12, 3))
    result = vek.dask.map_frames(array, vek.rgb_to_gray)
    assert result.shape == expected.shape and result.dtype == np.uint8
    np.testing.assert_array_equal(result.compute(), expected)
    bag = vek.dask.map_frames(dask.bag.from_sequence(list(frames), npartitions=3), vek.rgb_to_gray)
    np.testing.assert_array_equal(np.stack(bag.compute()), expected)


def test_bad_frames(client, tmp_path):
    path = tmp_path / "short.raw"
    path.write_bytes(b"123")
    with pytest.raises(ValueError, match="short.raw has 3 bytes"):
        vek.dask.develop([path], PARAMETERS, tmp_path / "out", retries=0)
    assert list((tmp_path / "out").iterdir()) == []
    with pytest.raises(ValueError, match="same name"):
        vek.dask.develop([path, path], PARAMETERS, tmp_path / "out")
    good, = frames(tmp_path, 1)
    for existing in ("replace", "skip"):
        made, = vek.dask.develop([good], PARAMETERS, tmp_path / "out", existing=existing)
        assert open(made.picture, "rb").read(13) == b"P6 64 48 255\n"
    with pytest.raises(FileExistsError):
        vek.dask.develop([good], PARAMETERS, tmp_path / "out", existing="error")
