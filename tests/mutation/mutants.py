#!/usr/bin/env python3
"""Changes one place of the shipped code at a time, and checks that a test fails.

usage: mutants.py [OPTIONS] BUILD      BUILD is the folder of the preset asan, built

The seed determines the places, the same number in each area of the tree. A mutant that does not
compile, or that compiles to the same code, does not count. A survivor is equivalent if survivors.md
lists it. It is a failure if less than 90 % of the others are noticed in an area, or less than 95 % in
all. A run with --seconds is a sample: it leaves out slow tests, and fails if it notices less than half.
"""

import argparse
import collections
import concurrent.futures
import dataclasses
import pathlib
import random
import re
import shutil
import sys
import tempfile
import threading
import time

from areas import AREAS
from build_folder import BuildFolder
from operators import Mutant, mutants_of
from workbench import Outcome, Workbench

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
LEAST_OF_AREA = 0.90
LEAST_OF_ALL = 0.95
LEAST_OF_SAMPLE = 0.50
SAMPLE_WALL_SECONDS = 15  # for one program


@dataclasses.dataclass(frozen=True)
class Result:
    area: str
    mutant: Mutant
    outcome: Outcome


def arguments_of(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0], allow_abbrev=False)
    parser.add_argument("build", type=lambda name: pathlib.Path(name).resolve(), help="its folder")
    parser.add_argument("--seed", type=int, default=1, help="chooses the places (default 1)")
    parser.add_argument("--count", type=int, default=60, help="how many in each area (default 60)")
    parser.add_argument("--jobs", type=int, default=1, help="how many at a time (default 1)")
    parser.add_argument("--seconds", type=int, help="a sample of all areas, for so long")
    parser.add_argument("--area", choices=[area.name for area in AREAS], help="this area alone")
    parser.add_argument("--only", metavar="FILE[:LINE]", help="every mutant of a file or a line")
    parser.add_argument("--list", action="store_true", help="show the candidates, build nothing")
    chosen = parser.parse_args(arguments)
    if chosen.count < 1 or chosen.jobs < 1:
        parser.error("--count and --jobs take a number from 1")
    return chosen


def read_sources():
    """The text of every file with mutants, by its path."""
    folders = sorted({folder.partition("/")[0] for area in AREAS for folder in area.folders})
    paths = (path for folder in folders for path in sorted((ROOT / folder).rglob("*")))
    names = (path.relative_to(ROOT).as_posix() for path in paths if path.suffix in (".h", ".cpp"))
    return {name: (ROOT / name).read_text(encoding="utf-8") for name in names
            if any(area.has(name) for area in AREAS)}  # fmt: skip


def drawn(texts, chosen):
    """For each area the mutants to try, in their order."""
    areas = [area for area in AREAS if chosen.area in (None, area.name)]
    found = {area: [mutant for file, text in texts.items() if area.has(file)
                    for mutant in mutants_of(file, text)] for area in areas}  # fmt: skip
    if not chosen.only:
        for area, mutants in found.items():
            random.Random(f"{area.name} {chosen.seed}").shuffle(mutants)
        return found
    file, _, line = chosen.only.partition(":")
    found = {area: kept for area, mutants in found.items() if (kept := [
        mutant for mutant in mutants
        if mutant.file == file and line in ("", str(mutant.line(texts[file])))])}  # fmt: skip
    if not found:
        sys.exit(f"mutants: --only {chosen.only} names no place that can be broken; "
                 "give a path below the root, such as agent/main.cpp, and a line")  # fmt: skip
    return found


def shown(mutant, text):
    before, after = mutant.change(text)
    return f"{mutant.file}:{mutant.line(text)}: {mutant.name}: {before}  =>  {after}"


def judged_equivalent(document):
    """The rows of survivors.md: file and name."""
    rows = set()
    for line in document.splitlines():
        cells = [cell.strip().strip("`") for cell in line.split("|")[1:-1]]
        if len(cells) == 3 and "." in cells[0]:
            rows.add((cells[0], cells[1]))
    return rows


class ProgressLine:
    """The last line of a terminal, which says how far the run is. Elsewhere there is none."""

    ERASED = "\r\x1b[K"

    def __init__(self, stream):
        self.stream, self.lock = stream, threading.Lock()

    def show(self, text, above=""):
        """Prints the lines of `above`, then `text` below them in place of the former one."""
        with self.lock:
            if self.stream.isatty():
                print(self.ERASED, end="", file=self.stream, flush=True)
            print(above, end="", flush=True)
            if self.stream.isatty():
                print(text, end="", file=self.stream, flush=True)


