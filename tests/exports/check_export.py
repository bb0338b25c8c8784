#!/usr/bin/env python3
"""Checks that the exports of a site hold the same in every format, and what the site holds.

Usage: check_export.py PROGRAM EXPORT_MD EXAMPLE_SITE [WORD...]   (the words run programs of the build)

The queries of EXPORT_MD are asked of the example site.
"""
import csv
import json
import os
import pathlib
import re
import resource
import sqlite3
import subprocess
import sys
import tempfile

PROGRAM, DOCUMENT, EXAMPLE, RUNNER = sys.argv[1], sys.argv[2], sys.argv[3], sys.argv[4:]
HAS_SQLITE = not RUNNER  # not on Windows
FILES = {
    "index.htm": '<title>=1+1</title><meta name=description content="a,&quot;b&quot;\nc">'
                 '<a href="=cmd.htm">x</a>\n<a href="\u00e4.htm#f">x</a><a href="\u00e4.htm#f">x</a>'
                 '<img src=gone.gif alt="\'t"><a href="http://x.example/?a=1&amp;b">x</a>',
    "=cmd.htm": '<a href="index.htm">-</a><p id=i><p id=i>',
    "\u00e4.htm": "<title>T</title>",
    "sub/unused.css": "",
}
TABLES = ["meta", "folders", "files", "urls", "links", "findings", "places"]


def run(*words, code=0, **more):
    done = subprocess.run([*RUNNER, PROGRAM, *words], capture_output=True, **more)
    assert done.returncode == code, (words, done)
    return done.stdout.decode()


def expect(what, seen, wanted):
    assert seen == wanted, f"{what}:\n  {seen}\n  {wanted}"


def texts(rows):
    return [["" if value is None else str(value) for value in row] for row in rows]


def unguard(field):
    return field[1:] if field.startswith("'") else field


def check(folder, db):
    args = ["demo", "--findings", "--db", db]
    jsonl = run("export", *args, "--to", "jsonl")
    objects = [json.loads(line) for line in jsonl.splitlines()]
    rows = {table: [list(o.values())[1:] for o in objects if o["table"] == table] for table in TABLES}
    expect("tables", sorted({o["table"] for o in objects}), sorted(TABLES))
    run("export", *args, "--to", "jsonl", "-o", folder / "e.jsonl")
    expect("a file of lines", (folder / "e.jsonl").read_bytes().decode(), jsonl)

    run("export", *args, "--to", "csv", "-o", folder / "csv")
    run("export", *args, "--to", "csv", "-o", folder / "csv")  # over what is there
    for table in TABLES:
        read = list(csv.reader((folder / "csv" / f"{table}.csv").open(newline="", encoding="utf-8")))
        names = [list(o)[1:] for o in objects if o["table"] == table]
        expect(table, read[0], names[0])
        expect(table, [[unguard(field) for field in row] for row in read[1:]], texts(rows[table]))
        assert not [f for row in read for f in row if re.match(r"[=+@\t\r-]", f)], read
    expect("files of CSV", sorted(p.stem for p in (folder / "csv").iterdir()), sorted(TABLES))

    files = {o["path"]: o for o in objects if o["table"] == "files"}
    links = [o for o in objects if o["table"] == "links"]
    expect("files", sorted(files), sorted([*FILES, "gone.gif"]))
    expect("title", files["index.htm"]["title"], "=1+1")
    expect("missing", [files["gone.gif"][key] for key in ("present", "size", "folder")],
           [0, None, None])
    expect("unused", [files["sub/unused.css"][key] for key in ("present", "family", "type")],
           [1, 0, "style sheet"])
    expect("link", [[l[k] for k in ("reference", "count", "line", "column", "state", "type")]
                    for l in links if l["file"] == files["\u00e4.htm"]["id"]],
           [["\u00e4.htm#f", 2, 3, 10, "there", "link"]])
    expect("folders", [o["path"] for o in objects if o["table"] == "folders"], [".", "sub/"])
    answer = json.loads(run("broken", "demo", "--db", db, "--format", "json", "--rule",
                            "orphan-page=warning", "--rule", "duplicate-id=warning", code=1))
    expect("findings", [o["message"] for o in objects if o["table"] == "findings"],
           [finding["message"] for finding in answer["findings"]])

    run("export", *args, "--to", "csv", code=2)
    run("export", *args, "--to", "csv", "-o", folder / "e.jsonl", code=4)
    if not HAS_SQLITE:
        run("export", *args, "--to", "sqlite", "-o", folder / "e.db", code=2)
        return
    run("export", *args, "--to", "sqlite", "-o", folder / "e.db")
    before = (folder / "e.db").read_bytes()
    run("export", *args, "--to", "sqlite", "-o", folder / "e.db")
    expect("the same twice", (folder / "e.db").read_bytes(), before)
    base = sqlite3.connect(folder / "e.db")
    for table in TABLES:
        expect(table, texts(base.execute(f"SELECT * FROM {table}")), texts(rows[table]))
    expect("keys", list(base.execute("PRAGMA foreign_key_check")), [])
    base.close()

    def full():
        resource.setrlimit(resource.RLIMIT_FSIZE, (1000, 1000))
    for to, place in ("sqlite", "e.db"), ("jsonl", "e.jsonl"):
        run("export", *args, "--to", to, "-o", folder / place, code=4, preexec_fn=full,
            restore_signals=False)  # the signal of a full disk stays ignored
        expect("nothing is left", list(folder.glob("*.new")), [])
    expect("what was there stays", (folder / "e.db").read_bytes(), before)


def check_queries(folder, db):
    run("export", "example", "--db", db, "--to", "sqlite", "-o", folder / "x.db")
    base = sqlite3.connect(folder / "x.db")
    queries = re.findall(r"```sql\n(.*?)```", pathlib.Path(DOCUMENT).read_text(), re.S)
    answers = [list(base.execute(query)) for query in queries]
    base.close()
    expect("answers", answers, ANSWERS)


# By the pages of the example site.
ANSWERS = [
    [("boats/index.htm", 7), ("home.htm", 5), ("boats/alder.htm", 3)],
    [(".", 12, 6334), ("boats/", 4, 1003), ("news/", 3, 702)],
    [("outside.htm", "links.htm", 6, 13), ("outside.htm", "news/index.htm", 7, 14),
     ("Prices.htm", "home.htm", 23, 13)],
]

with tempfile.TemporaryDirectory() as top:
    top = pathlib.Path(top)
    for name, content in FILES.items():
        path = top / "site" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(content, encoding="utf-8", newline="\n")
    run("add", "demo", top / "site", "--db", top / "db")
    run("rebuild", "demo", "--db", top / "db")
    check(top, top / "db")
    if HAS_SQLITE:
        run("add", "example", EXAMPLE, "--db", top / "db")
        run("rebuild", "example", "--db", top / "db")
        check_queries(top, top / "db")
