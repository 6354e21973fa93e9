#!/usr/bin/env python3
"""Makes the test bundle for Windows: the built test programs with the files they need, and every table of cases as two
files, for Windows and for Wine, which a program of ours reads where there is no Python.

They are in UTF-16. Each field is `key value`, with U+E000 between it and the next:

    case NAME                  ends the run before
    program PATH               from the bundle's folder
    line TEXT                  the whole command line
    limit SECONDS
    client simple, extended    the recording library that must be registered as mail client
    user, machine NAME=VALUE   settings of the foundation
    env NAME=VALUE             environment variables
    files NUMBER               the folder below `files` whose content the run's folder has
    code N, output TEXT, transcript TEXT    what is expected; output and transcript may be missing
    output~, transcript~ PATTERN            the same with a pattern
    claim                      Wine answers otherwise
    skip REASON                it cannot be tried
"""

import argparse
import json
import pathlib
import re
import subprocess
import sys
import types
import zipfile

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path += [str(TESTS / "e2e"), str(TESTS / "endings")]

import cases
import endings
import extended
import life
import places


FOLDER = "{bundle}"  # the runner puts its own folder there
ABORTED = 3  # what the run-time's abort ends with


class Bundle(places.Windows):
    """A Windows that is not known yet; or Wine, for the rows which that answers in its own way."""

    def __init__(self, wine, on_extended_route):
        super().__init__(types.SimpleNamespace(extended=on_extended_route), FOLDER)
        self.wine = wine

    def folder(self):
        return self.root

    def locale(self, name):
        return {}


def expected(key, wanted):
    """A field of the run's answer: a text, or a pattern in the dialect of the C++ library."""
    if not isinstance(wanted, re.Pattern):
        return f"{key} {wanted}"
    text = wanted.pattern
    if text.startswith("(?s)"):
        text = re.sub(r"\\.|\.", lambda match: match[0] if len(match[0]) > 1 else r"[\s\S]", text[4:])
    return f"{key}~ {text}"


def answer(place, case):
    """What comes of a case in that place."""
    code = places.ACCESS_VIOLATION if case.code == places.CRASHED else place.exit_code(case.code)
    return [f"code {code}", expected("output", case.output), expected("transcript", place.transcript(case))]


def table_fields(table, on_extended_route, wine, kept):
    """A table of the end-to-end suite. What the runs' folders have is kept, by the number of the folder."""
    programs = {"recording": "program", "missing": "program", "no entry": "noentry"}
    here, there = Bundle(wine, on_extended_route), Bundle(not wine, on_extended_route)
    for case, other in zip(table(here), table(there), strict=True):
        yield from (f"case {case.name}", f"program {programs[case.mail]}\\corvane.exe", f"limit {case.limit}",
                    f"line {here.line(case)}", f"client {'extended' if on_extended_route else 'simple'}")
        if case.skip or case.mail == "missing":
            yield f"skip {case.skip or 'Windows has a MAPI library of its own'}"
        elif wine and case.mail in places.Wine.overrides:
            yield "skip it takes its own library if it isn't told otherwise before it starts"
        yield from (f"env {name}={value}" for name, value in case.settings.items())
        if case.files:
            kept += [] if case.files in kept else [case.files]
            yield f"files {kept.index(case.files)}"
        yield from answer(here, case)
        if not wine and answer(here, case) != answer(there, other):
            yield "claim "


def program_fields(name, program, words, limit, code=0, output=None, reports=False):
    """A run that needs nothing but its program. Its text is compared with line ends of either kind; Wine's debugger
    reports behind it."""
    line = " ".join(Bundle.quote(word) for word in [program, *words])
    yield from (f"case {name}", f"program {program}", f"limit {limit}", f"line {line}", f"code {code}")
    if output is not None:
        pattern = re.escape(output).replace("\\\n", "\r?\n")
        yield expected("output", re.compile("(?s)" + pattern + ".*" if reports else pattern))


def unit_fields(build):
    """The test programs, as the build starts them."""
    listing = subprocess.run(["ctest", "--show-only=json-v1"], cwd=build, stdout=subprocess.PIPE, check=True).stdout
    for test in json.loads(listing)["tests"]:
        words = [word for word in test["command"] if not word.endswith("wine-run")]
        if words[0].startswith(str(build / "tests")) and words[0].endswith(".exe"):
            limit = next(entry["value"] for entry in test["properties"] if entry["name"] == "TIMEOUT")
            program = words[0][len(str(build)) + 1:].replace("/", "\\")
            yield from program_fields(test["name"], program, words[1:], int(limit))


def all_fields(build, wine, kept):
    yield from unit_fields(build)
    for name, program, words, output, code in endings.CASES:
        program = {"static": "staticfailure"}.get(program, program)
        code = ABORTED if code == endings.ABORTED else code & 0xFFFFFFFF
        yield from program_fields(name, f"tests\\{program}.exe", words, endings.LIMIT, code, output)
    for name, command, user, machine, told, stops in life.probe_rows():
        code = life.BREAKPOINT if stops else 0
        yield from program_fields(name, "tests\\lifeprobe.exe", [command], life.LIMIT, code, told, wine and stops)
        yield from (f"user {key}={value}" for key, value in user.items())
        yield from (f"machine {key}={value}" for key, value in machine.items())
    yield from table_fields(cases.all_cases, False, wine, kept)
    yield from table_fields(extended.all_cases, True, wine, kept)


def files(build):
    """The built files, each with its place in the bundle."""
    for pattern in ("*.exe", "*.reg", "providersearch/*.exe", "languages/*.dll", "mapilibrary/**/*.dll"):
        for file in (build / "tests").glob(pattern):
            yield file, str(file.relative_to(build))
    for name in ("staticfailure", "endings"):
        yield build / "bin" / f"{name}.exe", f"tests/{name}.exe"
    yield build / "tests/e2e/life/lifeprobe.exe", "tests/lifeprobe.exe"
    yield build / "tests/bundle/runtests.exe", "runtests.exe"
    for folder in ("program", "noentry"):
        yield build / "bin/corvane.exe", f"{folder}/corvane.exe"
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

        for name, wine in ("cases.txt", False), ("cases-wine.txt", True):
            kept = []
            text = "\ue000".join(all_fields(build, wine, kept))
            add(name, text.encode("utf-16-le", "surrogatepass"))
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
