"""The operations that the fault sweep tries, and what must stand on disk after each."""
import pathlib
import random
import re
import zipfile
import zlib

ROOT = pathlib.Path(__file__).resolve().parents[2]
DRIVER = ROOT / "build/dev/tests/faults/VelorFaultsDriver"
MOTION_PACK = ROOT / "build/dev/examples/motion_pack/motion_pack"

# Calls that change a disk, those that only query it, and the errors with which each may fail.
WRITING = ["write", "writev", "pwrite64", "pwritev", "sendfile", "copy_file_range", "ftruncate", "fallocate"]
MOVING = ["rename", "renameat", "renameat2", "link", "linkat", "symlink", "symlinkat", "mkdir", "mkdirat"]
DELETING = ["unlink", "unlinkat", "rmdir"]
CHANGING = [*WRITING, *MOVING, *DELETING, "chmod", "fchmod", "fchmodat", "utimensat", "ioctl"]
OPENING = ["open", "openat"]
QUERYING = ["stat", "lstat", "newfstatat", "fstat", "statx", "statfs", "fstatfs", "access", "faccessat", "faccessat2",
            "readlink", "readlinkat", "getdents64", "lseek"]
ERRORS = {**dict.fromkeys([*CHANGING, *QUERYING], ["EIO"]), **dict.fromkeys(MOVING, ["ENOSPC", "EIO"]),
          **dict.fromkeys([*WRITING, *OPENING, "close", "fsync", "fdatasync"], ["ENOSPC", "EIO", "EINTR"]),
          **dict.fromkeys(["read", "pread64", "readv"], ["EIO", "EINTR"])}

OLDER = b"older"


def noise(size, seed):
    """Bytes that do not compress, the same in each run."""
    return random.Random(seed).randbytes(size)


def content(path):
    return path.read_bytes() if path.is_file() else None


def below(folder, files):
    return {f"{folder}/{path}": text for path, text in files.items()}


def read_archive(path):
    """The content of each entry; none if the archive is damaged."""
    try:
        with zipfile.ZipFile(path) as archive:
            return {entry.filename: archive.read(entry) for entry in archive.infolist()}
    except (zipfile.BadZipFile, zlib.error, EOFError, OSError):
        return None


class Scene:
    """An operation, the files that it needs (their bytes, or a number of zeros), and what must stand after it.

    It runs in a folder with disk1 and disk2, two disks if `two_disks`. Its name begins with the driver's operation."""

    two_disks = False
    limits = []  # bytes that a file may have
    free = []  # KiB left on a small disk

    def __init__(self, name, paths, files, option=None, codes=(0, 1)):
        self.name = name
        self.command = [DRIVER, name.split()[0], *paths]
        self.files = files
        self.option = option  # of prlimit, which is then the only fault
        self.codes = codes

    def prepare(self, folder):
        for name, text in self.files.items():
            (folder / name).parent.mkdir(parents=True, exist_ok=True)
            with (folder / name).open("wb") as file:
                file.truncate(text) if isinstance(text, int) else file.write(text)

    def check(self, folder, run):
        """Raises AssertionError if the files contradict what was reported. Here the exit code alone counts."""


class Replace(Scene):
    CONTENTS = {"old": noise(20000, "old"), "new": noise(98304, "new"), "stale": noise(3000, "stale")}
    limits = [0, 1, 16384, 19999, 20000, 65536, 98303]
    free = range(0, 105, 4)

    def __init__(self, name, elsewhere="", has_old=True):
        self.two_disks = bool(elsewhere)
        self.has_old = has_old
        self.paths = [f"disk{2 if name == elsewhere else 1}/{name}" for name in ("target", "replacement", "backup")]
        files = dict(zip(self.paths, self.CONTENTS.values()))
        if not has_old:
            del files[self.paths[0]]
        super().__init__(name, self.paths, files)

    def check(self, folder, run):
        labels = {None: "none", **{text: label for label, text in self.CONTENTS.items()}}
        target, replacement, backup = (labels.get(content(folder / path), "torn") for path in self.paths)
        seen = f"reported {run.succeeded}, target {target}, replacement {replacement}, backup {backup}"
        before = "old" if self.has_old else "none"
        assert "torn" not in (target, replacement, backup), seen
        assert target in ("new", before) or backup == "old", seen
        if run.killed:
            assert "new" in (target, replacement), seen
            return
        left = {path for path in folder.glob("disk?/*")} - {folder / path for path in self.paths}
        assert run.fault.kind == "dead" or not left, f"left {left}"
        is_deletable = not run.fault.hits(DELETING)
        if run.succeeded:
            assert target == "new" and (backup == "stale" or self.has_old), seen
            assert (replacement == "none" and backup != "old") or not is_deletable, seen
        elif run.fault.kind != "dead":
            is_restored = target == before and backup in ("none", "stale")
            # Where every disk stays full, an old file does not get back from another one.
            is_waiting = self.two_disks and run.fault.kind == "full" and (target, backup) == ("none", "old")
            assert is_restored or is_waiting, seen
            assert replacement == "none" or not is_deletable or run.fault.hits(QUERYING), seen


