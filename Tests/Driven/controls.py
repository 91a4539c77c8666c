"""Every control, used once by the pointer and once by the keyboard, in all that has some."""
import json, os, time

import screen
from desktop import wait_for
from driving import SECTIONS, in_section, open_section
from outside import full_home
from sections import dev_server, has_sound_server, start_sound, stop_sound
from sweep import Glance, Sweep, controls

from gi.repository import GLib


class Place:
    """A section, the settings, the panel, the page of the first launch."""

    def __init__(self, name, title, show):
        self.name, self.title, self.show = name, title, show
        self.keys, self.nodes = [], {}

    def __str__(self):
        return self.name

    def window(self):
        return screen.window(self.title)

    def open(self):
        if self.show():
            self.nodes = {}

    def refresh(self):
        """Its controls, once no more come."""
        def settled():
            former, self.nodes = self.nodes.keys(), controls(self.window())
            return former == self.nodes.keys()
        wait_for(f"{self}: the last of its controls", lambda: settled() or time.sleep(0.5), 20)
        self.keys = [key for key in self.nodes if not self.is_outside(key)]

    def is_outside(self, key):
        return self.title == "Korvell" and self.is_frame(key)

    def is_frame(self, key):
        """What stands beside every section."""
        return key[1] == "Sections" or key[2] == "Help for this page"

    def find(self, key):
        node = self.nodes.get(key)
        try:
            if node and node.has(screen.SHOWING):
                return node
        except GLib.Error:
            pass
        self.nodes = controls(self.window())
        return self.nodes[key]


def section(name):
    def show():
        if Glance().section == name:
            return False
        open_section(name)
        return True
    return Place(name, "Korvell", show)


def settings_place():
    def show():
        if screen.window("Settings"):
            return False
        screen.press("ctrl+comma")
        wait_for("the settings", lambda: screen.window("Settings"))
        return True
    return Place("Settings", "Settings", show)


def open_panel(app):
    time.sleep(0.4)  # a click just after it closed it is no wish to open it
    app.desktop.call(wait_for("the item in the tray", app.desktop.items)[0], "/StatusNotifierItem",
                     "org.kde.StatusNotifierItem.Activate", "10", "10")
    wait_for("the panel", lambda: screen.window("Korvell panel"))


def panel_place(app):
    def show():
        if screen.window("Korvell panel"):
            return False
        open_panel(app)
        return True
    return Place("the panel", "Korvell panel", show)


def welcome(sweep, app):
    """Each of its switches; its ways out."""
    app.start()
    wait_for("the window", lambda: screen.window("Korvell"), 20)
    in_section("Welcome to Korvell")
    place = Place("Welcome", "Korvell", lambda: False)
    sweep.sweep(place, but=("Skip", "Show This Machine", *unsafe(app)))
    screen.click(screen.await_node("push button", "Skip"))
    in_section("Health")


def unsafe(app):
    """It would change this machine, or ask an administrator."""
    changes = os.path.exists("/run/systemd/system") if os.getuid() == 0 else os.path.exists("/usr/bin/pkexec")
    return ("Enable", "Enable: System processes") if changes and not app.within else ()


def frame(sweep):
    """What stands beside every section: the sidebar, the help."""
    place = section("Health")
    place.refresh()
    for name in SECTIONS:
        screen.click(screen.await_node("list item", name))
        in_section(name)
    screen.press("Home")
    for name in reversed(SECTIONS[:-1]):
        screen.press("Up")
        in_section(name)
    for key in [key for key in place.nodes if place.is_frame(key) and key[0] == "push button"]:
        sweep.attempt(lambda: sweep.use(place, key))


def storage(sweep, app):
    """Scanned, given up, scanned; by the pointer and by the keyboard."""
    def show():
        open_section("Free Up Space")
        screen.await_node("push button", "Scan Again", seconds=20)
        return True
    open_section("Free Up Space")
    for by_pointer in (True, False) if app.within else ():  # where a program answers slowly
        sweep.press_named("Scan", by_pointer)
        sweep.press_named("Cancel", not by_pointer)
        screen.await_node("label", "Measures caches")
    sweep.press_named("Scan", False)
    sweep.sweep(Place("Free Up Space", "Korvell", show))


def remember_sounds(app, *names):
    """As if they had been made softer before."""
    folder = app.desktop.home + "/.config/korvell"
    os.makedirs(folder, mode=0o700, exist_ok=True)
    apps = [{"key": "proc:" + name, "name": name, "volume": 0.5, "muted": False} for name in names]
    with open(folder + "/settings.json", "w") as file:
        json.dump({"sound.apps": apps}, file)


def sound(sweep, app):
    """One that plays and two that are remembered."""
    if not has_sound_server():
        return sweep.sweep(section("Sound"))
    players = start_sound(app, "alpha")
    open_section("Sound")
    screen.await_node("slider", "Volume of alpha", seconds=40)

    def reset(name, by_pointer):
        sweep.press_named(name, by_pointer)
        wait_for("the end of " + name, lambda: not screen.find("push button", name), 5)

    for by_pointer in (True, False):
        sweep.focus(screen.await_node("slider", "Volume of alpha"))
        screen.press("Left")
        reset("Reset alpha", by_pointer)
    reset("Reset gamma", True)
    reset("Reset All", False)
    sweep.focus(screen.await_node("slider", "Volume of alpha"))
    screen.press("Left")
    screen.await_node("push button", "Reset alpha")
    sweep.sweep(section("Sound"), but=("Reset alpha",))
    stop_sound(app, players)


def every_control(app):
    with full_home(app) as outside, dev_server(app, "site"):
        remember_sounds(app, "gamma", "delta")
        sweep = Sweep(app, outside)
        places = [lambda: welcome(sweep, app), lambda: frame(sweep)]
        places += [lambda name=name: sweep.sweep(section(name)) for name in SECTIONS
                   if name not in ("Free Up Space", "Dev Servers", "Sound")]
        places += [lambda: sweep.sweep(settings_place(), but=("Language", *unsafe(app))),  # a language has its own case
                   lambda: screen.press("ctrl+w"), lambda: sweep.sweep(panel_place(app)),
                   lambda: screen.press("Escape")]
        places += [lambda: storage(sweep, app), lambda: sweep.sweep(section("Dev Servers")), lambda: sound(sweep, app)]
        for sweep_place in places:
            sweep.attempt(sweep_place)
        print(f"  {sum(sweep.used.values())} controls: {dict(sweep.used)}")
        app.process.terminate()
        assert app.ended() == 0
        assert not sweep.faults, f"{len(sweep.faults)} faults"
