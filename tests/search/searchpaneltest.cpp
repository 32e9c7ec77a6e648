#include "base/platformwords.h"
#include "menu/accessibilityservice.h"
#include "platform/fake/fakeaccessibility.h"
#include "platform/fake/fakeclock.h"
#include "platform/fake/fakedesktopwindows.h"
#include "platform/fake/fakesysteminfo.h"
#include "search/resultlistmodel.h"
#include "search/searchpanel.h"
#include "search/searchpanelcontroller.h"
#include "search/searchpanelgeometry.h"
#include "search/searchview.h"
#include "search/searchviewmodel.h"
#include "search/usagetracker.h"
#include "support/eventually.h"
#include "support/tempsettings.h"
#include "support/testtelemetry.h"
#include "telemetry/analyticsservice.h"
#include "telemetry/crashreporter.h"

#include <QLineEdit>
#include <QListView>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

namespace {

namespace E = FakeMenus;

TEST(SearchPanelGeometry, CentredAndRaisedOnTheFreeArea)
{
    // The bottom-left example frame (0, 25, 1440 × 875) of a 900-point screen is
    // (0, 0, 1440 × 875) from the top left; the panel (420, 362.5) bottom-left
    // has its top edge at 900 − 362.5 − 400 = 137.5.
    EXPECT_EQ(searchPanelFrame(QRectF(0, 0, 1440, 875)), QRectF(420, 137.5, 600, 400));
    EXPECT_EQ(searchPanelFrame(QRectF(100, 50, 1000, 700)), QRectF(300, 100, 600, 400));
    EXPECT_EQ(searchPanelFrame(QRectF(1920, 0, 1280, 1024)), QRectF(2260, 212, 600, 400));
}

// Window positions come in the desktop's own pixels; screens are found and
// points converted as the toolkit scales each screen around its top left.
TEST(SearchPanelGeometry, TheScreenOfAPointInTheDesktopsPixels)
{
    // A 4K laptop panel at twice the scale on the left, a plain 1080p monitor on the right.
    const QList<ScreenArea> laptopLeft{{QRect(0, 0, 1920, 1080), 2}, {QRect(3840, 0, 1920, 1080), 1}};
    // The plain monitor on the left, the scaled one on the right.
    const QList<ScreenArea> laptopRight{{QRect(0, 0, 1920, 1080), 1}, {QRect(1920, 0, 1920, 1080), 2}};
    struct Case {
        const char* name;
        const QList<ScreenArea>& screens;
        QPoint native;
        std::optional<qsizetype> screen;
        QPointF point;
    };
    const std::vector<Case> table{
        {"scaled screen, beyond its size in its own units", laptopLeft, {2500, 1500}, 0, {1250, 750}},
        {"scaled screen, near its top left", laptopLeft, {10, 20}, 0, {5, 10}},
        {"plain screen beside a scaled one", laptopLeft, {4000, 500}, 1, {4000, 500}},
        {"plain screen first", laptopRight, {1000, 500}, 0, {1000, 500}},
        {"scaled screen second", laptopRight, {3000, 2000}, 1, {2460, 1000}},
        {"between the screens' rows", laptopLeft, {4000, 1500}, std::nullopt, {}},
    };
    for (const Case& c : table) {
        const auto found = screenOfNativePoint(c.screens, c.native);
        ASSERT_EQ(found.has_value(), c.screen.has_value()) << c.name;
        if (!found)
            continue;
        EXPECT_EQ(found->first, *c.screen) << c.name;
        EXPECT_EQ(found->second, c.point) << c.name;
    }
}

class Panel : public testing::Test {
protected:
    TempSettings settings;
    TestTelemetry telemetry{settings.store()};
    AnalyticsService& analytics = telemetry.analytics;
    UsageTracker usage{settings.store()};
    FakeAccessibility ax;
    AccessibilityService reader{ax, PlatformWords::linuxDesktop().keys};
    FakeDesktopWindows windows;
    QStringList pressed;
    std::unique_ptr<SearchPanelController> controller;

