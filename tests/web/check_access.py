#!/usr/bin/env python3
"""Holds each view of a report, and a site that is served, against the rules of axe-core: light, dark, and
on a narrow screen.

Usage: check_access.py PROGRAM EXAMPLE-SITE FOLDER

npm fetches axe-core into the folder, once. Where it cannot, the test is skipped.
"""
import pathlib
import shutil
import subprocess
import sys
import tarfile
import tempfile

from browser import Browser
from reports import Sites, expect
from served import Served, open_view

PROGRAM, EXAMPLE, KEPT = sys.argv[1:4]
SKIPPED = 77
ROUTES = ["findings", "findings?by=page&severity=error", "findings?q=nothing+has+this", "unused", "pages",
          "pages?kind=all&sort=-path", "hosts", "map", "map?layout=rings&files=all", "map?in=news",
          "file/home.htm", "file/img/missing.gif", "file/orphan.htm", "file/style/site.css",
          "url/mailto%3Aboats%40example.org", "file/none"]
SCREENS = [("light", 1280, {}), ("dark", 1280, {"dark": True}), ("narrow", 320, {"reduced": True})]


def fetch_axe(folder):
    """The text of axe-core, or None."""
    folder.mkdir(parents=True, exist_ok=True)
    packages = list(folder.glob("axe-core-*.tgz"))
    if not packages and shutil.which("npm"):
        subprocess.run(["npm", "pack", "--silent", "axe-core@4"], cwd=folder, stdin=subprocess.DEVNULL,
                       stdout=subprocess.DEVNULL, timeout=120)
        packages = list(folder.glob("axe-core-*.tgz"))
    if not packages:
        return None
    with tarfile.open(packages[0]) as package:
        return package.extractfile("package/axe.min.js").read().decode()


def violations(browser, part="document"):
    return browser.driver.execute_async_script("""
        const [done] = arguments;
        axe.run(""" + part + """,
          { runOnly: ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "best-practice"] }).then((result) =>
          done(result.violations.map((v) => [v.id, v.nodes.length, v.nodes[0].html.slice(0, 300)])));""")


def check_axe_itself(browser):
    """A picture without a text, and a text that is too pale, would be found."""
    browser.run("""const main = document.querySelector("main");
        const pale = main.appendChild(document.createElement("p"));
        pale.textContent = "pale";
        pale.style.color = "rgb(128 128 128 / 40%)";
        main.appendChild(document.createElement("img"));""")
    expect("what axe finds", {"image-alt", "color-contrast"} - {row[0] for row in violations(browser)}, set())


def check_screen(browser, report, name, width, how, axe):
    # High enough that nothing is left out for being out of sight.
    browser.screen(width, 6000, **how)
    browser.open(report)
    browser.run(axe)
    for route in ROUTES:
        browser.go("#/" + route)
        browser.run("document.querySelectorAll('details').forEach((d) => { d.open = true; })")
        expect(f"violations, {name}, {route}", violations(browser), [])
        wide, there = browser.run(
            "return [document.documentElement.scrollWidth, document.documentElement.clientWidth]")
        assert wide <= there, f"{route} is {wide} wide on a {name} screen of {there}"
    check_axe_itself(browser)


def check_served(browser, served, page, name, axe):
    """A change that is told, and a page with its marks."""
    open_view(browser, served.address)
    page.write_text(page.read_text() + f'<a href="no/{name}.htm">x</a>')
    browser.wait("return document.querySelector('.live summary') !== null")
    browser.run("document.querySelector('.live summary').click()")
    browser.run(axe)
    expect(f"violations, served, {name}", violations(browser), [])
    browser.go("#/file/home.htm")
    browser.driver.get(browser.run("return document.querySelector('.file-head a').href"))
    browser.wait("return document.querySelector('zvrsit-marks') !== null")
    browser.run("""const marks = document.querySelector('zvrsit-marks').shadowRoot;
        marks.querySelector('.badge:not([hidden])').focus(); marks.querySelector('.sum').click();""")
    browser.run(axe)
    expect(f"violations, marks, {name}", violations(browser, "document.querySelector('zvrsit-marks')"), [])


def main():
    axe = fetch_axe(pathlib.Path(KEPT))
    if axe is None:
        print("SKIPPED: npm does not get axe-core")
        return SKIPPED
    with tempfile.TemporaryDirectory(prefix="zvrsit-web-") as folder, Browser() as browser:
        example = pathlib.Path(folder) / "site"
        shutil.copytree(EXAMPLE, example)
        sites = Sites(PROGRAM, folder)
        report = sites.add("demo", example, "index.htm")
        for name, width, how in SCREENS:
            check_screen(browser, report, name, width, how, axe)
        with Served(sites, "demo") as served:
            for name, width, how in SCREENS:
                browser.screen(width, **how)
                check_served(browser, served, example / "home.htm", name, axe)
    return 0


sys.exit(main())
