#!/usr/bin/env python3
"""usage: drafts_test.py PROGRAM [LIBRARY]

Runs the program with a data folder of its own, and reads back the drafts that it leaves there. With LIBRARY, also calls
the library by itself for the codes of the Simple side.
"""

import base64
import ctypes
import os
import resource
import shutil
import sys
import tempfile
import time
import unittest
from ctypes import POINTER, c_char_p, c_uint32, c_void_p

from drafts import LIBRARY, NOBODY, DraftTest, mailboxes

FIELDS = {"X-Unsent", "Date", "Message-Id", "Subject", "To", "MIME-Version", "Content-Type",
          "Content-Transfer-Encoding"}
ANN = "-r:Ann Lee <ann@example.org>"
LONG = "x" * 2000
LOOKALIKE = "=?utf-8?q?hi?="
BINARY = bytes(range(256)) * 300

# name, arguments, [(shown name, address)], subject, body with LF. None for a field that must not be there.
TO_ANN = [("Ann Lee", "ann@example.org")]
MESSAGES = [
    ("plain", [ANN, "-s:Hello", "-b:Text"], TO_ANN, "Hello", "Text"),
    ("bare address", ["-r:ann@example.org", "-s:Hello"], [("", "ann@example.org")], "Hello", ""),
    ("nothing but a recipient", [ANN], TO_ANN, None, ""),
    ("not ASCII", ["-r:Jürgen Groß <j@example.org>", "-s:Grüße 日本語", "-b:Füße\n"],
     [("Jürgen Groß", "j@example.org")], "Grüße 日本語", "Füße\n"),
    ("long emoji", ["-r:" + "😀" * 60 + " <a@example.org>", "-s:" + "👍🏽" * 200],
     [("😀" * 60, "a@example.org")], "👍🏽" * 200, ""),
    ("one long word", [f"-r:{LONG} <a@example.org>", f"-s:{LONG}", f"-b:{LONG}"],
     [(LONG, "a@example.org")], LONG, LONG),
    ("long words", [ANN, "-s:" + "Many words, ü. " * 99 + "End"], TO_ANN, "Many words, ü. " * 99 + "End", ""),
    ("quotes and commas", ['-r:Lee, "Ann" (Ü\\;) <ann@example.org>', '-s:"a", b; <c>'],
     [('Lee, "Ann" (Ü\\;)', "ann@example.org")], '"a", b; <c>', ""),
    ("looks encoded", [f"-r:{LOOKALIKE} <a@example.org>", f"-s:{LOOKALIKE} ü"],
     [(LOOKALIKE, "a@example.org")], LOOKALIKE + " ü", ""),
    ("looks encoded, long", [ANN, f"-s:{LOOKALIKE}{'日本語' * 20}"], TO_ANN, LOOKALIKE + "日本語" * 20, ""),
    ("injected fields",
     ["-r:A\r\nBcc: e <a@example.org\r\nBcc:e@example.org>", "-s:S\r\n\r\nBcc: e\rTo: e\n X\x0b\x85z"],
     [("A  Bcc: e", '"a@example.org  Bcc:e"@example.org')], "S    Bcc: e To: e  X  z", ""),
    ("spaces", [ANN, "-s: a" + " " * 99 + "b ü" + " " * 99 + "\n"], TO_ANN, "a" + " " * 99 + "b ü", ""),
    ("domain in brackets", ["-r:C [x] <c@[192.0.2.1]>"], [("C [x]", "c@[192.0.2.1]")], None, ""),
    ("two addresses in one", ["-r:A <a@example.org, e@example.org>"],
     [("A", '"a@example.org, e"@example.org')], None, ""),
    ("odd local part", ['-r:A <a "b"\\ c@example.org>'], [("A", '"a \\"b\\"\\\\ c"@example.org')], None, ""),
    ("quoted local part", ['-r:A <"a b"@example.org>'], [("A", '"a b"@example.org')], None, ""),
    ("line ends", [ANN, "-b:a\rb\nc\r\nd\n\re\r\r\n"], TO_ANN, None, "a\nb\nc\nd\n\ne\n\n"),
    ("line ends, not ASCII", [ANN, "-b:ü\rb\nc\r\nd"], TO_ANN, None, "ü\nb\nc\nd"),
    ("line ends, hardly ASCII", [ANN, "-b:ü" + "a" * 99 + "\rb =3D \nc \r\nd"],
     TO_ANN, None, "ü" + "a" * 99 + "\nb =3D \nc \nd"),
    ("body like a message", [ANN, "-b:From x\n.\n--\nTo: y\n\nz\x01"], TO_ANN, None,
     "From x\n.\n--\nTo: y\n\nz\x01"),
]