class Archive(Scene):
    FOLDER = {"a.txt": noise(3000, "a"), "sub/b.bin": noise(90000, "b"), "sub/c.txt": b"c" * 20000}
    FILE = noise(30000, "disk")
    ENTRIES = {"disk/file.bin": FILE, "memory.txt": b"memory", "empty/": b"", "sub/": b"", **FOLDER}
    limits = [0, 1, 100, 30000, 65536, 123000, 124500]
    free = range(0, 141, 8)

    def __init__(self, name):
        super().__init__(name, ["disk1/out.zip", "disk2/file.bin", "disk2/folder"],
                         {"disk1/out.zip": OLDER, "disk2/file.bin": self.FILE, **below("disk2/folder", self.FOLDER)})

    def check(self, folder, run):
        archive = folder / "disk1/out.zip"
        if not archive.exists():
            assert run.fault.kind != "none", "no fault, and no archive"
            return  # What fails at the end is reported by a missing file alone.
        if content(archive) == OLDER:
            assert run.killed or not run.succeeded, "reported success, and the older archive stands"
            return
        entries = read_archive(archive)
        if run.killed or run.fault.kind == "dead":  # It cannot be deleted.
            assert entries in (None, self.ENTRIES), f"a cut archive opens, with {entries and [*entries]}"
            return
        assert run.succeeded, "reported false, and an archive stands"
        assert entries is not None, "reported true, and the archive cannot be read"
        wrong = {name for name in {*entries, *self.ENTRIES} if entries.get(name) != self.ENTRIES.get(name)}
        # What of a folder cannot be listed is as if it were not there.
        is_listing = run.fault.hits(QUERYING) or run.fault.hits(OPENING, "O_DIRECTORY")
        assert not wrong or (is_listing and not wrong & {*entries}), f"wrong or missing in the archive: {wrong}"


class Log(Scene):
    LINES = [f"[{'WARNING' if i % 2 else 'ERROR'}] - line {i}" for i in range(6)]
    limits = [0, 1, 30, 60]

    def check(self, folder, run):
        assert run.killed or run.succeeded, "logging failed its caller"
        *lines, cut = (content(folder / "disk1/x.log") or b"").decode().split("\n")
        in_file = [line[len("hh:mm:ss - "):] for line in lines]
        console = [line for line in self.LINES if line in run.output]
        seen = f"the console has {console}, the file {in_file} and {cut!r}"
        assert in_file == [line for line in self.LINES if line in in_file], seen
        if run.fault.kind == "none":
            assert in_file == console == self.LINES, seen
        elif run.killed:  # What logMessage has returned for is with the system.
            is_in_step = in_file == self.LINES[:len(in_file)] and len(console) - len(in_file) in (0, 1)
            assert is_in_step or cut == "older", seen
        elif run.fault.kind == "error":
            is_console = run.fault.hits(ERRORS, "(1<") or run.fault.hits(ERRORS, "(2<")
            assert (in_file if is_console else console) == self.LINES and cut in ("", "older"), seen


class SetupLog(Scene):
    OLD = "Name_2020-01-31_12-00-00.log"
    KEPT = {OLD + ".txt", "Name_notes.log", "Other_2020-01-31_12-00-00.log", "keep.txt"}
    limits = [0, 1, 60]
    free = [0, 4, 8]

    def check(self, folder, run):
        names = {path.name for path in folder.glob("disk1/*")}
        assert all(content(folder / "disk1" / name) == OLDER for name in self.KEPT), f"not all is kept: {names}"
        new = names - {*self.KEPT, self.OLD}
        dated = [re.fullmatch(r"Name_\d{4}-\d\d-\d\d_\d\d-\d\d-\d\d\.log", name) for name in new]
        assert all(dated) or run.killed or run.fault.hits(DELETING), f"left {new}"
        assert run.code != 1 or (self.OLD in names and not any(dated)), f"reported false, and there are {names}"
        if run.succeeded and run.fault.kind in ("none", "full", "limit", "disk"):
            assert self.OLD not in names and new, f"reported true, and there are {names}"


class WrittenFile(Scene):
    """Success says that all is written."""

    limits = [0, 1, 16384, 59000, 65536]
    free = range(0, 125, 8)

    def check(self, folder, run):
        found = content(folder / FILE)
        if run.fault.kind == "none":
            self.whole = found  # The room's own tests compare it with literal bytes.
        assert self.holds(run, found), f"reported {run.succeeded}, and has {found and len(found)} bytes"

    def holds(self, run, found):
        return not run.succeeded or found == self.whole


