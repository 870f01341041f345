"""Writes the Python reference for Sphinx: a page for each public module of seluutils, and a line for each name.

    docs_python.py OUT

A public function, class or method without a docstring is an error.
"""
import importlib
import inspect
import pkgutil
import sys
from pathlib import Path

import seluutils


#: Bases whose members a page leaves out.
NOT_OURS = "object, tuple, BaseException, Exception, RuntimeError, ValueError, pybind11_object"


def titled(text, line="="):
    return f"{text}\n{line * len(text)}\n\n"


def modules():
    yield "seluutils", seluutils
    for found in pkgutil.walk_packages(seluutils.__path__, "seluutils."):
        if any(part.startswith("_") for part in found.name.split(".")):
            continue
        yield found.name, importlib.import_module(found.name)


def public(name, module):
    listed = getattr(module, "__all__", None)
    for key in listed if listed is not None else vars(module):
        value = getattr(module, key)
        if inspect.ismodule(value) or key.startswith("_"):
            continue
        here = getattr(value, "__module__", "").startswith("seluutils")
        if (inspect.isfunction(value) or inspect.isclass(value) or inspect.isbuiltin(value)) and here \
                and (listed is not None or value.__module__ == name):
            yield key, value


def first_line(value):
    return (inspect.getdoc(value) or "").strip().split("\n\n")[0].replace("\n", " ")


def main():
    out, problems, count = Path(sys.argv[1]), [], 0
    out.mkdir(parents=True, exist_ok=True)
    index = titled("Python") + "Every public name of the package ``seluutils``. Points, offsets and sizes are in the order of the\n" \
        "array's axes, ``[z, y, x]``; only names that end in ``_xyz`` are Cartesian.\n\n"
    pages = []
    for name, module in modules():
        names = list(public(name, module))
        text = titled(name) + f".. automodule:: {name}\n\n"
        index += titled(name, "-") + (first_line(module) or "") + "\n\n"
        for key, value in names:
            count += 1
            if not inspect.getdoc(value):
                problems.append(f"{name}.{key} has no docstring")
            kind = "class" if inspect.isclass(value) else "function"
            extra = f"   :members:\n   :inherited-members: {NOT_OURS}\n" if kind == "class" else ""
            if inspect.isclass(value):
                for method, _ in inspect.getmembers(value, inspect.isfunction):
                    # A method that overrides one says what that says.
                    if not method.startswith("_") and not inspect.getdoc(getattr(value, method)):
                        problems.append(f"{name}.{key}.{method} has no docstring")
            text += f".. auto{kind}:: {name}.{key}\n{extra}\n"
            index += f"- :doc:`{key} <{name}>`: {first_line(value)}\n"
        index += "\n"
        (out / f"{name}.rst").write_text(text)
        pages.append(name)
    index += ".. toctree::\n   :hidden:\n\n" + "".join(f"   {page}\n" for page in pages)
    (out / "index.rst").write_text(index)
    for problem in problems:
        print(problem, file=sys.stderr)
    print(f"{count} names of {len(pages)} Python modules")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
