#!/usr/bin/env python3
"""Opens a site as a report and as it is served, clicks through every view, and holds what is shown against
the answers of the program.

Usage: check_trees.py PROGRAM FOLDER HOME-PAGE LIMIT-MS

A change of the site that is served shows within the limit. Without the folder the test is skipped.
"""
import pathlib
import re
import shutil
import sys
import tempfile

from selenium.common.exceptions import StaleElementReferenceException

from browser import Browser
from reports import Sites, expect, path_below
from served import Served, open_view, shown_after
from views import (act, areas, check_quiet, choose, count_line, files_in, leaves, press, section_links,
                   show_all_links, text_of, type_search)

PROGRAM, FOLDER, HOME, LIMIT = sys.argv[1:5]
SKIPPED = 77
SEARCHES = ["cgi", "HOME prices", "img/ not", "jquery index.html", "whatsnew library/", "nothing has this"]


class Tree:
    """A copy of the folder as a site, and what the program answers of it."""

    def __init__(self, sites, folder):
        self.sites, self.folder = sites, folder
        shutil.copytree(FOLDER, folder, symlinks=True)
        self.report = sites.add("tree", folder, HOME)
        self.check = sites.answer("check", code=1, cwd=folder)
        self.rows = self.check["findings"]
        self.files = sites.answer("files", "tree")
        self.urls = {row["name"] for row in sites.answer("urls", "tree")}
        self.unused = sorted(row["name"] for row in sites.answer("unused", "tree"))
        self.titles = {row["name"]: row["title"] for row in self.files}
        self.linked = {}

    def links(self, side, name):
        """The other ends of the links of a file, each once."""
        key = (side, name)
        if key not in self.linked:
            other = "from" if side == "--to" else "to"
            rows = self.sites.answer("links", "tree", side, self.folder / name)
            self.linked[key] = sorted({path_below(row[other], self.folder) for row in rows})
        return self.linked[key]

    def found(self, is_wanted):
        """Findings with the places that are wanted, and how many these are."""
        counts = [sum(is_wanted(row, place) for place in row["places"]) for row in self.rows]
        return [row for row, count in zip(self.rows, counts) if count], sum(counts)


def number(text):
    return int(text.split()[0].replace(",", ""))


def click(browser, selector, at=0):
    """Also where new data of `serve` put another element in its place meanwhile."""
    for attempt in range(3):
        try:
            element = browser.driver.find_elements("css selector", selector)[at]
            browser.run("arguments[0].scrollIntoView({ block: 'center' })", element)
            return element.click()
        except StaleElementReferenceException:
            if attempt == 2:
                raise


def click_tab(browser, name):
    click(browser, f"nav a[href='#/{name}']")
    browser.wait("return document.querySelector('nav a[aria-current=page]')?.getAttribute('href') === arguments[0]",
                 "#/" + name)


def show_whole_list(browser):
    browser.run("dispatchEvent(new Event('beforeprint'))")


def check_count_line(browser, what, tree, is_wanted):
    rows, places = tree.found(is_wanted)
    of_all = "" if len(rows) == len(tree.rows) else f" of {len(tree.rows)}"
    expect(what, count_line(browser).replace(",", ""),
           f"{len(rows)}{of_all} findings in {places} place" + "s" * (places != 1))
    return rows


def check_tabs(browser, tree):
    """Each view opens by its tab, whose number is that of the program's answer."""
    totals = dict(zip(text_of(browser, ".totals dt"), text_of(browser, ".totals dd")))
    for word in ("errors", "warnings", "pages", "files", "links"):
        expect(word, number(totals[word]), tree.check[word])
    orphans = {row["target"] for row in tree.rows if row["rule"] == "orphan-page"}
    wanted = {"findings": len(tree.rows), "pages": tree.check["pages"], "unused": len(orphans | set(tree.unused))}
    for tab in browser.run("return [...document.querySelectorAll('nav a')].map((a) => a.hash.slice(2))"):
        click_tab(browser, tab)
        expect(f"headings of {tab}", len(text_of(browser, "main h2")), 1)
        counts = text_of(browser, "nav a[aria-current=page] .tab-count")
        if tab in wanted:
            expect(tab, number(counts[0]), wanted[tab])
        elif tab == "hosts":
            expect(tab, [number(count_line(browser))], [number(counts[0])])
    check_quiet(browser, "the tabs")


