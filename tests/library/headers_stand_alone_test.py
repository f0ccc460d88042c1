"""Each header compiles by itself, with every warning of the project: it includes what it uses.

The build shows this for a header that its own source includes first. This test compiles the others.
"""

import concurrent.futures
import os
import pathlib
import re
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes

WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion", "-Werror"]


class HeadersStandAlone(unittest.TestCase):
    compiler = None
    root = None

    def files(self, pattern):
        """For each file: the name by which it is included, and its path."""
        platform = self.root / "platform"
        for folder in (platform, self.root / "ZelVrfSelectionPolicy", self.root / "testing"):
            found_from = platform if folder == platform else self.root
            for file in sorted(folder.rglob(pattern)):
                yield file.relative_to(found_from).as_posix(), file

    def headers(self):
        """The headers that are not the first include of their own source."""
        included_first = set()
        for name, source in self.files("*.cpp"):
            first = re.search(r'^#include "(.*)"', source.read_text(), flags=re.MULTILINE)
            own_header = name.removesuffix(".cpp") + ".h"
            if first and first[1] == own_header:
                included_first.add(own_header)
        return [name for name, _ in self.files("*.h") if name not in included_first]

    def complaints(self, header):
        compiled = processes.run(
            [self.compiler, "-std=c++20", "-fsyntax-only", *WARNINGS, f"-I{self.root}",
             f"-I{self.root / 'platform'}", "-x", "c++", "-"],
            given=f'#include "{header}"\n', capture_output=True, text=True,
            seconds=processes.BUILD_SECONDS)
        return compiled.stderr

    def test_each_header_compiles_alone(self):
        headers = self.headers()
        self.assertIn("Velo/ScopeStack.h", headers, "which has no source")
        self.assertNotIn("L3/VrfName.h", headers, "which its source includes first")
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for header, complaints in zip(headers, pool.map(self.complaints, headers)):
                with self.subTest(header):
                    self.assertEqual(complaints, "")


if __name__ == "__main__":
    HeadersStandAlone.compiler = sys.argv[1]
    HeadersStandAlone.root = pathlib.Path(sys.argv[2])
    unittest.main(argv=sys.argv[:1], verbosity=2)
