#!/usr/bin/env python3
"""Prints which lines and branches of the library ran in a coverage build, and which did not.

coverage.py GCOV BUILD_DIR SOURCE_DIR

Left out are branches that are the compiler's and not the source's: the two that gcov counts at every
call, on and out with an exception, and those of new, of delete and of a call through a pointer to a
member, which ask for a null pointer or for a virtual function.
"""
import collections
import json
import pathlib
import re
import subprocess
import sys

FOLDERS = ("frame", "ui", "install", "validate", "framework", "runtime")
REASONS = pathlib.Path(__file__).with_name("coverage-reasons.txt")


class File:
    def __init__(self):
        self.lines = collections.Counter()
        # By line and function: how often each way was taken.
        self.branches = {}


COMPILERS = re.compile(r"\bnew \w|\bdelete \w|->\*")


def own_branches(branches):
    """Without the pairs that gcov makes of a call: the exception's way, and the way past it."""
    kept = []
    i = 0
    while i < len(branches):
        pair = branches[i:i + 2]
        if len(pair) == 2 and (pair[0]["throw"] or pair[1]["throw"]):
            i += 2
            continue
        if not branches[i]["throw"]:
            kept.append(branches[i]["count"])
        i += 1
    return kept


def read_report(report, source_dir, files):
    for entry in report["files"]:
        path = (source_dir / entry["file"]).resolve()
        # Of a source that is gone, the notes may still be there.
        if not path.is_relative_to(source_dir) or not path.exists():
            continue
        name = path.relative_to(source_dir).as_posix()
        if name.split("/")[0] not in FOLDERS:
            continue
        file = files.setdefault(name, File())
        text = path.read_text().splitlines()
        # Constructors and destructors have several bodies of one name.
        names = {f["name"]: f["demangled_name"] for f in entry["functions"]}
        for line in entry["lines"]:
            number = line["line_number"]
            function = names.get(line.get("function_name"), "")
            file.lines[number] += line["count"]
            counts = own_branches(line["branches"])
            if not counts or COMPILERS.search(text[number - 1] if number <= len(text) else ""):
                continue
            # Object files that share an inline function each have counts of their own.
            known = file.branches.setdefault((number, function), [0] * len(counts))
            if len(known) < len(counts):
                known.extend([0] * (len(counts) - len(known)))
            for i, count in enumerate(counts):
                known[i] += count


def collect(gcov, build_dir, source_dir):
    files = {}
    objects = [build_dir / "CMakeFiles" / f"{target}.dir"
               for target in ("tarn_objects", "tarn", "tarn_core")]
    if not any(path for folder in objects for path in folder.rglob("*.gcda")):
        sys.exit("coverage: no counts were written")
    for notes in sorted(path for folder in objects for path in folder.rglob("*.gcno")):
        output = subprocess.run(
            [gcov, "--json-format", "--stdout", "--branch-probabilities", notes.name],
            cwd=notes.parent, check=True, capture_output=True, text=True).stdout
        for line in output.splitlines():
            if line.startswith("{"):
                read_report(json.loads(line), source_dir, files)
    return files


def rate(taken, total):
    return 100.0 * taken / total if total else 100.0


def row(name, sums):
    lines_run, lines, ways_taken, ways = sums
    print(f"{name:36} {lines_run:5}/{lines:<5} {rate(lines_run, lines):6.1f} %"
          f"   {ways_taken:5}/{ways:<5} {rate(ways_taken, ways):6.1f} %")


def read_reasons():
    """Blocks of file, > line, reason; # comments; an empty line between."""
    lines = [line for line in REASONS.read_text().splitlines() if not line.startswith("#")]
    reasons = {}
    for block in filter(None, re.split(r"\n\s*\n", "\n".join(lines).strip())):
        parts = block.splitlines()
        if len(parts) < 3 or not parts[1].startswith("> "):
            sys.exit(f"coverage: not a block of {REASONS.name}:\n{block}")
        reasons[parts[0].strip(), parts[1][2:].strip()] = " ".join(p.strip() for p in parts[2:])
    return reasons


def gaps(name, file, text):
    """Lines that did not run, or left their branches one way only."""
    for number in sorted(file.lines):
        line = " ".join(text[number - 1].split()) if number <= len(text) else ""
        ways = [way for (n, _), way in file.branches.items() if n == number]
        if file.lines[number] == 0:
            yield name, number, "not run", line
        elif any(0 in way for way in ways):
            missed = sum(way.count(0) for way in ways)
            yield name, number, f"{missed} of {sum(map(len, ways))} branches not taken", line


def main():
    gcov, build_dir, source_dir = sys.argv[1], *(pathlib.Path(p).resolve() for p in sys.argv[2:4])
    files = collect(gcov, build_dir, source_dir)
    reasons = read_reasons()
    sums = collections.defaultdict(lambda: [0, 0, 0, 0])
    missing = []
    print(f"{'':36} {'lines':>11} {'':9} {'branches':>13}")
    for folder in FOLDERS:
        for name in sorted(n for n in files if n.startswith(folder + "/")):
            file = files[name]
            counts = [count for way in file.branches.values() for count in way]
            values = (sum(c > 0 for c in file.lines.values()), len(file.lines),
                      sum(c > 0 for c in counts), len(counts))
            row(name, values)
            for i, value in enumerate(values):
                sums[folder][i] += value
            missing += gaps(name, file, (source_dir / name).read_text().splitlines())
    print()
    four = [0, 0, 0, 0]
    for folder in FOLDERS:
        row(folder + "/", sums[folder])
        if folder not in ("framework", "runtime"):
            four = [a + b for a, b in zip(four, sums[folder])]
    row("the library's four folders", four)

    unnamed = 0
    if missing:
        print("\nLeft:")
    for name, number, what, line in missing:
        reason = reasons.get((name, line))
        unnamed += reason is None
        print(f"  {name}:{number}: {what}: {line}\n      {reason or 'NO REASON GIVEN'}")
    for name, line in sorted(set(reasons) - {(name, line) for name, _, _, line in missing}):
        print(f"  Reason without need in {REASONS.name}: {name}: {line}")

    bad = []
    if four[0] < four[1]:
        bad.append("lines of the four folders below 100 %")
    if rate(four[2], four[3]) < 95:
        bad.append("branches of the four folders below 95 %")
    if min(rate(*sums[folder][:2]) for folder in ("framework", "runtime")) < 95:
        bad.append("lines of framework/ or runtime/ below 95 %")
    if unnamed:
        bad.append(f"{unnamed} gaps without a reason in {REASONS.name}")
    if bad:
        sys.exit("coverage: " + "; ".join(bad))


main()
