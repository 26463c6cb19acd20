"""What scripts/bench says and refuses, and the arithmetic behind its tables. Nothing is timed."""
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))

from benching import (bulk, goals, programs, python, record, report,  # noqa: E402  (the path
                      scale, times)  # comes first)
from evidence import markdown, package, provenance  # noqa: E402
from evidence.commands import BadUse, Failure  # noqa: E402


def bench(*arguments):
    return subprocess.run([ROOT / "scripts" / "bench", *arguments], capture_output=True, text=True)


def record_of(measured, skipped=()):
    return {"rounds": 3, "peers": {}, "skipped": list(skipped), "agreement": {},
            "times": measured}


class Page(unittest.TestCase):
    def test_is_what_the_records_say(self):
        self.assertTrue(markdown.are_current(report.texts()),
                        "scripts/bench report writes docs/performance.md anew")

    def test_says_of_a_part_without_a_record_that_it_is_not_measured(self):
        with mock.patch.object(record, "kept", lambda _: None):
            self.assertIn("**Not measured yet.**", report.section("python", python))

    def test_takes_a_record_of_other_sources_for_an_older_one(self):
        for sources, is_older in ((record.sources_today("bulk"), False), ("0" * 12, True)):
            self.assertEqual(report.is_older("bulk", {record.KEY: {"sources": sources}}), is_older)


class BadUseTest(unittest.TestCase):
    def assert_refused(self, *arguments):
        done = bench(*arguments)
        self.assertEqual(done.returncode, 2, done.stderr)
        self.assertRegex(done.stderr, r"\Ascripts/bench[^\n]*: [^\n]+\.\n\Z")

    def test_a_measurement_that_does_not_exist_is_refused(self):
        self.assert_refused("heights")

    def test_rounds_are_a_whole_number_above_zero(self):
        for rounds in ("0", "-3", "1.5", "many"):
            with self.subTest(rounds):
                self.assert_refused("times", "--rounds", rounds)

    def test_a_part_is_not_recorded(self):
        self.assert_refused("times", "--record", "--only", "A/*")
        self.assert_refused("--record", "times", "--only", "A/*")
        self.assert_refused("bulk", "--record", "--only", "A/*")
        self.assert_refused("python", "--record", "--only", "A/*")
        self.assert_refused("python", "--record", "--gib", "1")
        self.assert_refused("tool", "--record", "--only", "cubic/*")

    def test_the_report_takes_no_arguments(self):
        self.assert_refused("report", "times")

    def test_a_pattern_that_no_row_matches_is_refused(self):
        with self.assertRaisesRegex(BadUse, "no row is called 'F/\\*'"):
            times.chosen({"A/short": {}, "E/fill": {}}, "F/*")


class Ratios(unittest.TestCase):
    MEASURED = {"volux_core": [2.0, 6.0, 4.0], "CImg": [1.0, 4.0, 8.0], "VTK": [4.0, 3.0, 9.0]}

    def test_the_fastest_peer_is_chosen_in_each_round(self):
        self.assertEqual(times.ratios(self.MEASURED, ("CImg", "VTK")), [2.0, 2.0, 0.5])

    def test_a_peer_that_is_missing_does_not_count(self):
        self.assertEqual(times.ratios(self.MEASURED, ("CImg", "ITK")), [2.0, 1.5, 0.5])

    def test_a_peer_that_was_not_asked_again_counts_where_it_was(self):
        measured = {"volux_core": [2.0, 6.0, 4.0], "CImg": [1.0], "VTK": [4.0, 3.0, 8.0]}
        self.assertEqual(times.ratios(measured, ("CImg", "VTK")), [2.0, 2.0, 0.5])

    def test_a_round_without_a_peer_does_not_count(self):
        measured = {"volux_core": [2.0, 6.0, 4.0], "CImg": [1.0]}
        self.assertEqual(times.ratios(measured, ("CImg",)), [2.0])

    def test_without_a_peer_there_is_none(self):
        self.assertIsNone(times.ratios(self.MEASURED, ("ITK",)))

    def test_the_spread_has_the_median_and_the_quartiles(self):
        self.assertEqual(times.spread([0.5, 2.0, 1.0, 4.0, 3.0]), "2.00 (1.00 to 3.00)")
        self.assertEqual(times.spread([0.5]), "0.50 (0.50 to 0.50)")


