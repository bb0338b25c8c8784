#!/usr/bin/env python3
"""Asks `zvrsit serve` as browsers do, and as nobody should; and looks at it in a browser, where there is one.

Usage: check_serve.py PROGRAM EXAMPLE-SITE
"""
import gzip
import http.client
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import urllib.parse

sys.dont_write_bytecode = True
PROGRAM, EXAMPLE = os.path.abspath(sys.argv[1]), sys.argv[2]
EDITOR = "editor://open?file={path}&line={line}&column={column}"
FAULTS = []


def expect(have, want, what):
    if have != want:
        FAULTS.append(f"{what}: {have!r}, not {want!r}")


class Served:
    def __init__(self, folder, *options):
        self.base = pathlib.Path(folder)
        self.site = self.base / "site"
        shutil.copytree(EXAMPLE, self.site)
        (self.base / "secret.html").write_text("outside")
        (self.base / "outer").mkdir()
        (self.base / "outer/secret.html").write_text("outside")
        (self.site / "out").symlink_to(self.base / "outer")
        (self.site / ".git").mkdir()
        (self.site / ".git/config").write_text("outside")
        (self.site / "zvrsit.toml").write_text("")
        self.command = [PROGRAM, "--db", str(self.base / "db")]
        subprocess.run([*self.command, "add", "demo", str(self.site), "--top", str(self.site / "index.htm")],
                       check=True, capture_output=True)
        self.process = subprocess.Popen([*self.command, "serve", "demo", *options], stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, text=True)
        self.address = self.process.stdout.readline().strip()
        parts = urllib.parse.urlsplit(self.address)
        self.port, self.root = parts.port, parts.path

    def ask(self, path, method="GET", port=None, host=None, **headers):
        connection = http.client.HTTPConnection("127.0.0.1", port or self.port, timeout=20)
        connection.putrequest(method, path, skip_host=True)
        connection.putheader("Host", host or f"127.0.0.1:{port or self.port}")
        for name, value in headers.items():
            connection.putheader(name, value)
        connection.endheaders()
        answer = connection.getresponse()
        body = answer.read()
        connection.close()
        return answer, body

    def data(self):
        return json.loads(gzip.decompress(self.ask(self.root + "data")[1]))

    def enter(self):
        """The port and the cookie of the site itself."""
        parts = urllib.parse.urlsplit(self.data()["siteAddress"])
        for to, place in (("/home.htm", "/home.htm"), ("//x.example/", "/"), ("/%5Cx.example", "/%5Cx.example"),
                          ("", "/"), ("https://x.example", "/"), ("/a?b", "/a")):
            answer, _ = self.ask(parts.path + to, port=parts.port)
            expect((answer.status, answer.headers["Location"]), (303, place), "the way to a file " + to)
        cookie = answer.headers["Set-Cookie"]
        expect("HttpOnly" in cookie and "SameSite=Strict" in cookie, True, "the cookie")
        return parts.port, cookie.split(";")[0]


def check_view(served):
    answer, page = served.ask(served.root)
    expect(answer.status, 200, "the view")
    for name, value in (("X-Content-Type-Options", "nosniff"), ("Cache-Control", "no-store"),
                        ("Referrer-Policy", "no-referrer"), ("X-Frame-Options", "DENY")):
        expect(answer.headers[name], value, name)
    expect(b"connect-src 'self'" in page, True, "the policy")
    report = json.loads(subprocess.run([*served.command, "broken", "demo", "--format", "json"],
                                       capture_output=True, text=True).stdout)
    data = served.data()
    expect(data["totals"]["errors"], report["errors"], "errors")
    expect(data["live"], True, "alive")
    wrong = "/" + "0" * (len(served.root) - 2) + "/"
    for path, method, host, status in (
            ("/", "GET", None, 404), (wrong, "GET", None, 404), (wrong + "data", "GET", None, 404),
            (served.root[:-1], "GET", None, 404), (served.root + "../", "GET", None, 404),
            (served.root + "x", "GET", None, 404), (served.root, "HEAD", None, 200),
            (served.root, "POST", None, 405), (served.root, "PUT", None, 405), (served.root, "DELETE", None, 405),
            (served.root, "GET", "x.example", 421), (served.root, "GET", f"x.example:{served.port}", 421),
            (served.root, "GET", f"localhost:{served.port}", 200), (served.root, "GET", "127.0.0.1", 421)):
        answer, body = served.ask(path, method, host=host)
        expect(answer.status, status, f"{method} {path} {host}")
        expect(method == "HEAD" and len(body) > 0, False, "a body after HEAD")
    # Only this machine is listened to.
    listening = subprocess.run(["ss", "-ltnH"], capture_output=True, text=True).stdout if shutil.which("ss") else ""
    for line in listening.splitlines():
        if f":{served.port} " in line:
            expect(f"127.0.0.1:{served.port}" in line, True, "the loopback: " + line)


