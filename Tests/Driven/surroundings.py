"""Desktops of other kinds than the one that all else is driven on. Each case has a home of its own."""
import socket, time

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

    app.desktop.kill("xfce4-panel")
    wait_for("a desktop without a tray", lambda: not app.desktop.has_panel())
    with app.desktop.another_home():
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


SURROUNDINGS = [no_tray]
