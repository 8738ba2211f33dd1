"""Runs the program CATALOGUE on its sample data and on bad input: test_catalogue.py CATALOGUE"""

import os
import pathlib
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

PROGRAM = os.path.abspath(sys.argv.pop())
DATA = pathlib.Path(__file__).resolve().parent / "data"
ITEMS = str(DATA / "catalogue.xml")
SYNONYMS = ["--synonyms", str(DATA / "synonyms.xml")]


def run(*arguments):
    """The exit code, the lines on standard output with single blanks, and standard error."""
    done = subprocess.run([PROGRAM, *arguments], capture_output=True, encoding="utf-8", timeout=30)
    return done.returncode, [" ".join(line.split()) for line in done.stdout.splitlines()], done.stderr


ANSWERS = {  # The arguments, how many lines they give, and the first of these.
    "equality alone, ignoring case and blanks around": (
        [ITEMS, " BOX , x"], 3, ["1 Fight/Punch_Jab box", "1 Fight/Punch_Hook box", "1 Fight/Uppercut box"]),
    "most matches first, pairs counted, gender too": (
        [ITEMS, *SYNONYMS, "box", "strong, hit, up, guy"], 32,
        ["6 Fight/Uppercut box, punch, strong, up", "5 Fight/Punch_Hook box, punch, strong"]),
    "gender left out": (
        [ITEMS, *SYNONYMS, "--ignore-gender", "guy, salsa"], 2,
        ["1 Dance/Salsa_Basic_M salsa", "1 Dance/Salsa_Basic_F salsa"]),
    "tags of the category, newer version": (
        [ITEMS, "nonhuman, gallop, centaur"], 13,
        ["2 Creature/Centaur_Gallop centaur, nonhuman (needs version 6.1.0)", "1 Creature/Dragon_Wing_Flap nonhuman"]),
    "items without tags of their own": ([ITEMS, ""], 1, ["1 Creature/Test_Pose Default"]),
}

NOT_A_FILE = str(DATA / "none.xml")
BROKEN = str(pathlib.Path(__file__).resolve())
MISTAKES = {  # The exit code, how the one line on standard error begins, and the arguments.
    "something is found": (1, 'no item has a tag that meets "no such tag"', [ITEMS, "no such tag"]),
    "a query is needed": (2, "a catalogue and a query are needed; see --help", [ITEMS]),
    "options are known": (2, "Unknown option 'fast'.", [ITEMS, "walk", "--fast"]),
    "the catalogue exists": (2, f"cannot open {NOT_A_FILE}: No such file or directory", [NOT_A_FILE, "walk"]),
    "the catalogue is XML": (2, f"{BROKEN} is no well-formed XML: line 1, column 1: ", [BROKEN, "walk"]),
    "the catalogue is one": (2, f"{SYNONYMS[1]} is no catalogue: its document element is", [SYNONYMS[1], "walk"]),
    "the synonyms are some": (
        2, f"{ITEMS} cannot be opened or is no synonyms file", [ITEMS, "walk", "--synonyms", ITEMS]),
    "words of gender come from synonyms": (
        2, "--ignore-gender needs --synonyms, which tell the words of gender", [ITEMS, "walk", "--ignore-gender"]),
    "a trace is in a folder": (2, f"cannot write a trace to {ITEMS}/t", [ITEMS, "BOX", "--trace", f"{ITEMS}/t"]),
    "a trace has a name": (2, "cannot write a trace to ", [ITEMS, "BOX", "--trace", ""]),
}


class Catalogue(unittest.TestCase):
    def test_answers_on_the_sample(self):
        for rule, (arguments, count, first) in ANSWERS.items():
            with self.subTest(rule):
                code, lines, errors = run(*arguments)
                self.assertEqual((code, len(lines), lines[:len(first)], errors), (0, count, first, ""))

    def test_mistakes_end_with_one_line(self):
        for rule, (wanted, message, arguments) in MISTAKES.items():
            with self.subTest(rule):
                code, _, error = run(*arguments)
                self.assertEqual((code, error.count("\n")), (wanted, 1))
                self.assertTrue(error.startswith(f"catalogue: {message}"), error)

    @unittest.skipUnless(os.path.exists("/dev/full"), "there is no device that is always full")
    def test_a_full_output_is_an_error(self):
        with open("/dev/full", "w") as full:
            done = subprocess.run([PROGRAM, ITEMS, "BOX"], stdout=full, stderr=subprocess.PIPE, timeout=30)
        self.assertEqual((done.returncode, done.stderr), (2, b"catalogue: cannot write to standard output\n"))

    def test_the_trace_tells_why(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "new", "why.xml")
            code, lines, _ = run(ITEMS, *SYNONYMS, "--ignore-gender", "--trace", str(path), "sprint, salsa, guy")
            root = ElementTree.parse(path).getroot()
        self.assertEqual((code, root.get("description"), len(root)), (0, "guy, salsa, sprint", len(lines)))
        salsa = next(hit for hit in root if hit.get("name").endswith(" Salsa_Basic_M"))
        self.assertEqual(
            [(reason.get("name"), reason.get("description")) for reason in salsa],
            [("man", "left out: gender"), ("salsa = salsa", "equal")])
        self.assertEqual(root[0][0].get("name"), "run ~ sprint")


unittest.main()
