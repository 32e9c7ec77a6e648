#pragma once

#include "platform/linux/xkb/desktopkeys.h"

#include <QString>
#include <QStringList>

#include <optional>

// GNOME's keyboard shortcuts as its settings hold them, and Kestrio's own
// entry among the custom ones: what is read, written and compared. Pure
// text work over what `gsettings` prints; the program runs it.
namespace GnomeKeybindings {

// The list of custom shortcuts, and the schema each of them is an instance of.
inline constexpr char kMediaKeysSchema[] = "org.gnome.settings-daemon.plugins.media-keys";
inline constexpr char kCustomListKey[] = "custom-keybindings";
inline constexpr char kCustomSchema[] = "org.gnome.settings-daemon.plugins.media-keys.custom-keybinding";
// Kestrio's entry: the one path it ever writes or removes.
inline constexpr char kOwnPath[] = "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/kestrio/";

// Schemas whose keys hold GNOME's own shortcuts (the shell, the window
// manager, the settings daemon): a shortcut one of them holds is taken.
const QStringList& bindingSchemas();

// The keys as GNOME writes them: "<Control><Alt>space".
QString acceleratorOf(const DesktopKeys& keys);
// A form two accelerators that mean the same keys share ("<Primary><Alt>Space"
// and "<Alt><Control>space"); empty for what is no accelerator.
QString canonical(const QString& accelerator);
// An accelerator as people read it: "Ctrl+Alt+Space".
QString readable(const QString& accelerator);

// The texts of a value as gsettings prints it: 'x', ['a', 'b'], @as [].
// Nothing when it is not a text or a list of texts.
std::optional<QStringList> texts(const QString& printed);
// A list of texts, or one text, as gsettings takes it: quoted, since it
// reads what it is given as a value of GVariant's text format.
QString printed(const QStringList& texts);
QString printed(const QString& text);

// Who holds an accelerator.
struct Holder {
    QString schema;
    QString key;    // for a custom shortcut: its name
    bool custom = false;
};
// The first of GNOME's shortcuts in `listing` (lines of `gsettings
// list-recursively`: schema, key, value) that holds `accelerator`.
std::optional<Holder> holderIn(const QString& listing, const QString& accelerator);
// What the user reads about it: "GNOME's shortcut for “Switch input source”".
QString describe(const Holder& holder);

// The custom list with Kestrio's entry added once, or taken out; the others stay as they are.
QStringList withOwn(QStringList paths);
QStringList withoutOwn(QStringList paths);

} // namespace GnomeKeybindings
