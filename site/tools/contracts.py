"""What the tests' records say about a function, as rows of a table."""

import json
import re
import subprocess
from collections import Counter

OFTEN = 0.9


class Contracts:
    """The contracts of all functions, from `campaign contracts` and `campaign stack`."""

    def __init__(self, campaign, functions, statuses):
        self.functions, self.statuses, self.records = functions, statuses, {}
        text = subprocess.run([campaign, "contracts"], check=True, capture_output=True, text=True).stdout
        for record in json.loads(text):
            for name in [record["name"], *record["also"]]:
                self.records.setdefault(name, record)
        self.stacks = {}
        text = subprocess.run([campaign, "stack", "6"], check=True, capture_output=True, text=True).stdout
        for line in text.splitlines():
            words = line.split()
            self.stacks[words[0]] = list(zip(words[1::2], map(int, words[2::2])))

    def rows(self, function):
        """[(what, HTML)]"""
        record = self.records[function.name]
        self.names = self._names(function, record)
        own = record["name"] == function.name
        if self.names is None:  # a case makes several calls
            together = [f"<code>{n}</code>" for n in [record["name"], *record["also"]] if n != function.name]
            rows = [("Arguments", "as the text says" + (f"; tested together with {', '.join(together[:3])}"
                                                        if together else "")
                     + (" and others" if together[3:] else ""))]
        else:
            rows = [("Sizes", self._numbers(record, lambda t, n: "Size" in t or "Rect" in t or _is_size(n))),
                    ("Steps", self._numbers(record, lambda t, n: _is_step(n))),
                    ("Other arguments", self._others(record)),
                    ("Alignment", self._alignment(record)),
                    ("Memory touched", self._memory(record)),
                    ("Aliasing", self._aliasing(record)),
                    ("Statuses, in their order", self._order(record))]
        rows.append(("Allocates", "its state, by the library's allocator"
                     if record["allocates"] and "Alloc" in function.name else "nothing"))
        if self.stacks.get(record["name"]):
            rows.append(("Stack", ", ".join(f"{level} {_bytes(n)}" for level, n in self.stacks[record["name"]])))
        same = "the same bytes at every level"
        rows.append(("Levels", f'{same}: <a href="../guide/exactness.html">how that is tested</a>' if own else same))
        rows.append(("Threads", "calls with the same arguments and other destinations may run at the same time"
                     if record["shareable"] else "one call at a time may use a state"))
        return [(what, said) for what, said in rows if said]

    def _names(self, function, record):
        """[(type, name)] of the record's arguments, if they are the function's."""
        count = len(record["cases"][0]["arguments"])
        return function.parameters if count == len(function.parameters) and function.name == record["name"] else None

    def _refused(self, record, argument, kind):
        return [r for r in record["refused"] if r["argument"] == argument and r["kind"] == kind]

    def _numbers(self, record, wanted):
        said = []
        for i, (type_, name) in enumerate(self.names):
            if not wanted(type_, name) or type_.endswith("*"):
                continue
            limits = "has limits of its own, as the text says" if "Rect" in type_ else self._range(record, i)
            said.append(f"<code>{_plain(name)}</code> {limits}")
        return "; ".join(_merged(said))

    def _range(self, record, argument):
        cases = len(record["cases"])
        values = Counter()
        for r in self._refused(record, argument, "value"):
            for value, count in r["values"].items():
                values[int(value)] += count
        if not values:
            return "any"
        always = [v for v, n in values.items() if n >= OFTEN * cases]
        changing = [v for v in values if v not in always]
        drawn = [c["number"] for case in record["cases"] for c in case["arguments"][argument]["cells"]]
        least = min(drawn)
        low = max([v for v in always if v < least], default=None)
        high = min([v for v in always if v > max(drawn)], default=None)
        holes = sorted(v for v in always if least < v < max(drawn))
        said = []
        if low is not None and high is not None and high < 1 << 20:
            said.append(f"{low + 1} to {high - 1}")
        elif low is not None:
            said.append("at least " + str(low + 1))
        elif high is not None and high < 1 << 20:
            said.append(f"at most {high - 1}")
        if holes:
            said.append("not " + ", ".join(map(str, holes)))
        step = _multiple(drawn)
        if step > 1 and changing:
            said.append(f"multiples of {step}")
        if _is_step(self.names[argument][1]) and self._no_shorter(record, argument):
            said = ["not shorter than a row"] + said[1:]
        elif changing and not (step > 1 and len(changing) < 3):
            said.append("bounded by other arguments")
        return ", ".join(said) if said else "any"

    def _no_shorter(self, record, argument):
        """Whether in every case the largest step that is refused is just too short for the rows before it."""
        for case in record["cases"]:
            for place, cell in enumerate(case["arguments"][argument]["cells"]):
                block = _block(case, argument - 1, place)
                if block is None or not 0 < block["bytes"] - cell["refused"] <= 8:
                    return False
        return True

    def _others(self, record):
        said = []
        for i, (type_, name) in enumerate(self.names):
            if _is_step(name) or "Size" in type_ or "Rect" in type_ or _is_size(name):
                continue
            cells = record["cases"][0]["arguments"][i]["cells"]
            if cells and "number" in cells[0]:
                said.append(f"<code>{_plain(name)}</code> {self._range(record, i)}")
            elif self._refused(record, i, "contents"):
                said.append(f"<code>{_plain(name)}</code>: what it points at is checked")
        return "; ".join(_merged(said))

    def _alignment(self, record):
        said = []
        for i, (_, name) in enumerate(self.names):
            shifts = {int(v) for r in self._refused(record, i, "shift") for v in r["values"]}
            if shifts:
                said.append(f"<code>{_plain(name)}</code> {2 * max(shifts)} bytes")
        pointers = any("block" in c for a in record["cases"][0]["arguments"] for c in a["cells"])
        return ("; ".join(_merged(said)) or "any") if pointers else ""

    def _memory(self, record):
        said = []
        for i, (type_, name) in enumerate(self.names):
            for place, cell in enumerate(record["cases"][0]["arguments"][i]["cells"]):
                if "block" not in cell or cell["block"] < 0:
                    continue
                blocks = [_block(case, i, place) for case in record["cases"]]
                if None in blocks:
                    continue
                uses = {b["use"] for b in blocks}
                if len(uses) > 1 or type_.startswith("const"):  # some cases work in place
                    uses = {"reads" if type_.startswith("const") or name.startswith("pSrc") else "writes"}
                use = uses.pop()
                known = [_numbers_of(case, self.names) for case in record["cases"]]
                wide = _formula([b["bytes"] for b in blocks], known)
                high = _formula([b["rows"] for b in blocks], known)
                index = f"[{place}]" if len(record["cases"][0]["arguments"][i]["cells"]) > 1 else ""
                if high == "1":
                    extent = f"{wide} bytes" if wide else "one row"
                elif wide and high:
                    extent = f"{high} rows of {wide} bytes"
                else:
                    extent = f"{high} rows" if high else f"rows of {wide} bytes" if wide else "the rows that it needs"
                before = any(b["first"] < 0 and b["step"] >= 0 for b in blocks)
                up = any(b["step"] < 0 for b in blocks)
                extent += ", beginning before the pointer" if before else ""
                extent += ", upwards for a negative step" if up and not before else ""
                said.append(f"<code>{_plain(name)}{index}</code>: {use} {extent}")
        return "<br>".join(said)

    def _aliasing(self, record):
        uses = {b["use"] for case in record["cases"] for b in case["blocks"]}
        pointers = {i for i, a in enumerate(record["cases"][0]["arguments"]) for c in a["cells"] if "block" in c}
        if not {"writes", "reads and writes"} & uses or len(pointers) < 2:
            return ""
        pairs = {}
        for case in record["cases"]:
            seen = {}
            for i, argument in enumerate(case["arguments"]):
                for cell in argument["cells"]:
                    if "block" in cell and cell["block"] >= 0 and seen.setdefault(cell["block"], i) != i:
                        pairs.setdefault(i, set()).add(seen[cell["block"]])
        if pairs:
            last = max(pairs)
            names = [f"<code>{_plain(name)}</code>" for _, name in self.names]
            sources = " or ".join(names[j] for j in sorted(set().union(*pairs.values())) if j != last)
            return (f"in place: {names[last]} may be {sources}, the same pixels with the same step; no other overlap is "
                    "allowed")
        return "destinations must overlap neither sources nor each other"

    def _order(self, record):
        """Refusals, those that answer first at the top."""
        refused = record["refused"]
        left, ranks = set(range(len(refused))), []
        while left:
            # Nothing left answers before these. A cycle is an order that depends on values: take all.
            first = {i for i in left if not any(i in refused[j]["before"] for j in left)} or set(left)
            ranks.append(first)
            left -= first
        steps = []
        for rank in ranks:
            for status in dict.fromkeys(refused[i]["status"] for i in sorted(rank)):
                what = [self._what(refused[i]) for i in sorted(rank) if refused[i]["status"] == status]
                if steps and steps[-1][0] == status:
                    steps[-1][1].extend(what)
                else:
                    steps.append((status, what))
        items = []
        for status, what in steps:
            items.append(f"<li>{self.status(status)} for {', '.join(dict.fromkeys(what))}</li>")
        return f"<ol>{''.join(items)}</ol>" if items else "no argument is refused"

    def _what(self, refusal):
        name = _plain(self.names[refusal["argument"]][1]) if refusal["argument"] >= 0 else "the state"
        kind = {"null": " null", "shift": " misaligned", "value": "", "contents": "'s contents"}[refusal["kind"]]
        return f"<code>{name}</code>{kind}"

    def status(self, number):
        name = self.statuses.get(number, str(number))
        return f'<a href="status.html#{name}"><code>{name}</code></a>'


