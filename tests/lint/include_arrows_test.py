"""Every include against the arrows is reported in a small tree; one along them is not."""

import itertools
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes
import include_arrows

LIBRARY = "ZelVrfSelectionPolicy"

# The domain types of the platform with one header each, and the others of them that it may include.
ACL, CLASSIFICATION = "platform/Acl/Config.h", "platform/Classification/UdfConfig.h"
IP, IP6, L3 = "platform/Ip/Config.h", "platform/Ip6/Config.h", "platform/L3/VrfName.h"
LAG, MIRRORING = "platform/Lag/Input/Config.h", "platform/Mirroring/Config.h"
POLICY_MAP, ROUTING = "platform/PolicyMap/IntfConfig.h", "platform/Routing/Hardware/VrfStatus.h"
ROUTING6 = "platform/Routing6/Hardware/RouteStatus.h"
SFLOW, ZEL = "platform/Sflow/InterfaceCollector.h", "platform/Zel/ZelBaseHelper.h"
FALLBACK = "platform/VrfSelectionPolicy/VrfSelectionFallbackVrf.h"
DOMAIN_TYPES = {
    **{path: [] for path in (ACL, IP, IP6, L3, LAG, MIRRORING, SFLOW, ZEL)},
    CLASSIFICATION: [IP],
    POLICY_MAP: [CLASSIFICATION, IP, L3, ZEL],
    ROUTING: [L3],
    ROUTING6: [L3, ROUTING],
    FALLBACK: [L3],
}
TRAFFIC_POLICY = "platform/TrafficPolicy/ZelTrafficPolicySm.h"


def spelled(path):
    return '"' + path.removeprefix("platform/") + '"'


# Every include here is allowed.
TREE = {
    "platform/Velo/String.h": ["<string>", "<cassert>"],
    "platform/Quarry/Slab.h": ["<fcntl.h>", "<sys/mman.h>", "<unistd.h>"],
    "platform/Mox/Ptr.h": ['"Velo/String.h"', '"Quarry/Slab.h"', "<atomic>"],
    "platform/Blinklog/Ring.h": ['"Mox/Ptr.h"'],
    "platform/Duolog/Message.h": ['"Blinklog/Ring.h"', '"Mox/Ptr.h"'],
    "platform/Bost/TimerWheel.h": ['"Mox/Ptr.h"'],
    **{path: ['"Mox/Ptr.h"', *map(spelled, others)] for path, others in DOMAIN_TYPES.items()},
    TRAFFIC_POLICY: [spelled(POLICY_MAP), '"Duolog/Message.h"'],
    "platform/TypeTable.cpp": [*map(spelled, DOMAIN_TYPES), spelled(TRAFFIC_POLICY), "<array>"],
    f"{LIBRARY}/values/Action.h": ['"L3/VrfName.h"', "<compare>"],
    f"{LIBRARY}/tables/Config.h": [f'"{LIBRARY}/values/Action.h"', '"Mox/Ptr.h"'],
    f"{LIBRARY}/vrf/VrfSm.h": [f'"{LIBRARY}/tables/Config.h"', f'"{LIBRARY}/values/Action.h"'],
    f"{LIBRARY}/vrf/VrfSm.cpp": [f'"{LIBRARY}/vrf/VrfSm.h"'],
    f"{LIBRARY}/policy/PolicySm.h": [f'"{LIBRARY}/vrf/VrfSm.h"', f'"{LIBRARY}/tables/Config.h"'],
    f"{LIBRARY}/reflection/Types.h": [f'"{LIBRARY}/policy/PolicySm.h"', '"Mox/Ptr.h"'],
    f"{LIBRARY}/{LIBRARY}.h": [f'"{LIBRARY}/policy/PolicySm.h"'],
    f"{LIBRARY}/{LIBRARY}.cpp": [f'"{LIBRARY}/{LIBRARY}.h"', f'"{LIBRARY}/reflection/Types.h"'],
    "testing/Recorder.h": [f'"{LIBRARY}/{LIBRARY}.h"', "<gtest/gtest.h>"],
    "chips/tables/layout/Node.h": ["<linux/types.h>"],
    "chips/tables/Trie.h": ['"chips/tables/layout/Node.h"', '"L3/VrfName.h"', "<vector>"],
    "chips/kernel/layout/Port.h": ['"chips/tables/layout/Node.h"', "<linux/types.h>"],
    "chips/kernel/bpf/parse.h": ['"chips/kernel/layout/Port.h"', "<linux/bpf.h>", "<bpf/bpf_helpers.h>"],
    "chips/kernel/Plane.h": ['"chips/tables/Trie.h"', '"chips/kernel/layout/Port.h"', "<bpf/bpf.h>"],
    "chips/interface/Chip.h": [f'"{LIBRARY}/tables/Config.h"', '"L3/VrfName.h"'],
    "agent/Agent.h": ['"chips/interface/Chip.h"', '"testing/Recorder.h"', "<CLI/CLI.hpp>"],
    "benchmarks/Bench.h": ['"agent/Agent.h"', "<benchmark/benchmark.h>"],
    "fuzz/Fuzz.h": ['"agent/Agent.h"'],
    "examples/Example.h": ['"agent/Agent.h"'],
    "tests/agent/Fixture.h": ['"agent/Agent.h"', "<gmock/gmock.h>"],
    "tests/agent/AgentTest.cpp": ['"Fixture.h"', '"Mox/Ptr.h"', f'"{LIBRARY}/reflection/Types.h"'],
}

