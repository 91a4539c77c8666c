"""The cases of scripts/check-app, in their order: each goes on where the one before it ended."""
import contextlib, json, os, re, shlex, shutil, signal, socket, sqlite3, struct, subprocess, time, traceback

from desktop import Desktop, wait_for

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

    def start(self, *arguments):
        # Where time is compressed a wait lasts twenty times as long.
        is_strict = STRICT and "KORVELL_CLOCK_FACTOR" not in self.desktop.environment
        self.process = subprocess.Popen([self.programs + "/korvell-app", *arguments], stdin=subprocess.DEVNULL,
                                        env={**self.desktop.environment, "KORVELL_STRICT_MAIN": str(int(is_strict))},
                                        stderr=open(self.log if is_strict else self.lax_log, "ab"))
        return self.process

    def again(self, *arguments):
        """Another start, which hands over."""
        done = self.desktop.run(self.programs + "/korvell-app", *arguments)
        assert done.returncode == 0, f"a second start: exit {done.returncode}, {done.stderr}"

    def tool(self, *arguments, **options):
        return self.desktop.run(self.programs + "/korvell", *arguments, **options)

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


# The cases


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


def first_launch(app):
    """The window comes by itself once, with what there is to know first, and the tray's item."""
    app.start()
    wait_for("the window", lambda: screen.window("Korvell"), 15)
    in_section("Welcome to Korvell")
    box = screen.await_node("check box", "Open at login")
    entry = app.desktop.home + "/.config/autostart/korvell.desktop"
    screen.click(box)
    wait_for("the entry that starts it at login", lambda: os.path.exists(entry))
    screen.click(box)
    wait_for("the switch back", lambda: not box.has(screen.CHECKED))
    screen.click(screen.await_node("push button", "Skip"))
    in_section("Health")
    screen.press("ctrl+w")
    wait_for("the window's end", lambda: not screen.window("Korvell"))
    app.again()
    in_section("Health")
    wait_for("the item in the tray", app.desktop.items)


def sections_by_pointer(app):
    for name in SECTIONS:
        open_section(name)


def sections_by_keys(app):
    for number, name in enumerate(SECTIONS[:9], 1):
        screen.press(f"ctrl+{number}")
        in_section(name)
    screen.press("ctrl+Next")
    in_section(SECTIONS[9])
    screen.press("ctrl+Prior")
    in_section(SECTIONS[8])
    screen.press("alt+Left")
    in_section(SECTIONS[9])
    screen.press("alt+Right")
    in_section(SECTIONS[8])
    screen.press("ctrl+1")
    in_section("Health")
    for _ in range(40):  # round the window, whatever has the focus
        screen.press("Tab")
    screen.press("F6", "F6")
    app.alive()


def ranges(app):
    for name in ("CPU", "Disk"):
        open_section(name)
        for choice in ("12h", "24h", "7d", "30d", "Live"):
            screen.click(screen.await_node("page tab", choice))
            wait_for(f"the range {choice}", lambda: screen.find("page tab", choice).has(screen.SELECTED))
    chart = screen.await_node("chart", "Disk")
    screen.click(chart)
    screen.press("Left", "Right", "Home", "End", "Return", "Escape", "3")
    wait_for("a range by its key", lambda: screen.find("page tab", "24h").has(screen.SELECTED))
    screen.press("1")


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
def doomed(app, script="while :; do :; done"):
    """Its row in the list of applications; what is done with it ends it."""
    with victim(app, script) as pid:
        open_section("CPU")
        screen.press("ctrl+f")
        subprocess.run(["xdotool", "type", "kvictim"], check=True)
        row = screen.await_node(None, "kvictim,", seconds=25)
        screen.click(row)
        yield row
        wait_for("the process's end", lambda: not os.path.exists(f"/proc/{pid}"))
        screen.press("ctrl+f", "ctrl+a", "BackSpace", "Escape")


def quitting_a_process(app):
    with doomed(app):
        asked = app.tool_asks("quit", "kvictim")
        screen.press("Delete")
        same_words(confirm("Quit"), "Quit kvictim?", asked)


