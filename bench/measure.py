"""What the benchmarks share: running a program and taking its times, and databases to fill."""
import dataclasses
import json
import os
import re
import statistics
import subprocess
import sys
import tempfile
import threading
import time


@dataclasses.dataclass
class Run:
    seconds: float      # by the clock
    cpu: float          # of the processor, all threads
    peak: float         # resident memory, MB
    code: int           # -9: stopped at the limit
    output: str
    errors: str


def run(command, limit=None):
    """Runs `command`, no longer than `limit` seconds."""
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as errors:
        start = time.perf_counter()
        process = subprocess.Popen(command, stdout=out, stderr=errors)
        timer = threading.Timer(limit, process.kill) if limit else None
        if timer:
            timer.start()
        _, status, usage = os.wait4(process.pid, 0)
        seconds = time.perf_counter() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        if timer:
            timer.cancel()
        texts = []
        for file in (out, errors):
            file.seek(0)
            texts.append(file.read().decode("utf-8", "replace"))
    return Run(seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024,
               process.returncode, *texts)


def must(command, codes=(0,)):
    answer = run(command)
    if answer.code not in codes:
        sys.exit(f"{' '.join(command)} ended with {answer.code}: {answer.errors}")
    return answer


def timed(command, codes=(0,)):
    """Its seconds by the clock and of the processor, and what it prints."""
    answer = must(command, codes)
    return (answer.seconds, answer.cpu), answer.output


class Programs:
    """The programs of a build folder."""

    def __init__(self, build):
        bench = os.path.join(build, "bench")
        self.zvrsit = os.path.join(build, "cli", "zvrsit")
        self.floor = os.path.join(bench, "floor")
        self.generate_site = os.path.join(bench, "generate_site")
        self.site_ops = os.path.join(bench, "site_ops")
        for program in vars(self).values():
            if not os.path.exists(program):
                sys.exit(f"no {program}: configure with -DZVRSIT_BUILD_BENCH=ON and build")


class Database:
    """A database in the folder `path` with one site, named bench."""

    def __init__(self, programs, path, site, top):
        self.programs, self.path, self.site, self.top = programs, path, site, top
        self.add()

    def add(self):
        must([self.programs.zvrsit, "--db", self.path, "add", "bench", self.site,
              "--top", self.top, "--rules", "web"])

    def call(self, command, *arguments, codes=(0, 4)):
        return must([self.programs.zvrsit, "--db", self.path, "--format", "json", command, "bench",
                     *arguments], codes)

    def operate(self, *arguments):
        return json.loads(must([self.programs.site_ops, self.path, "bench", *arguments]).output)

    def files(self):
        return [os.path.join(where, name) for where, _, names in os.walk(self.path)
                for name in names]

    def size(self):
        return sum(os.path.getsize(name) for name in self.files())


def floor(programs, depth, folder, runs=1):
    """Clock and processor seconds of bench/floor, and its line."""
    line = must([programs.floor, depth, folder, str(runs)]).output
    found = re.match(r"\w+ ([0-9.]+) s, cpu ([0-9.]+) s", line)
    return float(found.group(1)), float(found.group(2)), line.strip()


def median(values):
    return statistics.median(values)


def machine():
    """The processor, its cores and the load, for the head of a table."""
    model = "unknown processor"
    try:
        with open("/proc/cpuinfo") as info:
            model = next(line.split(":", 1)[1].strip() for line in info if "model name" in line)
    except (OSError, StopIteration):
        pass
    return f"{model}, {os.cpu_count()} cores, load {os.getloadavg()[0]:.1f}"
