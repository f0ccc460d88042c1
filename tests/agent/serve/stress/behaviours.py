"""The behaviours of clients. Each function draws the plan of one client."""

import os

import exchanges
from clients import Piece, Plan


def requests_of(drawn):
    return b"".join(exchange.request for exchange in drawn)


def more_than_a_socket_keeps():
    """Requests of which the answers wait in the daemon until the client reads: 100 times 10 kB."""
    return [exchanges.types() for _ in range(100)]


def usual(random, name, most):
    return [exchanges.usual(random, f"w{name}-{i}") for i in range(random.randint(1, most))]


def cut(random, text, sizes):
    pieces = []
    while text:
        size = random.choice(sizes)
        pieces.append(text[:size])
        text = text[size:]
    return pieces


def one_by_one(random, name):
    drawn = usual(random, name, 8)
    return Plan("one request after the other", drawn,
                [Piece(exchange.request, after_answers=i) for i, exchange in enumerate(drawn)])


def in_pieces(random, name):
    drawn = usual(random, name, 4)
    sizes = random.choice([[1, 2, 3], [1, 7, 50], [1000, 8191, 65536]])
    text = requests_of(drawn)
    if len(text) > 20000:
        sizes = [1000, 8191, 65536]
    return Plan("requests in pieces", drawn,
                [Piece(piece, pause=random.choice([0, 0, 0.001])) for piece in cut(random, text, sizes)])


def every_split(random, name):
    """The same request again and again, each time cut at the next byte."""
    one = exchanges.echo(random, f"w{name}")
    drawn, pieces = [], []
    for cut_at in range(1, len(one.request)):
        pieces.append(Piece(one.request[:cut_at], after_answers=len(drawn)))
        drawn.append(one)
        pieces.append(Piece(one.request[cut_at:], pause=0.0005))
    return Plan("a request cut at each byte", drawn, pieces)


def pipeline(random, name):
    drawn = usual(random, name, 40)
    return Plan("a pipeline", drawn, [Piece(requests_of(drawn))], half_close=random.random() < 0.3)


def half_closing(random, name):
    drawn = usual(random, name, 4)
    if random.random() < 0.6:
        drawn.append(exchanges.unfinished(random, f"w{name}-end"))
    return Plan("half-close", drawn,
                [Piece(piece) for piece in cut(random, requests_of(drawn), [5, 500, 65536])],
                half_close=True)


def ends_in_a_request(random, name):
    drawn = usual(random, name, 4) + [exchanges.echo(random, f"w{name}-last")]
    text = requests_of(drawn)
    text = text[:random.randrange(1, len(text))]
    pieces = [Piece(piece) for piece in cut(random, text, [5, 500, 65536])]
    return Plan("close in a request", drawn, pieces, abrupt_after_sending=True)


def ends_in_an_answer(random, name):
    drawn = usual(random, name, 10) + [exchanges.trace(300)] + more_than_a_socket_keeps()
    return Plan("close in an answer", drawn, [Piece(requests_of(drawn))],
                abrupt_after_bytes=random.choice([1, 20, 200, 20000, 300000]))


def passes_descriptors(random, name):
    drawn = usual(random, name, 4)
    text = requests_of(drawn)
    pieces = [Piece(piece) for piece in cut(random, text[:2000], [9, 900])]
    if text[2000:]:
        pieces.append(Piece(text[2000:]))
    ending = random.choice(["answered", "answered", "half-close", "abrupt"])
    return Plan("descriptors", drawn, pieces, half_close=ending == "half-close",
                abrupt_after_sending=ending == "abrupt")


def slow_reader(random, name):
    drawn = more_than_a_socket_keeps() + [exchanges.trace(300)] + usual(random, name, 3)
    random.shuffle(drawn)
    return Plan("a slow reader", drawn, [Piece(requests_of(drawn))],
                block=random.choice([10000, 30000]), read_pause=random.choice([0.001, 0.003]))


def never_reads(random, name):
    drawn = [exchanges.trace(300)] + more_than_a_socket_keeps()
    return Plan("a client that never reads", drawn, [Piece(requests_of(drawn))], block=0, stays=True)


def silent(random, name):
    return Plan("a silent client", [], [], stays=True)


def too_long(random, name):
    drawn = usual(random, name, 3)
    drawn.append(exchanges.too_long(random, f"w{name}-long"))
    return Plan("a line that is too long", drawn,
                [Piece(piece) for piece in cut(random, requests_of(drawn), [1000, 40000, 1 << 20])])


BEHAVIOURS = [one_by_one] * 4 + [in_pieces] * 4 + [pipeline] * 3 + \
    [every_split, half_closing, half_closing, ends_in_a_request, ends_in_a_request, ends_in_an_answer,
     passes_descriptors, passes_descriptors, slow_reader, never_reads, silent, too_long]


class PassedDescriptors:
    """Pipes whose one end was passed to the daemon. The other end shows when that end is closed."""

    def __init__(self):
        self.kept = []

    def add_to(self, random, plan):
        for piece in random.sample(plan.pieces, min(len(plan.pieces), 3)):
            piece.descriptors = tuple(self.new_end() for _ in range(random.randint(1, 3)))

    def new_end(self):
        read, write = os.pipe2(os.O_CLOEXEC | os.O_NONBLOCK)
        self.kept.append(open(read, "rb", buffering=0))
        return open(write, "wb", buffering=0)

    def open_ones(self):
        """Reads each pipe; closes and forgets those whose other end is closed everywhere."""
        self.kept = [end for end in self.kept if end.read(1) != b"" or end.close()]
        return len(self.kept)