class Goals(unittest.TestCase):
    def line(self, row, **measured):
        goal = goals.goals_of(row)[0]
        return times.ratio_cells(measured, goal)

    def test_a_goal_is_reached_by_the_median_at_the_bound(self):
        cells = self.line("E/fill", volux_core=[1.15, 1.0, 9.0], memset=[1.0, 1.0, 1.0])
        self.assertEqual(cells[2:], ["1.15", "yes", "1.00", "**no**"])

    def test_nothing_is_said_of_a_goal_without_its_peer(self):
        cells = self.line("E/fill", volux_core=[1.0], numpy=[1.0])
        self.assertEqual(cells, ["not measured", "", "1.15", "", "1.00", ""])

    def test_the_tricubic_goals_are_held_against_each_library_by_itself(self):
        found = goals.goals_of("A/short/cubic/constant")
        for ours in ("volux_core", "Sampler"):
            self.assertEqual({goal.against for goal in found if goal.ours == ours},
                             {("CImg",), ("VTK",)})

    def test_the_b_spline_is_no_peer(self):
        for row in ("A/short/cubic/constant", "C/float/cubic/constant", "D/short/cubic/constant"):
            for goal in goals.goals_of(row):
                self.assertNotIn("ITK", goal.against)

    def test_a_row_without_a_goal_and_a_goal_without_a_row_are_found(self):
        with self.assertRaisesRegex(Failure, "no goal for .*E/melt.*, no row for .*nearest D"):
            times.check_goals({"E/melt": {"volux_core": "bench_container"}})


class Programs(unittest.TestCase):
    def test_one_that_stops_says_why(self):
        program = programs.Program("bench_none", ["/bin/sh", "-c", "echo it is not equal >&2"])
        self.addCleanup(program.stop)
        with self.assertRaisesRegex(Failure, "bench_none stopped at A/b: it is not equal\\."):
            program.ask("A/b")

    def test_one_that_answers_is_understood(self):
        answer = 'read name; echo "{\\"benchmarks\\": [{\\"name\\": \\"$name\\"}]}"; echo end'
        program = programs.Program("bench_some", ["/bin/sh", "-c", answer])
        self.addCleanup(program.stop)
        self.assertEqual(program.ask("A/b"), {"name": "A/b"})


class Tables(unittest.TestCase):
    def test_a_peer_that_was_skipped_is_named(self):
        said = "\n".join(times.tables(record_of({}, skipped=["VTK"])))
        self.assertIn("Skipped, since it was not installed: VTK.", said)

    def test_each_goal_of_a_row_has_a_line(self):
        measured = {"A/short/cubic/constant": {"volux_core": [2.0], "CImg": [4.0], "VTK": [1.0]}}
        lines = times.workload("A", record_of(measured))
        self.assertIn("| short | cubic | constant | 2 | 4 | 1 | CImg | 0.50 (0.50 to 0.50) | 0.90 |"
                      " yes | 0.65 | yes |", lines)
        self.assertIn("|  |  |  |  |  |  | VTK | 2.00 (2.00 to 2.00) | 1.40 | **no** | 1.00 |"
                      " **no** |", lines)

    def test_results_that_differ_stop_the_run(self):
        findings = times.Findings(["E/crop"])
        findings.add("E/crop", "volux_core", {"items_per_second": 1e9, "checksum": 7})
        with self.assertRaisesRegex(Failure, "numpy does not give what the others give"):
            findings.add("E/crop", "numpy", {"items_per_second": 1e9, "checksum": 8})

    def test_a_round_counts_the_fastest_of_its_visits(self):
        speeds = iter([3, 5, 7, 2, 6, 4])
        found = times.fastest(lambda row, competitor: {"items_per_second": next(speeds)},
                              "A/row", ["one", "other"], 3)
        self.assertEqual({name: said["items_per_second"] for name, said in found.items()},
                         {"one": 7, "other": 5})

    def test_a_failure_is_not_passed_over_for_a_fast_visit(self):
        said = iter([{"items_per_second": 3}, {"error_message": "it is wrong"}])
        found = times.fastest(lambda row, competitor: next(said), "A/row", ["one"], 2)
        self.assertIn("error_message", found["one"])

    def test_every_competitor_is_the_first_in_some_round(self):
        rows = {"A": {"CImg": "", "ITK": "", "volux_core": ""}}
        first = {next(times.turns(rows, number))[1][0] for number in range(3)}
        self.assertEqual(first, set(rows["A"]))


