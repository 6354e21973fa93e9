#!/usr/bin/env python3
"""Runs in which every platform call and every allocation fails in turn, once and from then on, and runs whose output is gone.

Each run ends in one of these ways, and in no other:

    same      as without the failure: the same exit code, the same mail handed over, nothing less said
    told      exit code 255, and a text that says why
    reported  exit code 0 and less handed over, which the foundation (it did not start) or the delivery has told the user
    aborted   one of the two endings by abort, with its fixed notice
    answered  exit code 0 and less handed over, for the failure of one call is an answer: see ANSWERS

Only for builds with the fault hook. A build of CI tries a sample of all failures; --every 1 tries each of them.
"""

import argparse
import collections
import dataclasses
import email
import email.policy
import itertools
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import types
from concurrent.futures import ThreadPoolExecutor

from expect import LOGO
from places import client_rows, settings_text

LIMIT = 60  # seconds
NOTICES = ("Not enough memory!", "Double internal error!")
# Function, code: an access that is denied, exhausted memory, exhausted resources. "new" is the standard library's memory.
PLANS = (("*", 5), ("*", 8), ("*", 1450), ("allocation", 8), ("new", 8))
SHORT = "transfers of one byte"
ANN = "-r:Ann <ann@example.org>"
# What cannot be converted is an empty text; what cannot be asked about is no file, and is left out like a missing one; an
# entry that cannot be found is done without.
ANSWERS = ("WideCharToMultiByte", "MultiByteToWideChar", "GetFileAttributes", "FindFirstFile", "GetProcAddress")
FILES = {"words.txt": '\ufeff@more.txt -s:"Two words"\n', "more.txt": f'"{ANN}" -b:Text\n', "one.txt": "1", "two.txt": "2" * 9}


@dataclasses.dataclass(frozen=True)
class Scenario:
    name: str
    words: tuple
    library: str = "simple"  # simple, extended, own: what takes the mail
    probe: bool = False  # the words are the probe's, not the program's
    user: tuple = ()  # settings of the foundation that are on
    machine: tuple = ()
    script: str = ""  # of the Extended library
    answers: tuple = ()  # further calls whose failure is an answer


SCENARIOS = (
    Scenario("help", ("-?",)),
    Scenario("a bad argument", ("-s:Hello", "-x")),
    Scenario("response files", ("@words.txt",)),
    Scenario("Simple route", (ANN, "-r:Bo <bo@example.org>", "-a:one.txt", "-a:none.txt")),
    Scenario("Extended route", (ANN, "-s:Hello", "-a:one.txt", "-a:two.txt"), "extended"),
    Scenario("a draft", (ANN, "-s:Hello", "-a:one.txt"), "own"),
    Scenario("a crash in the library", (ANN,), "extended", script="IMAPISession::ShowForm=read"),
    Scenario("the log", (ANN,), machine=("WriteMessageLog",)),
    Scenario("lists of messages", (ANN,), user=("SaveAllMessages", "SaveUndefinedMessages")),
    # A language whose library cannot be had is shown in English.
    Scenario("a language", ("language", "LANGUAGES"), probe=True, answers=(
        "GetFileVersionInfoSize", "VerQueryValue", "SearchPath", "LoadLibraryEx", "LoadString")),
    Scenario("files in memory", ("files",), probe=True),
)


class Bench:
    """Makes runs, each with a folder of its own: what a run leaves belongs to it alone. What comes of one: its code, output,
    errors, what was delivered, the function that failed (empty without a failure), and the number of calls that count for
    the plan, in the module that made most."""

    def __init__(self, options, root):
        self.options = options
        self.root = root
        self.numbers = itertools.count()

    def run(self, scenario, fault=None, stdout=subprocess.PIPE, **more):
        folder = pathlib.Path(self.root, str(next(self.numbers)))
        program, environment = self.prepare(scenario, folder)
        if fault == SHORT:
            environment["TESSARIX_SHORT_TRANSFERS"] = "1"
        elif fault:
            environment["TESSARIX_FAULT"] = fault
            if scenario.library != "simple" and fault.endswith(":on"):
                environment["ASAN_OPTIONS"] = "detect_leaks=0"  # the library's memory: its own entry would give it back
        words = [self.options.languages if word == "LANGUAGES" else word for word in scenario.words]
        process = subprocess.run([program, *words], cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=stdout,
                                 stderr=subprocess.PIPE, timeout=LIMIT, check=False, **more)
        text = lambda data: (data or b"").decode(errors="replace").replace("\r\n", "\n").replace(str(folder), "")
        # Pairs of the number of calls that a module made and the one that failed.
        calls = [line.split() for line in (folder / "calls").read_text().splitlines()]
        outcome = types.SimpleNamespace(
            code=process.returncode, output=text(process.stdout), errors=text(process.stderr),
            delivered=self.delivered(folder), failed="".join(name for _, name in calls if name != "none"),
            calls=max((int(number) for number, _ in calls), default=0))
        shutil.rmtree(folder)
        return outcome

    def prepare(self, scenario, folder):
        """The program, linked into a folder that has what the scenario needs, and its environment."""
        for name in ("bin", "registry", "home", "lib/corvane"):
            (folder / name).mkdir(parents=True)
        for name, content in {**FILES, "calls": "", "transcript": ""}.items():
            (folder / name).write_text(content, encoding="utf-8")
        program = folder / "bin/corvane"
        program.hardlink_to(self.options.life_probe if scenario.probe else self.options.program)
        if scenario.library != "extended":
            own = scenario.library == "own"
            (folder / ("lib/corvane" if own else "bin") / "mapi32.so").hardlink_to(
                self.options.mail_library if own else self.options.library)
        client = client_rows(DllPathEx=self.options.extended_library) if scenario.library == "extended" else []
        for root, values, more in (("HKEY_CURRENT_USER", scenario.user, []), ("HKEY_LOCAL_MACHINE", scenario.machine, client)):
            rows = [f"[{root}\\Software\\Ostrel\\Tessarix]", *(f'"{value}"="on"' for value in values), *more]
            (folder / "registry" / f"{root}.reg").write_text(settings_text(rows), encoding="utf-8")
        return program, {
            "PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8", "HOME": str(folder / "home"), "XDG_DATA_DIRS": "/usr/share",
            "TESSARIX_REGISTRY": str(folder / "registry"), "CORVANE_MAIL_CLIENT": "draft",
            "CORVANE_MAPI_SCRIPT": scenario.script, "CORVANE_TRANSCRIPT": str(folder / "transcript"),
            "TESSARIX_FAULT_CALLS": str(folder / "calls"),
            # A crash runs no destructors: texts of the frames that it leaves are lost.
            "ASAN_OPTIONS": f"detect_leaks={int(not scenario.script)}"}

    @staticmethod
    def delivered(folder):
        """What the library was handed: the lines that it noted, and the drafts in words."""
        lines = [line for line in (folder / "transcript").read_text(encoding="utf-8").splitlines() if line != "end:"]
        for path in (folder / "home").glob(".local/share/corvane/drafts/*"):
            message = email.message_from_bytes(path.read_bytes(), policy=email.policy.default)
            lines += [f"{name}: {message[name]}" for name in ("To", "Subject")]
            lines += [f"{part.get_filename()}: {part.get_payload(decode=True)}" for part in message.walk()]
        return tuple(lines)


