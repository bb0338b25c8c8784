#!/usr/bin/env python3
"""Runs the program's external checks against a server that does what real ones do wrong.

Usage: check_external.py PROGRAM
"""
import collections
import json
import os
import pathlib
import pty
import re
import signal
import socket
import sqlite3
import subprocess
import sys
import tempfile
import time
import types

sys.dont_write_bytecode = True
from misbehaving_server import BOMB_SIZE, Server

PROGRAM = sys.argv[1]
QUICK = ["--retry-delay", "50ms", "--timeout", "1500ms"]
OWN = ["--private-network"]


def expect(what, seen, wanted):
    assert seen == wanted, f"{what}:\n  {seen}\n  {wanted}"


class Site:
    """A folder with one page of links, and a database of its own."""

    def __init__(self, top, server):
        self.folder = pathlib.Path(tempfile.mkdtemp(dir=top))
        self.server = server

    def links(self, urls):
        rows = (f'<a href="{self.server.address if re.match("/(?!/)", url) else ""}{url}">x</a>\n'
                for url in urls)
        self.folder.joinpath("site").mkdir(exist_ok=True)
        self.folder.joinpath("site/index.html").write_text("".join(rows), "utf-8")

    def start(self, *words, env=None, stdout=subprocess.PIPE, stderr=subprocess.PIPE):
        environment = {name: value for name, value in os.environ.items()
                       if not name.lower().endswith("_proxy")}
        environment.update(env or {})
        return subprocess.Popen([PROGRAM, "--db", self.folder / "db", *words], env=environment,
                                stdout=stdout, stderr=stderr)

    def run(self, *words, code=None, env=None):
        process = self.start(*words, env=env)
        out, err = (text.decode() for text in process.communicate(timeout=60))
        if code is not None:
            assert process.returncode == code, (words, process.returncode, out, err)
        self.err = err
        assert "secret" not in out + err, "a password is shown"
        assert not re.search(r"[\x00-\x09\x0b-\x1f\x7f]", out + err), "control characters are shown"
        return out

    def check(self, *words, **more):
        """Rule and message by target, of all findings."""
        out = self.run("check", self.folder / "site", "--external", "--format", "json", *words, **more)
        found = {}
        for finding in json.loads(out)["findings"]:
            target = finding["target"].replace(self.server.address, "")
            found[target] = (finding["rule"], finding["message"].replace(self.server.address, ""))
        return found


