"""Uses a control once by the pointer and once by the keyboard: each way has to do something that a person notices, and
both ways the same. What leaves the application meets stand-ins; whatever opens is closed again."""
import os, re, subprocess, time
from collections import Counter

from gi.repository import Atspi, GLib

import screen
from desktop import wait_for
from popups import Display
from driving import SECTIONS

ROLES = ("push button", "check box", "radio button", "page tab", "slider", "list item", "chart", "table column header",
         "text", "label", "list", "link")
GROUPED = ("page tab", "radio button")
SHOWING_MORE = ("Scan Again", "Enable")  # on the page that they are on
TOP, BOTTOM = 64, 72  # of a window: where nothing scrolls


def click_at(x, y, button="1"):
    subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", button], check=True)


def head(name):
    """A name without the figures in it, which live, and without what an alert is for a moment."""
    return re.sub(r"\d[\d.:]*", "#", name.removeprefix("New: ").split(",")[0])


def controls(root):
    """Those that can have the focus, by role, the list or group that they are in, and name or place there."""
    found = {}

    def visit(node, group):
        places = Counter()
        for child in node.children():
            if not child.has(screen.SHOWING):
                continue
            is_painted = child.role == "list item" and not child.accessible.get_n_actions()
            if child.role in ROLES and not is_painted and child.has(screen.FOCUSABLE) and child.has(screen.ENABLED):
                in_list = child.role == "list item" and group != "Sections"
                name = f"row {places['row']}" if in_list else head(child.name)
                places["row"] += in_list
                key = (child.role, group, name)
                while key in found:
                    key = (*key[:2], key[2] + "'")
                found[key] = child
            visit(child, head(child.name) or group)
    visit(root, "")
    return found


class Glance:
    """What a person sees in a moment, but for live figures."""

    def __init__(self):
        self.windows, self.questions, self.section = [], [], None
        self.states, self.words = {}, Counter()
        for window in screen.windows():
            self.windows.append(window.name)
            for node in screen.walk(window):
                try:
                    self.take(node)
                except GLib.Error:  # it went away meanwhile
                    continue

    def led_to(self):
        return self.windows, self.questions, self.section

    def take(self, node):
        states = node.accessible.get_state_set()
        if node.role in ("dialog", "alert"):
            self.questions.append(node.name)
        if node.role == "list item":
            if states.contains(screen.SELECTED) and head(node.name) in SECTIONS:
                self.section = head(node.name)
            return
        key = (node.role, head(node.name))
        self.words[key] += 1
        self.states[(*key, self.words[key])] = [states.contains(state) for state in (
            screen.CHECKED, screen.SELECTED, screen.ENABLED, Atspi.StateType.EXPANDED)]


