#!/usr/bin/env python3
"""How long after the last write of a burst `zvrsit watch` has told what broke, or what was mended.

usage: watch_latency.py FOLDER [--build BUILD] [--runs N]

Works on a copy of FOLDER. Each burst makes one link lead nowhere, or mends it: a page is written; is written
beside and renamed, as editors do it; is written twenty times, a few milliseconds apart; and the page that it
leads to comes or goes. The time is from the end of the last write until the answer is read.
Checked: each answer tells that one finding. 20 ms of it are the quiet by which a burst is known to be over.
"""
import argparse
import json
import os
import shutil
import statistics
import subprocess
import tempfile
import time

from rebuild_ratio import first_page

NAME = "one-page-more.html"
LINK = f'<a href="{NAME}"></a>'.encode()


class Page:
    def __init__(self, path):
        self.path = path
        with open(path, "rb") as file:
            self.text = file.read()

    def write(self, text):
        with open(self.path, "wb") as file:
            file.write(text)

    def replace(self, text):
        with open(self.path + ".new", "wb") as file:
            file.write(text)
        os.rename(self.path + ".new", self.path)

    def write_often(self, text):
        for i in range(19):
            self.write(text[:len(text) - i])
            time.sleep(0.004)
        self.write(text)


def answer(watch, since):
    told = json.loads(watch.stdout.readline())
    seconds = time.perf_counter() - since
    now = json.loads(watch.stdout.readline())
    assert told["target"].endswith(NAME) and now["event"] == "now", (told, now)
    return seconds


def measure(watch, page, runs):
    """The seconds of each kind of burst."""
    target = os.path.join(os.path.dirname(page.path), NAME)
    times = {"written": [], "replaced": [], "written 20 times": [], "its target comes, goes": []}
    for _ in range(runs):
        for kind, write in (("written", page.write), ("replaced", page.replace),
                            ("written 20 times", page.write_often)):
            for text in (page.text + LINK, page.text):
                write(text)
                times[kind].append(answer(watch, time.perf_counter()))
                time.sleep(0.1)
        page.write(page.text + LINK)
        answer(watch, time.perf_counter())
        for come in (True, False):
            if come:
                with open(target, "wb") as file:
                    file.write(b"")
            else:
                os.unlink(target)
            times["its target comes, goes"].append(answer(watch, time.perf_counter()))
            time.sleep(0.1)
        page.write(page.text)
        answer(watch, time.perf_counter())
    return times


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("--build", default="build/release")
    parser.add_argument("--runs", type=int, default=10)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as scratch:
        folder = os.path.join(scratch, "site")
        shutil.copytree(options.folder, folder, symlinks=True)
        top = first_page(folder)
        program = [os.path.join(options.build, "cli", "zvrsit"), "--db", os.path.join(scratch, "db")]
        subprocess.run(program + ["add", "bench", folder, "--top", top], check=True, capture_output=True)
        begin = time.perf_counter()
        watch = subprocess.Popen(program + ["watch", "bench", "--format", "jsonl", "--rule",
                                            "orphan-page=off"], stdout=subprocess.PIPE)
        try:
            head = json.loads(watch.stdout.readline())
            print(f"{head['files']} files, {head['places']} places of findings; "
                  f"watching after {time.perf_counter() - begin:.2f} s, the first reading of all with it")
            for kind, seconds in measure(watch, Page(top), options.runs).items():
                print(f"{kind:24} median {1000 * statistics.median(seconds):5.0f} ms, "
                      f"longest {1000 * max(seconds):5.0f} ms, of {len(seconds)}")
        finally:
            watch.terminate()
            watch.wait()


if __name__ == "__main__":
    main()
