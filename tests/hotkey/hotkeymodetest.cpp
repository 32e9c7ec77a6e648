#include "hotkey/hotkeymode.h"
#include "support/tempsettings.h"

#include <gtest/gtest.h>

namespace {

TEST(HotkeyMode, RawValuesDisplayNamesAndWatchedModifiers)
{
    const QList<HotkeyMode> modes = allHotkeyModes();
    ASSERT_EQ(modes, (QList<HotkeyMode>{HotkeyMode::doubleTapCommand, HotkeyMode::doubleTapOption, HotkeyMode::customShortcut}));
    EXPECT_EQ(rawValue(modes[0]), "doubleTapCommand");
    EXPECT_EQ(rawValue(modes[1]), "doubleTapOption");
    EXPECT_EQ(rawValue(modes[2]), "customShortcut");
    EXPECT_EQ(displayName(modes[0]), "Double-tap Ctrl");
    EXPECT_EQ(displayName(modes[1]), "Double-tap Alt");
    EXPECT_EQ(displayName(modes[2]), "Custom shortcut");
    EXPECT_EQ(watchedModifier(modes[0]), 0x100000u);
    EXPECT_EQ(watchedModifier(modes[1]), 0x80000u);
    EXPECT_EQ(watchedModifier(modes[2]), std::nullopt);
}

TEST(HotkeyMode, StoredTextMatchesExactlyOrFallsBackToDoubleTapCommand)
{
    const std::vector<std::pair<std::optional<QString>, HotkeyMode>> table{
        {std::nullopt, HotkeyMode::doubleTapCommand},
        {"doubleTapCommand", HotkeyMode::doubleTapCommand},
        {"doubleTapOption", HotkeyMode::doubleTapOption},
        {"customShortcut", HotkeyMode::customShortcut},
        {"DoubleTapOption", HotkeyMode::doubleTapCommand},
        {"customShortcut ", HotkeyMode::doubleTapCommand},
        {"", HotkeyMode::doubleTapCommand},
    };
    for (const auto& [text, mode] : table)
        EXPECT_EQ(hotkeyModeFromRawValue(text), mode) << text.value_or("(absent)").toStdString();
}

TEST(HotkeyMode, SavedModeIsLoadedAgain)
{
    TempSettings settings;
    EXPECT_EQ(loadHotkeyMode(settings.store()), HotkeyMode::doubleTapCommand);
    saveHotkeyMode(HotkeyMode::customShortcut, settings.store());
    EXPECT_EQ(settings.store().hotkeyModeText(), "customShortcut");
    EXPECT_EQ(loadHotkeyMode(*settings.reopened()), HotkeyMode::customShortcut);
}

} // namespace
