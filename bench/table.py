#!/usr/bin/env python3
"""usage: table.py FOLDER [FILE]

The table that `./dev bench` ends with, made of the results in FOLDER: each row with our figure, that of the best peer
and their ratio, and whether it is what is wanted. Ends with 1 if a row misses, or was not measured. When all were, the
table takes the place of the one in FILE, with the machine and the date."""

import json
import os
import re
import statistics
import sys
import textwrap
import time

from rows import ROWS

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
TIMES = ("real_time", "cpu_time")
REPETITION = re.compile(r"(repeats|min_time|iterations):|(manual|real)_time$")
START, END = "<!-- Made by ./dev bench: -->", "<!-- up to here -->"


def short(name):
    """A benchmark's name without how it was repeated and without the names of its arguments."""
    parts = [part for part in name.split("/") if not REPETITION.match(part)]
    return "/".join(re.sub(r"^(?!threads:)\w+:(?=\d+$)", "", part) for part in parts)


def load(folder):
    """What the files of results hold. One of a program in which no benchmark was asked for is empty."""
    contents = []
    for file in sorted(os.listdir(folder)):
        with open(os.path.join(folder, file), encoding="utf-8") as stream:
            contents.append(stream.read())
    return [json.loads(content) for content in contents if content]


def values_of(entry):
    """The numbers of a measurement; times are in seconds."""
    unit = SECONDS[entry["time_unit"]]
    return {key: value * (unit if key in TIMES else 1) for key, value in entry.items()
            if isinstance(value, (int, float))}


def by_name(files):
    """The values of each measurement: the median that the program gave, or that of its single runs."""
    medians, runs = {}, {}
    for entry in (entry for content in files for entry in content["benchmarks"]):
        name = short(entry["run_name"])
        if entry.get("error_occurred"):
            continue
        if entry["run_type"] == "iteration":
            runs.setdefault(name, []).append(values_of(entry))
        elif entry["aggregate_name"] == "median":
            medians[name] = values_of(entry)
    return {name: {key: statistics.median(run[key] for run in each) for key in each[0]}
            for name, each in runs.items()} | medians


def shown(seconds):
    unit = next((unit for unit in ("s", "ms", "us") if seconds >= SECONDS[unit]), "ns")
    return f"{seconds / SECONDS[unit]:.3g} {unit}"


class Result:
    """A row with its figures."""

    def __init__(self, row, measured):
        self.row = row
        self.ours = measured.get(row.ours, {}).get(row.value)
        peers = {name: measured[peer][row.value] for name, peer in row.peers.items() if peer in measured}
        self.best = min(peers, key=peers.get, default=None)
        self.peer = peers.get(self.best)
        # A peer that is not installed might have been the best one.
        self.is_complete = self.ours is not None and peers.keys() == row.peers.keys()
        self.misses = self.is_complete and row.wanted is not None and self.judged() > row.wanted

    def judged(self):
        """What is held against the wanted figure, as it is shown: a row does not miss by what nobody sees."""
        return float(f"{self.ours / self.peer if self.row.peers else self.ours:.2f}")

    def cells(self):
        wanted = "" if self.row.wanted is None else f"{self.row.wanted:g}"
        if not self.is_complete:
            return [self.row.title, "", "", "", wanted, "not measured"]
        ours = shown(self.ours) if self.row.value in TIMES else f"{self.ours:.1f}{self.row.unit}"
        peer = f"{self.best} {shown(self.peer)}" if self.best else ""
        ratio = f"{self.judged():.2f}" if self.best else ""
        return [self.row.title, ours, peer, ratio, wanted, "**misses**" if self.misses else ""]


def table(results):
    lines = [["row", "ours", "best peer", "ratio", "wanted", ""], *(result.cells() for result in results)]
    widths = [max(map(len, column)) for column in zip(*lines)]
    lines.insert(1, ["-" * width for width in widths])
    return "\n".join("| " + " | ".join(map(str.ljust, line, widths)) + " |" for line in lines)


def summary(results):
    missing = [result.row.title for result in results if result.misses]
    text = f"{len(missing)} of {len(results)} rows miss" + (": " + "; ".join(missing) if missing else "") + "."
    return textwrap.fill(text, 120)


def first_match(path, pattern, otherwise):
    with open(path, encoding="utf-8") as stream:
        match = re.search(pattern, stream.read(), re.M)
    return match.group(1) if match else otherwise


def circumstances(files):
    loads = [content["context"]["load_avg"][0] for content in files if "context" in content]
    processor = first_match("/proc/cpuinfo", r"^model name\s*: (.*)", os.uname().machine)
    system = first_match("/etc/os-release", r'^PRETTY_NAME="(.*)"', os.uname().sysname)
    return (f"{time.strftime('%Y-%m-%d', time.gmtime())}, {os.cpu_count()} processors of type {processor}, {system}.\n"
            f"The machine's load was {min(loads):.1f} to {max(loads):.1f} when a program began.")


def write(path, text):
    with open(path, encoding="utf-8") as stream:
        before, rest = stream.read().split(START)
    with open(path, "w", encoding="utf-8") as stream:
        stream.write(f"{before}{START}\n\n{text}\n\n{END}{rest.split(END)[1]}")


def main():
    folder, *files = sys.argv[1:]
    content = load(folder)
    measured = by_name(content)
    results = [Result(row, measured) for row in ROWS]
    print(table(results))
    print(summary(results))
    if not all(result.is_complete for result in results):
        print("Some rows were not measured" + "".join(f": {file} stays as it is" for file in files) + ".")
        return 1
    for file in files:
        write(file, f"{circumstances(content)}\n\n{table(results)}\n\n{summary(results)}")
    return 1 if any(result.misses for result in results) else 0


if __name__ == "__main__":
    sys.exit(main())
