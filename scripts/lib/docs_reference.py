"""Writes the C++ reference for Sphinx from Doxygen's XML and the heads of the headers.

    docs_reference.py XML HEADER-ROOTS NAMES OUT

A page for each header: what its head says, its example, then every public class, function, type and constant with
its comment. NAMES has sentences for names that mean the same everywhere (::MorePoints: ...) or that the headers
leave to their place (CSize::x: ...). A public name that has neither a comment nor a sentence there is an error.
"""
import re
import sys
import xml.etree.ElementTree as ElementTree
from collections import defaultdict
from pathlib import Path

WALKS = r"Visitor|Walker|Run\.h|CutSlice|PlaneSection|RealWindow|Voxels|Boundary"
FAMILIES = [  # title, pattern of the header
    ("Texture", r"SeluUtils/(Texture/|Cooccurrence)"),
    ("Walks", rf"SeluUtils/\w*({WALKS})"),
    ("Random numbers", r"SeluUtils/Random/(?!.*(Rotation|Fisher|Direction))|pxlib2core/.*(Random|Source)"),
    ("Orientations", r"SeluUtils/(Random/|EulerRotation|Quaternion|PolarCoordinates|Matrix)"),
    ("Masks, features, distances", r"SeluUtils/(CylinderMask|ValueHelper|Metric)"),
    ("Images", r"pxlib2image/|SeluUtils/Triple|SeluBase/Neighborhood|SeluBase/Edge"),
    ("Values, errors, progress", r"pxlib2core/|SeluBase/"),
]


def plain(element):
    return " ".join("".join(element.itertext()).split()) if element is not None else ""


def escaped(text):
    return re.sub(r"([\\*`|_])", r"\\\1", text)


class Prose:
    """Doxygen's descriptions as reStructuredText."""

    def inline(self, element):
        text = escaped(element.text or "")
        for child in element:
            if child.tag == "computeroutput":
                text += f"``{plain(child)}`` "[: -1 if plain(child) else None]
            elif child.tag in ("emphasis", "bold"):
                text += f"*{plain(child)}*"
            elif child.tag == "linebreak":
                text += "\n"
            elif child.tag not in self.BLOCKS:
                text += self.inline(child)
            text += escaped(child.tail or "")
        return " ".join(text.split())

    BLOCKS = ("itemizedlist", "orderedlist", "verbatim", "programlisting", "simplesect", "parameterlist", "table")

    def blocks(self, element):
        for para in element.findall("para"):
            yield self.inline(para)
            for child in para:
                if child.tag in ("itemizedlist", "orderedlist"):
                    yield "\n".join("- " + "\n  ".join(filter(None, self.blocks(item))) for item in child)
                elif child.tag in ("verbatim", "programlisting"):
                    code = "".join(child.itertext()).strip("\n")
                    yield "::\n\n" + indented(code)
                elif child.tag == "simplesect":
                    yield "\n\n".join(self.blocks(child))
                elif child.tag in ("parameterlist", "table"):
                    raise SystemExit(f"docs_reference: write this as a sentence: {plain(child)}")

    def of(self, member):
        parts = []
        for tag in ("briefdescription", "detaileddescription", "inbodydescription"):
            found = member.find(tag)
            if found is not None:
                parts += filter(None, self.blocks(found))
        return "\n\n".join(parts)


def indented(text, by=3):
    return "\n".join(" " * by + line if line else "" for line in text.splitlines())


