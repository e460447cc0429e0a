"""Runs programs and measures what they take."""
import os
import statistics
import subprocess
import time
from dataclasses import dataclass

MEGABYTE = 1e6


class Failed(Exception):
    """A program did not do what it was run for; says which and how."""


@dataclass
class Cost:
    wall: float  # seconds
    cpu: float  # seconds, of all threads and processes, in user and system mode
    peak: float  # bytes of memory: the sum over the processes that run at the same time


def run_pipeline(commands, environment, log):
    """Runs commands whose outputs are each other's inputs; what they took."""
    running, feed, begin = [], subprocess.DEVNULL, time.monotonic()
    for number, command in enumerate(commands):
        last = number == len(commands) - 1
        process = subprocess.Popen(command, stdin=feed, stdout=log if last else subprocess.PIPE,
                                   stderr=log, env=environment)
        if feed != subprocess.DEVNULL:
            feed.close()
        feed = process.stdout
        running.append(process)
    cost = Cost(0.0, 0.0, 0.0)
    for process, command in zip(running, commands):
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        cost.cpu += usage.ru_utime + usage.ru_stime
        cost.peak += usage.ru_maxrss * 1024
        if process.returncode != 0:
            raise Failed(f"{os.path.basename(command[0])} ended with {process.returncode}")
    cost.wall = time.monotonic() - begin
    return cost


def run(pipelines, environment, log_path):
    """Runs pipelines one after the other; what all of them took."""
    with open(log_path, "ab") as log:
        costs = [run_pipeline(commands, environment, log) for commands in pipelines]
    return Cost(sum(cost.wall for cost in costs), sum(cost.cpu for cost in costs),
                max(cost.peak for cost in costs))


def median(costs):
    """Of each figure by itself."""
    return Cost(*(statistics.median(getattr(cost, name) for cost in costs)
                  for name in ("wall", "cpu", "peak")))


def less(whole, part, times):
    """What one of `times` repetitions took that `whole` has more than `part`."""
    return Cost((whole.wall - part.wall) / times, (whole.cpu - part.cpu) / times, whole.peak)
