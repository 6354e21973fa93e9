#!/usr/bin/env python3
"""usage: killed.py WRITER PROGRAM COUNT [SEED]

Kills a writer of a registry file, a move between two volumes and a run that writes a draft, COUNT times in all, and
looks at what each leaves: the old or the new, whole.
"""

import email
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile
import time

WRITER, PROGRAM = map(os.path.abspath, sys.argv[1:3])
CONTENT = random.Random(1).randbytes(1 << 20)
LONGEST = 0.05  # seconds that a writer gets


def start(words, **environment):
    return subprocess.Popen(words, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL,
                            env={**os.environ, **environment})


def killed(process, longest):
    """Kills it after a while; true if it was still at work."""
    with process:
        time.sleep(random.uniform(0, longest))
        process.kill()
        return process.wait() == -9


def writing(*words, **environment):
    process = start([WRITER, *words], **environment)
    process.stdout.read(1)  # from then on it writes without end
    return killed(process, LONGEST)


class Registry:
    def __init__(self, folder, _):
        self.path = folder / "HKEY_CURRENT_USER.reg"
        self.path.write_text(f'; kept\n[HKEY_CURRENT_USER\\K]\n"v"="{"a" * 100000}"\n', encoding="utf-8")

    def run(self):
        return writing("registry", TESSARIX_REGISTRY=str(self.path.parent))

    def is_whole(self):
        form = r'; kept\n\[HKEY_CURRENT_USER\\K\]\n"v"="(a{100000}|b{100000})"\n'
        return re.fullmatch(form, self.path.read_text(encoding="utf-8"))


class Move:
    def __init__(self, folder, other):
        self.paths = [folder / "file", other / "file"]
        self.paths[0].write_bytes(CONTENT)

    def run(self):
        self.paths.sort(key=pathlib.Path.exists, reverse=True)
        return writing("move", *map(str, self.paths))

    def is_whole(self):
        there = [path.read_bytes() for path in self.paths if path.exists()]
        return there and all(content == CONTENT for content in there)


class Draft:
    def __init__(self, folder, _):
        attachment = folder / "attachment"
        attachment.write_bytes(CONTENT)
        self.environment = {"XDG_DATA_HOME": str(folder), "CORVANE_MAIL_CLIENT": "draft", "LC_ALL": "C.UTF-8"}
        self.words = [PROGRAM, "-r:Ann <ann@example.org>", "-s:Hello", "-b:Text", f"-a:{attachment}"]
        self.drafts = folder / "corvane" / "drafts"
        for _ in range(2):  # the first run takes longer
            begin = time.monotonic()
            assert start(self.words, **self.environment).wait() == 0
            self.longest = time.monotonic() - begin
        assert len(list(self.drafts.glob("*.eml"))) == 2 and self.is_whole()

    def run(self):
        return killed(start(self.words, **self.environment), self.longest)

    def is_whole(self):
        for path in self.drafts.glob("*.eml"):
            message = email.message_from_bytes(path.read_bytes())
            path.unlink()
            if message["Subject"] != "Hello" or list(message.walk())[-1].get_payload(decode=True) != CONTENT:
                return False
        return True


def main():
    seed = int(sys.argv[4]) if len(sys.argv) > 4 else random.randrange(1 << 30)
    random.seed(seed)
    with tempfile.TemporaryDirectory() as folder, tempfile.TemporaryDirectory(dir="/dev/shm") as other:
        if os.stat(other).st_dev == os.stat(folder).st_dev:
            print("the move stays on one volume")
        cases = []
        for kind in (Registry, Move, Draft):
            place = pathlib.Path(folder, kind.__name__)
            place.mkdir()
            cases.append(kind(place, pathlib.Path(other)))
        at_work = dict.fromkeys(cases, 0)
        for i in range(int(sys.argv[3])):
            case = cases[i % len(cases)]
            at_work[case] += case.run()
            if not case.is_whole():
                sys.exit(f"seed {seed}: kill {i} leaves the {type(case).__name__} neither old nor new")
    print(f"seed {seed}; killed at work:", ", ".join(f"{type(case).__name__} {n}" for case, n in at_work.items()))
    sys.exit(not all(at_work.values()))


if __name__ == "__main__":
    main()
