#!/usr/bin/env python3
"""Turns what the programs under bench/ measured into tables.

    scripts/bench_table.py RESULTS [--command TEXT] [--document FILE]

RESULTS is the folder that scripts/bench fills: the families' files of Google Benchmark (*.json), memory.json, and the
files of callgrind. Prints the tables as Markdown; with --document also puts them between the two markers of that file.
Fails if a contender gave another answer than it should."""

import argparse
import datetime
import fractions
import json
import os
import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent.parent
FAMILIES = ["neighbors", "bayes", "trees", "rules", "decision_rule", "archive"]
BEGIN = "<!-- what follows is written by scripts/bench -->"
END = "<!-- what precedes is written by scripts/bench -->"
NANOSECONDS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


class Contender:
    def __init__(self, name):
        self.workload, _, rest = name.rpartition("/")
        self.role, _, self.name = rest.partition(":")
        self.time = None  # nanoseconds of processor time: median
        self.spread = None  # standard deviation over mean
        self.error = None


def read_contenders(path):
    """The contenders of one file in their order, and the file's context."""
    content = json.loads(path.read_text())
    found = {}
    for record in content["benchmarks"]:
        contender = found.setdefault(record["run_name"], Contender(record["run_name"]))
        if record.get("error_occurred"):
            contender.error = record["error_message"]
        elif record["run_type"] == "aggregate" and record["aggregate_name"] == "cv":
            contender.spread = record["cpu_time"]
        elif record["run_type"] == "iteration" or record["aggregate_name"] == "median":
            contender.time = record["cpu_time"] * NANOSECONDS[record["time_unit"]]
    return list(found.values()), content["context"]


def with_unit(nanoseconds):
    for unit in ("s", "ms", "us"):
        if nanoseconds >= NANOSECONDS[unit]:
            return f"{nanoseconds / NANOSECONDS[unit]:.3g} {unit}"
    return f"{nanoseconds:.3g} ns"


def ratio_text(ratio):
    return f"1/{1 / ratio:.1f}" if ratio < 0.995 else f"{ratio:.2f}"


class Workload:
    """One row: everyone who did the same work."""

    def __init__(self, name, contenders):
        self.name = name
        self.contenders = [c for c in contenders if c.time is not None]

    def by_role(self, role):
        return [c for c in self.contenders if c.role == role]

    def ours(self):
        return self.by_role("ours")[0]  # what an application uses comes first

    def fastest(self, role, without=None):
        fitting = [c for c in self.by_role(role) if without is None or without not in c.name]
        return min(fitting, key=lambda c: c.time, default=None)

    def ratio(self, other):
        return self.ours().time / other.time


def judge(workload, reach):
    """What is to be reached, and whether it is."""
    limit = float(fractions.Fraction(reach["at_most"]))
    if reach["against"] == "time":
        return f"at most {with_unit(limit)}", workload.ours().time <= limit
    other = workload.fastest(reach["against"], reach.get("without"))
    if other is None:
        return None
    what = {"rival": "best rival", "floor": "floor", "literal": "literal formula"}[reach["against"]]
    if "without" in reach:
        what = f"best without {reach['without']}: {other.name}"
    ratio = workload.ratio(other)
    text = f"not behind the {what}" if limit == 1.0 else f"at most {reach['at_most']} of the {what}"
    return f"{text} (now {ratio_text(ratio)})", ratio <= limit


def judgements(workload, reaches):
    fitting = [reach for reach in reaches if re.fullmatch(reach["workload"], workload.name)]
    if not fitting and workload.by_role("rival"):
        fitting = [{"against": "rival", "at_most": "1"}]
    return [j for j in (judge(workload, reach) for reach in fitting) if j is not None]


def described(contenders):
    return "; ".join(f"{with_unit(c.time)} ({c.name})" for c in contenders if c is not None) or "-"


def ratio_table(workloads, reaches):
    lines = ["| workload | ours | best rival | floor | ratio to the rival | reach | reached? |",
             "|---|---|---|---|---|---|---|"]
    for workload in workloads:
        rival = workload.fastest("rival") or workload.fastest("literal")
        judged = judgements(workload, reaches)
        lines.append(f"| {workload.name} | {with_unit(workload.ours().time)} | {described([rival])} "
                     f"| {described(workload.by_role('floor'))} | {ratio_text(workload.ratio(rival)) if rival else '-'} "
                     f"| {'; '.join(text for text, _ in judged) or '-'} "
                     f"| {', '.join('yes' if good else '**no**' for _, good in judged) or '-'} |")
    return lines


def full_table(workloads):
    lines = ["| workload | who | median | spread |", "|---|---|---|---|"]
    for workload in workloads:
        for contender in workload.contenders:
            spread = "-" if contender.spread is None else f"{100 * contender.spread:.1f} %"
            lines.append(f"| {workload.name} | {contender.role}: {contender.name} | {with_unit(contender.time)} | {spread} |")
    return lines


