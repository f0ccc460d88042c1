"""Leaves out of a library's ABI description every type that no exported symbol leads to.

abidw also writes the references, pointers and qualified types that only inline code names. abidiff
does not compare those, yet they are most of the elements.

usage: reachable_interface.py DESCRIPTION REACHABLE
"""

import sys
import xml.etree.ElementTree as ElementTree

SCOPES = ("abi-instr", "namespace-decl")


def declarations(scope):
    """Those of the scope and of the scopes in it; a class is one, whatever it declares in turn."""
    for element in scope:
        if element.tag in SCOPES:
            yield from declarations(element)
        else:
            yield element


def named_types(declaration):
    return {element.get("id") for element in declaration.iter()} - {None}


def used_types(declaration):
    return {value for element in declaration.iter() for name, value in element.items()
            if name.endswith("-id") and name != "elf-symbol-id"}


def is_exported(declaration):
    return any(element.tag == "elf-symbol" or element.get("elf-symbol-id")
               for element in declaration.iter())


def reachable(corpus):
    declaring = {}
    for declaration in declarations(corpus):
        for name in named_types(declaration):
            declaring.setdefault(name, []).append(declaration)
    to_visit = [declaration for declaration in declarations(corpus) if is_exported(declaration)]
    found = set()
    while to_visit:
        declaration = to_visit.pop()
        if declaration not in found:
            found.add(declaration)
            for name in used_types(declaration):
                to_visit += declaring.get(name, [])
    return found


def leave_out_all_but(kept, scope):
    for element in list(scope):
        if element.tag in SCOPES:
            leave_out_all_but(kept, element)
        if element not in kept and not (element.tag in SCOPES and len(element)):
            scope.remove(element)


def main(description, output):
    document = ElementTree.parse(description)
    corpus = document.getroot()
    leave_out_all_but(reachable(corpus), corpus)
    ElementTree.indent(document, space="")
    document.write(output, encoding="unicode")


if __name__ == "__main__":
    main(*sys.argv[1:])
