#!/usr/bin/env python3
"""usage: unwind.py OBJDUMP NM FILE.exe

Whether every function of a Windows program that changes the stack has unwind data: without, an exception or a walk
through it takes what lies on the stack for the address it returns to. Names come from FILE.exe.debug.
"""

import bisect
import re
import struct
import subprocess
import sys

FRAME = re.compile(r"push +%r(bx|bp|si|di|1[2-5])\b|push +%r[ac]x\b|sub +\$0x[0-9a-f]+,%rsp|call\b")
LEAVES = re.compile(r"(ret|jmp|ud2|int3)\b")

# The linker ties the data of a function that many objects define to it by a symbol of the data's section, which
# Debian's libstdc++.a has been stripped of. They belong to its locks' failures and to its std::string of bytes, and
# nothing of ours calls them.
STRIPPED = """
    _ZN9__gnu_cxx24__concurrence_lock_errorD0Ev _ZN9__gnu_cxx26__concurrence_unlock_errorD0Ev
    _ZN9__gnu_cxx30__throw_concurrence_lock_errorEv _ZN9__gnu_cxx32__throw_concurrence_unlock_errorEv
    _ZNSs4_Rep9_S_createEyyRKSaIcE _ZNSs12_S_constructEycRKSaIcE _ZNSs4_Rep8_M_cloneERKSaIcEy _ZNSs6assignERKSs
    _ZNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEE9_M_createERyy
    _ZNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEE9_M_assignERKS4_
    _ZNKSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEE7compareEPKc
""".split()
WITHOUT = {
    "___chkstk_ms",  # libgcc's assembler: touches the pages of a large frame
    "__clang_call_terminate",  # the compiler gives it none, for it returns to nobody and nothing is thrown through it
    *STRIPPED,
}


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def read_image(file):
    """The preferred address, and the ranges of the unwind data in the order of their starts."""
    with open(file, "rb") as opened:
        image = opened.read()
    header, = struct.unpack_from("<I", image, 0x3C)
    sections, optional_size = struct.unpack_from("<H12xH", image, header + 6)
    base, = struct.unpack_from("<Q", image, header + 24 + 24)
    for index in range(sections):
        name, size, _, _, place = struct.unpack_from("<8s4I", image, header + 24 + optional_size + 40 * index)
        if name == b".pdata\0\0":
            entries = struct.iter_unpack("<3I", image[place:place + size // 12 * 12])
            return base, sorted((base + start, base + end) for start, end, _ in entries)
    sys.exit(f"{file}: no .pdata")


def main():
    objdump, nm, file = sys.argv[1:]
    base, ranges = read_image(file)
    names = {}
    for address, name in re.findall(r"^([0-9a-f]+) [TtWw] (.*)", output(nm, file + ".debug"), re.MULTILINE):
        names.setdefault(int(address, 16), set()).add(name)
    starts, framed, left, missing = sorted(names), set(), set(), []
    code = output(objdump, "-d", "--no-show-raw-insn", file)
    for address, text in re.findall(r"^ +([0-9a-f]+):\t(.*)", code, re.MULTILINE):
        function = bisect.bisect_right(starts, int(address, 16)) - 1
        if LEAVES.match(text):
            left.add(function)  # what changes the stack behind that is another way through it
        elif FRAME.match(text) and function not in left:
            framed.add(function)
    for start in (starts[function] for function in sorted(framed) if function >= 0):
        place = bisect.bisect_right(ranges, (start, sys.maxsize)) - 1
        if (place < 0 or start >= ranges[place][1]) and not names[start] & WITHOUT:
            missing.append(f"{start - base:#x} {' '.join(sorted(names[start]))}")
    print(f"{file}: of {len(framed)} functions with a frame {len(missing)} lack unwind data", *missing, sep="\n")
    return 1 if missing or len(framed) < 500 else 0


if __name__ == "__main__":
    sys.exit(main())
