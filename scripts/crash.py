#!/usr/bin/env python3
"""Ends commands of zvrsit at random moments, and looks at what the next command finds:

    scripts/crash.py ZVRSIT RECORDER [--seed N] [--rounds N] [--only kill|power] [--op NAME]

RECORDER is the object that tests/crash builds; it is loaded before the program. A round takes one
operation on a small site. `kill` ends it by SIGKILL at a random call that changes a file. `power`
lets it run, and then plays a power cut at a random call: what was not synced is lost, in any order
(class Disk). Afterwards the program has to open its database. Profiles, passwords, marks of the
user and kept answers have to be there, a change of the site's files has to be whole or undone, and
the tables have to be what a rebuild makes. A round can be repeated by its seed.
"""
import argparse
import collections
import contextlib
import http.server
import json
import os
import random
import shutil
import sqlite3
import struct
import subprocess
import sys
import tempfile
import threading

SLOT, MEMBERSHIP, MARK = 84, 36, 4  # of a file's record: its length, the word with the marks
PAGES = 12


def page(number, of=PAGES):
    links = "".join(f'<a href="p{(number * k + 1) % of}.html#a{k}">x</a>' for k in range(1, 4))
    return (f'<title>Page {number}</title><h1 id="a{number % 4}">x</h1>{links}'
            f'<a href="sub/s{number % 3}.html">s</a><a href="gone{number}.html">g</a>'
            f'<img src="img/I{number % 2}.png"><a href="http://127.0.0.1:{{port}}/{number}">e</a>')


class Disk:
    """A folder as the disk may have it after a power cut, from what it was and a list of calls.

    Data: each file keeps what was synced; of the writes since then all are there, or none, or the
    first ones, or any of them, whole or torn at a multiple of 512 or 4096 bytes. Names: those of a
    synced folder are there; of the changes of names since then the first ones are there (`ordered`),
    or any that are still possible.
    """

    def __init__(self, root, calls, rng):
        self.root, self.rng = root, rng
        self.ordered = rng.random() < 0.5
        self.new = 0
        self.files = {}  # token -> [synced bytes, calls since]
        self.tree = {}   # path -> token or None for a folder, as the program sees it
        self.names = []  # changes of names: [done for certain, op, path, other, token]
        self.real = {}   # inode -> token
        for folder, folders, files in os.walk(root):
            for name in folders:
                self.tree[os.path.join(folder, name)] = None
            for name in files:
                path = os.path.join(folder, name)
                with open(path, "rb") as file:
                    self.tree[path] = self.add(os.stat(path).st_ino, file.read())
        self.kept = dict(self.tree)
        for call in calls:
            self.play(*call)

    def add(self, inode, content):
        self.new += 1
        self.files[self.new] = [content, []]
        self.real[inode] = self.new
        return self.new

    def play(self, op, inode, offset, path, other, content):
        if op == "C":
            self.name("C", path, "", self.add(inode, b""))
        elif op in "RUM":
            self.name(op, path, other, None)
        elif op in "WT":
            self.files[self.real[inode]][1].append((op, offset, content))
        elif op == "A":
            for file in self.files.values():
                self.sync(file)
            for change in self.names:
                change[0] = True
        elif path in self.tree and self.tree[path] is None or path == self.root:
            for change in self.names:
                if path in (os.path.dirname(change[2]), os.path.dirname(change[3])):
                    change[0] = True
        else:
            self.sync(self.files[self.real[inode]])

    def name(self, *change):
        self.names.append([False, *change])
        self.apply(self.tree, *change)

    @staticmethod
    def apply(tree, op, path, other, token):
        """Does nothing where the change is impossible."""
        if op == "U":
            if not any(name.startswith(path + "/") for name in tree):
                tree.pop(path, None)
        elif os.path.dirname(other or path) not in tree and op != "M":
            return
        elif op in "CM":
            tree.setdefault(path, token)
        elif path in tree and not any(name.startswith(other + "/") for name in tree):
            for name in [name for name in tree if name == path or name.startswith(path + "/")]:
                tree[other + name[len(path):]] = tree.pop(name)

    @staticmethod
    def written(content, calls):
        content = bytearray(content)
        for op, offset, new in calls:
            if len(content) < offset:
                content.extend(bytes(offset - len(content)))
            if op == "T":
                del content[offset:]
            else:
                content[offset:offset + len(new)] = new
        return bytes(content)

    def sync(self, file):
        file[0], file[1] = self.written(*file), []

    def after(self, file):
        """The content of a file after the cut."""
        content, calls = file
        way = self.rng.randrange(4)
        if way == 0 or not calls:
            return self.written(content, calls)
        if way == 1:
            return content
        if way == 2:
            return self.written(content, calls[:self.rng.randrange(len(calls) + 1)])
        some = []
        block = self.rng.choice((512, 4096))
        for op, offset, new in calls:
            if op == "T":
                if self.rng.random() < 0.7:
                    some.append((op, offset, new))
                continue
            end = offset + len(new)
            for begin in range(offset - offset % block, end, block):
                first, last = max(begin, offset), min(begin + block, end)
                if self.rng.random() < 0.5:
                    some.append((op, first, new[first - offset:last - offset]))
        return self.written(content, some)

    def cut(self):
        tree = dict(self.kept)
        tree[self.root] = None
        certain = max((k + 1 for k, change in enumerate(self.names) if change[0]), default=0)
        limit = self.rng.randrange(certain, len(self.names) + 1)
        for k, (is_certain, *change) in enumerate(self.names):
            wanted = k < limit if self.ordered else is_certain or self.rng.random() < 0.5
            if wanted:
                self.apply(tree, *change)
        shutil.rmtree(self.root)
        os.makedirs(self.root)
        for path in sorted(tree):
            if tree[path] is None:
                os.makedirs(path, exist_ok=True)
        for path, token in tree.items():
            if token is not None and os.path.isdir(os.path.dirname(path)):
                with open(path, "wb") as file:
                    file.write(self.after(self.files[token]))


