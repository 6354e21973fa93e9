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
    code: object = 0  # or CRASHED
    output: object = ""  # text or pattern
    files: dict = dataclasses.field(default_factory=dict)  # name (folders included) -> content
    line: str = None  # the Windows command line behind the program, in place of the words
    given: bytes = b""  # to the native program, through a pipe that is its standard input
    settings: dict = dataclasses.field(default_factory=dict)  # environment variables
    mail: str = "recording"
    unprivileged: bool = False  # run as a user whom file permissions bind; the folder "locked" is closed to all
    limit: int = 20  # seconds
    skip: str = None  # the reason why it cannot be tried here


def fails(name, words, output, **more):
    """A run that sends nothing and ends with -1."""
    return Case(name, tuple(words), code=FAILED, output=output, **more)


def in_folder(text, before=""):
    """A pattern: a failure that names a path in the case's folder."""
    first, last = failure(f"{before}@{text}").split("@")
    return re.compile(re.escape(first) + "[A-Z]:[^\r]*" + re.escape(last))


def invalid(*words, report=None):
    return fails(f"invalid {' '.join(words)}", words, failure(f"The argument {report or words[0]} is invalid."))


def options(place):
    usage = HELP % ("corvane.exe" if place.windows else "corvane")
    help_page = printed(LOGO, usage)
    yield fails("no arguments", [], failure("No recipients specified"))
    yield fails("no recipient", ["-s:Hello"], failure("No recipients specified"))
    for word in ("-?", "/HELP"):
        yield fails(f"help by {word}", [word], help_page)
    yield fails("help without logo", ["-nologo", "-?"], printed(usage))
    yield fails("no logo before an error", ["-nologo", "-x"], printed("The argument -x is invalid."))
    yield invalid("-x", "-nologo")
    for word in ("/hel", "-s=One", "-subjects:x", "-:x", "-", "word", "", "@@x"):
        yield invalid(word, report="@x" if word == "@@x" else None)
    for value in ("", "1033x"):
        text = failure(f"The argument {value} specifies an invalid language code.")
        yield fails(f"language '{value}'", [f"/UiLanguage:{value}"], text)
    for word in ("-r:", "-a"):
        yield fails(f"empty value {word}", [word], internal_error("Corvane"))
    yield fails("an error stops the rest", ["-r:ann", "-x", "-?"], failure("The argument -x is invalid."))
    for subject in ("-su:x", "/SUBJECT:x"):
        yield Case(f"subject by {subject}", ("-r:ann", subject), [Mail(subject="x")])
    turkish = place.locale("tr_TR")
    yield Case("options and files of a Turk", ("-RECIPIENT:ann", "-ATTACHMENT:IN.TXT"), [Mail(files=("IN.TXT",))],
               files={"in.txt": b"x"}, settings=turkish, skip=None if turkish else "no Turkish locale can be made here")
    yield Case("empty subject and body", ("-r:ann", "-s:", "-b"), [Mail()])
    yield Case("subject and body", ("/Recipient:A <a@b>", "-body:Text", "-s:a:b"), [Mail("A", "a@b", "a:b", "Text")])


def recipients(place):
    for value, name, address in (("Ann < ann >", "Ann", "ann"), ("a <b> <c>", "a <b>", "c"), ("Ann<ann>", "Ann", "ann"),
                                 ("Ann <>", "Ann", "")):
        yield Case(f"recipient {value}", ("-r:" + value,), [Mail(name, address)])
    # No name, no recipient: the user fills in the line.
    for value in ("<ann>", "Ann < ann > ", "ann@example.org", "<ann", ">"):
        yield Case(f"recipient without a name: '{value}'", ("-r:" + value,), [Mail()])
    many = [f"-r:Name {i} <n{i}@example.org>" for i in range(200)]
    yield Case("200 recipients", tuple(many), [Mail(f"Name {i}", f"n{i}@example.org") for i in range(200)], limit=60)


