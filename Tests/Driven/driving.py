"""What every case has: the application, its sections, its questions."""
import contextlib, os, shlex, shutil, signal, sqlite3, subprocess, time

import screen
from desktop import wait_for

SECTIONS = ["Health", "CPU", "Memory", "Disk", "Network", "GPU", "Battery", "Free Up Space", "AI Usage",
            "Dev Servers", "Sound", "Sensors", "Startup Items", "Alerts"]

# What holds the main thread counts, unless the machine is known to be busy with other things.
STRICT = os.environ.get("KORVELL_STRICT_MAIN", "1") == "1"


class App:
    """The application, and what it says on standard error."""

    def __init__(self, desktop, programs):
        self.desktop, self.programs = desktop, programs
        self.log, self.lax_log = desktop.folder + "/app.log", desktop.folder + "/lax.log"
        self.process = None
        self.within = []  # a command that starts programs, where they are to find another machine

    def start(self, *arguments):
        # Where time is compressed a wait lasts twenty times as long.
        is_strict = STRICT and "KORVELL_CLOCK_FACTOR" not in self.desktop.environment
        self.process = subprocess.Popen([*self.within, self.programs + "/korvell-app", *arguments],
                                        stdin=subprocess.DEVNULL,
                                        env={**self.desktop.environment, "KORVELL_STRICT_MAIN": str(int(is_strict))},
                                        stderr=open(self.log if is_strict else self.lax_log, "ab"))
        return self.process

    def again(self, *arguments):
        """Another start, which hands over."""
        done = self.desktop.run(self.programs + "/korvell-app", *arguments)
        assert done.returncode == 0, f"a second start: exit {done.returncode}, {done.stderr}"

    def tool(self, *arguments, **options):
        return self.desktop.run(*self.within, self.programs + "/korvell", *arguments, **options)

    def tool_asks(self, *command):
        """What the tool says that it would do, before it finds that nobody can answer."""
        answer = self.tool(*command).stderr.splitlines()
        assert len(answer) > 1 and "Not done" in answer[-1], answer
        return answer[-2]

    def ended(self, seconds=15):
        status = self.process.wait(seconds)
        self.process = None
        return status

    def alive(self):
        assert self.process.poll() is None, f"the application ended with {self.process.returncode}"

    def complaints(self):
        told = []
        for path in (self.log, self.lax_log):
            if os.path.exists(path):
                with open(path, errors="replace") as file:
                    told += [line for line in file if path == self.log or "main thread was held" not in line]
        return "".join(told)


def title_shows(name):
    window = screen.window("Korvell")
    return window and any(node.role == "label" and node.name == name for node in screen.walk(window))


def in_section(name):
    wait_for(f"the section {name}", lambda: title_shows(name))
    nameless = screen.unnamed()
    assert not nameless, f"{name}: without a name: {nameless}"


def open_section(name):
    screen.click(screen.await_node("list item", name))
    in_section(name)


def confirm(button):
    """The words of the question that is open; then presses its button."""
    node = screen.await_node("push button", button, dialog())
    assert not node.has(screen.FOCUSED), "what can't be taken back has the focus"
    words = screen.texts(dialog())
    screen.click(node)
    return words


def dialog():
    def probe():
        for root in screen.windows():
            for node in screen.walk(root):
                if node.role in ("dialog", "alert"):
                    return node
    return wait_for("a question", probe)


def same_words(words, title, message):
    """What the window asks is what the tool asks."""
    shown = " ".join(" ".join(words).split())
    for sentence in (title, message):
        assert " ".join(sentence.split()) in shown, f"“{sentence}” is not in “{shown}”"


@contextlib.contextmanager
def victim(app, script="while :; do :; done", name="kvictim"):
    """The id of a process that is an application of its own: nobody's child."""
    path = app.desktop.home + "/" + name
    if not os.path.exists(path):
        shutil.copyfile("/bin/sh", path)
        os.chmod(path, 0o700)
    start = subprocess.run(["sh", "-c", f"setsid {shlex.quote(path)} -c '{script}' >&- 2>&- & echo $!"], capture_output=True,
                           env=app.desktop.environment)
    pid = int(start.stdout)
    try:
        yield pid
    finally:
        if os.path.exists(f"/proc/{pid}"):
            os.kill(pid, signal.SIGKILL)


@contextlib.contextmanager
def compressed_time(app, factor=20):
    """A minute lasts three seconds for what is started within, or what the factor makes of it."""
    root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    library = app.desktop.folder + "/clock.so"
    if not os.path.exists(library):
        subprocess.run(["c++", "-std=c++20", "-O1", "-shared", "-fPIC", "-o", library,
                        root + "/Tests/Tool/Linux/CompressedClock.cpp"], check=True)
    ordinary = dict(app.desktop.environment)
    app.desktop.environment.setdefault("KORVELL_CLOCK_BASE", str(time.time_ns()))
    app.desktop.environment.update(LD_PRELOAD=library, KORVELL_CLOCK_FACTOR=str(factor))
    try:
        yield
    finally:
        app.desktop.environment.clear()
        app.desktop.environment.update(ordinary)


def check_history(app, least=0):
    database = sqlite3.connect(f"file:{app.desktop.home}/.local/share/korvell/history.sqlite?mode=ro", uri=True)
    rows = [row[0] for row in database.execute("SELECT ts FROM system ORDER BY ts")]
    assert len(rows) >= least, f"only {len(rows)} minutes were stored"
    assert len(rows) == len(set(rows)), "a minute was stored twice"
    assert all(later - former == 60 for former, later in zip(rows, rows[1:])), f"a minute is missing: {rows}"
    twice = database.execute("SELECT ts, app FROM apps GROUP BY 1, 2 HAVING count(*) > 1").fetchall()
    assert not twice, "an application was stored twice in a minute"
    assert database.execute("PRAGMA integrity_check").fetchone()[0] == "ok"
