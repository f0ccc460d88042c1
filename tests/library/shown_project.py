"""Follows a document that shows the files of a project, and commands with their output."""

import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes

FENCED = re.compile(r"^```(\w*)\n(.*?)^```$", re.M | re.S)
FILE_NAME = re.compile(r"(?://|#) ([\w.]+)(, continued)?\n")


def follow(document, project, environment, replaced):
    """Follows the text `document` in the folder `project`, from top to bottom.

    A block with a language is a file. Its first line contains the name of the file. A later block with
    the same name replaces the file, or is appended to it if it says "continued". In other blocks,
    lines that begin with "$ " are commands. `replaced` has pairs of texts: in commands the second
    replaces the first. Returns (command, shown, printed) for each command with shown output. A command
    without shown output must succeed.
    """
    outputs = []
    for language, block in FENCED.findall(document):
        if language:
            write(project, block)
        elif block.startswith("$ "):
            outputs += run_all(block, project, environment, replaced)
    return outputs


def write(project, block):
    name, continued = FILE_NAME.match(block).groups()
    path = pathlib.Path(project, name)
    before = path.read_text() if continued else ""
    path.write_text(before + block.partition("\n")[2])


def run_all(block, project, environment, replaced):
    parts = re.split(r"^\$ (.*)\n", block, flags=re.M)[1:]
    for command, shown in zip(parts[::2], parts[1::2]):
        line = command
        for before, after in replaced:
            line = line.replace(before, after)
        finished = processes.run(line, shell=True, cwd=project, env=environment, text=True,
                                 capture_output=True, check=False,
                                 seconds=processes.BUILD_SECONDS)
        if shown:
            yield command, shown, finished.stdout
        elif finished.returncode != 0:
            raise AssertionError(f"{line} failed:\n{finished.stdout}{finished.stderr}")
