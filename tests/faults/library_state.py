"""A library package as the fault ring sees it: files, rows of the three databases, photos. Nothing of the
program is used here."""

import collections
import hashlib
import re
import sqlite3
from pathlib import Path
from urllib.parse import quote

DATABASES = ("Library.apdb", "Properties.apdb", "ImageProxies.apdb")
LINKS_TO_VERSION = ("versionId", "versionUuid")
LINKS_TO_MASTER = ("masterId", "masterUuid")
GROUP = re.compile(r"\d{4}/\d\d/\d\d/\d{8}-\d{6}(_\d+)?(/[A-Za-z0-9%+]{22})?")
DAY = re.compile(r"\d{4}-\d\d-\d\d")
COUNTED = {"versionCount", "recentUserChangeDate", "posterVersionUuid", "minImageDate", "maxImageDate",
           "isInTrash"}  # of albums and folders, follow what is in them


class LibraryState:
    def __init__(self, package):
        self.package = Path(package)
        self.files = {}
        self.folders = set()
        for path in sorted(self.package.rglob("*")):
            relative = str(path.relative_to(self.package))
            if path.is_dir() and not path.is_symlink():
                self.folders.add(relative)
                continue
            status = path.lstat()
            content = str(path.readlink()).encode() if path.is_symlink() else path.read_bytes()
            moment = 0 if path.is_symlink() else status.st_mtime_ns
            self.files[relative] = (hashlib.sha256(content).hexdigest(), status.st_mode, moment)
        self.tables = {}
        for database in DATABASES:
            self._read(database)
        self._linked = collections.defaultdict(list)  # rows by what they say they belong to
        for table, rows in self.tables.items():
            if table not in ("RKMaster", "RKVersion") and not table.endswith("_RidIndexes"):
                self._link(table, rows)
        self.masters = {row["uuid"]: row for row in self.tables["RKMaster"]}
        self.versions = {row["uuid"]: row for row in self.tables["RKVersion"]}
        self._strings = {row["modelId"]: row["stringProperty"] for row in self.tables["RKUniqueString"]}
        self.albums = {row["modelId"]: row for row in self.tables["RKAlbum"]}
        self._keywords = {row["modelId"]: row["name"] for row in self.tables["RKKeyword"]}

    def _read(self, database):
        path = quote(str(self.package / "Database" / "apdb" / database))
        connection = sqlite3.connect(f"file:{path}?mode=ro", uri=True)
        connection.row_factory = sqlite3.Row
        names = [row[0] for row in connection.execute("select name from sqlite_master where type='table'")]
        for name in names:
            if name not in self.tables:
                self.tables[name] = [dict(row) for row in connection.execute(f'select * from "{name}"')]
        connection.close()

    def _link(self, table, rows):
        for row in rows:
            for owner, links in (("version", LINKS_TO_VERSION), ("master", LINKS_TO_MASTER)):
                for value in {row[link] for link in links if row.get(link) is not None}:
                    self._linked[owner, value].append((table, row))

    def raw_masters(self):
        return {uuid for uuid, row in self.masters.items() if row["isTrulyRaw"]}

    def versions_of(self, master):
        rows = [row for row in self.versions.values() if row["masterUuid"] == master]
        return sorted(rows, key=lambda row: row["versionNumber"])

    def owners_of(self, master):
        """The names by which rows tell that they are of a photo."""
        owners = [("version", version[name]) for version in self.versions_of(master)
                  for name in ("modelId", "uuid")]
        return [*owners, ("master", self.masters[master]["modelId"]), ("master", master)]

    def rows_linked_to(self, owners):
        found = {id(row): (table, row) for owner in owners for table, row in self._linked.get(owner, ())}
        return list(found.values())

    def rows_of(self, master):
        """Table and row of everything that the databases hold of one photo."""
        versions = (("RKVersion", row) for row in self.versions_of(master))
        return [("RKMaster", self.masters[master]), *versions, *self.rows_linked_to(self.owners_of(master))]

    def is_last_import(self, table, row):
        return table == "RKAlbumVersion" and self.albums[row["albumId"]]["uuid"] == "lastImportAlbum"

    def exact_rows(self, master):
        """The photo's rows; where it stands in "last import" aside, which each import replaces."""
        return sorted(repr((table, sorted(row.items()))) for table, row in self.rows_of(master)
                      if not self.is_last_import(table, row))

    def likeness(self, master):
        """What two runs of the same scan have in common of a photo: all but identities and moments."""
        rows = []
        for table, row in self.rows_of(master):
            if self.is_last_import(table, row):
                continue
            kept = {column: _without_identity(column, value) for column, value in row.items()
                    if not _is_identity(column)}
            kept |= {column: self._strings.get(row[column]) for column in ("stringId", "searchStringId")
                     if column in row}
            if table == "RKAlbumVersion":
                kept["album"] = _without_identity("name", self.albums[row["albumId"]]["name"])
            if table == "RKKeywordForVersion":
                kept["keyword"] = self._keywords[row["keywordId"]]
            rows.append(repr((table, sorted(kept.items(), key=str))))
        files = sorted((GROUP.sub("GROUP", name), self.files.get(name, ("none",))[0])
                       for name in self.files_of(master) if not name.startswith("Database/"))
        return sorted(rows), files

    def files_of(self, master):
        """The files that a photo may have, as far as they are there."""
        row = self.masters[master]
        group = row["imagePath"].rsplit("/", 1)[0]
        folders = [f"Database/Versions/{group}/{master}/"]
        folders += [f"{root}/{group}/{version['uuid']}/" for version in self.versions_of(master)
                    for root in ("Previews", "Thumbnails")]
        own = {name for name in self.files if name.startswith(tuple(folders))}
        return own | {f"Masters/{row['imagePath']}"}

    def base_name(self, master):
        return self.masters[master]["fileName"].rsplit(".", 1)[0]


def _is_identity(column):
    moment = column.endswith("Date") and column != "imageDate"
    return column in ("uuid", "orderNumber", "thumbnailGroup") or column.endswith(("Uuid", "Id")) or moment


def _without_identity(column, value):
    if column == "numberProperty" and isinstance(value, (int, float)) and value > 500_000_000:
        return "moment"
    return DAY.sub("DAY", GROUP.sub("GROUP", value)) if isinstance(value, str) else value
