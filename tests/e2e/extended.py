"""The Extended route: what the program asks of a MAPI library, call by call, and what becomes of a run in which that
refuses, crashes or gives nothing. The probe's calls stand at the head of every transcript."""

import dataclasses
import re

from cases import FAILED, Case
from expect import Mail, failure, internal_error, number, quoted

FAIL, POINTER, UNEXPECTED = 0x80040700, 0x80004003, 0x8000FFFF
FAIL_TEXT = "Unknown COM error. Error code: 0x80040700"  # the one code here for which no system has a text
ERRORS_RETURNED = "0x40380"

CRASH = ("Access violation. The instruction at 0x[0-9A-F]{16} referenced memory at 0x0+10.The memory could not be "
         "read.")

# A fault runs no destructors: texts of the frames that it leaves are lost.
NO_LEAK_CHECK = {"ASAN_OPTIONS": "detect_leaks=0"}


class Lines(tuple):
    """The lines of a transcript; a case takes them where it takes deliveries."""

    def transcript(self):
        return "".join(line + "\n" for line in self)


def data(content):
    shown = content.hex() if len(content) <= 64 else f"{content[:32].hex()}...{content[-32:].hex()}"
    return f"{len(content)}:{shown.upper() or 'null'}"


def ole(place):
    return "OLE is started" if place.windows else "OLE is not started"


def probe(place):
    return (f"MAPIInitialize(null, {ole(place)}) = 0", "MAPILogonEx(0, null, null, 0x8020) = 0",
            "IMAPISession::Release() = 0", f"MAPIUninitialize({ole(place)})")


def wrapped(name):
    return [f"{name}::AddRef() = 2", f"{name}::Release() = 1"]


def stores(first_column):
    return ["IMAPISession::GetMsgStoresTable(0) = 0",
            f"IMAPITable::SetColumns([{first_column}, 0xFFF0102], 0) = 0",
            "HrQueryAllRows(IMAPITable, null, null, null, 0) = 0"]


def opening(place, row):
    size = 2 * row + 3
    return [f"MAPIInitialize(null, {ole(place)}) = 0", "MAPILogonEx(0, null, null, 0x80000062) = 0",
            *wrapped("IMAPISession"), *stores("0x30090003"),
            f"IMAPISession::OpenMsgStore(0, {size}:{f'{0x10 + row:X}' * size}, null, 4) = 0", "FreeProws(rows)",
            *wrapped("IMsgStore"), "IMAPITable::Release() = 0",
            "HrGetOneProp(IMsgStore, 0x35E20102) = 0", f"IMsgStore::OpenEntry(5:{'A5' * 5}, null, 1) = 0",
            "MAPIFreeBuffer(property)", *wrapped("Outbox"),
            "IMsgStore::GetReceiveFolder(null, 0x80000000, null) = 0",
            f"IMsgStore::OpenEntry(21:{'B6' * 21}, null, 1) = 0", "MAPIFreeBuffer(identifier)", *wrapped("Inbox"),
            "IMAPISession::OpenAddressBook(0, null, 1) = 0", *wrapped("IAddrBook")]


def recipients(names):
    lines, capacity, buffer = ["MAPIAllocateBuffer(0x88) = 0"], 8, "buffer of 136"
    for index, _ in enumerate(names):
        if index == capacity:
            capacity *= 2
            lines += [f"MAPIAllocateBuffer({number(capacity * 16 + 8)}) = 0", f"MAPIFreeBuffer({buffer})"]
            buffer = f"buffer of {capacity * 16 + 8}"
        lines.append("MAPIAllocateBuffer(0x30) = 0")
    entries = ", ".join(f"{{0, buffer of 48, 0x3001001F {quoted(name)}, 0xC150003 1}}" for name in names)
    lines += [f"IAddrBook::ResolveName(0, 0x80000000, null, {buffer}, [{entries}]) = 0",
              f"IMessage::ModifyRecipients(0, {buffer}) = 0"]
    return lines, buffer


def attachment(name, content):
    return ["IMessage::CreateAttach(null, 0) = 0", "HrSetOneProp(IAttach, 0x37050003 1) = 0",
            f"HrSetOneProp(IAttach, 0x3704001F {quoted(name)}) = 0",
            f"HrSetOneProp(IAttach, 0x37010102 {data(content)}) = 0", "IAttach::SaveChanges(2) = 0",
            "IAttach::Release() = 0"]


def ending(place, buffer):
    return ["IMessage::Release() = 0", "IAddrBook::Release() = 0", "Inbox::Release() = 0", "Outbox::Release() = 0",
            "IMsgStore::Release() = 0", "IMAPISession::Release() = 0", f"MAPIUninitialize({ole(place)})",
            f"FreePadrlist({buffer})", "end:"]


