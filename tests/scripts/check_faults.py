"""Each check of scripts/prove finds the faults that are planted for it. Nothing is built."""
import argparse
import io
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))

from evidence.commands import Failure  # noqa: E402  (the path comes first)
from proof import (boundary, bulk, differential, digest, exhaustion, fuzz, load,  # noqa: E402
                   python_coverage, python_fuzz, python_mutants, sanitizers, sequences)


def options_of(check, *arguments):
    parser = argparse.ArgumentParser()
    check.add_arguments(parser)
    return parser.parse_args(arguments)


class Exhaustion(unittest.TestCase):
    def passes(self, *counts):
        with mock.patch.multiple(exhaustion, install=mock.DEFAULT, release=mock.DEFAULT,
                                 counts_of=lambda *_: counts):
            return exhaustion.run(options_of(exhaustion, "--every", str(2**30))).passed

    def test_a_float_that_differs_or_is_left_out_fails(self):
        right = [("index", str(n), 4, 0) for n in range(18)]
        self.assertTrue(self.passes(*right))
        self.assertFalse(self.passes(*right[1:]))
        self.assertFalse(self.passes(*right[1:], ("index", "0", 4, 1)))
        self.assertFalse(self.passes(*right[1:], ("index", "0", 3, 0)))


class Differential(unittest.TestCase):
    COUNTS = [differential.Count("all", str(n), "form", "kernel", "border", 5, 0, 2, 0)
              for n in range(differential.KINDS)]
    OUTSIDERS = [differential.Outsider("scipy", str(n), 5, 0.25, 0.5)
                 for n in range(differential.COMPARISONS)]

    def passes(self, counts=(), outsiders=()):
        counts = [*self.COUNTS[len(counts):], *counts]
        outsiders = [*self.OUTSIDERS[len(outsiders):], *outsiders]
        with mock.patch.object(differential, "packages", lambda: ""):
            return differential.judge(options_of(differential), 1, 1, counts, outsiders).passed

    def test_a_sample_that_differs_fails(self):
        self.assertTrue(self.passes())
        for wrong in ({"different": 1}, {"different_pairs": 1}, {"compared": 0}):
            self.assertFalse(self.passes(counts=[self.COUNTS[0]._replace(**wrong)]), wrong)

    def test_an_outsider_beyond_its_tolerance_fails(self):
        self.assertFalse(self.passes(outsiders=[self.OUTSIDERS[0]._replace(largest=0.75)]))
        self.assertFalse(self.passes(outsiders=[self.OUTSIDERS[0]._replace(compared=0)]))


class Bulk(unittest.TestCase):
    def passes(self, different=0, large=()):
        counts = [bulk.Count("resample", "Short", "Cubic", "Constant", 9, different)]
        with mock.patch.multiple(bulk, install=mock.DEFAULT, release=mock.MagicMock(),
                                 compare=lambda *_: (1, counts), rows_of=lambda *_: large):
            return bulk.run(options_of(bulk, *([] if large else ["--no-large"]))).passed

    def test_a_sample_that_differs_fails(self):
        self.assertTrue(self.passes())
        self.assertFalse(self.passes(different=1))

    def test_a_large_result_that_differs_or_is_missing_fails(self):
        right = ["Linear", "2197000000", "2000000", "0"]
        self.assertTrue(self.passes(large=[right, right]))
        self.assertFalse(self.passes(large=[right, [*right[:3], "1"]]))
        self.assertFalse(self.passes(large=[right]))


class Sequences(unittest.TestCase):
    def passes(self, sequences_made, differences=()):
        rows = [["`int`", 1, str(sequences_made), "24"]] + [["`int`", 1, "24", "24"]] * 6
        return sequences.result(rows, list(differences), 1).passed

    def test_a_difference_or_a_sequence_left_out_fails(self):
        self.assertTrue(self.passes(24))
        self.assertFalse(self.passes(23))
        self.assertFalse(self.passes(24, ["int: a leak"]))


class Fuzzing(unittest.TestCase):
    def spend(self, script):
        tally = fuzz.Tally("boxes")
        with tempfile.TemporaryDirectory() as folder, mock.patch.object(fuzz, "LOGS", Path(folder)):
            program = Path(folder) / "fuzzer"
            program.write_text(f"#!/bin/sh\n{script}\n", encoding="utf-8")
            program.chmod(0o755)
            with mock.patch.object(fuzz, "program", lambda _: program):
                fuzz.spend(tally, 1, folder)
        return tally

    def test_an_input_that_fails_is_kept(self):
        self.assertIsNone(self.spend("exit 0").crash)
        crash = self.spend("echo 'Test unit written to crash-1'; exit 77").crash
        self.assertEqual(crash, Path("crash-1"))