BROKEN, UNSURE, MOVED, FRAGMENT = "external-broken", "external-unsure", "external-moved", "missing-fragment"
# What a link leads to, how often it is asked at least and at most, and what is found: nothing, or a
# rule and a part of its message. All are asked in one run. libcurl itself asks again when a connection
# that was used before breaks off.
ROWS = [
    ("/ok", 1, 99, None),
    ("/ok?a b=\u00e9", 0, 0, None),  # encoded
    ("/404", 2, 99, (BROKEN, "answers 404 (not found)")),
    ("/410", 2, 2, (BROKEN, "answers 410 (gone for good)")),
    ("/418", 2, 2, (BROKEN, "answers 418")),
    ("/501", 2, 2, (BROKEN, "answers 501")),
    ("/500", 4, 4, (UNSURE, "answers 500 (server error)")),
    ("/204", 1, 1, None),
    ("/head-405", 2, 2, None),
    ("/head-404", 2, 2, None),
    ("/head-500", 2, 2, None),
    ("/head-dropped", 2, 12, None),
    ("/moved", 1, 9, (MOVED, "/moved has moved for good to /ok?1")),
    ("/moved-308", 1, 1, (MOVED, "to /ok")),
    ("/moved-to-place", 1, 1, (MOVED, "to /old-page#here")),
    ("/for-now", 1, 9, None),
    ("/moved-then-for-now", 1, 1, (MOVED, "to /for-now")),
    ("/for-now-then-moved", 1, 1, None),
    ("/moved-to-nothing", 1, 1, (BROKEN, "answers 404 (not found), after a redirect to /404")),
    ("/moved-to-nobody", 1, 1, (BROKEN, "nobody knows, after a redirect to http://nosuch.invalid/y")),
    ("/loop", 11, 11, (BROKEN, "redirects without end")),
    ("/account", 1, 1, (UNSURE, "log in: /users/sign_in?next=/account")),
    ("/to-cataloging", 1, 1, None),
    ("/to-ftp", 1, 1, (BROKEN, "redirects to what is no http or https URL")),
    ("/to-file", 1, 1, (BROKEN, "redirects to what is no http or https URL")),
    ("/to-password", 1, 1, (MOVED, "for good to /ok")),
    ("/to-mark", 1, 1, (MOVED, "to /%1B]0;x")),
    ("/wait-a-second", 2, 2, None),
    ("/wait-until", 2, 2, None),
    ("/wait-forbidden", 2, 2, None),
    ("/later", 3, 4, None),
    ("/dropped-once", 2, 12, None),
    ("/silent", 3, 3, (UNSURE, "did not answer in time")),
    ("/endless", 2, 2, None),
    ("/stalled", 2, 2, None),
    ("/truncated", 2, 2, None),
    ("/endless-headers", 1, 2, (BROKEN, "header lines are too long")),
    ("/long-header", 1, 2, (BROKEN, "answers what is no HTTP")),
    ("/garbage", 1, 2, (BROKEN, "answers what is no HTTP")),
    ("/dropped", 4, 40, (UNSURE, "broke off the connection")),
    ("/cookie", 1, 2, None),
    ("/locked", 2, 3, (BROKEN, "answers 401 (a login is asked for)")),
    ("/private/x", 0, 0, None),  # by robots.txt
    ("/private/open", 1, 1, None),
    ("http://nosuch.invalid/x", 0, 0, (BROKEN, "has a host that nobody knows")),
    ("http://127.0.0.1:9/x", 0, 0, (BROKEN, "has a server that cannot be reached")),
    ("mailto:ann@example.org", 0, 0, None),
]


def check_rows(top, server):
    site = Site(top, server)
    site.links([row[0] for row in ROWS])
    with open(site.folder / "site/index.html", "a", encoding="ascii") as page:
        page.write(f'<a href="{server.address}/404?ignored" data-zvrsit-ignore>x</a>')
    found = site.check(*OWN, *QUICK, code=1)
    expect("ignored in the page", server.asked("/404?ignored"), 0)
    for path, least, most, wanted in ROWS:
        rule, part = wanted or ("", "")
        seen = found.pop(path, ("", ""))
        assert seen[0] == rule and part in seen[1], (path, seen, wanted)
        assert least <= server.asked(path) <= most, (path, server.asked(path))
    expect("no others", found, {})
    assert server.seen["HEAD", "/ok?a%20b=%C3%A9"] == 1, server.seen
    assert "1 external URL: each was not asked, as robots.txt forbids it" in site.err, site.err
    assert "is this machine connected?" not in site.err, site.err
    first, second = server.times["/wait-a-second"]
    assert second - first > 0.95, "Retry-After is kept"
    assert server.busiest <= 4, server.busiest

    # What is kept is not asked again, and answers the same.
    again = dict(server.seen)
    expect("kept", site.check(*OWN, *QUICK, "--offline"), site.check(*OWN, *QUICK, "--accept", "200..299"))
    expect("nothing asked twice", [path for path, *_ in ROWS if ("HEAD", path) in again and
                                   server.seen["HEAD", path] != again["HEAD", path]], [])
    expect("good by choice", site.check(*OWN, "--accept", "200..299,400..499", "--offline").keys() & {"/404", "/410"},
           set())
    server.forget()
    site.check(*OWN, *QUICK, "--broken-age", "0s", "--ignore-target", "**/moved*")
    assert server.asked("/410") == 2 and server.asked("/ok") == 0, server.seen


