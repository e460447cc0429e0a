"""What the fault ring's library recorded, and what a disk holds after a power cut in the midst of it."""

import os
import random
import stat
import struct
from dataclasses import dataclass
from pathlib import Path

HEADER = struct.Struct("<16sIIIIqQ")  # FaultPoint.cpp writes it
(NONE, MAKE_FILE, TRUNCATE, WRITE, WHOLE_FILE, FLUSH_FILE, FLUSH_FOLDER, RENAME, LINK, REMOVE, MAKE_FOLDER,
 REMOVE_FOLDER, SYMBOLIC_LINK, EXCHANGE, FLUSH_ALL) = range(15)
OF_SPACE, OF_NAME = 1, 2
MOMENT = 1_500_000_000  # when each file that the ring writes was last changed
PAGE = 4096  # bytes that a disk writes at once or not at all


@dataclass
class Point:
    """One use of a system call."""

    number: int
    call: str
    effect: int
    abilities: int
    path: str
    other: str
    offset: int
    data: bytes


def read_recording(path):
    content = Path(path).read_bytes()
    points, at = [], 0
    while at < len(content):
        call, effect, abilities, path_bytes, other_bytes, offset, size = HEADER.unpack_from(content, at)
        at += HEADER.size
        path_end, other_end = at + path_bytes, at + path_bytes + other_bytes
        points.append(Point(len(points) + 1, call.rstrip(b"\0").decode(), effect, abilities,
                            os.fsdecode(content[at:path_end]), os.fsdecode(content[path_end:other_end]),
                            offset, content[other_end:other_end + size]))
        at = other_end + size
    return points


class File:
    """A file with what is surely on the disk, what programs see, and the writes in between."""

    def __init__(self, content=b"", durable=b"", mode=0o644):
        self.live = bytearray(content)
        self.durable = bytes(durable)
        self.pending = []  # ("write", offset, bytes) | ("cut", size, b"")
        self.mode = mode

    def write(self, offset, data):
        _apply(self.live, ("write", offset, data))
        self.pending.append(("write", offset, data))

    def cut(self, size):
        _apply(self.live, ("cut", size, b""))
        self.pending.append(("cut", size, b""))

    def flush(self):
        self.durable = bytes(self.live)
        self.pending.clear()

    def partly(self, chance):
        """The file with some of what was not flushed, page by page."""
        content = bytearray(self.durable)
        for kind, offset, data in self.pending:
            if kind == "cut":
                if chance.random() < 0.5:
                    _apply(content, (kind, offset, data))
                continue
            at = 0
            while at < len(data):
                size = min(len(data) - at, PAGE - (offset + at) % PAGE)
                if chance.random() < 0.5:
                    _apply(content, ("write", offset + at, data[at:at + size]))
                at += size
        return bytes(content)


def _apply(content, change):
    kind, offset, data = change
    if kind == "cut":
        del content[offset:]
    if len(content) < offset:
        content.extend(bytes(offset - len(content)))
    if kind == "write":
        content[offset:offset + len(data)] = data


class Link:
    """A symbolic link."""

    def __init__(self, target):
        self.target = target


class Folder:
    def __init__(self, mode=0o755):
        self.live, self.durable = {}, {}
        self.pending = []  # ("set", name, node) | ("drop", name) | ("rename", name, new name)
        self.mode = mode

    def change(self, change):
        _apply_name(self.live, change)
        self.pending.append(change)

    def flush(self):
        self.durable = dict(self.live)
        self.pending.clear()

    def partly(self, chance):
        """The names with some of the changes that were not flushed, each whole or not at all."""
        names = dict(self.durable)
        for change in self.pending:
            if chance.random() < 0.5:
                _apply_name(names, change)
        return names


def _apply_name(names, change):
    if change[0] == "set":
        names[change[1]] = change[2]
    elif change[0] == "drop":
        names.pop(change[1], None)
    elif change[1] in names:
        names[change[2]] = names.pop(change[1])