class Bulk(unittest.TestCase):
    MEASURED = {"AVX-512": [1.0], "VTK": [4.0], "CImg": [8.0], "scipy": [8.1]}

    def test_a_peer_without_a_chance_is_not_asked_again(self):
        wanted = {name for name in self.MEASURED if bulk.is_wanted(self.MEASURED, name)}
        self.assertEqual(wanted, {"AVX-512", "VTK", "CImg"})

    def test_everybody_is_asked_once(self):
        self.assertTrue(bulk.is_wanted({"VTK": [1.0]}, "scipy"))

    def test_each_instruction_set_with_a_goal_has_a_line(self):
        measured = {"A/short/linear/constant": {"AVX-512": [1.0], "AVX2": [2.0], "VTK": [4.0]}}
        lines = bulk.workload("A", record_of(measured))
        self.assertIn("| short | linear | constant | 1 | 2 | 4 | AVX2 | VTK | 0.50 (0.50 to 0.50) |"
                      " 0.55 | yes |  |  |", lines)
        self.assertIn("|  |  |  |  |  |  | AVX-512 | VTK | 0.25 (0.25 to 0.25) | 0.35 | yes |"
                      " 0.25 | yes |", lines)

    def test_two_threads_are_judged_by_their_gain(self):
        measured = {"threads/A/linear": {"one thread": [8.0], "two threads": [5.0]}}
        self.assertIn("| A | linear | 8 | 5 | 1.60 (1.60 to 1.60) | 1.60 | yes | 1.90 | **no** |",
                      bulk.threads(record_of(measured)))

    def test_growth_has_a_line_for_each_size(self):
        measured = {"growth/oblique/64": {"one thread": [8.0]}, "growth/copy/64": {"memcpy": [0.1]},
                    "growth/oblique/32": {"one thread": [7.0]}}
        lines = bulk.growth(record_of(measured))
        self.assertIn("| 32^3 | 7 |  |", lines)
        self.assertIn("| 64^3 | 8 | 0.1 |", lines)

    def test_a_row_without_a_goal_and_a_goal_without_a_row_are_found(self):
        with self.assertRaisesRegex(Failure, "no goal for .*B/melt.*, no row for .*two threads"):
            bulk.check_goals({"B/melt": {}, "growth/copy/32": {}})


class Python(unittest.TestCase):
    ROW = "A/short/linear/1"

    def test_each_bound_of_a_row_has_a_line_if_its_peer_is_there(self):
        measured = {self.ROW: {"volux": [2.0, 6.0, 4.0], "scipy": [8.0, 30.0, 20.0]}}
        self.assertEqual([line for line in python.workload("A", record_of(measured))
                          if line.startswith("| short")],
                         ["| short | linear | 1 | 4 | 20 | volux to scipy | 0.20 (0.20 to 0.23) |"
                          " 0.25 | 0.20 | yes |"])

    def test_what_python_costs_is_judged_by_calls_that_both_write_into_memory(self):
        measured = {self.ROW: {"volux": [9.0], "volux into out": [1.04], "volux_resample": [1.0]}}
        said = "\n".join(python.workload("A", record_of(measured)))
        self.assertIn("| volux into out to volux_resample | 1.04 (1.04 to 1.04) | 1.04 | 1.03 |"
                      " **no** |", said)
        self.assertNotIn("9.00", said)

    def test_a_b_spline_has_no_bound(self):
        bounds = {goal.against: goal.most for goal in goals.goals_of("B/float/cubic/1",
                                                                     goals.PYTHON)}
        self.assertIsNone(bounds[("scipy",)])

    def test_imports_are_judged(self):
        for spent, said in ((15.0, "yes"), (15.2, "**no**")):
            kept = record_of({"import": {"volux": [spent * 1e6], "numpy": [10e6]}})
            self.assertTrue(python.import_table(kept)[-2].endswith(f"| 1.50 | {said} |"))

    def test_memory_beside_the_source_and_the_result_is_judged(self):
        for most, said in ((350_000_000, "yes"), (350_100_000, "**no**")):
            kept = {"memory": {"source": 100_000_000, "result": 200_000_000, "most": most}}
            self.assertTrue(python.memory_table(kept)[-2].endswith(f"| 50 | {said} |"))

    def test_the_median_and_the_longest_time_to_an_interrupt_are_judged(self):
        lines = python.interrupt_table({"interrupts": {"2": [0.1, 0.2, 0.6]}})
        self.assertIn("| 2 | 3 | median | 0.200 | 0.2 | yes |", lines)
        self.assertIn("| 2 | 3 | longest | 0.600 | 0.5 | **no** |", lines)

    def test_a_part_of_the_rows_has_no_tables_of_the_rest(self):
        kept = {**record_of({}), "python": {"python": "3.11", "numpy": "2.4"}}
        self.assertFalse([line for line in python.tables(kept) if "Ctrl-C" in line])

    def test_results_of_python_that_differ_from_those_of_c_stop_the_run(self):
        findings = times.Findings([self.ROW])
        findings.add(self.ROW, "volux_resample", {"items_per_second": 1e9, "checksum": 7})
        with self.assertRaisesRegex(Failure, "volux does not give what the others give"):
            findings.add(self.ROW, "volux", {"items_per_second": 1e9, "checksum": 8})

    def test_a_row_without_a_goal_is_found(self):
        with self.assertRaisesRegex(Failure, "no goal for .*melt"):
            goals.check(["melt"], goals.PYTHON)

    def test_a_change_of_the_package_makes_its_record_an_older_one_and_no_other(self):
        def sources(with_resample, more=()):
            return f"{with_resample} {more}"
        with mock.patch.object(provenance, "sources", sources):
            self.assertIn("python/volux", record.sources_today("python"))
            self.assertNotIn("python/volux", record.sources_today("bulk"))


