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
    imports = set(re.findall(r"^\t[0-9a-f]+\s+\d+\s+(\w+)", header, re.MULTILINE))
    yield f"DllCharacteristics {found:#x} lack some", found & WANTED_ON_WINDOWS != WANTED_ON_WINDOWS
    yield "a time stamp", "reproducible" not in header and not re.search(
        r"Time/Date\s+Thu Jan +1 00:00:00 1970", header)
    yield "imports that could not be read", "ReadFile" not in imports
    yield f"imports {imports & UNWANTED_ON_WINDOWS}", imports & UNWANTED_ON_WINDOWS
    exports = re.findall(r"\] (\S+)", header.partition("[Ordinal/Name Pointer] Table")[2].partition("\n\n")[0])
    yield f"exports {exports}", set(exports) != EXPORTED
    libraries = re.findall(r"DLL Name: (\S+)", header)
    yield f"libraries {libraries}", set(libraries) != IMPORTED


def linux_faults(objdump, readelf, file):
    headers, dynamic = output(readelf, "-hlW", file), output(readelf, "-dW", file)
    symbols, code = output(readelf, "--dyn-syms", "-W", file), output(objdump, "-d", "--no-show-raw-insn", file)
    flags = " ".join(re.findall(r"\(FLAGS(?:_1)?\)\s+(?:Flags: )?(.*)", dynamic))
    yield "not position-independent", not re.search(r"Type:\s+DYN", headers)
    yield "symbols bound late", "NOW" not in flags
    yield "a fixed place", "PIE" not in flags and ".so" not in file
    yield "no read-only relocations", "GNU_RELRO" not in headers
    yield "executable stack", not re.search(r"GNU_STACK.* RW +0x", headers)
    yield "a segment to be written and run", re.search(r"LOAD.* RWE ", headers)
    yield "no stack protector", "__stack_chk_fail" not in symbols
    yield "no checked calls", not re.search(r"__\w+_chk(@| |$)", symbols)
    exports = set(re.findall(r" DEFAULT +\d+ (\w+)$", symbols, re.MULTILINE))
    yield f"exports {exports}", ".so" not in file and exports != EXPORTED | {RESOURCES}
    yield "no marks for indirect branches", "Advanced Micro Devices X86-64" in headers and code.count("endbr64") < 100


def main():
    objdump, readelf, *files = sys.argv[1:]
    faults = [f"{file}: {fault}" for file in files for fault, is_there in (
        windows_faults(objdump, file) if file.endswith(".exe") else linux_faults(objdump, readelf, file)) if is_there]
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
