"""What the virtual display itself tells and does: colours that it shows, monitors that come and go as a cable is
plugged and unplugged."""
import ctypes


class Monitor(ctypes.Structure):  # XRRMonitorInfo
    _fields_ = [("name", ctypes.c_ulong), ("primary", ctypes.c_int), ("automatic", ctypes.c_int),
                ("outputs_count", ctypes.c_int), ("x", ctypes.c_int), ("y", ctypes.c_int), ("width", ctypes.c_int),
                ("height", ctypes.c_int), ("millimetres_wide", ctypes.c_int), ("millimetres_high", ctypes.c_int),
                ("outputs", ctypes.POINTER(ctypes.c_ulong))]


class Display:
    def __init__(self, name):
        self.x11, self.randr = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXrandr.so.2")
        pointer, number, whole = ctypes.c_void_p, ctypes.c_ulong, ctypes.c_int
        self.x11.XOpenDisplay.restype = pointer
        self.x11.XDefaultRootWindow.argtypes, self.x11.XDefaultRootWindow.restype = [pointer], number
        self.x11.XInternAtom.argtypes, self.x11.XInternAtom.restype = [pointer, ctypes.c_char_p, whole], number
        self.x11.XSync.argtypes, self.x11.XCloseDisplay.argtypes = [pointer, whole], [pointer]
        self.x11.XGetImage.argtypes = [pointer, number, whole, whole, ctypes.c_uint, ctypes.c_uint, number, whole]
        self.x11.XGetImage.restype = pointer
        self.x11.XGetPixel.argtypes, self.x11.XGetPixel.restype = [pointer, whole, whole], number
        self.x11.XFree.argtypes = [pointer]
        self.randr.XRRGetMonitors.argtypes = [pointer, number, whole, ctypes.POINTER(whole)]
        self.randr.XRRGetMonitors.restype = ctypes.POINTER(Monitor)
        self.randr.XRRSetMonitor.argtypes = [pointer, number, ctypes.POINTER(Monitor)]
        self.randr.XRRDeleteMonitor.argtypes = [pointer, number, number]
        self.display = self.x11.XOpenDisplay(name.encode())
        self.root = self.x11.XDefaultRootWindow(self.display)

    def close(self):
        self.x11.XCloseDisplay(self.display)

    def color(self, x, y):
        """Red, green, blue of a pixel, each up to 255."""
        all_planes, z_pixmap = 0xFFFFFFFF, 2
        image = self.x11.XGetImage(self.display, self.root, x, y, 1, 1, all_planes, z_pixmap)
        pixel = self.x11.XGetPixel(image, 0, 0)
        self.x11.XFree(image)
        return pixel >> 16 & 255, pixel >> 8 & 255, pixel & 255

    def plug(self, name, x, width, height, output=None):
        """Beside what is there. The first takes the display's output, which stands for all of it until then."""
        outputs = ctypes.pointer(ctypes.c_ulong(output)) if output else None
        monitor = Monitor(self.atom(name), output is not None, 0, 1 if output else 0, x, 0, width, height,
                          width // 4, height // 4, outputs)
        self.randr.XRRSetMonitor(self.display, self.root, monitor)
        self.x11.XSync(self.display, 0)

    def unplug(self, name):
        self.randr.XRRDeleteMonitor(self.display, self.root, self.atom(name))
        self.x11.XSync(self.display, 0)

    def output(self):
        """That of the monitor that spans the whole display."""
        return self.randr.XRRGetMonitors(self.display, self.root, 1, ctypes.c_int())[0].outputs[0]

    def atom(self, name):
        return self.x11.XInternAtom(self.display, name.encode(), 0)
