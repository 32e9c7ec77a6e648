#include "base/platformwords.h"
#include "menu/accessibilityservice.h"
#include "platform/fake/fakeaccessibility.h"
#include "platform/fake/fakeclock.h"
#include "platform/fake/fakesysteminfo.h"
#include "search/searchviewmodel.h"
#include "search/usagetracker.h"
#include "support/eventually.h"
#include "support/tempsettings.h"
#include "support/testtelemetry.h"
#include "telemetry/analyticsservice.h"
#include "telemetry/crashreporter.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

namespace {

namespace E = FakeMenus;

const RunningApplication kEditor{42, "Editor", "org.editor"};

class SearchModel : public testing::Test {
protected:
    TempSettings settings;
    TestTelemetry telemetry{settings.store()};
    LoopbackHttpServer& events = telemetry.events;
    AnalyticsService& analytics = telemetry.analytics;
    UsageTracker usage{settings.store()};
    FakeAccessibility ax;
    AccessibilityService reader{ax, PlatformWords::linuxDesktop().keys};
    int dismissals = 0;
    QList<QString> pressed;
    QThread* pressedOn = nullptr;

    SearchModel()
    {
        ax.addApplication(42, E::menuBar({
            E::menu("File", {E::item("New"), E::item("Open"), E::item("Save"), E::item("Save As…"), E::item("Close")}),
            E::menu("Edit", {E::item("Copy"), E::item("Paste"), E::menu("Find", {E::item("Find…"), E::item("Find Next")})}),
        }));
    }

    std::unique_ptr<SearchViewModel> open(std::optional<RunningApplication> target = kEditor)
    {
        SearchServices services{&usage, &analytics, [this](const MenuItem& item) {
            pressed << item.pathKey();
            pressedOn = QThread::currentThread();
            return true;
        }};
        auto model = std::make_unique<SearchViewModel>(reader, target, [this] { ++dismissals; }, services);
        EXPECT_TRUE(model->isLoading());
        EXPECT_TRUE(eventually([&] { return !model->isLoading(); }));
        return model;
    }

    static QStringList titles(const SearchViewModel& model)
    {
        QStringList out;
        for (const RankedItem& r : model.filteredItems())
            out << r.item->title;
        return out;
    }

