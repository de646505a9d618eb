"""Batches of frames on any number of machines, by Dask.

    from dask.distributed import Client
    client = Client("scheduler:8786")  # or Client() for the processors of this machine
    vek.dask.develop(paths, {"size": (1920, 1080), "order": vek.Bayer.bggr, "black": 64}, "pictures",
                     progress=print)

Workers need this package and the folders of the frames and pictures under the same names. Dask is needed
only by those who import this module."""

import os
import tempfile
from pathlib import Path
from typing import Any, Callable, Dict, List, NamedTuple, Optional, Sequence, Union

import dask.bag
import numpy as np

from . import Format, Isp

__all__ = ["Developed", "develop", "map_frames"]


class Developed(NamedTuple):
    """A frame and its picture."""

    frame: str
    picture: str


def _write(path: Path, picture: Any) -> None:
    """Writes a picture as a whole or not at all, and never twice: the first one stays."""
    handle, temporary = tempfile.mkstemp(prefix=".", suffix=path.suffix, dir=path.parent)
    try:
        with os.fdopen(handle, "wb") as file:
            if path.suffix == ".npy":
                np.save(file, picture)
            else:
                file.write(b"P6 %d %d 255\n" % (picture.shape[1], picture.shape[0]))
                file.write(np.ascontiguousarray(picture).tobytes())
            file.flush()
            os.fsync(file.fileno())
        try:
            os.link(temporary, path)
        except FileExistsError:
            pass  # another attempt at the same frame was faster
    finally:
        os.unlink(temporary)


def _develop(frame: str, parameters: Dict[str, Any], picture: str, passes: int) -> Developed:
    if not os.path.exists(picture):  # an attempt whose worker has died since may have made it
        samples = np.fromfile(frame, np.uint8)
        height = parameters["size"][1]
        if samples.size == 0 or samples.size % height != 0:
            raise ValueError(f"{frame} has {samples.size} bytes, which are not {height} rows")
        with Isp(**parameters) as isp:
            for _ in range(passes):
                result = isp.process(samples.reshape(height, -1), Format.rgb24)
        _write(Path(picture), result)
    return Developed(frame, picture)


def develop(paths: Union[Sequence[Any], dask.bag.Bag], isp_parameters: Dict[str, Any], folder: Any, *,
            suffix: str = ".ppm", existing: str = "replace", passes: int = 2, retries: int = 3,
            progress: Optional[Callable[[int, int], Any]] = None, compute: bool = True) -> Any:
    """Develops raw frames into pictures in `folder`: files of the same name with `suffix`, .ppm or .npy.

    `isp_parameters` are the arguments of vek.Isp. Each frame is developed for itself, so that the pictures do
    not depend on how they are distributed: in `passes` passes, of which each is balanced with the gains that
    the one before has found. Pictures appear as a whole, and are made once, even if a worker is lost.

    `existing` says what happens to pictures that are there: "replace", "skip" (and return them) or "error".
    Returns a list of Developed in the order of `paths`, or the bag of it if not `compute`. `progress` is
    called with the frames that are done and all of them. A frame is tried again `retries` times."""
    if existing not in ("replace", "skip", "error"):
        raise ValueError(f"existing is {existing!r}, not 'replace', 'skip' or 'error'")
    if suffix not in (".ppm", ".npy"):
        raise ValueError(f"suffix is {suffix!r}, not '.ppm' or '.npy'")
    if passes < 1:
        raise ValueError(f"passes is {passes}")
    frames: List[str] = [os.path.abspath(p) for p in (paths.compute() if isinstance(paths, dask.bag.Bag) else paths)]
    target = Path(folder).absolute()
    target.mkdir(parents=True, exist_ok=True)
    pictures = [str(target / (Path(frame).stem + suffix)) for frame in frames]
    if len(set(pictures)) < len(pictures):
        raise ValueError("paths has frames whose pictures would have the same name")
    for picture in pictures:
        if existing == "error" and os.path.exists(picture):
            raise FileExistsError(picture)
        if existing == "replace" and os.path.exists(picture):
            os.unlink(picture)
    if not frames:
        return [] if compute else dask.bag.from_sequence([], npartitions=1)
    bag = dask.bag.from_sequence(zip(frames, pictures), npartitions=len(frames))
    bag = bag.starmap(_develop_pair, parameters=dict(isp_parameters), passes=passes)
    return _run(bag, retries, progress) if compute else bag


def _develop_pair(frame: str, picture: str, *, parameters: Dict[str, Any], passes: int) -> Developed:
    return _develop(frame, parameters, picture, passes)


def _run(bag: dask.bag.Bag, retries: int, progress: Optional[Callable[[int, int], Any]]) -> List[Any]:
    """Computes a bag on the current cluster, or by the processes of this machine if there is none."""
    try:
        from dask.distributed import as_completed, get_client

        client = get_client()
    except (ImportError, ValueError):
        results = bag.compute()
        if progress is not None:
            progress(len(results), len(results))
        return list(results)
    futures = client.compute(bag.to_delayed(), retries=retries)
    for done, _ in enumerate(as_completed(futures), 1):
        if progress is not None:
            progress(done, len(futures))
    return [result for part in client.gather(futures) for result in part]


def map_frames(array: Any, f: Callable[[Any], Any]) -> Any:
    """`f` of each frame: of a Dask array (frames, rows, columns, ...), or of a bag of frames.

    Nothing is computed yet; `.compute()` or a client does that. `f` takes an array and returns one; its result
    on zeros tells the shape and type of the new array."""
    if isinstance(array, dask.bag.Bag):
        return array.map(f)
    example = np.asarray(f(np.zeros(array.shape[1:], array.dtype)))
    whole = array.rechunk({axis: -1 for axis in range(1, array.ndim)})
    return whole.map_blocks(_each, f=f, dtype=example.dtype, chunks=(whole.chunks[0], *((n,) for n in example.shape)),
                            drop_axis=list(range(1, array.ndim)), new_axis=list(range(1, example.ndim + 1)),
                            meta=np.empty((0,) * (example.ndim + 1), example.dtype))


def _each(block: Any, *, f: Callable[[Any], Any]) -> Any:
    return np.stack([np.asarray(f(frame)) for frame in block])
