"""What the measuring scripts share: the MAPI libraries of the end-to-end suites, one timed run, and how results are
kept."""

import argparse
import contextlib
import json
import os
import pathlib
import subprocess
import sys
import time
import types

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tests", "e2e"))
from places import CLIENTS, Native, Windows, client_rows, settings_text, windows_path  # noqa: E402  (found through the line above)

WORDS = ["-r:Ann <ann@example.org>", "-s:Hello", "-b:Text"]  # a delivery without attachments
WINE_RUN = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "tools", "wine-run")


def arguments(description):
    """The command line's options; `--build` is a build folder of either system."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--build", required=True, help="a build folder with CORVANE_BENCH")
    parser.add_argument("--runs", type=int, help="how many runs to take the median of")
    parser.add_argument("--out", help="a file for the results")
    options = parser.parse_args()
    options.build = os.path.abspath(options.build)
    return options


class Wine(Windows):
    """A prefix of Wine, in which the recording library is registered."""

    def register(self, rows):
        file = pathlib.Path(self.root, "settings.reg")
        file.write_text(settings_text(rows), encoding="utf-16")
        subprocess.run([self.options.wine, "regedit", "/S", windows_path(file)], env=self.environment, check=True)


@contextlib.contextmanager
def place(build, root, extended):
    """A place of the end-to-end suites, with one of the recording libraries in it."""
    windows = os.path.exists(os.path.join(build, "bin", "corvane.exe"))
    ending, libraries = ".dll" if windows else ".so", os.path.join(build, "tests", "mapilibrary")
    options = types.SimpleNamespace(
        program=os.path.join(build, "bin", "corvane.exe" if windows else "corvane"),
        library=os.path.join(libraries, ("recordinglibrary" if windows else "mapi32") + ending),
        extended_library=os.path.join(libraries, "extendedlibrary" + ending), wine=os.path.abspath(WINE_RUN))
    if not windows:
        native = Native(options, root)
        native.set_registry(extended)
        yield native
        return
    wine = Wine(options, root)
    wine.add_program("recording", options.program)
    try:
        wine.register(client_rows(DLLPath=options.library,
                                  **({"DllPathEx": options.extended_library} if extended else {})))
        yield wine
    finally:
        # What a new prefix has, also after a run that was killed.
        wine.register([f"[{CLIENTS}]", '@="Native Mail Client"', f"[-{CLIENTS}\\CorvaneTest]"])


def seen(where, native):
    """The path as programs there take it."""
    return windows_path(native) if where.windows else native


def run(command, environment):
    """Runs a program with all its streams on nothing: the seconds, and what the system counted for it."""
    streams = [(os.POSIX_SPAWN_OPEN, stream, os.devnull, os.O_RDWR, 0) for stream in (0, 1, 2)]
    start = time.perf_counter()
    child = os.posix_spawnp(command[0], command, environment, file_actions=streams)
    _, status, usage = os.wait4(child, 0)
    seconds = time.perf_counter() - start
    if status != 0:
        raise RuntimeError(f"{command} ended with {status}")
    return seconds, usage


def keep(path, results):
    """Writes results in the form that the benchmark programs have for theirs, so that one reader does for all. Each is
    a name with its values; a time is in seconds."""
    if path:
        with open(path, "w", encoding="utf-8") as stream:
            json.dump({"benchmarks": [{"run_name": name, "run_type": "iteration", "time_unit": "s", **values}
                                      for name, values in results.items()]}, stream, indent=1)
