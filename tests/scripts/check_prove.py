"""What scripts/prove says and refuses, and that its page marks what is out of date. Nothing is
built or proved.
"""
import contextlib
import io
import subprocess
import sys
import tempfile
import types
import unittest
from importlib.machinery import SourceFileLoader
from pathlib import Path
from types import SimpleNamespace
from unittest import mock

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))

from evidence import markdown, package, provenance  # noqa: E402  (the path comes first)
from evidence.commands import Failure  # noqa: E402
from proof import digest, digest_kept, digest_rows, load, report, results  # noqa: E402
from proof.results import Record, Result, Table  # noqa: E402

COMMAND = str(ROOT / "scripts" / "prove")
PROVE = types.ModuleType("prove")
SourceFileLoader("prove", COMMAND).exec_module(PROVE)
TODAY = "aaaaaaaaaaaa"
CHECK = types.SimpleNamespace(TITLE="Sums", PROMISE="Sums are right.", BREAKER="A carry.",
                              PARTS=("old part", "new part"))


def record_of(sources=TODAY, passed=True, parts=CHECK.PARTS):
    table = Table("What ran", ["part", "sums"], [[f"`{part}`", 7] for part in parts])
    return Record("sums", "scripts/prove sums", "2026-01-02", sources, "a machine", 3,
                  Result(passed, "7 sums are right.", [table]))


def standing(*records):
    return report.Standing("sums", CHECK, list(records))


class Marks(unittest.TestCase):
    def setUp(self):
        patch = mock.patch.object(provenance, "sources", lambda *_: TODAY)
        patch.start()
        self.addCleanup(patch.stop)

    def test_a_result_of_todays_sources_is_not_marked(self):
        fresh = standing(record_of())
        self.assertEqual(fresh.verdict(), "held")
        self.assertEqual(fresh.row()[-1], TODAY)
        self.assertEqual(list(fresh.remarks()), [])
        self.assertNotIn("changed since", "\n".join(fresh.found(fresh.records[0])))
        self.assertIn("were found on today's sources", report.summary([fresh]))

    def test_a_result_of_other_sources_is_marked_at_the_top_in_its_row_and_beside_it(self):
        old = standing(record_of("bbbbbbbbbbbb"))
        self.assertEqual(old.verdict(), "held on older sources")
        self.assertEqual(old.row()[-1], "bbbbbbbbbbbb, older")
        self.assertIn("bbbbbbbbbbbb (which have changed since)",
                      "\n".join(old.found(old.records[0])))
        self.assertIn("1 of the 2 checks", report.summary([old, standing(record_of())]))

    def test_a_remark_names_the_sources(self):
        remarks = list(standing(record_of("bbbbbbbbbbbb")).remarks())
        self.assertEqual(remarks, ["sums: the result of 2026-01-02 was found on sources "
                                   "bbbbbbbbbbbb, which have changed since"])

    def test_one_of_two_results_can_be_old(self):
        both = standing(record_of("bbbbbbbbbbbb"), record_of())
        self.assertEqual(both.verdict(), "held in part on older sources")

    def test_a_result_that_did_not_hold_is_not_said_to_have_held(self):
        self.assertEqual(standing(record_of(passed=False)).verdict(), "**no**")
        self.assertEqual(standing().verdict(), "**not run**")

    def test_a_part_that_no_table_has_is_named(self):
        narrow = standing(record_of(parts=["old part"]))
        self.assertEqual(narrow.verdict(), "held, without `new part`")
        self.assertIn("does not cover `new part`", "\n".join(narrow.found(narrow.records[0])))
        self.assertEqual(list(narrow.remarks()), ["sums: no result covers `new part`"])

    def test_a_run_that_goes_on_leaves_out_what_has_a_whole_result_of_todays_sources(self):
        self.assertTrue(standing(record_of("bbbbbbbbbbbb"), record_of()).is_proved)
        for record in (record_of("bbbbbbbbbbbb"), record_of(passed=False),
                       record_of(parts=["old part"])):
            self.assertFalse(standing(record).is_proved)
        self.assertFalse(standing().is_proved)


