"""Requests, and the answers that must follow.

The requests of a run change nothing, and most echo a word that no other request has. So an answer
that belongs to another request, or that comes twice, is noticed. The expected answers are those of
docs/daemon.md, written down here.
"""

import dataclasses
import json
from collections.abc import Callable

from configurations import actions_in, is_on_the_way

LONGEST = 65536
LEVELS = 100  # of a request
FORM = '{"command": "...", "json": true|false, "columns": N}'
ONCE = {}  # the answers to commands whose answer never changes, as a calm client got them


@dataclasses.dataclass(frozen=True)
class Exchange:
    request: bytes  # with its line end, unless the client ends before it
    is_json: bool  # whether the answer is one line of JSON
    problem: Callable  # of the answer and the versions that may be in force; None if it is right
    closes: bool = False  # whether the daemon closes the connection after the answer


def lines_in_text(output):
    """The answer in the framing of text."""
    lines = output.removesuffix("\n").split("\n") if output else []
    return "".join(f"{'.' * line.startswith('.')}{line}\n" for line in lines).encode() + b".\n"


def exactly(expected):
    def problem(answer, versions):
        return None if answer == expected else f"expected {expected[:300]!r}"
    return problem


def text_answer(status, output):
    return exactly(lines_in_text(output if status == 0 else "error: " + output))


def json_answer(status, output):
    expected = {"status": status, "output": output}

    def problem(answer, versions):
        return None if json.loads(answer) == expected else f"expected {str(expected):.300}"
    return problem


def as_text(command, status, output):
    return Exchange(command + b"\n", False, text_answer(status, output))


def as_json(line, status, output):
    return Exchange(line + b"\n", True, json_answer(status, output))


def framed(random, command, status, output):
    if random.random() < 0.5:
        return as_text(command.encode(), status, output)
    request = {"command": command}
    if status != 0 and random.random() < 0.5:
        request["json"] = True  # an error is a text all the same
    return as_json(json.dumps(request).encode(), status, output)


def echo(random, word):
    """A wrong command. Its answer names the word."""
    return framed(random, *random.choice([
        (f"decap-nh {word}", 2,
         f"decap-nh on|off: decap-nh must be followed by on or off, found '{word}'"),
        (f"vrf {word} id {word}", 2,
         f"vrf NAME id N: N must be a number from 0 to 4294967295, found '{word}'"),
        (f"help {word}", 2,
         f"help [WORD...]: WORD... must be the beginning of a command, found '{word}'"),
        (f"get VrfHwConfig {word}", 2,
         f"get TYPE ATTRIBUTE [KEY]: ATTRIBUTE must be one of: vrfRefCount, found '{word}'"),
    ]))


def path(random, word):
    """A packet into an interface that has no rules. Its answer names the destination."""
    address = ".".join(str(random.randrange(256)) for _ in range(3))
    to = f"10.{address}"
    return framed(random, f"explain plain ipv4 192.0.2.1 to {to}", 0,
                  f"packet ipv4 192.0.2.1 to {to} protocol 17 ttl 64, 28 bytes\n"
                  "interface VRF default: no rule matches\n"
                  f"look up {to} in VRF default (id 1): miss\n"
                  "drop noRoute: no VRF that it was looked up in has a route\n")


def long_word(random, word):
    text = word + "x" * random.randrange(200, LONGEST - 200)
    return framed(random, f"decap-nh {text}", 2,
                  f"decap-nh on|off: decap-nh must be followed by on or off, found '{text[:100]}'...")


def unknown_member(random, word):
    return as_json(f'{{"{word}": 1}}'.encode(), 2,
                   f'request: unknown member "{word}"; a request must be {FORM}')


def too_deep(line):
    """The object is a level too."""
    column = line.index("[") + LEVELS
    return f"request:1:{column}: nests deeper than {LEVELS} levels; a request must be {FORM}"


def deep(random, word):
    depth = random.choice([1, LEVELS - 1, LEVELS, random.randrange(1, 30000)])
    line = f'{{"json": true, "command": {"[" * depth}"{word}"{"]" * depth}}}'
    return as_json(line.encode(), 2, "request: member command must be a text"
                   if depth < LEVELS else too_deep(line))


