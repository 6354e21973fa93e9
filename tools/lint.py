#!/usr/bin/env python3
"""usage: lint.py [FILE ...]

The lint command: format, layers, headers, lengths, clang-tidy. Prints what it finds and ends with 1 if there is anything.
With FILE, what takes long (headers by themselves, clang-tidy) is done for these alone.

Reads the compile commands of the build folders lint and lint-windows, which `./dev lint` configures first.
"""

import concurrent.futures
import json
import os
import re
import shlex
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PRODUCT = ("app", "mapi", "foundation", "platform", "mailsystem")
TRIALS = ("tests", "bench", "fuzz")
# Build folders that are configured alone: every source is in one of them.
LINUX, WINDOWS = "lint", "lint-windows"

# Which folders a folder may include from, besides itself. The arrows point downward only.
ARROWS = {
    "app": {"mapi", "foundation", "platform/inc"},
    "mapi": {"foundation", "platform/inc"},
    "foundation": {"platform/inc"},
    "platform/inc": set(),
    "platform/win32": {"platform/inc"},
    "platform/linux": {"platform/inc"},
    # The rooms of the Linux layer: what serves all of them lies in the folder itself.
    "platform/linux/text": {"platform/inc", "platform/linux"},
    "platform/linux/files": {"platform/inc", "platform/linux", "platform/linux/text"},
    **{f"platform/linux/{room}": {"platform/inc", "platform/linux", "platform/linux/text", "platform/linux/files"}
       for room in ("registry", "modules", "memory", "process", "people")},
    "mailsystem": {"mapi", "platform/inc", "platform/linux", "platform/linux/text", "platform/linux/files"},
}

SYSTEM_HEADER = re.compile(r"#\s*include\s*<(windows|win\w*|unistd|fcntl|dlfcn|pthread|dirent|elf|link|poll|syslog|signal|sys/|linux/)")
SYSTEM_CONDITION = re.compile(r"#\s*(if|ifdef|ifndef|elif)\b.*\b(_WIN32|_WIN64|WIN32|__linux__|__unix__|__MINGW\w*|_MSC_VER)\b")
MOST_LINES = 500

FUNCTION = re.compile(r"^([A-Za-z][\w:<>*& ]*[ *&])(\w+)\([^{};]*\)(?: noexcept)? \{\n(.*?)^\}", re.M | re.S)
# Functions of the platform layer that give something back and cannot fail, or only as the one behind them does.
NEVER_FAIL = set("""
    FaultCallsSeen FaultsAvailable GetACP GetCommandLine GetConsoleOutputCP GetCurrentProcessId GetCurrentThread
    GetLastActivePopup GetLastError GetOEMCP GetProcessHeap GetProgramModule GetSystemDefaultLCID
    GetSystemDefaultLangID GetSystemInfo GetSystemTimeAsFileTime GetUserDefaultLCID GetVersionEx GuardedCall
    IsDebuggerPresent IsWindowVisible LoadLibraryA MessageBox MessageBoxIndirect QueryAddress SetErrorInfo SetErrorMode
    SetHeapLowFragmentation SysAllocString TlsGetValue clearfp iswspace towlower towupper wcsicmp wcsnicmp wcstol
""".split())


def files(*endings):
    command = ["git", "ls-files", "--cached", "--others", "--exclude-standard"]
    names = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, check=True).stdout.splitlines()
    return [name for name in names if name.endswith(endings) and os.path.exists(os.path.join(ROOT, name))]


def read(name):
    with open(os.path.join(ROOT, name), encoding="utf-8") as file:
        return file.read()


def run(command):
    """The command's output if it failed, else an empty text."""
    result = subprocess.run(command, cwd=ROOT, capture_output=True, text=True)
    return "" if result.returncode == 0 else (result.stdout + result.stderr).strip()


