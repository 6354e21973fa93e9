"""The table of cases: what a user types, and what the program prints, hands to the MAPI library and ends with.

Words are given as they are to arrive in the program, whatever quotes the system needs for that. Where the systems
differ, the reason stands beside the row.
"""

import dataclasses
import re

from expect import HELP, LOGO, Mail, failure, internal_error, printed
from places import CRASHED

FAILED = -1


@dataclasses.dataclass(frozen=True)
class Case:
    name: str
    words: tuple = ()  # text, or bytes that are no text
    sends: tuple = ()
    code: object = 0  # or CRASHED, STOPPED
    output: object = ""  # text or pattern
    left: dict = dataclasses.field(default_factory=dict)  # files beside the program: name -> text or pattern
    files: dict = dataclasses.field(default_factory=dict)  # name (folders included) -> content
    line: str = None  # the Windows command line behind the program, in place of the words
    shell: str = None  # a script that starts the native program as "$0" with the words
    environment: dict = dataclasses.field(default_factory=dict)
    user: dict = dataclasses.field(default_factory=dict)  # settings of the foundation: name -> value
    machine: dict = dataclasses.field(default_factory=dict)
    mail: str = "recording"


def fails(name, words, output, **more):
    """A run that sends nothing and ends with -1."""
    return Case(name, tuple(words), code=FAILED, output=output, **more)


def in_folder(text):
    """A pattern: a failure that names a path in the case's folder."""
    first, last = failure("@" + text).split("@")
    return re.compile(re.escape(first) + "[A-Z]:[^\r]*" + re.escape(last))


def options(place):
    usage = HELP % ("corvane.exe" if place.windows else "corvane")
    yield fails("no arguments", [], failure("No recipients specified"))
    yield fails("help", ["/HELP"], printed(LOGO, usage))
    yield fails("help without logo", ["-nologo", "-?"], printed(usage))
    yield fails("an error stops the rest", ["-r:ann", "-x", "-nologo"], failure("The argument -x is invalid."))
    for word in ("-s=One", "word", "", "@@x"):
        yield fails(f"invalid '{word}'", [word], failure(f"The argument {word.replace('@@', '@')} is invalid."))
    yield fails("language", ["/UiLanguage:1x"], failure("The argument 1x specifies an invalid language code."))
    yield fails("an attachment without a value", ["-a"], internal_error("Corvane"))
    yield Case("empty subject and body", ("-r:ann", "-s:", "-b"), [Mail()])
    yield Case("subject and body", ("/Recipient:A <a@b>", "-body:Text", "-SUBJECT:a:b"),
               [Mail("A", "a@b", "a:b", "Text")])
    yield Case("a recipient without an address", ("-r:Ann <>",), [Mail("Ann", "")])
    # No name, no recipient: the user fills in the line.
    yield Case("a recipient without a name", ("-r:ann@example.org",), [Mail()])


def attachments(place):
    words = ("-r:Ann Lee <ann@example.org>", "-r:bob", "-s:Hello", "-a:x.txt", "-a:y.txt")
    x, y = {"x.txt": b"x"}, {"y.txt": b"y"}

    def both(*files):
        return [Mail("Ann Lee", "ann@example.org", "Hello", files=files), Mail(subject="Hello", files=files)]

    # Each attachment that exists adds the whole list.
    yield Case("two attachments exist", words, both("x.txt", "y.txt", "x.txt", "y.txt"), files={**x, **y})
    yield Case("only the second attachment exists", words, both("x.txt", "y.txt"), files=y)
    yield Case("no attachment exists", words, both())
    for name, value, place_and_name in (("with a shown name", "Report <x.txt>", ("x.txt", "Report")),
                                        ("with a folder in its shown name", "d/R.a <X.TXT>", ("X.TXT", "R.a")),
                                        ("in a folder", r"sub\x.txt", (r"sub\x.txt", "x.txt")),
                                        ("that is a folder", "sub", ("sub", "sub"))):
        yield Case(f"attachment {name}", ("-r:ann", "-a:" + value), [Mail(files=(place_and_name,))],
                   files={**x, "sub/x.txt": b""})


def texts(place):
    yield Case("quotes, blanks and backslashes", ("-r:ann", '-s:say "no" \\', r'-b:  \\a\" b\\'),
               [Mail(subject='say "no" \\', body=r'  \\a\" b\\')])
    yield Case("lines and controls", ("-r:ann", "-b:1\n2\r\n3\t\x01\x7f"), [Mail(body="1\n2\r\n3\t\x01\x7f")])
    letters = "Ünïcödé – 5 €\u00a0"
    yield Case("letters of Western Europe", (f"-r:{letters}x <{letters}x>", f"-s:{letters}", f"-b:{letters}"),
               [Mail(letters + "x", letters + "x", letters, letters)])
    # The ANSI code page is 1252 under Wine and lacks these; it is UTF-8 natively. The last one takes two UTF-16 units.
    wide, shown = ("Ж 漢 😀", "? ? ??") if place.windows else ("Ж\u3000漢 😀",) * 2
    yield Case("letters of the world", ("-r:ann", f"-s:{wide}", f"-b:{wide}"), [Mail(subject=shown, body=shown)])
    yield fails("an error with letters of the world", ["-nologo", f"-x:{wide}"],
                printed(f"The argument -x:{shown} is invalid."))
    if place.windows:
        yield Case("half a surrogate pair", line="-r:\udc00<ann> -s:\ud83d -b:\ude00x -a:\ud800",
                   sends=[Mail("?", "ann", "?", "?x")])
        yield Case("quotes in the middle and one that is never closed", sends=[Mail('Ann"s', "ann", 'xy z" -b:q')],
                   line='\t-r:"Ann""s <ann>"\t -s:""x"y z"" -b:q')
    else:
        yield Case("bytes that are no text", (b"-r:\xff<ann>", b"-s:\xe2\x82", b"-b:\xed\xa0\x80x", b"-a:\xfe"),
                   [Mail("\ufffd", "ann", "\ufffd\ufffd", "\ufffd\ufffd\ufffdx", ("\ufffd",))], files={b"\xfe": b""})


