"""Builds the product with one mutant, and runs the tests that may notice it.

All output is in the folder of the workbench. The compiler reads the changed file in place of the
original through an overlay. What is affected is compiled and linked again; the rest is taken from the
build folder. Programs are linked when their turn comes, since most mutants are noticed by the first.
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
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes
from areas import AGENT, LIBRARY, SCRIPTS, SHARED_LIBRARIES

# Positions in debug information and in reports of undefined behaviour change with every mutant. Without
# them, equal objects mean that a mutant changes nothing.
COMPARABLE = ["-w", "-g0", "-fno-sanitize=undefined"]
# A header that more sources of a library include is stated by a test alone.
MOST_INCLUDERS = 8
WALL_SECONDS = 100  # for one program
USUAL_CPU_SECONDS = 20
MEGABYTES = 4096


@dataclasses.dataclass(frozen=True)
class Outcome:
    how: str  # "failed", "crashed", "hung" or "survived"
    where: str = ""


class Workbench:
    """Builds and tests mutants, one after the other, in the folder `place`."""

    def __init__(self, folder, place, cpu_seconds, wall_seconds=WALL_SECONDS):
        """`cpu_seconds` has how long each program may compute, and may be filled later."""
        self.folder, self.place, self.cpu_seconds = folder, pathlib.Path(place), cpu_seconds
        self.wall_seconds = wall_seconds
        for name in ("bin", "lib", "run"):
            (self.place / name).mkdir(parents=True)
        self.changed = self.place / "changed"
        self.overlay = self.place / "overlay.yaml"
        self.unbroken = {}
        self.helpers = {}
        self.passes_alone = {}  # by test, with the headers as they are

    def outcome(self, mutant, text, programs):
        """How the tests end with `mutant`; none if it cannot be built or changes nothing."""
        try:
            return self._outcome(mutant, text, programs)
        except subprocess.CalledProcessError:
            return None

    def _outcome(self, mutant, text, programs):
        """A header is broken for the test that states it, and then for the sources of its library."""
        self._forget_last()
        is_made = False
        stating = self._stating_test(mutant.file) if mutant.file.endswith(".h") else None
        if stating and self._passes_alone(stating):
            objects = self._changed_objects(mutant, text, [stating])
            if objects is not None:
                is_made = True
                how = self._test_header(stating, objects)
                if how.how != "survived":
                    return how
        sources = self._affected_sources(mutant.file)
        objects = self._changed_objects(mutant, text, sources) if sources else None
        if objects is None:
            return Outcome("survived") if is_made else None
        return self._test(sources, objects, programs)

    def _forget_last(self):
        for made in [*(self.place / "bin").iterdir(), *(self.place / "lib").iterdir()]:
            made.unlink()

    def unbroken_outcome(self, program):
        """The outcome without a mutant. Sets how long the program may compute with one."""
        self._forget_last()
        self.cpu_seconds[program] = WALL_SECONDS
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        outcome = self._test([], [], [program])
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        seconds = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
        self.cpu_seconds[program] = 5 + round(3 * seconds)
        return outcome

    def _stating_test(self, header):
        """The test of the same name, or else one that includes the header, rather of its folder."""
        below = header.removeprefix("ZelVrfSelectionPolicy/")
        named = f"tests/{below.removesuffix('.h')}Test.cpp"
        if (self.folder.root / named).exists():
            return named
        include = f'#include "{below.removeprefix("platform/")}"'
        own = self.folder.root / pathlib.Path(named).parent
        others = sorted((self.folder.root / "tests" / below.partition("/")[0]).rglob("*Test.cpp"))
        for test in sorted(others, key=lambda test: test.parent != own):
            if include in test.read_text(encoding="utf-8"):
                return test.relative_to(self.folder.root).as_posix()
        return None

    def _affected_sources(self, file):
        if not file.endswith(".h"):
            return [file]
        library = file.partition("/")[0]
        including = self.folder.sources_with_headers([file])
        including = [source for source in including if source.startswith(f"{library}/")]
        return including if len(including) <= MOST_INCLUDERS else []

    def _changed_objects(self, mutant, text, sources):
        """The objects of `sources` with the mutant; none if it changes nothing."""
        key = (mutant.file, *sources)
        if key not in self.unbroken:
            self.unbroken[key] = [made.read_bytes() for made in self._compile(mutant.file, text, sources)]
        objects = self._compile(mutant.file, mutant.applied_to(text), sources)
        changes = [made.read_bytes() for made in objects] != self.unbroken[key]
        return objects if changes else None

    def _compile(self, file, text, sources):
        """Compiles the sources with `text` as the content of `file`."""
        self.changed.write_text(text, encoding="utf-8")
        original = {"name": str(self.folder.root / file), "type": "file",
                    "external-contents": str(self.changed)}  # fmt: skip
        described = {"version": 0, "use-external-names": "false", "roots": [original]}
        self.overlay.write_text(json.dumps(described), encoding="utf-8")
        objects = [self.place / f"changed-{number}.o" for number in range(len(sources))]
        for source, made in zip(sources, objects):
            self._compile_one(source, made, ["-ivfsoverlay", str(self.overlay)])
        return objects

    def _compile_one(self, source, made, options=()):
        command = [*self.folder.compile_command(source), *COMPARABLE, *options]
        self.folder.call([*command, "-c", str(self.folder.root / source), "-o", str(made)])

    def _passes_alone(self, test):
        """Whether the test passes in a program of its own. Some need other tests of their program."""
        if test not in self.passes_alone:
            made = self.place / "unchanged.o"
            try:
                self._compile_one(test, made)
                self.passes_alone[test] = self._test_header(test, [made]).how == "survived"
            except subprocess.CalledProcessError:
                self.passes_alone[test] = False
        return self.passes_alone[test]

    def _test_header(self, test, objects):
        """Runs a program with this test alone, and with what the test's program shares."""
        target = self.folder.object(test).partition(".dir/")[0].rpartition("/")[2]
        words = [word for word in self.folder.link_command(f"bin/{target}") if ".dir/" not in word]
        self._link(words, [*objects, *self._shared_objects(test)], self.place / "bin" / "header")
        return self._run(["header"], USUAL_CPU_SECONDS)

    def _shared_objects(self, test):
        """The objects of the sources of a test program that are not tests."""
        shared = [source for source in self.folder.target_sources(test)
                  if not source.endswith("Test.cpp") and source != test]  # fmt: skip
        for source in shared:
            if source not in self.helpers:
                self.helpers[source] = self.place / f"shared-{len(self.helpers)}.o"
                self._compile_one(source, self.helpers[source])
        return [self.helpers[source] for source in shared]

    def _test(self, sources, objects, programs):
        """The outcome of the first program that does not pass."""
        changed = dict(zip(sources, objects))
        for name in SHARED_LIBRARIES:
            self._relink(f"lib/{name}.1.0.0", changed, self.place / "lib" / f"{name}.1")
        self._relink_program(AGENT, changed)
        for program in programs:
            words = shlex.split(program)
            self._relink_program(SCRIPTS[words[0]][1] if words[0] in SCRIPTS else words[0], changed)
            outcome = self._run(words, self.cpu_seconds.get(program, USUAL_CPU_SECONDS))
            if outcome.how != "survived":
                return outcome
        return Outcome("survived")

    def _relink_program(self, name, changed):
        self._relink(f"bin/{name}", changed, self.place / "bin" / name)

    def _relink(self, output, changed, made):
        """Links what has changed sources. What belongs to an archive is taken from one, as needed.

        That archive is searched first. A definition that an original has too does not count.
        """
        words = self.folder.link_command(output)
        linked = {source: new for source, new in changed.items() if self.folder.is_linked(source, words)}
        if not linked:
            return
        own = [new for source, new in linked.items() if self.folder.object(source) in words]
        archived = [new for new in linked.values() if new not in own]
        if archived:
            archive = self.place / "changed.a"
            archive.unlink(missing_ok=True)
            self.folder.call(["ar", "rcs", str(archive), *map(str, archived)])
            own.append(archive)
        old = {self.folder.object(source) for source in linked}
        self._link([word for word in words if word not in old], own, made)

    def _link(self, words, objects, output):
        at = words.index("-o")
        linker = ["-fuse-ld=lld", "-Wl,-z,muldefs"]
        linked = [*words[:at], *linker, *map(str, objects), "-o", str(output), *words[at + 2 :]]
        self.folder.call(linked)

    def _library(self):
        """The library that tests load by its name."""
        own = self.place / "lib" / f"{LIBRARY}.1"
        return str(own if own.exists() else self.folder.path / "lib" / own.name)

    def _program(self, name):
        own = self.place / "bin" / name
        return str(own if own.exists() else self.folder.path / "bin" / name)

    def _run(self, words, cpu_seconds):
        """How the program ends that `words` name."""
        name, *arguments = words
        if name in SCRIPTS:
            script, program = SCRIPTS[name]
            command = ["/usr/bin/python3", "-B", str(self.folder.root / script), self._program(program)]
        else:
            command = [self._program(name), *arguments]
        # A script needs to see every test that fails. Parameterised tests of the testing kit may be
        # linked, and have no parameters.
        unused = {"GTEST_FILTER": "-GoogleTestVerification.*"}
        options = {} if name in SCRIPTS else {"GTEST_FAIL_FAST": "1", **unused}
        environment = dict(
            os.environ,
            **options,
            LD_LIBRARY_PATH=f"{self.place / 'lib'}:{self.folder.path / 'lib'}",
            ASAN_OPTIONS=f"hard_rss_limit_mb={MEGABYTES}:exitcode=99:detect_leaks=1:symbolize=0",
            MOX_HASH_SEED="1",
            ZEL_AGENT=self._program(AGENT),
            ZEL_LIBRARY=self._library(),
            ZEL_TEST_SEED="1",
            ZEL_TEST_PERCENT="10",
        )
        how, output = finished(
            command, self.place / "run", environment, cpu_seconds, self.wall_seconds
        )
        return Outcome(how, f"{name} {first_failure(output)}".strip())


def finished(command, place, environment, cpu_seconds, wall_seconds):
    """How a process ends, and what it prints."""
    try:
        process = processes.run(
            command,
            seconds=wall_seconds,
            cwd=place,
            env=environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            preexec_fn=lambda: limit_resources(cpu_seconds),
        )
    except processes.Expired:
        return "hung", ""
    output = process.stdout.decode(errors="replace")
    if process.returncode == 0:
        return "survived", output
    if process.returncode in (-signal.SIGXCPU, -signal.SIGKILL):
        return "hung", output
    return ("failed" if process.returncode == 1 else "crashed"), output


def limit_resources(cpu_seconds):
    resource.setrlimit(resource.RLIMIT_CPU, (cpu_seconds, cpu_seconds + 5))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def first_failure(output):
    """The first test that failed, or the last test that began."""
    failed = re.search(r"(?:\[  FAILED  \]|^FAIL:) ([\w./]+)", output, re.MULTILINE)
    begun = re.findall(r"\[ RUN +\] (\S+)", output)
    return failed[1] if failed else begun[-1] if begun else ""
