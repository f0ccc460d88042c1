"""Tests of the mutation operators on small sources: which places change, and which do not."""

import contextlib
import io
import unittest

import mutants
from areas import AREAS
from operators import mutants_of
from source import code_of, functions
from workbench import Outcome


def broken(body, head="void f()"):
    """The mutants of `body` in a function with the declaration `head`."""
    text = f"{head} {{{body}}}\n"
    made = [mutant.applied_to(text) for mutant in mutants_of("f.cpp", text)]
    return {one[len(head) + 2 : -2] for one in made}


class Statements(unittest.TestCase):
    def test_a_statement_is_deleted(self):
        self.assertEqual(broken(" call(a, b); "), {" ; "})

    def test_a_void_function_returns_early(self):
        self.assertIn(" return;  a(); b(); ", broken(" a(); b(); "))
        self.assertNotIn(" return;  a(); b(); ", broken(" a(); b(); ", "int f()"))

    def test_a_declaration_that_is_used_stays(self):
        self.assertEqual(broken(" const Name copy = name; use(copy); "),
                         {" const Name copy = name; ; ", " return;  const Name copy = name; use(copy); "})

    def test_a_guard_without_uses_is_deleted(self):
        self.assertIn(" ; use(it); ", broken(" const Mox::Ptr<Sm> alive(this); use(it); "))

    def test_a_result_becomes_the_default_one(self):
        self.assertEqual(broken(" return found; ", "int f()"), {" return {}; "})
        for default in ("nullptr", "std::nullopt"):
            self.assertEqual(broken(f" return {default}; ", "Some f()"), set())

    def test_an_attribute_is_no_statement(self):
        self.assertEqual(broken(" if (a) [[unlikely]] { b(); } else { c(); } "), {
            " if (true) [[unlikely]] { b(); } else { c(); } ",
            " if (!(a)) [[unlikely]] { b(); } else { c(); } ",
            " if (a) [[unlikely]] { ; } else { c(); } ",
            " if (a) [[unlikely]] { b(); } else { ; } ",
            " return;  if (a) [[unlikely]] { b(); } else { c(); } ",
        })  # fmt: skip

    def test_a_continue_becomes_a_break(self):
        self.assertIn(" while (a) { break; } ", broken(" while (a) { continue; } "))

    def test_a_statement_within_a_lambda_is_deleted(self):
        self.assertIn(" each([&](int i) { ; }); ", broken(" each([&](int i) { use(i); }); "))


class Conditions(unittest.TestCase):
    def test_a_condition_is_negated_and_made_constant(self):
        self.assertEqual(broken(" if (is(a)) { b(); } "), {
            " if (!(is(a))) { b(); } ",
            " if (true) { b(); } ",
            " if (false) { b(); } ",
            " if (is(a)) { ; } ",
        })  # fmt: skip

    def test_a_condition_that_declares_is_negated(self):
        self.assertIn(" if (auto x = a(); !x) b(x); ", broken(" if (auto x = a()) b(x); "))

    def test_the_condition_of_a_loop_is_negated(self):
        self.assertIn(" for (auto e = a(); !(e); ++e) b(e); ",
                      broken(" for (auto e = a(); e; ++e) b(e); "))

    def test_a_comparison_is_negated_once(self):
        made = broken(" if (a == b) c(); ")
        self.assertIn(" if (a != b) c(); ", made)
        self.assertNotIn(" if (!(a == b)) c(); ", made)

    def test_a_choice_is_negated(self):
        self.assertIn(" return !(a) ? b : c; ", broken(" return a ? b : c; ", "int f()"))


class Tokens(unittest.TestCase):
    def test_operators_are_swapped(self):
        for before, after in (
            ("a == b", "a != b"), ("a < b", "a <= b"), ("a && b", "a || b"), ("a + b", "a - b"),
            ("++a", "--a"), ("!a", "a"), ("true", "false"), ("41U", "42U"),
        ):  # fmt: skip
            self.assertIn(f" return {after}; ", broken(f" return {before}; ", "int f()"))

    def test_what_is_not_an_operator_stays(self):
        self.assertEqual(broken(" f<int>(a->b); "), {" ; "})

    def test_comments_and_literals_stay(self):
        self.assertEqual(broken(' log("a == b; 1"); // c == d\n'), {" ; // c == d\n"})


class Functions(unittest.TestCase):
    TEXT = """
namespace N {
constexpr int sizes[] = {1, 2};
struct S {
  int a = 0;
 private:
  [[nodiscard]] bool is() const noexcept { return a == 1; }
};
template <class T>
void S::g(T&& t) {
  for (;;) { t(); }
}
S::S(int b) : a(b) {}
}
"""

    def test_bodies_are_found_at_every_depth(self):
        found = [self.TEXT[each.begin : each.end].strip() for each in functions(code_of(self.TEXT))]
        self.assertEqual(found, ["return a == 1;", "for (;;) { t(); }", ""])

    def test_a_template_may_be_void(self):
        self.assertEqual([each.is_void for each in functions(code_of(self.TEXT))],
                         [False, True, False])  # fmt: skip


    def test_a_reader_stays_in_a_header_alone(self):
        text = "int S::size() const { return size_; }\n"
        self.assertEqual(mutants_of("s.h", text), [])
        self.assertEqual(len(mutants_of("s.cpp", text)), 1)


