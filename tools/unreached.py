#!/usr/bin/env python3
"""unreached.py BUILD_DIR - the functions of the library that no export, no job runner and neither load
nor unload reaches, and that tools/unreached-reasons.txt does not name.

Reads the objects of the target tarn_reach: not optimised, so that no call is lost in another function,
and with every function that stands in a header, used or not. What the linker drops of them is reached by
nobody. A virtual function counts as reached once its class is.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
REASONS = "tools/unreached-reasons.txt"
ROOMS = ("framework", "runtime", "frame", "install", "ui", "validate")
# Besides what frame/tarn.def exports, and the entry point, with which the linker begins.
JOB_RUNNER = "_Z17RunJobWithWaitDlgPFxPvP6HWND__ES_7CStringS4_"
LIBRARIES = ["-lmsvcrt", "-ladvapi32", "-luser32", "-lkernel32"]


def run(*command):
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit(f"unreached: {command[0]} failed\n{done.stderr}")
    return done.stdout


def read_cache(build):
    cache = (build / "CMakeCache.txt").read_text(encoding="utf-8")
    return lambda name: re.search(rf"^{name}:[^=]*=(.*)$", cache, re.MULTILINE)[1]


def functions(nm, *files):
    """Mangled names of the functions that files define."""
    listing = run(nm, "--defined-only", "--format=posix", *files)
    return set(re.findall(r"^(\S+) [TtWw] ", listing, re.MULTILINE))


def without_variants(name):
    return re.sub(r"\s*\[clone [^]]*\]|\s*\[abi:[^]]*\]", "", name)


def demangle(filt, names):
    listing = subprocess.run([filt], input="\n".join(sorted(names)), capture_output=True, text=True,
                             check=True)
    return {without_variants(name) for name in listing.stdout.splitlines()}


def read_own_names():
    """Classes, and functions outside of classes, that the rooms declare."""
    classes, plain = set(), set()
    for room in ROOMS:
        for path in (ROOT / room).rglob("*.h"):
            text = path.read_text(encoding="utf-8")
            classes.update(re.findall(r"^(?:class|struct) (\w+)", text, re.MULTILINE))
            plain.update(re.findall(r"^\w[^\n(]*?\b(\w+)\(", text, re.MULTILINE))
    return classes, plain


def is_own(name, classes, plain):
    if "{lambda" in name or name.startswith(("std::", "__gnu_cxx::", "bool std::")) or " std::" in name.split("(")[0]:
        return False
    head = name.split("(")[0]
    if head.startswith("operator"):
        return any(re.search(rf"\b{own}\b", name) for own in classes)
    scope = re.match(r"(\w+)(?:<.*>)?::", head)
    return scope[1] in classes if scope else head in plain


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    cached = read_cache(build)
    objects = (build / "reach.txt").read_text(encoding="utf-8").split()
    nm = cached("CMAKE_NM")
    exports = re.findall(r"^ +(\w+)", (ROOT / "frame/tarn.def").read_text(encoding="utf-8"), re.MULTILINE)
    with tempfile.TemporaryDirectory() as folder:
        bare = []
        for number, path in enumerate(objects):
            bare.append(f"{folder}/{number}.o")
            # The tables for unwinding name every function, and the linker keeps what they name.
            run(cached("CMAKE_OBJCOPY"), "--wildcard", "--remove-section=.pdata*",
                "--remove-section=.xdata*", "--strip-debug", path, bare[-1])
        linked = f"{folder}/linked.dll"
        run(cached("CMAKE_CXX_COMPILER"), "-shared", "-nostartfiles", "-static", "-o", linked,
            "-Wl,--gc-sections", "-Wl,--allow-multiple-definition",
            *[f"-Wl,--undefined={name}" for name in exports + [JOB_RUNNER]],
            ROOT / "frame/tarn.def", *bare, *LIBRARIES)
        filt = nm[: -len("nm")] + "c++filt"
        kept, there = demangle(filt, functions(nm, linked)), demangle(filt, functions(nm, *bare))
    classes, plain = read_own_names()
    own = {name for name in there if is_own(name, classes, plain)}
    if len(own & kept) < 100:
        sys.exit("unreached: fewer than 100 functions are reached: this reads the wrong thing")

    reasons = dict(line.split("  ", 1) for line in (ROOT / REASONS).read_text(encoding="utf-8").splitlines()
                   if line and not line.startswith("#"))
    left = own - kept
    faults = [f"nothing in the library reaches {name}" for name in left - reasons.keys()]
    faults += [f"{REASONS} names {name}, which is reached, or not there" for name in reasons.keys() - left]
    for fault in sorted(faults):
        print(f"unreached: {fault}", file=sys.stderr)
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
