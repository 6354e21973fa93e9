#!/usr/bin/env python3
"""usage: check.py BUILD WINE [PART]

Makes the test bundle and runs it under Wine as a stranger would: from a folder with blanks, in a fresh prefix that
is Windows 10. A first run is killed.

PART is of the names of the runs that are made. Ends with 1 if one failed, a path of this machine is in the bundle, or
the registry is not as it was in the end.
"""

import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import zipfile

import bundle

SOURCE = bundle.TESTS.parent
LEFT = re.compile(r"^\[.*(?:CorvaneTest|Ostrel|TessarixTest|Clients\\\\Mail).*\]", re.M | re.I)
DEFAULT_CLIENT = re.compile(r"^\[Software\\\\Clients\\\\Mail\].*\n(?:#.*\n)*(@=.*)?", re.M)
# Where Wine takes the MAPI library from, if not from its own: from the program's folder, or from nowhere.
LIBRARY = {"noentry": "native", "missing": ""}


def named_paths(folder, paths):
    """The files that name one of the paths, in either width."""
    spellings = [spelling for path in paths for spelling in (str(path), str(path).replace("/", "\\"))]
    needles = [text for spelling in spellings for text in (spelling.encode(), spelling.encode("utf-16-le"))]
    return [f"{file.name} names {needle!r}" for file in folder.rglob("*") if file.is_file()
            for needle in needles if needle in file.read_bytes()]


def registry(prefix):
    """What the bundle could leave in it: the names of such keys, and the default mail client."""
    text = "".join((prefix / name).read_text(errors="replace") for name in ("system.reg", "user.reg"))
    return sorted(LEFT.findall(text)), DEFAULT_CLIENT.findall(text)


def problems(build, wine_run, part, root):
    with zipfile.ZipFile(bundle.make(build, root)) as content:
        content.extractall(root / "a path with blanks")
    folder = root / "a path with blanks" / "corvane-tests"
    yield from named_paths(folder, (SOURCE, build, "/usr/src/"))
    prefix = root / "prefix"
    environment = {**os.environ, "CORVANE_WINEPREFIX": str(prefix)}

    def wine(*words):
        return subprocess.run([wine_run, *words], cwd=root, env=environment, check=False).returncode

    def stop():
        subprocess.run(["wineserver", "-k"], env={**environment, "WINEPREFIX": str(prefix)}, check=False)

    try:
        for name, order in LIBRARY.items():
            key = f"HKCU\\Software\\Wine\\AppDefaults\\{name}.exe\\DllOverrides"
            wine("reg", "add", key, "/v", "mapi32", "/d", order)
        stop()
        before = registry(prefix)
        with subprocess.Popen([wine_run, folder / "runtests.exe", "subject"], env=environment,
                              stdout=subprocess.PIPE) as killed:
            while not killed.stdout.readline().startswith(b"passed"):
                pass  # now it has changed the registry, which the next run restores
            stop()
        if registry(prefix) == before:
            yield "a run did not register its mail client"
        if wine(folder / "runtests.exe", *part) != 0:
            yield "a run failed"
        # What the runner cannot have: a console. `script` has one for its command, and moves its cursor.
        words = shlex.join([wine_run, str(folder / "program/corvane.exe"), "-\u00e9\u20ac"])
        screen = subprocess.run(["script", "-qec", words, "/dev/null"], env=environment, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, check=False).stdout.decode()
        if "The argument -\u00e9\u20ac is invalid." not in re.sub(r"\x1b\[[\d;?]*[A-Za-z]", "", screen):
            yield f"a console shows {screen!r}"
    finally:
        stop()
    if "Windows 10 " not in (folder / "results.txt").read_text(errors="replace"):
        yield "the runs did not see Windows 10"
    if registry(prefix) != before:
        yield f"the registry was {before} and is {registry(prefix)}"


def main():
    build, wine, *part = sys.argv[1:]
    with tempfile.TemporaryDirectory(prefix="corvane-bundle-") as root:
        found = list(problems(pathlib.Path(build).resolve(), wine, part, pathlib.Path(root)))
    print("".join(f"FAIL {problem}\n" for problem in found), end="")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