def forcing_a_process(app):
    """One that does not listen."""
    with doomed(app, 'trap "" TERM; while :; do :; done') as row:
        asked = app.tool_asks("quit", "kvictim", "--force")
        screen.click(row, button=3)
        time.sleep(0.5)
        screen.press("Down", "Down", "Return")  # the toolkit lists no menu among the windows
        same_words(confirm("Force Quit"), "Force", asked)


class Agent:
    """An agent's program that cannot ask its person."""

    def __init__(self, app):
        self.process = subprocess.Popen([app.programs + "/korvell", "mcp"], env=app.desktop.environment, text=True,
                                        stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.last = 0
        self.say("initialize", {"protocolVersion": "2025-11-25", "capabilities": {}})
        self.hear()

    def say(self, method, parameters):
        self.last += 1
        self.process.stdin.write(json.dumps({"jsonrpc": "2.0", "id": self.last, "method": method,
                                             "params": parameters}) + "\n")
        self.process.stdin.flush()

    def hear(self):
        return json.loads(self.process.stdout.readline())["result"]

    def call(self, tool, **arguments):
        self.say("tools/call", {"name": tool, "arguments": arguments})

    def wants_to_quit(self, name):
        """The first whose name begins so."""
        def handle():
            self.call("processes", by="cpu", limit=20)
            apps = self.hear()["structuredContent"]["apps"]
            return next((each["handle"] for each in apps if each["name"].startswith(name) and "handle" in each), None)
        self.call("quit_app", handle=wait_for(f"a handle of {name}", handle, 25))

    def end(self):
        self.process.stdin.close()
        self.process.stdout.close()
        self.process.kill()
        self.process.wait()


def agents_ask(app):
    """The application asks for an agent that can't; nothing but its window says yes."""
    def question():
        return screen.window("An agent asks")

    with victim(app) as pid:
        agent = Agent(app)
        agent.wants_to_quit("kvictim")
        wait_for("the question", question)
        screen.press("Return", "space")  # what was on its way when the window came
        assert agent.hear()["structuredContent"]["outcome"] == "declined"
        wait_for("the question's end", lambda: not question())
        agent.wants_to_quit("kvictim")
        wait_for("the question", question)
        agent.end()
        wait_for("the end of a question that nobody waits for", lambda: not question())
        assert os.path.exists(f"/proc/{pid}"), "quit without a yes"
        agent = Agent(app)
        agent.wants_to_quit("kvictim")
        wait_for("the question", question)
        button = screen.await_node("push button", "Quit", question())
        wait_for("the button, a moment later", lambda: button.has(screen.ENABLED))
        assert "An agent asks: Quit kvictim?" in screen.texts(question()), screen.texts(question())
        screen.click(button)
        assert agent.hear()["structuredContent"]["outcome"] == "done"
        wait_for("the process's end", lambda: not os.path.exists(f"/proc/{pid}"))
        agent.end()
    # A stranger's name has no lines and no direction of its own there.
    with victim(app, name="Notes\n\nKorvell checked this: it is safe. \u202eTIUQ") as pid:
        agent = Agent(app)
        agent.wants_to_quit("Notes")
        wait_for("the question", question)
        words = screen.texts(question())
        assert any("Notes  Korvell checked this" in text for text in words), words
        assert not any(mark in text for mark in "\n\u202e" for text in words), words
        # Nor is anything called as whoever asks likes to.
        agent.end()
        wait_for("the question's end", lambda: not question())
        with open(f"/proc/{pid}/stat", errors="replace") as stat:
            start = int(stat.read().rsplit(")", 1)[1].split()[19])
        with socket.socket(socket.AF_UNIX) as other:
            other.connect(app.desktop.runtime + "/korvell/keeper.sock")
            wish = {"do": "quit", "processes": [{"pid": pid, "start": start}], "name": "Calculator, which hangs"}
            other.sendall((json.dumps({"ask": "consent", "of": wish}) + "\n").encode())
            wait_for("the question", question)
            words = screen.texts(question())
            assert not any("Calculator" in text for text in words), words
        wait_for("the question's end", lambda: not question())


def cleaning_up(app):
    cache = app.desktop.home + "/.npm/_cacache"
    os.makedirs(cache)
    with open(cache + "/content", "wb") as file:
        file.write(os.urandom(40_000_000))
    open_section("Free Up Space")
    screen.click(screen.await_node("push button", "Scan"))
    box = screen.await_node("check box", "npm cache", seconds=30)
    asked = json.loads(app.tool("storage", "clean", "--kind", "npm", "--dry-run", "--json").stdout)
    x, y = box.corner()
    subprocess.run(["xdotool", "mousemove", str(x + 14), str(y + 14), "click", "1"], check=True)
    wait_for("a tick", lambda: screen.find("check box", "npm cache").has(screen.CHECKED))
    screen.press("space", "space")
    untick = screen.await_node("push button", "Untick All")
    for _ in range(2):  # the header's control or the page, then the footer
        if not untick.has(screen.FOCUSED):
            screen.press("F6")
    assert untick.has(screen.FOCUSED), "F6 does not come to the footer"
    screen.press("space")
    wait_for("no tick", lambda: not screen.find("check box", "npm cache").has(screen.CHECKED))
    screen.press("space")
    wait_for("a tick again", lambda: screen.find("check box", "npm cache").has(screen.CHECKED))
    screen.click(screen.await_node("push button", "Move to Trash…"))
    same_words(confirm("Move to Trash"), asked["title"], asked["message"])
    wait_for("the cache's way to the Trash", lambda: not os.path.exists(cache))
    trash = app.desktop.home + "/.local/share/Trash/files"
    assert os.listdir(trash), "nothing came to the Trash"


@contextlib.contextmanager
def dev_server(app, project):
    folder = app.desktop.home + "/code/" + project
    os.makedirs(folder + "/.git")
    with open(folder + "/package.json", "w") as file:
        file.write("{}")
    with socket.socket() as free:
        free.bind(("127.0.0.1", 0))
        port = free.getsockname()[1]
    environment = {name: value for name, value in app.desktop.environment.items() if name != "LD_PRELOAD"}
    server = subprocess.Popen(["python3", "-m", "http.server", str(port), "--bind", "127.0.0.1"], cwd=folder,
                              env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        yield server
    finally:
        server.kill()
        server.wait()


def stopping_a_server(app):
    with dev_server(app, "site") as server:
        open_section("Dev Servers")
        button = screen.await_node("push button", "Stop python", seconds=45)
        asked = app.tool_asks("servers", "stop", str(server.pid))
        screen.click(button)
        same_words(confirm("Stop"), "Stop python", asked)
        wait_for("the server's end", lambda: server.poll() is not None)


def removing_a_leftover(app):
    entry = app.desktop.home + "/.config/autostart/gone.desktop"
    os.makedirs(os.path.dirname(entry), exist_ok=True)
    with open(entry, "w") as file:
        file.write("[Desktop Entry]\nType=Application\nName=Gone\nExec=/opt/gone/bin/gone\n")
    open_section("Startup Items")
    screen.press("ctrl+r")
    button = screen.await_node("push button", "Remove gone.desktop…", seconds=30)
    asked = app.tool_asks("startup", "remove", entry)
    screen.click(button)
    same_words(confirm("Move to Trash"), "Remove gone.desktop?", asked)
    wait_for("the entry's way to the Trash", lambda: not os.path.exists(entry))
    assert "gone.desktop" in os.listdir(app.desktop.home + "/.local/share/Trash/files")


def alert_switches(app):
    def is_on():
        kinds = json.loads(app.tool("alerts", "kinds", "--json").stdout)["kinds"]
        return next(kind["enabled"] for kind in kinds if kind["kind"] == "network")

    open_section("Alerts")
    switch = screen.await_node("check box", "An app uses a lot of network")
    assert is_on() and switch.has(screen.CHECKED)
    screen.click(switch)
    wait_for("the switch", lambda: not switch.has(screen.CHECKED) and not is_on())
    screen.press("space")
    wait_for("the switch back", lambda: switch.has(screen.CHECKED) and is_on())


def settings_file(app):
    with open(app.desktop.home + "/.config/korvell/settings.json") as file:
        return json.load(file)


def start_sound(app, *players):
    """A sound server without a machine behind it, and players of silence that say who they are."""
    app.desktop.start("pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "-L", "module-native-protocol-unix",
                      "-L", "module-null-sink sink_name=test")
    wait_for("the sound server", lambda: app.desktop.run("pactl", "info").returncode == 0)
    return [subprocess.Popen(["pacat", "--raw", "--client-name=" + name, "--property=application.process.binary=" + name,
                              "/dev/zero"], env=app.desktop.environment, stderr=subprocess.DEVNULL)
            for name in players]


def stream(app, name):
    """Volume in percent and whether it is muted, as the server has it."""
    listed = json.loads(app.desktop.run("pactl", "-f", "json", "list", "sink-inputs").stdout or "[]")
    for each in listed:
        if each["properties"].get("application.process.binary") == name:
            return int(next(iter(each["volume"].values()))["value_percent"].rstrip("%")), each["mute"]
    return None


def sound(app):
    """Two players: their volumes follow the sliders; the server ends, and what was chosen holds at the next one."""
    open_section("Sound")
    screen.await_node("label", "Sound per app is not available")
    if not all(shutil.which(name) for name in ("pulseaudio", "pacat", "pactl")):
        return
    players = start_sound(app, "alpha", "beta")
    slider = screen.await_node("slider", "Volume of alpha", seconds=40)
    screen.await_node("slider", "Volume of beta")
    assert not screen.unnamed(), screen.unnamed()
    screen.click(slider)
    screen.press("End")
    wait_for("150 %", lambda: stream(app, "alpha") == (150, False))
    screen.press("Next", "Left")
    wait_for("139 %", lambda: stream(app, "alpha") == (139, False))
    screen.click(screen.await_node("push button", "Mute alpha"))
    wait_for("silence", lambda: stream(app, "alpha") == (139, True))
    assert stream(app, "beta") == (100, False), stream(app, "beta")
    app.desktop.run("pactl", "set-sink-mute", "test", "1")
    screen.await_node("push button", "Unmute ", seconds=5)

    app.desktop.kill("pulseaudio")
    for player in players:
        player.wait(10)
    screen.await_node("label", "No sound server runs here")
    players = start_sound(app, "alpha")
    wait_for("the choice at a new server", lambda: stream(app, "alpha") == (139, True), 40)
    screen.click(screen.await_node("push button", "Reset alpha"))
    wait_for("100 %", lambda: stream(app, "alpha") == (100, False))
    for player in players:
        player.terminate()
        player.wait(10)
    app.desktop.kill("pulseaudio")
    open_section("Health")


def settings_window(app):
    screen.press("ctrl+comma")
    wait_for("the settings", lambda: screen.window("Settings"))
    for style, stored in (("CPU and memory", "cpuAndMemory"), ("Mini graphs", "graphs"), ("Health score", "score"),
                          ("Icon only", "icon")):
        screen.click(screen.await_node("radio button", style))
        wait_for(style, lambda: screen.find("radio button", style).has(screen.CHECKED) and
                 settings_file(app).get("menuBarStyle") == stored)
    for look in ("Dark", "Light", "System"):
        screen.click(screen.await_node("page tab", look, screen.window("Settings")))
        wait_for(look, lambda: screen.find("page tab", look).has(screen.SELECTED))
    box = screen.await_node("check box", "Open at login", screen.window("Settings"))
    entry = app.desktop.home + "/.config/autostart/korvell.desktop"
    screen.click(box)
    wait_for("the entry that starts it at login", lambda: os.path.exists(entry))
    wait_for("the switch", lambda: box.has(screen.CHECKED))
    screen.press("space")
    wait_for("the switch back", lambda: not box.has(screen.CHECKED))
    link = app.desktop.home + "/.local/bin/korvell"
    screen.click(screen.await_node("push button", "Install", screen.window("Settings")))
    wait_for("the command on the path", lambda: os.path.islink(link))
    assert os.path.samefile(link, app.programs + "/korvell"), os.readlink(link)
    assert not screen.unnamed(), screen.unnamed()
    screen.press("ctrl+w")
    wait_for("the settings' end", lambda: not screen.window("Settings"))


def another_language(app):
    """It is spoken at once, in each window and in the tray, and the keyboard stays where it is."""
    open_section("Memory")
    screen.press("ctrl+comma")
    wait_for("the settings", lambda: screen.window("Settings"))
    screen.click(screen.await_node("page tab", "Deutsch", screen.window("Settings")))
    wait_for("German settings", lambda: screen.window("Einstellungen"))
    wait_for("the same page in German", lambda: title_shows("Speicher"))
    wait_for("the focus", lambda: screen.find("page tab", "Deutsch").has(screen.FOCUSED))
    assert screen.find("list item", "Zustand"), "the sidebar"
    assert screen.find("check box", "Bei der Anmeldung öffnen", screen.window("Einstellungen"))
    assert "Übersicht öffnen" in tray_menu(app), tray_menu(app)
    assert not screen.unnamed(), screen.unnamed()
    screen.press("Home")
    wait_for("the system's language", lambda: screen.window("Settings"))
    assert "language" in settings_file(app) and "Open panel" in tray_menu(app)
    screen.press("Escape")
    in_section("Memory")


def tray_menu(app):
    """Its entries: the words and how the panel calls each."""
    item = wait_for("the item in the tray", app.desktop.items)[0]
    layout = app.desktop.call(item, "/MenuBar", "com.canonical.dbusmenu.GetLayout", "0", "1", "[]")
    return {words: number for number, words in re.findall(r"\((\d+), \{[^}]*'label': <'([^']*)'>", layout)}


def the_items_menu(app):
    def choose(words):
        item, entries = app.desktop.items()[0], tray_menu(app)
        app.desktop.call(item, "/MenuBar", "com.canonical.dbusmenu.Event", entries[words], "clicked", "<0>", "0")

    assert list(tray_menu(app)) == ["Open panel", "Open Korvell", "Free Up Space", "Settings…", "Quit Korvell"]
    screen.press("ctrl+w")
    wait_for("the window's end", lambda: not screen.window("Korvell"))
    choose("Free Up Space")
    in_section("Free Up Space")
    choose("Settings…")
    wait_for("the settings", lambda: screen.window("Settings"))
    screen.press("Escape")
    choose("Open panel")
    wait_for("the panel", lambda: screen.window("Korvell panel"))
    screen.press("Escape")
    wait_for("the panel's end", lambda: not screen.window("Korvell panel"))


def share_card(app):
    """Saved beside the one of before."""
    downloads = app.desktop.home + "/Downloads"
    open_section("Health")
    for count in (1, 2):
        screen.press("ctrl+s")
        wait_for("the card", lambda: os.path.isdir(downloads) and
                 len([name for name in os.listdir(downloads) if name.endswith(".png")]) == count)
    screen.await_node("label", "The card is in Downloads")
    for name in os.listdir(downloads):
        with open(downloads + "/" + name, "rb") as file:
            assert file.read(24)[16:] == struct.pack(">II", 1200, 630), name


def periods(app):
    """What an agent's program has logged today, in each period."""
    folder = app.desktop.home + "/.claude/projects/-code-site"
    os.makedirs(folder)
    stamp = time.strftime("%Y-%m-%dT%H:%M:%S.000Z", time.gmtime())
    usage = {"input_tokens": 1_000, "output_tokens": 2_000, "cache_creation_input_tokens": 0,
             "cache_read_input_tokens": 0}
    message = {"id": "msg_1", "type": "message", "role": "assistant", "model": "claude-sonnet-4-5-20250929",
               "content": [{"type": "text", "text": "hi"}], "usage": usage}
    with open(folder + "/0.jsonl", "w") as file:
        file.write(json.dumps({"cwd": "/code/site", "sessionId": "0", "message": message, "requestId": "req_1",
                               "type": "assistant", "timestamp": stamp}, separators=(",", ":")) + "\n")
    open_section("AI Usage")
    screen.press("ctrl+r")
    for period in ("Today", "30 days", "7 days"):
        screen.click(screen.await_node("page tab", period, seconds=30))
        wait_for(period, lambda: screen.find("page tab", period).has(screen.SELECTED))
        words = " ".join(screen.texts(screen.window("Korvell")))
        assert "3.0K" in words or "3K" in words or "3,000" in words, words


def sorting(app):
    """By the names, and the other way round."""
    def place(name):
        rows = [node.name for node in screen.walk(screen.window("Korvell")) if node.role == "list item"]
        return next((place for place, row in enumerate(rows) if row.startswith(name + ",")), None)

    open_section("Memory")
    wait_for("the applications", lambda: place("openbox") and place("dunst") and place("Xvfb"), 25)
    head = screen.await_node("table column header", "Name")
    screen.click(head)
    wait_for("the order of names", lambda: place("dbus-daemon") < place("dunst") < place("openbox"))
    screen.click(head)
    wait_for("the other way round", lambda: place("dbus-daemon") > place("dunst") > place("openbox"))
    screen.click(screen.await_node("table column header", "Memory"))
    wait_for("the largest first", lambda: place("Xvfb") < place("dunst"))


def panel(app):
    item = wait_for("the item in the tray", app.desktop.items)[0]

    def click_item():
        app.desktop.call(item, "/StatusNotifierItem", "org.kde.StatusNotifierItem.Activate", "10", "10")

    def opened():
        return screen.window("Korvell panel")

    # The only item of the only plugin stands where the bar begins.
    subprocess.run(["xdotool", "mousemove", "14", "14", "click", "1"], check=True)
    wait_for("the panel", opened)
    assert not screen.unnamed(), screen.unnamed()
    screen.press("Tab", "Tab", "Tab", "shift+Tab")
    screen.press("Escape")
    wait_for("the panel's end", lambda: not opened())
    time.sleep(0.4)
    click_item()
    wait_for("the panel again", opened)
    screen.click(screen.await_node("push button", "Memory", opened()))
    in_section("Memory")
    wait_for("the panel's end", lambda: not opened())
    time.sleep(0.4)
    click_item()
    wait_for("the panel a third time", opened)
    screen.click(screen.await_node("push button", "Quit Korvell", opened()))
    screen.click(screen.await_node("push button", "Cancel", opened()))
    screen.press("Escape")
    app.alive()


def links(app):
    app.again("korvell://page/network")
    in_section("Network")
    for link in ("korvell://page/../../etc", "korvell://quit", "KORVELL://PAGE/", "http://page/cpu", "korvell:page/cpu",
                 "korvell://page/" + "a" * 100_000, "--help", "korvell://page/cpu\n{\"do\":\"quit\"}", b"\xff\xfe"):
        app.again(link)
        app.alive()
    app.again("korvell://page/network")
    in_section("Network")


def second_start(app):
    for width, height in ((1040, 720), (1100, 760)):  # twice: a frame must not creep by its title bar
        subprocess.run(["xdotool", "getactivewindow", "windowsize", "--sync", str(width), str(height)], check=True)
        wait_for("the width", lambda: screen.window("Korvell").box()[2] == width)
        kept = screen.window("Korvell").box()
        screen.press("ctrl+w")
        wait_for("the window's end", lambda: not screen.window("Korvell"))
        app.again()
        wait_for("the window", lambda: screen.window("Korvell"))
        wait_for(f"the frame {kept}", lambda: screen.window("Korvell").box() == kept)
    others = [subprocess.Popen([app.programs + "/korvell-app"], env=app.desktop.environment, stderr=subprocess.PIPE)
              for _ in range(12)]
    for other in others:
        assert other.wait(30) == 0, other.stderr.read()
    app.alive()


def the_desktop_fails(app):
    """The panel, the notifications, the screen: gone and back."""
    app.desktop.kill("xfce4-panel")
    app.desktop.kill("dunst")
    time.sleep(1)
    app.alive()
    app.desktop.start_panel()
    wait_for("the item in the new panel", app.desktop.items, 20)
    if shutil.which("xrandr"):
        app.desktop.run("xrandr", "--size", "1024x768")
        time.sleep(0.5)
    open_section("Health")
    app.alive()


def quitting(app):
    app.again()
    screen.press("ctrl+q")
    confirm("Quit")
    status = app.ended()
    assert status == 0, f"exit {status}"


def check_history(app, least=0):
    database = sqlite3.connect(f"file:{app.desktop.home}/.local/share/korvell/history.sqlite?mode=ro", uri=True)
    rows = [row[0] for row in database.execute("SELECT ts FROM system ORDER BY ts")]
    assert len(rows) >= least, f"only {len(rows)} minutes were stored"
    assert len(rows) == len(set(rows)), "a minute was stored twice"
    assert all(later - former == 60 for former, later in zip(rows, rows[1:])), f"a minute is missing: {rows}"
    twice = database.execute("SELECT ts, app FROM apps GROUP BY 1, 2 HAVING count(*) > 1").fetchall()
    assert not twice, "an application was stored twice in a minute"
    assert database.execute("PRAGMA integrity_check").fetchone()[0] == "ok"


@contextlib.contextmanager
def compressed_time(app):
    """A minute lasts three seconds for what is started within."""
    root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    library = app.desktop.folder + "/clock.so"
    if not os.path.exists(library):
        subprocess.run(["c++", "-std=c++20", "-O1", "-shared", "-fPIC", "-o", library,
                        root + "/Tests/Tool/Linux/CompressedClock.cpp"], check=True)
    ordinary = dict(app.desktop.environment)
    app.desktop.environment.setdefault("KORVELL_CLOCK_BASE", str(time.time_ns()))
    app.desktop.environment.update(LD_PRELOAD=library, KORVELL_CLOCK_FACTOR="20")
    try:
        yield
    finally:
        app.desktop.environment.clear()
        app.desktop.environment.update(ordinary)


def headless_keeper(app):
    """`korvell run` steps back for the application and comes back, at any second of a minute."""
    with compressed_time(app):
        keeper = subprocess.Popen([app.programs + "/korvell", "run"], env=app.desktop.environment,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        try:
            for pause in (3.1, 4.7, 5.2, 3.9):
                time.sleep(pause)
                app.start("korvell://page/cpu")
                in_section("CPU")
                assert keeper.poll() is None, keeper.stdout.read()
                time.sleep(pause)
                app.process.terminate()
                assert app.ended() == 0
                assert keeper.poll() is None, keeper.stdout.read()
        finally:
            keeper.terminate()
            keeper.wait(10)
    check_history(app, 8)


def stopping_idle_servers(app):
    """Half an hour passes in which two servers do nothing."""
    with compressed_time(app), dev_server(app, "one") as one, dev_server(app, "two") as two:
        app.start("korvell://page/devServers")
        button = screen.await_node("push button", "Stop All Idle…", seconds=240)
        wait_for("both to be idle", lambda: screen.find("label", "2 dev servers are running but idle"), 60)
        # Their memory may have changed between the two questions.
        asked = app.tool("servers", "stop-idle").stderr.split("Stopping them")[0]
        screen.click(button)
        words = confirm("Stop")
        same_words(words, "Stop 2 idle servers?", asked)
        assert all(any(name in line for line in words) for name in ("one: python", "two: python")), words
        wait_for("the servers' end", lambda: one.poll() is not None and two.poll() is not None)
        app.process.terminate()
        assert app.ended() == 0


def an_hour_asleep(app):
    """The lid is shut for an hour while the window shows a live chart."""
    minutes = sqlite3.connect(f"file:{app.desktop.home}/.local/share/korvell/history.sqlite?mode=ro", uri=True)
    before = 5_000  # seconds of quick time that have passed: what is recorded now is a day later than all else
    begin = time.time() + before * 19
    app.desktop.environment["KORVELL_CLOCK_BASE"] = str(time.time_ns() - before * 10**9)
    try:
        with compressed_time(app):
            app.start("korvell://page/cpu")
            in_section("CPU")
            time.sleep(7)
            app.process.send_signal(signal.SIGUSR2)
            time.sleep(7)
            app.alive()
            open_section("Health")
            app.process.terminate()
            assert app.ended() == 0
    finally:
        del app.desktop.environment["KORVELL_CLOCK_BASE"]
    rows = [row[0] for row in minutes.execute("SELECT ts FROM system WHERE ts > ? ORDER BY ts", (begin - 60,))]
    steps = [later - former for former, later in zip(rows, rows[1:])]
    assert len([step for step in steps if 3600 <= step <= 3720]) == 1, f"no hour is missing: {steps}"
    assert all(step == 60 for step in steps if step < 3600), f"a minute is missing: {steps}"


def starts_at_the_same_moment(app):
    for _ in range(5):
        together = [subprocess.Popen([app.programs + "/korvell-app"], env=app.desktop.environment) for _ in range(10)]
        wait_for("all but one", lambda: [one.poll() for one in together].count(None) == 1, 30)
        left = [one for one in together if one.poll() is None]
        assert all(one.returncode == 0 for one in together if one not in left), [one.returncode for one in together]
        left[0].terminate()
        assert left[0].wait(15) == 0, left[0].returncode


def the_bus_goes(app):
    app.start("korvell://page/cpu")
    wait_for("the window", lambda: app.desktop.run("xdotool", "search", "--onlyvisible", "--name", "^Korvell$").stdout)
    time.sleep(1)
    app.desktop.kill("dbus-daemon")
    time.sleep(3)
    app.alive()
    app.process.terminate()
    status = app.ended()
    assert status == 0, f"exit {status}"


CASES = [the_widget, the_widgets_place, first_launch, sections_by_pointer, sections_by_keys, ranges, sorting,
         settings_window, another_language, the_items_menu, share_card, periods, panel, links, the_widgets_parts,
         second_start, quitting_a_process, forcing_a_process, agents_ask, cleaning_up, stopping_a_server,
         removing_a_leftover, alert_switches, sound, the_desktop_fails, quitting, headless_keeper,
         stopping_idle_servers, an_hour_asleep, starts_at_the_same_moment, the_bus_goes]
# They start the application by themselves.
STARTERS = (the_widget, the_widgets_place, first_launch, headless_keeper, stopping_idle_servers, an_hour_asleep,
            starts_at_the_same_moment, the_bus_goes)


def run(programs, chosen):
    global screen
    desktop = Desktop()
    os.environ.update(desktop.environment)
    import screen as imported
    screen = imported
    app = App(desktop, programs)
    failed = False
    try:
        for case in CASES:
            if chosen and case.__name__ not in chosen:
                continue
            start = time.monotonic()
            try:
                if app.process is None and case not in STARTERS:
                    app.start("korvell://page/overview")
                    wait_for("the window", lambda: screen.window("Korvell"))
                case(app)
                print(f"{case.__name__}: {time.monotonic() - start:.1f} s", flush=True)
            except Exception:
                failed = True
                print(f"{case.__name__}: FAILED\n{traceback.format_exc()[-2000:]}", flush=True)
                print("\n".join(screen.outline())[:8000], flush=True)
    finally:
        if app.process and app.process.poll() is None:
            app.process.terminate()
            app.ended()
        complaints = app.complaints()
        desktop.end()
    if complaints:
        print("standard error of the application:\n" + complaints[:20_000])
    return 1 if failed or complaints else 0
