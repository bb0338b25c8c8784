#!/usr/bin/python3
"""Takes the pictures of the report that README.md and docs/ show:  scripts/screenshots.py [PROGRAM]

The example site is reported twice, with a change between, and opened in Chromium. The system's Python
runs this: its package python3-selenium drives the browser.
"""
import base64
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/web"))

from browser import Browser  # noqa: E402, it lies with the tests

PROGRAM = sys.argv[1] if len(sys.argv) > 1 else ROOT / "build/release/cli/zvrsit"
# Name, route, width, height, dark.
PICTURES = [("report", "#/findings", 1100, 820, False),
            ("report-map", "#/map", 1100, 960, False),
            ("report-page", "#/file/home.htm", 1100, 900, True),
            ("report-narrow", "#/findings", 380, 820, False)]
LARGEST = 100000
SHOWN_FOLDER = "/home/ann/harbour/"


def run(folder, *words):
    subprocess.run([PROGRAM, *words], env=os.environ | {"XDG_DATA_HOME": folder}, check=True,
                   stdout=subprocess.DEVNULL)


def example(folder):
    """The report of the example site after a page has been mended, and another one spoilt."""
    site = folder / "harbour"
    report = folder / "harbour.html"
    shutil.copytree(ROOT / "examples/site", site)
    page = site / "prices.htm"
    page.write_text(page.read_text() + '<a href="tariff.htm">Last year</a>\n')
    run(folder, "add", "harbour", site, "--top", site / "index.htm")
    run(folder, "rebuild", "harbour")
    # A name that every font has.
    run(folder, "mv", "harbour", next(site.glob("boats/[!a-z]*.htm")), site / "boats/minato.htm")
    run(folder, "report", "harbour", "-o", report)
    page.write_text(page.read_text().replace("tariff", "prices") + '<img src="img/pier.jpg" alt="">\n')
    run(folder, "update", "harbour")
    run(folder, "report", "harbour", "-o", report)
    return report


def take(browser, name):
    browser.run("document.querySelector('.about').firstChild.data = arguments[0] + ' ';"
                "document.documentElement.style.scrollbarGutter = 'auto';", SHOWN_FOLDER)
    shot = browser.command("Page.captureScreenshot", format="webp", quality=85)
    picture = base64.b64decode(shot["data"])
    print(f"docs/{name}.webp: {len(picture)} bytes")
    if len(picture) > LARGEST:
        sys.exit(f"more than {LARGEST}")
    (ROOT / f"docs/{name}.webp").write_bytes(picture)


def main():
    with tempfile.TemporaryDirectory(prefix="zvrsit-web-") as folder, Browser() as browser:
        report = example(pathlib.Path(folder))
        browser.command("Emulation.setScrollbarsHidden", hidden=True)
        for name, route, width, height, dark in PICTURES:
            browser.screen(width, height, dark=dark, reduced=True)
            browser.open(report, route)
            take(browser, name)


main()
