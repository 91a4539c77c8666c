"""Desktops of other kinds than the one that all else is driven on. Each case has a home of its own."""
import contextlib, glob, json, os, re, shutil, signal, socket, sqlite3, subprocess, tempfile, time

import screen
from desktop import wait_for
from display import Display
from driving import compressed_time, in_section
from shell import panel, sections_by_pointer, settings_window


def keeps(person):
    """Whether a keeper answers for whose folders these are."""
    with socket.socket(socket.AF_UNIX) as connection:
        return connection.connect_ex(person.runtime + "/korvell/keeper.sock") == 0


def end(app):
    app.process.terminate()
    status = app.ended()
    assert status == 0, f"exit {status}"


@contextlib.contextmanager
def newcomer(app):
    """Someone who never started the application. It does not outlive what is round it, whatever happens."""
    with app.desktop.another_home():
        try:
            yield
        finally:
            if app.process and app.process.poll() is None:
                app.process.kill()
                app.ended()
            app.process = None


def shown(app):
    return contextlib.closing(Display(app.desktop.environment["DISPLAY"]))


def no_tray(app):
    """The first launch says why there is a window, later ones open nothing, and a panel may come any time."""
    def banner():
        return screen.find("label", "This desktop shows no tray")

    with app.desktop.without_panel(), newcomer(app):
        app.start()
        in_section("Welcome to Korvell")
        wait_for("why there is a window", banner)
        assert any("status items would help" in words for words in screen.texts(screen.window("Korvell")))
        end(app)

        with compressed_time(app):
            app.start()
            wait_for("the keeper", lambda: keeps(app.desktop))
            time.sleep(4)  # for a window that should not come, longer than anybody looks often for a panel
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
    with app.desktop.without_panel(), newcomer(app):
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
    found = app.desktop.run("xdotool", "search", "--onlyvisible", "--class", "^Korvell$",
                            "getwindowgeometry", "--shell", "%@").stdout
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
    close_panel()


def second_screen(app):
    """Unplugged while window and panel are on it: both are within reach, then and when they open again."""
    left, right, height = 1400, 1000, 900
    with app.desktop.another_display(f"{left + right}x{height}"), newcomer(app), shown(app) as display:
        display.plug("left", 0, left, height, display.output())
        display.plug("right", left, right, height)
        app.start("korvell://page/cpu")
        in_section("CPU")
        subprocess.run(["xdotool", "getactivewindow", "windowsize", "--sync", "900", "700",
                        "windowmove", "1450", "100"], check=True)
        wait_for("the window on the right", lambda: screen.window("Korvell").box() == (1450, 100, 900, 700))
        close_window()
        app.again()
        wait_for("the window where it was", lambda: box_of("Korvell") == (1450, 100, 900, 700))
        open_panel_at(app, 2000, 800)
        assert box_of("Korvell panel")[0] > left, f"the pointer is on the right, the panel at {box_of('Korvell panel')}"

        display.unplug("right")
        wait_for("panel and window within reach", lambda: all(one.box()[0] < left for one in screen.windows()))
        app.alive()
        close_panel()
        open_panel_at(app, 2000, 800)  # the pointer stands where nothing is left
        within(box_of("Korvell panel"), left, height)
        close_panel()
        app.again()
        close_window()
        app.again()
        in_section("CPU")
        within(box_of("Korvell"), left, height)

        display.plug("right", left, right, height)
        screen.press("ctrl+1")
        in_section("Health")
        end(app)


def close_panel():
    screen.press("Escape")
    wait_for("the panel's end", lambda: not screen.window("Korvell panel"))
    time.sleep(0.4)  # a click just after it closed it is no wish to open it


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


def large_and_dark(app):
    """At 200 %, dark by choice: the pointer meets what it is pointed at, and all of it is dark."""
    with app.desktop.another_display("2800x1800"), newcomer(app), scaled(app, 2), shown(app) as display:
        write_settings(app, appearance="dark", hasLaunched=True)
        app.start("korvell://page/overview")
        in_section("Health")
        geometry = app.desktop.run("xdotool", "getactivewindow", "getwindowgeometry").stdout
        assert "2200x1520" in geometry, geometry
        sections_by_pointer(app)
        panel(app)
        is_dark(display, "Korvell")
        close_panel()
        open_panel_at(app, 1400, 40)
        is_dark(display, "Korvell panel")
        assert not screen.find("scroll bar", "", screen.window("Korvell panel")), "the screen has room for all of it"
        close_panel()
        app.again("korvell://page/overview")
        in_section("Health")
        settings_window(app)
        end(app)


