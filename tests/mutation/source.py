"""Finds functions, statements and conditions in C++ sources that clang-format has formatted.

Positions are offsets into the text. Comments, literals, attributes and preprocessor lines are first replaced by
the same number of spaces, so offsets in the code are also offsets in the text.
"""

import dataclasses
import re

BLANKED = re.compile(
    r"""//[^\n]* | /\*.*?\*/ | \[\[[^\[\]]*\]\] | ^[ ]*\#[^\n]* | "(?:\\.|[^"\\\n])*" | '(?:\\.|[^'\\\n])+'""",
    re.VERBOSE | re.DOTALL | re.MULTILINE,
)
OPENING, CLOSING = "({[", ")}]"
TYPE_HEAD = re.compile(r"(?:template\s*<.*>\s*)?(?:class|struct|union)\b", re.DOTALL)
CONTROL = re.compile(r"(if constexpr|if|while|for|switch|catch)\s*\(")
PLAIN_KEYWORD = re.compile(r"(?:else|do|try)\b|(?:case\b[^;{}]*?|default)(?<!:):(?!:)")


NAME = re.compile(r"(?:operator *(?:\(\)|[^\s\w(]+)|[~\w:]+)(?=\()")


@dataclasses.dataclass(frozen=True)
class Function:
    name: str  # as its definition spells it
    begin: int  # of the body, after its brace
    end: int  # at its closing brace
    is_void: bool


@dataclasses.dataclass(frozen=True)
class Statement:
    begin: int
    end: int  # after its semicolon


@dataclasses.dataclass(frozen=True)
class Condition:
    keyword: str
    begin: int  # within the parentheses
    end: int


def code_of(text):
    """`text` with spaces in place of everything that is not code."""
    return BLANKED.sub(lambda found: re.sub(r"[^\n]", " ", found[0]), text)


def matching(code, opening):
    """The offset of the bracket that closes the one at `opening`."""
    depth = 0
    for at in range(opening, len(code)):
        if code[at] in OPENING:
            depth += 1
        elif code[at] in CLOSING:
            depth -= 1
            if depth == 0:
                return at
    raise ValueError(f"the bracket at offset {opening} is not closed")


def functions(code):
    """The functions with a body, in their order. A function within a function is a part of it."""
    head, at = 0, 0
    while at < len(code):
        if code[at] == "(":
            at = matching(code, at)
        elif code[at] == "{" and code[at - 1] not in " \n":  # a member or a variable is initialised
            at = matching(code, at)
        elif code[at] == "{":
            start = re.sub(r"(public|protected|private):", "", code[head:at]).strip()
            if not re.match(r"(inline )?namespace\b", start) and not TYPE_HEAD.match(start):
                end = matching(code, at)
                if ")" in start and "=" not in re.sub(r"operator\S+", "", start).partition("(")[0]:
                    yield function_of(start, at + 1, end)
                at = end
            head = at + 1
        elif code[at] in ";}":
            head = at + 1
        at += 1


def function_of(start, begin, end):
    start = re.sub(r"\b(static|explicit|inline|virtual)\b", "", start)
    is_void = re.match(r"\s*(template\s*<.*?>\s*)?void\b", start) is not None
    named = NAME.search(start)
    return Function(named[0].lstrip(":") if named else "", begin, end, is_void)


def end_of_statement(code, at):
    while code[at] != ";":
        at = matching(code, at) if code[at] in OPENING else at
        at += 1
    return at + 1


def statements(code, begin, end):
    """The statements and the conditions between two offsets, including those of lambdas."""
    at = begin
    while at < end:
        if code[at] in " \n{}":
            at += 1
        elif control := CONTROL.match(code, at):
            closing = matching(code, control.end() - 1)
            yield Condition(control[1], control.end(), closing)
            at = closing + 1
        elif plain := PLAIN_KEYWORD.match(code, at):
            at = plain.end()
        else:
            after = end_of_statement(code, at)
            yield Statement(at, after)
            yield from within_lambdas(code, at, after)
            at = after


def within_lambdas(code, begin, end):
    at = begin
    while at < end:
        if code[at] == "{":
            closing = matching(code, at)
            if ";" in code[at:closing]:
                yield from statements(code, at + 1, closing)
            at = closing
        at += 1
