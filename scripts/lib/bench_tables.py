#!/usr/bin/env python3
"""Writes benchmark results into the tables of Markdown files.

Usage: bench_tables.py --commit ID RESULT.json... -- FILE.md...

A result is what a benchmark writes with --benchmark_out=Cooccurrence.json; its name is the family's.
In the files, what stands between

    <!-- bench Cooccurrence: 256.3 -->
    <!-- /bench -->

becomes a table of the family's rows whose names match the regular expression (all rows without
one), below a line that says on what it was measured. The fastest repetition counts. Families
without a result keep their tables. A run of this library may have further columns, such as
"columns": {"memory": "3 MiB"}, as texts.
"""
import argparse
import json
import pathlib
import re
import sys

OURS = "SeluUtils"
MARKED = re.compile(r"(<!-- bench (\w+)(?:: (.*?))? -->\n).*?(<!-- /bench -->)", re.DOTALL)
SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def processor():
    """The name, family and model of the processor and its clock rate."""
    facts = {}
    for line in pathlib.Path("/proc/cpuinfo").read_text().splitlines():
        key, _, value = line.partition(":")
        facts.setdefault(key.strip(), value.strip())
    name = facts.get("model name", "unknown processor")
    if "cpu family" in facts:
        name += f" (family {facts['cpu family']}, model {facts.get('model', '?')})"
    if "cpu MHz" in facts:
        name += f", {float(facts['cpu MHz']) / 1000:.1f} GHz"
    return name


class Family:
    """The fastest time of each contestant of each row, in the order of the benchmark."""

    def __init__(self, path):
        result = json.loads(path.read_text())
        context = result["context"]
        self.compiler = context.get("compiler", "unknown compiler")
        self.date = context["date"][:10]
        self.rows = {}
        self.peers = []
        self.columns = {}
        # Interleaved runs come in any order.
        for run in sorted(result["benchmarks"], key=lambda run: run["family_index"]):
            if run["run_type"] == "iteration" and not run.get("error_occurred"):
                self.add(run)

    def add(self, run):
        name = re.sub(r"/(iterations|repeats|min_time):[^/]*", "", run["run_name"])
        # Times that a peer took of itself in a process of its own are real times.
        clock = "real_time" if name.endswith("/manual_time") else "cpu_time"
        name = name.removesuffix("/manual_time")
        row, _, contestant = name.rpartition("/")
        if not row:
            return
        seconds = run[clock] * SECONDS[run["time_unit"]]
        items = run.get("items_per_second", 0) * seconds
        if contestant != OURS and contestant not in self.peers:
            self.peers.append(contestant)
        if "columns" in run:
            self.columns[row] = run["columns"]
        times = self.rows.setdefault(row, {})
        if contestant not in times or seconds < times[contestant][0]:
            times[contestant] = (seconds, items)

    def table(self, pattern, commit):
        rows = {row: times for row, times in self.rows.items()
                if OURS in times and re.search(pattern, row)}
        if not rows:
            raise SystemExit(f"no row matches {pattern!r}; there are {', '.join(self.rows)}")
        peers = [peer for peer in self.peers if any(peer in times for times in rows.values())]
        more = list(dict.fromkeys(name for row in rows for name in self.columns.get(row, ())))
        lines = [f"{processor()}; {self.compiler}; {self.date}; commit {commit}.", "",
                 "| what | " + OURS + " |" + "".join(f" / {peer} |" for peer in peers) +
                 "".join(f" {name} |" for name in more),
                 "|---|---|" + "---|" * (len(peers) + len(more))]
        lines += [f"| {row} | {duration(times[OURS])} |" +
                  "".join(f" {ratio(times, peer)} |".replace("  ", " ") for peer in peers) +
                  "".join(f" {self.columns.get(row, {}).get(name, '')} |" for name in more)
                  for row, times in rows.items()]
        return "\n".join(lines) + "\n"


def duration(time):
    seconds, items = time
    if items:
        seconds /= items
    for unit, size in (("ns", 1e-6), ("µs", 1e-3), ("ms", 1.0)):
        if seconds < size:
            return f"{seconds / size * 1000:.3g} {unit}"
    return f"{seconds:.3g} s"


def ratio(times, peer):
    if peer not in times:
        return ""
    value = times[OURS][0] / times[peer][0]
    return f"1/{float(f'{1 / value:.2g}'):.0f}" if value < 0.01 else f"{value:.2g}"


def write(path, families, commit):
    def replaced(match):
        begin, family, pattern, end = match.groups()
        if family not in families:
            return match.group(0)
        return begin + families[family].table(pattern or "", commit) + end

    text = path.read_text()
    new = MARKED.sub(replaced, text)
    if new != text:
        path.write_text(new)
        print(f"{path}: tables written")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--commit", required=True, help="what was measured")
    parser.add_argument("results", nargs="+", type=pathlib.Path, metavar="RESULT.json")
    if "--" not in sys.argv:
        parser.error("the files to write to come behind --")
    split = sys.argv.index("--")
    arguments = parser.parse_args(sys.argv[1:split])
    families = {path.stem: Family(path) for path in arguments.results}
    for file in sys.argv[split + 1:]:
        write(pathlib.Path(file), families, arguments.commit)


if __name__ == "__main__":
    main()
