"""sbom.py ASPECT SBOM ... - for sbom.sh: looks at one aspect of the kit's SBOM, and says what is wrong."""

import collections
import glob
import hashlib
import json
import os
import pickle
import re
import subprocess
import sys
import urllib.parse

CODE = (".dll", ".exe", ".debug", ".a", ".lib")
DEFINED = "[ABCDGIRSTVWbdirt]"  # as nm marks what an object has, rather than what it wants
# What the linker's own script defines, as some objects do.
OF_THE_LINKER = re.compile(r"__(CTOR|DTOR|RUNTIME_PSEUDO_RELOC)_LIST.*")
problems = []


def expect(what, actual, expected):
    if actual != expected:
        problems.append(f"{what}: {actual!r}, expected {expected!r}")


def properties(component):
    return {entry["name"]: entry["value"] for entry in component.get("properties", [])}


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def components(sbom, kind):
    return [component for component in sbom["components"] if component["type"] == kind]


def version(sbom, kit_name):
    about = sbom["metadata"]["component"]
    expect("the kit", f'{about["name"]}-{about["version"]}-win64', kit_name)
    for component in components(sbom, "file"):
        expect(component["name"], component["version"], about["version"])


def files(sbom, kit):
    there = sorted(os.path.relpath(os.path.join(folder, name), kit)
                   for folder, _, names in os.walk(kit) for name in names if name.endswith(CODE))
    expect("the files", [component["name"] for component in components(sbom, "file")], there)
    for component in components(sbom, "file"):
        with open(os.path.join(kit, component["name"]), "rb") as file:
            content = file.read()
        expect(component["name"], component["hashes"],
               [{"alg": "SHA-256", "content": hashlib.sha256(content).hexdigest()}])
        expect(component["name"], properties(component)["tarn:size"], str(len(content)))


def references(sbom):
    known = [sbom["metadata"]["component"]["bom-ref"]] + [c["bom-ref"] for c in sbom["components"]]
    expect("each reference once", len(known), len(set(known)))
    for entry in sbom["dependencies"]:
        for reference in [entry["ref"], *entry["dependsOn"]]:
            expect(reference, reference in known, True)
    used = {reference for entry in sbom["dependencies"] for reference in entry["dependsOn"]}
    expect("what is used by nothing", [ref for ref in known[1:] if ref not in used], [])


def packages(sbom):
    found = components(sbom, "library")
    expect("there are libraries", bool(found), True)
    for component in found:
        match = re.fullmatch(r"pkg:deb/([a-z]+)/([^@]+)@([^?]+)\?.*", component["purl"])
        installed = run("dpkg-query", "-W", "-f", "${Version}", match[2])
        expect(component["name"], component["version"], installed)
        expect(component["purl"], urllib.parse.unquote(match[3]), installed)
        listed = run("dpkg-query", "-L", match[2]).split("\n")
        expect(f'{match[2]} has {component["name"]}',
               any(os.path.basename(path) == component["name"] for path in listed), True)


def symbols_of(nm, *files):
    return set(re.findall(rf" {DEFINED} ([^.\s]\S*)$", run(nm, *files), re.M))


def members_of(nm, archive):
    """The symbols that each object of the library defines."""
    found = collections.defaultdict(set)
    if archive.endswith(".o"):
        found[os.path.basename(archive)] = symbols_of(nm, archive)
    for member, symbol in re.findall(rf":([^:\n]+):[0-9a-f]+ {DEFINED} ([^.\s]\S*)$", run(nm, "-A", archive), re.M):
        found[member].add(symbol)
    return found


def looked_up(build, function, nm, *paths):
    """What the function gives; kept in the build for the next look, as long as the files are the same, since
    nm takes its time."""
    files = [(path, os.stat(path).st_size, os.stat(path).st_mtime_ns) for path in sorted(paths)]
    name = f"{function.__name__}-{os.path.basename(paths[0])}-{len(paths)}.pickle"
    kept = os.path.join(build, "package-symbols", name)
    if os.path.exists(kept):
        with open(kept, "rb") as file:
            of, symbols = pickle.load(file)
        if of == (nm, files):
            return symbols
    symbols = function(nm, *paths)
    os.makedirs(os.path.dirname(kept), exist_ok=True)
    with open(kept, "wb") as file:
        pickle.dump(((nm, files), symbols), file)
    return symbols


def objects(sbom, file, debug, nm, gcc_nm, build):
    here = symbols_of(nm, debug)
    ours = glob.glob(os.path.join(build, "CMakeFiles", "*.dir", "**", "*.obj"), recursive=True)
    own = looked_up(build, symbols_of, gcc_nm, *ours)
    libraries = {}
    for component in components(sbom, "library"):
        archive = run("x86_64-w64-mingw32-gcc", f"-print-file-name={component['name']}").strip()
        libraries[component["name"]] = looked_up(build, members_of, nm, archive)
    owners = collections.Counter(symbol for members in libraries.values() for symbols in members.values()
                                 for symbol in symbols)
    for component in components(sbom, "library"):
        listed = properties(component).get(f"tarn:objects:{file}", "").split()
        members = libraries[component["name"]]
        for name in listed:
            # The head and the end of an import library have no symbol that the linker keeps.
            if re.fullmatch(r"lib.*[ht]\.o", name) and component["group"].startswith("mingw-w64"):
                continue
            expect(f"{file} has a symbol of {name}", bool(members[name] & here), True)
        # The other way round: what only one object of all libraries defines, and is here, and is not ours.
        for name, symbols in members.items():
            taken = {symbol for symbol in symbols & here if owners[symbol] == 1} - own
            taken = {symbol for symbol in taken if not OF_THE_LINKER.fullmatch(symbol)}
            if taken and name not in listed:
                problems.append(f"{file} has {sorted(taken)[:3]} of {component['name']}({name})")


def table(sbom, file, page):
    with open(page, encoding="utf-8") as text:
        lines = [line.strip("|\n") for line in text if line.startswith(("| `lib", "| `crt"))]
    rows = [[cell.strip() for cell in line.split("|")] for line in lines]
    expect("the table has rows", bool(rows), True)
    said = sorted(row[0].strip("`") for row in rows if f"`{file}`" in row[1])
    used = next(entry["dependsOn"] for entry in sbom["dependencies"] if entry["ref"] == file)
    expect(f"libraries in {file}", said, sorted(used))
    terms = {"GPL-3.0-or-later WITH GCC-exception-3.1": "GCC Runtime Library Exception", "ZPL-2.1": "Zope"}
    for component in components(sbom, "library"):
        if component["name"] in said:
            row = next(row for row in rows if row[0].strip("`") == component["name"])
            expect(f'the terms of {component["name"]}',
                   terms[component["licenses"][0]["expression"]] in row[4], True)


def schema(sbom, path):
    import jsonschema

    with open(path, encoding="utf-8") as file:
        rules = json.load(file)
    for error in jsonschema.Draft7Validator(rules).iter_errors(sbom):
        problems.append(f"{'/'.join(map(str, error.path))}: {error.message[:200]}")


with open(sys.argv[2], encoding="utf-8") as given:
    globals()[sys.argv[1]](json.load(given), *sys.argv[3:])
print("\n".join(problems))
sys.exit(bool(problems))
