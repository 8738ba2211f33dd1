#!/usr/bin/env python3
"""Drives two processes of motion_browser on a virtual display by pointer and keyboard, as their users do. What the
windows show is read over the accessibility bus.

Every step waits until the programs show or log what the next one needs.

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

try:
    import gi
    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi, GLib
except (ImportError, ValueError):
    Atspi = None

PATIENCE = 60
TOOLTIP_DELAY = 1
SKIPPED = 77
CATALOGUE = """<Catalogue><Category>
<Item name="Walk"/><Item name="Jump"/><Item name="&lt;b&gt;Run&lt;/b&gt;" tags="&lt;b&gt;"/>
</Category></Catalogue>"""


class Browser:
    """A running motion_browser, seen over the accessibility bus and through its log file."""

    def __init__(self, program, folder, left, *options):
        self.folder = folder
        self.process = subprocess.Popen([program, "--log-folder", folder, "-qwindowgeometry", f"760x600+{left}+60",
                                         *options])
        # The window manager gives a window its place before the focus.
        self.wait_for_focus("Search")

    def part(self, name):
        """The list or text field of this name."""
        application = next(app for app in children(Atspi.get_desktop(0)) if app.get_process_id() == self.process.pid)
        return next(node for node in descendants(application)
                    if node.get_name() == name and node.get_role() in (Atspi.Role.LIST, Atspi.Role.TEXT))

    def names(self, view):
        return [item.get_name() for item in children(self.part(view))]

    def place(self, name, row=None):
        """The middle of a list or text field, or of a row of the list."""
        part = self.part(name)
        box = (part if row is None else part.get_child_at_index(row)).get_extents(Atspi.CoordType.SCREEN)
        return box.x + box.width // 2, box.y + box.height // 2

    def click(self, name, row=None):
        xdo("mousemove", *self.place(name, row), "click", 1)
        self.wait_for_focus(name)  # Before, keys would go to another window.

    def wait_for_focus(self, name):
        wait(f"the focus in {name}", lambda: self.part(name).get_state_set().contains(Atspi.StateType.FOCUSED))

    def wait_for_names(self, view, names):
        wait(f"the {view} {names}", lambda: self.names(view) == names)

    def wait_for_log(self, text, meanwhile=lambda: None):
        wait(f"'{text}'", lambda: text in read_logs(self.folder), meanwhile)


def children(node):
    return [child for i in range(node.get_child_count()) if (child := node.get_child_at_index(i))]


def descendants(node):
    """In a list alone the clips are left out."""
    yield node
    for child in children(node) if node.get_role() != Atspi.Role.LIST else []:
        yield from descendants(child)


def read_logs(folder):
    return "".join(path.read_text(encoding="utf-8") for path in sorted(folder.rglob("*.log")))


def wait(what, is_so, meanwhile=lambda: None):
    deadline = time.monotonic() + PATIENCE
    while True:
        # What is being taken off the bus answers with an error, and a program that has just started is not on it yet.
        with contextlib.suppress(StopIteration, GLib.Error):
            if is_so():
                return
        assert time.monotonic() < deadline, f"waited in vain for {what}"
        meanwhile()
        time.sleep(0.05)


def xdo(*command):
    subprocess.run(["xdotool", *map(str, command)], check=True, timeout=PATIENCE)


def tremble(x, y):
    """The pointer stays about there, and the window below goes on receiving motion."""
    xdo("mousemove", x + 3, y + 3, "sleep", 0.03, "mousemove", x, y)


def drag(source, start, target):
    """Drags what is selected from `start` behind the last clip of the target's playlist."""
    x, y = target.place("Playlist")
    end = (x, y + 100)
    xdo("mousemove", *start, "mousedown", 1)
    source.wait_for_log("Dragging", lambda: tremble(start[0] + 40, start[1] + 10))
    xdo("mousemove", *end)
    source.wait_for_log("A drop here is welcome", lambda: tremble(*end))
    xdo("mouseup", 1)


def clips_dragged_to_another_process_are_copied(first, second):
    names = first.names("Catalogue")
    first.click("Catalogue", row=0)
    xdo("key", "shift+Down", "key", "shift+Down")
    drag(first, first.place("Catalogue", row=1), second)
    second.wait_for_names("Playlist", names)
    wait("the log pane", lambda: "Dragged 3 clips: copied" in Atspi.Text.get_text(first.part("Log"), 0, -1))
    assert first.names("Playlist") == [] and first.names("Catalogue") == names


