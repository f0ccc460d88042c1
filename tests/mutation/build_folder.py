"""What a build folder says about itself: how each source is compiled, and how each program is linked."""

import json
import os
import pathlib
import re
import shlex
import subprocess
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes


class BuildFolder:
    """A configured and built folder of `root`. Its commands run in `path`."""

    def __init__(self, root, path):
        self.root, self.path = pathlib.Path(root), pathlib.Path(path)
        entries = json.loads((self.path / "compile_commands.json").read_text())
        self._commands = {self._relative(entry["file"]): _compile_words(entry) for entry in entries}
        self._unity = {
            self._relative(source): name
            for name in self._commands if "/Unity/" in name
            for source in re.findall(r'#include "(.+)"', (self.root / name).read_text())
        }  # fmt: skip
        self._objects = {self._relative(e["file"]): _object_of(e) for e in entries}
        self._links = {}
        self._dependencies = None

    def compile_command(self, source):
        """The words that compile `source`, without the source and its object."""
        return self._commands[self._unity.get(source, source)]

    def object(self, source):
        """The object of `source`, relative to the folder. Several tests have one in common."""
        return self._objects[self._unity.get(source, source)]

    def is_linked(self, source, words):
        """Whether a link command has the object of `source`, or its archive."""
        made = self.object(source)
        folder, target = _target_folder(made).split("/CMakeFiles/")
        return made in words or f"{folder}/lib{target}.a" in words

    def sources_with_headers(self, headers):
        """The compiled product sources that include one of `headers`, directly or not."""
        if self._dependencies is None:
            self._dependencies = self._read_dependencies()
        return sorted({source for header in headers for source in self._dependencies.get(header, ())})

    def target_sources(self, source):
        """All sources of the program or library that has `source`."""
        folder = _target_folder(self.object(source))
        names = {**self._objects, **{test: self.object(test) for test in self._unity}}
        return sorted(name for name, made in names.items()
                      if _target_folder(made) == folder and "/Unity/" not in name)  # fmt: skip

    def link_command(self, output):
        """The words that link `output`, a path relative to the folder."""
        if output not in self._links:
            listed = self._ninja("commands", "-s", output).strip().splitlines()[-1]
            words = shlex.split(listed)
            begin = next(at for at, word in enumerate(words) if word.endswith("++"))
            end = words.index("&&", begin) if "&&" in words[begin:] else len(words)
            self._links[output] = words[begin:end]
        return self._links[output]

    def call(self, words):
        processes.run(
            words,
            seconds=processes.BUILD_SECONDS,
            cwd=self.path,
            check=True,
            stdin=subprocess.DEVNULL,
            capture_output=True,
        )

    def _relative(self, name):
        return os.path.relpath(name, self.root)

    def _ninja(self, *words):
        return processes.run(
            ["ninja", "-C", str(self.path), "--quiet", "-t", *words],
            check=True, text=True, capture_output=True,
        ).stdout  # fmt: skip

    def _read_dependencies(self):
        by_object = {made: source for source, made in self._objects.items()}
        found, source = {}, None
        for line in self._ninja("deps").splitlines():
            if not line.startswith(" "):
                source = by_object.get(line.partition(":")[0])
            elif source:
                found.setdefault(self._relative(self.path / line.strip()), []).append(source)
        return found


def _compile_words(entry):
    words = shlex.split(entry["command"])
    if os.path.basename(words[0]) == "ccache":
        words = words[1:]
    return words[: words.index("-o")]


def _object_of(entry):
    words = shlex.split(entry["command"])
    return words[words.index("-o") + 1]


def _target_folder(made):
    return made[: made.index(".dir/")]
