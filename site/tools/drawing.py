"""How pictures of the reference are drawn: strips of images, curves, and cells of memory."""

import io
import json
from pathlib import Path

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402
from matplotlib.patches import Rectangle  # noqa: E402
from PIL import Image  # noqa: E402

plt.rcParams.update({"font.size": 9, "axes.titlesize": 9, "axes.spines.top": False, "axes.spines.right": False,
                     "legend.frameon": False, "axes.grid": True, "axes.axisbelow": True, "grid.color": "#e4e4e4",
                     "lines.linewidth": 1.4,
                     "axes.prop_cycle": plt.cycler(color=["#0b5c8a", "#c2410c", "#2f7d32", "#7c3aed", "#6b7280"])})
WIDTH, DOTS = 7.6, 180  # inches; shown at half as many dots
COLORS = {"R": "#e07a7a", "G": "#86c58b", "B": "#7ea6e0", "Y": "#d9d9d9", "Cb": "#8fb3e8", "Cr": "#e89a9a",
          "U": "#8fb3e8",
          "V": "#e89a9a", "X": "#f4f4f4", "": "#ffffff"}


class Album:
    """The pictures of a directory, and what they show: {key: [picture]} in pictures.json."""

    def __init__(self, directory):
        self.directory, self.shown = Path(directory), {}
        self.directory.mkdir(parents=True, exist_ok=True)

    def save(self, figure, keys, caption, alt, photograph=False):
        keys = [keys] if isinstance(keys, str) else keys
        file = f"{keys[0]}-{len(self.shown.get(keys[0], []))}.webp"
        data = io.BytesIO()
        figure.savefig(data, dpi=DOTS, facecolor="white")
        picture = Image.open(data).convert("RGB")
        picture.save(self.directory / file, **({"quality": 88} if photograph else {"lossless": True}))
        width, height = (int(v * DOTS / 2) for v in figure.get_size_inches())
        plt.close(figure)
        for key in keys:
            self.shown.setdefault(key, []).append(
                {"file": file, "caption": caption, "alt": alt, "width": width, "height": height})

    def write(self):
        (self.directory / "pictures.json").write_text(json.dumps(self.shown, indent=1))

    def strip(self, keys, caption, images, columns=None, interpolation="auto"):
        """Images side by side, each with a title above it."""
        columns = columns or min(len(images), 4)
        each = WIDTH / columns
        columns = min(columns, len(images))
        rows = -(-len(images) // columns)
        ratio = max(image.shape[0] / image.shape[1] for _, image in images)
        figure, axes = plt.subplots(rows, columns, squeeze=False, figsize=(each * columns,
                                                                           rows * (each * ratio + 0.28)))
        for ax in axes.flat:
            ax.axis("off")
        for ax, (title, image) in zip(axes.flat, images):
            smooth = interpolation if interpolation != "auto" else "nearest" if image.shape[1] < 130 else "antialiased"
            ax.imshow(image, cmap="gray", vmin=0, vmax=255, interpolation=smooth)
            ax.set_title(title, pad=3)
        figure.subplots_adjust(0.004, 0.01, 0.996, 1 - 0.24 / figure.get_size_inches()[1], 0.03, 0.13)
        self.save(figure, keys, caption, ", ".join(title for title, _ in images), interpolation == "auto")

    def curves(self, keys, caption, curves, x="input", y="result", limits=None, height=2.5):
        """Lines over 0..255, or over what each of them has as a third entry."""
        figure, ax = plt.subplots(figsize=(WIDTH * 0.75, height))
        for curve in curves:
            values = curve[1]
            named = {"red": "#c93a3a", "green": "#2f7d32", "blue": "#2b62c4"}
            ax.plot(curve[2] if len(curve) > 2 else range(len(values)), values, label=curve[0],
                    **({"color": named[curve[0]]} if curve[0] in named else {}))
        ax.set_xlabel(x)
        ax.set_ylabel(y)
        if limits:
            ax.set_ylim(*limits)
        ax.legend(loc="center left", bbox_to_anchor=(1, 0.5))
        figure.tight_layout(pad=0.4)
        self.save(figure, keys, caption, f"{y} over {x}: " + ", ".join(c[0] for c in curves))

    def memory(self, keys, caption, blocks, cell=0.42):
        """Rows of cells: [(title, [[label]])]. The label's letters choose the colour."""
        wide = max(len(row) for _, rows in blocks for row in rows)
        high = sum(len(rows) + 1.1 for _, rows in blocks)
        cell = min(cell, WIDTH / (wide + 0.2))
        figure, ax = plt.subplots(figsize=((wide + 0.2) * cell, high * cell))
        ax.axis("off")
        top = 0.2
        for title, rows in blocks:
            ax.text(0, top + 0.35, title, fontsize=9, va="center")
            top += 0.75
            for row in rows:
                for x, label in enumerate(row):
                    kind = label.rstrip("0123456789,.'")
                    ax.add_patch(Rectangle((x, top), 1, 1, facecolor=COLORS.get(kind, "#ffffff"), edgecolor="#666",
                                           linewidth=0.7))
                    ax.text(x + 0.5, top + 0.53, label, ha="center", va="center", fontsize=min(9, 19 * cell))
                top += 1
            top += 0.35
        ax.set_xlim(-0.1, wide + 0.1)
        ax.set_ylim(top, 0)
        figure.subplots_adjust(0, 0, 1, 1)
        self.save(figure, keys, caption, "; ".join(title for title, _ in blocks))
