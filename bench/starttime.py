#!/usr/bin/env python3
"""How long a whole run takes beside one of a program that does nothing: the start, the probe for a MAPI library, and the
handing over of a message to a MAPI library that returns at once. Runs of both alternate, so that whatever else the machine
does meets both; the figure is the ratio of the medians."""

import os
import statistics
import subprocess
import tempfile

import measuring


def check_delivery(place, command, environment, root):
    """What is measured must be what is meant: the MAPI library tells that it was handed the message."""
    transcript = os.path.join(root, "transcript")
    open(transcript, "w", encoding="utf-8").close()
    subprocess.run(command, env={**environment, "CORVANE_TRANSCRIPT": measuring.seen(place, transcript)}, check=True)
    with open(transcript, encoding="utf-8") as stream:
        if "Hello" not in stream.read():
            raise RuntimeError("the MAPI library was not handed the message")


def wine_environment(place):
    """That of tools/wine-run, whose own work is no part of a start."""
    prefix = os.environ.get("CORVANE_WINEPREFIX", os.path.join(os.path.dirname(measuring.WINE_RUN), "..", "build", "wine"))
    return {**place.environment, "WINEPREFIX": os.path.abspath(prefix), "WINEDEBUG": "-all", "LC_ALL": "C.UTF-8",
            "WINEDLLOVERRIDES": "mscoree=;mshtml=;winemenubuilder.exe="}


def measure(options, extended):
    with tempfile.TemporaryDirectory(prefix="corvane-bench-") as root, \
            measuring.place(options.build, root, extended) as place:
        kind = "Wine" if place.windows else "native"
        nothing = os.path.join(options.build, "bin", "bench", "nothingwithshell.exe" if place.windows else "nothing")
        environment = wine_environment(place) if place.windows else place.environment
        start = ["wine"] if place.windows else []
        command = [*start, place.programs["recording"], *measuring.WORDS]
        check_delivery(place, command, environment, root)
        runs = options.runs or (40 if place.windows else 1000)
        times = [[], []]
        for turn in range(runs + runs // 10):
            for index, words in enumerate((command, [*start, nothing])):
                seconds, _ = measuring.run(words, environment)
                if turn >= runs // 10:  # the first ones only warm up
                    times[index].append(seconds)
    ours, theirs = map(statistics.median, times)
    route = "Extended" if extended else "Simple"
    print(f"start, {kind}, {route} route: {ours * 1000:.2f} ms, nothing {theirs * 1000:.2f} ms: {ours / theirs:.2f} times",
          flush=True)
    name = f"start/{kind}/{route}"
    return {name: {"real_time": ours}, f"{name}/nothing": {"real_time": theirs}}


def main():
    options = measuring.arguments(__doc__)
    measuring.keep(options.out, measure(options, False) | measure(options, True))


if __name__ == "__main__":
    main()
