#!/usr/bin/env python3
"""Runs motion_pack as its users do: check.py PROGRAM. Good folders are verified by programs that are not ours; for bad
input there must be one line on standard error, an exit code that is not 0, and neither archive nor manifest."""
import os
import pathlib
import resource
import signal
import stat
import subprocess
import sys
import tempfile
import time
import unittest

sys.dont_write_bytecode = True
import verify

PROGRAM = os.path.abspath(sys.argv.pop(1))
SAMPLE = pathlib.Path(__file__).parent / "sample"
ENVIRONMENT = {**os.environ, "LC_ALL": "C"}  # a locale for which Qt has a warning of its own


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

    def log_text(self):
        return "".join(path.read_text() for path in self.out.glob("motion_pack_*.log"))

    def pack(self, *options, folder=None, archive=None):
        archive = archive or self.archive
        process = start(folder or self.folder, archive, *options)
        output, errors = process.communicate(timeout=120)
        self.assertEqual((process.returncode, errors), (0, ""))
        return output, verify.verify(str(folder or self.folder), str(archive))

    def fails(self, process, *words, code=1):
        _, errors = process.communicate(timeout=120)
        self.assertEqual(process.returncode, code, errors)
        self.assertEqual(errors.count("\n"), 1, errors)
        self.assertTrue(errors.startswith("motion_pack: "), errors)
        for word in words:
            self.assertIn(word, errors)
        left = [path.name for path in self.root.rglob("*") if ".zip" in path.name]
        self.assertEqual(left, [])


class GoodFolders(Place):
    def test_sample_is_packed_logged_and_verified(self):
        output, files = self.pack(folder=SAMPLE)
        self.assertEqual(files, 11)
        self.assertIn("packing: 100 %\npacked 11 files", output)
        self.assertIn("[WARNING] - not packed: 'Notes/README'", self.log_text())

    def test_odd_names_are_packed_and_manifested(self):
        for name in ["new\nline.txt", "back\\slash.txt", " blanks .txt", "Ü/ß.txt", "quote'\".txt", "-c.txt", "💃.txt"]:
            self.put(name, name.encode())
        self.assertEqual(self.pack()[1], 7)

    def test_what_is_left_out_is_told_in_the_log(self):
        self.put("a.txt")
        self.put(".hidden/b.txt")
        self.put("skip.tmp")
        (self.folder / "dangling.txt").symlink_to("nowhere")
        (self.folder / "circle.d").symlink_to(".")
        os.mkfifo(self.folder / "pipe.txt")
        pathlib.Path(os.fsdecode(os.fsencode(self.folder) + b"/\xff.txt")).write_text("x")
        self.assertEqual(self.pack("--exclude", "*.TMP")[1], 1)
        told = ["'.hidden' (hidden)", "a dangling link", "no regular file", "no valid UTF-8"]
        for reason in [*told, "[DBG0] - not packed: 'skip.tmp'"]:
            self.assertIn(reason, self.log_text())

    def test_own_output_inside_the_folder_is_not_packed_a_second_time_over(self):
        self.put("a.txt")
        for _ in range(2):  # the second time, the archive and its manifest are there
            _, files = self.pack("--log-dir", self.out, archive=self.folder / "own.zip")
            self.assertEqual(files, 1)
        self.pack("--log-dir", self.folder)

    def test_old_logs_go_without_a_word_on_the_console(self):
        self.put("a.txt")
        old = self.out / "motion_pack_2020-01-31_12-00-00.log"
        old.write_text("old")
        self.assertEqual(self.pack("--quiet")[0], "")
        self.assertFalse(old.exists())
        self.assertIn("Deleted log file: " + old.name, self.log_text())

    def test_reader_that_goes_away_does_not_end_the_packing(self):
        self.put("a.txt")
        process = start(self.folder, self.archive)
        process.stdout.close()
        self.assertEqual(process.wait(60), 0)
        process.stderr.close()
        self.assertEqual(verify.verify(str(self.folder), str(self.archive)), 1)

    def test_stored_extensions_and_quiet(self):
        self.put("a.txt", b"x" * 5000)
        self.assertEqual(self.pack("--quiet", "--store", "txt")[0], "")
        self.assertGreater(self.archive.stat().st_size, 5000)


