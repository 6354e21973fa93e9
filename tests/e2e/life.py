"""The life of the foundation, seen from outside: settings, the message log, the lists of messages, starts that fail."""

import contextlib
import os
import re
import resource
import signal
import subprocess

from expect import failure
from places import NOBODY, execute, settings_text, windows_path

KEY = "Software\\Ostrel\\Tessarix"
USER = "HKEY_CURRENT_USER"
MACHINE = "HKEY_LOCAL_MACHINE"
LIMIT = 60  # seconds
BREAKPOINT = 0x80000003  # the exit code that it gives on Windows
WORD = "-x"  # an argument that the program refuses
REFUSAL = "The argument -x is invalid."

FLAGS = {"BreakOnMemoryException": 0x20, "EnableHeapSwitching": 0x8, "SaveUndefinedMessages": 0x2, "KeepTempFiles": 0x1,
         "UnloadLibraries": 0x80, "ShowHeapMemoryLeaks": 0x10, "CheckAllResourceModulesExistance": 0x100,
         "ReportMemoryErrorInMessageBox": 0x200, "SaveAllMessages": 0x400, "CheckMessagesParamsCount": 0x800}
USUAL = 0x48

# The user's settings, the flags, what becomes of the locale. Saved lists would lie beside the probe: it stops with them.
SETTINGS = (
    ({}, USUAL, "changed"),
    # Each flag in a group of runs of its own.
    *(({name: "yes" for name in group}, USUAL | sum(FLAGS[name] for name in group), "changed")
      for group in ([name for i, name in enumerate(FLAGS, 1) if i >> bit & 1] for bit in range(4))),
    ({name: " TRUE " for name in FLAGS}, 0xFFB | 0x40, "changed"),
    ({name: "banana" for name in FLAGS}, 0x40, "changed"),
    ({name: "" for name in FLAGS}, USUAL, "changed"),
    ({"EnableHeapSwitching": "off"}, 0x40, "changed"),
    ({"SetLocale": "no"}, USUAL, "kept"),
    ({"SetLocale": "banana"}, USUAL, "changed"),
)

# The settings of the stop modes, as they are read, whether the failure that follows stops the process.
STOP_MODES = (
    ({}, "2 1\n", False),
    ({"AssertStopMode": "nEVER", "ErrorStopMode": "DEBUG"}, "1 2\n", False),
    ({"AssertStopMode": "", "ErrorStopMode": "Debug "}, "2 1\n", False),
    ({"AssertStopMode": "always", "ErrorStopMode": "Never"}, "3 1\n", False),
    ({"AssertStopMode": "Never", "ErrorStopMode": "Always"}, "1 3\n", True),
)

START = ("Debug flags initialized.", "CRT locale changed.", "Application data path initialized.",
         "Registry paths initialized.", "Resource base initialized.", "All modules initialized.")
STOP = ("All modules terminated.", "Temporary files system terminated.", "Resource base deinitialized.",
        "Deinitialization complete.")
LISTS = ("All messages saved.", "Undefined messages saved.")

# Names that the foundation asks for and the program has no text for: the built-in ones serve.
UNDEFINED = ("ERR_NO_MODULE_LOADED_FOR_CLASS", "ERR_UNCAUGHT_INTERNAL_ERROR", "MSG_ASSERT", "MSG_ASSERTLASTERROR",
             "MSG_FAST_MEMORY_FILE", "MSG_MEMORY_FILE", "MSG_PRESUME", "MSG_PRESUMELASTERROR", "MSG_VIRTUAL_MEMORY_FILE")


