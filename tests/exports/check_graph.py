#!/usr/bin/env python3
"""Checks that the graph of a site is the same in every format, and what is in it.

Usage: check_graph.py PROGRAM [WORD...]   (the words run programs of the build, if any)
"""
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import urllib.parse
import xml.etree.ElementTree as xml

PROGRAM, RUNNER = sys.argv[1], sys.argv[2:]
SPACE = "{http://graphml.graphdrawing.org/xmlns}"
HOSTILE = 'b "q" & %N<i>.htm' if not RUNNER else "b & 'q'.htm"
FILES = {
    "index.htm": '<title>"A" &amp;lt; \\l\x1b</title><a href="%s">x</a><a href="a/one.htm">x</a>'
                 '<a href="a/one.htm#t">x</a><a href="#i">x</a><p id=i><img src=i.gif>'
                 '<a href="https://U@X.example:8080/y">x</a><a href="http://x.example/?//z">x</a>'
                 '<a href="mailto:a@b">x</a>' % urllib.parse.quote(HOSTILE),
    HOSTILE: '<a href="gone%20gone.htm">x</a><a href="/out.htm">x</a>',
    "a/one.htm": '<a href="deep/two.htm">x</a><link rel=stylesheet href=s.css>',
    "a/deep/two.htm": '<a href="three.htm">x</a>',
    "a/deep/three.htm": '<a href="../../c/five.htm">x</a>',
    "a/deep/four.htm": '<a href="gone.htm">x</a>',
    "c/five.htm": "",
    "a/s.css": "b { background: url(t.gif) }",
    "i.gif": "",
    "../out.htm": "",
}


def run(*words, code=0):
    done = subprocess.run([*RUNNER, PROGRAM, *words], capture_output=True)
    assert done.returncode == code, (words, done)
    return done.stdout.decode().replace("\r\n", "\n")


def expect(what, seen, wanted):
    assert seen == wanted, f"{what}:\n  {seen}\n  {wanted}"


def of_graphml(text):
    root = xml.fromstring(text)
    keys = {key.get("id"): key for key in root.findall(SPACE + "key")}
    def data(element):
        values = {d.get("key"): d.text for d in element.findall(SPACE + "data")}
        assert all(keys[key].get("for") == element.tag[len(SPACE):] for key in values), values
        return values
    graph = root.find(SPACE + "graph")
    nodes = [{"id": n.get("id"), **data(n)} for n in graph.findall(SPACE + "node")]
    edges = [(e.get("source"), e.get("target"), int(data(e)["weight"]))
             for e in graph.findall(SPACE + "edge")]
    return nodes, edges


QUOTED = r'"((?:[^"\\]|\\.)*)"'


def of_dot(text):
    """By the grammar of the lines that are written; by Graphviz too where it is there."""
    if shutil.which("dot"):
        subprocess.run(["dot", "-Tcanon"], input=text.encode(), check=True, capture_output=True)
    lines = text.splitlines()
    assert lines[0].startswith("digraph ") and lines[-1] == "}", text
    nodes, edges = [], []
    for line in lines[1:-1]:
        if edge := re.fullmatch(rf"  {QUOTED} -> {QUOTED} \[weight=(\d+)\];", line):
            edges.append((edge[1], edge[2], int(edge[3])))
        else:
            node = re.fullmatch(rf"  {QUOTED} \[label={QUOTED}(, \w+=(?:\w+|{QUOTED}))*\];", line)
            assert node, line
            nodes.append((node[1], re.sub(r"\\(.)", r"\1", node[2]).replace("&amp;", "&")))
    return nodes, edges


