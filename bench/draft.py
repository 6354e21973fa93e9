#!/usr/bin/env python3
"""What a whole run takes that keeps a draft and starts no mail client, with the MAPI library that is installed with the
program: processor time, of the process and of all that it waits for, beside that of commands that other tools for the
same purpose begin with. All of them alternate."""

import os
import statistics
import tempfile

import measuring

PEERS = ("xdg-email --help", "python3 -c pass")
PATH = "/usr/local/bin:/usr/bin:/bin"  # the system's own, whatever stands in front of them for a developer


def is_there(command):
    return any(os.access(os.path.join(folder, command.split()[0]), os.X_OK) for folder in PATH.split(":"))


def processor_time(command, environment):
    _, usage = measuring.run(command, environment)
    return usage.ru_utime + usage.ru_stime


def main():
    options = measuring.arguments(__doc__)
    os.environ["PATH"] = PATH
    with tempfile.TemporaryDirectory(prefix="corvane-bench-") as root:
        environment = {"PATH": PATH, "HOME": root, "XDG_DATA_HOME": root, "TESSARIX_REGISTRY": root,
                       "LC_ALL": "C.UTF-8", "CORVANE_MAIL_CLIENT": "draft"}
        commands = {"draft": [os.path.join(options.build, "bin", "corvane"), *measuring.WORDS],
                    **{f"draft/{peer}": peer.split() for peer in PEERS if is_there(peer)}}
        times = {name: [] for name in commands}
        for _ in range(options.runs or 200):
            for name, command in commands.items():
                times[name].append(processor_time(command, environment))
        drafts = len(os.listdir(os.path.join(root, "corvane", "drafts")))
        if drafts != len(times["draft"]):
            raise RuntimeError(f"{drafts} drafts were kept")
    medians = {name: statistics.median(values) for name, values in times.items()}
    for name, seconds in medians.items():
        print(f"{name}: {seconds * 1000:.2f} ms of the processor", flush=True)
    measuring.keep(options.out, {name: {"cpu_time": seconds} for name, seconds in medians.items()})


if __name__ == "__main__":
    main()
