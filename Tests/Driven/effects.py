"""What single controls do, read back where it takes effect: in the files, in the tool's words, in the stand-ins for
what is round the application."""
import glob, json, os, subprocess, time

import screen
from controls import open_panel
from desktop import wait_for
from popups import Display
from driving import confirm, dialog, in_section, open_section, same_words, victim
from outside import full_home


def rows():
    return [node for node in screen.walk(screen.window("Korvell")) if node.role == "list item"]


def row_named(begin):
    return next((row for row in rows() if row.name.startswith(begin)), None)


def filter_by(words):
    screen.press("ctrl+f", "ctrl+a")
    subprocess.run(["xdotool", "type", words], check=True)


def chosen_from_menu(display, entry):
    """The entry with that number in the menu of the row that has the focus."""
    screen.press("Menu")
    wait_for("the menu", display.menus)
    screen.press(*["Down"] * entry, "Return")
    wait_for("the menu's end", lambda: not display.menus())


def unfolding():
    """An application to its processes and back: at its chevron, by arrows."""
    open_section("CPU")
    filter_by("dbus-daemon")
    row = wait_for("two of one name", lambda: row_named("dbus-daemon, "), 25)
    x, y, _, height = row.box()

    def parts():
        return [part for part in rows() if part.name.startswith("dbus-daemon · ")]
    click = ["xdotool", "mousemove", str(x + 14), str(y + height // 2), "click", "1"]
    for keys, count in ((None, 2), (None, 0), ("Right", 2), ("Left", 0)):
        screen.press(keys) if keys else subprocess.run(click, check=True)
        wait_for(f"{count} processes", lambda: len(parts()) >= 2 if count else not parts(), 5)
    screen.press("ctrl+f", "Escape")


def holding_a_moment():
    """A click on the chart: the list is of that moment, and stays so while the machine goes on."""
    def figures():
        return next(node.name for node in screen.walk(screen.window("Korvell"))
                    if node.role == "label" and ", User " in node.name)

    open_section("CPU")
    chart = screen.await_node("chart", "CPU")
    chart.accessible.get_component_iface().grab_focus()
    screen.press("3")
    wait_for("the day", lambda: "last 24 hours, mean" in chart.accessible.get_name())
    screen.click(chart)
    screen.await_node("label", "The moment is pinned.")
    held = wait_for("the list of that moment", lambda: row_named("Paintbox,")).name
    title = screen.await_node("label", "Top apps, ").name
    for _ in range(2):
        before = figures()
        wait_for("another figure", lambda: figures() != before, 30)
    assert row_named("Paintbox,").name == held and screen.find("label", title), "the moment was let go"
    screen.press("Escape")
    wait_for("the end of the moment", lambda: not screen.find("label", "The moment is pinned."))
    screen.press("1")


def what_a_row_offers(app, outside, display):
    """Why it is here, as the tool tells it; its file; its words on the clipboard."""
    with victim(app) as pid:
        open_section("CPU")
        filter_by("kvictim")
        screen.click(wait_for("the process", lambda: row_named("kvictim,"), 25))
        told = app.tool("top", "--why", str(pid)).stdout
        lines = [" ".join(line.split()) for line in told.splitlines()]
        for is_copied in (False, True):
            chosen_from_menu(display, 3)
            words = screen.texts(dialog())
            assert any("Why is kvictim here?" in text for text in words), words
            for line in lines:
                assert any(text.replace(":", "", 1) == line for text in words), (line, words)
            screen.click(screen.await_node("push button", "Copy" if is_copied else "Close", dialog()))
        copied = wait_for("what was copied", display.clipboard)
        assert [line.replace(":", "", 1) for line in copied.splitlines()] == lines, (copied, lines)
        chosen_from_menu(display, 4)
        wait_for("its file, shown", lambda: f"show file://{app.desktop.home}/kvictim" in outside.heard())
        display.forget_clipboard()
        chosen_from_menu(display, 5)
        copied = wait_for("the row's words", display.clipboard)
        assert copied.startswith("kvictim\t") and copied.count("\t") == 2, copied
    screen.press("ctrl+f", "Escape")


def clean(app, outside, title, kind, button, is_done):
    """Ticked, asked in the tool's words, done."""
    screen.await_node("check box", title)
    asked = json.loads(app.tool("storage", "clean", "--kind", kind, "--dry-run", "--json").stdout)
    for _ in range(20):
        if screen.find("check box", title).corner()[1] < 740:
            break
        subprocess.run(["xdotool", "mousemove", str(x + 300), "500", "click", "5"], check=True)
        time.sleep(0.1)
    x, y = screen.find("check box", title).corner()
    subprocess.run(["xdotool", "mousemove", str(x + 14), str(y + 19), "click", "1"], check=True)
    screen.click(screen.await_node("push button", button))
    same_words(confirm("Delete Permanently"), asked["title"], asked["message"])
    wait_for(title, is_done, 15)


def emptying_and_pruning(app, outside):
    trash = app.desktop.home + "/.local/share/Trash/files"
    open_section("Free Up Space")
    screen.click(screen.await_node("push button", "Scan"))
    screen.await_node("push button", "Scan Again", seconds=30)
    clean(app, outside, "Trash", "trash", "Empty Trash…", lambda: not os.listdir(trash))
    if app.within:
        clean(app, outside, "Docker", "docker", "Prune…", lambda: "docker system prune -f" in outside.heard())
    row = screen.await_node("check box", "npm cache")
    row.accessible.get_component_iface().grab_focus()
    screen.press("Right", "Down", "Return")
    wait_for("the item in the file manager", lambda: any(".npm" in line for line in outside.heard()))


def where_things_lie(app, outside, display):
    """What starts by itself, in the file manager."""
    open_section("Startup Items")
    screen.click(screen.await_node("push button", "More for there.desktop"))
    wait_for("the menu", display.menus)
    screen.press("Down", "Return")
    place = f"show file://{app.desktop.home}/.config/autostart/there.desktop"
    wait_for("its file, shown", lambda: place in outside.heard())


def degrees(app):
    """In Fahrenheit: the sidebar, the page, the settings."""
    if not app.within:
        return
    open_section("Sensors")
    screen.await_node("list item", "Sensors, 50", seconds=25)
    for unit, shown, stored in (("°F", "122", "fahrenheit"), ("°C", "50", "celsius")):
        screen.press("ctrl+comma")
        screen.click(screen.await_node("page tab", unit))
        screen.press("Escape")
        wait_for(f"{shown} {unit} in the sidebar", lambda: screen.find("list item", f"Sensors, {shown}{unit}"))
        wait_for(f"{shown} {unit} on the page", lambda: any(
            shown in text and text != f"Sensors, {shown}{unit}" for text in screen.texts(screen.window("Korvell"))))
        with open(app.desktop.home + "/.config/korvell/settings.json") as file:
            assert json.load(file)["temperatureUnit"] == stored


def a_fix_in_the_panel(app, outside):
    """The battery has aged: the panel's finding leads to the desktop's own settings, by the keyboard too."""
    if not app.within:
        return
    for by_pointer in (True, False):
        before = len(outside.heard())
        open_panel(app)
        button = screen.await_node("push button", "Battery Settings", screen.window("Korvell panel"), 25)
        if by_pointer:
            screen.click(button)
        else:
            button.accessible.get_component_iface().grab_focus()
            screen.press("space")
        wait_for("the desktop's settings", lambda: outside.heard()[before:] == ["gnome-control-center power"])
        screen.press("Escape")
        wait_for("the panel's end", lambda: not screen.window("Korvell panel"))


def copied_settings(display):
    """The agents' command and their file, as they stand there."""
    screen.press("ctrl+comma")
    for name, begin in (("Copy: Add to Claude Code", "claude mcp add "), ("Copy: Other MCP clients", "{")):
        display.forget_clipboard()
        button = screen.await_node("push button", name)
        button.accessible.get_component_iface().grab_focus()
        screen.press("space")
        copied = wait_for("what was copied", display.clipboard)
        assert copied.startswith(begin) and copied in screen.texts(screen.window("Settings")), copied
    assert "korvell" in json.loads(copied)["mcpServers"], copied
    screen.press("Escape")


def the_cards_ways(app, outside, display):
    """Its picture is on the clipboard and in the file manager."""
    open_section("Health")
    display.forget_clipboard()
    screen.press("ctrl+s")
    screen.click(wait_for("the way to it", lambda: next(
        (node for node in screen.walk(screen.window("Korvell")) if node.name == "Show"), None)))
    card = wait_for("the card", lambda: glob.glob(app.desktop.home + "/Downloads/*.png"))[0]
    name = os.path.basename(card).replace(" ", "%20")
    wait_for("the card, shown", lambda: any(name in line for line in outside.heard()))
    assert "image/png" in display.clipboard_forms(), display.clipboard_forms()


def effects(app):
    with full_home(app) as outside:
        app.start("korvell://page/cpu")
        wait_for("the window", lambda: screen.window("Korvell"), 20)
        in_section("CPU")
        display = Display()
        every = (app, outside, display)
        for part, *needs in ((unfolding,), (holding_a_moment,), (what_a_row_offers, *every),
                             (emptying_and_pruning, app, outside), (where_things_lie, *every), (degrees, app),
                             (a_fix_in_the_panel, app, outside), (copied_settings, display),
                             (the_cards_ways, *every)):
            start = time.monotonic()
            try:
                part(*needs)
            except Exception:
                print(f"  in {part.__name__}:")
                raise
            print(f"  {part.__name__}: {time.monotonic() - start:.1f} s")
        app.process.terminate()
        assert app.ended() == 0