def graph(db, *words):
    """The nodes by name, and the edges by names, in which all formats have to agree."""
    read = json.loads(run("graph", "demo", "--db", db, *words, "--to", "json"))
    nodes = {node["id"]: node for node in read["nodes"]}
    expect("identifiers", len(nodes), len(read["nodes"]))
    assert all(re.fullmatch(r"[\w.:-]+", i, re.ASCII) for i in nodes), nodes
    edges = [(e["from"], e["to"], e["weight"]) for e in read["edges"]]

    graphml = run("graph", "demo", "--db", db, *words, "--to", "graphml")
    others, other_edges = of_graphml(graphml)
    controls = lambda text: re.sub(r"[\0-\x1f]", lambda c: f"\\x{ord(c[0]):02x}", text)
    expect("GraphML", others, [
        {key: controls(str(value)) for key, value in node.items() if value is not None}
        for node in nodes.values()])
    expect("edges of GraphML", other_edges, edges)
    labels, dot_edges = of_dot(run("graph", "demo", "--db", db, *words))
    expect("DOT", labels, [
        (i, n["name"] + (f" ({n['stands']})" if n["kind"] == "folder" else ""))
        for i, n in nodes.items()])
    expect("edges of DOT", dot_edges, edges)
    return ({n["name"].replace("\\", "/") if RUNNER else n["name"]: n for n in nodes.values()},
            {(nodes[a]["name"], nodes[b]["name"]): weight for a, b, weight in edges})


SVG = "{http://www.w3.org/2000/svg}"


def box_of(group):
    return [float(group.find(SVG + "rect").get(key)) for key in ("x", "y", "width", "height")]


def areas_of(group):
    """The areas directly in an element: their names, boxes, looks and elements."""
    return [{"name": g.find(SVG + "title").text.split("\n")[0], "box": box_of(g), "group": g,
             "facts": g.find(SVG + "title").text.split("\n")[1:],
             "looks": [rect.get("class") for rect in g.findall(SVG + "rect")]}
            for g in group.findall(SVG + "g") if g.find(SVG + "title") is not None]


def overlap(one, other):
    across, down = (min(one[i] + one[i + 2], other[i] + other[i + 2]) - max(one[i], other[i])
                    for i in (0, 1))
    return max(0, across) * max(0, down)


def leaves_below(group, around, least):
    """Checks areas within areas. Gives those without parts by their names, and what all weigh."""
    found = {}
    areas = areas_of(group)
    weights = []
    for i, area in enumerate(areas):
        x, y, width, height = box = area["box"]
        assert x > around[0] - .02 and y > around[1] - .02, (area["name"], box, around)
        assert x + width < around[0] + around[2] + .02, (area["name"], box, around)
        assert y + height < around[1] + around[3] + .02, (area["name"], box, around)
        for other in areas[:i]:
            assert overlap(box, other["box"]) < .02 * (width + height), (area, other)
        if "folder" in area["looks"]:
            below, weight = leaves_below(area["group"], box, least)
            found.update(below)
        else:
            found[area["name"]] = area
            sizes = [f.split()[0].replace(",", "") for f in area["facts"] if "byte" in f]
            weight = max(int(*sizes), least)
        weights.append(weight)
    shares = [area["box"][2] * area["box"][3] / weight for area, weight in zip(areas, weights)]
    assert max(shares) < 1.02 * min(shares), ([area["name"] for area in areas], shares)
    return found, sum(weights)


def check_picture(folder, db):
    site = folder / "site"
    for i in range(8):  # enough for rows of several areas
        (site / "a" / f"{i}.htm").write_text("-" * i * 97)
    run("rebuild", "demo", "--db", db)
    sizes = {path.relative_to(site).as_posix(): path.stat().st_size
             for path in site.rglob("*") if path.is_file()}
    for fold in [*range(1, 18), 0]:
        words = ["graph", "demo", "--db", db, "--fold", str(fold), "--all-files"]
        text = run(*words, "--svg")
        expect("the same twice", run(*words, "--to", "svg"), text)
        leaves, _ = leaves_below(xml.fromstring(text), [0, 0, 1600, 1000],
                                 sum(sizes.values()) / 4000)
        nodes = [n for n in json.loads(run(*words, "--to", "json"))["nodes"]
                 if n["kind"] not in ("host", "outside")]
        expect("areas", sorted(leaves), sorted(
            (("./" if n["name"] == "." else n["name"]) + (f" ({n['title']})" if n["title"] else ""))
            .replace("\x1b", "\\u001b") for n in nodes))
    leaves = {name.split(" (")[0]: area for name, area in leaves.items()}
    expect("sizes", {name: leaves[name]["facts"][0] for name in sizes},
           {name: f"{size} bytes" for name, size in sizes.items()})
    expect("broken", sorted(n for n in leaves if "broken" in leaves[n]["looks"]),
           sorted([HOSTILE, "a/deep/four.htm", "a/s.css"]))
    expect("missing", sorted(n for n in leaves if "missing" in leaves[n]["looks"]),
           ["a/deep/gone.htm", "a/t.gif", "gone gone.htm"])
    expect("linked", leaves["a/one.htm"]["facts"][-1], "2 links to it")
    arcs = [arc.find(SVG + "title").text for arc in xml.fromstring(text).findall(SVG + "path")
            if arc.find(SVG + "title") is not None]
    assert "index.htm -> a/one.htm\n2 links" in arcs, arcs
    assert len(run("graph", "demo", "--db", db, "--svg", "--area", "links")) > 1000
    run("graph", "demo", "--db", db, "--svg", "--to", "dot", code=2)