# The whole field: what is no address, or no name in balanced brackets, is kept as it was written, in quotes.
FIELDS_OF_TO = [
    ("A <a@b:c>", 'A <"a@b:c">'),
    ("ann@", '"ann@"'),
    ('A <""@x>', 'A <"\\"\\"@x">'),
    ("A <x@[victim@example.org>", '"A[x@[victim@example.org]"'),
    ("A <x@[victim@example.org]>", 'A <"x@[victim@example.org]">'),
    ("A] <x@example.org>", '"A][x@example.org]"'),
    ("Ann Lee", '"Ann Lee"'),
    ("A <jürgen@bü.example>", "A <jürgen@xn--b-eha.example>"),
    ("A <a@[IPv6:2001:db8::1]>", "A <a@[IPv6:2001:db8::1]>"),
]

# File name, expected name, expected type, content.
ATTACHMENTS = [
    ("plain.txt", "plain.txt", "application/octet-stream", b"Text\r\nof\rlines\n"),
    ("Grüße 日本語.txt", "Grüße 日本語.txt", "application/octet-stream", "ü".encode()),
    ("Fünf, \"sechs\"; 'x'.txt", "Fünf, \"sechs\"; 'x'.txt", "application/octet-stream", b"x"),
    ("a\r\nX-Evil: 1\r\n\r\nb", "a  X-Evil: 1    b", "application/octet-stream", b"x"),
    ("ü" * 120 + ".txt", "ü" * 120 + ".txt", "application/octet-stream", b"x"),
    ("empty", "empty", "application/octet-stream", b""),
    ("picture", "picture", "image/png", b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR" + BINARY),
    ("inner.eml", "inner.eml", "application/octet-stream", b"Subject: x\r\n\r\ny\r\n"),
    # Around the end of a line and of a piece that is read at once.
    *[(f"{size}.bin", f"{size}.bin", "application/octet-stream", BINARY[:size])
      for size in (56, 57, 58, 58367, 58368, 58369)],
]
PIPED = "x" * 100000  # more than a pipe holds
MEBIBYTE = 1 << 20


class ContentTest(DraftTest):
    def test_messages(self):
        for name, arguments, to, subject, body in MESSAGES:
            with self.subTest(name):
                draft = self.saved(*arguments)
                self.assertLessEqual(set(draft.keys()), FIELDS | {"Message-ID"})
                self.assertEqual(len(draft.keys()), len(set(draft.keys())))
                self.assertEqual((mailboxes(draft), draft["Subject"]), (to, subject))
                self.assertEqual((draft.get_content_type(), draft.get_content_charset()), ("text/plain", "utf-8"))
                # A text that is not in base64 ends with a line end in any case.
                self.assertIn(draft.get_payload(decode=True).decode().replace("\r\n", "\n"), (body, body + "\n"))

    def test_addresses(self):
        for given, field in FIELDS_OF_TO:
            with self.subTest(given):
                found = dict(self.saved("-r:" + given).raw_items())["To"].replace("\n\t", " ")
                self.assertEqual(found.encode(errors="surrogateescape").decode(), field)

    def test_addresses_longer_than_a_line(self):
        for given in (f"{LONG}@example.org", f"<{LONG}@example.org>", "ü" * 999 + "@example.org", LONG):
            with self.subTest(given[:9]):
                name, address = mailboxes(self.saved(f"-r:{given}"))[0]
                self.assertIn(given.strip("<>"), name)
                self.assertEqual(address, '"too long"')

    def test_attachments(self):
        paths = [self.file("attached/" + name, content) for name, _, _, content in ATTACHMENTS]
        body, *parts = self.saved(ANN, "-b:Text", *[f"-a:{path}" for path in paths]).iter_parts()
        self.assertEqual(body.get_content(), "Text")
        for part, (_, name, media_type, content) in zip(parts, ATTACHMENTS, strict=True):
            self.assertEqual(set(part.keys()), {"Content-Type", "Content-Disposition", "Content-Transfer-Encoding"})
            self.assertTrue(part.is_attachment())
            self.assertEqual((part.get_filename(), part.get_content_type()), (name, media_type))
            self.assertEqual(part["Content-Type"].params["name"], name)
            self.assertEqual(part.get_payload(decode=True), content)

    def test_attachments_of_one_name_and_many(self):
        paths = [self.file("Same.txt", b"one"), self.file("other/Same.txt", b"two"), "/dev/stdin"] + [
            self.file(f"{i}.txt", b"%d" % i) for i in range(60)]
        draft = self.saved(ANN, "-r:bob@example.org", *[f"-a:{path}" for path in paths], given=PIPED,
                           limits=[(resource.RLIMIT_NOFILE, 50)])
        parts = [(part.get_filename(), part.get_payload(decode=True)) for part in draft.iter_attachments()]
        self.assertEqual(parts, [("Same.txt", b"one"), ("Same.txt", b"two"), ("stdin", PIPED.encode())] +
                         [(f"{i}.txt", b"%d" % i) for i in range(60)])
        self.assertEqual(len(os.listdir(self.drafts)), 1)

    @unittest.skipUnless(LIBRARY, "a sanitizer has memory of its own")
    def test_memory(self):
        """An attachment is in memory once, and what else is needed has room in 16 MiB."""
        piece = os.urandom(MEBIBYTE)  # this process is small itself, for its children begin as it is
        path = self.file("big.bin")
        with open(path, "wb") as file:
            file.writelines([piece] * 100)
        _, (line,) = self.run_program(ANN, f"-a:{path}")
        self.assertLess(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss * 1024, (100 + 16) * MEBIBYTE)
        with open(line.removeprefix("Draft saved: "), "rb") as file:
            encoded = file.read().split(b"\r\n\r\n")[-2].partition(b"\r\n--")[0]
        self.assertTrue(base64.b64decode(encoded) == piece * 100)


class PlaceTest(DraftTest):
    def test_names_in_use(self):
        os.makedirs(self.drafts)

        def take():
            """In the program's process: the names that it would take first belong to somebody else."""
            for second in range(-1, 20):
                start = time.strftime("%Y%m%d-%H%M%S", time.localtime(time.time() + second))
                for number in (1, 2, 4):
                    with open(f"{self.drafts}/{start}-{os.getpid()}-{number}.eml", "w") as file:
                        file.write("mine")

        _, (line,) = self.run_program(ANN, prepare=take)
        self.read(line)
        self.assertTrue(line.endswith("-3.eml"))
        others = [name for name in os.listdir(self.drafts) if not name.endswith("-3.eml")]
        self.assertEqual({os.path.getsize(os.path.join(self.drafts, name)) for name in others}, {len("mine")})

    def test_data_folder(self):
        home_folder = os.path.join(self.folder, ".local/share/corvane/drafts/")
        for given in ("", "relative/folder"):
            _, (line,) = self.run_program(ANN, XDG_DATA_HOME=given)
            self.assertTrue(line.startswith("Draft saved: " + home_folder), line)
        for folder in (".local", ".local/share", ".local/share/corvane", ".local/share/corvane/drafts"):
            self.assertEqual(os.stat(os.path.join(self.folder, folder)).st_mode & 0o777, 0o700)

    def refused(self, *arguments, **options):
        """What a run says whose delivery fails: once, and through the program alone."""
        said, lines = self.run_program(ANN, *arguments, **options)
        self.assertEqual(lines, [])
        self.assertRegex(said, "^\\s*Draft not saved: [^\n]*\\s*$")
        self.assert_nothing_left()
        return said.strip().removeprefix("Draft not saved: ")

    def test_failures_leave_nothing(self):
        small, big = self.file("small"), self.file("big", bytes(MEBIBYTE))
        limit = lambda size: {"limits": [(resource.RLIMIT_FSIZE, size)]}
        full = f"cannot write to {self.drafts}: File too large"
        for name, arguments, options, said in [
            ("file in place of a folder", [], {"XDG_DATA_HOME": small},
             f"cannot make the folder {small}/corvane/drafts: Not a directory"),
            ("home not to be written", [], {"XDG_DATA_HOME": "", "HOME": "/proc"},
             "cannot make the folder /proc/.local/share/corvane/drafts: No such file or directory"),
            ("full while bytes arrive", [f"-a:{big}"], limit(MEBIBYTE // 2), full),
            ("full while the draft is written", [f"-a:{big}"], limit(MEBIBYTE + 10), full),
            ("full at the first field", [], limit(10), full),
        ]:
            with self.subTest(name):
                self.assertEqual(self.refused(*arguments, **options), said)

    def test_folders_that_others_have_set(self):
        elsewhere, nowhere = os.path.join(self.folder, "elsewhere"), os.path.join(self.folder, "nowhere")
        corvane = os.path.dirname(self.drafts)
        make = lambda path, mode: (os.makedirs(path), os.chmod(path, mode))
        no_folder, no_file = f"cannot make the folder {self.drafts}", f"cannot make a file in {self.drafts}"
        for name, prepare, said in [
            ("data folder not to be written", lambda: make(self.home, 0o555), no_folder + ": Permission denied"),
            ("drafts not to be entered", lambda: make(self.drafts, 0o666), no_file + ": Permission denied"),
            ("drafts not to be written", lambda: make(self.drafts, 0o1755), no_file + ": Permission denied"),
            ("sticky data folder that has one of another's",
             lambda: (make(self.home, 0o1777), make(corvane, 0o755)), no_folder + ": Permission denied"),
            ("link to a folder not to be written",
             lambda: (make(corvane, 0o777), make(elsewhere, 0o755), os.symlink(elsewhere, self.drafts)),
             no_file + ": Permission denied"),
            ("link to nothing", lambda: (make(corvane, 0o777), os.symlink(nowhere, self.drafts)),
             no_file + ": No such file or directory"),
        ]:
            with self.subTest(name):
                prepare()
                self.assertEqual(self.refused(user=NOBODY if os.geteuid() == 0 else None), said)
                self.assertFalse(os.path.exists(nowhere) or os.path.exists(elsewhere) and os.listdir(elsewhere))
                os.chmod(self.home, 0o700)
                shutil.rmtree(self.home)


class Recipient(ctypes.Structure):
    _fields_ = [("reserved", c_uint32), ("recipientClass", c_uint32), ("name", c_char_p), ("address", c_char_p),
                ("idSize", c_uint32), ("id", c_void_p)]


class File(ctypes.Structure):
    _fields_ = [("reserved", c_uint32), ("flags", c_uint32), ("position", c_uint32), ("path", c_char_p),
                ("name", c_char_p), ("type", c_void_p)]


class Message(ctypes.Structure):
    _fields_ = [("reserved", c_uint32), ("subject", c_char_p), ("text", c_char_p), ("type", c_char_p),
                ("received", c_char_p), ("conversation", c_char_p), ("flags", c_uint32),
                ("originator", POINTER(Recipient)), ("recipientCount", c_uint32), ("recipients", POINTER(Recipient)),
                ("fileCount", c_uint32), ("files", POINTER(File))]


def message(originator=None, recipients=(), files=(), **texts):
    """A record with (name, address) as originator, (class, name, address) as recipients, (path, name) as files."""
    given = [Recipient(0, *row) for row in recipients], [File(0, 0, 0, *row) for row in files]
    arrays = [(type(rows[0]) * len(rows))(*rows) if rows else None for rows in given]
    sender = originator and ctypes.pointer(Recipient(0, 0, *originator))
    return Message(originator=sender, recipientCount=len(recipients), recipients=arrays[0], fileCount=len(files),
                   files=arrays[1], **texts)


@unittest.skipUnless(LIBRARY, "the library is built for a sanitizer")
class SimpleSideTest(DraftTest):
    """What differs there: records, codes, and files that are named rather than handed over."""

    def send(self, record):
        """The code that MAPISendMail returns, and what it says on standard error."""
        os.environ["XDG_DATA_HOME"] = self.home
        with tempfile.TemporaryFile() as said:
            errors = os.dup(2)
            os.dup2(said.fileno(), 2)
            try:
                code = ctypes.CDLL(LIBRARY).MAPISendMail(None, None, record and ctypes.byref(record), 0, 0)
            finally:
                os.dup2(errors, 2)
                os.close(errors)
            said.seek(0)
            return code, said.read().decode()

    def test_codes(self):
        root = os.geteuid() == 0  # whom permissions do not bind
        secret, big = self.file("secret", mode=0).encode(), self.file("big", bytes(MEBIBYTE)).encode()
        for name, record, mode, expected in [
            ("no message", None, 0o777, 2),
            ("missing", message(files=[(b"/missing", None)]), 0o777, 11),
            ("no path", message(files=[(None, b"name")]), 0o777, 11),
            ("unmapped drive", message(files=[(b"Q:\\x", None)]), 0o777, 11),
            ("no permission", message(files=[(secret, None)]), 0o777, 12),
            ("folder", message(files=[(self.folder.encode(), None)]), 0o777, 12),
            ("endless device", message(files=[(b"/dev/zero", None)]), 0o777, 12),
            ("closed data folder", message(), 0o555, 2),
            ("disk full", message(files=[(big, None)]), 0o777, 4),
        ]:
            with self.subTest(name):
                shutil.rmtree(self.home, ignore_errors=True)
                os.mkdir(self.home)
                os.chmod(self.home, mode)
                limit = MEBIBYTE // 2 if name == "disk full" else resource.RLIM_INFINITY
                before = resource.getrlimit(resource.RLIMIT_FSIZE)
                os.seteuid(NOBODY if root else os.geteuid())
                resource.setrlimit(resource.RLIMIT_FSIZE, (limit, before[1]))
                code, said = self.send(record)
                resource.setrlimit(resource.RLIMIT_FSIZE, before)
                os.seteuid(0 if root else os.geteuid())
                self.assertEqual(code, expected, said)
                self.assertRegex(said, r"^Draft not saved: .*\n$")
                self.assert_nothing_left()

    def test_record(self):
        code, said = self.send(message(
            (b"me@example.org", b""),
            [(1, b"A", b"SMTP:a@example.org"), (2, b"B", b"b@b\xc3\xbc.example"), (3, None, b"c@example.org"),
             (1, b"Ann Lee", None), (1, None, None)],
            [(self.file("f.txt").encode(), b"..\\x/Shown.txt"), (self.folder.encode() + b"/F.TXT", None)],
            subject=b"S\xff", text=b"T"))
        self.assertEqual(code, 0)
        draft = self.read(said.strip())
        self.assertEqual([draft[field] for field in ("Subject", "From", "To", "Cc", "Bcc")],
                         ["S\ufffd", "me@example.org", 'A <a@example.org>, "Ann Lee"', "B <b@xn--b-eha.example>",
                          "c@example.org"])
        self.assertEqual([part.get_filename() for part in draft.iter_attachments()], ["Shown.txt", "f.txt"])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
