"""The mutation operators: each changes one place of a source in one way."""

import collections
import dataclasses
import re

from source import Condition, code_of, functions, statements

DECLARATION = re.compile(
    r"(?!return\b|throw\b|delete\b)(?:(?:static|const|constexpr) )*"
    r"[\w:]+(?:<.*>)?(?:::\w+)*(?: |[&*] ?)+(\w+)\s*[=({;]",
    re.DOTALL,
)
# clang-format puts spaces around operators with two operands.
SWAPS = [
    ("equality", r"(?<= )(==|!=)(?=\s)", {"==": "!=", "!=": "=="}),
    ("relation", r"(?<= )(<=|>=|<|>)(?=\s)", {"<": "<=", "<=": "<", ">": ">=", ">=": ">"}),
    ("logic", r"(?<= )(&&|\|\|)(?=\s)", {"&&": "||", "||": "&&"}),
    ("arithmetic", r"(?<= )(\+=|-=|\+|-|\*|/)(?=\s)",
     {"+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+="}),
    ("step", r"(\+\+|--)(?=\w)", {"++": "--", "--": "++"}),
    ("truth", r"\b(true|false)\b", {"true": "false", "false": "true"}),
]  # fmt: skip
NUMBER = re.compile(r"(?<![\w.])(\d+)(U?)(?![\w.])")
NOT = re.compile(r"(?<![\w!])!(?=[\w(])")
# A condition with one operator. A swap or removal of the operator negates it.
ONE_OPERATOR = re.compile(r"(?!.* (?:&&|\|\|) )(?:.* (?:==|!=) .*|![^ ]*)", re.DOTALL)
READER = re.compile(r"\s*return \w+_;\s*")
CHOICE = re.compile(r"(?:return|=) ([^;?]*?) \?")


@dataclasses.dataclass(frozen=True)
class Mutant:
    """A change of one place: replaces the text between two offsets.

    Its name is that of its function, with the operator and the number of this operator's change within
    the functions of that name. So a change elsewhere in the file, or of the layout, does not rename it.
    """

    file: str
    name: str
    operator: str
    begin: int
    end: int
    replacement: str

    def applied_to(self, text):
        return text[: self.begin] + self.replacement + text[self.end :]

    def line(self, text):
        return text.count("\n", 0, self.begin) + 1

    def change(self, text):
        """The changed lines before and after, each joined into one line."""
        first = text.rfind("\n", 0, self.begin) + 1
        last = text.find("\n", self.end)
        before = text[first:last]
        after = text[first : self.begin] + self.replacement + text[self.end : last]
        return " ".join(before.split()), " ".join(after.split())


def mutants_of(file, text):
    """All mutants of `text`, in the order of their places."""
    code = code_of(text)
    found, made = [], collections.Counter()
    for function in functions(code):
        # Readers of members in headers are inlined into the tests, which are not compiled again.
        if file.endswith(".h") and READER.fullmatch(code[function.begin : function.end]):
            continue
        places = {(begin, end, to, operator) for operator, begin, end, to in in_function(code, function)}
        for begin, end, to, operator in sorted(places):
            made[function.name, operator] += 1
            name = f"{function.name} {operator} {made[function.name, operator]}"
            found.append(Mutant(file, name, operator, begin, end, to))
    return found


def in_function(code, function):
    if function.is_void and code.count(";", function.begin, function.end) > 1:
        yield "early return", function.begin, function.begin, " return; "
    for part in statements(code, function.begin, function.end):
        if isinstance(part, Condition):
            yield from in_condition(code, part)
        else:
            yield from in_statement(code, part, function.end)
    yield from in_tokens(code, function)


def in_condition(code, condition):
    begin, end = condition.begin, condition.end
    if condition.keyword == "for":
        parts = code[begin:end].split(";")
        if len(parts) != 3:
            return
        begin += len(parts[0]) + 2
        end = begin + len(parts[1]) - 1
    elif condition.keyword not in ("if", "while"):
        return
    text = code[begin:end]
    if declared := DECLARATION.match(text):
        name = text.rpartition("; ")[2] if "; " in text else f"{text}; {declared[1]}"
        negated = f"{text.rpartition('; ')[0]}; !({name})" if "; " in text else None
        yield "condition", begin, end, negated or f"{text}; !{declared[1]}"
        return
    if not ONE_OPERATOR.fullmatch(text):
        yield "condition", begin, end, f"!({text})"
    if condition.keyword == "if":
        yield "condition", begin, end, "true"
        if code.startswith(" {", condition.end + 1):
            yield "condition", begin, end, "false"


DEFAULT_RESULTS = {f"return {value};" for value in ("{}", "nullptr", "std::nullopt", "false", "0")}


def in_statement(code, statement, end_of_function):
    begin, end = statement.begin, statement.end
    text = code[begin:end]
    if text.startswith("return "):
        if text not in DEFAULT_RESULTS:
            yield "result", begin, end, "return {};"
        return
    declared = DECLARATION.match(text)
    if declared and re.search(rf"\b{declared[1]}\b", code[end:end_of_function]):
        return
    yield "deletion", begin, end, ";"
    if text == "continue;":
        yield "loop", begin, end, "break;"


def in_tokens(code, function):
    body = (function.begin, function.end)
    for operator, pattern, swaps in SWAPS:
        for found in re.compile(pattern).finditer(code, *body):
            yield operator, found.start(), found.end(), swaps[found[0]]
    for found in NUMBER.finditer(code, *body):
        yield "number", found.start(), found.end(), f"{int(found[1]) + 1}{found[2]}"
    for found in NOT.finditer(code, *body):
        yield "negation", found.start(), found.end(), ""
    for found in CHOICE.finditer(code, *body):
        yield "choice", found.start(1), found.end(1), f"!({found[1]})"
