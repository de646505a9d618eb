"""Makes the sources of the reference site: a page for each family of functions, made from the headers, the
C++ headers, the table of Python's operations, the records of the tests and the pictures, beside the pages of docs/.

usage: pages.py BUILD DIRECTORY
"""

import html
import json
import re
import shutil
import subprocess
import sys
from itertools import groupby
from pathlib import Path

from pygments import highlight
from pygments.formatters import HtmlFormatter
from pygments.lexers import get_lexer_by_name

import forms
from contracts import Contracts
from doxygen import Reference

SOURCE = forms.SOURCE
PARTS = {"vek/camera.h": "Camera path", "vek/image.h": "Image primitives", "vek/vek.h": "The library itself"}


def code(language, text, label):
    shown = highlight(text, get_lexer_by_name(language), HtmlFormatter(nowrap=True)).rstrip("\n")
    return (f'<div class="form"><span class="language">{label}</span><div class="highlight-{language} notranslate">'
            f'<div class="highlight"><pre tabindex="0">{shown}</pre></div></div></div>')


def raw(*parts):
    text = "\n".join(part for part in parts if part)
    return "```{raw} html\n" + text + "\n```\n" if text else ""


class Site:
    def __init__(self, build, target):
        self.build, self.target = build, target
        self.reference = Reference(SOURCE, target.parent / "doxygen")
        status = (SOURCE / "include/vek/vek.h").read_text()
        statuses = {int(v): n for n, v in re.findall(r"(vekSts\w+)\s*=\s*(-?\d+)", status)}
        self.contracts = Contracts(build / "tests/campaign/campaign", self.reference.functions, statuses)
        self.cpp, self.python = forms.cpp_forms(set(self.reference.functions)), forms.python_forms()
        pictures = target / "reference/pictures/pictures.json"
        self.pictures = json.loads(pictures.read_text()) if pictures.exists() else {}

    def picture(self, key):
        parts = []
        for p in self.pictures.get(key, []):
            caption = html.escape(p["caption"])
            parts.append(f'<figure><img src="pictures/{p["file"]}" alt="{html.escape(p["alt"], quote=True)}" '
                         f'width="{p["width"]}" height="{p["height"]}" loading="lazy">'
                         f"<figcaption>{caption}</figcaption></figure>")
        return "".join(parts)

    def entry(self, function, opened):
        """The forms and the contract of a function."""
        cpp = "\n\n".join(signature for signature, _ in self.cpp[function.name])
        python = self.python[function.name]
        if python is None:
            shown, remark = "# not needed: objects hold their memory", ""
        else:
            shown, remark = python
        if remark:
            shown += "\n" + "\n".join(f"# {line.strip()}" for line in remark.split(";"))
        rows = "".join(f"<tr><th scope='row'>{what}</th><td>{said}</td></tr>"
                       for what, said in self.contracts.rows(function))
        return raw(f'<span id="{function.name}" class="anchor"></span>',
                   '<div class="forms">', code("c", function.prototype(), "C"), code("cpp", cpp, "C++"),
                   code("python", shown, "Python"), "</div>",
                   f'<details class="contract"{" open" if opened else ""}><summary>Contract</summary>'
                   f"<table>{rows}</table></details>")

    def records(self, group):
        """Structures, enumerations, tables and types of a group."""
        parts, reference = [], self.reference
        for record in group.records:
            root = reference.roots[record]
            name = root.findtext("compoundname")
            fields = "".join(
                f"<tr><td><code>{html.escape(''.join(m.find('type').itertext()))} {m.findtext('name')}"
                f"{m.findtext('argsstring') or ''}</code></td><td>{reference.html(m.find('briefdescription'))}"
                f"{reference.html(m.find('detaileddescription'))}</td></tr>"
                for m in root.iter("memberdef") if m.get("kind") == "variable")
            parts += [f"## {name}\n", raw(f'<span id="{name}" class="anchor"></span>',
                                          reference.html(root.find("briefdescription")),
                                          reference.html(root.find("detaileddescription")),
                                          f'<div class="wide" tabindex="0"><table>{fields}</table></div>')]
        rows = []
        for m in group.others:
            name = m.findtext("name") or ""
            said = reference.html(m.find("briefdescription")) + reference.html(m.find("detaileddescription"))
            if m.get("kind") == "enum":
                if not name.startswith("@"):
                    rows.append(f'<tr id="{name}"><td><code>enum {name}</code></td><td></td><td>{said}</td></tr>')
                for v in m.findall("enumvalue"):
                    value = re.sub(r"^= *", "", v.findtext("initializer") or "")
                    said = reference.html(v.find("briefdescription")) + reference.html(v.find("detaileddescription"))
                    rows.append(f'<tr id="{v.findtext("name")}"><td><code>{v.findtext("name")}</code></td>'
                                f"<td>{html.escape(value)}</td><td>{said}</td></tr>")
            elif m.get("kind") in ("define", "typedef", "variable"):
                type_ = "".join(m.find("type").itertext()) if m.find("type") is not None else ""
                shown = html.escape(f"{type_} {name}{m.findtext('argsstring') or ''}".strip())
                value = (m.findtext("initializer") or "").strip("= ")
                rows.append(f'<tr id="{name}"><td><code>{shown}</code></td><td>{html.escape(value[:20])}</td>'
                            f"<td>{said}</td></tr>")
        if rows:
            parts += ["## Names and numbers\n",
                      raw(f'<div class="wide" tabindex="0"><table>{"".join(rows)}</table></div>')]
        return parts

    def family(self, group):
        reference = self.reference
        parts = [f"# {group.title}\n",
                 raw(self.picture(group.name), reference.html(group.brief), reference.html(group.text))]

        def texts(function):
            return function.section, reference.html(function.brief), reference.html(function.text)

        last = None
        for (section, brief, text), functions in groupby(group.functions, texts):
            functions = list(functions)
            if section and section != last:
                parts.append(f"## {section}\n")
            last = section
            level = "###" if section else "##"
            if len(functions) == 1:
                parts.append(f"{level} {functions[0].name}\n")
            parts.append(raw(brief, text, self.picture(functions[0].name)))
            for i, function in enumerate(functions):
                if len(functions) > 1:
                    parts.append(f"{level} {function.name}\n")
                    if i > 0:
                        parts.append(raw(self.picture(function.name)))
                parts.append(self.entry(function, i == 0))
        return "\n".join(parts + self.records(group))

    def index(self):
        parts = ["# Reference\n",
                 f"{len(self.reference.functions)} functions of the C interface, with their forms in C++ and Python. "
                 "[All of them in one table](functions.md), [C++ classes and types](cpp.md).\n"]
        for header, groups in groupby(self.reference.c_groups, lambda g: g.place[0]):
            groups = list(groups)
            cards = []
            for g in groups:
                picture = self.pictures.get(g.name) or next(
                    (self.pictures[f.name] for f in g.functions if f.name in self.pictures), None)
                image = (f'<img src="pictures/{picture[0]["file"]}" alt="" loading="lazy">' if picture else "")
                count = len(g.functions)
                cards.append(f'<a class="card" href="{g.name}.html">{image}<strong>{html.escape(g.title)}</strong>'
                             + (f"<span>{count} function{'s' if count != 1 else ''}</span>" if count else "") + "</a>")
            parts += [f"## {PARTS[header]}\n", raw(f'<div class="cards">{"".join(cards)}</div>'),
                      "```{toctree}\n:hidden:\n:maxdepth: 1\n" + "\n".join(g.name for g in groups) + "\n```\n"]
        parts.append("```{toctree}\n:hidden:\ncpp\nfunctions\n```\n")
        return "\n".join(parts)

    def table(self):
        rows = []
        for name, function in sorted(self.reference.functions.items(), key=lambda item: item[0].lower()):
            cpp = re.search(r"(vek::[~\w:]+)\(", self.cpp[name][0][0])[1]
            python = re.match(r"[\w.]+", self.python[name][0])[0] if self.python[name] else "–"
            rows.append(f'<tr><td><a href="{function.group}.html#{name}"><code>{name}</code></a></td>'
                        f"<td><code>{cpp}</code></td><td><code>{python}</code></td></tr>")
        return "# All functions\n\n" + raw(
            '<div class="wide functions" tabindex="0"><table><thead><tr><th>C</th><th>C++</th><th>Python</th></tr></thead>'
            f'<tbody>{"".join(rows)}</tbody></table></div>')

    def cpp_page(self):
        """Classes, types and functions of the C++ interface that are more than a form of a C function."""
        reference = self.reference
        parts = ["# C++ classes and types\n",
                 "`vek/view.hpp`, `vek/vek.hpp` and `vek/isp.hpp`. The forms of the C functions stand with these; "
                 "here is what they take, and the camera path as one object.\n"]
        for name in ("isp", "cppviews", "cpptypes", "cpperrors", "cpphelpers"):
            group = next(g for g in reference.cpp_groups if g.name == name)
            parts += [f"## {group.title.replace('C++: ', '').capitalize()}\n",
                      raw(reference.html(group.brief), reference.html(group.text))]
            for record in group.records:
                root = reference.roots[record]
                title = re.sub(r"\bv0::", "", root.findtext("compoundname"))
                rows = []
                for m in root.iter("memberdef"):
                    if m.get("prot") != "public" or m.get("kind") not in ("function", "variable"):
                        continue
                    type_ = "".join(m.find("type").itertext()) if m.find("type") is not None else ""
                    shown = html.escape(f"{type_} {m.findtext('name')}{m.findtext('argsstring') or ''}".strip())
                    shown = re.sub(r"\bVEK_INLINE ", "", shown)
                    said = reference.html(m.find("briefdescription")) + reference.html(m.find("detaileddescription"))
                    if said:
                        rows.append(f"<tr><td><code>{shown}</code></td><td>{said}</td></tr>")
                parts += [f"### {title.replace('<', '‹').replace('>', '›')}\n",
                          raw(reference.html(root.find("briefdescription")),
                              reference.html(root.find("detaileddescription")),
                              f'<div class="wide members" tabindex="0"><table>{"".join(rows)}</table></div>' if rows else "")]
            rows = []
            for m in group.others:
                said = reference.html(m.find("briefdescription")) + reference.html(m.find("detaileddescription"))
                if m.get("kind") == "enum":
                    values = ", ".join(f"<code>{v.findtext('name')}</code>" for v in m.findall("enumvalue"))
                    rows.append(f"<tr><td><code>enum class {m.findtext('name')}</code></td><td>{said}{values}</td></tr>")
            for f in group.functions:
                shown = html.escape(f"{f.returns} {f.name}({', '.join(f'{t} {n}' for t, n in f.parameters)})")
                said = reference.html(f.brief) + reference.html(f.text)
                rows.append(f"<tr><td><code>{shown.replace('VEK_INLINE ', '')}</code></td><td>{said}</td></tr>")
            if rows:
                parts.append(raw(f'<div class="wide members" tabindex="0"><table>{"".join(rows)}</table></div>'))
        return "\n".join(parts)

    def write(self):
        folder = self.target / "reference"
        folder.mkdir(parents=True, exist_ok=True)
        for group in self.reference.c_groups:
            (folder / f"{group.name}.md").write_text(self.family(group))
        (folder / "index.md").write_text(self.index())
        (folder / "functions.md").write_text(self.table())
        (folder / "cpp.md").write_text(self.cpp_page())


