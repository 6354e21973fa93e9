#!/usr/bin/env python3
"""Processes that end on a failure: what they show and log and how they end. Natively or under Wine."""

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
BOX = "box Tessarix: {} 1010\nabort\n"
LAST = BOX.format(DOUBLE.replace("\n", "\\u000A"))
ABORTED = "aborted"
SETTINGS = r"""Windows Registry Editor Version 5.00
[HKEY_LOCAL_MACHINE\Software\Ostrel\Tessarix]
"WriteMessageLog"=" ON "
"""


def shown(*texts):
    return "".join(f"shown with style 4112: {text}\n" for text in texts)


# name, word, standard output, the lines of the log (without those of a start)
CASES = (
    ("a failure inside a failure", "double", shown(OUTER, DOUBLE) + LAST, [OUTER, DOUBLE]),
    ("a handler that raises in the end", "raising", shown(OUTER, DOUBLE) + LAST, [OUTER, DOUBLE]),
    # In the log as what was raised and as what was shown.
    ("a failure inside a report", "exception", shown(RAISED, DOUBLE) + LAST, [RAISED, RAISED, DOUBLE]),
    ("the 65th memory exception", "pool",
     "".join(f"{n} kept\n" for n in range(65)) + BOX.format("Not enough memory!"), []),
    ("a call of a pure virtual function", "purecall", "box abort\n", None),
    ("a failure that nobody catches", "uncaught", BOX.format("Unhandled Internal Error"), None),
    ("the same without boxes", "silent", "box abort\n", None),
    ("the same when the foundation has stopped", "late", "box abort\n", None),
)


def problems_of(program, word, output, code, wine, folder):
    command = [*([wine] if wine else []), program, word]
    try:
        result = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, timeout=LIMIT, check=False,
                                env={**os.environ, "TESSARIX_REGISTRY": folder})
    except subprocess.TimeoutExpired as late:
        return [f"killed after {LIMIT} seconds: {late.stdout!r} {late.stderr!r}"]
    if code == ABORTED:
        code = 3 if wine else -signal.SIGABRT  # 3: what the run-time's abort ends with
    found = (result.returncode, result.stdout.decode(errors="replace").replace("\r\n", "\n"))
    return [] if found == (code, output) else [f"{found}, expected {(code, output)}"]


def problems_of_log(log, lines):
    found = ""
    if os.path.exists(log):
        with open(log, encoding="utf-8", newline="") as file:
            found = file.read()
        os.remove(log)
    pattern = "".join(r"\d\d:\d\d:\d\d ProcessID:\d+ " + re.escape(line) + "\r\n" for line in lines or [])
    return [] if lines is None or re.fullmatch(pattern, found) else [f"logged {found!r}"]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--static", required=True, help="the program with the static object that fails")
    parser.add_argument("--endings", required=True)
    parser.add_argument("--wine", help="what runs a Windows program")
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as folder:
        results = {"a static object fails": problems_of(options.static, "-r:ann", STATIC, 0xFF, options.wine, folder)}
        # The log lies beside the program. Under Wine the settings would be those of all tests that run meanwhile.
        program = options.endings if options.wine else shutil.copy(options.endings, folder)
        if not options.wine:
            with open(os.path.join(folder, "HKEY_LOCAL_MACHINE.reg"), "w", encoding="utf-16") as file:
                file.write(SETTINGS)
        for name, word, output, lines in CASES:
            results[name] = problems_of(program, word, output, ABORTED, options.wine, folder)
            if not options.wine:
                results[name] += problems_of_log(os.path.join(folder, "TessarixLog.txt"), lines)
    for name, problems in results.items():
        if problems:
            print("\n    ".join([f"FAIL {name}", *problems]))
    failed = sum(map(bool, results.values()))
    print(f"{len(results) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
