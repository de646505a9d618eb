"""Makes the pictures of the guides: the simulator's run, and the benchmarks if `./dev bench` has written them.

usage: plots.py SCENE DIRECTORY [BENCHMARKS.json LEVELS.json]
"""

import json
import re
import shutil
import sys
from pathlib import Path

import matplotlib.pyplot as plt
import numpy as np
from drawing import WIDTH, Album
from PIL import Image

FAMILIES = {"raw": "raw pipeline", "preview": "preview", "aaa": "exposure, white balance", "front": "raw front end",
            "color": "colour", "channels": "channels", "arith": "arithmetic", "pad": "borders", "filter": "filters",
            "stat": "norms", "moments": "moments", "dither": "dithering", "warp": "warps", "transform": "transforms"}


def simulation(scene, album):
    text = (scene / "report.html").read_text()
    report = json.loads(re.search(r'id="data">(.*?)</script>', text, re.S)[1])
    run, lights = report["run"], report["lights"]

    def axes(ax, label):
        for i, light in enumerate(lights):
            ax.axvspan(light["first"], light["first"] + light["count"], color="#f3f4f6" if i % 2 else "#ffffff",
                       zorder=0)
        ax.set_xlim(0, len(run["brightness"]) - 1)
        ax.set_ylabel(label)

    figure, (upper, lower) = plt.subplots(2, 1, figsize=(WIDTH, 4), sharex=True)
    axes(upper, "mean green, 0..1023")
    upper.axhspan(*run["band"], color="#cfe8d5")
    upper.plot(run["brightness"])
    for light in lights:
        upper.text(light["first"] + 1, upper.get_ylim()[1], light["name"], va="bottom", fontsize=9)
    axes(lower, "exposure, gain")
    lower.set_yscale("log")
    lower.step(range(len(run["exposure"])), run["exposure"], where="post", label="exposure time, rows")
    lower.step(range(len(run["gain"])), run["gain"], where="post", label="gain")
    lower.set_xlabel("frame")
    lower.legend(loc="upper right", ncol=2)
    figure.tight_layout(pad=0.4)
    album.save(figure, "brightness", "", "")

    figure, ax = plt.subplots(figsize=(WIDTH, 2.3))
    axes(ax, "gain")
    for name, color in (("red", "#c93a3a"), ("green", "#2f7d32"), ("blue", "#2b62c4")):
        ax.plot(run[name], color=color, label=name)
    ax.set_xlabel("frame")
    ax.legend(loc="upper right", ncol=3)
    figure.tight_layout(pad=0.4)
    album.save(figure, "gains", "", "")
    for source, name in (("frames/frame_0019.png", "first"), ("contact_sheet.png", "simulate")):
        Image.open(scene / source).convert("RGB").save(album.directory / f"{name}.webp", quality=88)


def benchmarks(ratios, levels, album):
    """The ratio of each function to its peer at each size, and what each level gains."""
    pairs = [p for p in ratios["pairs"] if p["peer"] and p["ratio"]]
    families = [f for f in FAMILIES if any(p["family"] == f for p in pairs)]
    figure, ax = plt.subplots(figsize=(WIDTH, 0.36 * len(families) + 1))
    sizes = list(dict.fromkeys(p["size"] for p in pairs))
    for i, size in enumerate(sizes):
        xs, ys = [], []
        for row, family in enumerate(families):
            for p in pairs:
                if p["family"] == family and p["size"] == size:
                    xs.append(p["ratio"])
                    ys.append(row + (i - 0.5) * 0.34 + 0.1 * np.sin(40 * len(xs)))
        ax.scatter(xs, ys, s=9, alpha=0.6, label=size)
    ax.axvline(1, color="#111", linewidth=0.8)
    ax.set_xscale("log")
    ax.set_yticks(range(len(families)), [FAMILIES[f] for f in families])
    ax.invert_yaxis()
    ax.set_xlabel("the peer's time / ours")
    ax.legend(loc="lower right", bbox_to_anchor=(1, 1), ncol=len(sizes))
    figure.tight_layout(pad=0.4)
    album.save(figure, "ratios", "", "")

    rows = [f for f in levels["functions"] if f["us"].get("portable")]
    names = [n for n in rows[0]["us"] if n != "portable"]
    families = [f for f in FAMILIES if any(r["family"] == f for r in rows)]
    figure, ax = plt.subplots(figsize=(WIDTH, 0.32 * len(families) + 1))
    for i, name in enumerate(names):
        gains = [np.exp(np.mean([np.log(r["us"]["portable"] / r["us"][name]) for r in rows
                                 if r["family"] == f and r["us"][name] > 0.05])) for f in families]
        ax.barh(np.arange(len(families)) + (i - (len(names) - 1) / 2) * 0.8 / len(names), gains, 0.8 / len(names),
                label=name)
    ax.set_yticks(range(len(families)), [FAMILIES[f] for f in families])
    ax.invert_yaxis()
    ax.set_xlabel(f"times as fast as the portable level, {levels['size']}, geometric means")
    ax.legend(loc="lower right")
    figure.tight_layout(pad=0.4)
    album.save(figure, "levels", "", "")
    (album.directory / "measured.txt").write_text(f"{ratios['cpu']}, {ratios['date']}, {ratios['compiler']}")


if __name__ == "__main__":
    album = Album(sys.argv[2])
    simulation(Path(sys.argv[1]), album)
    if len(sys.argv) > 4 and all(Path(p).exists() for p in sys.argv[3:5]):
        benchmarks(*(json.loads(Path(p).read_text()) for p in sys.argv[3:5]), album)
    for file in album.directory.glob("*-0.webp"):
        shutil.move(file, file.with_name(file.name.replace("-0", "")))
    (album.directory / "shown.json").write_text(json.dumps({k: v[0] for k, v in album.shown.items()}))