    QList<QJsonObject> sentEvents() const { return telemetry.sentEvents(); }
};

TEST_F(SearchModel, LoadsInTheBackgroundAndDelivers)
{
    auto model = open();
    EXPECT_EQ(model->menuItems().size(), 9);
    EXPECT_EQ(model->selectedIndex(), 0);
    EXPECT_EQ(titles(*model).first(), "New");
}

TEST_F(SearchModel, EmptyReadingGivesNoResultsAndKeysDoNothing)
{
    auto model = open(RunningApplication{7, "Nothing", std::nullopt});
    EXPECT_TRUE(model->menuItems().isEmpty());
    model->moveSelection(1);
    model->executeSelected();
    model->selectAndExecute(0);
    EXPECT_EQ(model->selectedIndex(), 0);
    EXPECT_EQ(dismissals, 0);
}

TEST_F(SearchModel, EmptyQueryRanksByUsageThenMenuOrder)
{
    usage.recordUsage("org.editor", "Edit → Paste");
    usage.recordUsage("org.editor", "Edit → Paste");
    usage.recordUsage("org.editor", "File → Close");
    usage.recordUsage("org.other", "File → Open");
    auto model = open();
    EXPECT_EQ(titles(*model), (QStringList{"Paste", "Close", "New", "Open", "Save", "Save As…", "Copy", "Find…", "Find Next"}));
    EXPECT_EQ(model->filteredItems()[0].score, 2); // an empty query scores the count alone

    // Usage recorded while the panel is open counts at once.
    usage.recordUsage("org.editor", "Edit → Find → Find Next");
    usage.recordUsage("org.editor", "Edit → Find → Find Next");
    usage.recordUsage("org.editor", "Edit → Find → Find Next");
    EXPECT_EQ(titles(*model).first(), "Find Next");
}

TEST_F(SearchModel, TitleScoresDoubleAndPathScoresDoNot)
{
    auto model = open();
    model->setSearchText("fo");
    const auto results = model->filteredItems();
    ASSERT_EQ(results.size(), 2u);
    EXPECT_EQ(results[0].item->title, "Open"); // through its path "file → open"
    EXPECT_EQ(results[0].score, 29);
    EXPECT_EQ(results[1].item->title, "Close"); // "file → close": no boundary before the o
    EXPECT_EQ(results[1].score, 21);

    model->setSearchText("sa");
    EXPECT_EQ(titles(*model), (QStringList{"Save", "Save As…"})); // equal scores keep menu order
    EXPECT_EQ(model->filteredItems()[0].score, 58);
    usage.recordUsage("org.editor", "File → Save As…");
    EXPECT_EQ(titles(*model), (QStringList{"Save As…", "Save"}));
    EXPECT_EQ(model->filteredItems()[0].score, 63);
}

TEST_F(SearchModel, QueryIsUsedAsTyped)
{
    auto model = open();
    model->setSearchText("COPY");
    EXPECT_EQ(titles(*model), QStringList{"Copy"});
    model->setSearchText("ypoc");
    EXPECT_TRUE(titles(*model).isEmpty());
    model->setSearchText("copy "); // the trailing space must meet a space
    EXPECT_TRUE(titles(*model).isEmpty());
    model->setSearchText(" copy"); // meets the one in "edit → copy": a path match, undoubled
    ASSERT_EQ(titles(*model), QStringList{"Copy"});
    EXPECT_EQ(model->filteredItems()[0].score, 1 + 9 + 3 + 5 + 7); // greedy: the space after "edit"
}

TEST_F(SearchModel, MissingBundleRanksWithTheEmptyKey)
{
    ax.addApplication(8, E::menuBar({E::menu("File", {E::item("A"), E::item("B")})}));
    usage.recordUsage("", "File → B");
    usage.recordUsage("unknown", "File → A");
    auto model = open(RunningApplication{8, "Anon", std::nullopt});
    EXPECT_EQ(titles(*model), (QStringList{"B", "A"}));
}

TEST_F(SearchModel, SelectionClampsAndSignalsOnlyRealChanges)
{
    auto model = open();
    int changes = 0;
    QObject::connect(model.get(), &SearchViewModel::selectedIndexChanged, [&] { ++changes; });
    model->moveSelection(-1);
    EXPECT_EQ(model->selectedIndex(), 0);
    EXPECT_EQ(changes, 0);
    for (int i = 0; i < 20; ++i)
        model->moveSelection(1);
    EXPECT_EQ(model->selectedIndex(), 8);
    EXPECT_EQ(changes, 8);
    model->setSearchText("zzz");
    model->moveSelection(-1);
    EXPECT_EQ(model->selectedIndex(), 8); // no results: unchanged
    model->executeSelected();             // beyond the list: nothing
    EXPECT_EQ(dismissals, 0);
}

TEST_F(SearchModel, ReturnReportsDismissesThenPressesATenthLater)
{
    settings.store().setBool(SettingsKey::analyticsEnabled, true);
    analytics.start();
    auto model = open();
    model->setSearchText("sav");
    model->moveSelection(1);
    model->executeSelected();
    EXPECT_EQ(dismissals, 1);
    EXPECT_TRUE(pressed.isEmpty()); // not yet
    model.reset();                  // the panel lets go of its model
    ASSERT_TRUE(eventually([&] { return !pressed.isEmpty(); }));
    EXPECT_EQ(pressed, QStringList{"File → Save As…"});
    EXPECT_EQ(pressedOn, QThread::currentThread());

    ASSERT_TRUE(events.waitForRequests(3));
    const auto sent = sentEvents();
    EXPECT_EQ(sent[1].value("eventName"), "search_executed");
    EXPECT_EQ(sent[1].value("props").toObject(), (QJsonObject{
        {"result_count", 2}, {"query_length", 3}, {"active_app_bundle_id", "org.editor"}}));
    EXPECT_EQ(sent[2].value("eventName"), "menu_item_activated");
    EXPECT_EQ(sent[2].value("props").toObject(), (QJsonObject{
        {"rank_position", 1}, {"had_shortcut", false}, {"active_app_bundle_id", "org.editor"}}));
}

TEST_F(SearchModel, ClickRunsTheRowWithoutMovingTheSelection)
{
    auto model = open();
    model->selectAndExecute(3);
    model->selectAndExecute(30);
    EXPECT_EQ(model->selectedIndex(), 0);
    ASSERT_TRUE(eventually([&] { return !pressed.isEmpty(); }));
    EXPECT_EQ(pressed, QStringList{"File → Save As…"});
    EXPECT_EQ(dismissals, 1);
}

TEST_F(SearchModel, TheRealPressCountsAUse)
{
    SearchViewModel model(reader, kEditor, [] {}, SearchServices{&usage, &analytics, {}});
    ASSERT_TRUE(eventually([&] { return !model.isLoading(); }));
    model.setSearchText("copy");
    model.executeSelected();
    EXPECT_TRUE(eventually([&] { return usage.count("org.editor", "Edit → Copy") == 1; }));
}

TEST_F(SearchModel, QueriesAndMenuTextsNeverLeaveTheMachine)
{
    ax.addApplication(9, E::menuBar({E::menu("Ledger", {E::item("Export Zanzibar Tax Return"), E::item("Qwyx Audit")})}));
    settings.store().setBool(SettingsKey::analyticsEnabled, true);
    analytics.start();
    for (const QString& query : {QStringLiteral("zanzibar"), QStringLiteral("qwyx"), QStringLiteral("ledger")}) {
        auto model = open(RunningApplication{9, "Books", "org.books"});
        model->setSearchText(query);
        model->executeSelected();
    }
    ASSERT_TRUE(events.waitForRequests(7));
    for (const auto& r : events.requests) {
        const QString body = QString::fromUtf8(r.body).toLower();
        for (const char* secret : {"zanzibar", "qwyx", "ledger", "export", "audit", "tax return"})
            EXPECT_FALSE(body.contains(secret)) << secret << " in " << body.toStdString();
    }
}

} // namespace
