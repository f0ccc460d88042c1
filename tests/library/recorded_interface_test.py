"""The exported interface of the two libraries equals the records next to their sources.

The records of each library are `exported-symbols.txt` and `exported-types.txt`. The second has the
size, alignment, members and virtual slots of every class with an exported symbol, and of every class
that such a class uses.

usage: recorded_interface_test.py [--record] COMPILER ROOT BUILD
"""

import difflib
import pathlib
import re
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes
import class_layouts

LIBRARIES = {"platform": "libZelPlatform.so", "ZelVrfSelectionPolicy": "libZelVrfSelectionPolicy.so"}
ADVICE = "The libraries do not export what is recorded. If that is meant, ./dev abi --record writes it."


def exported_symbols(library):
    """The demangled names without duplicates: constructors and destructors have several symbols."""
    listed = processes.run(["nm", "-D", "-C", "--defined-only", library], check=True,
                           capture_output=True, text=True).stdout
    names = {line.split(maxsplit=2)[2] for line in listed.splitlines()}
    return sorted(re.sub(r"@+\w+$", "", name) for name in names)


def interface(compiler, root, build):
    """The current lines of each recorded file."""
    symbols = {folder: exported_symbols(build / "lib" / library)
               for folder, library in LIBRARIES.items()}
    types = {folder: [] for folder in LIBRARIES}
    for header, lines in class_layouts.exported_layouts(compiler, root, sum(symbols.values(), [])):
        types[header.parts[0]] += lines
    for folder in LIBRARIES:
        yield root / folder / "exported-symbols.txt", symbols[folder]
        yield root / folder / "exported-types.txt", types[folder]


def differences(recorded, present):
    before = recorded.read_text().splitlines() if recorded.is_file() else []
    return list(difflib.unified_diff(before, present, "recorded", "present", n=2, lineterm=""))


def main(arguments):
    record = arguments[:1] == ["--record"]
    compiler, root, build = arguments[1:] if record else arguments
    faults = 0
    for recorded, present in interface(compiler, pathlib.Path(root), pathlib.Path(build)):
        name = f"{recorded.parent.name}/{recorded.name}"
        if record:
            recorded.write_text("".join(f"{line}\n" for line in present))
            print(f"wrote {name}, {len(present)} lines")
        elif not present:
            sys.exit(f"{name}: nothing is exported")
        elif found := differences(recorded, present):
            faults += 1
            print(f"{name}:", *found, sep="\n")
        else:
            print(f"{name}: {len(present)} lines, as recorded")
    return ADVICE if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
