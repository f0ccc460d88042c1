"""A separate project finds the installed package by CMake and by pkg-config, builds and runs."""

import argparse
import os
import pathlib
import re
import shutil
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes
import shown_project

OUTSIDE = pathlib.Path(__file__).resolve().parent / "outside"
SOURCE = OUTSIDE.parents[2]
CHIP_AUTHORS = SOURCE / "docs" / "chip-authors.md"
INCLUDE = "include/zel-vrf-selection-policy"
# Folders whose headers are installed, and what is in front of their paths then.
HEADER_FOLDERS = {"platform": "", "ZelVrfSelectionPolicy": "ZelVrfSelectionPolicy/",
                  "testing": "testing/"}
PRINTED = """\
create red with hardware id 0
update red with hardware id 7
programmedInHw
delete red
"""


def run(*command, **options):
    finished = processes.run([str(part) for part in command], capture_output=True, text=True,
                             seconds=processes.BUILD_SECONDS, **options)
    if finished.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))} failed:\n"
                             f"{finished.stdout}{finished.stderr}")
    return finished.stdout


def files_below(folder):
    return {file.relative_to(folder).as_posix() for file in folder.rglob("*") if file.is_file()}


def source_of(header):
    folder = next((folder for folder, prefix in HEADER_FOLDERS.items()
                   if prefix and header.startswith(prefix)), "platform")
    return SOURCE / folder / header.removeprefix(HEADER_FOLDERS[folder])


