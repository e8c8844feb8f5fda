"""What the real daemon takes: memory at its peak, and the time from exec to its first documents."""

import contextlib
import os
import re
import shutil
import sqlite3
import statistics
import subprocess
import sys
import tempfile
import time

LAST_OF_CYCLE = "bufferedLog"  # written by the last step of a cycle that writes
LIMIT = 60                     # seconds for anything to come
CYCLE_TICKS = 30


class Daemon:
    """A running daemon on a fresh root, with the whole vendor database that a switch has."""

    def __init__(self, build, source, scenario, tick_ms):
        self.root = tempfile.mkdtemp(prefix="dm_", dir="/tmp")
        subprocess.run([sys.executable, f"{source}/tools/seed.py", "--scenario", scenario, "--cache",
                        os.path.dirname(build), self.root], check=True, stdout=subprocess.DEVNULL)
        variables = {**os.environ, "VSWITCH_SCENARIO": scenario, "LD_LIBRARY_PATH": f"{build}/platform"}
        self.begun = time.monotonic()
        self.process = subprocess.Popen([f"{build}/src/devmgr", "--root", self.root, "--tick-ms", str(tick_ms)],
                                        env=variables, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)

    def stored_after(self, name):
        """Seconds from exec until the record is there. The change list is watched first: reading it takes no lock."""
        changes = f"{self.root}/tmp/rest_db_api_delta.txt"
        while time.monotonic() < self.begun + LIMIT:
            with contextlib.suppress(FileNotFoundError, sqlite3.Error):
                with open(changes, encoding="utf-8") as lines:
                    announced = name in lines.read().split()
                if announced and self.has(name):
                    return time.monotonic() - self.begun
            time.sleep(0.0005)
        raise RuntimeError(f"no {name} within {LIMIT} seconds")

    def has(self, name):
        with contextlib.closing(sqlite3.connect(f"{self.root}/tmp/restapi_db", timeout=3)) as cache:
            return cache.execute("SELECT 1 FROM restapi_db WHERE api_name = ?", (name,)).fetchone() is not None

    def peak_kib(self):
        with open(f"/proc/{self.process.pid}/status", encoding="utf-8") as status:
            return int(re.search(r"VmHWM:\s+(\d+)", status.read()).group(1))

    def end(self):
        self.process.terminate()
        self.process.wait()
        shutil.rmtree(self.root)


@contextlib.contextmanager
def daemon_running(*arguments):
    daemon = Daemon(*arguments)
    try:
        yield daemon
    finally:
        daemon.end()


def peak_mib(build, source, scenario, cycles=7, tick_ms=20):
    """The most memory that the daemon held, after so many cycles: every item of the schedule has run by the seventh."""
    with daemon_running(build, source, scenario, tick_ms) as daemon:
        daemon.stored_after(LAST_OF_CYCLE)
        time.sleep(cycles * CYCLE_TICKS * tick_ms / 1000 + 1)
        if daemon.process.poll() is not None:
            raise RuntimeError(f"the daemon ended with {daemon.process.returncode}")
        return daemon.peak_kib() / 1024


def start_ms(build, source, scenario, runs):
    """Medians of milliseconds from exec: to "init_complete", and to the end of the first cycle."""
    taken = []
    for _ in range(runs):
        with daemon_running(build, source, scenario, 1000) as daemon:
            taken.append((daemon.stored_after("init_complete"), daemon.stored_after(LAST_OF_CYCLE)))
    return [1000 * statistics.median(column) for column in zip(*taken)]
