#!/usr/bin/env python3
"""usage: drafts_test.py PROGRAM

Runs the program with folders of its own, and reads back the drafts that it leaves.
"""

import base64
import email.header
import email.policy
import email.utils
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = os.path.abspath(sys.argv[1])
SANITIZED = "sanitized" in sys.argv
NOBODY = 65534 if os.geteuid() == 0 else None  # permissions do not bind the superuser
MEBIBYTE = 1 << 20
ANN = "-r:Ann Lee <ann@example.org>"
TO_ANN = [("Ann Lee", "ann@example.org")]
LONG = "x" * 2000
LOOKALIKE = "=?utf-8?q?hi?="
ENDS = "a\rb =3D \nc\r\nd\n\re\r\r\n"

# name, arguments, [(shown name, address)], subject, body with LF. None for a field that must not be there.
MESSAGES = [
    ("plain", [ANN, "-s:Hello", "-b:Text"], TO_ANN, "Hello", "Text"),
    ("bare address", ["-r:ann@example.org"], [("", "ann@example.org")], None, ""),
    ("long emoji", ["-r:" + "😀" * 60 + " <a@example.org>", "-s:" + "👍🏽" * 200],
     [("😀" * 60, "a@example.org")], "👍🏽" * 200, ""),
    ("one long word", [f"-r:{LONG} <a@example.org>", f"-s:{LONG}", f"-b:{LONG}"],
     [(LONG, "a@example.org")], LONG, LONG),
    ("quotes and commas", ['-r:Lee, "Ann" (Ü\\;) <ann@example.org>', '-s:"a", b; <c>'],
     [('Lee, "Ann" (Ü\\;)', "ann@example.org")], '"a", b; <c>', ""),
    ("looks encoded", [f"-r:{LOOKALIKE} <a@example.org>", f"-s:{LOOKALIKE}{'日本語' * 20}"],
     [(LOOKALIKE, "a@example.org")], LOOKALIKE + "日本語" * 20, ""),
    ("injected fields",
     ["-r:A\r\nBcc: e <a@example.org\r\nBcc:e@example.org>", "-s:S\r\n\r\nBcc: e\rTo: e\n X\x0b\x85z"],
     [("A  Bcc: e", '"a@example.org  Bcc:e"@example.org')], "S    Bcc: e To: e  X  z", ""),
    ("spaces", [ANN, "-s: a" + " " * 99 + "b ü" + " " * 99 + "\n"], TO_ANN, "a" + " " * 99 + "b ü", ""),
    ("body like a message", [ANN, "-b:From x\n.\n--\nTo: y\n\nz\x01"], TO_ANN, None, "From x\n.\n--\nTo: y\n\nz\x01"),
    # As it is, in base64 and quoted.
    *[("line ends", [ANN, f"-b:{first}{ENDS}"], TO_ANN, None, first + "a\nb =3D \nc\nd\n\ne\n\n")
      for first in ("", "ü", "ü" + "a" * 99)],
]