class Sanitizers(unittest.TestCase):
    def test_a_report_is_found_wherever_it_is_and_once(self):
        error = f"{ROOT}/src/A.h:3:4: runtime error: signed integer overflow\n"
        self.assertEqual(sanitizers.found_in("all is well\n"), [])
        self.assertEqual(sanitizers.found_in(error + error),
                         ["src/A.h:3:4: runtime error: signed integer overflow"])
        self.assertEqual(len(sanitizers.found_in("==1==ERROR: AddressSanitizer: overflow\n")), 1)

    def test_a_mark_without_a_reason_is_found(self):
        self.assertTrue(sanitizers.has_reason("a;  // NOLINT(cert-err): it is meant", ""))
        self.assertFalse(sanitizers.has_reason("a;  // NOLINT(cert-err)", ""))
        self.assertFalse(sanitizers.has_reason("a;  // NOLINT: it is meant", ""))


class Boundary(unittest.TestCase):
    def passes(self, named=True, elsewhere="one", same=True):
        with tempfile.TemporaryDirectory() as folder:
            for name in ("one", "other"):
                (Path(folder) / name).write_text(name, encoding="utf-8")
            with mock.patch.multiple(
                    boundary, build_here=lambda _: Path(folder) / "one", exported=lambda _: 7,
                    build_copy=lambda _: Path(folder) / elsewhere,
                    check_names=lambda _: (named, 11),
                    compare_interface=lambda: (same, 7, "")), \
                    mock.patch.object(boundary.commands, "install"):
                return boundary.run(options_of(boundary)).passed

    def test_a_name_a_type_or_a_byte_that_differs_fails(self):
        self.assertTrue(self.passes())
        self.assertFalse(self.passes(named=False))
        self.assertFalse(self.passes(elsewhere="other"))
        self.assertFalse(self.passes(same=False))


class Load(unittest.TestCase):
    """The faults that are planted here are what load_rounds prints of a process that has them."""

    def rounds(self, said, status=0, errors="", library="volux_resample"):
        done = subprocess.CompletedProcess([], status, said, errors)
        with mock.patch.object(load.commands, "run", lambda *_, **__: done):
            return load.load_rounds(Path("build"), library, 100)[1]

    def test_the_same_before_and_after_is_no_fault(self):
        self.assertEqual(self.rounds("10 5 4 40 800 4096\n100 5 4 40 800 8192\n"), [])

    def test_a_mapping_or_a_byte_that_is_left_is_one(self):
        self.assertEqual(self.rounds("10 5 4 40 800 4096\n100 5 4 41 801 8192\n"),
                         ["volux_resample: the number of mappings changed by 1",
                          "volux_resample: the heap in use changed by 1"])

    def test_a_page_lost_each_round_is_one(self):
        self.assertEqual(self.rounds(f"10 5 4 40 800 0\n100 5 4 40 800 {90 * 4096}\n"),
                         ["volux_resample: the resident memory changed by 368640"])

    def test_a_crash_is_one(self):
        self.assertEqual(self.rounds("", status=-11), ["volux_resample:  (status -11)"])

    def test_whatever_volux_resample_prints_is_one(self):
        said = "10 5 4 40 800 4096\n100 5 4 40 800 4096\n"
        self.assertEqual(self.rounds(said, errors="a warning\n"),
                         ["volux_resample: it prints a warning"])
        self.assertEqual(self.rounds(said, errors="an exception\n", library="volux_core"), [])

    def test_nothing_to_count_is_one(self):
        done = subprocess.CompletedProcess([], 0, "10 0 0 40 800 96\n100 0 0 40 800 96\n", "")
        with mock.patch.object(load.commands, "run", lambda *_, **__: done):
            faults = load.all_rounds(Path("build"), 100)[1]
        self.assertEqual(faults, ["volux_core: no object is seen to be destroyed",
                                  "volux_resample: its calls start no thread"])


