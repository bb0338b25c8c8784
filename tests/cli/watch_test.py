#!/usr/bin/env python3
"""Runs `zvrsit watch` over real folders while they change, and holds what it has printed and written against
a check and a rebuild of the same files.

usage: watch_test.py PROGRAM [CASE...]    (ZVRSIT_LIVES: how many steps the random life has)

What it prints is folded: every place of a finding that broke is added, every one that was mended taken out.
"""
import collections
import json
import os
import pathlib
import random
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

PROGRAM = os.path.abspath(sys.argv[1])
os.environ.setdefault("ZVRSIT_SYNC", "0")
PATIENCE = 20  # seconds


def keys(finding):
    return [(finding["rule"], finding["severity"], finding["target"], place["file"], place["reference"])
            for place in finding["places"]]


class Site:
    """A folder of pages with a database of its own."""

    def __init__(self, folder, options=(), below="site"):
        self.base = pathlib.Path(folder)
        self.site = self.base / below
        self.site.mkdir(parents=True)
        self.options = list(options)
        self.write("index.html", "<title>Home</title><a href=a.html>a</a><a href=news/>news</a>")
        self.write("a.html", "<a href=index.html#top>h</a><p id=one>")
        self.write("news/index.html", "<a href=../a.html#one>a</a>")

    def write(self, name, text):
        path = self.site / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def run(self, *words, database="db", codes=(0,)):
        done = subprocess.run([PROGRAM, "--db", str(self.base / database), *words], capture_output=True,
                              text=True, cwd=self.base)
        assert done.returncode in codes, (words, done.returncode, done.stderr)
        return done.stdout

    def add(self, database="db"):
        self.run("add", "demo", str(self.site), "--top", str(self.site / "index.html"), *self.options,
                 database=database)

    def check(self):
        """What a check of the same files into no database finds."""
        report = json.loads(self.run("check", str(self.site), "--top", str(self.site / "index.html"),
                                     *self.options, "--format", "json", database="none", codes=(0, 1)))
        return collections.Counter(key for one in report["findings"] for key in keys(one))

    def tables(self, database):
        """All that the tables hold, by names."""
        rows = [json.loads(line) for line in
                self.run("export", "demo", "--to", "jsonl", database=database).splitlines()]
        names = {(row["table"], row["id"]): row.get("path") or row.get("url") for row in rows if "id" in row}
        held = []
        for row in rows:
            table, number = row.pop("table"), row.pop("id", None)
            row.pop("accessed", None)
            for key, of in (("folder", "folders"), ("parent", "folders"), ("source", "files"),
                            ("file", "files"), ("url", "urls")):
                if table in ("files", "links", "folders") and row.get(key) is not None:
                    row[key] = names[of, row[key]]
            held.append(json.dumps([table, row], sort_keys=True))
        return sorted(held)


class Watch:
    def __init__(self, site, *options, wrap=(), formatted=True, database="db"):
        self.site = site
        self.known = site.check() if formatted else None
        self.lines, self.errors = [], []
        words = [*wrap, PROGRAM, "--db", str(site.base / database), "watch", "demo", *options]
        if formatted:
            words += ["--format", "jsonl"]
        self.process = subprocess.Popen(words, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                        cwd=site.base)
        self.formatted = formatted
        for stream, into in ((self.process.stdout, self.lines), (self.process.stderr, self.errors)):
            threading.Thread(target=self.read, args=(stream, into), daemon=True).start()
        self.wait(lambda: self.lines or self.process.poll() is not None)

    def read(self, stream, into):
        for line in stream:
            into.append(line)
            if not self.formatted or into is self.errors:
                continue
            event = json.loads(line)
            if event["event"] == "broke":
                self.known.update(keys(event))
            elif event["event"] == "mended":
                self.known.subtract(keys(event))
                assert min(self.known.values(), default=0) >= 0, event
                self.known += collections.Counter()

    def wait(self, condition, patience=PATIENCE):
        end = time.monotonic() + patience
        while not condition():
            if time.monotonic() > end:
                raise AssertionError(f"waited in vain; printed: {self.lines[-5:]} {self.errors[-5:]}")
            time.sleep(0.01)

    def settle(self):
        """Waits until what was printed is what a check finds."""
        wanted = self.site.check()
        try:
            self.wait(lambda: self.known == wanted)
        except AssertionError:
            raise AssertionError(f"missing {wanted - self.known}, too much {self.known - wanted}; "
                                 f"{self.errors[-3:]}") from None
        if self.process.poll() is not None:
            raise AssertionError(f"it has ended: {self.errors}")

    def end(self, number=signal.SIGINT, code=0):
        self.process.send_signal(number)
        assert self.process.wait(PATIENCE) == code, (self.process.returncode, self.errors)

    def holds_tables(self):
        """Waits until the database is what a rebuild into empty tables makes of the files."""
        end = time.monotonic() + PATIENCE
        while True:
            shutil.rmtree(self.site.base / "fresh", ignore_errors=True)
            self.site.add("fresh")
            self.site.run("rebuild", "demo", database="fresh", codes=(0, 4))
            wanted, held = self.site.tables("fresh"), self.site.tables("db")
            if wanted == held:
                return
            if time.monotonic() > end:
                raise AssertionError(f"missing {[row for row in wanted if row not in held][:1]}, "
                                     f"too much {[row for row in held if row not in wanted][:1]}")


