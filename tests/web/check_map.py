#!/usr/bin/env python3
"""Uses the map of a report as a reader does: areas, rings, links, keyboard, list, saved pictures.

Usage: check_map.py PROGRAM EXAMPLE-SITE

With ZVRSIT_LARGE_SITE=FOLDER that site is drawn too, and how long it takes is held against its limit.
"""
import base64
import gzip
import json
import os
import pathlib
import re
import shutil
import sys
import tempfile
import xml.etree.ElementTree as xml
import zlib

from browser import Browser, Keys
from reports import Sites, expect
from views import act, areas, files_in, leaves, number_in

PROGRAM, EXAMPLE = sys.argv[1:3]
HOSTILE = ["<img src=x onerror=alert(1)>.html", "a\u202egpj.html", "b & \"q\".html"]
MOST_ELEMENTS = 800
DRAW_MS = 200


def overlap(one, other):
    sides = [min(one[i] + one[i + 2], other[i] + other[i + 2]) - max(one[i], other[i]) for i in (0, 1)]
    return max(0, sides[0]) * max(0, sides[1])


def check_boxes(found, where):
    """Leaves share no pixel; each lies wholly within every folder that it touches."""
    whole = [area for area in found if area["look"] == "open"]
    parts = leaves(found)
    for i, area in enumerate(parts):
        size = area["box"][2] * area["box"][3]
        assert size > 0, (where, area)
        for other in parts[:i]:
            assert overlap(area["box"], other["box"]) < 1 + 0.02 * size, (where, area, other)
        for folder in whole:
            shared = overlap(area["box"], folder["box"])
            assert shared < 1 + 0.02 * size or shared > 0.98 * size - 1, (where, area, folder)


def check_areas(browser, report, answer, sites, folder):
    """Areas are in proportion, hold every file once, and say what `files` and `check` say."""
    names = {row["path"] for row in answer}
    for route in ("#/map?files=all", "#/map?files=all&area=links", "#/map"):
        browser.open(report, route)
        found = areas(browser)
        check_boxes(found, route)
        shown = {area["name"] for area in leaves(found) if area["look"] != "folded"}
        assert shown <= names, shown - names
        if "all" in route:
            expect("files", sum(map(files_in, leaves(found))), len(names))
    browser.open(report)
    browser.go("#/map")
    pages = [area for area in leaves(areas(browser)) if area["look"] == "page" and "/" not in area["name"]]
    shares = [area["box"][2] * area["box"][3] / (folder / area["name"]).stat().st_size for area in pages]
    assert len(pages) > 8 and max(shares) < 1.03 * min(shares), dict(zip((p["name"] for p in pages), shares))
    by_file = {}
    for row in sites.answer("broken", "demo", code=1)["findings"]:
        for file in {place["file"] for place in row["places"]}:
            by_file[file] = by_file.get(file, 0) + 1
    for area in pages:
        if area["name"] != "orphan.htm":
            expect(f"findings in {area['name']}", number_in(area, "findings in it"),
                   by_file.get(area["name"], 0) or by_file.get(str(folder / area["name"]), 0))
    expect("nothing to complain of", browser.complaints(), [])


def arcs(browser):
    return browser.run("return document.querySelectorAll('.map-arc:not(.map-legend *)').length")


def check_links(browser, report, sites, folder):
    """What is pointed at shows the links of `links`, once for each other file."""
    browser.open(report, "#/map?files=all")
    inside = lambda path: path.removeprefix(str(folder) + "/")
    shown = {area["name"] for area in leaves(areas(browser))}
    for name in ("home.htm", "style/site.css"):
        others = {(side, inside(row[key]))
                  for side, key in (("--to", "from"), ("--from", "to"))
                  for row in sites.answer("links", "demo", side, folder / name)}
        wanted = sum(other in shown and other != name for _, other in others)
        act(browser, name, "pointerover")
        expect(f"arcs of {name}", arcs(browser), wanted)
    expect("what it is", browser.run("return document.querySelector('.map-name').textContent"), "style/site.css")


