#include "platform/linux/sway/swaybinding.h"

#include <gtest/gtest.h>

namespace {

TEST(SwayBinding, TheLineForSwaysConfiguration)
{
    for (const auto& [trigger, line] : {
             std::pair{"CTRL+ALT+space", "bindsym Ctrl+Mod1+space exec kestrio --toggle"},
             std::pair{"LOGO+SHIFT+k", "bindsym Mod4+Shift+k exec kestrio --toggle"},
             std::pair{"F5", "bindsym F5 exec kestrio --toggle"},
             std::pair{"CTRL+", ""},
             std::pair{"HYPER+k", ""},
         }) {
        EXPECT_EQ(swayBindsym(trigger, "kestrio --toggle"), line) << trigger;
    }
}

} // namespace