class Life:
    """Runs of the probe and of the program with settings of their own."""

    def __init__(self, place):
        self.place = place
        self.program = place.programs["missing"]
        self.folder = os.path.dirname(self.program)

    @contextlib.contextmanager
    def settings(self, user=None, machine=None):
        """On Windows they are everybody's: no other test runs meanwhile."""
        for root, values in ((USER, user or {}), (MACHINE, machine or {})):
            rows = ['"{}"="{}"'.format(name, value.replace("\\", "\\\\")) for name, value in values.items()]
            self.store(root, f"[-{root}\\{KEY}]", f"[{root}\\{KEY}]", *rows)
        try:
            yield
        finally:
            for root in (USER, MACHINE):
                self.store(root, f"[-{root}\\{KEY}]")

    def store(self, root, *rows):
        if self.place.windows:
            self.place.registry(settings_text(*rows))
            return
        folder = self.place.environment["TESSARIX_REGISTRY"]
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, root + ".reg"), "w", encoding="utf-8") as file:
            file.write(settings_text(*rows))

    def command(self, program, *words):
        return [*([self.place.options.wine] if self.place.windows else []), program, *words]

    def probe(self, *words, **environment):
        result = execute(self.command(self.place.options.life_probe, *words), self.folder,
                         {**self.place.environment, **environment}, LIMIT)
        told = result.output + (b"" if self.place.windows else result.errors)  # Wine has something to say itself
        return result.code, told.decode(errors="replace").replace("\r\n", "\n")

    def run(self, user=None):
        """A run that ends in an error message: its exit code and what it printed."""
        result = execute(self.command(self.program, WORD), self.folder, self.place.environment, LIMIT, user)
        return result.code, result.output.decode(errors="replace")

    def path(self, name):
        return os.path.join(self.folder, name)

    def take(self, name):
        """A file's bytes; None if there is none. It is gone afterwards."""
        with contextlib.suppress(FileNotFoundError):
            with open(self.path(name), "rb") as file:
                content = file.read()
            os.unlink(self.path(name))
            return content
        return None


def expect(what, found, wanted):
    return [] if found == wanted else [f"{what}: {found!r}, expected {wanted!r}"]


def probe_rows():
    """Each run of the probe: its name and command, the user's and the machine's settings, what it tells, whether it is
    stopped."""
    for user, flags, locale in SETTINGS:
        temp = {"Temp": "Z:\\elsewhere"} if not user else {}
        told = f"flags {flags:x}, locale {locale}\ntemp {temp.get('Temp', '')}\n"
        yield f"settings {user}", "settings", user, temp, told, False
    for user, modes, stops in STOP_MODES:
        yield f"stop modes {user}", "modes", user, {}, modes, stops


def settings_checks(life):
    for name, command, user, machine, told, stops in probe_rows():
        with life.settings(user, machine):
            found = life.probe(command)
        yield name, expect("told", found, (-signal.SIGTRAP if stops else 0, told))


def log_pattern(*lines):
    """The whole log, in bytes: a pattern."""
    rows = [rb"\d\d:\d\d:\d\d ProcessID:\d+ " + re.escape(line.encode()) + b"\r\n" for line in lines]
    return re.compile(b"".join(rows))


def run_log(*between):
    told = lambda lines: [f"Tessarix: {line}" for line in lines]
    return log_pattern(*told(START), *told(["Deinitializing..."]), *told(between), *told(STOP))


def match(pattern, found):
    return [] if found is not None and pattern.fullmatch(found) else [f"logged {found!r}"]


def usual_run(life, user=None):
    return expect("run", life.run(user), (255, failure(REFUSAL)))


def log_checks(life):
    with life.settings(machine={"WriteMessageLog": "on"}):
        yield "the log of a run", usual_run(life) + match(run_log(), life.take("TessarixLog.txt"))
        with open(life.path("TessarixLog.txt"), "wb") as file:
            file.write(b"earlier\n")
        problems = usual_run(life)
        found = life.take("TessarixLog.txt")
        yield "a log goes on", problems + expect("start", found[:8], b"earlier\n") + match(run_log(), found[8:])
        yield from lost_line_checks(life)
    with life.settings(user={"WriteMessageLog": "on"}, machine={"WriteMessageLog": "no"}):
        yield "no log", usual_run(life) + expect("log", life.take("TessarixLog.txt"), None)
    with life.settings(machine={"WriteMessageLog": "banana"}):
        yield "a text that is no bool", usual_run(life) + expect("log", life.take("TessarixLog.txt"), None)
    with life.settings({"CheckMessagesParamsCount": "yes"}, {"WriteMessageLog": " ON "}):
        life.run()
        complaint = b'Number of params in message "The argument %0 is invalid." is invalid: 1, expected 3.\r\n'
        yield "what people were shown", expect("complaints", life.take("TessarixLog.txt").count(complaint), 1)
    with life.settings({"SetLocale": "no"}, {"WriteMessageLog": "1"}):
        problems = usual_run(life)
        yield "a start without a locale", problems + expect("locale lines", life.take("TessarixLog.txt").count(b"locale"), 0)


