#include "platform/linux/xkb/xkbkeyboardlayout.h"

#include <gtest/gtest.h>

namespace {

TEST(XkbKeyboardLayout, TheLayoutNamesWhatEachPositionTypes)
{
    // Positions are Linux input codes: 30 A, 44 Z, 16 Q, 51 comma, 1 Escape.
    const XkbKeyboardLayout us(QStringLiteral("us"));
    EXPECT_EQ(us.characterAt(30), "a");
    EXPECT_EQ(us.characterAt(44), "z");
    EXPECT_EQ(us.characterAt(51), ",");
    EXPECT_EQ(us.characterAt(1), QString()); // Escape types nothing printable
    EXPECT_EQ(us.characterAt(4000), QString()); // no such key

    const XkbKeyboardLayout french(QStringLiteral("fr"));
    EXPECT_EQ(french.characterAt(30), "q");
    EXPECT_EQ(french.characterAt(16), "a");

    EXPECT_EQ(us.positionOfScanCode(38), 30);
    EXPECT_EQ(us.positionOfScanCode(3), std::nullopt);
}

} // namespace