def attachments(place):
    words = ("-r:Ann Lee <ann@example.org>", "-r:bob", "-s:Hello", "-a:x.txt", "-a:y.txt")
    x, y = {"x.txt": b"x"}, {"y.txt": b"y"}

    def both(*files):
        return [Mail("Ann Lee", "ann@example.org", "Hello", files=files), Mail(subject="Hello", files=files)]

    # Each attachment that exists adds the whole list.
    yield Case("two attachments exist", words, both("x.txt", "y.txt", "x.txt", "y.txt"), files={**x, **y})
    yield Case("only the first attachment exists", words, both("x.txt", "y.txt"), files=x)
    yield Case("only the second attachment exists", words, both("x.txt", "y.txt"), files=y)
    yield Case("no attachment exists", words, both())

    def one(name, value, *file, **more):
        return Case(name, ("-r:ann", "-a:" + value), [Mail(files=file)], **more)

    sub = {"sub/x.txt": b""}
    yield one("attachment with a shown name", "Report <x.txt>", ("x.txt", "Report"), files=x)
    yield one("folder in the shown name", "dir/Report.a <x.txt>", ("x.txt", "Report.a"), files=x)
    yield one("attachment in a folder", r"sub\x.txt", (r"sub\x.txt", "x.txt"), files=sub)
    yield one("attachment in other case", "X.TXT", "X.TXT", files=x)
    yield one("attachment value with a colon", "b:c")  # neither a drive nor a file of that name
    yield one("attachment that is a folder", "sub", "sub", files=sub)
    yield one("attachment in a locked folder", "locked/x.txt", files={"locked/x.txt": b"x"}, unprivileged=True,
              skip="Wine runs as the owner of its prefix alone" if place.windows else None)


def texts(place):
    yield Case("quotes and blanks", ("-r:ann", '-s:say "no" ', "-b: two  words"),
               [Mail(subject='say "no" ', body=" two  words")])
    yield Case("backslashes stay", ("-r:ann", "-s:a\\", r'-b:\\a\" b\\'), [Mail(subject="a\\", body=r'\\a\" b\\')])
    yield Case("lines and controls", ("-r:ann", "-b:1\n2\r\n3\t\x01\x7f"), [Mail(body="1\n2\r\n3\t\x01\x7f")])
    # Code page 1252 has the first of these alone.
    for blank in "\u00a0" if place.windows else "\u00a0\u2003\u3000":
        yield Case(f"blank U+{ord(blank):04X}", ("-r:ann", f"-s:a{blank}b"), [Mail(subject=f"a{blank}b")])
    letters = "Ünïcödé – 5 €"
    yield Case("letters of Western Europe", (f"-r:{letters} <{letters}>", f"-s:{letters}", f"-b:{letters}"),
               [Mail(letters, letters, letters, letters)])
    # The ANSI code page is 1252 under Wine and lacks these; it is UTF-8 natively. The last one takes two UTF-16 units.
    wide = "Ж 漢 😀"
    yield Case("letters of the world", ("-r:ann", f"-s:{wide}", f"-b:{wide}"),
               [Mail(subject="? ? ??", body="? ? ??") if place.windows else Mail(subject=wide, body=wide)])
    yield fails("an error with letters of the world", ["-nologo", f"-x:{wide}"],
                printed(f"The argument -x:{'? ? ??' if place.windows else wide} is invalid."))
    if place.windows:
        yield Case("half a surrogate pair", line="-r:\udc00<ann> -s:\ud83d -b:\ude00x -a:\ud800",
                   sends=[Mail("?", "ann", "?", "?x")])
        yield Case("quotes in the middle and one that is never closed", sends=[Mail('Ann"s', "ann", 'xy z" -b:q')],
                   line='\t-r:"Ann""s <ann>"\t -s:""x"y z"" -b:q')
    else:
        yield Case("bytes that are no text", (b"-r:\xff<ann>", b"-s:\xe2\x82", b"-b:\xed\xa0\x80x", b"-a:\xfe"),
                   [Mail("\ufffd", "ann", "\ufffd\ufffd", "\ufffd\ufffd\ufffdx")])
        yield Case("attachment whose name is no text", ("-r:ann", b"-a:\xfe"), [Mail(files=("\ufffd",))],
                   files={b"\xfe": b""})


