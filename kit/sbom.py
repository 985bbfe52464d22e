#!/usr/bin/env python3
"""sbom.py - what the kit's files are made of, as CycloneDX (JSON).

    sbom.py KIT NAME VERSION [FILE=MAP]...

KIT is the installed kit; each FILE of it was linked with the link map MAP. Every file of code is listed with
its SHA-256, and every library of the compiler's that the linker took something from, with the objects and
the bytes that are in the file. Whose a library is, and in which version, says the system's package manager.
SOURCE_DATE_EPOCH is the date. The result goes to the standard output.
"""

import collections
import datetime
import functools
import hashlib
import json
import os
import re
import subprocess
import sys
import urllib.parse
import uuid

# By package: THIRD-PARTY.md has the reasons. What is not here stops the kit.
TERMS = [
    (r"(gcc|g\+\+)-mingw-w64-.*", "GPL-3.0-or-later WITH GCC-exception-3.1"),
    (r"mingw-w64-.*-dev", "ZPL-2.1"),
]
CODE = (".dll", ".exe", ".debug", ".a", ".lib")


def parts(map_file):
    """The file and the object, or None, of each section that was linked, with its size."""
    with open(map_file, encoding="utf-8", errors="replace") as file:
        text = file.read()
    text = text[text.index("\nLinker script and memory map"):]
    # A long name is alone on its line.
    for match in re.finditer(r"^ (\S+)\s+0x[0-9a-f]+\s+0x([0-9a-f]+)[ \t]+(\S[^\n]*)$", text, re.M):
        section, size, path = match[1], int(match[2], 16), match[3]
        if size == 0 or section.startswith((".debug", "*")):
            continue
        member = re.fullmatch(r"(.*)\(([^()]+)\)", path)
        yield (member[1], member[2], size) if member else (path, None, size)


def is_foreign(path):
    """What is not built here has a full path; the optimiser's own files are in the temporary folder."""
    return os.path.isabs(path) and ".ltrans" not in path and not path.startswith(os.getcwd() + "/")


def packages_of(paths):
    """Name, version and architecture by path; nothing without a package manager. One question for all: each
    takes as long as the reading of everything that is installed."""
    real = {path: os.path.realpath(path) for path in paths}
    if not real:
        return {}
    try:
        owners = subprocess.run(["dpkg-query", "-S", *sorted(set(real.values()))], capture_output=True, text=True,
                                check=False).stdout
    except FileNotFoundError:
        return {}
    owner = {path: names.split(",")[0].split(":")[0]
             for names, path in re.findall(r"^(\S+(?:, \S+)*): (/.*)$", owners, re.M)}
    for path in paths:
        if real[path] not in owner:
            sys.exit(f"sbom.py: no package has {path}")
    shown = subprocess.run(["dpkg-query", "-W", "-f", "${Package} ${Version} ${Architecture}\n",
                            *sorted(set(owner.values()))],
                           capture_output=True, text=True, check=True).stdout
    package = {name: (name, *rest) for name, *rest in map(str.split, shown.splitlines())}
    return {path: package[owner[real[path]]] for path in paths}


@functools.lru_cache(maxsize=None)
def distribution():
    with open("/etc/os-release", encoding="utf-8") as file:
        found = dict(re.findall(r'^(ID|VERSION_ID)="?([^"\n]*)"?$', file.read(), re.M))
    return found.get("ID", "debian"), found.get("VERSION_ID", "")


def library(path, used, package):
    """Without a package, the file's name is all that is known."""
    name = os.path.basename(path)
    component = {"type": "library", "bom-ref": name, "name": name}
    if package:
        package_name, version, architecture = package
        terms = [terms for pattern, terms in TERMS if re.fullmatch(pattern, package_name)]
        if not terms:
            sys.exit(f"sbom.py: {name} is from {package_name}: its terms are not known")
        system, release = distribution()
        query = f"arch={architecture}" + (f"&distro={system}-{release}" if release else "")
        component["group"] = package_name
        component["version"] = version
        component["licenses"] = [{"expression": terms[0]}]
        component["purl"] = f"pkg:deb/{system}/{package_name}@{urllib.parse.quote(version)}?{query}"
    component["properties"] = []
    for file, objects in sorted(used.items()):
        component["properties"] += [
            {"name": f"tarn:objects:{file}", "value": " ".join(sorted(objects))},
            {"name": f"tarn:bytes:{file}", "value": str(sum(objects.values()))},
        ]
    return component


def file_component(kit, name, version):
    with open(os.path.join(kit, name), "rb") as file:
        content = file.read()
    return {
        "type": "file",
        "bom-ref": name,
        "name": name,
        "version": version,
        "hashes": [{"alg": "SHA-256", "content": hashlib.sha256(content).hexdigest()}],
        "licenses": [{"license": {"id": "MIT"}}],
        "properties": [{"name": "tarn:size", "value": str(len(content))}],
    }


def main():
    kit, name, version, *linked = sys.argv[1:]
    libraries = collections.defaultdict(lambda: collections.defaultdict(collections.Counter))
    needs = {}
    for argument in linked:
        file, map_file = argument.split("=", 1)
        for path, member, size in parts(map_file):
            if is_foreign(path):
                path = os.path.normpath(path)
                libraries[path][file][member or os.path.basename(path)] += size
        needs[file] = sorted(os.path.basename(path) for path, used in libraries.items() if file in used)

    files = sorted(os.path.relpath(os.path.join(folder, file), kit)
                   for folder, _, names in os.walk(kit) for file in names if file.endswith(CODE))
    components = [file_component(kit, file, version) for file in files]
    packages = packages_of(libraries)
    components += [library(path, libraries[path], packages.get(path))
                   for path in sorted(libraries, key=os.path.basename)]
    date = datetime.datetime.fromtimestamp(int(os.environ["SOURCE_DATE_EPOCH"]), datetime.timezone.utc)
    bom = {
        "$schema": "http://cyclonedx.org/schema/bom-1.6.schema.json",
        "bomFormat": "CycloneDX",
        "specVersion": "1.6",
        "serialNumber": "",
        "version": 1,
        "metadata": {
            "timestamp": date.strftime("%Y-%m-%dT%H:%M:%SZ"),
            "lifecycles": [{"phase": "build"}],
            "authors": [{"name": "The Tarn authors"}],
            "component": {
                "type": "library",
                "bom-ref": name,
                "name": name,
                "version": version,
                "description": "Installer support library",
                "licenses": [{"license": {"id": "MIT"}}],
            },
        },
        "components": components,
        "dependencies": [{"ref": name, "dependsOn": files}]
        + [{"ref": file, "dependsOn": needs.get(file, [])} for file in files],
        "compositions": [{"aggregate": "complete", "dependencies": sorted(needs)}],
    }
    bom["serialNumber"] = uuid.uuid5(uuid.NAMESPACE_OID, json.dumps(bom, sort_keys=True)).urn
    json.dump(bom, sys.stdout, indent=2)
    print()


main()
