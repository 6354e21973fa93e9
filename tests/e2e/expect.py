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
        recipients = [] if self.name is None else [recipient_lines(0, self.name, self.address)]
        files = [file_lines(i, file) for i, file in enumerate(self.files)]
        lines = [
            "attach", "MAPISendMail", "session 0", "uiParam 0", "flags 9", "reserved 0", "message.ulReserved 0",
            "message.lpszSubject " + quoted(self.subject), "message.lpszNoteText " + quoted(self.body),
            "message.lpszMessageType null", "message.lpszDateReceived null", "message.lpszConversationID null",
            "message.flFlags 0", "message.lpOriginator null",
            *array_lines("message.nRecipCount", "message.lpRecips", recipients),
            *array_lines("message.nFileCount", "message.lpFiles", files),
        ]
        if self.result is not None:
            lines += [f"result {self.result}", "detach"]
        return "".join(line + "\n" for line in lines)


def array_lines(count, pointer, records):
    yield f"{count} {len(records)}"
    yield pointer + (" given" if records else " null")
    for record in records:
        yield from record


def recipient_lines(index, name, address):
    fields = {"ulReserved": 0, "ulRecipClass": 1, "lpszName": quoted(name), "lpszAddress": quoted(address),
              "ulEIDSize": 0, "lpEntryID": "null"}
    return [f"recipient[{index}].{field} {value}" for field, value in fields.items()]


def file_lines(index, file):
    path, name = (file, file) if isinstance(file, str) else file
    fields = {"ulReserved": 0, "flFlags": 0, "nPosition": 0xFFFFFFFF, "lpszPathName": quoted(path),
              "lpszFileName": quoted(name), "lpFileType": "null"}
    return [f"file[{index}].{field} {value}" for field, value in fields.items()]


def quoted(text):
    if text is None:
        return "null"
    plain = {"\n": "\\n", "\r": "\\r", "\t": "\\t", '"': '\\"', "\\": "\\\\"}
    escape = lambda c: plain.get(c) or (f"\\x{ord(c):02X}" if ord(c) < 0x20 or c == "\x7f" else c)
    return '"' + "".join(map(escape, text)) + '"'
