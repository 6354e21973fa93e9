#!/usr/bin/env python3
"""Runs the table of cases against the built native program. Ends with 1 if a case fails."""

import argparse
import difflib
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile

import cases
import extended
import life
from places import Native

LIMIT = 90  # seconds


def start(place, case, folder, transcript):
    """The run's exit code, output and errors, and the files that it leaves beside the program: name -> text."""
    program = pathlib.Path(place.programs[case.mail])
    there = set(program.parent.iterdir())
    environment = {**place.environment, "CORVANE_TRANSCRIPT": str(transcript), **case.environment}
    command = [*(["sh", "-c", case.shell] if case.shell else []), program, *case.words]
    with subprocess.Popen(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, start_new_session=True) as process:
        try:
            output, errors = process.communicate(timeout=LIMIT)
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)  # whatever is left of it
            return f"none within {LIMIT} seconds", *process.communicate(), {}
    left = {path.name: path.read_bytes() for path in set(program.parent.iterdir()) - there}
    for name in left:
        (program.parent / name).unlink()
    return process.returncode, output, errors, {
        name: content.decode("utf-16-le" if content.startswith(b"\xff\xfe") else "utf-8") for name, content in left.items()}


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
    for name, content in case.files.items():
        path = folder / os.fsdecode(name)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
    rows = {root: ["[{}\\Software\\Ostrel\\Tessarix]".format(key),
                   *('"{}"="{}"'.format(name, value.replace("\\", "\\\\")) for name, value in values.items())]
            for root, key, values in (("user", "HKEY_CURRENT_USER", case.user), ("machine", "HKEY_LOCAL_MACHINE", case.machine))}
    place.set_registry(case.mail == "extended", **rows)
    transcript = folder / ".transcript"
    transcript.touch()
    code, output, errors, left = start(place, case, folder, transcript)
    problems = [] if place.ends(case, code) else [f"exit code {code}, expected {case.code}"]
    problems += difference("standard error", "", errors.decode(errors="replace")) if case.code != cases.CRASHED else []
    problems += difference("standard output", case.output, output.decode(errors="replace"))
    for name in sorted({*left, *case.left}):
        problems += difference(name, case.left.get(name, "(no such file)"), left.get(name, "(no such file)"))
    return problems + difference("transcript", place.transcript(case), transcript.read_text(encoding="utf-8"))


def run_all(options, root):
    failed = count = 0
    with Native(options, root) as place:
        place.copy_others()
        for table in (cases, life, extended):
            for case in table.all_cases(place):
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
    for name in ("program", "library", "extended-library", "no-entry-library", "life-probe"):
        parser.add_argument(f"--{name}", required=True)
    parser.add_argument("--only", default="", help="a part of the cases' names")
    parser.set_defaults(extended=False)
    with tempfile.TemporaryDirectory(prefix="corvane-e2e-") as root:
        return 0 if run_all(parser.parse_args(), root) else 1


if __name__ == "__main__":
    sys.exit(main())