# The whole field: what is no address, or no name in balanced brackets, is kept as it was written, in quotes.
FIELDS_OF_TO = [
    ('A <a "b"\\ c@example.org>', 'A <"a \\"b\\"\\\\ c"@example.org>'),
    ('A <"a b"@example.org>', 'A <"a b"@example.org>'),
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

BINARY = bytes(range(256)) * 300
# File name, expected name, content.
ATTACHMENTS = [
    ("plain.txt", "plain.txt", b"Text\r\nof\rlines\n"),
    ("Fünf, \"sechs\"; 'x'.txt", "Fünf, \"sechs\"; 'x'.txt", b"x"),
    ("a\r\nX-Evil: 1\r\n\r\nb", "a  X-Evil: 1    b", b"x"),
    ("ü" * 120 + ".txt", "ü" * 120 + ".txt", b"x"),
    ("empty", "empty", b""),
    ("picture", "picture", b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR" + BINARY),
    ("inner.eml", "inner.eml", b"Subject: x\r\n\r\ny\r\n"),
    # Around the end of a line and of a piece that is read at once.
    *[(f"{size}.bin", f"{size}.bin", BINARY[:size]) for size in (57, 58, 58368, 58369)],
]
PIPED = "x" * 100000  # more than a pipe holds


def setUpModule():
    """The user nobody starts it too, who may not enter the folder of every build."""
    global PROGRAM
    place = tempfile.TemporaryDirectory()
    unittest.addModuleCleanup(place.cleanup)
    os.chmod(place.name, 0o755)
    build = os.path.dirname(os.path.dirname(PROGRAM))
    shutil.copytree(os.path.join(build, "lib", "corvane"), os.path.join(place.name, "lib", "corvane"))
    os.mkdir(os.path.join(place.name, "bin"), 0o755)
    PROGRAM = shutil.copy(PROGRAM, os.path.join(place.name, "bin"))


def mailboxes(draft):
    """The To field. This Python's own decoder of address fields leaves a space between encoded words."""
    fields = [value for name, value in draft.raw_items() if name == "To"]
    return [(str(email.header.make_header(email.header.decode_header(name))), address)
            for name, address in email.utils.getaddresses(fields)]


def limited(kind, size):
    return {"prepare": lambda: resource.setrlimit(kind, (size, size))}


class DraftTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        os.chmod(self.folder, 0o755)
        self.home = os.path.join(self.folder, "it's the home")
        self.drafts = os.path.join(self.home, "corvane", "drafts")

    def file(self, name, content=b"x", mode=0o644):
        path = os.path.join(self.folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)
        os.chmod(path, mode)
        return path

    def run_program(self, *arguments, user=None, given=None, prepare=lambda: None, **variables):
        """What the program says on standard output and, line by line, on standard error. It ends with 0 whatever
        becomes of the draft. It is `given` a text through a pipe as its standard input, and its process prepares."""

        def prepare_process():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            signal.signal(signal.SIGPIPE, signal.SIG_IGN)  # no client may inherit that
            prepare()

        environment = {**os.environ, "XDG_DATA_HOME": self.home, "HOME": self.folder, "CORVANE_MAIL_CLIENT": "draft",
                       "TESSARIX_REGISTRY": os.path.join(self.folder, "settings"), **variables}
        result = subprocess.run([PROGRAM, "-nologo", *arguments], env=environment, cwd=self.folder, input=given,
                                preexec_fn=prepare_process, capture_output=True, encoding="utf-8", user=user)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout, result.stderr.splitlines()

    def saved(self, *arguments, **options):
        """The one draft that a run leaves, at the path that it says."""
        said, lines = self.run_program(*arguments, **options)
        self.assertEqual((said, len(lines)), ("", 1), lines)
        return self.read(lines[0])

    def read(self, line):
        path = line.removeprefix("Draft saved: ")
        self.assertEqual(os.path.dirname(path), self.drafts)
        self.assertRegex(os.path.basename(path), r"^\d{8}-\d{6}-\d+-\d+\.eml$")
        self.assertEqual(os.stat(path).st_mode & 0o777, 0o600)
        with open(path, "rb") as file:
            raw = file.read()
        self.assertNotRegex(raw, rb"(?<!\r)\n|\r(?!\n)|[^\r\n]{999}")
        self.assertNotRegex(raw.split(b"\r\n\r\n")[0], rb"\n[ \t]+(\r|$)")
        self.assertNotIn(b"iso-8859", raw.lower())
        draft = email.message_from_bytes(raw, policy=email.policy.default)
        self.assertEqual([part.defects for part in draft.walk() if part.defects], [])
        for word in re.findall(rb"=\?UTF-8\?[Bb]\?([^?]*)\?=", raw):
            base64.b64decode(word).decode()  # whole characters, for readers that do not mend halves
        self.assertEqual(draft["X-Unsent"], "1")
        self.assertLess(abs(draft["Date"].datetime.timestamp() - time.time()), 60)
        self.assertRegex(draft["Message-ID"], "^<[^ ]+@[^ ]+>$")
        return draft


class ContentTest(DraftTest):
    def test_messages(self):
        fields = {"X-Unsent", "Date", "Message-Id", "Message-ID", "Subject", "To", "MIME-Version", "Content-Type",
                  "Content-Transfer-Encoding"}
        for name, arguments, to, subject, body in MESSAGES:
            with self.subTest(name):
                draft = self.saved(*arguments)
                self.assertLessEqual(set(draft.keys()), fields)
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
        for given in (f"<{LONG}@example.org>", "ü" * 999 + "@example.org"):  # longer than a line may be
            self.assertEqual(mailboxes(self.saved(f"-r:{given}")), [(given.strip("<>"), '"too long"')])

    def test_attachments(self):
        paths = [self.file("attached/" + name, content) for name, _, content in ATTACHMENTS]
        body, *parts = self.saved(ANN, "-b:Text", *[f"-a:{path}" for path in paths]).iter_parts()
        self.assertEqual(body.get_content(), "Text")
        for part, (_, name, content) in zip(parts, ATTACHMENTS, strict=True):
            self.assertEqual(set(part.keys()), {"Content-Type", "Content-Disposition", "Content-Transfer-Encoding"})
            self.assertEqual(part.get_content_type(), "image/png" if name == "picture" else "application/octet-stream")
            self.assertEqual((part.is_attachment(), part.get_filename(), part["Content-Type"].params["name"]),
                             (True, name, name))
            self.assertEqual(part.get_payload(decode=True), content)

    def test_attachments_of_one_name_and_many(self):
        files = [("Same.txt", b"one"), ("Same.txt", b"two"), *[(f"{i}.txt", b"%d" % i) for i in range(60)]]
        paths = [self.file(f"{i}/{name}", content) for i, (name, content) in enumerate(files)]
        draft = self.saved(ANN, "-r:bob@example.org", *[f"-a:{path}" for path in (*paths, "/dev/stdin")], given=PIPED,
                           **limited(resource.RLIMIT_NOFILE, 50))
        self.assertEqual([(part.get_filename(), part.get_payload(decode=True)) for part in draft.iter_attachments()],
                         [*files, ("stdin", PIPED.encode())])
        self.assertEqual(len(os.listdir(self.drafts)), 1)

    @unittest.skipIf(SANITIZED, "a sanitizer has memory of its own")
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
                    self.file(f"{self.drafts}/{start}-{os.getpid()}-{number}.eml", b"mine")

        _, (line,) = self.run_program(ANN, prepare=take)
        self.read(line)
        self.assertTrue(line.endswith("-3.eml"))
        sizes = [os.path.getsize(os.path.join(self.drafts, name)) for name in os.listdir(self.drafts)]
        self.assertEqual(len(sizes) - 1, sizes.count(len("mine")))

    def test_data_folder(self):
        for given in ("", "relative/folder"):
            _, (line,) = self.run_program(ANN, XDG_DATA_HOME=given)
            self.assertTrue(line.startswith(f"Draft saved: {self.folder}/.local/share/corvane/drafts/"), line)
        for folder in (".local", ".local/share", ".local/share/corvane", ".local/share/corvane/drafts"):
            self.assertEqual(os.stat(os.path.join(self.folder, folder)).st_mode & 0o777, 0o700)

    def test_failures_leave_nothing(self):
        """What a run says whose delivery fails: once, and through the program alone."""
        small, big = self.file("small"), f"-a:{self.file('big', bytes(MEBIBYTE))}"
        elsewhere, nowhere = os.path.join(self.folder, "elsewhere"), os.path.join(self.folder, "nowhere")
        make = lambda path, mode: (os.makedirs(path), os.chmod(path, mode))
        link = lambda target: (make(os.path.dirname(self.drafts), 0o777), os.symlink(target, self.drafts))
        no_folder, no_file = f"cannot make the folder {self.drafts}", f"cannot make a file in {self.drafts}"
        for prepare, options, said in [
            (None, {"XDG_DATA_HOME": small}, f"cannot make the folder {small}/corvane/drafts: Not a directory"),
            (None, {"XDG_DATA_HOME": "", "HOME": "/proc"},
             "cannot make the folder /proc/.local/share/corvane/drafts: No such file or directory"),
            (None, limited(resource.RLIMIT_FSIZE, MEBIBYTE // 2),  # while the attachment's bytes arrive
             f"cannot write to {self.drafts}: File too large"),
            (None, limited(resource.RLIMIT_FSIZE, MEBIBYTE + 10),  # while the draft is written
             f"cannot write to {self.drafts}: File too large"),
            (lambda: make(self.drafts, 0o1755), {"user": NOBODY}, no_file + ": Permission denied"),
            (lambda: (make(self.home, 0o1777), make(os.path.dirname(self.drafts), 0o755)), {"user": NOBODY},
             no_folder + ": Permission denied"),  # the data folder is sticky, and has one of somebody else
            (lambda: (make(elsewhere, 0o755), link(elsewhere)), {"user": NOBODY}, no_file + ": Permission denied"),
            (lambda: link(nowhere), {"user": NOBODY}, no_file + ": No such file or directory"),
        ]:
            if os.geteuid() != 0 and "user" in options:
                continue  # nobody else's folders can be made
            with self.subTest(said, options=str(options)):
                shutil.rmtree(self.home, ignore_errors=True)
                if prepare:
                    prepare()
                shown, lines = self.run_program(ANN, *([] if prepare else [big]), **options)
                self.assertEqual((shown.strip(), lines), ("Draft not saved: " + said, []))
                left = [os.path.join(at, name) for at, folders, files in os.walk(self.home) for name in folders + files]
                self.assertEqual([path for path in left if not self.drafts.startswith(path)], [])
                self.assertFalse(os.path.exists(nowhere) or os.path.exists(elsewhere) and os.listdir(elsewhere))

    def test_simple_side(self):
        """Where no Extended library is found the same library is called: files are named rather than handed over."""
        self.file("settings/HKEY_LOCAL_MACHINE.reg", b"Windows Registry Editor Version 5.00\n[HKEY_LOCAL_MACHINE\\"
                  b'SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\OUTLOOK.EXE]\n@=dword:0\n')
        path = self.file("f.txt", b"content")
        # The kernel gives this one in pieces that are smaller than what is asked for; its process waits.
        waiting = subprocess.Popen([sys.executable, "-c", "print(flush=True); open(0).read()"], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE)
        self.addCleanup(waiting.communicate)
        waiting.stdout.readline()
        maps = pathlib.Path(f"/proc/{waiting.pid}/maps")
        for given, name, content in ((f"x/Shown.txt <{os.path.dirname(path)}/F.TXT>", "Shown.txt", b"content"),
                                     ("/dev/stdin", "stdin", PIPED.encode()),
                                     (str(maps), "maps", maps.read_bytes())):
            draft = self.saved(ANN, "-s:Hello", "-b:ü", f"-a:{given}", given=PIPED)
            body, part = draft.iter_parts()
            self.assertEqual((mailboxes(draft), draft["Subject"], body.get_content()), (TO_ANN, "Hello", "ü"))
            self.assertEqual((part.get_filename(), part.get_payload(decode=True)), (name, content))
        self.assertEqual(self.run_program(ANN, f"-a:{self.folder}/settings"),
                         ("", [f"Draft not saved: cannot attach {self.folder}/settings: Is a directory"]))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
