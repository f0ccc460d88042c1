"""Child processes of tests. Every wait for one ends.

A wait takes SECONDS at most, unless the test gives another limit. The environment variable
ZEL_TEST_WAIT_FACTOR multiplies each limit, as for the programs in C++. A wait that takes longer fails
the test with one line that says what was awaited, for how long, and what was printed so far. The
process is killed then, with the processes that it started.
"""

import os
import select
import signal
import subprocess
import time

SECONDS = 10
BUILD_SECONDS = 300  # for compilers, builds, and programs that run many tests


def factor():
    return float(os.environ.get("ZEL_TEST_WAIT_FACTOR", "1"))


class Expired(AssertionError):
    def __init__(self, awaited, seconds, seen):
        seen = seen.decode(errors="replace") if isinstance(seen, bytes) else seen or ""
        super().__init__(f"waited {seconds:.2f} s for {awaited}; seen so far: {seen[-500:]!r}")


def text_of(command):
    return command if isinstance(command, str) else " ".join(str(part) for part in command)


def kill(process):
    """Kills and reaps a process of `popen`, and all of its group."""
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass  # it has ended
    process.wait()


def popen(command, **options):
    """A process in its own group, so that `kill` ends what it started too."""
    return subprocess.Popen(command, start_new_session=True, **options)


def run(command, *, seconds=SECONDS, check=False, capture_output=False, given=None, **options):
    """Like `subprocess.run`, with a limit. `given` is written to standard input."""
    if capture_output:
        options.update(stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if given is not None:
        options["stdin"] = subprocess.PIPE
    limit = seconds * factor()
    with popen(command, **options) as process:
        try:
            out, err = process.communicate(given, timeout=limit)
        except subprocess.TimeoutExpired:
            kill(process)
            printed = [text for text in process.communicate() if text]
            seen = printed[0][:0].join(printed) if printed else ""
            raise Expired(f"the end of '{text_of(command)}'", limit, seen) from None
        except BaseException:
            kill(process)
            raise
    finished = subprocess.CompletedProcess(command, process.returncode, out, err)
    if check:
        finished.check_returncode()
    return finished


def start(test, command, **options):
    """Starts a process that is killed when `test` ends. Its pipes are read by `Lines`."""
    process = popen(command, **options)
    for stream in (process.stdin, process.stdout, process.stderr):
        if stream:
            test.addCleanup(stream.close)
    test.addCleanup(kill, process)
    return process


def status_at_end(process, seconds=SECONDS):
    """Waits for the end of a process of `start`. Returns its exit status."""
    limit = seconds * factor()
    try:
        return process.wait(timeout=limit)
    except subprocess.TimeoutExpired:
        kill(process)
        raise Expired(f"the end of '{text_of(process.args)}'", limit, "") from None


class Lines:
    """Reads a pipe of a process by lines. Nothing else may read the pipe."""

    def __init__(self, stream):
        self.descriptor = stream.fileno()
        self.pending = b""

    def next(self, seconds=SECONDS):
        """The next line with its newline, or what is left at the end of the pipe."""
        limit = seconds * factor()
        end = time.monotonic() + limit
        while b"\n" not in self.pending:
            left = end - time.monotonic()
            if left <= 0 or not select.select([self.descriptor], [], [], left)[0]:
                raise Expired("a line", limit, self.pending)
            block = os.read(self.descriptor, 4096)
            if not block:
                break
            self.pending += block
        line, newline, self.pending = self.pending.partition(b"\n")
        return (line + newline).decode()