class RecordedDisk:
    """A folder as it was before the recording; `play` takes it through the recorded calls."""

    CUTS = ("durable", "names", "contents", "some")

    def __init__(self, folder):
        self._root_path = str(folder)
        self._root = self._read(Path(folder))

    def _read(self, folder):
        node = Folder(stat.S_IMODE(folder.stat().st_mode))
        for entry in folder.iterdir():
            if entry.is_symlink():
                node.live[entry.name] = Link(os.readlink(entry))
            elif entry.is_dir():
                node.live[entry.name] = self._read(entry)
            else:
                content = entry.read_bytes()
                node.live[entry.name] = File(content, content, stat.S_IMODE(entry.stat().st_mode))
        node.flush()
        return node

    def _place(self, path):
        """Folder and last name of a path of the recording."""
        parts = path[len(self._root_path) + 1:].split("/")
        folder = self._root
        for part in parts[:-1]:
            folder = folder.live[part]
        return folder, parts[-1]

    def _node(self, path):
        if path == self._root_path:
            return self._root
        folder, name = self._place(path)
        return folder.live.get(name)

    def play(self, point):
        effect = point.effect
        if effect == NONE or point.path.endswith(" (deleted)"):
            return
        if effect == FLUSH_ALL:
            self._flush_all(self._root)
            return
        if effect in (TRUNCATE, WRITE, FLUSH_FILE, FLUSH_FOLDER):
            node = self._node(point.path)
            if effect == TRUNCATE:
                node.cut(point.offset)
            elif effect == WRITE:
                node.write(point.offset, point.data)
            else:
                node.flush()
            return
        folder, name = self._place(point.path)
        if effect in (MAKE_FILE, WHOLE_FILE):
            node = folder.live.get(name)
            if node is None:
                node = File()
                folder.change(("set", name, node))
            if effect == WHOLE_FILE:
                node.cut(0)
                node.write(0, point.data)
        elif effect == MAKE_FOLDER:
            folder.change(("set", name, Folder()))
        elif effect == SYMBOLIC_LINK:
            folder.change(("set", name, Link(point.other)))
        elif effect in (REMOVE, REMOVE_FOLDER):
            folder.change(("drop", name))
        else:
            self._play_second_name(effect, folder, name, *self._place(point.other))

    def _play_second_name(self, effect, folder, name, other_folder, other_name):
        if effect == EXCHANGE:
            node, other = folder.live[name], other_folder.live[other_name]
            folder.change(("set", name, other))
            other_folder.change(("set", other_name, node))
        elif effect == LINK:
            other_folder.change(("set", other_name, folder.live[name]))
        elif folder is other_folder:
            folder.change(("rename", name, other_name))
        else:
            other_folder.change(("set", other_name, folder.live[name]))
            folder.change(("drop", name))

    def _flush_all(self, folder):
        folder.flush()
        for node in folder.live.values():
            if isinstance(node, Folder):
                self._flush_all(node)
            elif isinstance(node, File):
                node.flush()

    def live(self):
        """Every path with what programs see there now."""
        return self._gather(self._root, lambda folder: folder.live, lambda file: bytes(file.live))

    def after_cut(self, cut, seed):
        """Every path with what a disk may hold when power fails now.

        durable: nothing but what was flushed. names: of what was not, the names alone. contents: the
        contents alone. some: names and pages by chance.
        """
        chance = random.Random(seed)
        names = {"durable": lambda folder: folder.durable, "contents": lambda folder: folder.durable,
                 "names": lambda folder: folder.live, "some": lambda folder: folder.partly(chance)}[cut]
        contents = {"durable": lambda file: file.durable, "names": lambda file: file.durable,
                    "contents": lambda file: bytes(file.live), "some": lambda file: file.partly(chance)}[cut]
        return self._gather(self._root, names, contents)

    def _gather(self, root, names, contents):
        """Path → (mode, content); the content of a folder is None, of a link its target as a text."""
        found = {}

        def walk(folder, prefix):
            for name, node in sorted(names(folder).items()):
                path = prefix + name
                if isinstance(node, Folder):
                    found[path] = (node.mode, None)
                    walk(node, path + "/")
                elif isinstance(node, Link):
                    found[path] = (0, node.target)
                else:
                    found[path] = (node.mode, contents(node))

        walk(root, "")
        return found


def write_tree(folder, tree):
    """Writes what RecordedDisk tells into an empty folder."""
    for path, (mode, content) in tree.items():
        target = os.path.join(folder, path)
        if content is None:
            os.mkdir(target)
        elif isinstance(content, str):
            os.symlink(content, target)
        else:
            with open(target, "wb") as file:
                file.write(content)
            os.chmod(target, mode)
            os.utime(target, (MOMENT, MOMENT))