def check_fragments(top, server):
    site = Site(top, server)
    good = ["/page#here", "/page#readme", "/page#old%20name", "/page#caf%C3%A9", "/page#top", "/page#",
            "/page#:~:text=x", "/page#!/route", "/zipped#here", "/old-page#caf%C3%A9", "/paper#page=3"]
    bad = {"/page#gone": FRAGMENT, "/zipped#gone": FRAGMENT, "/page#hidden": FRAGMENT,
           "/moved#x": FRAGMENT, "/truncated#x": UNSURE, "/bomb#x": UNSURE, "/404#x": BROKEN,
           "/moved-to-place#x": MOVED, "/no-gzip#x": UNSURE}
    site.links(good + list(bad))
    begin = server.seen.total()
    found = site.check(*OWN, *QUICK)
    assert not any("page" in target for target in found), found
    assert server.seen["GET", "/page"] == 0 and server.seen["HEAD", "/page"] == 1, server.seen
    found = site.check(*OWN, *QUICK, "--external-fragments")
    expect("fragments", {target.split("#")[0]: rule for target, (rule, _) in found.items()},
           {target.split("#")[0]: rule for target, rule in bad.items()})
    assert "has nothing named \"gone\"" in found["/page#gone"][1], found
    assert server.seen["GET", "/page"] == 1, "fragments of one page are looked for at once"
    kept = server.seen.total()
    expect("kept", site.check(*OWN, *QUICK, "--external-fragments"), found)
    expect("nothing asked", server.seen.total() - kept, 0)
    assert begin < kept


def check_refusals(top, _):
    """A server that says again and again that it is asked too much is left alone."""
    for path, most in ("/wait-for-ever", 6), ("/429", 21):
        server = Server()
        site = Site(top, server)
        site.links([f"{path}?{i}" for i in range(40)])
        found = site.check(*OWN, *QUICK, "--no-robots", code=0)
        expect("all are told", (len(found), {rule for rule, _ in found.values()}), (40, {UNSURE}))
        assert 3 <= server.seen.total() <= most, server.seen
        messages = collections.Counter(message.split(" ", 1)[1] for _, message in found.values())
        assert messages["was not asked, as its server has too many requests (429)"] > 30, messages
        first = server.seen.total()
        site.check(*OWN, *QUICK, "--no-robots")
        assert first < server.seen.total(), "those that were not asked are asked the next time"


def check_memory(top, server):
    """A page of 200 MB in 1 MB is not taken whole."""
    site = Site(top, server)
    site.links(["/bomb#x"])
    process = site.start("check", site.folder / "site", "--external", "--external-fragments", *OWN)
    process.stdout.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = status
    assert usage.ru_maxrss * 1024 < BOMB_SIZE, usage.ru_maxrss


def check_secrets(top, server, certificate):
    server.forget()
    plain = server.address.removeprefix("http://")
    site = Site(top, server)
    site.links([f"http://bob:secret@{plain}/locked", f"http://bob:secret@{plain}/404",
                f"http://bob:wrong@{plain}/locked?2", "/agent"])
    expect("another name for robots.txt", site.check(*OWN, *QUICK, "--user-agent", "other/9"), {})
    expect("nothing asked", server.seen.total(), 1)
    expect("passwords", set(site.check(*OWN, *QUICK, "--user-agent", "zvrsit/9 (test)")), {"/404", "/locked?2"})
    site.check(*OWN, *QUICK, "--no-robots", "--broken-age", "0s")
    site.run("check", site.folder / "site", "--external", *OWN, *QUICK)
    site.links([f"http://bob:secret@{plain}/404", f"ws:@//bob:secret@{plain}/x"])
    site.run("add", "demo", site.folder / "site", code=0)
    site.run("rebuild", "demo", code=0)
    for words in ["urls"], ["links"], ["links", "--format", "json"], ["export", "--to", "jsonl"]:
        assert plain in site.run(words[0], "demo", *words[1:], code=0), words
    site.run("site", "delete", "demo", code=0)
    for file in site.folder.joinpath("db").rglob("*"):
        assert not file.is_file() or b"secret" not in file.read_bytes(), file
    netrc = site.folder / "netrc"
    netrc.write_text("machine 127.0.0.1 login bob password secret\n")
    netrc.chmod(0o600)
    site.links(["/locked"])
    expect("netrc", site.check(*OWN, "--netrc", netrc), {})

    secure = Server(certificate)
    site = Site(top, secure)
    site.links(["/ok", "//127.0.0.1:%d/ok?2" % secure.port, secure.address.upper() + "/ok"])
    found = site.check(*OWN, *QUICK)
    assert "no connection that can be trusted" in found["/ok"][1], found
    expect("both", set(found), {"/ok", "/ok?2"})
    expect("trusted", site.check(*OWN, "--ca-file", certificate, "--unsure-age", "0s"), {})