def delivery(place, names, subject="", body="", files=(), row=0, spoolers=()):
    """All lines of a run that ends well."""
    list_lines, buffer = recipients(names)
    lines = [*probe(place), *opening(place, row), "Outbox::CreateMessage(null, 0) = 0",
             "HrSetOneProp(IMessage, 0xE01000B 1) = 0", *wrapped("IMessage"), *list_lines,
             f"HrSetOneProp(IMessage, 0x37001F {quoted(subject)}) = 0",
             f"HrSetOneProp(IMessage, 0x1000001F {quoted(body)}) = 0"]
    for name, content in files:
        lines += attachment(name, content)
    lines += ["IMAPISession::PrepareForm(null, IMessage) = 0",
              f"IMessage::GetProps([0xE070003, 0x1A001F, 0xFF40003, 0xFFF0102, 0xE170003], 0) = {ERRORS_RETURNED}",
              "IMAPISession::ShowForm(0, IMsgStore, Outbox, null, the token, null, 1, 0x104, 0x100, 0x102, "
              '"IPM.N\u00f6te") = 0',
              "MAPIFreeBuffer(properties of the message)", *stores("0x3E030003")]
    for spooler in spoolers:
        size = 2 * spooler + 3
        lines += [f"IMAPISession::OpenEntry({size}:{f'{0x10 + spooler:X}' * size}, null, 1) = 0",
                  "IMAPIStatus::FlushQueues(0, 0, null, 0x1A) = 0", "IMAPIStatus::Release() = 0"]
    return (*lines, "FreeProws(rows)", "IMAPITable::Release() = 0", *ending(place, buffer))


def sends(name, words, place, *, rows="2/21", disk=None, **delivered):
    return Case(name, tuple(words), [Lines(delivery(place, **delivered))], files=disk or {},
                environment={"CORVANE_MAPI_STORES": rows})


def com_text(place, code):
    """Wine has no text for these codes."""
    native = {POINTER: "Invalid pointer", UNEXPECTED: "Catastrophic failure"}
    return f"Unknown COM error. Error code: 0x{code:x}" if place.wine else native[code]


def messages(place):
    yield sends("a name and a bare address", ["-r:Ann Lee <ann@x>", "-r:bob@y", "-s:Hello", "-b:Text"], place,
                names=["Ann Lee[ann@x]", "[bob@y]"], subject="Hello", body="Text")
    yield sends("a name without an address", ["-r:Ann <>"], place, names=["Ann"])
    for count in (8, 17):
        yield sends(f"{count} recipients", [f"-r:N{i} <n{i}>" for i in range(count)], place,
                    names=[f"N{i}[n{i}]" for i in range(count)])
    wide = "Ж 漢 😀"
    yield sends("letters of the world", [f"-r:{wide} <{wide}>", f"-s:{wide}", f"-b:{wide}"], place,
                names=[f"{wide}[{wide}]"], subject=wide, body=wide)
    for name, content in (("an empty file", b""), ("a file of 64 MiB", b"Mail" * 2**24)):
        yield sends(name, ["-r:a", "-a:sub/x.txt"], place, names=["[a]"], files=[("x.txt", content)],
                    disk={"sub/x.txt": content})
    yield sends("each file that exists goes in once, under its own name",
                ["-r:a", "-a:Shown <x.txt>", "-a:none.txt", "-a:y"], place, names=["[a]"],
                files=[("x.txt", b"x"), ("y", b"yy")], disk={"x.txt": b"x", "y": b"yy"})


def tables(place):
    yield sends("the last of two primary stores", ["-r:a"], place, rows="1004 noid:0 1004", names=["[a]"], row=2)
    yield sends("stores of the spooler's type", ["-r:a"], place, rows="2 0/25 0/24 0/25", names=["[a]"],
                spoolers=[1, 3])
    lines = [*probe(place), *opening(place, 0)[:7], "FreeProws(rows)", "IMAPITable::Release() = 0",
             "IMAPISession::Release() = 0", f"MAPIUninitialize({ole(place)})", "end:"]
    for name, rows in (("no store that will do", "4 1000"), ("a store without an identifier", "noid:2")):
        yield Case(name, ("-r:a",), [Lines(lines)], output=com_text(place, UNEXPECTED),
                   environment={"CORVANE_MAPI_STORES": rows})


def refusals(place):
    """The probe fails: the other route follows, and nothing is said."""
    initialize, logon, _, uninitialize = probe(place)
    failed = lambda line, code: line.replace("= 0", f"= {number(code)}")
    for script, *lines in ((f"MAPILogonEx#1={FAIL:X}", initialize, failed(logon, FAIL), uninitialize),
                           ("MAPILogonEx#1=nothing", initialize, logon, uninitialize),
                           ("MAPILogonEx#1=8007000E", initialize, failed(logon, 0x8007000E), uninitialize),
                           (f"MAPIInitialize#1={FAIL:X}", failed(initialize, FAIL))):
        yield Case(f"the probe fails: {script}", ("-r:A <a>",), [Lines(lines), Mail("A", "a"), Lines(["end:"])],
                   environment={"CORVANE_MAPI_SCRIPT": script})