def sizes(build):
    """Code and constants of each family at each level, in kilobytes."""
    objects = {}
    for folder in sorted((build / "CMakeFiles").glob("vek_*.dir")):
        level = folder.name[4:-4]
        for path in folder.rglob("*.o"):
            parts = path.relative_to(folder).parts
            family = "/".join(parts[:2]) if parts[0] != "core" else "core"
            text, data = subprocess.run(["size", path], check=True, capture_output=True,
                                        text=True).stdout.splitlines()[1].split()[:2]
            key = objects.setdefault(family, {})
            key[level] = key.get(level, 0) + int(text) + int(data)
    levels = [n for n in ("portable", "sse4", "avx2", "avx512", "neon") if any(n in row for row in objects.values())]
    lines = ["| family | " + " | ".join(levels) + " | all |", "|---|" + "---:|" * (len(levels) + 1)]
    for name, row in sorted(objects.items()):
        lines.append(f"| {name} | " + " | ".join(f"{row.get(n, 0) / 1024:.0f}" for n in levels)
                     + f" | {sum(row.values()) / 1024:.0f} |")
    totals = [sum(row.get(n, 0) for row in objects.values()) / 1024 for n in levels]
    lines.append("| **all** | " + " | ".join(f"{t:.0f}" for t in totals) + f" | {sum(totals):.0f} |")
    return ("Kilobytes of code and constants, before the linker drops anything:\n\n" + "\n".join(lines)
            + f"\n\nThe shared library of this build has {(build / 'libvek.so').stat().st_size / 1024 / 1024:.1f} MB on disk.\n")


