"""The table of bench/site.sh, which says how to call it."""
import argparse
import json
import os
import shutil
import sys
import tempfile

sys.dont_write_bytecode = True
import measure
import rivals

FLOORS = ["walk", "read", "scan", "tokenize", "document"]


class Table:
    """Rows of runs; a row is shown by its medians, and by their ratios to those of one row."""

    def __init__(self):
        self.rows = {}

    def add(self, row, seconds, cpu, peak=None, note=""):
        entry = self.rows.setdefault(row, {"seconds": [], "cpu": [], "peak": [], "note": note})
        entry["seconds"].append(seconds)
        entry["cpu"].append(cpu)
        entry["peak"].append(peak or 0)
        entry["note"] = note

    def add_run(self, row, run, note=""):
        self.add(row, run.seconds, run.cpu, run.peak, note)

    def print(self, unit):
        base = {key: measure.median(self.rows[unit][key]) for key in ("seconds", "cpu")}
        print(f"\n| | seconds | x {unit} | cpu | x {unit} | peak MB | |\n|---|---|---|---|---|---|---|")
        for name, row in self.rows.items():
            seconds, cpu = measure.median(row["seconds"]), measure.median(row["cpu"])
            peak = max(row["peak"])
            print(f"| {name} | {seconds:.3f} | {seconds / base['seconds']:.2f} | {cpu:.3f} | "
                  f"{cpu / base['cpu']:.2f} | {f'{peak:.0f}' if peak else ''} | {row['note']} |")


def pages_of(folder):
    pages = []
    for where, _, names in os.walk(folder):
        pages += [os.path.join(where, name) for name in names if name.endswith((".html", ".htm"))]
    if not pages:
        sys.exit(f"no page below {folder}")
    return sorted(pages)


def top_of(pages, folder):
    """The page nearest to the top, an index page before others."""
    def rank(page):
        name = os.path.basename(page)
        return (page.count(os.sep), not name.startswith("index."), page)
    return os.path.relpath(min(pages, key=rank), folder)


class Ours:
    """Our own operations on a copy of the site; each round does all of them once."""

    def __init__(self, programs, site, top, page, scratch, table):
        self.programs, self.site, self.page, self.table = programs, site, page, table
        self.path = os.path.join(scratch, "database")
        self.top = os.path.join(site, top)
        self.answer = None
        self.rounds = 0

    def round(self):
        shutil.rmtree(self.path, ignore_errors=True)
        database = measure.Database(self.programs, self.path, self.site, self.top)
        for name in ("rebuild, empty database", "second rebuild"):
            answer = database.call("rebuild")
            found = json.loads(answer.output)
            if self.answer is not None and self.comparable(found) != self.comparable(self.answer):
                sys.exit("two rebuilds found different numbers")
            self.answer = found
            self.table.add_run(name, answer, f"database {database.size() / 1e6:.1f} MB")
        self.rounds += 1
        with open(self.page, "a") as out:
            out.write("<!-- changed -->\n")
        self.table.add_run("save of one changed page", database.call("save", self.page))
        links = database.call("links", "--to", self.page)
        count = len(json.loads(links.output))
        self.table.add_run("links --to that page", links, f"{count} links")
        self.check()

    @staticmethod
    def comparable(answer):
        return {key: value for key, value in answer.items() if isinstance(value, int)}

    def check(self):
        run = measure.must([self.programs.zvrsit, "--format", "json", "check", self.site,
                            "--top", self.top, "--rules", "web"], (0, 1, 4))
        answer = json.loads(run.output)
        self.table.add_run("check", run,
                           f"{answer['links']} links, {answer['places']} places")


class Rivals:
    """Those that are installed; one that was stopped at the limit does not run again."""

    def __init__(self, chosen, limit, table):
        self.chosen, self.limit, self.table = list(chosen), limit, table

    def round(self):
        for rival in list(self.chosen):
            run = measure.run(rival.command, self.limit)
            if run.code == -9:
                self.table.add_run(rival.name, run, f"stopped after {self.limit} s")
                self.chosen.remove(rival)
                continue
            try:
                seen, broken = rival.counts(run)
                note = f"{seen} {rival.unit}, {broken} broken"
            except ValueError:
                note = f"ended with {run.code}, its answer cannot be read"
            self.table.add_run(rival.name, run, note)


def measure_site(options, programs, site, scratch):
    pages = pages_of(site)
    top = top_of(pages, site)
    table = Table()
    wanted = None if options.rivals is None else options.rivals.split(",")
    ours = Ours(programs, site, top, pages[len(pages) // 2], scratch, table)
    lines = {}
    with rivals.served(site) as url:
        others = Rivals(rivals.installed(site, top, url, scratch, wanted), options.limit, table)
        for _ in range(options.runs):
            for depth in FLOORS:
                seconds, cpu, lines[depth] = measure.floor(programs, depth, site)
                table.add(f"only {depth}", seconds, cpu)
            ours.round()
            others.round()
    print(f"{options.folder}: {len(pages)} pages, {ours.answer}\n{lines['tokenize']}")
    print(f"{measure.machine()}; medians of {options.runs} alternating runs; floors without, "
          "the others with the start of a program; peak is the largest")
    table.print("only scan")


def main():
    parser = argparse.ArgumentParser(prog="bench/site.sh")
    parser.add_argument("folder")
    parser.add_argument("--build", default="build/release")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--limit", type=float, default=120)
    parser.add_argument("--rivals", help="a list with commas, or none")
    options = parser.parse_args()
    programs = measure.Programs(options.build)
    with tempfile.TemporaryDirectory(prefix="zvrsit-site-") as scratch:
        # A copy, as one page of it is changed; links that lead out of the folder are followed.
        site = os.path.join(scratch, "site")
        shutil.copytree(options.folder, site, ignore_dangling_symlinks=True)
        measure_site(options, programs, site, scratch)


if __name__ == "__main__":
    main()
