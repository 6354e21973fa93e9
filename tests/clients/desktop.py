"""What is done inside a client's own desktop: the account, the runs of the program, the composers, their drafts."""

import email.header
import email.policy
import email.utils
import glob
import mailbox
import os
import pathlib
import re
import subprocess
import time

from accounts import CLIENTS

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PROGRAM = os.path.join(ROOT, "build/linux-release/bin/corvane")
PICTURES = os.path.join(ROOT, "build/clients")
WINDOW_LIMIT = 60  # seconds
DRAFT_LIMIT = 15
SETTLE_TIME = 4  # until a client has drawn its window
ALONE_TIME = 5

# The message that every client is handed.
RECIPIENTS = [('Lee, Ann "Q"', "ann@example.org"), ("Jürgen O'Neil", "juergen@example.org"), ("", "bare@example.org")]
SUBJECT = "It's 100%25 \"done\", ok? ü € 😀 +a&b"
BODY = "He said \"no\" and 'yes' at 100%.\n%41 <b>bold</b> &amp; ü € 😀\n',subject='HACK'\n\nLast line,"
FOLDER = "my dir, it's Übung %41 #1"
CONTENTS = {name: f"This is {name}." for name in (
    "two words.txt", "a,b.txt", "it's.txt", 'say "hi".txt', "50%25 & more.txt", "Übung.txt", "smile 😀.txt")}


def make_account(client):
    home = pathlib.Path(os.environ["HOME"])
    default = {".config/mimeapps.list": f"[Default Applications]\nx-scheme-handler/mailto={client.entry}\n"}
    attached = {f"{FOLDER}/{name}": text + "\n" for name, text in CONTENTS.items()}
    for name, text in {**client.account, **default, **attached}.items():
        (home / name).parent.mkdir(parents=True, exist_ok=True)
        (home / name).write_text(text, encoding="utf-8")


def decoded(text):
    return str(email.header.make_header(email.header.decode_header(text)))


def file_name(part):
    """Some clients leave quotes in a quoted name as they are, and encode words in it: both are read as meant."""
    plain = re.search(r'filename="(.*)"', str(part.get("Content-Disposition", "")))
    return decoded(plain[1].replace('\\"', '"')) if plain else decoded(part.get_filename() or "")


def text_of(part):
    return part.get_payload(decode=True).decode(part.get_content_charset("utf-8")).replace("\r\n", "\n").rstrip()


def differences(data, run):
    """Which fields of a kept draft aren't as given, and how; empty when all are. Blank ends are the client's own. The
    old policy hands headers over as they are written: the new one repairs them."""
    draft = email.message_from_bytes(data, policy=email.policy.compat32)
    to, subject = (" ".join(str(draft.get(field, "")).split()) for field in ("To", "Subject"))
    found = {"to": [(decoded(name), address) for name, address in email.utils.getaddresses([to])],
             "subject": " ".join(decoded(subject).split()), "attachments": {}}
    for part in draft.walk():
        if part.get_content_disposition() == "attachment":
            found["attachments"][file_name(part)] = text_of(part)
        elif part.get_content_type() == "text/plain":
            found.setdefault("body", text_of(part))
    given = {"to": RECIPIENTS, "subject": SUBJECT, "body": f"{BODY} {run}", "attachments": CONTENTS}
    return [f"{name} {found.get(name)!r}" for name in given if found.get(name) != given[name]]


def tool(*words):
    """What a small program of the desktop prints; nothing where it fails or hangs."""
    try:
        return subprocess.run(words, stdout=subprocess.PIPE, timeout=10, check=False, text=True).stdout
    except subprocess.TimeoutExpired:
        return ""


def windows(title):
    return set(tool("xdotool", "search", "--onlyvisible", "--name", title).split())


def awaited(limit, ask):
    """What `ask` answers as soon as that is something, asked until the time is up."""
    end = time.monotonic() + limit
    while not (answer := ask()) and time.monotonic() < end:
        time.sleep(0.5)
    return answer


def kept(pattern):
    """The drafts that the client has kept: a file each, or all in one mailbox."""
    found = []
    for path in glob.glob(os.path.join(os.environ["HOME"], pattern), include_hidden=True):
        data = pathlib.Path(path).read_bytes()
        found += [bytes(draft) for draft in mailbox.mbox(path)] if data.startswith(b"From ") else [data]
    return found


def run_program(run):
    """All that the program says. The body names the run: no draft of one is taken for that of another."""
    words = [f"-r:{name} <{address}>" if name else f"-r:{address}" for name, address in RECIPIENTS]
    words += [f"-s:{SUBJECT}", f"-b:{BODY} {run}", *(f"-a:{os.environ['HOME']}/{FOLDER}/{name}" for name in CONTENTS)]
    done = subprocess.run([PROGRAM, "-nologo", *words], stdin=subprocess.DEVNULL, capture_output=True, timeout=30,
                          check=False, text=True)
    return done.stderr + done.stdout + (f"exit code {done.returncode}" if done.returncode else "")


def open_composer(name, run):
    """Runs the program and keeps a picture; the composer's window, or None. The line that is printed for the user is
    run in a terminal, as a user would."""
    client = CLIENTS[name]
    before = windows(client.window)
    said = run_program(run)
    if client.terminal and (line := re.search(rf"\b{name} -H .*", said)):
        subprocess.Popen(["xterm", "-T", "terminal", "-fa", "DejaVu Sans Mono", "-e", "sh", "-c", line[0]])
    window = max(awaited(WINDOW_LIMIT, lambda: windows(client.window) - before), default=None)
    if window:
        # Large, and without the pointer over it: what it has to say about a button hides a field.
        tool("xdotool", "mousemove", "1279", "1023",
             "windowmove", window, "0", "0", "windowsize", window, "1270", "960")
    else:
        print(f"{name} {run}: the program said: {said}")
    time.sleep(SETTLE_TIME)
    tool("import", "-window", "root", os.path.join(PICTURES, f"{name}-{run}.png"))
    return window


def verdict(client, run, window):
    """What is wrong in the draft that a composer keeps; empty if nothing is."""
    tool("xdotool", "windowactivate", "--sync", window, "key", client.save)
    none = ["no draft is kept: look at the picture"]
    nearest = lambda: min((differences(draft, run) for draft in kept(client.drafts)), key=len, default=none)
    awaited(DRAFT_LIMIT, lambda: not nearest())
    return "; ".join(nearest())


def look_at(name):
    """Runs from cold and warm, and prints a line for each; true when all was right. A client that must not be started
    is left alone: the program says so, and no window comes."""
    client = CLIENTS[name]
    make_account(client)
    subprocess.Popen(["openbox"])
    if not client.window:
        said = run_program("cold")
        alone = "Mail client not started" in said and not awaited(ALONE_TIME, lambda: windows("."))
        print(f"{name} cold: {'left alone, and the user is told what to do' if alone else said}")
        return alone
    # Some close a composer that has kept its draft, and end with the last one: both are open before that.
    composers = {run: open_composer(name, run) for run in (("cold",) if client.terminal else ("cold", "warm"))}
    right = True
    for run, window in composers.items():
        wrong = verdict(client, run, window) if window else "no composer"
        print(f"{name} {run}: {wrong or 'every field right'}")
        right = right and not wrong
    return right
