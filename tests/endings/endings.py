#!/usr/bin/env python3
"""usage: endings.py STATIC ENDINGS [WINE]

Processes that end on a failure: what they show and log and how they end. Natively or under Wine. STATIC is the program
with a static object that fails.
"""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import tempfile

STATIC = "Internal Program Error:\nAssertion failed: (  )\nsrc\\broken, 7.\n(  ).\n"
OUTER = "Internal Program Error:\nAssertion failed: (  )\nsrc\\outer, 1.\n(  )."
RAISED = "Internal Program Error:\nsrc\\outer, 1."
DOUBLE = "Double internal error!\nApplication terminated."
BOX = "box Tessarix: {} 1010\nabort\n"
TWICE = "".join(f"shown with style 4112: {text}\n" for text in (OUTER, DOUBLE)) + BOX.format(
    DOUBLE.replace("\n", "\\u000A"))
SETTINGS = """Windows Registry Editor Version 5.00
[HKEY_LOCAL_MACHINE\\Software\\Ostrel\\Tessarix]
"WriteMessageLog"=" ON "
"""

LIMIT = 60  # seconds
ABORTED = "aborted"

# name, program, words, standard output, exit code
CASES = [("a static object fails", "static", ["-r:ann"], STATIC, -1), *[
    (name, "endings", [name], output, ABORTED) for name, output in (
        ("double", TWICE),  # a failure inside a failure
        ("raising", TWICE),  # and a handler that raises in the end
        ("exception", TWICE.replace(OUTER, RAISED)),  # a failure inside the report of an exception
        ("pool", "".join(f"{n} kept\n" for n in range(65)) + BOX.format("Not enough memory!")),
        ("purecall", "box abort\n"),
        ("uncaught", BOX.format("Unhandled Internal Error")),
        ("silent", "box abort\n"),  # the same without boxes
        ("late", "box abort\n"),  # the same when the foundation has stopped
    )]]
# What is logged, without the lines of a start: the exception as what was raised and as what was shown.
LOGGED = {"double": [OUTER, DOUBLE], "raising": [OUTER, DOUBLE], "exception": [RAISED, RAISED, DOUBLE], "pool": []}


def main():
    programs, wine = dict(zip(("static", "endings"), sys.argv[1:])), sys.argv[3:]
    problems = 0
    with tempfile.TemporaryDirectory() as folder:
        # The log lies beside the program. Under Wine the settings would be those of all tests that run meanwhile.
        if not wine:
            programs["endings"] = shutil.copy(programs["endings"], folder)
        log = pathlib.Path(folder, "TessarixLog.txt")
        pathlib.Path(folder, "HKEY_LOCAL_MACHINE.reg").write_text(SETTINGS, encoding="utf-8")
        for name, program, words, output, code in CASES:
            log.unlink(missing_ok=True)
            result = subprocess.run([*wine, programs[program], *words], stdin=subprocess.DEVNULL, capture_output=True,
                                    timeout=LIMIT, check=False, env={**os.environ, "TESSARIX_REGISTRY": folder})
            aborted = 3 if wine else -signal.SIGABRT  # 3: what the run-time's abort ends with
            code = aborted if code == ABORTED else code & 0xFF
            found = result.stdout.decode(errors="replace").replace("\r\n", "\n")
            logged = log.read_bytes().decode() if log.exists() else ""
            form = "".join(r"\d\d:\d\d:\d\d ProcessID:\d+ " + re.escape(line) + "\r\n" for line in LOGGED.get(name, []))
            if (result.returncode, found) != (code, output) or not (
                    wine or name not in LOGGED or re.fullmatch(form, logged)):
                print(f"FAIL {name}: {result.returncode} {found!r}, logged {logged!r}")
                problems += 1
    print(f"{problems} of {len(CASES)} failed")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
