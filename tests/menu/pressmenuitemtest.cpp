#include "menu/pressmenuitem.h"

#include "menu/menuitem.h"
#include "platform/fake/fakeaccessibility.h"
#include "search/usagetracker.h"
#include "support/tempsettings.h"

#include <gtest/gtest.h>

namespace {

struct PressCase {
    const char* name;
    std::optional<AttributeRead> enabled; // nothing: the element has no attribute at all
    AccessibilityError pressResult;
    bool vanished;
    bool expectedResult;
    int expectedPresses;
};

class PressMenuItem : public testing::TestWithParam<PressCase> {};

TEST_P(PressMenuItem, PressesAndRecordsOnlyRealSuccess)
{
    const PressCase& c = GetParam();
    TempSettings settings;
    UsageTracker tracker(settings.store());
    FakeAccessibility ax;
    auto element = FakeElement::item("Save");
    element->attributes.remove(AXName::enabled);
    if (c.enabled)
        element->attributes.insert(AXName::enabled, *c.enabled);
    element->pressResult = c.pressResult;
    element->vanished = c.vanished;
    const MenuItem item{QUuid::createUuid(), "Save", {"File", "Save"}, "⌘S", true, "Editor", "org.editor", element};

    EXPECT_EQ(pressMenuItem(item, ax, tracker), c.expectedResult);
    EXPECT_EQ(element->pressCount, c.expectedPresses);
    EXPECT_EQ(tracker.count("org.editor", "File → Save"), c.expectedResult ? 1 : 0);
}

const AttributeRead yes{AccessibilityError::success, true};
const AttributeRead no{AccessibilityError::success, false};

INSTANTIATE_TEST_SUITE_P(States, PressMenuItem, testing::Values(
    PressCase{"enabled", yes, AccessibilityError::success, false, true, 1},
    PressCase{"disabledIsPressedButNotCounted", no, AccessibilityError::success, false, false, 1},
    PressCase{"missingStateCountsAsEnabled", AttributeRead{AccessibilityError::success, {}}, AccessibilityError::success, false, true, 1},
    PressCase{"nonBooleanStateCountsAsEnabled", AttributeRead{AccessibilityError::success, qint64(0)}, AccessibilityError::success, false, true, 1},
    PressCase{"stateReadError", AttributeRead{AccessibilityError::cannotComplete, {}}, AccessibilityError::success, false, false, 0},
    PressCase{"noSuchAttribute", std::nullopt, AccessibilityError::success, false, false, 0},
    PressCase{"pressRefused", yes, AccessibilityError::cannotComplete, false, false, 1},
    PressCase{"vanishedElement", yes, AccessibilityError::success, true, false, 0}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(PressMenuItem, CountsUnderUnknownWithoutBundleAndAddsUp)
{
    TempSettings settings;
    UsageTracker tracker(settings.store());
    FakeAccessibility ax;
    MenuItem item{QUuid::createUuid(), "Copy", {"Edit", "Copy"}, std::nullopt, true, "Editor", std::nullopt, FakeElement::item("Copy")};
    EXPECT_TRUE(pressMenuItem(item, ax, tracker));
    EXPECT_TRUE(pressMenuItem(item, ax, tracker));
    EXPECT_EQ(tracker.count("unknown", "Edit → Copy"), 2);

    item.axElement.reset();
    EXPECT_FALSE(pressMenuItem(item, ax, tracker));
    EXPECT_EQ(tracker.count("unknown", "Edit → Copy"), 2);
}

} // namespace
