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
import glob
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

from expect import LOGO
from places import CLIENTS, settings_text

NEVER = 1000000
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
TESSARIX = "Software\\Ostrel\\Tessarix"


@dataclasses.dataclass(frozen=True)
class Scenario:
    name: str
    words: tuple
    library: str = "simple"  # simple, extended, own: what takes the mail
    probe: bool = False  # the words are the probe's, not the program's
    settings: tuple = ()  # pairs of root key and value name, all "on"
    script: str = ""  # of the Extended library
    answers: tuple = ()  # further calls whose failure is an answer


SCENARIOS = (
    Scenario("help", ("-?",)),
    Scenario("a bad argument", ("-s:Hello", "-x")),
    Scenario("no recipient", ("-s:Hello",)),
    Scenario("response files", ("@words.txt",)),
    Scenario("Simple route", (ANN, "-r:Bo <bo@example.org>", "-a:one.txt", "-a:none.txt")),
    Scenario("Extended route", (ANN, "-s:Hello", "-a:one.txt", "-a:two.txt"), "extended"),
    Scenario("a draft", (ANN, "-s:Hello", "-a:one.txt"), "own"),
    Scenario("a crash in the library", (ANN,), "extended", script="IMAPISession::ShowForm=read"),
    Scenario("the log", (ANN,), settings=(("HKEY_LOCAL_MACHINE", "WriteMessageLog"),)),
    Scenario("lists of messages", (ANN,), settings=(("HKEY_CURRENT_USER", "SaveAllMessages"),
                                                    ("HKEY_CURRENT_USER", "SaveUndefinedMessages"))),
    # A language whose library cannot be had is shown in English.
    Scenario("a language", ("language", "LANGUAGES"), probe=True, answers=(
        "GetFileVersionInfoSize", "VerQueryValue", "SearchPath", "LoadLibraryEx", "LoadString")),
    Scenario("files in memory", ("files",), probe=True),
)


@dataclasses.dataclass(frozen=True)
class Outcome:
    code: int
    output: str
    errors: str
    delivered: tuple
    failed: str  # the function that failed; empty without a failure
    calls: int  # that count for the plan, in the module that made most


def text_of(path):
    """Empty without the file."""
    return pathlib.Path(path).read_text(encoding="utf-8") if os.path.exists(path) else ""


class Bench:
    """Makes runs, each with a folder of its own: what a run leaves belongs to it alone."""

    def __init__(self, options, root):
        self.options = options
        self.root = root
        self.numbers = iter(range(NEVER))

    def run(self, scenario, fault=None, **streams):
        folder = os.path.join(self.root, str(next(self.numbers)))
        program, environment = self.prepare(scenario, folder)
        if fault == SHORT:
            environment["TESSARIX_SHORT_TRANSFERS"] = "1"
        elif fault:
            environment["TESSARIX_FAULT"] = fault
            if scenario.library in ("extended", "own") and fault.endswith(":on"):
                environment["ASAN_OPTIONS"] = "detect_leaks=0"  # the library's memory: its own entry would give it back
        words = [self.options.languages if word == "LANGUAGES" else word for word in scenario.words]
        process = subprocess.run([program, *words], cwd=folder, env=environment, stdin=subprocess.DEVNULL, timeout=LIMIT,
                                 check=False, **(streams or {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE}))
        text = lambda data: (data or b"").decode(errors="replace").replace("\r\n", "\n").replace(folder, "")
        # Pairs of the number of calls that a module made and the one that failed.
        calls = [line.split() for line in text_of(os.path.join(folder, "calls")).splitlines()]
        outcome = Outcome(process.returncode, text(process.stdout), text(process.stderr), self.delivered(folder),
                          "".join(name for _, name in calls if name != "none"), max((int(n) for n, _ in calls), default=0))
        shutil.rmtree(folder)
        return outcome

    def prepare(self, scenario, folder):
        """The program, linked into a folder that has what the scenario needs, and its environment."""
        for name in ("bin", "registry", "home", "lib/corvane"):
            os.makedirs(os.path.join(folder, name))
        for name, content in FILES.items():
            pathlib.Path(folder, name).write_text(content, encoding="utf-8")
        program = os.path.join(folder, "bin", "corvane")
        os.link(self.options.life_probe if scenario.probe else self.options.program, program)
        rows = {"HKEY_CURRENT_USER": [], "HKEY_LOCAL_MACHINE": []}
        for root, value in scenario.settings:
            rows[root] += [f"[{root}\\{TESSARIX}]", f'"{value}"="on"']
        if scenario.library == "extended":
            key, path = CLIENTS, "Z:" + self.options.extended_library.replace("/", "\\").replace("\\", "\\\\")
            rows["HKEY_LOCAL_MACHINE"] += [f"[{key}]", '@="Test"', f"[{key}\\Test]", f'"DllPathEx"="{path}"']
        elif scenario.library == "own":
            os.link(self.options.mail_library, os.path.join(folder, "lib/corvane/mapi32.so"))
        else:
            os.link(self.options.library, os.path.join(folder, "bin/mapi32.so"))
        for root, lines in rows.items():
            pathlib.Path(folder, "registry", root + ".reg").write_text(settings_text(*lines), encoding="utf-8")
        return program, {
            "PATH": "/usr/bin:/bin", "LC_ALL": "C.UTF-8", "HOME": os.path.join(folder, "home"), "XDG_DATA_DIRS": "/usr/share",
            "TESSARIX_REGISTRY": os.path.join(folder, "registry"), "CORVANE_MAIL_CLIENT": "draft",
            "CORVANE_MAPI_SCRIPT": scenario.script, "CORVANE_TRANSCRIPT": os.path.join(folder, "transcript"),
            "TESSARIX_FAULT_CALLS": os.path.join(folder, "calls"), 
            # A crash runs no destructors: texts of the frames that it leaves are lost.
            "ASAN_OPTIONS": f"detect_leaks={int(not scenario.script)}"}

    @staticmethod
    def delivered(folder):
        """What the library was handed: the lines that it noted, and the drafts in words."""
        lines = [line for line in text_of(os.path.join(folder, "transcript")).splitlines() if line != "end:"]
        for path in glob.glob(os.path.join(folder, "home/.local/share/corvane/drafts/*")):
            with open(path, "rb") as file:
                message = email.message_from_binary_file(file, policy=email.policy.default)
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
        count = bench.run(scenario, f"{function}:{NEVER}:{code}:once").calls
        problems += [] if count > 10 else [f"only {count} calls of {function}"]
        for mode in ("once", "on"):
            plans += [f"{function}:{nth}:{code}:{mode}" for nth in range(1 + start % every, count + 1, every)]
    ends = collections.Counter()
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        for plan, outcome in zip(plans, pool.map(lambda plan: attempt(bench, scenario, plan), plans)):
            end = end_of(scenario, outcome, usual) if outcome else None
            ends[end or "WRONG"] += 1
            problems += [] if end else [f"{plan}: {difference(outcome, usual)}"]
    return ends, problems