class Scale(unittest.TestCase):
    def test_a_shift_is_judged_beside_a_copy_and_two_processes_beside_one(self):
        found = {"shift/256": {"volux": [3e9], "copy": [2e9], "two processes": [1.8e9]}}
        copy, processes = scale.ratio_rows(found)
        self.assertEqual(copy[-3:], ["1.50 (1.50 to 1.50)", "1.50", "yes"])
        self.assertEqual(processes[-3:], ["0.60 (0.60 to 0.60)", "0.56", "**no**"])

    def test_what_a_task_adds_is_the_difference_shared_out(self):
        for beside, said in ((20.48e9, "yes"), (20.52e9, "**no**")):
            found = {"shift/64": {"volux": [1e9 + beside], "shift": [18e9], "copy": [1e9]}}
            by_hand, copied = scale.overhead_rows(found)
            self.assertEqual((by_hand[-1], copied[-1]), ("yes", said))

    def test_the_paper_multiplies_what_a_task_takes(self):
        task = {"seconds": 2.0, "requests": 64.0, "read": 2e7, "written": 1e7, "verify": 0.1}
        rows = list(scale.paper({"task": task}))
        self.assertEqual(rows[0], ["10^12", "100", "59,605", "0.33", "1.19", "0.60", "3,300",
                                   "1.50", "1.66"])
        self.assertEqual(rows[3][:4], ["10^15", "10,000", "59,604,645", "3.31"])
        self.assertEqual(rows[1][3], "0.003")


class Package(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.built = []
        for name, value in (("DIST", Path(folder.name) / "dist"), ("succeed", self.build),
                            ("sources", lambda: self.today)):
            patch = mock.patch.object(package, name, value)
            patch.start()
            self.addCleanup(patch.stop)

    def build(self, command):
        self.built.append(self.today)
        command[1].mkdir(exist_ok=True)
        (command[1] / "volux-1.whl").touch()

    def test_is_built_anew_if_its_sources_have_changed_or_if_that_is_wanted(self):
        for self.today, is_fresh in (("a", False), ("a", False), ("b", False), ("b", True)):
            self.assertEqual(package.wheel(is_fresh).name, "volux-1.whl")
        self.assertEqual(self.built, ["a", "b", "b"])

    def test_what_a_build_leaves_behind_is_no_source(self):
        before = provenance.sources(True, ["tests/scripts"])
        with mock.patch.object(provenance, "BUILT", {".py"}):
            self.assertNotEqual(provenance.sources(True, ["tests/scripts"]), before)


if __name__ == "__main__":
    unittest.main()
