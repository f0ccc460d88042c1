"""Builds the library with one mutant, and runs the tests with it.

All output is in the folder of the workbench. A mutant is a changed copy of one file. The objects that
it affects are compiled from the copy. The library is linked from these and from the objects of the
build folder. The tests find that library before the library of the build folder.
"""

import dataclasses
import json
import os
import pathlib
import re
import resource
import shlex
import signal
import subprocess

LIBRARY = "ZelVrfSelectionPolicy"
# The sources that call the inline functions of each header. Unoptimised code does not inline them, and
# the linker takes the first of several copies. So it is enough to compile these sources again, as one
# source. Headers whose functions only tests call have no mutants.
CALLERS = {
    "tables/ActionsByVrf.h": [
        "tables/ActionsByVrf.cpp",
        "tables/VrfHwStatus.cpp",
        "vrf/VrfResources.cpp",
    ],
    "tables/ActionsNaming.h": ["vrf/VrfResources.cpp"],
    "tables/VrfHwStatus.h": ["tables/VrfHwStatus.cpp", "vrf/VrfResources.cpp"],
    "vrf/FactsAtStart.h": ["vrf/FactsAtStart.cpp", "vrf/VrfSm.cpp"],
    "vrf/FallbackLinks.h": ["vrf/FallbackLinks.cpp", "vrf/VrfSm.cpp"],
    "vrf/PrefixLensSm.h": ["vrf/PrefixLensSm.cpp", "vrf/VrfSm.cpp", "vrf/VrfWatches.cpp"],
    "vrf/RouteStatusReactors.h": ["vrf/RouteStatusReactors.cpp", "vrf/VrfSm.cpp"],
    "vrf/VrfInstanceSm.h": ["vrf/VrfInstanceSm.cpp", "vrf/VrfSm.cpp", "vrf/VrfWatches.cpp"],
    "vrf/VrfSm.h": ["vrf/VrfSm.cpp"],
    "vrf/VrfWatches.h": ["vrf/VrfSm.cpp", "vrf/VrfWatches.cpp"],
}
# Headers that are compiled once for all mutants. They would take most of the time of each compilation.
PRECOMPILED = [
    "algorithm",
    "optional",
    "ostream",
    "vector",
    "Acl/Config.h",
    "Duolog/Message.h",
    "L3/VrfName.h",
    "Mox/Dir.h",
    "Mox/EnumType.h",
    "Mox/Exceptions.h",
    "Mox/HashMap2018.h",
    "Mox/NotifieeConst.h",
    "Mox/SassertHelper.h",
    "Quarry/Slab.h",
    "Routing/Hardware/RouteStatus.h",
    "Routing6/Hardware/RouteStatus.h",
    "Velo/Publisher.h",
    "VrfSelectionPolicy/VrfSelectionFallbackVrf.h",
    "Zel/ZelBaseHelper.h",
]
# Without the tests that take minutes: the cost of a refresh among a hundred thousand actions, and the
# failure of each hook in turn.
OTHERS = [
    "fault_tests --gtest_filter=HookThrows.*",
    "refresh_cost_tests --gtest_filter=-RefreshCost*",
    "policy_tests --gtest_filter=-*DuringRebuild.*",
    "vrf-soak 20000",
    "model_tests",
    "policy_tests --gtest_filter=*DuringRebuild.*",
]
# The programs that fail first are first.
PROGRAMS = {
    "tables": ["tables_tests", "vrf_tests", *OTHERS],
    "vrf": ["vrf_tests", "tables_tests", *OTHERS],
}
CPU_SECONDS = 120  # for one program; the slowest takes a tenth of it
WALL_SECONDS = 600
MEGABYTES = 4096


@dataclasses.dataclass(frozen=True)
class Outcome:
    how: str  # "failed", "crashed", "hung" or "survived"
    where: str = ""


def sources_compiled(file):
    return CALLERS.get(file, []) if file.endswith(".h") else [file]


def limit_resources():
    resource.setrlimit(resource.RLIMIT_CPU, (CPU_SECONDS, CPU_SECONDS + 5))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def first_failure(output):
    """The first test that failed, or the last test that began."""
    failed = re.search(r"\[  FAILED  \] ([\w./]+)", output)
    begun = re.findall(r"\[ RUN +\] (\S+)", output)
    return failed[1] if failed else begun[-1] if begun else ""


