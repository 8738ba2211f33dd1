#!/usr/bin/env python3
"""Drags clips with a real pointer on a virtual display: inside one window of motion_browser, between the windows of two
processes, to be cancelled, and something that is no clip.

Every step waits until the programs show or log what it needs before the next one begins, with a limit that a busy
machine does not reach. Nothing that was refused is tried again.

Usage: test_motion_browser.py MOTION_BROWSER

Exit code 77 says that the virtual display, its pointer or its window manager is not installed."""

import contextlib
import json
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

PATIENCE = 60
TIME_LIMIT = 280
# Two clicks at one place that are farther apart in time, by the clock of the display, are two clicks.
DOUBLE_CLICK = 0.5
STANDSTILL = 1.0
# How long something that must not happen is given to happen.
QUIET = 0.5
STEPS = 8
SKIPPED = 77


class Display:
    """An X server of its own with a window manager, and the pointer and keyboard on it."""

    def __init__(self, stack, folder):
        read_end, write_end = os.pipe()
        server = ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1600x900x24", "-nolisten", "tcp"]
        start(stack, server, pass_fds=[write_end], stderr=subprocess.DEVNULL)
        os.close(write_end)
        number = os.read(read_end, 16).decode().strip()
        assert number, "the virtual display did not start"
        self.environment = {
            "DISPLAY": ":" + number, "QT_QPA_PLATFORM": "xcb", "LC_ALL": "C.UTF-8", "HOME": folder,
            "XDG_RUNTIME_DIR": folder, "PATH": os.environ["PATH"],
            **{name: os.environ[name] for name in ("ASAN_OPTIONS", "LSAN_OPTIONS") if name in os.environ}}
        start(stack, ["openbox"], env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        wait("the window manager", self.is_managed)

    def is_managed(self):
        """A window manager tells how many desktops there are."""
        return subprocess.run(["xdotool", "get_num_desktops"], env=self.environment, timeout=PATIENCE,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode == 0

    def do(self, *command):
        subprocess.run(["xdotool", *map(str, command)], env=self.environment, check=True, timeout=PATIENCE)

    def click(self, place, *modifiers):
        for key in modifiers:
            self.do("keydown", key)
        self.do("mousemove", *middle(place), "click", 1)
        for key in modifiers:
            self.do("keyup", key)

    def move(self, start_point, end_point):
        """As a hand does, so that every window on the way hears of it."""
        for step in range(1, STEPS + 1):
            point = [a + (b - a) * step // STEPS for a, b in zip(start_point, end_point)]
            self.do("mousemove", *point, "sleep", 0.03)

    def tremble(self, point):
        """The pointer stays about there, and every window goes on hearing of it."""
        self.do("mousemove", point[0] + 3, point[1] + 3, "sleep", 0.03, "mousemove", *point)


class Browser:
    """A running motion_browser, seen through its state report and its log file."""

    def __init__(self, stack, display, program, folder, left):
        self.folder = pathlib.Path(folder)
        self.folder.mkdir()
        command = [program, "--report", self.folder / "report.json", "--log-folder", self.folder,
                   "-qwindowgeometry", f"760x600+{left}+60"]
        self.process = start(stack, command, env=display.environment)
        # The window manager may still move the window: the report counts once it stays as it is.
        self.wait("the window to stand still", self.stands_still)

    def stands_still(self):
        before = self.state()
        time.sleep(STANDSTILL)
        return before and before.get("catalogue") and before == self.state()

    def state(self):
        assert self.process.poll() is None, f"motion_browser ended with {self.process.returncode}"
        try:
            return json.loads((self.folder / "report.json").read_text(encoding="utf-8"))
        except FileNotFoundError:
            return {}

    def place(self, name):
        return self.state()["places"][name]

    def rows(self, view):
        return [clip for clip in self.state()[view] if "place" in clip]

    def names(self, view):
        return [clip["name"] for clip in self.state().get(view, [])]

    def playlist(self):
        return self.names("playlist")

    def log(self):
        return "".join(path.read_text(encoding="utf-8") for path in sorted(self.folder.glob("*.log")))

    def welcomes(self):
        """Whether the place under the pointer has answered that it takes what is dragged from here."""
        answers = [line for line in self.log().splitlines() if "A drop here is" in line or "Dragging" in line]
        return bool(answers) and "welcome" in answers[-1]

    def wait(self, what, is_so, meanwhile=lambda: None):
        wait(what, is_so, meanwhile, lambda: f"; playlist {self.playlist()}; log:\n{self.log()}")

    def wait_for_log(self, text, count=1, meanwhile=lambda: None):
        self.wait(f"'{text}' in the log", lambda: self.log().count(text) >= count, meanwhile)

    def wait_for_names(self, view, names):
        self.wait(f"the {view} {names}", lambda: self.names(view) == names)


def wait(what, is_so, meanwhile=lambda: None, details=str):
    deadline = time.monotonic() + PATIENCE
    while not is_so():
        assert time.monotonic() < deadline, f"waited in vain for {what}{details()}"
        meanwhile()
        time.sleep(0.05)


def start(stack, command, **options):
    process = subprocess.Popen(command, **options)

    def stop():
        process.terminate()
        process.wait(PATIENCE)

    stack.callback(stop)
    return process


def middle(place):
    x, y, width, height = map(int, place)
    return x + width // 2, y + height // 2


def select(display, browser, count):
    """Selects the first clips of the catalogue, and gives their names and a point on the second of them."""
    time.sleep(DOUBLE_CLICK)
    rows = browser.rows("catalogue")[:count]
    display.click(rows[0]["place"])
    if count > 1:
        display.click(rows[-1]["place"], "shift")
    return [row["name"] for row in rows], middle(rows[min(1, count - 1)]["place"])


def pull(display, browser, count, point):
    """Presses the button on a selected clip and pulls until a drag has begun; the button stays down."""
    dragging = "Dragging 1 clip" if count == 1 else f"Dragging {count} clips"
    earlier = browser.log().count(dragging)
    away = (point[0] + 40, point[1] + 10)
    time.sleep(DOUBLE_CLICK)
    display.do("mousemove", *point, "mousedown", 1)
    display.move(point, away)
    browser.wait_for_log(dragging, earlier + 1, lambda: display.tremble(away))
    return away


def lift(display, browser, count):
    """Selects the first clips of the catalogue and starts to drag them."""
    names, point = select(display, browser, count)
    return names, pull(display, browser, count, point)


def carry(display, source, target, point):
    """Moves what is dragged over the playlist of `target`, until that has welcomed it. The way leads over the logs,
    which welcome nothing, so that the answer is the playlist's."""
    end = middle(target.place("playlist"))
    height = middle(source.place("log"))[1]
    refusing = (point[0], height)
    display.move(point, refusing)
    source.wait("the log to refuse clips", lambda: not source.welcomes(), lambda: display.tremble(refusing))
    display.move(refusing, (end[0], height))
    display.move((end[0], height), end)
    source.wait("the playlist to welcome clips", source.welcomes, lambda: display.tremble(end))


def drag_within_one_window(display, first, _):
    names, point = lift(display, first, 2)
    carry(display, first, first, point)
    display.do("mouseup", 1)
    first.wait_for_names("playlist", names)
    first.wait_for_log("Dragged 2 clips: copied")


def move_within_the_playlist(display, first, _):
    before = first.playlist()
    place = first.rows("playlist")[0]["place"]
    display.click(place)
    point = pull(display, first, 1, middle(place))
    carry(display, first, first, point)
    display.do("mouseup", 1)
    first.wait_for_names("playlist", before[1:] + before[:1])
    first.wait_for_log("Dragged 1 clip: moved")


def drag_between_two_processes(display, first, second):
    names, point = lift(display, first, 5)
    carry(display, first, second, point)
    display.do("mouseup", 1)
    second.wait_for_names("playlist", names)
    first.wait_for_log("Dragged 5 clips: copied")


def escape_cancels(display, first, second):
    before = second.playlist()
    _, point = lift(display, first, 4)
    carry(display, first, second, point)
    display.do("key", "Escape")
    first.wait_for_log("Dragged 4 clips: not dropped")
    display.do("mouseup", 1)
    time.sleep(QUIET)
    assert second.playlist() == before, second.playlist()


def foreign_data_is_refused(display, first, second):
    before = first.playlist()
    search = second.place("search")
    display.click(search)
    display.do("type", "m" * 60)
    second.wait_for_names("catalogue", [])
    display.do("key", "ctrl+a")
    point, end = middle(search), middle(first.place("playlist"))
    time.sleep(DOUBLE_CLICK)
    display.do("mousemove", *point, "mousedown", 1)
    display.move(point, end)
    first.wait_for_log("The playlist takes clips alone, not text/plain", meanwhile=lambda: display.tremble(end))
    display.do("mouseup", 1)
    time.sleep(QUIET)
    assert first.playlist() == before, first.playlist()


def keyboard_adds_and_removes(display, first, _):
    before = first.playlist()
    names, _ = select(display, first, 1)
    display.do("key", "Return")
    first.wait_for_names("playlist", before + names)
    display.do("key", "alt+p", "key", "Delete")
    first.wait_for_names("playlist", before)


def search_meets_synonyms(display, first, _):
    display.click(first.place("search"))
    display.do("type", "stroll, joyful")
    first.wait_for_names("catalogue", ["Stroll_Park"])


def closing_ends_well(display, first, second):
    """Without a report where the program is built with a sanitizer."""
    for browser in (first, second):
        display.click(browser.place("search"))
        display.do("key", "alt+F4")
        assert browser.process.wait(PATIENCE) == 0, browser.process.returncode


STORIES = [drag_within_one_window, move_within_the_playlist, drag_between_two_processes, escape_cancels,
           foreign_data_is_refused, keyboard_adds_and_removes, search_meets_synonyms,
           closing_ends_well]


def out_of_time(*_):
    raise TimeoutError(f"not done after {TIME_LIMIT} seconds")


def main():
    missing = [tool for tool in ("Xvfb", "xdotool", "openbox") if not shutil.which(tool)]
    if missing:
        print(f"SKIPPED: {', '.join(missing)} not installed (Debian: xvfb xdotool openbox)")
        return SKIPPED
    signal.signal(signal.SIGALRM, out_of_time)
    signal.alarm(TIME_LIMIT)
    with contextlib.ExitStack() as stack:
        folder = stack.enter_context(tempfile.TemporaryDirectory())
        display = Display(stack, folder)
        first = Browser(stack, display, sys.argv[1], f"{folder}/first", 30)
        second = Browser(stack, display, sys.argv[1], f"{folder}/second", 820)
        for story in STORIES:
            print(story.__name__.replace("_", " "), flush=True)
            story(display, first, second)
    return 0


if __name__ == "__main__":
    sys.exit(main())
