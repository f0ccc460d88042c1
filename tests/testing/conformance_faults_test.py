"""The conformance suite passes on a correct chip, and fails on each faulty chip by the expected tests.

usage: conformance_faults_test.py PROGRAM

PROGRAM runs the suite twice on each chip: with all optional functions of `ChipUnderTest`, and with
none. The first kind is called observable here, the second opaque.
"""

import json
import os
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import processes

PROGRAM = pathlib.Path(sys.argv[1])

CREATED = "ACreationWithAllThatItNeedsIsReportedAsProgrammed"
REASON = "AFailureHasAReasonAndADescriptionAndASuccessNoReason"
LINE = "ADescriptionFitsOnOneLineWhateverTheVrfsAreCalled"
EXHAUSTED = "AFullChipRefusesBecauseItIsExhausted"
REFUSED = "ARefusedCreationTakesNothing"
ROOM = "AfterADeletionACreationFitsAgain"
REFILLED = "AsManyActionsFitAfterAllAreDeletedAsBefore"
FAILED = "AFailedCreationLeavesNothingBehindItsDeletion"
UPDATED_FAILED = "AnUpdateAfterAFailedCreationTakesNothingThatItsDeletionDoesNotFree"
UPDATE_FAILED = "AFailedUpdateLosesNoResource"
IDEMPOTENT = "EqualUpdatesGiveEqualOutcomesAndTakeNoResource"
ANEW = "AnUpdateProgramsWhatACreationByTheSameFactsDoes"
NEVER = "DeletingWhatWasNeverCreatedTouchesNothing"
AGAIN = "ADeletedActionCanBeCreatedAgain"
RANDOM = "AnyOrderOfCallsLeavesNothingBehind"
USERS = "UsersThatComeAndGoLeaveNothingBehind"
FACTS = "ChangesOfFactsTakeNoResourcesAndMendWhatTheyBroke"
RECOVERS = "AFullChipRecoversWhenUsersLeave"
OUTLIVE = "ResourcesOutliveTheStateMachineThatAskedForThem"
HOOKS = ("create", "update", "delete")
ALL = {CREATED, REASON, LINE, EXHAUSTED, REFUSED, ROOM, REFILLED, FAILED, UPDATED_FAILED,
       UPDATE_FAILED, IDEMPOTENT, ANEW, NEVER, AGAIN, RANDOM, USERS, FACTS, RECOVERS, OUTLIVE}
# The content of an opaque chip is only known after filling it, so these tests fill it too.
FILL_IT = {FAILED, UPDATED_FAILED, UPDATE_FAILED, IDEMPOTENT, NEVER, RANDOM, USERS, FACTS, OUTLIVE}

