"""The configurations of a stress run, what `show actions` must print for each, and torn files.

A version is a whole configuration, and no two versions have the same actions. What it must lead to is
computed from its parts here, not read from an agent.
"""

import json
import os
import pathlib


class Version:
    """A policy with one rule for each VRF, on some interfaces."""

    def __init__(self, number, size):
        self.number = number
        first = number * size // 2  # half of the VRFs are those of the version before
        self.vrfs = [f"vrf{first + i}" for i in range(size)]
        self.interfaces = [f"eth{number}", f"eth{number + 1}"]
        self.text = json.dumps(self.document()).encode()

    def document(self, applied="P", twice=()):
        rules = [{"sequence-id": number,
                  "action": {"config": {"network-instance": vrf}}}
                 for number, vrf in enumerate(self.vrfs, 1)]
        interfaces = [{"interface-id": name, "config": {"apply-vrf-selection-policy": applied}}
                      for name in self.interfaces]
        default = {"name": "DEFAULT", "config": {"type": "DEFAULT_INSTANCE"},
                   "interfaces": {"interface": [{"id": "plain", "config": {"id": "plain"}}]},
                   "policy-forwarding": {
                       "policies": {"policy": [{"policy-id": "P",
                                                "config": {"type": "VRF_SELECTION_POLICY"},
                                                "rules": {"rule": rules}}]},
                       "interfaces": {"interface": interfaces}}}
        others = [{"name": name, "config": {"type": "L3VRF"}} for name in [*self.vrfs, *twice]]
        return {"network-instances": {"network-instance": [default, *others]}}

    def actions(self):
        """What `actions_in` returns for this version."""
        return frozenset((vrf, "programmedInHw", frozenset((name, number) for name in self.interfaces))
                         for number, vrf in enumerate(self.vrfs, 1))

    def wrong_by_content(self):
        """Whole JSON documents that are no configurations."""
        return [json.dumps(self.document(applied="Q")).encode(),
                json.dumps(self.document(twice=self.vrfs[-1:])).encode()]


def actions_in(output):
    """The VRF, the status and the users of each action in the JSON of `show actions`."""
    return frozenset((action["vrfName"], action["status"],
                      frozenset((user["interface"], user["rule"]) for user in action["usedBy"]))
                     for action in output["actions"])


def is_on_the_way(shown, versions):
    """Whether `actions_in` may return this while one of the versions is replaced by another."""
    users = {}
    for version in versions:
        for vrf, _, used_by in version.actions():
            users[vrf] = users.get(vrf, frozenset()) | used_by
    return len(versions) > 1 and all(
        vrf in users and status == "programmedInHw" and used_by <= users[vrf]
        for vrf, status, used_by in shown)


def torn_text(random, version, other):
    """Bytes that an interrupted write of the version may leave. They are no configuration."""
    text = version.text
    begin = text[:random.randrange(1, len(text) - 1)]
    kind = random.randrange(5)
    if kind == 0:
        return begin
    if kind == 1:
        return begin.ljust(len(text), b"\0")  # blocks that were not written
    if kind == 2:
        return begin + other.text
    if kind == 3:
        return b""
    return random.choice(version.wrong_by_content())


class File:
    """The configuration file of the daemon, which is replaced, rewritten and damaged."""

    def __init__(self, path):
        self.path = pathlib.Path(path)

    def replace(self, text):
        """By a rename, so that a reader finds the old or the new file."""
        fresh = self.path.with_suffix(".fresh")
        fresh.write_bytes(text)
        if self.path.is_dir():
            self.path.rmdir()
        fresh.rename(self.path)

    def rewrite(self, text):
        """In place, by one write."""
        self.keep_regular()
        self.path.write_bytes(text)

    def pieces(self, random, text):
        """Rewrites the file in place, one of a few pieces at a time."""
        self.keep_regular()
        least = len(text) // 8
        with open(self.path, "wb", buffering=0) as file:
            while text:
                size = random.randint(least, 4 * least)
                file.write(text[:size])
                text = text[size:]
                yield

    def damage(self, random):
        """Leaves nothing, or something that is not a file which the agent reads."""
        self.remove()
        kind = random.randrange(4)
        if kind == 0:
            self.path.mkdir()
        elif kind == 1:
            os.mkfifo(self.path)
        elif kind == 2:
            with open(self.path, "wb") as file:
                file.truncate(65 << 20)  # more than the agent reads

    def keep_regular(self):
        if not self.path.is_file():
            self.remove()

    def remove(self):
        if self.path.is_dir():
            self.path.rmdir()
        elif self.path.exists():
            self.path.unlink()
