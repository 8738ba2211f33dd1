"""The operations that the fault sweep tries, and what must stand on disk after each."""
import pathlib
import random
import re
import subprocess
import sys
import zipfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
DRIVER = ROOT / "build/dev/tests/faults/VelorFaultsDriver"
MOTION_PACK = ROOT / "build/dev/examples/motion_pack/motion_pack"

# Calls after which a disk is another, those that open or only look, and the errors with which each may fail.
BUSY = ["ENOSPC", "EIO", "EINTR"]
WRITING = dict.fromkeys(
    ["write", "writev", "pwrite64", "pwritev", "sendfile", "copy_file_range", "ftruncate", "fallocate"], BUSY)
MOVING = dict.fromkeys(
    ["rename", "renameat", "renameat2", "link", "linkat", "symlink", "symlinkat", "mkdir", "mkdirat"],
    ["ENOSPC", "EIO"])
DELETING = dict.fromkeys(["unlink", "unlinkat", "rmdir"], ["EIO"])
OPENING = dict.fromkeys(["open", "openat"], BUSY)
ASKING = dict.fromkeys(["stat", "lstat", "newfstatat", "fstat", "statx", "statfs", "fstatfs", "access", "faccessat",
                        "faccessat2", "readlink", "readlinkat", "getdents64", "lseek"], ["EIO"])
CHANGING = {**WRITING, **MOVING, **DELETING,
            **dict.fromkeys(["chmod", "fchmod", "fchmodat", "utimensat", "ioctl"], ["EIO"])}
ERRORS = {**CHANGING, **OPENING, **ASKING, **dict.fromkeys(["close", "fsync", "fdatasync"], BUSY),
          **dict.fromkeys(["read", "pread64", "readv"], ["EIO", "EINTR"])}


class Broken(Exception):
    """A promise that was not kept."""


def require(holds, text):
    if not holds:
        raise Broken(text)


def noise(size, seed):
    """Bytes that do not compress, the same in each run."""
    return random.Random(seed).randbytes(size)


def content(path):
    return path.read_bytes() if path.is_file() else None


def read_archive(path):
    """The content of each entry; none if the archive is damaged."""
    try:
        with zipfile.ZipFile(path) as archive:
            return {entry.filename: archive.read(entry) for entry in archive.infolist()}
    except (zipfile.BadZipFile, OSError):
        return None


def strangers(folders, known):
    return {path.name for folder in folders for path in folder.iterdir()} - {path.name for path in known}


class Scene:
    """An operation on the files in the folders `home` and `other` of a place, which lie on two disks if `two_disks`.

    A run has `fault`, `code`, `output` and `errors`; `killed`; and `told`, whether the operation reported success."""

    two_disks = False
    limits = []  # bytes that a file may have
    sizes = []  # KiB of small disks
    options = []  # of prlimit

    def __init__(self, name):
        self.name = name

    def prepare(self, place):
        """Puts the files there that the operation needs."""

    def words(self, place):
        """The command of the operation."""

    def check_outcome(self, place, run):
        require(run.code in ([-9] if run.fault.kind == "kill" else [0, 1]),
                f"ended with {run.code}: {run.errors[-300:]!r}")
        self.check(place, run)

    def check(self, place, run):
        """Raises Broken unless what stands is what was reported."""


