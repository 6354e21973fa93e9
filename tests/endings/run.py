#!/usr/bin/env python3
"""Processes that end on a failure: what they show and how they end. Natively or under Wine."""

import argparse
import signal
import subprocess
import sys

LIMIT = 60  # seconds; a message box that nobody answers waits for ever
STATIC = "Internal Program Error:\nAssertion failed: (  )\nsrc\\broken, 7.\n(  ).\n"
OUTER = "Internal Program Error:\nAssertion failed: (  )\nsrc\\outer, 1.\n(  )."
RAISED = "Internal Program Error:\nsrc\\outer, 1."
DOUBLE = "Double internal error!\nApplication terminated."
ABORTED = "aborted"


def shown(*texts):
    return "".join(f"shown with style 4112: {text}\n" for text in texts)


# name, program, words, standard output (where boxes show an icon, it stands in the place of the star), exit code
CASES = (
    ("a static object fails", "static", ["-r:ann"], STATIC, 255),
    ("a failure inside a failure", "endings", ["double"], shown(OUTER, DOUBLE), ABORTED),
    ("a failure inside a report", "endings", ["exception"], shown(RAISED, DOUBLE), ABORTED),
    ("the 65th memory exception", "endings", ["pool"],
     "".join(f"{n} kept\n" for n in range(65)) + "box Tessarix: Not enough memory!*\nabort\n", ABORTED),
)


def text_of(output):
    return output.decode(errors="replace").replace("\r\n", "\n")


def problems_of(case, options):
    _, program, words, output, code = case
    command = [getattr(options, program), *words]
    aborted, icon = -signal.SIGABRT, ""
    if options.wine:
        command.insert(0, options.wine)
        aborted, icon = 3, " [x]"  # the code is that of the run-time's abort
    try:
        result = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, timeout=LIMIT, check=False)
    except subprocess.TimeoutExpired as late:
        yield f"killed after {LIMIT} seconds: {late.stdout!r} {late.stderr!r}"
        return
    wanted = aborted if code == ABORTED else code
    if result.returncode != wanted:
        yield f"exit code {result.returncode}, expected {wanted}"
    output = output.replace("*", icon)
    if text_of(result.stdout) != output:
        yield f"shown {text_of(result.stdout)!r}, expected {output!r}"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--static", required=True, help="the program with the static object that fails")
    parser.add_argument("--endings", required=True)
    parser.add_argument("--wine", help="what runs a Windows program")
    options = parser.parse_args()
    failed = 0
    for case in CASES:
        problems = list(problems_of(case, options))
        failed += bool(problems)
        if problems:
            print("\n    ".join([f"FAIL {case[0]}", *problems]))
    print(f"{len(CASES) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