def _is_size(name):
    return re.fullmatch(r"(src|dst|frame)?(Width|Height|width|height|len|length|order[XY])", name) is not None


def _is_step(name):
    return re.match(r"(src|dst|frame)\w*Step", name) is not None


def _plain(name):
    return re.sub(r"\[.*", "", name)


def _bytes(n):
    return f"{n} B" if n < 10000 else f"{n / 1024:.0f} KiB"


def _multiple(values):
    for m in (64, 32, 16, 8, 4, 2):
        if all(v % m == 0 for v in values):
            return m
    return 1


def _merged(said):
    """`a` x; `b` x -> `a`, `b` x"""
    groups = {}
    for text in said:
        name, rest = text.split("</code>", 1)
        groups.setdefault(rest, []).append(name + "</code>")
    return [", ".join(names) + rest for rest, names in groups.items()]


def _block(case, argument, place):
    cells = case["arguments"][argument]["cells"]
    number = cells[place].get("block", -1) if place < len(cells) else -1
    return case["blocks"][number] if number >= 0 else None


def _numbers_of(case, names):
    """The numbers of a case by name."""
    known = {}
    for (type_, name), argument in zip(names, case["arguments"]):
        numbers = [c["number"] for c in argument["cells"] if "number" in c]
        if not numbers or _is_step(name):
            continue
        if "Size" in type_ and len(numbers) == 2:
            short = "" if name == "roiSize" else name + "."
            known[short + "width"], known[short + "height"] = numbers
        elif "Rect" in type_ and len(numbers) == 4:
            known[name + ".width"], known[name + ".height"] = numbers[2:]
        elif len(numbers) == 1:
            known[name] = numbers[0]
    return known


