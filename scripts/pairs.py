#!/usr/bin/env python3
"""Runs every two commands of zvrsit on one database at the same time:

    scripts/pairs.py ZVRSIT RECORDER [--seed N] [--rounds N] [--all]

In a round the first command is stopped at a random moment (SIGSTOP), or at a random call that changes
a file (RECORDER, which tests/crash builds, is loaded before it), the second one runs, and then
the first goes on; in some rounds it is killed instead, and the second one must not notice. Each has
to give the answer that it gives before or after the other, or to say within the time of --wait that
the database is in use. At the end `verify` finds nothing. The commands are those of cli/help.cc: one
that is missing here is a fault. With --all each pair comes --rounds times, else so many pairs do.
"""
import argparse
import contextlib
import itertools
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

HELP = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../cli/help.cc")
WAIT = 0.25       # seconds, for --wait
PATIENCE = 30.0   # after this a command hangs; far above WAIT, because the machine may be busy

# The words of each command, standard input, and whether it goes on until it is interrupted.
COMMANDS = {
    "check": "check {site} --top {site}/index.html", "report": "report demo -o {out}",
    "add": "add other {site}/sub", "sites": "sites", "rebuild": "rebuild demo",
    "update": "update demo", "serve": "serve demo --port 0", "watch": "watch demo",
    "links": "links demo", "broken": "broken demo", "files": "files demo", "urls": "urls demo",
    "unused": "unused demo", "family": "family demo", "save": "save demo p1.html",
    "rm": "rm demo p4.html --links-to p5.html", "mv": "mv demo p2.html sub/p2.html",
    "rename-id": "rename-id demo p1.html a1 first", "fix": "fix demo --wrong-case",
    "site show": "site show demo", "site set": "site set demo --default-url index.php",
    "site rename": "site rename demo harbour", "site delete": "site delete demo",
    "server list": "server list", "server show": "server show home",
    "server set": "server set home --host other", "server delete": "server delete home",
    "legacy add": "legacy add older {site}/sub", "legacy sites": "legacy sites",
    "legacy rebuild": "legacy rebuild old", "legacy import": "legacy import old",
    "legacy links": "legacy links old", "legacy broken": "legacy broken old",
    "legacy peek": "legacy peek old", "legacy undo": "legacy undo old",
    "export": "export demo --to jsonl -o {out}", "graph": "graph demo -o {out}",
    "dump": "dump demo urls links", "verify": "verify demo", "manual": "manual",
    "completion": "completion bash",
}
INPUT = {"legacy undo": b"rm p3.html\n"}
ENDLESS = ("serve", "watch")
# These read the files of the database as they lie there, without a lock.
UNLOCKED = ("dump", "verify")
TIMES = re.compile(r"since .*\n|\w+\.file|\d+(\.\d+)? s\b|zvrsit_pairs\w+|\d{9,}")


def leaf_commands():
    with open(HELP, encoding="utf-8") as file:
        text = file.read()
    table = text[text.index("kHelp[] = {"):text.index("\n};\n", text.index("kHelp[] = {"))]
    paths = [path for path in re.findall(r'^    \{"([^"]*)"', table, re.M) if path]
    return [path for path in paths if not any(other.startswith(path + " ") for other in paths)]


class Wrong(Exception):
    pass


