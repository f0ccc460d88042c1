#!/usr/bin/env python3
"""Compares the results of `zel-benchmarks` with their targets, and prints them.

usage: report.py MEASURED LIBRARY [--write DOCUMENT]

MEASURED is the output of `zel-benchmarks`. LIBRARY is the shared library that it measured. Prints
the table. With --write the machine, the table and a plot of cost against size replace the part of
DOCUMENT between the markers. The plot is a file next to DOCUMENT. The rest of DOCUMENT stays.
"""

import argparse
import json
import math
import pathlib
import platform
import re
import statistics
import subprocess
import sys

COLUMNS = ["work", "size", "this library", "beside it", "costs", "ratio (spread)", "target", ""]
BEGIN, END = "<!-- measured: begin -->", "<!-- measured: end -->"


def quantity(value, unit):
    if unit != "ns":
        return f"{value:,.0f} {unit}"
    for name, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if value >= size:
            return f"{value / size:.3g} {name}"
    return f"{value:.2f} ns" if value < 10 else f"{value:.1f} ns"


def factor(value):
    return f"{value:,.0f}" if value >= 100 else f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def judged(row, peer):
    """Ratio with spread, target, and whether it is reached (None if there is no target)."""
    pairs = list(zip(row["ours"], peer["costs"]))
    kind, value = peer["target"], peer["value"]
    if kind == "aboveByAtMost":
        above = [ours - theirs for ours, theirs in pairs]
        middle = statistics.median(above)
        shown = f"{quantity(middle, row['unit'])} above"
        return shown, f"at most {quantity(value, row['unit'])} above", middle <= value
    if kind == "timesFaster":
        ratios = [theirs / ours for ours, theirs in pairs]
    else:
        ratios = [ours / theirs for ours, theirs in pairs]
    middle = statistics.median(ratios)
    shown = factor(middle)
    if len(ratios) > 1:
        shown += f" ({factor(min(ratios))} to {factor(max(ratios))})"
    if kind == "timesFaster":
        target = f"{factor(value)} times faster" if value > 1 else "faster"
        return shown + " times faster", target, middle >= value
    if kind == "ratioAtMost":
        return shown, f"at most {factor(value)}", middle <= value
    return shown, "none", None


def lines_of(rows):
    for row in rows:
        first = [
            row["work"],
            f"{row['size']:,}" if row["size"] else "",
            quantity(statistics.median(row["ours"]), row["unit"]),
        ]
        for peer in row["beside"]:
            ratio, target, reached = judged(row, peer)
            verdict = {True: "yes", False: "MISSED", None: ""}[reached]
            costs = quantity(statistics.median(peer["costs"]), row["unit"])
            yield first + [peer["contender"], costs, ratio, target, verdict]
            first = ["", "", ""]


def growth_of(rows):
    """For each work that should not grow: the growth of our cost and of the first peer's."""
    works = {}
    for row in rows:
        if row["shouldNotGrow"]:
            works.setdefault(row["work"], []).append(row)
    for work, of_work in works.items():
        first, last = of_work[0], of_work[-1]
        ours = statistics.median(last["ours"]) / statistics.median(first["ours"])
        peer = first["beside"][0]["contender"]
        theirs = statistics.median(last["beside"][0]["costs"]) / statistics.median(
            first["beside"][0]["costs"]
        )
        yield [work, factor(ours), f"{factor(theirs)} ({peer})"]


def text_table(header, lines):
    widths = [max(len(line[i]) for line in [header, *lines]) for i in range(len(header))]
    rule = ["-" * width for width in widths]
    return "\n".join(
        "  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip()
        for line in [header, rule, *lines]
    )


def markdown_table(header, lines):
    rule = ["---"] * len(header)
    return "\n".join("| " + " | ".join(line) + " |" for line in [header, rule, *lines])


def output_of(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, text=True).stdout


def library_facts(library):
    symbols = output_of("nm", "--dynamic", "--defined-only", library).splitlines()
    sections = output_of("size", "--format=sysv", library)
    text = int(re.search(r"^\.text\s+(\d+)", sections, re.MULTILINE)[1])
    return [
        ["exported symbols of the library", f"{len(symbols):,}"],
        ["size of its text segment", f"{text:,} B"],
    ]


