#!/usr/bin/env python3
"""Checks that the includes of every tracked source point one way only.

usage: include_arrows.py [ROOT]     ROOT is the repository, by default the current directory

An own header is written in double quotes, by its path from platform/ ("Mox/Ptr.h") or from the
root ("ZelVrfSelectionPolicy/tables/VrfHwConfig.h"). Anything else is written in angle brackets.
"""

import pathlib
import posixpath
import re
import sys

from tracked_files import tracked

STANDARD = frozenset(
    """
    algorithm any array atomic barrier bit bitset charconv chrono codecvt compare complex concepts
    condition_variable coroutine deque exception execution filesystem format forward_list fstream
    functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits
    list locale map memory memory_resource mutex new numbers numeric optional ostream queue random
    ranges ratio regex scoped_allocator semaphore set shared_mutex source_location span sstream
    stack stdexcept stop_token streambuf string string_view strstream syncstream system_error
    thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility valarray
    variant vector version
    cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg
    cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype
    """.split()
)


def standard(header):
    return header in STANDARD


def standard_or_unix(header):
    return standard(header) or header in ("fcntl.h", "unistd.h") or header.startswith("sys/")


def fixed_size_types(header):
    return header == "linux/types.h"


def standard_or_fixed_size_types(header):
    return standard(header) or fixed_size_types(header)


def kernel_program_header(header):
    return header.startswith(("linux/", "bpf/"))


def any_header(_header):
    return True


# What a fault says about the headers that each of the functions above allows.
ALLOWED_FOREIGN = {
    standard: "C++ standard headers",
    standard_or_unix: "C++ standard headers, <fcntl.h>, <unistd.h> and <sys/...>",
    fixed_size_types: "<linux/types.h>",
    kernel_program_header: "<linux/...> and <bpf/...>",
    standard_or_fixed_size_types: "C++ standard headers and <linux/types.h>",
}

LIBRARY = "ZelVrfSelectionPolicy"

# The layers of platform/, the lowest first. Each may include those before it.
#
# The framework: text and subscriptions, allocation, entities, the ring of messages, messages to both
# sinks, timers. Each folder may include those before it.
FRAMEWORK = ["Velo", "Quarry", "Mox", "Blinklog", "Duolog", "Bost"]
# The domain types: each folder with the others of them that it may include.
DOMAIN_TYPES = {
    "Acl": [],
    "Ip": [],
    "Classification": ["Ip"],
    "Ip6": [],
    "L3": [],
    "Lag": [],
    "Mirroring": [],
    "Sflow": [],
    "Zel": [],
    "PolicyMap": ["Classification", "Ip", "L3", "Zel"],
    "Routing": ["L3"],
    "Routing6": ["L3", "Routing"],
    "VrfSelectionPolicy": ["L3"],
}
# The machine that programs traffic policies.
TRAFFIC_POLICY = ["TrafficPolicy"]


def platform_rows():
    """Rows of ARROWS, without the platform/ in front of each folder."""
    for place, folder in enumerate(FRAMEWORK):
        yield folder, FRAMEWORK[:place], standard_or_unix
    for folder, others in DOMAIN_TYPES.items():
        yield folder, [*FRAMEWORK, *others], standard
    for folder in TRAFFIC_POLICY:
        yield folder, [*FRAMEWORK, *DOMAIN_TYPES], standard


# The layers of the agent, lower ones first. A folder may include itself and the layers before its
# own; the folders of one layer do not include each other.
AGENT_LAYERS = [
    ["agent/language"],
    ["agent/config"],
    ["agent/model/calls"],
    ["agent/model/policies", "agent/model/routes"],
    ["agent/model/differences"],
    ["agent/model/forwarding"],
    ["agent/model/events"],
    ["agent/model/packets"],
    ["agent/reports"],
    ["agent/commands/served", "agent/commands/offline"],
    ["agent/serve/protocol"],
    ["agent/serve/daemon", "agent/serve/console"],
]

# What an agent knows of chips: not which one it drives.
CHIPS_FOR_AGENTS = ["chips/packet", "chips/programs", "chips/interface", "chips/choice"]

# What the layers of the agent include from outside of it. "agent" is for layers without an entry.
OUTSIDE_OF_AGENT = {
    "agent/language": ["platform/Mox", "platform/Velo", "platform/Quarry"],
    "agent/config": ["platform"],
    "agent": ["platform", LIBRARY, *CHIPS_FOR_AGENTS],
}


def agent_rows():
    below = []
    for layer in AGENT_LAYERS:
        for folder in layer:
            outside = OUTSIDE_OF_AGENT.get(folder, OUTSIDE_OF_AGENT["agent"])
            yield (folder, [*outside, *below, folder], any_header)
        below = [*below, *layer]


# The layers of the chips, like those of the agent: what every chip has, one chip, the choice of a
# chip.
CHIP_LAYERS = [
    ["chips/packet", "chips/programs"],
    ["chips/interface"],
    ["chips/soft/routes"],
    ["chips/soft/classify"],
    ["chips/soft"],
    ["chips/choice"],
]


def chip_rows():
    below = []
    for layer in CHIP_LAYERS:
        for folder in layer:
            yield (folder, ["platform", LIBRARY, *below, folder], any_header)
        below = [*below, *layer]


