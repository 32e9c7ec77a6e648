#include "hotkey/customshortcut.h"
#include "hotkey/hotkeymode.h"
#include "platform/fake/fakekeyboardlayout.h"
#include "support/tempsettings.h"

#include <gtest/gtest.h>

namespace {

struct LoadCase {
    const char* name;
    QVariant keyCode;   // invalid: not stored
    QVariant modifiers; // invalid: not stored
    std::optional<CustomShortcut> expected;
};

class CustomShortcutLoad : public testing::TestWithParam<LoadCase> {};

TEST_P(CustomShortcutLoad, AppliesTheValidityRules)
{
    TempSettings settings;
    const LoadCase& c = GetParam();
    if (c.keyCode.isValid())
        settings.store().setObject(SettingsKey::customHotkeyKeyCode, c.keyCode);
    if (c.modifiers.isValid())
        settings.store().setObject(SettingsKey::customHotkeyModifiers, c.modifiers);
    EXPECT_EQ(CustomShortcut::load(*settings.reopened()), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Stored, CustomShortcutLoad, testing::Values(
    LoadCase{"nothingStored", {}, {}, std::nullopt},
    LoadCase{"onlyModifiers", {}, 0x100000, std::nullopt},
    LoadCase{"modifiersMissing", 40, {}, std::nullopt},
    LoadCase{"modifiersZero", 40, 0, std::nullopt},
    LoadCase{"modifiersNegative", 40, -5, std::nullopt},
    LoadCase{"keyCodeZeroIsValid", 0, 0x100000, CustomShortcut{0, 0x100000}},
    LoadCase{"highestKeyCode", 65535, 0x40000, CustomShortcut{65535, 0x40000}},
    LoadCase{"keyCodeTooLarge", 65536, 0x40000, std::nullopt},
    LoadCase{"keyCodeNegative", -1, 0x40000, std::nullopt},
    LoadCase{"noneOfTheFourBits", 40, 0x10000, CustomShortcut{40, 0x10000}},
    LoadCase{"keyCodeAsText", "40", 0x40000, CustomShortcut{40, 0x40000}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(CustomShortcut, SaveThenLoadRoundTrips)
{
    TempSettings settings;
    const CustomShortcut shortcut{40, ModifierFlag::Control | ModifierFlag::Option};
    shortcut.save(settings.store());
    EXPECT_EQ(settings.store().integerValue(SettingsKey::customHotkeyKeyCode), 40);
    EXPECT_EQ(settings.store().integerValue(SettingsKey::customHotkeyModifiers), 0xC0000);
    EXPECT_EQ(CustomShortcut::load(*settings.reopened()), shortcut);
}

TEST(CustomShortcut, EqualityUsesTheWholeModifierValue)
{
    EXPECT_EQ((CustomShortcut{40, 0x40000}), (CustomShortcut{40, 0x40000}));
    EXPECT_NE((CustomShortcut{40, 0x40000}), (CustomShortcut{40, 0x40000 | ModifierFlag::CapsLock}));
    EXPECT_NE((CustomShortcut{40, 0x40000}), (CustomShortcut{41, 0x40000}));
}

TEST(ModifierText, FixedOrderWhateverTheBits)
{
    using namespace ModifierFlag;
    const KeyWords& mac = PlatformWords::macOS().keys;
    const KeyWords& linuxKeys = PlatformWords::linuxDesktop().keys;
    EXPECT_EQ(modifierText(Shift | Command | Control, mac), "⌃⇧⌘");
    EXPECT_EQ(modifierText(Mask, mac), "⌃⌥⇧⌘");
    EXPECT_EQ(modifierText(Option, mac), "⌥");
    EXPECT_EQ(modifierText(CapsLock | Function | NumericPad | Help, mac), "");
    EXPECT_EQ(modifierText(Shift | Command | Control, linuxKeys), "Super+Ctrl+Shift+");
    EXPECT_EQ(modifierText(Mask, linuxKeys), "Super+Ctrl+Alt+Shift+");
    EXPECT_EQ(modifierText(CapsLock | Function | NumericPad | Help, linuxKeys), "");
}

struct TextCase {
    quint16 keyCode;
    quint64 modifiers;
    QString mac;
    QString linux_;
};

class ShortcutText : public testing::TestWithParam<TextCase> {};

TEST_P(ShortcutText, NamesTheKeyFromTheTableElseFromTheLayout)
{
    FakeKeyboardLayout layout;
    layout.characters = {{40, "k"}, {0, "a"}, {12, "ß"}, {50, "é"}};
    const TextCase& c = GetParam();
    EXPECT_EQ(shortcutText(CustomShortcut{c.keyCode, c.modifiers}, layout, PlatformWords::macOS().keys), c.mac);
    EXPECT_EQ(shortcutText(CustomShortcut{c.keyCode, c.modifiers}, layout, PlatformWords::linuxDesktop().keys),
              c.linux_);
}

INSTANTIATE_TEST_SUITE_P(Examples, ShortcutText, testing::Values(
    TextCase{40, ModifierFlag::Control | ModifierFlag::Option, "⌃⌥K", "Super+Alt+K"},
    TextCase{49, ModifierFlag::Command, "⌘Space", "Ctrl+Space"},
    TextCase{122, ModifierFlag::Command, "⌘F1", "Ctrl+F1"},
    TextCase{0, ModifierFlag::Command, "⌘A", "Ctrl+A"},
    TextCase{12, ModifierFlag::Shift, "⇧SS", "Shift+SS"},
    TextCase{50, ModifierFlag::Control, "⌃É", "Super+É"},
    TextCase{77, ModifierFlag::Control, "⌃?", "Super+?"},
    TextCase{126, ModifierFlag::Option, "⌥↑", "Alt+↑"},
    TextCase{40, ModifierFlag::CapsLock, "K", "K"}));

TEST(DesktopShortcutTrigger, WrittenAsTheShortcutPortalReadsKeys)
{
    FakeKeyboardLayout layout;
    layout.characters = {{40, "k"}, {43, ","}, {18, "1"}, {12, "ß"}, {50, "é"}};
    using namespace ModifierFlag;
    const std::vector<std::pair<CustomShortcut, QString>> cases{
        {{40, Command | Shift}, "CTRL+SHIFT+k"},
        {{49, Control}, "LOGO+space"},        // Super plays Control's part
        {{122, Option}, "ALT+F1"},
        {{43, Command}, "CTRL+comma"},         // punctuation by its keysym name
        {{18, Command | Option | Shift | Control}, "CTRL+ALT+SHIFT+LOGO+1"},
        {{126, Command | CapsLock}, "CTRL+Up"}, // Caps Lock is no part of a shortcut
        {{12, Command}, ""},                   // no keysym name the portal would know
        {{50, Command}, ""},
        {{77, Command}, ""},                   // types nothing on this layout
    };
    for (const auto& [shortcut, trigger] : cases)
        EXPECT_EQ(desktopShortcutTrigger(shortcut, layout), trigger) << shortcut.keyCode;
}

} // namespace
