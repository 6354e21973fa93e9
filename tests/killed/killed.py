#!/usr/bin/env python3
"""usage: killed.py WRITER PROGRAM COUNT [SEED]

Kills a writer of a registry file, a move between two volumes and a run that writes a draft, COUNT times in all, and
looks at what each leaves: the old or the new, whole.
"""

import email
import os
import random
import re
import shutil
import subprocess
import sys
import tempfile
import time

WRITER, PROGRAM = map(os.path.abspath, sys.argv[1:3])
COUNT = int(sys.argv[3])
SEED = int(sys.argv[4]) if len(sys.argv) > 4 else random.randrange(1 << 30)
CONTENT = random.Random(1).randbytes(1 << 20)
COMMENT = "; kept"
LONGEST = 0.05  # seconds that a writer gets


def kill(words, longest, environment=None, waits=True):
    """Starts a writer, waits for its first byte, and kills it after a while; true if it was still at work."""
    with subprocess.Popen(words, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, stdin=subprocess.DEVNULL,
                          env={**os.environ, **(environment or {})}) as process:
        if waits:
            process.stdout.read(1)
        time.sleep(random.uniform(0, longest))
        process.kill()
        return process.wait() == -9


class Registry:
    def __init__(self, folder):
        self.path = os.path.join(folder, "HKEY_CURRENT_USER.reg")
        self.environment = {"TESSARIX_REGISTRY": folder}
        with open(self.path, "w", encoding="utf-8") as file:
            file.write(f'{COMMENT}\n[HKEY_CURRENT_USER\\K]\n"v"="{"a" * 100000}"\n')

    def run(self):
        return kill([WRITER, "registry"], LONGEST, self.environment)

    def problem(self):
        with open(self.path, encoding="utf-8") as file:
            text = file.read()
        form = rf'{COMMENT}\n\[HKEY_CURRENT_USER\\K\]\n"v"="(a{{100000}}|b{{100000}})"\n'
        return None if re.fullmatch(form, text) else f"{len(text)} characters: {text[:80]!r}"


class Move:
    def __init__(self, folder, other):
        self.paths = [os.path.join(folder, "file"), os.path.join(other, "file")]
        with open(self.paths[0], "wb") as file:
            file.write(CONTENT)

    def run(self):
        if not os.path.exists(self.paths[0]):
            self.paths.reverse()
        return kill([WRITER, "move", *self.paths], LONGEST)

    def problem(self):
        there = [path for path in self.paths if os.path.exists(path)]
        for path in there:
            with open(path, "rb") as file:
                content = file.read()
            if content != CONTENT:
                os.remove(path)
                return f"{path} has {len(content)} bytes"
        return None if there else "the file is gone"


class Draft:
    def __init__(self, folder):
        attachment = os.path.join(folder, "attachment")
        with open(attachment, "wb") as file:
            file.write(CONTENT)
        self.environment = {"XDG_DATA_HOME": folder, "CORVANE_MAIL_CLIENT": "draft", "LC_ALL": "C.UTF-8"}
        self.words = [PROGRAM, "-r:Ann <ann@example.org>", "-s:Hello", "-b:Text", "-a:" + attachment]
        self.drafts = os.path.join(folder, "corvane", "drafts")
        for _ in range(2):  # the first run takes longer
            start = time.monotonic()
            subprocess.run(self.words, env={**os.environ, **self.environment}, check=True, capture_output=True)
            self.longest = time.monotonic() - start
        assert len(self.names()) == 2 and self.problem() is None

    def names(self):
        return [name for name in os.listdir(self.drafts) if name.endswith(".eml")]

    def run(self):
        return kill(self.words, self.longest, self.environment, waits=False)

    def problem(self):
        for name in self.names():
            path = os.path.join(self.drafts, name)
            with open(path, "rb") as file:
                message = email.message_from_binary_file(file)
            os.remove(path)
            parts = list(message.walk())
            if message["Subject"] != "Hello" or parts[-1].get_payload(decode=True) != CONTENT:
                return f"{name} is not whole"
        return None


def main():
    random.seed(SEED)
    folders = [tempfile.mkdtemp(prefix="killed_") for _ in range(3)]
    other = tempfile.mkdtemp(prefix="killed_", dir="/dev/shm")
    if os.stat(other).st_dev == os.stat(folders[1]).st_dev:
        print("the move stays on one volume")
    try:
        cases = [Registry(folders[0]), Move(folders[1], other), Draft(folders[2])]
        killed = dict.fromkeys(cases, 0)
        problems = []
        for i in range(COUNT):
            case = cases[i % len(cases)]
            killed[case] += case.run()
            problem = case.problem()
            if problem:
                problems.append(f"{type(case).__name__}, kill {i}: {problem}")
                if "gone" in problem:
                    cases.remove(case)
    finally:
        for folder in (*folders, other):
            shutil.rmtree(folder)
    print(f"seed {SEED}; killed at work:", ", ".join(f"{type(case).__name__} {n}" for case, n in killed.items()))
    print(f"{len(problems)} problems", *problems[:10], sep="\n")
    sys.exit(1 if problems or not all(killed.values()) else 0)


if __name__ == "__main__":
    main()