class Workbench:
    """Builds and tests mutants, one after the other, in the folder `place`."""

    def __init__(self, root, build, place):
        self.root, self.build = pathlib.Path(root), pathlib.Path(build)
        self.place = pathlib.Path(place)
        self.library = self.place / "lib" / f"lib{LIBRARY}.so.1"
        self.library.parent.mkdir(parents=True)
        self.object = self.place / "broken.o"
        self.precompiled = self.place / "precompiled.h"
        self.link_command = self._link_command()
        self.unbroken = {}
        self._precompile()

    def link_unbroken(self):
        self._link([])

    def make(self, mutant, text):
        """Links the library with `mutant`. False if it does not compile or changes nothing."""
        if mutant.file not in self.unbroken:
            self.unbroken[mutant.file] = self._compile(mutant.file, text)
        try:
            if self._compile(mutant.file, mutant.applied_to(text)) == self.unbroken[mutant.file]:
                return False
            self._link(sources_compiled(mutant.file))
        except subprocess.CalledProcessError:
            return False
        return True

    def test(self, programs):
        """The outcome of the first program that does not pass."""
        for program, *arguments in map(str.split, programs):
            how, output = self._run(program, arguments)
            if how != "survived":
                return Outcome(how, f"{program} {first_failure(output)}".strip())
        return Outcome("survived")

    def _command(self):
        """The compile command of the library's sources, without the source and the object."""
        entries = json.loads((self.build / "compile_commands.json").read_text())
        folder = str(self.root / LIBRARY)
        found = next(entry["command"] for entry in entries if entry["file"].startswith(folder))
        words = shlex.split(found)
        if os.path.basename(words[0]) == "ccache":
            words = words[1:]
        return words[: words.index("-o")] + ["-O0", "-w"]

    def _call(self, command):
        subprocess.run(
            command, cwd=self.build, check=True, stdin=subprocess.DEVNULL, capture_output=True
        )

    def _precompile(self):
        self.precompiled.write_text("".join(f"#include <{name}>\n" for name in PRECOMPILED))
        command = [*self._command(), "-x", "c++-header", str(self.precompiled)]
        self._call([*command, "-o", f"{self.precompiled}.gch"])

    def _compile(self, file, text):
        """Compiles the sources that depend on `file` with the content `text`; the object's bytes."""
        copy = self.place / "tree" / LIBRARY / file
        copy.parent.mkdir(parents=True, exist_ok=True)
        copy.write_text(text, encoding="utf-8")
        together = self.place / "together.cpp"
        sources = sources_compiled(file)
        together.write_text("".join(f'#include "{LIBRARY}/{name}"\n' for name in sources))
        compiler, *options = self._command()
        seen = ["-include", str(self.precompiled), "-I", str(self.place / "tree")]
        try:
            self._call([compiler, *seen, *options, "-c", str(together), "-o", str(self.object)])
        finally:
            copy.unlink()
        return self.object.read_bytes()

    def _link_command(self):
        target = f"lib/lib{LIBRARY}.so"
        listed = subprocess.run(
            ["ninja", "-C", str(self.build), "-t", "commands", target],
            check=True,
            text=True,
            capture_output=True,
        )
        linking = [line for line in listed.stdout.splitlines() if f"-soname,lib{LIBRARY}" in line]
        words = shlex.split(linking[-1].strip())
        return [word for word in words if word not in (":", "&&")]

    def _link(self, sources):
        replaced = {f"{LIBRARY}/CMakeFiles/{LIBRARY}.dir/{source}.o" for source in sources}
        words = [word for word in self.link_command if word not in replaced]
        at = words.index("-o")
        broken = [str(self.object)] if sources else []
        self._call([*words[:at], "-o", str(self.library), *broken, *words[at + 2 :]])

    def _run(self, program, arguments):
        environment = dict(
            os.environ,
            LD_LIBRARY_PATH=f"{self.library.parent}:{self.build / 'lib'}",
            ASAN_OPTIONS=f"hard_rss_limit_mb={MEGABYTES}:exitcode=99",
            GTEST_FAIL_FAST="1",
            MOX_HASH_SEED="1",
            ZEL_TEST_SEED="1",
            ZEL_TEST_PERCENT="25",
        )
        process = subprocess.Popen(
            [str(self.build / "bin" / program), *arguments],
            cwd=self.place,
            env=environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            preexec_fn=limit_resources,
            start_new_session=True,
        )
        try:
            output = process.communicate(timeout=WALL_SECONDS)[0].decode(errors="replace")
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            return "hung", ""
        if process.returncode == 0:
            return "survived", output
        if process.returncode in (-signal.SIGXCPU, -signal.SIGKILL):
            return "hung", output
        return ("failed" if process.returncode == 1 else "crashed"), output