def ratios(target):
    folder = target / "guide/pictures"
    if not (folder / "ratios.webp").exists():
        return "![The ratio of every pair](../docs/images/benchmarks.png)\n"
    shown, measured = json.loads((folder / "shown.json").read_text()), (folder / "measured.txt").read_text()
    figures = [("ratios", "Each point is a function beside a peer; right of 1 we are faster"),
               ("levels", "What each level gains over the portable one")]
    return raw(*(f'<figure><img src="pictures/{name}.webp" alt="{said}" width="{shown[name]["width"]}" '
                 f'height="{shown[name]["height"]}" loading="lazy"><figcaption>{said} ({html.escape(measured)}).</figcaption></figure>'
                 for name, said in figures))


def guides(build, target):
    known = {}
    for listed in (target / "reference/pictures/pictures.json", target / "guide/pictures/shown.json"):
        for name, shown in json.loads(listed.read_text()).items():
            for p in shown if isinstance(shown, list) else [{**shown, "file": f"{name}.webp"}]:
                known[p["file"]] = f'width="{p["width"]}" height="{p["height"]}" loading="lazy"'

    def sized(match):
        return f"{match[1]} {known.get(match[2], match[3])}>"

    for path in sorted((SOURCE / "site/guide").glob("*.md")):
        text = path.read_text()
        if "<!-- sizes -->" in text:
            text = text.replace("<!-- sizes -->", sizes(build))
        if "<!-- ratios -->" in text:
            text = text.replace("<!-- ratios -->", ratios(target))
        text = re.sub(r'(<img src="[^"]*/([^"/]+)" alt="[^"]*") ([^>]*)>', sized, text)
        (target / "guide").mkdir(exist_ok=True)
        (target / "guide" / path.name).write_text(text)