def response_files(place):
    text = '-r:"Ann Lee <ann>"\r\n-s:Ünï\n\n  -b:"two\nlines"\t-a:x.txt'
    for encoding in ("utf-8-sig", "utf-16", "cp1252" if place.windows else "utf-8"):
        yield Case(f"response file in {encoding}", ("@args.txt",), [Mail("Ann Lee", "ann", "Ünï", "two\nlines")],
                   files={"args.txt": text.encode(encoding)})
    yield fails("missing response file", ["-r:ann", "@none.txt"], in_folder("\\none.txt was not found."))
    if not place.windows:
        yield Case("response file in a pipe", ("@/dev/stdin",), [Mail(body="x" * 1000000)],
                   files={"args.txt": b"-r:ann -b:" + b"x" * 1000000}, shell='cat args.txt | "$0" "$@"')
        yield fails("endless response file", ["@/dev/zero"], failure(
            "An error occurred while accessing Z:\\dev\\zero: \r\n"
            "The file size exceeds the limit allowed and cannot be saved.\r\n"))


def deliveries(place):
    yield Case("the first of two deliveries is refused", ("-r:A <a>", "-r:B <b>"),
               [Mail("A", "a", result=0xFFFFFFFF), Mail("B", "b")],
               environment={"CORVANE_MAPI_SCRIPT": "MAPISendMail:A=FFFFFFFF"})
    yield Case("the MAPI library crashes", ("-r:A <a>", "-r:B <b>"), [Mail("A", "a"), Mail("B", "b", result=None)],
               environment={"CORVANE_MAPI_SCRIPT": "MAPISendMail:B=read"}, code=CRASHED,
               output=re.compile("(?s).*") if place.wine else "")  # Wine's debugger reports on standard output
    # Each system's own text for the code, which brings its own line end.
    missing = "Module not found.\r\n" if place.wine else "The specified module could not be found.\r\n"
    yield fails("no MAPI library", ["-r:A <a>"], failure(missing), mail="missing")
    if not place.windows:
        with open(place.options.library, "rb") as library:
            content = library.read()
        # Neither the folder one stands in nor those of a search path are anybody's to be served from.
        yield fails("MAPI libraries lie about", ["-r:A <a>"], failure(missing), mail="missing",
                    files={"mapi32.so": content, "MAPI32.dll": content}, environment={"PATH": ".", "LD_LIBRARY_PATH": "."})
    # Windows gives the name back as the program asks for it, the Linux layer as the file has it.
    library = place.folder() + "\\noentry\\" + ("MAPI32.dll" if place.windows else "mapi32.so")
    yield fails("no entry in the MAPI library", ["-r:A <a>"], failure(f"Cannot load DLL {library} (MAPISendMail).\n"),
                mail="no entry")


def limits(place):
    yield Case("10,000 arguments", ("-r:A <a>", *["-s"] * 9998, "-s:x"), [Mail("A", "a", "x")])
    if place.windows:
        longest = 32766  # characters, without the terminator
        size = longest - len(place.line(Case("", ("-r:A<a>", "-b:"))))
    else:
        size = 128 * 1024 - len("-b:") - 1  # what the system takes in one argument, terminator included
    yield Case("the longest argument", ("-r:A<a>", "-b:" + "x" * size), [Mail("A", "a", body="x" * size)])


def outputs(place):
    """Where the program's text goes. The unit tests have each kind; a shell starts the native program alone."""
    if not place.windows:
        yield fails("output into a new file", ["-é€"], failure("The argument -é€ is invalid."),
                    shell='"$0" "$@" > out; code=$?; iconv -f utf-16 out; exit $code')
        # The failure to report ends the run, and is told on standard error.
        for name, streams, told in (("nowhere", "3>&1 >&- 2>&3", "Corvane: The handle is invalid.\r\n\n"),
                                    ("into a full disk", "3>&1 >/dev/full 2>&3",
                                     "There is not enough space on the disk.\r\n\r\n"),
                                    ("nowhere, nor errors", ">&- 2>&-", "")):
            yield fails("output " + name, ["-x"], told, shell=f'exec "$0" "$@" {streams}')
        yield Case("nothing to put out", ("-r:A <a>",), [Mail("A", "a")], shell='exec "$0" "$@" >&- 2>&-')


def all_cases(place):
    for group in (options, attachments, texts, response_files, deliveries, limits, outputs):
        yield from group(place)
