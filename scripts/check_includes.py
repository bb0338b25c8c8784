#!/usr/bin/env python3
"""Checks that the rooms of the house include downwards only.

Prints each include that points the wrong way, and exits with 1 when there is one.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# Room -> the rooms that it may include, itself not named.
BELOW = {
    "platform": set(),
    "util": {"platform"},
    "storage": {"util", "platform"},
    "dom": {"util", "platform"},
    "tables": {"storage", "util", "platform"},
    "links": {"dom", "util", "platform"},
    "css": {"links", "dom", "util", "platform"},
    "manager_base": {"css", "links", "tables", "dom", "storage", "util", "platform"},
    "registration": {"manager_base", "css", "links", "tables", "dom", "storage", "util",
                     "platform"},
    "manager": {"registration", "manager_base", "css", "links", "tables", "dom", "storage",
                "util", "platform"},
    "repair": {"manager", "registration", "manager_base", "css", "links", "tables", "dom",
               "storage", "util", "platform"},
    "legacy": {"links", "dom", "util", "platform"},
}
# The rooms of the program: they see the library as applications do, and may use libraries of others.
LIBRARY = {"repair", "manager", "manager_base", "legacy", "css", "links", "tables", "dom", "util",
           "platform"}
PROGRAM = {"findings": LIBRARY, "exports": LIBRARY | {"findings"},
           "web": LIBRARY | {"exports", "findings"},
           "external": {"links", "dom", "util", "platform"},
           "cli": LIBRARY | {"exports", "external", "findings", "web"}}
BELOW |= PROGRAM
FOREIGN = re.compile(r"^(CLI|fmt|nlohmann|toml\+\+|curl|gtest|gmock|benchmark)/|^(gumbo|sqlite3|zlib|httplib)\.h$")
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')


def faults_of(path):
    room = path.parts[0]
    for number, line in enumerate((ROOT / path).read_text(errors="replace").splitlines(), 1):
        include = INCLUDE.match(line)
        if not include:
            continue
        bracket, name = include.groups()
        where = f"{path}:{number}: "
        if bracket == "<":
            if FOREIGN.match(name) and room not in PROGRAM:
                yield f"{where}<{name}> has no place in the library"
        elif not (ROOT / name).is_file():
            yield f'{where}"{name}" is not a path from the root'
        else:
            target = pathlib.PurePath(name).parts[0]
            if target != room and target not in BELOW[room]:
                yield f'{where}{room} may not include "{name}" ({target})'


def main():
    sources = [path.relative_to(ROOT)
               for room in sorted(BELOW)
               for path in sorted((ROOT / room).rglob("*")) if path.suffix in (".h", ".cc")]
    faults = [fault for path in sources for fault in faults_of(path)]
    print("\n".join(faults) if faults else f"{len(sources)} sources include downwards only")
    return 1 if faults else 0


sys.exit(main())