def check_rings(browser, report):
    """The home page in the middle, and further out what is further away."""
    browser.open(report, "#/map?layout=rings")
    found = leaves(areas(browser))
    browser.go("#/map")
    expect("files", sum(map(files_in, found)), sum(map(files_in, leaves(areas(browser)))))
    home = next(area for area in found if area["name"] == "index.htm")
    centre = [home["box"][0] + home["box"][2] / 2, home["box"][1] + home["box"][3] / 2]
    radii = {}
    for area in found:
        depth = number_in(area, "from the home page")
        far = ((area["point"][0] - centre[0]) ** 2 + (area["point"][1] - centre[1]) ** 2) ** 0.5
        radii.setdefault(1e9 if depth is None else depth, set()).add(round(far))
    assert len(radii) > 3 and all(len(each) == 1 for depth, each in radii.items() if depth), radii
    inner = [min(radii[depth]) for depth in sorted(radii) if depth]
    expect("further out", inner, sorted(set(inner)))


def check_keyboard(browser, report):
    browser.open(report)
    browser.go("#/map")
    expect("one stop of the Tab key", sum(area["isStop"] for area in areas(browser)), 1)
    browser.run("document.querySelector('.map-area').focus()")
    seen = set()
    for key in [Keys.RIGHT, Keys.DOWN, Keys.LEFT, Keys.UP, Keys.END, Keys.HOME] * 2:
        browser.keys(key)
        found = areas(browser)
        focused = [area["name"] for area in found if area["hasFocus"] and area["isStop"]]
        expect("one stop of the Tab key", sum(area["isStop"] for area in found), 1)
        assert len(focused) == 1, focused
        seen.add(focused[0])
    assert len(seen) >= 4, seen
    browser.run("[...document.querySelectorAll('.map-open')].find((a) => a.ariaLabel.startsWith('boats/')).focus()")
    browser.keys(Keys.ENTER)
    way = lambda: browser.run("return document.querySelector('.map-way [aria-current]').textContent")
    expect("in the folder", way(), "boats/")
    found = areas(browser)
    assert found[0]["hasFocus"] and all(area["name"].startswith("boats/") for area in leaves(found)), found
    assert any(area["look"] == "elsewhere" for area in found), found
    browser.wait("return location.hash.includes('in=boats')")
    browser.keys(Keys.ESCAPE)
    expect("up again", [area["name"] for area in areas(browser) if area["hasFocus"]], ["boats/"])
    act(browser, "boats/alder.htm", "click")
    browser.wait("return location.hash === '#/file/boats/alder.htm'")
    browser.run("history.back()")
    browser.wait("return document.querySelector('.map-area') !== null")


def check_list(browser, report):
    browser.open(report, "#/map?files=all&in=news")
    browser.run("document.querySelector('.map-list').open = true")
    browser.wait("return document.querySelector('.map-list tbody') !== null")
    rows = lambda: browser.run("return [...document.querySelectorAll('.map-list th[scope=row]')].map((h) => h.textContent)")
    expect("parts", sorted("news/" + name for name in rows()), sorted(a["name"] for a in leaves(areas(browser))))
    browser.run("document.querySelector('.map-way button').click()")
    assert "boats/" in rows(), rows()


