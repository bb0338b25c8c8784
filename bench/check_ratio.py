#!/usr/bin/env python3
"""How long a check takes, in units of rebuilding the same folder, and how long its findings take to print.

usage: check_ratio.py [--build BUILD] [--pairs N] FOLDER...

For each folder `zvrsit check` and `zvrsit rebuild`, over the database of the rebuild before, run in
turn, N times after a round that warms the cache. Printed are the medians of the ratios of the pairs,
by the clock and by processor time. Then a site of 10,000 missing files is made and checked once for
each format, N times: the program's own word on how long the printing took. Checked: every run
succeeds, and the last finding is printed.
"""
import argparse
import os
import re
import tempfile

from measure import median, must

FORMATS = ("text", "json", "jsonl", "csv", "junit", "sarif", "github", "markdown")


def compare(zvrsit, folder, pairs):
    top = os.path.join(folder, "index.html")
    with tempfile.TemporaryDirectory() as database:
        must([zvrsit, "--db", database, "add", "bench", folder, "--top", top])
        rebuild = [zvrsit, "--db", database, "rebuild", "bench"]
        check = [zvrsit, "check", "--quiet", "--no-config", folder, "--top", top]
        runs = [(must(rebuild), must(check, (0, 1))) for _ in range(pairs + 1)][1:]
    wall = median([theirs.seconds / own.seconds for own, theirs in runs])
    cpu = median([theirs.cpu / own.cpu for own, theirs in runs])
    print(f"{folder}: check takes {wall:.3f} times a rebuild by the clock, {cpu:.3f} of the processor "
          f"({median([r[1].seconds for r in runs]):.3f} to {median([r[0].seconds for r in runs]):.3f} s)")


def make_broken_site(folder):
    for page in range(100):
        links = "\n".join(f'<a href="there/missing-{page}-{i}.html">x</a>' for i in range(100))
        with open(os.path.join(folder, f"page{page}.html"), "w") as file:
            file.write(f"<!doctype html><title>{page}</title>\n{links}\n")


def time_printing(zvrsit, runs):
    with tempfile.TemporaryDirectory() as folder:
        make_broken_site(folder)
        for name in FORMATS:
            seconds = []
            for _ in range(runs):
                answer = must([zvrsit, "check", folder, "--verbose", "--format", name], (1,))
                seconds.append(float(re.search(r"printed in ([0-9.]+) s", answer.errors).group(1)))
                assert answer.output.count("missing-99-99.html") > 0, name
            print(f"10,000 findings as {name}: {median(seconds) * 1000:.0f} ms")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folders", nargs="*")
    parser.add_argument("--build", default="build/release")
    parser.add_argument("--pairs", type=int, default=9)
    options = parser.parse_args()
    zvrsit = os.path.join(options.build, "cli", "zvrsit")
    for folder in options.folders:
        compare(zvrsit, folder, options.pairs)
    time_printing(zvrsit, options.pairs)


if __name__ == "__main__":
    main()
