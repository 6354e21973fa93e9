"""The systems on which the program is run: natively by run.py, on Windows and under Wine by the bundle of tests.

Copies of the program stand in folders in which it finds different libraries:

    recording    the recording MAPI library; "extended" the same with the Extended one as the registered mail client
    missing      no MAPI library at all
    no entry     a MAPI library that cannot send
    own          the product's own; for exhaustion.py alone
    probe, endings, static    not the program: the probes of the foundation's life and end
"""

import os
import pathlib
import re
import shutil
import signal
import subprocess
import types

LIMIT = 90  # seconds
CRASHED, STOPPED, ABORTED = "crashed", "stopped", "aborted"  # codes of a case: by a fault, at a breakpoint
PROBES = ("probe", "endings", "static")
CLIENTS = "HKEY_LOCAL_MACHINE\\Software\\Clients\\Mail"


def windows_path(native):
    """The path in the syntax that the program uses on both systems."""
    return "Z:" + str(native).replace("/", "\\")


def settings_text(rows):
    return "\n".join(["Windows Registry Editor Version 5.00", "", *rows, ""])


def link_or_copy(file, target):
    try:
        os.link(file, target)
    except OSError:  # in another file system
        shutil.copy(file, target)


def client_rows(**libraries):
    """The settings that make a mail client the default one, its libraries under the names of their values."""
    paths = {value: windows_path(library).replace("\\", "\\\\") for value, library in libraries.items()}
    return [f"[{CLIENTS}]", '@="CorvaneTest"', f"[{CLIENTS}\\CorvaneTest]",
            *(f'"{value}"="{path}"' for value, path in paths.items())]


class Place:
    """What runs here have in common. `root` is a folder of this run alone."""

    windows = wine = False

    def __init__(self, options, root):
        self.options = options
        self.root = root
        self.programs = {}
        # Settings of whoever starts the suite must not reach the program.
        self.environment = {name: value for name, value in os.environ.items()
                            if name not in ("CORVANE_TRANSCRIPT", "LD_LIBRARY_PATH")
                            and not name.startswith(("TESSARIX_", "CORVANE_MAPI_"))}
        self.environment["LC_ALL"] = "C.UTF-8"

    def folder(self):
        """The root as the program sees it."""
        return windows_path(self.root)

    def transcript(self, case):
        """The text that the case's run leaves, or a pattern of it."""
        return case.sends if isinstance(case.sends, re.Pattern) else "".join(part.transcript() for part in case.sends)

    def add_program(self, mail, program, library=None):
        folder = os.path.join(self.root, mail.replace(" ", ""))
        os.mkdir(folder)
        for file in (library, program) if library else (program,):
            self.programs[mail] = os.path.join(folder, os.path.basename(file))
            link_or_copy(file, self.programs[mail])


class Native(Place):
    def __init__(self, options, root):
        super().__init__(options, root)
        self.registry = pathlib.Path(root, "registry")
        self.environment["TESSARIX_REGISTRY"] = str(self.registry)
        self.add_program("recording", options.program, options.library)
        self.programs["extended"] = self.programs["recording"]

    def set_registry(self, extended, user=None, machine=None):
        """The foundation's settings, and the registered mail client."""
        self.registry.mkdir(exist_ok=True)
        client = client_rows(DllPathEx=self.options.extended_library) if extended else []
        for root, values, more in (("HKEY_CURRENT_USER", user, []), ("HKEY_LOCAL_MACHINE", machine, client)):
            rows = ['"{}"="{}"'.format(name, value.replace("\\", "\\\\")) for name, value in (values or {}).items()]
            text = settings_text([f"[{root}\\Software\\Ostrel\\Tessarix]", *rows, *more])
            (self.registry / f"{root}.reg").write_text(text, encoding="utf-8")

    def start(self, case, folder):
        """Runs the case in that folder: the exit code, output, errors, transcript, and the files that it leaves beside the
        program (name -> text). TimeoutExpired for one without an end."""
        for name, content in {**case.files, ".transcript": b""}.items():
            path = folder / os.fsdecode(name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(content)
        self.set_registry(case.mail == "extended", case.user, case.machine)
        program = pathlib.Path(self.programs[case.mail])
        there = set(program.parent.iterdir())
        environment = {**self.environment, "CORVANE_TRANSCRIPT": str(folder / ".transcript"), **case.environment}
        command = [*(["sh", "-c", case.shell] if case.shell else []), program, *case.words]
        ended = subprocess.run(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL, capture_output=True,
                               timeout=LIMIT, check=False)
        left = {path.name: path.read_bytes() for path in set(program.parent.iterdir()) - there}
        for name in left:
            (program.parent / name).unlink()
        return types.SimpleNamespace(
            code=ended.returncode, output=ended.stdout.decode(errors="replace"),
            errors=ended.stderr.decode(errors="replace"), transcript=(folder / ".transcript").read_text("utf-8"),
            left={name: text.decode("utf-16-le" if text.startswith(b"\xff\xfe") else "utf-8", "replace")
                  for name, text in left.items()})

    def ends(self, case, code):
        """Whether that is the case's end. A crash ends by a signal, or with the code of a sanitizer."""
        if case.code == CRASHED:
            return code not in (0, 255)
        signals = {STOPPED: -signal.SIGTRAP, ABORTED: -signal.SIGABRT}
        return code == (signals[case.code] if case.code in signals else case.code & 0xFF)


class Windows(Place):
    """What holds for the program as Windows starts it, whoever that Windows is."""

    windows = True

    def folder(self):
        return self.root

    def transcript(self, case):
        """The search for Extended MAPI finds the Simple library too, and keeps what it has loaded: that library comes and
        goes once in a run, however many deliveries it has."""
        text = super().transcript(case)
        if case.mail in ("extended", *PROBES) or case.mail == "recording" and not case.sends:
            return text
        return text.replace("end:\n", "") + ("" if case.code == CRASHED else "end:\n")

    def exit_code(self, code):
        return {CRASHED: 0xC0000005, STOPPED: 0x80000003, ABORTED: 3}.get(code) or code & 0xFFFFFFFF

    def line(self, case):
        """The whole command line: the case's own, or its words in the quotes that the program undoes. The program's place
        is told to the system apart."""
        rest = case.line if case.line is not None else " ".join(map(self.quote, case.words))
        return f'"corvane.exe" {rest}' if rest else '"corvane.exe"'

    @staticmethod
    def quote(word):
        if word and all("!" <= c <= "~" and c != '"' for c in word):
            return word
        return '"' + word.replace('"', '""') + '"'
