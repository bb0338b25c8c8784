#!/usr/bin/env python3
"""A site of a million small pages: rebuilt, asked, changed, packed and looked through.

usage: million.py [PAGES] [--build BUILD] [--folder FOLDER]

The pages lie below FOLDER (a temporary one), where a million takes 4 GB of disk and as many entries;
they have five links each. Prints for each command seconds by the clock and of the processor, and its
peak memory. What the tables hold is held against what was generated; a million takes some minutes.
"""
import argparse
import json
import os
import shutil
import sys
import tempfile

sys.dont_write_bytecode = True
import measure

LINKS = 4  # of each page to others; each also has one to the style sheet


def page(folder, number):
    return os.path.join(folder, f"d{number // 100:04d}", f"p{number:06d}.html")


class Million:
    def __init__(self, programs, scratch, pages):
        self.site = os.path.join(scratch, "site")
        self.pages = pages
        self.generate(programs)
        self.database = measure.Database(programs, os.path.join(scratch, "db"), self.site,
                                         os.path.join(self.site, "index.html"))

    def generate(self, programs):
        measure.must([programs.generate_site, self.site, str(self.pages), "--links", str(LINKS),
                      "--bytes", "300"])

    def step(self, name, command, *arguments, codes=(0, 1)):
        run = self.database.call(command, *arguments, codes=codes)
        print(f"| {name} | {run.seconds:.1f} | {run.cpu:.1f} | {run.peak:.0f} |", flush=True)
        return json.loads(run.output)

    def change(self, number, target):
        with open(page(self.site, number), "w", encoding="ascii") as out:
            out.write(f'<a href="p{target:06d}.html">x</a>')

    def need(self, holds, what):
        if not holds:
            sys.exit(f"wrong: {what}")

    def run(self):
        totals = self.step("rebuild into empty tables", "rebuild")
        self.need(totals["pages"] == self.pages + 1, totals)
        middle = self.pages // 2
        self.need(len(self.step("links of one page", "links", "--from", page(self.site, middle))) > 0,
                  "a page has links")
        self.step("links to one page", "links", "--to", page(self.site, 0))
        self.step("pages that nothing links to", "unused")
        self.step("what is broken", "broken")
        self.change(middle, middle + 1)
        self.need(self.step("update of one page", "update")["read"] == 1, "one page has changed")
        self.change(middle, middle + 2)
        self.step("save of one page", "save", page(self.site, middle))
        links = self.step("its links", "links", "--from", page(self.site, middle))
        self.need(len(links) == 1 and links[0]["to"].endswith(f"p{middle + 2:06d}.html"), links)
        again = self.step("rebuild again, with packing", "rebuild")
        self.need(again["pages"] == self.pages + 1, again)
        self.step("verify", "verify", codes=(0,))
        print(f"\ndatabase: {self.database.size() / 1e6:.0f} MB")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("pages", type=int, nargs="?", default=1_000_000)
    parser.add_argument("--build", default="build/release")
    parser.add_argument("--folder")
    wanted = parser.parse_args()
    programs = measure.Programs(wanted.build)
    scratch = tempfile.mkdtemp(prefix="zvrsit-million-", dir=wanted.folder)
    print(f"{measure.machine()}; {wanted.pages} pages\n\n| | s | cpu s | peak MB |\n|---|---|---|---|")
    try:
        Million(programs, scratch, wanted.pages).run()
    finally:
        shutil.rmtree(scratch)


if __name__ == "__main__":
    main()