class Digest(unittest.TestCase):
    ROW = digest.Row("x86-64", "g++", "-O2")
    FUSED = digest.Row("x86-64", "g++", "-O2", fused=True)
    COMMITTED = {"full": {"Linear": "a", "Nearest": "b"}, "world": {"toVoxels": "d"}}

    def passes(self, row, **digests):
        found = {digest.Run("full"): {name: (each, 1) for name, each in digests.items()}}
        return digest.Outcome(row, found).passed(self.COMMITTED)

    def test_a_digest_that_differs_or_is_missing_fails(self):
        self.assertTrue(self.passes(self.ROW, Linear="a", Nearest="b"))
        self.assertFalse(self.passes(self.ROW, Linear="a", Nearest="c"))
        self.assertFalse(self.passes(self.ROW, Linear="a"))

    def test_fused_products_must_change_the_kernels_that_have_any_and_no_other(self):
        self.assertTrue(self.passes(self.FUSED, Linear="c", Nearest="b"))
        self.assertFalse(self.passes(self.FUSED, Linear="a", Nearest="b"))
        self.assertFalse(self.passes(self.FUSED, Linear="c", Nearest="c"))


class PythonCoverage(unittest.TestCase):
    SITE = "env/lib/python3.11/site-packages/volux"

    def judge(self, **missing):
        """The result where lines of some files are not reached."""
        names = ("_grid.py", "dask.py", "ndimage.py", "tool/_cli.py", "scale/_plan.py")
        files = {f"{self.SITE}/{name}": self.found(missing.get(Path(name).stem, []))
                 for name in names}
        return python_coverage.result_of(files, 7, python_coverage.PARTS)

    @staticmethod
    def found(lines):
        summary = {"num_statements": 50, "covered_lines": 50 - len(lines), "num_branches": 10,
                   "covered_branches": 10}
        return {"summary": summary, "missing_lines": lines, "missing_branches": []}

    def test_a_line_of_the_package_proper_that_no_test_reaches_fails_and_is_listed(self):
        self.assertTrue(self.judge().passed)
        failed = self.judge(ndimage=[12])
        self.assertFalse(failed.passed)
        self.assertEqual(failed.tables[1].rows, [["`ndimage.py`", "12", ""]])

    def test_a_line_of_the_command_is_listed_and_fails_only_with_others(self):
        self.assertTrue(self.judge(_cli=[3]).passed)
        self.assertEqual(self.judge(_cli=[3]).tables[1].rows, [["`tool/_cli.py`", "3", ""]])
        self.assertFalse(self.judge(_cli=list(range(20))).passed)

    def test_each_file_counts_in_its_part(self):
        self.assertEqual([row[1] for row in self.judge().tables[0].rows], [2, 1, 2])

    def test_tests_that_fail_measure_nothing(self):
        done = subprocess.CompletedProcess([], 1, "1 failed, 7 passed in 1 s", "")
        with tempfile.TemporaryDirectory() as folder, \
                mock.patch.object(python_coverage, "FOLDER", Path(folder) / "counts"), \
                mock.patch.multiple(python_coverage.commands, LOGS=Path(folder),
                                    run=lambda *_, **__: done):
            with self.assertRaisesRegex(Failure, "tests fail while what they reach is measured"):
                python_coverage.run_tests("python", [])


class PythonMutants(unittest.TestCase):
    def judge(self, *verdicts, campaign=False):
        rows = [[f"id{n}", "_grid.py", "1", "number", "1 -> 2", verdict, ""]
                for n, verdict in enumerate(verdicts)]
        with mock.patch.object(python_mutants, "read", lambda _: {"id0": ["id0", "none can tell"]}):
            return python_mutants.result_of(rows, campaign, True)

    def test_a_survivor_that_nobody_has_explained_fails(self):
        self.assertTrue(self.judge("survived", "killed").passed)
        failed = self.judge("killed", "survived")
        self.assertFalse(failed.passed)
        self.assertIn("id1: let a test kill it", failed.summary)

    def test_an_explanation_of_what_a_test_kills_fails_a_campaign(self):
        many = ["killed"] * python_mutants.FEWEST
        self.assertTrue(self.judge("survived", *many, campaign=True).passed)
        self.assertFalse(self.judge("killed", *many, campaign=True).passed)

    def test_a_campaign_has_its_number_of_mutants(self):
        self.assertFalse(self.judge("survived", "killed", campaign=True).passed)

    def test_tests_that_do_not_run_notice_nothing(self):
        for said in ("", "4 no such file\n", "5 no tests ran\n"):
            tree = mock.Mock(trials=mock.Mock(stdout=io.StringIO(said)))
            with self.assertRaisesRegex(Failure, "pytest does not run the tests of _grid.py"):
                python_mutants.Tree.test(tree, "_grid.py")
        tree = mock.Mock(trials=mock.Mock(stdout=io.StringIO("1 python/tests/test_grids.py::a\n")))
        self.assertEqual(python_mutants.Tree.test(tree, "_grid.py"), (1, "test_grids.py::a"))

    def test_every_file_has_tests_and_those_of_its_name_come_first(self):
        sources = ROOT / "python" / "volux"
        for path in sources.rglob("*.py"):
            self.assertTrue(python_mutants.tests_of(path.relative_to(sources).as_posix()), path)
        self.assertEqual(python_mutants.tests_of("_grid.py")[0].name, "test_grids.py")


