"""What is round the application: stand-ins for the programs and services that it calls, which write down what they
were asked, and a home in which every section has something to show."""
import contextlib, json, os, random, shlex, socket, sqlite3, subprocess, sys, tempfile, time

from desktop import wait_for

MANAGER = "org.freedesktop.FileManager1"
INTERFACE = f"<node><interface name='{MANAGER}'><method name='ShowItems'><arg type='as' direction='in'/>" \
            "<arg type='s' direction='in'/></method></interface></node>"
HOUR, DAY = 3600, 86_400


def serve_files(log):
    """A file manager that writes down what it is to show; until it is ended."""
    from gi.repository import Gio, GLib

    def shown(connection, sender, path, interface, method, arguments, invocation):
        with open(log, "a") as file:
            file.writelines(f"show {uri}\n" for uri in arguments[0])
        invocation.return_value(None)

    def have(connection, name):
        node = Gio.DBusNodeInfo.new_for_xml(INTERFACE)
        connection.register_object("/org/freedesktop/FileManager1", node.interfaces[0], shown, None, None)

    Gio.bus_own_name(Gio.BusType.SESSION, MANAGER, Gio.BusNameOwnerFlags.NONE, have, None, None)
    GLib.MainLoop().run()


class Outside:
    """The programs and services that the application asks."""

    def __init__(self, desktop):
        self.log = desktop.folder + "/outside.log"
        self.folder = desktop.folder + "/programs"
        os.makedirs(self.folder, exist_ok=True)
        for name in ("xdg-open", "gnome-control-center"):
            write(f"{self.folder}/{name}", f'#!/bin/sh\necho {name} "$@" >>{shlex.quote(self.log)}\n', 0o755)
        # Slow enough to be cancelled.
        self.docker = self.folder + "/docker"
        parts = "".join('{"Type":"%s","Reclaimable":"%s"}\n' % part for part in (
            ("Images", "1.5GB"), ("Containers", "20MB"), ("Local Volumes", "0B"), ("Build Cache", "3GB")))
        write(self.docker, f"#!/bin/sh\n[ $2 = df ] && sleep 1 && printf '{parts}' && exit\n"
                           f'echo docker "$@" >>{shlex.quote(self.log)}\n', 0o755)
        self.manager = subprocess.Popen([sys.executable, "-B", "-W", "ignore", __file__, self.log],
                                        env=desktop.environment)
        wait_for("the file manager", lambda: desktop.call(MANAGER, "/", "org.freedesktop.DBus.Peer.Ping"))

    def heard(self):
        if not os.path.exists(self.log):
            return []
        with open(self.log) as file:
            return file.read().splitlines()

    def end(self):
        self.manager.terminate()
        self.manager.wait()


def write(path, content, mode=0o644):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb" if isinstance(content, bytes) else "w") as file:
        file.write(content)
    os.chmod(path, mode)


def utc(when):
    return time.strftime("%Y-%m-%dT%H:%M:%SZ", time.gmtime(when))


def fill_history(home, now):
    """A day and a half of minutes with an hour in which nothing was recorded."""
    folder = home + "/.local/share/korvell"
    os.makedirs(folder)
    database = sqlite3.connect(folder + "/history.sqlite")
    values = "cpu REAL, memory REAL, disk REAL, network REAL, gpu REAL, energy REAL, disk_write REAL"
    database.execute(f"CREATE TABLE system(ts INTEGER PRIMARY KEY, {values}, score REAL)")
    database.execute(f"CREATE TABLE apps(ts INTEGER, app TEXT, name TEXT, path TEXT, {values})")
    database.execute("CREATE INDEX apps_ts ON apps(ts)")
    chance = random.Random(7)
    for minute in range(now - 36 * HOUR, now - 60, 60):
        minute -= minute % 60
        if 6 * HOUR < now - minute < 7 * HOUR:
            continue
        rates = [chance.uniform(0, 5e6) for _ in range(2)]
        figures = [chance.uniform(5, 60), 4e9 + chance.uniform(0, 1e9), *rates, 0, 8, chance.uniform(0, 2e6)]
        database.execute("INSERT INTO system VALUES(?,?,?,?,?,?,?,?,?)", (minute, *figures, chance.uniform(70, 95)))
        for share, name in ((0.6, "Paintbox"), (0.3, "Letters")):
            database.execute("INSERT INTO apps VALUES(?,?,?,?,?,?,?,?,?,?,?)",
                             (minute, name.lower(), name, None, *(share * figure for figure in figures)))
    database.commit()
    database.close()


def fill_alerts(home, now):
    alerts = [{"id": str(place), "kind": kind, "title": title, "detail": "For ten minutes.", "date": utc(now - age)}
              for place, (kind, title, age) in enumerate((
                  ("cpu", "Paintbox keeps the CPU busy", 2 * HOUR),
                  ("memoryPressure", "Memory was running out", 3 * HOUR),
                  ("diskSpace", "The disk was almost full", 26 * HOUR)))]
    write(home + "/.local/share/korvell/alerts.json", json.dumps({"alerts": alerts}), 0o600)


