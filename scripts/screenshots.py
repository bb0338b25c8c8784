#!/usr/bin/python3
"""Takes the pictures of the report that docs/ and README.md show:  scripts/screenshots.py [PROGRAM]

The example site is reported twice, with a change between, and opened in Chromium. The system's Python
runs this: its package python3-selenium drives the browser.
"""
import base64
import pathlib
import shutil
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/web"))

from browser import Browser  # noqa: E402, it lies with the tests
from reports import Sites  # noqa: E402

# Name, route, width, height, dark.
PICTURES = [("report", "#/findings", 1100, 820, False),
            ("report-dark", "#/file/home.htm", 1100, 820, True),
            ("report-map", "#/map", 1100, 900, False),
            ("report-narrow", "#/findings", 380, 820, False)]
LARGEST = 100000
SHOWN_FOLDER = "/home/ann/harbour/"


def example(folder):
    """The report of the example site after a page has been mended, and another one spoilt."""
    site = folder / "harbour"
    shutil.copytree(ROOT / "examples/site", site)
    page = site / "prices.htm"
    page.write_text(page.read_text() + '<a href="tariff.htm">Last year</a>\n')
    sites = Sites(sys.argv[1] if len(sys.argv) > 1 else ROOT / "build/release/cli/zvrsit", folder)
    sites.add("harbour", site, "index.htm")
    page.write_text(page.read_text().replace("tariff.htm", "prices.htm") + '<img src="img/pier.jpg" alt="">\n')
    sites.run("update", "harbour")
    return sites.report("harbour")


def main():
    with tempfile.TemporaryDirectory(prefix="zvrsit-web-") as folder, Browser() as browser:
        report = example(pathlib.Path(folder))
        browser.command("Emulation.setScrollbarsHidden", hidden=True)
        for name, route, width, height, dark in PICTURES:
            browser.screen(width, height, dark=dark, reduced=True)
            browser.open(report, route)
            browser.run("document.querySelector('.about').firstChild.data = arguments[0] + ' '", SHOWN_FOLDER)
            picture = base64.b64decode(browser.command("Page.captureScreenshot", format="png")["data"])
            print(f"docs/{name}.png: {len(picture)} bytes")
            if len(picture) > LARGEST:
                sys.exit(f"more than {LARGEST}")
            (ROOT / f"docs/{name}.png").write_bytes(picture)


main()
