#pragma once

#include <QFlags>
#include <QHashFunctions>
#include <QString>

#include <optional>

// Kestrio's words for keys, shared by the logic and the backends: the
// modifier keys as themselves, keys by name or by what they type, and key
// chords. (macOS's Command key plays Ctrl's part there, Option Alt's and
// Control Super's.)

enum class Modifier : quint8 { ctrl = 0x1, alt = 0x2, shift = 0x4, super = 0x8 };
Q_DECLARE_FLAGS(Modifiers, Modifier)
Q_DECLARE_OPERATORS_FOR_FLAGS(Modifiers)

// Keys known by a name rather than by the character they type.
enum class NamedKey : quint8 {
    returnKey,
    enter, // the keypad's
    tab,
    space,
    backspace,
    deleteForward,
    escape,
    home,
    end,
    pageUp,
    pageDown,
    left,
    right,
    up,
    down,
    help,
    f1, // F1 to F35 follow each other from here
};
inline constexpr int kFunctionKeys = 35;
std::optional<NamedKey> functionKey(int number);
// 1 for F1 …; nothing for a key that is no function key.
std::optional<int> functionNumber(NamedKey key);

// A key of a shortcut. Menus name theirs (F5, Page Up) or show what it types
// ("S", "+"); a key someone pressed also has its position on the keyboard,
// numbered as Linux input codes (KEY_S = 31), which names it whatever the
// layout.
struct Key {
    quint16 position = 0; // 0: not known
    std::optional<NamedKey> named;
    QString character; // where it has no name: what it types

    // The key at a position on the keyboard, named where it has a name.
    static Key at(quint16 position);

    friend bool operator==(const Key&, const Key&) = default;
};

// Modifiers held and a key pressed.
struct KeyChord {
    Modifiers modifiers;
    Key key;

    friend bool operator==(const KeyChord&, const KeyChord&) = default;
};

size_t qHash(const KeyChord& chord, size_t seed = 0);

// The named key at a position on the keyboard (a Linux input code), if it has a name.
std::optional<NamedKey> namedKeyAt(quint16 position);
// Positions of keys the detector tells apart from the rest: the modifiers.
namespace KeyPosition {
inline constexpr quint16 leftCtrl = 29, rightCtrl = 97, leftShift = 42, rightShift = 54, leftAlt = 56, rightAlt = 100,
                         leftSuper = 125, rightSuper = 126, capsLock = 58, space = 57;
} // namespace KeyPosition

// One input event as the detector sees it.
struct KeyEvent {
    enum class Kind {
        modifiersChanged, // a modifier key went down or up
        keyDown,          // any other key went down
        pointer,          // a mouse button went down or a wheel turned: a held modifier is part of a click or a zoom
    };
    Kind kind = Kind::modifiersChanged;
    Modifiers held;       // the modifiers down after the event
    quint16 position = 0; // keyDown: where the key is (a Linux input code)

    friend bool operator==(const KeyEvent&, const KeyEvent&) = default;
};
