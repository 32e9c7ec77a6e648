#include "platform/linux/sway/swaybinding.h"
#include "support/desktopkeys.h"

#include <gtest/gtest.h>

namespace {

TEST(SwayBinding, TheLineForSwaysConfiguration)
{
    for (const auto& [keys, line] : {
             std::pair{"CTRL+ALT+space", "bindsym Ctrl+Mod1+space exec kestrio --toggle"},
             std::pair{"LOGO+SHIFT+k", "bindsym Shift+Mod4+k exec kestrio --toggle"},
             std::pair{"SHIFT+LOGO+ALT+CTRL+comma", "bindsym Ctrl+Mod1+Shift+Mod4+comma exec kestrio --toggle"},
             std::pair{"F5", "bindsym F5 exec kestrio --toggle"},
         }) {
        EXPECT_EQ(swayBindsym(desktopKeys(keys), "kestrio --toggle"), line) << keys;
    }
}

} // namespace
