"""What the ring of faults disturbs: for each work how its library is made ready, how it is done, and what
must hold of the library before it and after one that was disturbed."""

import sqlite3

from library_comparison import Reference, files, other_photos, other_rows, compare, state_of
from library_state import LibraryState


class Scan:
    """RAW photos are replaced by copies and go to the trash, each in a turn of its own."""

    fewest_points = 500  # a scan of two photos reaches more; fewer mean that calls are not seen
    nothing_left = "No photo matches the selection."

    def prepare(self, slot):
        """The library is as it was made."""

    def run(self, slot, faults=None):
        return slot.scan(faults)

    def learn(self, before, after):
        self.reference = Reference(before, after)

    def compare(self, before, after):
        return compare(before, after, self.reference)

    def is_done(self, before, after):
        return all(state_of(before, after, original, self.reference) == "whole"
                   for original in before.raw_masters())

    def unfinished(self, before, after):
        return self.reference.unfinished(before, after)

    def strays(self, _before, _after):
        """Paths that may be told as belonging to nothing."""
        return set()


class _OfTrash:
    """Something done at once with all photos in the trash, which a scan put there."""

    fewest_points = 150
    nothing_left = None

    def prepare(self, slot):
        slot.must_scan()
        slot.forget_state()

    def learn(self, before, after):
        self.wanted = {master: after.likeness(master) for master in self._chosen(before)
                       if master in after.masters}
        if not self._chosen(before) or self.unfinished(before, after):
            raise AssertionError(f"undisturbed it is not done: {self.unfinished(before, after)}")

    def compare(self, before, after):
        states = {master: self._state_of(before, after, master) for master in self._chosen(before)}
        problems = [f"photo {before.base_name(master)}: {state}" for master, state in sorted(states.items())
                    if state not in ("done", "untouched")]
        if len(set(states.values())) > 1:
            problems.append(f"a part was done: {sorted(states.values())}")
        gone = {name for master in states if master not in after.masters for name in before.files_of(master)}
        problems += other_photos(before, after, self._chosen(before))
        problems += other_rows(before, after, self._chosen(before))
        return problems + files(before, after, self._chosen(before), gone)

    def is_done(self, before, after):
        return not self.unfinished(before, after)

    def unfinished(self, before, after):
        return [f"{before.base_name(master)} is not done" for master in self._chosen(before)
                if self._state_of(before, after, master) != "done"]

    def strays(self, _before, _after):
        return set()

    @staticmethod
    def _chosen(before):
        return {master for master, row in before.masters.items() if row["isInTrash"]}


class Empty(_OfTrash):
    """The trash is emptied: of each photo in it neither a row nor a file is left."""

    def run(self, slot, faults=None):
        return slot.run("trash", str(slot.package), "--empty", "--yes", faults=faults)

    @staticmethod
    def _state_of(before, after, master):
        if master in after.masters:
            same = before.exact_rows(master) == after.exact_rows(master)
            return "untouched" if same else "its rows changed"
        rows = after.rows_linked_to(before.owners_of(master))
        if rows:
            return f"{len(rows)} rows are left, such as {rows[0]}"
        left = sorted(before.files_of(master) & set(after.files))
        return f"{len(left)} files are left, such as {left[0]}" if left else "done"


class PutBack(_OfTrash):
    """The photos in the trash are put back."""

    def run(self, slot, faults=None):
        return slot.run("trash", str(slot.package), "--restore", faults=faults)

    def _state_of(self, before, after, master):
        if master not in after.masters:
            return "gone from the databases"
        if before.exact_rows(master) == after.exact_rows(master):
            return "untouched"
        return "done" if after.likeness(master) == self.wanted[master] else "half done"


