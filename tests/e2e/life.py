"""The life of the foundation, seen from outside: settings, the message log, the lists of messages, starts that fail."""

import re

from cases import FAILED, Case, fails
from expect import failure
from places import ABORTED, STOPPED

FLAGS = {"BreakOnMemoryException": 0x20, "EnableHeapSwitching": 0x8, "SaveUndefinedMessages": 0x2, "KeepTempFiles": 0x1,
         "UnloadLibraries": 0x80, "ShowHeapMemoryLeaks": 0x10, "CheckAllResourceModulesExistance": 0x100,
         "ReportMemoryErrorInMessageBox": 0x200, "SaveAllMessages": 0x400, "CheckMessagesParamsCount": 0x800}
USUAL = 0x48

# What the lists of messages that are to be saved begin with.
LISTS = {"SaveAllMessages": ("lifeprobe all messages.txt", "\ufeffName\tModule\tDefined\tUsed\r\nMSG_"),
         "SaveUndefinedMessages": ("lifeprobe.txt", "\ufeffERR_NO_MODULE_LOADED_FOR_CLASS\r\nERR_")}

# The user's settings, the flags, the stop modes, what becomes of the locale and of the failure that follows.
SETTINGS = (
    ({}, USUAL, "2 1"),
    # Each flag in a group of runs of its own.
    *(({name: "yes" for name in group}, USUAL | sum(FLAGS[name] for name in group), "2 1")
      for group in ([name for i, name in enumerate(FLAGS, 1) if i >> bit & 1] for bit in range(4))),
    ({name: " TRUE " for name in FLAGS}, 0xFFB | 0x40, "2 1"),
    ({name: "banana" for name in FLAGS}, 0x40, "2 1"),
    ({name: "" for name in FLAGS}, USUAL, "2 1"),
    ({"SetLocale": "no"}, USUAL, "2 1", "kept"),
    ({"SetLocale": "banana"}, USUAL, "2 1"),
    ({"AssertStopMode": "nEVER", "ErrorStopMode": "DEBUG"}, USUAL, "1 2"),
    ({"AssertStopMode": "", "ErrorStopMode": "Debug "}, USUAL, "2 1"),
    ({"AssertStopMode": "always", "ErrorStopMode": "Never"}, USUAL, "3 1"),
    ({"AssertStopMode": "Never", "ErrorStopMode": "Always"}, USUAL, "1 3", "changed", STOPPED),
)

RUN = ("Debug flags initialized.", "CRT locale changed.", "Application data path initialized.",
       "Registry paths initialized.", "Resource base initialized.", "All modules initialized.", "Deinitializing...", "All modules terminated.",
       "Temporary files system terminated.", "Resource base deinitialized.", "Deinitialization complete.")


STATIC = "Internal Program Error:\nAssertion failed: (  )\nsrc\\broken, 7.\n(  ).\n"
OUTER = "Internal Program Error:\nAssertion failed: (  )\nsrc\\outer, 1.\n(  )."
RAISED = "Internal Program Error:\nsrc\\outer, 1."
DOUBLE = "Double internal error!\nApplication terminated."
BOX = "box Tessarix: {} 1010\nabort\n"
TWICE = "".join(f"shown with style 4112: {text}\n" for text in (OUTER, DOUBLE)) + BOX.format(
    DOUBLE.replace("\n", "\\u000A"))

# What is shown and, where the foundation was not started, logged: an exception as what was raised and as what was shown.
ENDINGS = {
    "double": (TWICE, [OUTER, DOUBLE]),  # a failure inside a failure
    "raising": (TWICE, [OUTER, DOUBLE]),  # and a handler that raises in the end
    "exception": (TWICE.replace(OUTER, RAISED), [RAISED, RAISED, DOUBLE]),  # inside the report of an exception
    "pool": ("".join(f"{n} kept\n" for n in range(65)) + BOX.format("Not enough memory!"), []),
    "purecall": ("box abort\n", None),
    "uncaught": (BOX.format("Unhandled Internal Error"), None),
    "silent": ("box abort\n", None),  # the same without boxes
    "late": ("box abort\n", None),  # the same when the foundation has stopped
}


def log(lines, source="Tessarix: "):
    """A pattern of the log of a whole run."""
    return "".join(rf"\d\d:\d\d:\d\d ProcessID:\d+ {source}{re.escape(line)}\r\n" for line in lines)


def lines_of(text):
    """A pattern of the text, with line ends of either kind."""
    return re.escape(text).replace("\\\n", "\r?\n")


def probes(place):
    for user, flags, modes, locale, code in ((*row, *("changed", -1)[len(row) - 3:]) for row in SETTINGS):
        temp = {} if user else {"Temp": "Z:\\elsewhere"}
        # Each system's own text for the failure; where it stops, Wine's debugger reports.
        told = lines_of(f"flags {flags:x}, locale {locale}, modes {modes}\ntemp {temp.get('Temp', '')}\n")
        output = re.compile(f"(?s){told}.*" if code == STOPPED else f"(?s){told}Acc.*ied.*")
        left = {name: re.compile("(?s)" + start + ".*") for key, (name, start) in LISTS.items()
                if code != STOPPED and user.get(key, "banana").strip() in ("yes", "TRUE")}
        yield Case(f"settings {user}", ("settings",), (), code, output, left, mail="probe", user=user, machine=temp)
    yield Case("a module that can't start", ("badmodule",), mail="probe", output=re.compile(
        "Acc.*\\s+failed, state 3\\s+failed, state 3\\s+state 3\\s+"))
    if not place.windows:
        left = "".join(f"Undeleted object in virtual file sustem: \\\\Ostrel\\Tessarix\\VirtualFiles$\\{name}\n"
                       for name in ("a", "a\\b.txt"))
        yield Case("a file in memory that is left at the stop", ("files",), mail="probe", shell='exec "$0" "$@" 2>&1',
                   output=left, environment={"TESSARIX_DEBUG_OUTPUT": "1"})


def logs(place):
    def run(name, pattern, user, word=" ON ", output=failure("The argument -x is invalid."), **options):
        left = {"TessarixLog.txt": re.compile(pattern)} if pattern else {}
        return fails(name, ["-x"], output, user=user, machine={"WriteMessageLog": word}, left=left, **options)

    yield run("the log of a run", log(RUN), {})
    yield run("a log without a locale", log(line for line in RUN if "locale" not in line), {"SetLocale": "no"})
    yield run("the user has no say in the log", "", {"WriteMessageLog": "on"}, "no")
    yield run("a text that is no bool", "", {}, "banana")
    complaint = '(?s).*Number of params in message "The argument %0 is invalid." is invalid: 1, expected 3.\r\n.*'
    yield run("what people were shown", complaint, {"CheckMessagesParamsCount": "yes"}, output=re.compile(complaint))
    if not place.windows:
        yield run("a log goes on", "earlier\n" + log(RUN), {},
                  shell='printf "earlier\\n" > "${0%/*}/TessarixLog.txt"; exec "$0" "$@"')


def endings():
    yield Case("a static object fails", ("-r:ann",), (), FAILED, re.compile(lines_of(STATIC)), mail="static")
    for name, (output, logged) in ENDINGS.items():
        left = {"TessarixLog.txt": re.compile(log(logged, ""))} if logged else {}
        yield Case("an end: " + name, (name,), (), ABORTED, re.compile(lines_of(output)), left, mail="endings",
                   machine={} if logged is None else {"WriteMessageLog": " ON "})


def all_cases(place):
    yield from probes(place)
    yield from endings()
    yield from logs(place)
