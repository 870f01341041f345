"""Checks executables and shared libraries that are to be shipped.

    check_binaries.py --build FOLDER --headers FOLDER FILE...

Each must be hardened (relocations read-only before main, stack protector, control-flow protection; executables
at any address), must not name the folder it was built in, must have no run path and no static TLS; a library
exports names of the namespace ORVA alone, each declared in a header, under the version of the library.
"""
import argparse
import re
import subprocess
import sys
from pathlib import Path


ENDBR64 = b"\xf3\x0f\x1e\xfa"


def run(*words):
    return subprocess.run(words, check=True, capture_output=True, text=True).stdout


def hardening(file, is_library):
    dynamic, headers = run("readelf", "-Wd", file), run("readelf", "-Wl", file)
    symbols = run("nm", "-D", file)
    if "GNU_RELRO" not in headers or "NOW" not in dynamic:
        yield "relocations can be written to"
    if not is_library and "DYN (Position-Independent Executable" not in run("readelf", "-h", file):
        yield "not position-independent"
    if "__stack_chk_fail" not in symbols and Path(file).stat().st_size > 50_000:
        yield "no stack protector"
    # The mark of the whole file is missing: Debian's start files have none, so its linker leaves it out.
    if Path(file).read_bytes().count(ENDBR64) < 20:
        yield "no control-flow protection"
    if re.search(r"GNU_STACK.*RWE", headers):
        yield "a stack that can be executed"
    if "STATIC_TLS" in dynamic:
        yield "static TLS: it may not be loaded late"
    if "RUNPATH" in dynamic or "RPATH" in dynamic:
        yield "a run path"


def traces(file, build):
    content = Path(file).read_bytes()
    if build.encode() in content:
        yield f"names the folder {build}"
    dates = set(re.findall(rb"[A-Z][a-z]{2} [ 0-3]\d 20\d\d-\d\d:\d\d:\d\d", content))
    if len(dates) > 1:
        yield f"several dates: {sorted(dates)}"


def exports(file, words):
    mangled, plain = (run("nm", flags, "--defined-only", file).splitlines() for flags in ("-D", "-DC"))
    for raw, line in zip(mangled, plain, strict=True):
        kind, symbol = raw[17:].split(" ", 1)
        symbol, _, version = symbol.partition("@@")
        name = line[19:].partition("@@")[0]
        if kind == "A":  # the version itself
            continue
        if not re.fullmatch(r"SELU_\d+\.\d+", version):
            yield f"{name} has no version"
        if not re.match(r"_Z(T[VISTC]|GV|T[hv]\w*_)?NK?4ORVA", symbol):
            yield f"{name} is not ours"
            continue
        path = re.search(r"ORVA::([\w:]+)", re.sub(r"<[^<>]*>", "", name))
        unknown = set(re.findall(r"\w+", path[1])) - words
        if unknown:
            yield f"{name}: no header has {', '.join(sorted(unknown))}"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", required=True)
    parser.add_argument("--headers", required=True)
    parser.add_argument("files", nargs="+")
    options = parser.parse_args()
    words = set()
    for header in Path(options.headers).rglob("*.h"):
        words |= set(re.findall(r"\w+", header.read_text()))
    words.add("operator")
    found, exported = [], 0
    for file in options.files:
        is_module = file.endswith(".so")
        is_library = ".so." in file or is_module
        problems = [*hardening(file, is_library), *traces(file, options.build)]
        if is_library and not is_module:
            problems += exports(file, words)
            exported += len(run("nm", "-D", "--defined-only", file).splitlines()) - 1
        found += [f"{Path(file).name}: {problem}" for problem in problems]
    for problem in found:
        print(problem, file=sys.stderr)
    if not found:
        print(f"{len(options.files)} binaries are hardened; {exported} exported names are declared in the headers")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