class InstalledPackage(unittest.TestCase):
    maxDiff = None
    arguments = None

    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.scratch.cleanup)
        scratch = pathlib.Path(cls.scratch.name)
        # An installation can be moved. This one is moved.
        run(cls.arguments.cmake, "--install", cls.arguments.build, "--prefix", scratch / "staged")
        cls.prefix = scratch / "prefix"
        (scratch / "staged").rename(cls.prefix)

    def setUp(self):
        self.project = pathlib.Path(self.scratch.name, self._testMethodName)
        shutil.copytree(OUTSIDE, self.project)

    def test_find_package_gives_a_target_to_link_to(self):
        build = self.project / "build"
        self.configure(build)
        run(self.arguments.cmake, "--build", build)
        self.assertEqual(run(build / "outside"), PRINTED)

    def test_the_readme_shows_this_very_program(self):
        program = (OUTSIDE / "main.cpp").read_text()
        self.assertIn(f"```cpp\n{program}```\n", (SOURCE / "README.md").read_text())

    def test_find_package_refuses_another_major_version(self):
        listfile = self.project / "CMakeLists.txt"
        listfile.write_text(listfile.read_text().replace("ZelVrfSelectionPolicy 1 REQUIRED",
                                                         "ZelVrfSelectionPolicy 2 REQUIRED"))
        with self.assertRaisesRegex(AssertionError, 'compatible with requested\\s+version "2"'):
            self.configure(self.project / "build")

    def test_every_header_but_the_private_ones_is_installed(self):
        public, private = set(), set()
        for folder, prefix in HEADER_FOLDERS.items():
            listed = (SOURCE / folder / "private-headers.txt").read_text().split()
            present = {name for name in files_below(SOURCE / folder) if name.endswith(".h")}
            self.assertLessEqual(set(listed), present, f"{folder}/private-headers.txt")
            public |= {prefix + name for name in present.difference(listed)}
            private |= {prefix + name for name in listed}
        installed = set(self.installed_headers())
        self.assertEqual(installed, public)
        self.assertIn("Blinklog/RingFile.h", private)
        self.assertIn("ZelVrfSelectionPolicy/vrf/VrfWatches.h", private)
        self.assertFalse(installed & private)

    def test_each_installed_header_is_the_one_in_the_sources(self):
        headers = self.installed_headers()
        self.assertGreater(len(headers), 50, "the headers were found")
        for header in headers:
            installed = (self.prefix / INCLUDE / header).read_bytes()
            self.assertEqual(installed, source_of(header).read_bytes(), header)

    def test_installed_headers_include_installed_headers_alone(self):
        """With this, each compiles alone as in the sources, where HeadersStandAlone compiles it."""
        headers = set(self.installed_headers())
        for header in sorted(headers):
            text = (self.prefix / INCLUDE / header).read_text()
            included = set(re.findall(r'^#\s*include "(.*)"', text, re.MULTILINE))
            self.assertEqual(included - headers, set(), header)

    def test_all_installed_headers_compile_together(self):
        everything = "".join(f'#include "{header}"\n' for header in self.installed_headers())
        compiled = processes.run(
            [self.arguments.compiler, "-std=c++20", "-fsyntax-only", "-Wall", "-Wextra", "-Werror",
             f"-I{self.prefix / INCLUDE}", "-x", "c++", "-"],
            given=everything, capture_output=True, text=True, cwd=self.project,
            seconds=processes.BUILD_SECONDS)
        self.assertEqual(compiled.stderr, "")

    def test_the_library_alone_needs_no_googletest(self):
        self.configure(self.project / "build", "-DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON")

    def test_the_kit_for_tests_needs_googletest(self):
        self.ask_for("Testing")
        with self.assertRaisesRegex(AssertionError, "GTest"):
            self.configure(self.project / "build", "-DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON")

    def test_find_package_refuses_a_component_that_there_is_not(self):
        self.ask_for("Teasing")
        with self.assertRaisesRegex(AssertionError, "component Teasing is not\\s+installed"):
            self.configure(self.project / "build")

    def test_the_component_testing_is_the_kit_alone(self):
        kit = pathlib.Path(self.scratch.name, "kit")
        run(self.arguments.cmake, "--install", self.arguments.build, "--component", "testing",
            "--prefix", kit)
        installed = files_below(kit)
        self.assertTrue(installed)
        self.assertLessEqual(installed, files_below(self.prefix))
        headers = {file for file in installed if file.endswith(".h")}
        self.assertIn(f"{INCLUDE}/testing/VrfHelperConformance.h", headers)
        self.assertTrue(all("/testing/" in header for header in headers), headers)
        others = {re.sub("-[a-z]+(?=.cmake)", "", pathlib.Path(file).name)
                  for file in installed - headers}
        self.assertEqual(others, {"libZelVrfSelectionPolicyTesting.a",
                                  "ZelVrfSelectionPolicyTestingTargets.cmake"})

    def test_without_the_kit_the_component_is_not_found(self):
        bare = pathlib.Path(self.scratch.name, "bare")
        run(self.arguments.cmake, "--install", self.arguments.build, "--component", "Unspecified",
            "--prefix", bare)
        self.ask_for("Testing")
        with self.assertRaisesRegex(AssertionError, "component Testing is not\\s+installed"):
            self.configure(self.project / "build", prefix=bare)

    def test_the_document_for_chip_authors_leads_to_a_chip_that_passes(self):
        project = pathlib.Path(self.scratch.name, "shelf")
        project.mkdir()
        environment = {**os.environ, "CXX": self.arguments.compiler, "LC_ALL": "C", "ZEL_TEST_SEED": "1"}
        outputs = shown_project.follow(CHIP_AUTHORS.read_text(), project, environment,
                                       [("/opt/zel", str(self.prefix))])
        self.assertEqual(len(outputs), 4, "all transcripts were found")
        for command, shown, printed in outputs:
            with self.subTest(command):
                self.assertEqual(printed, shown)

    def test_pkg_config_gives_the_flags_to_compile_and_link_with(self):
        search = self.package_file().parent
        run("make", "-C", self.project, f"CXX={self.arguments.compiler}",
            env={**os.environ, "PKG_CONFIG_PATH": str(search)})
        self.assertEqual(run(self.project / "outside"), PRINTED)

    def test_pkg_config_knows_the_version(self):
        search = self.package_file().parent
        version = run("pkg-config", "--modversion", "zel-vrf-selection-policy",
                      env={**os.environ, "PKG_CONFIG_PATH": str(search)})
        self.assertRegex(version, r"^1\.\d+\.\d+\n$")

    def test_nothing_installed_names_the_place_where_it_was_built(self):
        build = self.arguments.build
        naming = [file.name for file in self.prefix.rglob("*")
                  if file.suffix in (".cmake", ".pc") and build in file.read_text()]
        self.assertEqual(naming, [])

    def installed_headers(self):
        root = self.prefix / INCLUDE
        return sorted(name for name in files_below(root) if name.endswith(".h"))

    def ask_for(self, component):
        listfile = self.project / "CMakeLists.txt"
        listfile.write_text(listfile.read_text().replace(
            "ZelVrfSelectionPolicy 1 REQUIRED",
            f"ZelVrfSelectionPolicy 1 REQUIRED COMPONENTS {component}"))

    def configure(self, build, *options, prefix=None):
        run(self.arguments.cmake, "-S", self.project, "-B", build,
            f"-DCMAKE_PREFIX_PATH={prefix or self.prefix}",
            f"-DCMAKE_CXX_COMPILER={self.arguments.compiler}",
            *options)

    def package_file(self):
        (found,) = self.prefix.rglob("zel-vrf-selection-policy.pc")
        return found


if __name__ == "__main__":
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("cmake")
    parser.add_argument("compiler")
    parser.add_argument("build")
    InstalledPackage.arguments = parser.parse_args()
    unittest.main(argv=sys.argv[:1], verbosity=2)
