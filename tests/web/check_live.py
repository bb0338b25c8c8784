#!/usr/bin/env python3
"""Serves a site, and follows it in a browser while its files change.

Usage: check_serve.py PROGRAM EXAMPLE-SITE [LIMIT-MS]

A change shows within the limit of 200 ms after the write; builds that are slow need a wider one.
"""
import pathlib
import shutil
import socket
import sys
import tempfile
import threading
import time
import urllib.error
import urllib.parse
import urllib.request

from browser import Browser, Keys
from reports import Sites, expect
from served import IS_LIVE, Served, open_view, shown_after
from views import text_of

PROGRAM, EXAMPLE = sys.argv[1:3]
LIMIT = float(sys.argv[3]) if len(sys.argv) > 3 else 200
MARKS = "const marks = document.querySelector('zvrsit-marks').shadowRoot; "


def check_a_save_shows(browser, page):
    """At once, without loading the page anew; what the reader has chosen and typed stays."""
    before = page.read_text()
    browser.run("window.isSame = true")
    browser.go("#/findings?severity=error")
    field = browser.driver.find_element("css selector", "main input[type=search]")
    field.send_keys("img")
    errors = int(text_of(browser, ".totals .errors dd")[0])
    times = []
    for name in ("one", "two", "three"):
        times.append(shown_after(browser, ".card h3", f"img/{name}.gif", True,
                                 lambda: page.write_text(before + f'<img src="img/{name}.gif">')))
        expect("marked as new", [text for text in text_of(browser, ".card:has(.badge-new) h3") if name in text],
               [f"img/{name}.gif is not there"])
        assert "img/" + name in text_of(browser, "#said")[0], text_of(browser, "#said")
        expect("errors", text_of(browser, ".totals .errors dd"), [str(errors + 1)])
        times.append(shown_after(browser, ".card h3", f"img/{name}.gif", False, lambda: page.write_text(before)))
        expect("errors", text_of(browser, ".totals .errors dd"), [str(errors)])
    print("ms from the write to the view:", [round(ms) for ms in times])
    assert sorted(times)[len(times) // 2] < LIMIT, times
    browser.keys("/")
    expect("typed on", browser.run("return [document.activeElement.value, location.hash, window.isSame]"),
           ["img/", "#/findings?q=img%2F&severity=error", True])


def check_all_is_fetched(browser, folder):
    """What no event tells, links and new files, is there soon after; the place in the page stays."""
    (folder / "late.htm").write_text('<title>Late</title><a href="home.htm">x</a><a href="no/late.htm">x</a>')
    browser.go("#/file/home.htm")
    browser.run("scrollTo(0, 200)")
    browser.wait("return [...document.querySelectorAll('.link-row')].some((e) => e.textContent.includes('late.htm'))")
    expect("place", browser.run("return scrollY"), 200)
    browser.go("#/pages")
    assert "late.htm" in text_of(browser, "tbody th a"), text_of(browser, "tbody th a")
    (folder / "late.htm").unlink()
    browser.wait("return ![...document.querySelectorAll('tbody th a')].some((e) => e.textContent === 'late.htm')")


def check_editor(browser, folder):
    browser.go("#/findings?rule=wrong-case")
    address = browser.run("return document.querySelector('.position').getAttribute('href')")
    expect("editor", address, f"editor:{folder.resolve()}/home.htm:23:13")


def check_marks(browser, page):
    """The page itself has its broken references marked, and follows the site too."""
    before = page.read_text()
    page.write_text(before + '<p>At last<a id=marked href="no/such.htm">no such page</a></p>')
    browser.go("#/file/home.htm")
    browser.wait("return document.querySelector('main').textContent.includes('no/such.htm')")
    browser.driver.get(browser.run("return document.querySelector('.file-head a').href"))
    browser.wait(MARKS + "return marks.querySelectorAll('.badge').length >= 3")
    expect("box round the link", browser.run(MARKS + """
        const link = document.getElementById("marked").getBoundingClientRect();
        return [...marks.querySelectorAll(".box")].some((box) => {
          const { left, right, top, bottom } = box.getBoundingClientRect();
          return left <= link.left && right >= link.right && top <= link.top && bottom >= link.bottom &&
            right - left < link.width + 10;
        })"""), True)
    labels = browser.run(MARKS + "return [...marks.querySelectorAll('.badge')].map((b) => b.getAttribute('aria-label'))")
    assert "no/such.htm is not there" in labels, labels
    browser.run(MARKS + "window.isSame = true; marks.querySelector('.badge').focus()")
    assert "is not there" in browser.run(MARKS + "return marks.querySelector('.note:not([hidden])').textContent")
    browser.keys(Keys.ESCAPE)
    expect("note closed", browser.run(MARKS + "return marks.querySelector('.note').hidden"), True)
    count = browser.run(MARKS + "return marks.querySelectorAll('.badge').length")
    page.write_text(before)
    browser.wait(MARKS + f"return marks.querySelectorAll('.badge').length === {count - 1}")
    expect("bar", browser.run(MARKS + "return [marks.querySelector('.sum').textContent, window.isSame]"),
           [f"{count - 1} broken references", True])


def check_switch(browser):
    """Marks that are hidden stay so in the next page."""
    browser.run(MARKS + "marks.querySelector('.switch').click()")
    for _ in range(2):
        expect("hidden", browser.run(MARKS + "return [marks.querySelectorAll('.badge, .box').length, "
                                     "marks.querySelector('.switch').getAttribute('aria-checked')]"), [0, "false"])
        browser.driver.refresh()
        browser.wait("return document.querySelector('zvrsit-marks') !== null")
    browser.run(MARKS + "marks.querySelector('.switch').focus()")
    browser.keys(Keys.SPACE)
    assert browser.run(MARKS + "return marks.querySelectorAll('.badge').length") > 0
    expect("policy", browser.run("return window.violations.splice(0)"), [])


def check_site_is_closed(browser):
    """Without the cookie, the files of the site are nobody's."""
    try:
        urllib.request.urlopen(browser.run("return location.origin") + "/home.htm")
        raise AssertionError("the site is open to all")
    except urllib.error.HTTPError as answer:
        expect("answer", answer.code, 403)


class Between:
    """Passes on what a browser and the program say to each other, until it is cut."""

    def __init__(self, address):
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.there = f"127.0.0.1:{urllib.parse.urlsplit(address).port}"
        self.here = f"127.0.0.1:{self.listener.getsockname()[1]}"
        self.address = address.replace(self.there, self.here)
        self.open, self.is_cut = [], False
        threading.Thread(target=self.listen, daemon=True).start()

    def listen(self):
        while True:
            near = self.listener.accept()[0]
            if self.is_cut:
                near.close()
                continue
            far = socket.create_connection(("127.0.0.1", int(self.there.split(":")[1])))
            self.open += [near, far]
            for source, target in ((near, far), (far, near)):
                threading.Thread(target=self.pass_on, args=(source, target), daemon=True).start()

    def pass_on(self, source, target):
        try:
            while chunk := source.recv(65536):
                target.sendall(chunk.replace(self.here.encode(), self.there.encode()))
        except OSError:
            pass
        self.close(source, target)

    @staticmethod
    def close(*sockets):
        for one in sockets:
            try:
                one.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass  # closed already

    def cut(self, is_cut):
        self.is_cut = is_cut
        if is_cut:
            self.close(*self.open)


def check_lost(browser, address, page):
    """A connection that is lost is joined again, and what has changed meanwhile is told."""
    before = page.read_text()
    between = Between(address)
    open_view(browser, between.address)
    between.cut(True)
    browser.wait("return document.querySelector('.live-lost') !== null")
    page.write_text(before + '<img src="img/meanwhile.gif">')
    between.cut(False)
    browser.wait(IS_LIVE)
    browser.wait("return document.querySelector('main').textContent.includes('img/meanwhile.gif')")
    assert "1 new finding" in text_of(browser, ".live summary")[0], text_of(browser, ".live summary")
    browser.complaints()  # the browser tells of each attempt
    page.write_text(before)
    browser.wait("return !document.querySelector('main').textContent.includes('img/meanwhile.gif')")


def check_end(browser, served):
    """A program that ends says so, and is not asked again."""
    served.end()
    browser.wait("return document.querySelector('.live-ended') !== null")
    time.sleep(0.5)
    expect("the console", browser.complaints(), [])


def main():
    with tempfile.TemporaryDirectory(prefix="zvrsit-web-") as folder, Browser() as browser:
        sites = Sites(PROGRAM, folder)
        example = pathlib.Path(folder) / "site"
        shutil.copytree(EXAMPLE, example)
        sites.add("demo", example, "index.htm")
        browser.screen(1280)
        with Served(sites, "demo") as served:
            open_view(browser, served.address)
            check_a_save_shows(browser, example / "home.htm")
            check_all_is_fetched(browser, example)
            check_editor(browser, example)
            expect("the console", browser.complaints(), [])
            check_marks(browser, example / "home.htm")
            check_switch(browser)
            check_site_is_closed(browser)
            browser.complaints()  # of what the pages lack
            check_lost(browser, served.address, example / "home.htm")
            open_view(browser, served.address)
            check_end(browser, served)


main()