def signature(member):
    """As Sphinx's C++ domain reads it."""
    kind = member.get("kind")
    name = member.findtext("name")
    kept = plain(member.find("type"))
    kept = re.sub(r"\[\[[^\]]*\]\]\s*", "", kept)
    kept = re.sub(r"\b(constinit|virtual|extern|inline)\b\s*", "", kept)
    arguments = re.sub(r"\s*(=\s*(default|0))?$", "", member.findtext("argsstring") or "")
    arguments = re.sub(r"\b(override|final)\b", "", arguments)
    if kind == "typedef":
        return f"cpp:type:: {name} = {kept}" if "(" not in kept else f"cpp:type:: {name}"
    if kind == "variable":
        value = plain(member.find("initializer"))
        short = value if value and len(value) < 40 and "{" not in value else ""
        return f"cpp:var:: {kept} {name}{arguments} {short}".rstrip()
    template = member.find("templateparamlist")
    head = ""
    if template is not None:
        words = []
        for parameter in template:
            word = f"{plain(parameter.find('type'))} {parameter.findtext('declname') or ''}".strip()
            standard = plain(parameter.find("defval"))
            words.append(word + (f" = {standard}" if standard else ""))
        head = f"template<{', '.join(words)}> "
    requires = ""
    if "requires" in arguments:
        arguments, _, requires = arguments.partition("requires")
        requires = ""
    static = "static " if member.get("static") == "yes" and not kept.startswith("static") else ""
    explicit = "explicit " if member.get("explicit") == "yes" and not kept.startswith("explicit") else ""
    text = f"{head}{static}{explicit}{kept} {name}{arguments}{requires}"
    return "cpp:function:: " + " ".join(text.split())


class Names:
    def __init__(self, file):
        self.sentences, self.used = {}, set()
        for number, line in enumerate(Path(file).read_text().splitlines(), 1):
            if not line or line.startswith("#"):
                continue
            key, separator, sentence = line.partition(": ")
            if not separator:
                raise SystemExit(f"{file}:{number}: not NAME: SENTENCE")
            self.sentences[key] = sentence

    def find(self, owner, name):
        for key in (f"{owner}::{name}", f"::{name}"):
            if key in self.sentences:
                self.used.add(key)
                return escaped(self.sentences[key])
        return ""


