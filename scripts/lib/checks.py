"""For the scripts in scripts/checks: running selu under watch, in parallel, with seeds that are printed.

    run = checks.run([selu, "info", "a.nrrd"], folder)    # run.code, run.out, run.error, ...
    checks.for_all(cases, judge, jobs=2)                   # judge(case) -> a finding, or None
"""
import argparse
import concurrent.futures
import os
import pathlib
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]


def parser(description, seed=1):
    """An argument parser with the options that all checks of selu share."""
    result = argparse.ArgumentParser(
        description=description, formatter_class=argparse.RawDescriptionHelpFormatter)
    result.add_argument("--seed", type=int, default=seed, help="of the random choices (%(default)s)")
    result.add_argument("--selu", type=pathlib.Path,
                        help="the application to run; built (preset release) when not given")
    result.add_argument("--jobs", type=int, default=os.cpu_count(),
                        help="runs at once (one per processor)")
    result.add_argument("--keep", type=pathlib.Path, default=ROOT / "build" / "findings",
                        help="folder for what is found (%(default)s)")
    return result


def selu_of(options):
    """The application that the options name, or a fresh build of it."""
    if options.selu is None:
        build("release", "selu")
        options.selu = ROOT / "build" / "release" / "tools" / "selu" / "selu"
    if not os.access(options.selu, os.X_OK):
        stop(f"{options.selu} is no program")
    return str(options.selu.resolve())


def build(preset, *targets):
    """Configures and builds targets of a preset, from the folder of the project."""
    subprocess.run(["cmake", "--preset", preset, "--log-level=WARNING"], cwd=ROOT, check=True,
                   stdout=subprocess.DEVNULL)
    subprocess.run(["cmake", "--build", "--preset", preset, "-j", str(os.cpu_count()), "--target",
                    *targets], cwd=ROOT, check=True, stdout=subprocess.DEVNULL)


def compile_preload(source):
    """A shared library for LD_PRELOAD, of one C source in scripts/checks."""
    library = ROOT / "build" / "checks" / (pathlib.Path(source).stem + ".so")
    library.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run(["cc", "-std=gnu11", "-O2", "-Wall", "-Wextra", "-Werror", "-shared", "-fPIC",
                    "-o", str(library), str(ROOT / "scripts" / "checks" / source), "-ldl"], check=True)
    return str(library)


class Run:
    """How a program ended: its exit code (1000 + n for signal n), output, seconds, KiB."""

    def __init__(self, code, out, error, seconds, kib, late):
        self.code, self.out, self.error = code, out, error
        self.seconds, self.kib, self.late = seconds, kib, late

    def problem(self, codes=(0, 1)):
        """What is wrong with the way it ended, or None."""
        last = self.error[-300:].decode("utf-8", "replace")
        if self.late:
            return "it did not end"
        if self.code >= 1000:
            return f"signal {self.code - 1000}: {last}"
        if self.code not in codes:
            return f"exit code {self.code}: {last}"
        if self.code == 1 and not is_sentence(self.error):
            return f"exit code 1 without one sentence: {last!r}"
        return None


def is_sentence(error):
    """Whether these bytes are the one line that selu says on standard error."""
    return error.startswith(b"selu: ") and error.count(b"\n") == 1 and error.endswith(b"\n")


def run(command, folder, environment=None, patience=120, kill_after=None):
    """Runs a program to its end; its time and memory include those of its children."""
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as error:
        started = time.monotonic()
        child = subprocess.Popen(command, cwd=folder, stdin=subprocess.DEVNULL, stdout=out,
                                 stderr=error, start_new_session=True,
                                 env={**os.environ, **(environment or {})}, preexec_fn=_no_core)
        late = threading.Event()

        def end():
            if kill_after is None:
                late.set()
            _kill(child.pid)
        timer = threading.Timer(patience if kill_after is None else kill_after, end)
        timer.start()
        _, status, usage = os.wait4(child.pid, 0)
        timer.cancel()
        child.returncode = os.waitstatus_to_exitcode(status)
        code = child.returncode if child.returncode >= 0 else 1000 - child.returncode
        out.seek(0)
        error.seek(0)
        result = Run(code, out.read(), error.read(), usage.ru_utime + usage.ru_stime,
                     usage.ru_maxrss, late.is_set())
        result.elapsed = time.monotonic() - started
        return result


def _no_core():
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def _kill(process):
    try:
        os.kill(process, signal.SIGKILL)
    except ProcessLookupError:
        pass


def for_all(cases, judge, jobs):
    """Judges all cases, some at once; gives the findings in the order of the cases."""
    with concurrent.futures.ThreadPoolExecutor(max_workers=max(1, jobs)) as pool:
        return [found for found in pool.map(judge, cases) if found is not None]


class Folder:
    """A folder for one case; what lies in it is kept where the case has found something."""

    def __init__(self, keep, name):
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="selu-check-"))
        self.keep, self.name = keep, name

    def __enter__(self):
        return self

    def finding(self, text):
        """Keeps the folder's content and gives the text, with the place."""
        target = self.keep / self.name
        shutil.rmtree(target, ignore_errors=True)
        target.parent.mkdir(parents=True, exist_ok=True)
        shutil.copytree(self.path, target, symlinks=True)
        return f"{self.name}: {text} (kept in {target})"

    def __exit__(self, *_):
        shutil.rmtree(self.path, ignore_errors=True)


def report(name, figure, findings, shown=20):
    """Prints the figure and the findings; ends the process with 1 where there are any."""
    for finding in findings[:shown]:
        print(f"{name}: {finding}", file=sys.stderr)
    if len(findings) > shown:
        print(f"{name}: and {len(findings) - shown} more", file=sys.stderr)
    print(f"{name}: {figure}, {len(findings)} findings", flush=True)
    sys.exit(1 if findings else 0)


def stop(text):
    """Ends the process with a sentence."""
    print(f"{pathlib.Path(sys.argv[0]).name}: {text}", file=sys.stderr)
    sys.exit(2)