def read_log(path):
    """The calls of a log: (op, inode, offset, path, other path, bytes)."""
    with open(path, "rb") as file:
        log = file.read()
    calls, at = [], 0
    while at < len(log):
        end = log.index(b"\n", at)
        op, inode, offset, length, first, second = log[at:end].split()
        at = end + 1
        texts = []
        for size in (int(first), int(second), int(length)):
            texts.append(log[at:at + size])
            at += size
        calls.append((op.decode(), int(inode), int(offset), os.fsdecode(texts[0]),
                      os.fsdecode(texts[1]), texts[2]))
    return calls


class Wrong(Exception):
    pass


class Server(http.server.BaseHTTPRequestHandler):
    def do_HEAD(self):
        self.send_response(200)
        self.end_headers()

    do_GET = do_HEAD

    def log_message(self, *_):
        pass


def edit(site, name, text):
    with open(os.path.join(site, name), "a") as file:
        file.write(text)


def drop_half(site):
    for number in range(PAGES // 2, PAGES):
        os.remove(f"{site}/p{number}.html")


def forget_answers(site):
    path = os.path.join(os.path.dirname(site), "db/demo/external.sqlite")
    with contextlib.closing(sqlite3.connect(path)) as answers:
        answers.execute("DELETE FROM answers WHERE url LIKE '%/1%'")
        answers.commit()


# Operations: the command, what happens on the disk before it, standard input.
OPERATIONS = {
    "add": (["add", "other", "{site}/sub"], None, ""),
    "rebuild": (["rebuild", "demo"], lambda site: edit(site, "p1.html", "<a href=new.html>n</a>"), ""),
    "diff": (["rebuild", "demo", "--diff"], drop_half, ""),
    "anew": (["rebuild", "demo", "--anew"], None, ""),
    "save": (["save", "demo", "p1.html"], lambda site: edit(site, "p1.html", "<a href=new.html>"), ""),
    "update": (["update", "demo"], lambda site: edit(site, "p2.html", "<a href=other.html>"), ""),
    "pack": (["update", "demo"], drop_half, ""),
    "mv": (["mv", "demo", "p2.html", "sub/deep/p2.html"], None, ""),
    "mv-folder": (["mv", "demo", "sub", "part"], None, ""),
    "mv-top": (["mv", "demo", "index.html", "home.html"], None, ""),
    "rm": (["rm", "demo", "p4.html", "--links-to", "p5.html"], None, ""),
    "rename-id": (["rename-id", "demo", "p1.html", "a1", "first"], None, ""),
    "fix": (["fix", "demo", "--wrong-case"], None, ""),
    "site-set": (["site", "set", "demo", "--default-url", "index.php"], None, ""),
    "site-rename": (["site", "rename", "demo", "harbour"], None, ""),
    "site-delete": (["site", "delete", "second"], None, ""),
    "server-set": (["server", "set", "home", "--host", "h" * 600, "--password"], None, "other\n"),
    "server-new": (["server", "set", "away", "--host", "a", "--password"], None, "third\n"),
    "server-delete": (["server", "delete", "spare"], None, ""),
    "urls": (["urls", "demo", "--check", "--private-network"], forget_answers, ""),
    # After an update that has not waited for the disk.
    "late-save": (["save", "demo", "p1.html"], lambda site: edit(site, "p2.html", "<a href=other.html>"), ""),
    "late-mv": (["mv", "demo", "p3.html", "sub/p3.html"], lambda site: edit(site, "p2.html", "<a href=other.html>"), ""),
    "late-rebuild": (["rebuild", "demo"], lambda site: edit(site, "p2.html", "<a href=other.html>"), ""),
    "late-pack": (["update", "demo"], drop_half, ""),
    "old-add": (["legacy", "add", "older", "{site}/sub"], None, ""),
    "old-rebuild": (["legacy", "rebuild", "old"], lambda site: edit(site, "p1.html", "<a href=n.html>"), ""),
    "old-undo": (["legacy", "undo", "old"], None, "rm p3.html\nsave p1.html\n"),
    "old-import": (["legacy", "import", "old"], None, ""),
}
# What may come first afterwards.
NEXT = (["links", "{demo}"], ["broken", "{demo}"], ["sites"], ["update", "{demo}"], ["rebuild", "{demo}"],
        ["save", "{demo}", "p1.html"], ["server", "list"], ["legacy", "links", "old"],
        ["legacy", "rebuild", "old"], ["files", "{demo}"], ["site", "show", "{demo}"])


class Rounds:
    def __init__(self, program, recorder, work):
        self.program, self.recorder, self.work = program, recorder, work
        self.root, self.base = os.path.join(work, "root"), os.path.join(work, "base")
        self.db, self.site = os.path.join(self.root, "db"), os.path.join(self.root, "site")
        self.counts = collections.Counter()
        self.references = {}
        self.environment = dict(os.environ, HOME=work, TMPDIR=work, ZVRSIT_BOOT="1",
                                ASAN_OPTIONS="verify_asan_link_order=0:detect_leaks=0")

    def run(self, words, text="", record=None):
        words = [word.format(site=self.site, demo=self.demo) for word in words]
        environment = self.environment
        if record:
            environment = dict(environment, LD_PRELOAD=self.recorder, CRASH_ROOT=self.root, **record)
        return subprocess.run([self.program, *words, "--db", self.db], input=text.encode(),
                              capture_output=True, timeout=60, cwd=self.site, env=environment)

    def must(self, words, text="", codes=(0,)):
        outcome = self.run(words, text)
        if outcome.returncode not in codes:
            said = (outcome.stderr + outcome.stdout).decode(errors="replace")
            raise Wrong(f"{' '.join(words)}: {outcome.returncode} {said[:300]}")
        return outcome.stdout

    def ask(self, *words, codes=(0,)):
        return json.loads(self.must([*words, "--format", "json"], codes=codes))

    def make_base(self, port):
        self.demo = "demo"
        for folder in ("sub", "img"):
            os.makedirs(os.path.join(self.site, folder))
        pages = {f"p{k}.html": page(k).replace("{port}", str(port)) for k in range(PAGES)}
        pages["index.html"] = "".join(f'<a href="p{k}.html">{k}</a>' for k in range(PAGES))
        pages |= {f"sub/s{k}.html": f'<a href="../p{k}.html">b</a>' for k in range(3)}
        pages |= {f"img/i{k}.png": "" for k in range(2)}
        for name, text in pages.items():
            edit(self.site, name, text)
        for name in ("demo", "second"):
            self.must(["add", name, "{site}", "--top", "{site}/index.html"])
            self.must(["rebuild", name])
        for server in ("home", "spare"):
            self.must(["server", "set", server, "--host", "h", "--password"], f"{server} secret\n")
        self.must(["legacy", "add", "old", "{site}", "--top", "{site}/index.html"])
        self.must(["legacy", "rebuild", "old"])
        self.must(["urls", "demo", "--check", "--private-network"], codes=(0, 1))
        with open(os.path.join(self.db, "demo/PR"), "r+b") as table:
            content = bytearray(table.read())
            for slot in range(2, (len(content) - 24) // SLOT, 3):
                at = 24 + slot * SLOT + MEMBERSHIP
                struct.pack_into("<I", content, at, struct.unpack_from("<I", content, at)[0] | MARK)
            table.seek(0)
            table.write(content)
        self.must(["update", "demo"])
        self.must(["verify"])
        shutil.copytree(self.root, self.base)

    def reset(self):
        shutil.rmtree(self.root)
        shutil.copytree(self.base, self.root)
        self.demo = "demo"

    def state(self):
        """What has to be there afterwards, beside what whole() adds."""
        def content(path):
            with contextlib.suppress(FileNotFoundError), open(path, "rb") as file:
                return file.read()
            return b""

        rows = self.must(["dump", self.demo, "sites", "servers", "files", "--format", "jsonl"])
        rows = [json.loads(row) for row in rows.decode().splitlines()]
        profiles = {(row["table"], str(row["name"])): row for row in rows if row["table"] != "files"}
        for row in profiles.values():
            row.pop("rebuildState", None)
        marks = {str(row["name"]) for row in rows
                 if row["table"] == "files" and int(row.get("membership", 0)) & 12}
        secrets = content(f"{self.db}/servers.R") + content(f"{self.db}/servers.S")
        old = [content(f"{self.db}/legacy/{name}") for name in ("sites", "sites_S", "servers_S")]
        site = {}
        for folder, _, files in os.walk(self.site):
            for name in files:
                path = os.path.join(folder, name)
                site[os.path.relpath(path, self.site)] = content(path)
        return {"profiles": profiles, "secrets": secrets, "marks": marks, "old": old, "site": site}

    def kept(self):
        path = f"{self.db}/{self.demo}/external.sqlite"
        try:
            with contextlib.closing(sqlite3.connect(f"file:{path}?mode=rw", uri=True)) as answers:
                return {row[0] for row in answers.execute("SELECT url FROM answers")}
        except sqlite3.Error as error:
            raise Wrong(f"kept answers: {error}") from error

    def old_links(self):
        return sorted(map(str, self.ask("legacy", "links", "old")))

    def answers(self):
        return sorted(map(str, self.ask("links", self.demo)))

    def whole(self):
        """The state and the answers, when everything was brought up to date."""
        names = [row["name"] for row in self.ask("sites")]
        self.demo = "demo" if "demo" in names else "harbour"
        for name in names:
            self.run(["links", name])  # ends what was cut off
        self.run(["legacy", "links", "old"])
        self.must(["update", self.demo])
        state = self.state()
        state["links"] = self.answers()
        state["kept"] = self.kept()
        state["oldlinks"] = self.old_links()
        return state

    def operation(self, name):
        return OPERATIONS[name]

    def reference(self, name):
        """What is there before and after the operation, and how many calls it makes."""
        if name in self.references:
            return self.references[name]
        words, prepare, text = self.operation(name)
        both = []
        for runs in (False, True):
            self.reset()
            if prepare:
                prepare(self.site)
            if runs:
                log = os.path.join(self.work, "log")
                with contextlib.suppress(FileNotFoundError):
                    os.remove(log)
                outcome = self.run(words, text, {"CRASH_LOG": log})
                if outcome.returncode not in (0, 1) or not os.path.exists(log):
                    raise Wrong(f"{name} itself: {outcome.returncode} {outcome.stderr.decode()[:300]}"
                                f"{outcome.stdout.decode()[:300]}")
            both.append(self.whole())
        self.references[name] = (*both, len(read_log(log)))
        return self.references[name]

    def crash(self, name, way, rng, calls):
        words, prepare, text = self.operation(name)
        self.reset()
        self.environment["ZVRSIT_BOOT"] = "1"
        if prepare:
            prepare(self.site)
        if way == "kill":
            outcome = self.run(words, text, {"CRASH_KILL": str(rng.randrange(1, calls + 1))})
            self.counts["killed"] += outcome.returncode == -9
            return
        log = os.path.join(self.work, "log")
        with contextlib.suppress(FileNotFoundError):
            os.remove(log)
        before = os.path.join(self.work, "before")
        shutil.rmtree(before, ignore_errors=True)
        # The inodes of the log are those of the files that are there now.
        disk = Disk(self.root, [], rng)
        if name.startswith("late-"):
            self.run(["update", "demo"], record={"CRASH_LOG": log})
        self.run(words, text, {"CRASH_LOG": log})
        made = read_log(log)
        for call in made[:rng.randrange(len(made) + 1)]:
            disk.play(*call)
        disk.cut()
        self.environment["ZVRSIT_BOOT"] = "2"  # the machine is started again
        self.counts["cut"] += 1

    def round(self, name, way, seed):
        before, after, calls = self.reference(name)
        rng = random.Random(seed)
        self.crash(name, way, rng, calls)
        sites = os.path.isdir(f"{self.db}/harbour") and not os.path.isdir(f"{self.db}/demo")
        self.demo = "harbour" if sites else "demo"
        first = rng.choice(NEXT)
        outcome = self.run(first)
        said = outcome.stderr.decode(errors="replace")
        if outcome.returncode == 3 and "zvrsit rebuild" in said:
            self.counts["asked for a rebuild"] += 1
        elif outcome.returncode == 3 and "zvrsit legacy rebuild" in said:
            self.counts["asked for a rebuild of an older site"] += 1
            first = ["legacy", "rebuild", "old"]
            self.must(first)
        elif outcome.returncode == 2 and name == "site-rename":
            pass  # the other name
        elif outcome.returncode not in (0, 1):
            raise Wrong(f"first {' '.join(first)}: {outcome.returncode} {said[:300]}")
        if "damaged" in said:
            self.counts["found damage"] += 1
        self.rebuilt = first[:2] == ["legacy", "rebuild"]
        now = self.whole()
        self.must(["verify"])
        self.compare(name, before, after, now)
        left = [name for name in ("new", "done", "undo", "undo.new", "repair", "../sites.R.undo", "../legacy/done")
                if os.path.exists(f"{self.db}/{self.demo}/{name}")]
        if left:
            raise Wrong(f"left behind: {left}")

    def compare(self, name, before, after, now):
        for part in before:
            if part == "links":
                side = "after" if now["site"] == after["site"] else "before"
                if now[part] != {"before": before, "after": after}[side][part]:
                    raise Wrong("the links are not those of the site")
            elif part == "oldlinks":
                if not self.rebuilt and now[part] not in (before[part], after[part]):
                    raise Wrong("the older site is neither")
            elif part == "kept":
                if not now[part] >= (before[part] & after[part]):
                    raise Wrong("kept answers are lost")
            elif now[part] not in (before[part], after[part]):
                if part == "marks" and now[part] >= (before[part] & after[part]):
                    continue
                raise Wrong(f"{part}: {self.difference(before[part], after[part], now[part])}")

    @staticmethod
    def difference(before, after, now):
        if isinstance(now, dict):
            keys = [key for key in set(before) | set(now)
                    if now.get(key) not in (before.get(key), after.get(key))]
            return f"neither before nor after, at {sorted(keys)[:5]}"
        if isinstance(now, set):
            return f"missing {sorted(before - now)[:3]}, more {sorted(now - before)[:3]}"
        return "neither before nor after"


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("recorder")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--rounds", type=int, default=300)
    parser.add_argument("--only", choices=("kill", "power"))
    parser.add_argument("--op", choices=sorted(OPERATIONS), action="append")
    parser.add_argument("--ops", type=int, help="only so many operations, by the seed")
    wanted = parser.parse_args()
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Server)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    shared = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
    failures = collections.Counter()
    with tempfile.TemporaryDirectory(dir=shared, prefix="zvrsit_crash") as work:
        rounds = Rounds(os.path.abspath(wanted.program), os.path.abspath(wanted.recorder), work)
        rounds.make_base(server.server_port)
        names = wanted.op or sorted(OPERATIONS)
        if wanted.ops:
            names = random.Random(wanted.seed).sample(names, wanted.ops)
        done = 0
        for seed in range(wanted.seed, wanted.seed + wanted.rounds):
            rng = random.Random(seed)
            way = wanted.only or ("kill", "power")[rng.randrange(2)]
            name = names[rng.randrange(len(names))]
            try:
                rounds.round(name, way, rng.randrange(1 << 30))
            except (Wrong, subprocess.TimeoutExpired) as wrong:
                failures[f"{name} {way}"] += 1
                print(f"seed {seed}: {name}, {way}: {str(wrong)[:400]}", flush=True)
            done += 1
    print(f"{done} rounds:", ", ".join(f"{count} {what}" for what, count in rounds.counts.items()))
    for what, count in sorted(failures.items()):
        print(f"  {count} wrong: {what}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