def check_http2(top, certificate):
    """The server knows no older version, and its log has a number for each connection."""
    files = pathlib.Path(top, "served")
    files.mkdir()
    for number in range(60):
        files.joinpath(f"{number}.html").write_text(f"<p id=a{number}>")
    with socket.socket() as free:
        free.bind(("127.0.0.1", 0))
        port = free.getsockname()[1]
    log = open(os.path.join(top, "http2.log"), "w+")
    server = subprocess.Popen(["/usr/sbin/nghttpd", "-v", "-d", files, "-a", "127.0.0.1", str(port),
                               certificate, certificate], stdout=log, stderr=log)
    try:
        while "listen" not in open(log.name).read():
            assert server.poll() is None, "no server"
            time.sleep(0.01)
        site = Site(top, types.SimpleNamespace(address=f"https://127.0.0.1:{port}"))
        site.links([f"/{number}.html#a{number}" for number in range(60)] + ["/gone.html#x", "/1.html#x"])
        found = site.check(*OWN, "--ca-file", certificate, "--external-fragments")
        expect("over HTTP/2", {target: rule for target, (rule, _) in found.items()},
               {"/gone.html": BROKEN, "/1.html#x": FRAGMENT})
    finally:
        server.terminate()
        server.wait()
    log.seek(0)
    expect("one connection for all", set(re.findall(r"\[id=(\d+)\]", log.read())), {"1"})
    log.close()


def check_own_network(top, server):
    """Nothing of it is asked, by whatever name, unless the site lies there or an option says so."""
    site = Site(top, server)
    port = server.port
    hosts = ["127.0.0.1", "localhost", "2130706433", "0x7f.1", "127.1", "[::1]", "[::ffff:127.0.0.1]",
             "0.0.0.0", "[::]", "[::ffff:7f00:1]"]
    site.links([f"http://{host}:{port}/ok" for host in hosts])
    server.forget()
    found = site.check()
    expect("asked", server.seen.total(), 0)
    expect("rules", {rule for rule, _ in found.values()}, {UNSURE})
    assert len(found) >= 5, found
    site.links(["http://nosuch.invalid/1", "http://other.invalid/2"])
    expect("nothing is reached", {rule for rule, _ in site.check("--broken-age", "0s").values()}, {BROKEN})
    assert "is this machine connected?" in site.err, site.err
    # A proxy may lie there, but is not asked for what lies there.
    proxy = {"http_proxy": server.address}
    own = [f"http://{host}:{port}/404" for host in ("127.0.0.2", "127.0.0.3.", "localhost", "localhost.")]
    site.links([*own, "http://public.example/ok", "http://public.example/404", "http://no.proxy.invalid/x",
                "https://public.example/"])
    found = site.check(*QUICK, env={**proxy, "https_proxy": server.address,
                                    "no_proxy": "other.example, .proxy.invalid"})
    expect("by proxy", {target: rule for target, (rule, _) in found.items()},
           {**{url: UNSURE for url in own}, "http://public.example/404": BROKEN,
            "http://no.proxy.invalid/x": BROKEN, "https://public.example/": BROKEN})
    assert "(the proxy answers 407)" in found["https://public.example/"][1], found
    site.links(["/ok", "/404"])
    expect("the site lies there", set(site.check("--base-url", server.address + "/docs/")), {"/404"})


