"""The package has all of the library, and its types and texts are those of the headers."""

import inspect
import os
import pickle
import re
import sys
from pathlib import Path

import pytest

import vek

SOURCE = Path(os.environ.get("VEK_SOURCE", Path(__file__).parents[2]))
sys.path.insert(0, str(Path(__file__).parents[1] / "tools"))


def test_every_function():
    import headers
    from operations import ELSEWHERE

    exported = set(headers.functions(SOURCE / "include"))
    bound = set(vek._vek.functions) | set(ELSEWHERE)
    assert exported - bound == set(), "declare them in python/tools/operations.py"
    assert bound - exported == set()
    for name in filter(None, ELSEWHERE.values()):
        assert hasattr(vek, name.split(".")[0]), name


def test_types_and_texts():
    stub = (Path(vek.__file__).parent / "_vek.pyi").read_text()
    assert (Path(vek.__file__).parent / "py.typed").exists()
    for name in set(vek._vek.functions.values()):
        declared = re.search(rf"^def {name}\((.*)\) -> ", stub, re.M)[1]
        parameters = inspect.signature(getattr(vek, name)).parameters
        assert [p for p in re.findall(r"(?:^|, )(\w+):", declared)] == list(parameters)
        assert re.search(r"\bveki\w+", getattr(vek, name).__doc__) and len(getattr(vek, name).__doc__) > 200
    assert "Resizes and rotates 4:2:0" in vek.resize.__doc__ and "Y  = ( 263" not in vek.Isp.__doc__


def test_library():
    assert re.fullmatch(r"\d+\.\d+\.\d+", vek.version) and vek.level() in vek.levels() and vek.levels()[0] == "portable"
    assert vek.image_version().major == 4 and vek.camera_version().major == 5
    assert vek.Rotation.cw90 == 2 and vek.Status.step == -14
    with pytest.raises(vek.Error) as caught:
        vek.RealFft((3, 3))
    assert pickle.loads(pickle.dumps(vek.rgb_to_gray)) is vek.rgb_to_gray
    again = pickle.loads(pickle.dumps(caught.value))  # as between processes
    assert str(again) == str(caught.value) and again.status == vek.Status.fft_order
