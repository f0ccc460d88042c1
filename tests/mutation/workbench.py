"""Builds the library with one place broken, and runs the tests against it.

Nothing is written outside the folder of the workbench: a mutant is a copy of one file there, the
objects that it changes are compiled from the copy, and a library is linked from these and from what
the build folder holds already. Tests find that library before their own.
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
# Who calls the inline functions of a header. Unoptimised they are not inlined, and of several copies
# the linker takes the first, so that these are enough to compile anew. Headers that nobody in the
# library calls, whose functions only tests compile, are not broken.
CALLERS = {
    "tables/ActionsByVrf.h": ["tables/ActionsByVrf.cpp", "vrf/ActionRefresh.cpp"],
    "tables/VrfHwStatus.h": [
        "tables/VrfHwStatus.cpp",
        "vrf/ActionRefresh.cpp",
        "vrf/DecapNextHops.cpp",
        "vrf/ResourceLifecycle.cpp",
    ],
    "vrf/NestedSmRemoval.h": ["vrf/PrefixLensSm.cpp", "vrf/VrfInstanceSm.cpp"],
    "vrf/PrefixLensSm.h": ["vrf/PrefixLensSm.cpp", "vrf/VrfSm.cpp"],
    "vrf/RouteStatusReactors.h": ["vrf/RouteStatusReactors.cpp", "vrf/VrfSm.cpp"],
    "vrf/VrfInstanceSm.h": ["vrf/VrfInstanceSm.cpp", "vrf/VrfSm.cpp"],
    "vrf/VrfSm.h": [
        "vrf/ActionRefresh.cpp",
        "vrf/DecapNextHops.cpp",
        "vrf/PrefixLensSm.cpp",
        "vrf/VrfInstanceSm.cpp",
        "vrf/VrfSm.cpp",
    ],
}
# Read once for all mutants in sources; most of the time to compile one would go into them.
PRECOMPILED = [
    "Mox/Exceptions.h",
    "Mox/SassertHelper.h",
    f"{LIBRARY}/trace/Source.h",
    f"{LIBRARY}/vrf/NestedSmRemoval.h",
    f"{LIBRARY}/vrf/PrefixLensSm.h",
    f"{LIBRARY}/vrf/RouteStatusReactors.h",
    f"{LIBRARY}/vrf/VrfInstanceSm.h",
]
# The quickest to fail first.
PROGRAMS = {
    "tables": ["tables_tests", "refresh_cost_tests", "vrf_tests", "model_tests", "policy_tests"],
    "vrf": ["vrf_tests", "model_tests", "refresh_cost_tests", "policy_tests", "tables_tests"],
}
CPU_SECONDS = 60  # of one program; the slowest takes a tenth of it
WALL_SECONDS = 600
ADDRESS_SPACE = 4 << 30


@dataclasses.dataclass(frozen=True)
class Outcome:
    how: str  # "failed", "crashed", "hung" or "survived"
    where: str = ""


def sources_compiled(file):
    return CALLERS.get(file, []) if file.endswith(".h") else [file]


def limit_resources():
    resource.setrlimit(resource.RLIMIT_CPU, (CPU_SECONDS, CPU_SECONDS + 5))
    resource.setrlimit(resource.RLIMIT_AS, (ADDRESS_SPACE, ADDRESS_SPACE))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def first_failure(output):
    found = re.search(r"\[  FAILED  \] ([\w./]+)", output) or re.search(r"\[ RUN +\] (\S+)", output)
    return found[1] if found else ""


class Workbench:
    """One place to build and test mutants, one after the other, in the folder `place`."""

    def __init__(self, root, build, place):
        self.root, self.build = pathlib.Path(root), pathlib.Path(build)
        self.place = pathlib.Path(place)
        self.library = self.place / "lib" / f"lib{LIBRARY}.so.1"
        self.library.parent.mkdir(parents=True)
        (self.place / "objects").mkdir()
        entries = json.loads((self.build / "compile_commands.json").read_text())
        self.commands = {entry["file"]: entry for entry in entries}
        self.link_command = self._link_command()
        self.unbroken = {}
        self._precompile()

    def make(self, mutant, text):
        """Links the library with `mutant`; false if it cannot be compiled or changes nothing."""
        copy = self.place / "tree" / LIBRARY / mutant.file
        copy.parent.mkdir(parents=True, exist_ok=True)
        sources = sources_compiled(mutant.file)
        for source in set(sources) - self.unbroken.keys():
            self.unbroken[source] = self._compile(source, copy, text)
        copy.write_text(mutant.applied_to(text), encoding="utf-8")
        try:
            objects = [self._compile(source, copy) for source in sources]
            if all(made == self.unbroken[of] for made, of in zip(objects, sources)):
                return False
            self._link(sources)
        except subprocess.CalledProcessError:
            return False
        finally:
            copy.unlink()
        return True

    def test(self, programs):
        """The outcome of the first program that notices."""
        for program in programs:
            how, output = self._run(program)
            if how != "survived":
                return Outcome(how, f"{program} {first_failure(output)}".strip())
        return Outcome("survived")

    def _command(self, source):
        entry = self.commands[str(self.root / LIBRARY / source)]
        words = shlex.split(entry["command"])
        if os.path.basename(words[0]) == "ccache":
            words = words[1:]
        return words[: words.index("-o")] + ["-O0", "-w"]

    def _call(self, command):
        subprocess.run(
            command, cwd=self.build, check=True, stdin=subprocess.DEVNULL, capture_output=True
        )

    def _object(self, source):
        return self.place / "objects" / (source.replace("/", "-") + ".o")

    def _precompile(self):
        header = self.place / "precompiled.h"
        header.write_text("".join(f'#include "{name}"\n' for name in PRECOMPILED))
        command = self._command("vrf/VrfSm.cpp")
        self._call([*command, "-x", "c++-header", str(header), "-o", f"{header}.gch"])

    def _compile(self, source, copy, text=None):
        """The bytes of the object, compiled from `copy`, which holds `text` if that is given."""
        if text is not None:
            copy.write_text(text, encoding="utf-8")
        compiler, *options = self._command(source)
        made = self._object(source)
        if copy.suffix == ".h":
            seen, compiled = ["-I", str(self.place / "tree")], self.root / LIBRARY / source
        else:
            seen, compiled = ["-include", str(self.place / "precompiled.h")], copy
        self._call([compiler, *seen, *options, "-c", str(compiled), "-o", str(made)])
        return made.read_bytes()

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
        objects = [str(self._object(source)) for source in sources]
        self._call([*words[:at], "-o", str(self.library), *objects, *words[at + 2 :]])

    def _run(self, program):
        environment = dict(
            os.environ,
            LD_LIBRARY_PATH=str(self.library.parent),
            GTEST_FAIL_FAST="1",
            MOX_HASH_SEED="1",
            ZEL_TEST_SEED="1",
        )
        process = subprocess.Popen(
            [str(self.build / "bin" / program)],
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
