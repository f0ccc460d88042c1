"""Changes of the configuration file, good and torn, with SIGHUPs and `reload` requests between them.

Each script is a generator for `Crowd.run_script`. It runs while the clients are served.
"""

import json
import time

import configurations
import exchanges
import processes
from clients import Client, Piece, Plan
from exchanges import Exchange

SHOWN = ["show actions", "show users", "show rules", "show vrfs", "show fallback"]


class Operator:
    """Changes the configuration, and checks after each change which one is in force."""

    def __init__(self, random, agent, crowd, versions):
        self.random = random
        self.agent = agent
        self.crowd = crowd
        self.versions = versions
        self.file = configurations.File(agent.folder / "agent.json")
        self.is_done = False

    def script(self, steps, flurry):
        for _ in range(steps):
            good = self.random.random() < 0.45
            yield from self.good() if good else self.torn()
        if flurry:
            yield from self.flurry()
        self.is_done = True

    # Requests.

    def asked(self, exchange):
        """The JSON that follows the request."""
        plan = Plan("the operator", [exchange], [Piece(exchange.request)])
        client = self.crowd.add(Client("0", plan, self.crowd))
        yield client
        return json.loads(client.last)

    def shown(self, command):
        def problem(answer, versions):
            return None if json.loads(answer)["status"] == 0 else "expected status 0"
        line = json.dumps({"command": command, "json": True}).encode() + b"\n"
        return (yield from self.asked(Exchange(line, True, problem)))["output"]

    def everything(self):
        shown = {}
        for command in SHOWN:
            shown[command] = yield from self.shown(command)
        return shown

    def request_reload(self, problem):
        self.crowd.counts["reload requests"] += 1
        yield from self.asked(Exchange(b'{"command":"reload","json":true}\n', True, problem))

    # Steps.

    def other_version(self):
        return self.random.choice([v for v in self.versions if v is not self.crowd.force.version])

    def good(self):
        old, new = self.crowd.force.version, self.other_version()
        self.crowd.force.may_be(old, new)
        write = self.random.choice([self.file.replace, self.file.rewrite])
        write(new.text)
        if self.random.random() < 0.3:
            yield from self.request_reload(lambda answer, versions: self.problem_with_good(answer, new))
        else:
            self.agent.hang_up()
        yield from self.confirm(new)
        self.crowd.counts["good files"] += 1

    @staticmethod
    def problem_with_good(answer, new):
        found = json.loads(answer)
        if found["status"] == 0 and found["output"]["changes"]["actions"]["failed"] == 0:
            return None
        return f"expected version {new.number} to be applied"

    def confirm(self, new):
        """Waits until the new version is in force. Until then it must be the old one, or be replaced."""
        end = time.monotonic() + processes.SECONDS * processes.factor()
        while True:
            answer = yield from self.asked(exchanges.shown_actions(None, None))
            if configurations.actions_in(answer["output"]) == new.actions():
                break
            if time.monotonic() > end:
                self.crowd.fail(f"after a reload, version {new.number} of the configuration is not in force; "
                                f"the daemon printed: {self.agent.printed()[-300:]!r}")
            yield 0.01
        yield from self.asked(exchanges.after_changes())
        self.crowd.force.may_be(new)

    def torn(self):
        config = yield from self.shown("show config")
        before = yield from self.everything()
        self.tear()
        if self.random.random() < 0.3:
            yield from self.request_reload(self.problem_with_torn)
        else:
            self.agent.hang_up()
        end = time.monotonic() + processes.SECONDS * processes.factor()
        while (after := (yield from self.shown("show config")))["reloads"]["refused"] == \
                config["reloads"]["refused"]:
            if after["reloads"]["applied"] != config["reloads"]["applied"]:
                self.crowd.fail(f"a torn file was applied: {self.shown_file()}")
            if time.monotonic() > end:
                self.crowd.fail(f"a torn file was not refused: {self.shown_file()}")
            yield 0.01
        yield from self.check_unchanged(before, config, after)
        self.crowd.counts["torn files"] += 1

    def tear(self):
        if self.random.random() < 0.2:
            return self.file.damage(self.random)
        write = self.random.choice([self.file.replace, self.file.rewrite])
        other = self.random.choice(self.versions)
        write(configurations.torn_text(self.random, self.other_version(), other))

    @staticmethod
    def problem_with_torn(answer, versions):
        found = json.loads(answer)
        is_refused = found["status"] == 2 and found["output"].startswith("agent.json")
        return None if is_refused else "expected a refusal of the file"

    def check_unchanged(self, before, config, after):
        shown = yield from self.everything()
        if shown != before:
            (command, *_) = [command for command in SHOWN if shown[command] != before[command]]
            self.crowd.fail(f"a torn reload changed `{command}` from {str(before[command]):.400} to "
                            f"{str(shown[command]):.400}: {self.shown_file()}")
        unchanged = after["inForce"] == config["inForce"] and \
            after["reloads"]["applied"] == config["reloads"]["applied"]
        if not unchanged or not str(after["reloads"]["lastRefusal"]).startswith("agent.json"):
            self.crowd.fail(f"a torn reload changed `show config` from {config} to {after}: "
                            f"{self.shown_file()}")

    def shown_file(self):
        path = self.file.path
        if not path.is_file():
            return "it is no file"
        with open(path, "rb") as file:
            return f"it begins with {file.read(100).rstrip(bytes(1))!r} and has {path.stat().st_size} bytes"

    def flurry(self):
        """SIGHUPs while the file is written piece by piece."""
        old, new = self.crowd.force.version, self.other_version()
        self.crowd.force.may_be(old, new)
        for _ in self.file.pieces(self.random, new.text):
            for _ in range(self.random.randint(1, 2)):
                self.agent.hang_up()
            yield self.random.choice([0, 0.001, 0.003])
        self.agent.hang_up()
        yield from self.confirm(new)
        self.crowd.counts["flurries"] += 1
