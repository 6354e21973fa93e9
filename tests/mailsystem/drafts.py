"""What the tests of drafts share: a run of the program with folders of its own, and the reading back."""

import base64
import email
import email.header
import email.policy
import email.utils
import os
import re
import resource
import signal
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM = os.path.abspath(sys.argv[1])
LIBRARY = os.path.abspath(sys.argv[2]) if len(sys.argv) > 2 else None
NOBODY = 65534


def mailboxes(draft):
    """The To field. This Python's own decoder of address fields leaves a space between encoded words."""
    fields = [value for name, value in draft.raw_items() if name == "To"]
    return [(str(email.header.make_header(email.header.decode_header(name))), address)
            for name, address in email.utils.getaddresses(fields)]


class DraftTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        os.chmod(self.folder, 0o755)
        self.home = os.path.join(self.folder, "data home")
        self.drafts = os.path.join(self.home, "corvane", "drafts")

    def file(self, name, content=b"x", mode=0o644):
        path = os.path.join(self.folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)
        os.chmod(path, mode)
        return path

    def run_program(self, *arguments, limits=(), user=None, given=None, prepare=lambda: None, **variables):
        """What the program says on standard output and, line by line, on standard error. It ends with 0 whatever
        becomes of the draft. It is `given` a text through a pipe as its standard input, and its process prepares."""

        def prepare_process():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            signal.signal(signal.SIGPIPE, signal.SIG_IGN)  # no client may inherit that
            for kind, limit in limits:
                resource.setrlimit(kind, (limit, limit))
            prepare()

        environment = {**os.environ, "XDG_DATA_HOME": self.home, "HOME": self.folder,
                       "TESSARIX_REGISTRY": os.path.join(self.folder, "settings"), "CORVANE_MAIL_CLIENT": "draft",
                       **variables}
        result = subprocess.run([PROGRAM, "-nologo", *arguments], env=environment, cwd=self.folder, preexec_fn=prepare_process,
                                input=given, capture_output=True, encoding="utf-8", timeout=60, user=user)
        self.assertEqual(result.returncode, 0, result.stderr)
        return result.stdout, result.stderr.splitlines()

    def saved(self, *arguments, **options):
        """The one draft that a run leaves, at the path that it says."""
        said, lines = self.run_program(*arguments, **options)
        self.assertEqual((said, len(lines)), ("", 1), lines)
        return self.read(lines[0])

    def read(self, line):
        self.assertRegex(line, "^Draft saved: /")
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
        self.assertEqual([part.defects for part in draft.walk()], [[]] * len(list(draft.walk())))
        for word in re.findall(rb"=\?UTF-8\?[Bb]\?([^?]*)\?=", raw):
            base64.b64decode(word).decode()  # whole characters, for readers that do not mend halves
        self.assertEqual(draft["X-Unsent"], "1")
        self.assertLess(abs(draft["Date"].datetime.timestamp() - time.time()), 60)
        self.assertRegex(draft["Message-ID"], "^<[^ ]+@[^ ]+>$")
        return draft

    def assert_nothing_left(self):
        left = [os.path.join(folder, name) for folder, folders, files in os.walk(self.home) for name in folders + files]
        self.assertEqual([path for path in left if not os.path.islink(path) and not self.drafts.startswith(path)], [])
