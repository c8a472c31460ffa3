#!/usr/bin/env python3
"""Checks that table.py finds what it is there to find."""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

TABLE = pathlib.Path(__file__).with_name("table.py")

GOALS = """\
# operation | size | peer | limit
shop/sell…  | any  | 1.10 | -
shop/sell…  | 64   | 2.00 | -
shop/sell_it | any | -    | 1.50
"""


def repetitions(name, *times, clock="cpu_time"):
    other = {"cpu_time": "real_time", "real_time": "cpu_time"}[clock]
    return [{"name": name, "run_type": "iteration", clock: t, other: 1e6, "time_unit": "ns"} for t in times]


ALL_MET = [
    *repetitions("shop/sell/orvo/8", 11),
    *repetitions("shop/sell/other/8", 30),
    *repetitions("shop/sell/peer/8", 10),
    *repetitions("shop/sell_it/orvo/8", 15),
    *repetitions("shop/sell_it/limit/8", 10),
    *repetitions("shop/sell/orvo/64", 40),
    *repetitions("shop/sell/peer/64", 20),
]


class Table(unittest.TestCase):
    def run_table(self, benchmarks, *options, goals=GOALS):
        with tempfile.TemporaryDirectory() as folder:
            folder = pathlib.Path(folder)
            (folder / "goals.txt").write_text(goals, encoding="utf-8")
            (folder / "report.json").write_text(json.dumps({"benchmarks": benchmarks}))
            return subprocess.run(
                [sys.executable, TABLE, *options, folder / "goals.txt", folder / "report.json"],
                capture_output=True,
                text=True,
            )

    def line(self, done, *cells):
        """The line of a table that begins with these cells, without columns."""
        lines = [" ".join(line.split()) for line in done.stdout.splitlines()]
        return next((line for line in lines if line.startswith(" ".join(cells))), None)

    def test_succeeds_when_all_goals_are_met(self):
        done = self.run_table(ALL_MET)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(self.line(done, "shop/sell 8"), "shop/sell 8 11 ns 10 ns peer - 1.10 - 1.10 / - yes")
        self.assertEqual(
            self.line(done, "shop/sell 64"), "shop/sell 64 40 ns 20 ns peer - 2.00 - 3.64 2.00 / - yes"
        )
        self.assertEqual(
            self.line(done, "shop/sell_it 8"), "shop/sell_it 8 15 ns - 10 ns - 1.50 - / 1.50 yes"
        )
        self.assertIn("3 of 3 goals met", done.stdout)

    def test_fails_when_one_goal_is_missed(self):
        done = self.run_table(ALL_MET + repetitions("shop/sell/orvo/8", 12, 12))
        self.assertEqual(done.returncode, 1, done.stderr)
        self.assertEqual(self.line(done, "shop/sell 8"), "shop/sell 8 12 ns 10 ns peer - 1.20 - 1.10 / - NO")
        self.assertIn("2 of 3 goals met", done.stdout)

    def test_names_what_was_missed(self):
        missed = ALL_MET + repetitions("shop/sell_it/orvo/8", 16, 16)
        done = self.run_table(missed, "--missed")
        self.assertEqual((done.returncode, done.stdout), (1, "shop/sell_it\n"))

    def test_is_content_with_either_side(self):
        goals = "shop/sell | any | 1.10 | 1.50\n"
        times = [
            *repetitions("shop/sell/orvo", 14),
            *repetitions("shop/sell/peer", 10),
            *repetitions("shop/sell/limit", 10),
        ]
        self.assertEqual(self.run_table(times, goals=goals).returncode, 0)

    def test_takes_the_median_of_all_repetitions(self):
        times = repetitions("shop/sell/orvo", 900, 10, 11, 12, 1) + repetitions("shop/sell/peer", 10)
        done = self.run_table(times, goals="shop/sell | any | 1.10 | -\n")
        self.assertEqual(done.returncode, 0)
        self.assertTrue(self.line(done, "shop/sell 1 11 ns"), done.stdout)

    def test_times_what_waits_by_the_clock_on_the_wall(self):
        times = [
            *repetitions("shop/sell/orvo/8/real_time/threads:2", 11, clock="real_time"),
            *repetitions("shop/sell/peer/8/real_time/threads:2", 10, clock="real_time"),
        ]
        done = self.run_table(times, goals="shop/sell on 2 threads | any | 1.10 | -\n")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(self.line(done, "shop/sell on 2 threads 8 11 ns 10 ns"), done.stdout)

    def test_refuses_a_goal_that_no_benchmark_is_about(self):
        done = self.run_table(ALL_MET, goals=GOALS + "shop/buy | any | 1.00 | -\n")
        self.assertEqual(done.returncode, 2)
        self.assertIn("no benchmark for the goal of shop/buy, size any", done.stderr)

    def test_passes_over_the_goals_of_families_that_were_not_measured(self):
        done = self.run_table(ALL_MET, goals=GOALS + "bank/pay | any | 1.00 | -\n")
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_refuses_to_judge_without_the_contender_of_the_goal(self):
        done = self.run_table(ALL_MET + repetitions("shop/sell/orvo/9", 11))
        self.assertEqual(done.returncode, 2)
        self.assertIn("shop/sell/9: nothing of what its goal is about was measured", done.stderr)

    def test_prints_one_markdown_table_for_each_family(self):
        done = self.run_table(ALL_MET, "--markdown")
        self.assertIn("\n### shop\n", done.stdout)
        self.assertIn("| shop/sell | 8 | 11 ns | 10 ns | peer | - | 1.10 | - |  | 1.10 / - | yes |", done.stdout)


if __name__ == "__main__":
    unittest.main()
