#include "platform/fake/fakekeyboardlayout.h"
#include "platform/linux/xkb/desktopkeys.h"

#include <gtest/gtest.h>

namespace {

// The recorded shortcut in the words desktops bind keys with: X keysym names,
// a key known by its position named by what it types on the layout.
TEST(DesktopKeys, ChordsAreNamedAsDesktopsNameKeys)
{
    FakeKeyboardLayout layout;
    layout.characters = {{37, "k"}, {51, ","}, {2, "1"}, {16, "ß"}, {39, "é"}};
    struct Case {
        KeyChord chord;
        QString trigger; // as the shortcut portal writes it; empty: no name
    };
    const Modifiers all = Modifier::ctrl | Modifier::alt | Modifier::shift | Modifier::super;
    const Case cases[]{
        {{Modifier::ctrl | Modifier::shift, Key::at(37)}, "CTRL+SHIFT+k"},
        {{Modifier::super, Key::at(57)}, "LOGO+space"},
        {{Modifier::alt, Key::at(59)}, "ALT+F1"},
        {{Modifier::ctrl, Key::at(51)}, "CTRL+comma"}, // punctuation by its keysym name
        {{all, Key::at(2)}, "CTRL+ALT+SHIFT+LOGO+1"},
        {{Modifier::ctrl, Key::at(103)}, "CTRL+Up"},
        {{Modifier::ctrl, Key::at(16)}, "CTRL+ssharp"},
        {{Modifier::ctrl, Key::at(39)}, "CTRL+eacute"},
        {{Modifier::ctrl, Key{0, std::nullopt, "+"}}, "CTRL+plus"}, // a key known by what it types
        {{Modifier::ctrl, Key::at(77)}, ""},                        // types nothing on this layout
    };
    for (const Case& c : cases) {
        const std::optional<DesktopKeys> keys = DesktopKeys::of(c.chord, layout);
        EXPECT_EQ(keys ? keys->portalTrigger() : QString(), c.trigger) << c.trigger.toStdString();
    }
}

} // namespace
