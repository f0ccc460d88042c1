"""The virtual operations of every exported type have the agreed slots.

A program that was compiled against an earlier build calls them by slot, so the order is part of the
binary interface. The test reads it from the compiler's class dump.
"""

import pathlib
import re
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes

LIBRARY = "ZelVrfSelectionPolicy"
SOURCE = f"""
#include "{LIBRARY}/{LIBRARY}.h"
#include "{LIBRARY}/vrf/PrefixLensSm.h"
#include "{LIBRARY}/vrf/RouteStatusReactors.h"

// Implements the pure hooks, so that the dump has their names.
struct Chip final : {LIBRARY}::VrfHelper {{
  Chip() : VrfHelper("chip", nullptr, nullptr, nullptr) {{}}
  {LIBRARY}::HwStatus createVrf(const {LIBRARY}::VrfAction&) override {{ return {{}}; }}
  {LIBRARY}::HwStatus updateVrf(const {LIBRARY}::VrfAction&) override {{ return {{}}; }}
  void deleteVrf(const {LIBRARY}::VrfAction&) override {{}}
}};
"""

# "own" and "inherited" say which class implements the operation, where that is agreed.
ENTITY = ["inherited notifieeList", "inherited hasNotificationActiveIs",
          "inherited zeroReferencesIs", "own fwkType", "destructor"]
TABLE = ["own notifieeList", *ENTITY[1:]]
STATE_MACHINE = ["inherited notifieeList", "own hasNotificationActiveIs",
                 "inherited zeroReferencesIs", "own fwkType", "destructor",
                 "own moxDoZombieReactors"]
REACTOR = ["notifieeList", "hasNotificationActiveIs", "zeroReferencesIs", "fwkType", "destructor",
           "inherited onZeroReferences", "onAttribute", "moxDoZombieReactors"]
ROUTE_STATUS_REACTOR = ["inherited notifieeList", "inherited hasNotificationActiveIs",
                        "inherited zeroReferencesIs", "inherited fwkType", *REACTOR[4:]]
HELPER = [*ENTITY, "inherited nameString", "inherited handleParent"]

SLOTS = {
    f"{LIBRARY}::VrfHwConfig": TABLE,
    f"{LIBRARY}::VrfHwStatus": TABLE,
    f"{LIBRARY}::DependentVrfInfo": ENTITY,
    f"{LIBRARY}::PolicySmMounts": ENTITY,
    f"{LIBRARY}::VrfHelper": [*HELPER, "pure", "pure", "pure"],
    "Chip": ["notifieeList", "hasNotificationActiveIs", "zeroReferencesIs", "fwkType",
             "destructor", "nameString", "handleParent",
             "own createVrf", "own updateVrf", "own deleteVrf"],
    f"{LIBRARY}::ZelVrfSelectionPolicySm": [*STATE_MACHINE, "own handlePolicySmReady"],
    f"{LIBRARY}::VrfSm": STATE_MACHINE,
    f"{LIBRARY}::VrfSm::MoxRoutingHwRouteStatus": ROUTE_STATUS_REACTOR,
    f"{LIBRARY}::VrfSm::MoxRouting6HwRouteStatus": ROUTE_STATUS_REACTOR,
    f"{LIBRARY}::VrfSm::VrfInstanceSm": REACTOR,
    f"{LIBRARY}::VrfSm::NestedSm_VrfPrefixLensInExactMatch": REACTOR,
    f"{LIBRARY}::VrfSm::NestedSm_VrfPrefixLensInExactMatchV6": REACTOR,
}


def class_dump(compiler, include_dirs):
    with tempfile.TemporaryDirectory() as scratch:
        source = pathlib.Path(scratch, "types.cpp")
        source.write_text(SOURCE)
        dump = pathlib.Path(scratch, "types.class")
        processes.run([compiler, "-std=c++20", "-fsyntax-only", f"-fdump-lang-class={dump}",
                       *(f"-I{folder}" for folder in include_dirs), source], check=True,
                      seconds=processes.BUILD_SECONDS)
        return dump.read_text()


def vtables(dump):
    """The operations in the slots of each class, fully qualified and in order."""
    found = {}
    for block in re.split(r"^Vtable for ", dump, flags=re.MULTILINE)[1:]:
        lines = block.split("\n\n")[0].splitlines()
        # After the title and the size come the offset to the top and the type information.
        entries = [re.sub(r"^\d+\s+(\(int \(\*\)\(\.\.\.\)\))?", "", line) for line in lines[4:]]
        found[lines[0]] = entries
    return found


def as_agreed(class_name, entry, agreed):
    """`entry` in the form of `agreed`."""
    if entry == "__cxa_pure_virtual":
        return "pure"
    owner, _, operation = entry.rpartition("::")
    if " " not in agreed:
        return operation
    return f"{'own' if owner == class_name else 'inherited'} {operation}"


class VirtualSlotOrder(unittest.TestCase):
    compiler = None
    include_dirs = ()
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.vtables = vtables(class_dump(cls.compiler, cls.include_dirs))

    def test_every_type_has_its_operations_in_the_agreed_slots(self):
        for class_name, agreed in SLOTS.items():
            with self.subTest(class_name):
                self.assertEqual(self.slots(class_name, agreed), agreed)

    def slots(self, class_name, agreed):
        slots = []
        for entry in self.vtables[class_name]:
            # An abstract class has no destructor to call: its two slots are empty.
            if "~" in entry or entry == "0":
                entry = "destructor"
                if slots[-1:] == ["destructor"]:
                    continue  # one slot completes, the other also deletes
                slots.append(entry)
                continue
            at = len(slots)
            slots.append(as_agreed(class_name, entry, agreed[at] if at < len(agreed) else ""))
        return slots


if __name__ == "__main__":
    VirtualSlotOrder.compiler, *VirtualSlotOrder.include_dirs = sys.argv[1:]
    unittest.main(argv=sys.argv[:1], verbosity=2)
