#include "platform/linux/xkb/xkbkeyboardlayout.h"

#include <gtest/gtest.h>

namespace {

TEST(XkbKeyboardLayout, TheLayoutNamesWhatEachPositionTypes)
{
    // Virtual key codes are US positions: 0 A, 6 Z, 12 Q, 43 comma, 49 Space.
    const XkbKeyboardLayout us(QStringLiteral("us"));
    EXPECT_EQ(us.characterForKeyCode(0), "a");
    EXPECT_EQ(us.characterForKeyCode(6), "z");
    EXPECT_EQ(us.characterForKeyCode(43), ",");
    EXPECT_EQ(us.characterForKeyCode(53), QString()); // Escape types nothing printable

    const XkbKeyboardLayout french(QStringLiteral("fr"));
    EXPECT_EQ(french.characterForKeyCode(0), "q");
    EXPECT_EQ(french.characterForKeyCode(12), "a");

    EXPECT_EQ(us.keyCodeForScanCode(38), 0);
    EXPECT_EQ(us.keyCodeForScanCode(3), std::nullopt);
}

} // namespace
