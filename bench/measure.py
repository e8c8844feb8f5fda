#!/usr/bin/python3
"""Measure what the daemon costs and print a table a point; the last line names the floor ratio (README.md)."""

import argparse
import concurrent.futures
import os
import subprocess
import sys
import tempfile
import threading
import time

import profiles
import rival
import running
import scaled

STUDIO = "platform/virtual/scenarios/studio-52.json"
LARGE = "platform/virtual/scenarios/large-8.json"
GOAL_FLOOR = 1.25
GOAL_GROWTH = 2.2  # of a doubling; what sorts grows a little faster than its rows
GOAL_MIB = {52: 16, 416: 48}
GOAL_RIVAL = 20
PORTS_OF_UNIT = 52
STARTS = 5


PROGRESS_SECONDS = 4
doing = "the first profiles"
starred = False


def heading(text):
    table_end()
    print(f"\n{text}", flush=True)


def row_print(row, misses):
    """A row of a table, with a star behind it when it misses the table's goal."""
    global starred
    starred = starred or misses
    print(row + (" *" if misses else ""), flush=True)


def table_end():
    global starred
    if starred:
        print("* misses the goal; bench/README.md says why, where that is known")
    starred = False


def progress_say():
    """Every few seconds, to standard error: what is being measured."""
    began = time.monotonic()
    while True:
        time.sleep(PROGRESS_SECONDS)
        print(f"bench: {time.monotonic() - began:.0f} s, measuring {doing}", file=sys.stderr, flush=True)


def measuring(what):
    global doing
    doing = what


def floors_print(rows, where):
    heading(f"Instructions beside the floor, {where} (goal {GOAL_FLOOR})")
    print(f"{'document':28} {'instructions':>13} {'floor':>13} {'ratio':>7}   {'(switch)':>13}")
    for row in rows:
        ratio = f"{row.ratio():7.2f}" if row.floor else "      -"
        row_print(f"{row.name:28} {row.cost:13,} {row.floor:13,} {ratio}   {row.switch:13,}",
                  bool(row.floor) and row.ratio() > GOAL_FLOOR)


def growth_print(by_units):
    heading(f"Thousands of instructions by ports, and the factor of each doubling (goal: none above {GOAL_GROWTH})")
    units = sorted(by_units)
    print(f"{'document':28}" + "".join(f"{unit * PORTS_OF_UNIT:>10}" for unit in units) + "   factors")
    tables = [{row.name: row.cost for row in by_units[unit]} for unit in units]
    for name in tables[0]:
        costs = [table[name] for table in tables]
        factors = [after / before for before, after in zip(costs, costs[1:])]
        row_print(f"{name:28}" + "".join(f"{cost // 1000:10,}" for cost in costs) + "   " +
                  " ".join(f"{factor:.2f}" for factor in factors), max(factors) > GOAL_GROWTH)


def counts_print(build, scenarios):
    heading("Platform calls, show commands, bytes of their texts, allocations, processes started: " +
            " | ".join(f"{ports} ports" for ports in scenarios))
    tables = []
    for scenario in scenarios.values():
        measuring("calls and commands")
        run = subprocess.run([f"{build}/bench/counts", scenario], stdout=subprocess.PIPE, text=True, check=True)
        tables.append({name: counts for name, *counts in map(str.split, run.stdout.splitlines())})
    titles = "".join(f"{title:>8}" for title in ("calls", "cmds", "bytes", "allocs", "procs"))
    print(f"{'document':24}{titles}  |{titles}")
    for name in tables[0]:
        print(f"{name:24}" + "  |".join("".join(f"{int(count):8}" for count in table[name]) for table in tables))


def daemon_print(build, source, scenarios):
    heading("The daemon: memory at its peak; milliseconds from exec, medians")
    print(f"{'ports':>5} {'peak MiB':>9} {'goal':>5} {'init_complete':>14} {'end of cycle 1':>15}")
    for ports, scenario in scenarios.items():
        measuring(f"the daemon with {ports} ports")
        peak = running.peak_mib(build, source, scenario)
        first, cycle = running.start_ms(build, source, scenario, STARTS)
        row_print(f"{ports:5} {peak:9.1f} {GOAL_MIB[ports]:5} {first:14.0f} {cycle:15.0f}", peak > GOAL_MIB[ports])


