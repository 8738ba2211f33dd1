#!/usr/bin/env python3
"""Drives motion_browser on a virtual display by pointer and keyboard, as its users do: within one window, between the
windows of two processes, and with text that looks like markup. What the windows show is read over the accessibility
bus, by the names that a screen reader speaks.

Every step waits until the programs show or log what it needs before the next one begins, with a limit that a busy
machine does not reach. Nothing that was refused is tried again.

Usage: test_motion_browser.py MOTION_BROWSER

Exit code 77 says that a part of the virtual desktop is not installed."""

import contextlib
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from xml.sax.saxutils import quoteattr

with contextlib.suppress(ImportError, ValueError):
    import gi
    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi, GLib

PATIENCE = 60
TIME_LIMIT = 280
# Two clicks at one place that are farther apart in time, by the clock of the display, are two clicks.
DOUBLE_CLICK = 0.5
STANDSTILL = 1.0
# How long the test watches for something that must not happen.
QUIET = 0.5
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

    def click(self, place, *modifiers):
        for key in modifiers:
            self.do("keydown", key)
        self.do("mousemove", *middle(place), "click", 1)
        for key in modifiers:
            self.do("keyup", key)

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
        try:
            before = self.place("Playlist")
            time.sleep(STANDSTILL)
            return before == self.place("Playlist")
        except LookupError:
            return False

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

    def rows(self, view, count):
        """The first clips of a view, each with its name and place."""
        items = children(self.part(view))[:count]
        return [(item.get_name(), extents(item)) for item in items]

    def names(self, view):
        return [item.get_name() for item in children(self.part(view))]

    def selection(self, view):
        return [item.get_name() for item in children(self.part(view))
                if item.get_state_set().contains(Atspi.StateType.SELECTED)]

    def has_focus(self, name):
        return self.part(name).get_state_set().contains(Atspi.StateType.FOCUSED)

    def texts(self):
        """What all labels of the program show, the tooltip among them."""
        return [node.get_name() for node in descendants(self.application())]

    def playlist(self):
        return self.names("Playlist")

    def log(self):
        return "".join(path.read_text(encoding="utf-8") for path in sorted(self.folder.glob("*.log")))

    def welcomes(self):
        """Whether the place under the pointer has answered that it takes what is dragged from here."""
        answers = [line for line in self.log().splitlines() if "A drop here is" in line or "Dragging" in line]
        return bool(answers) and "welcome" in answers[-1]

    def wait(self, what, is_so, meanwhile=lambda: None):
        wait(what, is_so, meanwhile, lambda: f"; texts {self.texts()}; log:\n{self.log()}")

    def wait_for_log(self, text, count=1, meanwhile=lambda: None):
        self.wait(f"'{text}' in the log", lambda: self.log().count(text) >= count, meanwhile)

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


def extents(node):
    box = node.get_extents(Atspi.CoordType.SCREEN)
    return box.x, box.y, box.width, box.height


def wait(what, is_so, meanwhile=lambda: None, details=lambda: ""):
    deadline = time.monotonic() + PATIENCE
    while True:
        # What is being taken off the bus answers with an error, and a program that has just started is not on it yet.
        with contextlib.suppress(StopIteration, *([GLib.Error] if "GLib" in globals() else [])):
            if is_so():
                return
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
    x, y, width, height = place
    return x + width // 2, y + height // 2


def select(display, browser, count):
    """Selects the first clips of the catalogue; returns their names and a point on the second of them."""
    time.sleep(DOUBLE_CLICK)
    rows = browser.rows("Catalogue", count)
    display.click(rows[0][1])
    if count > 1:
        display.click(rows[-1][1], "shift")
    return [name for name, _ in rows], middle(rows[min(1, count - 1)][1])


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
    end = middle(target.place("Playlist"))
    height = middle(source.place("Log"))[1]
    refusing = (point[0], height)
    display.move(point, refusing)
    source.wait("the log to refuse clips", lambda: not source.welcomes(), lambda: display.tremble(refusing))
    display.move(refusing, (end[0], height))
    display.move((end[0], height), end)
    source.wait("the playlist to welcome clips", source.welcomes, lambda: display.tremble(end))


def clips_dragged_within_one_window_are_copied(display, first, _):
    names, point = lift(display, first, 2)
    carry(display, first, first, point)
    display.do("mouseup", 1)
    first.wait_for_names("Playlist", names)
    first.wait_for_log("Dragged 2 clips: copied")


def clips_dragged_within_the_playlist_are_moved(display, first, _):
    before = first.playlist()
    _, place = first.rows("Playlist", 1)[0]
    display.click(place)
    point = pull(display, first, 1, middle(place))
    carry(display, first, first, point)
    display.do("mouseup", 1)
    first.wait_for_names("Playlist", before[1:] + before[:1])
    first.wait_for_log("Dragged 1 clip: moved")


