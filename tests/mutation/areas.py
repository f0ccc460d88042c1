"""The areas of the tree, and the programs that test each, those first that fail first.

Tests that take long are left out where others state the same.
"""

import dataclasses

AGENT = "zel-agent"
PLATFORM, LIBRARY = SHARED_LIBRARIES = ["libZelPlatform.so", "libZelVrfSelectionPolicy.so"]
# Programs that a script runs.
SCRIPTS = {
    "conformance": ("tests/testing/conformance_faults_test.py", "zel_wrong_chips"),
}
TABLES_AND_VRFS = ["tables_tests", "vrf_tests"]
POLICY = "policy_tests --gtest_filter=-*DuringRebuild.*"
REBUILDS = "policy_tests --gtest_filter=*DuringRebuild.*"
MODEL = "model_tests"
MACHINES = ["fault_tests --gtest_filter=HookThrows.*", "refresh_cost_tests --gtest_filter=-RefreshCost*",
            POLICY, "vrf-soak 20000", MODEL, REBUILDS]  # fmt: skip
AGENT_UNITS = ["zel_agent_tests", "zel_agent_control_tests", "zel_agent_command_line_tests"]
AGENT_PROCESSES = ["zel_agent_process_tests", "zel_agent_trace_tests", "zel_agent_feature_tests"]
DAEMON = "zel_agent_daemon_tests --gtest_filter=-KilledReloads.*"


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
         "zel_agent_trace_tests", *TABLES_AND_VRFS),
    area("values", ["ZelVrfSelectionPolicy/values/"], "values_tests", *TABLES_AND_VRFS,
         "reflection_tests"),
    area("tables", ["ZelVrfSelectionPolicy/tables/"], "tables_tests", "vrf_tests", *MACHINES),
    area("vrf", ["ZelVrfSelectionPolicy/vrf/"], "vrf_tests", "tables_tests", *MACHINES),
    area("policy", ["ZelVrfSelectionPolicy/policy/"], POLICY, MODEL, REBUILDS),
    area("reflection", ["ZelVrfSelectionPolicy/" + name for name in ("reflection/", "trace/", "Zel")],
         "reflection_tests", "LoadedAloneTest", "LoadedBesidePlatformTest", "vrf_tests", "zel_agent_control_tests"),
    area("testing", ["testing/"], "testing_tests", "conformance"),
    area("chips", ["chips/"], "zel_soft_chip_tests", "zel_chip_tables_tests", *AGENT_UNITS,
         "zel_agent_feature_tests"),
    area("agent/config", ["agent/language/", "agent/config/"], "zel_agent_config_tests", *AGENT_UNITS,
         *AGENT_PROCESSES),
    area("agent/model", ["agent/model/", "agent/reports/"], *AGENT_UNITS, "zel_agent_feature_tests",
         "zel_agent_process_tests"),
    area("agent/commands", ["agent/commands/"], "zel_agent_control_tests",
         "zel_agent_command_line_tests", *AGENT_PROCESSES),
    area("agent/serve", ["agent/serve/"], "zel_agent_control_tests", "zel_agent_serve_tests",
         "zel_agent_simulator_tests", DAEMON),
    area("agent/main", ["agent/CommandLine", "agent/main"], "zel_agent_command_line_tests",
         *AGENT_PROCESSES, DAEMON),
]  # fmt: skip
