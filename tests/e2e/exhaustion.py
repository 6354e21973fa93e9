#!/usr/bin/env python3
"""Runs in which every platform call and every allocation fails in turn, once and from then on.

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
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor

from cases import Case
from expect import LOGO
from extended import NO_LEAK_CHECK
from places import Native, link_or_copy

NOTICES = ("Not enough memory!", "Double internal error!")
# Function, code: an access that is denied, exhausted memory, exhausted resources. "new" is the standard library's memory.
PLANS = (("*", 5), ("*", 8), ("*", 1450), ("allocation", 8), ("new", 8))
SHORT = "transfers of one byte"
ANN = "-r:Ann <ann@example.org>"
FILES = {"words.txt": b'\xef\xbb\xbf@more.txt -s:"Two words"\n', "more.txt": f'"{ANN}" -b:Text\n'.encode(),
         "one.txt": b"1", "two.txt": b"2" * 9, "calls": b""}

SCENARIOS = (
    Case("help", ("-?",)),
    Case("a bad argument", ("-s:Hello", "-x")),
    Case("response files", ("@words.txt",)),
    Case("Simple route", (ANN, "-r:Bo <bo@example.org>", "-a:one.txt", "-a:none.txt")),
    Case("Extended route", (ANN, "-s:Hello", "-a:one.txt", "-a:two.txt"), mail="extended"),
    Case("a draft", (ANN, "-s:Hello", "-a:one.txt"), mail="own"),
    Case("a crash in the library", (ANN,), mail="extended",
         environment={"CORVANE_MAPI_SCRIPT": "IMAPISession::ShowForm=read", **NO_LEAK_CHECK}),
    Case("the log", (ANN,), machine={"WriteMessageLog": "on"}),
    Case("lists of messages", (ANN,), user={"SaveAllMessages": "on", "SaveUndefinedMessages": "on"}),
    Case("a language", ("language", "LANGUAGES"), mail="probe"),
)
# What cannot be converted is an empty text; what cannot be asked about is no file, and is left out like a missing one; an
# entry that cannot be found is done without. A language whose library cannot be had is shown in English.
ANSWERS = {"": ("WideCharToMultiByte", "MultiByteToWideChar", "GetFileAttributes", "FindFirstFile", "GetProcAddress"),
           "a language": ("GetFileVersionInfoSize", "VerQueryValue", "SearchPath", "LoadLibraryEx", "LoadString")}


def run(options, scenario, fault=""):
    """What comes of a scenario in a folder of its own, with what was delivered, the function that failed (empty without a
    failure), and the number of calls that count for the plan, in the module that made most."""
    with tempfile.TemporaryDirectory(dir=options.root) as folder:
        place = Native(options, folder)
        place.add_program("probe", options.life_probe)
        place.add_program("extended", options.program)  # without the Simple library, which would take over
        if scenario.mail == "own":
            place.add_program("own", options.program)
            library = pathlib.Path(folder, "lib/corvane/mapi32.so")
            library.parent.mkdir(parents=True)
            link_or_copy(options.mail_library, library)
        # The library's memory is not given back where its own entry for that fails for good.
        loses = scenario.mail in ("extended", "own") and fault.endswith(":on")
        environment = {
            "PATH": "/usr/bin:/bin", "HOME": f"{folder}/home", "XDG_DATA_HOME": f"{folder}/home",
            "XDG_DATA_DIRS": "/usr/share", "CORVANE_MAIL_CLIENT": "draft", "TESSARIX_FAULT_CALLS": f"{folder}/calls",
            **({"TESSARIX_SHORT_TRANSFERS": "1"} if fault == SHORT else {"TESSARIX_FAULT": fault} if fault else {}),
            **(NO_LEAK_CHECK if loses else {}), **scenario.environment}
        words = [options.languages if word == "LANGUAGES" else word for word in scenario.words]
        case = dataclasses.replace(scenario, words=words, environment=environment, files=FILES)
        outcome = place.start(case, pathlib.Path(folder))
        for name in ("output", "errors"):
            setattr(outcome, name, getattr(outcome, name).replace("\r\n", "\n").replace(folder, ""))
        # Pairs of the number of calls that a module made and the one that failed.
        calls = [line.split() for line in pathlib.Path(folder, "calls").read_text().splitlines()]
        outcome.failed = "".join(name for _, name in calls if name != "none")
        outcome.calls = max((int(number) for number, _ in calls), default=0)
        outcome.delivered = [line for line in outcome.transcript.splitlines() if line != "end:"]
        for path in pathlib.Path(folder).glob("home/corvane/drafts/*.eml"):
            message = email.message_from_bytes(path.read_bytes(), policy=email.policy.default)
            outcome.delivered += [f"{name}: {message[name]}" for name in ("To", "Subject")]
            outcome.delivered += [f"{part.get_filename()}: {part.get_payload(decode=True)}" for part in message.walk()]
        return outcome


def end_of(scenario, outcome, usual):
    """The name of the end, or None for one that must not be."""
    said = outcome.output.replace(LOGO, "") + outcome.errors
    nothing_less = outcome.delivered == usual.delivered and usual.output in outcome.output
    if outcome.code == usual.code and nothing_less:
        return "same"
    if outcome.code == 255 and said.strip():
        return "told"
    if outcome.code == 0 and (outcome.errors if scenario.mail == "probe" else said).strip():
        return "reported"
    if outcome.code in (0, 255) and outcome.failed in ANSWERS[""] + ANSWERS.get(scenario.name, ()):
        return "answered"
    if outcome.failed == "GetProcAddress" and "LeakSanitizer" in outcome.errors and scenario.mail == "own":
        return "unbound"  # the library's memory stays out when its entry that takes it back is not found
    if outcome.code == -signal.SIGABRT and any(notice in said for notice in NOTICES):
        return "aborted"
    return None


def sweep(options, scenario):
    """The ends by their number, and the runs that ended otherwise."""
    usual = run(options, scenario)
    problems = [] if usual.code in (0, 255) and "Sanitizer" not in usual.errors else [f"without failure: {usual}"]
    plans = [SHORT]
    recorded = usual.delivered and scenario.mail != "own"  # by a library that asks for memory too
    for start, (function, code) in enumerate(PLANS[:-1] if recorded else PLANS):
        count = run(options, scenario, f"{function}:1000000:{code}:once").calls
        problems += [] if count > 10 else [f"only {count} calls of {function}"]
        plans += [f"{function}:{nth}:{code}:{mode}" for mode in ("once", "on")
                  for nth in range(1 + start % options.every, count + 1, options.every)]

    def attempt(plan):
        try:
            outcome = run(options, scenario, plan)
        except subprocess.TimeoutExpired:
            return f"{plan}: no end", None
        lost, more = set(usual.delivered) - set(outcome.delivered), set(outcome.delivered) - set(usual.delivered)
        return f"{plan}: {outcome}, not handed over {lost}, instead {more}", end_of(scenario, outcome, usual)

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        results = list(pool.map(attempt, plans))
    ends = collections.Counter(end or "WRONG" for _, end in results)
    return ends, problems + [told[:3000] for told, end in results if not end]


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
        options.root = root
        for scenario in SCENARIOS:
            if options.only in scenario.name:
                ends, problems = sweep(options, scenario)
                print(f"{scenario.name}: " + ", ".join(f"{count} {end}" for end, count in sorted(ends.items())))
                print("".join(f"    {problem}\n" for problem in problems[:20]), end="", flush=True)
                failed += len(problems)
    print(f"{failed} wrong")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
