#include "base/platformwords.h"
#include "hotkey/hotkeymode.h"
#include "support/tempsettings.h"

#include <gtest/gtest.h>

namespace {

TEST(HotkeyMode, RawValuesDisplayNamesAndWatchedModifiers)
{
    const QList<HotkeyMode> modes = allHotkeyModes();
    ASSERT_EQ(modes, (QList<HotkeyMode>{HotkeyMode::doubleTapCtrl, HotkeyMode::doubleTapAlt, HotkeyMode::customShortcut}));
    EXPECT_EQ(rawValue(modes[0]), "doubleTapCommand");
    EXPECT_EQ(rawValue(modes[1]), "doubleTapOption");
    EXPECT_EQ(rawValue(modes[2]), "customShortcut");
    const PlatformWords& linuxDesktop = PlatformWords::linuxDesktop();
    EXPECT_EQ(displayName(modes[0], linuxDesktop), "Double-tap Ctrl");
    EXPECT_EQ(displayName(modes[1], linuxDesktop), "Double-tap Alt");
    EXPECT_EQ(displayName(modes[2], linuxDesktop), "Custom shortcut");
    const PlatformWords& mac = PlatformWords::macOS();
    EXPECT_EQ(displayName(modes[0], mac), "Double-tap ⌘ Command");
    EXPECT_EQ(displayName(modes[1], mac), "Double-tap ⌥ Option");
    EXPECT_EQ(displayName(modes[2], mac), "Custom shortcut");
    EXPECT_EQ(watchedModifier(modes[0]), Modifier::ctrl);
    EXPECT_EQ(watchedModifier(modes[1]), Modifier::alt);
    EXPECT_EQ(watchedModifier(modes[2]), std::nullopt);
}

TEST(HotkeyMode, StoredTextMatchesExactlyOrFallsBackToTheDoubleTapOfCtrl)
{
    const std::vector<std::pair<std::optional<QString>, HotkeyMode>> table{
        {std::nullopt, HotkeyMode::doubleTapCtrl},
        {"doubleTapCommand", HotkeyMode::doubleTapCtrl},
        {"doubleTapOption", HotkeyMode::doubleTapAlt},
        {"customShortcut", HotkeyMode::customShortcut},
        {"DoubleTapOption", HotkeyMode::doubleTapCtrl},
        {"customShortcut ", HotkeyMode::doubleTapCtrl},
        {"", HotkeyMode::doubleTapCtrl},
    };
    for (const auto& [text, mode] : table)
        EXPECT_EQ(hotkeyModeFromRawValue(text), mode) << text.value_or("(absent)").toStdString();
}

TEST(HotkeyMode, SavedModeIsLoadedAgain)
{
    TempSettings settings;
    EXPECT_EQ(loadHotkeyMode(settings.store()), HotkeyMode::doubleTapCtrl);
    saveHotkeyMode(HotkeyMode::customShortcut, settings.store());
    EXPECT_EQ(settings.store().hotkeyModeText(), "customShortcut");
    EXPECT_EQ(loadHotkeyMode(*settings.reopened()), HotkeyMode::customShortcut);
}

} // namespace
