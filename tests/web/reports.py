"""Makes the reports that are looked at."""
import json
import pathlib
import subprocess


def expect(what, seen, wanted):
    assert seen == wanted, f"{what}:\n  {str(seen)[:2000]}\n  {str(wanted)[:2000]}"


def path_below(name, folder):
    return name.removeprefix(str(pathlib.Path(folder).resolve()) + "/")


class Sites:
    """A database with sites, and their reports, in a folder."""

    def __init__(self, program, folder):
        self.program = pathlib.Path(program).resolve()
        self.folder = pathlib.Path(folder)

    def run(self, *words, code=0, cwd=None):
        done = subprocess.run([self.program, "--db", self.folder / "db", *words], capture_output=True, cwd=cwd)
        assert done.returncode == code, (words, done)
        return done.stdout.decode()

    def add(self, name, folder, top):
        self.run("add", name, folder, "--top", pathlib.Path(folder) / top)
        self.run("rebuild", name)
        return self.report(name)

    def report(self, name, *words):
        self.run("report", name, *words, "-o", self.folder / f"{name}.html")
        return self.folder / f"{name}.html"

    def answer(self, *words, **how):
        return json.loads(self.run(*words, "--format", "json", **how))