# The tests that fail for each fault, and the tests that also fail if the chip is opaque.
# A test that finds faults only on observable chips is in none of the second sets.
FAILS = {
    "none": (set(), set()),
    "noneOfOneResource": (set(), set()),
    "flagsTakeRoom": (set(), set()),
    "decapNeedsItsFlag": (set(), set()),
    "creationLeaks": ({FAILED, UPDATED_FAILED, RANDOM}, set()),
    "updateLeaks": ({UPDATED_FAILED, UPDATE_FAILED, RANDOM, FACTS}, set()),
    "updateTakesAnother":
        ({IDEMPOTENT, REFUSED, UPDATE_FAILED, ANEW, RANDOM, FACTS, OUTLIVE}, set()),
    "updateHoardsUntilDeletion": ({IDEMPOTENT, FACTS, OUTLIVE}, set()),
    "updateDoesNothing": ({ANEW}, set()),
    "outcomesDiffer": ({IDEMPOTENT}, set()),
    "descriptionHasRawNames": ({LINE}, set()),
    "failureWithoutReason": ({REASON, EXHAUSTED}, set()),
    "creationWithoutDescription": ({REASON}, set()),
    "updateWithoutDescription": ({REASON}, set()),
    "hardwareRefusalWithoutReason": (set(), set()),
    "successWhenFull": ({EXHAUSTED}, set()),
    "throwsWhenFull": ({EXHAUSTED, REASON, LINE, REFUSED, ROOM, REFILLED, RECOVERS}, FILL_IT),
    "anotherReasonWhenFull": ({EXHAUSTED}, set()),
    "deletionFreesNothing":
        ({ROOM, REFUSED, REFILLED, UPDATED_FAILED, ANEW, RANDOM, USERS, FACTS, RECOVERS, OUTLIVE},
         FILL_IT),
    "deletionFreesAnother": ({NEVER}, set()),
    "refusalFreesAnother": ({REFUSED, ROOM, REFILLED, RECOVERS}, FILL_IT - {NEVER}),
    "deletionIsForever": ({AGAIN, ANEW, REFILLED, RECOVERS}, FILL_IT | {REFUSED}),
    "defaultVrfRefused": ({CREATED}, set()),
    "firstCreationRefused":
        ({CREATED, AGAIN, EXHAUSTED, ROOM, REFILLED, UPDATE_FAILED, IDEMPOTENT, NEVER, USERS,
          RECOVERS, OUTLIVE}, {FACTS, REFUSED, FAILED, UPDATED_FAILED, RANDOM}),
    "holdsFewer": (set(), set()),
    "holdsNothing":
        ({CREATED, AGAIN, ROOM, UPDATE_FAILED, IDEMPOTENT, NEVER, USERS, RECOVERS, OUTLIVE}, set()),
    "refusalIsCounted": (set(), set()),
    "successHasReason": ({REASON}, set()),
    "freedIsNotAvailable": ({ROOM, REFILLED, RECOVERS}, FILL_IT | {REFUSED}),
    "creationIgnoresHardware": (set(), set()),
    "hardwareRefusalLeaks": (set(), set()),
    "equalUpdateRefused": ({IDEMPOTENT, NEVER, REFUSED, FACTS}, set()),
    "updateAppends": (set(), set()),
    "updateKeepsIds": (set(), set()),
    "updateKeepsLengths": (set(), set()),
    "updateKeepsLengths6": (set(), set()),
    "updateKeepsFallbacks": (set(), set()),
    "updateKeepsDecap": (set(), set()),
    "updateKeepsDecapFallback": (set(), set()),
    "flagLeaks": ({FACTS, RANDOM}, set()),
    "anotherIdRefused": ({ANEW, OUTLIVE}, set()),
    "failureIsForever": ({FACTS, IDEMPOTENT}, set()),
    "throwsANumberWhenFull":
        ({EXHAUSTED, REASON, LINE, REFUSED, ROOM, REFILLED, RECOVERS}, FILL_IT),
    "updateThrows": ({UPDATE_FAILED, ANEW, RANDOM, FACTS}, set()),
    "deletionThrows":
        ({NEVER, REASON, LINE, REFUSED, ROOM, REFILLED, FAILED, UPDATE_FAILED, ANEW, RANDOM,
          RECOVERS}, FILL_IT),
    "deletionSpoilsOthers": ({NEVER, REFUSED, ANEW}, {IDEMPOTENT, FACTS, OUTLIVE}),
}
# An opaque chip reports neither its capacity nor its programs, and its hardware refuses nothing.
FAILS_ONLY_IF_OBSERVABLE = {
    "updateDoesNothing": {UPDATE_FAILED},
    "hardwareRefusalWithoutReason": {REASON},
    "holdsFewer": {EXHAUSTED},
    "holdsNothing": {EXHAUSTED},
    "refusalIsCounted": {REFUSED, REFILLED, RECOVERS},
    "creationIgnoresHardware": {FAILED},
    "hardwareRefusalLeaks": {FAILED, UPDATE_FAILED, RANDOM},
    "updateAppends": {IDEMPOTENT, ANEW},
    "updateKeepsIds": {ANEW},
    "updateKeepsLengths": {ANEW},
    "updateKeepsLengths6": {ANEW},
    "updateKeepsFallbacks": {ANEW},
    "updateKeepsDecap": {ANEW},
    "updateKeepsDecapFallback": {ANEW},
}
# How often each test calls createVrf, updateVrf and deleteVrf of the correct observable chip. A test
# that makes fewer calls finds fewer faults.
CALLS = {
    CREATED: (2, 0, 2),
    REASON: (22, 16, 22),
    LINE: (21, 15, 21),
    EXHAUSTED: (6, 0, 0),
    REFUSED: (9, 5, 9),
    ROOM: (7, 0, 2),
    REFILLED: (12, 0, 12),
    FAILED: (2, 0, 2),
    UPDATED_FAILED: (1, 2, 1),
    UPDATE_FAILED: (1, 2, 1),
    IDEMPOTENT: (2, 5, 0),
    ANEW: (32, 16, 32),
    NEVER: (1, 1, 2),
    AGAIN: (3, 0, 3),
    RANDOM: (85, 129, 85),
    USERS: (1, 0, 1),
    FACTS: (2, 34, 2),
    RECOVERS: (7, 0, 7),
    OUTLIVE: (1, 1, 1),
}