class Sweep:
    def __init__(self, app, outside):
        self.app, self.outside, self.display = app, outside, Display()
        self.used, self.faults = Counter(), []

    # What has happened

    def before(self):
        self.display.forget_clipboard()
        self.heard = len(self.outside.heard())
        self.seen, self.menus = Glance(), len(self.display.menus())

    def outcome(self):
        """What a person notices since then; none: nothing."""
        new = self.outside.heard()[self.heard:]
        if new:
            return "left", new[0]
        if len(self.display.menus()) > self.menus:
            return ("menu",)
        if self.display.has_clipboard():
            return ("clipboard", *sorted(self.display.clipboard_forms())[:1])
        now = Glance()
        if now.led_to() != self.seen.led_to():
            return ("led", *now.led_to())
        if now.states != self.seen.states or now.words != self.seen.words:
            return ("shown",)
        return None

    def undo(self, place, outcome):
        self.app.alive()
        nameless = screen.unnamed()
        assert not nameless, f"{place}: without a name: {nameless}"
        if outcome[0] == "menu":
            screen.press("Escape")
            wait_for("the menu's end", lambda: len(self.display.menus()) == self.menus)
        if outcome[0] == "led" and outcome[2]:
            screen.press("Escape")
            wait_for("the question's end", lambda: not Glance().questions)
        if outcome[0] == "led" and screen.window("Settings") and place.title != "Settings":
            screen.press("ctrl+w")
            wait_for("the settings' end", lambda: not screen.window("Settings"))
        place.open()

    # Ways

    def into_view(self, place, find):
        """Scrolls as a person does until it can be pointed at."""
        x, y, width, height = place.window().box()
        former = None
        for _ in range(60):
            middle = find().place()[1]
            if y + TOP < middle < y + height - BOTTOM or middle == former:  # what does not scroll is in view
                return
            former = middle
            wheel = "5" if middle > y + TOP else "4"
            click_at(x + width - 60, y + height // 2, wheel)
            time.sleep(0.05)
        raise AssertionError(f"{find()} does not come into view")

    def focus(self, node):
        node.accessible.get_component_iface().grab_focus()
        wait_for(f"the focus on {node}", lambda: node.has(screen.FOCUSED), 3)

    def press_named(self, name, by_pointer):
        button = screen.await_node("push button", name)
        screen.click(button) if by_pointer else (self.focus(button), screen.press("space"))

    def point_away(self, window):
        x, y, _, _ = window.box()
        subprocess.run(["xdotool", "mousemove", str(x + 10), str(y + 10)], check=True)

    def both_ways(self, place, key):
        """A press with the pointer, then one with the keyboard; what both did."""
        outcomes = []
        # Once there is no helper to enable, to be told so again changes nothing: one way in each of its two places.
        once = {"Enable": ("pointer",), "Enable: System processes": ("keyboard",)}
        for way in once.get(key[2], ("pointer", "keyboard")):
            find = lambda: place.find(key)
            self.before()
            if way == "pointer":
                self.into_view(place, find)
                screen.click(find())
            else:
                self.focus(find())
                screen.press("space")
            outcomes.append(wait_for(f"{place}: what {key} does by {way}", self.outcome, 5))
            self.undo(place, outcomes[-1])
        assert outcomes[0] != ("shown",) or key[2].startswith(SHOWING_MORE), f"{place}: {key} leads nowhere"
        assert outcomes[0] == outcomes[-1], f"{place}: {key} does {outcomes[0]} by pointer, {outcomes[-1]} by keyboard"

    # Kinds

    def use(self, place, key):
        kind = key[0]
        try:
            getattr(self, "use_" + kind.replace(" ", "_"))(place, key)
        except Exception as error:
            raise AssertionError(f"{place}: {key}: {error}") from error
        self.used[kind] += 1

    def use_push_button(self, place, key):
        if key[2].startswith("Install"):
            return self.use_install(place, key)
        if key[2].startswith("Mute "):
            return self.use_mute(place, key)
        self.both_ways(place, key)

    def use_mute(self, place, key):
        """Silent and back; it says what the next press does."""
        role, _, name = key
        self.into_view(place, lambda: place.find(key))
        for way, before, after in ((True, name, "Unm" + name[1:]), (False, "Unm" + name[1:], name)):
            self.press_named(before, way)
            screen.await_node(role, after, place.window(), 5)

    def use_install(self, place, key):
        """Once more it changes nothing that is seen."""
        link = self.app.desktop.home + "/.local/bin/korvell"
        self.into_view(place, lambda: place.find(key))
        for way in (lambda: screen.click(place.find(key)),
                    lambda: (self.focus(place.find(key)), screen.press("space"))):
            if os.path.islink(link):
                os.remove(link)
            way()
            wait_for("the command on the path", lambda: os.path.islink(link), 5)

    use_link = use_push_button

    def use_check_box(self, place, key):
        """Over and back."""
        if key[1] == "What can be freed":
            return self.use_category(place, key)
        node = place.find(key)
        was = node.has(screen.CHECKED)
        self.into_view(place, lambda: place.find(key))
        screen.click(node)
        wait_for("the switch by pointer", lambda: node.has(screen.CHECKED) != was, 3)
        self.focus(node)
        screen.press("space")
        wait_for("the switch by keyboard", lambda: node.has(screen.CHECKED) == was, 3)

    def use_category(self, place, key):
        """Ticked, and unfolded to its items."""
        find, unfolded = lambda: place.find(key), Atspi.StateType.EXPANDED
        self.into_view(place, find)
        x, y, width, height = find().box()
        for x, state in ((x + 14, screen.CHECKED), (x + width // 2, unfolded)):
            if state == unfolded and not find().has(Atspi.StateType.EXPANDABLE):
                continue
            click_at(x, y + 19)
            wait_for("what a click does", lambda: find().has(state), 3)
        self.focus(find())
        screen.press("space")
        wait_for("no tick, by keyboard", lambda: not find().has(screen.CHECKED), 3)
        screen.press("Left")
        wait_for("its folding, by keyboard", lambda: not find().has(unfolded), 3)

    def use_group(self, place, keys, state):
        """Those of which one is chosen: each by the pointer, then each by arrows."""
        chosen = next(key for key in keys if place.find(key).has(state))
        for key in keys:
            self.into_view(place, lambda: place.find(key))
            screen.click(place.find(key))
            wait_for(f"{place}: {key} by pointer", lambda: place.find(key).has(state), 3)
        for key in keys:
            screen.press("Right")
            wait_for(f"{place}: {key} by keyboard",
                     lambda: place.find(key).has(state) and place.find(key).has(screen.FOCUSED), 3)
        screen.click(place.find(chosen))
        wait_for(f"{place}: {chosen} again", lambda: place.find(chosen).has(state), 3)
        self.used[keys[0][0]] += len(keys)

    def use_page_tab(self, place, key):
        """With those beside it, once."""
        group = [each for each in place.keys if each[:2] == key[:2]]
        if key == group[0]:
            self.use_group(place, group, screen.SELECTED if key[0] == "page tab" else screen.CHECKED)

    use_radio_button = use_page_tab

    def use_slider(self, place, key):
        node = place.find(key)

        def value():
            return node.accessible.get_value_iface().get_current_value()
        was = value()
        x, y, width, height = node.box()
        click_at(x + width // 4, y + height // 2)
        wait_for("another value by pointer", lambda: value() != was, 3)
        now = value()
        self.focus(node)
        screen.press("Right")
        wait_for("another value by keyboard", lambda: value() == now + 1, 3)

    def use_chart(self, place, key):
        """A figure of it comes to the clipboard by pointer and by keyboard; where moments are held, one is."""
        node = place.find(key)
        self.into_view(place, lambda: node)
        self.focus(node)
        if "last" in node.name:
            screen.press("3")  # a day that was recorded
            wait_for("the day", lambda: "last 24 hours" in node.accessible.get_name(), 10)
            if "mean" not in node.accessible.get_name():
                assert place.name == "GPU", "nothing was recorded"
                return  # without a graphics card there is nothing to point at
        screen.point_at(node)
        self.copied(place, key, "pointer")
        screen.press("Escape", "Home", "Right")
        self.copied(place, key, "keyboard")
        screen.press("Escape", "1")
        self.point_away(place.window())

    def copied(self, place, key, way):
        self.display.forget_clipboard()
        screen.press("ctrl+c")
        wait_for(f"{place}: a figure of {key} by {way}", self.display.has_clipboard, 3)
        assert self.display.clipboard(), "nothing is on the clipboard"

    def use_table_column_header(self, place, key):
        """The order, or its direction, turns."""
        def order():
            node = place.find(key)
            return node.accessible.get_description(), [
                row.name.split(",")[0] for row in node.parent().children() if row.role == "list item"]
        for way in ("pointer", "keyboard"):
            before = order()
            if way == "pointer":
                self.into_view(place, lambda: place.find(key))
                screen.click(place.find(key))
            else:
                self.focus(place.find(key))
                screen.press("space")
            wait_for(f"another order by {way}", lambda: order() != before, 3)

    def use_text(self, place, key):
        node = place.find(key)
        self.into_view(place, lambda: node)
        text = node.accessible.get_text_iface()
        if node.has(Atspi.StateType.READ_ONLY):
            for way in (lambda: screen.click(node), lambda: self.focus(node)):
                way()
                screen.press("ctrl+a")
                self.copied(place, key, "selecting")
            return
        for way in (lambda: screen.click(node), lambda: screen.press("ctrl+f")):
            way()
            wait_for("the focus", lambda: node.has(screen.FOCUSED), 3)
            subprocess.run(["xdotool", "type", "zzz"], check=True)
            wait_for("what was typed", lambda: text.get_text(0, -1) == "zzz", 3)
            nothing = "No item has that in its name" if place.name == "Startup Items" else "No app is called that."
            screen.await_node("label", nothing, place.window())
            screen.press("Escape")
            wait_for("the empty field", lambda: not text.get_text(0, -1), 3)

    def use_label(self, place, key):
        """It tells why there is no figure."""
        self.into_view(place, lambda: place.find(key))
        x, y, width, height = place.find(key).box()
        for offset in range(10, width, 30):  # where one of its figures is missing
            click_at(x + offset, y + height // 2)
            if self.display.tooltips():
                break
        wait_for("what it says under the pointer", self.display.tooltips, 3)
        screen.press("Shift_L")

    def use_list_item(self, place, key):
        """A row that leads somewhere, or one of a table: what is done with it is the table's case."""
        if key[2] == "row 0":
            self.both_ways(place, key)

    def use_list(self, place, key):
        """Its rows are chosen, and have a menu."""
        def row(name):
            return next(each for each in place.find(key).children() if each.name.startswith(name + ","))

        names = ("Xvfb", "openbox")  # which stay as long as the display does
        self.into_view(place, lambda: row(names[0]))
        for name in names:
            self.into_view(place, lambda: row(name))
            screen.point_at(row(name))  # from here on nothing moves
            screen.click(row(name))
            wait_for(f"{name} by pointer", lambda: row(name).has(screen.SELECTED), 3)
        subprocess.run(["xdotool", "click", "3"], check=True)
        wait_for("its menu by pointer", self.display.menus, 3)
        screen.press("Escape")
        wait_for("the menu's end", lambda: not self.display.menus())
        self.focus(place.find(key))
        screen.press("Home")
        first = self.chosen(place, key)
        screen.press("Down")
        wait_for("another row by keyboard", lambda: self.chosen(place, key) not in (None, first), 3)
        screen.press("Menu")
        wait_for("its menu by keyboard", self.display.menus, 3)
        screen.press("Escape")
        wait_for("the menu's end", lambda: not self.display.menus())

    def chosen(self, place, key):
        return next((row.name.split(",")[0] for row in place.find(key).children() if row.has(screen.SELECTED)), None)

    # Places

    def tab_through(self, place):
        """Tab comes to every control of a place and round."""
        place.open()
        nodes = controls(place.window())
        order = []

        def focused():
            return next((key for key, node in nodes.items() if node.has(screen.FOCUSED)), None)
        begin = focused()
        for _ in range(len(nodes) + 5):
            screen.press("Tab")
            try:
                key = wait_for("the focus", focused, 2)
            except AssertionError as fault:
                found = [node for node in screen.walk(place.window()) if node.has(screen.FOCUSED)]
                raise AssertionError(f"{place}: behind {order[-1:]} Tab comes to {found}") from fault
            if key in order:
                break
            if order and key != begin and not place.is_outside(key):
                self.reads_on(place, nodes[order[-1]], nodes[key])
            order.append(key)
            if key == begin:
                break
            if key[0] == "label":
                self.attempt(lambda: wait_for(f"{place}: what {key} says with the focus", self.display.tooltips, 2))
        else:
            raise AssertionError(f"{place}: Tab does not come round: {order}")
        unreached = [key for key in place.keys if key not in order and not self.stands_for(key, order)]
        assert not unreached, f"{place}: Tab does not come to {unreached}, only to {order}"

    def reads_on(self, place, former, node):
        """Tab goes on as one reads, and up only to another column."""
        (left, top, width, tall), (x, y, wide, height) = former.box(), node.box()
        is_above, is_beside = y + height <= top, y < top + tall and top < y + height
        if (is_above and x < left + width) or (is_beside and x + wide <= left):
            self.tell(f"{place}: Tab goes back from {former} to {node}")

    def stands_for(self, key, order):
        """One of a group is the way to all of it."""
        role, group, name = key
        is_grouped = role in (*GROUPED, "list item") or group == "What can be freed"
        return is_grouped and any(other[1] == group or other[2] == group for other in order)

    def sweep(self, place, but=()):
        start = time.monotonic()
        place.open()
        place.refresh()
        self.attempt(lambda: self.tab_through(place), place)
        for key in place.keys:
            if key[1] not in but and key[2] not in but:
                self.attempt(lambda: self.use(place, key), place)
        print(f"  {place}: {len(place.keys)} in {time.monotonic() - start:.1f} s", flush=True)

    def tell(self, fault):
        self.faults.append(fault)
        print("    " + fault[:600], flush=True)

    def attempt(self, task, place=None):
        """What is found is told together."""
        try:
            task()
        except Exception as fault:
            self.tell(f"{type(fault).__name__} {fault}")
            screen.press("Escape", "Escape")
            if place:
                place.open()
