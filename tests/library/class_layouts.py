"""The layout of classes, from the compiler's debug information.

Compiles one source that includes every header. Links and runs nothing. A program that was compiled
against a class relies on the layout of that time, so a change of the layout breaks the program.
"""

import pathlib
import re
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes

from elftools.elf.elffile import ELFFile

CLASSES = ("DW_TAG_class_type", "DW_TAG_structure_type")
ALIASES = ("DW_TAG_typedef", "DW_TAG_array_type")
QUALIFIERS = {"DW_TAG_const_type": " const", "DW_TAG_volatile_type": " volatile",
              "DW_TAG_pointer_type": "*", "DW_TAG_reference_type": "&",
              "DW_TAG_rvalue_reference_type": "&&"}


def compiled(compiler, root, scratch):
    """The object file of a source that includes every header, and the compiler's class dump."""
    headers = [*sorted((root / "platform").rglob("*.h")),
               *sorted((root / "ZelVrfSelectionPolicy").rglob("*.h"))]
    source, object_file, dump = (scratch / name for name in ("all.cpp", "all.o", "all.class"))
    source.write_text("".join(f'#include "{header}"\n' for header in headers))
    processes.run([compiler, "-std=c++20", "-g", "-fno-eliminate-unused-debug-types",
                   "-femit-class-debug-always", f"-fdump-lang-class={dump}", f"-I{root / 'platform'}", f"-I{root}",
                   "-c", source, "-o", object_file],
                  check=True, seconds=processes.BUILD_SECONDS)
    return object_file, dump.read_text()


def alignments(dump):
    found = re.findall(r"^Class (.+)\n +size=\d+ align=(\d+)$", dump, flags=re.MULTILINE)
    return {name: int(align) for name, align in found}


class Layout:
    """The layout of one class in the debug information."""

    def __init__(self, name, header, entry):
        self.name = name
        self.header = header
        self.size = entry.attributes["DW_AT_byte_size"].value
        children = list(entry.iter_children())
        self.parts = [child for child in children if is_part(child)]
        self.functions = [child for child in children if child.tag == "DW_TAG_subprogram"]

    def lines(self, alignment):
        """The recorded lines. Instances of one template with the same layout have the same lines."""
        if "<" in self.name:
            yield f"{without_arguments(self.name)}: {self.size} bytes"
        else:
            yield f"{self.name}: {self.size} bytes, aligned to {alignment[self.name]}"
        for part in self.parts:
            kind = "" if "<" in self.name else f": {without_arguments(type_name(part))}"
            yield f"  {offset(part):3} {part_name(part)}{kind}"
        slots = {slot(function): function for function in self.functions if slot(function) is not None}
        for number, function in sorted(slots.items()):
            yield f"  virtual {number}: {text(function, 'DW_AT_name')}"

    def used_classes(self):
        """The classes that a user of this class also depends on."""
        for part in self.parts:
            yield from classes_in(part)
        for function in self.functions:
            yield from classes_in_signature(function)


def is_part(child):
    return child.tag in ("DW_TAG_member", "DW_TAG_inheritance") and \
        "DW_AT_data_member_location" in child.attributes


def text(entry, attribute):
    value = entry.attributes.get(attribute)
    return value.value.decode() if value else ""


def offset(part):
    return part.attributes["DW_AT_data_member_location"].value


def part_name(part):
    return "base" if part.tag == "DW_TAG_inheritance" else text(part, "DW_AT_name")


def slot(function):
    place = function.attributes.get("DW_AT_vtable_elem_location")
    return place.value[1] if place else None  # the operand of DW_OP_constu


def type_of(entry):
    return entry.get_DIE_from_attribute("DW_AT_type") if "DW_AT_type" in entry.attributes else None


def type_name(entry):
    named = type_of(entry)
    if named is None:
        return "void"
    if named.tag in QUALIFIERS:
        return type_name(named) + QUALIFIERS[named.tag]
    if named.tag == "DW_TAG_array_type":
        return type_name(named) + "[]"
    if named.tag == "DW_TAG_subroutine_type":
        return "function"
    return qualified_name(named)


def qualified_name(entry):
    names = []
    while entry is not None and entry.tag != "DW_TAG_compile_unit":
        names.append(text(entry, "DW_AT_name") or "(anonymous)")
        entry = entry.get_parent()
    return "::".join(reversed(names))


def classes_in(entry):
    named = type_of(entry)
    while named is not None and (named.tag in QUALIFIERS or named.tag in ALIASES):
        named = type_of(named)
    if named is None or named.tag not in CLASSES:
        return
    yield qualified_name(named)
    if text(named, "DW_AT_name").startswith("unique_ptr<"):
        return  # a user of the class does not depend on the type that it points to
    for argument in named.iter_children():
        if argument.tag == "DW_TAG_template_type_param":
            yield from classes_in(argument)


def classes_in_signature(function):
    yield from classes_in(function)
    for parameter in function.iter_children():
        if parameter.tag == "DW_TAG_formal_parameter":
            yield from classes_in(parameter)


def layouts(object_file, root):
    """The layouts of the classes that headers below `root` define, by their names."""
    found = {}
    with open(object_file, "rb") as stream:
        information = ELFFile(stream).get_dwarf_info()
        for unit in information.iter_CUs():
            header_of = header_names(information.line_program_for_CU(unit))
            for entry in unit.iter_DIEs():
                if entry.tag not in CLASSES or "DW_AT_byte_size" not in entry.attributes:
                    continue
                header = header_of(entry)
                if header is not None and header.is_relative_to(root):
                    name = qualified_name(entry)
                    found.setdefault(name, Layout(name, header.relative_to(root), entry))
    return found


def header_names(line_program):
    files, folders = line_program["file_entry"], line_program["include_directory"]

    def header_of(entry):
        number = entry.attributes.get("DW_AT_decl_file")
        if number is None:
            return None
        file = files[number.value]
        return pathlib.Path(folders[file.dir_index].decode(), file.name.decode())

    return header_of


def reachable(first, found):
    """The classes `first` and the classes that these use, directly or not, sorted by name."""
    to_visit, visited = list(first), set()
    while to_visit:
        name = to_visit.pop()
        if name in found and name not in visited:
            visited.add(name)
            to_visit += found[name].used_classes()
    return sorted(visited)


def without_arguments(name):
    """The name without the arguments of templates."""
    depth, kept = 0, []
    for character in name:
        depth -= character == ">"
        if depth == 0:
            kept.append(character)
        depth += character == "<"
    return "".join(kept)


def exported_layouts(compiler, root, symbols):
    """Header and lines of each class with an exported symbol, and of each class that such one uses."""
    with tempfile.TemporaryDirectory() as folder:
        object_file, dump = compiled(compiler, root, pathlib.Path(folder))
        alignment = alignments(dump)
        found = layouts(object_file, root)
        owners = {name for name in found if any(belongs(symbol, name) for symbol in symbols)}
        shown = {}
        for name in reachable(owners, found):
            shown.setdefault(tuple(found[name].lines(alignment)), found[name].header)
    return [(header, lines) for lines, header in shown.items()]


def belongs(symbol, class_name):
    return symbol.startswith(f"{class_name}::") or symbol == f"vtable for {class_name}"