    Panel()
    {
        ax.addApplication(42, E::menuBar({
            E::menu("File", {E::item("New"), E::item("Open"), E::item("Save"), E::item("Save As…"), E::item("Close")}),
            E::menu("Edit", {E::item("Copy"), E::item("Paste", false), E::menu("Find", {E::item("Find…")})}),
        }));
    }

    void open(std::optional<RunningApplication> target = RunningApplication{42, "Editor", "org.editor"}, bool wait = true)
    {
        controller = std::make_unique<SearchPanelController>(reader, target, windows, SearchServices{&usage, &analytics, [this](const MenuItem& item) {
            pressed << item.pathKey();
            return true;
        }});
        controller->show();
        ASSERT_TRUE(controller->panel());
        if (wait) {
            ASSERT_TRUE(eventually([&] { return !model().isLoading(); }));
        }
    }

    SearchViewModel& model() { return *controller->searchViewModel(); }
    SearchView& view() { return *controller->searchView(); }
    QLineEdit* field() { return view().searchField(); }
    void key(Qt::Key k, Qt::KeyboardModifiers m = Qt::NoModifier) { QTest::keyClick(field(), k, m); }
};

TEST_F(Panel, BodyStatesAndFooter)
{
    open(RunningApplication{42, "Editor", "org.editor"}, false);
    EXPECT_EQ(view().body(), SearchView::Body::loading);
    EXPECT_FALSE(view().footerVisible());
    ASSERT_TRUE(eventually([&] { return !model().isLoading(); }));
    EXPECT_EQ(view().body(), SearchView::Body::results);
    EXPECT_TRUE(view().footerVisible());
    EXPECT_EQ(view().footerText(), "Menus from: <b>Editor</b>");
    EXPECT_EQ(view().results()->rowCount(), 8);

    QTest::keyClicks(field(), "zzz");
    EXPECT_EQ(view().body(), SearchView::Body::noMatch);
    EXPECT_TRUE(view().footerVisible()); // the footer follows the unfiltered items

    controller.reset();
    open(RunningApplication{7, "Empty", std::nullopt});
    EXPECT_EQ(view().body(), SearchView::Body::results); // an empty list, no note
    EXPECT_FALSE(view().footerVisible());
}

TEST_F(Panel, PlacedOnTheScreenAndEverywhere)
{
    open();
    // The off-screen test display is 800 × 800 with nothing taking room: the
    // 600 × 400 panel is centred, its centre 100 above the screen's.
    ASSERT_EQ(QGuiApplication::primaryScreen()->availableGeometry(), QRect(0, 0, 800, 800));
    EXPECT_EQ(controller->panel()->geometry(), QRect(100, 100, 600, 400));
    EXPECT_EQ(windows.onAllWorkspaces.size(), 1);
    EXPECT_EQ(windows.ownActivated.size(), 1);
}

TEST_F(Panel, NavigationKeysGoToTheModelAndOthersToTheField)
{
    open();
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    key(Qt::Key_Up);
    EXPECT_EQ(model().selectedIndex(), 1);
    EXPECT_TRUE(field()->text().isEmpty());

    QTest::keyClick(field(), 'A', Qt::ShiftModifier);
    key(Qt::Key_V);
    EXPECT_EQ(field()->text(), "Av");
    EXPECT_EQ(model().searchText(), "Av");
    EXPECT_EQ(model().selectedIndex(), 0); // every edit goes back to the first row
}

TEST_F(Panel, ShiftReturnStillRuns)
{
    open();
    QTest::keyClicks(field(), "save");
    key(Qt::Key_Down);
    key(Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_FALSE(controller->panel());
    EXPECT_EQ(windows.activated.size(), 1);
    ASSERT_TRUE(eventually([&] { return !pressed.isEmpty(); }));
    EXPECT_EQ(pressed, QStringList{"File → Save As…"});
}

TEST_F(Panel, ReturnWithoutResultsKeepsThePanel)
{
    open();
    QTest::keyClicks(field(), "qqq");
    key(Qt::Key_Enter);
    EXPECT_TRUE(controller->panel());
    EXPECT_TRUE(windows.activated.isEmpty());
}

TEST_F(Panel, EscapeDismissesAndGivesTheFocusBack)
{
    open();
    key(Qt::Key_Escape);
    EXPECT_FALSE(controller->panel());
    EXPECT_FALSE(controller->searchViewModel());
    EXPECT_FALSE(controller->monitorsInstalled());
    ASSERT_EQ(windows.activated.size(), 1);
    EXPECT_EQ(windows.activated[0].processIdentifier, 42);
    controller->dismiss(); // again: only the focus is given back once more
    EXPECT_EQ(windows.activated.size(), 2);
    QTest::qWait(50);
    EXPECT_TRUE(pressed.isEmpty());
}

TEST_F(Panel, ClearButtonShowsOnlyWithText)
{
    open();
    EXPECT_TRUE(view().clearButton()->isHidden());
    QTest::keyClicks(field(), "co");
    key(Qt::Key_Down);
    EXPECT_FALSE(view().clearButton()->isHidden());
    QTest::mouseClick(view().clearButton(), Qt::LeftButton);
    EXPECT_TRUE(field()->text().isEmpty());
    EXPECT_EQ(model().selectedIndex(), 0);
    EXPECT_TRUE(view().clearButton()->isHidden());
    EXPECT_EQ(view().results()->rowCount(), 8);
}

TEST_F(Panel, ClickAnywhereOnARowRunsIt)
{
    open();
    QListView* list = view().resultList();
    const QRect row = list->visualRect(view().results()->index(2));
    ASSERT_FALSE(row.isEmpty());
    // The blank space between the title and the right edge.
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, QPoint(row.right() - 40, row.center().y()));
    ASSERT_TRUE(eventually([&] { return !pressed.isEmpty(); }));
    EXPECT_EQ(pressed, QStringList{"File → Save"});
    EXPECT_FALSE(controller->searchViewModel());
}

TEST_F(Panel, ClickInsideKeepsItOpenClickElsewhereClosesAndPassesOn)
{
    open();
    QTest::mouseClick(field(), Qt::LeftButton);
    EXPECT_TRUE(controller->panel());

    struct Other : QWidget {
        int presses = 0;
        void mousePressEvent(QMouseEvent*) override { ++presses; }
    } settingsWindow;
    settingsWindow.setGeometry(controller->panel()->geometry().translated(0, 450));
    settingsWindow.show();
    QTest::mouseClick(&settingsWindow, Qt::LeftButton, {}, QPoint(10, 10));
    EXPECT_FALSE(controller->panel());
    EXPECT_EQ(settingsWindow.presses, 1);
}

TEST_F(Panel, ReleasingTheControllerRemovesItsFilter)
{
    open();
    controller.reset();
    QLineEdit other;
    other.show();
    QTest::keyClick(&other, Qt::Key_Down);
    QTest::keyClicks(&other, "x");
    QTest::keyClick(&other, Qt::Key_Escape);
    EXPECT_EQ(other.text(), "x");
    EXPECT_TRUE(windows.activated.isEmpty());
}

TEST_F(Panel, DisabledItemsLookLikeEnabledOnes)
{
    // The same command twice, disabled and enabled, then one more to hold the selection.
    ax.addApplication(9, E::menuBar({E::menu("Edit", {E::item("Paste", false), E::item("Paste", true)}),
                                     E::menu("View", {E::item("Zoom")})}));
    open(RunningApplication{9, "Twins", std::nullopt});
    ASSERT_TRUE(eventually([&] { return view().results()->rowCount() == 3; }));
    QTest::keyClick(field(), Qt::Key_Down);
    QTest::keyClick(field(), Qt::Key_Down);
    auto* list = view().findChild<QListView*>();
    ASSERT_TRUE(list);
    QCoreApplication::processEvents();
    const QRect first = list->visualRect(view().results()->index(0));
    const QRect second = list->visualRect(view().results()->index(1));
    ASSERT_EQ(first.size(), second.size());
    const QImage disabled = list->viewport()->grab(first).toImage();
    const QImage enabled = list->viewport()->grab(second).toImage();
    EXPECT_FALSE(disabled.isNull());
    EXPECT_EQ(disabled, enabled);
}

} // namespace
