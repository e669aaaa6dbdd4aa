"""Whole processes, timed."""
import contextlib
import os
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass


@dataclass
class Run:
    seconds: float
    processor_seconds: float
    peak_mb: float
    text: str


def run(program, command, **environment):
    """Runs the program under the name that the command begins with; raises when it fails."""
    with tempfile.TemporaryFile("w+") as output:
        start = time.perf_counter()
        process = subprocess.Popen(
            list(map(str, command)), executable=program, stdin=subprocess.DEVNULL, stdout=output,
            stderr=subprocess.STDOUT, env={**os.environ, **environment})
        _, status, usage = os.wait4(process.pid, 0)
        seconds = time.perf_counter() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        output.seek(0)
        text = output.read()
    if process.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} failed:\n{text}")
    return Run(seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024, text)


# Ends by itself when its parent is gone, even if that was killed outright.
BUSY_LOOP = """import os
parent = os.getppid()
while os.getppid() == parent:
    for _ in range(100000): pass
"""


@contextlib.contextmanager
def busy_loops(count):
    loops = [subprocess.Popen([sys.executable, "-c", BUSY_LOOP]) for _ in range(count)]
    try:
        yield
    finally:
        for loop in loops:
            loop.kill()
        for loop in loops:
            loop.wait()
