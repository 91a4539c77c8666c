"""The widget on the desktop."""
import contextlib, json, os, signal, subprocess, time

import screen
from desktop import wait_for
from driving import in_section


@contextlib.contextmanager
def placed_widget(app):
    """The widget's window, found by what it shows."""
    def shown():
        return next((one for one in screen.windows() if one.name == "Korvell" and screen.find("push button", "", one)
                     and not screen.find("list item", "", one)), None)

    widget = subprocess.Popen([app.programs + "/korvell-widget"], stdin=subprocess.DEVNULL, env=app.desktop.environment,
                              stderr=open(app.log, "ab"))
    try:
        yield wait_for("the widget", shown)
    finally:
        widget.terminate()
        assert widget.wait(10) in (0, -signal.SIGTERM)
        wait_for("the widget's end", lambda: not shown())


def choose(window, entry):
    """By its number in the menu: the toolkit lists no menu among the windows."""
    screen.click(window, 3)
    time.sleep(0.5)
    screen.press(*["Down"] * entry, "Return")


def the_widget(app):
    """It says that nobody measures, its menu has it start at login or not, and there is one of it."""
    entry = app.desktop.home + "/.config/autostart/korvell-widget.desktop"

    def starts_at_login():
        if not os.path.exists(entry):
            return False
        with open(entry) as file:
            return "Hidden=true" not in file.read()

    def another():
        start = app.desktop.run(app.programs + "/korvell-widget")
        return start.returncode, start.stderr

    lock = app.desktop.home + "/.local/share/korvell/widget.lock"
    os.makedirs(lock)
    status, said = another()
    assert status == 1 and lock in said, (status, said)
    os.rmdir(lock)
    with placed_widget(app) as window:
        status, said = another()
        assert status == 0 and "already" in said, (status, said)
        wait_for("what it says", lambda: "Korvell is not running." in screen.texts(window))
        assert not screen.unnamed(), screen.unnamed()
        for wanted in (True, False):
            choose(window, 4)
            wait_for("a start at login" if wanted else "no start at login", lambda: starts_at_login() == wanted)


def the_widgets_place(app):
    """Its corner until it is dragged, then where it was dragged to, as far as the screen goes."""
    large, medium, small = 1, 2, 3
    screen_height = 900

    def stored():
        path = app.desktop.home + "/.config/korvell/widget.json"
        if not os.path.exists(path):
            return {}
        with open(path) as file:
            return json.load(file)

    def resized(window, size, is_wanted):
        choose(window, size)
        wait_for(f"size {size}", lambda: is_wanted(*window.box()))

    with placed_widget(app) as window:
        left, top, width, _ = window.box()
        right = left + width
        resized(window, small, lambda x, y, width, height: (x + width, y, width) == (right, top, height))
        wait_for("the size alone, remembered", lambda: stored() == {"size": "small"})
        resized(window, medium, lambda x, y, width, height: (x + width, y) == (right, top) and width > height)
        screen.drag(window, -500, 650)
        wait_for("the place, remembered", lambda: stored().get("y", 0) > 600)
        place = stored()
        assert abs(window.box()[0] - place["x"]) < 2, (window.box(), place)
        resized(window, large, lambda x, y, width, height: height > width and y + height <= screen_height)
        assert {**place, "size": "large"} == stored(), (place, stored())
        box = window.box()
    with placed_widget(app) as window:
        wait_for("the same place", lambda: window.box() == box)
        resized(window, medium, lambda x, y, width, height: (x, y) == (place["x"], place["y"]))
        resized(window, large, lambda x, y, width, height: height > width)


def the_widgets_parts(app):
    """Each opens its section in the application that runs, whose window would cover it."""
    for tile in ("Memory", "Network"):
        screen.press("ctrl+w")
        wait_for("the window's end", lambda: not screen.window("Korvell"))
        with placed_widget(app) as window:
            screen.click(screen.await_node("push button", tile, window, 90))
            in_section(tile)
