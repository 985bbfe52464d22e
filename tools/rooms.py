#!/usr/bin/env python3
"""rooms.py - holds every #include of the library against the picture in internals/architecture.md.

The picture names the rooms, one floor a line, the top floor first. A file may include files of its own
room and of the floors below: nothing above, and nothing beside. Nor do files include each other in a
circle; X.h and X.cpp count as one. Every source stands in a room, but for those of OUTSIDE, which belong
to no picture and which no room may include.
"""
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
PAGE = "internals/architecture.md"
OUTSIDE = ("bench/", "fuzz/", "samples/", "selftest/", "tests/", "tools/")
SOURCES = (".c", ".cpp", ".h", ".rc")
INCLUDE_FOLDERS = ("", "include/", "framework/")

ROOM = re.compile(r"((?:\w+/)+)\s+")
INCLUDE = re.compile(r'^\s*#\s*include\s+(?:"([^"]+)"|<([^>]+)>)', re.MULTILINE)


def read_floors(page):
    """The floor of each room, from the page's first block that names rooms; the top floor is 0."""
    for block in re.findall(r"^```text\n(.*?)^```", page, re.MULTILINE | re.DOTALL):
        floors = {}
        for number, line in enumerate(block.splitlines()):
            while match := ROOM.match(line):
                floors[match[1]] = number
                line = line[match.end():]
        if floors:
            return floors
    sys.exit(f"rooms: no picture in {PAGE}")


def room_of(path):
    return path[: path.rindex("/") + 1] if "/" in path else ""


def unit_of(path):
    return path.rsplit(".", 1)[0]


def includes(path, files):
    """What a file includes: pairs of the name as it is written, and the tracked file, or None."""
    for match in INCLUDE.finditer((ROOT / path).read_text(encoding="utf-8")):
        name = match[1] or match[2]
        found = next((folder + name for folder in INCLUDE_FOLDERS if folder + name in files), None)
        if found or match[1]:  # <...> that is no file of ours is the system's
            yield name, found


def find_circle(arrows):
    """A list of units, each of which includes the next, and the last the first; None without one."""
    done = set()

    def walk(unit, trail):
        if unit in trail:
            return trail[trail.index(unit):]
        if unit in done:
            return None
        for other in sorted(arrows.get(unit, ())):
            if circle := walk(other, trail + [unit]):
                return circle
        done.add(unit)
        return None

    for unit in sorted(arrows):
        if circle := walk(unit, []):
            return circle
    return None


def main():
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                            cwd=ROOT, capture_output=True, text=True, check=True)
    files = {path for path in listed.stdout.split("\0")
             if path.endswith(SOURCES) and (ROOT / path).is_file()}
    floors = read_floors((ROOT / PAGE).read_text(encoding="utf-8"))
    rooms = {room_of(path) for path in files if not path.startswith(OUTSIDE)}
    faults = [f"{room} is in the picture, and there is nothing in it" for room in floors.keys() - rooms]
    faults += [f"{room or 'the top folder'} holds sources, and is not in the picture of {PAGE}"
               for room in rooms - floors.keys()]

    arrows = {}
    for path in sorted(files):
        room = room_of(path)
        if room not in floors:
            continue
        for name, target in includes(path, files):
            if target is None:
                faults.append(f"{path} includes {name}, which is not there")
                continue
            other = room_of(target)
            if other not in floors:
                faults.append(f"{path} includes {target}, which belongs to no room")
            elif other != room and floors[other] <= floors[room]:
                where = "beside it" if floors[other] == floors[room] else "above it"
                faults.append(f"{path} includes {target}, {where} in the picture")
            if unit_of(target) != unit_of(path):
                arrows.setdefault(unit_of(path), set()).add(unit_of(target))
    if not arrows:
        faults.append("no file includes another: nothing was read")
    if circle := find_circle(arrows):
        faults.append("a circle: " + " -> ".join(circle + circle[:1]))

    for fault in sorted(faults):
        print(f"rooms: {fault}", file=sys.stderr)
    sys.exit(1 if faults else 0)


if __name__ == "__main__":
    main()
