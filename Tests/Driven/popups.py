"""What only the display itself tells: which menus and tooltips are open, what is on the clipboard."""
import ctypes

from desktop import wait_for

POINTER, NUMBER, WINDOW, ATOM = ctypes.c_void_p, ctypes.c_int, ctypes.c_ulong, ctypes.c_ulong
library = ctypes.CDLL("libX11.so.6")
for name, result, *arguments in (
        ("XOpenDisplay", POINTER, ctypes.c_char_p),
        ("XDefaultRootWindow", WINDOW, POINTER),
        ("XInternAtom", ATOM, POINTER, ctypes.c_char_p, NUMBER),
        ("XGetAtomName", ctypes.c_char_p, POINTER, ATOM),
        ("XQueryTree", NUMBER, POINTER, WINDOW, POINTER, POINTER, POINTER, POINTER),
        ("XGetWindowAttributes", NUMBER, POINTER, WINDOW, POINTER),
        ("XGetWindowProperty", NUMBER, POINTER, WINDOW, ATOM, ctypes.c_long, ctypes.c_long, NUMBER, ATOM, POINTER,
         POINTER, POINTER, POINTER, POINTER),
        ("XFree", NUMBER, POINTER),
        ("XCreateSimpleWindow", WINDOW, POINTER, WINDOW, NUMBER, NUMBER, NUMBER, NUMBER, NUMBER, ctypes.c_ulong,
         ctypes.c_ulong),
        ("XGetSelectionOwner", WINDOW, POINTER, ATOM),
        ("XSetSelectionOwner", NUMBER, POINTER, ATOM, WINDOW, ctypes.c_ulong),
        ("XConvertSelection", NUMBER, POINTER, ATOM, ATOM, ATOM, WINDOW, ctypes.c_ulong),
        ("XCheckTypedWindowEvent", NUMBER, POINTER, WINDOW, NUMBER, POINTER),
        ("XSync", NUMBER, POINTER, NUMBER)):
    function = getattr(library, name)
    function.restype, function.argtypes = result, arguments

# A window may have gone while it is asked about: that is no reason to end.
HANDLER = ctypes.CFUNCTYPE(NUMBER, POINTER, POINTER)(lambda display, error: 0)
library.XSetErrorHandler(HANDLER)
SELECTION_NOTIFY, VIEWABLE, MUCH = 31, 2, 1 << 20


class Attributes(ctypes.Structure):
    _fields_ = [(name, NUMBER) for name in ("x", "y", "width", "height", "border", "depth")] + [
        ("visual", POINTER), ("root", WINDOW)] + [
        (name, NUMBER) for name in ("kind", "bit_gravity", "gravity", "backing")] + [
        ("planes", ctypes.c_ulong), ("pixel", ctypes.c_ulong), ("under", NUMBER), ("colormap", ctypes.c_ulong),
        ("installed", NUMBER), ("state", NUMBER), ("masks", ctypes.c_long * 3), ("redirect", NUMBER),
        ("screen", POINTER)]


class Display:
    """That of the environment."""

    def __init__(self):
        self.display = library.XOpenDisplay(None)
        assert self.display, "no display"
        self.root = library.XDefaultRootWindow(self.display)
        self.window = library.XCreateSimpleWindow(self.display, self.root, 0, 0, 1, 1, 0, 0, 0)
        self.selection = self.atom("CLIPBOARD")

    def atom(self, name):
        return library.XInternAtom(self.display, name.encode(), 0)

    def read(self, window, name, delete=False):
        """A property: its numbers, or its bytes."""
        kind, size, count, rest, data = ATOM(), NUMBER(), ctypes.c_ulong(), ctypes.c_ulong(), POINTER()
        library.XGetWindowProperty(self.display, window, self.atom(name), 0, MUCH, int(delete), 0, ctypes.byref(kind),
                                   ctypes.byref(size), ctypes.byref(count), ctypes.byref(rest), ctypes.byref(data))
        if not data.value:
            return None
        if size.value == 32:
            content = list((ctypes.c_ulong * count.value).from_address(data.value))
        else:
            content = ctypes.string_at(data.value, count.value)
        library.XFree(data)
        return content

    def top_windows(self):
        """Those that no window manager looks after, and are seen."""
        root, parent, children, count = WINDOW(), WINDOW(), POINTER(), ctypes.c_uint()
        library.XQueryTree(self.display, self.root, ctypes.byref(root), ctypes.byref(parent), ctypes.byref(children),
                           ctypes.byref(count))
        if not children.value:
            return []
        windows = list((WINDOW * count.value).from_address(children.value))
        library.XFree(children)
        return [window for window in windows if self.is_free(window)]

    def is_free(self, window):
        attributes = Attributes()
        known = library.XGetWindowAttributes(self.display, window, ctypes.byref(attributes))
        return known and attributes.state == VIEWABLE and attributes.redirect

    def own(self, are_tooltips):
        tooltip = self.atom("_NET_WM_WINDOW_TYPE_TOOLTIP")
        return [window for window in self.top_windows() if b"Korvell" in (self.read(window, "WM_CLASS") or b"") and
                (tooltip in (self.read(window, "_NET_WM_WINDOW_TYPE") or [])) == are_tooltips]

    def menus(self):
        return self.own(False)

    def tooltips(self):
        return self.own(True)

    def forget_clipboard(self):
        library.XSetSelectionOwner(self.display, self.selection, 0, 0)
        library.XSync(self.display, 0)

    def has_clipboard(self):
        return library.XGetSelectionOwner(self.display, self.selection) != 0

    def convert(self, target):
        event, place = (ctypes.c_ulong * 24)(), "KORVELL_PASTED"
        library.XConvertSelection(self.display, self.selection, self.atom(target), self.atom(place), self.window, 0)
        library.XSync(self.display, 0)
        wait_for("what is on the clipboard", lambda: library.XCheckTypedWindowEvent(
            self.display, self.window, SELECTION_NOTIFY, ctypes.byref(event)), 5)
        return self.read(self.window, place, delete=True)

    def clipboard(self):
        """As text; None without any."""
        content = self.convert("UTF8_STRING") if self.has_clipboard() else None
        return None if content is None else content.decode()

    def clipboard_forms(self):
        return [library.XGetAtomName(self.display, atom).decode() for atom in self.convert("TARGETS") or []]
