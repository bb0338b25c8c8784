#!/usr/bin/env python3
"""Asks the tests of the lower rooms whether they see faults.

Makes small faults in the sources, one at a time, in a copy of this tree, and runs the tests that can
see the room:  scripts/mutate.py [--count N] [--seed N] [--rooms storage,...] [--only NUMBER,...]

Prints a line for each fault, then how many were killed and which survived. Some survivors are no
faults, because they change nothing that can be seen. The same seed and count give the same faults as
long as the sources stay what they are. Nothing is changed in the tree itself.
"""
import argparse
import collections
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
# Room -> the tests that can see it, quickest first.
TESTS = {
    "storage": ["storage", "tables", "manager"],
    "tables": ["tables", "manager"],
    "links": ["links", "registration", "manager"],
    "registration": ["registration", "manager"],
}
# Name of a fault -> what it looks for and what it puts there.
FAULTS = {
    "compare": (r" (==|!=|<|>|<=|>=) ", {"==": "!=", "!=": "==", "<": "<=", ">": ">=", "<=": "<",
                                         ">=": ">"}),
    "logic": (r" (&&|\|\|) ", {"&&": "||", "||": "&&"}),
    "truth": (r"\b(true|false)\b", {"true": "false", "false": "true"}),
    "sum": (r" ([+-]) ", {"+": "-", "-": "+"}),
    "number": (r"(?<![\w.'])(\d+)(?![\w.'])", lambda text: str(int(text) + 1)),
    "not": (r"\bif \((?![^;()]*;)([^()]*(?:\([^()]*\)[^()]*)*)\)", lambda text: f"!({text})"),
    "result": (r"\breturn (0|-1);", {"0": "-1", "-1": "0"}),
    "drop": (r"(?m)^ +((?!return|throw|else|case|delete|using|static|const|auto)"
             r"[A-Za-z_][\w.:>\[\]-]*(?:\([^;{}\n]*\)| [-+|]?= [^;{}\n]*));$", lambda text: ""),
}
# What a compiler, a reader or a debug build looks at, not a test.
BLIND = re.compile(r'//[^\n]*|R"\((?s:.*?)\)"|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\''
                   r"|^\s*#[^\n]*|\b(?:static_)?assert\([^;]*;|\boperator\S*", re.M)

Fault = collections.namedtuple("Fault", "file kind begin end old new line")


def faults_of(path):
    """All faults that can be made in one file."""
    text = path.read_text()
    seen = BLIND.sub(lambda match: re.sub(r"[^\n]", "\0", match.group()), text)
    for kind, (pattern, change) in FAULTS.items():
        for match in re.finditer(pattern, seen):
            old = text[match.start(1):match.end(1)]
            new = change(old) if callable(change) else change[old]
            yield Fault(path.relative_to(ROOT), kind, match.start(1), match.end(1), old, new,
                        text.count("\n", 0, match.start(1)) + 1)


def chosen_faults(options):
    """As many faults as are asked for: the same share of every room and kind."""
    groups = collections.defaultdict(list)
    for room in options.rooms.split(","):
        for path in sorted((ROOT / room).glob("*.cc")):
            for fault in faults_of(path):
                groups[room, fault.kind].append(fault)
    generator = random.Random(options.seed)
    order = []
    for key in sorted(groups):
        generator.shuffle(groups[key])
        share = len(groups[key])
        order += [((i + generator.random()) / share, key, fault)
                  for i, fault in enumerate(groups[key])]
    return [fault for _, _, fault in sorted(order)[:options.count]]


def run(command, folder, seconds):
    """Runs a command; gives its exit code, None when it was stopped after `seconds`."""
    def limit():
        resource.setrlimit(resource.RLIMIT_AS, (8 << 30, 8 << 30))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    process = subprocess.Popen(command, cwd=folder, stdout=subprocess.DEVNULL,
                               stderr=subprocess.DEVNULL, preexec_fn=limit, start_new_session=True)
    try:
        return process.wait(seconds)
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.wait()
        return None


def copy_tree(folder):
    """Copies what Git knows, as it stands in the working tree, and sets up a debug build of it."""
    names = subprocess.run(["git", "ls-files", "-z"], cwd=ROOT, capture_output=True, check=True)
    for name in names.stdout.decode().split("\0")[:-1]:
        (folder / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(ROOT / name, folder / name)
    subprocess.run(["cmake", "--preset", "debug", "-DCMAKE_COMPILE_WARNING_AS_ERROR=OFF",
                    "-DCMAKE_CXX_FLAGS_DEBUG=-O1"],
                   cwd=folder, stdout=subprocess.DEVNULL, check=True)


def build(folder, name):
    return run(["cmake", "--build", "--preset", "debug", "--target", f"test_{name}"],
               folder, 3000) == 0


def test(folder, name, seconds):
    """Runs the tests of a room up to the first that fails."""
    program = next((folder / "build/debug").glob(f"**/test_{name}"))
    command = [program, "--gtest_fail_fast", "--gtest_brief=1"]
    return run(command, program.parent, seconds) == 0


def try_fault(folder, fault, limits):
    """Makes the fault, and gives what became of it."""
    path = folder / fault.file
    text = path.read_text()
    path.write_text(text[:fault.begin] + fault.new + text[fault.end:])
    try:
        for name in TESTS[fault.file.parts[0]]:
            if not build(folder, name):
                return "not compiled"
            if not test(folder, name, limits[name]):
                return "killed by " + name
        return "survived"
    finally:
        path.write_text(text)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--count", type=int, default=160)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--rooms", default=",".join(TESTS))
    parser.add_argument("--only", default="", help="numbers of the faults to try")
    options = parser.parse_args()
    wanted = {int(number) for number in options.only.split(",") if number}
    rooms = options.rooms.split(",")
    results = collections.defaultdict(list)
    with tempfile.TemporaryDirectory() as scratch:
        folder = pathlib.Path(scratch)
        copy_tree(folder)
        limits = {}
        for name in dict.fromkeys(name for room in rooms for name in TESTS[room]):
            if not build(folder, name):
                sys.exit("the tree does not build")
            begin = time.monotonic()
            if not test(folder, name, 600):
                sys.exit(f"the tests of {name} fail without a fault")
            limits[name] = 20 + 10 * (time.monotonic() - begin)
        for number, fault in enumerate(chosen_faults(options), 1):
            if wanted and number not in wanted:
                continue
            result = try_fault(folder, fault, limits)
            line = (f"{number} {fault.file}:{fault.line} {fault.kind}: "
                    f"{' '.join(fault.old.split())} -> {' '.join(fault.new.split())}")
            results[result.split(" by ")[0]].append(line)
            print(f"{result}: {line}", flush=True)
    print("\n" + ", ".join(f"{len(lines)} {result}" for result, lines in sorted(results.items())))
    print("\n".join(results["survived"]))


if __name__ == "__main__":
    main()
