"""One X display, seen from outside its programs: windows, what is drawn in them, pixels, and real keys.

Uses the C libraries of X itself, because starting a tool for each key or picture takes longer than what is
measured. The display must belong to this process: errors of X are ignored, since windows disappear at any time."""

import ctypes
import select
import time
from ctypes import POINTER, byref, c_char_p, c_int, c_long, c_short, c_ubyte, c_uint, c_ulong, c_ushort, c_void_p

_ALL_PLANES = 0xFFFFFFFF
_Z_PIXMAP = 2
_PROPERTY_CHANGE = 1 << 22  # PropertyChangeMask.
_RAW_RECTANGLES = 0  # One event for each drawing.
_PIXEL = 4  # Bytes.


class _Image(ctypes.Structure):
    _fields_ = [("width", c_int), ("height", c_int), ("offset", c_int), ("format", c_int), ("data", c_void_p),
                ("byte_order", c_int), ("unit", c_int), ("bit_order", c_int), ("pad", c_int), ("depth", c_int),
                ("bytes_per_line", c_int)]


class _Rectangle(ctypes.Structure):
    _fields_ = [("x", c_short), ("y", c_short), ("width", c_ushort), ("height", c_ushort)]


class _DamageEvent(ctypes.Structure):
    _fields_ = [("type", c_int), ("serial", c_ulong), ("sent", c_int), ("display", c_void_p), ("drawable", c_ulong),
                ("damage", c_ulong), ("level", c_int), ("more", c_int), ("time", c_ulong), ("area", _Rectangle),
                ("geometry", _Rectangle)]


class _Event(ctypes.Union):
    _fields_ = [("type", c_int), ("damage", _DamageEvent), ("padding", c_long * 24)]


_ERROR_HANDLER = ctypes.CFUNCTYPE(c_int, c_void_p, c_void_p)
_ignore_errors = _ERROR_HANDLER(lambda display, error: 0)


class Screen:
    """Connects to the display of that name. Rectangles are (x, y, width, height) within a window."""

    def __init__(self, name):
        self._x = ctypes.CDLL("libX11.so.6")
        self._test = ctypes.CDLL("libXtst.so.6")
        self._damage = ctypes.CDLL("libXdamage.so.1")
        self._x.XOpenDisplay.restype = c_void_p
        self._x.XGetImage.restype = POINTER(_Image)
        for name_of_call in ("XDefaultRootWindow", "XInternAtom", "XStringToKeysym"):
            getattr(self._x, name_of_call).restype = c_ulong
        self._x.XKeysymToKeycode.restype = c_ubyte
        self._damage.XDamageCreate.restype = c_ulong
        self._x.XSetErrorHandler(_ignore_errors)
        display = self._x.XOpenDisplay(name.encode())
        if not display:
            raise RuntimeError(f"no display {name}")
        self._display = c_void_p(display)
        self._root = self._x.XDefaultRootWindow(self._display)
        first, error = c_int(), c_int()
        if not self._damage.XDamageQueryExtension(self._display, byref(first), byref(error)):
            raise RuntimeError("the display does not report what is drawn")
        self._damage_type = first.value
        self._x.XSelectInput(self._display, c_ulong(self._root), c_long(_PROPERTY_CHANGE))
        self._watched = None
        self._keycodes = {}

    # Windows

    def windows(self):
        """The windows that the window manager has, oldest first."""
        return self._numbers(self._root, "_NET_CLIENT_LIST")

    def active_window(self):
        return (self._numbers(self._root, "_NET_ACTIVE_WINDOW") or [None])[0]

    def process_of(self, window):
        """The process that a window belongs to, or None if it does not say so."""
        return (self._numbers(window, "_NET_WM_PID") or [None])[0]

    def resize(self, window, width, height):
        self._x.XResizeWindow(self._display, c_ulong(window), c_uint(width), c_uint(height))
        self._x.XSync(self._display, 0)

    def size(self, window):
        root, x, y, width, height, border, depth = c_ulong(), c_int(), c_int(), c_uint(), c_uint(), c_uint(), c_uint()
        self._x.XGetGeometry(self._display, c_ulong(window), *map(byref, (root, x, y, width, height, border, depth)))
        return width.value, height.value

    def _numbers(self, window, property_name):
        atom = self._x.XInternAtom(self._display, property_name.encode(), 0)
        kind, form, count, rest, data = c_ulong(), c_int(), c_ulong(), c_ulong(), POINTER(c_ulong)()
        failed = self._x.XGetWindowProperty(
            self._display, c_ulong(window), c_ulong(atom), c_long(0), c_long(1024), 0, c_ulong(0),
            *map(byref, (kind, form, count, rest, data)))
        if failed or not data:
            return []
        numbers = data[:count.value]
        self._x.XFree(data)
        return numbers

    # Drawing

    def watch(self, window):
        """From now on, `drawn` tells what is drawn in that window only."""
        self._watched = self._damage.XDamageCreate(self._display, c_ulong(window), _RAW_RECTANGLES)
        self._x.XSync(self._display, 0)

    def drawn(self, seconds):
        """Waits at most that long for an event; returns the rectangles that were drawn, if any."""
        if not self._x.XPending(self._display):
            select.select([self._x.XConnectionNumber(self._display)], [], [], max(0, seconds))
        areas = []
        event = _Event()
        while self._x.XPending(self._display):
            self._x.XNextEvent(self._display, byref(event))
            if event.type == self._damage_type and event.damage.damage == self._watched:
                area = event.damage.area
                areas.append((area.x, area.y, area.width, area.height))
        return areas

    def rest(self, seconds, patience):
        """Waits until nothing has been drawn for that long; returns the time of the last drawing (or of
        the call), None if drawing does not end in `patience` seconds."""
        last = time.monotonic()
        limit = last + patience
        while (now := time.monotonic()) - last < seconds:
            if now > limit:
                return None
            if self.drawn(last + seconds - now):
                last = time.monotonic()
        return last

    def pixels(self, window, rectangle):
        """The lines of pixels in that rectangle, as bytes; empty if it is not in the window."""
        width, height = self.size(window)
        x, y = max(0, rectangle[0]), max(0, rectangle[1])
        right, bottom = min(width, rectangle[0] + rectangle[2]), min(height, rectangle[1] + rectangle[3])
        if x >= right or y >= bottom:
            return []
        image = self._x.XGetImage(self._display, c_ulong(window), x, y, c_uint(right - x), c_uint(bottom - y),
                                  c_ulong(_ALL_PLANES), _Z_PIXMAP)
        if not image:
            return []
        line = image.contents.bytes_per_line
        data = ctypes.string_at(image.contents.data, line * (bottom - y))
        self._x.XDestroyImage(image)
        return [data[start:start + (right - x) * _PIXEL] for start in range(0, len(data), line)]

    # Keys

    def press(self, *names):
        """Presses the keys of those names together in the focused window; returns the time of the press."""
        codes = [self._keycode(name) for name in names]
        start = time.monotonic()
        for code in codes:
            self._test.XTestFakeKeyEvent(self._display, code, 1, c_ulong(0))
        for code in reversed(codes):
            self._test.XTestFakeKeyEvent(self._display, code, 0, c_ulong(0))
        self._x.XFlush(self._display)
        return start

    def _keycode(self, name):
        if name not in self._keycodes:
            symbol = self._x.XStringToKeysym(c_char_p(name.encode()))
            self._keycodes[name] = self._x.XKeysymToKeycode(self._display, c_ulong(symbol))
        return self._keycodes[name]
