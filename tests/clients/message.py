"""The message that every client is handed, and how what a client has kept is compared with it."""

import email
import email.header
import email.policy
import email.utils
import os
import re

RECIPIENTS = [('Lee, Ann "Q"', "ann@example.org"), ("Jürgen O'Neil", "juergen@example.org"), ("", "bare@example.org")]
SUBJECT = "It's 100%25 \"done\", ok? ü € 😀 +a&b"
BODY = "He said \"no\" and 'yes' at 100%.\n%41 <b>bold</b> &amp; ü € 😀\n',subject='HACK'\n\nLast line,"
FOLDER = "my dir, it's Übung %41 #1"
NAMES = ["two words.txt", "a,b.txt", "it's.txt", 'say "hi".txt', "50%25 & more.txt", "Übung.txt", "smile 😀.txt"]


def content(name):
    return f"This is {name}.\n"


def make_files(home):
    folder = os.path.join(home, FOLDER)
    os.mkdir(folder)
    for name in NAMES:
        with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
            file.write(content(name))


def body(run):
    """No draft of one run is taken for that of another."""
    return f"{BODY} {run}"


def arguments(home, run):
    return ["-nologo", *(f"-r:{name} <{address}>" if name else f"-r:{address}" for name, address in RECIPIENTS),
            f"-s:{SUBJECT}", f"-b:{body(run)}", *(f"-a:{os.path.join(home, FOLDER, name)}" for name in NAMES)]


def decoded(text):
    return str(email.header.make_header(email.header.decode_header(text)))


def file_name(part):
    """Some clients leave quotes in a quoted name as they are, and encode words in it: both are read as meant."""
    field = str(part.get("Content-Disposition", ""))
    plain = re.search(r'filename="(.*)"', field)
    return decoded(plain[1].replace('\\"', '"')) if plain else decoded(part.get_filename() or "")


def text_of(part):
    return part.get_payload(decode=True).decode(part.get_content_charset("utf-8")).replace("\r\n", "\n")


def fields_of(data):
    """What a kept draft says. The old policy hands headers over as they are written: the new one repairs them."""
    draft = email.message_from_bytes(data, policy=email.policy.compat32)
    fields = {"attachments": {}}
    to = " ".join(str(draft.get("To", "")).split())
    fields["to"] = [(decoded(name), address) for name, address in email.utils.getaddresses([to])]
    fields["subject"] = " ".join(decoded(str(draft.get("Subject", ""))).split())
    for part in draft.walk():
        if part.get_content_disposition() == "attachment":
            fields["attachments"][file_name(part)] = text_of(part).rstrip()
        elif part.get_content_type() == "text/plain":
            fields.setdefault("body", text_of(part).rstrip())
    return fields


def differences(data, run, dropped):
    """Which fields of a kept draft aren't as given, and how; empty when all are. Blank ends are the client's own."""
    fields = fields_of(data)
    taken_out = str.maketrans("", "", dropped)
    given = {"to": [(name.translate(taken_out), address) for name, address in RECIPIENTS],
             "subject": SUBJECT,
             "body": body(run),
             "attachments": {name: content(name).rstrip() for name in NAMES}}
    return [f"{name} {fields.get(name)!r}" for name in given if fields.get(name) != given[name]]
