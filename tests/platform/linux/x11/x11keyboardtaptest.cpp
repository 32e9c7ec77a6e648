#include "platform/linux/x11/x11keyboardtap.h"

#include <gtest/gtest.h>

namespace {

// Positions (Linux input codes)
constexpr int kSuper = 125, kRightSuper = 126, kCtrl = 29, kRightCtrl = 97, kAlt = 56, kShift = 42, kCaps = 58,
              kK = 37, kSpace = 57, kF1 = 59;

using Kind = KeyEvent::Kind;

bool same(const std::optional<KeyEvent>& e, Kind kind, Modifiers held, quint16 position = 0)
{
    return e && *e == KeyEvent{kind, held, position};
}

TEST(X11KeyboardTap, ModifiersBecomeChangesOfWhatIsHeldAndKeysKeyDowns)
{
    X11KeyboardTap tap;
    EXPECT_TRUE(same(tap.translate(kCtrl, true), Kind::modifiersChanged, Modifier::ctrl));
    EXPECT_TRUE(same(tap.translate(kCtrl, false), Kind::modifiersChanged, {}));
    EXPECT_FALSE(tap.translate(kCtrl, false)); // a repeated release of a key already up

    EXPECT_TRUE(same(tap.translate(kSuper, true), Kind::modifiersChanged, Modifier::super));
    EXPECT_TRUE(same(tap.translate(kAlt, true), Kind::modifiersChanged, Modifier::super | Modifier::alt));
    EXPECT_TRUE(same(tap.translate(kK, true), Kind::keyDown, Modifier::super | Modifier::alt, kK));
    EXPECT_FALSE(tap.translate(kK, true));  // no second key-down while held
    EXPECT_FALSE(tap.translate(kK, false)); // releases of keys are not events
    EXPECT_TRUE(same(tap.translate(kShift, true), Kind::modifiersChanged, Modifier::super | Modifier::alt | Modifier::shift));
    EXPECT_TRUE(same(tap.translate(kSpace, true), Kind::keyDown, Modifier::super | Modifier::alt | Modifier::shift, kSpace));
}

TEST(X11KeyboardTap, EachModifierHeldUntilBothOfItsKeysAreUp)
{
    const std::vector<std::tuple<int, int, Modifier>> pairs{
        {kCtrl, kRightCtrl, Modifier::ctrl},
        {kSuper, kRightSuper, Modifier::super},
    };
    for (const auto& [left, right, modifier] : pairs) {
        X11KeyboardTap tap;
        tap.translate(left, true);
        EXPECT_TRUE(same(tap.translate(right, true), Kind::modifiersChanged, modifier)) << left;
        EXPECT_TRUE(same(tap.translate(left, false), Kind::modifiersChanged, modifier)) << left;
        EXPECT_TRUE(same(tap.translate(right, false), Kind::modifiersChanged, {})) << left;
    }
}

// Caps Lock is a modifier key but no part of a shortcut.
TEST(X11KeyboardTap, CapsLockHoldsNothing)
{
    X11KeyboardTap tap;
    EXPECT_TRUE(same(tap.translate(kCaps, true), Kind::modifiersChanged, {}));
    EXPECT_TRUE(same(tap.translate(kCaps, false), Kind::modifiersChanged, {}));
    EXPECT_TRUE(same(tap.translate(kF1, true), Kind::keyDown, {}, kF1));
}

} // namespace
