"""Makes what follows from the public headers and from operations.py.

usage: generate.py SOURCE_OF_C++ DIRECTORY_OF_PACKAGE

    operations.inc   the table of operations and the documentation, for the extension module
    formats.inc      the enumeration of formats, for the same
    _enums.py        the enumerations
    _vek.pyi         the types of the operations
"""

import sys
from pathlib import Path

import headers
from operations import FORMATS, OPERATIONS

HINTS = {
    "image": "Image", "image|value": "Union[Image, Value]", "destination": "Image", "value": "Value", "shifts": "Value",
    "int": "int", "size": "Size", "point": "Point", "anchor": "Optional[Point]", "tap": "int", "kernel": "Kernel",
    "taps": "Taps", "integers3": "Taps", "integers12": "Kernel", "order": "Sequence[int]", "format": "Format",
    "chroma": "Optional[Chroma]",
}
KINDS = {"image|value": "imageOrValue", "int": "integer"}


def quoted(text):
    """A literal of C++, in parts that every compiler takes."""
    parts = [text[i:i + 8000] for i in range(0, len(text), 8000)] or [""]
    return "\n".join(f'R"vek({part})vek"' for part in parts)


def signature(op, typed=False):
    """`(a, b, scale=0, *, out=None)`"""
    words, result = [], "Image"
    for name, kind, default in op.parameters:
        if kind in ("format", "chroma") and default:
            default = f"Format.{default}" if kind == "format" else default
        hint = HINTS.get(kind, kind)
        if typed:
            words.append(f"{name}: {hint}" + (f" = {'...' if 'Format.' in default else default}" if default else ""))
        else:
            words.append(name + (f"={'None' if 'Format.' in default else default}" if default else ""))
    if all(out == "numbers" for _, _, out, _ in op.variants):
        result = "Union[int, Tuple[int, int, int]]"
    elif op.parameters[0][1] != "destination":
        words += ["*", "out: Optional[Image] = None" if typed else "out=None"]
        result = "Any"
    return f"({', '.join(words)})" + (f" -> {result}" if typed else "")


def documentation(op, said, functions):
    """What the headers say about an operation."""
    names = [variant[0] for variant in op.variants]
    texts = [t for t in said.get(op.cpp, []) if op.cpp != "dither" or any(f"{n}" in t for n in names)] or said[op.cpp]
    lines = ["\n".join(texts)]
    formats = [v[3] for v in op.variants if v[3]]
    if formats:
        lines.append(f"`format` is one of {', '.join(dict.fromkeys(formats))}.")
    if op.in_place:
        lines.append("`out` may be a source: the same pixels in the same place.")
    for comment in dict.fromkeys(functions[name].comment for name in names):
        members = [n for n in dict.fromkeys(names) if functions[n].comment == comment]
        lines.append(f"{', '.join(members)}:\n\n" + "\n".join(f"    {line}".rstrip() for line in comment.split("\n")))
    return "\n\n".join(lines)


def arguments(op, variant, functions):
    """The arguments of a variant's function as `Argument`s of C++, and what else follows from their types."""
    function, sources, out, _ = variant
    images = [name for name, kind, _ in op.parameters if kind.startswith("image")]
    images = images[:len([s for s in sources if s != "value"])]
    parameters = [name for name, _, _ in op.parameters]
    channels, stepped, rows = 1, set(), []
    for type_, name in functions[function].parameters:
        known = op.names.get(name, name)
        slot = None
        if name.startswith("pDst") or name.startswith("dstStep"):
            slot = "out"
        elif name.startswith("pSrc") or name.startswith("src"):
            base = "pSrc" + name[len("pSrc"):] if name[0] == "p" else "pSrc" + name[len("src"):].replace("Step", "")
            source = {"pSrc": images[0] if images else None, "pSrcA": "a", "pSrcB": "b"}[base]
            slot = op.names.get(base, source)
        if slot is not None:
            index = "Argument::out" if slot == "out" else str(images.index(slot))
            if name[0] == "p":
                rows.append(f"{{From::data, {index}}}")
            else:
                stepped.add(slot)
                rows.append(f"{{From::{'steps' if '[' in type_ else 'step'}, {index}}}")
        elif name == "roiSize":
            rows.append("{From::region, 0}")
        elif name == "pNorm":
            rows.append("{From::result, 0}")
        else:
            if known not in parameters:
                raise SystemExit(f"{op.name}: {function} has {name}, which is no parameter of the operation")
            if type_ == "const Vek8u[3]" or type_ == "const Vek32u[3]":
                channels = 3
            rows.append(f"{{From::{'extent' if name == 'kernelSize' else 'value'}, {parameters.index(known)}}}")
    wanted = set(images) | ({"out"} if out != "numbers" else set())
    return rows, channels, stepped >= wanted