class Replace(Scene):
    FILES = {"old": noise(20000, "old"), "new": noise(98304, "new"), "stale": noise(3000, "stale")}
    limits = [0, 1, 16384, 19999, 20000, 65536, 98303]
    sizes = [*range(24, 133, 4)]

    def __init__(self, name, elsewhere="", has_old=True):
        super().__init__(name)
        self.two_disks = bool(elsewhere)
        self.elsewhere = elsewhere
        self.has_old = has_old

    def paths(self, place):
        names = ["target", "replacement", "backup"]
        return [(place.other if name == self.elsewhere else place.home) / name for name in names]

    def prepare(self, place):
        for path, text in zip(self.paths(place), ["old" if self.has_old else None, "new", "stale"]):
            if text:
                path.write_bytes(self.FILES[text])

    def words(self, place):
        return [DRIVER, "replaceFile", *self.paths(place)]

    def check(self, place, run):
        label = {None: "none", **{text: name for name, text in self.FILES.items()}}
        target, replacement, backup = (label.get(content(path), "torn") for path in self.paths(place))
        seen = f"reported {run.told}, target {target}, replacement {replacement}, backup {backup}"
        before = "old" if self.has_old else "none"
        require("torn" not in (target, replacement, backup), seen)
        require(target in ("new", before) or backup == "old", seen)
        if run.killed:
            require("new" in (target, replacement), seen)
            return
        left = strangers([place.home, place.other], self.paths(place))
        require(run.fault.kind == "dead" or not left, f"left {left}")
        is_deletable = not run.fault.hits(DELETING)
        if run.told:
            require(target == "new" and (backup == "stale" or self.has_old), seen)
            require((replacement == "none" and backup != "old") or not is_deletable, seen)
        elif run.fault.kind != "dead":
            is_restored = target == before and backup in ("none", "stale")
            # Where every disk stays full, an old file does not get back from another one.
            is_waiting = self.two_disks and run.fault.kind == "full" and (target, backup) == ("none", "old")
            require(is_restored or is_waiting, seen)
            require(replacement == "none" or not is_deletable or run.fault.hits(ASKING), seen)


class Archive(Scene):
    FILES = {"a.txt": noise(3000, "a"), "sub/b.bin": noise(90000, "b"), "sub/c.txt": b"c" * 20000}
    FILE = noise(30000, "disk")
    ENTRIES = {"disk/file.bin": FILE, "memory.txt": b"memory", "empty/": b"", "sub/": b"", **FILES}
    limits = [0, 1, 100, 30000, 65536, 123000, 124500]
    sizes = [*range(4, 141, 8)]

    def prepare(self, place):
        (place.other / "folder/sub").mkdir(parents=True)
        for name, text in self.FILES.items():
            (place.other / "folder" / name).write_bytes(text)
        (place.other / "file.bin").write_bytes(self.FILE)
        (place.home / "out.zip").write_bytes(b"older")

    def words(self, place):
        return [DRIVER, "packArchive", place.home / "out.zip", place.other / "file.bin", place.other / "folder"]

    def check(self, place, run):
        archive = place.home / "out.zip"
        if not archive.exists():
            return  # The caller looks for the file.
        if content(archive) == b"older":
            require(run.killed or not run.told, "reported success, and the older archive stands")
            return
        entries = read_archive(archive)
        if run.killed or run.fault.kind == "dead":  # It cannot be deleted.
            require(entries in (None, self.ENTRIES), f"a cut archive opens, with {entries and [*entries]}")
            return
        require(run.told, "reported false, and an archive stands")
        require(entries is not None, "reported true, and the archive cannot be read")
        wrong = {name for name in {*entries, *self.ENTRIES} if entries.get(name) != self.ENTRIES.get(name)}
        # What of a folder cannot be listed is as if it were not there.
        is_listing = run.fault.hits(ASKING) or run.fault.hits_text("O_DIRECTORY")
        require(not wrong or (is_listing and not wrong & {*entries}), f"wrong or missing in the archive: {wrong}")


class Log(Scene):
    LINES = [f"[{'WARNING' if i % 2 else 'ERROR'}] - line {i}" for i in range(6)]
    limits = [0, 1, 30, 60]
    sizes = [4]

    def prepare(self, place):
        (place.home / "x.log").write_bytes(b"older")

    def words(self, place):
        return [DRIVER, "writeLog", place.home / "x.log"]

    def check(self, place, run):
        require(run.killed or run.told, "logging failed its caller")
        *lines, cut = (content(place.home / "x.log") or b"").decode().split("\n")
        in_file = [line[len("hh:mm:ss - "):] for line in lines]
        console = [line for line in self.LINES if line in run.output + run.errors]
        seen = f"the console has {console}, the file {in_file} and {cut!r}"
        require(in_file == [line for line in self.LINES if line in in_file], seen)
        if run.killed:  # What logMessage has returned for is with the system.
            require(cut == "older" or (in_file == self.LINES[:len(in_file)] and
                                       len(console) - len(in_file) in (0, 1)), seen)
        elif run.fault.kind == "error":
            is_console = run.fault.hits_text("(1<") or run.fault.hits_text("(2<")
            require((in_file if is_console else console) == self.LINES and cut in ("", "older"), seen)


