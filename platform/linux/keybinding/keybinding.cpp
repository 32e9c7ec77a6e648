#include "platform/linux/keybinding/keybinding.h"

#include <QHash>
#include <QStringList>

#include <xkbcommon/xkbcommon.h>

namespace {

// Keys that menus name rather than show by what they type.
std::optional<NamedKey> namedKey(const QString& name)
{
    static const QHash<QString, NamedKey> keys{
        // GTK (X keysym names)
        {"Return", NamedKey::returnKey}, {"KP_Enter", NamedKey::enter}, {"Tab", NamedKey::tab},
        {"ISO_Left_Tab", NamedKey::tab}, {"space", NamedKey::space}, {"BackSpace", NamedKey::backspace},
        {"Escape", NamedKey::escape}, {"Delete", NamedKey::deleteForward}, {"KP_Delete", NamedKey::deleteForward},
        {"Home", NamedKey::home}, {"KP_Home", NamedKey::home}, {"End", NamedKey::end}, {"KP_End", NamedKey::end},
        {"Page_Up", NamedKey::pageUp}, {"Prior", NamedKey::pageUp}, {"KP_Page_Up", NamedKey::pageUp},
        {"Page_Down", NamedKey::pageDown}, {"Next", NamedKey::pageDown}, {"KP_Page_Down", NamedKey::pageDown},
        {"Left", NamedKey::left}, {"KP_Left", NamedKey::left}, {"Right", NamedKey::right},
        {"KP_Right", NamedKey::right}, {"Down", NamedKey::down}, {"KP_Down", NamedKey::down}, {"Up", NamedKey::up},
        {"KP_Up", NamedKey::up}, {"Help", NamedKey::help},
        // Qt (portable key names) where they differ
        {"Enter", NamedKey::enter}, {"Backtab", NamedKey::tab}, {"Space", NamedKey::space},
        {"Backspace", NamedKey::backspace}, {"Esc", NamedKey::escape}, {"Del", NamedKey::deleteForward},
        {"PgUp", NamedKey::pageUp}, {"PgDown", NamedKey::pageDown},
    };
    if (const auto it = keys.constFind(name); it != keys.constEnd())
        return *it;
    if (name.size() >= 2 && name.size() <= 3 && name[0] == u'F' && name[1] != u'0') {
        bool ok = false;
        const int number = name.mid(1).toInt(&ok);
        if (ok)
            return functionKey(number);
    }
    return std::nullopt;
}

std::optional<KeyChord> keyEquivalent(Modifiers modifiers, const QString& keyName, bool keysymNames)
{
    if (const std::optional<NamedKey> named = namedKey(keyName))
        return KeyChord{modifiers, Key{0, named, {}}};
    if (keyName.size() == 1 || (keyName.size() == 2 && keyName[0].isHighSurrogate()))
        return KeyChord{modifiers, Key{0, std::nullopt, keyName}};
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
    return KeyChord{modifiers, Key{0, std::nullopt, character}};
}

} // namespace

std::optional<KeyChord> translateGtkAccelerator(const QString& accelerator)
{
    Modifiers modifiers;
    QStringView rest(accelerator);
    rest = rest.trimmed();
    while (rest.startsWith(u'<')) {
        const qsizetype close = rest.indexOf(u'>');
        if (close < 0)
            return std::nullopt;
        const QStringView modifier = rest.mid(1, close - 1);
        // <Primary> is Ctrl on Linux.
        if (modifier.compare(u"Primary", Qt::CaseInsensitive) == 0 || modifier.compare(u"Control", Qt::CaseInsensitive) == 0
            || modifier.compare(u"Ctrl", Qt::CaseInsensitive) == 0 || modifier.compare(u"Ctl", Qt::CaseInsensitive) == 0)
            modifiers |= Modifier::ctrl;
        else if (modifier.compare(u"Shift", Qt::CaseInsensitive) == 0 || modifier.compare(u"Shft", Qt::CaseInsensitive) == 0)
            modifiers |= Modifier::shift;
        else if (modifier.compare(u"Alt", Qt::CaseInsensitive) == 0 || modifier.compare(u"Mod1", Qt::CaseInsensitive) == 0)
            modifiers |= Modifier::alt;
        else if (modifier.compare(u"Super", Qt::CaseInsensitive) == 0 || modifier.compare(u"Meta", Qt::CaseInsensitive) == 0
                 || modifier.compare(u"Hyper", Qt::CaseInsensitive) == 0 || modifier.compare(u"Mod4", Qt::CaseInsensitive) == 0)
            modifiers |= Modifier::super;
        rest = rest.mid(close + 1);
    }
    if (rest.isEmpty())
        return std::nullopt;
    return keyEquivalent(modifiers, rest.toString(), true);
}

