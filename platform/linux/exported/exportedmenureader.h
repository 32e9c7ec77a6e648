#pragma once

#include "platform/linux/exported/exportedmenunode.h"
#include "platform/linux/windows/windowdirectory.h"
#include "platform/menutree.h"

#include <QDBusConnection>

// Menu bars that applications export on the session bus rather than show in
// their windows: GTK's menu models (org.gtk.Menus, pressed through
// org.gtk.Actions) and dbusmenu (registered with com.canonical.AppMenu.Registrar
// where a global menu runs). Every call waits on another application, with a
// time-out: never on the UI thread.
class ExportedMenuReader {
public:
    explicit ExportedMenuReader(QDBusConnection session = QDBusConnection::sessionBus());

    // The exported menu bar of the process's `window`, or nothing. Where the
    // display does not tell where GTK exports it, it is looked for among the
    // process's names on the bus.
    std::optional<MenuTree> read(qint32 pid, const std::optional<DesktopWindow>& window);

    // Presses an exported command; false when the application refused it.
    // Waits briefly for an error: a command that opens a modal dialog answers
    // only when the dialog closes.
    bool press(const ExportedPress& press, int replyMs);

    // The tree for exported entries: menus for submenus, items for commands;
    // a top-level command with no menu of its own is left out. Nothing when
    // no menu is left.
    static std::optional<MenuTree> makeMenuBar(const QList<ExportedMenuNode>& entries, bool complete);

    // The object path GTK derives from an application id ("org.gnome.TextEditor"
    // → "/org/gnome/TextEditor"), or empty for a name that is not one.
    static QString gtkApplicationPath(const QString& applicationId);
    // The names of an introspection reply's child nodes.
    static QStringList childNodes(const QString& introspection);

private:
    std::optional<QList<ExportedMenuNode>> readGtk(qint32 pid, GtkExports gtk, bool searchNames, bool& complete);
    std::optional<QList<ExportedMenuNode>> readDbusmenu(quint64 window, bool& complete);
    // Names on the bus owned by the process, well-known ones only.
    QStringList namesOfProcess(qint32 pid);
    QDBusMessage call(const QString& service, const QString& path, const QString& interface, const QString& method,
                      const QVariantList& arguments = {});

    QDBusConnection session_;
};
