"""One client of a stress run: what it sends and reads, in which pieces, and how it ends.

A client checks each whole answer that it gets. A client that behaves must get all its answers.
"""

import array
import dataclasses
import itertools
import selectors
import socket
import time

from exchanges import LONGEST, whole_answers

READ, WRITE = selectors.EVENT_READ, selectors.EVENT_WRITE
BLOCK = 1 << 16


@dataclasses.dataclass
class Piece:
    """Bytes that are sent by one call, after a pause and after answers."""
    bytes: bytes
    pause: float = 0
    after_answers: int = 0  # that must have arrived
    descriptors: tuple = ()  # passed with the first byte, and closed here then


@dataclasses.dataclass
class Plan:
    behaviour: str
    exchanges: list  # whose requests are sent wholly
    pieces: list
    block: int = BLOCK  # the most bytes of one read; 0 for a client that never reads
    read_pause: float = 0
    half_close: bool = False  # after the last piece
    abrupt_after_sending: bool = False
    abrupt_after_bytes: int = None  # of answers
    stays: bool = False  # until the daemon, or the driver, closes the connection

    @property
    def behaves(self):
        """Whether the client must get every answer, without much delay."""
        return not (self.abrupt_after_sending or self.abrupt_after_bytes is not None or self.block == 0)


def ends_of(exchanges):
    """For each request, how many bytes of the client the daemon needs before it answers."""
    return list(itertools.accumulate(min(len(exchange.request), LONGEST + 1) for exchange in exchanges))


