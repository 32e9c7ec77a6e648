#include "platform/linux/gnome/gnomekeybindings.h"
#include "support/desktopkeys.h"

#include <gtest/gtest.h>

namespace {

using namespace GnomeKeybindings;

TEST(GnomeKeybindings, KestriosShortcutInGnomesWords)
{
    for (const auto& [trigger, accelerator, read] : {
             std::tuple{"CTRL+ALT+space", "<Control><Alt>space", "Ctrl+Alt+Space"},
             std::tuple{"CTRL+SHIFT+k", "<Control><Shift>k", "Ctrl+Shift+K"},
             std::tuple{"LOGO+F5", "<Super>F5", "Super+F5"},
             std::tuple{"ALT+Page_Up", "<Alt>Page_Up", "Alt+Page Up"},
         }) {
        SCOPED_TRACE(trigger);
        EXPECT_EQ(acceleratorOf(desktopKeys(trigger)), accelerator);
        EXPECT_EQ(readable(accelerator), read);
    }
}

// The same keys written another way are the same shortcut.
TEST(GnomeKeybindings, AcceleratorsCompareByTheirKeys)
{
    EXPECT_EQ(canonical("<Primary><Alt>Space"), canonical("<Alt><Control>space"));
    EXPECT_EQ(canonical("<Ctrl><Mod1>space"), canonical("<Control><Alt>space"));
    EXPECT_NE(canonical("<Control><Alt>space"), canonical("<Control><Alt><Shift>space"));
    EXPECT_NE(canonical("<Super>space"), canonical("<Control>space"));
    EXPECT_EQ(canonical("<Bogus>k"), "");
    EXPECT_EQ(canonical(""), "");
    EXPECT_EQ(canonical("<Control>"), "");
}

TEST(GnomeKeybindings, ValuesAsGsettingsPrintsThem)
{
    EXPECT_EQ(texts("['<Super>space', 'XF86Keyboard']"), (QStringList{"<Super>space", "XF86Keyboard"}));
    EXPECT_EQ(texts("'<Super>s'"), QStringList{"<Super>s"});
    EXPECT_EQ(texts("@as []"), QStringList{});
    EXPECT_EQ(texts("['it\\'s', \"a, b\"]"), (QStringList{"it's", "a, b"}));
    EXPECT_FALSE(texts("true"));
    EXPECT_FALSE(texts("uint32 5"));
    EXPECT_FALSE(texts("['unclosed"));
    EXPECT_FALSE(texts("'a' 'b'"));
    // What is written reads back the same.
    const QStringList awkward{"/a/", "it's", "back\\slash"};
    EXPECT_EQ(texts(printed(awkward)), awkward);
    EXPECT_EQ(printed(QStringList{}), "[]");
}

// GNOME's own shortcuts, as `gsettings list-recursively` prints them: Super+Space
// switches input sources, and a shortcut already taken is named for the user.
TEST(GnomeKeybindings, AShortcutGnomeHoldsIsFoundAndNamed)
{
    const QString listing =
        "org.gnome.desktop.wm.keybindings activate-window-menu ['<Alt>space']\n"
        "org.gnome.desktop.wm.keybindings always-on-top @as []\n"
        "org.gnome.desktop.wm.keybindings switch-input-source ['<Super>space', 'XF86Keyboard']\n"
        "org.gnome.shell.keybindings toggle-overview ['<Super>s']\n"
        "org.gnome.settings-daemon.plugins.media-keys volume-step 6\n"
        "org.gnome.settings-daemon.plugins.media-keys screensaver ['<Super>l']\n";
    const auto input = holderIn(listing, "<Super>space");
    ASSERT_TRUE(input);
    EXPECT_EQ(input->key, "switch-input-source");
    EXPECT_EQ(describe(*input), "GNOME's shortcut for “Switch input source”");
    EXPECT_EQ(holderIn(listing, "<Mod4>S")->key, "toggle-overview");
    EXPECT_FALSE(holderIn(listing, "<Control><Alt>space"));
    EXPECT_FALSE(holderIn(listing, "nonsense<"));
    EXPECT_EQ(describe({"", "Terminal", true}), "your custom shortcut “Terminal”");
}

// Kestrio's entry is added once and taken out alone: the user's others stay, in order.
TEST(GnomeKeybindings, OnlyKestriosOwnEntryIsAddedOrRemoved)
{
    const QString own = kOwnPath;
    const QStringList others{"/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/custom0/",
                             "/org/gnome/settings-daemon/plugins/media-keys/custom-keybindings/custom1/"};
    EXPECT_EQ(withOwn(others), others + QStringList{own});
    EXPECT_EQ(withOwn(withOwn(others)), others + QStringList{own});
    EXPECT_EQ(withoutOwn(QStringList{others[0], own, others[1]}), others);
    EXPECT_EQ(withoutOwn(others), others);
}

} // namespace
