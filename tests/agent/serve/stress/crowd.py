"""All clients of a stress run, on one thread, and what holds for all of them."""

import collections
import heapq
import itertools
import selectors
import time

import processes


class Broken(AssertionError):
    """An invariant of the daemon does not hold."""


class Force:
    """The versions of the configuration that may be in force, now and earlier."""

    def __init__(self, version):
        self.history = [{version}]

    def may_be(self, *versions):
        self.history.append(set(versions))

    def now(self):
        return len(self.history) - 1

    def since(self, point):
        return sorted(set().union(*self.history[point:]), key=lambda version: version.number)

    @property
    def version(self):
        (only,) = self.history[-1]
        return only


class Crowd:
    def __init__(self, path, force):
        self.path = str(path)
        self.force = force
        self.selector = selectors.DefaultSelector()
        self.timers = []
        self.order = itertools.count()
        self.clients = set()
        self.watched = {}
        self.counts = collections.Counter()
        self.longest_wait = 0
        self.moved_at = time.monotonic()
        self.is_ending = False  # the daemon has been asked to end

    # For clients.

    def connected(self, client):
        self.counts["clients"] += 1
        self.moved_at = time.monotonic()

    def answered(self, client):
        now = time.monotonic()
        if self.must_be_quick(client):
            self.longest_wait = max(self.longest_wait, now - client.waits_since)
        client.waits_since = now if client.answers < client.sent_requests else None
        self.counts["answers"] += 1

    def watch(self, client, events):
        before = self.watched.get(client, 0)
        if events == before:
            return
        if events == 0:
            self.selector.unregister(client.socket)
            del self.watched[client]
            return
        if before == 0:
            self.selector.register(client.socket, events, client)
        else:
            self.selector.modify(client.socket, events, client)
        self.watched[client] = events

    def forget(self, client):
        self.watch(client, 0)
        self.clients.discard(client)
        self.moved_at = time.monotonic()

    def later(self, seconds, call):
        heapq.heappush(self.timers, (time.monotonic() + seconds, next(self.order), call))

    def fail(self, what):
        raise Broken(what)

    # For the driver.

    def add(self, client, delay=0):
        self.clients.add(client)
        if delay:
            self.later(delay, client.start)
        else:
            client.start()
        return client

    def run_until(self, condition, awaited):
        """Fails when nothing moves any more, with the names of those who wait."""
        limit = processes.SECONDS * processes.factor()
        self.moved_at = time.monotonic()
        while not condition():
            self.turn()
            if time.monotonic() - self.moved_at > limit:
                names = ", ".join(sorted(client.name for client in self.clients)[:5])
                self.fail(f"nothing was sent or received for {limit:.0f} s while the driver waited for "
                          f"{awaited}; connected: {names or 'nobody'}")

    def run_script(self, script):
        """Runs a generator. It yields seconds to pause, or a client whose end it waits for."""
        awaited = next(script, None)
        if isinstance(awaited, (int, float)):
            self.later(awaited, lambda: self.run_script(script))
        elif awaited is not None:
            awaited.on_end = lambda: self.run_script(script)

    def turn(self):
        pause = 0.05
        if self.timers:
            pause = min(pause, max(0, self.timers[0][0] - time.monotonic()))
        for key, events in self.selector.select(pause):
            if not key.data.is_done:
                key.data.ready(events)
                self.moved_at = time.monotonic()
        while self.timers and self.timers[0][0] <= time.monotonic():
            heapq.heappop(self.timers)[2]()
        self.check_waits()

    def check_waits(self):
        limit = processes.SECONDS * processes.factor()
        now = time.monotonic()
        for client in self.clients:
            if self.must_be_quick(client) and client.waits_since and now - client.waits_since > limit:
                request = client.plan.exchanges[client.answers].request[:100]
                client.fail(f"no answer to request {client.answers + 1}, {request!r}, within {limit:.0f} s")

    @staticmethod
    def must_be_quick(client):
        return client.plan.behaves and not client.plan.read_pause

    def close_all(self):
        for client in list(self.clients):
            client.close()
