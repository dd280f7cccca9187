#!/usr/bin/env python3
"""Checks what a shared library shows and what it uses, asked of its symbol table.

    check_symbols.py exports LIBRARY REQUIRED   only what is ours is exported, and all of REQUIRED
    check_symbols.py forbidden LIBRARY...       nothing that prints or ends the process is used
    check_symbols.py disjoint LIBRARY LIBRARY   nothing is defined by both

Release builds only: sanitizers and unoptimised templates add symbols of their own. What is wrong is
printed line by line, and the exit status is 1.
"""

import pathlib
import re
import subprocess
import sys

# The only names without the decoration of C++.
ENTRY_POINTS = {"createPlugins", "destroyPlugins"}

# Mangled names that belong to the standard library, its extensions, fmt or RapidJSON.
FOREIGN = re.compile(
    r"_Z(?:T[ISTV]|Thn?\d+_|Tvn?\d+_n?\d+_|GV|GR|Z)*N?[KOR]*"
    r"(?:S[abdiost]|9__gnu_cxx|3fmt|9rapidjson)")

# A library does not print, exit or abort. The hardened forms of the C functions count as well.
FORBIDDEN = re.compile(
    r"(?:abort|_?exit|_Exit|quick_exit|__assert_fail"
    r"|(?:__)?v?f?printf(?:_chk)?|(?:__)?v?dprintf(?:_chk)?"
    r"|puts|putchar|fputs|fputc|putc|perror|stdout|stderr"
    r"|_ZSt4w?(?:cout|cerr|clog)|_ZSt5w(?:cout|cerr|clog)"
    r"|_ZN3fmt\w*\dv?print\w*)$")

STOP = "the one deliberate stop, client/src/common/deliberate_stop.cpp, says why and aborts"
TOLD = "files, globbing and the timer report failed system calls this way, as callers were promised"
COMMON_EXCEPTIONS = {
    "abort": STOP, "stderr": STOP, "fprintf": STOP, "__fprintf_chk": STOP, "perror": TOLD,
}
EXCEPTIONS = {
    "libQMWriterPlugins.so": COMMON_EXCEPTIONS | {
        "stdout": "the summary of a run that is named console is shown there"},
    # It has a private copy of the common code.
    "libqumetra.so": COMMON_EXCEPTIONS | {
        "stderr": "the log sinks write there",
        "fputc": "ends the lines of a call log, in its own file",
        "_exit": "a command's process that cannot start it; a second Ctrl-C leaves at once"},
}


def symbols(library, which):
    """Yields (type, mangled name) of the dynamic symbols, without versions."""
    output = subprocess.run(["nm", "-D", f"--{which}-only", library], check=True,
                            capture_output=True, text=True).stdout
    for line in output.splitlines():
        kind, name = line.split()[-2:]
        yield kind, name.split("@")[0]


def demangle(names):
    output = subprocess.run(["c++filt"], input="\n".join(names), check=True, capture_output=True,
                            text=True).stdout
    return output.splitlines()


def plain_name(demangled):
    """A demangled name without its arguments and ABI tags."""
    return demangled.replace("[abi:cxx11]", "").split("(")[0]


def read_required(path):
    lines = (line.strip() for line in path.read_text(encoding="utf-8").splitlines())
    return [line for line in lines if line and not line.startswith("#")]


def export_faults(names, required):
    """Yields what is wrong with a library that exports `names`, all mangled."""
    plain = {name for name in names if not name.startswith("_Z")}
    for name in sorted(plain ^ ENTRY_POINTS):
        yield f"{'is exported without decoration' if name in plain else 'is missing'}: {name}"
    for name in sorted(name for name in names if FOREIGN.match(name)):
        yield f"is of another library (hide it in exports.map): {name}"
    there = {plain_name(name) for name in demangle(names)}
    for name in required:
        if name not in there:
            yield f"is missing: {name}"


def forbidden_uses(names, exceptions):
    """The names among `names` that a library must not use."""
    return sorted(name for name in names if FORBIDDEN.match(name) and name not in exceptions)


def check_exports(library, required_path):
    names = [name for _, name in symbols(library, "defined")]
    required = read_required(pathlib.Path(required_path))
    return [f"{library}: {fault}" for fault in export_faults(names, required)]


def check_forbidden(*libraries):
    faults = []
    for library in libraries:
        exceptions = EXCEPTIONS.get(pathlib.Path(library).name, {})
        used = {name for _, name in symbols(library, "undefined")}
        faults += [f"{library}: must not use {name}" for name in forbidden_uses(used, exceptions)]
    return faults


def check_disjoint(first, second):
    # Small letters, V, W and u are symbols that may be defined many times.
    strong = [{name for kind, name in symbols(library, "defined") if kind in "TDBR"}
              for library in (first, second)]
    return [f"{first} and {second} both define {name}" for name in sorted(strong[0] & strong[1])]


def main():
    checks = {"exports": check_exports, "forbidden": check_forbidden, "disjoint": check_disjoint}
    if len(sys.argv) < 3 or sys.argv[1] not in checks:
        sys.exit(__doc__)
    faults = checks[sys.argv[1]](*sys.argv[2:])
    print("\n".join(demangle(faults)) if faults else "nothing is wrong")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
