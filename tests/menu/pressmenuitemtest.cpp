#include "menu/pressmenuitem.h"

#include "menu/menuitem.h"
#include "platform/fake/fakeaccessibility.h"

#include <gtest/gtest.h>

namespace {

struct PressCase {
    const char* name;
    std::optional<bool> enabled; // as the item answers when asked again; nothing: gone or silent
    bool pressResult;
    bool expectedResult;
    int expectedPresses;
};

class PressMenuItem : public testing::TestWithParam<PressCase> {};

// A press counts as a use only when an enabled item was pressed; a disabled
// one is pressed all the same, as its menu would let it be clicked.
TEST_P(PressMenuItem, PressesAndCountsOnlyRealSuccess)
{
    const PressCase& c = GetParam();
    FakeAccessibility ax;
    const MenuNode node = FakeMenus::item("Save");
    FakeMenuItem& handle = FakeMenus::handleOf(node);
    handle.enabled = c.enabled;
    handle.pressResult = c.pressResult;
    const MenuItem item{QUuid::createUuid(), "Save", {"File", "Save"}, "Ctrl+S", true, "Editor", "org.editor", node.handle};

    EXPECT_EQ(pressMenuItem(item, ax), c.expectedResult);
    EXPECT_EQ(handle.pressCount, c.expectedPresses);
}

INSTANTIATE_TEST_SUITE_P(States, PressMenuItem, testing::Values(
    PressCase{"enabled", true, true, true, 1},
    PressCase{"disabledIsPressedButNotCounted", false, true, false, 1},
    PressCase{"goneOrSilentIsNotPressed", std::nullopt, true, false, 0},
    PressCase{"pressRefused", true, false, false, 1}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(PressMenuItem, AnItemWithoutAHandleIsNotPressed)
{
    FakeAccessibility ax;
    const MenuItem item{QUuid::createUuid(), "Copy", {"Edit", "Copy"}, std::nullopt, true, "Editor", std::nullopt, {}};
    EXPECT_FALSE(pressMenuItem(item, ax));
}

} // namespace
