#!/usr/bin/env python3
"""Compares answers of zvrsit on a real tree of pages with what was looked up in the pages:

    scripts/check_answers.py ZVRSIT [FOLDER]

FOLDER (by default one of the temporary files' folders) keeps the Debian package from one run to the
next; the package is unpacked there and never installed. Exit code 77 when it cannot be had.
"""
import json
import os
import subprocess
import sys
import tempfile

PACKAGE, VERSION = "python3.11-doc", "3.11.2-"
PAGES = "usr/share/doc/python3.11/html"
ANSWERS = os.path.join(os.path.dirname(__file__), "../tests/answers/python3-doc.txt")
SKIPPED = 77


def fetch(folder):
    """The folder of the pages, fetched unless it is there; None when it cannot be had."""
    pages = os.path.join(folder, "tree", PAGES)
    if os.path.isdir(pages):
        return pages
    os.makedirs(folder, exist_ok=True)
    try:
        subprocess.run(["apt-get", "-q", "download", PACKAGE], cwd=folder, check=True,
                       timeout=100, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        archive = next(name for name in os.listdir(folder)
                       if name.startswith(f"{PACKAGE}_{VERSION}"))
        with tempfile.TemporaryDirectory(dir=folder) as unpacked:
            tree = os.path.join(unpacked, "tree")
            subprocess.run(["dpkg", "-x", os.path.join(folder, archive), tree], check=True)
            os.rename(tree, os.path.join(folder, "tree"))
    except (OSError, StopIteration, subprocess.SubprocessError):
        return None
    return pages


def read_answers():
    """Pairs of a question, as words, and its expected answer, as lines."""
    questions = []
    with open(ANSWERS, encoding="utf-8") as lines:
        for line in lines:
            if line.startswith("  "):
                questions[-1][1].append(line.strip())
            elif not line.startswith("#"):
                questions.append((line.split(), []))
    return questions


class Site:
    def __init__(self, zvrsit, pages, database):
        self.zvrsit, self.database = zvrsit, database
        self.run("add", "pages", pages)
        self.run("rebuild", "pages")

    def run(self, *words):
        done = subprocess.run([self.zvrsit, *words, "--db", self.database, "--format", "json"],
                              stdout=subprocess.PIPE)
        if done.returncode not in (0, 1):
            sys.exit(f"zvrsit {' '.join(words)}: exit code {done.returncode}")
        return json.loads(done.stdout)

    def answer(self, kind, name=""):
        if kind == "from":
            return {row["to"] for row in self.run("links", "pages", "--from", name)}
        if kind == "to":
            return {row["from"] for row in self.run("links", "pages", "--to", name)}
        if kind == "broken":
            findings = self.run("broken", "pages", "--rule", "missing-fragment=off")["findings"]
            return {finding["target"] for finding in findings
                    if any(name in ("", place["file"]) for place in finding["places"])}
        return {row["name"] for row in self.run(kind, "pages") if row["name"].startswith(name)}


def differs(question, expected, found):
    """Prints where the two differ."""
    if len(expected) == 1 and expected[0].endswith(" in all"):
        expected, found = set(expected), {f"{len(found)} in all"}
    else:
        expected = set(expected) - {"none"}
    for sign, lines in (("-", expected - found), ("+", found - expected)):
        for line in sorted(lines):
            print(f"{' '.join(question)}: {sign} {line}")
    return expected != found


def main():
    zvrsit = os.path.abspath(sys.argv[1])
    folder = sys.argv[2] if len(sys.argv) > 2 else os.path.join(tempfile.gettempdir(), PACKAGE)
    pages = fetch(folder)
    if pages is None:
        print(f"skipped: the Debian package {PACKAGE} {VERSION}* cannot be fetched")
        return SKIPPED
    questions = read_answers()
    with tempfile.TemporaryDirectory() as database:
        site = Site(zvrsit, pages, database)
        wrong = sum(differs(question, expected, site.answer(*question))
                    for question, expected in questions)
    print(f"{len(questions) - wrong} of {len(questions)} answers agree")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