def clips_dragged_to_another_process_are_copied(display, first, second):
    names, point = lift(display, first, 5)
    carry(display, first, second, point)
    display.do("mouseup", 1)
    second.wait_for_names("Playlist", names)
    first.wait_for_log("Dragged 5 clips: copied")


def markup_of_another_process_is_shown_as_it_is(display, _, second):
    """The tooltip shows the name and the tags of the clip; loading what they name would stop the window for ever."""
    name, place = second.rows("Playlist", 1)[0]
    assert name.startswith("<img src="), name
    point = middle(place)
    # Only an active window shows tooltips.
    display.click(place)
    second.wait("the literal tooltip", lambda: f"{name}\n{name}, markup" in second.texts(),
                lambda: (display.tremble(point), time.sleep(1)))


def escape_cancels_a_drag(display, first, second):
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
    search = second.place("Search")
    display.click(search)
    display.do("type", "m" * 60)
    second.wait_for_names("Catalogue", [])
    assert second.part("Catalogue").get_description() == "No clip meets all these words"
    display.do("key", "ctrl+a")
    point, end = middle(search), middle(first.place("Playlist"))
    time.sleep(DOUBLE_CLICK)
    display.do("mousemove", *point, "mousedown", 1)
    display.move(point, end)
    first.wait_for_log("The playlist takes clips alone, not text/plain", meanwhile=lambda: display.tremble(end))
    display.do("mouseup", 1)
    time.sleep(QUIET)
    assert first.playlist() == before, first.playlist()


def the_keyboard_leads_from_search_to_playlist_and_back(display, _, second):
    before = second.playlist()
    display.click(second.place("Search"))
    display.do("key", "ctrl+a")
    display.do("type", "stroll, joyful")
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
    assert second.playlist() == before[1:]
    display.do("key", "alt+s")
    second.wait("the focus in the search", lambda: second.has_focus("Search"))


def debug_messages_stay_out_of_the_window(_display, first, _):
    shown = Atspi.Text.get_text(first.part("Log"), 0, -1)
    assert "Dragged 2 clips" in shown and "A drop here" not in shown and "A drop here" in first.log(), shown


def closing_ends_well(display, first, second):
    """Without a report where the program is built with a sanitizer."""
    for browser in (first, second):
        display.click(browser.place("Search"))
        display.do("key", "alt+F4")
        assert browser.process.wait(PATIENCE) == 0, browser.process.returncode


STORIES = [clips_dragged_within_one_window_are_copied, clips_dragged_within_the_playlist_are_moved,
           clips_dragged_to_another_process_are_copied, markup_of_another_process_is_shown_as_it_is,
           escape_cancels_a_drag, foreign_data_is_refused, the_keyboard_leads_from_search_to_playlist_and_back,
           debug_messages_stay_out_of_the_window, closing_ends_well]


def without_a_display_one_line_tells_so(program):
    environment = {name: value for name, value in os.environ.items() if name not in ("DISPLAY", "WAYLAND_DISPLAY")}
    done = subprocess.run([program], env=environment, capture_output=True, encoding="utf-8", timeout=PATIENCE)
    assert (done.returncode, done.stderr.count("\n")) == (1, 1) and "no display" in done.stderr, done


def out_of_time(*_):
    raise TimeoutError(f"not done after {TIME_LIMIT} seconds")


def main():
    tools = ("Xvfb", "xdotool", "openbox", "dbus-run-session")
    missing = [tool for tool in tools if not shutil.which(tool)] + ([] if "Atspi" in globals() else ["Atspi"])
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
    signal.signal(signal.SIGALRM, out_of_time)
    signal.alarm(TIME_LIMIT)
    without_a_display_one_line_tells_so(sys.argv[1])
    Atspi.get_desktop(0).set_cache_mask(Atspi.Cache.NONE)
    with contextlib.ExitStack() as stack:
        folder = os.environ["VELOR_TEST_FOLDER"]
        os.mkfifo(f"{folder}/pipe")
        markup = quoteattr(f"<img src='{folder}/pipe'>")
        catalogue = pathlib.Path(folder, "catalogue.xml")
        category = f'<Category categoryTags="markup"><Item name={markup} tags={markup}/></Category>'
        catalogue.write_text(SAMPLE.read_text(encoding="utf-8").replace("<Catalogue>", "<Catalogue>" + category),
                             encoding="utf-8")
        display = Display(stack)
        first = Browser(stack, display, sys.argv[1], f"{folder}/first", 30, catalogue)
        second = Browser(stack, display, sys.argv[1], f"{folder}/second", 820, SAMPLE)
        for story in STORIES:
            print(story.__name__.replace("_", " "), flush=True)
            story(display, first, second)
    return 0


if __name__ == "__main__":
    sys.exit(main())
