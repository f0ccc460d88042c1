"""Finds tests that check nothing.

usage: assertions.py [ROOT]

A test of GoogleTest checks something when its body contains EXPECT_..., ASSERT_..., FAIL or
ADD_FAILURE, or calls a function or constructs an object that does. A function is looked up in the
file of the test, and in the headers from tests/ and testing/ that the file includes, directly or
not, with their sources. A method of a Python test checks something in the same way: by an assertion
of unittest, by `assert`, or by a function of the same file that does.

Each test that checks nothing is printed as FILE:LINE: NAME.
"""

import ast
import functools
import pathlib
import re
import sys

from tracked_files import tracked

CHECK = re.compile(r"\b(?:(?:EXPECT|ASSERT)_\w+|FAIL|ADD_FAILURE\w*)\s*\(")
TEST = re.compile(r"\b(?:TYPED_)?TEST(?:_F|_P)?\s*\(\s*(\w+)\s*,\s*(\w+)\s*\)\s*\{")
FUNCTION = re.compile(r"(?<![\w.>])(~?\w+)\s*\(")
LAMBDA = re.compile(r"\b(\w+)\s*=\s*\[[^\]]*\]\s*(?=[({])")
CALL = re.compile(r"\b(\w+)\s*(?:<[^;(){}]*>)?\s*[({]")
OBJECT = re.compile(r"\b([A-Z]\w*)(?:<[^;(){}]*>)?\s+\w+\s*[({;]")
AFTER_PARAMETERS = re.compile(
    r"(?:\s*(?:const|noexcept|override|final|mutable|&&?))*(?:\s*->[^;{}]*)?\s*(?=[{:])")
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)
KEYWORDS = {"if", "for", "while", "switch", "catch", "return", "sizeof", "decltype", "alignas", "constexpr"}
# Comments, raw strings, strings and characters.
NOT_CODE = re.compile(
    r"//[^\n]*|/\*.*?\*/"
    r'|R"([^()\s\\]*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"'
    r"|(?<!\w)(?:u8|[uUL])?'(?:\\.|[^'\\\n])+'", re.S)


def code_of(text):
    """The text with comments and literals blanked, at the same places."""
    return NOT_CODE.sub(lambda found: re.sub(r"[^\n]", " ", found[0]), text)


def end_of(code, begin):
    """The place behind the bracket that closes the one at `begin`."""
    closing = {"(": ")", "{": "}"}[code[begin]]
    depth = 0
    for at in range(begin, len(code)):
        if code[at] == code[begin]:
            depth += 1
        elif code[at] == closing:
            depth -= 1
            if depth == 0:
                return at + 1
    return len(code)


def body_after(code, place):
    """The body of a function whose parameters begin at `place`; None if there is none."""
    at = end_of(code, place) if code[place] == "(" else place
    follows = AFTER_PARAMETERS.match(code, at)
    if not follows:
        return None
    at = follows.end()
    while at < len(code) and code[at] == ":":  # initializers of members
        for member in re.finditer(r"[({]", code[at:]):
            at += member.start()
            break
        else:
            return None
        at = end_of(code, at)
        follows = re.compile(r"\s*([,{]?)").match(code, at)
        if follows[1] == "{":
            at = follows.end() - 1
        elif follows[1] == ",":
            code = code[:follows.end() - 1] + ":" + code[follows.end():]
            at = follows.end() - 1
        else:
            return None
    return code[at:end_of(code, at)] if at < len(code) and code[at] == "{" else None


def functions_in(code):
    """Pairs of the name and the body of each function, constructor and named lambda."""
    for found in FUNCTION.finditer(code):
        if found[1] in KEYWORDS or found[1].startswith("TEST") or found[1].startswith("TYPED_TEST"):
            continue
        body = body_after(code, found.end() - 1)
        if body is not None:
            yield found[1], body
    for found in LAMBDA.finditer(code):
        body = body_after(code, found.end())
        if body is not None:
            yield found[1], body


def names_used_by(body):
    return set(CALL.findall(body)) | set(OBJECT.findall(body))


def checking(functions):
    """The names of the functions that check, themselves or by others of `functions`."""
    found = {name for name, body in functions if CHECK.search(body)}
    used = [(name, names_used_by(body)) for name, body in functions]
    while more := {name for name, names in used if name not in found and names & found}:
        found |= more
    return found


class Sources:
    """The C++ sources of a repository."""

    def __init__(self, root, paths):
        self.root = pathlib.Path(root)
        self.paths = set(paths)

    @functools.cache
    def code(self, path):
        return code_of((self.root / path).read_text(encoding="utf-8"))

    @functools.cache
    def functions(self, path):
        return list(functions_in(self.code(path)))

    @functools.cache
    def included(self, path):
        text = (self.root / path).read_text(encoding="utf-8")
        folder = pathlib.PurePosixPath(path).parent
        names = set(INCLUDE.findall(text))
        names |= {str(folder / name) for name in names}
        return {name for name in names & self.paths if name.startswith(("tests/", "testing/"))}

    def helpers(self, path):
        """The file, with everything from tests/ and testing/ that it includes, and the sources of that."""
        found, left = set(), {path}
        while left:
            name = left.pop()
            found.add(name)
            source = name.removesuffix(".h") + ".cpp"
            left |= (self.included(name) | ({source} & self.paths)) - found
        return found

    def faults(self, path):
        code = self.code(path)
        tests = list(TEST.finditer(code))
        if not tests:
            return
        functions = [one for helper in sorted(self.helpers(path)) for one in self.functions(helper)]
        names = checking(functions)
        for test in tests:
            body = code[test.end() - 1:end_of(code, test.end() - 1)]
            if not CHECK.search(body) and not names_used_by(body) & names:
                yield f"{path}:{code.count(chr(10), 0, test.start()) + 1}: {test[1]}.{test[2]}"


def checks_itself(node):
    """Whether a Python function contains an assertion."""
    for part in ast.walk(node):
        if isinstance(part, ast.Assert):
            return True
        if isinstance(part, ast.Attribute) and re.match(r"assert|fail$", part.attr):
            return True
        if isinstance(part, ast.Raise) and "AssertionError" in ast.dump(part):
            return True
    return False


def calls_of(node):
    called = [part.func for part in ast.walk(node) if isinstance(part, ast.Call)]
    return {getattr(name, "attr", getattr(name, "id", "")) for name in called}


def python_faults(path, text):
    functions = [node for node in ast.walk(ast.parse(text)) if isinstance(node, ast.FunctionDef)]
    found = {node.name for node in functions if checks_itself(node)}
    while more := {node.name for node in functions if node.name not in found and calls_of(node) & found}:
        found |= more
    for node in functions:
        is_checked = checks_itself(node) or calls_of(node) & found
        if node.name.startswith("test_") and not is_checked:
            yield f"{path}:{node.lineno}: {node.name}"


def check(root, paths):
    """All tests among the sources `paths` that check nothing. The paths are relative to the folder `root`."""
    sources = Sources(root, paths)
    for path in sorted(paths):
        if path.endswith((".h", ".cpp")):
            yield from sources.faults(path)
        elif path.endswith("_test.py"):
            yield from python_faults(path, (pathlib.Path(root) / path).read_text(encoding="utf-8"))


def main(arguments):
    root = str(pathlib.Path(arguments[0] if arguments else ".").resolve())
    faults = list(check(root, tracked("assertions", root)))
    for fault in faults:
        print(f"{fault} checks nothing")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
