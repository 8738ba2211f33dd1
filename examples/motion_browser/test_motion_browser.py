#!/usr/bin/env python3
"""Drives motion_browser on a virtual display by pointer and keyboard, as its users do, within one window and between
the windows of two processes. What the windows show is read over the accessibility bus.

Every step waits until the programs show or log what it needs before the next one begins.

Usage: test_motion_browser.py MOTION_BROWSER

Exit code 77 says that a part of the virtual desktop is not installed."""

import contextlib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
from xml.sax.saxutils import quoteattr

try:
    import gi
    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi, GLib
except (ImportError, ValueError):
    Atspi = None

PATIENCE = 60
# Two clicks at one place that are farther apart in time, by the clock of the display, are two clicks.
DOUBLE_CLICK = 0.5
STANDSTILL = 1.0
# Where a long name may be broken, which nobody sees.
BREAK = "\u200b"
STEPS = 8
SKIPPED = 77
SAMPLE = pathlib.Path(__file__).resolve().parent.parent / "catalogue" / "data" / "catalogue.xml"


class Display:
    """An X server of its own with a window manager, and the pointer and keyboard on it."""

    def __init__(self, stack):
        read_end, write_end = os.pipe()
        server = ["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1600x900x24", "-nolisten", "tcp"]
        start(stack, server, pass_fds=[write_end], stderr=subprocess.DEVNULL)
        os.close(write_end)
        number = os.read(read_end, 16).decode().strip()
        assert number, "the virtual display did not start"
        self.environment = {**os.environ, "DISPLAY": ":" + number}
        start(stack, ["openbox"], env=self.environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        # A window manager tells how many desktops there are.
        wait("the window manager", lambda: self.try_to("get_num_desktops").returncode == 0)

    def try_to(self, *command):
        return subprocess.run(["xdotool", *map(str, command)], env=self.environment, timeout=PATIENCE,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def do(self, *command):
        self.try_to(*command).check_returncode()

    def click(self, place):
        # No double click with the one before.
        self.do("sleep", DOUBLE_CLICK, "mousemove", *middle(place), "click", 1)

    def press(self, place):
        self.do("sleep", DOUBLE_CLICK, "mousemove", *middle(place), "mousedown", 1)

    def move(self, start_point, end_point):
        """As a hand does, so that every window on the way receives the motion."""
        for step in range(1, STEPS + 1):
            point = [a + (b - a) * step // STEPS for a, b in zip(start_point, end_point)]
            self.do("mousemove", *point, "sleep", 0.03)

    def tremble(self, point):
        """The pointer stays about there, and the window below goes on receiving motion."""
        self.do("mousemove", point[0] + 3, point[1] + 3, "sleep", 0.03, "mousemove", *point)


class Browser:
    """A running motion_browser, seen over the accessibility bus and through its log file."""

    def __init__(self, stack, display, program, folder, left, catalogue):
        self.folder = pathlib.Path(folder)
        self.folder.mkdir()
        command = [program, "--log-folder", self.folder, "--catalogue", catalogue,
                   "-qwindowgeometry", f"760x600+{left}+60"]
        self.process = start(stack, command, env=display.environment)
        # The window manager may still move the window.
        self.wait("the window to stand still", self.stands_still)

    def stands_still(self):
        before = self.place("Playlist")
        time.sleep(STANDSTILL)
        return before == self.place("Playlist")

    def application(self):
        assert self.process.poll() is None, f"motion_browser ended with {self.process.returncode}"
        return next(app for app in children(Atspi.get_desktop(0)) if app.get_process_id() == self.process.pid)

    def part(self, name):
        """The list or text field of this name."""
        for node in descendants(self.application()):
            if node.get_name() == name and node.get_role() in (Atspi.Role.LIST, Atspi.Role.TEXT):
                return node
        raise LookupError(name)

    def place(self, name):
        return extents(self.part(name))

    def row(self, view, number):
        return extents(self.part(view).get_child_at_index(number))

    def names(self, view):
        return [item.get_name() for item in children(self.part(view))]

    def selection(self, view):
        return [item.get_name() for item in children(self.part(view)) if has_state(item, Atspi.StateType.SELECTED)]

    def has_focus(self, name):
        return has_state(self.part(name), Atspi.StateType.FOCUSED)

    def texts(self):
        """What all labels of the program show, the tooltip among them."""
        return [node.get_name() for node in descendants(self.application())]

    def log(self):
        return "".join(path.read_text(encoding="utf-8") for path in sorted(self.folder.glob("*.log")))

    def welcomes(self):
        """Whether the place under the pointer has answered that it takes what is dragged from here."""
        answers = [line for line in self.log().splitlines() if "A drop here is" in line or "Dragging" in line]
        return bool(answers) and "welcome" in answers[-1]

    def wait(self, what, is_so, meanwhile=lambda: None):
        wait(what, is_so, meanwhile, lambda: f"; texts {self.texts()}; log:\n{self.log()}")

    def wait_for_log(self, text, meanwhile=lambda: None):
        self.wait(f"'{text}'", lambda: text in self.log(), meanwhile)

    def wait_for_names(self, view, names):
        self.wait(f"the {view} {names}", lambda: self.names(view) == names)

    def wait_for_selection(self, view, names):
        self.wait(f"{names} selected in the focused {view}",
                  lambda: self.selection(view) == names and self.has_focus(view))


def children(node):
    found = (node.get_child_at_index(i) for i in range(node.get_child_count()))
    return [child for child in found if child]


def descendants(node):
    """In a list alone the clips are left out."""
    yield node
    for child in children(node) if node.get_role() != Atspi.Role.LIST else []:
        yield from descendants(child)


def has_state(node, state):
    return node.get_state_set().contains(state)


def extents(node):
    box = node.get_extents(Atspi.CoordType.SCREEN)
    return box.x, box.y, box.width, box.height


def wait(what, is_so, meanwhile=lambda: None, details=lambda: ""):
    deadline = time.monotonic() + PATIENCE
    while True:
        # What is being taken off the bus answers with an error, and a program that has just started is not on it yet.
        with contextlib.suppress(LookupError, StopIteration, GLib.Error):
            if is_so():
                return
        assert time.monotonic() < deadline, f"waited in vain for {what}{details()}"
        meanwhile()
        time.sleep(0.05)


def start(stack, command, **options):
    process = subprocess.Popen(command, **options)
    stack.callback(process.wait, PATIENCE)
    stack.callback(process.terminate)
    return process


def middle(place):
    x, y, width, height = place
    return x + width // 2, y + height // 2


def drag(display, source, place, target, log_line):
    """Drags what is selected from `place` to the playlist of `target`. The way leads over the logs, which welcome
    nothing, so that the answer that is waited for is the playlist's."""
    x, y, width, height = target.place("Playlist")
    start_point, end = middle(place), (x + width // 2, y + height * 3 // 4)  # behind the last clip
    log = middle(source.place("Log"))[1]
    away, refusing = (start_point[0] + 40, start_point[1] + 10), (start_point[0], log)
    display.press(place)
    display.move(start_point, away)
    source.wait_for_log(log_line, lambda: display.tremble(away))
    display.move(away, refusing)
    source.wait("the log to refuse clips", lambda: not source.welcomes(), lambda: display.tremble(refusing))
    display.move(refusing, (end[0], log))
    display.move((end[0], log), end)
    source.wait("the playlist to welcome clips", source.welcomes, lambda: display.tremble(end))
    display.do("mouseup", 1)


def clips_dragged_to_another_process_are_copied(display, first, second):
    names = first.names("Catalogue")
    display.click(first.row("Catalogue", 0))
    display.do("key", "shift+Down", "key", "shift+Down")
    first.wait_for_selection("Catalogue", names)
    drag(display, first, first.row("Catalogue", 1), second, "Dragging 3 clips")
    second.wait_for_names("Playlist", names)
    first.wait_for_log("Dragged 3 clips: copied")
    assert first.names("Playlist") == [] and first.names("Catalogue") == names


def markup_of_another_process_is_shown_as_it_is(display, _, second):
    """The tooltip shows the name and the tags of the clip; loading what they name would stop the window for ever."""
    name, place = second.names("Playlist")[0], second.row("Playlist", 0)
    assert name.startswith("<img src="), name
    # Only an active window shows tooltips.
    display.click(place)
    second.wait("the literal tooltip",
                lambda: f"{name}\n{name}, markup" in [text.replace(BREAK, "") for text in second.texts()],
                lambda: (display.tremble(middle(place)), time.sleep(1)))


def clips_dragged_within_the_playlist_are_moved(display, _, second):
    before = second.names("Playlist")
    drag(display, second, second.row("Playlist", 0), second, "Dragging 1 clip")
    second.wait_for_names("Playlist", before[1:] + before[:1])
    second.wait_for_log("Dragged 1 clip: moved")


def the_keyboard_leads_from_search_to_playlist_and_back(display, _, second):
    before = second.names("Playlist")
    display.click(second.place("Search"))
    display.do("type", "stroll, joyful, no such word")
    second.wait_for_names("Catalogue", [])
    assert second.part("Catalogue").get_description() == "No clip meets all these words"
    display.do("key", "ctrl+a", "type", "stroll, joyful")
    second.wait_for_names("Catalogue", ["Stroll_Park"])
    display.do("key", "Return")
    second.wait_for_selection("Catalogue", ["Stroll_Park"])
    display.do("key", "Return")
    second.wait_for_names("Playlist", before + ["Stroll_Park"])
    display.do("key", "alt+p")
    second.wait_for_selection("Playlist", ["Stroll_Park"])
    display.do("key", "Delete")
    second.wait_for_selection("Playlist", before[-1:])
    display.do("key", "Home", "key", "Delete")
    second.wait_for_selection("Playlist", before[1:2])
    assert second.names("Playlist") == before[1:]
    display.do("key", "alt+s")
    second.wait("the focus in the search", lambda: second.has_focus("Search"))


def the_log_pane_shows_no_debug_messages(_display, first, _):
    shown = Atspi.Text.get_text(first.part("Log"), 0, -1)
    assert "Dragged 3 clips" in shown and "A drop here" not in shown and "A drop here" in first.log(), shown


def closing_ends_well(display, first, second):
    """Without a report where the program is built with a sanitizer."""
    for browser in (first, second):
        display.click(browser.place("Search"))
        display.do("key", "alt+F4")
        assert browser.process.wait(PATIENCE) == 0, browser.process.returncode


STORIES = [clips_dragged_to_another_process_are_copied, markup_of_another_process_is_shown_as_it_is,
           clips_dragged_within_the_playlist_are_moved, the_keyboard_leads_from_search_to_playlist_and_back,
           the_log_pane_shows_no_debug_messages, closing_ends_well]


def without_a_display_one_line_tells_so(program):
    environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
    done = subprocess.run([program], env=environment, capture_output=True, encoding="utf-8", timeout=PATIENCE)
    assert (done.returncode, done.stderr.count("\n")) == (1, 1) and "no display" in done.stderr, done


def main():
    tools = ("Xvfb", "xdotool", "openbox", "dbus-run-session")
    missing = [tool for tool in tools if not shutil.which(tool)] + ([] if Atspi else ["Atspi"])
    if missing:
        print(f"SKIPPED: {', '.join(missing)} not installed (Debian: xvfb xdotool openbox dbus at-spi2-core "
              "gir1.2-atspi-2.0 python3-gi)")
        return SKIPPED
    if "VELOR_TEST_FOLDER" not in os.environ:
        with tempfile.TemporaryDirectory() as folder:
            # A session bus of its own, on which the accessibility bus starts by itself.
            environment = {"VELOR_TEST_FOLDER": folder, "HOME": folder, "XDG_RUNTIME_DIR": folder,
                           "QT_QPA_PLATFORM": "xcb", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "LC_ALL": "C.UTF-8",
                           **{name: os.environ[name] for name in ("PATH", "ASAN_OPTIONS", "LSAN_OPTIONS")
                              if name in os.environ}}
            return subprocess.run(["dbus-run-session", "--", sys.executable, *sys.argv], env=environment).returncode
    without_a_display_one_line_tells_so(sys.argv[1])
    Atspi.get_desktop(0).set_cache_mask(Atspi.Cache.NONE)
    with contextlib.ExitStack() as stack:
        folder = os.environ["VELOR_TEST_FOLDER"]
        os.mkfifo(f"{folder}/pipe")
        markup = quoteattr(f"<img src='{folder}/pipe'>")
        catalogue = pathlib.Path(folder, "catalogue.xml")
        catalogue.write_text(f'<Catalogue><Category categoryTags="markup"><Item name={markup} tags={markup}/>'
                             '<Item name="Walk"/><Item name="Run"/></Category></Catalogue>', encoding="utf-8")
        display = Display(stack)
        first = Browser(stack, display, sys.argv[1], f"{folder}/first", 30, catalogue)
        second = Browser(stack, display, sys.argv[1], f"{folder}/second", 820, SAMPLE)
        for story in STORIES:
            print(story.__name__.replace("_", " "), flush=True)
            story(display, first, second)
    return 0


if __name__ == "__main__":
    sys.exit(main())
