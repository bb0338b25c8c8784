"""The shared library exports what ZVRSIT_API marks in the headers, and nothing else:

    check_exports.py NM LIBRARY SOURCE_FOLDER
"""
import pathlib
import re
import subprocess
import sys

MARKED = re.compile(
    r"(?:class|struct)\s+ZVRSIT_API\s+(\w+)"  # a class whole
    r"|ZVRSIT_API\s+[^;(){]*?[\s&*](\w+)\s*[({;=]")  # a function or a variable
WINDOWS_ONLY = re.compile(r"^#if defined\(_WIN32\)$.*?^#(?:else|endif)", re.M | re.S)


def marked_names(source):
    names = set()
    for header in source.glob("*/**/*.h"):
        if not {"build", "tests"} & set(header.relative_to(source).parts):
            text = WINDOWS_ONLY.sub("", header.read_text(errors="replace"))
            for match in MARKED.finditer(text):
                names.add(match.group(1) or match.group(2))
    return names


def exported_names(nm, library):
    listing = subprocess.run([nm, "-D", "--defined-only", "-C", library], check=True,
                             capture_output=True, text=True).stdout
    return [line.split(" ", 2)[2] for line in listing.splitlines()]


def owner(symbol):
    """The class or function after the namespaces: SiteMgr of zvrsit::SiteMgr::Save(...)."""
    symbol = re.sub(r"^(vtable|typeinfo|typeinfo name|VTT|non-virtual thunk) (for|to) ", "", symbol)
    name = re.match(r"zvrsit::(?:platform::)?(\w+)", symbol)
    return name.group(1) if name else None


def main():
    nm, library, source = sys.argv[1:]
    marked = marked_names(pathlib.Path(source))
    exported = exported_names(nm, library)
    strangers = [symbol for symbol in exported if owner(symbol) not in marked]
    missing = marked - {owner(symbol) for symbol in exported}
    for symbol in strangers:
        print(f"exported, but not marked: {symbol}")
    for name in sorted(missing):
        print(f"marked, but not exported: {name}")
    print(f"{len(exported)} symbols of {len(marked)} marked names")
    return 1 if strangers or missing or not exported else 0


sys.exit(main())
