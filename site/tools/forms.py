"""The C++ and Python forms of the C functions."""

import ast
import re
import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(SOURCE / "python/tools"))

import generate  # noqa: E402
import headers  # noqa: E402
from operations import ELSEWHERE, OPERATIONS  # noqa: E402

# Methods of Python's objects, by the C function that they call.
METHODS = {
    "vekiAE_10RGGB_8u_C1R": "meter", "vekiAWB_10RGGB_8u_C1R": "measure", "veki10RGGBtoYCbCr_RotRsz_8u_P3R": "process",
    "vekiMoments_8u_C1R": "measure", "vekiMoments_8u_C3R": "measure", "vekiSpatialMoments_64f": "spatial",
    "vekiCentralMoments_64f": "central", "vekiNormalizedMoments_64f": "normalized", "vekiHuMoments_64f": "hu",
    "vekiRealFFTFwd_8u32s_C1RSfs": "forward", "vekiRealFFTFwd_32s_C1RSfs": "forward",
    "vekiRealFFTInv_32s8u_C1RSfs": "inverse", "vekiRealFFTInv_32s_C1RSfs": "inverse",
}
LAYOUTS = {
    "C1": "(rows, columns)", "C3": "(rows, columns, 3)", "C4": "(rows, columns, 4)", "C2": "(rows, columns, 2)",
    "U16": "uint16 (rows, columns)", "S16": "int16 (rows, columns)", "P420": "planes 4:2:0", "P422": "planes 4:2:2",
    "P444": "planes 4:4:4", "NV12": "planes (y, cbcr)", "BLOCK": "64 of int16", "BITS": "packed bits",
    "numbers": "a number a channel", "value": "a number",
}


class Chunk:
    """A definition of a C++ header: its comment, its declaration, and the names in its body."""

    def __init__(self, comment, text, owner):
        self.comment, self.owner = comment, owner
        self.names = set(re.findall(r"\w+", text))
        depth = 0
        for i, c in enumerate(text):
            depth += (c in "(<") - (c in ")>" and text[i - 1] not in "-=")
            if c in "{;" and depth <= 0:
                break
        self.declaration = re.sub(r"\s+", " ", text[:i]).strip()
        found = re.search(r"([~\w]+)\(", re.sub(r"\balignas\(.*?\)|decltype\(.*?\)", "", self.declaration))
        self.name = found[1] if found else ""

    def signature(self):
        """The declaration as one reads it, without what overload resolution needs."""
        text = re.sub(r"\b(VEK_INLINE|VEK_COLD|inline|constexpr|explicit|static)\b ?", "", self.declaration)
        text = re.sub(r"^template <.*?> ?(?=\w)", "", text)
        while True:
            plain = re.sub(r"\b(?:detail::)?Same<((?:[^<>]|<(?:[^<>]|<[^<>]*>)*>)*)>", r"\1", text)
            plain = re.sub(r"\bdetail::Supported<[^,<>]*, ((?:[^<>]|<[^<>]*>)*)>", r"\1", plain)
            plain = re.sub(r"\bstd::enable_if_t<[^,<>]*(?:<[^<>]*>)?[^,<>]*, ((?:[^<>]|<[^<>]*>)*)>", r"\1", plain)
            if plain == text:
                break
            text = plain
        text = re.sub(r"\) :.*$|\) (const )?noexcept$", ")", text)
        where = f"{self.owner}::" if self.owner else "vek::"
        before, after = text.split(self.name + "(", 1)
        parameters, depth, start = [], 0, 0
        for i, c in enumerate(after):
            depth += (c in "(<{[") - (c in ")>}]")
            if depth < 0 or (c == "," and depth == 0):
                parameters.append(after[start:i].strip())
                start = i + 1
                if depth < 0:
                    break
        lines = ",\n".join(f"  {p}" for p in parameters if p)
        return f"{before}{where}{self.name}(" + (f"\n{lines});" if lines else ");")


def _chunks(text, owner="", indent=""):
    lines, comment, found, i = text.split("\n"), [], [], 0
    while i < len(lines):
        line = lines[i]
        if re.match(rf"{indent}///", line):
            comment.append(line.strip()[3:].strip())
        elif re.match(rf"{indent}(template|[A-Za-z~\[])", line) and not re.match(
                r" *(namespace|inline namespace|using|public:|private:|protected:)", line):
            begin = i
            while i + 1 < len(lines) and not _ended(lines[begin:i + 1]):
                i += 1
            block = "\n".join(re.sub(r"//.*", "", code) for code in lines[begin:i + 1])
            kind = re.match(rf"{indent}(?:template <[^{{]*?>\s*)?(?:class|struct) (\w+)[^;(]*\{{", block)
            if kind:
                found += _chunks("\n".join(lines[begin + 1:i]), f"vek::{kind[1]}", indent + "  ")
                found[len(found):] = [Chunk(comment, "class " + kind[1] + "; " + block, f"vek::{kind[1]}")]
            else:
                found.append(Chunk(comment, block, owner))
            comment = []
        elif line.strip() == "":
            comment = []
        i += 1
    return found