def documents(target):
    """The pages of the tree. What they link to and is no page is left as text."""
    pages = ["CONTRIBUTING.md", "CHANGELOG.md",
             *[str(p.relative_to(SOURCE)) for p in sorted((SOURCE / "docs").rglob("*.md"))]]
    for page in pages:
        text = (SOURCE / page).read_text()

        def link(match, page=page):
            place = match[2].split("#")[0]
            if not place or "://" in place:
                return match[0]
            reached = ((SOURCE / page).parent / place).resolve()
            known = reached.relative_to(SOURCE).as_posix() if reached.is_relative_to(SOURCE) else ""
            if known in pages or known.startswith(("docs/images/", "reference", "playground")):
                return match[0]
            return match[1]

        (target / page).parent.mkdir(parents=True, exist_ok=True)
        (target / page).write_text(re.sub(r"(?<!\!)\[([^\]]*)\]\(([^)\s]+)\)", link, text))
    shutil.copytree(SOURCE / "docs/images", target / "docs/images", dirs_exist_ok=True)
    shutil.copytree(SOURCE / "site/static", target / "static", dirs_exist_ok=True)
    shutil.copy(SOURCE / "site/conf.py", target)
    front = (SOURCE / "site/index.md").read_text()
    if (SOURCE / "out/playground/index.html").exists():
        front = front.replace("<!-- playground -->",
                              '\n<a class="button plain" href="playground/index.html">Playground</a>')
    (target / "index.md").write_text(front)


if __name__ == "__main__":
    build, target = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
    target.mkdir(parents=True, exist_ok=True)
    documents(target)
    guides(build, target)
    Site(build, target).write()