class Trial:
    """Tries mutants on several workbenches at a time, until there are enough or time has run out."""

    def __init__(self, texts, chosen, benches):
        self.texts, self.chosen, self.benches = texts, chosen, benches
        self.end = time.monotonic() + chosen.seconds if chosen.seconds else float("inf")
        self.progress, self.tried, self.all = ProgressLine(sys.stderr), 0, 0

    def results(self, found):
        areas = [[(area, mutant) for mutant in mutants] for area, mutants in found.items()]
        if self.chosen.seconds:
            mixed = sum(areas, [])
            random.Random(self.chosen.seed).shuffle(mixed)
            areas = [mixed]
        whole = self.chosen.seconds or self.chosen.only
        enough = [len(queued) if whole else min(self.chosen.count, len(queued)) for queued in areas]
        self.all = sum(enough)
        self.progress.show(self.how_far())
        results = [result for queued, count in zip(areas, enough)
                   for result in self._of_queue(queued, count)]  # fmt: skip
        self.progress.show("")
        return results

    def how_far(self):
        if self.chosen.seconds:
            left = max(0, self.end - time.monotonic())
            return f"mutants: {self.tried} tried, {left:.0f} s left"
        return f"mutants: {self.tried} of {self.all}"

    def _of_queue(self, queued, enough):
        """The results of `enough` mutants, and of those that other workbenches try meanwhile."""
        waiting, results = iter(queued), []  # a list's iterator may be used by several threads

        def work(bench):
            while len(results) < enough and time.monotonic() < self.end:
                area, mutant = next(waiting, (None, None))
                if mutant is None:
                    return
                if result := self._result(bench, area, mutant):
                    results.append(result)

        with concurrent.futures.ThreadPoolExecutor(len(self.benches)) as pool:
            list(pool.map(work, self.benches))
        return results

    def _result(self, bench, area, mutant):
        programs = area.quick if self.chosen.seconds else area.programs
        outcome = bench.outcome(mutant, self.texts[mutant.file], programs)
        if outcome is None:
            return None
        place = shown(mutant, self.texts[mutant.file])
        self.tried += 1
        self.progress.show(self.how_far(), f"{outcome.how:8} {place}  [{outcome.where}]\n")
        return Result(area.name, mutant, outcome)


def run(texts, chosen):
    folder = BuildFolder(ROOT, chosen.build)
    place = pathlib.Path(tempfile.mkdtemp(prefix="mutants-", dir=chosen.build))
    try:
        limits = [{}, SAMPLE_WALL_SECONDS] if chosen.seconds else [{}]
        benches = [Workbench(folder, place / str(number), *limits) for number in range(chosen.jobs)]
        found = drawn(texts, chosen)
        if not (chosen.seconds or chosen.only):
            check_unbroken(benches[0], found)
        return Trial(texts, chosen, benches).results(found)
    finally:
        shutil.rmtree(place)


def check_unbroken(bench, found):
    """Exits if a program fails without a mutant."""
    for program in dict.fromkeys(program for area in found for program in area.programs):
        outcome = bench.unbroken_outcome(program)
        if outcome.how != "survived":
            sys.exit(f"mutants: without a change the tests {outcome.how}: {outcome.where}")


def report(results, texts, judged, sample):
    """The lines of the report, and whether the run is a success."""
    hows = ("failed", "crashed", "hung", "survived")
    lines = ["| area | made | " + " | ".join(hows) + " | equivalent | noticed |", "|---|" + "--:|" * 7]
    shares = {}
    for name in [*dict.fromkeys(result.area for result in results), "**all**"]:
        own = [result for result in results if name in (result.area, "**all**")]
        counts = collections.Counter(result.outcome.how for result in own)
        equivalent = sum(is_judged(result, judged) for result in own)
        noticed = len(own) - counts["survived"]
        shares[name] = noticed / max(1, len(own) - equivalent)
        cells = [len(own), *(counts[how] for how in hows), equivalent, f"{shares[name]:.1%}"]
        lines.append(f"| {name} | " + " | ".join(map(str, cells)) + " |")
    for title, chosen in (("Survivors that survivors.md judges to be equivalent", True), ("Survivors", False)):
        found = sorted(shown(result.mutant, texts[result.mutant.file]) for result in results
                       if result.outcome.how == "survived" and is_judged(result, judged) == chosen)  # fmt: skip
        lines += ["", f"{title}: {len(found)}", *(f"- {line}" for line in found)]
    if sample:
        return lines, bool(results) and shares["**all**"] >= LEAST_OF_SAMPLE
    well = min(shares.values()) >= LEAST_OF_AREA and shares["**all**"] >= LEAST_OF_ALL
    return lines, bool(results) and well


def is_judged(result, judged):
    return result.outcome.how == "survived" and (result.mutant.file, result.mutant.name) in judged


def main(arguments):
    chosen = arguments_of(arguments)
    texts = read_sources()
    if chosen.list:
        for mutants in drawn(texts, chosen).values():
            for mutant in mutants:
                print(shown(mutant, texts[mutant.file]))
        return 0
    began = time.monotonic()
    results = run(texts, chosen)
    judged = judged_equivalent((HERE / "survivors.md").read_text(encoding="utf-8"))
    lines, well = report(results, texts, judged, chosen.seconds)
    minutes = (time.monotonic() - began) / 60
    lines.append(f"seed {chosen.seed}, {minutes:.0f} minutes")
    print("\n" + "\n".join(lines))
    (chosen.build / "mutants.md").write_text("\n".join(lines) + "\n", encoding="utf-8")
    return 0 if well or chosen.only else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
