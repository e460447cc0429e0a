"""What must hold between a library before a work and after one that was disturbed. Of a scan: each RAW
photo is replaced with everything that belongs to it or untouched. Of each work: nothing of any photo
changed but of the chosen ones, and every file belongs to something."""

import collections

from library_state import COUNTED

FOLLOWERS = {  # files that follow the databases, and the databases
    "AlbumData.xml", "iLifeShared/AlbumData2.xml", "iLifeShared/ApertureDatabaseTimestamp",
    "Database/Keywords.plist", "Database/DataModelVersion.plist", "Database/apdb/Library.apdb",
    "Database/apdb/Properties.apdb", "Database/apdb/ImageProxies.apdb"}
FOLLOWING_FOLDERS = ("Database/Albums/", "Database/Folders/")
BOOKKEEPING = {"RKAdminData", "RKAlbumVersion", "RKKeyword_CharIndex"}
SHOWN = 200  # letters of a row that differs


class Reference:
    """What becomes of each RAW photo in a scan that nothing disturbs, by its name."""

    def __init__(self, before, after):
        self.wholes = {}
        for original in before.raw_masters():
            copies = copies_of(before, after, original)
            if len(copies) != 1:
                raise AssertionError(f"an undisturbed scan made {len(copies)} copies of {original}")
            self.wholes[before.base_name(original)] = (after.likeness(original), after.likeness(copies[0]))
        self.others = self._others(before, after)

    @staticmethod
    def _others(before, after):
        """Names of new photos that are copies of none: the picture that defines the keywords."""
        copies = {copy for original in before.raw_masters() for copy in copies_of(before, after, original)}
        new = set(after.masters) - set(before.masters) - copies
        return sorted(after.base_name(master) for master in new)

    def unfinished(self, before, after):
        """What a scan that was not disturbed would have made of it."""
        problems = []
        for original in before.raw_masters():
            if state_of(before, after, original, self) != "whole":
                problems.append(f"{before.base_name(original)} is not replaced")
        if self._others(before, after) != self.others:
            problems.append(f"other new photos than in an undisturbed scan: {self._others(before, after)}")
        return problems


def copies_of(before, after, original):
    name = before.base_name(original)
    return [master for master in after.masters if master not in before.masters
            and after.base_name(master) == name]


def state_of(before, after, original, reference):
    """"whole", "untouched", or what is wrong."""
    if original not in after.masters:
        return "gone from the databases"
    copies = copies_of(before, after, original)
    if not copies and before.exact_rows(original) == after.exact_rows(original):
        return "untouched"
    if len(copies) != 1:
        return f"there are {len(copies)} copies, and the original changed"
    likenesses = (after.likeness(original), after.likeness(copies[0]))
    wanted = reference.wholes[before.base_name(original)]
    for what, found, expected in zip(("original", "copy"), likenesses, wanted):
        for part, got, want in zip(("rows", "files"), found, expected):
            if got != want:
                return f"half done: {part} of the {what}: {_first_difference(got, want)}"
    return "whole"


def _first_difference(got, want):
    surplus = list((collections.Counter(got) - collections.Counter(want)).elements())
    lacking = list((collections.Counter(want) - collections.Counter(got)).elements())
    return (f"{len(surplus)} too many, such as {str(surplus[:1])[:SHOWN]}; {len(lacking)} lacking, such as "
            f"{str(lacking[:1])[:SHOWN]}")


def compare(before, after, reference):
    problems = []
    for original in sorted(before.raw_masters()):
        state = state_of(before, after, original, reference)
        if state not in ("whole", "untouched"):
            problems.append(f"photo {before.base_name(original)}: {state}")
    chosen = before.raw_masters()
    return [*problems, *other_photos(before, after, chosen), *other_rows(before, after, chosen),
            *files(before, after, chosen)]


def other_photos(before, after, chosen):
    problems = []
    for master in sorted(set(before.masters) - chosen):
        if master not in after.masters or before.exact_rows(master) != after.exact_rows(master):
            problems.append(f"rows of another photo, {before.base_name(master)}, changed")
    return problems


def other_rows(before, after, chosen):
    """Rows that are of no chosen photo stay; of albums and folders all but counts."""
    of_chosen = {id(row) for master in chosen for _, row in before.rows_of(master)}
    problems = []
    for table, rows in before.tables.items():
        if table in BOOKKEEPING or table.endswith("_RidIndexes"):
            continue
        left_out = COUNTED if table in ("RKAlbum", "RKFolder") else set()
        still = {_row(row, left_out) for row in after.tables[table]}
        lost = [row for row in rows if id(row) not in of_chosen and _row(row, left_out) not in still]
        if lost:
            problems.append(f"{len(lost)} rows of {table} changed, such as {lost[0]}")
    return problems


def _row(row, left_out):
    return tuple((column, value) for column, value in row.items() if column not in left_out)


def files(before, after, chosen, gone=frozenset()):
    """Files stay as they are, but for followers, sidecars of the chosen photos, and those that may go."""
    problems = []
    of_chosen = {name for master in chosen for name in before.files_of(master)
                 if name.startswith("Database/")}
    for name, facts in before.files.items():
        if name not in after.files:
            problems += [] if name in gone else [f"the file {name} is gone"]
        elif name in FOLLOWERS or name.startswith(FOLLOWING_FOLDERS) or name in of_chosen:
            continue
        elif after.files[name] != facts:
            problems.append(f"the file {name} changed")
    known = set(FOLLOWERS)
    for master in after.masters:
        known |= after.files_of(master)
    known |= {f"Database/Albums/{row['uuid']}.apalbum" for row in after.tables["RKAlbum"]}
    known |= {f"Database/Folders/{row['uuid']}.apfolder" for row in after.tables["RKFolder"]}
    problems += [f"the file {name} belongs to nothing"
                 for name in sorted(set(after.files) - set(before.files) - known)]
    filled = {name[:at] for name in after.files for at, letter in enumerate(name) if letter == "/"}
    problems += [f"the new folder {name} is empty"
                 for name in sorted(after.folders - before.folders - filled)]
    return problems