class Sources(unittest.TestCase):
    def test_a_change_of_volux_resample_changes_its_digest_alone(self):
        with mock.patch.object(Path, "rglob", lambda folder, _: iter([])):
            empty = provenance.sources(True)
        self.assertNotIn(empty, (provenance.sources(True), provenance.sources(False)))
        self.assertNotEqual(provenance.sources(True), provenance.sources(False))

    def test_a_check_that_covers_volux_resample_says_so(self):
        self.assertEqual(results.sources_today(load), provenance.sources(True))
        self.assertEqual(results.sources_today(CHECK), provenance.sources(False))


class Page(unittest.TestCase):
    def test_is_what_the_results_and_todays_sources_make_it(self):
        self.assertTrue(markdown.are_current(report.texts(PROVE.CHECKS)),
                        "scripts/prove report writes docs/proof.md anew")

    def test_has_no_field_left(self):
        self.assertNotIn("$", report.PAGE.read_text(encoding="utf-8").replace("`$", ""))


class Python(unittest.TestCase):
    """The row of the digests in which the Python package answers."""

    def setUp(self):
        [self.row] = digest_rows.python_rows()

    def test_is_among_the_rows(self):
        self.assertIn(self.row, digest.chosen_rows(" python$"))

    def test_runs_on_each_number_of_threads_by_the_wheel(self):
        with mock.patch.object(package, "interpreter", lambda group: f"python of {group}"):
            runs = list(digest.runs_of(self.row, self.row.folder))
        self.assertEqual([(run.corpus, run.threads) for run, _ in runs],
                         [(corpus, threads) for corpus in ("bulk", "bulk-small")
                          for threads in digest_rows.THREADS])
        run, command = runs[1]
        answers = ROOT / "tests" / "proof" / "digest" / "python_answers.py"
        self.assertEqual(command, ["python of run", answers, str(run.threads),
                                   self.row.folder / "python_calls", "6"])

    def test_takes_the_small_part_of_a_corpus_where_that_is_wanted(self):
        self.assertEqual(self.row.with_small_corpora().corpora, ("bulk-small",))
        plain = digest_rows.native_rows()[0]
        self.assertEqual(plain.with_small_corpora().corpora, ("small", "bulk-small", "world"))

    def carried_out(self, folder, afresh=False):
        """What the row gives by a program that answers with its own number, which grows."""
        def families_of(*_):
            self.answers += 1
            return {"resize": (f"{self.answers}", 2)}
        with (mock.patch.object(digest_kept, "KEPT", Path(folder)),
              mock.patch.object(digest, "build", lambda row: Path()),
              mock.patch.object(digest, "families_of", families_of),
              mock.patch.object(package, "interpreter", lambda group: "python")):
            return digest.carried_out(self.row, afresh)[0].found

    def test_is_not_run_again_before_something_changes(self):
        self.answers = 0
        with tempfile.TemporaryDirectory() as folder:
            first = self.carried_out(folder)
            self.assertEqual(self.carried_out(folder), first)
            self.assertNotEqual(self.carried_out(folder, afresh=True), first)
            again = self.carried_out(folder)
            with mock.patch.object(package, "ingredients", lambda: "others"):
                self.assertNotEqual(self.carried_out(folder), again)

    def outcome(self, digest_of_resize):
        found = {"resample": ("aa", 3), "resize": (digest_of_resize, 2)}
        return digest.Outcome(self.row, {digest.Run("bulk", digest.WHEEL, 2): found})

    def test_a_family_that_differs_or_is_missing_fails(self):
        committed = {"bulk": {"resample": "aa", "resize": "bb"}}
        self.assertTrue(self.outcome("bb").passed(committed))
        self.assertFalse(self.outcome("cc").passed(committed))
        self.assertIn("differs in 1 of 2 families", digest.verdict(self.outcome("cc"), committed))
        self.assertFalse(self.outcome("bb").passed({"bulk": {**committed["bulk"], "sample": "dd"}}))


