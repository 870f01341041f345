"""Builds the module by the project's own CMake; all else stands in pyproject.toml."""

import os
import re
import subprocess
import sys
from pathlib import Path

from setuptools import Extension, setup
from setuptools.command.build_ext import build_ext

root = Path(__file__).resolve().parent.parent
build = Path(os.environ.get("SELU_PYTHON_BUILD", root / "build" / "python"))


def version() -> str:
    """The version that the CMake project has."""
    text = (root / "CMakeLists.txt").read_text(encoding="utf-8")
    found = re.search(r"project\(SeluUtils VERSION ([0-9.]+)", text)
    if found is None:
        raise RuntimeError("CMakeLists.txt names no version")
    return found.group(1)


class CMakeBuild(build_ext):
    """Configures, builds and installs the component `python` into the package."""

    def build_extension(self, ext: Extension) -> None:
        package = Path(self.get_ext_fullpath(ext.name)).resolve().parent
        cmake = ["cmake", "-S", str(root), "-B", str(build), "-DCMAKE_BUILD_TYPE=Release",
                 "-DSELU_BUILD_PYTHON=ON", f"-DPython3_EXECUTABLE={sys.executable}"]
        for part in ("TESTS", "TOOLS", "EXAMPLES"):
            cmake.append(f"-DSELU_BUILD_{part}=OFF")
        jobs = os.environ.get("SELU_JOBS") or str(os.cpu_count() or 1)
        subprocess.run(cmake, check=True)
        subprocess.run(["cmake", "--build", str(build), "-j", jobs], check=True)
        subprocess.run(["cmake", "--install", str(build), "--component", "python",
                        "--strip", "--prefix", str(package)], check=True)
        # A wheel holds no links: each library goes by the name under which others look for it.
        for link in package.glob("*.so*"):
            if link.is_symlink():
                os.replace(link.resolve(), link)


(build / "wheel").mkdir(parents=True, exist_ok=True)
setup(
    version=version(),
    ext_modules=[Extension("seluutils._core", sources=[])],
    cmdclass={"build_ext": CMakeBuild},
    # Nothing is written beside the sources.
    options={"build": {"build_base": str(build / "wheel")},
             "egg_info": {"egg_base": str(build / "wheel")}},
)
