#!/usr/bin/env python3
"""Sets measured times against the goals and prints one table.

usage: table.py [--markdown] [--missed] GOALS JSON...

The JSON files are reports of the benchmarks, whose names read
"family/operation/WHO/size", with what the benchmark library appends behind; a
WHO is "orvo", a peer, or "limit". All repetitions of a name count, from however
many files, and their median is taken. --missed prints the operations that miss
their goal instead of the table.

The exit status is 1 when a goal is missed, and 2 when one cannot be judged: a
goal that matches no benchmark, or a benchmark without the contender that its
goal is about.
"""

import argparse
import fnmatch
import json
import statistics
import sys
from collections import defaultdict
from dataclasses import dataclass

NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}


class Unjudged(Exception):
    """A goal that cannot be judged by what was measured."""


@dataclass(frozen=True)
class Goal:
    operation: str
    size: str
    peer: float | None
    limit: float | None

    def covers(self, operation, size):
        pattern = self.operation.replace("…", "*")
        return self.size in ("any", size) and fnmatch.fnmatchcase(operation, pattern)

    def precision(self):
        """Orders the goals that cover one benchmark: the largest one holds."""
        return len(self.operation.replace("…", "")), self.size != "any"

    def __str__(self):
        ratio = lambda value: "-" if value is None else f"{value:.2f}"
        return f"{ratio(self.peer)} / {ratio(self.limit)}"


def read_goals(path):
    goals = []
    with open(path, encoding="utf-8") as file:
        for line in file:
            if line.strip() and not line.startswith("#"):
                operation, size, peer, limit = (field.strip() for field in line.split("|"))
                ratio = lambda text: None if text == "-" else float(text)
                goals.append(Goal(operation, size, ratio(peer), ratio(limit)))
    return goals


def parse_name(name):
    """Cuts the name of a benchmark into (operation, who, size)."""
    family, operation, who, *rest = name.split("/")
    size = rest[0] if rest and rest[0].isdigit() else "1"
    threads = next((part[8:] for part in rest if part.startswith("threads:")), "1")
    operation = f"{family}/{operation}"
    # Contention is in the name already, and needs more than one thread anyway.
    if threads != "1" and not operation.endswith("_contended"):
        operation += f" on {threads} threads"
    return operation, who, size


def read_times(paths):
    """Returns {(operation, size): {who: median in nanoseconds}}."""
    repetitions = defaultdict(lambda: defaultdict(list))
    for path in paths:
        with open(path, encoding="utf-8") as file:
            runs = json.load(file)["benchmarks"]
        for run in runs:
            if run.get("run_type", "iteration") != "iteration":
                continue
            if run.get("error_occurred"):
                raise Unjudged(f"{run['name']}: {run['error_message']}")
            operation, who, size = parse_name(run["name"])
            # What waits is timed by the clock on the wall, the rest by the processor's.
            own_clock = "/real_time" in run["name"] or "/manual_time" in run["name"]
            clock = "real_time" if own_clock else "cpu_time"
            time = run[clock] * NANOSECONDS[run["time_unit"]]
            repetitions[operation, size][who].append(time)
    return {
        key: {who: statistics.median(times) for who, times in contenders.items()}
        for key, contenders in repetitions.items()
    }


@dataclass
class Row:
    operation: str
    size: str
    orvo: float
    peer: str
    peer_time: float | None
    limit: float | None
    goal: Goal | None
    growth: str = ""

    @staticmethod
    def ratio(time, other):
        # As it is printed, so that what the table says and what it shows agree.
        return None if other is None else round(time / max(other, 1e-3), 2)

    @property
    def peer_ratio(self):
        return self.ratio(self.orvo, self.peer_time)

    @property
    def limit_ratio(self):
        return self.ratio(self.orvo, self.limit)

    @property
    def met(self):
        """Whether the goal is met; None without a goal."""
        if self.goal is None:
            return None
        sides = [
            (ratio, goal)
            for ratio, goal in [(self.peer_ratio, self.goal.peer), (self.limit_ratio, self.goal.limit)]
            if ratio is not None and goal is not None
        ]
        if not sides:
            raise Unjudged(f"{self.operation}/{self.size}: nothing of what its goal is about was measured")
        return any(ratio <= goal for ratio, goal in sides)

    def cells(self):
        number = lambda value: "-" if value is None else f"{value:.2f}"
        return [
            self.operation,
            self.size,
            duration(self.orvo),
            duration(self.peer_time),
            self.peer,
            duration(self.limit),
            number(self.peer_ratio),
            number(self.limit_ratio),
            self.growth,
            str(self.goal) if self.goal else "-",
            {True: "yes", False: "NO", None: "-"}[self.met],
        ]