def folder_of(name):
    parts = name.split("/")
    if parts[0] != "platform":
        return parts[0]
    return "/".join(parts[:3 if parts[1] == "linux" and len(parts) == 4 else 2])


def check_layers():
    for name in files(".h", ".cpp", ".inc"):
        folder = folder_of(name)
        if folder not in ARROWS:
            continue
        above_platform = folder in ("app", "mapi", "foundation")
        for number, line in enumerate(read(name).splitlines(), 1):
            place = f"{name}:{number}"
            if above_platform and SYSTEM_HEADER.search(line):
                yield f"{place}: system header above the platform layer"
            if above_platform and SYSTEM_CONDITION.search(line):
                yield f"{place}: condition on the system above the platform layer"
            if re.search(r"#\s*include\s*<windows\.h>", line) and name != "platform/win32/windowsapi.h":
                yield f"{place}: windows.h comes in through platform/win32/windowsapi.h alone"
            if name.endswith(".h") and re.match(r"using namespace", line):
                yield f"{place}: using namespace in a header"
            include = re.match(r'#\s*include\s*"([^"]+)"', line)
            if include:
                target = include.group(1)
                if not os.path.exists(os.path.join(ROOT, target)):
                    yield f"{place}: includes are written from the repository root: {target}"
                    continue
                other = folder_of(target)
                if other != folder and other not in ARROWS[folder]:
                    yield f"{place}: {folder} may not include from {other}"


def check_fault_hooks():
    """Every function that the platform layer offers and that can say that it failed has the hook of fault injection."""
    offered = {name for header in files(".h") if header.startswith("platform/inc/")
               for name in re.findall(r"^[A-Za-z][\w:<>*& ]*[ *&](\w+)\(", read(header), re.M)}
    for source in files(".cpp"):
        if not source.startswith("platform/linux/"):
            continue
        for kind, name, body in FUNCTION.findall(read(source)):
            hooked = "PLATFORM_FAULT(" in body or "PLATFORM_ALLOCATION_FAULT(" in body
            if name in offered and name not in NEVER_FAIL and kind != "void " and not hooked:
                yield f"{source}: {name} has no fault hook"


def check_rooms():
    """The list of the foundation's files names each of them, and none that isn't there."""
    there = {name.rpartition("/")[2] for name in files(".h", ".cpp") if name.startswith("foundation/")}
    listed = re.findall(r"`(\w+\.(?:h|cpp))`", read("foundation/README.md"))
    for name in sorted(there - set(listed)):
        yield f"foundation/README.md: {name} is not in it"
    for name in sorted(set(listed) - there):
        yield f"foundation/README.md: there is no {name}"


def check_lengths():
    for name in files(".h", ".cpp", ".py"):
        lines = read(name).count("\n")
        if lines > MOST_LINES:
            yield f"{name}: {lines} lines; look for the second family in it"


def check_format():
    # Tables whose columns say more than the formatter's line breaks are switched off where they stand.
    sources = files(".h", ".cpp")
    for start in range(0, len(sources), 40):
        output = run(["clang-format", "--dry-run", "-Werror", *sources[start : start + 40]])
        yield from (line for line in output.splitlines() if "error:" in line)


def check_scripts():
    """What is no C++: the scripts, and the man page. An import that others take over has a word about it."""
    for checker, names in ((["shellcheck"], ["dev", ".ci/run", "tools/wine-run", "completions/corvane.bash"]),
                           (["pyflakes3"], files(".py")), (["mandoc", "-T", "lint"], ["docs/corvane.1"])):
        yield from run([*checker, *names]).splitlines()


def compile_commands(folder):
    with open(os.path.join(ROOT, "build", folder, "compile_commands.json"), encoding="utf-8") as file:
        return {os.path.relpath(entry["file"], ROOT): entry for entry in json.load(file)}


def is_asked_for(name):
    return len(sys.argv) == 1 or name in {os.path.relpath(path, ROOT) for path in sys.argv[1:]}