def report():
    """The JSON report of the program about its tests, and its output."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder, "report.json")
        finished = processes.run(
            [PROGRAM, f"--gtest_output=json:{path}"], capture_output=True, text=True, check=False,
            seconds=processes.BUILD_SECONDS, env={**os.environ, "ZEL_TEST_SEED": "1"})
        if finished.returncode != 1:
            sys.exit(f"{PROGRAM} must end with 1, for failed tests; it ended with "
                     f"{finished.returncode}:\n{finished.stdout}{finished.stderr}")
        return json.loads(path.read_text()), finished.stdout


def messages_of(test):
    return [failure["failure"] for failure in test.get("failures", [])]


class ConformanceFaults(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.tests = {}  # by (fault, whether the chip is observable), then by name
        cls.without_chip = {}  # by name
        described, cls.output = report()
        for suite in described["testsuites"]:
            fault, _, fixture = suite["name"].partition("/")
            assert fixture == "VrfHelperConformance", suite["name"]
            for test in suite["testsuite"]:
                name, _, chip = test["name"].partition("/")
                tests = cls.tests.setdefault((fault, chip == "0"), {})
                (cls.without_chip if fault == "noChip" else tests)[name] = test
        del cls.tests["noChip", True]

    def test_every_chip_was_given_every_test(self):
        self.assertEqual(set(self.tests), {(fault, observable) for fault in FAILS
                                           for observable in (True, False)})
        for chip, tests in self.tests.items():
            with self.subTest(chip):
                self.assertEqual(set(tests), ALL)

    def test_each_chip_fails_the_tests_that_its_fault_should_and_no_other(self):
        for (fault, observable), tests in self.tests.items():
            always, opaque = FAILS[fault]
            expected = always | (FAILS_ONLY_IF_OBSERVABLE.get(fault, set()) if observable else opaque)
            with self.subTest(fault=fault, observable=observable):
                failed = {name for name, test in tests.items() if "failures" in test}
                self.assertEqual(failed, expected)

    def test_every_test_fails_for_some_chip_of_each_kind(self):
        for observable in (True, False):
            failed = {name for chip, tests in self.tests.items() if chip[1] == observable
                      for name, test in tests.items() if "failures" in test}
            self.assertEqual(failed, ALL)

    def test_every_failed_test_quotes_the_contract(self):
        for chip, tests in self.tests.items():
            for name, test in tests.items():
                messages = messages_of(test)
                with self.subTest(chip=chip, test=name):
                    self.assertTrue(
                        not messages or
                        any("The contract of VrfHelper says: " in text for text in messages),
                        messages)

    def test_a_correct_chip_is_called_as_often_as_each_test_needs(self):
        calls = {name: tuple(int(test.get(f"{hook}VrfCalls", 0)) for hook in HOOKS)
                 for name, test in self.tests["none", True].items()}
        self.assertEqual(calls, CALLS)

    def test_the_times_of_hooks_are_recorded(self):
        test = self.tests["none", True][AGAIN]
        self.assertNotIn("updateVrfCalls", test)
        for key in ("createVrfMeanMicroseconds", "createVrfLongestMicroseconds"):
            self.assertRegex(test[key], r"^\d+\.\d$")
        self.assertRegex(self.output, r"(?m)^createVrf: 3 calls, mean \d+\.\d us, longest \d+\.\d us$")

    def test_the_longest_time_of_a_hook_is_at_least_the_mean(self):
        times = [(float(test[f"{hook}VrfMeanMicroseconds"]), float(test[f"{hook}VrfLongestMicroseconds"]))
                 for tests in self.tests.values() for test in tests.values()
                 for hook in HOOKS if f"{hook}VrfCalls" in test]
        self.assertGreater(max(mean for mean, _ in times), 0)
        self.assertEqual([(mean, longest) for mean, longest in times if mean > longest], [])

    def test_a_test_ends_at_a_creation_that_it_needs(self):
        for name in (NEVER, UPDATE_FAILED, IDEMPOTENT):
            messages = messages_of(self.tests["firstCreationRefused", True][name])
            with self.subTest(name):
                self.assertEqual(len(messages), 1)
                self.assertIn("on an empty chip", messages[0])

    def test_the_random_test_says_how_to_repeat_it(self):
        messages = messages_of(self.tests["updateLeaks", True][RANDOM])
        self.assertEqual(len(messages), 1)
        self.assertIn("ZEL_TEST_SEED=1 replays this run", messages[0])

    def test_without_a_chip_each_test_says_so(self):
        self.assertEqual(set(self.without_chip), ALL)
        for test in self.without_chip.values():
            messages = messages_of(test)
            self.assertEqual(len(messages), 1)
            self.assertIn("there is no chip under test", messages[0])

    def test_occupancy_is_named_by_how_it_is_known(self):
        for observable, unit in ((True, "resources in use"), (False, "more actions that fit")):
            messages = messages_of(self.tests["updateTakesAnother", observable][IDEMPOTENT])
            self.assertTrue(any(unit in text for text in messages), messages)

    def test_a_hook_that_throws_is_reported_for_nothing_else(self):
        messages = messages_of(self.tests["throwsWhenFull", True][REASON])
        self.assertTrue(messages)
        for text in messages:
            self.assertIn(" threw full", text)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