class SetupLog(Scene):
    OLD = "Name_2020-01-31_12-00-00.log"
    KEPT = {OLD + ".txt", "Name_notes.log", "Other_2020-01-31_12-00-00.log", "keep.txt"}
    limits = [0, 1, 60]
    sizes = [24]

    def prepare(self, place):
        for name in [*self.KEPT, self.OLD]:
            (place.home / name).write_bytes(b"text")

    def words(self, place):
        return [DRIVER, "setupLog", place.home]

    def check(self, place, run):
        names = {path.name for path in place.home.iterdir()}
        require(all(content(place.home / name) == b"text" for name in self.KEPT), f"not all is kept: {names}")
        new = names - {*self.KEPT, self.OLD}
        is_new = [re.fullmatch(r"Name_\d{4}-\d\d-\d\d_\d\d-\d\d-\d\d\.log", name) for name in new]
        require(all(is_new) or run.killed or run.fault.hits(DELETING), f"left {new}")
        require(run.told or run.killed or (self.OLD in names and not any(is_new)),
                f"reported false, and there are {names}")
        if run.told and run.fault.kind in ("full", "limit", "disk"):
            require(self.OLD not in names and new, f"reported true, and there are {names}")


class OneFile(Scene):
    """An operation that writes the file `name` over an older one; `may_be_cut` where success does not say that all is
    written, and failure that nothing is."""

    limits = [0, 1, 16384, 59000, 65536]
    sizes = [*range(4, 129, 8)]

    def __init__(self, operation, name, may_be_cut, in_folder=False):
        super().__init__(operation)
        self.file = name
        self.may_be_cut = may_be_cut
        self.in_folder = in_folder

    def prepare(self, place):
        (place.home / self.file).write_bytes(b"older")

    def words(self, place):
        return [DRIVER, self.name, place.home if self.in_folder else place.home / self.file]

    def check(self, place, run):
        found = content(place.home / self.file)
        if run.fault.kind == "none":
            self.whole = found  # The room's own tests hold it against literal bytes.
        elif run.told and not self.may_be_cut:
            require(found == self.whole, f"reported true, and has {len(found or b'')} bytes")
        elif run.told or run.killed:
            require(not self.may_be_cut or found == b"older" or self.whole.startswith(found), "has other bytes")
        else:
            require(not self.may_be_cut or found == b"older", "reported false after a change")


class Reader(Scene):
    """An operation that reads one file; the driver itself says whether success was reported for wrong data."""

    def __init__(self, operation, text):
        super().__init__(operation)
        self.text = text

    def prepare(self, place):
        (place.home / "file").write_bytes(self.text)

    def words(self, place):
        return [DRIVER, self.name, place.home / "file"]


class Scarce(Scene):
    """An operation on a file of `size` zeros or of `text`, that must end with `code` under an option of prlimit."""

    def __init__(self, operation, option, code, text=b"", size=0):
        super().__init__(f"{operation}: {option}")
        self.operation = operation
        self.options = [option]
        self.code = code
        self.text = text
        self.size = size

    def prepare(self, place):
        with (place.home / "file").open("wb") as file:
            file.write(self.text)
            file.truncate(self.size or len(self.text))
        (place.home / "folder").mkdir()

    def words(self, place):
        archive = [place.home / "out.zip"] if self.operation == "packArchive" else []
        return [DRIVER, self.operation, *archive, place.home / "file", place.home / "folder"]

    def check_outcome(self, place, run):
        require(run.code == self.code, f"ended with {run.code}: {run.errors[-300:]!r}")
        require(self.operation != "packArchive" or (place.home / "out.zip").exists(), "left no archive")


