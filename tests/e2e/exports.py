"""What the program shows to those who look at its file: exactly the names that tools ask for, and few imports."""

import re
import subprocess

from places import windows_path

MARKED = {"GetMessageName", "GetMessageSystemVersion", "GetResourceID", "NumberOfMessages", "__TessarixUsed"}
# The Linux program's strings and version record are found by a symbol; Windows has resources for them.
NATIVE = MARKED | {"TessarixModuleResources"}
IMPORTED = {"KERNEL32.dll", "msvcrt.dll"}


def listing(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def compared(what, wanted, found):
    return [] if wanted == found else [f"{what}: missing {sorted(wanted - found)}, too many {sorted(found - wanted)}"]


def answers(place, options):
    """What the probe says of the program's message table; nothing if all is well."""
    if options.wine:
        command, environment = [options.wine, options.probe, windows_path(options.program)], {}
    else:
        command, environment = [options.program], {"LD_PRELOAD": options.probe}
    result = subprocess.run(command, env={**place.environment, **environment}, stdin=subprocess.DEVNULL,
                            capture_output=True, text=True, timeout=60, check=False)
    return [] if result.returncode == 0 else [f"exit code {result.returncode}", result.stdout, result.stderr]


def checks(place, options):
    """Each check's name and what is wrong."""
    yield "message table", answers(place, options)
    if options.wine:
        text = listing(options.objdump, "-p", options.program)
        table = text.partition("[Ordinal/Name Pointer] Table")[2].partition("\n\n")[0]
        yield "exports", compared("exports", MARKED, set(re.findall(r"\] (\S+)", table)))
        yield "imports", compared("imports", IMPORTED, set(re.findall(r"DLL Name: (\S+)", text)))
        return
    found = {line.split()[-1] for line in listing("nm", "-D", "--defined-only", options.program).splitlines()}
    yield "exports", compared("exports", NATIVE, found & NATIVE if options.sanitized else found)
