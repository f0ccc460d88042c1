"""Tests that check nothing are found in a small tree; all others are not."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "waiting"))
import assertions
import processes


class Assertions(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.paths = set()

    def write(self, path, text):
        (self.root / path).parent.mkdir(parents=True, exist_ok=True)
        (self.root / path).write_text(text)
        self.paths.add(path)

    def faults(self):
        return list(assertions.check(self.root, self.paths))

    def faults_of(self, text, path="tests/a/ATest.cpp"):
        self.write(path, text)
        return self.faults()

    def test_a_test_with_an_assertion_is_none(self):
        for check in ["EXPECT_EQ(1, 1);", "ASSERT_TRUE (x);", "FAIL() << 1;", "ADD_FAILURE();",
                      "ADD_FAILURE_AT(f, 1);", "EXPECT_CALL(mock, f());",
                      "if (x) { for (;;) EXPECT_DEATH(f(), \"\"); }"]:
            with self.subTest(check):
                self.assertEqual(self.faults_of(f"TEST(A, B) {{\n  {check}\n}}\n"), [])

    def test_a_test_without_one_is_found_at_its_line(self):
        for kind in ["TEST", "TEST_F", "TEST_P", "TYPED_TEST", "TYPED_TEST_P"]:
            with self.subTest(kind):
                self.assertEqual(self.faults_of(f"\n{kind}(Suite, Name) {{\n  run();\n}}\n"),
                                 ["tests/a/ATest.cpp:2: Suite.Name"])

    def test_only_the_test_without_one_is_found(self):
        self.assertEqual(
            self.faults_of("TEST(A, Checks) { EXPECT_EQ(1, 1); }\nTEST(A, Runs) { run(); }\n"
                           "TEST(A, ChecksToo) { EXPECT_EQ(1, 1); }\n"),
            ["tests/a/ATest.cpp:2: A.Runs"])

    def test_comments_and_literals_are_no_assertions(self):
        for text in ["// EXPECT_EQ(1, 1);", "/* EXPECT_EQ(1,\n1) */", 'print("EXPECT_EQ(1, 1)");',
                     'print(R"x(EXPECT_EQ(1, 1))x");', "SUCCEED();", "static_assert(f(1));",
                     "MY_EXPECT_EQ(1);"]:
            with self.subTest(text):
                self.assertEqual(len(self.faults_of(f"TEST(A, B) {{\n{text}\n}}\n")), 1)

    def test_braces_in_literals_do_not_end_a_test(self):
        self.assertEqual(
            self.faults_of("TEST(A, B) { f('}', \"}\", 1'000); EXPECT_EQ(1, 1); }\n"), [])

    def test_functions_of_the_file_that_check_count(self):
        for helper in ["void check() { EXPECT_EQ(1, 1); }",
                       "struct F : Test { void check() const { ASSERT_EQ(1, 1); } };",
                       "template <class T>\nauto check(T x) noexcept -> int { FAIL(); }",
                       "const auto check = [](int x) { EXPECT_EQ(x, 1); };",
                       "void deep() { EXPECT_EQ(1, 1); }\nvoid check() { if (x) deep(); }",
                       "check::check() : a_(1), b_{2} { EXPECT_EQ(1, 1); }"]:
            with self.subTest(helper):
                self.assertEqual(self.faults_of(f"{helper}\nTEST(A, B) {{ check(); }}\n"), [])

    def test_objects_whose_constructors_check_count(self):
        self.assertEqual(
            self.faults_of("struct Checker { Checker() { EXPECT_EQ(1, 1); } };\n"
                           "TEST(A, B) { const Checker checker; }\n"), [])

    def test_functions_that_do_not_check_do_not_count(self):
        for helper in ["void check() { run(); }", "void check();", "int check = EXPECT_EQ(1, 1);",
                       "void check() { check(); }"]:
            with self.subTest(helper):
                self.assertEqual(
                    self.faults_of(f"{helper}\nTEST(A, B) {{ check(); }}\n"),
                    ["tests/a/ATest.cpp:2: A.B"])

    def test_a_function_that_is_named_but_not_called_does_not_count(self):
        self.assertEqual(
            len(self.faults_of("void check() { FAIL(); }\nTEST(A, B) { run(&check); }\n")), 1)

    def test_helpers_count_through_includes(self):
        self.write("tests/a/Helper.h", "void check();\n")
        self.write("tests/a/Helper.cpp", '#include "tests/b/Deep.h"\nvoid check() { deep(); }\n')
        self.write("tests/b/Deep.h", "inline void deep() { EXPECT_EQ(1, 1); }\n")
        test = "TEST(A, B) { check(); }\n"
        self.assertEqual(self.faults_of('#include "tests/a/Helper.h"\n' + test), [])
        self.assertEqual(self.faults_of('#include "Helper.h"\n' + test), [])
        self.assertEqual(len(self.faults_of(test)), 1)

    def test_functions_of_the_tested_code_do_not_count(self):
        self.write("agent/Check.h", "inline void check() { ASSERT_TRUE(1); }\n")
        self.assertEqual(
            len(self.faults_of('#include "agent/Check.h"\nTEST(A, B) { check(); }\n')), 1)

    def test_methods_of_scripts_are_read_too(self):
        script = """
class Tests(unittest.TestCase):
    def helper(self): self.assertTrue(1)
    def test_asserts(self): self.assertEqual(1, 1)
    def test_raises(self):
        with self.assertRaises(ValueError): run()
    def test_states(self): assert run()
    def test_calls(self): self.helper()
    def test_runs(self): run("assert")
    def helperless(self): run()
"""
        self.assertEqual(self.faults_of(script, "tests/a/a_test.py"),
                         ["tests/a/a_test.py:9: test_runs"])

    def run_on_repository(self):
        return processes.run([sys.executable, assertions.__file__, self.root],
                             capture_output=True, text=True)

    def test_run_on_a_repository_it_prints_one_line_for_each_and_fails(self):
        self.assertNotEqual(self.run_on_repository().returncode, 0)
        processes.run(["git", "-C", self.root, "init"], check=True, capture_output=True)
        self.assertIn("tracks no files", self.run_on_repository().stderr)
        self.write("tests/a/ATest.cpp", "TEST(A, B) { EXPECT_EQ(1, 1); }\n")
        processes.run(["git", "-C", self.root, "add", "."], check=True, capture_output=True)
        clean = self.run_on_repository()
        self.assertEqual((clean.returncode, clean.stdout, clean.stderr), (0, "", ""))
        self.write("tests/a/ATest.cpp", "TEST(A, B) {}\n")
        broken = self.run_on_repository()
        self.assertEqual((broken.returncode, broken.stdout),
                         (1, "tests/a/ATest.cpp:1: A.B checks nothing\n"))


if __name__ == "__main__":
    unittest.main()
