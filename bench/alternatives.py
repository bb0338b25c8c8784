#!/usr/bin/env python3
"""The table of the README: what link checkers find in a small site, and how long they take for a real one.

usage: alternatives.py FOLDER [--build BUILD] [--only NAME]

One row a program: the faults that it names of a site with one fault of each kind, and the seconds for
FOLDER, by the clock, whole processes. bench/install_rivals.sh installs the others. A fault counts as found
when the output holds its name, which stands nowhere else.
"""
import argparse
import os
import shutil
import subprocess
import sys
import tempfile
import time

import measure
import rivals

# The fault, and the reference that has it. What is named in the third column tells that it was found.
FAULTS = (
    ("page", '<a href="gone-page.html">x</a>', "gone-page"),
    ("image", '<img src="gone-image.png" alt="">', "gone-image"),
    ("srcset", '<img src="there.png" srcset="gone-wide.png 2x" alt="">', "gone-wide"),
    ("poster", '<video poster="gone-poster.png"></video>', "gone-poster"),
    ("url() in a sheet", '<link rel="stylesheet" href="sheet.css">', "gone-back"),
    ("style attribute", '<p style="background: url(gone-inline.png)">x</p>', "gone-inline"),
    ("behind base", '<a href="based.html">x</a>', "gone-based"),
    ("fragment", '<a href="two.html#gone-id">x</a>', "gone-id"),
    ("outside URL", '<a href="http://[gone-host/">x</a>', "gone-host"),
    ("orphan", "", "lonely.html"),
)


def make_site(folder):
    files = {"index.html": "<!doctype html><title>x</title>" + "\n".join(f[1] for f in FAULTS)
                           + '<a href="two.html">x</a>',
             "two.html": "<!doctype html><title>x</title><p id=there>x",
             "based.html": '<!doctype html><title>x</title><base href="sub/"><a href="gone-based.html">x</a>',
             "sub/page.html": "<!doctype html><title>x</title>", "lonely.html": "<!doctype html><title>x</title>",
             "sheet.css": "p { background: url(gone-back.png) }", "there.png": ""}
    for name, text in files.items():
        path = os.path.join(folder, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w") as file:
            file.write(text)


def commands(zvrsit, folder, url, scratch, wanted):
    """Each program's name and its command for one folder, which `url` serves."""
    if wanted in (None, "zvrsit"):
        yield "zvrsit", [zvrsit, "check", "--no-config", folder, "--top", os.path.join(folder, "index.html")]
    others = None if wanted is None else [wanted]
    for rival in rivals.installed(folder, "index.html", url, scratch, others):
        yield rival.name, rival.command + (["-error"] if rival.name == "linklint" else [])  # names them


def run_all(options, zvrsit, folder):
    """Each program's name, what it prints, and its seconds: those of the second of two runs."""
    with rivals.served(folder) as url, tempfile.TemporaryDirectory() as scratch:
        for name, command in commands(zvrsit, folder, url, scratch, options.only):
            for _ in range(2):
                start = time.perf_counter()
                done = subprocess.run(command, capture_output=True, text=True, errors="replace")
                seconds = time.perf_counter() - start
            yield name, done.stdout + done.stderr, seconds


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("--build", default="build/release")
    parser.add_argument("--only")
    options = parser.parse_args()
    zvrsit = os.path.abspath(os.path.join(options.build, "cli", "zvrsit"))
    if not shutil.which(zvrsit):
        sys.exit(f"no {zvrsit}: build it first")
    found = {}
    with tempfile.TemporaryDirectory() as site:
        make_site(site)
        for name, output, _ in run_all(options, zvrsit, site):
            found[name] = [fault for fault, _, mark in FAULTS if mark in output]
    print(f"{measure.machine()}\n\n| | finds of {len(FAULTS)} | does not find | seconds |\n|---|---|---|---|")
    for name, _, seconds in run_all(options, zvrsit, os.path.abspath(options.folder)):
        missed = ", ".join(fault for fault, _, _ in FAULTS if fault not in found[name]) or "-"
        print(f"| {name} | {len(found[name])} | {missed} | {seconds:.2f} |")


main()
