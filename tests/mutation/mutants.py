#!/usr/bin/env python3
"""Changes one place of the tables or the VRF state machine at a time, and checks that a test fails.

usage: mutants.py [OPTIONS] BUILD      BUILD has the library and its tests, as ./dev mutants builds it

The seed determines the places. A mutant that does not compile, or that compiles to the same code,
does not count. A survivor is accepted if survivors.md lists it as equivalent. Any other survivor is a
failure. It is also a failure if less than 95 % of the mutants are caught.
"""

import argparse
import collections
import concurrent.futures
import dataclasses
import pathlib
import queue
import random
import re
import shutil
import sys
import tempfile
import time

from operators import Mutant, mutants_of
from workbench import LIBRARY, PROGRAMS, Outcome, Workbench, sources_compiled

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent.parent
LEAST_CAUGHT = 0.95


@dataclasses.dataclass(frozen=True)
class Result:
    mutant: Mutant
    outcome: Outcome


def arguments_of(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0], allow_abbrev=False)
    parser.add_argument("build", type=lambda name: pathlib.Path(name).resolve(), help="its folder")
    parser.add_argument("--seed", type=int, default=1, help="chooses the places (default 1)")
    parser.add_argument("--count", type=int, default=250, help="how many mutants (default 250)")
    parser.add_argument("--jobs", type=int, default=1, help="how many at a time (default 1)")
    parser.add_argument("--only", metavar="FILE[:LINE]", help="every mutant of a file or a line")
    parser.add_argument("--list", action="store_true", help="show the candidates, build nothing")
    chosen = parser.parse_args(arguments)
    if chosen.count < 1 or chosen.jobs < 1:
        parser.error("--count and --jobs take a number from 1")
    return chosen


def read_sources():
    """The text of every file with mutants, by its path within the library."""
    folder = ROOT / LIBRARY
    paths = (path for part in PROGRAMS for path in sorted((folder / part).iterdir()))
    names = (path.relative_to(folder).as_posix() for path in paths)
    return {name: (folder / name).read_text(encoding="utf-8") for name in names
            if sources_compiled(name)}  # fmt: skip


def candidates(texts, chosen):
    """The mutants to try, in their order."""
    mutants = [mutant for file, text in texts.items() for mutant in mutants_of(file, text)]
    if not chosen.only:
        random.Random(chosen.seed).shuffle(mutants)
        return mutants
    file, _, line = chosen.only.removeprefix(f"{LIBRARY}/").partition(":")
    found = [mutant for mutant in mutants
             if mutant.file == file and line in ("", str(mutant.line(texts[file])))]  # fmt: skip
    if not found:
        known = ", ".join(texts)
        sys.exit(f"mutants: --only {chosen.only} names no place that can be broken; files: {known}")
    return found


def shown(mutant, text):
    before, after = mutant.change(text)
    return f"{mutant.file}:{mutant.line(text)}: {mutant.operator}: {before}  =>  {after}"


def judged_equivalent(document):
    """The rows of survivors.md: file, before and after."""
    rows = set()
    for line in document.splitlines():
        cells = [cell.strip() for cell in re.split(r"(?<!\\)\|", line)[1:-1]]
        if len(cells) == 4 and cells[0].startswith("`"):
            rows.add(tuple(cell.replace(r"\|", "|").strip("`") for cell in cells[:3]))
    return rows


def is_judged(mutant, text, judged):
    return (mutant.file, *mutant.change(text)) in judged


def try_mutants(mutants, texts, benches):
    """The results of the mutants that compile, in their order."""

    def attempt(mutant):
        bench = benches.get()
        try:
            if not bench.make(mutant, texts[mutant.file]):
                return None
            outcome = bench.test(PROGRAMS[mutant.file.partition("/")[0]])
            place = shown(mutant, texts[mutant.file])
            print(f"{outcome.how:8} {place}  [{outcome.where}]", flush=True)
            return Result(mutant, outcome)
        finally:
            benches.put(bench)

    with concurrent.futures.ThreadPoolExecutor(benches.qsize()) as pool:
        return [result for result in pool.map(attempt, mutants) if result]


def check_unbroken(bench):
    """Exits if the tests fail without a mutant."""
    bench.link_unbroken()
    outcome = bench.test(PROGRAMS["vrf"])
    if outcome.how != "survived":
        sys.exit(f"mutants: the tests of the unbroken library {outcome.how}: {outcome.where}")


def run(texts, chosen):
    place = pathlib.Path(tempfile.mkdtemp(prefix="mutants-", dir=chosen.build))
    try:
        benches = queue.SimpleQueue()
        for number in range(chosen.jobs):
            benches.put(Workbench(ROOT, chosen.build, place / str(number)))
        first = benches.get()
        check_unbroken(first)
        benches.put(first)
        left = candidates(texts, chosen)
        count = len(left) if chosen.only else chosen.count
        results = []
        while len(results) < count and left:
            missing = count - len(results)
            results += try_mutants(left[:missing], texts, benches)
            del left[:missing]
        return results
    finally:
        shutil.rmtree(place)


def report(results, texts, judged):
    """The lines of the report, and whether the run is a success."""
    hows = ("failed", "crashed", "hung", "survived")
    counts = collections.Counter((result.mutant.operator, result.outcome.how) for result in results)
    lines = ["| operator | made | " + " | ".join(hows) + " |", "|---|" + "--:|" * 5]
    for operator in sorted({operator for operator, _ in counts}):
        row = [counts[operator, how] for how in hows]
        lines.append(f"| {operator} | {sum(row)} | " + " | ".join(map(str, row)) + " |")
    totals = [sum(result.outcome.how == how for result in results) for how in hows]
    lines.append(f"| **all** | {len(results)} | " + " | ".join(map(str, totals)) + " |")
    survivors = [result.mutant for result in results if result.outcome.how == "survived"]
    unjudged = [m for m in survivors if not is_judged(m, texts[m.file], judged)]
    for title, mutants in (
        ("Survivors that survivors.md judges to be equivalent", set(survivors) - set(unjudged)),
        ("Survivors", unjudged),
    ):
        lines += ["", f"{title}: {len(mutants)}"]
        lines += sorted(f"- {shown(mutant, texts[mutant.file])}" for mutant in mutants)
    caught = 1 - len(survivors) / len(results) if results else 0
    lines += ["", f"{caught:.1%} of {len(results)} caught"]
    return lines, not unjudged and caught >= LEAST_CAUGHT


def main(arguments):
    chosen = arguments_of(arguments)
    texts = read_sources()
    if chosen.list:
        for mutant in candidates(texts, chosen):
            print(shown(mutant, texts[mutant.file]))
        return 0
    began = time.monotonic()
    results = run(texts, chosen)
    judged = judged_equivalent((HERE / "survivors.md").read_text(encoding="utf-8"))
    lines, well = report(results, texts, judged)
    minutes = (time.monotonic() - began) / 60
    lines.append(f"seed {chosen.seed}, {minutes:.0f} minutes")
    print("\n" + "\n".join(lines))
    (chosen.build / "mutants.md").write_text("\n".join(lines) + "\n", encoding="utf-8")
    return 0 if well or chosen.only else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
