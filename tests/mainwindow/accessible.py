#!/usr/bin/env python3
"""What a screen reader is told of the window program: accessible.py PROGRAM FILE...

Talks to the accessibility bus of the session, as a screen reader does. Every control that takes the
keys must have a name, the commands of the window must be there, and a run must tell how far it is.
"""
import subprocess
import sys
import time

from gi.repository import Gio, GLib

ACCESSIBLE = "org.a11y.atspi.Accessible"
ROOT = ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
FOCUSABLE, SHOWING = 11, 25
INNER = ("list", "list item", "table cell", "table column header")  # of a control with a name
COMMANDS = (
    "Add Files...", "Add Folder...", "Include sub-folders", "Import List...", "Export List", "Settings",
    "Remove", "Open File", "Show in Folder", "File Information", "Select All", "Deselect All", "Move Up",
    "Move Down", "Remove Highlighted Files", "Remove All Files", "Find", "Files", "Cancel", "Convert Files",
    "JPEG quality", "Separator:", "Presets", "Restore Defaults")


def accessibility_bus():
    session = Gio.bus_get_sync(Gio.BusType.SESSION)
    reply = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                              0, 10000, None)
    kind = Gio.DBusConnectionFlags
    return Gio.DBusConnection.new_for_address_sync(
        reply.unpack()[0], kind.AUTHENTICATION_CLIENT | kind.MESSAGE_BUS_CONNECTION, None, None)


class Reader:
    def __init__(self):
        self.bus = accessibility_bus()

    def call(self, node, interface, method, arguments=None):
        return self.bus.call_sync(*node, interface, method, arguments, None, 0, 20000, None).unpack()[0]

    def name(self, node):
        return self.call(node, "org.freedesktop.DBus.Properties", "Get",
                         GLib.Variant("(ss)", (ACCESSIBLE, "Name")))

    def has(self, node, state):
        low, high = self.call(node, ACCESSIBLE, "GetState")
        return bool((low | high << 32) >> state & 1)

    def walk(self, node=ROOT):
        """Yields all that is below `node`, with its role; not the cells of tables."""
        for child in self.call(node, ACCESSIBLE, "GetChildren"):
            role = self.call(child, ACCESSIBLE, "GetRoleName")
            yield child, role
            if role != "table":
                yield from self.walk(child)

    def find(self, role, name):
        try:
            return next((node for node, found in self.walk()
                         if found == role and self.name(node) == name and self.has(node, SHOWING)), None)
        except GLib.Error:
            return None  # something went while it was looked at

    def wait_for(self, role, name):
        for _ in range(100):
            node = self.find(role, name)
            if node is not None:
                return node
            time.sleep(0.1)
        sys.exit(f"accessible: there is no {role} '{name}'")

    def press(self, name):
        self.call(self.wait_for("push button", name), "org.a11y.atspi.Action", "DoAction",
                  GLib.Variant("(i)", (0,)))


def check_names(reader):
    names, nameless, count = set(), [], 0
    for node, role in reader.walk():
        if role in INNER or not reader.has(node, FOCUSABLE) or not reader.has(node, SHOWING):
            continue
        count += 1
        name = reader.name(node)
        names.add(name)
        if not name:
            nameless.append(role)
    missing = [name for name in COMMANDS if name not in names]
    print(f"{count} controls take the keys, {count - len(nameless)} have names")
    if nameless or missing:
        sys.exit(f"accessible: without a name: {nameless}; not reached: {missing}")
    if "Pagestack" not in map(reader.name, reader.call(ROOT, ACCESSIBLE, "GetChildren")):
        sys.exit("accessible: the program itself is told by another name")


def check_run(reader):
    """The texts of the sheet's labels, as they change."""
    reader.press("Convert Files")
    reader.press("Yes")
    reader.wait_for("dialog", "Converting")
    told = set()
    labels = [node for node, role in reader.walk() if role == "label"]
    for _ in range(600):
        told |= {name for name in map(reader.name, labels) if name.startswith(("Images:", "File:", "Time:"))}
        if reader.find("dialog", "Finished") is not None:
            break
    kinds = {kind: sum(text.startswith(kind) for text in told) for kind in ("Images:", "File:", "Time:")}
    print("told during the run:", kinds)
    if min(kinds.values()) < 2:
        sys.exit(f"accessible: the run does not tell how far it is: {sorted(told)[:20]}")
    if not any("converted successfully" in reader.name(node) for node in labels):
        sys.exit("accessible: the end of the run is not told")


def main():
    window = subprocess.Popen(sys.argv[1:])
    try:
        reader = Reader()
        reader.wait_for("push button", "Convert Files")
        check_names(reader)
        check_run(reader)
    finally:
        window.kill()


main()