def table(functions, said):
    formats = {name: number for number, (name, _) in enumerate(FORMATS)}
    lines = ["// Made by tools/generate.py from the headers and tools/operations.py."]
    for op in OPERATIONS:
        variants = []
        for i, variant in enumerate(op.variants):
            rows, channels, stepped = arguments(op, variant, functions)
            name = f"{op.name}{i}"
            lines.append(f"constexpr Argument {name}[] = {{{', '.join(rows)}}};")
            function, sources, out, out_format = variant
            layouts = ", ".join(f"Layout::{s}" for s in sources)
            variants.append(f'    {{"{function}", &invoke<{function}>, {{{layouts}}}, Layout::{out},'
                            f" {formats.get(out_format, -1)}, {channels}, {str(stepped).lower()},"
                            f" {name}, {len(rows)}}},")
        lines += [f"constexpr Variant {op.name}Variants[] = {{", *variants, "};"]
        parameters = []
        for name, kind, default in op.parameters:
            number = formats[default] if kind == "format" else -1 if default == "None" else 0
            number = int(default) if default and default.lstrip("-").isdigit() else number
            kind = KINDS.get(kind, kind if kind in HINTS else "integer")
            parameters.append(f'{{"{name}", Kind::{kind}, {str(default is None).lower()}, {number}}}')
        lines.append(f"constexpr Parameter {op.name}Parameters[] = {{{', '.join(parameters)}}};")
    lines.append("constexpr Operation operations[] = {")
    for op in OPERATIONS:
        text = f"{op.name}{signature(op)}\n--\n\n" + documentation(op, said, functions)
        lines.append(f'    {{"{op.name}", {quoted(text)},\n     Shape::{op.shape}, {str(op.in_place).lower()},'
                     f" {op.name}Parameters, {len(op.parameters)}, {op.name}Variants, {len(op.variants)}}},")
    lines.append("};")
    return "\n".join(lines) + "\n"


def formats():
    """Format, for C++."""
    entries = "".join(f"  {name} = {number},\n" for number, (name, _) in enumerate(FORMATS))
    return f"// Made by tools/generate.py.\n#pragma once\nnamespace vekpy {{\nenum Format : int {{\n{entries}}};\n}}\n"


def enumerations(found):
    lines = ['"""Enumerations, made from the headers by tools/generate.py."""', "", "from enum import IntEnum", ""]
    found = {**found, "Format": ("Pixels of pictures.", [(n, i, said) for i, (n, said) in enumerate(FORMATS)])}
    found.pop("Fields", None)  # Format names them
    for name, (comment, entries) in sorted(found.items()):
        lines += ["", f"class {name}(IntEnum):", f'    """{comment}"""', ""]
        for entry, number, said in entries:
            lines.append(f"    {entry} = {number}" + (f"  #: {said}" if said else ""))
        lines.append("")
    names = ", ".join(f'"{name}"' for name in sorted(found))
    return "\n".join(lines) + f"\n\n__all__ = [{names}]\n"


def stub(found, said, functions):
    lines = ["# The operations on images, made by tools/generate.py.",
             "from typing import Any, Dict, Optional, Sequence, Tuple, Union", "",
             f"from ._enums import {', '.join(sorted(set(found) - {'Fields'} | {'Format'}))}",
             "from ._types import Image, Kernel, Point, Size, Taps, Value", ""]
    for op in OPERATIONS:
        text = "\n".join(f"    {line}".rstrip() for line in documentation(op, said, functions).split("\n"))
        lines += [f"def {op.name}{signature(op, True)}:", f'    r"""{text.strip()}"""', ""]
    lines += ["documentation: Dict[str, str]", "", "def __getattr__(name: str) -> Any: ...", ""]
    return "\n".join(lines)


def main():
    include = headers.include_directory()
    functions, said, found = headers.functions(include), headers.comments(include), headers.enumerations(include)
    sources, package = Path(sys.argv[1]), Path(sys.argv[2])
    texts = "\n".join(f'    {{"{name}", {quoted(chr(10).join(comment))}}},' for name, comment in sorted(said.items())
                      if name[0] != "_")
    inc = table(functions, said) + (
        "// What the C++ headers say about their functions and classes.\n"
        f"constexpr struct {{ const char *name, *text; }} documentation[] = {{\n{texts}\n}};\n")
    for path, text in ((sources / "operations.inc", inc), (sources / "formats.inc", formats()),
                       (package / "_enums.py", enumerations(found)), (package / "_vek.pyi", stub(found, said, functions))):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)


if __name__ == "__main__":
    main()
