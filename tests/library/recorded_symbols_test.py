"""The symbols that a library exports are those of the list that stands beside its version script.

usage: recorded_symbols_test.py [--record] LIBRARY RECORDED
"""

import pathlib
import re
import subprocess
import sys

ADVICE = """\
{library} does not export what {recorded} lists:
{differences}
If that is meant, ./dev abi --record writes it down.
"""


def exported(library):
    """The demangled names, each once: constructors and destructors have several symbols."""
    listed = subprocess.run(["nm", "-D", "-C", "--defined-only", library], check=True,
                            capture_output=True, text=True).stdout
    names = {line.split(maxsplit=2)[2] for line in listed.splitlines()}
    return sorted(re.sub(r"@+\w+$", "", name) for name in names)


def differences(present, recorded):
    added = [f"  + {name}" for name in present if name not in recorded]
    removed = [f"  - {name}" for name in recorded if name not in present]
    return added + removed


def main(arguments):
    record = arguments[:1] == ["--record"]
    library, recorded = map(pathlib.Path, arguments[1:] if record else arguments)
    present = exported(library)
    if record:
        recorded.write_text("".join(f"{name}\n" for name in present))
        return 0
    found = differences(present, recorded.read_text().splitlines())
    if found:
        print(ADVICE.format(library=library, recorded=recorded, differences="\n".join(found)),
              file=sys.stderr)
        return 1
    print(f"{library.name}: {len(present)} symbols")
    return 0 if present else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
