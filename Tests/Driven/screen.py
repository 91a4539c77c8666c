"""What a person has of the application: what a screen reader tells of it, a pointer and a keyboard. Import it
once the desktop's environment is this process's own."""
import subprocess, time

import gi
gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib

from desktop import wait_for

Atspi.set_timeout(3000, 5000)
SHOWING, FOCUSABLE, FOCUSED, CHECKED, SELECTED, ENABLED = (
    Atspi.StateType.SHOWING, Atspi.StateType.FOCUSABLE, Atspi.StateType.FOCUSED, Atspi.StateType.CHECKED,
    Atspi.StateType.SELECTED, Atspi.StateType.ENABLED)

scale = 1  # the display's pixels in one that a screen reader is told of


class Node:
    def __init__(self, accessible):
        self.accessible = accessible
        self.role, self.name = accessible.get_role_name(), accessible.get_name() or ""

    def has(self, state):
        return self.accessible.get_state_set().contains(state)

    def children(self):
        for i in range(self.accessible.get_child_count()):
            child = self.accessible.get_child_at_index(i)
            if child is not None:
                yield Node(child)

    def box(self):
        box = self.accessible.get_extents(Atspi.CoordType.SCREEN)
        return box.x, box.y, box.width, box.height

    def place(self):
        """Its middle, for the pointer."""
        x, y, width, height = self.box()
        return (x + width // 2) * scale, (y + height // 2) * scale

    def parent(self):
        return Node(self.accessible.get_parent())

    def corner(self):
        return self.box()[:2]

    def perform(self):
        """Its first action, as a screen reader asks for it."""
        self.accessible.do_action(0)

    def __repr__(self):
        return f"{self.role} “{self.name}”"


def applications():
    """The application and the widget, the first that came first."""
    desktop = Atspi.get_desktop(0)
    all_of_them = [desktop.get_child_at_index(i) for i in range(desktop.get_child_count())]
    return [Node(app) for app in all_of_them if app is not None and app.get_name() == "Korvell"]


def walk(node, showing=True):
    """All of a tree, as far as it shows."""
    for child in node.children():
        try:
            if showing and not child.has(SHOWING):
                continue
            yield child
            yield from walk(child, showing)
        except GLib.Error:  # it went away meanwhile
            continue


def windows():
    return [child for app in applications() for child in app.children() if child.has(SHOWING)]


def window(title):
    return next((one for one in windows() if one.name == title), None)


def find(role, name, inside=None):
    """The first that shows of a role, or of any, whose name begins so."""
    roots = [inside] if inside else windows()
    for root in roots:
        for node in walk(root):
            if role in (node.role, None) and node.name.startswith(name):
                return node
    return None


def await_node(role, name, inside=None, seconds=10):
    def probe():
        try:
            return find(role, name, inside)
        except GLib.Error:
            return None
    return wait_for(f"{role} “{name}”", probe, seconds)


def texts(root):
    return [node.name for node in walk(root) if node.name]


def click(node, button=1):
    x, y = node.place()
    subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", str(button)], check=True)


def drag(node, right, down):
    """From its middle, so many pixels."""
    x, y = node.place()
    steps = 10
    commands = ["mousemove", str(x), str(y), "mousedown", "1"]
    for step in range(1, steps + 1):
        commands += ["mousemove", str(x + right * step // steps), str(y + down * step // steps), "sleep", "0.05"]
    subprocess.run(["xdotool", *commands, "mouseup", "1"], check=True)


def point_at(node, x=None):
    """At its middle, or so far from its left edge; by a move that is seen where the pointer is there already."""
    left, top, width, height = node.box()
    x, y = left + (width // 2 if x is None else x), top + height // 2
    subprocess.run(["xdotool", "mousemove", str(x - 2), str(y), "mousemove", str(x), str(y)], check=True)


def press(*keys):
    for key in keys:
        subprocess.run(["xdotool", "key", key], check=True)
        time.sleep(0.05)


def unnamed():
    """What a keyboard reaches and a screen reader has no word for."""
    return [node for root in windows() for node in walk(root) if node.has(FOCUSABLE) and not node.name]


def outline():
    """All that shows, a line each."""
    return [repr(node) for root in windows() for node in walk(root) if node.name]
