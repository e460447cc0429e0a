#!/usr/bin/python3
"""The ring of faults: a work on a small library, once for each point at which the program changes a file;
there the call fails, the process is killed, or power is cut. Afterwards the library must be sound, each
photo as before or as it is to be, and a second run must finish the work.

fault_ring.py CORVANE_CLI SHIM [--work WORK] [--every K] [--each-call KIND] [--all] [--jobs N]
              [--kind KIND [--at N]] [--librarycheck FILE]"""

import argparse
import collections
import importlib.util
import multiprocessing
import os
import shutil
import signal
import sys
import tempfile
import time
import traceback
from pathlib import Path

sys.dont_write_bytecode = True  # nothing is left among the sources

from ring_slot import ROOTS, Slot
from walk import FAILURES, KINDS, Walk
from works import WORKS

SHOWN = 8  # problems of a trial
ROOM = 256 * 1024 * 1024  # bytes
TRIALS_BETWEEN_LINES = 500  # of progress


def load_librarycheck(path):
    if not path or not Path(path).is_file():
        return None
    specification = importlib.util.spec_from_file_location("librarycheck", path)
    module = importlib.util.module_from_spec(specification)
    specification.loader.exec_module(module)
    return module


def walk_share(share, options, folder, results):
    try:
        walk = Walk(Slot(folder, options.corvane_cli, options.shim), WORKS[options.work](),
                    load_librarycheck(options.librarycheck))
        kinds = [options.kind] if options.kind else KINDS
        trials = walk.trials(kinds, options.all or options.at)
        if share == 0:
            results.put(("points", len(walk.points), len(trials)))
        trials = trials[options.offset::options.every]
        if options.each_call:
            trials += walk.first_of_each_call(options.each_call)
        if options.at:
            trials = [trial for trial in trials if trial[1] == options.at]
        first, end = (len(trials) * part // options.jobs for part in (share, share + 1))
        for kind, number in trials[first:end]:  # in a row: what they leave is alike
            results.put(("trial", kind, number, walk.attempt(kind, number), walk.points[number - 1], walk.told))
        results.put(("judged", len(walk.recovered), len(walk.judged)))
    except BaseException:
        results.put(("broken", traceback.format_exc()))
    results.put(("end",))


def describe(kind, point):
    return f"{kind} at point {point.number}, {point.call} {point.path.split('/disk/', 1)[-1]}"


def collect(results, jobs, options):
    walked, failed, recovered, judged = collections.Counter(), 0, 0, 0
    running, broken = jobs, False
    told = open(options.told, "w") if options.told else None
    while running:
        what, *result = results.get()
        if what == "end":
            running -= 1
        elif what == "broken":
            print(result[0], flush=True)
            broken = True
        elif what == "judged":
            recovered += result[0]
            judged += result[1]
        elif what == "points":
            print(f"{result[0]} points, {result[1]} trials of them", flush=True)
        else:
            kind, _, problems, point, said = result
            walked[kind if problems is not None else "the same as before"] += 1
            if told:
                told.write(f"{describe(kind, point)}: {said}\n")
            if problems:
                failed += 1
                more = [f"and {len(problems) - SHOWN} more"] if len(problems) > SHOWN else []
                print(describe(kind, point), *problems[:SHOWN], *more, sep="\n    ", flush=True)
                print(f"    (the run said: {said})", flush=True)
            if sum(walked.values()) % TRIALS_BETWEEN_LINES == 0:
                print(f"{sum(walked.values())} trials, {failed} failed", file=sys.stderr, flush=True)
    print("walked:", ", ".join(f"{kind} {count}" for kind, count in walked.items()))
    print(f"{sum(walked.values())} trials, {failed} failed; of {recovered} disks left by them that differ, recovery "
          f"made {judged} libraries, which were judged")
    return failed == 0 and not broken and sum(walked.values()) > 0


def place():
    """Where the libraries lie: a walk takes some megabytes."""
    return next(root for root in ROOTS if os.access(root, os.W_OK) and shutil.disk_usage(root).free > ROOM)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("corvane_cli")
    parser.add_argument("shim")
    parser.add_argument("--work", choices=WORKS, default="scan")
    parser.add_argument("--every", type=int, default=1, help="only each K-th trial")
    parser.add_argument("--offset", type=int, default=0, help="the first of these")
    parser.add_argument("--each-call", choices=FAILURES, metavar="KIND",
                        help="also the first point of each system call, for that kind")
    parser.add_argument("--all", action="store_true", help="also the midst of calls in a row on one file")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--kind", choices=KINDS)
    parser.add_argument("--at", type=int, default=0)
    parser.add_argument("--librarycheck")
    parser.add_argument("--told", help="file for what each disturbed run said")
    options = parser.parse_args()
    options.corvane_cli = str(Path(options.corvane_cli).resolve())
    options.shim = str(Path(options.shim).resolve())
    if not options.librarycheck or not Path(options.librarycheck).is_file():
        print("without the independent check of libraries, which is not at hand")
    started = time.monotonic()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # the folder goes also then
    with tempfile.TemporaryDirectory(prefix="corvane-ring-", dir=place()) as folder:
        results = multiprocessing.Queue()
        workers = [multiprocessing.Process(target=walk_share, daemon=True,
                                           args=(share, options, f"{folder}/{share}", results))
                   for share in range(options.jobs)]
        for worker in workers:
            worker.start()
        good = collect(results, len(workers), options)
        for worker in workers:
            worker.join()
    print(f"{time.monotonic() - started:.0f} s")
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
