#include "menu/shortcuttext.h"

#include <gtest/gtest.h>

namespace {

struct CharacterCase {
    QString keyCharacter;
    qint64 mask;
    QString expected;
};

class MenuShortcutFromCharacter : public testing::TestWithParam<CharacterCase> {};

TEST_P(MenuShortcutFromCharacter, FormsText)
{
    const auto& c = GetParam();
    EXPECT_EQ(menuShortcutText(c.keyCharacter, c.mask), c.expected);
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
    EXPECT_EQ(menuShortcutText(c.virtualKey, c.mask), c.expected);
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
        EXPECT_EQ(keyCharacterGlyph(QString::fromUcs4(&scalar, 1)), glyph) << std::hex << uint32_t(scalar);
    for (char32_t n = 1; n <= 12; ++n) {
        const char32_t scalar = 0xF703 + n;
        EXPECT_EQ(keyCharacterGlyph(QString::fromUcs4(&scalar, 1)), QStringLiteral("F%1").arg(n));
    }
}

TEST(KeyCharacterGlyph, LooksOnlyAtTheFirstScalar)
{
    EXPECT_EQ(keyCharacterGlyph(QString(QChar(0xF700)) + "x"), "↑");
    EXPECT_EQ(keyCharacterGlyph("x" + QString(QChar(0xF700))), std::nullopt);
    EXPECT_EQ(keyCharacterGlyph(""), std::nullopt);
    const char32_t astral = 0x1F600;
    EXPECT_EQ(keyCharacterGlyph(QString::fromUcs4(&astral, 1)), std::nullopt);
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
            EXPECT_EQ(virtualKeyName(code), std::nullopt) << code;
        else
            EXPECT_EQ(virtualKeyName(code), it->second) << code;
    }
}

} // namespace
