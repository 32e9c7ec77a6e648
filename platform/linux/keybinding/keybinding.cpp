#include "platform/linux/keybinding/keybinding.h"

#include <QHash>
#include <QStringList>

#include <xkbcommon/xkbcommon.h>

namespace {

constexpr qint64 kShift = 1, kOption = 2, kControl = 4, kNoCommand = 8;

// Named keys that menus show by the virtual-key table rather than a character.
const QHash<QString, qint64>& namedVirtualKeys()
{
    static const QHash<QString, qint64> keys{
        // GTK (X keysym names)
        {"Return", 36}, {"KP_Enter", 36}, {"Tab", 48}, {"ISO_Left_Tab", 48}, {"space", 49}, {"BackSpace", 51},
        {"Escape", 53}, {"Delete", 117}, {"KP_Delete", 117}, {"Home", 115}, {"KP_Home", 115}, {"End", 119},
        {"KP_End", 119}, {"Page_Up", 116}, {"Prior", 116}, {"KP_Page_Up", 116}, {"Page_Down", 121}, {"Next", 121},
        {"KP_Page_Down", 121}, {"Left", 123}, {"KP_Left", 123}, {"Right", 124}, {"KP_Right", 124}, {"Down", 125},
        {"KP_Down", 125}, {"Up", 126}, {"KP_Up", 126}, {"Help", 114},
        // Qt (portable key names) where they differ
        {"Enter", 36}, {"Backtab", 48}, {"Space", 49}, {"Backspace", 51}, {"Esc", 53}, {"Del", 117},
        {"PgUp", 116}, {"PgDown", 121},
        // Function keys
        {"F1", 122}, {"F2", 120}, {"F3", 99}, {"F4", 118}, {"F5", 96}, {"F6", 97}, {"F7", 98}, {"F8", 100},
        {"F9", 101}, {"F10", 109}, {"F11", 103}, {"F12", 111}, {"F13", 105}, {"F14", 107}, {"F15", 113},
    };
    return keys;
}

qint64 maskFor(bool shift, bool option, bool control, bool command)
{
    return (shift ? kShift : 0) | (option ? kOption : 0) | (control ? kControl : 0) | (command ? 0 : kNoCommand);
}

std::optional<MenuKeyEquivalent> keyEquivalent(qint64 mask, const QString& keyName, bool keysymNames)
{
    if (const auto it = namedVirtualKeys().constFind(keyName); it != namedVirtualKeys().constEnd())
        return MenuKeyEquivalent{mask, std::nullopt, *it};
    if (keyName.size() == 1 || (keyName.size() == 2 && keyName[0].isHighSurrogate()))
        return MenuKeyEquivalent{mask, keyName, std::nullopt};
    if (!keysymNames)
        return std::nullopt;
    // Any other keysym name ("plus", "KP_Add", "udiaeresis"): the character it types.
    const xkb_keysym_t keysym = xkb_keysym_from_name(keyName.toUtf8().constData(), XKB_KEYSYM_NO_FLAGS);
    char utf8[8] = {};
    if (keysym == XKB_KEY_NoSymbol || xkb_keysym_to_utf8(keysym, utf8, sizeof utf8) <= 1)
        return std::nullopt;
    const QString character = QString::fromUtf8(utf8);
    if (character.isEmpty() || !character[0].isPrint())
        return std::nullopt;
    return MenuKeyEquivalent{mask, character, std::nullopt};
}

} // namespace

std::optional<MenuKeyEquivalent> translateGtkAccelerator(const QString& accelerator)
{
    bool shift = false, option = false, control = false, command = false;
    QStringView rest(accelerator);
    rest = rest.trimmed();
    while (rest.startsWith(u'<')) {
        const qsizetype close = rest.indexOf(u'>');
        if (close < 0)
            return std::nullopt;
        const QStringView modifier = rest.mid(1, close - 1);
        // Ctrl plays Command's part on Linux and Super plays Control's.
        if (modifier.compare(u"Primary", Qt::CaseInsensitive) == 0 || modifier.compare(u"Control", Qt::CaseInsensitive) == 0
            || modifier.compare(u"Ctrl", Qt::CaseInsensitive) == 0 || modifier.compare(u"Ctl", Qt::CaseInsensitive) == 0)
            command = true;
        else if (modifier.compare(u"Shift", Qt::CaseInsensitive) == 0 || modifier.compare(u"Shft", Qt::CaseInsensitive) == 0)
            shift = true;
        else if (modifier.compare(u"Alt", Qt::CaseInsensitive) == 0 || modifier.compare(u"Mod1", Qt::CaseInsensitive) == 0)
            option = true;
        else if (modifier.compare(u"Super", Qt::CaseInsensitive) == 0 || modifier.compare(u"Meta", Qt::CaseInsensitive) == 0
                 || modifier.compare(u"Hyper", Qt::CaseInsensitive) == 0 || modifier.compare(u"Mod4", Qt::CaseInsensitive) == 0)
            control = true;
        rest = rest.mid(close + 1);
    }
    if (rest.isEmpty())
        return std::nullopt;
    return keyEquivalent(maskFor(shift, option, control, command), rest.toString(), true);
}

