"""What the public headers declare and say: prototypes, enumerations and comments."""

import inspect
import re
from pathlib import Path


class Function:
    """A function of the C interface: its parameters as (type, name), and its comment."""

    def __init__(self, name, parameters, comment):
        self.name, self.parameters, self.comment = name, parameters, comment


def _plain(comment):
    """The text of a comment without its decoration and Doxygen's words."""
    lines = [re.sub(r"^\s*(/\*\*<?|///<?|\*/|\*)? ?", "", line.replace("*/", "")) for line in comment.split("\n")]
    text = inspect.cleandoc("\n".join(line.rstrip() for line in lines))
    text = re.sub(r"^@(name|addtogroup|defgroup|file)\b.*$|^@[{}]$", "", text, flags=re.M)
    return re.sub(r"@quirk\b", "Quirk:", re.sub(r"\n{3,}", "\n\n", text)).strip()


def snake(name):
    """wholeFrame -> whole_frame, yCbCrToRgb -> ycbcr_to_rgb."""
    name = re.sub(r"[yY]CbCr", "Ycbcr", name)
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])", "_", name).lower()


def _visible(header):
    """A header without what is not for its users."""
    return re.sub(r"^ *///? @cond.*?@endcond", "", header.read_text(), flags=re.S | re.M)


def functions(include):
    """All exported functions, by name."""
    found = {}
    for header in sorted(include.glob("vek/*.h")):
        text, comment = header.read_text(), ""
        pattern = r"/\*\*(?!<).*?\*/|^VEK_API (?!extern)[^;]*?(\w+)\(([^;]*)\);"
        for match in re.finditer(pattern, text, re.S | re.M):
            if match[0].startswith("/**"):
                said = _plain(match[0])
                comment = said if said else comment
                continue
            parameters = []
            for parameter in match[2].replace("\n", " ").split(","):
                parts = re.match(r"\s*(.*?)\s*(\w+)((?:\[\d*\])*)\s*$", parameter)
                if parts[1]:
                    parameters.append((re.sub(r"\s+", " ", parts[1]) + parts[3], parts[2]))
            found[match[1]] = Function(match[1], parameters, comment)
    return found


def comments(include):
    """What the C++ interface says about each of its functions and classes: a text for each name."""
    said = {}
    for header in sorted(include.glob("vek/**/*.hpp")):
        text = _visible(header)
        for match in re.finditer(r"((?:^ *///(?!<).*\n)+)([^;{]*)", text, re.M):
            comment, declaration = _plain(match[1]), re.sub(r"\balignas\(.*?\)", "", match[2])
            name = re.search(r"\b(\w+)\(", declaration)
            kind = re.match(r"\s*(?:template <[^>]*>\s*)?(?:class|struct|enum class) (\w+)", declaration)
            if kind or name:
                texts = said.setdefault((kind or name)[1], [])
                if comment not in texts and not re.match(r"(The same|Any of|Either).* in a new image", comment):
                    texts.append(comment)
    return said


def enumerations(include):
    """The enumerations of the C++ interface, and VekStatusValue: {name: (comment, [(name, value, comment)])}."""
    values, found = {}, {}
    for header in sorted(include.glob("vek/*.h")):
        for body in re.findall(r"^enum \w+ \{(.*?)^\};", header.read_text(), re.S | re.M):
            for name, number in re.findall(r"(\w+)\s*=\s*(-?\w+)", re.sub(r"/\*.*?\*/", "", body, flags=re.S)):
                values[name] = int(number, 0)
    for header in sorted(include.glob("vek/**/*.hpp")):
        pattern = r"((?:^ *///[^\n]*\n)+) *enum class (\w+)[^{]*\{(.*?)^ *\};"
        for comment, name, body in re.findall(pattern, _visible(header), re.S | re.M):
            entries, number = [], 0
            for entry in re.findall(r"^ *(\w+)(?: *= *(\w+))?,? *(?:///< *(.*))?$", body, re.M):
                if entry[1]:
                    number = values[entry[1]] if entry[1] in values else int(entry[1])
                entries.append((snake(entry[0]), number, entry[2]))
                number += 1
            found[name] = (_plain(comment), entries)
    text = (include / "vek/vek.h").read_text()
    statuses = re.search(r"enum VekStatusValue \{(.*?)^\};", text, re.S | re.M)[1]
    entries = []
    for name, number, comment in re.findall(r"vekSts(\w+)\s*=\s*(-?\d+),?\s*/\*\*<(.*?)\*/", statuses, re.S):
        said = re.sub(r"\s+", " ", comment).strip()
        entries.append((snake(re.sub(r"(Err|Wrn)$", "", name)) if name != "NoErr" else "ok", int(number), said))
    found["Status"] = ("What a call ended with: below 0 an error, above 0 a result with a reservation.", entries)
    return found


def include_directory():
    """include/ of the library's sources."""
    here = Path(__file__).resolve().parent
    return next(d for d in (here.parents[1] / "include", here.parent / "library/include") if d.is_dir())
