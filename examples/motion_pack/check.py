#!/usr/bin/env python3
"""Runs motion_pack as its users do: check.py PROGRAM. Good folders are verified by programs that are not ours; for bad
input there must be one line on standard error, an exit code that is not 0, and the older archive and manifest."""
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest

sys.dont_write_bytecode = True
import verify

PROGRAM = os.path.abspath(sys.argv.pop(1))
MISSING = "No such file or directory"
SAMPLE = pathlib.Path(__file__).parent / "sample"
# A locale for which Qt has a warning of its own, and no folder into which the thread sanitizer would write.
ENVIRONMENT = {**os.environ, "LC_ALL": "C", "TMPDIR": "/missing"}


def start(*arguments, **options):
    words = [PROGRAM, *map(str, arguments)]
    pipe = subprocess.PIPE
    return subprocess.Popen(words, stdout=pipe, stderr=pipe, text=True, env=ENVIRONMENT, **options)


class Place(unittest.TestCase):
    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory()
        self.addCleanup(self.temporary.cleanup)
        self.root = pathlib.Path(self.temporary.name)
        self.folder = self.root / "folder"
        self.folder.mkdir()
        self.out = self.root / "out"
        self.out.mkdir()
        self.archive = self.out / "packed.zip"

    def put(self, name, content=b"content"):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)

    def pack(self, *options, folder=None, archive=None, warnings=()):
        """Returns what was printed, and the names in the archive."""
        archive = archive or self.archive
        process = start(folder or self.folder, archive, *options)
        output, errors = process.communicate(timeout=120)
        self.assertEqual((process.returncode, errors.count("\n")), (0, len(warnings)), errors)
        self.assertEqual(set(re.findall("not packed, as it has no content: '(.*)'", errors)), set(warnings))
        verify.verify(str(folder or self.folder), str(archive))
        return output, set(verify.read_manifest(f"{archive}.xxh64"))


class GoodFolders(Place):
    def test_sample_is_packed_and_verified(self):
        output, names = self.pack(folder=SAMPLE)
        self.assertEqual((len(names), "Notes/README" in names), (12, True))
        self.assertRegex(output, r"packing: 100 %\npacked 12 files, 75.46 KiB, into '.*packed.zip', 1\d.\d\d KiB\n$")
        self.assertEqual(sorted(os.listdir(self.out)), ["packed.zip", "packed.zip.xxh64"])

    def test_whole_folder_is_packed_and_what_has_no_content_is_reported(self):
        names = {"new\nline.txt", "back\\slash.txt", " blanks .txt", "Ü/ß.txt", "quote'\".txt", "-c.txt", "💃.txt"}
        names |= {"Makefile", "makefile", ".hidden", ".dir/Deep/file"}
        for name in [*names, "skip.tmp"]:
            self.put(name, name.encode())
        links = {"dangling": "nowhere", "circle": ".", "loop": "loop", "null": "/dev/null", "link": "skip.tmp"}
        for name, target in links.items():
            (self.folder / name).symlink_to(target)
        os.mkfifo(self.folder / "pi\npe")
        left = ["dangling", "circle", "loop", "null", "pi\\x0ape"]
        self.assertEqual(self.pack("--quiet", "-x", "*.TMP", warnings=left), ("", {*names, "link"}))

    def test_log_and_output_inside_the_folder_are_not_packed_and_other_logs_stay(self):
        self.put("a.bin", b"x" * 5000)
        self.put("motion_pack_2020-01-31_12-00-00.log")
        archive = self.folder / "own.zip"
        self.pack(archive=archive)  # the next time, the archive and its manifest are there
        options = ["--log-dir", self.folder, "--exclude", "*00-00.log", "--store", "bin"]
        self.assertEqual(self.pack(*options, archive=archive)[1], {"a.bin"})
        self.assertGreater(archive.stat().st_size, 5000)
        old, new = sorted(self.folder.glob("motion_pack_*.log"))
        self.assertRegex(new.read_text(), rf"\[DBG0\] - excluded: '{old.name}'\n.* - packed 1 files")

    def test_reader_that_goes_away_does_not_end_the_packing(self):
        self.put("a.txt")
        process = start(self.folder, self.archive)
        process.stdout.close()
        self.assertEqual(process.wait(60), 0)
        process.stderr.close()
        self.assertEqual(verify.verify(str(self.folder), str(self.archive)), 1)


