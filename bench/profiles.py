"""Instructions of a full cycle and of single documents, each beside its floor.

Runs the bench program once under callgrind, which writes a profile for each measured stretch, and takes out of each what
the virtual switch spent: the inclusive cost of every call from elsewhere into its library.
"""

import glob
import os
import re
import subprocess
import tempfile
from typing import NamedTuple

SWITCH = ("libopenclt.so", "libproc_libs.so")
NAMED = re.compile(r"^(c?ob|c?fn)=(\(\d+\))?\s?(.*)$")


class Cost(NamedTuple):
    name: str
    cost: int
    switch: int
    floor: int

    def ratio(self):
        return self.cost / self.floor if self.floor else None


def is_switch(path):
    return os.path.basename(path).split(".so")[0] + ".so" in SWITCH


class Profile:
    """Reads one profile; names are given once and then by number."""

    def __init__(self):
        self.objects = {}

    def object_name(self, number, name):
        if number and name:
            self.objects[number] = name
        return name or self.objects.get(number, "")

    def read(self, path):
        """(instructions in total, those of the virtual switch)."""
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


def costs(program, scenario, names=()):
    """Rows of Cost in the order of measuring: "cycle", then the documents (default: all)."""
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, "profile")
        command = ["valgrind", "--tool=callgrind", "--quiet", f"--callgrind-out-file={out}", "--instr-atstart=no",
                   "--toggle-collect=benchMeasured", "--dump-after=benchMeasured", program, scenario, *names]
        # bound at start, so that no call hides behind the loader
        run = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True,
                             env={**os.environ, "LD_BIND_NOW": "1"})
        labels = [line.split() for line in run.stdout.splitlines()]
        files = sorted(glob.glob(out + ".[0-9]*"), key=lambda path: int(path.rsplit(".", 1)[1]))
        if len(files) < len(labels):
            raise RuntimeError(f"{len(labels)} stretches, {len(files)} profiles")
        found = {}
        for (name, what), path in zip(labels, files):
            total, switch = Profile().read(path)
            row = found.setdefault(name, {})
            row[what] = total - switch
            if what == "cost":
                row["switch"] = switch
    rows = [Cost(name, row["cost"], row["switch"], row["floor"]) for name, row in found.items()]
    if not rows or rows[0].name != "cycle" or not rows[0].floor:
        raise RuntimeError("no cycle was measured")
    return rows
