#!/usr/bin/env python3
"""Runs a command and listens meanwhile to what programs tell screen readers: listening.py COMMAND...

Prints the number of signals to standard error when the command has ended.
"""
import subprocess
import sys

from gi.repository import Gio, GLib

EVENTS = ("object:", "window:", "focus:")


def accessibility_bus():
    session = Gio.bus_get_sync(Gio.BusType.SESSION)
    address = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                                0, 10000, None).unpack()[0]
    kind = Gio.DBusConnectionFlags
    return Gio.DBusConnection.new_for_address_sync(
        address, kind.AUTHENTICATION_CLIENT | kind.MESSAGE_BUS_CONNECTION, None, None)


def main():
    bus = accessibility_bus()
    count = [0]

    def heard(*_):
        count[0] += 1

    bus.signal_subscribe(None, None, None, None, None, Gio.DBusSignalFlags.NONE, heard)
    for event in EVENTS:
        bus.call_sync("org.a11y.atspi.Registry", "/org/a11y/atspi/registry", "org.a11y.atspi.Registry",
                      "RegisterEvent", GLib.Variant("(sass)", (event, [], "")), None, 0, 10000, None)
    loop = GLib.MainLoop()
    program = subprocess.Popen(sys.argv[1:])
    GLib.child_watch_add(GLib.PRIORITY_DEFAULT, program.pid, lambda _, status: loop.quit())
    loop.run()
    print(f"{count[0]} signals heard", file=sys.stderr)
    return 0


if __name__ == "__main__":
    sys.exit(main())