class BadInput(Place):
    """An archive and a manifest of an earlier run are there: each failure leaves them as they are, and nothing else."""

    def setUp(self):
        super().setUp()
        self.older = {"packed.zip": "older archive", "packed.zip.xxh64": "older manifest"}
        self.write_older()

    def write_older(self):
        for name, text in self.older.items():
            (self.out / name).write_text(text)

    def assert_older(self):
        self.assertEqual({path.name: path.read_text() for path in self.out.iterdir()}, self.older)

    def fails(self, process, *words, code=1):
        _, errors = process.communicate(timeout=120)
        self.assertEqual(process.returncode, code, errors)
        self.assertEqual(errors.count("\n"), 1, errors)
        self.assertTrue(errors.startswith("motion_pack: "), errors)
        for word in words:
            self.assertIn(word, errors)
        self.assert_older()

    def test_command_line(self):
        for words in [[], [self.folder], [self.folder, self.archive, "third"], ["--unknown"], ["--store"], ["a", ""]]:
            self.fails(start(*words), code=2)
        for pattern in ["[a", "sub/*.txt"]:
            self.fails(start("-x", pattern, self.folder, self.archive), f"'{pattern}'", code=2)

    def test_folder(self):
        bad = [("missing", MISSING), ("", MISSING), (__file__, "Not a dir"), (self.folder, "no file to pack")]
        for folder, words in bad:
            self.fails(start(folder, self.archive), f"'{folder}'", words)

    @unittest.skipIf(os.geteuid() == 0, "root reads everything")
    def test_unreadable_parts(self):
        self.put("sub/a.txt")
        self.put("b.txt")
        for path in [self.folder / "b.txt", self.folder / "sub", self.folder]:
            path.chmod(0)
            self.fails(start(self.folder, self.archive), "cannot be read: Permission denied", path.name)
            path.chmod(0o700)

    def test_names(self):
        bad = [("a:b", "'a:b' cannot be the name"), ("~/c", "'~' cannot be the name"), (b"\xff", "no valid UTF-8")]
        for name, words in [*bad, ("Sub/a", "'Sub/a' and 'sub/a' would have one name")]:
            self.put("sub/a")
            self.put(os.fsdecode(name))
            self.fails(start(self.folder, self.archive), words)
            shutil.rmtree(self.folder)

    def test_places(self):
        self.put("a.txt")
        for archive, word in [("/missing/a.zip", MISSING), ("/proc/a.zip", MISSING), ("/dev/full", "cannot be ")]:
            self.fails(start(self.folder, archive), f"'{archive}'", word)
        (self.root / "taken.xxh64").mkdir()
        self.fails(start(self.folder, self.root / "taken"), "taken.xxh64' cannot be replaced: it is no file")
        self.fails(start(self.folder, self.archive, "--log-dir", "missing"), "'missing'", MISSING)
        self.assertTrue(pathlib.Path("/dev/full").is_char_device())

    def test_limit_of_the_file_size_at_many_points(self):
        self.put("Deep/a.txt", os.urandom(3000))
        self.put("b.png", os.urandom(3000))
        self.pack(archive=self.root / "whole.zip")
        size = (self.root / "whole.zip").stat().st_size
        for limit in [0, 1, 50, 2900, 3100, size - 300, size - 1]:
            limits = (resource.RLIMIT_FSIZE, (limit, limit))
            process = start(self.folder, self.archive, preexec_fn=lambda: resource.setrlimit(*limits))
            self.fails(process, "File too large")

    def test_full_disk_under_the_archive_or_the_manifest(self):
        if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=24k", "none", self.out], capture_output=True).returncode:
            self.skipTest("no right to mount a small disk")
        self.addCleanup(subprocess.run, ["umount", self.out])
        self.write_older()
        for size, name in [(30000, "packed.zip"), (13000, "packed.zip.xxh64")]:
            self.put("a.bin", os.urandom(size))
            self.fails(start(self.folder, self.archive), f"{name}' cannot be written: No space left on device")

    def slow_pack(self, size, count=1, **options):
        """A packing that is under way and has a while to go, and the file that comes last."""
        for index in range(count):
            self.put(f"{index:03}.bin")
            os.truncate(self.folder / f"{index:03}.bin", size)
        process = start(self.folder, self.archive, **options)
        while not any(self.out.glob("*/new.zip")):
            self.assertIsNone(process.poll())
            time.sleep(0.005)
        return process, self.folder / f"{count - 1:03}.bin"

    def test_file_that_changes_or_vanishes(self):
        changes = [(lambda file: file.write_bytes(b"other"), "changed while"), (pathlib.Path.unlink, MISSING)]
        for change, words in changes:
            process, last = self.slow_pack(1_000_000, 200)
            change(last)
            self.fails(process, f"'{last.name}'", words)

    def test_signal_in_one_large_file_ends_the_program_within_a_second(self):
        nohup = {"preexec_fn": lambda: signal.signal(signal.SIGHUP, signal.SIG_IGN)}
        for number in [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT]:
            is_ignoring = number == signal.SIGINT
            process, _ = self.slow_pack(4_000_000_000, **(nohup if is_ignoring else {}))
            if is_ignoring:
                process.send_signal(signal.SIGHUP)
            time.sleep(0.3)
            begin = time.monotonic()
            process.send_signal(number)
            self.fails(process, f"interrupted by signal {number.value}", code=-number)
            self.assertLess(time.monotonic() - begin, 1)


if __name__ == "__main__":
    unittest.main(verbosity=2)