def tells_what_breaks_and_what_is_mended(site):
    site.add()
    watch = Watch(site, formatted=False)
    assert watch.lines == [f"watching {site.site}/: 3 files, nothing found\n"], watch.lines
    site.write("a.html", "<a href=gone.html>x</a><p id=two>")
    watch.wait(lambda: len(watch.lines) == 4)
    site.write("a.html", "\n\n<a href=gone.html>x</a><p id=one>")  # a line moves: nothing to tell of that
    watch.wait(lambda: len(watch.lines) == 6)
    site.write("news/more.txt", "nothing that anybody asks for")
    time.sleep(0.3)
    site.write("gone.html", "")
    watch.wait(lambda: len(watch.lines) == 8)
    watch.end()
    watch.wait(lambda: len(watch.lines) == 9)
    assert watch.lines[1:] == [
        "site/a.html:1:9: error: gone.html is not there [missing-file]\n",
        "site/news/index.html:1:9: error: a.html has nothing named \"one\" (../a.html#one) [missing-fragment]\n",
        "now 2 errors in 2 places\n",
        "site/news/index.html:1:9: mended: a.html has nothing named \"one\" (../a.html#one) "
        "[missing-fragment]\n",
        "now 1 error in 1 place\n",
        "site/a.html:3:9: mended: gone.html is not there [missing-file]\n",
        "now nothing found\n",
        "watch ended\n"], watch.lines
    assert not watch.errors, watch.errors


def sees_how_editors_and_people_change_files(site):
    site.add()
    watch = Watch(site)

    def replaced():  # written beside and renamed
        (site.site / ".a.html.new").write_text("<a href=none.html>x</a>")
        (site.site / ".a.html.new").rename(site.site / "a.html")

    def moved_in():
        for name in ("deep/er/b.html", "c.html"):
            path = site.base / "away" / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text("<a href=nowhere.html>x</a>")
        (site.base / "away").rename(site.site / "in")

    def changed_in_it():
        site.write("in/deep/er/b.html", "<a href=elsewhere.html>x</a>")

    def moved_out():
        (site.site / "in").rename(site.base / "out")

    def changed_outside():
        (site.base / "out/c.html").write_text("<a href=ignored.html>")
        site.write("index.html", "<a href=a.html>a</a><a href=../out/c.html>o</a><a href=../new.html>n</a>"
                                 "<a href=linked/d.html>d</a><img src=picture.png>")

    def came_outside():
        (site.base / "new.html").write_text("")

    def linked():  # a folder that is a link: its pages are read when something leads there
        (site.base / "real").mkdir()
        (site.base / "real/d.html").write_text("<a href=x.html>x</a>")
        (site.base / "picture").write_text("")
        (site.site / "linked").symlink_to(site.base / "real")
        (site.site / "picture.png").symlink_to(site.base / "picture")

    def changed_behind_links():
        (site.base / "real/d.html").write_text("<a href=y.html>y</a>")
        (site.base / "picture").unlink()

    def flood():
        for i in range(3000):
            site.write(f"flood/{i % 50}/{i}.html", f"<a href=../{(i + 1) % 50}/{i + 1}.html>x</a>")

    def drained():
        shutil.rmtree(site.site / "flood")

    def configured():
        site.write("zvrsit.toml", "[rules]\nmissing-file = \"warning\"\n")

    def misconfigured():
        site.write("zvrsit.toml", "[rules]\nmissing-file = 3\n")
        watch.wait(lambda: any("zvrsit.toml:2" in line for line in watch.errors))
        (site.site / "zvrsit.toml").unlink()

    for step in (replaced, moved_in, changed_in_it, moved_out, changed_outside, came_outside, linked,
                 changed_behind_links, flood, drained, configured, misconfigured):
        step()
        try:
            watch.settle()
        except AssertionError as error:
            raise AssertionError(f"{step.__name__}: {error}") from None
    watch.holds_tables()
    watch.end(signal.SIGTERM)