def end_of(scenario, outcome, usual):
    """The name of the end, or None for one that must not be."""
    said = outcome.output.replace(LOGO, "") + outcome.errors
    nothing_less = outcome.delivered == usual.delivered and usual.output in outcome.output
    if outcome.code == usual.code and nothing_less:
        return "same"
    if outcome.code == 255 and said.strip():
        return "told"
    if outcome.code == 0 and (outcome.errors if scenario.probe else said).strip():
        return "reported"
    if outcome.code in (0, 255) and outcome.failed in ANSWERS + scenario.answers:
        return "answered"
    if outcome.failed == "GetProcAddress" and "LeakSanitizer" in outcome.errors and scenario.library == "own":
        return "unbound"  # the library's memory stays out when its entry that takes it back is not found
    if outcome.code == -signal.SIGABRT and any(notice in said for notice in NOTICES):
        return "aborted"
    return None


def sweep(bench, scenario, every):
    """The ends by their number, and the runs that ended otherwise."""
    usual = bench.run(scenario)
    problems = [] if usual.code in (0, 255) and "Sanitizer" not in usual.errors else [f"without failure: {usual}"]
    plans = [SHORT]
    recorded = usual.delivered and scenario.library != "own"  # by a library that asks for memory too
    for start, (function, code) in enumerate(PLANS[:-1] if recorded else PLANS):
        count = bench.run(scenario, f"{function}:1000000:{code}:once").calls
        problems += [] if count > 10 else [f"only {count} calls of {function}"]
        plans += [f"{function}:{nth}:{code}:{mode}" for mode in ("once", "on")
                  for nth in range(1 + start % every, count + 1, every)]

    def attempt(plan):
        try:
            outcome = bench.run(scenario, plan)
        except subprocess.TimeoutExpired:
            return f"{plan}: no end after {LIMIT} seconds", None
        lost, more = set(usual.delivered) - set(outcome.delivered), set(outcome.delivered) - set(usual.delivered)
        return f"{plan}: {outcome}, not handed over {lost}, instead {more}", end_of(scenario, outcome, usual)

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(attempt, plans))
    ends = collections.Counter(end or "WRONG" for _, end in results)
    return ends, problems + [told[:3000] for told, end in results if not end]


def output_gone(bench):
    """A standard output that is closed, full, or read by nobody; standard error there or not. A run that prints nothing is
    none the worse."""
    reader, gone = os.pipe()
    os.close(reader)
    full = os.open("/dev/full", os.O_WRONLY)
    for (word, code), (kind, stream), errors in itertools.product(
            ((ANN, 0), ("-x", 255), ("-?", 255)), (("closed", None), ("full", full), ("gone", gone)), (True, False)):
        closed = [1] * (stream is None) + [2] * (not errors)
        outcome = bench.run(Scenario("", (word,)), stdout=stream, preexec_fn=lambda: [*map(os.close, closed)])
        if outcome.code != code or (code != 0 and errors and not outcome.errors.strip()):
            yield f"{word}, output {kind}, {'' if errors else 'no '}standard error: {outcome}"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for name in ("program", "library", "extended-library", "life-probe", "mail-library", "languages"):
        parser.add_argument(f"--{name}", required=True)
    parser.add_argument("--every", type=int, default=1, help="the step from one failing call to the next")
    parser.add_argument("--only", default="", help="a part of the scenarios' names")
    options = parser.parse_args()
    failed = 0
    # Where links can be made.
    with tempfile.TemporaryDirectory(prefix="exhaustion-", dir=os.path.dirname(options.program)) as root:
        bench = Bench(options, root)
        for scenario in SCENARIOS:
            if options.only in scenario.name:
                ends, problems = sweep(bench, scenario, options.every)
                print(f"{scenario.name}: " + ", ".join(f"{count} {end}" for end, count in sorted(ends.items())))
                print("".join(f"    {problem}\n" for problem in problems[:20]), end="", flush=True)
                failed += len(problems)
        for problem in output_gone(bench) if not options.only else ():
            print(problem)
            failed += 1
    print(f"{failed} wrong")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
