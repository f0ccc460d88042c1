#!/usr/bin/env python3
"""Counts the instructions of a few operations and compares them with recorded numbers.

usage: check.py PROGRAM RECORD [--record]

PROGRAM is `zel-instructions`, which runs under callgrind. RECORD has a line "WORK INSTRUCTIONS" for
each operation, with the count for a thousand times. A count that is more than 3 % above or below the
recorded one is a fault. A higher count means that the operation costs more. A lower count means that
the record is out of date. --record writes the counts instead.

The counts are the same in every run: the hash seed is fixed, symbols are bound before the start,
every operation is warmed up, address randomisation is off, and the C library uses the string
functions that every processor has.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile

TOLERANCE = 0.03
DUMP = re.compile(r"^desc: Trigger: Client Request: (\S+)$.*?^totals: (\d+)$", re.M | re.S)


def fail(text):
    sys.exit(f"instructions: {text}")


def counts_of(program):
    environment = {
        "PATH": os.environ["PATH"],
        "MOX_HASH_SEED": "1",
        "LD_BIND_NOW": "1",
        "GLIBC_TUNABLES": "glibc.cpu.hwcaps=-AVX2,-AVX512VL,-ERMS",
    }
    with tempfile.TemporaryDirectory() as folder:
        command = ["setarch", "--addr-no-randomize", "valgrind", "--tool=callgrind"]
        command += ["--quiet", f"--callgrind-out-file={folder}/out", str(program)]
        subprocess.run(command, check=True, env=environment, stderr=subprocess.DEVNULL)
        texts = [path.read_text() for path in sorted(pathlib.Path(folder).iterdir())]
    counts = {match[1]: int(match[2]) for text in texts for match in [DUMP.search(text)] if match}
    if not counts:
        fail(f"{program} counted nothing under callgrind")
    return counts


def read_record(path):
    record = {}
    for number, line in enumerate(path.read_text().splitlines(), start=1):
        words = line.split()
        if len(words) != 2 or not words[1].isdigit():
            fail(f"{path}:{number}: expected a work and its number of instructions, got '{line}'")
        record[words[0]] = int(words[1])
    return record


def fault_of(work, count, recorded):
    """What is wrong with one count, or None."""
    if recorded is None:
        return "is not recorded"
    if count is None:
        return "is recorded and was not counted"
    change = count / recorded - 1
    if abs(change) <= TOLERANCE:
        return None
    return f"has changed by {change:+.1%}; at most {TOLERANCE:.0%} is allowed either way"


def compare(counts, record):
    faults = 0
    for work in sorted(counts.keys() | record.keys()):
        count, recorded = counts.get(work), record.get(work)
        fault = fault_of(work, count, recorded)
        shown = f"{count or 0:>12,} instructions per thousand, recorded {recorded or 0:>12,}"
        print(f"{work:<12} {shown}  {fault or 'as recorded'}")
        faults += fault is not None
    return faults


def main(arguments):
    if len(arguments) not in (2, 3) or (len(arguments) == 3 and arguments[2] != "--record"):
        fail("usage: check.py PROGRAM RECORD [--record]")
    record_path = pathlib.Path(arguments[1])
    counts = counts_of(arguments[0])
    if len(arguments) == 3:
        lines = [f"{work} {count}\n" for work, count in sorted(counts.items())]
        record_path.write_text("".join(lines))
        return 0
    return 1 if compare(counts, read_record(record_path)) else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