class Reference:
    def __init__(self, xml, roots, names):
        self.prose, self.names, self.problems = Prose(), Names(names), []
        self.roots = roots
        self.entries = defaultdict(list)  # header -> (line, title, brief, text)
        self.nested = defaultdict(list)
        compounds = [ElementTree.parse(file).getroot().find("compounddef") for file in sorted(xml.glob("*.xml"))]
        compounds = [one for one in compounds if one is not None and "Impl" not in one.findtext("compoundname", "")]
        self.classes = {one.findtext("compoundname"): one for one in compounds
                        if one.get("kind") in ("class", "struct") and one.get("prot", "public") == "public"
                        and one.findtext("compoundname").startswith("ORVA::")}
        for name in self.classes:
            outer = name.rpartition("::")[0]
            if outer in self.classes:
                self.nested[outer].append(name)
        for name, one in self.classes.items():
            if name.rpartition("::")[0] not in self.classes and "<" not in name:
                self.add(one, name.removeprefix("ORVA::"), self.class_text(one))
        for one in compounds:
            if one.get("kind") == "namespace" and one.findtext("compoundname") == "ORVA":
                for members in self.by_header(one).values():
                    for group in self.groups(members, ""):
                        self.add(group[0], group[0].findtext("name"), self.member_text(group, ""))

    def by_header(self, namespace):
        members = defaultdict(list)
        for member in namespace.iter("memberdef"):
            members[member.find("location").get("file")].append(member)
        for found in members.values():
            found.sort(key=lambda member: int(member.find("location").get("line")))
        return members

    def add(self, element, title, text):
        place = element.find("location")
        header = place.get("file")
        for root in self.roots:
            header = header.removeprefix(str(root) + "/")
        brief = self.prose.of(element) or self.names.find(title, "class") or self.names.find("", title)
        self.entries[header].append((int(place.get("line")), title, brief, text))

    def says(self, member, owner):
        text = self.prose.of(member)
        if text:
            return text
        name = member.findtext("name")
        return self.names.find(owner, "constructor" if name == owner.split("::")[-1] else name)

    def is_plumbing(self, member, owner):
        """What every class of values has: copies, moves and their assignments, destructors, friends."""
        name, arguments = member.findtext("name"), member.findtext("argsstring") or ""
        short = owner.split("::")[-1]
        copies = re.match(rf"\(\s*(const\s+)?{short}(<\w+>)?\s*(const)?\s*&&?\s*\w*\s*\)", arguments) is not None
        return (name.startswith("~") or member.get("kind") == "friend" or "=delete" in arguments
                or (name in (short, "operator=") and (copies or "=default" in arguments))
                or (name == "operator=" and arguments.startswith(f"({short} "))
                or name.startswith("@"))

    def groups(self, members, owner):
        """Overloads, and variables of one declaration, that share a comment, with the one that has it first."""
        groups = []
        for member in members:
            if member.get("prot") != "public" or self.is_plumbing(member, owner):
                continue
            first = groups[-1][0] if groups else None
            shares = first is not None and not self.prose.of(member) and member.get("kind") == first.get("kind") and (
                (member.get("kind") == "function" and first.findtext("name") == member.findtext("name"))
                or (member.get("kind") == "variable" and self.place(first) == self.place(member)
                    and self.prose.of(first)))
            if shares:
                groups[-1].append(member)
            else:
                groups.append([member])
        return groups

    def place(self, member):
        return member.find("location").get("file"), member.find("location").get("line")

    def siblings(self, member):
        """The overloads in its class; they share what the first of them says."""
        owner = next(one for one in self.classes.values() if member in list(one.iter("memberdef"))) \
            if member.findtext("definition", "").count("::") > 1 else None
        members = owner.iter("memberdef") if owner is not None else ()
        return [one for one in members if one.findtext("name") == member.findtext("name") and one is not member]

    def inherits(self, member):
        return member.find("reimplements") is not None

    def member_text(self, group, owner):
        first = group[0]
        name = first.findtext("name")
        full = f"{owner}::{name}".removeprefix("::")
        if first.get("kind") == "enum":
            return self.enum_text(first, owner)
        says = self.says(first, owner)
        if not says and any(self.prose.of(other) for other in self.siblings(first)):
            says = "The same from other arguments."
        if not says and self.inherits(first):
            says = "As in the base class."
        if not says:
            self.problems.append(f"{full}{first.findtext('argsstring') or ''} "
                                 f"({first.find('location').get('file')}) has no comment")
        directive, _, line = signature(first).partition(":: ")
        lines = [line] + [signature(other).partition(":: ")[2] for other in group[1:]]
        lines = list(dict.fromkeys(lines))
        joined = ("\n" + " " * (len(directive) + 6)).join(lines)
        return f".. {directive}:: {joined}\n\n{indented(says)}\n"

    def enum_text(self, member, owner):
        name = member.findtext("name")
        says = self.says(member, owner)
        values = [one.findtext("name") for one in member.findall("enumvalue")]
        if not says:
            self.problems.append(f"{owner}::{name} ({member.find('location').get('file')}) has no comment")
        text = f".. cpp:enum-class:: {name}\n\n{indented(says)}\n\n"
        for value, element in zip(values, member.findall("enumvalue"), strict=True):
            about = self.prose.of(element) or self.names.find(name, value)
            text += f"   .. cpp:enumerator:: {value}\n\n{indented(about, 6)}\n\n"
        return text

    def class_text(self, one):
        full = one.findtext("compoundname")
        owner = full.removeprefix("ORVA::")
        short = owner.split("::")[-1]
        says = self.prose.of(one) or self.names.find(owner, "class") or self.names.find("", short)
        if not says:
            self.problems.append(f"{owner} ({one.find('location').get('file')}) has no comment")
        template = ""
        parameters = one.find("templateparamlist")
        if parameters is not None:
            words = [f"{plain(p.find('type'))} {p.findtext('declname') or ''}".strip() for p in parameters]
            template = f"template<{', '.join(words)}> "
        bases = [plain(base) for base in one.findall("basecompoundref") if base.get("prot") == "public"]
        bases = [base.removeprefix("ORVA::") for base in bases if "Impl" not in base]
        tail = f" : public {', public '.join(bases)}" if bases else ""
        kind = "cpp:struct" if one.get("kind") == "struct" else "cpp:class"
        text = f".. {kind}:: {template}{short}{tail}\n\n{indented(says)}\n\n"
        if "terator" in short:
            return text  # the standard's names
        members = [m for section in one.findall("sectiondef") for m in section.findall("memberdef")]
        members.sort(key=lambda member: int(member.find("location").get("line")))
        for group in self.groups(members, owner):
            text += indented(self.member_text(group, owner)) + "\n\n"
        for inner in self.nested.get(full, []):
            text += indented(self.class_text(self.classes[inner])) + "\n\n"
        return text


