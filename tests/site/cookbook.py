"""Runs the recipes of the site's cookbook and the programs of its first guide, as they stand there.

usage: cookbook.py GUIDES VEKCAM CC CXX LIBRARY INCLUDE        in a directory of its own, with PYTHONPATH
"""

import os
import re
import subprocess
import sys
from pathlib import Path

import numpy as np
import vek

guides, vekcam, cc, cxx, library, include = map(Path, sys.argv[1:])
START = """
#include <cstdio>
#include <thread>
#include <vector>
#include <vek/isp.hpp>
#include <vek/vek.hpp>
#define RECIPES(f) {list}
{recipes}
int main() {{
  std::vector<Vek8u> bytes(1280 * 720 * 2);
  std::FILE* file = std::fopen("frame.raw", "rb");
  if (file == nullptr || std::fread(bytes.data(), 1, bytes.size(), file) != bytes.size()) return 1;
  std::fclose(file);
  const vek::View<const vek::RawByte> frame(bytes, {{2560, 720}});
  vek::IspSettings settings;
  settings.size = {{1280, 720}};
  settings.format = vek::Raw::plain16;
  settings.output = {{640, 360}};
  vek::Isp isp(settings);
  vek::Image<vek::Rgb24> picture(isp.outputSize());
  isp.process(frame, picture);
  const vek::Image<Vek8u> gray = vek::rgbToGray(picture);
#define RUN(f) std::printf("%s\\n", #f), f(picture, gray, frame);
  RECIPES(RUN)
}}
"""


def blocks(page, language):
    """(line, text) of the blocks of a language."""
    text = (guides / page).read_text()
    return [(text[:m.start()].count("\n") + 2, m[1]) for m in re.finditer(rf"^```{language}\n(.*?)^```", text,
                                                                          re.S | re.M)]


def run(*command, **options):
    return subprocess.run(list(map(str, command)), check=True, **options)


def compiled(compiler, source, *options):
    program = Path(source).stem
    run(compiler, *options, "-Wall", "-Wextra", "-Werror", "-I", include, source, "-o", program, library, "-pthread",
        f"-Wl,-rpath,{library.parent}")
    return f"./{program}"


def main():
    bin_directory = Path("bin")
    bin_directory.mkdir(exist_ok=True)
    if not (bin_directory / "vekcam").exists():
        (bin_directory / "vekcam").symlink_to(vekcam)
    os.environ["PATH"] = f"{bin_directory.resolve()}:{os.environ['PATH']}"
    run("vekcam", "simulate", "--quiet", "--frames", 4, "--out", "scene", "--raw", "frames.raw",
        stdout=subprocess.DEVNULL)
    data = Path("frames.raw").read_bytes()
    Path("frame.raw").write_bytes(data[-1280 * 720 * 2:])
    Path("picture.png").write_bytes(Path("scene/frames/frame_0003.png").read_bytes())
    count = 0

    recipes = {f"recipeOfLine{line}": text for line, text in blocks("cookbook.md", "cpp")}
    parameters = ", ".join(f"[[maybe_unused]] const vek::View<const {pixel}>& {name}" for pixel, name in
                           (("vek::Rgb24", "picture"), ("Vek8u", "gray"), ("vek::RawByte", "frame")))
    # Types with member templates stand outside of functions.
    struct = re.compile(r"^struct .*?^};\n", re.S | re.M)
    bodies = ["".join(struct.findall(text)) + f"void {name}({parameters}) {{\n{struct.sub('', text)}}}\n"
              for name, text in recipes.items()]
    Path("recipes.cc").write_text(START.format(list=" ".join(f"f({n})" for n in recipes), recipes="\n".join(bodies)))
    run(compiled(cxx, "recipes.cc", "-std=c++17", "-O0", "-Wno-unused-variable", "-Wno-unused-but-set-variable"))
    count += len(recipes)

    frame = np.fromfile("frame.raw", np.uint16).reshape(720, 1280)
    with vek.Isp((1280, 720), vek.Raw.plain16, output=(640, 360)) as isp:
        picture = isp.process(frame).copy()
    for page in ("cookbook.md", "first.md"):
        for line, text in blocks(page, "python"):
            print(f"{page}:{line}")
            exec(compile("\n" * (line - 1) + text, page, "exec"),
                 {"np": np, "vek": vek, "frame": frame, "picture": picture, "gray": vek.rgb_to_gray(picture)})
            count += 1

    for line, text in blocks("cookbook.md", "sh"):
        print(f"cookbook.md:{line}")
        run("sh", "-euc", text)
        count += 1

    for language, compiler, options in (("c", cc, ["-std=c11"]), ("cpp", cxx, ["-std=c++17", "-O0"])):
        for line, text in blocks("first.md", language):
            print(f"first.md:{line}")
            source = f"first_{language}.{'c' if language == 'c' else 'cc'}"
            Path(source).write_text(text)
            out = run(compiled(compiler, source, *options), capture_output=True).stdout
            size = tuple(map(int, out.split(b"\n")[1].split()))
            assert np.frombuffer(out[-3 * size[0] * size[1]:], np.uint8).std() > 20, "the picture is even"
            count += 1
    print(f"{count} recipes")


main()
