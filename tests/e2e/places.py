"""The two systems on which the program is run: natively, and as a Windows program under Wine.

A place keeps copies of the program, each in a folder where it finds another MAPI library:

    recording    the recording library
    missing      no MAPI library at all
    no entry     a MAPI library that cannot send
    lacking      a MAPI library that lacks one itself; natively alone
"""

import dataclasses
import os
import re
import shutil
import signal
import subprocess

NOBODY = 65534
CRASHED = "crashed"  # a case's exit code
ACCESS_VIOLATION = 0xC0000005
CLIENTS = "HKEY_LOCAL_MACHINE\\Software\\Clients\\Mail"


@dataclasses.dataclass
class Result:
    code: int  # negative for a signal
    output: bytes
    errors: bytes
    late: bool = False


def execute(command, folder, environment, limit, user=None, given=b""):
    """Runs a command with its output in pipes; whatever is left of it when the time is up is killed."""
    process = subprocess.Popen(command, cwd=folder, env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                               stdin=subprocess.PIPE if given else subprocess.DEVNULL, start_new_session=True, user=user)
    try:
        output, errors = process.communicate(given or None, timeout=limit)
        return Result(process.returncode, output, errors)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        output, errors = process.communicate()
        return Result(process.returncode, output, errors, late=True)


def windows_path(native):
    """The path in the syntax that the program uses on both systems."""
    return "Z:" + native.replace("/", "\\")


def settings_text(*rows):
    return "\n".join(["Windows Registry Editor Version 5.00", "", *rows, ""])


class Place:
    """What both have in common. `root` is a folder of this run alone."""

    def __init__(self, options, root):
        self.options = options
        self.root = root
        self.programs = {}
        # Settings of whoever starts the suite must not reach the program.
        self.environment = {name: value for name, value in os.environ.items()
                            if name not in ("CORVANE_TRANSCRIPT", "LD_LIBRARY_PATH")
                            and not name.startswith(("TESSARIX_", "CORVANE_MAPI_"))}
        self.environment["LC_ALL"] = "C.UTF-8"

    def registered_client(self, **libraries):
        """The settings that make a mail client the default one, its libraries under the names of their values."""
        paths = {value: windows_path(library).replace("\\", "\\\\") for value, library in libraries.items()}
        rows = [f'"{value}"="{path}"' for value, path in paths.items()]
        return settings_text(f"[{CLIENTS}]", '@="CorvaneTest"', f"[{CLIENTS}\\CorvaneTest]", *rows)

    def folder(self):
        """The root as the program sees it."""
        return windows_path(self.root)

    def transcript(self, case):
        """The text that the case's run leaves, or a pattern of it."""
        return case.sends if isinstance(case.sends, re.Pattern) else "".join(part.transcript() for part in case.sends)

    def locale(self, name):
        """The variables that choose a locale, made for this run; none where that can't be done."""
        folder = os.path.join(self.root, "locales")
        command = ["localedef", "-i", name, "-f", "UTF-8", os.path.join(folder, name + ".UTF-8")]
        os.makedirs(folder, exist_ok=True)
        if self.windows or not shutil.which("localedef") or subprocess.run(command, check=False).returncode != 0:
            return {}
        return {"LC_ALL": name + ".UTF-8", "LOCPATH": folder}

    def copy_program(self, mail, name, library=None):
        folder = os.path.join(self.root, mail.replace(" ", ""))
        os.mkdir(folder)
        self.programs[mail] = shutil.copy(self.options.program, os.path.join(folder, name))
        if library:
            shutil.copy(library, folder)


class Native(Place):
    windows = wine = False

    def __init__(self, options, root):
        super().__init__(options, root)
        self.environment["TESSARIX_REGISTRY"] = os.path.join(root, "registry")
        self.copy_program("recording", "corvane", options.library)
        self.copy_program("missing", "corvane")
        self.copy_program("no entry", "corvane", options.no_entry_library)
        self.copy_program("lacking", "corvane", options.library)
        library = os.path.join(root, "lacking", os.path.basename(options.library))
        with open(library, "r+b") as file:
            content = file.read().replace(b"libc.so.6", b"libX.so.6")
            file.seek(0)
            file.write(content)

    def __enter__(self):
        if self.options.extended:
            folder = self.environment["TESSARIX_REGISTRY"]
            os.mkdir(folder)
            with open(os.path.join(folder, "HKEY_LOCAL_MACHINE.reg"), "w", encoding="utf-8") as stream:
                stream.write(self.registered_client(DllPathEx=self.options.extended_library))
        return self

    def __exit__(self, *_):
        pass

    def library_path(self, native):
        return native

    def exit_code(self, code):
        return code & 0xFF

    def crashed(self, code):
        return code not in (0, 255)  # by a signal, or with the code of a sanitizer

    def run(self, case, folder, environment):
        words = [word if isinstance(word, bytes) else word.encode() for word in case.words]
        user = NOBODY if case.unprivileged and os.geteuid() == 0 else None
        command = [self.programs[case.mail], *words]
        return execute(command, folder, {**self.environment, **environment}, case.limit, user, case.given)


class Windows(Place):
    """What holds for the program as Windows starts it, whoever that Windows is."""

    windows = True
    wine = False

    def transcript(self, case):
        """The search for Extended MAPI finds the Simple library too, and keeps what it has loaded: that library comes and
        goes once in a run, however many deliveries it has."""
        text = super().transcript(case)
        if self.options.extended or not case.sends and case.mail == "recording":
            return text
        return text.replace("end:\n", "") + ("" if case.code == CRASHED else "end:\n")

    def exit_code(self, code):
        return code & 0xFFFFFFFF

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
    """Runs what needs a MAPI library that the bundle can't have; its runner makes all the others, also under Wine."""

    wine = True
    # Where Wine takes the MAPI library from, if not from its own: from nowhere, or from the program's folder.
    overrides = {"missing": "mapi32=", "no entry": "mapi32=n"}

    def __init__(self, options, root):
        super().__init__(options, root)
        self.copy_program("recording", "corvane.exe")
        self.copy_program("missing", "corvane.exe")
        self.copy_program("no entry", "corvane.exe", options.no_entry_library)

    def __enter__(self):
        extended = {"DllPathEx": self.options.extended_library} if self.options.extended else {}
        self.registry(self.registered_client(DLLPath=self.options.library, **extended))
        return self

    def __exit__(self, *_):
        # What a new prefix has, also after a run that was killed.
        self.registry(settings_text(f"[{CLIENTS}]", '@="Native Mail Client"', f"[-{CLIENTS}\\CorvaneTest]"))

    def registry(self, text):
        file = os.path.join(self.root, "settings.reg")
        with open(file, "w", encoding="utf-16") as stream:
            stream.write(text)
        # The first run of all makes the prefix, which takes a while.
        result = execute([self.options.wine, "regedit", "/S", windows_path(file)], self.root, self.environment, 200)
        if result.code != 0:
            raise RuntimeError(f"the mail client cannot be registered: {result}")

    def library_path(self, native):
        return windows_path(native)

    def exit_code(self, code):
        return code & 0xFF

    def run(self, case, folder, environment):
        overrides = {"WINEDLLOVERRIDES": self.overrides[case.mail]}
        command = [self.options.wine, self.programs[case.mail], *case.words]
        return execute(command, folder, {**self.environment, **environment, **overrides}, case.limit)
