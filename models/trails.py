"""Writes trails of the models as text files, which tests replay against the code.

usage: trails.py BUILD_FOLDER OUTPUT_FOLDER

A file has the trails of one fault, or trails of the model without faults. A line `trail` begins each of
them. The trails of `propagation.pml` are event lines of the agent, and `use VRF` and `unuse VRF` for a
configuration that adds or removes the rule into the VRF. Those of `rule_order.pml` are two lists of
rules and the room for rules on the chip.
"""

import pathlib
import sys

from search import Search

TRAILS = 8  # of each fault
HISTORIES = 8  # without a fault
STEPS = 6000  # of a history, some hundreds for each event
SEEDS = 400  # the most searches for the trails of one fault
ROOM = 100

# The file and what the model must find.
PROPAGATION = ((1, "not-asked-again"), (2, "default-vrf-facts"))
RULE_ORDER = ((3, "rule-before-resource"), (4, "moved-too-early"), (5, "truncated"))

# The lists that the search for a fault looks at. Fault 4: the last two of four old rules stay, and
# one new rule follows them. Fault 5: there is an old policy to keep.
ASSUMED = {4: "(oldCount == 4 && newCount == 3 && keptAt[0] == 2 && keptAt[1] == 3)", 5: "(oldCount > 0)"}

# The ids that a new agent assigns to the VRFs of the test's configuration.
IDS = {"default": 1, "red": 2, "blue": 3, "green": 4}


def event_lines(events):
    """The lines for the agent. A second change of a prefix length or of the flag takes back the first."""
    lines, lens, decap = ["chip capacity 1"], set(), False
    for event in events:
        kind, *words = event.split()
        vrf = words[0] if words else ""
        if kind == "use":
            lines.append(f"{'use' if words[1] == '1' else 'unuse'} {vrf}")
        elif kind == "id":
            lines.append(f"vrf {vrf} id {IDS[vrf] if words[1] == '1' else 0}")
        elif kind == "lens":
            lens ^= {vrf}
            lines.append(f"prefix-lens ipv4 {vrf} {'24' if vrf in lens else 'remove'}")
        elif kind == "fallback":
            lines.append(f"fallback {vrf} {'remove' if words[1] == 'none' else 'to ' + words[1]}")
        elif kind == "decap":
            decap = not decap
            lines.append(f"decap-nh {'on' if decap else 'off'}")
        elif kind == "capacity":
            lines.append(f"chip capacity {words[0]}")
        else:
            raise ValueError(f"no line for the event {event}")
    return lines


def list_lines(printed):
    """The lists of a run, and the rules that stayed."""
    old, new, stays, room = [], [], [], ROOM
    for line in printed:
        kind, *words = line.split()
        if kind == "old":
            old.append(words[0])
        elif kind == "new":
            new.append(words[0])
        elif kind == "stays":
            stays.append((int(words[0]), int(words[1])))
        elif kind == "full":
            room = int(words[1])
    lines = [" ".join(["old", *old]), " ".join(["new", *new]), f"room {room}"]
    return lines, old, new, stays


def longest_common(old, new):
    """The longest common subsequences of two lists, as sets of pairs of places."""
    if not old or not new:
        return {()}
    found = longest_common(old[:-1], new) | longest_common(old, new[:-1])
    if old[-1] == new[-1]:
        last = (len(old) - 1, len(new) - 1)
        found |= {(*pairs, last) for pairs in longest_common(old[:-1], new[:-1])}
    length = max(map(len, found))
    return {pairs for pairs in found if len(pairs) == length}


def is_the_change_of_the_code(old, new, stays):
    """The code keeps a longest common subsequence. The trail is for the code if there is only one."""
    return longest_common(old, new) == {tuple(stays)}


def random_trails(search, depth):
    """Trails of searches in random order."""
    search.compile()
    for seed in range(1, SEEDS + 1):
        search.forget_trails()
        search.run(f"-m{depth}", f"-RS{seed}")
        violated, printed = search.trail()
        if violated:
            yield printed


def shortest_trail(search):
    search.compile()
    search.run()
    return search.trail()[1]


def trails_of_propagation(build, fault):
    macros = [f"FAULT={fault}", "PLANNED=0"]
    trails = [event_lines(shortest_trail(Search(build, "shortest", "propagation", macros, ["-DBFS"])))]
    random = Search(build, "random", "propagation", macros, ["-DT_RAND"])
    for printed in random_trails(random, 60):
        lines = event_lines(printed)
        if lines not in trails:
            trails.append(lines)
        if len(trails) == TRAILS:
            break
    return trails


def trails_of_rule_order(build, fault):
    trails = []
    macros = [f"FAULT={fault}"]
    if fault in ASSUMED:
        macros.append(f"ASSUMED={ASSUMED[fault]}")
    random = Search(build, "random", "rule_order", macros, ["-DT_RAND"])
    for printed in random_trails(random, 400):
        lines, old, new, stays = list_lines(printed)
        if is_the_change_of_the_code(old, new, stays) and lines not in trails:
            trails.append(lines)
        if len(trails) == TRAILS:
            break
    return trails


def histories(build):
    """Random runs of propagation.pml without a fault."""
    search = Search(build, "random", "propagation", ["PLANNED=0"])
    return [event_lines(search.simulate(seed, STEPS)) for seed in range(1, HISTORIES + 1)]


def write(folder, name, about, trails):
    text = f"# {about} Written by models/trails.py.\n"
    for trail in trails:
        text += "\n".join(["trail", *trail, ""])
    (folder / name).write_text(text, encoding="utf-8")
    print(f"{name}: {len(trails)} trails, {sum(map(len, trails))} lines")


def main():
    build, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    for fault, name in PROPAGATION:
        write(folder, f"{name}.events", f"Trails of propagation.pml with FAULT={fault}.",
              trails_of_propagation(build, fault))
    for fault, name in RULE_ORDER:
        write(folder, f"{name}.lists", f"Trails of rule_order.pml with FAULT={fault}.",
              trails_of_rule_order(build, fault))
    write(folder, "random.events", "Random runs of propagation.pml.",
          histories(build))


if __name__ == "__main__":
    main()