HEADER = ["operation", "size", "orvo", "best peer", "", "limit", "× peer", "× limit", "growth", "goal", "met"]


def duration(nanoseconds):
    if nanoseconds is None:
        return "-"
    for unit in ("ns", "µs", "ms"):
        if nanoseconds < 999.5:
            return f"{nanoseconds:.3g} {unit}"
        nanoseconds /= 1000
    return f"{nanoseconds:.3g} s"


def make_rows(goals, times):
    rows = []
    for (operation, size), contenders in times.items():
        if "orvo" not in contenders:
            raise Unjudged(f"{operation}/{size}: orvo itself was not measured")
        peers = {who: time for who, time in contenders.items() if who not in ("orvo", "limit")}
        peer = min(peers, key=peers.get, default="")
        goal = max(
            (goal for goal in goals if goal.covers(operation, size)), key=Goal.precision, default=None
        )
        rows.append(
            Row(operation, size, contenders["orvo"], peer, peers.get(peer), contenders.get("limit"), goal)
        )
    rows.sort(key=lambda row: (order(goals, row), row.operation, int(row.size)))
    add_growth(rows)
    return rows


def order(goals, row):
    """Rows stand in the order of the goals' families."""
    families = [goal.operation.split("/")[0] for goal in goals]
    family = row.operation.split("/")[0]
    return families.index(family) if family in families else len(families)


def add_growth(rows):
    """Says on the row of the largest size how the time grew from the smallest."""
    by_operation = defaultdict(list)
    for row in rows:
        by_operation[row.operation].append(row)
    for same in by_operation.values():
        if len(same) > 1:
            same[-1].growth = f"{same[-1].orvo / max(same[0].orvo, 1e-3):.3g}"


def require_all_goals(goals, times):
    """Every goal of a measured family is about at least one benchmark."""
    families = {operation.split("/")[0] for operation, _ in times}
    for goal in goals:
        if goal.operation.split("/")[0] in families and not any(goal.covers(*key) for key in times):
            raise Unjudged(f"no benchmark for the goal of {goal.operation}, size {goal.size}")


def print_columns(rows):
    table = [HEADER] + [row.cells() for row in rows]
    widths = [max(len(line[i]) for line in table) for i in range(len(HEADER))]
    left = (HEADER.index("operation"), HEADER.index(""), HEADER.index("goal"))
    for line in table:
        cells = [
            cell.ljust(width) if i in left else cell.rjust(width)
            for i, (cell, width) in enumerate(zip(line, widths))
        ]
        print("  ".join(cells).rstrip())


def print_markdown(rows):
    family = None
    for row in rows:
        if row.operation.split("/")[0] != family:
            family = row.operation.split("/")[0]
            print(f"\n### {family}\n")
            print("| " + " | ".join(HEADER) + " |")
            print("|---|--:|--:|--:|---|--:|--:|--:|--:|---|---|")
        print("| " + " | ".join(row.cells()) + " |")


def main():
    parser = argparse.ArgumentParser(description="Sets measured times against the goals.")
    parser.add_argument("--markdown", action="store_true", help="print a table for each family")
    parser.add_argument("--missed", action="store_true", help="print the operations that miss their goal")
    parser.add_argument("goals")
    parser.add_argument("reports", nargs="+")
    arguments = parser.parse_args()

    goals = read_goals(arguments.goals)
    times = read_times(arguments.reports)
    rows = make_rows(goals, times)
    missed = [row for row in rows if row.met is False]
    if arguments.missed:
        print("\n".join(sorted({row.operation for row in missed})))
    elif arguments.markdown:
        print_markdown(rows)
    else:
        print_columns(rows)
        judged = sum(row.met is not None for row in rows)
        print(f"\n{judged - len(missed)} of {judged} goals met")
    require_all_goals(goals, times)
    return 1 if missed else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Unjudged as error:
        print(f"table.py: {error}", file=sys.stderr)
        sys.exit(2)
