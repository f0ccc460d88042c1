"""The daemon of a stress run as a process: its descriptors, its memory, its output and its end."""

import os
import pathlib
import re
import signal
import subprocess
import time

import processes
from crowd import Broken

# A smaller quarantine, so that memory that was freed does not look like memory in use.
SANITIZERS = {"ASAN_OPTIONS": "detect_leaks=1:halt_on_error=1:quarantine_size_mb=8",
              "UBSAN_OPTIONS": "halt_on_error=1:print_stacktrace=1"}
CONFIGURATION, SOCKET = "agent.json", "agent.sock"
APPLIED = "agent.json applied"
# The errors of a refused file are one line each.
REFUSED = re.compile(r"error: agent\.json\b.*; the configuration in force is unchanged")
EARLIER_ERROR = re.compile(r"error: agent\.json\b.*")

LINE = re.compile(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z (?P<text>.*)")
PROGRAMMING = re.compile(r"warning: not programmed: .*|programmed again: .*|"
                         r"warning: \d+ more lines about programming")

SANITIZER_REPORT = re.compile(r".*(Sanitizer|runtime error: )")


class ServedAgent:
    def __init__(self, program, folder, options=()):
        self.folder = pathlib.Path(folder)
        self.socket = self.folder / SOCKET
        self.stderr = self.folder / "stderr"
        self.signals = 0
        self.process = self.started(program, options)

    def started(self, program, options):
        environment = dict(os.environ)
        for name, value in SANITIZERS.items():
            environment[name] = ":".join(filter(None, [os.environ.get(name), value]))
        with open(self.stderr, "wb") as err:
            return processes.popen(
                [program, "serve", CONFIGURATION, "--socket", SOCKET, *options], cwd=self.folder,
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=err, env=environment)

    def await_start(self):
        line = processes.Lines(self.process.stdout).next()
        if line != f"serving on {SOCKET}\n":
            raise Broken(f"the daemon does not start: {line!r} {self.printed()!r}")

    def hang_up(self):
        self.signals += 1
        self.process.send_signal(signal.SIGHUP)

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))

    def kilobytes(self, name):
        """VmRSS is the resident memory, VmHWM the most so far."""
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text()
        return int(re.search(rf"^{name}:\s+(\d+) kB$", status, re.MULTILINE)[1])

    def printed(self):
        return self.stderr.read_text(errors="replace")

    def results(self):
        """The numbers of reloads that are printed as applied and as refused. Checks each line."""
        applied = refused = 0
        *lines, last = self.printed().split("\n")
        for line in lines:
            timed = LINE.fullmatch(line)
            text = timed["text"] if timed else ""
            if text == APPLIED:
                applied += 1
            elif REFUSED.fullmatch(text):
                refused += 1
            elif not EARLIER_ERROR.fullmatch(text) and not PROGRAMMING.fullmatch(text):
                raise Broken(f"an unexpected line on standard error: {line[:500]!r}")
        return applied, refused

    def last_words(self):
        """Whether the daemon runs, and what it printed: a sanitizer report, or the last lines."""
        try:
            state = f"ended with status {self.process.wait(timeout=2)}"
        except subprocess.TimeoutExpired:
            state = "still runs"
        printed = self.printed()
        report = SANITIZER_REPORT.search(printed)
        shown = printed[report.start():][:4000] if report else printed[-1000:]
        return f"the daemon {state}; it printed: {shown}"

    def terminate(self):
        self.process.send_signal(signal.SIGTERM)

    def check_end(self):
        """After `terminate`."""
        status = processes.status_at_end(self.process)
        if status != 0:
            raise Broken(f"SIGTERM ended the daemon with status {status}")
        if self.socket.exists():
            raise Broken("the daemon has ended and left its socket file")
        if not self.printed().endswith("\n") and self.printed():
            raise Broken(f"the last line on standard error is not whole: {self.printed()[-300:]!r}")
        self.results()

    def kill(self):
        processes.kill(self.process)
        self.process.stdout.close()


def wait_until(condition, broken):
    """Waits up to ten seconds, and fails with the text that `broken` returns."""
    end = time.monotonic() + processes.SECONDS * processes.factor()
    while not condition():
        if time.monotonic() > end:
            raise Broken(broken())
        time.sleep(0.005)