def response_files(place):
    text = '-r:"Ann Lee <ann>"\r\n-s:Ünï\n\n  -b:"two\nlines"\t-a:x.txt'
    mail = [Mail("Ann Lee", "ann", "Ünï", "two\nlines")]
    ansi = "cp1252" if place.windows else "utf-8"
    for name, encoding in (("UTF-8", "utf-8-sig"), ("UTF-16", "utf-16"), ("ANSI", ansi)):
        yield Case(f"response file in {name}", ("@args.txt",), mail, files={"args.txt": text.encode(encoding)})
    nested = {"my files/outer.txt": b'-b:first "@my files/inner.txt"', "my files/inner.txt": b'"-r:Ann <ann>" -s:Two'}
    yield Case("nested response files", ("-s:One", "@my files/outer.txt", "-b:last"),
               [Mail("Ann", "ann", "Two", "last")], files=nested)
    yield Case("large response file", ("@args.txt",), [Mail(body="x" * 1000000)],
               files={"args.txt": b"-r:ann -b:" + b"x" * 1000000})
    if not place.windows:
        yield Case("response file in a pipe", ("@/dev/stdin",), [Mail(body="x" * 100000)],
                   given=b"-r:ann -b:" + b"x" * 100000)
        yield fails("endless response file", ["@/dev/zero"], failure(
            "An error occurred while accessing Z:\\dev\\zero: \r\n"
            "The file size exceeds the limit allowed and cannot be saved.\r\n"))
    yield fails("missing response file", ["-r:ann", "@none.txt"], in_folder("\\none.txt was not found."))
    yield fails("response file that is a folder", ["@sub"], in_folder("\\sub was denied.", "Access to "), files={"sub/x": b""})


def deliveries(place):
    two = ("-r:A <a>", "-r:B <b>")
    for code in (1, 26, 0xFFFFFFFF):
        yield Case(f"the first of two deliveries answers {code}", two, [Mail("A", "a", result=code), Mail("B", "b")],
                   settings={"CORVANE_MAPI_SCRIPT": f"MAPISendMail:A={code:X}"})
    yield Case("the MAPI library crashes", two, [Mail("A", "a"), Mail("B", "b", result=None)], limit=90, code=CRASHED,
               # Wine's debugger reports on standard output.
               settings={"CORVANE_MAPI_SCRIPT": "MAPISendMail:B=read"}, output=re.compile("(?s).*") if place.wine else "")
    # Each system's own text for the code, which brings its own line end.
    missing = "Module not found.\r\n" if place.wine else "The specified module could not be found.\r\n"
    yield fails("no MAPI library", two, failure(missing), mail="missing")
    if not place.windows:
        with open(place.options.library, "rb") as library:
            content = library.read()
        # Neither the folder one stands in nor those of a search path are anybody's to be served from.
        yield fails("MAPI libraries lie about", two, failure(missing), mail="missing",
                    files={"mapi32.so": content, "MAPI32.dll": content}, settings={"PATH": ".", "LD_LIBRARY_PATH": "."})
        reason = "libX.so.6: cannot open shared object file: No such file or directory\r\n"
        yield fails("the MAPI library lacks a library", two, failure(missing + reason), mail="lacking")
    # Windows gives the name back as the program asks for it, the Linux layer as the file has it.
    library = place.folder() + "\\noentry\\" + ("MAPI32.dll" if place.windows else "mapi32.so")
    yield fails("no entry in the MAPI library", two, failure(f"Cannot load DLL {library} (MAPISendMail).\n"),
                mail="no entry")


def limits(place):
    yield Case("10,000 arguments", ("-r:A <a>", *["-s"] * 9998, "-s:x"), [Mail("A", "a", "x")])
    if place.windows:
        longest = 32766  # characters, without the terminator
        case = Case("the longest command line", ("-r:A<a>", "-b:"))
        fill = "x" * (longest - len(place.line(case)))
        yield dataclasses.replace(case, words=("-r:A<a>", "-b:" + fill), sends=[Mail("A", "a", body=fill)])
    else:
        fill = "x" * (128 * 1024 - len("-b:") - 1)  # what the system takes in one argument, terminator included
        yield Case("the longest argument", ("-r:A<a>", "-b:" + fill), [Mail("A", "a", body=fill)])


def all_cases(place):
    for group in (options, recipients, attachments, texts, response_files, deliveries, limits):
        yield from group(place)