def check(folder, db):
    nodes, edges = graph(db)
    pages = [name for name in FILES if name.endswith(".htm") and not name.startswith("..")]
    kinds = {kind: sorted(n for n in nodes if nodes[n]["kind"] == kind)
             for kind in {node["kind"] for node in nodes.values()}}
    expect("kinds", kinds, {
        "page": sorted(pages), "missing": ["a/deep/gone.htm", "gone gone.htm"],
        "outside": [str(folder / "out.htm")], "host": ["x.example", "x.example:8080"]})
    expect("inner", nodes["index.htm"]["inner"], 1)
    if not RUNNER:
        expect("weight", edges["index.htm", "a/one.htm"], 2)
        expect("title", nodes["index.htm"]["title"], '"A" &lt; \\l\x1b')
    more, _ = graph(db, "--all-files")
    expect("files", sorted(set(more) - set(nodes)), ["a/s.css", "a/t.gif", "i.gif"])

    one = ["--from", folder / "site" / "a" / "one.htm"]
    expect("near", sorted(graph(db, *one)[0]), ["a/deep/two.htm", "a/one.htm", "index.htm"])
    expect("itself", sorted(graph(db, *one, "--depth", "0")[0]), ["a/one.htm"])
    expect("two away", sorted(graph(db, *one, "--depth", "2")[0]), sorted(
        ["a/deep/three.htm", "a/deep/two.htm", "a/one.htm", "index.htm", HOSTILE, "x.example",
         "x.example:8080"]))

    whole = sum(edges.values()) + sum(node["inner"] for node in nodes.values())
    seen = set()
    for most in range(1, 12):
        folded, folded_edges = graph(db, "--fold", str(most))
        of_site = [n for n in folded.values() if n["kind"] not in ("host", "outside")]
        assert len(of_site) <= most, (most, of_site)
        expect("everything is somewhere", sum(n["stands"] for n in of_site), 9)
        expect("no link is lost", sum(folded_edges.values()) + sum(n["inner"] for n in folded.values()),
               whole)
        seen.add(len(of_site))
    expect("one folder", sorted(n for n in graph(db, "--fold", "1")[0] if n[0] != "x"),
           sorted([".", str(folder / "out.htm")]))
    expect("largest first", sorted(n for n, node in graph(db, "--fold", "4")[0].items()
                                   if node["kind"] == "folder"), [".", "a/deep/"])
    assert seen >= {1, 3, 4, 9}, seen


with tempfile.TemporaryDirectory() as top:
    top = pathlib.Path(top)
    for name, content in FILES.items():
        path = top / "site" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(content, encoding="utf-8", newline="\n")
    run("add", "demo", top / "site", "--top", "index.htm", "--doc-root", top, "--db", top / "db")
    run("rebuild", "demo", "--db", top / "db")
    check(top, top / "db")
    if not RUNNER:
        check_picture(top, top / "db")
    run("graph", "demo", "--db", top / "db", "-o", top / "site", code=4)
    os.mkfifo(top / "pipe")
    run("graph", "demo", "--db", top / "db", "-o", top / "pipe", code=4)
    assert (top / "pipe").is_fifo()
    run("graph", "demo", "--db", top / "db", "--depth", "2", code=2)
