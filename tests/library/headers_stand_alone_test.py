"""Each header compiles by itself: it includes what it uses, under every warning of the project."""

import concurrent.futures
import os
import pathlib
import subprocess
import sys
import unittest

WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion", "-Werror"]


class HeadersStandAlone(unittest.TestCase):
    compiler = None
    root = None

    def headers(self):
        """Includable name of each header, by the folder that it is found from."""
        platform = self.root / "platform"
        for folder in (platform, self.root / "ZelVrfSelectionPolicy", self.root / "testing"):
            found_from = platform if folder == platform else self.root
            for header in sorted(folder.rglob("*.h")):
                yield header.relative_to(found_from).as_posix()

    def complaints(self, header):
        compiled = subprocess.run(
            [self.compiler, "-std=c++20", "-fsyntax-only", *WARNINGS, f"-I{self.root}",
             f"-I{self.root / 'platform'}", "-x", "c++", "-"],
            input=f'#include "{header}"\n', capture_output=True, text=True)
        return compiled.stderr

    def test_each_header_compiles_alone(self):
        headers = list(self.headers())
        self.assertGreater(len(headers), 50, "the headers were found")
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for header, complaints in zip(headers, pool.map(self.complaints, headers)):
                with self.subTest(header):
                    self.assertEqual(complaints, "")


if __name__ == "__main__":
    HeadersStandAlone.compiler = sys.argv[1]
    HeadersStandAlone.root = pathlib.Path(sys.argv[2])
    unittest.main(argv=sys.argv[:1], verbosity=2)