class GoBack:
    """A backup takes the place of the databases that a scan changed later."""

    fewest_points = 150
    nothing_left = None

    def prepare(self, slot):
        slot.must("backup", str(slot.package))
        self.then = LibraryState(slot.package)
        self.date = slot.finished_backups()[0].name
        slot.must_scan()

    def run(self, slot, faults=None):
        return slot.run("backup", str(slot.package), "--restore", self.date, faults=faults)

    def learn(self, before, after):
        if self.is_done(before, before) or not self.is_done(before, after):
            raise AssertionError("undisturbed it is not done")

    def compare(self, before, after):
        present = self.then if self.is_done(before, after) else before
        problems = [f"rows of {table} are neither as before nor as in the backup" for table in before.tables
                    if _rows(after, table) != _rows(present, table)]
        wanted = {name: facts for name, facts in before.files.items() if not name.startswith("Database/")}
        wanted |= {name: facts for name, facts in present.files.items() if name.startswith("Database/")}
        problems += [f"the file {name} is gone" for name in sorted(set(wanted) - set(after.files))]
        problems += [f"the file {name} belongs to nothing" for name in sorted(set(after.files) - set(wanted))]
        content = 0
        return problems + [f"the file {name} changed" for name in sorted(set(wanted) & set(after.files))
                           if not self._follows(name) and after.files[name][content] != wanted[name][content]]

    def is_done(self, _before, after):
        return all(_rows(after, table) == _rows(self.then, table) for table in self.then.tables)

    def unfinished(self, before, after):
        return [] if self.is_done(before, after) else ["the backup is not in place"]

    def strays(self, before, after):
        """What the scan made, of which the backup knows nothing."""
        names = {name for master in set(before.masters) - set(after.masters)
                 for name in before.files_of(master) if not name.startswith("Database/")}
        return names | {name.rsplit("/", 1)[0] for name in names if not name.startswith("Masters/")}

    @staticmethod
    def _follows(name):
        return name.startswith(("Database/apdb/", "iLifeShared/")) or name == "AlbumData.xml"


FOREIGN_FOUND = (  # foreign files that verify tells and leaves to the person
    "Caches/.picture.jpg.0000000.corvane-new", "Database/Albums/foreign.txt", "Database/Folders/foreign.txt",
    "Database/Versions/foreign.txt", "Previews/foreign.txt")


class Repair:
    """What follows from the databases is mended: a lost sidecar, a lost catalogue, an event's dates."""

    fewest_points = 100
    nothing_left = None

    def prepare(self, slot):
        slot.must_scan()
        slot.forget_state()
        for name in FOREIGN_FOUND:
            (slot.package / name).unlink()
        sidecars = sorted((slot.package / "Database" / "Versions").rglob("Version-1.apversion"))
        self.lost = [sidecars[0], slot.package / "iLifeShared" / "AlbumData2.xml"]
        for path in self.lost:
            path.unlink()
        self.lost = [str(path.relative_to(slot.package)) for path in self.lost]
        connection = sqlite3.connect(slot.package / "Database" / "apdb" / "Library.apdb")
        with connection:
            connection.execute("update RKFolder set minImageDate = 1, maxImageDate = 2"
                               " where folderType = 2 and isMagic = 0 and versionCount > 0")
        connection.close()

    def run(self, slot, faults=None):
        finished = slot.run("verify", str(slot.package), "--repair", faults=faults)
        finished.stderr += finished.stdout  # what is left is its result
        return finished

    def learn(self, before, after):
        self.wanted = _dates(after)
        if self.wanted == _dates(before) or self.unfinished(before, after):
            raise AssertionError(f"undisturbed it is not done: {self.unfinished(before, after)}")

    def compare(self, before, after):
        return [*other_photos(before, after, set()), *other_rows(before, after, set()),
                *files(before, after, set())]

    def is_done(self, before, after):
        return not self.unfinished(before, after)

    def unfinished(self, _before, after):
        problems = [f"{name} is still lost" for name in self.lost if name not in after.files]
        return problems + (["dates of events are still wrong"] if _dates(after) != self.wanted else [])

    def strays(self, _before, _after):
        return set()


def _dates(state):
    return sorted((row["uuid"], row["minImageDate"], row["maxImageDate"]) for row in state.tables["RKFolder"]
                  if row["folderType"] == 2)


def _rows(state, table):
    return sorted(repr(sorted(row.items())) for row in state.tables.get(table, []))


WORKS = {"scan": Scan, "empty": Empty, "restore": PutBack, "back": GoBack, "repair": Repair}
