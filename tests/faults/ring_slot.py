"""A place of its own where the fault ring runs the program: a library, a state folder and a folder for
temporary files that are watched, and a home that is not."""

import hashlib
import json
import os
import re
import shutil
import stat
import subprocess
import time
from pathlib import Path

from recorded_disk import MOMENT

ROOTS = ("/dev/shm", "/tmp")  # memory is quicker, and power is cut on paper only
NOBODY = "999999999"  # a photo that no library has
PATIENCE = 120.0  # seconds
MINUTE = 60  # seconds
FOREIGN = {  # files that the program did not make, some where and named as its own are
    "Caches/foreign.txt": b"not of this program\n",
    "Caches/.picture.jpg.0000000.corvane-new": b"not of this program either\n",
    "Thumbnails/Segments/foreign.data": b"\0" * 64,
    "foreign.txt": b"not of this program\n",
    "Database/foreign.txt": b"not of this program\n",
    "Database/apdb/foreign.txt": b"not of this program\n",
    "Database/Albums/foreign.txt": b"not of this program\n",
    "Database/Folders/foreign.txt": b"not of this program\n",
    "Database/Versions/foreign.txt": b"not of this program\n",
    "Previews/foreign.txt": b"not of this program\n",
}
CHANCE = re.compile(r"(?<=/corvane-)\w{6}|(?<=\.)\w{7}(?=\.corvane-new)")  # in names
OF_BACKUP = re.compile("/backups/[^/]*/[^/]*/")


class Slot:
    def __init__(self, folder, corvane_cli, shim):
        self.folder = Path(folder)
        if not str(self.folder).startswith(tuple(f"{root}/" for root in ROOTS)):
            raise AssertionError(f"the ring runs below {ROOTS} only, not in {self.folder}")
        self.disk = self.folder / "disk"
        self.package = self.disk / "Sample.photolibrary"
        self.hit = self.folder / "hit"
        self._corvane_cli, self._shim = corvane_cli, shim
        self.moment = int(time.time())  # of the last run: each finds the clock a minute later
        (self.folder / "home").mkdir(parents=True)
        self.disk.mkdir()
        self._can_verify = "\n  verify " in self.run("--help").stdout

    def make_library(self):
        """The sample library with two RAW photos and three others, and files that are not its own."""
        (self.disk / "temporary").mkdir()
        self.must("sample", str(self.disk), "--photos", "2", "--megapixels", "0.05", "--quiet")
        for name, content in FOREIGN.items():
            path = self.package / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(content)
        self.forget_state()

    def forget_state(self):
        """As if another machine had made the library."""
        shutil.rmtree(self.disk / "state")

    def clear(self):
        shutil.rmtree(self.disk)
        self.disk.mkdir()
        self.hit.unlink(missing_ok=True)

    def fingerprint(self, read_backups=None):
        """Of all on the disk that a later run can go by. Of locks that is how many lines they have, of
        backups, where it is told which are read, only the names of the others, of other files also
        whether they were written since they were laid out."""
        found = hashlib.sha256()
        for path in sorted(paths_below(self.disk)):
            name = CHANCE.sub("", path.removeprefix(f"{self.disk}/"))
            unread = read_backups is not None and OF_BACKUP.search(name)
            if unread and read_backups.isdisjoint(Path(path).parents):
                continue
            status, content, written = os.lstat(path), b"", False
            if stat.S_ISLNK(status.st_mode):
                content = os.fsencode(os.readlink(path))
            elif stat.S_ISREG(status.st_mode):
                with open(path, "rb") as file:
                    content, written = file.read(), status.st_mtime != MOMENT
            if path.endswith("lock"):
                content, written = b"\n" * content.count(b"\n"), False
            found.update(repr((name, status.st_mode, written, len(content))).encode())
            found.update(content)
        return found.digest()

    def run(self, *arguments, faults=None):
        self.moment += MINUTE
        environment = {name: value for name, value in os.environ.items()
                       if not name.startswith(("XDG_", "CORVANE_", "QT_"))}
        environment |= {
            "HOME": str(self.folder / "home"), "XDG_CONFIG_HOME": str(self.disk / "config"),
            "XDG_STATE_HOME": str(self.disk / "state"), "TMPDIR": str(self.disk / "temporary"),
            "QT_HASH_SEED": "0",  # the same order of files in each run
            "LC_ALL": "C.UTF-8", "LD_PRELOAD": str(self._shim),
            "CORVANE_FAULTS_MOMENT": str(self.moment),
            "CORVANE_FAULTS_BELOW": str(self.disk), "CORVANE_FAULTS_HIT": str(self.hit)}
        environment |= faults or {}
        return subprocess.run([self._corvane_cli, *arguments], env=environment, cwd=self.folder, text=True,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                              timeout=PATIENCE, check=False)

    def must(self, *arguments):
        finished = self.run(*arguments)
        if finished.returncode != 0:
            raise AssertionError(f"{arguments}: exit {finished.returncode}\n{finished.stderr}")
        return finished

    def scan(self, faults=None):
        return self.run("scan", str(self.package), "--raw", "--albums", "--tag", "--trash", "--quiet",
                        "--defaults", str(self.disk / "settings.plist"), faults=faults)

    def must_scan(self):
        finished = self.scan()
        if finished.returncode != 0:
            raise AssertionError(f"a scan ends with {finished.returncode}:\n{finished.stderr}")

    def recover(self):
        """Opens the library for writing and asks for nothing."""
        return self.run("trash", str(self.package), "--restore", "--id", NOBODY)

    def soundness(self):
        """What the program finds wrong with the library as it stands, before anything is recovered."""
        finished = self.run("info", "--json", str(self.package))
        if finished.returncode != 0:
            return [f"info ends with {finished.returncode}: {finished.stderr.strip()}"]
        return json.loads(finished.stdout)["problems"]

    def verification(self):
        """What "verify" finds."""
        if not self._can_verify:
            return []
        finished = self.run("verify", "--json", str(self.package))
        if finished.returncode not in (0, 1):
            return [f"verify ends with {finished.returncode}: {finished.stderr.strip()}"]
        return [f"{problem['what']}: {problem['where']}" for problem in json.loads(finished.stdout)["problems"]]

    def finished_backups(self):
        return sorted(path for path in (self.disk / "state" / "corvane").glob("backups/*/*")
                      if not path.name.endswith(".unfinished"))


def paths_below(folder):
    """Of everything below a folder, whatever it is."""
    with os.scandir(folder) as entries:
        for entry in entries:
            yield entry.path
            if entry.is_dir(follow_symlinks=False):
                yield from paths_below(entry.path)
