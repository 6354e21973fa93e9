#!/usr/bin/env python3
"""Hands one message to real mail clients and looks at what they make of it: a maintainer's check before a release.

Each client has a desktop of its own (home, session bus, display) and an account that needs no network. The program
runs when the client isn't running, and again when it is. A picture of the composer is kept each time; then the composer
keeps its message as a draft, and what is in there is compared with what was given.
"""

import argparse
import ctypes
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time

import desktop
from accounts import CLIENTS

DESKTOP_PACKAGES = "xvfb dbus openbox xdotool imagemagick xdg-utils xterm fonts-dejavu-core fonts-noto-color-emoji"
CLIENT_LIMIT = 180  # seconds, for both runs
POLITE_LIMIT = 3
PR_SET_CHILD_SUBREAPER = 36  # sys/prctl.h


def environment_of(home):
    """Nothing of the maintainer's own desktop reaches the client."""
    kept = {name: os.environ[name] for name in ("PATH", "USER", "LOGNAME") if name in os.environ}
    places = {"HOME": "", "TMPDIR": "tmp", "XDG_RUNTIME_DIR": "run", "XDG_CONFIG_HOME": ".config",
              "XDG_DATA_HOME": ".local/share", "XDG_CACHE_HOME": ".cache"}
    # Thunderbird would make a profile of its own for each folder that it is installed in.
    return {**kept, **{name: os.path.join(home, place).rstrip("/") for name, place in places.items()},
            "LANG": "C.UTF-8", "GSETTINGS_BACKEND": "memory", "NO_AT_BRIDGE": "1", "MOZ_LEGACY_PROFILES": "1"}


def end_children():
    """Politely at first: the display's server takes its lock away, and databases are closed. Whoever loses its parent
    becomes a child of this process, so that in the end nobody is left."""
    started = time.monotonic()
    while True:
        for child in pathlib.Path("/proc/thread-self/children").read_text(encoding="ascii").split():
            os.kill(int(child), signal.SIGTERM if time.monotonic() < started + POLITE_LIMIT else signal.SIGKILL)
        try:
            while os.waitpid(-1, os.WNOHANG)[0]:
                pass
        except ChildProcessError:
            return
        time.sleep(0.1)


def try_client(name):
    """Runs this script again inside the client's own desktop; true when all was right."""
    os.makedirs(desktop.PICTURES, exist_ok=True)
    # Whatever runs inside chatters on the usual streams; the report comes through one of its own.
    report = os.dup(sys.stdout.fileno())
    with tempfile.TemporaryDirectory(prefix="corvane-client-", ignore_cleanup_errors=True) as home, \
            open(os.path.join(desktop.PICTURES, f"{name}.log"), "wb") as log:
        try:
            for folder in ("run", "tmp"):
                os.mkdir(os.path.join(home, folder), 0o700)
            # The server itself finds a number that is free.
            server = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp"],
                                      stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
            environment = {**environment_of(home), "DISPLAY": ":" + server.stdout.readline().decode().strip()}
            command = ["dbus-run-session", "--", sys.executable, os.path.abspath(__file__), f"--inside={report}", name]
            return subprocess.Popen(command, cwd=home, env=environment, pass_fds=(report,), stdout=log,
                                    stderr=log).wait(CLIENT_LIMIT) == 0
        except subprocess.TimeoutExpired:
            print(f"{name}: not done after {CLIENT_LIMIT} seconds")
            return False
        finally:
            os.close(report)
            end_children()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--packages", action="store_true", help="only say which of Debian's packages are needed")
    parser.add_argument("--inside", type=int, help=argparse.SUPPRESS)
    parser.add_argument("names", nargs="*", metavar="NAME", help=f"of: {' '.join(CLIENTS)} (default: all)")
    options = parser.parse_args()
    names = options.names or list(CLIENTS)
    if unknown := [name for name in names if name not in CLIENTS]:
        parser.error(f"no client '{unknown[0]}'; there are: {' '.join(CLIENTS)}")
    if options.packages:
        print(DESKTOP_PACKAGES, *(CLIENTS[name].packages for name in names))
        return 0
    if options.inside:
        sys.stdout = sys.stderr = open(options.inside, "w", buffering=1, encoding="utf-8")
        return 0 if desktop.look_at(names[0]) else 1
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
    failed = [name for name in names if not try_client(name)]
    print(f"clients: {len(names)}, failed: {' '.join(failed) or 'none'}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