def follows_links_on_the_way(site):
    """The folder of the site is a link, and so is a link to which a page leads."""
    def lead(name, to):
        (site.base / "next").symlink_to(to)
        (site.base / "next").rename(name)

    for name in ("one.html", "two.html"):
        (site.base / name).write_text(f"<a href=from-{name}>x</a>")
    lead(site.base / "current.html", "one.html")
    lead(site.site / "page.html", "../current.html")
    shutil.copytree(site.site, site.base / "second", symlinks=True)
    site.site.rename(site.base / "first")
    lead(site.site, "first")
    site.add()
    watch = Watch(site)
    (site.base / "second/a.html").write_text("<a href=second.html>x</a>")
    for name, to in ((site.base / "current.html", "two.html"), (site.site, "second"),
                     (site.base / "current.html", "one.html")):
        lead(name, to)
        watch.settle()
    site.write("a.html", "<a href=changed.html>x</a>")
    watch.settle()
    watch.holds_tables()
    watch.end()


def survives_an_overflow_of_the_queue(site):
    site.add()
    watch = Watch(site)
    watch.process.send_signal(signal.SIGSTOP)
    limit = int(pathlib.Path("/proc/sys/fs/inotify/max_queued_events").read_text())
    for i in range(limit):
        for name in ("x", "y"):  # events that are alike one after the other are one
            (site.site / name).write_text("")
    site.write("late/er/b.html", "<a href=nothing.html>x</a>")
    watch.process.send_signal(signal.SIGCONT)
    watch.settle()
    site.write("late/er/b.html", "<a href=other.html>x</a>")
    watch.settle()
    watch.end(signal.SIGHUP)


def shares_the_database(site):
    site.add()
    watch = Watch(site)
    for words in (("links", "demo"), ("rebuild", "demo"), ("update", "demo"), ("save", "demo", "a.html"),
                  ("mv", "demo", "a.html", "news/b.html"), ("rebuild", "demo", "--anew"),
                  ("site", "set", "demo", "--default-url", "b.html"), ("rebuild", "demo")):
        site.run(*words)
        if "set" in words:
            site.options = ["--default-url", "b.html"]
        site.write("news/c.html", f"<a href={words[0]}.html>x</a>")
        watch.settle()
    # While another process has the site, it waits.
    holder = subprocess.Popen([sys.executable, "-c", f"""
import fcntl, struct, time
file = open({str(site.base / 'db/lock')!r}, "r+")
fcntl.fcntl(file, 37, struct.pack("hhqqi", fcntl.F_WRLCK, 0, 1, 1, 0))
print(flush=True)
time.sleep(5)"""], stdout=subprocess.PIPE)
    holder.stdout.readline()
    site.write("news/c.html", "<a href=waited.html>x</a>")
    watch.settle()
    holder.wait()
    assert len([line for line in watch.errors if "in use" in line]) == 1, watch.errors
    watch.holds_tables()
    watch.end()
    watch = Watch(site)
    site.run("site", "rename", "demo", "other")
    site.write("a.html", "")
    assert watch.process.wait(PATIENCE) == 2, watch.errors