std::optional<MenuKeyEquivalent> translateQtShortcut(const QString& shortcut, const QString& itemName)
{
    // Only the first chord of a sequence such as "Ctrl+K, Ctrl+C" fits a menu's key equivalent.
    QString chord = shortcut.trimmed();
    if (const qsizetype comma = chord.indexOf(QStringLiteral(", ")); comma > 0)
        chord = chord.left(comma);
    if (chord.isEmpty())
        return std::nullopt;

    // The key is what follows the last '+', which may itself be '+' ("Ctrl++").
    QString key;
    QString modifiers;
    if (chord.endsWith(QStringLiteral("++")) || chord == QStringLiteral("+")) {
        key = QStringLiteral("+");
        modifiers = chord.left(chord.size() - 1);
    } else {
        const qsizetype plus = chord.lastIndexOf(u'+');
        key = chord.mid(plus + 1);
        modifiers = plus < 0 ? QString() : chord.left(plus + 1);
    }
    bool shift = false, option = false, control = false, command = false;
    for (const QString& m : modifiers.split(u'+', Qt::SkipEmptyParts)) {
        if (m == QLatin1String("Ctrl"))
            command = true;
        else if (m == QLatin1String("Shift"))
            shift = true;
        else if (m == QLatin1String("Alt"))
            option = true;
        else if (m == QLatin1String("Meta"))
            control = true;
        else
            return std::nullopt;
    }
    // With no shortcut, Qt reports the item's mnemonic as Alt plus its letter.
    const std::optional<MenuKeyEquivalent> translated = keyEquivalent(maskFor(shift, option, control, command), key, false);
    if (translated && isMnemonicOf(*translated, itemName))
        return std::nullopt;
    return translated;
}

bool isMnemonicOf(const MenuKeyEquivalent& key, const QString& itemName)
{
    return key.modifiers == (kOption | kNoCommand) && key.character && key.character->size() == 1
        && itemName.contains(*key.character, Qt::CaseInsensitive);
}

namespace {

// Key names as menus draw them, lower case, to the names the key table knows.
const QHash<QString, QString>& drawnKeyNames()
{
    static const QHash<QString, QString> names{
        {"page up", "Page_Up"}, {"pageup", "Page_Up"}, {"pgup", "Page_Up"}, {"page down", "Page_Down"},
        {"pagedown", "Page_Down"}, {"pgdown", "Page_Down"}, {"pgdn", "Page_Down"}, {"del", "Delete"},
        {"delete", "Delete"}, {"backspace", "BackSpace"}, {"return", "Return"}, {"enter", "Return"},
        {"esc", "Escape"}, {"escape", "Escape"}, {"tab", "Tab"}, {"space", "space"}, {"home", "Home"},
        {"end", "End"}, {"up", "Up"}, {"down", "Down"}, {"left", "Left"}, {"right", "Right"}, {"↑", "Up"},
        {"↓", "Down"}, {"←", "Left"}, {"→", "Right"}, {"plus", "+"}, {"minus", "-"}, {"help", "Help"},
    };
    return names;
}

} // namespace

std::optional<MenuKeyEquivalent> translateDrawnShortcut(const QString& drawn)
{
    enum Modifier { shift, option, control, command };
    static const std::pair<const char*, Modifier> words[]{
        {"Ctrl", command}, {"Control", command}, {"Ctl", command}, {"Strg", command}, {"Shift", shift},
        {"Shft", shift}, {"Alt", option}, {"Option", option}, {"Super", control}, {"Meta", control},
        {"Win", control}, {"Logo", control}, {"Hyper", control},
    };
    bool held[4] = {};
    bool any = false;
    QString rest = drawn.trimmed();
    rest.replace(QLatin1String(" + "), QLatin1String("+"));
    // "^R": Control as terminal programs write it.
    if (rest.size() == 2 && rest[0] == u'^' && rest[1].isPrint() && !rest[1].isSpace()) {
        held[command] = any = true;
        rest = rest.mid(1);
    }
    for (bool found = true; found && rest.size() > 1;) {
        found = false;
        for (const auto& [word, modifier] : words) {
            const qsizetype n = qstrlen(word);
            if (rest.size() > n + 1 && rest.startsWith(QLatin1String(word), Qt::CaseInsensitive)
                && (rest[n] == u'+' || rest[n] == u'-')) {
                held[modifier] = any = found = true;
                rest = rest.mid(n + 1).trimmed();
                break;
            }
        }
        // Emacs: C- Control, M- Meta (Alt), S- Shift, s- Super.
        if (!found && rest.size() > 2 && rest[1] == u'-' && QStringView(u"CMSs").contains(rest[0])) {
            const char16_t letter = rest[0].unicode();
            held[letter == u'C' ? command : letter == u'M' ? option : letter == u'S' ? shift : control] = true;
            any = found = true;
            rest = rest.mid(2);
        }
    }
    if (rest.isEmpty())
        return std::nullopt;
    QString key = drawnKeyNames().value(rest.toLower(), rest);
    const bool named = key != rest || namedVirtualKeys().contains(key);
    if (!named && rest.size() > 1 && !(rest.size() == 2 && rest[0].isHighSurrogate()))
        return std::nullopt; // several keys, or a command
    if (!any && !named)
        return std::nullopt; // a key that types is no menu shortcut alone
    return keyEquivalent(maskFor(held[shift], held[option], held[control], held[command]), key, false);
}

NameAndShortcut splitDrawnShortcut(const QString& name)
{
    const qsizetype tab = name.indexOf(u'\t');
    if (tab < 0)
        return {name.trimmed(), std::nullopt};
    return {name.left(tab).trimmed(), translateDrawnShortcut(name.mid(tab + 1))};
}

std::optional<MenuKeyEquivalent> translateKeyBinding(const QString& binding, const QString& itemName)
{
    if (binding.contains(u';')) {
        // GTK: "mnemonic;menu path;accelerator", the accelerator possibly empty.
        const QStringList fields = binding.split(u';');
        return fields.size() >= 3 ? translateGtkAccelerator(fields.mid(2).join(u';')) : std::nullopt;
    }
    if (binding.startsWith(u'<'))
        return translateGtkAccelerator(binding);
    return translateQtShortcut(binding, itemName);
}
