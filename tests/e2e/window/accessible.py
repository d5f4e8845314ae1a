"""The window as assistive tools see it: its controls by name, with captions, texts and states.

Everything comes from the program itself, over the bus for assistive tools of the test's own desktop. A program that is
busy answers when it handles its events again.
"""

from gi.repository import Gio, GLib

REGISTRY = "org.a11y.atspi.Registry"
ROOT = "/org/a11y/atspi/accessible/root"
ACCESSIBLE = "org.a11y.atspi.Accessible"
TEXT = "org.a11y.atspi.Text"
COMPONENT = "org.a11y.atspi.Component"
PROPERTIES = "org.freedesktop.DBus.Properties"

CHECKED, FOCUSED, MIXED = 4, 12, 32

ON_SCREEN = 0


class Gone(Exception):
    """The program or the control is no longer there."""


def connect(address):
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)


class Bus:
    """The bus for assistive tools, which the session's bus starts when it is asked for."""

    def __init__(self, session_bus, deadline):
        self.deadline = deadline
        self.connection = connect(session_bus)
        self.connection = connect(self.call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress"))

    def call(self, peer, path, interface, method, signature=None, *arguments):
        parameters = GLib.Variant(signature, arguments) if signature else None
        try:
            answer = self.connection.call_sync(peer, path, interface, method, parameters, None,
                                               Gio.DBusCallFlags.NONE, self.deadline * 1000, None).unpack()
        except GLib.Error as error:
            raise Gone(f"{path} {method}: {error.message}") from None
        return answer[0] if answer else None

    def programs(self):
        return [Control(self, *child) for child in self.call(REGISTRY, ROOT, ACCESSIBLE, "GetChildren")]


class Control:
    def __init__(self, bus, peer, path):
        self.bus = bus
        self.peer = peer
        self.path = path

    def call(self, interface, method, signature=None, *arguments):
        return self.bus.call(self.peer, self.path, interface, method, signature, *arguments)

    def property(self, name):
        return self.call(PROPERTIES, "Get", "(ss)", ACCESSIBLE, name)

    def name(self):
        return self.property("Name")

    def description(self):
        return self.property("Description")

    def role(self):
        return self.call(ACCESSIBLE, "GetRoleName")

    def children(self):
        return [Control(self.bus, *child) for child in self.call(ACCESSIBLE, "GetChildren")]

    def descendants(self):
        """All below it, but not the lines of lists."""
        for child in self.children():
            yield child
            if child.role() not in ("list", "tree", "table"):
                yield from child.descendants()

    def text(self):
        return self.call(TEXT, "GetText", "(ii)", 0, -1)

    def has(self, state):
        low, high = self.call(ACCESSIBLE, "GetState")
        return bool((low | high << 32) >> state & 1)

    def place(self):
        """Left, top, width and height on the screen."""
        return self.call(COMPONENT, "GetExtents", "(u)", ON_SCREEN)