class Pairs:
    def __init__(self, program, recorder, work):
        self.program, self.recorder, self.work = program, recorder, work
        self.root, self.base = os.path.join(work, "root"), os.path.join(work, "base")
        self.site = os.path.join(self.root, "site")
        self.environment = dict(os.environ, HOME=work, TMPDIR=work, ZVRSIT_SYNC="0")
        self.kept = {}
        self.lasts = {}  # seconds that a command takes alone
        self.counts = {"right": 0, "in use": 0, "killed": 0}

    def start(self, words, name, text=b"", stop=None):
        environment = self.environment
        if stop:
            environment = dict(environment, LD_PRELOAD=self.recorder, CRASH_ROOT=self.root,
                               CRASH_STOP=str(stop), ASAN_OPTIONS="verify_asan_link_order=0")
        with contextlib.suppress(FileNotFoundError):
            os.remove(os.path.join(self.work, name + ".file"))
        out, err = os.path.join(self.work, name + ".out"), os.path.join(self.work, name + ".err")
        words = [word.format(site=self.site, out=os.path.join(self.work, name + ".file"))
                 for word in words.split()]
        with open(out, "wb") as stdout, open(err, "wb") as stderr:
            process = subprocess.Popen(
                [self.program, *words, "--db", os.path.join(self.root, "db"), "--wait", str(WAIT)],
                stdin=subprocess.PIPE, stdout=stdout, stderr=stderr, cwd=self.root,
                env=environment)
        process.stdin.write(text)
        process.stdin.close()
        return process

    def end(self, process, name):
        """(exit code, standard output, standard error)"""
        code, end = None, time.monotonic() + PATIENCE
        while code is None:
            try:
                code = process.wait(0.5)
            except subprocess.TimeoutExpired as hung:
                process.send_signal(signal.SIGCONT)  # the recorder may have stopped it later
                if time.monotonic() > end:
                    process.kill()
                    raise Wrong(f"{name} hangs") from hung
        texts = []
        for suffix in (".out", ".err"):
            with open(os.path.join(self.work, name + suffix), encoding="utf-8",
                      errors="replace") as file:
                texts.append(TIMES.sub("", file.read()))
        return code, *texts

    @staticmethod
    def wait_for_stop(process, patience):
        """Waits until the process has stopped, or ended."""
        end = time.monotonic() + patience
        while process.poll() is None and time.monotonic() < end:
            with contextlib.suppress(OSError), open(f"/proc/{process.pid}/stat", "rb") as file:
                if file.read().rsplit(b")", 1)[1].split()[0] == b"T":
                    return
            time.sleep(0.001)

    def run(self, command):
        return self.end(self.start(COMMANDS[command], "solo", INPUT.get(command, b"")), "solo")

    def reset(self):
        shutil.rmtree(self.root, ignore_errors=True)
        shutil.copytree(self.base, self.root)

    def make_base(self):
        os.makedirs(os.path.join(self.site, "sub"))
        pages = {f"p{k}.html": f'<h1 id=a1>x</h1><a href=p{k + 1}.html>n</a><a href=gone{k}.html>'
                               f'<a href=http://example.org/{k}>' for k in range(20)}
        pages |= {"index.html": "".join(f"<a href=p{k}.html>" for k in range(20)),
                  "sub/s.html": "<a href=../P1.html>"}
        for name, text in pages.items():
            with open(os.path.join(self.site, name), "w", encoding="utf-8") as file:
                file.write(text)
        for words in ("add demo {site} --top {site}/index.html", "rebuild demo",
                      "server set home --host h", "legacy add old {site} --top {site}/index.html",
                      "legacy rebuild old"):
            outcome = self.end(self.start(words, "solo"), "solo")
            if outcome[0] != 0:
                raise Wrong(f"{words}: {outcome}")
        with open(os.path.join(self.site, "p7.html"), "a", encoding="utf-8") as file:
            file.write("<a href=new.html>")
        shutil.copytree(self.root, self.base)

    def answers(self, command, other):
        """What the command may answer: as if the other one came later, or before."""
        if (command, other) not in self.kept:
            alone = self.kept.get((command, None))
            if alone is None:
                self.reset()
                begin = time.monotonic()
                alone = self.kept[command, None] = self.run(command)
                self.lasts[command] = time.monotonic() - begin
            after = alone
            if other not in ENDLESS:
                self.reset()
                self.run(other)
                after = self.run(command)
            self.kept[command, other] = (alone, after)
        return self.kept[command, other]

    def judge(self, command, other, outcome):
        code, out, err = outcome
        if code == 3 and "in use" in err:
            self.counts["in use"] += 1
        elif any((code, out) == right[:2] for right in self.answers(command, other)):
            self.counts["right"] += 1
        elif command in UNLOCKED or other in ENDLESS and code in (0, 1):
            self.counts["right"] += 1  # of a moment between
        else:
            raise Wrong(f"{command}: {code} {out[-300:]!r} {err[:300]!r}")

    def round(self, first, second, rng):
        for one, two in ((first, second), (second, first)):
            if one not in ENDLESS:
                self.answers(one, two)
        self.reset()
        stop = rng.randrange(1, 40) if rng.random() < 0.7 else None
        process = self.start(COMMANDS[first], "first", INPUT.get(first, b""), stop)
        if stop:
            self.wait_for_stop(process, 0.3 if first in ENDLESS else PATIENCE)
        else:
            time.sleep(rng.random() * self.lasts.get(first, 0.3))
        process.send_signal(signal.SIGSTOP)
        kills = rng.random() < 0.2
        if kills:
            process.kill()
            process.wait()
        begin = time.monotonic()
        outcome = None
        if second not in ENDLESS:
            outcome = self.end(self.start(COMMANDS[second], "second", INPUT.get(second, b"")), "second")
        else:
            other = self.start(COMMANDS[second], "second")
            time.sleep(rng.random() * 0.2)
        took = time.monotonic() - begin
        if kills:
            self.counts["killed"] += 1
            if outcome and "in use" in outcome[2]:
                raise Wrong(f"{second} is kept out by a dead {first}")
        else:
            process.send_signal(signal.SIGCONT)
            if first in ENDLESS:
                time.sleep(0.05)
                process.send_signal(signal.SIGINT)
        if second in ENDLESS:
            other.send_signal(signal.SIGINT)
            self.end(other, "second")
        ended = None if kills else self.end(process, "first")
        if not kills and first not in ENDLESS:
            self.judge(first, second, ended)
        if outcome and not kills:
            self.judge(second, first, outcome)
        if took > PATIENCE:
            raise Wrong(f"{second} took {took:.1f} s")
        for words in ("sites", "links demo", "links harbour", "legacy links old"):
            self.end(self.start(words, "solo"), "solo")  # ends what was cut off
        code, out, err = self.end(self.start("verify", "solo"), "solo")
        if code != 0:
            raise Wrong(f"verify: {code} {out[:300]} {err[:300]}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("recorder")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--rounds", type=int, default=60)
    parser.add_argument("--all", action="store_true")
    parser.add_argument("--pair", nargs=2, metavar="COMMAND")
    wanted = parser.parse_args()
    missing = sorted(set(leaf_commands()) ^ set(COMMANDS))
    if missing:
        sys.exit(f"not in both cli/help.cc and COMMANDS: {missing}")
    pairs = list(itertools.product(sorted(COMMANDS), repeat=2))
    rng = random.Random(wanted.seed)
    if wanted.pair:
        chosen = [tuple(wanted.pair)] * wanted.rounds
    elif wanted.all:
        chosen = [pair for pair in pairs for _ in range(wanted.rounds)]
    else:
        chosen = rng.sample(pairs, min(wanted.rounds, len(pairs)))
    shared = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    wrong = 0
    with tempfile.TemporaryDirectory(dir=shared, prefix="zvrsit_pairs") as work:
        runs = Pairs(os.path.abspath(wanted.program), os.path.abspath(wanted.recorder), work)
        runs.make_base()
        for first, second in chosen:
            try:
                runs.round(first, second, rng)
            except Wrong as fault:
                wrong += 1
                print(f"{first} + {second}: {str(fault)[:700]}", flush=True)
    print(f"{len(chosen)} pairs:", ", ".join(f"{n} {what}" for what, n in runs.counts.items()))
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
