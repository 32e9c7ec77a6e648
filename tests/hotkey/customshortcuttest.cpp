#include "hotkey/customshortcut.h"
#include "menu/shortcuttext.h"
#include "platform/fake/fakekeyboardlayout.h"
#include "support/tempsettings.h"

#include <gtest/gtest.h>

namespace {

// Positions (Linux input codes) of the keys below.
constexpr quint16 kA = 30, kK = 37, kQ = 16, kSemicolon = 39, kSpace = 57, kF1 = 59, kUp = 103;

KeyChord chord(Modifiers modifiers, quint16 position)
{
    return KeyChord{modifiers, Key::at(position)};
}

struct LoadCase {
    const char* name;
    QVariant keyCode;   // invalid: not stored
    QVariant modifiers; // invalid: not stored
    std::optional<KeyChord> expected;
};

class CustomShortcutLoad : public testing::TestWithParam<LoadCase> {};

// The stored numbers are macOS's (a US keyboard's positions, its modifier
// bits), so that a settings file keeps its meaning whichever build wrote it.
TEST_P(CustomShortcutLoad, AppliesTheValidityRulesAndTheStoredNumbers)
{
    TempSettings settings;
    const LoadCase& c = GetParam();
    if (c.keyCode.isValid())
        settings.store().setObject(SettingsKey::customHotkeyKeyCode, c.keyCode);
    if (c.modifiers.isValid())
        settings.store().setObject(SettingsKey::customHotkeyModifiers, c.modifiers);
    EXPECT_EQ(loadCustomShortcut(*settings.reopened()), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Stored, CustomShortcutLoad, testing::Values(
    LoadCase{"nothingStored", {}, {}, std::nullopt},
    LoadCase{"onlyModifiers", {}, 0x100000, std::nullopt},
    LoadCase{"modifiersMissing", 40, {}, std::nullopt},
    LoadCase{"modifiersZero", 40, 0, std::nullopt},
    LoadCase{"modifiersNegative", 40, -5, std::nullopt},
    LoadCase{"keyCodeZeroIsA", 0, 0x100000, chord(Modifier::ctrl, kA)},
    LoadCase{"controlOptionK", 40, 0xC0000, chord(Modifier::super | Modifier::alt, kK)},
    LoadCase{"allFour", 49, 0x1E0000, chord(Modifier::ctrl | Modifier::alt | Modifier::shift | Modifier::super, kSpace)},
    LoadCase{"functionKey", 122, 0x80000, chord(Modifier::alt, kF1)},
    LoadCase{"aKeyMacOSHasNoNumberFor", 0x1000 + 240, 0x100000, chord(Modifier::ctrl, 240)},
    LoadCase{"highestKeyCode", 65535, 0x40000, chord(Modifier::super, 65535 - 0x1000)},
    LoadCase{"aNumberNoKeyHas", 52, 0x40000, std::nullopt},
    LoadCase{"keyCodeTooLarge", 65536, 0x40000, std::nullopt},
    LoadCase{"keyCodeNegative", -1, 0x40000, std::nullopt},
    LoadCase{"noneOfTheFourBitsMatchesTheBareKey", 40, 0x10000, chord({}, kK)},
    LoadCase{"keyCodeAsText", "40", 0x40000, chord(Modifier::super, kK)}),
    [](const auto& info) { return std::string(info.param.name); });

// A settings file as this build writes it keeps its meaning: loaded, it is
// the same shortcut, and written back, the same numbers.
TEST(CustomShortcut, AStoredShortcutReadsAndWritesBackUnchanged)
{
    const std::vector<std::pair<qint64, qint64>> stored{{40, 0xC0000}, {0, 0x100000}, {49, 0x1E0000},
                                                        {122, 0x80000}, {41, 0x20000}, {0x1000 + 240, 0x100000}};
    for (const auto& [keyCode, modifiers] : stored) {
        TempSettings settings;
        settings.store().setInteger(SettingsKey::customHotkeyKeyCode, keyCode);
        settings.store().setInteger(SettingsKey::customHotkeyModifiers, modifiers);
        const std::optional<KeyChord> loaded = loadCustomShortcut(*settings.reopened());
        ASSERT_TRUE(loaded) << keyCode;
        TempSettings again;
        saveCustomShortcut(*loaded, again.store());
        EXPECT_EQ(again.reopened()->integerValue(SettingsKey::customHotkeyKeyCode), keyCode);
        EXPECT_EQ(again.reopened()->integerValue(SettingsKey::customHotkeyModifiers), modifiers);
        EXPECT_EQ(loadCustomShortcut(*again.reopened()), loaded);
    }
}

TEST(ModifierText, FixedOrderWhateverThePressingOrder)
{
    const KeyWords& mac = PlatformWords::macOS().keys;
    const KeyWords& linuxKeys = PlatformWords::linuxDesktop().keys;
    const Modifiers all = Modifier::ctrl | Modifier::alt | Modifier::shift | Modifier::super;
    EXPECT_EQ(modifierText(Modifier::shift | Modifier::ctrl | Modifier::super, mac), "⌃⇧⌘");
    EXPECT_EQ(modifierText(all, mac), "⌃⌥⇧⌘");
    EXPECT_EQ(modifierText(Modifier::alt, mac), "⌥");
    EXPECT_EQ(modifierText({}, mac), "");
    EXPECT_EQ(modifierText(Modifier::shift | Modifier::ctrl | Modifier::super, linuxKeys), "Super+Ctrl+Shift+");
    EXPECT_EQ(modifierText(all, linuxKeys), "Super+Ctrl+Alt+Shift+");
    EXPECT_EQ(modifierText({}, linuxKeys), "");
}

struct TextCase {
    KeyChord shortcut;
    QString mac;
    QString linux_;
};

class ShortcutText : public testing::TestWithParam<TextCase> {};

TEST_P(ShortcutText, NamesTheKeyElseSaysWhatItTypesOnTheLayout)
{
    FakeKeyboardLayout layout;
    layout.characters = {{kK, "k"}, {kA, "a"}, {kQ, "ß"}, {kSemicolon, "é"}};
    const TextCase& c = GetParam();
    EXPECT_EQ(shortcutText(c.shortcut, layout, PlatformWords::macOS().keys), c.mac);
    EXPECT_EQ(shortcutText(c.shortcut, layout, PlatformWords::linuxDesktop().keys), c.linux_);
}

INSTANTIATE_TEST_SUITE_P(Examples, ShortcutText, testing::Values(
    TextCase{chord(Modifier::super | Modifier::alt, kK), "⌃⌥K", "Super+Alt+K"},
    TextCase{chord(Modifier::ctrl, kSpace), "⌘Space", "Ctrl+Space"},
    TextCase{chord(Modifier::ctrl, kF1), "⌘F1", "Ctrl+F1"},
    TextCase{chord(Modifier::ctrl, kA), "⌘A", "Ctrl+A"},
    TextCase{chord(Modifier::shift, kQ), "⇧SS", "Shift+SS"}, // what the key types, upper-cased in full
    TextCase{chord(Modifier::super, kSemicolon), "⌃É", "Super+É"},
    TextCase{chord(Modifier::super, 77), "⌃?", "Super+?"}, // types nothing on this layout
    TextCase{chord(Modifier::alt, kUp), "⌥↑", "Alt+↑"},
    TextCase{chord({}, kK), "K", "K"}));

TEST(CustomShortcut, TheDesktopsShortcutIsCtrlAltSpace)
{
    EXPECT_EQ(shortcutText(defaultDesktopShortcut(), FakeKeyboardLayout(), PlatformWords::linuxDesktop().keys),
              "Ctrl+Alt+Space");
}

} // namespace