def head_of(root_files, header):
    """What the head of a header says, and its example."""
    says, example = [], []
    for line in root_files[header].read_text().splitlines():
        if line == "#pragma once":
            break
        if line.startswith("//   ") or (line == "//" and example):
            example.append(line[5:])
        elif line.startswith("//"):
            says.append(line[2:].strip())
    return " ".join(" ".join(says).split()), "\n".join(example).rstrip()


def page_of(header):
    return header.removesuffix(".h").replace("/", "-")


def family_of(header):
    return next(title for title, pattern in FAMILIES if re.match(pattern, header))


def first_sentence(text):
    flat = " ".join(text.split("\n\n")[0].split())
    found = re.match(r"(.*?[^.]\.)(\s+[A-Z]|$)", flat)
    return found[1] if found else flat


def titled(text, line="="):
    return f"{text}\n{line * len(text)}\n\n"


def write(reference, files, out):
    out.mkdir(parents=True, exist_ok=True)
    index = defaultdict(list)
    for header, entries in sorted(reference.entries.items()):
        says, example = head_of(files, header)
        title = Path(header).stem
        entries.sort()
        text = f".. cpp:namespace:: ORVA\n\n{titled(title)}{escaped(says)}\n\n"
        code = f"#include <{header}>\n" + (f"\n{example}" if example else "")
        text += f".. code-block:: cpp\n\n{indented(code)}\n\n"
        text += "\n\n".join(entry[3] for entry in entries)
        (out / f"{page_of(header)}.rst").write_text(text + "\n")
        index[family_of(header)].append((header, says, entries))
    lines = titled("C++")
    lines += "Every public name with what it is for. The head of a page says how to include it and shows an example that\n"
    lines += "is compiled and run with the tests. All names are in the namespace ``ORVA``.\n\n"
    for title, _ in FAMILIES:
        lines += titled(title, "-")
        for header, _, entries in index[title]:
            for _, name, brief, _ in entries:
                lines += f"- :doc:`{name} <{page_of(header)}>`: {first_sentence(brief)}\n"
        lines += "\n.. toctree::\n   :hidden:\n\n" + "".join(f"   {page_of(h)}\n" for h, _, _ in index[title]) + "\n"
    (out / "index.rst").write_text(lines)


def main():
    xml, roots, names, out = sys.argv[1:]
    roots = [Path(root) for root in roots.split(":")]
    reference = Reference(Path(xml), roots, names)
    files = {str(f.relative_to(root)): f for root in roots for f in root.rglob("*.h")}
    write(reference, files, Path(out))
    unused = sorted(set(reference.names.sentences) - reference.names.used)
    problems = reference.problems + [f"{names}: nothing is called {key} without a comment" for key in unused]
    for problem in problems:
        print(problem, file=sys.stderr)
    total = sum(len(entries) for entries in reference.entries.values())
    print(f"{total} classes, functions and constants of {len(reference.entries)} headers")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