class Pack(Scene):
    FILES = {"a.txt": noise(5000, "a"), "Sub/b.bin": noise(60000, "b"), "Sub/c.txt": b"c" * 30000}
    ENTRIES = {"sub/": b"", **{name.lower(): text for name, text in FILES.items()}}
    limits = [0, 1, 40, 140, 30000, 65536]
    sizes = [*range(12, 121, 4)]
    ASIDE = {"none": ["old.zip", "old.xxh64"], "old archive": ["old.xxh64"], "new archive": ["new.xxh64"]}

    def prepare(self, place):
        for name, text in self.FILES.items():
            (place.other / "folder" / name).parent.mkdir(parents=True, exist_ok=True)
            (place.other / "folder" / name).write_bytes(text)
        for path in self.pair(place):
            path.write_bytes(b"older")

    def pair(self, place):
        return [place.home / "out.zip", place.home / "out.zip.xxh64"]

    def words(self, place):
        return [MOTION_PACK, place.other / "folder", place.home / "out.zip"]

    def kind_of(self, archive, manifest):
        """Which pair the two paths are."""
        if content(archive) is None:
            return "none" if content(manifest) is None else "torn"
        if content(archive) == b"older":
            return {b"older": "old", None: "old archive"}.get(content(manifest), "torn")
        kind = {self.manifest: "new", None: "new archive"}.get(content(manifest), "torn")
        return kind if read_archive(archive) == self.ENTRIES else "torn"

    def check(self, place, run):
        pair = self.pair(place)
        if run.fault.kind == "none":
            verify = ROOT / "examples/motion_pack/verify.py"
            subprocess.run([sys.executable, "-B", verify, place.other / "folder", pair[0]],
                           check=True, capture_output=True)
            self.manifest = content(pair[1])
        kind = self.kind_of(*pair)
        kept = [path for path in place.home.iterdir() if path not in pair]
        aside = {path.name for folder in kept for path in folder.iterdir()}
        seen = f"reported {run.told}, pair {kind}, beside it {[path.name for path in kept]} with {aside}"
        if run.killed or (run.fault.kind == "dead" and not run.told):
            require(kind in ("old", "new") or (kind in self.ASIDE and aside >= {*self.ASIDE[kind]}), seen)
        else:
            require(kind == ("new" if run.told else "old"), seen)
            # Its temporary folder cannot be deleted where it cannot be listed.
            require(not kept or run.fault.hits({**ASKING, **OPENING, **DELETING}), seen)


SYNONYMS = (b'<KelbSynonyms><KelbSynonym values="first, one"/>' + b'<KelbSynonym values="x, y"/>\n' * 2000 +
            b'<KelbSynonym values="last, end"/></KelbSynonyms>')
DEEP_SYNONYMS = SYNONYMS.replace(b"\n", b"<a>" * 10000 + b"</a>" * 10000, 1)
SCENES = [
    Replace("replaceFile"),
    Replace("replaceFile: no old target", has_old=False),
    Replace("replaceFile: replacement on another disk", "replacement"),
    Replace("replaceFile: replacement on another disk, no old target", "replacement", has_old=False),
    Replace("replaceFile: backup on another disk", "backup"),
    Replace("replaceFile: target on another disk", "target"),
    Archive("packArchive"),
    Scarce("packArchive", f"--data={64 << 20}", 0, size=160 << 20),
    Log("writeLog"),
    SetupLog("setupLog"),
    OneFile("saveTrace", "trace.xml", may_be_cut=True, in_folder=True),
    OneFile("plotCurve", "curve.txt", may_be_cut=True),
    OneFile("writeTypedFile", "file", may_be_cut=False),
    Reader("loadBytes", b"x" * 70000),
    Scarce("loadBytes", f"--data={64 << 20}", 3, size=1 << 30),
    Reader("digestFile", b"x" * 50000),
    Reader("loadSynonyms", SYNONYMS),
    Scarce("loadSynonyms", f"--stack={1 << 20}", 0, text=DEEP_SYNONYMS),
    Pack("motion_pack"),
]
