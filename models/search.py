"""Runs spin on a model of this folder: one search, and the trail of what it found."""

import pathlib
import re
import shlex
import subprocess
import time

FOLDER = pathlib.Path(__file__).resolve().parent
MEGABYTES = 1000  # the memory that a search may take
DEPTH = 6_000_000  # the most steps of one path


class SearchError(Exception):
    """A search that says nothing about the model."""


class Result:
    """What a search printed."""

    def __init__(self, text, seconds):
        self.text = text
        self.seconds = seconds
        self.errors = int(self._number(r"errors: (\d+)"))
        self.states = int(self._number(r"^ *(\S+) states, stored"))
        self.megabytes = float(self._number(r"^ *(\S+)\s+total actual memory usage"))

    def _number(self, pattern):
        found = re.search(pattern, self.text, re.MULTILINE)
        if not found:
            raise SearchError(f"the search printed no result:\n{self.text}")
        return float(found.group(1))

    def is_complete(self):
        return "Search not completed" not in self.text and "search depth too small" not in self.text


def printed_lines(text):
    """The events or lists that the model prints."""
    return re.findall(r"^ *(?:event|list): (.*)$", text, re.MULTILINE)


class Search:
    """One model with some macros, in a folder of its own. `name` is the name of that folder."""

    def __init__(self, build, name, model, macros, options=()):
        self.folder = pathlib.Path(build) / name
        self.source = FOLDER / f"{model}.pml"
        self.macros = list(macros)
        self.options = list(options)

    def compile(self):
        self.folder.mkdir(parents=True, exist_ok=True)
        self.forget_trails()
        self._run(["spin", *self._definitions(), "-a", str(self.source)], must_succeed=True)
        self._run(["gcc", "-O2", "-w", "-DSAFETY", "-DNOREDUCE", f"-DMEMLIM={MEGABYTES}",
                   *self.options, "-o", "pan", "pan.c"], must_succeed=True)

    def run(self, *arguments):
        """Returns what the compiled search found."""
        before = time.monotonic()
        return Result(self._run(["./pan", "-n", "-w22", *arguments]), time.monotonic() - before)

    def forget_trails(self):
        for old in self.folder.glob("*.trail"):
            old.unlink()

    def trail(self):
        """Returns the property that was violated, and the lines that the model printed before."""
        trails = sorted(self.folder.glob("*.trail"))
        if not trails:
            return None, []
        printed = self._run(["spin", *self._definitions(), "-t", "-k", trails[0].name,
                             str(self.source)])
        return self._violated(printed), printed_lines(printed)

    def simulate(self, seed, steps):
        """Returns the lines that the model prints in a random run."""
        self.folder.mkdir(parents=True, exist_ok=True)
        return printed_lines(self._run(["spin", *self._definitions(), f"-n{seed}", f"-u{steps}",
                                        str(self.source)]))

    def _violated(self, printed):
        """Each assertion has the name of its property as a comment."""
        found = re.search(rf"{self.source.name}:(\d+), Error: assertion violated", printed)
        if not found:
            return None
        line = self.source.read_text(encoding="utf-8").splitlines()[int(found.group(1)) - 1]
        name = re.search(r"/\* ([A-Z]+) \*/", line)
        return name.group(1) if name else line.strip()

    def _definitions(self):
        return [f"-D{shlex.quote(macro)}" for macro in self.macros]  # spin passes them to a shell

    def _run(self, command, must_succeed=False):
        done = subprocess.run(command, cwd=self.folder, text=True, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL, check=False)
        if must_succeed and done.returncode != 0:
            raise SearchError(f"{' '.join(command)} failed:\n{done.stdout}")
        return done.stdout