def rival_print(build, source, scenarios):
    heading(f"{rival.DOCUMENT} from its texts to its record, beside textfsm and json.dumps on the same texts "
            f"(processor ms, medians; goal {GOAL_RIVAL} times)")
    print(f"{'ports':>5} {'cmds':>5} {'bytes':>8} {'textfsm':>8} {'here':>8} {'times':>7} {'files+store':>12}")
    for ports, scenario in scenarios.items():
        measuring(f"textfsm with {ports} ports")
        commands, size, there, here, handling = rival.compared(build, source, scenario)
        row_print(f"{ports:5} {commands:5} {size:8} {there / 1000:8.2f} {here / 1000:8.2f} {there / here:7.1f} "
                  f"{handling / 1000:12.2f}", there / here < GOAL_RIVAL)


def contention_print(path):
    heading("Read times beside writers (./dev proof contention leaves them)")
    if os.path.exists(path):
        with open(path, encoding="utf-8") as file:
            print(file.read().rstrip())
    else:
        print(f"no {path}")


def everything(build, source):
    studio, large = f"{source}/{STUDIO}", f"{source}/{LARGE}"
    program = f"{build}/bench/bench"
    with tempfile.TemporaryDirectory() as folder, concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        scenarios = {8: large}
        for units in (4, 2, 1):
            scenarios[units] = f"{folder}/{units}.json"
            with open(scenarios[units], "w", encoding="utf-8") as file:
                file.write(scaled.scaled(large, units))
        jobs = {units: pool.submit(profiles.costs, program, path) for units, path in scenarios.items()}
        studio_job = pool.submit(profiles.costs, program, studio)
        profiling = [*jobs.values(), studio_job]
        measuring(f"profiles, 0 of {len(profiling)} are done")
        for done, _ in enumerate(concurrent.futures.as_completed(profiling), 1):
            measuring(f"profiles, {done} of {len(profiling)} are done")
        by_units = {units: job.result() for units, job in jobs.items()}
        studio_rows = studio_job.result()

    # What takes time comes when nothing else runs.
    by_ports = {PORTS_OF_UNIT: studio, 8 * PORTS_OF_UNIT: large}
    growth_print(by_units)
    counts_print(build, by_ports)
    daemon_print(build, source, by_ports)
    rival_print(build, source, by_ports)
    contention_print(f"{os.path.dirname(build)}/contention.txt")
    floors_print(by_units[8], "large-8: 416 ports, 512 VLANs, 16,384 addresses")
    floors_print(studio_rows, "studio-52: 52 ports")
    return {"52 ports": studio_rows[0], "416 ports": by_units[8][0]}


def main():
    parser = argparse.ArgumentParser(description="what the daemon costs, a table a point")
    parser.add_argument("--build", required=True, help="build folder, for example build/release")
    parser.add_argument("--scenario", help="only the floors, on this scenario")
    parser.add_argument("names", nargs="*", help="only the floors of these documents")
    args = parser.parse_args()
    build = os.path.abspath(args.build)
    source = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
    threading.Thread(target=progress_say, daemon=True).start()

    if args.scenario or args.names:
        scenario = args.scenario or f"{source}/{STUDIO}"
        rows = profiles.costs(f"{build}/bench/bench", scenario, args.names)
        floors_print(rows, os.path.basename(scenario))
        cycles = {os.path.basename(scenario): rows[0]}
    else:
        cycles = everything(build, source)
    table_end()
    ratios = ", ".join(f"{row.ratio():.2f} ({where})" for where, row in cycles.items())
    print(f"\nfloor ratio of a full cycle: {ratios}")


if __name__ == "__main__":
    main()