def difference(outcome, usual):
    if not outcome:
        return f"no end after {LIMIT} seconds"
    lost, more = (sorted(set(a) - set(b)) for a, b in ((usual.delivered, outcome.delivered), (outcome.delivered, usual.delivered)))
    return f"{outcome.failed}: exit code {outcome.code}, {outcome.output[:200]!r} {outcome.errors[-1500:]!r}, not handed over {lost[:5]}, instead {more[:5]}"


def attempt(bench, scenario, plan):
    try:
        return bench.run(scenario, plan)
    except subprocess.TimeoutExpired:
        return None


def output_gone(bench):
    """A standard output that is closed, full, or read to a point; standard error there or not. A run that prints nothing is none the worse."""
    for words, code in (((ANN,), 0), (("-x",), 255), (("-?",), 255)):
        for kind in ("closed", "full", 0, 1, 2, 4096):
            for errors in (True, False):
                outcome = run_without_output(bench, Scenario("", words), kind, errors)
                problems = [] if outcome.code == code else [str(outcome)]
                if code != 0 and errors and kind in ("closed", "full", 0) and not outcome.errors.strip():
                    problems.append(f"nothing was said: {outcome}")
                yield f"{words[0]}, output {kind}, {'' if errors else 'no '}standard error", problems


def run_without_output(bench, scenario, kind, errors):
    closed = [1] * (kind == "closed") + [2] * (not errors)
    reader, writer = (None, os.open("/dev/full", os.O_WRONLY)) if kind == "full" else os.pipe()
    if kind == 0:
        os.close(reader)
        reader = None
    taker = ThreadPoolExecutor(1)
    if reader is not None:
        taker.submit(lambda: (os.read(reader, int(kind) if isinstance(kind, int) else 1), os.close(reader)))
    outcome = bench.run(scenario, stdout=writer, stderr=subprocess.PIPE,
                        preexec_fn=lambda: [os.close(descriptor) for descriptor in closed])
    os.close(writer)
    taker.shutdown()
    return outcome


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    for name in ("program", "library", "extended-library", "life-probe", "mail-library", "languages"):
        parser.add_argument(f"--{name}", required=True)
    parser.add_argument("--every", type=int, default=1, help="the step from one failing call to the next")
    parser.add_argument("--only", default="", help="a part of the scenarios' names")
    options = parser.parse_args()
    root = tempfile.mkdtemp(prefix="exhaustion-", dir=os.path.dirname(options.program))  # where links can be made
    failed = 0
    try:
        bench = Bench(options, root)
        for scenario in SCENARIOS:
            if options.only in scenario.name:
                ends, problems = sweep(bench, scenario, options.every)
                print(f"{scenario.name}: " + ", ".join(f"{count} {end}" for end, count in sorted(ends.items())), flush=True)
                print("".join(f"    {problem}\n" for problem in problems[:20]), end="", flush=True)
                failed += len(problems)
        for name, problems in output_gone(bench) if not options.only else ():
            print("".join(f"{name}: {problem}\n" for problem in problems), end="")
            failed += len(problems)
    finally:
        shutil.rmtree(root)
    print(f"{failed} wrong")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
