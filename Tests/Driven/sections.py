"""What each section does."""
import contextlib, json, os, shutil, socket, struct, subprocess, time

import screen
from desktop import wait_for
from driving import compressed_time, confirm, open_section, same_words, victim


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


def has_sound_server():
    return all(shutil.which(name) for name in ("pulseaudio", "pacat", "pactl"))


def start_sound(app, *players):
    """A sound server without a machine behind it, and players of silence that say who they are."""
    app.desktop.start("pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "-L", "module-native-protocol-unix",
                      "-L", "module-null-sink sink_name=test")
    wait_for("the sound server", lambda: app.desktop.run("pactl", "info").returncode == 0)
    return [subprocess.Popen(["pacat", "--raw", "--client-name=" + name, "--property=application.process.binary=" + name,
                              "/dev/zero"], env=app.desktop.environment, stderr=subprocess.DEVNULL)
            for name in players]


def stop_sound(app, players):
    for player in players:
        player.terminate()
        player.wait(10)
    app.desktop.kill("pulseaudio")


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
    if not has_sound_server():
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
    stop_sound(app, players)
    open_section("Health")
