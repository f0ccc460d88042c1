"""The shipped programs and libraries are built with protections against exploits.

usage: hardening_test.py CMAKE COMPILE_COMMANDS OBJECT...

The objects are the shipped ones. The folder of COMPILE_COMMANDS is the build tree.
"""

import json
import pathlib
import platform
import re
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes

CMAKE = sys.argv[1]
COMPILE_COMMANDS = pathlib.Path(sys.argv[2])
BUILD = COMPILE_COMMANDS.parent
OBJECTS = sys.argv[3:]
SHIPPED = ("platform", "ZelVrfSelectionPolicy", "chips", "agent")


def readelf(*arguments):
    return processes.run(["readelf", *arguments], check=True, capture_output=True, text=True).stdout


def objects_below(folder):
    """All programs and shared libraries in the folder, without links to them."""
    for file in sorted(folder.rglob("*")):
        if file.is_symlink() or not file.is_file():
            continue
        with file.open("rb") as content:
            begin = content.read(18)
        if begin[:4] == b"\x7fELF" and begin[16:18] in (b"\2\0", b"\3\0", b"\0\2", b"\0\3"):
            yield file


def search_paths(name):
    """The folders in which the loader searches the libraries of the object."""
    paths = re.findall(r"\((?:RPATH|RUNPATH)\).*\[(.*)\]", readelf("-dW", name))
    return [folder for path in paths for folder in path.split(":")]


class Hardening(unittest.TestCase):
    def each(self):
        for name in OBJECTS:
            with self.subTest(object=pathlib.Path(name).name):
                yield name

    def test_objects_are_position_independent(self):
        for name in self.each():
            self.assertRegex(readelf("-hW", name), r"Type:\s+DYN")

    def test_relocations_are_read_only_from_the_start_on(self):
        for name in self.each():
            self.assertIn("GNU_RELRO", readelf("-lW", name))
            self.assertRegex(readelf("-dW", name), r"BIND_NOW|FLAGS_1.*\bNOW\b")

    def test_stacks_are_not_executable(self):
        for name in self.each():
            flags = re.search(r"GNU_STACK\s+(?:0x\w+\s+){5}([RWE ]+?)\s+0x", readelf("-lW", name))
            self.assertEqual(flags.group(1).replace(" ", ""), "RW")

    def test_stacks_are_guarded(self):
        for name in self.each():
            self.assertIn("__stack_chk_fail", readelf("-sW", "--dyn-syms", name))

    def need_only_absolute_search_paths(self, objects):
        for name in objects:
            for folder in search_paths(str(name)):
                self.assertRegex(folder, r"^(/|\$ORIGIN(/|$))", f"search path of {name}")

    def test_no_object_of_the_build_tree_loads_libraries_from_the_current_folder(self):
        folders = {BUILD / "bin", *(pathlib.Path(name).parent for name in OBJECTS)}
        objects = [file for folder in folders for file in objects_below(folder)]
        self.assertLessEqual({pathlib.Path(name) for name in OBJECTS}, set(objects))
        self.need_only_absolute_search_paths(objects)

    def test_no_installed_object_loads_libraries_from_the_current_folder(self):
        with tempfile.TemporaryDirectory() as prefix:
            processes.run([CMAKE, "--install", str(BUILD), "--prefix", prefix], check=True,
                          capture_output=True, text=True, seconds=processes.BUILD_SECONDS)
            installed = list(objects_below(pathlib.Path(prefix)))
            self.assertLessEqual({pathlib.Path(name).name for name in OBJECTS},
                                 {file.name for file in installed})
            self.need_only_absolute_search_paths(installed)

    @unittest.skipUnless(platform.machine() == "x86_64", "indirect branches are marked on x86 only")
    def test_functions_begin_with_endbr64(self):
        for name in self.each():
            code = processes.run(["objdump", "-d", "--section=.text", name],
                                 check=True, capture_output=True, text=True).stdout
            exported = len(re.findall(r"FUNC\s+GLOBAL DEFAULT\s+\d+", readelf("-sW", "--dyn-syms", name)))
            self.assertGreater(len(re.findall(r"\bendbr64\b", code)), exported)

    def test_library_calls_are_checked_where_they_are_optimised(self):
        commands = json.loads(COMPILE_COMMANDS.read_text())
        root = pathlib.Path(__file__).resolve().parents[2]
        shipped = [entry["command"] for entry in commands
                   if pathlib.Path(entry["file"]).relative_to(root).parts[0] in SHIPPED]
        self.assertGreater(len(shipped), 0)
        for command in shipped:
            if re.search(r" -O[23] ", command):
                self.assertIn("-D_FORTIFY_SOURCE=2", command)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
