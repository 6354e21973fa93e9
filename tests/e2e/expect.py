"""What the program is expected to print and to hand to the MAPI library, in the words of the cases."""

import dataclasses
import pathlib
import re

PROJECT = (pathlib.Path(__file__).parents[2] / "CMakeLists.txt").read_text()
VERSION = re.search(r"project\(corvane VERSION (\d+\.\d+)", PROJECT).group(1)
LOGO = f"Corvane\nCorvane mail command\n{VERSION}\nCopyright (c) Ostrel"

HELP = """%s [-?] [-nologo] [-s:text] [-b:text] [-a:path ...] -r:address ...
    -?, -help           Display help messages
    -nologo             Do not display logo
    -s, -subject        Message subject
    -b, -body           Message body
    -a, -attachment     Path to attachment file
    -r, -recipient      Recipient address
"""


def printed(*texts):
    """The texts as the program prints them into a pipe, each one set off by empty lines."""
    whole = "".join(f"\n{text}\n\n" for text in texts)
    return re.sub(r"(?<!\r)\n", "\r\n", whole)


def failure(text):
    return printed(LOGO, text)


def internal_error(module):
    """A pattern: the line is that of the source as it stands."""
    before, after = failure(f"Internal program error:\n..\\Src\\{module}, @.").split("@")
    return re.compile(re.escape(before) + r"\d+" + re.escape(after))


@dataclasses.dataclass(frozen=True)
class Mail:
    """One delivery to the recording library. A file is a path, or a pair of path and shown name."""

    name: str = None
    address: str = None
    subject: str = None
    body: str = None
    files: tuple = ()
    result: int = 0  # None: the library crashed and said no more

    def transcript(self):
        recipients = [] if self.name is None else [f"{{0, 1, {quoted(self.name)}, {quoted(self.address)}, 0:null}}"]
        files = [(file, file) if isinstance(file, str) else file for file in self.files]
        files = [f"{{0, 0, 0xFFFFFFFF, {quoted(path)}, {quoted(name)}, null}}" for path, name in files]
        records = ", ".join(" ".join([str(len(rows)), *(rows or ["null"])]) for rows in (recipients, files))
        line = f"MAPISendMail(0, 0, {{0, {quoted(self.subject)}, {quoted(self.body)}, null, null, null, 0, null, {records}}}, 9, 0)"
        return line + ("" if self.result is None else f" = {number(self.result)}\nend:\n")


def number(value):
    return str(value) if value < 10 else f"0x{value:X}"


def quoted(text):
    escaped = lambda text: re.sub(r'["\\\x00-\x1f\x7f]', lambda found: f"\\x{ord(found[0]):02X}", text)
    return "null" if text is None else f'"{escaped(text)}"'