def is_dark(display, title):
    """In its four corners."""
    x, y, width, height = (side * screen.scale for side in screen.window(title).box())
    for corner in ((x, y), (x + width - 1, y), (x, y + height - 1), (x + width - 1, y + height - 1)):
        assert max(display.color(*corner)) < 0x60, f"{display.color(*corner)} at {corner} of {title}"


@contextlib.contextmanager
def scaled(app, factor):
    app.desktop.environment["QT_SCALE_FACTOR"] = str(factor)
    screen.scale = factor
    try:
        yield
    finally:
        screen.scale = 1
        app.desktop.environment.pop("QT_SCALE_FACTOR", None)


def write_settings(app, **settings):
    folder = app.desktop.home + "/.config/korvell"
    os.makedirs(folder, exist_ok=True)
    with open(folder + "/new", "w") as file:
        json.dump(settings, file)
    os.rename(folder + "/new", folder + "/settings.json")  # who reads meanwhile reads all of it


def wayland(app):
    """Without X11 at all: the compositor places window and panel; the desktop's bus brings the item's clicks."""
    if not shutil.which("weston") or not glob.glob("/usr/lib/*/qt6/plugins/platforms/libqwayland-generic.so"):
        return print("wayland: left out, weston or qt6-wayland is missing")
    with compositor(app), newcomer(app):
        app.start()
        in_section("Welcome to Korvell")
        screen.find("push button", "Skip").perform()
        in_section("Health")
        item = wait_for("the item in the tray", app.desktop.items)[0]

        def click_item():
            app.desktop.call(item, "/StatusNotifierItem", "org.kde.StatusNotifierItem.Activate", "10", "10")

        click_item()
        panel = wait_for("the panel", lambda: screen.window("Korvell panel"))
        assert not screen.unnamed(), screen.unnamed()
        assert panel.box()[2] == 360, panel.box()
        click_item()
        wait_for("the panel's end", lambda: not screen.window("Korvell panel"))
        for section in ("Memory", "Sound", "Alerts"):
            screen.find("list item", section).perform()
            in_section(section)
        app.again("korvell://page/disk")
        in_section("Disk")
        time.sleep(0.4)  # a click just after it closed it is no wish to open it
        click_item()
        panel = wait_for("the panel", lambda: screen.window("Korvell panel"))
        screen.await_node("push button", "Settings", panel).perform()
        wait_for("the settings", lambda: screen.window("Settings"))
        end(app)


@contextlib.contextmanager
def compositor(app):
    ordinary, socket_path = dict(app.desktop.environment), app.desktop.runtime + "/wayland-of-its-own"
    app.desktop.start("weston", "--backend=headless-backend.so", "--use-pixman", "--width=1400", "--height=900",
                      "--socket=" + os.path.basename(socket_path), "--idle-time=0")
    del app.desktop.environment["DISPLAY"]
    app.desktop.environment.update(WAYLAND_DISPLAY=socket_path, QT_QPA_PLATFORM="wayland", XDG_SESSION_TYPE="wayland")
    try:
        wait_for("the compositor", lambda: os.path.exists(socket_path))
        yield
    finally:
        app.desktop.environment.clear()
        app.desktop.environment.update(ordinary)
        app.desktop.kill("weston")