def check_broken_off(top, server):
    site = Site(top, server)
    count = 120
    site.links([f"/some-time?{i}" for i in range(count)])
    server.forget()
    for ending, code in (signal.SIGKILL, -9), (signal.SIGINT, 130):
        asked = server.seen.total()
        process = site.start("check", site.folder / "site", "--external", *OWN, "--per-server", "2")
        while server.seen.total() < asked + 50:
            time.sleep(0.01)
        process.send_signal(ending)
        process.communicate()
        expect("ended", process.returncode, code)
    expect("the rest", site.check(*OWN), {})
    total = sum(number for (_, path), number in server.seen.items() if "some" in path)
    # Killed: what half a second brought is asked again; interrupted: what was on its way.
    assert count <= total <= count + 45, total


def check_kept_file(top, server):
    site = Site(top, server)
    site.links(["/ok", "/404"])
    site.run("add", "demo", site.folder / "site", code=0)
    site.run("rebuild", "demo", code=0)
    database = site.folder / "db/demo/external.sqlite"
    expect("a site", set(site.check(*OWN)), {"/404"})
    rows = sqlite3.connect(database).execute("SELECT count(*) FROM answers").fetchone()
    expect("kept with the site", rows, (2,))
    for damage in b"", b"no database" * 999, database.read_bytes()[:5000]:
        database.write_bytes(damage)
        expect("damaged", set(site.check(*OWN)), {"/404"})
        expect("mended", set(site.check(*OWN, "--offline")), {"/404"})
    answer = json.loads(site.run("urls", "demo", "--check", *OWN, "--format", "json", code=1))
    expect("urls", [(row["url"].replace(server.address, ""), row["state"], row["status"]) for row in answer],
           [("/ok", "ok", 200), ("/404", "broken", 404)])
    text = site.run("urls", "demo", "--check", *OWN, code=1)
    expect("urls in text", text.replace(server.address, "").splitlines(),
           ["ok      /ok", "broken  /404 answers 404 (not found)"])
    site.run("site", "rename", "demo", "other", code=0)
    expect("renamed", [path.parent.name for path in site.folder.glob("db/*/external.sqlite")], ["other"])
    site.run("site", "delete", "other", code=0)
    expect("deleted", list(site.folder.glob("db/*/")), [])
    database = site.folder / "db/external.sqlite"
    site.check(*OWN)
    assert database.exists()
    site.run("add", "external.sqlite", site.folder / "site", code=2)


def check_moved_urls(top, server):
    site = Site(top, server)
    moved = server.address + "/moved"
    page = site.folder / "site/index.html"
    page.parent.mkdir()
    before = f'<base href="{server.address}/x/"><a href="{moved}#a">1</a><a title=x href=../moved>2</a>' \
             f'<a href="{server.address}/404">3</a><style>p {{ background: url({moved}) }}</style>' \
             f'<a href="{server.address}/for-now">4</a>'
    page.write_text(before, "utf-8")
    site.run("add", "demo", site.folder / "site", "--top", page, code=0)
    site.run("rebuild", "demo", code=0)
    site.run("fix", "demo", "--moved", code=0)
    expect("never asked", page.read_text("utf-8"), before)
    site.run("urls", "demo", "--check", *OWN, code=1)
    site.run("fix", "demo", "--moved", code=0)
    expect("moved", page.read_text("utf-8").replace(server.address, ""),
           '<base href="/x/"><a href="/ok?1#a">1</a><a title=x href=/ok?1>2</a>'
           '<a href="/404">3</a><style>p { background: url(/ok?1) }</style><a href="/for-now">4</a>')


