"""The systems on which the program is run: natively by run.py, on Windows and under Wine by the bundle of tests.

Copies of the program stand in folders in which it finds different libraries:

    recording    the recording MAPI library; "extended" the same with the Extended one as the registered mail client
    missing      no MAPI library at all
    no entry     a MAPI library that cannot send
    lacking      a MAPI library that lacks one itself; natively alone
    probe        the probe of the foundation's life in the program's place
"""

import os
import pathlib
import re
import shutil
import signal
import subprocess

CRASHED, STOPPED = "crashed", "stopped"  # codes of a case: by a fault, at a breakpoint
CLIENTS = "HKEY_LOCAL_MACHINE\\Software\\Clients\\Mail"


def windows_path(native):
    """The path in the syntax that the program uses on both systems."""
    return "Z:" + str(native).replace("/", "\\")


def settings_text(rows):
    return "\n".join(["Windows Registry Editor Version 5.00", "", *rows, ""])


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

    def __exit__(self, *_):
        pass

    def folder(self):
        """The root as the program sees it."""
        return windows_path(self.root)

    def transcript(self, case):
        """The text that the case's run leaves, or a pattern of it."""
        return case.sends if isinstance(case.sends, re.Pattern) else "".join(part.transcript() for part in case.sends)

    def copy_program(self, mail, program, library=None):
        folder = os.path.join(self.root, mail.replace(" ", ""))
        os.mkdir(folder)
        self.programs[mail] = shutil.copy(program, folder)
        return shutil.copy(library, folder) if library else None


class Native(Place):
    def __init__(self, options, root):
        super().__init__(options, root)
        self.registry = pathlib.Path(root, "registry")
        self.environment["TESSARIX_REGISTRY"] = str(self.registry)
        self.copy_program("recording", options.program, options.library)
        self.programs["extended"] = self.programs["recording"]

    def __enter__(self):
        self.set_registry(self.options.extended)
        return self

    def copy_others(self):
        self.copy_program("probe", self.options.life_probe)
        self.copy_program("missing", self.options.program)
        self.copy_program("no entry", self.options.program, self.options.no_entry_library)
        library = pathlib.Path(self.copy_program("lacking", self.options.program, self.options.library))
        library.write_bytes(library.read_bytes().replace(b"libc.so.6", b"libX.so.6"))

    def set_registry(self, extended, **roots):
        """Rows of .reg files for the user and the machine."""
        client = client_rows(DllPathEx=self.options.extended_library) if extended else []
        self.registry.mkdir(exist_ok=True)
        for root in ("user", "machine"):
            rows = [*roots.get(root, []), *(client if root == "machine" else [])]
            file = self.registry / {"user": "HKEY_CURRENT_USER.reg", "machine": "HKEY_LOCAL_MACHINE.reg"}[root]
            file.write_text(settings_text(rows), encoding="utf-8")

    def library_path(self, native):
        return native

    def ends(self, case, code):
        """Whether that is the case's end. A crash ends by a signal, or with the code of a sanitizer."""
        return code not in (0, 255) if case.code == CRASHED else code == (
            -signal.SIGTRAP if case.code == STOPPED else case.code & 0xFF)


class Windows(Place):
    """What holds for the program as Windows starts it, whoever that Windows is."""

    windows = True

    def transcript(self, case):
        """The search for Extended MAPI finds the Simple library too, and keeps what it has loaded: that library comes and
        goes once in a run, however many deliveries it has."""
        text = super().transcript(case)
        if case.mail in ("extended", "probe") or case.mail == "recording" and not case.sends:
            return text
        return text.replace("end:\n", "") + ("" if case.code == CRASHED else "end:\n")

    def exit_code(self, code):
        return {CRASHED: 0xC0000005, STOPPED: 0x80000003}.get(code) or code & 0xFFFFFFFF

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


class Wine(Windows):
    """The recording library registered in the prefix, for the measurements; the tests under Wine are the bundle's."""

    wine = True

    def __enter__(self):
        extended = {"DllPathEx": self.options.extended_library} if self.options.extended else {}
        self.copy_program("recording", self.options.program)
        self.register(client_rows(DLLPath=self.options.library, **extended))
        return self

    def __exit__(self, *_):
        # What a new prefix has, also after a run that was killed.
        self.register([f"[{CLIENTS}]", '@="Native Mail Client"', f"[-{CLIENTS}\\CorvaneTest]"])

    def register(self, rows):
        file = pathlib.Path(self.root, "settings.reg")
        file.write_text(settings_text(rows), encoding="utf-16")
        subprocess.run([self.options.wine, "regedit", "/S", windows_path(file)], env=self.environment, check=True)

    def library_path(self, native):
        return windows_path(native)
