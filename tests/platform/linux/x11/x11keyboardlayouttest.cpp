#include "platform/linux/x11/x11keyboardlayout.h"

#include <gtest/gtest.h>

namespace {

TEST(X11KeyboardLayout, ScanCodesAreEvdevCodesPlusEight)
{
    const X11KeyboardLayout layout;
    EXPECT_EQ(layout.keyCodeForScanCode(38), 0);   // A
    EXPECT_EQ(layout.keyCodeForScanCode(65), 49);  // Space
    EXPECT_EQ(layout.keyCodeForScanCode(9), 53);   // Escape
    EXPECT_EQ(layout.keyCodeForScanCode(22), 51);  // BackSpace, the Mac's Delete
    EXPECT_EQ(layout.keyCodeForScanCode(0), std::nullopt); // no scan code: a synthetic event
    EXPECT_EQ(layout.keyCodeForScanCode(300), std::nullopt);
}

} // namespace
