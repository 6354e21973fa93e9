#!/usr/bin/env python3
"""What a run with one large attachment takes, in time and in memory besides the file itself. The MAPI library drops what
it is handed, so that all of it is the program's own."""

import os
import tempfile

import measuring

MIB = 1 << 20
SIZES = (16, 64, 256, 1024)  # MiB


def make_file(path, size):
    with open(path, "wb") as stream:
        block = os.urandom(MIB)
        for _ in range(size):
            stream.write(block)


def measure(place, folder, runs, size):
    """The shortest of the times, which other work on the machine lengthens, and the highest peak in MiB."""
    path = os.path.join(folder, "attachment")
    make_file(path, size)
    command = [place.programs["recording"], "-r:a@b", "-a:" + path]
    results = [measuring.run(command, place.environment) for _ in range(runs + 1)][1:]
    os.remove(path)
    return min(seconds for seconds, _ in results), max(usage.ru_maxrss for _, usage in results) / 1024


def main():
    options = measuring.arguments(__doc__)
    times, besides = [], []
    with tempfile.TemporaryDirectory(prefix="corvane-bench-") as root, measuring.place(options.build, root, True) as place:
        if place.windows:
            raise SystemExit("attachment.py: the peak of memory is measured natively")
        for size in SIZES:
            seconds, peak = measure(place, root, options.runs or 5, size)
            print(f"attachment of {size} MiB: {seconds * 1000:.0f} ms, peak {peak:.1f} MiB", flush=True)
            times.append(seconds)
            besides.append(peak - size)
    growth = max(later / earlier for earlier, later in zip(times, times[1:]))
    measuring.keep(options.out, {"attachment": {"besides": max(besides), "growth": growth}})


if __name__ == "__main__":
    main()
