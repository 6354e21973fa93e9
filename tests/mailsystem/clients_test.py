#!/usr/bin/env python3
"""usage: clients_test.py PROGRAM

Runs the program with small programs in the places of mail clients, and takes the words that these are started with
apart as the clients do.
"""

import email.policy
import email.utils
import os
import pathlib
import shlex
import signal
import subprocess
import sys
import time
import unittest
from urllib.parse import unquote, urlsplit

from drafts_test import ANN, DraftTest, mailboxes

LONGEST_WORD = 131071  # of the kernel
# Writes down its words, its session, its descriptors and its signals; last the words, which are waited for.
CLIENT = r"""#!/bin/sh
/usr/bin/cut -d' ' -f6 /proc/$$/stat >"$RECORD/session"
/bin/ls -l /proc/$$/fd >"$RECORD/files"
/bin/grep SigIgn /proc/$$/status >"$RECORD/ignored"
printf '%s\0' "${0##*/}" "$@" >"$RECORD/.words" && /bin/mv "$RECORD/.words" "$RECORD/words"
exit 1
"""
HANDLERS = '#!/bin/sh\ncase "$3" in *mailto) echo "$MAILTO" ;; *) echo "$MESSAGE" ;; esac\n'
FAMILIES = {"thunderbird": "org.mozilla.Thunderbird", "evolution": "org.gnome.Evolution", "geary": "org.gnome.Geary",
            "kmail": "org.kde.kmail2", "claws": "claws-mail", "sylpheed": "sylpheed"}

# Texts and file names whose letters mean something in addresses, lists, URIs or to a shell. The option itself parts a
# recipient at "<" and, with the program's own joining, at brackets.
PLAIN = "Z09-._~!'();&=+$,#%{}^`ü€😀\u0301\u200d %41 %25"
LETTERS = PLAIN + "@:?/*[]\"\\<>|"
TO = [('Lee, Ann "Q"', "ann@example.org"), ("Jürgen O'Neil", "j@example.org"), ("", "bob+x&y=z@example.org"),
      ("--help", "-x@example.org"), ("mailto:x", "http@example.org"), (PLAIN + ':?/*"\\|', "a@example.org")]
SUBJECT = "It's ok? +a&b #c " + LETTERS
BODY = "He said: \"x\",'y' <b>\n\n',subject='HACK'&cc=e@example.org\n--\n" + LETTERS + "\n\n\n'"
NAMES = ["a,b'c %25.txt", 'say "hi" & go?.txt', "-option.txt", "$(touch x);`y`.txt", PLAIN]


def wait_until(ask):
    for _ in range(3000):  # naps, and not seconds: the whole machine may stand still meanwhile
        if ask():
            return True
        time.sleep(0.01)
    return False


def addresses(text):
    return email.utils.getaddresses([text])


def from_mailto(uri):
    """To, subject, body and attachments, as clients read them: parted first, decoded then, "+" standing for itself."""
    scheme, _, rest = uri.partition(":")
    to, _, query = rest.partition("?")
    fields = [field.partition("=")[::2] for field in query.split("&") if field]
    values = {key: unquote(value, errors="strict") for key, value in fields if key != "attach"}
    attached = [unquote(value) for key, value in fields if key == "attach"]
    assert scheme == "mailto" and len(values) + len(attached) == len(fields), uri
    return addresses(unquote(to)), values.get("subject", ""), values.get("body", ""), attached


def from_compose(words):
    assert words[0] == "--compose" and words[2:3] in ([], ["--attach"]), words
    *fields, attached = from_mailto(words[1])
    assert not attached and not [path for path in words[3:] if path.startswith("-")]
    return *fields, words[3:]


def from_options(words):
    """--composer, options with values after "=", and behind "--" nothing but recipients, which are joined."""
    end = words.index("--")
    assert words[0] == "--composer" and all(word.startswith("--") and "=" in word for word in words[1:end]), words
    options = [word[2:].partition("=")[::2] for word in words[1:end]]
    value = lambda key: "".join(value for name, value in options if name == key)
    body = pathlib.Path(value("msg")).read_bytes().decode() if value("msg") else value("body")
    return addresses(", ".join(words[end + 1:])), value("subject"), body, [v for k, v in options if k == "attach"]


READERS = {"evolution": lambda words: from_mailto(*words), "geary": lambda words: from_mailto(*words),
           "kmail": from_options, "claws": from_compose, "sylpheed": from_compose}