def check_site(served):
    port, cookie = served.enter()
    answer, page = served.ask("/home.htm", port=port, Cookie=cookie)
    text = (served.site / "home.htm").read_bytes()
    expect((answer.status, answer.headers["Content-Type"]), (200, "text/html"), "a page")
    expect(page.startswith(text) and page[len(text):].count(b"<script") == 2, True, "the page as it is, with its marks")
    expect(served.ask("/img/logo.png", port=port, Cookie=cookie)[1], (served.site / "img/logo.png").read_bytes(),
           "a picture")
    marks = json.loads(served.ask("/.zvrsit/marks?page=home.htm", port=port, Cookie=cookie)[1])
    expect("img/missing.gif" in [place[2] for finding in marks["findings"] for place in finding["places"]], True,
           "the marks of a page")
    for path, status in (
            ("/", 200), ("/boats", 301), ("/boats/", 200), ("/nothing.htm", 404), ("/../secret.html", 404),
            ("/%2e%2e/secret.html", 404), ("/..%2fsecret.html", 404), ("/boats/../../secret.html", 404),
            ("/out/secret.html", 404), ("/.git/config", 404), ("/zvrsit.toml", 404), ("//secret.html", 404),
            ("/home.htm%00", 404), ("/..%5csecret.html", 404), ("/%", 404), ("/.zvrsit/other", 404),
            ("/" + str(served.site / "home.htm"), 404)):
        answer, body = served.ask(path, port=port, Cookie=cookie)
        expect(answer.status, status, path)
        expect(b"outside" in body, False, path)
    for wrong in ("", "x=1", cookie[:-1], cookie + "0", cookie.split("=")[0] + "="):
        for path in ("/home.htm", "/.zvrsit/marks?page=/home.htm", "/.zvrsit/events"):
            expect(served.ask(path, port=port, Cookie=wrong)[0].status, 403, f"{path} with {wrong!r}")
    expect(served.ask("/home.htm", port=port, host="x.example", Cookie=cookie)[0].status, 421, "another name")
    whole = page + served.ask("/.zvrsit/overlay.js", port=port, Cookie=cookie)[1] + json.dumps(marks).encode()
    expect(served.root.strip("/").encode() in whole, False, "the secret of the view in the site")


def check_events(served):
    """An event comes within 200 ms, also beside many slow and silent clients."""
    silent = [socket.create_connection(("127.0.0.1", served.port)) for _ in range(100)]
    for one in silent[:50]:
        one.sendall(b"GET / HT")
    watcher = socket.create_connection(("127.0.0.1", served.port), timeout=20)
    watcher.sendall(f"GET {served.root}events HTTP/1.1\r\nHost: 127.0.0.1:{served.port}\r\n\r\n".encode())
    stream = watcher.makefile("rb")

    def next_event(name):
        while line := stream.readline():
            if line.strip() == b"event: " + name:
                return json.loads(stream.readline().split(b":", 1)[1])
        raise AssertionError("the events have ended")

    next_event(b"hello")
    times = []
    for i in range(5):
        page = served.site / "home.htm"
        page.write_bytes(page.read_bytes() + f"<a href='no{i}.htm'>".encode())
        begin = time.monotonic()
        told = next_event(b"change")
        times.append(time.monotonic() - begin)
        expect([finding["target"] for finding in told["broke"]], [f"no{i}.htm"], "what broke")
        expect(served.ask(served.root)[0].status, 200, "the view beside slow clients")
        time.sleep(0.1)
    print("events after", ", ".join(f"{1000 * t:.0f} ms" for t in times))
    for one in silent:
        one.close()
    return watcher


def check_browser(served):
    from browser import Browser
    with Browser() as browser:
        browser.driver.get(served.address)
        browser.wait("return document.querySelector('main h2') !== null")
        browser.run("window.isTheSame = true")
        page = served.site / "home.htm"
        page.write_bytes(page.read_bytes() + b"<a href='inbrowser.htm'>")
        begin = time.monotonic()
        browser.wait("return document.body.textContent.includes('inbrowser.htm')")
        print(f"in the browser after {1000 * (time.monotonic() - begin):.0f} ms")
        browser.wait("return document.querySelector('main').textContent.includes('inbrowser.htm')")
        expect(browser.run("return window.isTheSame"), True, "it was not loaded again")
        expect(browser.complaints(), [], "complaints")
        errors = browser.run("return document.querySelector('.totals .errors dd').textContent")
        expect(int(errors), served.data()["totals"]["errors"], "errors in the head")
        href = browser.run("return document.querySelector('a.position').href")
        expect(href.startswith("editor://open?file=") and str(served.site) in urllib.parse.unquote(href), True, href)
        browser.go("#/file/home.htm")
        link = browser.run("return document.querySelector('.file-head a').href")
        browser.driver.get(link)
        browser.wait("return document.querySelector('zvrsit-marks')?.shadowRoot.querySelector('.box') !== null")
        expect(urllib.parse.urlsplit(browser.run("return location.href")).path, "/home.htm", "the page itself")
        expect(browser.run("return document.referrer + document.cookie"), "", "what the page can read")
        browser.run("document.querySelector('zvrsit-marks').shadowRoot.querySelector('.switch').click()")
        expect(browser.run("return document.querySelector('zvrsit-marks').shadowRoot.querySelectorAll('.box').length"),
               0, "marks that are off")


def main():
    with tempfile.TemporaryDirectory() as folder:
        served = Served(folder, "--editor", EDITOR)
        try:
            check_view(served)
            check_site(served)
            watcher = check_events(served)
            if shutil.which("chromium") and shutil.which("chromedriver"):
                check_browser(served)
            begin = time.monotonic()
            served.process.send_signal(signal.SIGINT)
            expect(served.process.wait(20), 0, "the end")
            expect(time.monotonic() - begin < 5, True, "a quick end")
            watcher.close()
        finally:
            served.process.kill()
            if FAULTS:
                print(served.process.stderr.read())
        for editor in ("javascript:{path}", "no", "x:y", " javascript:{path}"):
            done = subprocess.run([*served.command, "serve", "demo", "--editor", editor], capture_output=True, text=True)
            expect(done.returncode, 2, "the editor " + editor)
    for fault in FAULTS:
        print(fault)
    return 1 if FAULTS else 0


if __name__ == "__main__":
    sys.exit(main())
