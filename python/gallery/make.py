"""Makes all pictures of the gallery: python make.py [FOLDER] [NAME ...]."""

from __future__ import annotations

import runpy
import sys
from pathlib import Path

import matplotlib


def main() -> None:
    matplotlib.use("Agg")
    here = Path(__file__).resolve().parent
    folder = Path(sys.argv[1] if len(sys.argv) > 1 else "gallery")
    folder.mkdir(parents=True, exist_ok=True)
    names = sys.argv[2:] or sorted(path.stem for path in here.glob("*.py") if path.stem != "make")
    for name in names:
        picture = runpy.run_path(str(here / f"{name}.py"))["picture"]
        picture().savefig(folder / f"{name}.png", dpi=90)
        print(folder / f"{name}.png", flush=True)


if __name__ == "__main__":
    main()
