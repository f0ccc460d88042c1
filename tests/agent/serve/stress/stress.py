#!/usr/bin/env python3
"""Runs crowds of clients against one daemon, and checks what must hold for all of them.

usage: stress.py PROGRAM [--seed N] [--rounds N | --seconds S] [--clients N]

The seed determines the clients, what they send, and the changes of the configuration. It does not
determine when the system runs the two processes. These things must hold:

- each whole request gets one answer, in order, and the right one
- a client that reads is answered within ten seconds, whatever the others do
- the configuration in force is always a whole one
- after each round the daemon has as many descriptors as at its start, no passed descriptor is open,
  and 256 new clients are served, and no more
- memory does not grow from round to round, and clients that never read are disconnected (with --seconds)
- SIGTERM ends the daemon with status 0, without its socket file and without a sanitizer report

Failures print the seed.
"""

import argparse
import json
import os
import random
import secrets
import select
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../../waiting"))
import processes
import behaviours
import configurations
import exchanges
from clients import Client, Piece, Plan
from crowd import Broken, Crowd, Force
from memory import Memory
from reloads import Operator
from served_agent import ServedAgent, wait_until

MOST_CLIENTS = 256
REFUSAL = f"{MOST_CLIENTS} clients are connected, which is the limit; try again later"
IMPATIENCE = 5  # seconds after which the daemon of a long run disconnects a client that never reads