def fill_usage(home, now):
    for day in range(9):
        usage = {"input_tokens": 1_000 * (day + 1), "output_tokens": 2_000, "cache_creation_input_tokens": 0,
                 "cache_read_input_tokens": 0}
        message = {"id": f"msg_{day}", "type": "message", "role": "assistant", "model": "claude-sonnet-4-5-20250929",
                   "content": [{"type": "text", "text": "hi"}], "usage": usage}
        line = {"cwd": f"/code/site{day % 2}", "sessionId": str(day), "message": message, "requestId": f"req_{day}",
                "type": "assistant", "timestamp": utc(now - day * DAY).replace("Z", ".000Z")}
        write(f"{home}/.claude/projects/-code-site{day % 2}/{day}.jsonl",
              json.dumps(line, separators=(",", ":")) + "\n")


def fill_files(home, now):
    """What can be freed, and what starts by itself."""
    for name, size in ((".npm/_cacache/content", 30_000_000), (".cache/pip/http/wheel", 20_000_000),
                       (".cache/paintbox/thumbnails", 12_000_000)):
        write(f"{home}/{name}", b"\1" * size)
    trash = home + "/.local/share/Trash"
    write(trash + "/files/letter.txt", b"\1" * 15_000_000)
    write(trash + "/info/letter.txt.trashinfo",
          f"[Trash Info]\nPath={home}/letter.txt\nDeletionDate=2026-01-02T03:04:05\n")
    entry = "[Desktop Entry]\nType=Application\nName={}\nExec={}\n"
    write(home + "/.config/autostart/gone.desktop", entry.format("Gone", "/opt/gone/bin/gone"))
    write(home + "/.config/autostart/there.desktop", entry.format("There", "/bin/true"))


def other_machine(folder, outside):
    """What starts a program on a machine with a battery that has aged, a sensor, and Docker, which stands in for
    what is there: mounts that nobody else sees. Empty where the system allows none."""
    battery = {"STATUS": "Discharging", "PRESENT": 1, "TECHNOLOGY": "Li-ion", "CYCLE_COUNT": 900, "CAPACITY": 60,
               "ENERGY_FULL_DESIGN": 50_000_000, "ENERGY_FULL": 25_000_000, "ENERGY_NOW": 15_000_000,
               "POWER_NOW": 9_000_000, "VOLTAGE_NOW": 11_000_000}
    uevent = "".join(f"POWER_SUPPLY_{name}={value}\n" for name, value in battery.items())
    places = {"power_supply": {"BAT0/type": "Battery", "BAT0/uevent": uevent},
              "thermal": {"thermal_zone0/type": "x86_pkg_temp", "thermal_zone0/temp": "50000"},
              "hwmon": {"hwmon0/name": "coretemp", "hwmon0/temp1_input": "50000", "hwmon0/temp1_label": "Package id 0"}}
    mounts = []
    for name, files in places.items():
        for path, content in files.items():
            write(f"{folder}/{name}/{path}", content + "\n")
        mounts.append((f"{folder}/{name}", f"/sys/class/{name}"))
    mounts += [(outside.folder, "/usr/local/bin"), (outside.docker, "/usr/bin/docker")]
    os.makedirs(folder + "/nothing", exist_ok=True)
    mounts.append((folder + "/nothing", "/run/systemd"))  # nobody enables anything on this machine
    script = "".join(f"mount --bind {shlex.quote(ours)} {theirs} || exit\n" for ours, theirs in mounts
                     if os.path.exists(theirs)) + 'exec "$@"\n'
    command = ["unshare", "-m" if os.getuid() == 0 else "-rm", "sh", "-c", script, "sh"]
    return command if subprocess.run([*command, "true"], capture_output=True).returncode == 0 else []


@contextlib.contextmanager
def full_home(app):
    """A home of its own for what is started within."""
    # A notification would lie over the window's controls.
    write(app.desktop.home + "/.config/dunst/dunstrc", "[global]\norigin = bottom-right\noffset = 0x0\nheight = 60\n")
    app.desktop.kill("dunst")
    app.desktop.start("dunst")
    ordinary = dict(app.desktop.environment)
    home = tempfile.mkdtemp(prefix="full-", dir=app.desktop.folder)
    now = int(time.time())
    for fill in (fill_history, fill_alerts, fill_usage, fill_files):
        fill(home, now)
    outside = Outside(app.desktop)
    os.makedirs(home + "/.docker/bin")
    os.symlink(outside.docker, home + "/.docker/bin/docker")
    app.within = other_machine(app.desktop.folder + "/machine", outside)
    app.desktop.environment.update(HOME=home, PATH=outside.folder + ":" + ordinary["PATH"], XDG_CURRENT_DESKTOP="GNOME")
    former, app.desktop.home = app.desktop.home, home
    try:
        yield outside
    finally:
        app.desktop.home, app.within = former, []
        app.desktop.environment.clear()
        app.desktop.environment.update(ordinary)
        outside.end()


if __name__ == "__main__":
    serve_files(sys.argv[1])