def check_contrast(browser, report):
    """Names on what they lie on 4.5, edges of what is wrong 3."""
    for dark in (False, True):
        browser.screen(1280, dark=dark)
        browser.open(report, "#/map?files=all")
        looks = browser.run("""const fills = {};
            for (const look of ["open", "folded", "page", "sheet", "image", "script", "media", "other", "elsewhere"]) {
              const probe = document.querySelector(".map-shapes").appendChild(document.createElementNS(
                "http://www.w3.org/2000/svg", "rect"));
              probe.setAttribute("class", "map-area map-" + look);
              fills[look] = getComputedStyle(probe).fill;
            }
            const of = (selector, what) => getComputedStyle(document.querySelector(selector))[what];
            return [fills, of(".map-labels text", "fill"), of(".map-edge-error", "stroke"),
              [of(".map-badge", "fill"), of(".map-badge-count", "fill")]];""")
        fills, text, edge, badge = looks
        for look, fill in fills.items():
            assert contrast(fill, text) >= 4.5, (dark, look, contrast(fill, text))
            assert contrast(fill, edge) >= 3, (dark, look, contrast(fill, edge))
        assert contrast(*badge) >= 4.5, (dark, badge)
    browser.screen(1280)


def contrast(one, other):
    def light(colour):
        parts = [int(part) / 255 for part in re.findall(r"\d+", colour)[:3]]
        linear = [part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in parts]
        return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]
    darker, lighter = sorted((light(one), light(other)))
    return (lighter + 0.05) / (darker + 0.05)


def saved(browser, button):
    """What the button would put into the folder of downloads."""
    name, data = browser.driver.execute_async_script("""const [text, done] = arguments;
        const make = URL.createObjectURL;
        let last = null;
        URL.createObjectURL = (blob) => { last = blob; return make.call(URL, blob); };
        HTMLAnchorElement.prototype.click = function () {
          URL.createObjectURL = make;
          const reader = new FileReader();
          reader.onload = () => done([this.download, reader.result.split(",")[1]]);
          reader.readAsDataURL(last);
        };
        [...document.querySelectorAll(".map-save button")].find((b) => b.textContent === text).click();""", button)
    return name, base64.b64decode(data)


def check_saved(browser, report):
    """Both pictures stand alone, and hold every area; names are text in them."""
    for route in ("#/map", "#/map?layout=rings"):
        browser.open(report, route)
        found = areas(browser)
        name, picture = saved(browser, "Save SVG")
        expect("name", name, "wide.svg")
        root = xml.fromstring(picture)
        tags = {element.tag.split("}")[1] for element in root.iter()}
        assert tags <= {"svg", "defs", "pattern", "marker", "g", "rect", "path", "circle", "text", "title"}, tags
        titles = [element.text.split(", ")[0] for element in root.iter("{http://www.w3.org/2000/svg}title")]
        expect("titles", sorted(titles), sorted(area["name"] for area in found))
        assert not [e for e in root.iter() if {"class", "style", "onclick", "tabindex"} & set(e.attrib)]
        fills = {element.get("fill") for element in root.iter() if element.get("fill")}
        assert len(fills) > 3 and not [fill for fill in fills if "var" in fill], fills
        name, picture = saved(browser, "Save PNG")
        assert name == "wide.png" and picture[1:4] == b"PNG" and len(picture) > 10000, (name, len(picture))
    expect("nothing to complain of", browser.complaints(), [])


def write_wide(folder):
    """Folders and pages in numbers that have to be folded."""
    pages = [*HOSTILE, *(f"flat/{i}.html" for i in range(1200)), *(f"many/{i}/{j}.html" for i in range(150) for j in "ab"),
             "/".join("deep" for _ in range(30)) + "/end.html"]
    for name in pages:
        path = folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(f'<a href="/index.html">x</a><a href="{zlib.crc32(name.encode()) % 997 + 1}.html">x</a>')
    links = "".join(f'<a href="{name}">x</a>' for name in pages[3:])
    (folder / "index.html").write_text(links)


