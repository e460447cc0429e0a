#!/usr/bin/python3
"""The ring of faults: a scan of a small library, once for each point at which the program changes a file;
there the call fails, the process is killed, or power is cut. Afterwards the library must be sound, each
photo replaced or untouched, and a second scan must finish the work.

fault_ring.py CORVANE_CLI SHIM [--every K] [--all] [--jobs N] [--kind KIND [--at N]] [--librarycheck FILE]"""

import argparse
import collections
import importlib.util
import multiprocessing
import os
import re
import shutil
import signal
import sqlite3
import sys
import tempfile
import time
import traceback
from pathlib import Path

sys.dont_write_bytecode = True  # nothing is left among the sources

from library_comparison import Reference, compare, state_of
from library_state import DATABASES, LibraryState
from recorded_disk import OF_NAME, OF_SPACE, WRITE, RecordedDisk, read_recording, write_tree
from ring_slot import ROOTS, Slot

FAILURES = {  # kind → errno, whether later calls fail as well, which calls can meet it
    "EIO": ("EIO", False, 0),
    "EIO-on": ("EIO", True, 0),
    "ENOSPC-on": ("ENOSPC", True, OF_SPACE),
    "EDQUOT": ("EDQUOT", False, OF_SPACE),
    "EROFS-on": ("EROFS", True, 0),
    "EACCES": ("EACCES", False, OF_NAME),
}
CUTS = {f"cut-{cut}": cut for cut in RecordedDisk.CUTS}
KINDS = (*FAILURES, "kill", "torn", *CUTS)
EXITS = {0, 1, 3}  # of a scan that met an error: done all the same, stopped by an alert, library not usable
NOTHING_LEFT = "No photo matches the selection."  # of a scan after all RAW photos were replaced
LEFT_FOR_RECOVERY = "in Masters belong to no photo"  # files of a turn that was not committed
NOT_STORED = "the settings are not stored"
SHOWN = 8  # problems of a trial
STOPPED = "Conversion Aborted"
TELLS_OF_SPACE = re.compile("make room|space left", re.IGNORECASE)
LOCK_LINES = 3  # process, program, host
ROOM = 256 * 1024 * 1024  # bytes
FEWEST_POINTS = 500  # a scan of two photos reaches more; fewer mean that calls are not seen


def load_librarycheck(path):
    if not path or not Path(path).is_file():
        return None
    specification = importlib.util.spec_from_file_location("librarycheck", path)
    module = importlib.util.module_from_spec(specification)
    specification.loader.exec_module(module)
    return module