class BadInput(Place):
    def test_command_line(self):
        for words in [[], [self.folder], [self.folder, self.archive, "third"], ["--unknown", "a", "b"], ["--store"]]:
            self.fails(start(*words), code=2)

    def test_folder(self):
        file = self.root / "file.txt"
        file.write_text("x")
        self.put("no dot")
        empty = self.folder
        missing = self.root / "missing"
        none = [(missing, "no folder"), ("", "no folder")]
        for folder, word in [*none, (file, "is no folder"), (empty, "no file to pack")]:
            self.fails(start(folder, self.archive), word)

    @unittest.skipIf(os.geteuid() == 0, "root reads everything")
    def test_unreadable_parts(self):
        self.put("sub/a.txt")
        self.put("b.txt")
        for path in [self.folder / "b.txt", self.folder / "sub", self.folder]:
            path.chmod(0)
            self.fails(start(self.folder, self.archive), "cannot be read", path.name)
            path.chmod(0o700)

    def test_place_of_the_archive(self):
        self.put("a.txt")
        missing = self.root / "missing"
        taken = [(self.out, "no file"), ("/dev/full", "no file")]
        for archive, word in [(missing / "a.zip", f"'{missing}'"), ("/proc/a.zip", "/proc"), *taken]:
            self.fails(start(self.folder, archive), word)
        self.assertFalse(missing.exists())
        self.assertTrue(stat.S_ISCHR(os.stat("/dev/full").st_mode))
        self.fails(start(self.folder, self.archive, "--log-dir", "/proc/log"), "no log")

    def test_full_disk_at_many_points(self):
        self.put("Deep/a.txt", os.urandom(3000))
        self.put("b.png", os.urandom(3000))
        self.pack()
        size = self.archive.stat().st_size
        self.archive.unlink()
        os.unlink(f"{self.archive}.xxh64")
        for limit in [0, 1, 50, 2900, 3100, size - 300, size - 1]:

            def fill():
                signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
                resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

            self.fails(start(self.folder, self.archive, preexec_fn=fill, restore_signals=False), "disk full")

    def test_rejected_name_is_told(self):
        self.put("c.txt")
        self.put("sub/a:b.txt")
        self.put("a:b.txt")
        self.fails(start(self.folder, self.archive), "'a:b.txt' cannot be the name")
        os.unlink(self.folder / "a:b.txt")
        (self.folder / "~").mkdir()
        self.fails(start(self.folder, self.archive), "'~' cannot be the name")

    def test_two_files_of_one_name(self):
        self.put("Sub/a.txt")
        self.put("sub/a.txt")
        self.fails(start(self.folder, self.archive), "Sub/a.txt", "sub/a.txt", "one name")

    def slow_pack(self):
        """A packing that is under way and has a while to go; the name of the file that comes last."""
        for index in range(400):
            self.put(f"{index}.bin", os.urandom(100_000))
        process = start(self.folder, self.archive)
        while not self.archive.exists() or self.archive.stat().st_size < 1_000_000:
            self.assertIsNone(process.poll())
            time.sleep(0.005)
        return process, [entry.name for entry in os.scandir(self.folder)][-1]

    def test_vanished_file_is_told(self):
        process, last = self.slow_pack()
        os.unlink(self.folder / last)
        self.fails(process, f"'{last}' cannot be read")

    def test_changed_file_is_told(self):
        process, last = self.slow_pack()
        (self.folder / last).write_bytes(b"other")
        self.fails(process, f"'{last}' changed while it was packed")

    def test_interruption_leaves_nothing(self):
        process, _ = self.slow_pack()
        process.send_signal(signal.SIGINT)
        self.fails(process, "interrupted")


if __name__ == "__main__":
    unittest.main()