def check_findings(browser, tree):
    click_tab(browser, "findings")
    check_count_line(browser, "all", tree, lambda row, place: True)
    rules = dict(chip.rsplit(" ", 1) for chip in text_of(browser, ".chips[aria-label=Rule] .chip"))
    names = sorted({row["rule"] for row in tree.rows})
    expect("rules", rules, {name: str(sum(row["rule"] == name for row in tree.rows)) for name in names})
    for key, values in (("rule", names), ("severity", ["error", "warning"])):
        for value in values:
            for _ in range(2):  # pressed again, it takes all
                click(browser, f".chip[data-value={value}]")
                pressed = browser.run("return document.querySelector('.chip[aria-pressed=true]') !== null")
                check_count_line(browser, value, tree, lambda row, place: not pressed or row[key] == value)
    check_quiet(browser, "the choices")


def check_search(browser, tree):
    def has(words, row, place):
        own = " ".join([row["rule"], row["target"], row["message"], row["suggestion"] or "",
                        *(each["reference"] or "" for each in row["places"])]).lower()
        file = (place["file"] + " " + (tree.titles.get(place["file"]) or "")).lower()
        return all(word in own or word in file for word in words)

    found = 0
    for text in SEARCHES:
        type_search(browser, text)
        rows = check_count_line(browser, text, tree, lambda row, place: has(text.lower().split(), row, place))
        show_whole_list(browser)
        shown = sorted(title.split(" “")[0] for title in text_of(browser, ".card h3"))
        expect(f"found by {text}", shown, sorted(row["message"] for row in rows))
        found += len(rows) > 0
    assert found >= 2, found
    type_search(browser, "")


def check_folders(browser, tree):
    """A folder by its places and its pages; what is chosen stands in the address, and a reload keeps it."""
    options = browser.run("""return [...document.querySelectorAll("main .field")]
        .find((field) => field.textContent.startsWith("Folder")).querySelector("select").options.length;""")
    assert options > 2, options
    names = {place["file"].rsplit("/", 1)[0] + "/" for row in tree.rows for place in row["places"]
             if "/" in place["file"]}
    for name in sorted(names)[:3]:
        choose(browser, "Folder", name)
        rows = check_count_line(browser, name, tree, lambda row, place: place["file"].startswith(name))
    press(browser, "By page")
    pages = {place["file"] for row in rows for place in row["places"] if place["file"].startswith(name)}
    browser.wait("return location.hash.includes('by=page') && location.hash.includes('folder=')")
    for _ in range(2):
        show_whole_list(browser)
        expect(f"pages of {name}", len(text_of(browser, ".card h3")), len(pages))
        browser.driver.refresh()
        browser.wait("return document.querySelector('.card') !== null")
    check_quiet(browser, "the folders")


def check_tables(browser, tree):
    """Sorted by a click on a head, and turned round by another; filtered; searched."""
    click_tab(browser, "unused")
    choose(browser, "Show", "unused files")
    show_whole_list(browser)
    expect("unused", sorted(text_of(browser, "tbody th a")), tree.unused)
    click_tab(browser, "pages")
    sizes = {row["name"]: row["size"] for row in tree.files if row["exists"]}
    for turned in (True, False):
        click(browser, "thead th[data-key=size] button")
        show_whole_list(browser)
        paths = text_of(browser, "tbody th a:first-of-type")
        expect("pages by size", [sizes[path] for path in paths],
               sorted((sizes[path] for path in paths), reverse=turned))
        expect("pages", len(set(paths)), tree.check["pages"])
    wanted = {path for path in paths if "index" in path.lower() or "index" in (tree.titles[path] or "").lower()}
    type_search(browser, "INDEX")
    show_whole_list(browser)
    expect("searched", set(text_of(browser, "tbody th a")), wanted)
    check_quiet(browser, "the tables")


