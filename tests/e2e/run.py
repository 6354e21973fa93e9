#!/usr/bin/env python3
"""Runs the table of cases against the built native program. Ends with 1 if a case fails."""

import argparse
import difflib
import os
import pathlib
import re
import subprocess
import sys
import tempfile

import cases
import extended
import life
from places import ABORTED, CRASHED, PROBES, Native


def difference(what, wanted, found):
    """Nothing if they agree, else the lines that tell how they don't."""
    if wanted == found or isinstance(wanted, re.Pattern) and wanted.fullmatch(found):
        return []
    wanted = wanted.pattern if isinstance(wanted, re.Pattern) else wanted
    # Huge lines are cut.
    lines = [[line if len(line) < 500 else f"{line[:200]}... ({len(line)} characters)"
              for line in text.replace("\r", "\\r").splitlines() or ["(nothing)"]] for text in (wanted, found)]
    return list(difflib.unified_diff(*lines, f"{what} expected", f"{what} found", "", "", 2, "")) or [f"{what} differs"]


def check(place, case, folder):
    """What is wrong with the case, in lines."""
    try:
        found = place.start(case, folder)
    except subprocess.TimeoutExpired as late:
        return [str(late)]
    problems = [] if place.ends(case, found.code) else [f"exit code {found.code}, expected {case.code}"]
    problems += difference("standard error", "", found.errors) if case.code not in (CRASHED, ABORTED) else []
    problems += difference("standard output", case.output, found.output)
    for name in sorted({*found.left, *case.left}):
        problems += difference(name, case.left.get(name, "(no such file)"), found.left.get(name, "(no such file)"))
    return problems + difference("transcript", place.transcript(case), found.transcript)


def run_all(options, root):
    failed = count = 0
    place = Native(options, root)
    for name, program in zip(PROBES, (options.life_probe, options.endings, options.static_failure), strict=True):
        place.add_program(name, program)
    place.add_program("missing", options.program)
    place.add_program("no entry", options.program, options.no_entry_library)
    for case in (case for table in (cases, life, extended) for case in table.all_cases(place)):
        if options.only in case.name:
            count += 1
            folder = pathlib.Path(root, str(count))
            folder.mkdir()
            problems = check(place, case, folder)
            failed += bool(problems)
            print("".join(f"{problem}\n    " for problem in [f"FAIL {case.name}", *problems] if problems), end="")
    print(f"{count - failed} passed, {failed} failed")
    return failed == 0 and count > 0


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for name in ("program", "library", "extended-library", "no-entry-library", "life-probe", "endings",
                 "static-failure"):
        parser.add_argument(f"--{name}", required=True)
    parser.add_argument("--only", default="", help="a part of the cases' names")
    options = parser.parse_args()
    # Where links can be made.
    with tempfile.TemporaryDirectory(prefix="e2e-", dir=os.path.dirname(os.path.abspath(options.program))) as root:
        return 0 if run_all(options, root) else 1


if __name__ == "__main__":
    sys.exit(main())
