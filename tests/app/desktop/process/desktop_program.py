"""The desktop program as a person meets it: what assistive technology reads, keys and clicks."""

import ctypes
import re
import subprocess

from gi.repository import Gio, GLib

import desktop_services
from private_session import wait_until

ACCESSIBLE = "org.a11y.atspi.Accessible"
ROOT = "/org/a11y/atspi/accessible/root"
CHECKED, ENABLED, SHOWING = 4, 8, 25  # AtspiStateType
ON_SCREEN = 0  # AtspiCoordType


class Element:
    """Something in a window, as assistive technology sees it."""

    def __init__(self, bus, owner, path):
        self._bus, self._owner, self._path = bus, owner, path

    def _call(self, interface, method, arguments=None):
        answer = self._bus.call_sync(
            self._owner, self._path, interface, method, arguments, None, Gio.DBusCallFlags.NONE, -1, None
        )
        return answer.unpack()[0]

    def _property(self, name):
        get = GLib.Variant("(ss)", (ACCESSIBLE, name))
        return self._call("org.freedesktop.DBus.Properties", "Get", get)

    @property
    def name(self):
        return self._property("Name")

    @property
    def description(self):
        return self._property("Description")

    @property
    def role(self):
        return self._call(ACCESSIBLE, "GetRoleName")

    @property
    def children(self):
        return [Element(self._bus, *child) for child in self._call(ACCESSIBLE, "GetChildren")]

    def _is(self, state):
        return bool(self._call(ACCESSIBLE, "GetState")[0] & 1 << state)

    @property
    def is_checked(self):
        return self._is(CHECKED)

    @property
    def is_enabled(self):
        return self._is(ENABLED)

    @property
    def is_showing(self):
        return self._is(SHOWING)

    @property
    def middle(self):
        arguments = GLib.Variant("(u)", (ON_SCREEN,))
        x, y, width, height = self._call("org.a11y.atspi.Component", "GetExtents", arguments)
        return x + width // 2, y + height // 2

    def everything(self):
        """What is in it at any depth. What goes away meanwhile is left out."""
        for child in self._children_still_there():
            yield child
            yield from child.everything()

    def _children_still_there(self):
        try:
            return self.children
        except GLib.Error:
            return []

    def find(self, role, **properties):
        """The first one inside of that role whose properties are these; none where there is none."""
        for element in self.everything():
            try:
                if element.role == role and all(
                    getattr(element, name) == value for name, value in properties.items()
                ):
                    return element
            except GLib.Error:
                continue  # gone meanwhile
        return None

    def texts(self):
        return [element.name for element in self.everything() if element.role == "label"]


class DesktopProgram:
    """A running program with its windows, driven by real key presses and mouse clicks."""

    def __init__(self, command, environment, services):
        self._environment = environment
        known = services.accessible_programs
        before = len(known)
        self._process = subprocess.Popen(command, env=environment)
        self._bus = desktop_services.connect()
        wait_until(
            lambda: len(known) > before or self._process.poll() is not None,
            "a program with windows",
        )
        if len(known) == before:
            raise AssertionError(f"it ended with {self._process.returncode}")
        self._root = Element(self._bus, known[-1], ROOT)

    def window(self, title):
        """The window of that title, once it is there."""
        return wait_until(lambda: self.window_now(title), f"window {title}")

    def window_now(self, title):
        """The window of that title; none where there is none to be seen now."""
        try:
            windows = [window for window in self._root.children if window.is_showing]
            return next((window for window in windows if window.name == title), None)
        except GLib.Error:
            return None  # it went away while it was looked at

    def window_beginning(self, text):
        """The window whose title begins so; none where there is none to be seen now."""
        try:
            windows = [window for window in self._root.children if window.is_showing]
            return next((window for window in windows if window.name.startswith(text)), None)
        except GLib.Error:
            return None

    def dialog_with(self, text):
        """The window that says this, once it is there."""

        def now():
            try:
                windows = [window for window in self._root.children if window.is_showing]
                return next((window for window in windows if text in window.texts()), None)
            except GLib.Error:
                return None

        return wait_until(now, f"a dialog that says {text}")

    def click(self, element):
        x, y = element.middle
        self._xdotool("mousemove", "--sync", str(x), str(y), "click", "1")

    def press(self, title, *keys):
        """Types the keys, xdotool's names of them, into the window of that title."""
        number = self._number(title)
        self._xdotool("windowraise", number, "windowfocus", "--sync", number)
        self._xdotool("key", *keys)

    def close_window(self, title):
        """What the closing button of a window's frame does."""
        ask_to_close(self._environment["DISPLAY"], int(self._number(title)))

    def send_signal(self, number):
        self._process.send_signal(number)

    def exit_status(self):
        """Waits for the end; a signal that ended it is a negative number."""
        wait_until(lambda: self._process.poll() is not None, "the end of the program")
        return self._process.returncode

    def close(self):
        if self._process.poll() is None:
            self._process.kill()
            self._process.wait()
        self._bus.close_sync(None)

    def _number(self, title):
        """The X server's number of a window."""
        search = ["xdotool", "search", "--onlyvisible", "--name", f"^{re.escape(title)}$"]
        found = subprocess.run(
            search, env=self._environment, stdout=subprocess.PIPE, text=True, check=True
        )
        return found.stdout.split()[0]

    def _xdotool(self, *arguments):
        subprocess.run(["xdotool", *arguments], env=self._environment, check=True)


class ClientMessage(ctypes.Structure):
    _fields_ = [
        ("type", ctypes.c_int),
        ("serial", ctypes.c_ulong),
        ("send_event", ctypes.c_int),
        ("display", ctypes.c_void_p),
        ("window", ctypes.c_ulong),
        ("message_type", ctypes.c_ulong),
        ("format", ctypes.c_int),
        ("data", ctypes.c_long * 5),
        ("padding", ctypes.c_long * 24),  # an XEvent is larger than each of its kinds
    ]


def ask_to_close(display_name, window):
    """Sends WM_DELETE_WINDOW, as window managers do; there is none here."""
    client_message = 33
    x = ctypes.CDLL("libX11.so.6")
    x.XOpenDisplay.restype = ctypes.c_void_p
    x.XInternAtom.restype = ctypes.c_ulong
    display = ctypes.c_void_p(x.XOpenDisplay(display_name.encode()))
    protocols = x.XInternAtom(display, b"WM_PROTOCOLS", 0)
    delete = x.XInternAtom(display, b"WM_DELETE_WINDOW", 0)
    event = ClientMessage(client_message, 0, 1, None, window, protocols, 32, (delete, 0))
    x.XSendEvent(display, ctypes.c_ulong(window), 0, ctypes.c_long(0), ctypes.byref(event))
    x.XCloseDisplay(display)