class Names(unittest.TestCase):
    TEXT = "int S::f() { return a + b + c; }\n"

    def names(self, text):
        return {mutant.name: mutant.applied_to(text) for mutant in mutants_of("t/a.cpp", text)}

    def test_a_name_is_that_of_function_operator_and_number(self):
        self.assertEqual(self.names(self.TEXT), {
            "S::f result 1": "int S::f() { return {}; }\n",
            "S::f arithmetic 1": "int S::f() { return a - b + c; }\n",
            "S::f arithmetic 2": "int S::f() { return a + b - c; }\n",
        })  # fmt: skip

    def test_a_name_stays_when_other_code_or_the_layout_changes(self):
        changed = "void g() { h(x + y); }\nint S::f() {\n  return a +\n      b + c;\n}\n"
        self.assertLess(set(self.names(self.TEXT)), set(self.names(changed)))

    def test_functions_of_one_name_count_on(self):
        twice = self.TEXT + "int S::f() const { return a + b; }\n"
        self.assertIn("int S::f() const { return a - b; }", self.names(twice)["S::f arithmetic 3"])


class Judgement(unittest.TestCase):
    ROW = "| file | name | why |\n|---|---|---|\n| `t/a.cpp` | `f logic 1` | so |"

    def result(self, how):
        mutant = next(m for m in mutants_of("t/a.cpp", "bool f() { return a || b; }\n")
                      if m.operator == "logic")  # fmt: skip
        return mutants.Result("t", mutant, Outcome(how))

    def test_a_survivor_is_judged_by_its_name(self):
        judged = mutants.judged_equivalent(self.ROW)
        self.assertTrue(mutants.is_judged(self.result("survived"), judged))
        self.assertFalse(mutants.is_judged(self.result("survived"), set()))
        self.assertFalse(mutants.is_judged(self.result("failed"), judged))

    def test_every_row_names_a_place_of_the_code(self):
        names = {(m.file, m.name) for file, text in mutants.read_sources().items()
                 for m in mutants_of(file, text)}  # fmt: skip
        judged = mutants.judged_equivalent((mutants.HERE / "survivors.md").read_text())
        self.assertNotEqual(judged, set())
        self.assertEqual(judged - names, set())

    def test_equivalent_mutants_do_not_count(self):
        results = [self.result(how) for how in ("failed", "survived")]
        texts = {"t/a.cpp": "bool f() { return a || b; }\n"}
        judged = mutants.judged_equivalent(self.ROW)
        self.assertTrue(mutants.report(results, texts, judged, None)[1])
        self.assertFalse(mutants.report(results, texts, set(), None)[1])

    def test_one_weak_area_is_a_failure_and_a_sample_needs_half(self):
        results = [self.result("failed")] * 99 + [
            mutants.Result("u", self.result("survived").mutant, Outcome("survived"))]  # fmt: skip
        texts = {"t/a.cpp": "bool f() { return a || b; }\n"}
        self.assertFalse(mutants.report(results, texts, set(), None)[1])
        self.assertTrue(mutants.report(results, texts, set(), 60)[1])
        self.assertFalse(mutants.report(results[-1:], texts, set(), 60)[1])
        self.assertFalse(mutants.report([], texts, set(), 60)[1])

    def test_the_same_seed_gives_the_same_order(self):
        texts = {"chips/a.cpp": "void f() { a(); b(); c(); d(); }\n"}
        drawn = [list(mutants.drawn(texts, mutants.arguments_of(["build", f"--seed={seed}"])).values())
                 for seed in (7, 7, 8)]  # fmt: skip
        self.assertEqual(drawn[0], drawn[1])
        self.assertNotEqual(drawn[0], drawn[2])


class Terminal(io.StringIO):
    def isatty(self):
        return True


class Benches:
    """A workbench that notices every mutant."""

    def outcome(self, *_):
        return Outcome("failed", "by a test")


class ProgressOfARun(unittest.TestCase):
    def run_on(self, stream, *options):
        """What a run of two mutants prints on standard output and on the stream."""
        texts = {"chips/a.cpp": "void f() { a(); b(); }\n"}
        chosen = mutants.arguments_of(["build", "--only=chips/a.cpp", *options])
        out = io.StringIO()
        with contextlib.redirect_stdout(out), contextlib.redirect_stderr(stream):
            trial = mutants.Trial(texts, chosen, [Benches()])
            trial.results(mutants.drawn(texts, chosen))
        return out.getvalue(), stream.getvalue()

    def test_a_terminal_shows_how_many_mutants_were_tried(self):
        out, shown = self.run_on(Terminal())
        total = out.count("failed ")
        self.assertGreater(total, 1)
        erased = "\r\x1b[K"
        counts = [f"{erased}mutants: {tried} of {total}" for tried in range(total + 1)]
        self.assertEqual(shown, "".join(counts) + erased)

    def test_a_sample_shows_how_much_time_is_left(self):
        _, shown = self.run_on(Terminal(), "--seconds=3600")
        self.assertRegex(shown, r"mutants: 1 tried, \d+ s left")

    def test_a_file_gets_only_the_results(self):
        out, shown = self.run_on(io.StringIO())
        self.assertTrue(out.startswith("failed "))
        self.assertEqual(shown, "")


class Areas(unittest.TestCase):
    def test_each_source_is_in_one_area(self):
        for file in mutants.read_sources():
            self.assertEqual(sum(area.has(file) for area in AREAS), 1, file)

    def test_the_areas_have_everything_that_is_shipped(self):
        shipped = {path.relative_to(mutants.ROOT).as_posix()
                   for folder in ("platform", "ZelVrfSelectionPolicy", "testing", "chips", "agent")
                   for path in (mutants.ROOT / folder).rglob("*.cpp")}  # fmt: skip
        self.assertEqual(shipped - set(mutants.read_sources()), set())


if __name__ == "__main__":
    unittest.main()
