#!/usr/bin/env python3
"""usage: clients_test.py PROGRAM [LIBRARY]

Runs the program with small programs in the places of mail clients, and takes the words that these are started with
apart as the clients do.
"""

import email
import email.policy
import email.utils
import os
import pathlib
import random
import re
import shlex
import signal
import sys
import time
import unittest
import urllib.parse

from drafts import DraftTest, mailboxes

ANN = "-r:Ann Lee <ann@example.org>"
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
# File names whose letters mean something in addresses, lists, URIs or to a shell.
NAMES = ["a,b'c %25.txt", 'say "hi" & go.txt', "Übung 😀 #1?.txt", "-option.txt", "$(touch x);`y`.txt", "plain.txt"]
FAMILIES = {"thunderbird": "org.mozilla.Thunderbird", "evolution": "org.gnome.Evolution", "geary": "org.gnome.Geary",
            "kmail": "org.kde.kmail2", "claws": "claws-mail", "sylpheed": "sylpheed"}


def addresses(text):
    return email.utils.getaddresses([text])


def from_mailto(uri):
    """To, subject, body and attachments, as clients read them: parted first, decoded then, "+" standing for itself."""
    scheme, _, rest = uri.partition(":")
    assert scheme == "mailto", uri
    to, _, query = rest.partition("?")
    fields = [field.partition("=")[::2] for field in query.split("&") if field]
    assert len({key for key, _ in fields if key != "attach"}) == len([key for key, _ in fields if key != "attach"]), uri
    values = {key: urllib.parse.unquote(value, errors="strict") for key, value in fields}
    attached = [urllib.parse.unquote(value) for key, value in fields if key == "attach"]
    return addresses(urllib.parse.unquote(to)), values.get("subject", ""), values.get("body", ""), attached


def from_compose(words):
    assert words[0] == "--compose" and words[2:3] in ([], ["--attach"]), words
    to, subject, body, attached = from_mailto(words[1])
    assert not attached and not [path for path in words[3:] if path.startswith("-")]
    return to, subject, body, words[3:]


def from_options(words):
    """--composer, options with values after "=", and behind "--" nothing but recipients, which are joined."""
    end = words.index("--")
    assert words[0] == "--composer" and all(word.startswith("--") and "=" in word for word in words[1:end]), words
    options = [word[2:].partition("=")[::2] for word in words[1:end]]
    value = lambda key: "".join(value for name, value in options if name == key)
    body = value("body")
    if value("msg"):
        with open(value("msg"), encoding="utf-8", newline="") as file:
            body = file.read()
    return addresses(", ".join(words[end + 1:])), value("subject"), body, [v for k, v in options if k == "attach"]


READERS = {"evolution": lambda words: from_mailto(*words), "geary": lambda words: from_mailto(*words),
           "kmail": from_options, "claws": from_compose, "sylpheed": from_compose}


