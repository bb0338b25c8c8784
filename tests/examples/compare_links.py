"""Rebuilds the example site three times and compares its links, row by row, with the list that
its author made by hand:

    compare_links.py ZVRSIT SITE_FOLDER EXPECTED web|classic
"""
import json
import os
import subprocess
import sys
import tempfile

REBUILDS = 3


def expected_rows(path, rules, rebuild):
    """The rows of the list that hold under `rules` after so many rebuilds."""
    wanted = {"both", rules}
    if rules == "web" or rebuild > 1:
        wanted.add("later")
    rows = []
    with open(path, encoding="utf-8") as lines:
        for line in lines:
            if line.startswith(("#", "rules ")) or not line.strip():
                continue
            when, *row = (field.strip() for field in line.rstrip("\n").split("|"))
            if when in wanted:
                rows.append(tuple(row))
    return sorted(rows)


def below(site, name):
    """A file's name as the list has it: below the site, else from the folder above it."""
    for folder, prefix in ((site + "/", ""), (os.path.dirname(site) + "/", "../")):
        if name.startswith(folder):
            return prefix + name[len(folder):]
    return name


def actual_row(site, link):
    local = link["kind"] == 2
    return (below(site, link["from"]), below(site, link["to"]) if local else link["to"],
            str(link["kind"]), link["type"], hex(link["code"]), link["text"], link["alt"],
            str(link["count"]), ("yes" if link["exists"] else "no") if local else "-")


def main():
    zvrsit, site, expected, rules = sys.argv[1:]
    site = os.path.realpath(site)
    failed = False
    with tempfile.TemporaryDirectory() as database:
        def run(*words, code=0):
            done = subprocess.run([zvrsit, *words, "--db", database], stdout=subprocess.PIPE)
            if done.returncode != code:
                sys.exit(f"zvrsit {' '.join(words)}: exit code {done.returncode}, not {code}")
            return done.stdout

        run("add", "example", site, "--top", os.path.join(site, "index.htm"),
            "--default-url", "index.htm", "--rules", rules)
        for rebuild in range(1, REBUILDS + 1):
            # The classic rules lose a page at its first link to a file outside of the site, once.
            loses_a_page = rules == "classic" and rebuild == 1
            run("rebuild", "example", code=4 if loses_a_page else 0)
            links = json.loads(run("links", "example", "--format", "json"))
            actual = sorted(actual_row(site, link) for link in links)
            wanted = expected_rows(expected, rules, rebuild)
            for sign, these, those in (("-", wanted, actual), ("+", actual, wanted)):
                for row in these:
                    if row not in those or these.count(row) > those.count(row):
                        failed = True
                        print(f"rebuild {rebuild}: {sign} {' | '.join(row)}")
            print(f"rebuild {rebuild}: {len(actual)} links, {len(wanted)} expected")
    return 1 if failed else 0


sys.exit(main())