class ClientTest(DraftTest):
    def setUp(self):
        super().setUp()
        self.data, self.record = os.path.join(self.folder, "data"), os.path.join(self.folder, "record")
        os.makedirs(self.record)
        self.file("programs/xdg-mime", HANDLERS.encode(), 0o755)
        for name in ("client", "xdg-open"):
            self.file(f"programs/{name}", CLIENT.encode(), 0o755)

    def entry(self, name, line="client %u", data="data"):
        self.file(f"{data}/applications/{name}.desktop", f"[Desktop Entry]\nType=Application\nName=My Client\n"
                  f"Exec={line}\nMimeType=x-scheme-handler/mailto;\n".encode())
        return name + ".desktop"

    def start(self, *arguments, wanted="", mailto="", message="", started=True, **options):
        """The name and the words of the client that was started, the draft's path, and what else was said."""
        words = pathlib.Path(self.record, "words")
        words.unlink(missing_ok=True)
        variables = {"CORVANE_MAIL_CLIENT": wanted, "MAILTO": mailto, "MESSAGE": message, "RECORD": self.record,
                     "PATH": os.path.join(self.folder, "programs"), "XDG_DATA_DIRS": self.data, **options}
        shown, (line, *said) = self.run_program(*arguments, **variables)
        self.assertEqual(shown, "")
        self.read(line)
        wait_until(lambda: words.exists() or not started)
        self.assertEqual(words.exists(), started)
        found = words.read_bytes().decode(errors="surrogateescape").split("\0")[:-1] if started else []
        return found, line.removeprefix("Draft saved: "), said

    def check(self, family, to, subject, body, names):
        """What arrives in the client of a family is what the command line has."""
        paths = [self.file(f"my {family}, it's %41 #1/{name}", name.encode()) for name in names]
        given = [f"-r:{name} <{address}>" if name else f"-r:{address}" for name, address in to]
        (_, *words), draft, said = self.start(*given, f"-s:{subject}", f"-b:{body}", *[f"-a:{path}" for path in paths],
                                              wanted=family)
        self.assertEqual(said, [])
        if family == "thunderbird":
            uri = urlsplit(*words)
            self.assertEqual((uri.scheme, uri.netloc, unquote(uri.path)), ("file", "", draft))
            message = email.message_from_bytes(pathlib.Path(draft).read_bytes(), policy=email.policy.default)
            parts = [(part.get_filename(), part.get_payload(decode=True)) for part in message.iter_attachments()]
            self.assertFalse(os.path.exists(draft.removesuffix(".eml") + ".files"))
            found = [mailboxes(message), message["Subject"] or "", body]
        else:
            *found, attached = READERS[family](words)
            parts = [(os.path.basename(path), pathlib.Path(path).read_bytes()) for path in attached]
        self.assertEqual((found, parts), ([to, subject, body], [(name, name.encode()) for name in names]))

    def test_families(self):
        for entry in FAMILIES.values():
            self.entry(entry)
        for family in FAMILIES:
            with self.subTest(family):
                self.check(family, TO, SUBJECT, BODY, NAMES)

    def test_client_is_independent(self):
        self.entry("claws-mail")
        self.start(ANN, wanted="claws")
        read = lambda name: pathlib.Path(self.record, name).read_text(encoding="ascii")
        self.assertNotEqual(int(read("session")), os.getsid(0))
        files = {line.partition(" -> ")[2] for line in read("files").splitlines()[1:]}
        self.assertEqual({file for file in files if not file.startswith(self.folder)}, {"/dev/null"})
        self.assertEqual(int(read("ignored").split()[1], 16) & 1 << signal.SIGPIPE - 1, 0)

    def test_entry_lines(self):
        program = os.path.join(self.folder, "programs/client")
        for line, expected in [
            ("client %U --end", ["client", "URI", "--end"]),
            ("client --file=%f", ["client", "--file=PATH"]),
            ("client", ["client", "PATH"]),
            ('"PROGRAM" "a b\\\\$" %c %i 100%% %F', ["client", "a b$", "My Client", "100%", "PATH"]),
            ("PROGRAM run --file-forwarding org.mozilla.Thunderbird @@u %u @@",
             ["client", "run", "--file-forwarding", "org.mozilla.Thunderbird", "@@u", "URI", "@@"]),
        ]:
            with self.subTest(line):
                entry = self.entry("thunderbird", line.replace("PROGRAM", program))
                words, draft, said = self.start(ANN, mailto=entry)
                words = [unquote(word) if word.startswith("file:") else word for word in words]
                self.assertEqual((words, said), ([word.replace("URI", "file://" + draft).replace("PATH", draft)
                                                  for word in expected], []))

    def test_unknown_clients(self):
        known, other = self.entry("net.thunderbird.Thunderbird"), self.entry("other", "client --to=%u")
        attached = f"-a:{self.file('a.txt')}"
        for arguments, options, expected, told in [
            ([], {"mailto": other}, ["xdg-open", "mailto:TO"], 0),
            ([attached], {"mailto": other, "message": known}, ["client", "file://DRAFT"], 0),  # a reader of drafts
            ([attached], {"mailto": other, "message": other}, ["xdg-open", "mailto:TO"], 1),
            ([attached], {"wanted": other}, ["client", "--to=mailto:TO"], 1),
        ]:
            with self.subTest(str(options), arguments=arguments):
                words, draft, said = self.start("-r:ann@example.org", *arguments, **options)
                self.assertEqual(([unquote(word) for word in words], len(said)),
                                 ([word.replace("TO", "ann@example.org").replace("DRAFT", draft) for word in expected],
                                  told))

    def test_line_to_type(self):
        self.entry("mutt")
        for program, options in (("mutt", {"mailto": "mutt.desktop"}), ("neomutt", {"wanted": "neomutt"})):
            _, draft, (line,) = self.start(ANN, started=False, **options)
            self.assertEqual(shlex.split(line.removeprefix("To open the draft: ")), [program, "-H", draft])

    def test_not_started(self):
        """The user is told why, and where the draft is."""
        lying, unquoted, gone = self.entry("a-claws", "client %z"), self.entry("b-claws", 'client "%u'), "gone.desktop"
        broken, missing = self.entry("c-claws", "/etc/passwd %u"), self.entry("e-claws", "nowhere %u")
        balsa, claws = self.entry("balsa-mailto-handler"), self.entry("claws")
        foreign, shared = self.entry("d-claws"), self.entry("shared-claws", data="open")
        paths = [f"{self.data}/applications/{foreign}", f"{self.folder}/open/applications/{shared}"]
        os.chmod(paths[0], 0o666)
        os.chmod(os.path.dirname(paths[1]), 0o777)
        unusable = " cannot be used: it or its program is missing, or damaged"
        for reason, options in [
            ("none is set for mailto: addresses", {}),
            *[(entry + unusable, {"mailto": entry}) for entry in (gone, missing, unquoted, broken)],
            (gone + unusable, {"wanted": gone}),
            ("no entry of geary is installed", {"wanted": "geary"}),
            ("the command line of a-claws.desktop has an unknown field code", {"mailto": lying}),
            ("others may write " + paths[0], {"mailto": foreign}),
            ("others may write " + paths[1], {"mailto": shared, "XDG_DATA_DIRS": os.path.join(self.folder, "open")}),
            (balsa + " cannot be handed a message", {"mailto": balsa}),
            ("the message is too long for its command line", {"mailto": claws, "body": "ü" * 40000}),
        ]:
            with self.subTest(reason):
                body = options.pop("body", "")
                _, draft, (told, *ways) = self.start(ANN, f"-b:{body}", f"-a:{self.file('a.txt')}", started=False,
                                                     **options)
                self.assertEqual(told, "Mail client not started: " + reason)
                self.assertEqual([shlex.split(way)[-1] for way in ways[:2]], [draft, draft])
                self.assertIn("xdg-mime default", ways[2])
                self.assertFalse(os.path.exists(draft.removesuffix(".eml") + ".files"))

    def test_longest_words(self):
        self.entry("org.kde.kmail2")
        for length in (LONGEST_WORD - len("--body="), LONGEST_WORD - len("-b:")):
            self.check("kmail", [("", "a@example.org")], "", "x" * length, [])

    def test_desktop_that_fails(self):
        """It hangs, and ends the process that asks it: the first is ended itself, with all that it has started."""
        for script, reason in [
            ('echo $$ >"$RECORD/hanging"\n/bin/sleep 60\n', "the desktop does not answer"),
            ("kill -9 $PPID\n", "there is no memory or no process left for it"),
        ]:
            self.file("programs/xdg-mime", b"#!/bin/sh\n" + script.encode(), 0o755)
            begin = time.time()
            _, _, (told, *_) = self.start(ANN, started=False)
            self.assertEqual((told, time.time() - begin < 50), ("Mail client not started: " + reason, True))
        hanging = pathlib.Path(self.record, "hanging").read_text(encoding="ascii").strip()
        alive = ["grep", "-qs", "^State:.[RSDT]", f"/proc/{hanging}/status"]
        self.assertTrue(wait_until(lambda: subprocess.run(alive, check=False).returncode))

    def test_copies(self):
        """Those of thirty days ago go; drafts, and what only looks like a copy, stay. One that can't be made leaves
        nothing, and the draft is there all the same."""
        self.entry("claws")
        old = ["20200101-000000-1-1.files/x", ".20200101-000000-1-1.spool/x", ".20200101-000000-1-1.part"]
        stay = ["20200101-000000-1-1.eml", "mine.files/x", ".part", "20200101-000000-1-2.files/x"]
        for name in old + stay:
            path = self.file(os.path.join(self.drafts, name))
            for changed in (path, os.path.dirname(path)):
                os.utime(changed, (time.time() - (29 if "1-2" in name else 31) * 86400,) * 2)
        words, draft, _ = self.start(ANN, f"-a:{self.file('a.txt')}", wanted="claws")
        files = draft.removesuffix(".eml") + ".files"
        expected = {*[name.removesuffix("/x") for name in stay], os.path.basename(draft), os.path.basename(files)}
        self.assertEqual(set(os.listdir(self.drafts)), expected)
        # The waiting file became the copy.
        self.assertEqual((os.stat(files).st_mode & 0o777, os.stat(words[-1]).st_nlink), (0o700, 1))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
