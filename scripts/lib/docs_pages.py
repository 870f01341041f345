"""Makes the copied pages ready for Sphinx: links out of docs/, and the list of commands.

    docs_pages.py SOURCE ROOT

A link to a file of the project that is no page becomes the name of the file; one that leads to nothing is an error.
"""
import re
import sys
from pathlib import Path

LINK = re.compile(r"(?<!!)\[([^\]]+)\]\(((?:\.\./)+[^)#]+)(#[^)]*)?\)")


def pages(source, root):
    problems = []
    for file in sorted(source.rglob("*.md")):
        if "reference" in file.relative_to(source).parts or file.name == "changelog.md":
            continue
        place = root / "docs" / file.relative_to(source).parent

        def replaced(found, place=place, file=file):
            target = (place / found[2]).resolve()
            if target.is_relative_to(root / "docs"):
                return found[0]
            if not target.exists():
                problems.append(f"{file.relative_to(source)}: there is no {found[2]}")
            return f"{found[1]} (`{target.relative_to(root)}`)" if found[1].strip("`") != str(target.relative_to(root)) \
                else f"`{target.relative_to(root)}`"

        file.write_text(LINK.sub(replaced, file.read_text()))
    return problems


def commands(folder):
    lines = ["# Command line", "", "Every command of `selu`, from its own description.", ""]
    names = []
    for file in sorted(folder.glob("*.md"), key=lambda file: (file.stem != "selu", file.stem)):
        text = file.read_text().split("\n")
        lines.append(f"- [`{text[0].removeprefix('# ')}`]({file.name}): {text[2]}")
        names.append(file.stem)
    lines += ["", "```{toctree}", ":hidden:", "", *names, "```", ""]
    (folder / "index.md").write_text("\n".join(lines))


def main():
    source, root = Path(sys.argv[1]), Path(sys.argv[2])
    problems = pages(source, root)
    commands(source / "reference" / "commands")
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