# A worker that counts a call, and in its first life does what it is told before.
WORKER = """
import json, os, pathlib, signal, sys
asked = json.loads(sys.argv[1])
folder = pathlib.Path(asked["folder"])
(folder / "asked").open("a").write(json.dumps(asked["numbers"]) + chr(10))
if not (folder / "lived").exists():
    (folder / "lived").touch()
    (folder / "under-way").write_text(f"calls:{asked['seed']}.7".ljust(100))
    %s
calls = {"result": 4, "refusal": 3, "fault": 0}
counted = {"done": True, "spent": {"calls": 60.0}, "numbers": {"calls": 8},
           "counts": {"calls resample": calls}, "faults": {}}
%s
(folder / "counted.json").write_text(json.dumps(counted))
"""


class PythonFuzz(unittest.TestCase):
    def tally(self, first="pass", later="pass"):
        """What one worker finds, and which numbers its lives began with."""
        with tempfile.TemporaryDirectory() as folder:
            worker, own = Path(folder) / "worker.py", Path(folder) / "own"
            worker.write_text(WORKER % (first, later), encoding="utf-8")
            own.mkdir()
            with mock.patch.multiple(python_fuzz, WORKER=worker, LOGS=Path(folder)):
                tally = python_fuzz.fuzz(sys.executable, "5eed.0", 50, ["calls"], own)
            return tally, (own / "asked").read_text(encoding="utf-8").splitlines()

    def judge(self, tally):
        return python_fuzz.result_of(tally, ["calls"], True, 50)

    def test_calls_that_all_hold_pass(self):
        tally, _ = self.tally()
        self.assertTrue(self.judge(tally).passed)
        self.assertEqual(self.judge(tally).tables[0].rows, [["`resample`", 7, 4, 3, 0]])

    def test_a_fault_fails_and_says_what_repeats_it(self):
        fault = "{'name': 'calls:5eed.0.3', 'what': 'other bits', 'times': 2}"
        tally, _ = self.tally(later=f"counted['faults']['calls resample: other bits'] = {fault}")
        found = self.judge(tally)
        self.assertFalse(found.passed)
        self.assertEqual(found.tables[1].rows, [["calls resample: other bits", 2, "`scripts/prove "
                                                 "python-fuzz --again calls:5eed.0.3`"]])

    def test_a_crash_is_a_fault_of_what_was_under_way_and_another_worker_goes_on(self):
        tally, lives = self.tally(first="os.kill(os.getpid(), signal.SIGSEGV)")
        self.assertEqual(lives, ['{"calls": 0}', '{"calls": 8}'])
        [fault] = tally.faults.values()
        self.assertEqual((fault["name"], fault["times"]), ("calls:5eed.0.7", 1))
        self.assertIn("SIGSEGV", fault["what"])
        self.assertFalse(self.judge(tally).passed)

    def test_a_worker_that_is_wrong_itself_finds_nothing(self):
        with self.assertRaisesRegex(Failure, "breaks down at calls:5eed.0.7: .*NameError"):
            self.tally(first="no_such_name")

    def test_a_kind_that_was_not_tried_or_a_call_that_never_succeeds_fails(self):
        self.assertFalse(self.judge(python_fuzz.Tally()).passed)
        tally, _ = self.tally(later="calls['result'] = 0")
        self.assertFalse(self.judge(tally).passed)

    def test_only_what_faults_are_named_by_is_tried_again(self):
        self.assertTrue(python_fuzz.is_name("stores:5eed.0.17"))
        for text in ("stores", "stores:17", "others:5eed.0.17", "calls:5eed.0.x"):
            self.assertFalse(python_fuzz.is_name(text), text)


if __name__ == "__main__":
    unittest.main()
