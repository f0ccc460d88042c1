"""The shared library exports only its own namespace, with a version, and lacks no symbol."""

import pathlib
import re
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes

NAMESPACE = "ZelVrfSelectionPolicy"
# The symbols that the compiler generates for a class.
OF_CLASS = r"(vtable for |typeinfo for |typeinfo name for |VTT for |non-virtual thunk to )?"


def output(*command):
    return processes.run(command, check=True, capture_output=True, text=True).stdout


class ExportedSymbols(unittest.TestCase):
    library = None

    def exported(self):
        """(kind, demangled name without version) of each symbol that the library defines."""
        lines = output("nm", "-D", "-C", "--defined-only", self.library).splitlines()
        symbols = [line.split(maxsplit=2)[1:] for line in lines]
        return [(kind, re.sub(r"@+\w+$", "", name)) for kind, name in symbols]

    def test_every_symbol_belongs_to_the_namespace_of_the_library(self):
        names = [name for kind, name in self.exported() if kind != "A"]
        self.assertGreater(len(names), 50, "the library exports its interface")
        strangers = [name for name in names if not re.match(f"{OF_CLASS}{NAMESPACE}::", name)]
        self.assertEqual(strangers, [])

    def test_the_only_absolute_symbol_is_the_version(self):
        absolute = [name for kind, name in self.exported() if kind == "A"]
        self.assertEqual(absolute, [f"{NAMESPACE}_1"])

    def test_no_symbol_keeps_the_library_from_being_unloaded(self):
        self.assertEqual([name for kind, name in self.exported() if kind == "u"], [])

    def test_the_soname_is_versioned(self):
        dynamic = output("readelf", "-d", self.library)
        self.assertEqual(re.findall(r"\(SONAME\).*\[(.*)\]", dynamic), [f"lib{NAMESPACE}.so.1"])

    def test_no_undefined_symbol_is_left(self):
        resolved = processes.run(["ldd", "-r", self.library], check=True, capture_output=True,
                                 text=True)
        self.assertIn("libZelPlatform.so.1 => /", resolved.stdout)
        loose = [line for line in (resolved.stdout + resolved.stderr).splitlines()
                 if "undefined" in line or "not found" in line]
        self.assertEqual(loose, [])

    def test_only_the_platform_and_the_language_runtime_are_needed(self):
        needed = re.findall(r"\(NEEDED\).*\[(.*)\]", output("readelf", "-d", self.library))
        runtime = r"(libstdc\+\+|libm|libgcc_s|libc|libasan|libubsan|ld-linux-x86-64)\.so\.\d+"
        others = [name for name in needed if not re.fullmatch(runtime, name)]
        self.assertEqual(others, ["libZelPlatform.so.1"])


if __name__ == "__main__":
    ExportedSymbols.library = sys.argv[1]
    unittest.main(argv=sys.argv[:1], verbosity=2)
