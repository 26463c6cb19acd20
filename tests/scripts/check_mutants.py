"""Mutation of the libraries: which mistakes there are, which of them are tried, what they prove.
Nothing is built.
"""
import argparse
import contextlib
import dataclasses
import io
import signal
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))

from evidence import provenance  # noqa: E402  (the path comes first)
from proof import (mutant_campaign, mutant_patched, mutant_rows, mutants,  # noqa: E402
                   mutant_tree, resample_mutants)
from proof.mutant_subject import SAME  # noqa: E402
from proof.mutator import Mutator  # noqa: E402


def options_of(check, *arguments):
    parser = argparse.ArgumentParser()
    check.add_arguments(parser)
    return parser.parse_args(arguments)


class Mutants(unittest.TestCase):
    F = "\n\nint f(int a)\n{\n    return a + 1;\n}"
    G = "\n\nint g()\n{\n    return 2;\n}"

    def ids(self, *functions, file="src/core/A.cpp"):
        source = "// Sums." + "".join(functions) + "\n\n"
        return {mutant.id for mutant in Mutator(file, source).mutants()}

    def test_a_mutant_keeps_its_id_in_another_file_and_beside_other_functions(self):
        self.assertEqual(self.ids(self.F), self.ids(self.F, file="src/exact/B.h"))
        self.assertEqual(self.ids(self.G, self.F), self.ids(self.F) | self.ids(self.G))

    def test_a_change_of_its_function_makes_it_another_one(self):
        changed = self.ids(self.F.replace("1", "4"), self.G)
        self.assertEqual(self.ids(self.F, self.G) & changed, self.ids(self.G))

    def changes(self, line):
        source = f"\n\nint f(int a)\n{{\n    {line}\n}}\n\n"
        return {mutant.change for mutant in Mutator("src/A.cpp", source).mutants()}

    def test_a_number_is_off_by_one_however_it_is_written(self):
        found = self.changes("return a * 0x1p-20;")
        self.assertIn("0x1p-20 -> 0x1.0000100000000p+0", found)
        self.assertIn("0x1p-20 -> 0x1.0000000000001p-20", found)
        self.assertIn("200'000u -> 200001u", self.changes("return a < 200'000u;"))

    def test_tests_in_a_row_are_exchanged_also_where_one_is_of_the_compiler(self):
        self.assertIn("if (a) { return 1; } if constexpr (b) { return 2; } -> "
                      "if constexpr (b) { return 2; } if (a) { return 1; }",
                      self.changes("if (a) { return 1; } if constexpr (b) { return 2; }"))

    def judge(self, *verdicts):
        rows = [[f"id{n}", "src/A.cpp", "1", "cast", "a -> b", verdict, ""]
                for n, verdict in enumerate(verdicts)]
        with mock.patch.object(mutant_rows, "read",
                               lambda _: {"id0": ["id0", "no caller can tell"]}):
            return mutant_rows.result_of(mutants.SUBJECT, rows, False, True)

    def test_a_survivor_that_nobody_has_explained_fails(self):
        self.assertTrue(self.judge("survived", "killed", SAME).passed)
        failed = self.judge("killed", "survived")
        self.assertFalse(failed.passed)
        self.assertIn("id1: let a test kill it", failed.summary)

    def test_mutants_that_do_not_compile_are_none(self):
        self.assertFalse(self.judge("not compiled", "not compiled").passed)

    def test_the_sources_draw_the_sample_and_the_record_does_not_judge_it(self):
        tried = []

        def try_all(subject, sample, known, journal, jobs):
            tried.append([mutant.id for mutant in sample])
            return {mutant.id: mutant_rows.row_of(mutant, "killed", "a test") for mutant in sample}
        for sources in ("one", "one", "other"):
            with mock.patch.object(provenance, "sources", lambda with_resample, s=sources: s), \
                    mock.patch.object(mutant_campaign, "tried", try_all):
                options = options_of(mutants, "--sample", "6")
                self.assertTrue(mutant_campaign.run_sample(mutants.SUBJECT, options).passed)
        self.assertEqual(tried[0], tried[1])
        self.assertNotEqual(tried[0], tried[2])


class Programs(unittest.TestCase):
    def status(self, program):
        return mutant_tree.call([sys.executable, "-c", program], timeout=1)[0]

    def test_one_that_waits_for_ever_is_ended(self):
        self.assertEqual(self.status("import time; time.sleep(100)"), -signal.SIGKILL)

    def test_one_that_goes_on_is_not(self):
        self.assertEqual(self.status("import time\nwhile time.process_time() < 1.5: pass"), 0)


