#!/usr/bin/env python3
"""usage: drafts_test.py PROGRAM [LIBRARY]

Runs the program with a data folder of its own, and reads back the drafts that it leaves there. With LIBRARY, also calls
the library by itself for its return codes.
"""

import _ctypes
import base64
import ctypes
import email
import email.header
import email.policy
import email.utils
import json
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

import simplemail

PROGRAM = os.path.abspath(sys.argv[1])
LIBRARY = os.path.abspath(sys.argv[2]) if len(sys.argv) > 2 else None
FIELDS = {"X-Unsent", "Date", "Message-Id", "Subject", "To", "MIME-Version", "Content-Type",
          "Content-Transfer-Encoding"}
ANN = "-r:Ann Lee <ann@example.org>"
NOBODY = 65534
LONG = "x" * 2000
LOOKALIKE = "=?utf-8?q?hi?="
BINARY = bytes(range(256)) * 300

# name, arguments, [(shown name, address)], subject, body with LF. None for a field that must not be there.
TO_ANN = [("Ann Lee", "ann@example.org")]
MESSAGES = [
    ("plain", [ANN, "-s:Hello", "-b:Text"], TO_ANN, "Hello", "Text"),
    ("bare address", ["-r:ann@example.org", "-s:Hello"], None, "Hello", ""),
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

# File name, shown name or None, expected name, expected type, content.
ATTACHMENTS = [
    ("plain.txt", None, "plain.txt", "text/plain", b"Text\r\nof\rlines\n"),
    ("Grüße 日本語.txt", None, "Grüße 日本語.txt", "text/plain", "ü".encode()),
    ("a.txt", "Fünf, \"sechs\"; 'x'.txt", "Fünf, \"sechs\"; 'x'.txt", "text/plain", b"x"),
    ("a.txt", "a\r\nX-Evil: 1\r\n\r\nb", "a  X-Evil: 1    b", "text/plain", b"x"),
    ("a.txt", "ü" * 150 + ".txt", "ü" * 150 + ".txt", "text/plain", b"x"),
    ("a\nb.txt", None, "a b.txt", "text/plain", b"x"),
    ("empty", None, "empty", "application/octet-stream", b""),
    ("picture", None, "picture", "image/png", b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR" + BINARY),
    ("inner.eml", None, "inner.eml", "application/octet-stream", b"Subject: x\r\n\r\ny\r\n"),
    # Around the end of a line and of a piece that is read at once.
    *[("data.bin", None, "data.bin", "application/octet-stream", BINARY[:size])
      for size in (56, 57, 58, 58367, 58368, 58369)],
]


def mailboxes(draft):
    """The To field. This Python's own decoder of address fields leaves a space between encoded words."""
    fields = [value for name, value in draft.raw_items() if name == "To"]
    decoded = [(str(email.header.make_header(email.header.decode_header(name))), address)
               for name, address in email.utils.getaddresses(fields)]
    return decoded or None


class DraftTest(unittest.TestCase):
    """What both sides need: a folder of their own, and the reading back."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        os.chmod(self.folder, 0o755)
        self.home = os.path.join(self.folder, "data home")
        self.drafts = os.path.join(self.home, "corvane", "drafts")

    def file(self, name, content=b"x"):
        path = os.path.join(self.folder, name)
        with open(path, "wb") as file:
            file.write(content)
        return path

    def read(self, path):
        self.assertEqual(os.path.dirname(path), self.drafts)
        self.assertRegex(os.path.basename(path), r"^\d{8}-\d{6}-\d+-\d+\.eml$")
        self.assertEqual(os.stat(path).st_mode & 0o777, 0o600)
        with open(path, "rb") as file:
            raw = file.read()
        self.assertNotRegex(raw, rb"(?<!\r)\n|\r(?!\n)|[^\r\n]{999}")
        self.assertNotRegex(raw.split(b"\r\n\r\n")[0], rb"\n[ \t]+(\r|$)")
        self.assertNotIn("iso-8859", raw.decode("ascii").lower())
        draft = email.message_from_bytes(raw, policy=email.policy.default)
        self.assertEqual([part.defects for part in draft.walk()], [[]] * len(list(draft.walk())))
        for word in re.findall(rb"=\?UTF-8\?[Bb]\?([^?]*)\?=", raw):
            base64.b64decode(word).decode()  # whole characters, for readers that do not mend halves
        self.assertEqual(draft["X-Unsent"], "1")
        self.assertLess(abs(draft["Date"].datetime.timestamp() - time.time()), 60)
        self.assertRegex(draft["Message-ID"], "^<[^ ]+@[^ ]+>$")
        return draft

    def assert_nothing_left(self):
        left = [os.path.join(folder, file) for folder, _, files in os.walk(self.home) for file in files]
        self.assertEqual([path for path in left if not os.path.islink(path)], [])


PIPED = "x" * 100000  # more than a pipe holds


class ProgramRun(DraftTest):
    def settings(self):
        """The folder of the settings; none of its files is there."""
        return os.path.join(self.folder, "settings")

    def run_program(self, *arguments, limits=(), user=None, given=None, **variables):
        """What the program says on standard error, line by line. It ends with 0 whatever becomes of the draft. It is
        `given` a text through a pipe as its standard input."""

        def prepare():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            signal.signal(signal.SIGPIPE, signal.SIG_IGN)  # no client may inherit that
            for kind, limit in limits:
                resource.setrlimit(kind, (limit, limit))

        environment = {**os.environ, "XDG_DATA_HOME": self.home, "TESSARIX_REGISTRY": self.settings(),
                       "CORVANE_MAIL_CLIENT": "draft", **variables}
        result = subprocess.run([PROGRAM, *arguments], env=environment, cwd=self.folder, preexec_fn=prepare, input=given,
                                stderr=subprocess.PIPE, encoding="utf-8", timeout=60, user=user)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stderr.splitlines()

    def saved(self, *arguments, **options):
        """The one draft that a run leaves, at the path that it says."""
        said = self.run_program(*arguments, **options)
        self.assertEqual(len(said), 1, said)
        self.assertRegex(said[0], "^Draft saved: /")
        return self.read(said[0].removeprefix("Draft saved: "))


class SimpleTest(ProgramRun):
    def settings(self):
        """A provider that is registered, but not by a text, ends the search for the Extended side."""
        folder = super().settings()
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "HKEY_LOCAL_MACHINE.reg"), "w", encoding="utf-8") as stream:
            stream.write("Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows\\"
                         "CurrentVersion\\App Paths\\OUTLOOK.EXE]\n@=dword:00000000\n")
        return folder

    def test_messages(self):
        for name, arguments, to, subject, body in MESSAGES:
            with self.subTest(name):
                draft = self.saved(*arguments)
                self.assertLessEqual(set(draft.keys()), FIELDS | {"Message-ID"})
                self.assertEqual(len(draft.keys()), len(set(draft.keys())))
                self.assertEqual(mailboxes(draft), to)
                self.assertEqual(draft["Subject"], subject)
                self.assertEqual(draft.get_content_type(), "text/plain")
                self.assertEqual(draft.get_content_charset(), "utf-8")
                # A text that is not in base64 ends with a line end in any case.
                self.assertIn(draft.get_payload(decode=True).decode().replace("\r\n", "\n"), (body, body + "\n"))

    def test_attachments(self):
        for name, shown, expected_name, media_type, content in ATTACHMENTS:
            with self.subTest(f"{name}, {shown}, {len(content)}"):
                path = self.file(name, content)
                draft = self.saved(ANN, "-b:Text", f"-a:{shown} <{path}>" if shown else f"-a:{path}")
                body, part = draft.iter_parts()
                self.assertEqual(body.get_content(), "Text")
                self.assertEqual(set(part.keys()), {"Content-Type", "Content-Disposition", "Content-Transfer-Encoding"})
                self.assertTrue(part.is_attachment())
                self.assertEqual((part.get_filename(), part.get_content_type()), (expected_name, media_type))
                self.assertEqual(part["Content-Type"].params["name"], expected_name)
                self.assertEqual(part.get_payload(decode=True), content)

    def test_attachments_of_one_name_stay_apart(self):
        first, second = self.file("1", b"one"), self.file("2", b"two")
        draft = self.saved(ANN, f"-a:Same.txt <{first}>", f"-a:Same.txt <{second}>")
        parts = [(part.get_filename(), part.get_payload(decode=True)) for part in draft.iter_attachments()]
        # Two that exist: the program hands over the whole list twice.
        self.assertEqual(parts, [("Same.txt", b"one"), ("Same.txt", b"two")] * 2)

    def test_more_attachments_than_open_files(self):
        contents = [b"%d" % i for i in range(10)]
        paths = [self.file(content.decode(), content) for content in contents]
        draft = self.saved(ANN, *[f"-a:{path}" for path in paths], limits=[(resource.RLIMIT_NOFILE, 50)])
        self.assertEqual([part.get_payload(decode=True) for part in draft.iter_attachments()], contents * 10)

    def test_windows_paths(self):
        self.file("Read Me.txt", b"content")
        for path in ("Read Me.txt", ".\\read me.TXT", "Z:" + self.folder.replace("/", "\\") + "\\READ ME.txt"):
            with self.subTest(path):
                (part,) = self.saved(ANN, f"-a:{path}").iter_attachments()
                self.assertEqual(part.get_payload(decode=True), b"content")

    def test_two_recipients_give_two_drafts(self):
        said = self.run_program(ANN, "-r:Bob <bob@example.org>", "-s:Hello", "-a:/dev/stdin", given=PIPED)
        drafts = [self.read(line.removeprefix("Draft saved: ")) for line in said]
        self.assertEqual([draft["To"].addresses[0].username for draft in drafts], ["ann", "bob"])
        for draft in drafts:  # what can be read but once is in each
            (part,) = draft.iter_attachments()
            self.assertEqual((part.get_filename(), part.get_payload(decode=True)), ("stdin", PIPED.encode()))
        self.assertEqual(len({draft["Message-ID"] for draft in drafts}), 2)
        self.assertEqual(sorted(os.listdir(self.drafts)), sorted(line.split("/")[-1] for line in said))

    def test_data_folder(self):
        home_folder = os.path.join(self.folder, ".local/share/corvane/drafts/")
        for given in ("", "relative/folder"):
            (line,) = self.run_program(ANN, XDG_DATA_HOME=given, HOME=self.folder)
            self.assertTrue(line.startswith("Draft saved: " + home_folder), line)
        for folder in (".local", ".local/share", ".local/share/corvane", ".local/share/corvane/drafts"):
            self.assertEqual(os.stat(os.path.join(self.folder, folder)).st_mode & 0o777, 0o700)

    def test_failures_leave_nothing(self):
        small, big = self.file("small"), self.file("big", bytes(1 << 20))
        missing = os.path.join(self.folder, "missing")
        for name, arguments, options, said in [
            ("missing attachment", [f"-a:{small}", f"-a:{missing}"], {}, f"{missing}: No such file or directory"),
            ("unmapped drive", [f"-a:{small}", "-a:Q:\\x"], {}, "Q:\\x: No such file or directory"),
            ("folder attached", [f"-a:{small}", f"-a:{self.folder}"], {}, f"{self.folder}: Is a directory"),
            ("endless device attached", [f"-a:{small}", "-a:/dev/zero"], {}, "/dev/zero: File too large"),
            ("file in place of a folder", [], {"XDG_DATA_HOME": small}, f"{small}/corvane/drafts: Not a directory"),
            ("full before the end", [f"-a:{big}"], {"limits": [(resource.RLIMIT_FSIZE, 1 << 19)]},
             f"{self.drafts}: File too large"),
            ("full at the first field", [], {"limits": [(resource.RLIMIT_FSIZE, 10)]},
             f"{self.drafts}: File too large"),
        ]:
            with self.subTest(name):
                (line,) = self.run_program(ANN, *arguments, **options)
                self.assertRegex(line, "^Draft not saved: cannot ")
                self.assertTrue(line.endswith(said), line)
                self.assert_nothing_left()

    def test_folders_that_others_have_set(self):
        elsewhere, nowhere = os.path.join(self.folder, "elsewhere"), os.path.join(self.folder, "nowhere")
        corvane = os.path.dirname(self.drafts)
        make, denied = lambda path, mode: (os.makedirs(path), os.chmod(path, mode)), "Permission denied"
        for name, prepare, said in [
            ("data folder not to be written", lambda: make(self.home, 0o555), f"make the folder {corvane}: {denied}"),
            ("data folder not to be entered", lambda: make(self.home, 0o666), f"make the folder {self.drafts}: {denied}"),
            ("drafts not to be entered", lambda: make(self.drafts, 0o666), f"make a file in {self.drafts}: {denied}"),
            ("drafts not to be written", lambda: make(self.drafts, 0o1755), f"make a file in {self.drafts}: {denied}"),
            ("sticky data folder that has one of another's",
             lambda: (make(self.home, 0o1777), make(corvane, 0o755)), f"make the folder {self.drafts}: {denied}"),
            ("link to a folder not to be written",
             lambda: (make(corvane, 0o777), make(elsewhere, 0o755), os.symlink(elsewhere, self.drafts)),
             f"make a file in {self.drafts}: {denied}"),
            ("link to nothing", lambda: (make(corvane, 0o777), os.symlink(nowhere, self.drafts)),
             f"make a file in {self.drafts}: No such file or directory"),
        ]:
            with self.subTest(name):
                prepare()
                lines = self.run_program(ANN, user=NOBODY if os.geteuid() == 0 else None)
                self.assertEqual(lines, [f"Draft not saved: cannot {said}"])
                self.assert_nothing_left()
                self.assertFalse(os.path.exists(nowhere) or os.path.exists(elsewhere) and os.listdir(elsewhere))
                os.chmod(self.home, 0o700)
                shutil.rmtree(self.home)


class ExtendedTest(ProgramRun):
    """One draft for all recipients, and the client that it is opened in."""

    # Each program writes down what it is started with, under its own name; xdg-mime answers from what it is told.
    PROGRAM = """#!{python}
import json, os, sys
name = os.path.basename(sys.argv[0])
if name == "xdg-mime":
    print(os.environ.get("HANDLER_" + sys.argv[3].split("/")[0].replace("-", "_"), ""))
    sys.exit()
state = {{"words": sys.argv[1:], "session": os.getsid(0),
         "files": [os.readlink(f"/proc/self/fd/{{i}}") for i in range(3)],
         "more": [i for i in range(3, 64) if os.path.exists(f"/proc/self/fd/{{i}}")], "sigign": os.environ["IGNORED"]}}
with open(os.path.join(os.environ["RECORD"], "." + name), "w") as file:
    json.dump(state, file)
os.rename(file.name, os.path.join(os.environ["RECORD"], name))
"""

    def programs(self, *names):
        folder = os.path.join(self.folder, "programs")
        os.makedirs(folder, exist_ok=True)
        for name in names:
            with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                # A shell leaves the signals as they are; Python itself ignores SIGPIPE.
                file.write("#!/bin/sh\nread -r IGNORED <<END\n$(/usr/bin/grep SigIgn /proc/self/status)\nEND\n"
                           f'export IGNORED\nexec {sys.executable} "$0.py" "$@"\n')
            with open(os.path.join(folder, name + ".py"), "w", encoding="utf-8") as file:
                file.write(self.PROGRAM.format(python=sys.executable).replace(
                    "os.path.basename(sys.argv[0])", "os.path.basename(sys.argv[0])[:-3]"))
            os.chmod(os.path.join(folder, name), 0o755)
        return folder

    ALL_PROGRAMS = ("xdg-mime", "thunderbird", "claws-mail", "evolution", "xdg-open")

    def started(self, *arguments, handler, mail="", programs=ALL_PROGRAMS):
        """What the one program that was started wrote down, and the path of the draft."""
        folder = self.programs(*programs)
        record = tempfile.mkdtemp(dir=self.folder)
        (line,) = self.run_program(*arguments, CORVANE_MAIL_CLIENT="", PATH=folder, RECORD=record,
                                   HANDLER_x_scheme_handler=handler, HANDLER_message=mail)
        draft = line.removeprefix("Draft saved: ")
        self.read(draft)
        end = time.time() + 30
        while time.time() < end and not [name for name in os.listdir(record) if name[0] != "."]:
            time.sleep(0.05)
        (name,) = os.listdir(record)
        with open(os.path.join(record, name), encoding="utf-8") as file:
            state = json.load(file)
        self.assertNotEqual(state["session"], os.getsid(0))
        self.assertEqual((state["files"], state["more"]), (["/dev/null"] * 3, []))
        self.assertEqual(int(state["sigign"].split()[1], 16) & 1 << signal.SIGPIPE - 1, 0)
        return name, state["words"], draft

    def test_whole_draft(self):
        os.makedirs(os.path.join(self.folder, "other"))
        paths = [self.file("Same.txt", b"one"), self.file("other/Same.txt", b"two"),
                 self.file("big.bin", os.urandom(25 << 20))]
        draft = self.saved(ANN, "-r:bob@example.org", "-r:C [x] <c@example.org>", "-s:Grüße", "-b:Text",
                           *[f"-a:{path}" for path in paths], "-a:/dev/stdin", given=PIPED)
        self.assertEqual(mailboxes(draft), [("Ann Lee", "ann@example.org"), ("", "bob@example.org"),
                                            ("C [x]", "c@example.org")])
        self.assertEqual(draft["Subject"], "Grüße")
        parts = list(draft.iter_attachments())
        self.assertEqual([part.get_filename() for part in parts], ["Same.txt", "Same.txt", "big.bin", "stdin"])
        self.assertEqual(parts[3].get_payload(decode=True), PIPED.encode())
        for part, path in zip(parts, paths):
            with open(path, "rb") as file:
                self.assertTrue(part.get_payload(decode=True) == file.read(), path)

    def test_domain_in_brackets(self):
        # As it is in the file: not every version of the address parser takes such a domain.
        draft = self.saved("-r:C [x] <c@[192.0.2.1]>")
        self.assertEqual(dict(draft.raw_items())["To"], '"C [x]" <c@[192.0.2.1]>')

    def test_clients(self):
        first, second = self.file("a,b'c %.txt", b"one"), self.file("plain.txt", b"two")
        words = [ANN, "-r:bob@example.org", "-s:50% & 'a', b", "-b:x\ny", f"-a:{first}", f"-a:{second}"]
        address = "%22Ann%20Lee%22%20%3Cann%40example.org%3E%2C%20bob%40example.org"
        uri = address.replace("%40", "@").replace("%2C", ",")
        mailto = f"mailto:{uri}?subject=50%25%20%26%20%27a%27%2C%20b&body=x%0Ay"
        for handler, program, expected in [
            ("org.mozilla.Thunderbird.desktop", "thunderbird",
             ["-compose", f"to='{address}',subject=\"50%25%20%26%20%27a%27%2C%20b\",body='x%0Ay',"
              "attachment='file://FOLDER/1/a%252Cb%2527c%2520%2525.txt,file://FOLDER/2/plain.txt'"]),
            ("claws-mail.desktop", "claws-mail",
             ["--compose", mailto, "--attach", "FOLDER/1/a,b'c %.txt", "FOLDER/2/plain.txt"]),
            ("org.gnome.Evolution.desktop", "evolution",
             [mailto + "&attach=FOLDER/1/a%2Cb%27c%20%25.txt&attach=FOLDER/2/plain.txt"]),
            ("other.desktop", "xdg-open", ["DRAFT"]),
        ]:
            with self.subTest(handler):
                name, said, draft = self.started(*words, handler=handler, mail="other.desktop")
                folder = draft.removesuffix(".eml") + ".files"
                files = folder.replace("data home", "data%2520home" if program == "thunderbird" else
                                       "data%20home" if program == "evolution" else "data home")
                self.assertEqual((name, said), (program, [word.replace("FOLDER", files).replace("DRAFT", draft)
                                                          for word in expected]))
                if program != "xdg-open":
                    with open(os.path.join(folder, "1", "a,b'c %.txt"), "rb") as file:
                        self.assertEqual(file.read(), b"one")

    def test_draft_in_place_of_words(self):
        for name, options, arguments in [
            ("client missing", {"programs": ("xdg-mime", "xdg-open")}, []),
            ("words too long", {}, ["-b:" + "ü" * 30000]),
            ("both quotes", {}, ["-b:a', b\", c"]),
        ]:
            with self.subTest(name):
                said = self.started(ANN, *arguments, handler="thunderbird.desktop", mail="x.desktop", **options)
                self.assertEqual(said[:2], ("xdg-open", [said[2]]))

    def test_no_client(self):
        for programs in ((), ("xdg-mime",), ("xdg-mime", "xdg-open")):
            with self.subTest(programs):
                folder = self.programs(*programs)
                (line,) = self.run_program(ANN, CORVANE_MAIL_CLIENT="", PATH=folder, RECORD=self.folder)
                self.read(line.removeprefix("Draft saved: "))


@unittest.skipUnless(LIBRARY, "the library is built for a sanitizer")
class LibraryTest(DraftTest):
    def setUp(self):
        super().setUp()
        os.makedirs(self.home)
        os.chmod(self.home, 0o777)

    def send(self, record, prepare=lambda: None):
        def prepare_all():
            os.environ["XDG_DATA_HOME"] = self.home
            prepare()

        return simplemail.send(LIBRARY, record, prepare_all)

    def test_codes(self):
        secret, big = self.file("secret").encode(), self.file("big", bytes(1 << 20)).encode()
        os.chmod(secret, 0)
        folder = self.folder.encode()
        closed = lambda: (os.chmod(self.home, 0o500), simplemail.drop_root())
        full = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 19, 1 << 19))
        message = simplemail.message
        for name, record, prepare, expected in [
            ("no message", None, simplemail.drop_root, 2),
            ("missing", message(files=[(folder + b"/missing", None)]), simplemail.drop_root, 11),
            ("no path", message(files=[(None, b"name")]), simplemail.drop_root, 11),
            ("below a file", message(files=[(big + b"/x", None)]), simplemail.drop_root, 11),
            ("no permission", message(files=[(secret, None)]), simplemail.drop_root, 12),
            ("folder", message(files=[(folder, None)]), simplemail.drop_root, 12),
            ("closed data folder", message(), closed, 2),
            ("disk full", message(files=[(big, None)]), full, 4),
        ]:
            with self.subTest(name):
                code, said = self.send(record, prepare)
                self.assertEqual(code, expected, said)
                self.assertRegex(said, r"^Draft not saved: .*\n$")
                self.assert_nothing_left()

    def test_record(self):
        record = simplemail.message(
            b"S\xff", b"T", (b"me@example.org", b""),
            [(1, b"A", b"SMTP:a@example.org"), (2, b"B", b"b@b\xc3\xbc.example"), (3, None, b"c@example.org"),
             (1, b"Ann Lee", None), (1, None, None)], [(self.file("f.txt").encode(), b"..\\x/Shown.txt")])
        code, said = self.send(record)
        self.assertEqual(code, 0)
        draft = self.read(said.strip().removeprefix("Draft saved: "))
        self.assertEqual([draft[field] for field in ("Subject", "From", "To", "Cc", "Bcc")],
                         ["S\ufffd", "me@example.org", 'A <a@example.org>, "Ann Lee"', "B <b@xn--b-eha.example>",
                          "c@example.org"])
        self.assertEqual([part.get_filename() for part in draft.iter_attachments()], ["Shown.txt"])

    def test_names_in_use_and_reloading(self):
        """Loads, calls and unloads again and again, with the next names taken by files of someone else."""
        os.makedirs(self.drafts)

        def work():
            now = time.time()
            for second in range(-1, 20):
                start = time.strftime("%Y%m%d-%H%M%S", time.localtime(now + second))
                for number in range(1, 20, 3):
                    with open(f"{self.drafts}/{start}-{os.getpid()}-{number}.eml", "w") as file:
                        file.write("mine")
            for _ in range(10):
                library = ctypes.CDLL(LIBRARY)
                if simplemail.entry(library)(None, None, simplemail.message(b"Hello"), 0, 0) != 0:
                    return 1
                _ctypes.dlclose(library._handle)
            return 0

        os.environ["XDG_DATA_HOME"] = self.home
        code, said = simplemail.in_child(work, lambda: None)
        self.assertEqual(code, 0, said)
        paths = [line.removeprefix("Draft saved: ") for line in said.splitlines()]
        self.assertEqual(len(set(paths)), 10)
        for path in paths:
            self.assertEqual(self.read(path)["Subject"], "Hello")
        others = {os.path.join(self.drafts, name) for name in os.listdir(self.drafts)} - set(paths)
        self.assertEqual(len(others), 21 * 7)
        self.assertEqual({os.path.getsize(path) for path in others}, {len("mine")})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
