#!/usr/bin/env python3
"""Records the program at work as a picture of a terminal, docs/recording.svg:

    scripts/recording.py [--program PROGRAM] [-o FILE]

Commands are run on a copy of examples/site, in colours; each appears when the one before has printed
what it has to say. Where no motion is wanted, and on paper, everything is there at once.
"""
import argparse
import html
import os
import pathlib
import re
import shutil
import subprocess
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
COMMANDS = ("zvrsit check harbour",
            "zvrsit add harbour harbour --top index.htm >&-; zvrsit rebuild harbour",
            "zvrsit links harbour --to prices.htm",
            "zvrsit unused harbour")
COLUMNS = 124
CELL, LINE, MARGIN = 7.8, 18, 16  # pixels
SECONDS_A_COMMAND, SECONDS_A_LINE = 1.2, 0.08

STYLE = """
  rect { fill: #16181d }
  text { font: 13px ui-monospace, Menlo, Consolas, "DejaVu Sans Mono", monospace; fill: #d7dae0; white-space: pre }
  .prompt { fill: #7fd28c; font-weight: bold }
  .c1 { font-weight: bold } .c1-31 { fill: #ff7b72; font-weight: bold } .c1-35 { fill: #e2a8ff; font-weight: bold }
  .c2 { fill: #8b93a1 }
  @media (prefers-reduced-motion: no-preference) and (not print) {
    g { animation: appear 1ms steps(1) both } @keyframes appear { from { opacity: 0 } to { opacity: 1 } }
  }
"""


def type_all(program):
    """The commands, and the lines that each prints."""
    with tempfile.TemporaryDirectory() as folder:
        shutil.copytree(ROOT / "examples/site", os.path.join(folder, "harbour"))
        shell = f'zvrsit() {{ case $1 in check) "{program}" "$@" --color always;; *) "{program}" "$@";; esac; }}; '
        for command in COMMANDS:
            done = subprocess.run(["bash", "-c", shell + command], cwd=folder, text=True,
                                  env=dict(os.environ, XDG_DATA_HOME=folder + "/.data", LC_ALL="C.UTF-8"),
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
            yield command.split(">&-; ")[-1], done.stdout.splitlines()


def pieces(line):
    """The texts of a line with the class of their colour, and the line's rows of COLUMNS at most."""
    rows, column, style = [[]], 0, ""
    for text in re.split(r"(\x1b\[[0-9;]*m)", re.sub(r"in \d+\.\d\d s$", "in 0.01 s", line)):
        if text.startswith("\x1b"):
            code = text[2:-1].replace(";", "-")
            style = "" if code == "0" else "c" + code
            continue
        while text:
            room = COLUMNS - column
            rows[-1].append((style, text[:room]))
            column += len(text[:room])
            text = text[room:]
            if text:
                rows.append([])
                column = 0
    return rows


def picture(recording):
    groups, row, seconds = [], 0, 0.3
    for command, lines in recording:
        shown = [[[("prompt", "$ "), ("", command)]]] + [pieces(line) for line in lines] + [[[]]]
        for number, rows in enumerate(shown):
            texts = ""
            for parts in rows:
                row += 1
                spans = "".join(f'<tspan class="{style}">{html.escape(text)}</tspan>' if style
                                else html.escape(text) for style, text in parts)
                texts += f'<text x="{MARGIN}" y="{MARGIN + row * LINE}">{spans}</text>'
            groups.append(f'<g style="animation-delay: {seconds:.2f}s">{texts}</g>')
            seconds += SECONDS_A_COMMAND if number == 0 else SECONDS_A_LINE
    width, height = round(2 * MARGIN + COLUMNS * CELL), MARGIN * 2 + row * LINE
    return (f'<svg xmlns="http://www.w3.org/2000/svg" xml:space="preserve" viewBox="0 0 {width} {height}" width="{width}" '
            f'height="{height}" role="img" aria-label="zvrsit at work in a terminal">\n<style>{STYLE}</style>\n'
            f'<rect width="{width}" height="{height}" rx="8"/>\n' + "\n".join(groups) + "\n</svg>\n")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", default=ROOT / "build/release/cli/zvrsit")
    parser.add_argument("-o", "--output", default=ROOT / "docs/recording.svg")
    options = parser.parse_args()
    text = picture(type_all(pathlib.Path(options.program).resolve()))
    pathlib.Path(options.output).write_text(text, encoding="utf-8")


main()
