"""What is done inside a client's own desktop: the account, the runs of the program, the composers, their drafts."""

import glob
import mailbox
import os
import re
import subprocess
import time

from accounts import CLIENTS
import imap
import message

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PROGRAM = os.path.join(ROOT, "build/linux-release/bin/corvane")
PICTURES = os.path.join(ROOT, "build/clients")
WINDOW_LIMIT = 60  # seconds
DRAFT_LIMIT = 15
SETTLE_LIMIT = 10
ALONE_TIME = 5
QUIET_PICTURES = 4  # half a second lies between two


def tool(*words):
    """What a small program of the desktop prints; nothing where it fails or hangs."""
    try:
        return subprocess.run(words, stdout=subprocess.PIPE, timeout=10, check=False, text=True).stdout
    except subprocess.TimeoutExpired:
        return ""


def write(path, text):
    path = os.path.join(os.environ["HOME"], path)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


def windows(title):
    return set(tool("xdotool", "search", "--onlyvisible", "--name", title).split())


def awaited(limit, ask):
    """What `ask` answers as soon as that is something, asked until the time is up."""
    end = time.monotonic() + limit
    while not (answer := ask()) and time.monotonic() < end:
        time.sleep(0.5)
    return answer


def new_window(client, before):
    """The composer, or None; a question that the client asks first is answered."""
    def look():
        for window in windows(client.question[0]) if client.question else ():
            tool("xdotool", "windowactivate", window, "key", *client.question[1:])
        return windows(client.window) - before

    return max(awaited(WINDOW_LIMIT, look), default=None)


def picture(path):
    """Taken anew until nothing changes any more: the client has finished drawing."""
    last = []

    def settled():
        tool("import", "-window", "root", path)
        with open(path, "rb") as file:
            last.append(file.read())
        return len(last) > QUIET_PICTURES and len(set(last[-QUIET_PICTURES:])) == 1

    awaited(SETTLE_LIMIT, settled)


def kept(pattern):
    """The drafts that the client has kept: a file each, or all in one mailbox."""
    found = []
    for path in glob.glob(os.path.join(os.environ["HOME"], pattern), include_hidden=True):
        with open(path, "rb") as file:
            data = file.read()
        found += [bytes(draft) for draft in mailbox.mbox(path)] if data.startswith(b"From ") else [data]
    return found


def run_program(run):
    """All that the program says."""
    command = [PROGRAM, *message.arguments(os.environ["HOME"], run)]
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, timeout=30, check=False, text=True)
    return done.stderr + done.stdout + (f"exit code {done.returncode}" if done.returncode else "")


def type_line(said, program):
    """Runs the line that was printed for the user in a terminal, as a user would."""
    if line := re.search(rf"\b{program} -H .*", said):
        subprocess.Popen(["xterm", "-T", "terminal", "-fa", "DejaVu Sans Mono", "-e", "sh", "-c", line[0]])


def open_composer(name, run):
    """Runs the program and keeps a picture; the composer's window, or None."""
    client = CLIENTS[name]
    before = windows(client.window)
    said = run_program(run)
    if client.terminal:
        type_line(said, name)
    window = new_window(client, before)
    if window:
        # Large, and without the pointer over it: what it has to say about a button hides a field.
        tool("xdotool", "mousemove", "1279", "1023",
             "windowmove", window, "0", "0", "windowsize", window, "1270", "960")
    else:
        print(f"{name} {run}: the program said: {said}")
    picture(os.path.join(PICTURES, f"{name}-{run}.png"))
    return window


def verdict(client, run, window):
    """What is wrong in the draft that a composer keeps; empty if nothing is."""
    tool("xdotool", "windowactivate", "--sync", window, "key", client.save)
    nearest = ["no draft is kept: look at the picture"]

    def all_right():
        nonlocal nearest
        found = [message.differences(draft, run, client.drops) for draft in kept(client.drafts)]
        nearest = min(found, key=len, default=nearest)
        return not nearest

    awaited(DRAFT_LIMIT, all_right)
    return "; ".join(nearest)


def make_account(client):
    port = imap.serve(os.path.join(os.environ["HOME"], "imap"))
    for path, text in client.account.items():
        write(path, text.replace("{imap}", str(port)))
    write(".config/mimeapps.list", f"[Default Applications]\nx-scheme-handler/mailto={client.entry}\n")
    message.make_files(os.environ["HOME"])


def left_alone(name):
    """For a client that must not be started: true when the program says so, and no window comes."""
    said = run_program("cold")
    alone = "Mail client not started" in said and not awaited(ALONE_TIME, lambda: windows("."))
    print(f"{name} cold: {'left alone, and the user is told what to do' if alone else said}")
    return alone


def look_at(name):
    """Runs from cold and warm, and prints a line for each; true when all was right."""
    client = CLIENTS[name]
    make_account(client)
    subprocess.Popen(["openbox"])
    if not client.window:
        return left_alone(name)
    # Some close a composer that has kept its draft, and end with the last one: both are open before that.
    composers = {run: open_composer(name, run) for run in (("cold",) if client.terminal else ("cold", "warm"))}
    right = True
    for run, window in composers.items():
        wrong = verdict(client, run, window) if window else "no composer"
        print(f"{name} {run}: {wrong or 'every field right'}")
        right = right and not wrong
    return right
