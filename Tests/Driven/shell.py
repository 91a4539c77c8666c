"""What is round the sections: the first launch, the window, settings, the tray's item, the panel, links."""
import json, os, re, subprocess, time

import screen
from desktop import wait_for
from driving import SECTIONS, confirm, in_section, open_section, title_shows


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


def settings_file(app):
    with open(app.desktop.home + "/.config/korvell/settings.json") as file:
        return json.load(file)


def tray_menu(app):
    """Its entries: the words and how the panel calls each."""
    item = wait_for("the item in the tray", app.desktop.items)[0]
    layout = app.desktop.call(item, "/MenuBar", "com.canonical.dbusmenu.GetLayout", "0", "1", "[]")
    return {words: number for number, words in re.findall(r"\((\d+), \{[^}]*'label': <'([^']*)'>", layout)}


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


def active_window():
    return subprocess.run(["xdotool", "getactivewindow", "getwindowname"], capture_output=True, text=True).stdout.strip()


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
    subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Korvell$", "windowactivate", "--sync",
                    "windowminimize"], check=True)
    wait_for("the minimized window", lambda: active_window() != "Korvell")
    choose("Quit Korvell")
    wait_for("the question, to be seen", lambda: active_window() == "Korvell" and screen.find("push button", "Quit"))
    screen.press("Escape")
    choose("Open panel")
    wait_for("the panel", lambda: screen.window("Korvell panel"))
    screen.press("Escape")
    wait_for("the panel's end", lambda: not screen.window("Korvell panel"))
    time.sleep(0.4)  # a click just after it closed it is no wish to open it


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


def quitting(app):
    app.again()
    screen.press("ctrl+q")
    confirm("Quit")
    status = app.ended()
    assert status == 0, f"exit {status}"
