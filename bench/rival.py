"""The show texts of one document through python3-textfsm and json.dumps, beside the document made here of the same."""

import glob
import json
import os
import statistics
import subprocess
import tempfile
import time
import warnings

DOCUMENT = "swcfg_ports_status"  # the one that reads most text: eleven commands
RUNS = 15


def templates(folder):
    """Compiled once, by the command's file name."""
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")  # of the package's own source
        import textfsm  # pylint: disable=import-outside-toplevel
    found = {}
    for path in glob.glob(f"{folder}/*.textfsm"):
        with open(path, encoding="utf-8") as file:
            found[os.path.basename(path)[:-len(".textfsm")]] = textfsm.TextFSM(file)
    return found


def parsed(template, text):
    template.Reset()
    return [dict(zip(template.header, row)) for row in template.ParseText(text)]


def compared(build, source, scenario):
    """(commands, bytes, microseconds there, here, and here for files and store alone): medians of processor time."""
    with tempfile.TemporaryDirectory() as folder:
        run = subprocess.run([f"{build}/bench/texts", scenario, folder, DOCUMENT], stdout=subprocess.PIPE, text=True,
                             check=True)
        whole, handling, *commands = run.stdout.strip().split("|")
        here = [statistics.median(map(float, figures.split())) for figures in (whole, handling)]
        known = templates(f"{source}/bench/textfsm")
        work = []
        for command in commands:
            name = command.replace(" ", "_")
            with open(f"{folder}/{name}", encoding="utf-8") as file:
                work.append((known[name], file.read()))
    there = []
    for _ in range(RUNS):
        begin = time.process_time()
        for template, text in work:
            json.dumps(parsed(template, text))
        there.append(1e6 * (time.process_time() - begin))
    return len(work), sum(len(text) for _, text in work), statistics.median(there), *here
