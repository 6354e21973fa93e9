#!/usr/bin/env python3
"""Runs the table of cases against the built program, natively or under Wine. Ends with 1 if a case fails."""

import argparse
import difflib
import fnmatch
import os
import re
import shutil
import sys
import tempfile

import cases
import extended
import life
import outputs
from places import Native, Wine

LOCKED = "locked"  # the folder that an unprivileged case may not enter


def prepare(case, folder):
    """The case's working folder with its files."""
    os.mkdir(folder)
    for name, content in case.files.items():
        path = os.path.join(os.fsencode(folder), os.fsencode(name))
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)
    if case.unprivileged:
        os.chmod(os.path.join(folder, LOCKED), 0)


def shown(text):
    """Lines to compare, with carriage returns and cut where they are huge."""
    lines = text.replace("\r", "\\r").splitlines() or ["(nothing)"]
    return [line if len(line) < 500 else f"{line[:200]}... ({len(line)} characters)" for line in lines]


def difference(what, wanted, found):
    """Nothing if they agree, else the lines that tell how they don't."""
    if isinstance(wanted, re.Pattern):
        if wanted.fullmatch(found):
            return []
        wanted = f"(a pattern) {wanted.pattern}"
    if wanted == found:
        return []
    lines = list(difflib.unified_diff(shown(wanted), shown(found), f"{what} expected", f"{what} found", "", "", 2, ""))
    return lines or [f"{what}: differs beyond what is shown here"]


def check(place, case, folder):
    """What is wrong with the case, in lines."""
    prepare(case, folder)
    transcript_file = folder + ".transcript"
    with open(transcript_file, "wb"):
        os.chmod(transcript_file, 0o666)
    environment = {"CORVANE_TRANSCRIPT": place.library_path(transcript_file), **case.settings}
    result = place.run(case, folder, environment)
    if case.unprivileged:
        os.chmod(os.path.join(folder, LOCKED), 0o700)
    with open(transcript_file, encoding="utf-8") as file:
        transcript = file.read()
    problems = [f"killed after {case.limit} seconds"] if result.late else []
    if case.code == cases.CRASHED:
        if not place.crashed(result.code):
            problems.append(f"exit code {result.code}, expected that of a crash")
    else:
        wanted = place.exit_code(case.code)
        problems += [] if result.code == wanted else [f"exit code {result.code}, expected {wanted}"]
        problems += difference("standard error", "", result.errors.decode(errors="replace"))
    problems += difference("standard output", case.output, result.output.decode(errors="replace"))
    return problems + difference("transcript", place.transcript(case), transcript)


def further_checks(place, options, root):
    """What the program does beside handing mail over."""
    if options.life:
        yield from life.checks(place)
    elif not options.extended:
        yield from outputs.checks(place, root)


def run_all(options, root):
    passed = failed = 0
    with (Wine if options.wine else Native)(options, root) as place:
        table = extended.all_cases if options.extended else cases.all_cases
        # Under Wine the runner of the bundle has what needs the recording library.
        rows = [case for case in (table(place) if not options.life else ()) if not case.skip
                and fnmatch.fnmatch(case.name, options.only) and not (place.wine and case.mail == "recording")]
        results = [(case.name, check(place, case, os.path.join(root, str(i)))) for i, case in enumerate(rows)]
        results += further_checks(place, options, root) if options.only == "*" else []
    for name, problems in results:
        passed, failed = (passed, failed + 1) if problems else (passed + 1, failed)
        if problems:
            print("\n    ".join([f"FAIL {name}", *problems]))
    print(f"{passed} passed, {failed} failed")
    return failed == 0 and passed > 0


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for name in ("program", "library", "extended-library", "no-entry-library", "life-probe"):
        parser.add_argument(f"--{name}", required=True)
    parser.add_argument("--extended", action="store_true", help="run the cases of the Extended route alone")
    parser.add_argument("--life", action="store_true", help="look at the start and the stop of the foundation alone")
    parser.add_argument("--faults", action="store_true", help="the program has the fault hook")
    parser.add_argument("--wine", help="what runs a Windows program")
    parser.add_argument("--only", default="*", help="a pattern of case names")
    options = parser.parse_args()
    root = tempfile.mkdtemp(prefix="corvane-e2e-")
    os.chmod(root, 0o755)  # an unprivileged case runs as another user
    os.umask(0o022)
    try:
        return 0 if run_all(options, root) else 1
    finally:
        shutil.rmtree(root)


if __name__ == "__main__":
    sys.exit(main())
