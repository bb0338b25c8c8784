#!/usr/bin/env python3
"""Checks that every format of `zvrsit check` holds the same findings, and is what it claims to be.

Usage: check_formats.py PROGRAM SCHEMA [WORD...]   (the words run programs of the build, if any)

The site has one finding of each rule, and names that each format has to escape.
"""
import csv
import http.server
import io
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import threading
import urllib.parse
import xml.etree.ElementTree as xml

import jsonschema

sys.dont_write_bytecode = True
import public_schemas

PROGRAM, SCHEMA, RUNNER = sys.argv[1], sys.argv[2], sys.argv[3:]
HOSTILE = '<img src=x>, "q" & 100%|`a`.htm'
FILES = {
    "index.htm": '<a href="%s">x</a><a href="two.htm#anchor">x</a><a href="TWO.htm">x</a>\n'
                 '<a href="sub/">x</a><a href="http://[x/">x</a>\u00e4<a href="a%%2Fb">x</a>'
                 '<img src=gone.gif><img src="gone.gif">\n<p id=i><p id=i><a href="/out.htm">x</a>'
                 % urllib.parse.quote(HOSTILE),
    "two.htm": '<a href="index.htm#i">x</a><img src="sub/../gone.gif"><a name=anchors>x</a>',
    HOSTILE: '<a href="a,&quot;b&quot;%0A.htm">x</a><a href=orphan>x</a>',
    "sub/unused.gif": "",
    "orphan.htm": "",
    "../out.htm": "",
}
RULES = {"missing-file", "missing-fragment", "wrong-case", "folder-without-index", "outside-site",
         "unservable-name", "malformed-url", "external-broken", "external-moved", "external-unsure",
         "orphan-page", "unused-file", "duplicate-id"}


class Elsewhere(http.server.BaseHTTPRequestHandler):
    """Another site: a page by its status code."""

    def do_GET(self):
        self.send_response(int(self.path[1:]) if self.path[1:].isdigit() else 200)
        self.send_header("Location", "/there,a%7Cb")
        self.send_header("Content-Length", "0")
        self.end_headers()

    do_HEAD = do_GET
    log_message = lambda *_: None


def run(folder, *words):
    command = [*RUNNER, PROGRAM, "check", ".", "--doc-root", "..", "--rule", "unused-file=warning",
               "--external", "--private-network", "--retries", "0", "--db", folder / "../db", *words]
    done = subprocess.run(command, cwd=folder, capture_output=True)
    assert done.returncode == 1, (words, done)
    return done.stdout.decode()


def expect(what, seen, wanted):
    assert seen == wanted, f"{what}:\n  {seen}\n  {wanted}"


def check(folder):
    answer = json.loads(run(folder, "--format", "json"))
    jsonschema.validate(answer, json.loads(pathlib.Path(SCHEMA).read_text()))
    findings = answer["findings"]
    expect("rules", {finding["rule"] for finding in findings}, RULES)
    places = [(f["rule"], p["file"], p["line"], p["column"]) for f in findings for p in f["places"]]
    gone = [f for f in findings if f["target"] == "gone.gif"]
    expect("one finding, three places", [f["count"] for f in gone], [3])
    fragment = [f for f in findings if f["rule"] == "missing-fragment"]
    expect("suggestion", [f["suggestion"] for f in fragment], ["#anchors"])
    expect("with an extension", [f["suggestion"] for f in findings if f["target"] == "orphan"], ["orphan.htm"])
    expect("columns count characters",
           [p["column"] for f in findings if f["rule"] == "unservable-name" for p in f["places"]], [57])

    expect("jsonl", [json.loads(line) for line in run(folder, "--format", "jsonl").splitlines()],
           findings)

    rows = list(csv.DictReader(io.StringIO(run(folder, "--format", "csv"), newline="")))
    expect("csv", [(r["rule"], r["file"], int(r["line"] or 0) or None, int(r["column"] or 0) or None)
                   for r in rows], places)

    sarif = json.loads(run(folder, "--format", "sarif"))
    public_schemas.validate_sarif(sarif)
    results = sarif["runs"][0]["results"]
    rules = sarif["runs"][0]["tool"]["driver"]["rules"]
    where = [r["locations"][0]["physicalLocation"] for r in results]
    expect("sarif", [(r["ruleId"], urllib.parse.unquote(w["artifactLocation"]["uri"]),
                      w.get("region", {}).get("startLine"), w.get("region", {}).get("startColumn"))
                     for r, w in zip(results, where)], places)
    expect("sarif rules", [rules[r["ruleIndex"]]["id"] for r in results], [p[0] for p in places])

    suites = xml.fromstring(run(folder, "--format", "junit").encode())
    public_schemas.validate_junit(suites)
    expect("junit", sorted((s.get("name"), int(s.get("failures"))) for s in suites),
           sorted((rule, sum(f["rule"] == rule and f["severity"] == "error" for f in findings))
                  for rule in RULES))
    expect("junit failures", len(suites.findall("*/*/failure")), answer["errors"])

    lines = run(folder, "--format", "github").splitlines()
    expect("github", [bool(re.fullmatch(r"::(error|warning) file=[^,:]+(,line=\d+,col=\d+)?"
                                        r",title=[a-z-]+::.+", line)) for line in lines],
           [True] * len(findings))

    table = run(folder, "--format", "markdown").splitlines()[4:]
    expect("markdown", [len(re.split(r"(?<!\\)\|", row)) for row in table], [6] * len(findings))

    text = run(folder, "--color", "never").splitlines()
    heads = [line for line in text if re.search(r" (error|warning): .* \[[a-z-]+\]$", line)]
    expect("text", len(heads), len(findings))
    every = run(folder, "--color", "never", "--all").splitlines()
    expect("text --all", sum(bool(re.search(r"\[[a-z-]+\]$", line)) for line in every), len(places))
    assert "\x1b" not in "".join(text) and "\x1b[1;31m" in run(folder, "--color", "always")
    for form in "json", "csv", "sarif", "junit", "github", "markdown", "text":
        strip = lambda report: re.sub(r'[\d.]+ s$|"seconds":[\d.e-]+', "", report, flags=re.M)
        expect("the same twice", strip(run(folder, "--format", form)),
               strip(run(folder, "--format", form)))


with tempfile.TemporaryDirectory() as top:
    site = pathlib.Path(top, "site")
    for name, content in FILES.items():
        path = site / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(content)
    elsewhere = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Elsewhere)
    threading.Thread(target=elsewhere.serve_forever, daemon=True).start()
    with open(site / "two.htm", "a") as page:
        for status in 404, 301, 503:
            page.write(f'\n<a href="http://127.0.0.1:{elsewhere.server_port}/{status}">x</a>')
    check(site)
