#!/usr/bin/python3
# What a test sees of a GNOME Shell or KWin session, which tell other programs
# nothing of their windows: the accessibility bus says which window is active
# and what a window shows.
#   desktoplook.py windows            the top-level windows, as JSON lines
#   desktoplook.py texts PID          what PID's windows show (labels, rows, buttons), a line each
#   desktoplook.py press PID NAME     presses PID's push button NAME, as a click would
#   desktoplook.py screenshot FILE    the whole screen, through GNOME Shell (GNOME only)
import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

SHOWN_ROLES = {"label", "list item", "push button", "text", "entry", "table cell", "check box", "radio button"}


def applications():
    # An application that does not answer costs a moment, not the test's patience.
    Atspi.set_timeout(3000, 3000)
    desktop = Atspi.get_desktop(0)
    for i in range(desktop.get_child_count()):
        application = desktop.get_child_at_index(i)
        if application is not None:
            yield application


def windows():
    for application in applications():
        try:
            pid = application.get_process_id()
            for i in range(application.get_child_count()):
                window = application.get_child_at_index(i)
                states = window.get_state_set()
                print(json.dumps({"pid": pid, "app": application.get_name(), "role": window.get_role_name(),
                                  "name": window.get_name(),
                                  "active": states.contains(Atspi.StateType.ACTIVE),
                                  "showing": states.contains(Atspi.StateType.SHOWING)}))
        except Exception:  # an application that left while it was asked
            continue


def walk(node, depth, visit):
    if node is None or depth > 25:
        return
    try:
        visit(node)
        for i in range(min(node.get_child_count(), 500)):
            walk(node.get_child_at_index(i), depth + 1, visit)
    except Exception:
        pass


def of_process(pid):
    return [a for a in applications() if a.get_process_id() == pid]


def texts(pid):
    def visit(node):
        if node.get_role_name() in SHOWN_ROLES and node.get_state_set().contains(Atspi.StateType.SHOWING):
            name = node.get_name()
            if not name and node.get_role_name() in ("text", "entry"):
                name = Atspi.Text.get_text(node, 0, Atspi.Text.get_character_count(node))
            if name:
                print(name)
    for application in of_process(pid):
        walk(application, 0, visit)


def press(pid, name):
    found = []

    def visit(node):
        if not found and node.get_role_name() == "push button" and node.get_name() == name \
                and node.get_state_set().contains(Atspi.StateType.SHOWING):
            found.append(node)
    for application in of_process(pid):
        walk(application, 0, visit)
    if not found:
        return 1
    return 0 if Atspi.Action.do_action(found[0], 0) else 2


def screenshot(path):
    # GNOME Shell takes screenshots only for the programs it trusts, known by
    # the bus names they own; the test's camera owns the screenshot tool's.
    from gi.repository import Gio, GLib
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                  GLib.Variant("(su)", ("org.gnome.Screenshot", 4)), None, 0, 5000, None)
    ok, _ = bus.call_sync("org.gnome.Shell", "/org/gnome/Shell/Screenshot", "org.gnome.Shell.Screenshot",
                          "Screenshot", GLib.Variant("(bbs)", (False, False, path)), GLib.VariantType("(bs)"),
                          0, 10000, None).unpack()
    return 0 if ok else 1


if __name__ == "__main__":
    command = sys.argv[1:]
    if command == ["windows"]:
        windows()
    elif len(command) == 2 and command[0] == "texts":
        texts(int(command[1]))
    elif len(command) == 3 and command[0] == "press":
        sys.exit(press(int(command[1]), command[2]))
    elif len(command) == 2 and command[0] == "screenshot":
        sys.exit(screenshot(command[1]))
    else:
        print("usage: desktoplook.py windows | texts PID | press PID NAME | screenshot FILE", file=sys.stderr)
        sys.exit(2)