def check_wide(browser, report):
    """Everything is somewhere, few elements draw it, and folders unfold into pages."""
    browser.open(report)
    for route in ("#/map", "#/map?layout=rings", "#/map?in=flat", "#/map?in=many", "#/map?in=deep/deep/deep"):
        browser.go(route)
        elements = browser.run("return document.querySelectorAll('.map-svg *').length")
        assert elements < MOST_ELEMENTS, (route, elements)
        if "rings" not in route:
            check_boxes(areas(browser), route)
    browser.go("#/map")
    whole = sum(map(files_in, leaves(areas(browser))))
    while folded := [area for area in leaves(areas(browser)) if area["look"] == "folded"]:
        largest = max(folded, key=files_in)
        act(browser, largest["name"], "click")
        expect(f"files in {largest['name']}", sum(map(files_in, leaves(areas(browser)))), files_in(largest))
        act(browser, leaves(areas(browser))[0]["name"], "pointerover")
        assert arcs(browser) > 0, largest
    assert whole > 1500 and browser.run("return document.querySelectorAll('.map-way li').length") > 2
    browser.screen(360)
    for route in ("#/map", "#/map?layout=rings"):
        browser.go(route)
        wide, there = browser.run("return [document.documentElement.scrollWidth, document.documentElement.clientWidth]")
        assert wide <= there, (route, wide, there)
    browser.screen(1280)
    expect("elements made of names", browser.run("return document.querySelectorAll('main img, main [onerror]').length"), 0)
    expect("nothing to complain of", browser.complaints(), [])


def check_small(browser, report):
    """A site with one file has a map, and so has one without a home page."""
    for home in (0, -1):
        browser.open(with_home(report, home))
        for route in ("#/map?layout=rings", "#/map?files=all"):
            browser.go(route)
            expect(route, [area["name"] for area in areas(browser)], ["alone.html"])
    expect("nothing to complain of", browser.complaints(), [])


def with_home(report, home):
    """The report with that number of the home page."""
    page = report.read_text()
    block = re.search(r'(<script[^>]*id="data"[^>]*>)([^<]*)', page)
    data = json.loads(gzip.decompress(base64.b64decode(block[2])))
    data["site"]["home"] = home
    other = report.with_name("other.html")
    other.write_text(page.replace(block[2], base64.b64encode(json.dumps(data).encode()).decode()))
    return other


def check_large(browser, report):
    browser.open(report, "#/pages")
    for route in ("#/map", "#/map?layout=rings", "#/map?files=all&area=links"):
        browser.go("#/pages")
        took, elements = browser.driver.execute_async_script("""const [route, done] = arguments;
            const begin = performance.now();
            addEventListener("hashchange", () => requestAnimationFrame(() => setTimeout(() =>
              done([performance.now() - begin, document.querySelectorAll(".map-svg *").length]))), { once: true });
            location.hash = route;""", route)
        print(f"{route}: {took:.0f} ms, {elements} elements")
        assert took < DRAW_MS and elements < MOST_ELEMENTS, (route, took, elements)


def main():
    with tempfile.TemporaryDirectory(prefix="zvrsit-web-") as top, Browser() as browser:
        top = pathlib.Path(top).resolve()
        sites = Sites(PROGRAM, top)
        example = top / "site"
        shutil.copytree(EXAMPLE, example)
        report = sites.add("demo", example, "index.htm")
        browser.screen(1280)
        files = sites.answer("graph", "demo", "--all-files")["nodes"]
        inside = [{"path": node["name"]} for node in files if node["kind"] in ("page", "file", "missing")]
        check_areas(browser, report, inside, sites, example)
        check_links(browser, report, sites, example)
        check_rings(browser, report)
        check_keyboard(browser, report)
        check_list(browser, report)
        check_contrast(browser, report)
        write_wide(top / "wide")
        report = sites.add("wide", top / "wide", "index.html")
        check_saved(browser, report)
        check_wide(browser, report)
        (top / "one").mkdir()
        (top / "one" / "alone.html").write_text("alone")
        check_small(browser, sites.add("one", top / "one", "alone.html"))
        if large := os.environ.get("ZVRSIT_LARGE_SITE"):
            check_large(browser, sites.add("large", large, "index.html"))


main()