std::optional<KeyChord> translateQtShortcut(const QString& shortcut, const QString& itemName)
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
    Modifiers held;
    for (const QString& m : modifiers.split(u'+', Qt::SkipEmptyParts)) {
        if (m == QLatin1String("Ctrl"))
            held |= Modifier::ctrl;
        else if (m == QLatin1String("Shift"))
            held |= Modifier::shift;
        else if (m == QLatin1String("Alt"))
            held |= Modifier::alt;
        else if (m == QLatin1String("Meta"))
            held |= Modifier::super;
        else
            return std::nullopt;
    }
    // With no shortcut, Qt reports the item's mnemonic as Alt plus its letter.
    const std::optional<KeyChord> translated = keyEquivalent(held, key, false);
    if (translated && isMnemonicOf(*translated, itemName))
        return std::nullopt;
    return translated;
}

bool isMnemonicOf(const KeyChord& key, const QString& itemName)
{
    return key.modifiers == Modifier::alt && !key.key.named && key.key.character.size() == 1
        && itemName.contains(key.key.character, Qt::CaseInsensitive);
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

std::optional<KeyChord> translateDrawnShortcut(const QString& drawn)
{
    static const std::pair<const char*, Modifier> words[]{
        {"Ctrl", Modifier::ctrl}, {"Control", Modifier::ctrl}, {"Ctl", Modifier::ctrl}, {"Strg", Modifier::ctrl},
        {"Shift", Modifier::shift}, {"Shft", Modifier::shift}, {"Alt", Modifier::alt}, {"Option", Modifier::alt},
        {"Super", Modifier::super}, {"Meta", Modifier::super}, {"Win", Modifier::super}, {"Logo", Modifier::super},
        {"Hyper", Modifier::super},
    };
    Modifiers held;
    bool any = false;
    QString rest = drawn.trimmed();
    rest.replace(QLatin1String(" + "), QLatin1String("+"));
    // "^R": Control as terminal programs write it.
    if (rest.size() == 2 && rest[0] == u'^' && rest[1].isPrint() && !rest[1].isSpace()) {
        held |= Modifier::ctrl;
        any = true;
        rest = rest.mid(1);
    }
    for (bool found = true; found && rest.size() > 1;) {
        found = false;
        for (const auto& [word, modifier] : words) {
            const qsizetype n = qstrlen(word);
            if (rest.size() > n + 1 && rest.startsWith(QLatin1String(word), Qt::CaseInsensitive)
                && (rest[n] == u'+' || rest[n] == u'-')) {
                held |= modifier;
                any = found = true;
                rest = rest.mid(n + 1).trimmed();
                break;
            }
        }
        // Emacs: C- Control, M- Meta (Alt), S- Shift, s- Super.
        if (!found && rest.size() > 2 && rest[1] == u'-' && QStringView(u"CMSs").contains(rest[0])) {
            const char16_t letter = rest[0].unicode();
            held |= letter == u'C' ? Modifier::ctrl : letter == u'M' ? Modifier::alt : letter == u'S' ? Modifier::shift : Modifier::super;
            any = found = true;
            rest = rest.mid(2);
        }
    }
    if (rest.isEmpty())
        return std::nullopt;
    QString key = drawnKeyNames().value(rest.toLower(), rest);
    const bool named = key != rest || namedKey(key).has_value();
    if (!named && rest.size() > 1 && !(rest.size() == 2 && rest[0].isHighSurrogate()))
        return std::nullopt; // several keys, or a command
    if (!any && !named)
        return std::nullopt; // a key that types is no menu shortcut alone
    return keyEquivalent(held, key, false);
}

NameAndShortcut splitDrawnShortcut(const QString& name)
{
    const qsizetype tab = name.indexOf(u'\t');
    if (tab < 0)
        return {name.trimmed(), std::nullopt};
    return {name.left(tab).trimmed(), translateDrawnShortcut(name.mid(tab + 1))};
}

std::optional<KeyChord> translateKeyBinding(const QString& binding, const QString& itemName)
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
