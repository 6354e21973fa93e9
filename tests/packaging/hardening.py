#!/usr/bin/env python3
"""usage: hardening.py OBJDUMP READELF FILE...

Whether the protections that the build asks for are in the files that it made, and the program exports exactly the names
that tools ask for.
"""

import re
import subprocess
import sys

# IMAGE_DLLCHARACTERISTICS_...: HIGH_ENTROPY_VA, DYNAMIC_BASE, NX_COMPAT
WANTED_ON_WINDOWS = 0x20 | 0x40 | 0x100
# What a program would do to threads and processes of others: scanners distrust one that imports these.
UNWANTED_ON_WINDOWS = {"SuspendThread", "GetThreadContext", "SetThreadContext", "AddVectoredExceptionHandler",
                       "OpenProcess", "SetProcessAffinityMask", "CreateRemoteThread", "WriteProcessMemory"}
IMPORTED = {"KERNEL32.dll", "msvcrt.dll"}
EXPORTED = {"GetMessageName", "GetMessageSystemVersion", "GetResourceID", "NumberOfMessages", "__TessarixUsed"}
RESOURCES = "TessarixModuleResources"  # by which the Linux program's strings and version record are found


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def windows_faults(objdump, file):
    header = output(objdump, "-p", file)
    found = int(re.search(r"DllCharacteristics\s+([0-9a-f]+)", header).group(1), 16)
    if found & WANTED_ON_WINDOWS != WANTED_ON_WINDOWS:
        yield f"DllCharacteristics {found:#x} lack some of {WANTED_ON_WINDOWS:#x}"
    if not re.search(r"Time/Date\s+Thu Jan +1 00:00:00 1970", header) and "reproducible" not in header:
        yield "a time stamp: " + re.search(r"Time/Date.*", header).group(0)
    imports = set(re.findall(r"^\t[0-9a-f]+\s+\d+\s+(\w+)", header, re.MULTILINE))
    if "ReadFile" not in imports:
        yield "its imports could not be read"
    yield from (f"imports {name}" for name in sorted(imports & UNWANTED_ON_WINDOWS))
    exports = header.partition("[Ordinal/Name Pointer] Table")[2].partition("\n\n")[0]
    for wanted, found in (EXPORTED, re.findall(r"\] (\S+)", exports)), (IMPORTED, re.findall(r"DLL Name: (\S+)", header)):
        if set(found) != wanted:
            yield f"{sorted(found)}, expected {sorted(wanted)}"


def linux_faults(objdump, readelf, file):
    headers, dynamic = output(readelf, "-hlW", file), output(readelf, "-dW", file)
    symbols, code = output(readelf, "--dyn-syms", "-W", file), output(objdump, "-d", "--no-show-raw-insn", file)
    flags = re.findall(r"\(FLAGS(?:_1)?\)\s+(?:Flags: )?(.*)", dynamic)
    exports = set(re.findall(r" DEFAULT +\d+ (\w+)$", symbols, re.MULTILINE))
    wanted = ["NOW"] + (["PIE"] if ".so" not in file else [])
    for fault, absent in [
        ("not position-independent", not re.search(r"Type:\s+DYN", headers)),
        ("no " + " or ".join(wanted), not all(any(flag in line for line in flags) for flag in wanted)),
        ("no read-only relocations", "GNU_RELRO" not in headers),
        ("executable stack", not re.search(r"GNU_STACK.* RW +0x", headers)),
        ("a segment to be written and run", re.search(r"LOAD.* RWE ", headers)),
        ("no stack protector", "__stack_chk_fail" not in symbols),
        ("no checked calls", not re.search(r"__\w+_chk(@| |$)", symbols)),
        ("no marks for indirect branches", "Machine:                           Advanced Micro Devices X86-64" in headers
         and code.count("endbr64") < 100),
        (f"exports {sorted(exports)}", ".so" not in file and exports != EXPORTED | {RESOURCES}),
    ]:
        if absent:
            yield fault


def main():
    objdump, readelf, *files = sys.argv[1:]
    faults = [f"{file}: {fault}" for file in files for fault in
              (windows_faults(objdump, file) if file.endswith(".exe") else linux_faults(objdump, readelf, file))]
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
