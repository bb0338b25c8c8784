#!/usr/bin/env python3
"""Checks that the rooms of the house include downwards only.

Prints each include that points the wrong way, and exits with 1 when there is one.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# Room -> the rooms that it may include, itself not named. The pure half of links knows addresses
# and rules only; its extractor also knows documents.
BELOW = {
    "platform": set(),
    "util": {"platform"},
    "storage": {"util", "platform"},
    "dom": {"util", "platform"},
    "tables": {"storage", "util", "platform"},
    "links/rules": {"util", "platform"},
    "links/pure": {"links/rules", "dom", "util", "platform"},
    "css": {"links/pure", "links/rules", "dom", "util", "platform"},
    "manager/base": {"tables", "storage", "css", "links/pure", "links/rules", "dom", "util",
                     "platform"},
    "links/other": {"manager/base", "tables", "storage", "css", "links/pure", "links/rules", "dom",
                    "util", "platform"},
    "manager": {"manager/base", "links/other", "tables", "storage", "css", "links/pure",
                "links/rules", "dom", "util", "platform"},
    "legacy": {"links/pure", "links/rules", "dom", "util", "platform"},
}
LINK_RULES = {"ascii", "classic_target", "link_type", "link_rules", "live_address", "page_types", "server_code", "site_url", "target_resolver", "url_text"}
# Libraries of others have their place in the program and the tests, never in the library.
FOREIGN = re.compile(r"^(CLI|fmt|nlohmann|gtest|gmock|benchmark)/|^gumbo\.h$")
INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')


def registering_stems():
    """The stems of the half of links/ that writes to tables, as its build file names them."""
    text = (ROOT / "links/CMakeLists.txt").read_text()
    block = re.search(r"zvrsit_room\(zvr_links\s(.*?)\)", text, re.S)
    return {pathlib.PurePath(name).stem for name in re.findall(r"\S+\.cc\b", block.group(1))}


def room_of(path, registering):
    folder = path.parts[0]
    if folder == "links":
        if path.stem in LINK_RULES:
            return "links/rules"
        return "links/other" if path.stem in registering else "links/pure"
    if path.parts[:2] == ("manager", "base"):
        return "manager/base"
    return folder


def faults_of(path, registering):
    room = room_of(path, registering)
    for number, line in enumerate((ROOT / path).read_text(errors="replace").splitlines(), 1):
        include = INCLUDE.match(line)
        if not include:
            continue
        bracket, name = include.groups()
        where = f"{path}:{number}: "
        if bracket == "<":
            if FOREIGN.match(name):
                yield f"{where}<{name}> has no place in the library"
        elif not (ROOT / name).is_file():
            yield f'{where}"{name}" is not a path from the root'
        else:
            target = room_of(pathlib.PurePath(name), registering)
            if target != room and target not in BELOW[room]:
                yield f'{where}{room} may not include "{name}" ({target})'


def main():
    registering = registering_stems()
    sources = [path.relative_to(ROOT)
               for room in sorted({room.split("/")[0] for room in BELOW})
               for path in sorted((ROOT / room).rglob("*")) if path.suffix in (".h", ".cc")]
    faults = [fault for path in sources for fault in faults_of(path, registering)]
    print("\n".join(faults) if faults else f"{len(sources)} sources include downwards only")
    return 1 if faults else 0


sys.exit(main())