# One header of each folder, lower layers first, and which of them it may include.
VELO, QUARRY, MOX = "platform/Velo/String.h", "platform/Quarry/Slab.h", "platform/Mox/Ptr.h"
BLINKLOG, DUOLOG = "platform/Blinklog/Ring.h", "platform/Duolog/Message.h"
BOST = "platform/Bost/TimerWheel.h"
VALUES, TABLES = f"{LIBRARY}/values/Action.h", f"{LIBRARY}/tables/Config.h"
VRF, POLICY = f"{LIBRARY}/vrf/VrfSm.h", f"{LIBRARY}/policy/PolicySm.h"
REFLECTION, UMBRELLA = f"{LIBRARY}/reflection/Types.h", f"{LIBRARY}/{LIBRARY}.h"
CHIP_LAYOUT, CHIP_TABLES = "chips/tables/layout/Node.h", "chips/tables/Trie.h"
KERNEL_LAYOUT, KERNEL_PROGRAM = "chips/kernel/layout/Port.h", "chips/kernel/bpf/parse.h"
KERNEL_CHIP = "chips/kernel/Plane.h"
TESTING, CHIP, AGENT = "testing/Recorder.h", "chips/interface/Chip.h", "agent/Agent.h"
OUTSIDE = ["tests/agent/Fixture.h", "benchmarks/Bench.h", "fuzz/Fuzz.h", "examples/Example.h"]
FRAMEWORK = [VELO, QUARRY, MOX, BLINKLOG, DUOLOG, BOST]
PLATFORM = [*FRAMEWORK, *DOMAIN_TYPES, TRAFFIC_POLICY]
WHOLE_LIBRARY = [VALUES, TABLES, VRF, POLICY, REFLECTION, UMBRELLA]
CHIPS = [CHIP_LAYOUT, CHIP_TABLES, KERNEL_LAYOUT, KERNEL_PROGRAM, KERNEL_CHIP, CHIP]
EVERYTHING = [*PLATFORM, *WHOLE_LIBRARY, TESTING, *CHIPS, AGENT, *OUTSIDE]
MAY_INCLUDE = {
    VELO: [VELO],
    QUARRY: [VELO, QUARRY],
    MOX: [VELO, QUARRY, MOX],
    BLINKLOG: [VELO, QUARRY, MOX, BLINKLOG],
    DUOLOG: [VELO, QUARRY, MOX, BLINKLOG, DUOLOG],
    BOST: FRAMEWORK,
    **{path: [*FRAMEWORK, path, *others] for path, others in DOMAIN_TYPES.items()},
    TRAFFIC_POLICY: PLATFORM,
    VALUES: [*PLATFORM, VALUES],
    TABLES: [*PLATFORM, VALUES, TABLES],
    VRF: [*PLATFORM, VALUES, TABLES, VRF],
    POLICY: [*PLATFORM, VALUES, TABLES, VRF, POLICY],
    REFLECTION: [*PLATFORM, VALUES, TABLES, VRF, POLICY, REFLECTION],
    UMBRELLA: [*PLATFORM, *WHOLE_LIBRARY],
    TESTING: [*PLATFORM, *WHOLE_LIBRARY, TESTING],
    CHIP_LAYOUT: [CHIP_LAYOUT],
    CHIP_TABLES: [*PLATFORM, CHIP_LAYOUT, CHIP_TABLES],
    KERNEL_LAYOUT: [CHIP_LAYOUT, KERNEL_LAYOUT],
    KERNEL_PROGRAM: [CHIP_LAYOUT, KERNEL_LAYOUT, KERNEL_PROGRAM],
    KERNEL_CHIP: [*PLATFORM, *WHOLE_LIBRARY, *CHIPS],
    CHIP: [*PLATFORM, *WHOLE_LIBRARY, CHIP],
    AGENT: [*PLATFORM, *WHOLE_LIBRARY, TESTING, CHIP, AGENT],
    **{path: EVERYTHING for path in OUTSIDE},
}