class SavedTrace(WrittenFile):
    """Success says that the file was opened, and failure that it was not."""

    def holds(self, run, found):
        is_opened = found is not None and self.whole.startswith(found)
        return (found == OLDER and not run.succeeded) or (is_opened and run.code != 1)


class Pack(Scene):
    FOLDER = {"a.txt": noise(5000, "a"), "Sub/b.bin": noise(60000, "b"), "Sub/c.txt": b"c" * 30000}
    ENTRIES = {"sub/": b"", **{name.lower(): text for name, text in FOLDER.items()}}
    PAIR = ["disk1/out.zip", "disk1/out.zip.xxh64"]
    ASIDE = {"none": {"old.zip", "old.xxh64"}, "old archive": {"old.xxh64"}, "new archive": {"new.xxh64"}}
    limits = [0, 1, 40, 140, 30000, 65536]
    free = range(0, 121, 4)

    def __init__(self, name):
        super().__init__(name, [], {**dict.fromkeys(self.PAIR, OLDER), **below("disk2/folder", self.FOLDER)})
        self.command = [MOTION_PACK, "disk2/folder", "disk1/out.zip"]

    def kind_of(self, archive, manifest):
        """Which pair the two paths are."""
        if content(archive) is None:
            return "none" if content(manifest) is None else "torn"
        if content(archive) == OLDER:
            return {OLDER: "old", None: "old archive"}.get(content(manifest), "torn")
        kind = {self.manifest: "new", None: "new archive"}.get(content(manifest), "torn")
        return kind if read_archive(archive) == self.ENTRIES else "torn"

    def check(self, folder, run):
        pair = [folder / path for path in self.PAIR]
        if run.fault.kind == "none":
            self.manifest = content(pair[1])  # The program's own tests compare it with the files.
        kind = self.kind_of(*pair)
        kept = {*folder.glob("disk1/*")} - {*pair}
        aside = {path.name for each in kept for path in each.iterdir()}
        seen = f"reported {run.succeeded}, pair {kind}, beside it {kept} with {aside}"
        if run.killed or (run.fault.kind == "dead" and not run.succeeded):
            assert kind in ("old", "new") or (kind in self.ASIDE and aside >= self.ASIDE[kind]), seen
        else:
            assert kind == ("new" if run.succeeded else "old"), seen
            # Its temporary folder cannot be deleted where it cannot be listed.
            assert not kept or run.fault.hits([*QUERYING, *OPENING, *DELETING]), seen


SYNONYMS = (b'<KelbSynonyms><KelbSynonym values="first, one"/>' + b'<KelbSynonym values="x, y"/>\n' * 2000 +
            b'<KelbSynonym values="last, end"/></KelbSynonyms>')
DEEP_SYNONYMS = SYNONYMS.replace(b"\n", b"<a>" * 10000 + b"</a>" * 10000, 1)
FILE = "disk1/file"
LITTLE_MEMORY = f"--data={64 << 20}"
OUT_OF_MEMORY = 3
SCENES = [
    Replace("replaceFile"),
    Replace("replaceFile without an old target", has_old=False),
    Replace("replaceFile with the replacement on another disk", "replacement"),
    Replace("replaceFile with the replacement on another disk, without an old target", "replacement", has_old=False),
    Replace("replaceFile with the backup on another disk", "backup"),
    Replace("replaceFile with the target on another disk", "target"),
    Archive("packArchive"),
    Scene("packArchive with little memory", ["disk1/out.zip", FILE, "disk2"], {FILE: 160 << 20}, LITTLE_MEMORY, [0]),
    Log("writeLog", ["disk1/x.log"], {"disk1/x.log": OLDER}),
    SetupLog("setupLog", ["disk1"], below("disk1", dict.fromkeys([*SetupLog.KEPT, SetupLog.OLD], OLDER))),
    SavedTrace("saveTrace", ["disk1"], {FILE: OLDER}),
    WrittenFile("writeTypedFile", [FILE], {FILE: OLDER}),
    Scene("loadBytes", [FILE], {FILE: b"x" * 70000}),
    Scene("loadBytes with little memory", [FILE], {FILE: 1 << 30}, LITTLE_MEMORY, [OUT_OF_MEMORY]),
    Scene("digestFile", [FILE], {FILE: b"x" * 50000}),
    Scene("loadSynonyms", [FILE], {FILE: SYNONYMS}),
    Scene("loadSynonyms with little stack", [FILE], {FILE: DEEP_SYNONYMS}, f"--stack={1 << 20}", [0]),
    Pack("motion_pack"),
]