def check_hosts(browser, tree):
    """A host opens, and shows its URLs; all of them are those of the program that have a host."""
    click_tab(browser, "hosts")
    click(browser, "thead th[data-key=urls] button")
    show_whole_list(browser)
    numbers = browser.run("return [...document.querySelectorAll('tbody tr')].map((row) => row.cells[2].textContent)")
    expect("URLs", sum(map(number, numbers)), sum(re.match(r"(\w+:)?//[^/]", url) is not None for url in tree.urls))
    click(browser, "tbody summary")
    browser.wait("return document.querySelectorAll('tbody li').length > 0")
    show_all_links(browser, "tbody details")
    urls = text_of(browser, "tbody li a")
    expect("URLs of a host", len(urls), number(numbers[0]))
    assert set(urls) <= tree.urls, set(urls) - tree.urls
    click(browser, "tbody li a")
    browser.wait("return document.querySelector('.file-head') !== null")
    expect("links to a URL", len(section_links(browser, "Links to it")) > 0, True)
    check_quiet(browser, "the hosts")


def check_file(browser, tree, name, is_there):
    """Links in and out are those of `links`; the way from the home page is made of links."""
    browser.wait("return document.querySelector('.file-head')?.textContent.includes(arguments[0])", name)
    show_all_links(browser, "main")
    expect(f"links to {name}", section_links(browser, "Links to it"), tree.links("--to", name))
    if not is_there:
        return
    expect(f"links from {name}", section_links(browser, "Links from it"), tree.links("--from", name))
    way = text_of(browser, ".way li")
    for here, there in zip(way, way[1:]):
        assert there in tree.links("--from", here), (here, there)


def check_files(browser, tree):
    """What a table, a finding and a page lead to by a click."""
    for kind in ("pages", "style sheets", "images"):
        click_tab(browser, "pages")
        choose(browser, "Show", kind)
        click(browser, "thead th[data-key=in] button")
        name = text_of(browser, "tbody th a")[0]
        click(browser, "tbody th a")
        check_file(browser, tree, name, True)
    click(browser, ".way a")
    check_file(browser, tree, HOME, True)
    click_tab(browser, "findings")
    click(browser, ".chip[data-value=missing-file]")
    name = text_of(browser, ".card h3 a")[0]
    click(browser, ".card h3 a")
    check_file(browser, tree, name, False)
    check_quiet(browser, "the files")


def check_map(browser, tree):
    """It holds every file once, also when folders are opened, and leads to a page."""
    click_tab(browser, "map")
    click(browser, ".choice button[data-value=all]")
    for layout in ("rings", "areas"):
        click(browser, f".choice button[data-value={layout}]")
        expect(layout, sum(map(files_in, leaves(areas(browser)))), len(tree.files))
    while folded := [area for area in leaves(areas(browser)) if area["look"] == "folded"]:
        largest = max(folded, key=files_in)
        act(browser, largest["name"], "click")
        expect(f"files in {largest['name']}", sum(map(files_in, leaves(areas(browser)))), files_in(largest))
    part = leaves(areas(browser))[0]
    act(browser, part["name"], "click")
    check_file(browser, tree, part["name"], part["look"] != "missing")
    check_quiet(browser, "the map")


def check_save(browser, tree):
    """What a save breaks shows soon, and goes when it is taken back."""
    page = tree.folder / HOME
    before = page.read_text()
    click_tab(browser, "findings")
    errors = number(text_of(browser, ".totals .errors dd")[0])
    times = []
    for name in ("img/one.gif", "img/two.gif"):
        for is_there in (True, False):
            text = before + f'<img src="{name}">' if is_there else before
            times.append(shown_after(browser, ".card h3", name, is_there, lambda: page.write_text(text)))
            expect("errors", number(text_of(browser, ".totals .errors dd")[0]), errors + is_there)
    print("ms from the write to the view:", [round(ms) for ms in times])
    assert sorted(times)[len(times) // 2] < float(LIMIT), times
    check_quiet(browser, "a save")


CHECKS = [check_tabs, check_findings, check_search, check_folders, check_tables, check_hosts, check_files, check_map]


def main():
    if not pathlib.Path(FOLDER, HOME).exists():
        print(f"SKIPPED: {FOLDER} is not there")
        return SKIPPED
    with tempfile.TemporaryDirectory(prefix="zvrsit-web-") as top, Browser() as browser:
        top = pathlib.Path(top).resolve()
        tree = Tree(Sites(PROGRAM, top), top / "tree")
        browser.screen(1280)
        browser.open(tree.report)
        for check in CHECKS:
            check(browser, tree)
        with Served(tree.sites, "tree") as served:
            open_view(browser, served.address)
            for check in [*CHECKS, check_save]:
                check(browser, tree)
    return 0


sys.exit(main())
