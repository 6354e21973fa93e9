#!/usr/bin/env python3
"""usage: unwind.py OBJDUMP NM FILE.exe

Whether every function of a Windows program that changes the stack has unwind data: without, an exception or a walk
through it takes what lies on the stack for the address it returns to. Names come from FILE.exe.debug.
"""

import bisect
import re
import subprocess
import sys

FRAME = re.compile(r"push +%r(bx|bp|si|di|1[2-5])\b|push +%r[ac]x\b|sub +\$0x[0-9a-f]+,%rsp|call\b")
LEAVES = re.compile(r"(ret|jmp|ud2|int3)\b")
# libgcc's assembler that touches the pages of a large frame; what the compiler gives none, for it returns to nobody and
# nothing is thrown through it; and what nothing of ours calls: the linker ties the data of a function that many objects
# define to it by a symbol of the data's section, which Debian's libstdc++.a has been stripped of. They belong to its
# locks' failures and to its std::string of bytes.
WITHOUT = set("""
    ___chkstk_ms __clang_call_terminate
    _ZN9__gnu_cxx24__concurrence_lock_errorD0Ev _ZN9__gnu_cxx26__concurrence_unlock_errorD0Ev
    _ZN9__gnu_cxx30__throw_concurrence_lock_errorEv _ZN9__gnu_cxx32__throw_concurrence_unlock_errorEv
    _ZNSs4_Rep9_S_createEyyRKSaIcE _ZNSs12_S_constructEycRKSaIcE _ZNSs4_Rep8_M_cloneERKSaIcEy _ZNSs6assignERKSs
    _ZNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEE9_M_createERyy
    _ZNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEE9_M_assignERKS4_
    _ZNKSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEE7compareEPKc
""".split())


def rows(pattern, *command):
    """The parts of the lines that a command prints."""
    text = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout
    return re.findall("^" + pattern, text, re.MULTILINE)


def main():
    objdump, nm, file = sys.argv[1:]
    entry = r" [0-9a-f]+:\t([0-9a-f]{16}) [0-9a-f]{16} [0-9a-f]{16}"
    unwound = {int(start, 16) for start in rows(entry, objdump, "-p", file)}
    names, left, framed = {}, set(), {}
    for address, name in rows(r"([0-9a-f]+) [TtWw] (.*)", nm, file + ".debug"):
        names.setdefault(int(address, 16), set()).add(name)
    starts = sorted(names)
    for address, text in rows(r" +([0-9a-f]+):\t(.*)", objdump, "-d", "--no-show-raw-insn", file):
        function = starts[max(bisect.bisect_right(starts, int(address, 16)) - 1, 0)]
        if LEAVES.match(text):
            left.add(function)  # what changes the stack behind that is another way through it
        elif FRAME.match(text) and function not in left:
            framed[function] = names[function]
    missing = [" ".join(framed[function]) for function in framed.keys() - unwound if not framed[function] & WITHOUT]
    print(f"{file}: of {len(framed)} functions with a frame {len(missing)} lack unwind data", *missing, sep="\n")
    return 1 if missing or len(framed) < 500 else 0


if __name__ == "__main__":
    sys.exit(main())
