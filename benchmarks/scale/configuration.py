#!/usr/bin/env python3
"""Writes an OpenConfig configuration in which one policy is applied to many interfaces.

    configuration.py RULES INTERFACES [ACTIONS] > big.json

Each rule matches another IPv4 destination. ACTIONS, 100 if not given, is the number of VRFs that
the rules name in turn.
"""

import json
import sys


def instance(name, kind, policy_forwarding):
    identity = "openconfig-network-instance-types:" + kind
    return {"name": name, "config": {"name": name, "type": identity},
            "policy-forwarding": policy_forwarding}


def rule(number, actions):
    sequence = 10 * (number + 1)
    address = f"10.{number >> 16}.{number >> 8 & 255}.{number & 255}/32"
    return {"sequence-id": sequence, "config": {"sequence-id": sequence},
            "ipv4": {"config": {"destination-address": address}},
            "action": {"config": {"network-instance": f"vrf-{number % actions}"}}}


def interface(number):
    name = f"Ethernet{number}"
    return {"interface-id": name,
            "config": {"interface-id": name, "apply-vrf-selection-policy": "many"}}


def configuration(rules, interfaces, actions):
    policy = {"policy-id": "many",
              "config": {"policy-id": "many", "type": "VRF_SELECTION_POLICY"},
              "rules": {"rule": [rule(number, actions) for number in range(rules)]}}
    forwarding = {"policies": {"policy": [policy]},
                  "interfaces": {"interface": [interface(n) for n in range(interfaces)]}}
    instances = [instance("DEFAULT", "DEFAULT_INSTANCE", forwarding)]
    instances += [instance(f"vrf-{n}", "L3VRF", {}) for n in range(actions)]
    return {"openconfig-network-instance:network-instances": {"network-instance": instances}}


def main():
    numbers = [int(word) for word in sys.argv[1:]]
    if len(numbers) not in (2, 3):
        sys.exit("usage: configuration.py RULES INTERFACES [ACTIONS]")
    actions = numbers[2] if len(numbers) == 3 else 100
    json.dump(configuration(numbers[0], numbers[1], actions), sys.stdout)


if __name__ == "__main__":
    main()