WORDS = ("-r:Ann <a>", "-r:b", "-s:Hello", "-b:Text", "-a:x.txt")
FILES = {"x.txt": b"x"}
RELEASE = r"(\w+::Release\(\) = [01]|MAPIFreeBuffer\(.*\)|FreeProws\(rows\))"


def calls(lines):
    """Each call that can fail, behind the probe: its place in the transcript, and its name with its number."""
    names = [line.split("(")[0] for line in lines]
    for index, line in enumerate(lines):
        if index >= 4 and " = " in line and not line.endswith(("AddRef() = 2", "Release() = 1", "Release() = 0")):
            yield index, f"{names[index]}#{names[:index + 1].count(names[index])}"


def failed_run(place, good, index, shown):
    """A pattern of the transcript of a run that fails at one call; `shown` is how that call's line ends. Whatever it has in
    its hands, it lets go of what it has come to, in this order."""
    before, ends = good[:index], ending(place, "buffer of 136")
    tail = [ends[7]] if "MAPIAllocateBuffer(0x88) = 0" in before else []
    tail += [line for line in ends[:6] if line.replace("Release() = 0", "AddRef() = 2") in before]
    tail += [ends[6]] if before.count(f"MAPIInitialize(null, {ole(place)}) = 0") == 2 else []
    head = Lines((*before, good[index].rsplit(" = ", 1)[0] + shown)).transcript()
    return re.compile(re.escape(head) + f"({RELEASE}\n)*?" + re.escape(Lines([*tail, "end:"]).transcript()))


def scripted(rule, sends, output="", code=0, **environment):
    return Case(rule, WORDS, sends, code, output, files=FILES, environment={"CORVANE_MAPI_SCRIPT": rule, **environment})


def sweep(place, good):
    """Every call behind the probe fails, and crashes."""
    before, after = map(re.escape, failure("@").split("@"))
    for turn, (index, name) in enumerate(calls(good)):
        if turn % 4 != 0 and place.windows:
            continue  # a start under Wine takes its time
        yield scripted(f"{name}={FAIL:X}", failed_run(place, good, index, f" = {number(FAIL)}"), FAIL_TEXT)
        crash = re.compile(before + CRASH + after)
        yield scripted(f"{name}=read", failed_run(place, good, index, ""), crash, FAILED, **NO_LEAK_CHECK)
        # The second fault and all that follow are borne in silence: the first is told, and the run ends by itself.
        yield scripted(f"{name}=read:dying", re.compile("(?s).*\nend:.*"), crash, FAILED, **NO_LEAK_CHECK)


def oddities(place, good):
    """A library that reports success and gives nothing, or something else."""
    yield scripted("nothing in the way", [Lines(good)])
    balanced = re.compile("(?s).*\nend:\n")  # all that was given out came back
    for call in ("MAPILogonEx#2", "IMAPISession::GetMsgStoresTable#1", "IMAPISession::GetMsgStoresTable#2",
                 "IMAPISession::OpenMsgStore", "IMsgStore::OpenEntry#1", "IMAPISession::OpenAddressBook",
                 "Outbox::CreateMessage", "MAPIAllocateBuffer#1", "MAPIAllocateBuffer#2", "IMessage::CreateAttach"):
        yield scripted(f"{call}=nothing", balanced, com_text(place, POINTER))
    for rule in ("HrQueryAllRows#1=nothing", "HrGetOneProp=nothing"):
        yield scripted(rule, balanced, com_text(place, UNEXPECTED))
    yield scripted("IMAPISession::ShowForm=8007000E", balanced, failure("Not enough memory!"), FAILED)
    yield scripted("IMessage::GetProps=nothing", balanced,
                   re.compile(internal_error("ExtendedMapi").pattern.replace(r"\d+", "309")), FAILED)
    # The user's cancel is not told.
    for rule in ("IMAPISession::ShowForm=80040113", "HrQueryAllRows#2=nothing",
                 "IMsgStore::OpenEntry#2=nothing", "IMsgStore::GetReceiveFolder=nothing"):
        yield scripted(rule, balanced)


def all_cases(place):
    good = delivery(place, ["Ann[a]", "[b]"], "Hello", "Text", [("x.txt", b"x")])
    for case in (*messages(place), *tables(place), *refusals(place), *oddities(place, good), *sweep(place, good)):
        yield dataclasses.replace(case, mail="extended")
