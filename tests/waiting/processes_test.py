"""Waits of scripts end, and leave no process behind."""

import os
import pathlib
import subprocess
import tempfile
import time
import unittest

import processes

SLEEP = "sleep 1000"
SOON = 0.1
AFTER_OUTPUT = 1  # long enough for a shell to start and print


def is_gone(process):
    """Whether a process, that need not be a child, is gone or only waits to be reaped."""
    try:
        return pathlib.Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()[0] == "Z"
    except (FileNotFoundError, ProcessLookupError):
        return True


class Run(unittest.TestCase):
    def wait_until_gone(self, process):
        """A signal to a process that is no child takes its time."""
        end = time.monotonic() + processes.SECONDS
        while not is_gone(process):
            self.assertLess(time.monotonic(), end, f"process {process} is not gone")
            time.sleep(0.001)

    def test_returns_what_was_printed_and_the_status(self):
        finished = processes.run(["sh", "-c", "cat; echo failed >&2; exit 3"], given="text\n",
                                 capture_output=True, text=True)
        self.assertEqual((finished.stdout, finished.stderr, finished.returncode),
                         ("text\n", "failed\n", 3))

    def test_raises_for_a_failed_command_when_asked_to_check(self):
        with self.assertRaises(subprocess.CalledProcessError):
            processes.run(["false"], check=True)

    def test_fails_at_its_limit_and_says_what_it_saw(self):
        with self.assertRaises(AssertionError) as raised:
            processes.run(f"echo begun; {SLEEP}", shell=True, seconds=AFTER_OUTPUT, capture_output=True,
                          text=True)
        self.assertEqual(
            str(raised.exception),
            f"waited {AFTER_OUTPUT * processes.factor():.2f} s for the end of 'echo begun; {SLEEP}'; "
            "seen so far: 'begun\\n'")

    def test_kills_at_its_limit_what_the_command_started(self):
        with tempfile.TemporaryDirectory() as folder:
            place = pathlib.Path(folder, "id")
            with self.assertRaises(AssertionError):
                processes.run(f"{SLEEP} & echo $! >{place}; wait", shell=True, seconds=AFTER_OUTPUT)
            self.wait_until_gone(int(place.read_text()))


class Start(unittest.TestCase):
    def run_test(self, body):
        """Runs `body` as a test. Returns its failures."""
        class Inner(unittest.TestCase):
            def runTest(self):
                body(self)

        result = unittest.TestResult()
        Inner().run(result)
        return [text for _, text in result.failures + result.errors]

    def test_a_process_is_killed_when_its_test_ends(self):
        for ends_by_failure in (False, True):
            started = []

            def body(test):
                started.append(processes.start(test, ["sleep", "1000"]))
                test.assertFalse(is_gone(started[0].pid))
                test.assertFalse(ends_by_failure)

            with self.subTest(ends_by_failure=ends_by_failure):
                self.assertEqual(len(self.run_test(body)), int(ends_by_failure))
                self.assertIsNotNone(started[0].returncode)

    def test_the_wait_for_its_end_fails_at_the_limit(self):
        process = processes.start(self, ["sleep", "1000"])
        with self.assertRaisesRegex(AssertionError, r"^waited .* s for the end of 'sleep 1000'; "):
            processes.status_at_end(process, SOON)
        self.assertIsNotNone(process.returncode)

    def test_its_exit_status_is_returned(self):
        self.assertEqual(processes.status_at_end(processes.start(self, ["sh", "-c", "exit 4"])), 4)


class Lines(unittest.TestCase):
    def lines_of(self, script):
        process = processes.start(self, ["sh", "-c", script], stdout=subprocess.PIPE)
        return processes.Lines(process.stdout)

    def test_are_returned_one_by_one(self):
        lines = self.lines_of("printf 'one\\ntwo\\nrest'")
        self.assertEqual([lines.next() for _ in range(4)], ["one\n", "two\n", "rest", ""])

    def test_that_do_not_come_fail_the_test(self):
        lines = self.lines_of(f"printf begun; {SLEEP}")
        with self.assertRaisesRegex(AssertionError, r"^waited .* s for a line; seen so far: 'begun'$"):
            lines.next(AFTER_OUTPUT)


class Factor(unittest.TestCase):
    def setUp(self):
        before = dict(os.environ)
        self.addCleanup(os.environ.update, before)
        self.addCleanup(os.environ.pop, "ZEL_TEST_WAIT_FACTOR", None)

    def test_multiplies_the_limits(self):
        os.environ["ZEL_TEST_WAIT_FACTOR"] = "2"
        with self.assertRaisesRegex(AssertionError, r"^waited 0\.20 s"):
            processes.run(["sleep", "1000"], seconds=0.1)


if __name__ == "__main__":
    unittest.main()