def machine():
    model = re.search(r"model name\s*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
    caches = []
    for index in sorted(pathlib.Path("/sys/devices/system/cpu/cpu0/cache").glob("index*")):
        level, kind, size = (
            (index / name).read_text().strip() for name in ("level", "type", "size")
        )
        if kind != "Instruction":
            caches.append(f"L{level} {size}")
    return [
        ["processor", f"{model[1] if model else platform.machine()}, {len_cpus()} cores"],
        ["caches", ", ".join(caches) or "unknown"],
        ["system", f"{os_name()}, Linux {platform.release()}"],
        ["compiler", output_of("c++", "--version").splitlines()[0]],
    ]


def len_cpus():
    return len(re.findall(r"^processor\s*:", pathlib.Path("/proc/cpuinfo").read_text(), re.M))


def os_name():
    release = pathlib.Path("/etc/os-release").read_text()
    return re.search(r'^PRETTY_NAME="?([^"\n]*)', release, re.M)[1]


class Plot:
    """Cost against size on two logarithmic axes, one line for each work that should not grow."""

    WIDTH, HEIGHT, LEFT, TOP, RIGHT, BOTTOM = 860, 440, 70, 20, 300, 50
    COLOURS = ["#1b6ca8", "#c8553d", "#2e8b57", "#8e5ea2", "#b8860b", "#5f6b73"]

    def __init__(self, rows):
        self.lines = {}
        for row in rows:
            if row["shouldNotGrow"]:
                cost = statistics.median(row["ours"])
                self.lines.setdefault(row["work"], []).append((row["size"], cost))
        points = [point for line in self.lines.values() for point in line]
        self.sizes = sorted({size for size, _ in points})
        self.low = math.floor(math.log10(min(cost for _, cost in points)))
        self.high = math.ceil(math.log10(max(cost for _, cost in points)))

    def x(self, size):
        first, last = math.log10(self.sizes[0]), math.log10(self.sizes[-1])
        share = (math.log10(size) - first) / (last - first or 1)
        return self.LEFT + share * (self.WIDTH - self.LEFT - self.RIGHT)

    def y(self, cost):
        share = (math.log10(cost) - self.low) / (self.high - self.low or 1)
        return self.HEIGHT - self.BOTTOM - share * (self.HEIGHT - self.TOP - self.BOTTOM)

    def grid(self):
        right = self.WIDTH - self.RIGHT
        bottom = self.HEIGHT - self.BOTTOM
        for power in range(self.low, self.high + 1):
            y = self.y(10**power)
            yield f'<path d="M{self.LEFT} {y:.1f}H{right}" stroke="#ddd"/>'
            label = quantity(10.0**power, "ns").replace(".00", "").replace(".0", "")
            yield f'<text x="{self.LEFT - 8}" y="{y + 4:.1f}" text-anchor="end">{label}</text>'
        for size in self.sizes:
            x = self.x(size)
            yield f'<path d="M{x:.1f} {self.TOP}V{bottom}" stroke="#ddd"/>'
            yield f'<text x="{x:.1f}" y="{bottom + 20}" text-anchor="middle">{size:,}</text>'
        middle = (self.LEFT + right) / 2
        yield f'<text x="{middle}" y="{bottom + 40}" text-anchor="middle">entries</text>'

    def curves(self):
        for number, (work, line) in enumerate(self.lines.items()):
            colour = self.COLOURS[number % len(self.COLOURS)]
            points = " ".join(f"{self.x(size):.1f},{self.y(cost):.1f}" for size, cost in line)
            yield f'<polyline points="{points}" fill="none" stroke="{colour}" stroke-width="2"/>'
            x, y = self.WIDTH - self.RIGHT + 16, self.TOP + 20 * (number + 1)
            yield f'<path d="M{x} {y - 4}h18" stroke="{colour}" stroke-width="2"/>'
            yield f'<text x="{x + 24}" y="{y}">{work}</text>'

    def svg(self):
        size = f'width="{self.WIDTH}" height="{self.HEIGHT}"'
        style = 'font-family="sans-serif" font-size="12"'
        background = '<rect width="100%" height="100%" fill="white"/>'
        body = "\n".join([background, *self.grid(), *self.curves()])
        return f'<svg xmlns="http://www.w3.org/2000/svg" {size} {style}>\n{body}\n</svg>\n'


GROWTH = ["work", "this library", "beside it"]


def measured_part(rows, library, plot_name):
    return "\n\n".join(
        [
            BEGIN,
            markdown_table(["machine", ""], machine()),
            markdown_table(COLUMNS, list(lines_of(rows))),
            markdown_table(["the library's file", ""], library_facts(library)),
            "Growth from the smallest size to the largest:",
            markdown_table(GROWTH, list(growth_of(rows))),
            f"![Cost against size]({plot_name})",
            END,
        ]
    )


def write(document, rows, library):
    path = pathlib.Path(document)
    text = path.read_text(encoding="utf-8")
    if text.count(BEGIN) != 1 or text.count(END) != 1:
        sys.exit(f"report: {document}: expected the markers '{BEGIN}' and '{END}' once each")
    plot = path.with_suffix(".svg")
    before, after = text.split(BEGIN)[0], text.split(END)[1]
    part = measured_part(rows, library, plot.name)
    plot.write_text(Plot(rows).svg(), encoding="utf-8")
    path.write_text(before + part + after, encoding="utf-8")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("measured")
    parser.add_argument("library")
    parser.add_argument("--write", metavar="DOCUMENT")
    arguments = parser.parse_args()
    rows = json.loads(pathlib.Path(arguments.measured).read_text(encoding="utf-8"))
    lines = list(lines_of(rows))
    print(text_table(COLUMNS, lines))
    print()
    print(text_table(["the library's file", ""], library_facts(arguments.library)))
    if growth := list(growth_of(rows)):
        print()
        print(text_table(["growth of " + GROWTH[0], *GROWTH[1:]], growth))
    if arguments.write:
        write(arguments.write, rows, arguments.library)
    missed = sum(line[-1] == "MISSED" for line in lines)
    if missed:
        print(f"\n{missed} of {len(lines)} targets missed; docs/performance.md gives the reasons")


if __name__ == "__main__":
    main()