def check_configuration(top, server):
    site = Site(top, server)
    site.links(["/404", "/moved"])
    config = site.folder / "site/zvrsit.toml"
    config.write_text('[external]\ncheck = true\nprivate-network = true\naccept = "404"\nretries = 0\n'
                      'stall-timeout = 2.5\n[rules]\nexternal-moved = "error"\n')
    out = site.run("check", site.folder / "site", "--config", config, "--format", "jsonl", "--accept", "200", code=1)
    expect("configured", [(row["severity"], row["rule"]) for row in map(json.loads, out.splitlines())],
           [("error", BROKEN), ("error", MOVED)])
    site.run("check", site.folder / "site", "--config", config, "--no-external", code=0)
    for line, word in (("fragmens = true", "fragments"), ("ok-age = \"7 weeks\"", "no time"),
                       ("parallel = 0", "from 1 to 1000"), ("offline = 1", "true nor false")):
        config.write_text("[external]\n" + line + "\n")
        site.run("check", site.folder / "site", code=2)
        assert word in site.err, site.err
    for words in (["--accept", "20"], ["--timeout", "-1"], ["--per-server", "x"]):
        site.run("check", site.folder / "site", "--no-config", "--external", *words, code=2)
    for words in (["--offline"], ["--external-fragments"], ["--accept", "200"]):
        site.run("check", site.folder / "site", "--no-config", *words, code=2)
        assert f"{words[0]} wants --external" in site.err, site.err
        site.run("urls", "nosuch", *words, code=2)
        assert f"{words[0]} wants --check" in site.err, site.err
    for option in "--ca-file", "--netrc":
        site.run("check", site.folder / "site", "--no-config", "--external", option, "nosuch", code=4)
        assert "nosuch: this file cannot be read" in site.err, site.err


def check_terminal(top, server):
    site = Site(top, server)

    def shown(*words, **env):
        terminal, side = pty.openpty()
        process = site.start("check", site.folder / "site", *words, env={"NO_COLOR": "1", "TERM": "xterm", **env},
                             stdout=side, stderr=side)
        os.close(side)
        seen = b""
        try:
            while part := os.read(terminal, 4096):
                seen += part
        except OSError:  # the program has ended
            pass
        os.close(terminal)
        process.wait()
        return seen.decode()

    site.links(["x%1By.html", "x%C2%9By.html", "x%7Fy.html", "x%0Dy.html", "x%E2%80%AEy.html"])
    for form in "text", "json", "jsonl", "csv", "junit", "sarif", "github", "markdown":
        seen = shown("--quiet", "--format", form)
        assert not re.search("[\x00-\x09\x0b\x0c\x0e-\x1f\x7f-\x9f\u202e]|\r(?!\r?\n)", seen), (form, seen)
    site.links(["/silent"])
    slow = ["--external", *OWN, "--timeout", "800ms", "--retries", "0"]
    seen = shown(*slow)
    assert "] " in seen and "0 of 1 URLs" in seen and "\x1b[K" in seen, seen
    seen = shown(*slow, "--unsure-age", "0", TERM="dumb")
    assert "\x1b" not in seen and "0 of 1 URLs" not in seen and "did not answer" in seen, seen


def main():
    with tempfile.TemporaryDirectory() as top:
        certificate = os.path.join(top, "certificate.pem")
        subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256",
                        "-nodes", "-days", "2", "-subj", "/CN=127.0.0.1", "-addext",
                        "subjectAltName=IP:127.0.0.1", "-keyout", certificate, "-out", certificate + "2"],
                       check=True, capture_output=True)
        with open(certificate, "a", encoding="ascii") as both:
            both.write(pathlib.Path(certificate + "2").read_text())
        server = Server()
        for part in (check_rows, check_fragments, check_refusals, check_memory, check_own_network,
                     check_broken_off, check_kept_file, check_moved_urls, check_configuration, check_terminal):
            begin = time.monotonic()
            server.forget()
            part(top, server)
            print(f"{part.__name__}: {time.monotonic() - begin:.1f} s", flush=True)
        check_secrets(top, server, certificate)
        check_http2(top, certificate)


main()
