#!/usr/bin/python3
# A GTK 3 application as desktops with a global menu run it: its menu bar is
# exported on the session bus (org.gtk.Menus) and not drawn in the window,
# whose header bar holds a menu button. Every command it runs shows in the
# window's title ("ran: save-as"), where a test can see it. With --drawn the
# window draws the same menu bar, as desktops without a global menu show it.
# "Print" shows its shortcut only in its label, after a tab.
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import Gio, GLib, Gtk

MENUS = """
<interface>
  <menu id="menubar">
    <submenu>
      <attribute name="label">_File</attribute>
      <section>
        <item><attribute name="label">_New Note</attribute><attribute name="action">win.new-note</attribute><attribute name="accel">&lt;Primary&gt;n</attribute></item>
        <item><attribute name="label">Save _As…</attribute><attribute name="action">win.save-as</attribute><attribute name="accel">&lt;Primary&gt;&lt;Shift&gt;s</attribute></item>
        <item><attribute name="label">_Print&#9;Ctrl+P</attribute><attribute name="action">win.print</attribute></item>
        <submenu><attribute name="label">Open _Recent</attribute></submenu>
      </section>
      <section>
        <item><attribute name="label">_Quit</attribute><attribute name="action">app.quit</attribute><attribute name="accel">&lt;Primary&gt;q</attribute></item>
      </section>
    </submenu>
    <submenu>
      <attribute name="label">_Edit</attribute>
      <item><attribute name="label">_Undo</attribute><attribute name="action">win.undo</attribute><attribute name="accel">&lt;Primary&gt;z</attribute></item>
      <submenu>
        <attribute name="label">_Wrap</attribute>
        <item><attribute name="label">_Words</attribute><attribute name="action">win.wrap</attribute><attribute name="target">words</attribute></item>
        <item><attribute name="label">_Characters</attribute><attribute name="action">win.wrap</attribute><attribute name="target">chars</attribute></item>
      </submenu>
    </submenu>
    <submenu>
      <attribute name="label">_Help</attribute>
      <item><attribute name="label">_About Notes</attribute><attribute name="action">app.about</attribute></item>
    </submenu>
  </menu>
  <menu id="main-menu">
    <item><attribute name="label">New _Window</attribute><attribute name="action">app.new-window</attribute></item>
    <item><attribute name="label">_Preferences</attribute><attribute name="action">app.preferences</attribute></item>
  </menu>
</interface>
"""


class Notes(Gtk.Application):
    def __init__(self):
        super().__init__(application_id="org.kestrio.GtkNotes", flags=Gio.ApplicationFlags.NON_UNIQUE)
        self.window = None

    def ran(self, name):
        self.window.set_title("ran: " + name)

    def add(self, group, name, parameter=None, enabled=True):
        action = Gio.SimpleAction.new(name, GLib.VariantType.new(parameter) if parameter else None)
        action.set_enabled(enabled)
        action.connect("activate", lambda _a, p: self.ran(name + (":" + p.get_string() if p else "")))
        group.add_action(action)

    def do_startup(self):
        Gtk.Application.do_startup(self)
        builder = Gtk.Builder.new_from_string(MENUS, -1)
        self.set_menubar(builder.get_object("menubar"))
        self.main_menu = builder.get_object("main-menu")
        for name in ("quit", "about", "new-window", "preferences"):
            self.add(self, name)

    def do_activate(self):
        window = Gtk.ApplicationWindow(application=self, show_menubar="--drawn" in sys.argv, title="Notes")
        self.window = window
        for name in ("new-note", "save-as", "print"):
            self.add(window, name)
        self.add(window, "undo", enabled=False)
        self.add(window, "wrap", "s")
        header = Gtk.HeaderBar(show_close_button=True, title="Notes")
        button = Gtk.MenuButton()
        button.set_menu_model(self.main_menu)
        header.pack_end(button)
        window.set_titlebar(header)
        window.add(Gtk.TextView())
        window.set_default_size(500, 300)
        window.show_all()


GLib.set_prgname("gtknotes")
Notes().run([])