def _ended(lines):
    text = "\n".join(re.sub(r"//.*", "", line) for line in lines).rstrip()
    return text[-1:] in (";", "}") and all(text.count(a) == text.count(b) for a, b in ("()", "{}"))


def cpp_forms(names):
    """{C function: [(signature, comment)]}"""
    public, hidden = [], []
    for path in [SOURCE / "include/vek/view.hpp", *sorted((SOURCE / "include/vek/cpp").glob("*.hpp"))]:
        text = path.read_text()
        for part in re.split(r"^( */// @cond.*?@endcond)$", text, flags=re.S | re.M):
            (hidden if "@cond" in part else public).extend(
                _chunks(re.sub(r"^ */// @(end)?cond.*$", "", part, flags=re.M)))
    inner = {}
    for chunk in hidden:
        inner.setdefault(chunk.name, set()).update(chunk.names)
    forms = {}
    for chunk in public:
        if not chunk.name and not chunk.declaration.startswith("class "):
            continue
        reached = set(chunk.names)
        for _ in range(3):
            reached |= set().union(*(inner[n] for n in reached if n in inner and n != chunk.name))
        for name in reached & names:
            forms.setdefault(name, []).append((chunk, name in chunk.names, name in " ".join(chunk.comment)))
    for chunk in public:  # where a helper of the same name stands between, the comment says it
        for name in (names - forms.keys()) & set(re.findall(r"\w+", " ".join(chunk.comment))):
            forms[name] = [(chunk, False, True)]
    chosen = {}
    for name, found in forms.items():
        calls = [f for f in found if not f[0].declaration.startswith("class ")]
        for better in (lambda f: f[1] or f[2], lambda f: f[2]):
            calls = [f for f in calls if better(f)] or calls
        if calls:
            chosen[name] = [(c.signature(), " ".join(c.comment)) for c, _, _ in calls[:2]]
        else:
            owner = found[0][0].owner
            chosen[name] = [(f"{owner}::~{owner[5:]}();", "The destructor, and what replaces the object.")]
    return chosen


def _stripped(arguments):
    for a in arguments.posonlyargs + arguments.args + arguments.kwonlyargs:
        a.annotation = None
    arguments.args = [a for a in arguments.args if a.arg != "self"]
    return ast.unparse(arguments)


def _call(name, parameters):
    parts, depth, start = [], 0, 0
    for i, c in enumerate(parameters + ","):
        depth += (c in "([{") - (c in ")]}")
        if c == "," and depth == 0:
            parts.append(parameters[start:i].strip())
            start = i + 1
    lines = ",\n".join(f"  {p}" for p in parts if p)
    return f"{name}(" + (f"\n{lines})" if lines else ")")


def python_forms():
    """{C function: (signature, remark)}; None for those without one."""
    forms = {}
    for op in OPERATIONS:
        signature = generate.signature(op)
        for function, sources, out, format_ in op.variants:
            images = [n for n, kind, _ in op.parameters if kind.startswith("image")]
            said = [f"{n}: {LAYOUTS[s]}" for n, s in zip(images, sources)]
            result = f"{LAYOUTS[out]}" + (f", format={format_}" if format_ else "")
            parameters = re.match(r"\((.*)\)", signature)[1].replace("format=None", f"format=Format.{format_}")
            if function in forms:  # BGR through the function for RGB
                continue
            forms[function] = (_call(f"vek.{op.name}", parameters), "; ".join(said + [f"result: {result}"]))
    trees = [ast.parse((SOURCE / f"python/vek/{m}.py").read_text()) for m in ("_functions", "_states")]
    defined = {node.name: node for tree in trees for node in tree.body
               if isinstance(node, (ast.FunctionDef, ast.ClassDef))}
    for function, name in ELSEWHERE.items():
        if name is None:
            forms[function] = None
            continue
        node, shown = defined.get(name.split(".")[0]), f"vek.{name}"
        if node is None:
            forms[function] = (shown, "")
            continue
        if isinstance(node, ast.ClassDef):
            method = METHODS.get(function, "close" if "Free" in function else "__init__")
            members = [m for m in node.body if isinstance(m, ast.FunctionDef) and m.name == method]
            if method == "close" or not members:
                forms[function] = (f"vek.{name}.close()", "or the end of a with statement" if method == "close" else "")
                continue
            if method != "__init__":
                shown += f".{method}"
            node = members[0]
        said = ast.get_docstring(node) or ""
        forms[function] = (_call(shown, _stripped(node.args)), said.split("\n\n")[0].replace("\n", " "))
    return forms


def prototypes():
    return headers.functions(SOURCE / "include")
