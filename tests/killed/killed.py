#!/usr/bin/env python3
"""usage: killed.py WRITER COUNT [SEED]

Kills a writer of a registry file and a move between two volumes, COUNT times in all, and looks at what each leaves: the
old or the new, whole.
"""

import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import time

WRITER = os.path.abspath(sys.argv[1])
CONTENT = random.Random(1).randbytes(1 << 20)
LONGEST = 0.05  # seconds that a writer gets


def killed(*words, **environment):
    """Starts a writer, waits for its first byte, and kills it after a while; true if it was still at work."""
    with subprocess.Popen([WRITER, *words], stdout=subprocess.PIPE, env={**os.environ, **environment}) as process:
        process.stdout.read(1)
        time.sleep(random.uniform(0, LONGEST))
        process.kill()
        return process.wait() == -9


class Registry:
    def __init__(self, folder, _):
        self.path = folder / "HKEY_CURRENT_USER.reg"
        self.path.write_text(f'; kept\n[HKEY_CURRENT_USER\\K]\n"v"="{"a" * 100000}"\n', encoding="utf-8")

    def run(self):
        return killed("registry", TESSARIX_REGISTRY=str(self.path.parent))

    def is_whole(self):
        form = r'; kept\n\[HKEY_CURRENT_USER\\K\]\n"v"="(a{100000}|b{100000})"\n'
        return re.fullmatch(form, self.path.read_text(encoding="utf-8"))


class Move:
    def __init__(self, folder, other):
        self.paths = [folder / "file", other / "file"]
        self.paths[0].write_bytes(CONTENT)

    def run(self):
        self.paths.sort(key=pathlib.Path.exists, reverse=True)
        return killed("move", *map(str, self.paths))

    def is_whole(self):
        there = [path.read_bytes() for path in self.paths if path.exists()]
        return there and all(content == CONTENT for content in there)


def main():
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else random.randrange(1 << 30)
    random.seed(seed)
    with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryDirectory(dir="/dev/shm") as other:
        if os.stat(other).st_dev == os.stat(folder).st_dev:
            print("the move stays on one volume")
        cases = []
        for kind in (Registry, Move):
            place = pathlib.Path(folder, kind.__name__)
            place.mkdir()
            cases.append(kind(place, pathlib.Path(other)))
        at_work = dict.fromkeys(cases, 0)
        for i in range(int(sys.argv[2])):
            case = cases[i % len(cases)]
            at_work[case] += case.run()
            if not case.is_whole():
                sys.exit(f"seed {seed}: kill {i} leaves the {type(case).__name__} neither old nor new")
    print(f"seed {seed}; killed at work:", ", ".join(f"{type(case).__name__} {n}" for case, n in at_work.items()))
    sys.exit(not all(at_work.values()))


if __name__ == "__main__":
    main()
