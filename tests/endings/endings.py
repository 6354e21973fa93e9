#!/usr/bin/env python3
"""Processes that end on a failure: what they show and how they end. Natively or under Wine."""

import argparse
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile

LIMIT = 60  # seconds
STATIC = "Internal Program Error:\nAssertion failed: (  )\nsrc\\broken, 7.\n(  ).\n"
OUTER = "Internal Program Error:\nAssertion failed: (  )\nsrc\\outer, 1.\n(  )."
RAISED = "Internal Program Error:\nsrc\\outer, 1."
DOUBLE = "Double internal error!\nApplication terminated."
ABORTED = "aborted"


def shown(*texts):
    return "".join(f"shown with style 4112: {text}\n" for text in texts)


# name, program, words, standard output, exit code
CASES = (
    ("a static object fails", "static", ["-r:ann"], STATIC, -1),
    ("a failure inside a failure", "endings", ["double"], shown(OUTER, DOUBLE), ABORTED),
    ("a handler that raises in the end", "endings", ["raising"],
     shown(OUTER, DOUBLE) + "box Tessarix: " + DOUBLE.replace("\n", "\\u000A") + " 1010\nabort\n", ABORTED),
    ("a failure inside a report", "endings", ["exception"], shown(RAISED, DOUBLE), ABORTED),
    ("the 65th memory exception", "endings", ["pool"],
     "".join(f"{n} kept\n" for n in range(65)) + "box Tessarix: Not enough memory! 1010\nabort\n", ABORTED),
    ("a call of a pure virtual function", "endings", ["purecall"], "box abort\n", ABORTED),
    ("a failure that nobody catches", "endings", ["uncaught"], "box Tessarix: Unhandled Internal Error 1010\nabort\n", ABORTED),
    ("the same without boxes", "endings", ["silent"], "box abort\n", ABORTED),
    ("the same when the foundation has stopped", "endings", ["late"], "box abort\n", ABORTED),
)

# The setting of the message log, whether its file can be written, the lines that a double error leaves.
LOGS = ((" ON ", True, [OUTER, DOUBLE]), ("banana", True, []), ("1", False, []))


def text_of(output):
    return output.decode(errors="replace").replace("\r\n", "\n")


def problems_of(case, options):
    _, program, words, output, code = case
    command = [getattr(options, program), *words]
    aborted = -signal.SIGABRT
    if options.wine:
        command.insert(0, options.wine)
        aborted = 3  # what the run-time's abort ends with
    try:
        result = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, timeout=LIMIT, check=False)
    except subprocess.TimeoutExpired as late:
        yield f"killed after {LIMIT} seconds: {late.stdout!r} {late.stderr!r}"
        return
    wanted = aborted if code == ABORTED else code & 0xFF
    if result.returncode != wanted:
        yield f"exit code {result.returncode}, expected {wanted}"
    if text_of(result.stdout) != output:
        yield f"shown {text_of(result.stdout)!r}, expected {output!r}"


def run_with_settings(program, word, root, settings, folder):
    """Natively alone: under Wine the settings would be those of all tests that run meanwhile."""
    with open(os.path.join(folder, root + ".reg"), "w", encoding="utf-16") as file:
        rows = [f'"{name}"="{value}"' for name, value in settings.items()]
        file.write("\n".join(["Windows Registry Editor Version 5.00", "",
                              rf"[{root}\Software\Ostrel\Tessarix]", *rows, ""]))
    return subprocess.run([program, word], env={**os.environ, "TESSARIX_REGISTRY": folder}, stdin=subprocess.DEVNULL,
                          capture_output=True, timeout=LIMIT, check=False)


def problems_of_log(setting, writable, lines, options):
    """The log lies beside the program, so that this one gets a folder of its own."""
    with tempfile.TemporaryDirectory() as folder:
        program = shutil.copy(options.endings, folder)
        log = os.path.join(folder, "TessarixLog.txt")
        if not writable:
            os.mkdir(log)
        result = run_with_settings(program, "double", "HKEY_LOCAL_MACHINE", {"WriteMessageLog": setting}, folder)
        found = ""
        if os.path.isfile(log):
            with open(log, encoding="utf-8", newline="") as file:
                found = file.read()
    if text_of(result.stdout) != shown(OUTER, DOUBLE):
        yield f"shown {text_of(result.stdout)!r}"
    pattern = "".join(r"\d\d:\d\d:\d\d ProcessID:\d+ " + re.escape(line) + "\r\n" for line in lines)
    if not re.fullmatch(pattern, found):
        yield f"logged {found!r}"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--static", required=True, help="the program with the static object that fails")
    parser.add_argument("--endings", required=True)
    parser.add_argument("--wine", help="what runs a Windows program")
    options = parser.parse_args()
    results = [(case[0], list(problems_of(case, options))) for case in CASES]
    if not options.wine:
        results += [(f"log {row}", list(problems_of_log(*row, options))) for row in LOGS]
    for name, problems in results:
        if problems:
            print("\n    ".join([f"FAIL {name}", *problems]))
    failed = sum(bool(problems) for _, problems in results)
    print(f"{len(results) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
