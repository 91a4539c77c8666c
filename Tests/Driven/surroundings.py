"""Desktops of other kinds than the one that all else is driven on. Each case has a home of its own."""
import contextlib, re, shutil, socket, subprocess, time

import screen
from desktop import wait_for
from driving import in_section
from monitors import Monitors


def keeps(app):
    """Whether somebody answers for those whose folders these are."""
    with socket.socket(socket.AF_UNIX) as connection:
        return connection.connect_ex(app.desktop.runtime + "/korvell/keeper.sock") == 0


def end(app):
    app.process.terminate()
    status = app.ended()
    assert status == 0, f"exit {status}"


def no_tray(app):
    """The first launch says why there is a window, later ones open nothing, and a panel may come any time."""
    def banner():
        return screen.find("label", "This desktop shows no tray")

    with app.desktop.another_home(), app.desktop.without_panel():
        app.start()
        in_section("Welcome to Korvell")
        wait_for("why there is a window", banner)
        assert any("status items would help" in words for words in screen.texts(screen.window("Korvell")))
        end(app)

        app.start()
        wait_for("the keeper", lambda: keeps(app))
        time.sleep(1)  # for a window that should not come
        assert not screen.windows(), screen.outline()
        app.again("korvell://page/cpu")
        in_section("CPU")
        wait_for("why there is a window", banner)
        app.desktop.start_panel()
        wait_for("the item in the panel that came", app.desktop.items, 20)
        wait_for("the end of what is true no more", lambda: not banner())
        end(app)


def older_tray(app):
    """One that embeds windows and knows of no bus: the item comes, opens the panel, and survives the tray."""
    if not shutil.which("trayer"):
        return print("older_tray: left out, trayer is missing")
    with app.desktop.another_home(), app.desktop.without_panel():
        start_trayer(app)
        app.start()
        in_section("Welcome to Korvell")
        assert not screen.find("label", "This desktop shows no tray")
        screen.press("ctrl+w")
        wait_for("the window's end", lambda: not screen.windows())
        opens_the_panel(resting_item(app))
        app.desktop.kill("trayer")
        wait_for("the end of the tray", lambda: not embedded_item(app))
        start_trayer(app)
        opens_the_panel(resting_item(app))
        end(app)
        app.desktop.kill("trayer")


def start_trayer(app):
    """Where no window begins by itself: in the corner below on the right."""
    app.desktop.start("trayer", "--edge", "bottom", "--align", "right", "--widthtype", "request", "--height", "28")


def resting_item(app):
    """Once the tray has arranged what it embeds."""
    def rests():
        before = embedded_item(app)
        time.sleep(0.3)
        return before if before == embedded_item(app) else None
    return wait_for("the item in the tray", rests, 20)


def embedded_item(app):
    """The middle of the item in that corner."""
    found = app.desktop.run("xdotool", "search", "--onlyvisible", "--class", "^Korvell$", "getwindowgeometry", "--shell",
                            "%@").stdout
    for numbers in re.findall(r"X=(\d+)\nY=(\d+)\nWIDTH=(\d+)\nHEIGHT=(\d+)", found):
        x, y, width, height = map(int, numbers)
        if y >= 900 - 28 and x + width > 1400 - 28:
            return x + width // 2, y + height // 2
    return None


def opens_the_panel(item):
    def panel():
        return screen.window("Korvell panel")

    subprocess.run(["xdotool", "mousemove", *map(str, item), "click", "1"], check=True)
    wait_for("the panel", panel)
    left, top, width, height = panel().box()
    assert left >= 0 and top >= 0 and left + width <= 1400 and top + height <= item[1], f"{panel().box()} at {item}"
    assert left + width > item[0] - width, f"{panel().box()} far from {item}"
    screen.press("Escape")
    wait_for("the panel's end", lambda: not panel())


def second_screen(app):
    """Unplugged while window and panel are on it: both are within reach, then and when they open again."""
    left, right, height = 1400, 1000, 900
    with app.desktop.another_home(), app.desktop.another_display(f"{left + right}x{height}"), \
            contextlib.closing(Monitors(app.desktop.environment["DISPLAY"])) as monitors:
        monitors.plug("left", 0, left, height, monitors.output())
        monitors.plug("right", left, right, height)
        app.start("korvell://page/cpu")
        in_section("CPU")
        subprocess.run(["xdotool", "getactivewindow", "windowsize", "--sync", "900", "700", "windowmove", "1450", "100"],
                       check=True)
        wait_for("the window on the right", lambda: screen.window("Korvell").box() == (1450, 100, 900, 700))
        close_window()
        app.again()
        wait_for("the window where it was", lambda: box_of("Korvell") == (1450, 100, 900, 700))
        open_panel_at(app, 2000, 800)
        assert box_of("Korvell panel")[0] > left, f"the pointer is on the right, the panel at {box_of('Korvell panel')}"

        monitors.unplug("right")
        wait_for("panel and window within reach", lambda: all(one.box()[0] < left for one in screen.windows()))
        app.alive()
        screen.press("Escape")
        wait_for("the panel's end", lambda: not screen.window("Korvell panel"))
        time.sleep(0.4)  # a click just after it closed it is no wish to open it
        open_panel_at(app, 2000, 800)  # the pointer stands where nothing is left
        within(box_of("Korvell panel"), left, height)
        screen.press("Escape")
        wait_for("the panel's end", lambda: not screen.window("Korvell panel"))
        app.again()
        close_window()
        app.again()
        in_section("CPU")
        within(box_of("Korvell"), left, height)

        monitors.plug("right", left, right, height)
        screen.press("ctrl+1")
        in_section("Health")
        end(app)


def within(box, width, height):
    x, y, wide, high = box
    assert x >= 0 and y >= 0 and x + wide <= width and y + high <= height, f"{box} is not within {width} × {height}"


def box_of(title):
    one = screen.window(title)
    return one.box() if one else None


def close_window():
    screen.press("ctrl+w")
    wait_for("the window's end", lambda: not screen.window("Korvell"))


def open_panel_at(app, x, y):
    """As the desktop's panel does, with the pointer there."""
    item = wait_for("the item in the tray", app.desktop.items)[0]
    subprocess.run(["xdotool", "mousemove", str(x), str(y)], check=True)
    app.desktop.call(item, "/StatusNotifierItem", "org.kde.StatusNotifierItem.Activate", str(x), str(y))
    wait_for("the panel", lambda: screen.window("Korvell panel"))


SURROUNDINGS = [no_tray, older_tray, second_screen]