def _formula(values, known):
    """What all values are in terms of a few of the numbers, or nothing."""
    if len(set(values)) == 1:
        return str(values[0])
    names = [n for n in known[0] if all(n in k for k in known)]
    for name in names:
        for text, f in ((name, lambda v: v), (f"⌈{name} / 2⌉", lambda v: (v + 1) // 2), (f"⌊{name} / 2⌋",
                                                                                         lambda v: v // 2),
                        (f"⌈{name} / 8⌉", lambda v: (v + 7) // 8)):
            for factor in (1, 2, 3, 4, 8, 12, 16):
                for more in (0, 1, 2, 4, 8, -1, -2):
                    if all(v == factor * f(k[name]) + more for v, k in zip(values, known)):
                        shown = text if factor == 1 else f"{factor} {text}"
                        return shown + (f" {'+' if more > 0 else '−'} {abs(more)}" if more else "")
    for a in names:
        for b in names:
            for factor in (1, 2, 3):
                if a < b and all(v == factor * (k[a] + k[b] - 1) for v, k in zip(values, known)):
                    return (f"{factor} " if factor > 1 else "") + f"({b} + {a} − 1)"
                if a < b and all(v == factor * k[a] * k[b] for v, k in zip(values, known)):
                    return (f"{factor} " if factor > 1 else "") + f"{a} · {b}"
    return ""
