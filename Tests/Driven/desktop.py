"""A private desktop without a screen: a virtual display, a window manager, a panel that shows status items, a
notification server, a session bus with accessibility, all with a home of their own. Ended by their ids."""
import contextlib, os, shutil, signal, subprocess, tempfile, time

PROGRAMS = ["Xvfb", "openbox", "xfce4-panel", "dunst", "dbus-daemon", "xdotool", "gdbus"]
PANEL = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array"><value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="28"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"><property name="square-icons" type="bool" value="true"/></property>
  </property>
</channel>
"""


def missing():
    """What is not installed of what a private desktop needs."""
    lacking = [name for name in PROGRAMS if not shutil.which(name)]
    try:
        import gi
        gi.require_version("Atspi", "2.0")
    except (ImportError, ValueError):
        lacking.append("AT-SPI for python3-gi")
    return lacking


def wait_for(what, probe, seconds=10):
    """The first answer of the probe that is true; fails after a while."""
    end = time.monotonic() + seconds
    while True:
        answer = probe()
        if answer:
            return answer
        if time.monotonic() > end:
            raise AssertionError(f"{what}: did not happen within {seconds} s")
        time.sleep(0.05)


class Desktop:
    def __init__(self):
        self.folder = tempfile.mkdtemp(prefix="korvell-app-")
        self.home = self.folder + "/home"
        self.runtime = self.folder + "/run"
        settings = self.home + "/.config/xfce4/xfconf/xfce-perchannel-xml"
        for folder in (settings, self.runtime):
            os.makedirs(folder, mode=0o700)
        with open(settings + "/xfce4-panel.xml", "w") as file:
            file.write(PANEL)
        self.processes = {}
        self.environment = {"PATH": os.environ["PATH"], "HOME": self.home, "LANG": "C.UTF-8",
                            "XDG_RUNTIME_DIR": self.runtime, "XDG_SESSION_TYPE": "x11", "QT_QPA_PLATFORM": "xcb",
                            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}
        self.environment["DISPLAY"] = self.start_display()
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + self.runtime + "/bus"
        self.start_bus()
        self.start("openbox")
        self.start("dunst")
        self.start_panel()

    def start(self, name, *arguments, **options):
        log = open(f"{self.folder}/{name}.log", "ab")
        self.processes[name] = subprocess.Popen([name, *arguments], env=self.environment, stdin=subprocess.DEVNULL,
                                                stdout=options.pop("stdout", log), stderr=log, **options)
        return self.processes[name]

    def start_display(self, size="1400x900"):
        read, write = os.pipe()
        self.start("Xvfb", "-displayfd", str(write), "-screen", "0", size + "x24", "-nolisten", "tcp",
                   pass_fds=[write])
        os.close(write)
        with os.fdopen(read) as pipe:
            return ":" + pipe.readline().strip()

    @contextlib.contextmanager
    def without_panel(self):
        """It is there again afterwards, whoever started it."""
        self.kill("xfce4-panel")
        wait_for("a desktop without a tray", lambda: not self.has_panel())
        try:
            yield
        finally:
            if "xfce4-panel" not in self.processes:
                self.start_panel()
            wait_for("the panel", self.has_panel, 20)

    @contextlib.contextmanager
    def another_display(self, size):
        """One of another size, with window manager and panel, for what is started within."""
        self.kill("xfce4-panel")  # there is one on a session bus
        first, ordinary = dict(self.processes), dict(self.environment)
        self.environment["DISPLAY"] = os.environ["DISPLAY"] = self.start_display(size)
        try:
            self.start("openbox")
            self.start_panel()
            wait_for("the panel", self.has_panel, 20)
            yield
        finally:
            for name in ("xfce4-panel", "openbox", "Xvfb"):
                if self.processes.get(name) != first.get(name):
                    self.kill(name)
            self.processes.update(first)
            self.environment.clear()
            self.environment.update(ordinary)
            os.environ["DISPLAY"] = ordinary["DISPLAY"]
            self.start_panel()

    @contextlib.contextmanager
    def another_home(self):
        """Folders of someone who never started anything here; they stay afterwards."""
        ordinary = dict(self.environment), self.home, self.runtime
        folder = tempfile.mkdtemp(prefix="home-", dir=self.folder)
        self.home, self.runtime = folder, folder + "/run"
        os.mkdir(self.runtime, mode=0o700)
        self.environment.update(HOME=self.home, XDG_RUNTIME_DIR=self.runtime)
        try:
            yield
        finally:
            former, self.home, self.runtime = ordinary
            self.environment.clear()
            self.environment.update(former)

    def start_bus(self):
        self.start("dbus-daemon", "--session", "--nofork", "--nopidfile",
                   "--address=" + self.environment["DBUS_SESSION_BUS_ADDRESS"])
        wait_for("the session bus", lambda: os.path.exists(self.runtime + "/bus"))

    def start_panel(self):
        self.start("xfce4-panel", "--disable-wm-check")

    def kill(self, name):
        process = self.processes.pop(name)
        process.kill()
        process.wait()

    def call(self, service, path, method, *arguments):
        """The answer of a method on the session bus, as gdbus prints it; empty where there is none."""
        return self.run("gdbus", "call", "--session", "--timeout", "2", "--dest", service, "--object-path", path,
                        "--method", method, *arguments).stdout

    def run(self, *command, **options):
        options = {"env": self.environment, "capture_output": True, "text": True, "timeout": 30,
                   "stdin": subprocess.DEVNULL, **options}
        return subprocess.run(command, **options)

    def watcher(self, name):
        """A property of who keeps the status items, as gdbus prints it; empty where nobody does."""
        watcher = "org.kde.StatusNotifierWatcher"
        return self.call(watcher, "/StatusNotifierWatcher", "org.freedesktop.DBus.Properties.Get", watcher, name)

    def has_panel(self):
        return "true" in self.watcher("IsStatusNotifierHostRegistered")

    def items(self):
        """The status items that the panel knows: service and path."""
        return [part.split("/")[0] for part in self.watcher("RegisteredStatusNotifierItems").split("'")[1::2]]

    def end(self):
        for process in reversed(self.processes.values()):
            process.send_signal(signal.SIGTERM)
        for process in self.processes.values():
            try:
                process.wait(3)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)