def clips_dragged_within_the_playlist_are_moved(second):
    names = second.names("Playlist")
    second.click("Playlist", row=0)
    xdo("key", "shift+Down")
    drag(second, second.place("Playlist", row=1), second)
    second.wait_for_names("Playlist", names[2:] + names[:2])
    second.wait_for_log("Dragged 2 clips: moved")


def markup_of_another_process_is_shown_as_it_is(second):
    """A tooltip would load the images of what it takes for rich text."""
    window = second.part("Playlist").get_application()
    place = second.place("Playlist", row=0)
    wait("the literal tooltip", lambda: "<b>Run</b>\n<b>" in [node.get_name() for node in descendants(window)],
         lambda: (tremble(*place), time.sleep(TOOLTIP_DELAY)))


def the_keyboard_leads_from_search_to_playlist_and_back(second):
    names = second.names("Playlist")
    second.click("Search")
    xdo("type", "stroll, joyful")
    second.wait_for_names("Catalogue", ["Stroll_Park"])
    xdo("key", "Return", "key", "Return")
    second.wait_for_names("Playlist", names + ["Stroll_Park"])
    xdo("key", "alt+p", "key", "Delete", "key", "Delete", "key", "Home", "key", "Delete")
    second.wait_for_names("Playlist", names[1:-1])
    xdo("key", "alt+s", "key", "ctrl+a", "type", "no such word")
    second.wait_for_names("Catalogue", [])


def closing_ends_well(first, second):
    """Without a report where the program is built with a sanitizer."""
    for browser in (first, second):
        browser.click("Search")
        xdo("key", "alt+F4")
        assert browser.process.wait(PATIENCE) == 0, browser.process.returncode


def drive(program, folder):
    """Programs that a failure leaves running end with their display."""
    subprocess.Popen(["openbox"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    # A window manager tells how many desktops there are.
    count = ["xdotool", "get_num_desktops"]
    wait("the window manager", lambda: subprocess.run(count, capture_output=True).returncode == 0)
    Atspi.get_desktop(0).set_cache_mask(Atspi.Cache.NONE)
    (folder / "catalogue.xml").write_text(CATALOGUE, encoding="utf-8")
    first = Browser(program, folder / "first", 30, "--catalogue", folder / "catalogue.xml")
    second = Browser(program, folder / "second", 820)
    clips_dragged_to_another_process_are_copied(first, second)
    clips_dragged_within_the_playlist_are_moved(second)
    markup_of_another_process_is_shown_as_it_is(second)
    the_keyboard_leads_from_search_to_playlist_and_back(second)
    closing_ends_well(first, second)


def main(program, folder=None):
    if folder:
        return drive(program, pathlib.Path(folder))
    tools = ("xvfb-run", "xauth", "xdotool", "openbox", "dbus-run-session")
    missing = [tool for tool in tools if not shutil.which(tool)] + ([] if Atspi else ["Atspi"])
    if missing:
        print(f"SKIPPED: {', '.join(missing)} not installed (tools/setup test)")
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        environment = {"HOME": folder, "XDG_RUNTIME_DIR": folder, "QT_QPA_PLATFORM": "xcb",
                       "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "LC_ALL": "C.UTF-8"}
        kept = ("PATH", "ASAN_OPTIONS", "LSAN_OPTIONS")
        environment.update((name, value) for name, value in os.environ.items() if name in kept)
        done = subprocess.run([program], env=environment, capture_output=True, text=True, timeout=PATIENCE)
        assert (done.returncode, done.stderr.count("\n")) == (1, 1) and "no display" in done.stderr, done
        # Without -noreset a client that is just connecting is lost when the only other one leaves. The accessibility
        # bus starts by itself on the session bus.
        desktop = ["xvfb-run", "-a", "-s", "-noreset -screen 0 1600x900x24", "dbus-run-session", "--"]
        done = subprocess.run([*desktop, sys.executable, __file__, program, folder], env=environment)
        if done.returncode != 0:
            print(read_logs(pathlib.Path(folder)))
        return done.returncode


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