# Folder; the folders that its files may include; what they may include in angle brackets.
# The row of the longest folder that holds a file decides. "" is the whole tree.
ARROWS = [
    *(
        (f"platform/{folder}", [f"platform/{name}" for name in (folder, *others)], allows_foreign)
        for folder, others, allows_foreign in platform_rows()
    ),
    ("platform", ["platform"], standard),  # the table of the types of every folder
    (f"{LIBRARY}/trace", ["platform", f"{LIBRARY}/trace"], standard),
    (f"{LIBRARY}/values", ["platform", f"{LIBRARY}/values"], standard),
    (f"{LIBRARY}/tables", ["platform", f"{LIBRARY}/values", f"{LIBRARY}/tables"], standard),
    (
        f"{LIBRARY}/vrf",
        [
            "platform",
            f"{LIBRARY}/trace",
            f"{LIBRARY}/values",
            f"{LIBRARY}/tables",
            f"{LIBRARY}/vrf",
        ],
        standard,
    ),
    (
        f"{LIBRARY}/policy",
        [
            "platform",
            f"{LIBRARY}/trace",
            f"{LIBRARY}/values",
            f"{LIBRARY}/tables",
            f"{LIBRARY}/vrf",
            f"{LIBRARY}/policy",
        ],
        standard,
    ),
    (
        f"{LIBRARY}/reflection",
        [
            "platform",
            f"{LIBRARY}/values",
            f"{LIBRARY}/tables",
            f"{LIBRARY}/vrf",
            f"{LIBRARY}/policy",
            f"{LIBRARY}/reflection",
        ],
        standard,
    ),
    (LIBRARY, ["platform", LIBRARY], standard),  # the umbrella header and the module start
    ("testing", ["platform", LIBRARY, "testing"], any_header),
    *chip_rows(),
    ("chips/tables", ["platform", "chips/tables"], standard_or_fixed_size_types),
    # Programs of the kernel include it, too.
    ("chips/tables/layout", ["chips/tables/layout"], fixed_size_types),
    (
        "chips/kernel",
        [
            "platform",
            LIBRARY,
            "chips/packet",
            "chips/programs",
            "chips/interface",
            "chips/tables",
            "chips/kernel",
        ],
        any_header,
    ),
    ("chips/kernel/layout", ["chips/tables/layout", "chips/kernel/layout"], fixed_size_types),
    (
        "chips/kernel/bpf",
        ["chips/tables/layout", "chips/kernel/layout", "chips/kernel/bpf"],
        kernel_program_header,
    ),
    *agent_rows(),
    ("agent", ["platform", LIBRARY, "testing", *CHIPS_FOR_AGENTS, "agent"], any_header),
    ("tests", [""], any_header),
    ("benchmarks", [""], any_header),
    ("fuzz", [""], any_header),
    ("examples", [""], any_header),
]

INCLUDE = re.compile(r"\s*#\s*(?:include|include_next|import)\b\s*(.*)")
SPELLED = re.compile(r'"([^"]+)"|<([^>]+)>')


# Their own rows are for the files directly in them: each of their folders has a row.
WITH_LAYERS = ("platform", "agent", "chips/soft")


def holds(folder, path):
    return folder == "" or path.startswith(folder + "/")


def row_for(folder, path):
    return holds(folder, path) and (folder not in WITH_LAYERS or posixpath.dirname(path) == folder)


def row_of(path):
    rows = [row for row in ARROWS if row_for(row[0], path)]
    return max(rows, key=lambda row: len(row[0]), default=None)


def find_own(header, includer, allowed, tracked):
    """The tracked file that `header` names, or None."""
    places = ["platform/" + header]
    if not header.startswith("platform/"):
        places.append(header)
    if "" in allowed:
        places.append(posixpath.join(posixpath.dirname(includer), header))
    return next((p for p in map(posixpath.normpath, places) if p in tracked), None)


def fault_of(spelling, includer, row, tracked):
    """What is wrong with one include, or None."""
    folder, allowed, allows_foreign = row
    match = SPELLED.match(spelling)
    if not match:
        return f"{spelling} is not a header's name; allowed are \"own header\" and <other header>"
    header = match[1] or match[2]
    own = find_own(header, includer, allowed, tracked)
    if match[2]:
        if own and "" not in allowed:
            return f'<{header}> is an own header; allowed is "{header}"'
        if not allows_foreign(header):
            return f"{folder}/ may not include <{header}>; allowed are {ALLOWED_FOREIGN[allows_foreign]}"
        return None
    if not own:
        return (
            f'"{header}" is not in the tree; allowed are paths from platform/ or from the root, '
            f"and <{header}> for a header from elsewhere"
        )
    if not any(holds(target, own) for target in allowed):
        return f"{folder}/ may not include {own}; allowed are {', '.join(a + '/' for a in allowed)}"
    return None


def faults_in(includer, text, tracked):
    row = row_of(includer)
    if row is None:
        known = ", ".join(folder + "/" for folder, _, _ in ARROWS)
        yield f"{includer}:1: no arrows are drawn for this folder; allowed are {known}"
        return
    for number, line in enumerate(text.splitlines(), start=1):
        if match := INCLUDE.match(line):
            if fault := fault_of(match[1].strip(), includer, row, tracked):
                yield f"{includer}:{number}: {fault}"


def check(root, paths):
    """All faults in the sources `paths`, which are relative to the folder `root`."""
    for path in sorted(paths):
        yield from faults_in(path, (pathlib.Path(root) / path).read_text(encoding="utf-8"), set(paths))


def main(arguments):
    root = str(pathlib.Path(arguments[0] if arguments else ".").resolve())
    faults = list(check(root, tracked("include_arrows", root, "*.h", "*.c", "*.cpp")))
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
