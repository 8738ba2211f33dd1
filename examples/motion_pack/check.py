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
import verify  # noqa: E402

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
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name, "folder")
        self.out = pathlib.Path(temporary.name, "out")
        self.out.mkdir()
        self.archive = self.out / "packed.zip"

    def put(self, name, content=b"content"):
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)


class GoodFolders(Place):
    def pack(self, *options, folder=None, archive=None, warnings=()):
        """Returns what was printed, and the names in the archive."""
        folder, archive = str(folder or self.folder), str(archive or self.archive)
        process = start(folder, archive, *options)
        output, errors = process.communicate(timeout=120)
        self.assertEqual((process.returncode, errors.count("\n")), (0, len(warnings)), errors)
        self.assertEqual(set(re.findall("not packed, as it has no content: '(.*)'", errors)), set(warnings))
        verify.verify(folder, archive)
        return output, set(verify.read_manifest(archive + ".xxh64"))

    def test_sample_is_packed_and_verified(self):
        output, names = self.pack(folder=SAMPLE)
        self.assertEqual((len(names), "Notes/README" in names), (12, True))
        self.assertRegex(output, r"packing: 100 %\npacked 12 files, 75.43 KiB, into '.*packed.zip', 1\d.\d\d KiB\n$")
        self.assertEqual(sorted(os.listdir(self.out)), ["packed.zip", "packed.zip.xxh64"])

    def test_whole_folder_is_packed_and_what_has_no_content_is_reported(self):
        names = {"new\nline.txt", "Back\\Slash/A.txt", " blanks .txt", "Ü/ß.txt", "quote'\".txt", "-c.txt", "💃.txt"}
        names |= {"Makefile", "makefile", ".hidden", ".dir/Deep/file"}
        for name in [*names, "skip.tmp"]:
            self.put(name, name.encode())
        links = {"dangling": "nowhere", "circle": ".", "loop": "loop", "null": "/dev/null", "link": "skip.tmp"}
        for name, target in links.items():
            (self.folder / name).symlink_to(target)
        os.mkfifo(self.folder / "pi\npe")
        left = ["dangling", "circle", "loop", "null", "pi\\npe"]
        self.assertEqual(self.pack("--quiet", "-x", "*.TMP", warnings=left), ("", {*names, "link"}))

    def test_log_and_output_inside_the_folder_are_not_packed_and_other_logs_stay(self):
        self.put("a.bin", b"x" * 5000)
        self.put("motion_pack_2020-01-31_12-00-00.log")
        archive = self.folder / "own.zip"
        self.pack(archive=archive)  # The next time, the archive and its manifest are there.
        options = ["--log-dir", self.folder, "--exclude", "*00-00.log", "--store", "bin"]
        self.assertEqual(self.pack(*options, archive=archive)[1], {"a.bin"})
        self.assertGreater(archive.stat().st_size, 5000)
        old, new = sorted(self.folder.glob("motion_pack_*.log"))
        self.assertRegex(new.read_text(), rf"\[DBG0\] - excluded: '{old.name}'\n.* - packed 1 files")

    def test_reader_that_goes_away_does_not_end_the_packing(self):
        process = start(SAMPLE, self.archive)
        process.stdout.close()
        self.assertEqual(process.wait(60), 0)
        process.stderr.close()


class BadInput(Place):
    """An archive and a manifest of an earlier run are there: each failure leaves them as they are, and nothing else."""

    OLDER = {"packed.zip": "older archive", "packed.zip.xxh64": "older manifest"}

    def setUp(self):
        super().setUp()
        self.put("a.txt")
        for name, text in self.OLDER.items():
            (self.out / name).write_text(text)

    def fails(self, process, *words, code=1):
        _, errors = process.communicate(timeout=120)
        self.assertEqual((process.returncode, errors.count("\n")), (code, 1), errors)
        self.assertRegex(errors, "^motion_pack: .*" + ".*".join(map(re.escape, words)))
        self.assertEqual({path.name: path.read_text() for path in self.out.iterdir()}, self.OLDER)

    def test_arguments(self):
        pair = [self.folder, self.archive]
        for words in [[], pair[:1], [*pair, "third"], ["--unknown"], ["--store"], ["a", ""], ["", "a"]]:
            self.fails(start(*words), code=2)
        for pattern in ["[a", "sub/*.txt"]:
            self.fails(start("-x", pattern, *pair), f"'{pattern}'", code=2)
        empty = self.folder / "empty"
        empty.mkdir()
        for folder, words in [("missing", MISSING), (__file__, "Not a dir"), (empty, "no file to pack")]:
            self.fails(start(folder, self.archive), f"'{folder}'", words)
        taken = self.folder / "taken"
        taken.with_suffix(".xxh64").mkdir()
        for archive, word in [("/missing/a.zip", MISSING), ("/dev/full", "cannot be "), (taken, "it is no file")]:
            self.fails(start(self.folder, archive), f"'{archive}", word)
        self.fails(start(*pair, "--log-dir", "missing"), "'missing'", MISSING)
        self.assertTrue(pathlib.Path("/dev/full").is_char_device())

    @unittest.skipIf(os.geteuid() == 0, "root reads everything")
    def test_unreadable_parts(self):
        self.put("sub/a.txt")
        for path in [self.folder / "a.txt", self.folder / "sub", self.folder]:
            path.chmod(0)
            self.fails(start(self.folder, self.archive), path.name, "cannot be read: Permission denied")
            path.chmod(0o700)

    def test_names(self):
        for name, words in [("a:b", "'a:b' cannot be the name"), ("~/c", "'~/' cannot be the name"),
                            ("b\\", "'b\\\\' cannot be the name"), ("sub\\a", "would have one name"),
                            (b"\xff", "no valid UTF-8"), ("Sub/a", "would have one name")]:
            self.put("sub/a")
            self.put(os.fsdecode(name))
            self.fails(start(self.folder, self.archive), words)
            shutil.rmtree(self.folder)

    def test_limit_of_the_file_size(self):
        self.put("b.png", os.urandom(3000))
        for limit in [0, 1, 2900, 3300]:
            limits = (resource.RLIMIT_FSIZE, (limit, limit))
            process = start(self.folder, self.archive, preexec_fn=lambda: resource.setrlimit(*limits))
            self.fails(process, "File too large")

    def slow_pack(self, size, count=1, **options):
        """A packing that is under way and has a while to go, and the file that comes last."""
        for index in range(count):
            self.put(f"{index:03}.bin")
            os.truncate(self.folder / f"{index:03}.bin", size)
        last = self.folder / "z.bin"
        last.write_bytes(b"last")
        process = start(self.folder, self.archive, **options)
        self.addCleanup(process.kill)
        while not any(self.out.glob("*/new.zip")):
            self.assertIsNone(process.poll())
            time.sleep(0.005)
        return process, last

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