class ClientTest(DraftTest):
    def setUp(self):
        super().setUp()
        self.home, self.drafts = (path.replace("data home", "it's the home") for path in (self.home, self.drafts))
        self.data = os.path.join(self.folder, "data")
        self.record = os.path.join(self.folder, "record")
        os.makedirs(self.record)
        self.file("programs/xdg-mime", HANDLERS.encode(), 0o755)
        for name in ("client", "xdg-open"):
            self.file(f"programs/{name}", CLIENT.encode(), 0o755)
        self.client = os.path.join(self.folder, "programs/client")

    def entry(self, name, line="client %u", media_type="x-scheme-handler/mailto"):
        self.file(f"data/applications/{name}.desktop", f"[Desktop Entry]\nType=Application\nName=My Client\n"
                  f"Exec={line}\nMimeType={media_type};\n".encode())
        return name + ".desktop"

    def start(self, *arguments, wanted="", mailto="", message="", started=True, **options):
        """The name and the words of the client that was started, the draft's path, and what else was said."""
        words = os.path.join(self.record, "words")
        if os.path.exists(words):
            os.remove(words)
        variables = {"CORVANE_MAIL_CLIENT": wanted, "MAILTO": mailto, "MESSAGE": message, "RECORD": self.record,
                     "PATH": os.path.join(self.folder, "programs"), "XDG_DATA_DIRS": self.data, **options}
        shown, (line, *said) = self.run_program(*arguments, **variables)
        self.assertEqual(shown, "")
        self.read(line)
        draft = line.removeprefix("Draft saved: ")
        end = time.time() + (30 if started else 0)
        while not os.path.exists(words) and time.time() < end:
            time.sleep(0.01)
        if not started:
            self.assertFalse(os.path.exists(words))
            return [], draft, said
        with open(words, encoding="utf-8", errors="surrogateescape", newline="") as file:
            return file.read().split("\0")[:-1], draft, said

    def check(self, family, to, subject, body, names):
        """What arrives in the client of a family is what the command line has."""
        paths = [self.file("my dir, it's %41 #1/" + name, name.encode()) for name in names]
        given = [f"-r:{name} <{address}>" if name else f"-r:{address}" for name, address in to]
        (_, *words), draft, said = self.start(*given, f"-s:{subject}", f"-b:{body}", *[f"-a:{path}" for path in paths],
                                              wanted=family)
        self.assertEqual(said, [])
        if family == "thunderbird":
            (word,) = words
            uri = urllib.parse.urlsplit(word)
            self.assertEqual((uri.scheme, uri.netloc, urllib.parse.unquote(uri.path)), ("file", "", draft))
            with open(draft, "rb") as file:
                message = email.message_from_binary_file(file, policy=email.policy.default)
            parts = [(part.get_filename(), part.get_payload(decode=True)) for part in message.iter_attachments()]
            found = mailboxes(message), message["Subject"] or ""
            self.assertFalse(os.path.exists(draft.removesuffix(".eml") + ".files"))
            self.assertEqual((found, parts), ((to, subject), [(name, name.encode()) for name in names]))
            return
        *found, attached = READERS[family](words)
        self.assertEqual(found, [to, subject, body])
        self.assertEqual([os.path.basename(path) for path in attached], names)
        for path in attached:
            with open(path, "rb") as file:
                self.assertEqual(file.read(), os.path.basename(path).encode())

    def test_families(self):
        for family, entry in FAMILIES.items():
            self.entry(entry)
        to = [('Lee, Ann "Q"', "ann@example.org"), ("Jürgen O'Neil", "j@example.org"), ("", "bob+x&y=z@example.org"),
              ("--help", "-x@example.org"), ("mailto:x", "http@example.org")]
        body = "He said: \"x\",'y' 100% %41 <b>\n\n',subject='HACK'&cc=e@example.org\n--\nEnd+ü€😀"
        for family in FAMILIES:
            with self.subTest(family):
                self.check(family, to, 'It\'s 100%25 "done", ok? ü € 😀 +a&b #c', body, NAMES)

    def test_random_texts(self):
        seed = random.randrange(1 << 32)
        chance = random.Random(seed)
        letters = "ab Z09-._~!*'();:@&=+$,/?#[]%\"\\<>|{}^`\u00fc\u20ac\U0001f600\u0301\u200d"
        text = lambda most, extra="", without="": "x" + "".join(
            chance.choice([c for c in letters + extra if c not in without]) for _ in range(chance.randrange(most))) + "x"
        name = lambda: re.sub(" +", " ", text(20, without="<>[]@"))  # blanks in a row are one to a reader of names
        for family, entry in FAMILIES.items():
            self.entry(entry)
        for _ in range(4):
            for family in FAMILIES:
                with self.subTest(family, seed=seed):
                    # The option itself parts at "<" and, with the program's own joining, at brackets.
                    to = [(name(), "a@example.org"), (name(), "b@example.org")]
                    names = [f"{i}{text(20, without='/<>:|*?' + chr(92) + chr(34))}.txt" for i in range(2)]
                    self.check(family, to, text(99), text(999, "\n\n\n'"), names)

    def test_client_is_independent(self):
        self.entry("claws-mail")
        self.start(ANN, wanted="claws")
        read = lambda name: pathlib.Path(self.record, name).read_text(encoding="ascii")
        self.assertNotEqual(int(read("session")), os.getsid(0))
        files = {line.partition(" -> ")[2] for line in read("files").splitlines()[1:]}
        self.assertEqual({file for file in files if not file.startswith(self.folder)}, {"/dev/null"})
        self.assertEqual(int(read("ignored").split()[1], 16) & 1 << signal.SIGPIPE - 1, 0)

    def test_entry_lines(self):
        path, uri = self.drafts + "/NAME", f"file://{self.drafts}/NAME"
        for line, expected in [
            ("client %u", ["client", uri]),
            ("client %U --end", ["client", uri, "--end"]),
            ("client --file=%f", ["client", "--file=" + path]),
            ("client", ["client", path]),
            ('"PROGRAM" "a b\\\\$" %c %i 100%% %F', ["client", "a b$", "My Client", "100%", path]),
            ("PROGRAM run --file-forwarding org.mozilla.Thunderbird @@u %u @@",
             ["client", "run", "--file-forwarding", "org.mozilla.Thunderbird", "@@u", uri, "@@"]),
        ]:
            with self.subTest(line):
                entry = self.entry("thunderbird", line.replace("PROGRAM", self.client))
                words, draft, said = self.start(ANN, mailto=entry)
                words = [urllib.parse.unquote(word) if word.startswith("file:") else word for word in words]
                self.assertEqual((words, said),
                                 ([word.replace("NAME", os.path.basename(draft)) for word in expected], []))

    def test_unknown_clients(self):
        known, other = self.entry("net.thunderbird.Thunderbird"), self.entry("other", "client --to=%u")
        path = self.file("a.txt")
        for name, arguments, options, expected, told in [
            ("without attachments", [], {"mailto": other}, ["xdg-open", "mailto:TO"], 0),
            ("with a reader of drafts", [f"-a:{path}"], {"mailto": other, "message": known}, ["client", "file://DRAFT"], 0),
            ("with another reader", [f"-a:{path}"], {"mailto": other, "message": other}, ["xdg-open", "mailto:TO"], 1),
            ("named by its id", [], {"wanted": other}, ["client", "--to=mailto:TO"], 0),
            ("named, with attachments", [f"-a:{path}"], {"wanted": other}, ["client", "--to=mailto:TO"], 1),
        ]:
            with self.subTest(name):
                words, draft, said = self.start("-r:ann@example.org", *arguments, **options)
                self.assertEqual([urllib.parse.unquote(word) for word in words],
                                 [word.replace("TO", "ann@example.org").replace("DRAFT", draft) for word in expected])
                self.assertEqual(len(said), told)

    def test_line_to_type(self):
        self.entry("mutt", "client %u")
        for options in ({"wanted": "mutt"}, {"mailto": "mutt.desktop"}, {"wanted": "neomutt"}):
            _, draft, (line,) = self.start(ANN, started=False, **options)
            program, option, path = shlex.split(line.removeprefix("To open the draft: "))
            self.assertEqual((program, option, path), (options.get("wanted", "mutt"), "-H", draft))

    def test_not_started(self):
        """The user is told why, and where the draft is."""
        lying, unquoted, gone = self.entry("a-claws", "client %z"), self.entry("b-claws", 'client "%u'), "gone.desktop"
        broken, foreign = self.entry("c-claws", "/etc/passwd %u"), self.entry("d-claws")
        missing, balsa = self.entry("e-claws", "nowhere %u"), self.entry("balsa-mailto-handler")
        claws, shared = self.entry("claws"), self.entry("shared-claws")
        os.chmod(os.path.join(self.data, "applications", foreign), 0o666)
        os.makedirs(os.path.join(self.folder, "open/applications"))
        os.rename(os.path.join(self.data, "applications", shared),
                  os.path.join(self.folder, "open/applications", shared))
        os.chmod(os.path.join(self.folder, "open/applications"), 0o777)
        unusable = " cannot be used: it or its program is missing, or damaged"
        for reason, options in [
            ("none is set for mailto: addresses", {}),
            (gone + unusable, {"mailto": gone}),
            (missing + unusable, {"mailto": missing}),
            (unquoted + unusable, {"mailto": unquoted}),
            (gone + unusable, {"wanted": gone}),
            (broken + unusable, {"mailto": broken}),
            ("no entry of geary is installed", {"wanted": "geary"}),
            ("the command line of a-claws.desktop has an unknown field code", {"mailto": lying}),
            ("others may write " + os.path.join(self.data, "applications", foreign), {"mailto": foreign}),
            ("others may write " + os.path.join(self.folder, "open/applications", shared),
             {"mailto": shared, "XDG_DATA_DIRS": os.path.join(self.folder, "open")}),
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
            with self.subTest(length):
                self.check("kmail", [("", "a@example.org")], "", "x" * length, [])

    def test_desktop_that_fails(self):
        """It hangs, and ends the process that asks it: the first is ended itself, with all that it has started."""
        for script, reason, least in [
            ('echo $$ >"$RECORD/hanging"\n/bin/sleep 60\n', "the desktop does not answer", 4.5),
            ("kill -9 $PPID\n", "there is no memory or no process left for it", 0),
        ]:
            with self.subTest(reason):
                self.file("programs/xdg-mime", b"#!/bin/sh\n" + script.encode(), 0o755)
                begin = time.time()
                _, _, (told, *_) = self.start(ANN, started=False)
                self.assertEqual(told, "Mail client not started: " + reason)
                self.assertTrue(least < time.time() - begin < least + 30)
        hanging = pathlib.Path("/proc", pathlib.Path(self.record, "hanging").read_text(encoding="ascii").strip())
        end = time.time() + 10
        while hanging.exists() and "(zombie)" not in (hanging / "status").read_text() and time.time() < end:
            time.sleep(0.01)
        self.assertLess(time.time(), end)

    def test_copies(self):
        """Those of thirty days ago go; drafts, and what only looks like a copy, stay. One that can't be made leaves
        nothing, and the draft is there all the same."""
        self.entry("claws")
        old = ["20200101-000000-1-1.files", ".20200101-000000-1-1.spool", ".20200101-000000-1-1.part"]
        stay = ["20200101-000000-1-1.eml", "mine.files", ".part", "20200101-000000-1-2.files"]
        for name in old + stay:
            path = self.file(os.path.join(self.drafts, name, "x") if "files" in name or "spool" in name
                             else os.path.join(self.drafts, name))
            for changed in (path, os.path.dirname(path)):
                days = 29 if "1-2" in name else 31
                os.utime(changed, (time.time() - days * 86400,) * 2)
        words, draft, _ = self.start(ANN, f"-a:{self.file('a.txt')}", wanted="claws")
        new = os.path.basename(draft).removesuffix(".eml")
        self.assertEqual(sorted(os.listdir(self.drafts)), sorted([*stay, new + ".eml", new + ".files"]))
        self.assertEqual(os.stat(os.path.join(self.drafts, new + ".files")).st_mode & 0o777, 0o700)
        self.assertEqual(os.stat(words[-1]).st_nlink, 1)  # the waiting file became the copy


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
