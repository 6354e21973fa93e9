#!/usr/bin/env python3
"""Makes the test bundle for Windows: the built test programs with the files they need, and every table of cases as two
files, for Windows and for Wine, which a program of ours reads where there is no Python.

They are in UTF-16: fields `KEY VALUE`, with U+E000 between one and the next. `case NAME` begins a run. How it is made:
program (a path from the bundle's folder), line (all of it), limit (seconds), client (the recording library that must be
registered, simple or extended; empty for any, and without the field nothing of the machine may matter), user and machine
(settings of the foundation, NAME=VALUE; there are no others then), env (variables), files (the folder below `files`
whose content the run's folder has). What is expected: code, output, transcript, log; with `~` behind the key of a
pattern. skip: why it cannot be tried.
"""

import argparse
import json
import pathlib
import re
import subprocess
import sys
import zipfile

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path.append(str(TESTS / "e2e"))

import cases
import extended
import life
import places


FOLDER = "{bundle}"  # the runner puts its own folder there
# By what Wine is told that its own MAPI library is not for these, see check.py.
PROGRAMS = {"recording": "program\\corvane", "extended": "program\\corvane", "probe": "tests\\lifeprobe",
            "endings": "tests\\endings", "static": "tests\\staticfailure",
            "no entry": "noentry\\noentry", "missing": "missing\\missing"}


def expected(key, wanted):
    """A field of the run's answer: a text, or a pattern in the dialect of the C++ library."""
    if not isinstance(wanted, re.Pattern):
        return f"{key} {wanted}"
    text = wanted.pattern
    if text.startswith("(?s)"):
        text = re.sub(r"\\.|\.", lambda match: match[0] if len(match[0]) > 1 else r"[\s\S]", text[4:])
    return f"{key}~ {text}"


def table_fields(wine, kept):
    """The tables of the end-to-end suite. What the runs' folders have is kept, by the number of the folder."""
    place = places.Windows(None, FOLDER)
    place.wine = wine
    for case in (case for table in (life, cases, extended) for case in table.all_cases(place)):
        yield from (f"case {case.name}", f"program {PROGRAMS[case.mail]}.exe", f"limit {places.LIMIT}",
                    f"line {place.line(case)}")
        if case.mail == "missing" and not wine:
            yield "skip Windows has a MAPI library of its own"
        yield f"client {'extended' if case.mail == 'extended' else '' if case.mail in places.PROBES else 'simple'}"
        for key, values in (("env", case.environment), ("user", case.user), ("machine", case.machine)):
            yield from (f"{key} {name}={value}" for name, value in values.items())
        if case.files:
            kept += [] if case.files in kept else [case.files]
            yield f"files {kept.index(case.files)}"
        yield from (f"code {place.exit_code(case.code)}", expected("output", case.output),
                    expected("transcript", place.transcript(case)),
                    expected("log", case.left.get("TessarixLog.txt", "")))


def all_fields(build, wine, kept):
    """The test programs, as the build starts them, and the tables."""
    listing = subprocess.run(["ctest", "--show-only=json-v1"], cwd=build, stdout=subprocess.PIPE, check=True).stdout
    for test in json.loads(listing)["tests"]:
        words = [word for word in test["command"] if not word.endswith("wine-run")]
        if words[0].startswith(str(build / "tests")) and words[0].endswith(".exe"):
            limit = next(entry["value"] for entry in test["properties"] if entry["name"] == "TIMEOUT")
            program = words[0][len(str(build)) + 1:].replace("/", "\\")
            line = " ".join(map(places.Windows.quote, [program, *words[1:]]))
            yield from (f"case {test['name']}", f"program {program}", f"limit {int(limit)}", f"line {line}", "code 0")
    yield from table_fields(wine, kept)


def files(build):
    """The built files, each with its place in the bundle."""
    for pattern in ("*.exe", "languages/*.dll", "mapilibrary/**/*.dll"):
        for file in (build / "tests").glob(pattern):
            yield file, str(file.relative_to(build))
    for file in (build / "tests/e2e/life").glob("*.exe"):
        yield file, f"tests/{file.name}"
    yield build / "tests/bundle/runtests.exe", "runtests.exe"
    for mail in ("recording", "no entry", "missing"):
        yield build / "bin/corvane.exe", PROGRAMS[mail].replace("\\", "/") + ".exe"
    yield build / "tests/mapilibrary/noentry/mapi32.dll", "noentry/mapi32.dll"
    yield TESTS.parent / "docs/testing-windows.md", "README.md"


def make(build, folder):
    """Writes the bundle into the folder and returns its path. The programs go without symbols, which name our folders."""
    cache = dict(re.findall(r"^(\w+):\w+=(.*)$", (build / "CMakeCache.txt").read_text(), re.M))
    target = folder / f"corvane-{cache['CMAKE_PROJECT_VERSION']}-windows-tests.zip"
    stripped = folder / "stripped.tmp"
    with zipfile.ZipFile(target, "w") as archive:
        def add(place, data):
            # Without the time, so that two bundles of one commit are the same bytes.
            archive.writestr(zipfile.ZipInfo("corvane-tests/" + place), data, zipfile.ZIP_DEFLATED)

        for name, wine in (("cases.txt", False), ("cases-wine.txt", True)):
            kept = []
            add(name, "\ue000".join(all_fields(build, wine, kept)).encode("utf-16-le", "surrogatepass"))
        for number, contents in enumerate(kept):  # the same in both
            for name, content in contents.items():
                add(f"files/{number}/{name}", content)
        for file, place in sorted(files(build), key=lambda entry: entry[1]):
            if file.suffix in (".exe", ".dll"):
                subprocess.run([cache["CMAKE_OBJCOPY"], "--preserve-dates", "--strip-all", file, stripped], check=True)
                file = stripped
            add(place, file.read_bytes())
    stripped.unlink()
    return target


def main():
    parser = argparse.ArgumentParser(description=__doc__.partition("\n\n")[0])
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("--folder", required=True, type=pathlib.Path)
    options = parser.parse_args()
    print(make(options.build.resolve(), options.folder))


if __name__ == "__main__":
    main()
