#!/usr/bin/env python3
"""Drags clips with a real pointer on a virtual display: inside one window of motion_browser, between the windows of two
processes, to be cancelled, and something that is no clip.

Usage: MotionBrowserTest.py MOTION_BROWSER

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

PATIENCE = 20
TIME_LIMIT = 150
DOUBLE_CLICK = 0.5
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
        time.sleep(0.3)
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

    def playlist(self):
        return [clip["name"] for clip in self.state()["playlist"]]

    def log(self):
        return "".join(path.read_text(encoding="utf-8") for path in sorted(self.folder.glob("*.log")))

    def wait(self, what, is_so):
        deadline = time.monotonic() + PATIENCE
        while not is_so():
            assert time.monotonic() < deadline, f"waited in vain for {what}; playlist {self.playlist()}; log:\n{self.log()}"
            time.sleep(0.05)

    def wait_for_log(self, text, count=1):
        self.wait(f"'{text}' in the log", lambda: self.log().count(text) >= count)

    def wait_for_playlist(self, names):
        self.wait(f"the playlist {names}", lambda: self.playlist() == names)


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


def lift(display, browser, count):
    """Selects clips and starts to drag them; the button stays down."""
    earlier = browser.log().count("Dragging")
    names, point = select(display, browser, count)
    away = (point[0] + 40, point[1] + 10)
    time.sleep(DOUBLE_CLICK)
    display.do("mousemove", *point, "mousedown", 1)
    display.move(point, away)
    browser.wait_for_log("Dragging", earlier + 1)
    return names, away


def carry(display, target, point):
    """Moves what is dragged over the playlist of `target`, until that has welcomed it."""
    earlier = target.log().count("Clips come over")
    end = middle(target.place("playlist"))
    display.move(point, end)
    target.wait_for_log("Clips come over", earlier + 1)
    display.move(end, (end[0] + 5, end[1] + 5))
    time.sleep(0.3)


def drag_within_one_window(display, first, _):
    names, point = lift(display, first, 2)
    carry(display, first, point)
    display.do("mouseup", 1)
    first.wait_for_playlist(names)
    first.wait_for_log("Dragged 2 clips: copied")


def drag_between_two_processes(display, first, second):
    names, point = lift(display, first, 5)
    carry(display, second, point)
    display.do("mouseup", 1)
    second.wait_for_playlist(names)
    first.wait_for_log("Dragged 5 clips: copied")


def move_within_the_playlist(display, first, _):
    before = first.playlist()
    rows = first.rows("playlist")
    point, below = middle(rows[0]["place"]), middle(first.place("playlist"))
    display.click(rows[0]["place"])
    time.sleep(DOUBLE_CLICK)
    display.do("mousemove", *point, "mousedown", 1)
    display.move(point, (below[0], below[1] + 60))
    time.sleep(0.3)
    display.do("mouseup", 1)
    first.wait_for_playlist(before[1:] + before[:1])


def escape_cancels(display, first, second):
    before = second.playlist()
    _, point = lift(display, first, 4)
    carry(display, second, point)
    display.do("key", "Escape")
    first.wait_for_log("Dragged 4 clips: not dropped")
    display.do("mouseup", 1)
    time.sleep(0.5)
    assert second.playlist() == before, second.playlist()


def foreign_data_is_refused(display, first, second):
    before = first.playlist()
    search = second.place("search")
    display.click(search)
    display.do("type", "m" * 60)
    display.do("key", "ctrl+a")
    point, end = middle(search), middle(first.place("playlist"))
    display.do("mousemove", *point, "mousedown", 1)
    time.sleep(0.3)
    display.move(point, end)
    first.wait_for_log("The playlist takes clips alone, not text/plain")
    display.do("mouseup", 1)
    time.sleep(0.5)
    assert first.playlist() == before, first.playlist()


def keyboard_adds_and_removes(display, first, _):
    before = first.playlist()
    names, _ = select(display, first, 1)
    display.do("key", "Return")
    first.wait_for_playlist(before + names)
    display.do("key", "alt+p", "key", "Delete")
    first.wait_for_playlist(before)


def search_meets_synonyms(display, first, _):
    display.click(first.place("search"))
    display.do("type", "stroll, joyful")
    first.wait("clips found", lambda: 0 < len(first.state()["catalogue"]) < 20)
    assert "Stroll_Park" in [clip["name"] for clip in first.state()["catalogue"]], first.state()["catalogue"]


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
