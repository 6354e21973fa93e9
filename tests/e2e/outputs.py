"""Where the program's text goes, byte by byte: the same failing run with each kind of standard output."""

import os
import pty
import re
import subprocess

from expect import failure

WORD = "-\u00e9\u20ac"  # both are in the Windows code page too
TEXT = failure(f"The argument {WORD} is invalid.")
MARK = b"\xff\xfe"
LIMIT = 30  # seconds


def start(place, folder, output):
    """The run's exit code."""
    command = [place.programs["recording"], WORD]
    if place.windows:
        command.insert(0, place.options.wine)
    process = subprocess.run(command, cwd=folder, env=place.environment, stdin=subprocess.DEVNULL, stdout=output,
                             stderr=subprocess.DEVNULL, timeout=LIMIT, check=False)
    return process.returncode


def into_file(place, folder, content, appended):
    path = os.path.join(folder, "output")
    with open(path, "wb") as file:
        file.write(content)
    # Opened as `>>` opens it, at position 0; on Windows whoever appends moves to the end himself.
    output = os.open(path, os.O_WRONLY | (os.O_APPEND if appended else 0))
    if appended and place.windows:
        os.lseek(output, 0, os.SEEK_END)
    code = start(place, folder, output)
    os.close(output)
    with open(path, "rb") as file:
        return code, file.read()


def into_terminal(place, folder):
    """What a terminal shows. A reader empties it all along, for it holds little, until the last writer is gone."""
    master, slave = pty.openpty()
    reader = subprocess.Popen(["cat"], stdin=master, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    os.close(master)
    try:
        code = start(place, folder, slave)
    finally:
        os.close(slave)
    return code, reader.communicate(timeout=LIMIT)[0]


def visible(screen):
    """A terminal's text without what moves the cursor, in one line."""
    plain = re.sub(r"\x1b\[[0-9;?]*[A-Za-z]|\x1b\][^\x07]*\x07", " ", screen.decode(errors="replace"))
    return " ".join(plain.split())


def checks(place, root):
    """Each check's name and what is wrong."""
    folder = os.path.join(root, "outputs")
    os.mkdir(folder)
    # Without a console Wine has no code page for it, which means the ANSI one.
    narrow = TEXT.encode("cp1252" if place.windows else "utf-8")
    wide = MARK + TEXT.encode("utf-16-le")
    for name, content, appended, expected in (("written over", b"old", False, wide), ("new, appended to", b"", True, wide),
                                              ("appended to", b"old\r\n", True, b"old\r\n" + narrow)):
        yield f"output into a file that is {name}", compared(expected, *into_file(place, folder, content, appended))
    code, screen = into_terminal(place, folder)
    yield "output on a terminal", compared(" ".join(TEXT.split()), code, visible(screen))
    if not place.windows:
        # Nowhere to print to: the failure to report ends the run, and the last notice goes to standard error.
        closed = subprocess.run(["sh", "-c", 'exec "$0" "$1" >&-', place.programs["recording"], WORD], cwd=folder,
                                env=place.environment, stdin=subprocess.DEVNULL, stderr=subprocess.PIPE, timeout=LIMIT,
                                check=False)
        yield "no standard output", compared(b"Corvane: The handle is invalid.\r\n\n", closed.returncode, closed.stderr)


def compared(expected, code, found):
    problems = [] if code == 255 else [f"exit code {code}, expected 255"]
    return problems + ([] if expected == found else [f"expected {expected!r}", f"found {found!r}"])
