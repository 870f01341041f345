"""One change of one line of C++ at a time: where such a change can be made, and what it is.

    for mutant in mutants.of("src/a.cpp", text):  # mutant.line, .old, .new: the whole line before and after
        changed = mutant.apply(text)
"""
import dataclasses
import re

# What becomes of an operator. clang-format puts blanks around binary ones, and none into templates.
SWAPS = {
    " + ": " - ", " - ": " + ", " * ": " / ", " / ": " * ", " % ": " * ",
    " += ": " -= ", " -= ": " += ", " *= ": " += ", " |= ": " &= ", " &= ": " |= ", " ^= ": " |= ",
    " << ": " >> ", " >> ": " << ", " & ": " | ", " | ": " & ", " ^ ": " | ",
    " < ": " <= ", " <= ": " < ", " > ": " >= ", " >= ": " > ", " == ": " != ", " != ": " == ",
    " && ": " || ", " || ": " && ",
}
WORDS = {"true": "false", "false": "true", "min": "max", "max": "min", "break": "continue"}
# Lines that only declare, or that the compiler alone sees.
SKIPPED = re.compile(r"^\s*(#|//|\*|template|using |static_assert|requires|namespace|friend |public:|private:|"
                     r"protected:|case |class |struct |enum |typedef |extern |explicit |\[\[|[{}]*;?$)"
                     r"|= (default|delete)|operator|ORVA_LOCATION|noexcept\(|__attribute__|numeric_limits<")
NUMBERS = re.compile(r"^[\s\d.,{}xXa-fA-FpPuUlL+\-]+$")  # a row of a table
NUMBER = re.compile(r"(?<![\w.'\"])(\d+)(?![\w.'])")
REAL = re.compile(r"(?<![\w.])(\d+\.\d+)(?![\w.])")
WORD = re.compile(r"\b(?:(?<=std::)(?:min|max)(?=\()|(?:true|false)\b|break(?=;))")
NOT = re.compile(r"(?<=[(\s&|=])!(?=[\w(])")
STEP = re.compile(r"\+\+|--")
CONDITION = re.compile(r"^(\s*(?:\} else )?(?:if|while) )\((.*)\)( \{| \[\[.*\]\]| \S.*;)?$")
# A call or an assignment that stands alone; a type before the name would make it a declaration.
STATEMENT = re.compile(r"^(\s+)(?!return\b|throw\b|delete\b|break\b|continue\b|if\b|else\b|for\b|while\b|do\b|switch\b)"
                       r"(?:[\w:.\[\]()*]|->|\+(?=\w)|- (?=1))+(?:\(.*\)| [-+*/|&^%]?= .*);(?: //.*)?$")


@dataclasses.dataclass(frozen=True)
class Mutant:
    path: str
    line: int  # from 1 on
    old: str
    new: str
    kind: str

    def key(self):
        return f"{self.path}:{self.line}: {self.old.strip()} -> {self.new.strip()}"

    def apply(self, text):
        lines = text.split("\n")
        if lines[self.line - 1] != self.old:
            raise ValueError(f"{self.path}, line {self.line} is another")
        lines[self.line - 1] = self.new
        return "\n".join(lines)


def code_of(line):
    """The line with strings, characters and the comment at its end blanked out."""
    line = re.sub(r'"(?:[^"\\]|\\.)*"|(?<!\w)\'(?:[^\'\\]|\\.)\'', lambda found: "\x00" * len(found.group()), line)
    return re.sub(r"//.*$", lambda found: "\x00" * len(found.group()), line)


def changes(line):
    """(kind, new line) of every change of one line."""
    code = code_of(line)

    def with_part(start, end, part):
        return line[:start] + part + line[end:]

    for operator, other in SWAPS.items():
        for found in re.finditer(re.escape(operator), code):
            if found.start() > 0:
                yield f"operator{operator.rstrip()}", with_part(found.start(), found.end(), other)
    for found in NUMBER.finditer(code):
        number = int(found.group(1))
        yield "constant", with_part(*found.span(), str(0 if number == 1 else number + 1))
    for found in REAL.finditer(code):
        yield "constant", with_part(*found.span(), repr(float(found.group(1)) + 1))
    for found in WORD.finditer(code):
        yield "word", with_part(*found.span(), WORDS[found.group()])
    for found in NOT.finditer(code):
        yield "negation", with_part(*found.span(), "")
    for found in STEP.finditer(code):
        yield "step", with_part(*found.span(), "--" if found.group() == "++" else "++")
    if (found := CONDITION.match(code)) and found.group(2).count("(") == found.group(2).count(")"):
        yield "condition", f"{found.group(1)}(!({line[found.start(2):found.end(2)]})){line[found.end(2) + 1:]}"
    if STATEMENT.match(code) and code.count("(") == code.count(")"):  # not the end of a longer one
        yield "statement", f"{STATEMENT.match(code).group(1)};"


def of(path, text):
    """All mutants of a source."""
    result = []
    for number, line in enumerate(text.split("\n"), 1):
        if SKIPPED.search(line) or NUMBERS.match(line):
            continue
        for kind, new in changes(line):
            result.append(Mutant(path, number, line, new, kind))
    return result


def equivalents(text):
    """(path, old line, new line) without their indentation, of a file of such blocks:

    src/a.cpp
    - old line
    + new line
    # why no test can tell
    """
    result = set()
    for block in text.split("\n\n"):
        lines = [line for line in block.strip().split("\n") if line]
        if not lines or lines[0].startswith("#"):
            continue
        if len(lines) < 4 or not lines[1].startswith("- ") or not lines[2].startswith("+ ") or not lines[3].startswith("# "):
            raise ValueError(f"a block of equivalent mutants is not path, - old, + new, # why: {block!r}")
        result.add((lines[0].strip(), lines[1][2:].strip(), lines[2][2:].strip()))
    return result