class Walk:
    """One slot's walk over its share of the trials."""

    def __init__(self, slot, librarycheck):
        self.slot, self.librarycheck = slot, librarycheck
        slot.make_library()
        self.start = RecordedDisk(slot.disk).live()
        self.restore()
        self.before = LibraryState(slot.package)
        self.points = self._record()
        self.player, self.played, self.seen = None, 0, set()

    def restore(self):
        self.slot.clear()
        write_tree(self.slot.disk, self.start)

    def _record(self):
        """The points of a scan that nothing disturbs; they must tell all that it changed on disk."""
        recording = self.slot.folder / "recording"
        disk = RecordedDisk(self.slot.disk)
        finished = self.slot.scan({"CORVANE_FAULTS_RECORD": str(recording)})
        if finished.returncode != 0:
            raise AssertionError(f"a scan without faults ends with {finished.returncode}:\n{finished.stderr}")
        points = read_recording(recording)
        recording.unlink()
        for point in points:
            disk.play(point)
        recorded, actual = disk.live(), RecordedDisk(self.slot.disk).live()
        strange = [path for path in sorted(set(recorded) | set(actual))
                   if recorded.get(path, (0, 0))[1] != actual.get(path, (0, 0))[1]]
        if strange or len(points) < FEWEST_POINTS:
            raise AssertionError(f"{len(points)} points do not tell all changes: {strange[:5]}")
        after = LibraryState(self.slot.package)
        self.reference = Reference(self.before, after)
        problems = compare(self.before, after, self.reference) + self._soundness()
        if problems:
            raise AssertionError(f"a scan without faults leaves problems: {problems}")
        return points

    def _soundness(self):
        problems = [f"verify: {problem}" for problem in self.slot.verification()]
        if self.librarycheck:
            found, _ = self.librarycheck.check(str(self.slot.package), strict=True)
            problems += [f"librarycheck: {problem}" for problem in found]
        return problems

    def trials(self, kinds, every_point):
        points = self.points if every_point else ends_of_runs(self.points)
        found = []
        for kind in kinds:
            _, _, needed = FAILURES.get(kind, ("", False, 0))
            found += [(kind, point.number) for point in points
                      if (not needed or point.abilities & needed)
                      and (kind != "torn" or can_be_torn(point))]
        return found

    def attempt(self, kind, number):
        """What is wrong after the trial; None where it was as another one before it."""
        self.told = ""
        if kind in CUTS:
            return self.cut(kind, number)
        self.restore()
        name, stays, _ = FAILURES.get(kind, (kind, False, 0))
        faults = {"CORVANE_FAULTS_AT": str(number), "CORVANE_FAULTS_KIND": name}
        finished = self.slot.scan(faults | ({"CORVANE_FAULTS_STAYS": "1"} if stays else {}))
        if not self.slot.hit.exists():
            return ["the point was not reached"]
        self.told = f"exit {finished.returncode}: {finished.stderr.strip()}"
        problems = []
        if kind in FAILURES:
            if finished.returncode not in EXITS:
                problems.append(f"the scan ended with {finished.returncode}")
            problems += misleading(kind, finished.returncode, finished.stderr)
        elif kind == "torn" and finished.returncode == 0:
            return None  # another call than in the recording, none that writes
        elif finished.returncode != -signal.SIGKILL:
            problems.append(f"the scan was not killed: {finished.returncode}")
        return problems + self.afterwards()

    def cut(self, kind, number):
        if self.player is None or self.played >= number:
            self.restore()
            self.player, self.played = RecordedDisk(self.slot.disk), 0
        while self.played < number - 1:
            self.player.play(self.points[self.played])
            self.played += 1
        tree = self.player.after_cut(CUTS[kind], number)
        mark = hash(tuple(sorted((path, content) for path, (_, content) in tree.items() if content is not None)))
        if (mark, len(tree)) in self.seen:
            return None
        self.seen.add((mark, len(tree)))
        self.slot.clear()
        write_tree(self.slot.disk, tree)
        return self.afterwards()

    def afterwards(self):
        """Opens the library again, looks at it, and lets a second scan finish the work."""
        problems = [f"before recovery, info: {problem}" for problem in self.slot.soundness()
                    if LEFT_FOR_RECOVERY not in problem]
        recovery = self.slot.recover()
        if recovery.returncode != 0:
            return [*problems, f"recovery ends with {recovery.returncode}: {recovery.stderr.strip()}"]
        state = LibraryState(self.slot.package)
        problems += compare(self.before, state, self.reference) + self._soundness() + self.backups()
        states = {state_of(self.before, state, original, self.reference) for original in self.before.raw_masters()}
        second = self.slot.scan()
        nothing_left = states == {"whole"} and NOTHING_LEFT in second.stderr
        if second.returncode != 0 and not nothing_left:
            return [*problems, f"the second scan ends with {second.returncode}: {second.stderr.strip()}"]
        if NOT_STORED in second.stderr:
            problems.append(f"the second scan says: {second.stderr.strip()}")
        state = LibraryState(self.slot.package)
        later = compare(self.before, state, self.reference) + self.reference.unfinished(self.before, state)
        later += self._soundness()
        later += [] if nothing_left else self.temporaries()
        return problems + [f"after the second scan: {problem}" for problem in later]

    def temporaries(self):
        """A scan removes the folders of dead ones; without a whole lock nothing says that they are."""
        left = [path.name for path in (self.slot.disk / "temporary").glob("*")
                if (path / "lock").exists() and (path / "lock").read_bytes().count(b"\n") >= LOCK_LINES]
        return [f"the temporary folder holds {left}"] if left else []

    def backups(self):
        """A copy that bears its final name holds everything."""
        problems = []
        for folder in self.slot.finished_backups():
            for name in self.before.files:
                if not name.startswith(("Database/", "iLifeShared/")) and name not in ("AlbumData.xml", "Info.plist"):
                    continue
                if (self.slot.package / name).is_symlink():
                    continue
                if name.startswith("Database/apdb/") and name.rsplit("/", 1)[1] in DATABASES:
                    if not self._same_rows(folder / name, name.rsplit("/", 1)[1]):
                        problems.append(f"the backup's {name} is not that of the library")
                elif not (folder / name).is_file():
                    problems.append(f"the backup lacks {name}")
        return problems

    def _same_rows(self, path, database):
        try:
            connection = sqlite3.connect(f"file:{path}?mode=ro", uri=True)
            table = {"Library.apdb": "RKVersion", "Properties.apdb": "RKUniqueString"}.get(database, "RKImageProxyState")
            rows = [row[0] for row in connection.execute(f"select modelId from {table}")]
            sound = connection.execute("pragma integrity_check").fetchone()[0] == "ok"
            connection.close()
        except sqlite3.Error:
            return False
        return sound and set(rows) >= {row["modelId"] for row in self.before.tables[table]}


