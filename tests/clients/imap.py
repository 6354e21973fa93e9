"""An IMAP server with an empty inbox, for clients that open no composer before they have met their server.

It answers what such a client asks, and keeps the messages that it is given in a folder: the drafts.
"""

import os
import re
import socketserver
import threading

ANSWERS = {
    "CAPABILITY": "* CAPABILITY IMAP4rev1 UIDPLUS",
    "LIST": '* LIST (\\HasNoChildren) "/" INBOX\r\n* LIST (\\HasNoChildren \\Drafts) "/" Drafts',
    "STATUS": "* STATUS {folder} (MESSAGES 0 RECENT 0 UNSEEN 0 UIDNEXT 1 UIDVALIDITY 1)",
    "SELECT": "* FLAGS (\\Draft \\Deleted)\r\n* 0 EXISTS\r\n* 0 RECENT\r\n* OK [UIDVALIDITY 1]\r\n* OK [UIDNEXT 1]",
    "LOGOUT": "* BYE",
}
ANSWERS["EXAMINE"] = ANSWERS["SELECT"]


class Session(socketserver.StreamRequestHandler):
    def handle(self):
        self.say("* OK ready")
        while line := self.rfile.readline().decode():
            tag, command, *words = line.split()
            command = command.upper()
            if command in ANSWERS:
                self.say(ANSWERS[command].format(folder=words[0] if words else ""))
            if command == "APPEND":
                self.keep(int(re.search(r"\{(\d+)", line)[1]))
            self.say(f"{tag} OK [READ-WRITE] done" if command == "SELECT" else f"{tag} OK done")

    def keep(self, size):
        self.say("+ go on")
        data = self.rfile.read(size)
        self.rfile.readline()
        folder = self.server.folder
        with open(os.path.join(folder, f"{len(os.listdir(folder))}.eml"), "wb") as file:
            file.write(data)

    def say(self, line):
        self.wfile.write(line.encode() + b"\r\n")


def serve(folder):
    """Serves on the loopback address for as long as this process lives, at the port that it returns."""
    os.makedirs(folder)
    server = socketserver.ThreadingTCPServer(("127.0.0.1", 0), Session)
    server.folder = folder
    server.daemon_threads = True
    threading.Thread(target=server.serve_forever, daemon=True).start()
    return server.server_address[1]
