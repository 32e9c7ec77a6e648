#include "search/usagetracker.h"
#include "support/tempsettings.h"

#include <gtest/gtest.h>

namespace {

QVariantMap storedUsage(TempSettings& settings)
{
    return settings.reopened()->dictionaryValue(SettingsKey::menuItemUsage).value_or(QVariantMap{{"absent", true}});
}

TEST(UsageTracker, CountsPerApplicationAndPathAndWritesEveryChange)
{
    TempSettings settings;
    UsageTracker tracker(settings.store());
    tracker.recordUsage("org.editor", "File → Save");
    tracker.recordUsage("org.editor", "File → Save");
    tracker.recordUsage("org.viewer", "File → Save");

    EXPECT_EQ(tracker.count("org.editor", "File → Save"), 2);
    EXPECT_EQ(tracker.count("org.viewer", "File → Save"), 1);
    EXPECT_EQ(tracker.count("org.viewer", "File → Open"), 0);
    EXPECT_EQ(tracker.count("org.other", "File → Save"), 0);
    EXPECT_EQ(storedUsage(settings), (QVariantMap{
        {"org.editor", QVariantMap{{"File → Save", 2}}},
        {"org.viewer", QVariantMap{{"File → Save", 1}}},
    }));
    EXPECT_EQ(UsageTracker(*settings.reopened()).usageData(), tracker.usageData());
}

TEST(UsageTracker, ResetStoresAnEmptyDictionary)
{
    TempSettings settings;
    UsageTracker tracker(settings.store());
    tracker.recordUsage("unknown", "Edit → Copy");
    tracker.resetUsage();
    EXPECT_EQ(tracker.count("unknown", "Edit → Copy"), 0);
    EXPECT_TRUE(settings.store().contains(SettingsKey::menuItemUsage));
    EXPECT_EQ(storedUsage(settings), QVariantMap{});
}

struct ShapeCase {
    const char* name;
    QVariant stored;
    bool accepted;
};

class UsageTrackerShape : public testing::TestWithParam<ShapeCase> {};

TEST_P(UsageTrackerShape, LoadsOnlyTextToIntegerDictionaries)
{
    TempSettings settings;
    settings.store().setObject(SettingsKey::menuItemUsage, GetParam().stored);
    UsageTracker tracker(*settings.reopened());
    EXPECT_EQ(tracker.count("org.a", "File → Save"), GetParam().accepted ? 3 : 0);
    // The stored value stays as it was until the next write replaces it.
    EXPECT_EQ(settings.reopened()->object(SettingsKey::menuItemUsage), settings.store().object(SettingsKey::menuItemUsage));
}

INSTANTIATE_TEST_SUITE_P(Shapes, UsageTrackerShape, testing::Values(
    ShapeCase{"valid", QVariantMap{{"org.a", QVariantMap{{"File → Save", 3}}}, {"org.b", QVariantMap{}}}, true},
    ShapeCase{"wholeNumberAsDouble", QVariantMap{{"org.a", QVariantMap{{"File → Save", 3.0}}}}, true},
    ShapeCase{"oneAppNotADictionary", QVariantMap{{"org.a", QVariantMap{{"File → Save", 3}}}, {"org.b", 5}}, false},
    ShapeCase{"countIsText", QVariantMap{{"org.a", QVariantMap{{"File → Save", "3"}}}}, false},
    ShapeCase{"countIsFraction", QVariantMap{{"org.a", QVariantMap{{"File → Save", 3.5}}}}, false},
    ShapeCase{"countIsBoolean", QVariantMap{{"org.a", QVariantMap{{"File → Save", true}}}}, false},
    ShapeCase{"notADictionary", QVariantList{1, 2}, false}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(UsageTracker, ABadShapeIsReplacedByTheNextPress)
{
    TempSettings settings;
    settings.store().setObject(SettingsKey::menuItemUsage, QVariantMap{{"org.a", "junk"}, {"org.b", QVariantMap{{"X", 9}}}});
    UsageTracker tracker(settings.store());
    tracker.recordUsage("org.c", "View → Zoom");
    EXPECT_EQ(storedUsage(settings), (QVariantMap{{"org.c", QVariantMap{{"View → Zoom", 1}}}}));
}

} // namespace
