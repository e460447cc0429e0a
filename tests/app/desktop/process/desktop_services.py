"""The services of a desktop that the program asks, on the test's own bus; they note what they are asked."""

import os
import select
import threading
from collections import namedtuple

from gi.repository import Gio, GLib

Notification = namedtuple("Notification", "application icon entry title body")
Inhibitor = namedtuple("Inhibitor", "service who why number")

INTERFACES = """
<node>
  <interface name="org.freedesktop.Notifications">
    <method name="GetCapabilities"><arg type="as" direction="out"/></method>
    <method name="Notify">
      <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
      <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
      <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/>
      <arg type="u" direction="out"/>
    </method>
  </interface>
  <interface name="org.freedesktop.ScreenSaver">
    <method name="Inhibit">
      <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="u" direction="out"/>
    </method>
    <method name="UnInhibit"><arg type="u" direction="in"/></method>
  </interface>
  <interface name="org.gnome.SessionManager">
    <method name="Inhibit">
      <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
      <arg type="u" direction="in"/><arg type="u" direction="out"/>
    </method>
    <method name="Uninhibit"><arg type="u" direction="in"/></method>
  </interface>
  <interface name="org.freedesktop.login1.Manager">
    <method name="Inhibit">
      <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
      <arg type="s" direction="in"/><arg type="h" direction="out"/>
    </method>
  </interface>
  <interface name="org.a11y.Bus">
    <method name="GetAddress"><arg type="s" direction="out"/></method>
  </interface>
  <interface name="org.a11y.atspi.Registry">
    <method name="GetRegisteredEvents"><arg type="a(ss)" direction="out"/></method>
  </interface>
  <interface name="org.a11y.atspi.Socket">
    <method name="Embed"><arg type="(so)" direction="in"/><arg type="(so)" direction="out"/></method>
  </interface>
</node>
"""

NAMES = (
    "org.freedesktop.Notifications",
    "org.freedesktop.ScreenSaver",
    "org.gnome.SessionManager",
    "org.freedesktop.login1",
    "org.a11y.atspi.Registry",
    "org.a11y.Bus",
)

PATHS = {
    "org.freedesktop.Notifications": "/org/freedesktop/Notifications",
    "org.freedesktop.ScreenSaver": "/org/freedesktop/ScreenSaver",
    "org.gnome.SessionManager": "/org/gnome/SessionManager",
    "org.freedesktop.login1.Manager": "/org/freedesktop/login1",
    "org.a11y.Bus": "/org/a11y/bus",
    "org.a11y.atspi.Registry": "/org/a11y/atspi/registry",
    "org.a11y.atspi.Socket": "/org/a11y/atspi/accessible/root",
}


def connect():
    """A connection to the session bus that nobody else in this process uses."""
    flags = Gio.DBusConnectionFlags
    return Gio.DBusConnection.new_for_address_sync(
        os.environ["DBUS_SESSION_BUS_ADDRESS"],
        flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION,
        None,
        None,
    )


class DesktopServices:
    """Notification service, three inhibitor services and the registry of accessible programs."""

    def __init__(self):
        self.notifications = []
        self.inhibitors = []  # all that were ever taken
        self.accessible_programs = []  # bus names of programs that can be looked into
        self._released = []
        self._locks = {}  # number of the inhibitor: our end of the pipe whose other end was given
        self._connection = connect()
        for interface in Gio.DBusNodeInfo.new_for_xml(INTERFACES).interfaces:
            self._connection.register_object(PATHS[interface.name], interface, self._answer)
        self._loop = GLib.MainLoop()
        threading.Thread(target=self._loop.run, daemon=True).start()
        for name in NAMES:
            self._connection.call_sync(
                "org.freedesktop.DBus",
                "/org/freedesktop/DBus",
                "org.freedesktop.DBus",
                "RequestName",
                GLib.Variant("(su)", (name, 0)),
                None,
                Gio.DBusCallFlags.NONE,
                -1,
                None,
            )

    def held_inhibitors(self):
        """Those that were taken and not given back."""
        return [taken for taken in self.inhibitors if not self._is_released(taken)]

    def _is_released(self, inhibitor):
        if inhibitor.number in self._locks:
            # The other end is closed: there is something to read, which is the end.
            return bool(select.select([self._locks[inhibitor.number]], [], [], 0)[0])
        return inhibitor.number in self._released

    def _answer(self, _connection, _sender, _path, interface, method, arguments, invocation):
        answer = getattr(self, "_" + interface.replace(".", "_") + "_" + method)
        try:
            answer(invocation, *arguments)
        except Exception as error:  # whoever called would wait for ever
            invocation.return_dbus_error("org.freedesktop.DBus.Error.Failed", repr(error))
            raise

    def _org_freedesktop_Notifications_GetCapabilities(self, invocation):
        invocation.return_value(GLib.Variant("(as)", (["body"],)))

    def _org_freedesktop_Notifications_Notify(
        self, invocation, application, _replaces, icon, title, body, _actions, hints, _expiry
    ):
        entry = hints.get("desktop-entry", "")
        self.notifications.append(Notification(application, icon, entry, title, body))
        invocation.return_value(GLib.Variant("(u)", (len(self.notifications),)))

    def _take(self, service, who, why):
        inhibitor = Inhibitor(service, who, why, len(self.inhibitors) + 1)
        self.inhibitors.append(inhibitor)
        return inhibitor

    def _give_number(self, invocation, inhibitor):
        invocation.return_value(GLib.Variant("(u)", (inhibitor.number,)))

    def _release(self, invocation, number):
        self._released.append(number)
        invocation.return_value(None)

    def _org_freedesktop_ScreenSaver_Inhibit(self, invocation, who, why):
        self._give_number(invocation, self._take("screen saver", who, why))

    def _org_freedesktop_ScreenSaver_UnInhibit(self, invocation, number):
        self._release(invocation, number)

    def _org_gnome_SessionManager_Inhibit(self, invocation, who, _window, why, _what):
        self._give_number(invocation, self._take("session", who, why))

    def _org_gnome_SessionManager_Uninhibit(self, invocation, number):
        self._release(invocation, number)

    def _org_freedesktop_login1_Manager_Inhibit(self, invocation, what, who, why, mode):
        if (what, mode) != ("idle", "block"):
            raise ValueError(f"{what} {mode}")
        ours, given = os.pipe()
        descriptors = Gio.UnixFDList.new_from_array([given])
        self._locks[self._take("login", who, why).number] = ours
        invocation.return_value_with_unix_fd_list(GLib.Variant("(h)", (0,)), descriptors)

    def _org_a11y_Bus_GetAddress(self, invocation):
        invocation.return_value(GLib.Variant("(s)", (os.environ["DBUS_SESSION_BUS_ADDRESS"],)))

    def _org_a11y_atspi_Registry_GetRegisteredEvents(self, invocation):
        invocation.return_value(GLib.Variant("(a(ss))", ([],)))

    def _org_a11y_atspi_Socket_Embed(self, invocation, program):
        self.accessible_programs.append(program[0])
        desktop = (self._connection.get_unique_name(), PATHS["org.a11y.atspi.Socket"])
        invocation.return_value(GLib.Variant("((so))", (desktop,)))

    def close(self):
        self._loop.quit()
        self._connection.close_sync(None)
        for descriptor in self._locks.values():
            os.close(descriptor)
