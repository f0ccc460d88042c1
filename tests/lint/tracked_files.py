"""The files of a repository that are tracked and present."""

import pathlib
import subprocess
import sys


def tracked(lint, root, *patterns):
    """Their paths below `root`, of those that match a pattern, or all. Exits if there are none.

    Messages begin with the name of the check `lint`.
    """
    command = ["git", "-c", f"safe.directory={root}", "-C", root, "ls-files", "-z", "--", *patterns]
    try:
        listed = subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout.decode()
    except subprocess.CalledProcessError:
        sys.exit(f"{lint}: {root} is not a repository whose sources can be listed")
    paths = [path for path in listed.split("\0") if path]
    if not paths:
        sys.exit(f"{lint}: {root} tracks no {' and no '.join(patterns) or 'files'}")
    return [path for path in paths if (pathlib.Path(root) / path).is_file()]
