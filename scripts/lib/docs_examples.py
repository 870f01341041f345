"""Runs the examples of the pages, and compares what they print with what the pages say.

    docs_examples.py DOCS EXAMPLES PROGRAMS SELU [PYTHON]

A block of sh or python that is followed at once by a block of text, or by an empty comment "<!-- runs -->", is run, in a
folder that the page's blocks share; the text is what it prints. A line "..." in the text stands for any lines. A
block of C++ must be part of an example in EXAMPLES, whose programs have been built in PROGRAMS; "prints `text`" behind it,
or "prints" and a block of text, is part of what that example prints. PYTHON is an interpreter with seluutils;
without one the blocks of Python are not run.
"""
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

BLOCK = re.compile(r"^```(\w+)\n(.*?)^```\n(?:\n?```text\n(.*?)^```$|\n?(<!-- runs -->))?", re.M | re.S)


def matches(printed, expected):
    pattern = "".join(r"(?:.*\n)*?" if line.strip() == "..." else re.escape(line.rstrip()) + r" *\n"
                      for line in expected.splitlines())
    return re.fullmatch(pattern, printed.rstrip() + "\n" if printed.strip() else "") is not None


# What a part of a C++ example prints is said behind it: prints `this`, or prints and a block of text.
PRINTS = re.compile(r"^```cpp\n(.*?)^```\n\nprints(?: `([^`]+)`|\n\n```text\n(.*?)^```$)", re.M | re.S)


class Examples:
    def __init__(self, docs, examples, programs, selu, python):
        self.docs, self.programs, self.python, self.problems = docs, programs, python, []
        self.sources = {file.stem: file.read_text() for file in examples.glob("*.cpp")}
        self.environment = dict(os.environ, PATH=f"{selu.parent}:{os.environ['PATH']}", LC_ALL="C.UTF-8")
        self.count = {"sh": 0, "python": 0, "cpp": 0}

    def command(self, language, code):
        if language == "sh":
            return ["bash", "-euo", "pipefail", "-c", code]
        return [self.python, "-c", code] if self.python else None

    def run(self, page, language, code, expected, folder):
        command = self.command(language, code)
        if command is None:
            return
        done = subprocess.run(command, cwd=folder, env=self.environment, capture_output=True, text=True, timeout=120)
        self.count[language] += 1
        if done.returncode != 0:
            self.problems.append(f"{page}: this fails\n{code}{done.stderr}")
        elif expected is not None and not matches(done.stdout, expected):
            self.problems.append(f"{page}: this prints something else\n{code}It prints\n{done.stdout}The page says\n{expected}")

    def page(self, file):
        name = file.relative_to(self.docs)
        with tempfile.TemporaryDirectory() as folder:
            for language, code, expected, runs in BLOCK.findall(file.read_text()):
                if language == "cpp" and not any(code in text for text in self.sources.values()):
                    self.problems.append(f"{name}: no example in examples/ has\n{code}")
                if language in self.count and language != "cpp" and (expected or runs):
                    self.run(name, language, code, expected or None, folder)

            for code, line, text in PRINTS.findall(file.read_text()):
                stem = next((stem for stem, source in self.sources.items() if code in source), None)
                if stem is None:
                    continue  # said above
                self.count["cpp"] += 1
                if (line or text) not in self.printed[stem]:
                    self.problems.append(f"{name}: this prints something else\n{code}examples/{stem}.cpp prints\n"
                                         f"{self.printed[stem]}The page says\n{line or text}")

    def all_programs(self):
        """What each example prints, warnings and all."""
        self.printed = {}
        for stem in self.sources:
            with tempfile.TemporaryDirectory() as folder:
                done = subprocess.run([str(self.programs / f"example_{stem}")], cwd=folder, capture_output=True,
                                      text=True, timeout=120)
                self.printed[stem] = done.stdout
                if done.returncode != 0:
                    self.problems.append(f"examples/{stem}.cpp fails: {done.stderr}")


def main():
    docs, examples, programs, selu = (Path(word).resolve() for word in sys.argv[1:5])
    found = Examples(docs, examples, programs, selu, sys.argv[5] if len(sys.argv) > 5 else None)
    found.all_programs()
    for file in sorted(docs.rglob("*.md")):
        found.page(file)
    for problem in found.problems:
        print(problem, file=sys.stderr)
    print(f"{len(found.sources)} example programs and {found.count['sh']} blocks of commands, "
          f"{found.count['python']} of Python, {found.count['cpp']} of C++ run as the pages say")
    return 1 if found.problems else 0


if __name__ == "__main__":
    sys.exit(main())
