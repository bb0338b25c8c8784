"""The shared library exports what its headers offer, and nothing else:

    check_exports.py NM LIBRARY HEADER_FOLDER VERSION_NODE

HEADER_FOLDER holds the exported headers alone. What they mark with ZVRSIT_API, and every function
that they declare without a body, is in the library, under the version node; a private member of a
class is not.
"""
import pathlib
import re
import subprocess
import sys

MARKED = re.compile(
    r"(?:class|struct)\s+ZVRSIT_API\s+(\w+)"  # a class whole
    r"|ZVRSIT_API\s+[^;(){]*?[\s&*](\w+)\s*[({;=]")  # a function or a variable
WINDOWS_ONLY = re.compile(r"^#if defined\(_WIN32\)$.*?^#(?:else|endif)", re.M | re.S)
CLASS = re.compile(r"^class (?:ZVRSIT_API )?(\w+)[^;{]*\{$(.*?)^\};", re.M | re.S)
FUNCTION = re.compile(r"^(?!inline|template|using|extern)\w[\w:<>,&* ]*?[\s&*](\w+)\([^{}]*?\);", re.M)
MEMBER = re.compile(r"^  (?!return|using|friend)[^\s/][^;(){}]*?[\s&*](\w+)\(", re.M)
ACCESS = re.compile(r"^ (public|protected|private):$", re.M)


class Headers:
    """The names in a folder of headers."""

    def __init__(self, folder):
        self.marked = set()
        self.declared = set()  # functions outside of classes that have no body
        self.private = set()   # Class::name, where no public member has that name
        for header in folder.glob("**/*.h"):
            text = WINDOWS_ONLY.sub("", header.read_text())
            text = re.sub(r"//.*", "", text)
            for match in MARKED.finditer(text):
                self.marked.add(match.group(1) or match.group(2))
            self.declared |= set(FUNCTION.findall(text))
            for name, body in CLASS.findall(text):
                self.read_class(name, body)

    def read_class(self, name, body):
        parts = ACCESS.split(body)  # text, then access and text in turn
        members = {"public": set(), "protected": set(), "private": set()}
        for access, text in zip(parts[1::2], parts[2::2]):
            members[access] |= set(MEMBER.findall(text))
            members[access] |= set(re.findall(r"^  (?:class|struct)(?: \w+)? (\w+)\b", text, re.M))
        hidden = members["private"] - members["public"] - members["protected"] - {name}
        self.private |= {f"{name}::{member}" for member in hidden}


def exported_symbols(nm, library):
    listing = subprocess.run([nm, "-D", "--defined-only", "-C", "--with-symbol-versions", library],
                             check=True, capture_output=True, text=True).stdout
    return [line.split(" ", 2)[1:] for line in listing.splitlines()]


def names_of(symbol):
    """SiteMgr and SiteMgr::Save of zvrsit::SiteMgr::Save(...)."""
    symbol = re.sub(r"^(vtable|typeinfo|typeinfo name|VTT|non-virtual thunk) (for|to) ", "", symbol)
    match = re.match(r"(?:[\w:<>*& ]* )?zvrsit::(?:platform::)?((\w+)(?:::~?\w+)?)", symbol)
    return (match.group(2), match.group(1)) if match else (None, None)


def faults(headers, symbols, node):
    found = set()
    for kind, symbol in symbols:
        if kind == "A":  # the version node itself
            continue
        name, member = names_of(symbol)
        found.add(name)
        if name not in headers.marked:
            yield f"exported, but not marked: {symbol}"
        if member in headers.private:
            yield f"exported, but private: {symbol}"
        if not symbol.endswith(f"@{node}"):
            yield f"without the version {node}: {symbol}"
    for name in sorted((headers.marked | headers.declared) - found):
        yield f"in a header, but not exported: {name}"


def main():
    nm, library, folder, node = sys.argv[1:]
    headers = Headers(pathlib.Path(folder))
    symbols = exported_symbols(nm, library)
    found = list(faults(headers, symbols, node))
    print("\n".join(found))
    print(f"{len(symbols)} symbols of {len(headers.marked)} marked names; "
          f"{len(headers.private)} private members, {len(headers.declared)} functions")
    return 1 if found or not symbols or not headers.private or not headers.declared else 0


sys.exit(main())