class Client:
    def __init__(self, name, plan, crowd):
        self.name = f"client {name} ({plan.behaviour})"
        self.plan = plan
        self.crowd = crowd
        self.socket = None
        self.is_done = False
        self.answers = 0
        self.received = bytearray()
        self.received_bytes = 0
        self.left = list(plan.pieces)
        self.partial = b""  # of the piece that is being sent
        self.pauses_sending = False
        self.pauses_reading = False
        self.sent_bytes = 0
        self.ends = ends_of(plan.exchanges)
        self.sent_requests = 0
        self.force = []  # for each sent request, the point in time in the history of versions
        self.waits_since = None
        self.has_ended_sending = False
        self.last = b""  # the last answer
        self.on_end = None

    def start(self):
        if self.is_done:
            return  # before it began
        self.socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM | socket.SOCK_NONBLOCK)
        self.connect()

    def connect(self):
        if self.is_done:
            return
        try:
            self.socket.connect(self.crowd.path)
        except BlockingIOError:  # the queue of the listening socket is full
            return self.crowd.later(0.002, self.connect)
        except OSError as error:
            return self.not_connected(error)
        self.crowd.connected(self)
        self.note_sent(0)
        self.prepare_piece()
        self.update()

    def not_connected(self, error):
        if not self.crowd.is_ending:
            self.fail(f"cannot connect: {error}")
        self.close()

    # What the client waits for.

    def update(self):
        if self.is_done:
            return
        reads = self.plan.block and not self.pauses_reading
        self.crowd.watch(self, (WRITE if self.wants_write() else 0) | (READ if reads else 0))

    def wants_write(self):
        if self.partial:
            return True
        return bool(self.left) and not self.pauses_sending and self.left[0].after_answers <= self.answers

    def prepare_piece(self):
        if not self.left:
            return self.ended_sending()
        if self.left[0].pause:
            self.pauses_sending = True
            self.crowd.later(self.left[0].pause, self.pause_over)

    def pause_over(self):
        self.pauses_sending = False
        self.update()

    def ready(self, events):
        if events & WRITE and self.wants_write():
            self.write()
        if events & READ and not self.is_done:
            self.read()
        self.update()

    # Sending.

    def write(self):
        try:
            if self.partial:
                sent = self.socket.send(self.partial)
                self.partial = self.partial[sent:]
            else:
                piece = self.left[0]
                sent = self.send_piece(piece)
                self.left.pop(0)
                self.partial = piece.bytes[sent:]
        except BlockingIOError:
            return
        except (BrokenPipeError, ConnectionResetError):
            self.left, self.partial = [], b""
            if not self.plan.block:
                return  # nothing is read that could say more
            return self.ended_sending(half_close=False)
        self.note_sent(sent)
        if not self.partial:
            self.prepare_piece()

    def send_piece(self, piece):
        if not piece.descriptors:
            return self.socket.send(piece.bytes)
        passed = [end.fileno() for end in piece.descriptors]
        sent = self.socket.sendmsg([piece.bytes], [(socket.SOL_SOCKET, socket.SCM_RIGHTS,
                                                    array.array("i", passed))])
        for end in piece.descriptors:
            end.close()
        return sent

    def note_sent(self, size):
        self.sent_bytes += size
        while self.sent_requests < len(self.ends) and self.ends[self.sent_requests] <= self.sent_bytes:
            self.note_request()

    def note_request(self):
        self.sent_requests += 1
        self.force.append(self.crowd.force.now())
        self.crowd.counts["requests"] += 1
        if self.waits_since is None:
            self.waits_since = time.monotonic()

    def ended_sending(self, half_close=True):
        if self.has_ended_sending:
            return
        self.has_ended_sending = True
        if self.plan.abrupt_after_sending:
            return self.close()
        if self.plan.half_close and half_close:
            try:
                self.socket.shutdown(socket.SHUT_WR)
            except OSError:
                pass  # the daemon has closed the connection
        self.end_if_answered()

    @property
    def is_closed_by_daemon(self):
        return bool(self.plan.exchanges) and self.plan.exchanges[-1].closes

    # Receiving.

    def read(self):
        try:
            block = self.socket.recv(self.block_size())
        except BlockingIOError:
            return
        except ConnectionResetError:
            block = b""
        if not block:
            return self.closed_by_daemon()
        self.received += block
        self.received_bytes += len(block)
        self.check_answers()
        if self.plan.abrupt_after_bytes is not None and self.received_bytes >= self.plan.abrupt_after_bytes:
            return self.close()
        if self.plan.read_pause:
            self.pauses_reading = True
            self.crowd.later(self.plan.read_pause, self.read_pause_over)
        self.end_if_answered()

    def block_size(self):
        if self.plan.abrupt_after_bytes is None:
            return self.plan.block
        return min(self.plan.block, max(1, self.plan.abrupt_after_bytes - self.received_bytes))

    def read_pause_over(self):
        self.pauses_reading = False
        self.update()

    def check_answers(self):
        waiting = self.plan.exchanges[self.answers:self.sent_requests]
        for exchange, answer in whole_answers(self.received, waiting):
            self.check_answer(exchange, answer)
            self.answers += 1
            self.last = answer
            self.crowd.answered(self)
        if self.received and self.answers == self.sent_requests:
            self.fail(f"got {bytes(self.received[:300])!r}, which answers no request, after "
                      f"{self.answers} answers to {self.sent_requests} requests")

    def check_answer(self, exchange, answer):
        versions = self.crowd.force.since(self.force[self.answers])
        try:
            problem = exchange.problem(answer, versions)
        except (ValueError, KeyError, TypeError) as error:
            problem = f"which cannot be read: {error!r}"
        if problem:
            self.fail(f"got the wrong answer {answer[:300]!r} to request {self.answers + 1}, "
                      f"{exchange.request[:100]!r}: {problem}")

    def closed_by_daemon(self):
        expected = len(self.plan.exchanges)
        if self.plan.behaves and not self.crowd.is_ending:
            if self.answers < expected:
                self.fail(f"the daemon closed the connection after {self.answers} of {expected} answers; "
                          f"the last bytes are {bytes(self.received[:300])!r}")
            if not self.plan.half_close and not self.is_closed_by_daemon:
                self.fail("the daemon closed the connection of a client that had not ended")
            if self.received:
                self.fail(f"the last bytes {bytes(self.received[:300])!r} are no whole answer")
        self.close()

    def end_if_answered(self):
        """Clients that wait for the daemon's end of the connection end in `closed_by_daemon`."""
        awaits_end = self.plan.half_close or self.plan.stays or self.is_closed_by_daemon
        if self.has_ended_sending and not awaits_end and self.answers == len(self.plan.exchanges):
            self.close()

    def close(self):
        if self.is_done:
            return
        self.is_done = True
        self.crowd.forget(self)
        if self.socket:
            self.socket.close()
        for piece in self.left:
            for end in piece.descriptors:
                end.close()
        if self.on_end:
            self.on_end()

    def fail(self, what):
        self.crowd.fail(f"{self.name}: {what}")
