"""What Doxygen's XML says about the C interface, as HTML: groups, sections, functions and records."""

import html
import re
import subprocess
import xml.etree.ElementTree as ET

PLAIN = {"computeroutput": "code", "bold": "strong", "emphasis": "em", "itemizedlist": "ul", "orderedlist": "ol",
         "listitem": "li", "subscript": "sub", "superscript": "sup", "parblock": "div"}
SIGNS = {"ndash": "–", "mdash": "—", "times": "×", "nonbreakablespace": " ", "sp": " ", "linebreak": "<br>",
         "middot": "·", "deg": "°", "hellip": "…"}
LITERAL = ("computeroutput", "verbatim", "preformatted", "ref")
NAMES = re.compile(r"\b(?:_?veki?[A-Z]\w*(?<!Err)(?<!Wrn)|vekSts\w+|p{1,2}[A-Z]\w+|[a-z]+(?:[A-Z][a-z]+)+)\b")


class Function:
    """A function: its parameters as (type, name), and what is said about it as HTML."""

    def __init__(self, member, group, section):
        self.name, self.group, self.section = member.findtext("name"), group, section
        self.returns = "".join(member.find("type").itertext())
        self.parameters = []
        for parameter in member.findall("param"):
            type_ = "".join(parameter.find("type").itertext()).replace(" *", "*")
            if type_ != "void":
                self.parameters.append((type_, parameter.findtext("declname") + (parameter.findtext("array") or "")))
        self.brief, self.text = member.find("briefdescription"), member.find("detaileddescription")

    def prototype(self):
        lines = ",\n".join(f"  {type_} {name}" for type_, name in self.parameters)
        return f"{self.returns} {self.name}(" + (f"\n{lines});" if lines else "void);")


class Group:
    """A group of a header: a title, an introduction, sections of functions, records and numbers."""

    def __init__(self, root):
        self.name, self.title = root.findtext("compoundname"), root.findtext("title")
        self.brief, self.text = root.find("briefdescription"), root.find("detaileddescription")
        self.functions, self.others = [], []
        for section in root.findall("sectiondef"):
            header = section.findtext("header")
            for member in section.findall("memberdef"):
                if member.get("kind") == "function":
                    self.functions.append(Function(member, self.name, header))
                    self.functions[-1].line = int(member.find("location").get("line"))
                else:
                    self.others.append(member)
        self.functions.sort(key=lambda f: f.line)
        self.records = [c.get("refid") for c in root.findall("innerclass")]
        places = [int(m.find("location").get("line")) for m in root.iter("memberdef")]
        self.place = (root.find(".//location").get("file") if places else "", min(places, default=0))


class Reference:
    """All of it, and links into it."""

    def __init__(self, source, work):
        doxyfile = (source / "docs/Doxyfile").read_text()
        doxyfile += f"\nOUTPUT_DIRECTORY={work}\nGENERATE_HTML=NO\nGENERATE_XML=YES\n"
        subprocess.run(["doxygen", "-"], input=doxyfile, text=True, cwd=source, check=True)
        self.roots, self.places, self.named = {}, {}, {}
        for path in sorted((work / "xml").glob("*.xml")):
            for root in ET.parse(path).getroot().findall("compounddef"):
                self.roots[root.get("id")] = root
        groups = [Group(r) for r in self.roots.values() if r.get("kind") == "group"]
        order = {"vek/camera.h": 0, "vek/image.h": 1, "vek/vek.h": 2}
        self.c_groups = sorted((g for g in groups if g.place[0] in order),
                               key=lambda g: (order[g.place[0]], g.place[1]))
        self.cpp_groups = [g for g in groups if g.place[0].endswith(".hpp")]
        self.functions = {f.name: f for g in self.c_groups for f in g.functions}
        for group in self.c_groups:
            for member in self.roots[f"group__{group.name}"].iter("memberdef"):
                self.places[member.get("id")] = f"{group.name}.html#{member.findtext('name')}"
                if member.get("kind") == "function":
                    self.named[member.findtext("name")] = self.places[member.get("id")]
                for value in member.findall("enumvalue"):
                    self.named[value.findtext("name")] = f"{group.name}.html#{value.findtext('name')}"
                    self.places[value.get("id")] = f"{group.name}.html#{value.findtext('name')}"
            for record in group.records:
                self.places[record] = f"{group.name}.html#{record.replace('struct', '', 1)}"

    def html(self, element):
        """The contents of a description."""
        if element is None:
            return ""
        plain = html.escape if element.tag in LITERAL else self._words
        return plain(element.text or "") + "".join(
            self._element(child) + plain(child.tail or "") for child in element)

    def _words(self, text):
        """Text in which names look like names, and statuses lead to what they mean."""

        def name(match):
            place = self.named.get(match[0])
            return f'<a href="{place}"><code>{match[0]}</code></a>' if place else f"<code>{match[0]}</code>"

        return NAMES.sub(name, html.escape(text))

    def _element(self, e):
        inner = self.html(e)
        if e.tag == "para":
            blocks = ("<ul", "<ol", "<pre", "<div", "<table", "<aside")
            return inner if inner.strip().startswith(blocks) and inner.strip()[-1] == ">" else self._paragraphs(inner)
        if e.tag in PLAIN:
            return f"<{PLAIN[e.tag]}>{inner}</{PLAIN[e.tag]}>"
        if e.tag in SIGNS:
            return SIGNS[e.tag]
        if e.tag == "ref":
            place = self.places.get(e.get("refid"))
            return f'<a href="{place}"><code>{inner}</code></a>' if place else f"<code>{inner}</code>"
        if e.tag in ("verbatim", "preformatted"):
            return f'<pre class="formula" tabindex="0">{inner.strip(chr(10))}</pre>'
        if e.tag == "xrefsect":
            return f'<aside class="quirk"><strong>Quirk</strong>{self.html(e.find("xrefdescription"))}</aside>'
        if e.tag == "table":
            return f'<div class="wide" tabindex="0"><table>{inner}</table></div>'
        if e.tag == "row":
            return f"<tr>{inner}</tr>"
        if e.tag == "entry":
            cell = "th" if e.get("thead") == "yes" else "td"
            return f"<{cell}>{inner}</{cell}>"
        if e.tag == "ulink":
            return inner
        return inner

    @staticmethod
    def _paragraphs(inner):
        """A paragraph, divided where a list or formula stands in it."""
        parts = re.split(r"(<(ul|ol|pre|aside|div|table)\b.*?</\2>)", inner, flags=re.S)
        out = []
        for i in range(0, len(parts), 3):
            if parts[i].strip():
                out.append(f"<p>{parts[i].strip()}</p>")
            if i + 1 < len(parts):
                out.append(parts[i + 1])
        return "".join(out)

    def text(self, element):
        return re.sub(r"\s+", " ", "".join(element.itertext())).strip() if element is not None else ""
