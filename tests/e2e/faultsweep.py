"""A run that ends in an error message, with every call of the platform layer failing in turn. Only for builds with the
fault hook."""

import os
import signal
import subprocess
from concurrent.futures import ThreadPoolExecutor

WORDS = ("-s:Hello", "-x")
NEVER = 1000000
CODES = (5, 8)  # an access that is denied, and exhausted memory, which has an ending of its own
LIMIT = 60  # seconds


def run(place, folder, function, nth, code, mode, environment=None):
    fault = {"TESSARIX_FAULT": f"{function}:{nth}:{code}:{mode}", **(environment or {})}
    return subprocess.run([place.programs["recording"], *WORDS], cwd=folder, env={**place.environment, **fault},
                          stdin=subprocess.DEVNULL, capture_output=True, timeout=LIMIT, check=False)


def calls(place, folder, function):
    """How many calls an undisturbed run makes."""
    path = os.path.join(folder, "calls")
    run(place, folder, function, NEVER, 5, "once", {"TESSARIX_FAULT_CALLS": path})
    with open(path, encoding="ascii") as file:
        return int(file.read())


def checks(place, root):
    """Each sweep's name and what is wrong."""
    folder = os.path.join(root, "faults")
    os.mkdir(folder)
    for function in ("*", "allocation"):
        count = calls(place, folder, function)
        for mode in ("once", "on"):
            # What fails from then on may take the last notice with it; the process then ends by abort.
            allowed = (255,) if mode == "once" else (255, -signal.SIGABRT)
            rows = [(nth, code) for nth in range(1, count + 1) for code in CODES]
            with ThreadPoolExecutor(2) as pool:
                results = list(pool.map(lambda row: run(place, folder, function, *row, mode), rows))
            problems = [f"{function}:{nth}:{code}:{mode}: exit code {result.returncode}: {result.stderr[-600:]!r}"
                        for (nth, code), result in zip(rows, results) if result.returncode not in allowed]
            yield f"{count} calls of {function} fail, {mode}", problems if count > 20 else ["too few calls were seen"]
