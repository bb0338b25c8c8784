#!/usr/bin/env python3
"""Joins the modules of the view into one script, and writes it, the style and the template as C++.

    embed.py OUT.cc TEMPLATE.html FILE.css... FILE.js... --alone FILE.js...

The modules are joined in the order given: lines that import are dropped, and the word `export` before
a declaration. So the top-level names are unique over all of them, and an import stands on one line. What stands
after --alone is not joined: each is a text of its own, named as its file.
"""
import base64
import hashlib
import pathlib
import re
import sys

IMPORT = re.compile(r'import \{[^{}]*\} from "\./([\w-]+\.js)";$')
EXPORT = re.compile(r"export (?=(?:async )?function\b|const\b|let\b|class\b)")
DECLARED = re.compile(r"(?:export )?(?:async )?(?:function\*?|const|let|class) +(\w+)")


def module_text(path, before, names):
    lines = []
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        where = f"{path}:{number}: "
        if line.startswith("import"):
            found = IMPORT.match(line)
            if not found:
                sys.exit(f'{where}an import is one line: import {{ a, b }} from "./data.js";')
            if found[1] not in before:
                sys.exit(f"{where}{found[1]} is joined after this module")
            continue
        declared = DECLARED.match(line)
        if declared and names.setdefault(declared[1], path) != path:
            sys.exit(f"{where}{declared[1]} is declared in {names[declared[1]]} too")
        if line.startswith("export") and not EXPORT.match(line):
            sys.exit(f"{where}export stands before a function, const, let or class")
        lines.append(EXPORT.sub("", line, count=1))
    return "\n".join(lines) + "\n"


def joined_script(paths):
    names, parts = {}, []
    for at, path in enumerate(paths):
        parts.append(module_text(path, {other.name for other in paths[:at]}, names))
    return "\n".join(parts)


def literal(text):
    """A text as string literals, one a line of it."""
    rows = []
    for line in text.encode().splitlines(keepends=True):
        escaped = "".join(chr(b) if 32 <= b < 127 and b not in b'"\\?' else f"\\{b:03o}" for b in line)
        rows.append(f'    "{escaped}"')
    return "\n".join(rows) if rows else '""'


def digest(text):
    return "sha256-" + base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()


def main():
    at = sys.argv.index("--alone")
    out, template, *rest = map(pathlib.Path, sys.argv[1:at])
    style = "\n".join(path.read_text(encoding="utf-8") for path in rest if path.suffix == ".css")
    script = joined_script([path for path in rest if path.suffix == ".js"])
    for text, end in ((style, "</style"), (script, "</script"), (script, "<!--")):
        if end in text.lower():
            sys.exit(f"{end} would end the element that the text is put into")
    page = template.read_text(encoding="utf-8")
    rows = {"page": page, "style": style, "styleHash": digest(style), "script": script,
            "scriptHash": digest(script)}
    for path in map(pathlib.Path, sys.argv[at + 1:]):
        rows[path.stem] = path.read_text(encoding="ascii")  # pages of any character set load it
    texts = "".join(f"    // {name}\n{literal(text)},\n" for name, text in rows.items())
    # Longer texts than every compiler has to take; those that are used here do.
    out.write_text('// Written by web/embed.py.\n#include "web/view_texts.h"\n\n'
                   '#pragma GCC diagnostic ignored "-Woverlength-strings"\n\n'
                   f"namespace zvrsit {{\n\nconst ViewTexts kView = {{\n{texts}}};\n\n}}  // namespace zvrsit\n",
                   encoding="utf-8")


main()