def unclosed(random, word):
    depth = random.choice([1, LEVELS - 1, LEVELS, random.randrange(1, 60000)])
    line = '{"command":' + "[" * depth
    return as_json(line.encode(), 2,
                   f"request:1:{len(line) + 1}: malformed JSON: while parsing value - unexpected end of "
                   f"input; expected '[', '{{', or a literal; a request must be {FORM}"
                   if depth < LEVELS else too_deep(line))


def nul(random, word):
    return as_text(word.encode() + b"\0" * random.randint(1, 9), 2,
                   "a request must be text, found a NUL byte")


def not_utf8(random, word):
    return as_text(word.encode() + b"\xff", 2,
                   f'a request must be UTF-8, found "{word}\\xff"; other bytes are quoted, as \'\\xff\'')


def blank(random, word):
    return as_text(b" " * random.randrange(3) + b"#" * random.randrange(2), 0, "")


CONSTANT = ["help", "show types", "complete 'show tr'"]


def constant(random, word):
    command = random.choice(CONSTANT)
    return framed(random, command, 0, ONCE[command])


def types():
    return as_text(b"show types", 0, ONCE["show types"])


def shown_actions(random, word):
    def problem(answer, versions):
        found = json.loads(answer)
        shown = actions_in(found["output"]) if found["status"] == 0 else None
        if shown is not None and (shown in [v.actions() for v in versions] or is_on_the_way(shown, versions)):
            return None
        return f"expected the actions of the configuration in force, version " \
               f"{' or '.join(str(v.number) for v in versions)}"
    return Exchange(b'{"command":"show actions","json":true}\n', True, problem)


def after_changes():
    """A command that waits until no configuration is being applied. It changes nothing."""
    def problem(answer, versions):
        return None if json.loads(answer)["status"] == 0 else "expected status 0"
    return Exchange(b'{"command":"decap-nh off","json":true}\n', True, problem)


def trace(number):
    """The last messages: a long answer, after some reloads."""
    def problem(answer, versions):
        found = json.loads(answer)
        numbers = [message["sequence"] for message in found["output"]]
        if found["status"] == 0 and numbers and len(numbers) <= number and \
                numbers == list(range(numbers[0], numbers[0] + len(numbers))):
            return None
        return f"expected up to {number} messages without a gap"
    return Exchange(f'{{"command":"show trace {number}","json":true}}\n'.encode(), True, problem)


def too_long(random, word):
    """A line that is too long. The daemon reads no more of this client."""
    problem = f"a request must be a line of at most {LONGEST} bytes, found more; the connection is closed"
    size = LONGEST + random.choice([1, 2, 1000, 300000])
    if random.random() < 0.5:
        return Exchange(word.encode().ljust(size, b"y") + b"\n", False,
                        text_answer(2, problem), closes=True)
    return Exchange(b"{".ljust(size, b"y") + b"\n", True, json_answer(2, problem), closes=True)


def unfinished(random, word):
    """The end of the bytes in the middle of a request, after a half-close."""
    return Exchange(word.encode(), False, text_answer(
        2, f'a request must end with a newline, found the end after "{word}"'))


LIGHT = [echo] * 8 + [path] * 3 + [constant, unknown_member, nul, not_utf8, blank]
COSTLY = [long_word, deep, unclosed, shown_actions]


def usual(random, word):
    return random.choice(COSTLY if random.random() < 0.04 else LIGHT)(random, word)


def whole_answers(received, exchanges):
    """Takes the whole answers off the beginning of the bytes, for these exchanges in order."""
    for exchange in exchanges:
        end = b"\n" if exchange.is_json else b".\n"
        found = received.find(end)
        while not exchange.is_json and found > 0 and received[found - 1:found] != b"\n":
            found = received.find(end, found + 1)
        if found < 0:
            return
        size = found + len(end)
        yield exchange, bytes(received[:size])
        del received[:size]
