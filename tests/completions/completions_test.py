"""What each shell makes of a line with Tabs in it, by the completions in the folder that the first argument names."""

import os
import pathlib
import re
import select
import shutil
import signal
import sys
import tempfile
import time
import unittest

FOLDER = os.path.abspath(sys.argv.pop(1))
FUNCTION = "corvane() {\nprintf got; printf '<%s>' \"$@\"; echo .\n}\n"
SHELLS = {  # the command, the file that it reads first, and what is in that
    "bash": (["--noprofile", "--rcfile", "rc", "-i"], "rc", f"source {FOLDER}/corvane.bash\n{FUNCTION}"),
    "zsh": (["-d", "-i"], ".zshrc", f"fpath=({FOLDER} $fpath)\nautoload -U compinit; compinit -D -u\n{FUNCTION}"),
    "fish": (["--no-config", "-C", "source rc"], "rc",
             f"source {FOLDER}/corvane.fish\nfunction corvane; printf got; printf '<%s>' $argv; echo .; end\n")}
# An X behind the Tab tells whether a blank came with it: then it is a word of its own.
ROWS = {"-s\tX": "-s:X", "-su\tX": "-subject:X", "-n\tX": "-nologo><X", "-s:al\tX": "-s:alX", "al\tX": "alX",
        "-a:al\tX": "-a:alpha.txt><X", "-r:ann /ATT:al\tX": "-r:ann></ATT:alpha.txt><X", "-a:fol\tX": "-a:folder/X",
        "-a:my\\ f\tX": "-a:my file.txt><X", '-a:"my\tX': "-a:my file.txt><X", '"-a:my\tX': "-a:my file.txt><X",
        "@al\tX": "@alpha.txt><X", "@fol\tX": "@folder/X", "@@al\tX": "@@alX"}


class Completions(unittest.TestCase):
    def test_lines(self):
        for name, (words, first, content) in SHELLS.items():
            with self.subTest(name), tempfile.TemporaryDirectory() as home:
                if not shutil.which(name):
                    self.skipTest(f"{name} is not installed")
                os.mkdir(f"{home}/folder")
                for file, text in {first: content, "alpha.txt": "", "my file.txt": ""}.items():
                    pathlib.Path(home, file).write_text(text, encoding="utf-8")
                shell, terminal = os.forkpty()
                if shell == 0:
                    os.chdir(home)
                    os.execvpe(name, [name, *words], {**os.environ, "HOME": home, "ZDOTDIR": home, "TERM": "xterm"})
                try:
                    self.assertEqual({line: self.answer(terminal, line) for line in ROWS}, ROWS)
                finally:
                    os.kill(shell, signal.SIGKILL)
                    os.close(terminal)
                    os.waitpid(shell, 0)

    def answer(self, terminal, line):
        """The words that the shell takes from the line, with what it shows between them."""
        seen, sent, end = "", False, time.monotonic() + 20
        while not (found := re.search(r"got<([^\r]*)>\.\r", seen)) and time.monotonic() < end:
            if select.select([terminal], [], [], 0.1)[0]:
                seen += os.read(terminal, 65536).decode(errors="replace")
            elif not sent:  # the shell waits for input
                sent = os.write(terminal, f"corvane {line}\r".encode())
        return found.group(1) if found else seen


if __name__ == "__main__":
    unittest.main()
