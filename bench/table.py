#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs the benchmarks of a build and prints one table: each figure beside the reference of the same run.

    bench/table.py BUILD_DIRECTORY [--product] [--rounds N] [--check]

Called by scripts/bench, which builds them first.
"""

import argparse
import collections
import json
import math
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
NANOSECONDS = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
LISTS = ("dense", "clustered", "scattered")
# What is timed, and how many request cycles it is.
CYCLES = {"read of 125 words": 1, "read of 1000 bits": 1, "write of a word": 1, "write of a bit in a word": 2}
ORDERS = ("sorted", "reversed", "random")
SPREADS = ("one area", "all areas", "ten stations")

# ratio = measured / reference. goal: "<= 6", ">= 0.9", "> 1", "= 1" or None
Row = collections.namedtuple("Row", "name measured reference ratio goal")


def say(text):
    print(f"bench: {text}", file=sys.stderr, flush=True)


def run(command):
    """Returns what a program prints; its messages go through."""
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"bench: {command[0]} failed with status {done.returncode}")
    return done.stdout


class Figures:
    """What one program of Google Benchmark measured: the shortest processor time of all repetitions."""

    def __init__(self, program, rounds):
        say(f"{program.name} ({rounds} repetitions, interleaved)")
        text = run([program, f"--benchmark_repetitions={rounds}", "--benchmark_min_time=0.05",
                    "--benchmark_enable_random_interleaving=true", "--benchmark_format=json"])
        self.times = {}
        self.allocations = {}
        for figure in json.loads(text)["benchmarks"]:
            if figure.get("error_occurred"):
                sys.exit(f"bench: {figure['name']}: {figure['error_message']}")
            if figure["run_type"] == "iteration":
                self._take(figure)

    def _take(self, figure):
        name = figure["run_name"]
        time = figure["cpu_time"] * NANOSECONDS[figure["time_unit"]]
        self.times[name] = min(time, self.times.get(name, time))
        self.allocations[name] = figure.get("allocations", 0)

    def row(self, name, who, reference, goal, label=None, size=""):
        measured = self.times[f"{name}/{who}{size}"]
        against = self.times[f"{name}/{reference}{size}"]
        return Row(label or f"{name}, to {reference}", time_text(measured), time_text(against),
                   measured / against, goal)


def time_text(nanoseconds):
    for unit, size in (("ms", 1e6), ("us", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:.2f} {unit}"
    return f"{nanoseconds:.0f} ns"


def cycle_rows(figures, product):
    goals = ("<= 6", "<= 1.15", "<= 0.05", "<= 4") if product else (None,) * 4
    for name, cycles in CYCLES.items():
        yield figures.row(name, "driver", "floor", goals[0])
        yield figures.row(name, "driver", "records", goals[1])
        yield figures.row(name, "driver", "Qt SerialBus", goals[2])
        mine = round(figures.allocations[f"{name}/driver"]) / cycles
        other = round(figures.allocations[f"{name}/Qt SerialBus"]) / cycles
        yield Row(f"{name}, allocations a cycle (Qt SerialBus's beside)", f"{mine:g}", f"{other:g}", mine, goals[3])


def rebuild_rows(figures):
    for size in (1000, 10000, 50000):
        for spread in SPREADS:
            for order in ORDERS:
                name = f"rebuild of {size}, {order}, {spread}"
                yield figures.row(name, "driver", "plain structs", "<= 4" if size == 50000 else None, name)
    growth = (50000 * math.log(50000)) / (1000 * math.log(1000))
    for order in ORDERS:
        for who, goal in (("driver", "<= 1"), ("plain structs", None)):
            small, large = (figures.times[f"rebuild of {size}, {order}, one area/{who}"] for size in (1000, 50000))
            yield Row(f"growth from 1000 to 50000, {order}, {who}, to n log n", f"{large / small:.0f} x",
                      f"{growth:.0f} x", large / small / growth, goal)


def register_rows(figures):
    for call in ("GetRegisterData", "SetRegisterData"):
        for words in (1, 100):
            yield figures.row(call, "driver", "text and bytes", None, f"{call}, {words} words",
                              f"/words:{words}")
    name = "AddListWriteVar, list full"
    yield figures.row(name, "driver", "plain structs", None, name)


def store_rows(figures):
    for size in (1000, 10000):
        yield figures.row("filing 100 words", "driver", "plain structs", "<= 1.3",
                          f"filing 100 words, {size} in the store", f"/store:{size}")


def lines_of(text):
    return [line.split("\t") for line in text.splitlines()]


def request_rows(build, folder):
    say("requests_per_refresh")
    lists = [ROOT / "examples" / "thousand.csv"]
    for name in LISTS:
        path = folder / f"{name}.csv"
        path.write_text(run([ROOT / "examples" / "make-list", name]))
        lists.append(path)
    lines = lines_of(run([build / "bench" / "requests_per_refresh", *lists]))[1:]
    requests = {(line[0], line[1]): int(line[2]) for line in lines}
    for name, rule in requests:
        if rule.startswith("driver"):
            continue
        mine = requests[name, "driver under the panel"]
        best = rule == "best possible"
        yield Row(f"requests of a refresh, {name}, to {rule}", str(mine), str(requests[name, rule]),
                  mine / requests[name, rule], "= 1" if best else "<= 1")


WHOLE_WAY_GOALS = {
    "bare socket": ">= 0.9",
    "libmodbus, each variable by itself": ">= 15",
    "libmodbus, the same blocks": "> 1",
    "Qt SerialBus, the same blocks": "> 1",
}


def whole_way(build, rounds):
    """Returns rows, and lines that stand for themselves."""
    say(f"whole_way_bench ({rounds} rounds)")
    lines = lines_of(run([build / "bench" / "whole_way_bench", "--rounds", rounds]))
    rates = [line for line in lines if line[0] == "refreshes per second"]
    rows = [Row(f"refreshes per second, to {name}", rates[0][2], rate, float(ratio), WHOLE_WAY_GOALS.get(name))
            for _, name, rate, ratio in rates[1:]]
    return rows, [f"{', '.join(line[:-1])}: {line[-1]}" for line in lines if line not in rates]


def server_rows(build, rounds):
    say(f"server_bench ({rounds} rounds)")
    for what, clients, mine, libmodbus, ratio in lines_of(run([build / "bench" / "server_bench", "--rounds", rounds])):
        name = f"plcsim, {clients} clients, {what}, to libmodbus's server"
        yield Row(name, mine, libmodbus, float(ratio), ">= 1" if what == "requests per second" else None)


def parts_rows(build):
    say("parts_bench")
    for _, parts, shared, one, ratio in lines_of(run([build / "bench" / "parts_bench"])):
        yield Row(f"refreshes per second, replies take 5 ms, {parts}, to one", shared, one, float(ratio), ">= 3.8")


class Controller:
    """A simulated controller in a process of its own, as long as the block lasts; gives its port."""

    def __init__(self, program):
        self.program = program

    def __enter__(self):
        self.process = subprocess.Popen([str(self.program), "--quiet", "--port", "0"], stdout=subprocess.PIPE, text=True)
        return self.process.stdout.readline().strip().rpartition(":")[2]

    def __exit__(self, *_):
        self.process.terminate()
        self.process.communicate()


def counted(command, how):
    """Returns what a program prints, and the instructions that it ran outside the system; None where nobody counts."""
    with tempfile.NamedTemporaryFile(mode="r", suffix=".counts") as counts:
        if how == "perf":
            text = run(["perf", "stat", "-x", ",", "-e", "instructions:u", "-o", counts.name, *command])
            found = re.search(r"^(\d+),", counts.read(), re.MULTILINE)
        else:
            text = run(["valgrind", "--quiet", "--tool=callgrind", f"--callgrind-out-file={counts.name}", *command])
            found = re.search(r"^(?:summary|totals): (\d+)", counts.read(), re.MULTILINE)
    return text, int(found[1]) if found else None


def counter():
    """Returns who counts instructions here: the processor, asked by perf, where it is allowed; else callgrind."""
    if shutil.which("perf") and counted(["true"], "perf")[1] is not None:
        return "perf"
    return "callgrind" if shutil.which("valgrind") else None


def instruction_notes(build):
    how = counter()
    if how is None:
        return ["instructions per request: not counted, for there is neither perf with counters nor valgrind"]
    say(f"instruction_bench (counted by {how})")
    few, many = 20, 120
    costs = {}
    with Controller(build / "plcsim") as port:
        for part in ("panel", "driver", "link"):
            command = [build / "bench" / "instruction_bench", part]
            _, before = counted([*command, few, port], how)
            text, after = counted([*command, many, port], how)
            costs[part] = (after - before) / (many - few) / int(text)
    rest = costs["panel"] - costs["driver"] - costs["link"]
    return [f"instructions per request outside the system, by {how}: {costs['panel']:.0f}, of these the driver "
            f"{costs['driver']:.0f}, the link {costs['link']:.0f}, the panel's bookkeeping {rest:.0f}"]


def is_met(row):
    operator, value = row.goal.split()
    ratio, value = row.ratio, float(value)
    return {"<=": ratio <= value, ">=": ratio >= value, ">": ratio > value, "=": ratio == value}[operator]


def print_table(rows):
    width = max(len(row.name) for row in rows)
    print(f"{'':{width}}  {'measured':>10}  {'reference':>10}  {'ratio':>7}  {'goal':>7}  met")
    for row in rows:
        met = "" if row.goal is None else "yes" if is_met(row) else "NO"
        ratio = f"{row.ratio:.3f}" if row.ratio < 0.1 else f"{row.ratio:.2f}"
        print(f"{row.name:{width}}  {row.measured:>10}  {row.reference:>10}  {ratio:>7}  {row.goal or '':>7}  {met}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("build", type=pathlib.Path, help="build directory")
    parser.add_argument("--product", action="store_true", help="the 32-bit build, for which all goals are set")
    parser.add_argument("--rounds", type=int, default=9, help="repetitions of everything that is timed")
    parser.add_argument("--check", action="store_true", help="exit with status 1 when a goal is not met")
    options = parser.parse_args()
    programs = options.build / "bench"
    rows = list(cycle_rows(Figures(programs / "cycle_bench", options.rounds), options.product))
    rows += rebuild_rows(Figures(programs / "rebuild_bench", options.rounds))
    rows += register_rows(Figures(programs / "register_bench", options.rounds))
    rows += store_rows(Figures(programs / "station_store_bench", options.rounds))
    rows += request_rows(options.build, programs)
    loopback, notes = whole_way(options.build, 3 * options.rounds)  # with fewer, luck decides the last hundredth
    loopback += server_rows(options.build, options.rounds)
    loopback += parts_rows(options.build)
    notes += instruction_notes(options.build)
    print_table(rows + loopback)
    print("\nOver loopback, examples/thousand.csv:")
    print("\n".join("  " + note for note in notes))
    failed = [row for row in rows + loopback if row.goal and not is_met(row)]
    return 1 if options.check and failed else 0


if __name__ == "__main__":
    sys.exit(main())
