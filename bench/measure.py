#!/usr/bin/python3
"""Count the instructions of a full cycle and of single documents, each beside its floor.

Runs the bench program once under callgrind, which writes a profile for each measured stretch, and takes out of each what
the virtual switch spent: the inclusive cost of every call from elsewhere into its library.
"""

import argparse
import glob
import os
import re
import subprocess
import sys
import tempfile

SWITCH = ("libopenclt.so", "libproc_libs.so")
NAMED = re.compile(r"^(c?ob|c?fn)=(\(\d+\))?\s?(.*)$")


def is_switch(path):
    return os.path.basename(path).split(".so")[0] + ".so" in SWITCH


class Profiles:
    """Reads profiles; names are given once and then by number, within a profile."""

    def __init__(self):
        self.objects = {}

    def object_name(self, number, name):
        if number and name:
            self.objects[number] = name
        return name or self.objects.get(number, "")

    def read(self, path):
        """(instructions in total, those of the virtual switch)."""
        self.objects = {}
        total = switch = 0
        current = called = ""
        after_calls = False
        with open(path, encoding="utf-8", errors="replace") as lines:
            for line in lines:
                named = NAMED.match(line)
                if named:
                    kind, number, name = named.groups()
                    if kind == "ob":
                        current = called = self.object_name(number, name.strip())
                    elif kind == "cob":
                        called = self.object_name(number, name.strip())
                elif line.startswith("calls="):
                    after_calls = True
                elif line[:1] in "+-*0123456789" and len(line) > 1:
                    cost = int(line.split()[1])
                    if not after_calls:
                        total += cost
                    else:
                        if is_switch(called) and not is_switch(current):
                            switch += cost
                        called = current
                        after_calls = False
        return total, switch


def measure(program, scenario, names):
    """Rows (name, cost, of it the switch's, floor) in the order of measuring."""
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, "profile")
        command = ["valgrind", "--tool=callgrind", "--quiet", f"--callgrind-out-file={out}",
                   "--toggle-collect=benchMeasured", "--dump-after=benchMeasured", program, scenario, *names]
        # bound at start, so that no call hides behind the loader
        run = subprocess.run(command, stdout=subprocess.PIPE, text=True, env={**os.environ, "LD_BIND_NOW": "1"})
        if run.returncode != 0:
            sys.exit(f"measure.py: {program} ended with {run.returncode}")
        labels = [line.split() for line in run.stdout.splitlines()]
        profiles = sorted(glob.glob(out + ".[0-9]*"), key=lambda path: int(path.rsplit(".", 1)[1]))
        if len(profiles) < len(labels):
            sys.exit(f"measure.py: {len(labels)} stretches, {len(profiles)} profiles")
        found = {}
        for (name, what), path in zip(labels, profiles):
            total, switch = Profiles().read(path)
            row = found.setdefault(name, {})
            row[what] = total - switch
            if what == "cost":
                row["switch"] = switch
        return [(name, row["cost"], row["switch"], row["floor"]) for name, row in found.items()]


def main():
    parser = argparse.ArgumentParser(description="instructions of a cycle and of documents beside their floors")
    parser.add_argument("program")
    parser.add_argument("scenario")
    parser.add_argument("names", nargs="*", help="documents; default: all")
    args = parser.parse_args()

    rows = measure(args.program, args.scenario, args.names)
    print(f"{'document':28} {'instructions':>13} {'floor':>13} {'ratio':>7} {'(switch)':>13}")
    for name, cost, switch, floor in rows:
        ratio = f"{cost / floor:7.2f}" if floor else "      -"
        print(f"{name:28} {cost:13,} {floor:13,} {ratio} {switch:13,}")
    name, cost, _, floor = rows[0]
    if name != "cycle" or not floor:
        sys.exit("measure.py: no cycle was measured")
    print(f"floor ratio of a full cycle: {cost / floor:.2f}")


if __name__ == "__main__":
    main()