def lost_line_checks(life):
    """Where the log can't be written its lines are lost, and nothing else changes."""
    log = life.path("TessarixLog.txt")
    os.mkdir(log)
    yield "a folder in the log's place", usual_run(life)
    os.rmdir(log)
    if not life.place.windows:
        yield "a full disk", full_disk(life) + expect("log", life.take("TessarixLog.txt"), b"x" * 100)
        if os.geteuid() == 0:
            with open(log, "wb") as file:
                os.fchmod(file.fileno(), 0)
            yield "a log of somebody else", usual_run(life, NOBODY) + expect("log", life.take("TessarixLog.txt"), b"")


def full_disk(life):
    """A run that may not make any file longer than the log is."""
    with open(life.path("TessarixLog.txt"), "wb") as file:
        file.write(b"x" * 100)
    limit = lambda: (signal.signal(signal.SIGXFSZ, signal.SIG_IGN), resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100)))
    result = subprocess.run(life.command(life.program, WORD), cwd=life.folder, env=life.place.environment,
                            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, timeout=LIMIT, check=False, preexec_fn=limit)
    return expect("run", (result.returncode, result.stdout.decode()), (255, failure(REFUSAL)))


def catalogue():
    """The names of all messages, each with whether the program's own code asks for it."""
    file = os.path.join(os.path.dirname(__file__), "..", "support", "catalogue.inc")
    with open(file, encoding="utf-8") as stream:
        return re.findall(r"^ROW\(\d+, (\w+), (Used|Idle),", stream.read(), re.M)


def utf16(content):
    return (content or b"").decode("utf-16-le", "replace")


def list_checks(life):
    rows = catalogue()
    module = windows_path(life.program)
    used = [f"{name}\t{module}\ttrue\ttrue\r\n" for name, use in rows if use == "Used"]
    used += [f"{name}\t{module}\tfalse\ttrue\r\n" for name in UNDEFINED]
    unused = [name for name, use in rows if use == "Idle"]
    title = os.path.splitext(os.path.basename(life.program))[0]
    with life.settings({"SaveAllMessages": "yes", "SaveUndefinedMessages": "yes"}, {"WriteMessageLog": "yes"}):
        problems = usual_run(life) + match(run_log(*LISTS), life.take("TessarixLog.txt"))
        head, *lines = utf16(life.take(f"{title} all messages.txt")).splitlines(keepends=True)
        problems += expect("head", head, "\ufeffName\tModule\tDefined\tUsed\r\n")
        # Records of several sources come in the order in which these were linked.
        problems += expect("records", sorted(lines[:len(used)]), sorted(used))
        problems += expect("unused", lines[len(used):], [f"{name}\t\ttrue\tfalse\r\n" for name in unused])
        undefined = "\r\n".join([*UNDEFINED, "********** Unused messages ********", *unused])
        yield "the lists of messages", problems + expect(
            "undefined ones", utf16(life.take(f"{title}.txt")), "\ufeff" + undefined)
        os.mkdir(life.path(f"{title} all messages.txt"))
        problems = usual_run(life) + match(run_log(), life.take("TessarixLog.txt"))
        os.rmdir(life.path(f"{title} all messages.txt"))
        yield "a list that can't be written takes the other along", problems + expect("list", life.take(f"{title}.txt"), None)


def start_checks(life):
    told = life.probe("badmodule")[1].split()
    wanted = "failed, state 3 failed, state 3 state 3"
    yield "a module that can't start", expect("shown", told.count("shown:"), 1) + expect("told", told[-8:], wanted.split())
    if not life.place.windows:
        left = "".join(f"Undeleted object in virtual file sustem: \\\\Ostrel\\Tessarix\\VirtualFiles$\\{name}\n"
                       for name in ("c.txt", "a", "a\\b.txt"))
        yield "files in memory that are left at the stop", expect(
            "told", life.probe("files", TESSARIX_DEBUG_OUTPUT="1"), (0, "found c.txt 4\nfound a 0\n" + left))
    if not life.place.options.faults:
        return
    own = windows_path(os.path.dirname(life.place.options.life_probe)) + "\\"
    # A path too long for the shell's buffer, and no other way to ask.
    found = life.probe("folders", XDG_DATA_HOME="/" + "x" * 300, TESSARIX_FAULT="SHGetSpecialFolderLocation:1:5:on")
    yield "no application folders", expect("told", found, (0, f"local {own}\nroaming {own}\ncommon {own}\n"))


def checks(place):
    life = Life(place)
    if not place.windows:  # the runner of the bundle has these too
        yield from settings_checks(life)
    yield from log_checks(life)
    yield from list_checks(life)
    yield from start_checks(life)
