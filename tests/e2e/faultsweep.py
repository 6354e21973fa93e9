"""Runs with every call of the platform layer failing in turn: one that ends in an error message, and one that reads a
response file and tests attachments. Only for builds with the fault hook."""

import os
import signal
import subprocess
from concurrent.futures import ThreadPoolExecutor

FAILING = ("-s:Hello", "-x")
SENDING = ("@words.txt", "-a:here.txt", "-a:none.txt", "-a:none/x.txt")
FILES = {"words.txt": "\ufeff\"-r:Ann <ann@example.org>\"\n-s:\"Two words\" -b:Text\n", "here.txt": "here"}
NEVER = 1000000
CODES = (5, 8)  # an access that is denied, and exhausted memory, which has an ending of its own
LIMIT = 60  # seconds


def run(place, folder, words, function, nth, code, mode, environment=None):
    fault = {"TESSARIX_FAULT": f"{function}:{nth}:{code}:{mode}", "CORVANE_TRANSCRIPT": os.devnull, **(environment or {})}
    return subprocess.run([place.programs["recording"], *words], cwd=folder, env={**place.environment, **fault},
                          stdin=subprocess.DEVNULL, capture_output=True, timeout=LIMIT, check=False)


def is_early(code, errors):
    """Memory that ends while static objects are built: nobody can catch that, and no hook of the program is there."""
    return code == -signal.SIGABRT and b"terminate called" in errors and b"CMemoryException" in errors


def calls(place, folder, words, function):
    """How many calls an undisturbed run makes."""
    path = os.path.join(folder, "calls")
    run(place, folder, words, function, NEVER, 5, "once", {"TESSARIX_FAULT_CALLS": path})
    with open(path, encoding="ascii") as file:
        return int(file.read())


def sweep(place, folder, words, function, mode, usual):
    """The number of calls, and what went wrong. `usual` are the exit codes that a failure may leave."""
    count = calls(place, folder, words, function)
    # What fails from then on may take the last notice with it; the process then ends by abort.
    allowed = usual if mode == "once" else (*usual, -signal.SIGABRT)
    rows = [(nth, code) for nth in range(1, count + 1) for code in CODES]
    with ThreadPoolExecutor(2) as pool:
        results = list(pool.map(lambda row: run(place, folder, words, function, *row, mode), rows))
    problems = [f"{function}:{nth}:{code}:{mode}: exit code {result.returncode}: {result.stderr[-600:]!r}"
                for (nth, code), result in zip(rows, results) if result.returncode not in allowed and not is_early(result.returncode, result.stderr)]
    return count, problems if count > 20 else ["too few calls were seen"]


def checks(place, root):
    """Each sweep's name and what is wrong."""
    folder = os.path.join(root, "faults")
    os.mkdir(folder)
    for name, text in FILES.items():
        with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
            file.write(text)
    for what, words, usual in (("a failing run", FAILING, (255,)), ("a run with files", SENDING, (0, 255))):
        for function in ("*", "allocation"):
            for mode in ("once", "on"):
                count, problems = sweep(place, folder, words, function, mode, usual)
                yield f"{count} calls of {function} fail, {mode}, in {what}", problems
    undisturbed = run(place, folder, SENDING, "*", NEVER, 5, "once")
    yield "no fault", [] if undisturbed.returncode == 0 else [f"exit code {undisturbed.returncode}"]
    short = run(place, folder, SENDING, "*", NEVER, 5, "once", {"TESSARIX_SHORT_TRANSFERS": "1"})
    # The reader of a text file asks for all of it at once and takes less for its end.
    yield "transfers of one byte", [] if short.returncode in (0, 255) else [f"{short.returncode} {short.stderr!r}"]
