"""The rows of the table that `./dev bench` ends with: which measurement is compared with which, and the most that their
ratio may be."""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Row:
    title: str
    ours: str  # a measurement's name, as table.py shortens it
    peers: dict[str, str]  # by what the reader is to call it; the best one counts. Empty: `ours` is judged by itself
    wanted: float | None  # the most that the ratio, or without peers the value, may be; None: it is only stated
    value: str = "real_time"  # which of the measurement's values
    unit: str = ""  # behind a value that is no time


def conversions():
    for number, text in ((1, "ASCII"), (0, "Latin and Cyrillic"), (2, "Cyrillic")):
        for title, ours, peer, called in (("UTF-8 to UTF-16, into a buffer", "DecodeOurs", "DecodeIcu", "ICU"),
                                          ("UTF-8 to UTF-16, a string", "FromNarrowOurs", "FromUtf8Qt", "Qt"),
                                          ("UTF-16 to UTF-8, into a buffer", "EncodeOurs", "EncodeIcu", "ICU"),
                                          ("UTF-16 to UTF-8, a string", "ToNarrowOurs", "ToUtf8Qt", "Qt")):
            yield Row(f"{title}, 1 MiB, {text}", f"{ours}/{number}", {called: f"{peer}/{number}"}, 1)
    for number, text in ((0, "Latin"), (1, "Cyrillic")):
        peers = {"ICU": f"ReadIcu/{number}", "Qt": f"ReadQt/{number}", "iconv": f"ReadIconv/{number}"}
        yield Row(f"`ReadTextFile`, 16 MiB of UTF-8, {text}", f"ReadOurs/{number}", peers, 1)
    yield Row("`ReadTextFile`, 16 MiB of UTF-16", "ReadOurs/2", {"iconv": "ReadIconv/2"}, 1)


def strings():
    yield Row("string copied and dropped", "CopyAndDrop", {"Qt": "QtCopyAndDrop"}, 1)
    for length in (9, 25, 57):
        peers = {"Qt": f"QtCreateAndDrop/{length}"}
        yield Row(f"string of {length} made and dropped", f"CreateAndDrop/{length}", peers, 1)
    for count in (64, 1000, 100000):
        peers = {"std": f"StandardAppendOneByOne/{count}"}
        yield Row(f"append to {count:,}, one by one", f"AppendOneByOne/{count}", peers, 1.1)
    for size in (32, 64, 128, 300, 1500):
        yield Row(f"pool pair of {size} bytes", f"PoolPair/{size}", {"malloc": f"LibraryPair/{size}"}, 1)
    yield Row("pool pair of 32 bytes, two threads", "PoolPair/32/threads:2", {"malloc": "LibraryPair/32/threads:2"}, 2)


def maps():
    peers = {"std": "CStandard", "Qt": "CQt", "absl": "CAbseil"}
    for count in (1000, 100000):
        for title, ours in (("map fill {}, `Add`", "Fill<CWithAdd>"), ("map fill {}, `Set`", "Fill<CWithSet>"),
                            ("map look-up {}", "LookUp<CWithAdd>")):
            operation = ours.split("<")[0]
            yield Row(title.format(f"{count:,}"), f"{ours}/{count}",
                      {called: f"{operation}<{peer}>/{count}" for called, peer in peers.items()}, 1)


def files():
    for size in (1, 16, 1024):
        for action, call, title in (("Write", "fwrite", "writing"), ("Read", "fread", "reading")):
            peers = {"stdio": f"Stream{action}<{size}, &std::{call}>",
                     "unlocked stdio": f"Stream{action}<{size}, &{call}_unlocked>",
                     "Qt with a buffer": f"QtBuffered{action}<{size}>", "Qt": f"QtUnbuffered{action}<{size}>"}
            yield Row(f"archive, {size:,}-byte pieces, {title}", f"Archive{action}<{size}>", peers, 1)
    for size in (4096, 65536):
        for title, ours, peer in (("writing", "WritePieces", "CopyIntoRegion"),
                                  ("reading", "ReadPieces", "CopyFromRegion")):
            yield Row(f"files in memory, {title} {size >> 10} KiB pieces", f"{ours}/{size}",
                      {"memcpy": f"{peer}/{size}"}, 1.3)
    yield Row("files in memory, listing 100,000", "ListDirectory/100000", {"std": "WalkUnorderedMap/100000"}, None)
    yield Row("`FindFiles`, 100,000 entries", "FindFiles", {"readdir and stat": "ReadDirAndStat"}, 1.5)


def splitter():
    for words in (100, 10000):
        peers = {"std": f"StandardStream/{words}"}  # which only cuts at blanks
        yield Row(f"splitter, {words:,} words", f"SplitCommandLine/{words}", peers, None)
    yield Row("splitter, memory for 8-letter words", "ResponseFile/positional", {}, 4, "peak/text", " times the text")


def runs():
    for system, wanted in (("native", 1.5), ("Wine", 1.25)):
        for route in ("Simple", "Extended"):
            name = f"start/{system}/{route}"
            yield Row(f"a whole run, {system}, {route}", name, {"nothing": f"{name}/nothing"}, wanted)
    for command in ("xdg-email --help", "python3 -c pass"):
        yield Row("a whole run that keeps a draft, processor", "draft", {f"`{command}`": f"draft/{command}"}, None,
                  "cpu_time")
    yield Row("attachments of 16 MiB to 1 GiB, memory besides", "attachment", {}, 16, "besides", " MiB")
    # Four times the bytes may take this many times the time: noise, but no second order.
    yield Row("attachments of 16 MiB to 1 GiB, time", "attachment", {}, 6, "growth", " times that of a quarter")


ROWS = [*conversions(), *strings(), *maps(), *files(), *splitter(), *runs()]
