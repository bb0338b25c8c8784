#!/usr/bin/env python3
"""How long a complete rebuild takes, in units of reading the same pages and scanning them for '<'.

usage: rebuild_ratio.py FOLDER [--build BUILD] [--runs N] [--rules web|classic]

The programs come from the build folder BUILD (default build/release; configure it with
-DZVRSIT_BUILD_BENCH=ON) and run in turn, N times after a round that warms the cache: the scan, a
rebuild into a new database, and one of a site that was rebuilt in the round before. A rebuild is
timed as a whole process, its database written; the scan without its start. Checked: every rebuild
finds the same numbers of files, pages, links and URLs. Prints seconds, the ratios of the medians, the
peak memory of the rebuilds and the size of the database.
"""
import argparse
import json
import os
import re
import resource
import statistics
import subprocess
import sys
import tempfile
import time


def scan_seconds(floor, folder):
    answer = subprocess.run([floor, "scan", folder, "1"], capture_output=True, text=True, check=True)
    return float(re.match(r"scan ([0-9.]+) s", answer.stdout).group(1))


def rebuild(zvrsit, database, folder):
    start = time.perf_counter()
    answer = subprocess.run([zvrsit, "--db", database, "--format", "json", "rebuild", "bench"],
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    seconds = time.perf_counter() - start
    if answer.returncode not in (0, 4):
        sys.exit(f"rebuild of {folder} failed with {answer.returncode}")
    return seconds, json.loads(answer.stdout)


def size_of(folder):
    return sum(os.path.getsize(os.path.join(where, name))
               for where, _, names in os.walk(folder) for name in names)


def first_page(folder):
    for where, folders, names in os.walk(folder):
        folders.sort()
        for name in sorted(names, key=lambda n: (not n.startswith("index."), n)):
            if name.endswith((".html", ".htm")):
                return os.path.join(where, name)
    sys.exit(f"no page below {folder}")


def new_database(zvrsit, folder, options):
    database = tempfile.TemporaryDirectory()
    subprocess.run([zvrsit, "--db", database.name, "add", "bench", folder, "--top",
                    first_page(folder), "--rules", options.rules], check=True,
                   stdout=subprocess.DEVNULL)
    return database


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("--build", default="build/release")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--rules", default="web")
    options = parser.parse_args()
    floor = os.path.join(options.build, "bench", "floor")
    zvrsit = os.path.join(options.build, "cli", "zvrsit")
    scans, firsts, agains, answers = [], [], [], []
    with new_database(zvrsit, options.folder, options) as rebuilt:
        rebuild(zvrsit, rebuilt, options.folder)
        scan_seconds(floor, options.folder)
        for _ in range(options.runs):
            scans.append(scan_seconds(floor, options.folder))
            with new_database(zvrsit, options.folder, options) as empty:
                for database, seconds in (empty, firsts), (rebuilt, agains):
                    taken, answer = rebuild(zvrsit, database, options.folder)
                    seconds.append(taken)
                    answers.append(answer)
        if any(answer != answers[0] for answer in answers):
            sys.exit("two rebuilds found different numbers")
        scan, first, again = map(statistics.median, (scans, firsts, agains))
        peak = resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss / 1024
        print(f"scan {scan:.3f} s  first rebuild {first:.3f} s ({first / scan:.2f}x)  "
              f"rebuild {again:.3f} s ({again / scan:.2f}x)")
        print(f"{answers[0]}")
        print(f"peak memory {peak:.0f} MB, database {size_of(rebuilt) / 1e6:.0f} MB")


if __name__ == "__main__":
    main()
