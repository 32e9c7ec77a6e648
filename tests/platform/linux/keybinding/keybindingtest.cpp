#include "menu/shortcuttext.h"
#include "platform/linux/keybinding/keybinding.h"

#include <gtest/gtest.h>

namespace {

QString shown(const std::optional<KeyChord>& key)
{
    return key ? shortcutText(*key, PlatformWords::linuxDesktop().keys) : QString();
}

// The text a menu row shows for a toolkit's key binding, "" for none.
QString shown(const QString& binding, const QString& itemName = "Item")
{
    return shown(translateKeyBinding(binding, itemName));
}

struct Case {
    const char* binding;
    const char* itemName;
    QString expected;
};

class KeyBindingText : public testing::TestWithParam<Case> {};

TEST_P(KeyBindingText, ShowsWhatTheMenuShows)
{
    EXPECT_EQ(shown(GetParam().binding, GetParam().itemName), GetParam().expected) << GetParam().binding;
}

INSTANTIATE_TEST_SUITE_P(Gtk, KeyBindingText, testing::Values(
    Case{"s;<Alt>f:s;<Primary>s", "Save", "Ctrl+S"},
    Case{"a;<Alt>f:a;<Primary><Shift>s", "Save As", "Ctrl+Shift+S"},
    Case{"l;<Alt>e:l;<Primary><Shift>Delete", "Delete Line", "Ctrl+Shift+Del"},
    Case{"u;<Alt>e:m:u;<Alt>Up", "Line Up", "Alt+↑"},
    Case{"f;<Alt>v:f;F11", "Fullscreen", "F11"},
    Case{"o;<Alt>e:r:o;<Primary><Alt>u", "Opposite Case", "Ctrl+Alt+U"},
    Case{"p;<Alt>i:p;<Primary>Return", "Page Break", "Ctrl+Return"},
    Case{"n;<Alt>i:g:n;<Primary><Shift>space", "No-break Space", "Ctrl+Shift+Space"},
    Case{"r;<Alt>f:r;", "Reload", ""},             // no accelerator
    Case{";;", "Nothing", ""},
    Case{"x;<Alt>e:x;<Control>plus", "Zoom In", "Ctrl++"},
    Case{"x;<Alt>e:x;<Primary>KP_Add", "Zoom In", "Ctrl++"},
    Case{"x;<Alt>e:x;<Super>k", "Super", "Super+K"},
    Case{"x;<Alt>e:x;<Primary>Page_Down", "Next", "Ctrl+PgDown"},
    Case{"x;<Alt>e:x;<Primary>udiaeresis", "Umlaut", "Ctrl+Ü"},
    Case{"x;<Alt>e:x;<Primary>NoSuchKey", "Odd", ""},
    Case{"x;<Alt>e:x;<Primary", "Broken", ""},
    Case{"<Primary>q", "Quit", "Ctrl+Q"}));

INSTANTIATE_TEST_SUITE_P(Qt, KeyBindingText, testing::Values(
    Case{"Ctrl+N", "New", "Ctrl+N"},
    Case{"Ctrl+Shift+S", "Save As", "Ctrl+Shift+S"},
    Case{"F1", "Help", "F1"},
    Case{"Alt+Right", "Next Tab", "Alt+→"},
    Case{"Ctrl+Alt+P", "Side-Pane", "Ctrl+Alt+P"},
    Case{"Alt+F", "File", ""},                       // the mnemonic of an item without a shortcut
    Case{"Alt+U", "UTF-8", ""},
    Case{"Alt+Q", "Paste", "Alt+Q"},                    // not a letter of the title: a real shortcut
    Case{"Ctrl++", "Zoom In", "Ctrl++"},
    Case{"Ctrl+-", "Zoom Out", "Ctrl+-"},
    Case{"Meta+Space", "Launcher", "Super+Space"},
    Case{"Ctrl+Del", "Delete", "Ctrl+Del"},
    Case{"Ctrl+K, Ctrl+C", "Comment", "Ctrl+K"},
    Case{"Shift+F3", "Find Previous", "Shift+F3"},
    Case{"Hyper+X", "Odd", ""},
    Case{"Ctrl+Launch Mail", "Odd", ""},
    Case{"", "Empty", ""}));

// Shortcuts as items draw them in their own text, for items whose key binding
// reports none.
TEST(KeyBinding, DrawnShortcutsReadLikeReportedOnes)
{
    const std::pair<const char*, QString> cases[]{
        {"Ctrl+S", "Ctrl+S"},
        {"Shift+Ctrl+Z", "Ctrl+Shift+Z"},
        {"ctrl+shift+s", "Ctrl+Shift+S"},
        {"Ctrl-O", "Ctrl+O"},
        {"Ctrl + W", "Ctrl+W"},
        {"Ctrl+Page Up", "Ctrl+PgUp"},
        {"Alt+F4", "Alt+F4"},
        {"F5", "F5"},
        {"Del", "Del"},
        {"Ctrl++", "Ctrl++"},
        {"Ctrl+-", "Ctrl+-"},
        {"Ctrl+Plus", "Ctrl++"},
        {"Super+↑", "Super+↑"},
        {"Meta+K", "Super+K"},
        {"^R", "Ctrl+R"},
        {"C-s", "Ctrl+S"},
        {"M-x", "Alt+X"},
        {"C-M-%", "Ctrl+Alt+%"},
        {"Ctrl+Ü", "Ctrl+Ü"},
        // Not one shortcut: sequences, commands, keys that type, nothing.
        {"C-x C-s", ""},
        {"Ctrl+K, Ctrl+C", ""},
        {":w", ""},
        {"\"+y", ""},
        {"ggVG", ""},
        {"u", ""},
        {"Ctrl+", ""},
        {"Ctrl+Launch Mail", ""},
        {"", ""},
    };
    for (const auto& [drawn, expected] : cases)
        EXPECT_EQ(shown(translateDrawnShortcut(drawn)), expected) << drawn;

    const NameAndShortcut split = splitDrawnShortcut("Open…\tCtrl+O");
    EXPECT_EQ(split.name, "Open…");
    EXPECT_EQ(shown(split.key), "Ctrl+O");
    EXPECT_EQ(splitDrawnShortcut("Save\t:w").name, "Save");
    EXPECT_FALSE(splitDrawnShortcut("Save\t:w").key);
    EXPECT_EQ(splitDrawnShortcut("  New    ").name, "New");
}

TEST(KeyBinding, NamedKeysAndCharactersAreKeptApart)
{
    EXPECT_EQ(translateGtkAccelerator("<Primary><Shift>s"),
              (KeyChord{Modifier::ctrl | Modifier::shift, Key{0, std::nullopt, "s"}}));
    EXPECT_EQ(translateGtkAccelerator("<Alt>Up"), (KeyChord{Modifier::alt, Key{0, NamedKey::up, {}}}));
    EXPECT_EQ(translateGtkAccelerator("<Primary>F12"), (KeyChord{Modifier::ctrl, Key{0, functionKey(12), {}}}));
    EXPECT_EQ(translateQtShortcut("Ctrl+Shift+S", "Save As"),
              (KeyChord{Modifier::ctrl | Modifier::shift, Key{0, std::nullopt, "S"}}));
    // GTK's Super and Qt's Meta are the same key.
    EXPECT_EQ(translateGtkAccelerator("<Super>k"), (KeyChord{Modifier::super, Key{0, std::nullopt, "k"}}));
    EXPECT_EQ(translateQtShortcut("Meta+Ctrl+K", "Odd"),
              (KeyChord{Modifier::super | Modifier::ctrl, Key{0, std::nullopt, "K"}}));
}

} // namespace
