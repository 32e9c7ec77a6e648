#include "menu/shortcuttext.h"
#include "platform/linux/atspi/keybinding.h"

#include <gtest/gtest.h>

namespace {

// The text a menu row shows for a toolkit's key binding, "" for none.
QString shown(const QString& binding, const QString& itemName = "Item")
{
    const auto key = translateKeyBinding(binding, itemName);
    if (!key)
        return {};
    if (key->character)
        return menuShortcutText(*key->character, key->modifiers);
    return menuShortcutText(key->virtualKey.value_or(-1), key->modifiers);
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
    Case{"s;<Alt>f:s;<Primary>s", "Save", "⌃S"},
    Case{"a;<Alt>f:a;<Primary><Shift>s", "Save As", "⌃⇧S"},
    Case{"l;<Alt>e:l;<Primary><Shift>Delete", "Delete Line", "⌃⇧⌦"},
    Case{"u;<Alt>e:m:u;<Alt>Up", "Line Up", "⌥↑"},
    Case{"f;<Alt>v:f;F11", "Fullscreen", "F11"},
    Case{"o;<Alt>e:r:o;<Primary><Alt>u", "Opposite Case", "⌃⌥U"},
    Case{"p;<Alt>i:p;<Primary>Return", "Page Break", "⌃⏎"},
    Case{"n;<Alt>i:g:n;<Primary><Shift>space", "No-break Space", "⌃⇧Space"},
    Case{"r;<Alt>f:r;", "Reload", ""},             // no accelerator
    Case{";;", "Nothing", ""},
    Case{"x;<Alt>e:x;<Control>plus", "Zoom In", "⌃+"},
    Case{"x;<Alt>e:x;<Primary>KP_Add", "Zoom In", "⌃+"},
    Case{"x;<Alt>e:x;<Super>k", "Super", "⌘K"},
    Case{"x;<Alt>e:x;<Primary>Page_Down", "Next", "⌃⇟"},
    Case{"x;<Alt>e:x;<Primary>udiaeresis", "Umlaut", "⌃Ü"},
    Case{"x;<Alt>e:x;<Primary>NoSuchKey", "Odd", ""},
    Case{"x;<Alt>e:x;<Primary", "Broken", ""},
    Case{"<Primary>q", "Quit", "⌃Q"}));

INSTANTIATE_TEST_SUITE_P(Qt, KeyBindingText, testing::Values(
    Case{"Ctrl+N", "New", "⌃N"},
    Case{"Ctrl+Shift+S", "Save As", "⌃⇧S"},
    Case{"F1", "Help", "F1"},
    Case{"Alt+Right", "Next Tab", "⌥→"},
    Case{"Ctrl+Alt+P", "Side-Pane", "⌃⌥P"},
    Case{"Alt+F", "File", ""},                       // the mnemonic of an item without a shortcut
    Case{"Alt+U", "UTF-8", ""},
    Case{"Alt+Q", "Paste", "⌥Q"},                    // not a letter of the title: a real shortcut
    Case{"Ctrl++", "Zoom In", "⌃+"},
    Case{"Ctrl+-", "Zoom Out", "⌃-"},
    Case{"Meta+Space", "Launcher", "⌘Space"},
    Case{"Ctrl+Del", "Delete", "⌃⌦"},
    Case{"Ctrl+K, Ctrl+C", "Comment", "⌃K"},
    Case{"Shift+F3", "Find Previous", "⇧F3"},
    Case{"Hyper+X", "Odd", ""},
    Case{"Ctrl+Launch Mail", "Odd", ""},
    Case{"", "Empty", ""}));

TEST(KeyBinding, CharactersAndVirtualKeysAreKeptApart)
{
    EXPECT_EQ(translateGtkAccelerator("<Primary><Shift>s"), (MenuKeyEquivalent{4 | 1 | 8, "s", std::nullopt}));
    EXPECT_EQ(translateGtkAccelerator("<Alt>Up"), (MenuKeyEquivalent{2 | 8, std::nullopt, 126}));
    EXPECT_EQ(translateQtShortcut("Ctrl+Shift+S", "Save As"), (MenuKeyEquivalent{4 | 1 | 8, "S", std::nullopt}));
}

} // namespace
