"""Other link checkers, each run on one folder: the command, and how to read its counts.

A rival gives (links or files it looked at, broken) as it counts them itself, None for what it does
not say. They do not do the same work: none of them keeps what it found, and each has its own idea
of a link. None of them may ask for anything outside of this machine.
"""
import contextlib
import functools
import http.server
import json
import os
import re
import shutil
import threading


class Rival:
    def __init__(self, name, command, counts, unit="links"):
        self.name, self.command, self.counts, self.unit = name, command, counts, unit


def _number(pattern, run):
    found = re.search(pattern, run.output + run.errors)
    return int(found.group(1).replace(",", "")) if found else None


def _linklint(run):
    return _number(r"checked (\d+) html files", run), _number(r"(\d+) missing files?\b", run) or 0


def _wget(run):
    return (_number(r"Downloaded: (\d+) files", run),
            _number(r"Found (\d+) broken link", run) or 0)


def _linkinator(run):
    links = json.loads(run.output)["links"]
    return len(links), sum(link["state"] == "BROKEN" for link in links)


def _hyperlink(run):
    return _number(r"Checking (\d+) links", run), _number(r"Found (\d+) bad links", run)


def _htmltest(run):
    return _number(r"(\d+) documents", run), _number(r"(\d+) error", run) or 0


def htmltest_settings():
    """htmltest reads this file; external links, anchors and style are not checked."""
    return "CheckExternal: false\nIgnoreInternalEmptyHash: true\nCheckDoctype: false\n"


def installed(folder, top, url, scratch, wanted):
    """The rivals that are on the PATH; `top` is relative to `folder`, which `url` serves."""
    settings = os.path.join(scratch, "htmltest.yml")
    with open(settings, "w") as out:
        out.write(htmltest_settings())
    log = os.path.join(scratch, "wget")
    external = r"^https?://(?!localhost|127\.0\.0\.1|\[::1\])"
    rivals = [
        Rival("linklint", ["linklint", "-root", folder, "-index", os.path.basename(top), "/@"],
              _linklint, "pages"),
        Rival("wget", ["wget", "--spider", "-r", "-l", "inf", "-nv", "-e", "robots=off", "-P", log,
                       f"{url}/{top}"], _wget, "files"),
        Rival("linkinator", ["linkinator", os.path.join(folder, os.path.dirname(top)), "--recurse",
                             "--format", "json", "--skip", external], _linkinator),
        Rival("hyperlink", ["hyperlink", folder], _hyperlink),
        Rival("htmltest", ["htmltest", "-c", settings, folder], _htmltest, "pages"),
    ]
    for rival in rivals:
        if wanted is not None and rival.name not in wanted:
            continue
        if shutil.which(rival.command[0]):
            yield rival
        else:
            print(f"{rival.name} is not installed: left out")


class _Quiet(http.server.SimpleHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass


@contextlib.contextmanager
def served(folder):
    """Serves `folder` on the loopback; gives the URL."""
    handler = functools.partial(_Quiet, directory=folder)
    with http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler) as server:
        threading.Thread(target=server.serve_forever, daemon=True).start()
        yield f"http://127.0.0.1:{server.server_address[1]}"
        server.shutdown()
