#!/usr/bin/env python3
"""How long asking many URLs of a server takes, beside a bare `curl --parallel` with the same limits.

usage: external.py [--build BUILD] [--urls N] [--parallel N] [--runs N]

A server on the loopback (nginx; Debian: nginx-light) answers N URLs (default 10000), one in a hundred
of them with 404. In turn, N times after a round that is not counted: curl sends a HEAD for each;
`zvrsit check --external` reads a site that links to them all, asks, keeps the answers and prints what
is broken; and the same again, which asks nothing. Whole processes by the clock. Checked: curl and
zvrsit find the same URLs broken, and the server has seen every request.
"""
import argparse
import os
import pathlib
import shutil
import socket
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True
import measure

CONFIGURATION = """
daemon off; worker_processes 1; pid {folder}/pid; error_log {folder}/errors;
events {{ worker_connections 2048; }}
http {{
  access_log {folder}/access combined buffer=1m flush=1s; keepalive_requests 1000000;
  client_body_temp_path {folder}/t1; proxy_temp_path {folder}/t2; fastcgi_temp_path {folder}/t3;
  uwsgi_temp_path {folder}/t4; scgi_temp_path {folder}/t5;
  server {{
    listen 127.0.0.1:{port};
    location / {{ return 200; }}
    location /gone/ {{ return 404; }}
  }}
}}
"""


class Nginx:
    def __init__(self, folder):
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            self.port = free.getsockname()[1]
        self.folder = folder
        configuration = os.path.join(folder, "nginx.conf")
        pathlib.Path(configuration).write_text(CONFIGURATION.format(folder=folder, port=self.port))
        program = shutil.which("nginx") or shutil.which("nginx", path="/usr/sbin")
        if program is None:
            sys.exit("no nginx (Debian: nginx-light)")
        self.process = subprocess.Popen([program, "-c", configuration, "-e", folder + "/errors"])
        for _ in range(100):
            with socket.socket() as probe:
                if probe.connect_ex(("127.0.0.1", self.port)) == 0:
                    return
            time.sleep(0.05)
        sys.exit("nginx does not answer")

    def heads(self):
        """How many HEAD requests were seen until now."""
        time.sleep(1.5)  # until the log is written
        with open(self.folder + "/access") as log:
            return sum('"HEAD ' in line for line in log)

    def close(self):
        self.process.terminate()
        self.process.wait()


def urls_of(server, count):
    return [f"http://127.0.0.1:{server.port}/{'gone' if i % 100 == 0 else 'page'}/{i}"
            for i in range(count)]


def write_site(folder, urls):
    """Pages of 100 links each."""
    os.mkdir(folder)
    for page in range(0, len(urls), 100):
        links = "".join(f'<a href="{url}">x</a>\n' for url in urls[page:page + 100])
        pathlib.Path(folder, f"p{page}.html").write_text(links)


def curl(folder, urls, parallel):
    wanted = os.path.join(folder, "urls")
    pathlib.Path(wanted).write_text("".join(f'url = "{url}"\noutput = /dev/null\n' for url in urls))
    answer = measure.must(["curl", "--parallel", "--parallel-max", str(parallel), "--head", "--silent",
                           "--write-out", "%{http_code} %{url}\\n", "--config", wanted])
    broken = {line[4:] for line in answer.output.splitlines() if line.startswith("404")}
    return answer, broken


def check(zvrsit, folder, database, parallel):
    answer = measure.must([zvrsit, "--db", database, "check", folder + "/site", "--external",
                           "--private-network", "--parallel", str(parallel), "--per-server",
                           str(parallel), "--quiet", "--color", "never"], codes=(1,))
    return answer, {line.split()[2] for line in answer.output.splitlines() if "external-broken" in line}


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", default="build/release")
    parser.add_argument("--urls", type=int, default=10000)
    parser.add_argument("--parallel", type=int, default=32)
    parser.add_argument("--runs", type=int, default=5)
    options = parser.parse_args()
    zvrsit = os.path.join(options.build, "cli", "zvrsit")
    with tempfile.TemporaryDirectory(prefix="zvrsit-external-") as folder:
        server = Nginx(folder)
        try:
            urls = urls_of(server, options.urls)
            write_site(folder + "/site", urls)
            broken = {url for url in urls if "/gone/" in url}
            rows = {"curl": [], "zvrsit": [], "zvrsit, kept": []}
            for turn in range(options.runs + 1):
                database = f"{folder}/db{turn}"
                for name, call in (("curl", lambda: curl(folder, urls, options.parallel)),
                                   ("zvrsit", lambda: check(zvrsit, folder, database, options.parallel)),
                                   ("zvrsit, kept", lambda: check(zvrsit, folder, database, options.parallel))):
                    before = server.heads()
                    answer, found = call()
                    if found != broken:
                        sys.exit(f"{name} found {len(found)} broken URLs, not {len(broken)}")
                    seen = server.heads() - before
                    if seen != (0 if "kept" in name else options.urls):
                        sys.exit(f"the server has seen {seen} requests of {name}")
                    if turn:
                        rows[name].append(answer)
        finally:
            server.close()
    base = measure.median([row.seconds for row in rows["curl"]])
    print(f"{measure.machine()}; {options.urls} URLs, {options.parallel} at a time; medians of {options.runs}\n")
    print("| | s | cpu s | peak MB | x curl |\n|---|---|---|---|---|")
    for name, runs in rows.items():
        seconds = measure.median([row.seconds for row in runs])
        print(f"| {name} | {seconds:.3f} | {measure.median([row.cpu for row in runs]):.3f} | "
              f"{max(row.peak for row in runs):.0f} | {seconds / base:.2f} |")


main()
