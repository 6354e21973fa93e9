#!/usr/bin/env python3
"""usage: reproducible.py PRESET FILE...

Builds the commit again, in a folder elsewhere and without the compiler's cache, and compares the files with those of
build/PRESET byte for byte. What is not committed is not in the second build.
"""

import filecmp
import os
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def main():
    preset, *files = sys.argv[1:]
    with tempfile.TemporaryDirectory(prefix="another place ") as folder:
        again = os.path.join(folder, "corvane")
        run = lambda *command, **options: subprocess.run(command, check=True, stdout=subprocess.DEVNULL, **options)
        run("git", "clone", "--quiet", "--no-hardlinks", ROOT, again)
        run("cmake", "--preset", preset, "-DBUILD_TESTING=OFF", "-DCMAKE_CXX_COMPILER_LAUNCHER=", cwd=again)
        run("cmake", "--build", os.path.join("build", preset), "--target", "product", cwd=again)
        place = os.path.join("build", preset)
        differing = [file for file in files if not filecmp.cmp(os.path.join(ROOT, place, file),
                                                               os.path.join(again, place, file), shallow=False)]
    for file in differing:
        print(f"{preset}: {file} is not the same when it is built again")
    return 1 if differing else 0


if __name__ == "__main__":
    sys.exit(main())