def misleading(kind, status, said):
    """What is wrong with how a scan tells that it met an error."""
    problems = []
    if status != 0 and not said.strip():
        problems.append("the scan said nothing")
    if status != 0 and kind == "ENOSPC-on" and not TELLS_OF_SPACE.search(said):
        problems.append("the scan did not say that there is no room")
    if status != 1 and STOPPED in said:
        problems.append(f"the scan was stopped by an alert but ended with {status}")
    return problems


def can_be_torn(point):
    """The few bytes of a lock are written in one piece."""
    return point.effect == WRITE and len(point.data) > 1 and not point.path.endswith("lock")


def ends_of_runs(points):
    """First and last of calls of one kind on one file in a row."""
    def key(point):
        return point.call, point.path
    return [point for before, point, after in zip([None, *points], points, [*points[1:], None])
            if before is None or after is None or key(before) != key(point) or key(after) != key(point)]


def walk_share(share, options, folder, results):
    try:
        walk = Walk(Slot(folder, options.corvane_cli, options.shim), load_librarycheck(options.librarycheck))
        kinds = [options.kind] if options.kind else KINDS
        trials = walk.trials(kinds, options.all or options.at)
        results.put(("points", len(walk.points), len(trials)))
        trials = trials[options.offset::options.every]
        if options.at:
            trials = [trial for trial in trials if trial[1] == options.at]
        for kind, number in trials[share::options.jobs]:
            results.put(("trial", kind, number, walk.attempt(kind, number), walk.points[number - 1], walk.told))
    except BaseException:
        results.put(("broken", traceback.format_exc()))
    results.put(("end",))


def describe(kind, point):
    return f"{kind} at point {point.number}, {point.call} {point.path.split('/disk/', 1)[-1]}"


def collect(results, jobs, options):
    walked, failed, running, broken = collections.Counter(), 0, jobs, False
    told = open(options.told, "w") if options.told else None
    while running:
        what, *result = results.get()
        if what == "end":
            running -= 1
        elif what == "broken":
            print(result[0], flush=True)
            broken = True
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
                print(f"    (the scan said: {said})", flush=True)
    print("walked:", ", ".join(f"{kind} {count}" for kind, count in walked.items()))
    print(f"{sum(walked.values())} trials, {failed} failed")
    return failed == 0 and not broken and sum(walked.values()) > 0


def place():
    """Where the libraries lie: a walk takes some megabytes."""
    return next(root for root in ROOTS if os.access(root, os.W_OK) and shutil.disk_usage(root).free > ROOM)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("corvane_cli")
    parser.add_argument("shim")
    parser.add_argument("--every", type=int, default=1, help="only each K-th trial")
    parser.add_argument("--offset", type=int, default=0, help="the first of these")
    parser.add_argument("--all", action="store_true", help="also the midst of calls in a row on one file")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--kind", choices=KINDS)
    parser.add_argument("--at", type=int, default=0)
    parser.add_argument("--librarycheck")
    parser.add_argument("--told", help="file for what each disturbed scan said")
    options = parser.parse_args()
    options.corvane_cli = str(Path(options.corvane_cli).resolve())
    options.shim = str(Path(options.shim).resolve())
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
