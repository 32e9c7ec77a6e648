#include "platform/linux/x11/x11keyboardlayout.h"

#include <gtest/gtest.h>

namespace {

TEST(X11KeyboardLayout, ScanCodesArePositionsPlusEight)
{
    const X11KeyboardLayout layout;
    EXPECT_EQ(layout.positionOfScanCode(38), 30);  // A
    EXPECT_EQ(layout.positionOfScanCode(65), 57);  // Space
    EXPECT_EQ(layout.positionOfScanCode(9), 1);    // Escape
    EXPECT_EQ(layout.positionOfScanCode(22), 14);  // BackSpace
    EXPECT_EQ(layout.positionOfScanCode(0), std::nullopt); // no scan code: a synthetic event
    EXPECT_EQ(layout.positionOfScanCode(300), std::nullopt);
}

} // namespace