def ends_when_it_must(site):
    site.add()
    for database, options, code, words in (("db", ("--format", "csv"), 2, "watch prints"),
                                           ("none", (), 3, "no database")):
        done = subprocess.run([PROGRAM, "--db", database, "watch", "demo", *options], capture_output=True,
                              text=True, cwd=site.base)
        assert done.returncode == code and words in done.stderr, done
    watch = Watch(site, formatted=False)
    site.site.rename(site.base / "moved")  # a deployment: another folder takes the place
    time.sleep(0.3)
    shutil.copytree(site.base / "moved", site.site)
    site.write("a.html", "<a href=none.html>x</a><p id=one>")
    watch.wait(lambda: watch.lines[-1].startswith("now "))
    assert watch.lines[1:] == ["site/a.html:1:9: error: none.html is not there [missing-file]\n",
                               "now 1 error in 1 place\n"], watch.lines
    site.site.rename(site.base / "gone")
    assert watch.process.wait(PATIENCE) == 4 and "not there" in watch.errors[-1], watch.errors
    (site.base / "gone").rename(site.site)
    # Nobody reads any more.
    process = subprocess.Popen([PROGRAM, "--db", str(site.base / "db"), "watch", "demo"],
                               stdout=subprocess.PIPE, cwd=site.base)
    process.stdout.readline()
    process.stdout.close()
    assert process.wait(PATIENCE) == 0, process.returncode
    # Nor can what it prints be written any more: it says so, and drops no findings.
    limit = 1 << 20
    (site.base / "out").write_bytes(b" " * (limit - 500))
    with open(site.base / "out", "ab") as out:
        process = subprocess.Popen([PROGRAM, "--db", str(site.base / "db"), "watch", "demo"], stdout=out,
                                   stderr=subprocess.PIPE, text=True, cwd=site.base, restore_signals=False,
                                   preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
    time.sleep(0.5)
    site.write("a.html", "".join(f"<a href=none{i}.html>x</a>" for i in range(9)))
    assert process.wait(PATIENCE) == 4 and "cannot be written" in process.stderr.read(), process.returncode
    # A signal while it reads: nothing is left behind, and the database can be asked.
    for i in range(3000):
        site.write(f"many/{i}.html", f"<a href={i + 1}.html>x</a>" * 20)
    for delay in (0.02, 0.1, 0.3):
        watch = subprocess.Popen([PROGRAM, "--db", str(site.base / "db"), "watch", "demo"],
                                 stdout=subprocess.DEVNULL, cwd=site.base)
        time.sleep(delay)
        watch.send_signal(signal.SIGTERM)
        assert watch.wait(PATIENCE) in (0, -signal.SIGTERM), watch.returncode
        left = {entry.name for entry in (site.base / "db/demo").iterdir()}
        assert not left & {"new", "done"}, left
    site.run("update", "demo")


def says_what_to_set_when_the_system_watches_no_more(site):
    site.add()
    for i in range(40):
        (site.site / f"folder{i}").mkdir()
    set_limit = "echo 20 > /proc/sys/user/max_inotify_watches && exec \"$@\""
    wrap = ["unshare", "-U", "-r", "sh", "-c", set_limit, "-"]
    if subprocess.run([*wrap, "true"], capture_output=True).returncode != 0:
        print("this user makes no namespaces: the limit of watches is not tried")
        return
    done = subprocess.run([*wrap, PROGRAM, "--db", str(site.base / "db"), "watch", "demo"],
                          capture_output=True, text=True)
    assert done.returncode == 4 and "fs.inotify.max_user_watches" in done.stderr, done


def survives_a_checkout(site):
    def git(*words):
        subprocess.run(["git", "-c", "user.name=a", "-c", "user.email=a@example.org", *words], cwd=site.site,
                       check=True, capture_output=True)

    git("init", "-q", "-b", "main")
    for i in range(200):
        site.write(f"part{i % 9}/{i}.html", f"<a href=../part{(i + 1) % 9}/{i + 1}.html>x</a>")
    git("add", ".")
    git("commit", "-qm", "one")
    git("checkout", "-qb", "other")
    shutil.rmtree(site.site / "part3")
    for i in range(200, 300):
        site.write(f"new{i % 7}/{i}.html", f"<a href=../part3/{i}.html>x</a>")
    site.write("index.html", "<a href=new1/204.html>x</a>")
    git("add", ".")
    git("commit", "-qm", "two")
    site.add()
    watch = Watch(site)
    for branch in ("main", "other", "main"):
        git("checkout", "-q", branch)
        watch.settle()
    git("rm", "-rqf", ".")  # the home page too
    time.sleep(0.5)
    git("checkout", "-qf", "main")
    git("reset", "--hard", "-q")
    watch.settle()
    watch.holds_tables()
    watch.end()


NAMES = ["index.html", "a.html", "b.html", "B.html", "style.css", "pic.png", "news/index.html", "news/a.html",
         "news/deep/c.html", "old/index.html", "old/d.html"]


def random_page(rand):
    parts = []
    for _ in range(rand.randrange(6)):
        target = rand.choice(NAMES + ["news", "old/", "none.html", "/a.html", "b", "http://[bad", "%2Fx"])
        up = rand.choice(["", "", "../"])
        fragment = rand.choice(["", "", "#one", "#two"])
        parts.append(rand.choice([f"<a href='{up}{target}{fragment}'>x</a>", f"<img src='{up}pic.png'>",
                                  f"<link rel=stylesheet href='{up}style.css'>", "<p id=one>", "<p id=two>",
                                  f"<a href='{up}{target}' data-zvrsit-ignore>x</a>", "\n"]))
    return "".join(parts)


def lives_a_random_life(site):
    seed = int(os.environ.get("ZVRSIT_SEED", random.randrange(1 << 30)))
    rand = random.Random(seed)
    site.options = ["--fallback-extensions", "html"]
    site.add()
    watch = Watch(site)

    def step():
        name = rand.choice(NAMES)
        path = site.site / name
        what = rand.randrange(10)
        if what < 5:
            text = random_page(rand) if not name.endswith("css") else "a{background:url(pic.png#one)}"
            site.write(name, text)
        elif what < 7 and path.exists() and name != "index.html":
            path.unlink()
        elif what == 7 and path.exists() and name != "index.html":
            to = site.site / rand.choice(NAMES[1:])
            to.parent.mkdir(parents=True, exist_ok=True)
            path.rename(to)
        elif what == 8:
            folder = site.site / rand.choice(["news", "old", "news/deep"])
            (shutil.rmtree if folder.exists() else os.makedirs)(folder)
        elif (site.site / "news").exists() and not (site.site / "away").exists():
            (site.site / "news").rename(site.site / "away")
        elif (site.site / "away").exists() and not (site.site / "news").exists():
            (site.site / "away").rename(site.site / "news")

    try:
        for i in range(int(os.environ.get("ZVRSIT_LIVES", 60))):
            for _ in range(rand.choice([1, 1, 2, 5])):
                step()
                time.sleep(rand.choice([0, 0, 0.01, 0.04]))
            watch.settle()
            if i % 20 == 19:
                watch.holds_tables()
    except AssertionError as error:
        raise AssertionError(f"ZVRSIT_SEED={seed}, step {i}: {error}") from None
    watch.holds_tables()
    watch.end()


CASES = (tells_what_breaks_and_what_is_mended, sees_how_editors_and_people_change_files,
         follows_links_on_the_way, survives_an_overflow_of_the_queue, shares_the_database, ends_when_it_must,
         says_what_to_set_when_the_system_watches_no_more, survives_a_checkout, lives_a_random_life)


def main():
    faults = 0
    for case in CASES:
        if sys.argv[2:] and case.__name__ not in sys.argv[2:]:
            continue
        with tempfile.TemporaryDirectory() as folder:
            begin = time.monotonic()
            try:
                case(Site(folder))
                print(f"{case.__name__}: {time.monotonic() - begin:.1f} s")
            except AssertionError as error:
                print(f"{case.__name__}: {error}")
                faults += 1
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