def growth_table(contenders):
    series = {}
    for contender in contenders:
        _, name, size, work = contender.workload.split("/")
        if contender.time is not None:
            per_unit = contender.time / float(work.partition("=")[2])
            series.setdefault(name, []).append((size.partition("=")[2], contender.time, per_unit))
    lines = ["| what grows; unit of work | size: time (time per unit) | per unit, last to first |", "|---|---|---|"]
    for name, points in series.items():
        cells = ", ".join(f"{size}: {with_unit(time)} ({with_unit(unit)})" for size, time, unit in points)
        lines.append(f"| {name} | {cells} | {points[-1][2] / points[0][2]:.2f} |")
    return lines


def memory_table(figures):
    lines = ["| what | bytes | at most | reached? |", "|---|---|---|---|"]
    for figure in figures:
        good = "yes" if figure["bytes"] <= figure["limit"] else "**no**"
        lines.append(f"| {figure['name']} | {figure['bytes']:.0f} | {figure['limit']:.1f} | {good} |")
    return lines


def instruction_table(folder):
    """From the files of callgrind, one for each operation, in the order in which they were written."""
    rows = []
    for path in folder.glob("callgrind.out.*"):
        text = path.read_text()
        name = re.search(r"^desc: Trigger: Client Request: (.*)$", text, re.MULTILINE)
        total = re.search(r"^(?:totals|summary): (\d+)$", text, re.MULTILINE)
        if name and total:
            rows.append((int(path.suffix[1:]), name.group(1), int(total.group(1))))
    return ["| operation | instructions |", "|---|---|"] + [f"| {name} | {total:,} |" for _, name, total in sorted(rows)]


def processor():
    match = re.search(r"^model name\s*:\s*(.*)$", pathlib.Path("/proc/cpuinfo").read_text(), re.MULTILINE)
    return match.group(1) if match else "an unknown processor"


def compiler():
    done = subprocess.run(["c++", "--version"], capture_output=True, text=True, check=False)
    return done.stdout.partition("\n")[0] or "an unknown compiler"


def heading(versions, command):
    libraries = ", ".join(f"{name} {version}" for name, version in sorted(versions.items()))
    return [f"Measured on {datetime.date.today().isoformat()} by `{command}`: {processor()}, {os.cpu_count()} processors, "
            f"one of them used; {compiler()}; compared with {libraries or 'nobody'}."]


def put_into(document, lines):
    text = document.read_text()
    before, begin, rest = text.partition(BEGIN)
    _, end, after = rest.partition(END)
    if not begin or not end:
        sys.exit(f"{document}: the markers are missing")
    document.write_text("\n".join([before + begin, "", *lines, "", end + after]))


def all_tables(folder, command):
    """The lines of all tables for which there are results, and what went wrong."""
    workloads, versions, everyone, growth = {}, {}, [], []
    known = {"date", "host_name", "executable", "num_cpus", "mhz_per_cpu", "cpu_scaling_enabled", "caches", "load_avg",
             "library_build_type"}
    for path in [folder / f"{family}.json" for family in [*FAMILIES, "sklearn", "scaling"]]:
        if path.exists():
            contenders, context = read_contenders(path)
            versions.update({name: value for name, value in context.items() if name not in known})
            everyone += contenders
            if path.stem == "scaling":
                growth = contenders
                continue
            for contender in contenders:
                workloads.setdefault(contender.workload, []).append(contender)
    rows = [Workload(name, contenders) for name, contenders in workloads.items()]
    rows = [row for row in rows if row.by_role("ours")]
    lines = []
    if rows:
        reaches = json.loads((HERE / "bench/reach.json").read_text())
        lines += [*heading(versions, command), "", *ratio_table(rows, reaches)]
    if growth:
        lines += ["", "## Growth", "", *growth_table(growth)]
    if (folder / "memory.json").exists():
        lines += ["", "## Memory", "", *memory_table(json.loads((folder / "memory.json").read_text()))]
    if list(folder.glob("callgrind.out.*")):
        lines += ["", "## Instructions", "", *instruction_table(folder)]
    if rows:
        lines += ["", "## All figures", "", *full_table(rows)]
    return lines, [f"{c.workload}: {c.name}: {c.error}" for c in everyone if c.error]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("results", type=pathlib.Path)
    parser.add_argument("--command", default="scripts/bench")
    parser.add_argument("--document", type=pathlib.Path)
    arguments = parser.parse_args()
    lines, errors = all_tables(arguments.results, arguments.command)
    print("\n".join(lines))
    if errors:
        sys.exit("\n".join(errors))
    if arguments.document:
        put_into(arguments.document, lines)


main()