def write(root, path, includes):
    file = pathlib.Path(root, path)
    file.parent.mkdir(parents=True, exist_ok=True)
    lines = ["// Why it exists.", *(f"#include {include}" for include in includes)]
    file.write_text("\n".join(lines) + "\n", encoding="utf-8")


# The folders of the agent and of the chips; of each step, those of the steps before it may be
# included.
AGENT_STEPS = include_arrows.AGENT_LAYERS
CHIP_STEPS = include_arrows.CHIP_LAYERS


class Layers(unittest.TestCase):
    """Of every two folders of the agent, and of the chips, only the upper includes the lower."""

    def assert_only_downwards(self, steps):
        heights = {folder: height for height, step in enumerate(steps) for folder in step}
        tracked = {f"{folder}/Thing.h" for folder in heights}
        wrong = 0
        for path, target in itertools.permutations(heights, 2):
            with self.subTest(path=path, target=target):
                text = f'#include "{target}/Thing.h"\n'
                faults = list(include_arrows.faults_in(f"{path}/Thing.h", text, tracked))
                if heights[target] < heights[path]:
                    self.assertEqual(faults, [])
                else:
                    wrong += 1
                    self.assertEqual(len(faults), 1, faults)
                    start = f"{path}/Thing.h:1: {path}/ may not include {target}/Thing.h; allowed"
                    self.assertTrue(faults[0].startswith(start), faults[0])
        self.assertGreaterEqual(wrong, len(heights) * (len(heights) - 1) // 2)

    def test_the_agents_layers_include_downwards_only(self):
        layers = ["language", "config", "model", "reports", "commands", "serve"]
        named = [folder.split("/")[1] for step in AGENT_STEPS for folder in step]
        self.assertEqual(list(dict.fromkeys(named)), layers)
        self.assert_only_downwards([*AGENT_STEPS, ["agent"]])

    def test_the_chips_layers_include_downwards_only(self):
        self.assert_only_downwards(CHIP_STEPS)

    def test_the_agent_does_not_know_which_chip_it_drives(self):
        soft = "chips/soft/SoftChip.h"
        for path in [f"{folder}/Thing.h" for step in AGENT_STEPS for folder in step]:
            faults = list(include_arrows.faults_in(path, f'#include "{soft}"\n', {path, soft}))
            self.assertEqual(len(faults), 1, faults)
            self.assertIn(f"may not include {soft}; allowed", faults[0])

    def test_the_agents_words_know_nothing_of_the_domain(self):
        path = "agent/language/Thing.h"
        for header in ["L3/VrfName.h", "Ip/Prefix.h", f"{LIBRARY}/{LIBRARY}.h", "chips/soft/A.h"]:
            own = header if header.startswith((LIBRARY, "chips")) else f"platform/{header}"
            faults = list(include_arrows.faults_in(path, f'#include "{header}"\n', {path, own}))
            self.assertEqual(len(faults), 1, faults)
            self.assertIn(f"may not include {own}; allowed", faults[0])

    def test_a_folder_beside_the_layers_has_no_arrows(self):
        for path in ["agent/helpers/Thing.h", "agent/model/Thing.h", "chips/soft/other/Thing.h"]:
            faults = list(include_arrows.faults_in(path, "", {path}))
            self.assertEqual(len(faults), 1, faults)
            self.assertIn("no arrows are drawn for this folder", faults[0])


class IncludeArrows(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = folder.name
        for path, includes in TREE.items():
            write(self.root, path, includes)

    def faults(self):
        return list(include_arrows.check(self.root, TREE))

    def assert_reported(self, path, include, *words):
        """`include` as the first of `path` is the one fault, at line 2, told in `words`."""
        with self.subTest(path=path, include=include):
            write(self.root, path, [include, *TREE[path]])
            faults = self.faults()
            write(self.root, path, TREE[path])
            self.assertEqual(len(faults), 1, faults)
            self.assertTrue(faults[0].startswith(f"{path}:2: "), faults[0])
            self.assertIn("allowed", faults[0])
            self.assertNotIn("\n", faults[0])
            for word in words:
                self.assertIn(word, faults[0])

    def assert_arrow(self, path, target):
        self.assert_reported(path, spelled(target), f"may not include {target}; allowed are ")

    def assert_allowed(self, path, target):
        with self.subTest(path=path, target=target):
            text = f"#include {spelled(target)}\n"
            self.assertEqual(list(include_arrows.faults_in(path, text, set(TREE))), [])

    def test_a_tree_that_keeps_every_arrow_has_no_fault(self):
        self.assertEqual(self.faults(), [])

    def test_of_every_two_folders_only_the_drawn_arrows_are_allowed(self):
        for path, target in itertools.product(EVERYTHING, EVERYTHING):
            if target in MAY_INCLUDE[path]:
                self.assert_allowed(path, target)
            else:
                self.assert_arrow(path, target)

    def test_every_folder_of_the_platform_is_in_one_layer(self):
        layers = [*include_arrows.FRAMEWORK, *include_arrows.DOMAIN_TYPES,
                  *include_arrows.TRAFFIC_POLICY]
        self.assertEqual(sorted(layers), sorted(path.split("/")[1] for path in PLATFORM))
        self.assertEqual([folder for folder, _, _ in include_arrows.platform_rows()], layers)

    def test_a_layer_of_the_platform_does_not_include_a_higher_one(self):
        layers = [FRAMEWORK, [*DOMAIN_TYPES], [TRAFFIC_POLICY]]
        for lower, higher in itertools.combinations(layers, 2):
            for path, target in itertools.product(lower, higher):
                self.assert_arrow(path, target)

    def test_the_folders_of_the_platform_include_each_other_in_no_circle(self):
        before = set()
        for folder, others, _ in include_arrows.platform_rows():
            self.assertLessEqual(set(others), before, folder)
            before.add(folder)

    def test_platform_and_library_include_only_the_standard_library(self):
        for path in [path for path in TREE if path.startswith(("platform/", LIBRARY))]:
            for header in ["nlohmann/json.hpp", "gtest/gtest.h", "stdio.h", "dlfcn.h"]:
                self.assert_reported(path, f"<{header}>", f"may not include <{header}>")

    def test_unix_headers_are_for_the_framework_only(self):
        for path in [path for path in TREE if path.startswith(LIBRARY)] + [*DOMAIN_TYPES]:
            for header in ["fcntl.h", "unistd.h", "sys/mman.h"]:
                self.assert_reported(path, f"<{header}>", f"may not include <{header}>")

    def test_an_own_header_that_is_not_in_the_tree_is_reported_everywhere(self):
        for path in TREE:
            self.assert_reported(path, '"Mox/Gone.h"', '"Mox/Gone.h" is not in the tree')

    def test_an_own_header_has_one_spelling(self):
        for spelling in ['"VrfSm.h"', '"platform/Mox/Ptr.h"']:
            self.assert_reported(f"{LIBRARY}/vrf/VrfSm.cpp", spelling, "is not in the tree")
        self.assert_reported("agent/Agent.h", "<Mox/Ptr.h>", "is an own header")

    def test_a_test_may_include_an_own_header_as_an_installed_one(self):
        text = f"#include <{UMBRELLA}>\n"
        path = "tests/install/main.cpp"
        self.assertEqual(list(include_arrows.faults_in(path, text, set(TREE))), [])

    def test_an_arrow_is_not_escaped_by_another_way_of_writing_it(self):
        self.assert_reported("testing/Recorder.h", "<chips/interface/Chip.h>", "is an own header")
        self.assert_reported(
            "platform/Velo/String.h", '"Velo/../Mox/Ptr.h"', "may not include platform/Mox/Ptr.h"
        )
        self.assert_reported("platform/Velo/String.h", "PTR_HEADER", "is not a header's name")
        for directive in ["  #include", "# include", "#include_next", "#\tinclude"]:
            with self.subTest(directive=directive):
                text = f'{directive} "Mox/Ptr.h"\n'
                faults = list(include_arrows.faults_in("platform/Velo/String.h", text, set(TREE)))
                self.assertEqual(len(faults), 1, faults)

    def test_a_commented_include_is_no_include(self):
        text = '// #include "Mox/Ptr.h"\n'
        faults = list(include_arrows.faults_in("platform/Velo/String.h", text, set(TREE)))
        self.assertEqual(faults, [])

    def test_a_source_in_a_folder_without_arrows_is_reported(self):
        for path in ["helpers/Thing.h", "chips/other/Chip.h", "Thing.h"]:
            faults = list(include_arrows.faults_in(path, "", {path}))
            self.assertEqual(len(faults), 1, faults)
            self.assertTrue(faults[0].startswith(f"{path}:1: "), faults[0])

    def test_a_folder_of_the_platform_without_a_row_is_reported(self):
        for path in ["platform/New/Thing.h", "platform/Mox2/Ptr.h"]:
            (fault,) = include_arrows.faults_in(path, "", {path})
            self.assertIn("no arrows are drawn", fault)

    def run_on_repository(self):
        return processes.run(
            [sys.executable, include_arrows.__file__, self.root],
            capture_output=True,
            text=True,
            check=False,
        )

    def git(self, *arguments):
        processes.run(["git", "-C", self.root, *arguments], check=True, capture_output=True)

    def test_run_on_a_repository_it_prints_one_line_for_each_fault_and_fails(self):
        self.git("init")
        self.git("add", ".")
        clean = self.run_on_repository()
        self.assertEqual((clean.returncode, clean.stdout, clean.stderr), (0, "", ""))

        write(self.root, "chips/interface/Chip.h", ["<vector>", '"testing/Recorder.h"'])
        broken = self.run_on_repository()
        self.assertEqual(broken.returncode, 1)
        self.assertEqual(
            broken.stdout,
            "chips/interface/Chip.h:3: chips/interface/ may not include testing/Recorder.h; allowed "
            "are platform/, ZelVrfSelectionPolicy/, chips/packet/, chips/programs/, chips/interface/\n",
        )

    def test_untracked_sources_are_not_looked_at_and_do_not_count_as_in_the_tree(self):
        self.git("init")
        self.git("add", ".")
        write(self.root, "platform/Velo/New.h", ['"Mox/Ptr.h"'])
        self.assertEqual(self.run_on_repository().stdout, "")
        write(self.root, "agent/Agent.h", ['"Velo/New.h"'])
        self.assertIn('"Velo/New.h" is not in the tree', self.run_on_repository().stdout)

    def test_a_folder_with_nothing_to_check_is_a_failure(self):
        self.assertNotEqual(self.run_on_repository().returncode, 0)
        empty = pathlib.Path(self.root, "empty")
        empty.mkdir()
        processes.run(["git", "init", str(empty)], check=True, capture_output=True)
        self.root = str(empty)
        self.assertIn("tracks no *.h and no *.c and no *.cpp", self.run_on_repository().stderr)


if __name__ == "__main__":
    unittest.main()
