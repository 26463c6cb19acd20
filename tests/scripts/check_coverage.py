"""What the checks of coverage make of what is counted. Nothing is built."""
import contextlib
import dataclasses
import io
import json
import sys
import unittest
from pathlib import Path
from unittest import mock

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))

from evidence.commands import Failure  # noqa: E402  (the path comes first)
from proof import coverage, coverage_counts, coverage_subject, resample_coverage  # noqa: E402


class Coverage(unittest.TestCase):
    """What is said of a library of one function, `f`, in two builds, from what llvm-cov says."""

    FILE = "src/core/Geometry.cpp"

    def setUp(self):
        self.listings = {"A": "DA:3,7\nDA:4,2", "B": "DA:3,7\nDA:4,2"}
        self.records = {"A": [self.record("N_A_f")], "B": [self.record("N_B_f")]}
        self.subject = dataclasses.replace(
            coverage.SUBJECT, tests=lambda: Path("tests"), builds={"A": "", "B": "-mb"},
            module=lambda build, flags: Path(build + flags), functions=[], conditions=[],
            apart="instruction set", mark="N_{}")
        patches = (mock.patch.object(coverage_subject, "run_tests", self.run_tests),
                   mock.patch.object(coverage_subject, "export", self.export),
                   mock.patch.object(coverage_counts, "demangled",
                                     lambda names: {name: name for name in names}),
                   contextlib.redirect_stdout(io.StringIO()))
        for patch in patches:
            self.enterContext(patch)

    def record(self, name, count=7, branch=(5, 2), decides=(True, True)):
        """As llvm-cov has it of a function in two lines, whose one decision has two conditions."""
        places = ([3, 5, 3, 9], [3, 13, 3, 17])
        return {"name": name, "count": count, "filenames": [f"{ROOT}/{self.FILE}"],
                "regions": [[3, 1, 4, 2, count, 0, 0, 0]],
                "branches": [[*place, *branch, 0, 0, 4] for place in places],
                "mcdc_records": [[3, 5, 3, 17, 0, 5, list(decides)]]}

    def run_tests(self, subject, build, tests, module):
        self.assertEqual(module, Path("B-mb") if build == "B" else tests)
        return build, 10

    def export(self, subject, tests, module, build, *form):
        if form:
            return f"SF:{ROOT}/{self.FILE}\n{self.listings[build]}\nend_of_record\n"
        return json.dumps({"data": [{"functions": self.records[build]}]})

    def result(self, **changes):
        return dataclasses.replace(self.subject, **changes).result()

    def left(self, **changes):
        result = self.result(**changes)
        self.assertFalse(result.passed)
        return result.tables[-1].rows

    def test_adds_up_the_builds_and_has_a_row_of_each(self):
        result = self.result()
        self.assertTrue(result.passed)
        self.assertEqual(result.tables[0].rows[0],
                         [self.FILE, "4 of 4", "4 of 4", "4 of 4", "2 of 2"])
        self.assertEqual(result.tables[1].rows, [["`A`", *["2 of 2"] * 3, "1 of 1"],
                                                 ["`B`", *["2 of 2"] * 3, "1 of 1"]])
        self.assertIn("are covered by 20 test runs with A, B.", result.summary)

    def test_a_line_that_one_of_two_instruction_sets_never_executes_fails(self):
        self.listings["B"] = "DA:3,7\nDA:4,0"
        self.assertEqual(self.left(), [[self.FILE, "line 4 (B)"]])
        self.assertTrue(self.result(apart="").passed)  # as it is with volux_core's two builds

    def test_a_branch_a_condition_and_an_instantiation_that_are_not_covered_fail(self):
        self.records = {"A": [self.record("N_A_f", branch=(5, 0))],
                        "B": [self.record("N_B_f", decides=(False, True), count=0)]}
        self.assertEqual([what for _, what in self.left()], [
            "`N_B_f` (B)", "branch at 3:13, in 1 instantiations (A)",
            "branch at 3:5, in 1 instantiations (A)",
            "condition 1 at 3:5, in 1 instantiations (B)"])

    def test_instantiations_can_cover_a_branch_and_a_decision_together(self):
        one = self.record("N_A_f", branch=(5, 0), decides=(False, True))
        other = self.record("N_A_g", branch=(0, 2), decides=(True, False))
        self.records["A"] = [one, other]
        self.assertFalse(self.result().passed)
        self.assertTrue(self.result(together=True).passed)
        self.records["A"] = [one]
        self.assertEqual([what for _, what in self.left(together=True)], [
            "branch at 3:13 (A)", "branch at 3:5 (A)", "condition 1 at 3:5 (A)"])

    def test_what_is_excluded_is_left_out_with_its_branch_and_its_lines(self):
        self.listings["A"] = self.listings["B"] = "DA:3,0\nDA:4,0\nDA:8,1"
        for build, name in (("A", "N_A_f"), ("B", "N_B_f")):
            self.records[build] = [self.record(name, 0, (5, 0), (False, False))]
        result = self.result(functions=[("_f$", "why")],
                             conditions=[("_f", 1, "why"), ("_f", 2, "why")])
        self.assertTrue(result.passed, result.summary)
        self.assertEqual(result.tables[-1].rows[0],
                         [self.FILE, "functions `_f$`", "4 lines, 2 functions", "why"])
        self.assertEqual([row[2] for row in result.tables[-1].rows[1:]],
                         ["2 condition and branch"] * 2)

    def test_a_place_is_excluded_by_the_text_that_is_there(self):
        self.enterContext(mock.patch.object(
            Path, "read_text", lambda *_, **__: "\n\nif (left || right)\n  never();\n"))
        self.listings["B"] = "DA:3,7\nDA:4,0"
        self.records["B"] = [self.record("N_B_f", decides=(False, True), branch=(7, 0))]
        left, right, never = ((self.FILE, text, "why") for text in ("left", "right)", "never()"))
        self.assertTrue(self.result(places=[left, right, never]).passed)
        self.assertEqual([what for _, what in self.left(places=[left, never])],
                         ["branch at 3:13, in 1 instantiations (B)"])
        self.assertEqual([what for _, what in self.left(places=[left, right])], ["line 4 (B)"])
        for stale in ("if", "else"):
            places = [left, right, never, (self.FILE, stale, "why")]
            [[_, what]] = self.left(places=places)
            self.assertEqual(what, f"a stale exclusion: `{stale}` in {self.FILE}")

    def test_an_exclusion_of_nothing_or_of_what_a_test_reaches_fails(self):
        for stale in ({"functions": [("_g$", "why")]}, {"functions": [("_f$", "why")]},
                      {"conditions": [("_g", 1, "why")]}, {"conditions": [("_f", 1, "why")]}):
            [[_, what]] = self.left(**stale)
            self.assertRegex(what, "^a stale exclusion: ")

    def test_a_build_of_another_instruction_set_is_refused(self):
        self.records["B"] = [self.record("N_A_f")]
        with self.assertRaisesRegex(Failure, "the build B is not what its flags were to make"):
            self.result()

    def test_every_source_of_the_libraries_belongs_to_a_check(self):
        sources = [path.relative_to(ROOT).as_posix() for folder in ("include", "src")
                   for path in (ROOT / folder).rglob("*") if path.is_file()]
        core, resample = (check.SUBJECT.covers for check in (coverage, resample_coverage))
        both = {file for file in sources if core(file) and resample(file)}
        self.assertEqual(both, {file for file in sources if file.startswith("src/exact/")})
        self.assertTrue(all(core(file) or resample(file) for file in sources))

    def test_an_instruction_set_that_the_processor_lacks_is_no_build(self):
        with mock.patch.object(Path, "read_text", lambda *_, **__: "flags : sse2 ssse3 avx2"):
            self.assertEqual(resample_coverage.here(), {"EMU128": "", "SSSE3": "-mssse3"})


if __name__ == "__main__":
    unittest.main()
