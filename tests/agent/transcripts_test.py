"""What documents show of zel-agent is what it prints.

usage: transcripts_test.py ZEL-AGENT DOCUMENT...

Each "$ COMMAND" in a fenced block that runs zel-agent is run beside the examples, and what the
document has below it is compared with its standard output. Where a block asks a daemon, one serves
decap.json on zel.sock. Times differ from run to run, so only their form is compared.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes

AGENT = pathlib.Path(sys.argv[1])
DOCUMENTS = [pathlib.Path(name) for name in sys.argv[2:]]
EXAMPLES = pathlib.Path(__file__).resolve().parents[2] / "examples"


def transcripts(document):
    """Lists of (command, output), one for each fenced block with commands."""
    for block in re.findall(r"^```\n(.*?)^```$", document.read_text(), re.M | re.S):
        if not block.startswith("$ "):
            continue
        parts = re.split(r"^\$ ((?:.*\\\n)*.*)\n", block, flags=re.M)
        yield list(zip(parts[1::2], parts[2::2]))


def with_any_times(text):
    return re.sub(r"\b\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z\b", "TIME", text)


class Transcripts(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, self.folder)
        self.work = self.folder / "examples"
        shutil.copytree(EXAMPLES, self.work)
        self.environment = dict(os.environ, PATH=f"{AGENT.parent}:{os.environ['PATH']}")

    def serve(self, configuration):
        daemon = processes.start(
            self, [AGENT, "serve", configuration, "--socket", "zel.sock"],
            cwd=self.work, stdout=subprocess.PIPE)
        self.assertEqual(processes.Lines(daemon.stdout).next(), "serving on zel.sock\n")

    def run_command(self, command):
        return processes.run(
            command, shell=True, cwd=self.work, env=self.environment, text=True,
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False).stdout

    def check(self, document):
        found = 0
        for transcript in transcripts(document):
            if not any("zel-agent" in command for command, _ in transcript):
                continue
            if any("zel-agent ctl" in command for command, _ in transcript):
                self.serve("decap.json")
            for command, output in transcript:
                with self.subTest(document=document.name, command=command):
                    printed = self.run_command(command)
                    self.assertEqual(with_any_times(printed).rstrip("\n"),
                                     with_any_times(output).rstrip("\n"))
                    found += 1
        self.assertGreater(found, 0, f"{document} shows no commands")

    def test_documents_show_what_is_printed(self):
        for document in DOCUMENTS:
            self.check(document)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
