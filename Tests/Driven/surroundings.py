"""Desktops of other kinds than the one that all else is driven on. Each case has a home of its own."""
import re, shutil, socket, subprocess, time

import screen
from desktop import wait_for
from driving import in_section


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


SURROUNDINGS = [no_tray, older_tray]
