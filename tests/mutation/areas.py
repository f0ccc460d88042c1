"""The areas of the tree, and the programs that test each, those first that fail first.

Tests that take long are left out where others state the same.
"""

import dataclasses

AGENT = "zel-agent"
SHARED_LIBRARIES = ["libZelPlatform.so", "libZelVrfSelectionPolicy.so"]
# Programs that a script runs.
SCRIPTS = {
    "conformance": ("tests/testing/conformance_faults_test.py", "zel_wrong_chips"),
}
LIBRARY = [
    "tables_tests",
    "vrf_tests",
    "fault_tests --gtest_filter=HookThrows.*",
    "refresh_cost_tests --gtest_filter=-RefreshCost*",
    "policy_tests --gtest_filter=-*DuringRebuild.*",
    "vrf-soak 20000",
    "model_tests",
    "policy_tests --gtest_filter=*DuringRebuild.*",
]
AGENT_UNITS = ["zel_agent_tests", "zel_agent_control_tests", "zel_agent_command_line_tests"]
DAEMON = "zel_agent_daemon_tests --gtest_filter=-KilledReloads.*"
AGENT_PROCESSES = ["zel_agent_process_tests", "zel_agent_trace_tests", "zel_agent_feature_tests"]


@dataclasses.dataclass(frozen=True)
class Area:
    """Some folders, which are reported together."""

    name: str
    folders: tuple  # each with its slash
    programs: tuple

    @property
    def quick(self):
        return self.programs[:2]

    def has(self, file):
        return file.startswith(self.folders)


def area(name, folders, *programs):
    return Area(name, tuple(folders), programs)


AREAS = [
    area("platform", ["platform/"], "platform_tests", "reflection_tests", "zel_agent_tests",
         "zel_agent_trace_tests", *LIBRARY[:2]),
    area("values", ["ZelVrfSelectionPolicy/values/"], "values_tests", *LIBRARY[:2], "reflection_tests"),
    area("tables", ["ZelVrfSelectionPolicy/tables/"], *LIBRARY),
    area("vrf", ["ZelVrfSelectionPolicy/vrf/"], "vrf_tests", "tables_tests", *LIBRARY[2:]),
    area("policy", ["ZelVrfSelectionPolicy/policy/"], LIBRARY[4], "model_tests", LIBRARY[-1]),
    area("reflection", ["ZelVrfSelectionPolicy/" + name for name in ("reflection/", "trace/", "Zel")],
         "reflection_tests", "LoadedAloneTest", "LoadedBesidePlatformTest", "vrf_tests", "zel_agent_control_tests"),
    area("testing", ["testing/"], "testing_tests", "conformance"),
    area("chips", ["chips/"], "zel_soft_chip_tests", *AGENT_UNITS, "zel_agent_feature_tests"),
    area("agent/config", ["agent/language/", "agent/config/"], "zel_agent_config_tests", *AGENT_UNITS,
         *AGENT_PROCESSES),
    area("agent/model", ["agent/model/", "agent/reports/"], *AGENT_UNITS, "zel_agent_feature_tests",
         "zel_agent_process_tests"),
    area("agent/commands", ["agent/commands/"], "zel_agent_control_tests",
         "zel_agent_command_line_tests", *AGENT_PROCESSES),
    area("agent/serve", ["agent/serve/"], "zel_agent_control_tests", "zel_agent_serve_tests", DAEMON),
    area("agent/main", ["agent/CommandLine", "agent/main"], "zel_agent_command_line_tests",
         *AGENT_PROCESSES, DAEMON),
]  # fmt: skip
