"""What the README shows of Python does what it says."""

from __future__ import annotations

import contextlib
import io
import os
import re
from pathlib import Path


def test_the_lines_of_the_readme_print_what_it_says() -> None:
    text = (Path(os.environ["SELU_SOURCE_DIR"]) / "README.md").read_text(encoding="utf-8")
    found = re.search(r"```python\n(.*?)```\n\nprints [^`]*`([^`]*)` first", text, re.DOTALL)
    assert found is not None
    lines, first = found.groups()
    assert len(lines.splitlines()) == 5
    printed = io.StringIO()
    with contextlib.redirect_stdout(printed):
        exec(lines, {})
    assert printed.getvalue().splitlines()[0] == first
    assert len(printed.getvalue().splitlines()) == 13
