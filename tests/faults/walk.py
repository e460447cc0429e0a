"""One walk round the ring of faults: a work is disturbed at one point after the other, and each time the
library is judged."""

import re
import signal
import sqlite3

from library_state import DATABASES, LibraryState
from recorded_disk import OF_NAME, OF_SPACE, WRITE, RecordedDisk, read_recording, write_tree

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
EXITS = {0, 1, 3}  # of a work that met an error: done all the same, stopped by an alert, library not usable
LEFT_FOR_RECOVERY = "in Masters belong to no photo"  # files of a turn that was not committed
NOT_STORED = "the settings are not stored"
STOPPED = "Conversion Aborted"
TELLS_OF_SPACE = re.compile("make room|space left", re.IGNORECASE)
LOCK_LINES = 3  # process, program, host


class Walk:
    """One slot's walk over its share of the trials."""

    def __init__(self, slot, work, librarycheck):
        self.slot, self.work, self.librarycheck = slot, work, librarycheck
        slot.make_library()
        work.prepare(slot)
        self.start, self.moment = RecordedDisk(slot.disk).live(), slot.moment
        self.restore()
        self.before = LibraryState(slot.package)
        self.earlier_backups = set(slot.finished_backups())
        self.known_problems = ()
        self.known_problems = frozenset(self._soundness(self.before))  # the files that are not the program's
        self.points = self._record()
        self.player, self.played, self.seen = None, 0, set()
        self.recovered = {}  # of what a disturbed run left, by its fingerprint: what recover() tells of it
        self.judged = {}  # of what a recovery left, by its fingerprint: what judge() tells of it

    def restore(self):
        self.lay_out(self.start)

    def lay_out(self, tree):
        self.slot.clear()
        write_tree(self.slot.disk, tree)
        self.slot.moment = self.moment

    def _record(self):
        """The points of a work that nothing disturbs; they must tell all that it changed on disk."""
        recording = self.slot.folder / "recording"
        disk = RecordedDisk(self.slot.disk)
        finished = self.work.run(self.slot, {"CORVANE_FAULTS_RECORD": str(recording)})
        if finished.returncode != 0:
            raise AssertionError(f"a run without faults ends with {finished.returncode}:\n{finished.stderr}")
        points = read_recording(recording)
        recording.unlink()
        for point in points:
            disk.play(point)
        recorded, actual = disk.live(), RecordedDisk(self.slot.disk).live()
        strange = [path for path in sorted(set(recorded) | set(actual))
                   if recorded.get(path, (0, 0))[1] != actual.get(path, (0, 0))[1]]
        if strange or len(points) < self.work.fewest_points:
            raise AssertionError(f"{len(points)} points do not tell all changes: {strange[:5]}")
        self.done = LibraryState(self.slot.package)
        self.work.learn(self.before, self.done)
        problems = self.work.compare(self.before, self.done) + self._soundness(self.done)
        if problems:
            raise AssertionError(f"a run without faults leaves problems: {problems}")
        return points

    def _soundness(self, state):
        problems = [f"verify: {problem}" for problem in self.slot.verification()]
        if self.librarycheck:
            found, _ = self.librarycheck.check(str(self.slot.package), strict=True)
            problems += [f"librarycheck: {problem}" for problem in found]
        strays = tuple(self.work.strays(self.before, state))
        return [problem for problem in problems
                if problem not in self.known_problems and not problem.endswith(strays)]

    def trials(self, kinds, every_point):
        points = self.points if every_point else ends_of_runs(self.points)
        found = []
        for kind in kinds:
            _, _, needed = FAILURES.get(kind, ("", False, 0))
            found += [(kind, point.number) for point in points
                      if (not needed or point.abilities & needed)
                      and (kind != "torn" or can_be_torn(point))]
        return found

    def first_of_each_call(self, kind):
        """One trial for each system call that the work makes."""
        first = {}
        for point in self.points:
            first.setdefault(point.call, (kind, point.number))
        return list(first.values())

    def attempt(self, kind, number):
        """What is wrong after the trial; None where it was as another one before it."""
        self.told = ""
        if kind in CUTS:
            return self.cut(kind, number)
        self.restore()
        name, stays, _ = FAILURES.get(kind, (kind, False, 0))
        faults = {"CORVANE_FAULTS_AT": str(number), "CORVANE_FAULTS_KIND": name}
        finished = self.work.run(self.slot, faults | ({"CORVANE_FAULTS_STAYS": "1"} if stays else {}))
        says_done = finished.returncode == 0
        if not self.slot.hit.exists():
            return ["the point was not reached"]
        self.told = f"exit {finished.returncode}: {finished.stderr.strip()}"
        problems = []
        if kind in FAILURES:
            if finished.returncode not in EXITS:
                problems.append(f"the run ended with {finished.returncode}")
            problems += misleading(kind, finished.returncode, finished.stderr)
        elif kind == "torn" and finished.returncode == 0:
            return None  # another call than in the recording, none that writes
        elif finished.returncode != -signal.SIGKILL:
            problems.append(f"the run was not killed: {finished.returncode}")
        return problems + self.afterwards(says_done)

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
        self.lay_out(tree)
        return self.afterwards(says_done=False)

    def afterwards(self, says_done):
        """What is wrong with what the disturbed run left, and with what comes of it."""
        left = self.slot.fingerprint()
        if left not in self.recovered:
            self.recovered[left] = self.recover()
        problems, is_done = self.recovered[left]
        if says_done and is_done is False:
            return [*problems, "the run ended with 0, but the work is not done"]
        return problems

    def recover(self):
        """Opens the library again, looks at it, and lets a second run finish the work: what is wrong then,
        and whether the work was done before the second run; None where it cannot be told."""
        problems = [f"before recovery, info: {problem}" for problem in self.slot.soundness()
                    if LEFT_FOR_RECOVERY not in problem]
        recovery = self.slot.recover()
        if recovery.returncode != 0:
            return [*problems, f"recovery ends with {recovery.returncode}: {recovery.stderr.strip()}"], None
        problems += self.backups()
        left = self.slot.fingerprint(self.earlier_backups)
        if left not in self.judged:
            self.judged[left] = self.judge()
        later, is_done = self.judged[left]
        return problems + later, is_done

    def judge(self):
        """What is wrong with the library after recovery and after a second run, and whether the work was
        done before that."""
        state = LibraryState(self.slot.package)
        problems = self.work.compare(self.before, state) + self._soundness(state)
        was_done = self.work.is_done(self.before, state)
        second = self.work.run(self.slot)
        nothing_left = was_done and self.work.nothing_left and self.work.nothing_left in second.stderr
        if second.returncode != 0 and not nothing_left:
            return [*problems, f"the second run ends with {second.returncode}: {second.stderr.strip()}"], was_done
        if NOT_STORED in second.stderr:
            problems.append(f"the second run says: {second.stderr.strip()}")
        state = LibraryState(self.slot.package)
        later = self.work.compare(self.before, state) + self.work.unfinished(self.before, state)
        later += self._soundness(state)
        later += [] if nothing_left else self.temporaries()
        return problems + [f"after the second run: {problem}" for problem in later], was_done

    def temporaries(self):
        """A scan removes the folders of dead ones; without a whole lock nothing says that they are."""
        left = [path.name for path in (self.slot.disk / "temporary").glob("*")
                if (path / "lock").exists() and (path / "lock").read_bytes().count(b"\n") >= LOCK_LINES]
        return [f"the temporary folder holds {left}"] if left else []

    def backups(self):
        """A copy that bears its final name holds everything that the work leaves as it is."""
        problems = []
        for folder in set(self.slot.finished_backups()) - self.earlier_backups:
            for name in set(self.before.files) & set(self.done.files):
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
        lasting = set.intersection(*({row["modelId"] for row in state.tables[table]}
                                     for state in (self.before, self.done)))
        return sound and set(rows) >= lasting


def misleading(kind, status, said):
    """What is wrong with how a run tells that it met an error."""
    problems = []
    if status != 0 and not said.strip():
        problems.append("the run said nothing")
    if status != 0 and kind == "ENOSPC-on" and not TELLS_OF_SPACE.search(said):
        problems.append("the run did not say that there is no room")
    if status != 1 and STOPPED in said:
        problems.append(f"the run was stopped by an alert but ended with {status}")
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