class InCi(unittest.TestCase):
    def prove(self, held=True, current=True):
        """What scripts/prove --ci returns and prints, with one result of older sources."""
        printed = io.StringIO()
        with mock.patch.object(PROVE, "prove_all", lambda *_, **__: held), \
                mock.patch.object(PROVE, "possible", lambda checks: checks), \
                mock.patch.object(PROVE, "quick", lambda checks: checks), \
                mock.patch.object(report, "remarks", lambda _: ["sums: it is old"]), \
                mock.patch.object(markdown, "are_current", lambda _: current), \
                contextlib.redirect_stdout(printed):
            return PROVE.main(["--ci"]), printed.getvalue()

    def test_results_of_older_sources_are_printed_and_fail_nothing(self):
        self.assertEqual(self.prove(), (True, "docs/proof.md, sums: it is old\n"))

    def test_a_check_that_does_not_hold_fails(self):
        self.assertFalse(self.prove(held=False)[0])

    def test_a_page_that_says_something_else_fails(self):
        with self.assertRaisesRegex(Failure, "docs/proof.md is not what scripts/prove report"):
            self.prove(current=False)

    def test_without_pypi_the_checks_of_python_are_skipped_in_words(self):
        for code, kept in ((0, {"sums", "python"}), (1, {"sums"})):
            checks = {"sums": SimpleNamespace(), "python": SimpleNamespace(NEEDS_PYPI=True)}
            printed = io.StringIO()
            with mock.patch.object(PROVE.commands, "run",
                                   lambda _, code=code: SimpleNamespace(returncode=code)), \
                    contextlib.redirect_stdout(printed):
                self.assertEqual(PROVE.possible(checks).keys(), kept)
            self.assertEqual("skipped python:" in printed.getvalue(), code == 1)

    def test_a_check_without_a_short_part_is_skipped_in_words(self):
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            kept = PROVE.quick({"sums": CHECK, "long": SimpleNamespace(LEFT_OUT_OF_CI="too long")})
        self.assertEqual((list(kept), printed.getvalue()), (["sums"], "skipped long: too long\n"))

    def test_a_check_that_breaks_down_has_not_held(self):
        def break_down(_):
            raise Failure("it is broken.")
        found = PROVE.in_spite_of_faults(break_down)(None)
        self.assertEqual((found.passed, found.summary), (False, "not carried out: it is broken."))


class Markdown(unittest.TestCase):
    def test_columns_of_numbers_are_aligned_to_the_right(self):
        lines = markdown.table(["what", "n", "share"], [["a|b", 12, "3.5 %"], ["c", "", "1e-06"]])
        self.assertEqual(lines, ["| what | n | share |", "| --- | ---: | ---: |",
                                 "| a\\|b | 12 | 3.5 % |", "| c |  | 1e-06 |", ""])

    def test_a_table_may_have_no_rows(self):
        self.assertEqual(markdown.table(["a", "b"], [])[1], "| --- | --- |")


class BadUseTest(unittest.TestCase):
    def assert_refused(self, *arguments):
        done = subprocess.run([COMMAND, *arguments], capture_output=True, text=True)
        self.assertEqual(done.returncode, 2, done.stderr)
        self.assertRegex(done.stderr, r"\Ascripts/prove[^\n]*: [^\n]+\.\n\Z")

    def test_a_check_that_does_not_exist_is_refused(self):
        self.assert_refused("heights")

    def test_ci_takes_no_check(self):
        self.assert_refused("--ci", "load")
        self.assert_refused("--resume", "load")

    def test_numbers_out_of_range_are_refused(self):
        self.assert_refused("exhaustion", "--every", "0")
        self.assert_refused("load", "--rounds", "3")
        self.assert_refused("bulk", "--seconds", "none")
        self.assert_refused("sequences", "--calls", "9")
        self.assert_refused("digest", "--rows", "no such row")


if __name__ == "__main__":
    unittest.main()