class Stress:
    def __init__(self, arguments, folder):
        self.arguments = arguments
        self.is_long = arguments.seconds is not None
        size = 50 if self.is_long else 20
        self.versions = [configurations.Version(number, size) for number in range(6)]
        self.force = Force(self.versions[0])
        configurations.File(f"{folder}/agent.json").replace(self.versions[0].text)
        patience = round(IMPATIENCE * processes.factor())
        options = ["--client-timeout", str(patience)] if self.is_long else []
        self.agent = ServedAgent(arguments.program, folder, options)
        self.crowd = Crowd(self.agent.socket, self.force)
        self.passed = behaviours.PassedDescriptors()
        self.memory = Memory()
        self.round = 0

    def run(self):
        self.agent.await_start()
        descriptors = self.agent.descriptors()
        self.learn_constant_answers()
        end = time.monotonic() + (self.arguments.seconds or 0)
        while time.monotonic() < end if self.is_long else self.round < self.arguments.rounds:
            self.random = random.Random(f"{self.arguments.seed} {self.round}")
            self.one_round(descriptors)
            self.round += 1
            self.memory.add(self.agent.kilobytes("VmRSS"))
        if self.is_long:
            self.memory.check()
        self.peak = self.agent.kilobytes("VmHWM")
        self.end_among_clients()

    def learn_constant_answers(self):
        """From a client that is alone. Their content is tested elsewhere."""
        for command in exchanges.CONSTANT:
            def problem(answer, versions, command=command):
                exchanges.ONCE[command] = answer.decode()[:-2]
            self.ask(exchanges.Exchange(command.encode() + b"\n", False, problem))

    def ask(self, exchange):
        plan = Plan("alone", [exchange], [Piece(exchange.request)])
        client = self.crowd.add(Client("alone", plan, self.crowd))
        self.crowd.run_until(lambda: client.is_done, "one answer")

    # A round.

    def one_round(self, descriptors):
        clients = self.start_clients()
        operator = Operator(self.random, self.agent, self.crowd, self.versions)
        steps = self.random.randint(2, 6)
        self.crowd.run_script(operator.script(steps, flurry=self.random.random() < 0.5))
        self.crowd.run_until(lambda: operator.is_done and not self.unfinished(clients),
                             "the end of a round")
        if self.is_long and self.round % 8 == 7:
            self.await_impatience(clients)
        self.crowd.close_all()
        self.check_quiet(descriptors)
        if self.round % 4 == 0:
            self.full_house()
            self.check_quiet(descriptors)
        self.settle()

    def start_clients(self):
        clients = []
        for number in range(self.random.randint(self.arguments.clients // 4, self.arguments.clients)):
            name = f"{self.round}-{number}"
            behaviour = self.random.choice(behaviours.BEHAVIOURS)
            plan = behaviour(self.random, name)
            if behaviour is behaviours.passes_descriptors:
                self.passed.add_to(self.random, plan)
            delay = self.random.choice([0, 0, self.random.random() * 0.3])
            clients.append(self.crowd.add(Client(name, plan, self.crowd), delay))
        return clients

    @staticmethod
    def unfinished(clients):
        return [client for client in clients if not client.is_done and not client.plan.stays]

    @staticmethod
    def await_impatience(clients):
        """The daemon closes the connections of clients that never read."""
        limit = (IMPATIENCE + processes.SECONDS) * processes.factor()
        for client in clients:
            if client.is_done or client.plan.block:
                continue
            poll = select.poll()
            poll.register(client.socket, select.POLLHUP)
            if not poll.poll(limit * 1000):
                client.fail(f"still connected after {limit:.0f} s, though it reads none of its answers")

    def check_quiet(self, descriptors):
        """Nobody is connected, and the daemon has noticed it."""
        wait_until(lambda: self.passed.open_ones() == 0,
                   lambda: f"{self.passed.open_ones()} passed descriptors are still open")
        wait_until(lambda: self.agent.descriptors() == descriptors,
                   lambda: f"the daemon has {self.agent.descriptors()} open descriptors without clients, "
                           f"and had {descriptors} at its start")

    def settle(self):
        """The daemon has handled all signals, and has counted and printed each result."""
        for _ in range(3):
            self.ask(exchanges.after_changes())
        requests = self.crowd.counts["reload requests"]
        counted = self.reloads_counted()
        wait_until(lambda: sum(self.agent.results()) + requests == counted,
                   lambda: f"`show config` counts {counted} reloads, but {self.agent.results()} are "
                           f"printed as applied and refused, and {requests} were requested")
        if sum(self.agent.results()) > self.agent.signals:
            raise Broken(f"{self.agent.signals} SIGHUPs were sent, and {self.agent.results()} reloads are "
                         "printed as applied and refused")

    def reloads_counted(self):
        counts = []

        def problem(answer, versions):
            reloads = json.loads(answer)["output"]["reloads"]
            counts.append(reloads["applied"] + reloads["refused"])
        self.ask(exchanges.Exchange(b'{"command":"show config","json":true}\n', True, problem))
        return counts[0]

    def full_house(self):
        """As many clients as the daemon serves, and some more. It serves the first, and only them."""
        served = [self.crowd.add(self.guest(number)) for number in range(MOST_CLIENTS)]
        self.crowd.run_until(lambda: all(client.answers == 1 for client in served),
                             f"answers to {MOST_CLIENTS} clients")
        refused = [self.crowd.add(self.excess(number)) for number in range(self.random.randint(1, 40))]
        self.crowd.run_until(lambda: all(client.is_done for client in refused),
                             "refusals of further clients")
        self.crowd.counts["refused clients"] += len(refused)
        descriptors = self.agent.descriptors()
        self.random.choice(served).close()
        wait_until(lambda: self.agent.descriptors() < descriptors,
                   lambda: "the daemon does not notice that a client has left")
        next_one = self.crowd.add(self.guest("next"))
        self.crowd.run_until(lambda: next_one.answers == 1, "the answer to a client in place of another")
        self.crowd.close_all()

    def guest(self, number):
        name = f"{self.round}-guest{number}"
        exchange = exchanges.echo(self.random, f"w{name}")
        plan = Plan("one of the most clients", [exchange], [Piece(exchange.request)], stays=True)
        return Client(name, plan, self.crowd)

    def excess(self, number):
        refusal = exchanges.Exchange(b"", True, exchanges.json_answer(1, REFUSAL), closes=True)
        pieces = [Piece(b"show actions\n")] if self.random.random() < 0.5 else []
        plan = Plan("beyond the limit", [refusal], pieces)
        return Client(f"{self.round}-excess{number}", plan, self.crowd)

    # The end.

    def end_among_clients(self):
        """SIGTERM, while clients of all kinds are connected."""
        self.random = random.Random(f"{self.arguments.seed} end")
        self.start_clients()
        for _ in range(self.random.randrange(50)):
            self.crowd.turn()
        self.crowd.is_ending = True
        self.agent.terminate()
        self.crowd.run_until(lambda: not [client for client in self.crowd.clients if client.plan.block],
                             "the end of all connections")
        self.crowd.close_all()
        self.agent.check_end()

    def report(self):
        counts = self.crowd.counts
        print(f"{self.round} rounds: {counts['clients']} clients, {counts['requests']} requests, "
              f"{counts['answers']} answers; {counts['refused clients']} refused clients; "
              f"{self.agent.signals} SIGHUPs and {counts['reload requests']} reload requests, with "
              f"{counts['good files']} good files, {counts['torn files']} torn ones and "
              f"{counts['flurries']} written during SIGHUPs; longest wait {self.crowd.longest_wait:.2f} s; "
              f"peak {self.peak} kB; {self.memory.text()}")


def parsed(arguments):
    parser = argparse.ArgumentParser(usage=__doc__.split("usage: ")[1].splitlines()[0])
    parser.add_argument("program", type=os.path.abspath)
    seed = os.environ.get("ZEL_TEST_SEED", secrets.randbits(32))
    parser.add_argument("--seed", type=int, default=int(seed))
    length = parser.add_mutually_exclusive_group()
    length.add_argument("--rounds", type=int, default=2)
    length.add_argument("--seconds", type=float)
    parser.add_argument("--clients", type=int, default=240)
    return parser.parse_args(arguments)


def main(arguments):
    print(f"--seed {arguments.seed} replays this run", flush=True)
    with tempfile.TemporaryDirectory(prefix="zel-stress-") as folder:
        stress = Stress(arguments, folder)
        try:
            stress.run()
            stress.report()
        except AssertionError as broken:  # also of a wait that has expired
            print(f"stress: --seed {arguments.seed}, round {stress.round}: {broken}\n"
                  f"stress: {stress.agent.last_words()}", file=sys.stderr)
            return 1
        finally:
            stress.agent.kill()
    return 0


if __name__ == "__main__":
    sys.exit(main(parsed(sys.argv[1:])))
