"""The shipped programs and libraries are built with protections against exploits.

usage: hardening_test.py COMPILE_COMMANDS OBJECT...
"""

import json
import pathlib
import platform
import re
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes

COMPILE_COMMANDS = pathlib.Path(sys.argv[1])
OBJECTS = sys.argv[2:]
SHIPPED = ("platform", "ZelVrfSelectionPolicy", "chips", "agent")


def readelf(*arguments):
    return processes.run(["readelf", *arguments], check=True, capture_output=True, text=True).stdout


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
