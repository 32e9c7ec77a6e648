#include "hotkey/customshortcut.h"

#include "base/settingsstore.h"
#include "menu/shortcuttext.h"
#include "platform/keyboardlayout.h"

#include <array>
#include <utility>

namespace {

// Stored key codes: a Linux input code and the number macOS gives the key in
// the same place of a US keyboard.
constexpr std::array<std::pair<quint16, quint16>, 111> kStoredKeyCodes{{
    {30, 0},    {31, 1},    {32, 2},    {33, 3},    {35, 4},    {34, 5},    {44, 6},    {45, 7},   {46, 8},
    {47, 9},    {86, 10},   {48, 11},   {16, 12},   {17, 13},   {18, 14},   {19, 15},   {21, 16},  {20, 17},
    {2, 18},    {3, 19},    {4, 20},    {5, 21},    {7, 22},    {6, 23},    {13, 24},   {10, 25},  {8, 26},
    {12, 27},   {9, 28},    {11, 29},   {27, 30},   {24, 31},   {22, 32},   {26, 33},   {23, 34},  {25, 35},
    {28, 36},   {38, 37},   {36, 38},   {40, 39},   {37, 40},   {39, 41},   {43, 42},   {51, 43},  {53, 44},
    {49, 45},   {50, 46},   {52, 47},   {15, 48},   {57, 49},   {41, 50},   {14, 51},   {1, 53},
    // modifiers
    {125, 55},  {42, 56},   {58, 57},   {56, 58},   {29, 59},   {54, 60},   {100, 61},  {97, 62},  {126, 54},
    // keypad
    {83, 65},   {55, 67},   {78, 69},   {69, 71},   {98, 75},   {96, 76},   {74, 78},   {117, 81}, {82, 82},
    {79, 83},   {80, 84},   {81, 85},   {75, 86},   {76, 87},   {77, 88},   {71, 89},   {72, 91},  {73, 92},
    // function and navigation keys
    {63, 96},   {64, 97},   {65, 98},   {61, 99},   {66, 100},  {67, 101},  {87, 103},  {183, 105}, {184, 107},
    {68, 109},  {88, 111},  {185, 113}, {110, 114}, {102, 115}, {104, 116}, {111, 117}, {62, 118}, {107, 119},
    {60, 120},  {109, 121}, {59, 122},  {105, 123}, {106, 124}, {108, 125}, {103, 126}, {186, 106}, {187, 64},
    {188, 79},  {189, 80},  {190, 90},  {138, 114},
}};
// Keys macOS numbers nowhere are stored above this.
constexpr quint16 kUnnumbered = 0x1000;

constexpr std::array<std::pair<Modifier, qint64>, 4> kStoredModifiers{{
    {Modifier::ctrl, 0x100000}, // Command
    {Modifier::alt, 0x80000},   // Option
    {Modifier::super, 0x40000}, // Control
    {Modifier::shift, 0x20000},
}};

std::optional<quint16> positionOfStoredCode(qint64 code)
{
    if (code >= kUnnumbered)
        return quint16(code - kUnnumbered);
    for (const auto& [position, stored] : kStoredKeyCodes) {
        if (stored == code)
            return position;
    }
    return std::nullopt;
}

qint64 storedCodeOf(quint16 position)
{
    for (const auto& [known, stored] : kStoredKeyCodes) {
        if (known == position)
            return stored;
    }
    return kUnnumbered + position;
}

} // namespace

std::optional<KeyChord> loadCustomShortcut(const SettingsStore& store)
{
    if (!store.contains(SettingsKey::customHotkeyKeyCode))
        return std::nullopt;
    const qint64 keyCode = store.integerValue(SettingsKey::customHotkeyKeyCode);
    const qint64 stored = store.integerValue(SettingsKey::customHotkeyModifiers);
    if (keyCode < 0 || keyCode > 0xFFFF || stored < 1)
        return std::nullopt;
    const std::optional<quint16> position = positionOfStoredCode(keyCode);
    if (!position)
        return std::nullopt; // a number no key of this keyboard has
    Modifiers modifiers;
    for (const auto& [modifier, bit] : kStoredModifiers) {
        if (stored & bit)
            modifiers |= modifier;
    }
    return KeyChord{modifiers, Key::at(*position)};
}

void saveCustomShortcut(const KeyChord& shortcut, SettingsStore& store)
{
    qint64 modifiers = 0;
    for (const auto& [modifier, bit] : kStoredModifiers) {
        if (shortcut.modifiers.testFlag(modifier))
            modifiers |= bit;
    }
    store.setInteger(SettingsKey::customHotkeyKeyCode, storedCodeOf(shortcut.key.position));
    store.setInteger(SettingsKey::customHotkeyModifiers, modifiers);
}

QString keyboardLayoutCharacter(quint16 position, const KeyboardLayout& layout)
{
    // A key types at most a few UTF-16 units; more is not a key's text.
    const QString text = layout.characterAt(position).left(4);
    if (text.isEmpty())
        return QStringLiteral("?");
    return text.toUpper();
}

QString shortcutText(const KeyChord& shortcut, const KeyboardLayout& layout, const KeyWords& words)
{
    const QString typed = shortcut.key.named || !shortcut.key.character.isEmpty()
        ? QString()
        : keyboardLayoutCharacter(shortcut.key.position, layout);
    return shortcutText(shortcut, words, typed);
}

KeyChord defaultDesktopShortcut()
{
    return KeyChord{Modifier::ctrl | Modifier::alt, Key::at(KeyPosition::space)};
}