def header_flags(folder):
    """The flags of a product source: what a header of the same platform is compiled with."""
    entry = compile_commands(folder)["foundation/src/errors.cpp"]
    words = shlex.split(entry["command"])
    cut = words.index("-MD") if "-MD" in words else words.index("-o")
    return words[:cut]


def header_commands():
    """One command a product header: it must compile by itself, and twice."""
    flags = {folder: header_flags(folder) for folder in (LINUX, WINDOWS)}
    cflags = subprocess.run(["pkg-config", "--cflags", "gmime-3.0", "gio-unix-2.0"], capture_output=True, text=True, check=True).stdout
    glib = cflags.replace("-I", "-isystem ").split()
    for name in files(".h"):
        if not name.startswith(PRODUCT) or not is_asked_for(name):
            continue
        folder = WINDOWS if name.startswith("platform/win32/") else LINUX
        with tempfile.NamedTemporaryFile("w", suffix=".cpp", delete=False) as file:
            file.write(f'#include "{name}"\n#include "{name}"\n')
        extra = glib if name.startswith("mailsystem/") else []
        yield name, [*flags[folder], *extra, "-Wno-unused-const-variable", "-fsyntax-only", file.name], file.name


def own_sources_module():
    """Builds tools/ownsources.cpp, which makes clang-tidy pass over what the system's headers declare."""
    asked = subprocess.run(["llvm-config", "--includedir"], capture_output=True, text=True, check=True)
    module = os.path.join(ROOT, "build", LINUX, "ownsources.so")
    command = ["clang++", "-shared", "-fPIC", "-fno-rtti", "-std=c++17", "-isystem", asked.stdout.strip()]
    subprocess.run([*command, os.path.join("tools", "ownsources.cpp"), "-o", module], cwd=ROOT, check=True)
    return module


def tidy_commands():
    """One command a C++ source, as Linux compiles it, or as Windows does where that alone has it."""
    tidy = ["clang-tidy", "--quiet", "-load", own_sources_module()]
    # The analyzer would take two thirds of the time of a test. What it looks for, its runs under the sanitizers find.
    trial_checks = "--checks=own-sources,-clang-analyzer-*,-bugprone-reserved-identifier"
    seen = set()
    for folder in (LINUX, WINDOWS):
        for name in sorted(compile_commands(folder)):
            if name.startswith(PRODUCT + TRIALS) and name.endswith(".cpp") and name not in seen and is_asked_for(name):
                seen.add(name)
                checks = "--checks=own-sources" if name.startswith(PRODUCT) else trial_checks
                yield name, [*tidy, checks, "-p", os.path.join("build", folder), name]


def show_progress(done, total, what):
    """One changing line on a terminal, a line now and then in a log."""
    if sys.stderr.isatty():
        print(f"\r[{done}/{total}] {what:<70}", end="\n" if done == total else "", file=sys.stderr, flush=True)
    elif done % 25 == 0 or done == total:
        print(f"[{done}/{total}]", file=sys.stderr, flush=True)


def check_compiled():
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        jobs, scratch = {}, []
        for name, command, source in header_commands():
            jobs[pool.submit(run, command)] = f"header {name}"
            scratch.append(source)
        for name, command in tidy_commands():
            jobs[pool.submit(run, command)] = f"clang-tidy {name}"
        for done, job in enumerate(concurrent.futures.as_completed(jobs), 1):
            show_progress(done, len(jobs), jobs[job])
            if job.result():
                yield f"{jobs[job]}:\n{job.result()}"
        for source in scratch:
            os.unlink(source)


def main():
    found = 0
    for check in (check_layers, check_fault_hooks, check_rooms, check_lengths, check_scripts, check_format, check_compiled):
        print(f"== {check.__name__.replace('_', ' ')}", file=sys.stderr)
        for finding in check():
            print(finding)
            found += 1
    print(f"lint: {found} findings")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
