#!/usr/bin/env python3
"""How long it takes to write a report, beside a rebuild of the same site.

usage: report_ratio.py FOLDER [--build BUILD] [--runs N]

In turn, N times after a round that warms the cache: a complete rebuild, the findings of the same rules
as JSON, and the report, each a whole process. Checked: the report has as many findings and places. What
is told is the medians of seconds and processor time, how many bytes the report has, and how long
writing takes beside the rebuild: the report without what finding takes.
"""
import argparse
import json
import os
import statistics
import tempfile

from measure import timed
from rebuild_ratio import first_page

RULES = ["--rule", "orphan-page=warning", "--rule", "duplicate-id=warning"]


def asked(words):
    taken, answer = timed(words, (0, 1))
    return taken, json.loads(answer)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("--build", default="build/release")
    parser.add_argument("--runs", type=int, default=11)
    options = parser.parse_args()
    zvrsit = os.path.join(options.build, "cli", "zvrsit")
    with tempfile.TemporaryDirectory() as scratch:
        report = os.path.join(scratch, "report.html")
        program = [zvrsit, "--db", os.path.join(scratch, "db"), "--format", "json"]
        asked(program + ["add", "bench", options.folder, "--top", first_page(options.folder)])
        rows = {"rebuild": [], "findings": [], "report": []}
        for run in range(options.runs + 1):
            times = {}
            times["rebuild"] = asked(program + ["rebuild", "bench"])[0]
            times["findings"], found = asked(program + ["broken", "bench", *RULES])
            if os.path.exists(report):
                os.remove(report)
            times["report"], written = asked(program + ["report", "bench", "-o", report])
            for key in ("errors", "warnings", "places"):
                assert written[key] == found[key], (key, written, found)
            for key, row in rows.items():
                if run > 0:
                    row.append(times[key])
        medians = {key: [statistics.median(column) for column in zip(*row)] for key, row in rows.items()}
        for key, (seconds, processor) in medians.items():
            print(f"{key:9} {seconds:.3f} s, processor {processor:.3f} s")
        for which, word in enumerate(("time", "processor time")):
            writing = medians["report"][which] - medians["findings"][which]
            print(f"writing / rebuild, {word}: {writing / medians['rebuild'][which]:.2f}")
        print(f"{os.path.getsize(report)} bytes, {found['pages']} pages, {found['links']} links")


if __name__ == "__main__":
    main()