class Campaign(unittest.TestCase):
    """A campaign whose record is its journal, as volux_resample has it, of a few mutants."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        kept = self.folder / "kept.tsv"
        self.subject = dataclasses.replace(resample_mutants.SUBJECT, kept=kept, journal=kept,
                                           explained=self.folder / "explained.tsv")
        source = "\n\nint f(int a)\n{\n    return a + 1;\n}\n\n"
        self.mutants = Mutator("src/resample/rows/A.cpp", source).mutants()
        self.ids = [mutant.id for mutant in self.mutants]
        self.verdicts = {}  # of those that no test kills

    def explain(self, key):
        lines = ["mutant\twhy nobody can tell", f"{key}\tNobody can."]
        self.subject.explained.write_text("\n".join(lines), encoding="utf-8")

    def run_campaign(self, *arguments):
        """The result, and which mutants were tried."""
        tried = []

        def verdict(trial):
            tried.append(trial.mutant.id)
            if trial.mutant.id in self.verdicts:
                return self.verdicts[trial.mutant.id]
            return "killed", "a test"
        with mock.patch.object(mutant_campaign, "all_mutants", lambda _: self.mutants), \
                mock.patch.object(mutant_campaign.tree, "Tree"), \
                mock.patch.object(mutant_campaign.Trial, "verdict", verdict), \
                mock.patch.object(mutant_rows, "ROOT", self.folder), \
                contextlib.redirect_stdout(io.StringIO()):
            options = options_of(resample_mutants, "--jobs", "1", *arguments)
            return mutant_campaign.run_campaign(self.subject, options), tried

    def test_goes_on_where_it_was_cut(self):
        journal = mutant_rows.Journal(self.subject.journal, afresh=False)
        for mutant in self.mutants[:2]:
            journal.add(mutant_rows.row_of(mutant, "killed", "a test"))
        self.assertEqual(self.run_campaign()[1], self.ids[2:])
        self.assertEqual(list(mutant_rows.read(self.subject.kept)), self.ids)
        self.assertEqual(self.run_campaign()[1], [])

    def test_begins_anew_where_that_is_wanted(self):
        self.run_campaign()
        self.assertEqual(self.run_campaign("--afresh")[1], self.ids)

    def test_tries_a_survivor_again_until_it_is_explained(self):
        self.verdicts[self.ids[0]] = ("survived", "")
        for _ in range(2):
            result, tried = self.run_campaign()
            self.assertFalse(result.passed)
            self.assertIn(f"{self.ids[0]}: let a test kill it", result.summary)
        self.assertEqual(tried, self.ids[:1])
        self.explain(self.ids[0])
        self.assertEqual(self.run_campaign()[1], [])

    def test_has_its_number_of_mutants(self):
        self.assertFalse(self.run_campaign()[0].passed)
        self.subject = dataclasses.replace(self.subject, fewest=len(self.ids))
        self.assertTrue(self.run_campaign()[0].passed)

    def test_an_explanation_of_what_a_test_kills_fails(self):
        self.subject = dataclasses.replace(self.subject, fewest=len(self.ids))
        self.explain(self.ids[0])
        result, _ = self.run_campaign()
        self.assertFalse(result.passed)
        self.assertIn(f"explained without need: {self.ids[0]}", result.summary)


class ResampleMutants(unittest.TestCase):
    SUBJECT = resample_mutants.SUBJECT

    def test_every_source_of_the_libraries_is_judged_by_one_check(self):
        judged = [*mutants.SUBJECT.files(), *self.SUBJECT.files()]
        self.assertEqual(len(judged), len(set(judged)))
        sources = {path.relative_to(ROOT).as_posix() for folder in ("src", "include")
                   for path in (ROOT / folder).rglob("*") if path.is_file()}
        left = {file for file in sources - set(judged) if "/adapt/" not in file}
        self.assertEqual(left, {"include/volux/resample.h"})  # which only includes

    def test_a_program_has_the_sources_of_what_it_includes(self):
        programs = {program.name: program for program in self.SUBJECT.suite.programs()}
        names = [path.name for path in programs["MissingMemoryTest"].sources]
        self.assertEqual(names, ["MissingMemoryTest.cpp", "Allocation.cpp", "FailingNew.cpp",
                                 "SamplingOracle.cpp"])
        for file in ("src/resample/rows/Processors.cpp", "src/resample/rows/Processors.h"):
            self.assertTrue(programs["ProcessorsTest"].compiles(file))
            self.assertFalse(programs["WorkTest"].compiles(file))
        self.assertLessEqual(set(self.SUBJECT.suite.last), programs.keys())

    def test_in_ci_a_file_of_tests_chooses_its_own(self):
        words = mutant_patched.filter_of(ROOT / "tests/resample/vectors/LargeTest.cpp")
        self.assertEqual(words, "--gtest_filter=Large.*:Large/*:*/Large.*:*/Large/*")

    def test_in_ci_files_that_tests_compile_or_that_take_minutes_are_left_out(self):
        files = resample_mutants.SHARED.files()
        self.assertIn("src/resample/rows/Work.cpp", files)
        programs = resample_mutants.SHARED.suite.programs()
        self.assertFalse([file for file in files if "/vectors/" in file or "include/" in file
                          or any(program.compiles(file) for program in programs)])

    def test_what_an_object_is_made_of_is_what_ninja_says(self):
        said = ("a.o: #deps 2, deps mtime 17 (VALID)\n    /s/A.cpp\n    /s/A.h\n\n"
                "b.o: #deps 1, deps mtime 17 (VALID)\n    ../B.cpp\n\n")
        self.assertEqual(mutant_patched.dependencies_in(said, Path("/b")),
                         {"a.o": {Path("/s/A.cpp"), Path("/s/A.h")}, "b.o": {Path("/b/../B.cpp")}})


if __name__ == "__main__":
    unittest.main()
