"""Searches the models completely, and checks that each fault put back into them is found.

usage: check.py BUILD_FOLDER
"""

import concurrent.futures
import os
import sys

from search import DEPTH, MEGABYTES, Search, SearchError

# The searches that must find nothing: what they cover, the model and its macros.
COMPLETE = (
    ("propagation, any number of events", "propagation", ["PLANNED=0"]),
    ("propagation, 8 events, with other refusals", "propagation", ["EVENTS=8"]),
    ("rule order, lists of up to 4 rules", "rule_order", []),
)
# The faults, the property that each violates, and what limits the search for the shortest trail.
FAULTS = (
    (1, "propagation", "LIVE", []),
    (2, "propagation", "FRESH", []),
    (3, "rule_order", "CONSISTENT", ["LENGTH=2"]),
    (4, "rule_order", "CONSISTENT", ["LENGTH=2"]),
    (5, "rule_order", "CONSISTENT", ["LENGTH=2"]),
)


def search_completely(build, number):
    """Returns a line to print, and whether the search was complete and found nothing."""
    title, model, macros = COMPLETE[number]
    search = Search(build, f"complete-{number}", model, macros)
    search.compile()
    result = search.run(f"-m{DEPTH}")
    figures = f"{result.states:,} states, {result.seconds:.0f} s, {result.megabytes:.0f} MB"
    if result.errors:
        violated, lines = search.trail()
        return "\n  ".join([f"{title}: {violated} is violated after:", *lines]), False
    if not result.is_complete():
        return f"{title}: not complete, with {figures}; a path has at most {DEPTH:,} steps, a " \
            f"search {MEGABYTES} MB\n{result.text}", False
    return f"{title}: nothing; {figures}", True


def search_fault(build, fault, model, expected, limits):
    """Returns the shortest trail to print, and whether it violates the expected property."""
    search = Search(build, f"fault-{fault}", model, [f"FAULT={fault}", *limits], ["-DBFS"])
    search.compile()
    search.run()
    violated, lines = search.trail()
    if violated is None:
        return f"{model}, FAULT={fault}: nothing, but {expected} must be violated", False
    trail = "\n  ".join([f"{model}, FAULT={fault}: {violated} is violated after:", *lines])
    if violated != expected:
        return f"{trail}\nbut {expected} must be violated", False
    return trail, True


def main():
    build = sys.argv[1]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        runs = [pool.submit(search_completely, build, number) for number in range(len(COMPLETE))]
        runs += [pool.submit(search_fault, build, *fault) for fault in FAULTS]
        failed = 0
        for run in runs:
            try:
                text, is_right = run.result()
            except SearchError as error:
                text, is_right = str(error), False
            print(text if is_right else f"FAILED: {text}", flush=True)
            failed += not is_right
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
