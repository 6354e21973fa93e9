#!/usr/bin/env python3
"""What a run with one large attachment takes: at most the file's size and a fixed room of memory at its peak, and time
in proportion to the size. The MAPI library drops what it is handed, so that all of it is the program's own. Ends with 1
if a limit is missed."""

import os
import sys
import tempfile

import measuring

MIB = 1 << 20
SIZES = (16, 64, 256, 1024)  # MiB
MOST_BESIDE = 16  # MiB beside the file itself
# Four times the bytes may take this many times the time: noise, but no second order.
MOST_GROWTH = 6.0


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
    good, before = True, None
    with tempfile.TemporaryDirectory(prefix="corvane-bench-") as root, measuring.place(options.build, root, True) as place:
        if place.windows:
            raise SystemExit("attachment.py: the peak of memory is measured natively")
        for size in SIZES:
            seconds, peak = measure(place, root, options.runs or 5, size)
            fits, grows = peak <= size + MOST_BESIDE, before is None or seconds <= before * MOST_GROWTH
            growth = "" if before is None else f", {seconds / before:.1f} times that of a quarter (at most {MOST_GROWTH:.0f})"
            print(f"attachment of {size} MiB: peak {peak:.1f} MiB (at most {size + MOST_BESIDE}), "
                  f"{seconds * 1000:.0f} ms{growth}{'' if fits and grows else '  MISSED'}", flush=True)
            good, before = good and fits and grows, seconds
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
