#!/usr/bin/env python3
"""How long an update after the change of one page takes, beside walking the folder.

usage: update_ratio.py FOLDER [--build BUILD] [--runs N]

Works on a copy of FOLDER. In turn, N times after a round that warms the cache: `find` prints the size
of every file; one page gets a link more, or loses it, and `zvrsit update` brings the database up to
date; and it does so once more without a change. All are whole processes. Checked: each update reads
that page and finds the links. Prints the medians of seconds and processor time, and their ratios.
"""
import argparse
import json
import os
import shutil
import statistics
import tempfile
import time

from measure import timed
from rebuild_ratio import first_page

LINK = "<a href='#one-link-more'></a>"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("--build", default="build/release")
    parser.add_argument("--runs", type=int, default=15)
    options = parser.parse_args()
    zvrsit = os.path.join(options.build, "cli", "zvrsit")
    with tempfile.TemporaryDirectory() as scratch:
        folder = os.path.join(scratch, "site")
        shutil.copytree(options.folder, folder, symlinks=True)
        program = [zvrsit, "--db", os.path.join(scratch, "db"), "--format", "json"]
        timed(program + ["add", "bench", folder, "--top", first_page(folder)])
        links = json.loads(timed(program + ["rebuild", "bench"])[1])["links"]
        page = sorted(os.path.join(where, name) for where, _, names in os.walk(folder)
                      for name in names if name.endswith(".html"))[-1]
        walks, changed, unchanged = [], [], []
        time.sleep(2)  # files that are older than this are not read a second time
        timed(program + ["update", "bench"])
        for run in range(options.runs + 1):
            with open(page, "r+b") as file:
                text = file.read()
                file.seek(0)
                file.truncate()
                file.write(text + LINK.encode() if run % 2 == 0 else text[:-len(LINK)])
            time.sleep(2)
            walks.append(timed(["find", folder, "-type", "f", "-printf", "%s\n"])[0])
            taken, answer = timed(program + ["update", "bench"])
            told = json.loads(answer)
            assert told["read"] == 1 and told["links"] == links + (run + 1) % 2, answer
            changed.append(taken)
            taken, answer = timed(program + ["update", "bench"])
            assert json.loads(answer)["read"] == 0, answer
            unchanged.append(taken)
    medians = [[statistics.median(times) for times in zip(*runs[1:])]
               for runs in (walks, changed, unchanged)]
    for name, times in zip(("walk", "one page changed", "nothing changed"), medians):
        print(f"{name:17} {times[0]:.3f} s ({times[0] / medians[0][0]:.2f}x), processor "
              f"{times[1]:.3f} s ({times[1] / medians[0][1]:.2f}x)")


if __name__ == "__main__":
    main()
