#!/usr/bin/env python3
"""Writes a site of N pages of about 10 kB with 50 links each, the same for the same seed.

usage: generate_site.py FOLDER PAGES [--seed S] [--links L] [--bytes B] [--hub H]

Pages lie 100 to a folder. Each links to L others (some missing), to a shared style sheet, and to
a few external URLs. --hub H adds one page, hub.html, with H links.
"""
import argparse
import os
import random

WORDS = ("site page link folder table record string image sheet anchor frame server profile "
         "family rebuild author publish document element attribute value text name title").split()


def page_path(number):
    return f"d{number // 100:04d}/p{number:06d}.html"


def links_of(rng, number, pages, links):
    here = number // 100
    for k in range(links):
        target = rng.randrange(pages)
        name = page_path(target)
        if rng.random() < 0.02:
            name = name.replace(".html", "-gone.html")
        if k % 10 == 9:
            yield f"https://example.org/{rng.randrange(1000)}", "external"
        elif target // 100 == here:
            yield os.path.basename(name), "near"
        else:
            yield "../" + name + ("#s%d" % rng.randrange(5) if k % 5 == 0 else ""), "far"


def page_text(rng, number, pages, links, size):
    parts = [f"<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Page {number}</title>\n"
             "<link rel=\"stylesheet\" href=\"../style.css\"></head>\n<body>\n"]
    filler = max(0, size // max(1, links) - 60)
    for target, kind in links_of(rng, number, pages, links):
        words = []
        length = 0
        while length < filler:
            word = rng.choice(WORDS)
            words.append(word)
            length += len(word) + 1
        parts.append(f"<p class=\"{kind}\">{' '.join(words)} <a href=\"{target}\">{kind}</a></p>\n")
    parts.append("</body></html>\n")
    return "".join(parts)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder")
    parser.add_argument("pages", type=int)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--links", type=int, default=50)
    parser.add_argument("--bytes", type=int, default=10000)
    parser.add_argument("--hub", type=int, default=0)
    options = parser.parse_args()
    rng = random.Random(options.seed)
    os.makedirs(options.folder, exist_ok=True)
    with open(os.path.join(options.folder, "style.css"), "w") as out:
        out.write("body { background: url(back.png) }\n")
    with open(os.path.join(options.folder, "index.html"), "w") as out:
        out.write("<title>Top</title>\n")
        for number in range(0, options.pages, 100):
            out.write(f"<a href=\"{page_path(number)}\">{number}</a>\n")
        if options.hub:
            out.write("<a href=\"hub.html\">hub</a>\n")
    for number in range(options.pages):
        path = os.path.join(options.folder, page_path(number))
        if number % 100 == 0:
            os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w") as out:
            out.write(page_text(rng, number, options.pages, options.links, options.bytes))
    if options.hub:
        with open(os.path.join(options.folder, "hub.html"), "w") as out:
            out.write("<title>Hub</title>\n")
            for k in range(options.hub):
                out.write(f"<a href=\"{page_path(rng.randrange(options.pages))}\">l{k}</a>\n")


if __name__ == "__main__":
    main()
