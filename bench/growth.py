#!/usr/bin/env python3
"""Whether costs stay flat as a site grows.

usage: growth.py [PAGES ...] [--build BUILD] [--runs N] [--hub LINKS] [--reach R]

For each number of PAGES (default 1000 10000 30000; 100000 takes 1.2 GB of disk) a site of pages of
10 kB with 50 links each is generated, all of them linking to the first page too, and measured:
rebuild time and peak memory for each page, opening and closing against a plain read and write of
the tables, the links to the first page, and saving one page against opening, closing and reading
that page. Then the same rebuild for a page with LINKS links (default 1000000; 0 for none) in a site
of 1000 pages. Medians of N runs (default 3), of 21 for what is short, in processor seconds where it
says cpu.
"""
import argparse
import os
import shutil
import sys
import tempfile
import time

sys.dont_write_bytecode = True
import measure


# Of what takes no more than a few hundredths of a second.
SHORT_RUNS = 21


def plain_copy_seconds(files, folder):
    """Reading all files whole and writing them whole elsewhere."""
    start = time.perf_counter()
    for number, name in enumerate(files):
        with open(name, "rb", buffering=0) as source:
            content = source.read()
        with open(os.path.join(folder, str(number)), "wb", buffering=0) as target:
            target.write(content)
    return time.perf_counter() - start


def read_seconds(page):
    start = time.perf_counter()
    with open(page, "rb", buffering=0) as source:
        source.read()
    return time.perf_counter() - start


def copied(files, runs):
    times = []
    for _ in range(runs):
        with tempfile.TemporaryDirectory(prefix="zvrsit-copy-") as folder:
            times.append(plain_copy_seconds(files, folder))
    return measure.median(times)


class Grown:
    """A generated site and its database, below `scratch` until closed."""

    def __init__(self, programs, scratch, pages, *shape):
        self.folder = os.path.join(scratch, f"site{pages}")
        self.programs = programs
        measure.must([programs.generate_site, self.folder, str(pages), *shape])
        self.database = measure.Database(programs, os.path.join(scratch, f"db{pages}"), self.folder,
                                         os.path.join(self.folder, "index.html"))

    def rebuild(self, runs):
        """Medians of clock and cpu seconds and the peak in MB; the first run is not counted."""
        expected = self.database.call("rebuild").output
        answers = [self.database.call("rebuild") for _ in range(runs)]
        if any(answer.output != expected for answer in answers):
            raise SystemExit("two rebuilds found different numbers")
        return (measure.median([a.seconds for a in answers]),
                measure.median([a.cpu for a in answers]), max(a.peak for a in answers))

    def page(self, number):
        return os.path.join(self.folder, f"d{number // 100:04d}", f"p{number:06d}.html")

    def close(self):
        shutil.rmtree(self.folder)
        shutil.rmtree(self.database.path)


def measure_pages(programs, scratch, pages, runs, reach):
    site = Grown(programs, scratch, pages, "--backlinks", str(pages), "--reach", str(reach))
    seconds, cpu, peak = site.rebuild(runs)
    scan = measure.floor(programs, "scan", site.folder, runs)
    files = site.database.files()
    size = site.database.size()
    plain = copied(files, runs)
    short = str(max(runs, SHORT_RUNS))
    opened = site.database.operate("open", short)
    links = site.database.operate("links-to", site.page(0), short)
    saved = site.database.operate("save", site.page(pages // 2), short)
    again = read_seconds(site.page(pages // 2))
    print(f"| {pages} | {seconds:.3f} | {seconds / pages * 1e6:.1f} | {cpu / pages * 1e6:.1f} | "
          f"{cpu / scan[1]:.2f} | {peak:.0f} | {peak * 1024 / pages:.2f} | {size / 1e6:.1f} | "
          f"{opened['total'] * 1e3:.1f} | {plain * 1e3:.1f} | {opened['total'] / plain:.2f} | "
          f"{links['work'] * 1e3:.2f} | {links['again'] * 1e9 / max(1, links['found']):.0f} | "
          f"{saved['work'] * 1e3:.2f} | {saved['total'] * 1e3:.1f} | "
          f"{saved['total'] / (saved['idle'] + again):.2f} |", flush=True)
    site.close()


def measure_hub(programs, scratch, links, runs):
    plain = Grown(programs, scratch, 1000)
    without, cpu_without, _ = plain.rebuild(runs)
    plain.close()
    hub = Grown(programs, scratch, 1000, "--hub", str(links))
    seconds, cpu, peak = hub.rebuild(runs)
    hub.close()
    print(f"\nhub page with {links} links in a site of 1000 pages: rebuild {seconds:.3f} s "
          f"({without:.3f} s without it), cpu {(cpu - cpu_without) / links * 1e6:.2f} us a link "
          f"of the hub; {cpu_without / 50000 * 1e6:.2f} us a link elsewhere; peak {peak:.0f} MB")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("pages", type=int, nargs="*", default=[1000, 10000, 30000])
    parser.add_argument("--build", default="build/release")
    parser.add_argument("--runs", type=int, default=3)
    parser.add_argument("--hub", type=int, default=1000000)
    parser.add_argument("--reach", type=int, default=0,
                        help="links stay within so many pages, so that every page is the same work")
    options = parser.parse_args()
    programs = measure.Programs(options.build)
    print(f"{measure.machine()}; medians of {options.runs} runs\n")
    print("| pages | rebuild s | us/page | cpu us/page | x scan (cpu) | peak MB | kB/page | tables MB"
          " | open+close ms | plain copy ms | ratio | links-to first ms | again ns/link | save ms"
          " | open+save+close ms | x open+close+read |")
    print("|---" * 16 + "|")
    with tempfile.TemporaryDirectory(prefix="zvrsit-growth-") as scratch:
        for pages in options.pages:
            measure_pages(programs, scratch, pages, options.runs, options.reach)
        if options.hub > 0:
            measure_hub(programs, scratch, options.hub, options.runs)


if __name__ == "__main__":
    main()
