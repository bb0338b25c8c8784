#!/usr/bin/env python3
"""Types the commands of the guide, and compares what they print with what the guide says.

usage: replay_guide.py [--write] PROGRAM GUIDE EXAMPLES [WORD...]   (the words run programs of the build)

In an indented block, a line that begins with "$ " is a command. The lines below it, up to the next one,
are what it prints, errors as well; "..." stands for any lines. Times are left out of the comparison, and
$PWD is the folder. With --write, the guide is changed to what was printed.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

INDENT = "    "


def plain(line):
    return re.sub(r"\bin \d+\.\d\d s$", "in 0.01 s", line)


def same(printed, wanted):
    if "..." in wanted:
        at = wanted.index("...")
        end = len(wanted) - at - 1
        return printed[:at] == wanted[:at] and printed[len(printed) - end:] == wanted[at + 1:]
    return printed == wanted


class Replay:
    def __init__(self, program, examples, folder):
        self.folder = folder
        self.environment = dict(os.environ, PATH=f"{program.parent}:{os.environ['PATH']}",
                                EXAMPLES=str(examples), XDG_DATA_HOME=folder + ".data",
                                LC_ALL="C.UTF-8")
        self.faults = 0

    def type(self, command):
        done = subprocess.run(["bash", "-c", command], cwd=self.folder, env=self.environment,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        return [plain(line.replace(self.folder, "$PWD")) for line in done.stdout.splitlines()]

    def whole(self, lines):
        """The lines of the guide, as they should be."""
        at = 0
        while at < len(lines):
            yield lines[at]
            at += 1
            if not lines[at - 1].startswith(INDENT + "$ "):
                continue
            begin = at
            while at < len(lines) and lines[at].startswith(INDENT) and lines[at][4:6] != "$ ":
                at += 1
            wanted = [plain(line[len(INDENT):]) for line in lines[begin:at]]
            printed = self.type(lines[begin - 1][len(INDENT) + 2:])
            if same(printed, wanted):
                yield from lines[begin:at]
                continue
            self.faults += 1
            print(f"{lines[begin - 1]}\n  the guide says:\n{wanted}\n  it prints:\n{printed}")
            yield from (INDENT + line for line in printed)


def main():
    writes = sys.argv[1] == "--write"
    program, guide, examples = (pathlib.Path(word).absolute() for word in sys.argv[1 + writes:4 + writes])
    lines = guide.read_text().splitlines()
    with tempfile.TemporaryDirectory() as top:
        folder = os.path.join(os.path.realpath(top), "guide")
        os.mkdir(folder)
        replay = Replay(program, examples, folder)
        whole = list(replay.whole(lines))
    assert sum(line.startswith(INDENT + "$ ") for line in lines) > 10, "the guide has no commands"
    if writes:
        guide.write_text("\n".join(whole) + "\n")
    sys.exit(0 if writes else replay.faults)


main()