def two_users(app):
    """On one machine and even one display: each has a keeper, a history and a window, and reaches no other's."""
    if os.geteuid() != 0:
        return print("two_users: left out, only root can become somebody else")
    with newcomer(app), somebody_else(app) as other:
        app.start("korvell://page/cpu")
        in_section("CPU")
        program, log = app.programs + "/korvell-app", open(app.lax_log, "ab")
        theirs = other.start(program, "korvell://page/memory", stderr=log)
        wait_for("their keeper", lambda: keeps(other))
        wait_for("a window each", lambda: windows_shown(app) == 2)
        for whose, process in ((app.desktop, app.process), (other, theirs)):
            with open(whose.home + "/.local/share/korvell/keeper.lock") as lock:
                assert str(process.pid) in lock.read()
            assert os.stat(whose.home + "/.local/share/korvell/history.sqlite").st_uid == os.stat(whose.home).st_uid
        again = other.start(program, "korvell://page/disk", stderr=log)
        assert again.wait(15) == 0
        app.again("korvell://page/network")
        in_section("Network")
        assert theirs.poll() is None and windows_shown(app) == 2

        end(app)
        assert keeps(other) and theirs.poll() is None
        app.start("korvell://page/cpu")
        in_section("CPU")
        theirs.terminate()
        assert theirs.wait(15) == 0
        app.alive()
        assert keeps(app.desktop)
        end(app)


def windows_shown(app):
    return len(app.desktop.run("xdotool", "search", "--onlyvisible", "--name", "^Korvell$").stdout.split())


class Person:
    """Another user: a home, a runtime folder and a bus, and what was started there."""
    number = 65534

    def __init__(self, environment):
        self.home = tempfile.mkdtemp(prefix="korvell-other-")
        self.runtime, self.processes = self.home + "/run", []
        os.mkdir(self.runtime, mode=0o700)
        for folder in (self.home, self.runtime):
            os.chown(folder, self.number, self.number)
        self.environment = {**environment, "HOME": self.home, "XDG_RUNTIME_DIR": self.runtime,
                            "DBUS_SESSION_BUS_ADDRESS": "unix:path=" + self.runtime + "/bus"}

    def start(self, *command, **options):
        self.processes.append(subprocess.Popen(command, env=self.environment, user=self.number, group=self.number,
                                               extra_groups=[], stdin=subprocess.DEVNULL, **options))
        return self.processes[-1]


@contextlib.contextmanager
def somebody_else(app):
    person = Person(app.desktop.environment)
    try:
        person.start("dbus-daemon", "--session", "--nofork", "--nopidfile",
                     "--address=" + person.environment["DBUS_SESSION_BUS_ADDRESS"], stderr=subprocess.DEVNULL)
        wait_for("their bus", lambda: os.path.exists(person.runtime + "/bus"))
        yield person
    finally:
        for process in reversed(person.processes):
            process.kill()
            process.wait()
        shutil.rmtree(person.home, ignore_errors=True)


def another_notification_server(app):
    """What is told after the server was killed shows at the next one, and a click on it leads where it should."""
    def shown():
        return app.desktop.run("xdotool", "search", "--onlyvisible", "--class", "^Dunst$").stdout.split()

    def an_hour_later():
        app.process.send_signal(signal.SIGUSR2)

    def report():
        """The weekly one: no other notification can be had at once on every machine."""
        write_settings(app, hasLaunched=True)
        an_hour_later()
        return wait_for("the report", shown, 20)[0]

    with newcomer(app), compressed_time(app, 1):
        # Where it is noon: hours later still is before the night to Monday, in which no report is due.
        app.desktop.environment["TZ"] = f"NOON{time.gmtime().tm_hour - 12:+d}"
        write_settings(app, hasLaunched=True)
        app.start("korvell://page/cpu")  # what a window shows is measured every other second
        in_section("CPU")
        wait_for("a measurement", lambda: screen.find("list item", "CPU").name != "CPU")
        an_hour_later()
        wait_for("a minute in the history", lambda: minutes_stored(app) > 0, 20)
        report()
        app.desktop.kill("dunst")
        wait_for("the end of what was shown", lambda: not shown())
        app.desktop.start("dunst")
        window = report()
        app.alive()
        subprocess.run(["xdotool", "mousemove", "--window", window, "40", "20", "click", "2"], check=True)
        in_section("Alerts")
        end(app)


def minutes_stored(app):
    path = app.desktop.home + "/.local/share/korvell/history.sqlite"
    if not os.path.exists(path):
        return 0
    with contextlib.closing(sqlite3.connect(f"file:{path}?mode=ro", uri=True)) as database:
        try:
            return database.execute("SELECT count(*) FROM system").fetchone()[0]
        except sqlite3.OperationalError:  # it is being made
            return 0


SURROUNDINGS = [no_tray, older_tray, second_screen, large_and_dark, wayland, two_users, another_notification_server]
