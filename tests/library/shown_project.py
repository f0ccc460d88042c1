"""What a document shows of a project: its files, and commands with what they print."""

import pathlib
import re
import subprocess

FENCED = re.compile(r"^```(\w*)\n(.*?)^```$", re.M | re.S)
FILE_NAME = re.compile(r"(?://|#) ([\w.]+)(, continued)?\n")


def follow(document, project, environment, replaced):
    """Does in the folder `project` what the text `document` shows, from top to bottom.

    A block in a language is a file, whose name its first line tells; one that is shown again
    replaces it, unless it is continued. In other blocks, lines after "$ " are commands, in which
    `replaced` pairs of texts are put for one another. Returns (command, shown, printed) for those
    that something is shown of; the others are only expected to succeed.
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
        finished = subprocess.run(line, shell=True, cwd=project, env=environment, text=True,
                                  capture_output=True, check=False)
        if shown:
            yield command, shown, finished.stdout
        elif finished.returncode != 0:
            raise AssertionError(f"{line} failed:\n{finished.stdout}{finished.stderr}")
