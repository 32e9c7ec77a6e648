#include "menu/shortcuttext.h"

#include <QKeySequence>

#include <gtest/gtest.h>

namespace {

const KeyWords& macKeys = PlatformWords::macOS().keys;
const KeyWords& linuxKeys = PlatformWords::linuxDesktop().keys;

struct CharacterCase {
    QString keyCharacter;
    qint64 mask;
    QString expected;
};

// The macOS texts, glyph by glyph.
class MenuShortcutFromCharacter : public testing::TestWithParam<CharacterCase> {};

TEST_P(MenuShortcutFromCharacter, FormsText)
{
    const auto& c = GetParam();
    EXPECT_EQ(menuShortcutText(c.keyCharacter, c.mask, macKeys), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Examples, MenuShortcutFromCharacter, testing::Values(
    CharacterCase{"s", 0, "⌘S"},
    CharacterCase{"s", 1, "⇧⌘S"},
    CharacterCase{"z", 5, "⌃⇧⌘Z"},
    CharacterCase{QString(QChar(0xF704)), 10, "⌥F1"},
    CharacterCase{"s", 8, "S"},
    CharacterCase{"s", 15, "⌃⌥⇧S"},
    CharacterCase{"s", 16 | 32 | 1024, "⌘S"},       // bits above 8 are ignored
    CharacterCase{"a", 0, "⌘A"},
    CharacterCase{"ä", 0, "⌘Ä"},
    CharacterCase{"e\u0301", 0, "⌘E\u0301"},        // the pair is upper-cased as a whole
    CharacterCase{"ß", 0, "⌘SS"},                   // full case mapping
    CharacterCase{"ab", 0, "⌘AB"},
    CharacterCase{QString(QChar(0xF728)), 0, "⌘⌫"}, // forward delete shows the backward glyph
    CharacterCase{QString(QChar(0xF70F)), 0, "⌘F12"},
    CharacterCase{QString(QChar(0xF710)), 0, "⌘" + QString(QChar(0xF710))}, // F13 onward: no glyph
    CharacterCase{QString(QChar(0xF72A)), 0, "⌘" + QString(QChar(0xF72A))},
    CharacterCase{" ", 0, "⌘Space"},
    CharacterCase{"\x7f", 1, "⇧⌘⌫"},
    CharacterCase{"\x1b", 8, "⎋"}));

struct VirtualKeyCase {
    qint64 virtualKey;
    qint64 mask;
    QString expected;
};

class MenuShortcutFromVirtualKey : public testing::TestWithParam<VirtualKeyCase> {};

TEST_P(MenuShortcutFromVirtualKey, FormsText)
{
    const auto& c = GetParam();
    EXPECT_EQ(menuShortcutText(c.virtualKey, c.mask, macKeys), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Examples, MenuShortcutFromVirtualKey, testing::Values(
    VirtualKeyCase{53, 8, "⎋"},
    VirtualKeyCase{0, 0, "⌘?"},
    VirtualKeyCase{117, 0, "⌘⌦"},
    VirtualKeyCase{122, 2, "⌥⌘F1"},
    VirtualKeyCase{1000, 12, "⌃?"}));

TEST(KeyCharacterGlyph, TableAndFunctionKeys)
{
    const std::vector<std::pair<char32_t, QString>> table{
        {0x03, "⏎"},   {0x09, "⇥"},   {0x0D, "⏎"},   {0x1B, "⎋"},   {0x20, "Space"}, {0x7F, "⌫"},
        {0xF700, "↑"}, {0xF701, "↓"}, {0xF702, "←"}, {0xF703, "→"}, {0xF728, "⌫"},   {0xF729, "↖"},
        {0xF72B, "↘"}, {0xF72C, "⇞"}, {0xF72D, "⇟"},
    };
    for (const auto& [scalar, glyph] : table)
        EXPECT_EQ(keyCharacterGlyph(QString::fromUcs4(&scalar, 1), macKeys), glyph) << std::hex << uint32_t(scalar);
    for (char32_t n = 1; n <= 12; ++n) {
        const char32_t scalar = 0xF703 + n;
        EXPECT_EQ(keyCharacterGlyph(QString::fromUcs4(&scalar, 1), macKeys), QStringLiteral("F%1").arg(n));
    }
}

TEST(KeyCharacterGlyph, LooksOnlyAtTheFirstScalar)
{
    EXPECT_EQ(keyCharacterGlyph(QString(QChar(0xF700)) + "x", macKeys), "↑");
    EXPECT_EQ(keyCharacterGlyph("x" + QString(QChar(0xF700)), macKeys), std::nullopt);
    EXPECT_EQ(keyCharacterGlyph("", macKeys), std::nullopt);
    const char32_t astral = 0x1F600;
    EXPECT_EQ(keyCharacterGlyph(QString::fromUcs4(&astral, 1), macKeys), std::nullopt);
}

TEST(VirtualKeyName, HasExactlyTheThirtyEntries)
{
    const std::map<qint64, QString> table{
        {36, "⏎"},    {48, "⇥"},    {49, "Space"}, {51, "⌫"},   {53, "⎋"},   {96, "F5"},   {97, "F6"},
        {98, "F7"},   {99, "F3"},   {100, "F8"},   {101, "F9"}, {103, "F11"}, {105, "F13"}, {107, "F14"},
        {109, "F10"}, {111, "F12"}, {113, "F15"},  {114, "Help"}, {115, "↖"}, {116, "⇞"},  {117, "⌦"},
        {118, "F4"},  {119, "↘"},   {120, "F2"},   {121, "⇟"},  {122, "F1"}, {123, "←"},  {124, "→"},
        {125, "↓"},   {126, "↑"},
    };
    ASSERT_EQ(table.size(), 30u);
    for (qint64 code = -1; code <= 0x10000; ++code) {
        const auto it = table.find(code);
        if (it == table.end())
            EXPECT_EQ(virtualKeyName(code, macKeys), std::nullopt) << code;
        else
            EXPECT_EQ(virtualKeyName(code, macKeys), it->second) << code;
    }
}

// On Linux a shortcut reads as the applications themselves write it: Qt's
// native text, with Super for Meta and arrows for the arrow keys' names.
QString qtNativeText(int keyAndModifiers)
{
    return QKeySequence(keyAndModifiers)
        .toString(QKeySequence::NativeText)
        .replace(QStringLiteral("Meta"), QStringLiteral("Super"));
}

int qtModifiers(qint64 mask)
{
    int m = 0;
    if (mask & MenuModifier::Shift)
        m |= Qt::SHIFT;
    if (mask & MenuModifier::Option)
        m |= Qt::ALT;
    if (mask & MenuModifier::Control)
        m |= Qt::META; // Super plays Control's part
    if (!(mask & MenuModifier::NoCommand))
        m |= Qt::CTRL; // and Ctrl plays Command's
    return m;
}

TEST(LinuxShortcutText, EveryModifierMaskReadsAsQtWritesIt)
{
    for (qint64 mask = 0; mask < 16; ++mask) {
        EXPECT_EQ(menuShortcutText(QStringLiteral("s"), mask, linuxKeys), qtNativeText(qtModifiers(mask) | Qt::Key_S))
            << mask;
    }
}

TEST(LinuxShortcutText, NamedKeysReadAsQtWritesThem)
{
    const std::vector<std::pair<qint64, int>> keys{
        {36, Qt::Key_Return}, {48, Qt::Key_Tab},     {49, Qt::Key_Space}, {51, Qt::Key_Backspace},
        {53, Qt::Key_Escape}, {114, Qt::Key_Help},   {115, Qt::Key_Home}, {116, Qt::Key_PageUp},
        {117, Qt::Key_Delete}, {119, Qt::Key_End},   {121, Qt::Key_PageDown}, {122, Qt::Key_F1},
        {120, Qt::Key_F2},    {99, Qt::Key_F3},      {118, Qt::Key_F4},   {96, Qt::Key_F5},
        {97, Qt::Key_F6},     {98, Qt::Key_F7},      {100, Qt::Key_F8},   {101, Qt::Key_F9},
        {109, Qt::Key_F10},   {103, Qt::Key_F11},    {111, Qt::Key_F12},  {105, Qt::Key_F13},
        {107, Qt::Key_F14},   {113, Qt::Key_F15},
    };
    for (const auto& [code, qtKey] : keys)
        EXPECT_EQ(menuShortcutText(code, 0, linuxKeys), qtNativeText(Qt::CTRL | qtKey)) << code;
    EXPECT_EQ(linuxKeys.virtualKeys.size(), macKeys.virtualKeys.size());
    for (auto it = macKeys.virtualKeys.cbegin(); it != macKeys.virtualKeys.cend(); ++it)
        EXPECT_TRUE(linuxKeys.virtualKeys.contains(it.key())) << it.key();
}

TEST(LinuxShortcutText, Examples)
{
    EXPECT_EQ(menuShortcutText(QStringLiteral("s"), MenuModifier::Shift, linuxKeys), "Ctrl+Shift+S");
    EXPECT_EQ(menuShortcutText(126, MenuModifier::Option | MenuModifier::NoCommand, linuxKeys), "Alt+↑");
    EXPECT_EQ(menuShortcutText(49, MenuModifier::Control | MenuModifier::NoCommand, linuxKeys), "Super+Space");
    EXPECT_EQ(menuShortcutText(103, MenuModifier::NoCommand, linuxKeys), "F11");
    EXPECT_EQ(menuShortcutText(QString(QChar(0xF704)), MenuModifier::NoCommand, linuxKeys), "F1");
    EXPECT_EQ(menuShortcutText(QStringLiteral("+"), 0, linuxKeys), "Ctrl++");
    EXPECT_EQ(menuShortcutText(QString(QChar(0xF728)), 0, linuxKeys), "Ctrl+Del");
    EXPECT_EQ(menuShortcutText(QStringLiteral("\x1b"), MenuModifier::NoCommand, linuxKeys), "Esc");
    EXPECT_EQ(menuShortcutText(0, 0, linuxKeys), "Ctrl+?");
}

} // namespace
