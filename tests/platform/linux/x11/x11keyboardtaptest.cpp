#include "hotkey/hotkeymode.h"
#include "platform/linux/evdev/evdevkeymap.h"
#include "platform/linux/x11/x11keyboardtap.h"

#include <gtest/gtest.h>

namespace {

using namespace ModifierFlag;

// evdev codes
constexpr int kSuper = 125, kRightSuper = 126, kCtrl = 29, kRightCtrl = 97, kAlt = 56, kShift = 42, kCaps = 58, kK = 37, kSpace = 57,
              kF1 = 59;

bool same(const std::optional<KeyEvent>& e, int type, quint64 flags, quint16 code = 0)
{
    return e && e->type == type && e->flags == flags && e->keyCode == code;
}

TEST(X11KeyboardTap, ModifiersBecomeFlagChangesAndKeysKeyDowns)
{
    X11KeyboardTap tap;
    // Ctrl plays Command's part, Super Control's.
    EXPECT_TRUE(same(tap.translate(kCtrl, true), KeyEvent::flagsChanged, Command));
    EXPECT_TRUE(same(tap.translate(kCtrl, false), KeyEvent::flagsChanged, 0));
    EXPECT_FALSE(tap.translate(kCtrl, false)); // a repeated release of a key already up

    EXPECT_TRUE(same(tap.translate(kSuper, true), KeyEvent::flagsChanged, Control));
    EXPECT_TRUE(same(tap.translate(kAlt, true), KeyEvent::flagsChanged, Control | Option));
    EXPECT_TRUE(same(tap.translate(kK, true), KeyEvent::keyDown, Control | Option, 40));
    EXPECT_FALSE(tap.translate(kK, true)); // no second key-down while held
    EXPECT_FALSE(tap.translate(kK, false)); // releases of keys are not events
    EXPECT_TRUE(same(tap.translate(kShift, true), KeyEvent::flagsChanged, Control | Option | Shift));
    EXPECT_TRUE(same(tap.translate(kSpace, true), KeyEvent::keyDown, Control | Option | Shift, 49));
}

TEST(X11KeyboardTap, EachModifierHeldUntilBothOfItsKeysAreUp)
{
    const std::vector<std::tuple<int, int, quint64>> pairs{
        {kCtrl, kRightCtrl, Command},
        {kSuper, kRightSuper, Control},
    };
    for (const auto& [left, right, flag] : pairs) {
        X11KeyboardTap tap;
        tap.translate(left, true);
        EXPECT_TRUE(same(tap.translate(right, true), KeyEvent::flagsChanged, flag)) << left;
        EXPECT_TRUE(same(tap.translate(left, false), KeyEvent::flagsChanged, flag)) << left;
        EXPECT_TRUE(same(tap.translate(right, false), KeyEvent::flagsChanged, 0)) << left;
    }
}

TEST(X11KeyboardTap, CapsLockTogglesItsBit)
{
    X11KeyboardTap tap;
    EXPECT_TRUE(same(tap.translate(kCaps, true), KeyEvent::flagsChanged, CapsLock));
    EXPECT_TRUE(same(tap.translate(kCaps, false), KeyEvent::flagsChanged, CapsLock));
    EXPECT_TRUE(same(tap.translate(kF1, true), KeyEvent::keyDown, CapsLock, 122));
    tap.translate(kCaps, true);
    EXPECT_TRUE(same(tap.translate(kCaps, false), KeyEvent::flagsChanged, 0));
}

TEST(EvdevKeyMap, UsPositionsBothWays)
{
    const std::vector<std::pair<int, quint16>> table{
        {30, 0}, {31, 1}, {37, 40}, {57, 49}, {28, 36}, {1, 53}, {14, 51}, {111, 117},
        {59, 122}, {60, 120}, {88, 111}, {105, 123}, {106, 124}, {108, 125}, {103, 126}, {102, 115},
    };
    for (const auto& [evdev, virtualKey] : table) {
        EXPECT_EQ(EvdevKeyMap::virtualKeyCode(evdev), virtualKey) << evdev;
        EXPECT_EQ(EvdevKeyMap::evdevCode(virtualKey), evdev) << virtualKey;
    }
    // A key without a US position keeps a code of its own.
    EXPECT_EQ(EvdevKeyMap::virtualKeyCode(240), 0x1000 + 240);
    EXPECT_EQ(EvdevKeyMap::evdevCode(0x1000 + 240), 240);
    EXPECT_EQ(EvdevKeyMap::evdevCode(52), std::nullopt); // no key has that position
}

} // namespace
