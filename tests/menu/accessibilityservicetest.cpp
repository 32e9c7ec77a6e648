#include "menu/accessibilityservice.h"
#include "platform/fake/fakeaccessibility.h"
#include "platform/fake/fakeclock.h"
#include "search/usagetracker.h"
#include "support/eventually.h"
#include "support/tempsettings.h"

#include <QThread>

#include <thread>

#include <gtest/gtest.h>

namespace {

using E = FakeElement;

constexpr qint32 kPid = 42;
const RunningApplication kEditor{kPid, "Editor", "org.editor"};

struct Row {
    QString path;
    std::optional<QString> shortcut;
    bool enabled;
};

std::vector<Row> rows(const QList<MenuItem>& items)
{
    std::vector<Row> out;
    for (const MenuItem& item : items)
        out.push_back({item.pathKey(), item.shortcut, item.isEnabled});
    return out;
}

bool operator==(const Row& a, const Row& b)
{
    return a.path == b.path && a.shortcut == b.shortcut && a.enabled == b.enabled;
}

void PrintTo(const Row& r, std::ostream* os)
{
    *os << r.path.toStdString() << " [" << r.shortcut.value_or("-").toStdString() << "]" << (r.enabled ? "" : " disabled");
}

std::shared_ptr<FakeElement> withShortcut(std::shared_ptr<FakeElement> item, std::optional<QString> character,
                                          std::optional<qint64> virtualKey, std::optional<qint64> modifiers)
{
    if (character)
        item->set(AXName::menuItemCmdChar, *character);
    if (virtualKey)
        item->set(AXName::menuItemCmdVirtualKey, *virtualKey);
    if (modifiers)
        item->set(AXName::menuItemCmdModifiers, *modifiers);
    return item;
}

class AccessibilityServiceTest : public testing::Test {
protected:
    FakeAccessibility ax;
    FakeClock clock;
    AccessibilityService service{ax, clock};

    // System menu and application menu first, as the platform's bars have.
    void addEditor(std::initializer_list<std::shared_ptr<FakeElement>> menus, qint32 pid = kPid)
    {
        auto bar = E::menuBar({E::barMenu("Apple", {E::item("About This Mac")}), E::barMenu("Editor", {E::item("Quit")})});
        auto children = *bar->attributes[AXName::children].as<QList<AccessibilityElementRef>>();
        for (const auto& m : menus)
            children.append(m);
        bar->set(AXName::children, children);
        ax.addApplication(pid, bar);
    }
};

TEST_F(AccessibilityServiceTest, WalksMenusDepthFirstWithPathsShortcutsAndStates)
{
    auto disabled = E::item("Paste", false);
    addEditor({
        E::barMenu("File", {
            withShortcut(E::item("Save"), "s", std::nullopt, std::nullopt),
            withShortcut(E::item("Save As…"), "s", std::nullopt, 1),
            E::separator(),
            E::submenu("Recent", {E::item("a.txt"), E::separator(), E::item("Clear")}),
            E::withRole("AXUnknown", "Ghost"),
            E::withRole("AXMenuBarItem", "Stray"),
        }),
        E::barMenu("", {E::item("Hidden")}), // no title: skipped even after the first two
        E::barMenu("Edit", {disabled, withShortcut(E::item("Close"), std::nullopt, 53, 8)}),
        E::barMenu("View", {withShortcut(E::item("Full Screen"), "", 122, 0)}),
    });

    const QList<MenuItem> items = service.getMenuItems(kEditor);
    EXPECT_EQ(rows(items), (std::vector<Row>{
        {"File → Save", "Ctrl+S", true},
        {"File → Save As…", "Ctrl+Shift+S", true},
        {"File → Recent → a.txt", std::nullopt, true},
        {"File → Recent → Clear", std::nullopt, true},
        {"Edit → Paste", std::nullopt, false},
        {"Edit → Close", "Esc", true},
        {"View → Full Screen", "Ctrl+F1", true}, // an empty character falls back to the virtual key
    }));
    ASSERT_FALSE(items.isEmpty());
    EXPECT_EQ(items[0].appName, "Editor");
    EXPECT_EQ(items[0].appBundleID, "org.editor");
    EXPECT_EQ(items[4].axElement.get(), disabled.get());
}

TEST_F(AccessibilityServiceTest, OddAttributesFallBackToDefaults)
{
    auto noEnabled = E::item("No State");
    noEnabled->attributes.remove(AXName::enabled);
    auto textEnabled = E::item("Text State");
    textEnabled->set(AXName::enabled, QStringLiteral("yes"));
    auto numericTitle = E::item("x");
    numericTitle->set(AXName::title, qint64(5));
    auto noRole = E::item("No Role");
    noRole->attributes.remove(AXName::role);
    auto badModifiers = withShortcut(E::item("Odd Mask"), "k", std::nullopt, std::nullopt);
    badModifiers->set(AXName::menuItemCmdModifiers, QStringLiteral("4"));
    auto failingChildren = E::submenu("Broken", {E::item("Inside")});
    failingChildren->attributes[AXName::children].error = AccessibilityError::cannotComplete;
    addEditor({E::barMenu("Tools", {noEnabled, textEnabled, numericTitle, noRole, badModifiers, failingChildren})});

    EXPECT_EQ(rows(service.getMenuItems(kEditor)), (std::vector<Row>{
        {"Tools → No State", std::nullopt, false},
        {"Tools → Text State", std::nullopt, false},
        {"Tools → Odd Mask", "Ctrl+K", true},
        {"Tools → Broken", std::nullopt, true}, // its children could not be read: a command
    }));
}

// A submenu filled only when opened is not a command; the command line names it.
TEST_F(AccessibilityServiceTest, EmptySubmenusAreLeftOutAndNamedWhenAsked)
{
    addEditor({E::barMenu("File", {E::submenu("Open Recent", {}), E::item("Save"),
                                   E::submenu("Templates", {E::submenu("Mine", {}), E::separator()})})});
    QStringList empty;
    EXPECT_EQ(rows(service.getMenuItems(kEditor, &empty)), (std::vector<Row>{{"File → Save", std::nullopt, true}}));
    EXPECT_EQ(empty, (QStringList{"File → Open Recent", "File → Templates → Mine", "File → Templates"}));
}

TEST_F(AccessibilityServiceTest, LeadingMenusSkippedAreTheBackendsCount)
{
    addEditor({E::barMenu("File", {E::item("Open")})});
    ax.leadingMenus = 0;
    const QList<MenuItem> items = service.getMenuItems(kEditor);
    ASSERT_EQ(items.size(), 3);
    EXPECT_EQ(items[0].pathKey(), "Apple → About This Mac");
}

TEST_F(AccessibilityServiceTest, TargetDefaultsAndNames)
{
    addEditor({E::barMenu("File", {E::item("Open")})});
    EXPECT_TRUE(service.getMenuItems(std::nullopt).isEmpty()); // nothing frontmost
    EXPECT_FALSE(service.cache());

    ax.frontmost = RunningApplication{kPid, std::nullopt, std::nullopt};
    const QList<MenuItem> items = service.getMenuItems(std::nullopt);
    ASSERT_EQ(items.size(), 1);
    EXPECT_EQ(items[0].appName, "Unknown");
    EXPECT_EQ(items[0].appBundleID, std::nullopt);
}

TEST_F(AccessibilityServiceTest, OnlySystemMenusGiveAnEmptyListThatIsCached)
{
    addEditor({});
    EXPECT_TRUE(service.getMenuItems(kEditor).isEmpty());
    ASSERT_TRUE(service.cache());
    EXPECT_EQ(service.cache()->pid, kPid);
    EXPECT_TRUE(service.cache()->items.isEmpty());
}

TEST_F(AccessibilityServiceTest, CacheServesTheSamePidForLessThanTwoSeconds)
{
    addEditor({E::barMenu("File", {E::item("Open")})});
    const QList<MenuItem> first = service.getMenuItems(kEditor);
    EXPECT_EQ(service.cache()->timestamp, clock.now);

    clock.advance(1.9);
    const int readsBefore = ax.attributeReads;
    const QList<MenuItem> cached = service.getMenuItems(kEditor);
    EXPECT_EQ(ax.attributeReads, readsBefore);
    ASSERT_EQ(cached.size(), 1);
    EXPECT_EQ(cached[0].id, first[0].id);

    clock.advance(0.1); // 2.0 s: read again
    const QList<MenuItem> fresh = service.getMenuItems(kEditor);
    ASSERT_EQ(fresh.size(), 1);
    EXPECT_NE(fresh[0].id, first[0].id);
    EXPECT_EQ(fresh[0], first[0]);
}

TEST_F(AccessibilityServiceTest, AnotherPidAlwaysReadsAndReplacesTheCache)
{
    addEditor({E::barMenu("File", {E::item("Open")})});
    addEditor({E::barMenu("Go", {E::item("Back")})}, 7);
    service.getMenuItems(kEditor);
    const QList<MenuItem> other = service.getMenuItems(RunningApplication{7, "Viewer", std::nullopt});
    ASSERT_EQ(other.size(), 1);
    EXPECT_EQ(other[0].pathKey(), "Go → Back");
    EXPECT_EQ(service.cache()->pid, 7);
}

TEST_F(AccessibilityServiceTest, AFailedReadingKeepsTheEarlierCache)
{
    addEditor({E::barMenu("File", {E::item("Open")})});
    const QList<MenuItem> first = service.getMenuItems(kEditor);

    // A process without a menu bar, one that is gone, and an untrusted reader.
    ax.addApplication(8, nullptr);
    ax.addApplication(9, nullptr);
    ax.application(9)->set(AXName::menuBar, QStringLiteral("bar"));
    EXPECT_TRUE(service.getMenuItems(RunningApplication{8, "A", std::nullopt}).isEmpty());
    EXPECT_TRUE(service.getMenuItems(RunningApplication{9, "B", std::nullopt}).isEmpty());
    EXPECT_TRUE(service.getMenuItems(RunningApplication{404, "C", std::nullopt}).isEmpty());
    ax.trusted = false;
    EXPECT_TRUE(service.getMenuItems(RunningApplication{10, "D", std::nullopt}).isEmpty());

    clock.advance(1.0);
    EXPECT_EQ(service.getMenuItems(kEditor)[0].id, first[0].id);
}

TEST_F(AccessibilityServiceTest, OverlappingReadingsFromSeveralThreads)
{
    addEditor({E::barMenu("File", {E::item("Open"), E::item("Close")})});
    addEditor({E::barMenu("Go", {E::item("Back")})}, 7);
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 200; ++i) {
                const bool editor = (i + t) % 2 == 0;
                const auto items = service.getMenuItems(editor ? kEditor : RunningApplication{7, "V", std::nullopt});
                if (items.size() != (editor ? 2 : 1))
                    ++wrong;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
}

TEST_F(AccessibilityServiceTest, AHalfReadMenuBarIsShownButNotKept)
{
    addEditor({E::barMenu("File", {E::item("Open")})});
    auto bar = std::const_pointer_cast<FakeElement>(std::static_pointer_cast<const FakeElement>(
        *ax.application(kPid)->attributes[AXName::menuBar].as<AccessibilityElementRef>()));
    bar->set(AXName::readComplete, false); // the application stopped answering half-way
    EXPECT_EQ(service.getMenuItems(kEditor).size(), 1);
    EXPECT_FALSE(service.cache());
    bar->set(AXName::readComplete, true);
    service.getMenuItems(kEditor);
    EXPECT_TRUE(service.cache());
}

// One process, two windows with menus of their own (a document and a
// spreadsheet): each window gets its own, also from the cache.
TEST_F(AccessibilityServiceTest, EachWindowOfAProcessHasItsOwnMenus)
{
    ax.leadingMenus = 0;
    ax.addApplication(kPid, E::menuBar({E::barMenu("Text", {E::item("Bold")})}), 0x100);
    ax.addApplication(kPid, E::menuBar({E::barMenu("Sheet", {E::item("Sum")})}), 0x200);
    const RunningApplication letter{kPid, "Office", "org.office", 0x100};
    const RunningApplication sheet{kPid, "Office", "org.office", 0x200};
    for (int round = 0; round < 2; ++round) { // the second round comes from the cache
        EXPECT_EQ(service.getMenuItems(letter).value(0).pathKey(), "Text → Bold") << round;
        EXPECT_EQ(service.getMenuItems(sheet).value(0).pathKey(), "Sheet → Sum") << round;
    }
}

// A reading stuck on an application that does not answer never holds up the
// reading of another one; the results come to the UI thread.
TEST_F(AccessibilityServiceTest, FrozenApplicationsNeverDelayAReadingOfALiveOne)
{
    addEditor({E::barMenu("File", {E::item("Open")})});
    addEditor({E::barMenu("Go", {E::item("Back")})}, 7);
    auto gate = std::make_shared<Gate>();
    ax.application(7)->frozen = gate;
    QObject receiver;
    int frozenDeliveries = 0;
    const RunningApplication frozen{7, "Frozen", std::nullopt};
    for (int i = 0; i < AccessibilityService::kMaxConcurrent - 1; ++i)
        service.readMenuItems(frozen, &receiver, [&](const QList<MenuItem>&) { ++frozenDeliveries; });
    std::optional<QList<MenuItem>> live;
    service.readMenuItems(kEditor, &receiver, [&](const QList<MenuItem>& items) { live = items; });
    EXPECT_TRUE(eventually([&] { return live.has_value(); }));
    EXPECT_EQ(live.value_or(QList<MenuItem>{}).size(), 1);
    EXPECT_EQ(frozenDeliveries, 0);
    gate->open();
    EXPECT_TRUE(eventually([&] { return frozenDeliveries == AccessibilityService::kMaxConcurrent - 1; }));
}

// The reader goes while readings and presses are under way: it waits for
// them, nothing reaches a receiver that is gone, nothing runs afterwards.
TEST(AccessibilityServiceLifetime, GoingWhileReadingsRunIsSafe)
{
    FakeAccessibility ax;
    ax.leadingMenus = 0;
    ax.addApplication(7, E::menuBar({E::barMenu("Go", {E::item("Back")})}));
    auto gate = std::make_shared<Gate>();
    ax.application(7)->frozen = gate;
    TempSettings settings;
    UsageTracker usage{settings.store()};
    int delivered = 0;
    {
        auto receiver = std::make_unique<QObject>();
        AccessibilityService service(ax);
        for (int i = 0; i < 3; ++i)
            service.readMenuItems(RunningApplication{7, "Frozen", std::nullopt}, receiver.get(),
                                  [&](const QList<MenuItem>&) { ++delivered; });
        receiver.reset(); // the panel closed
        // The application answers again a little later, while the reader waits.
        std::thread answer([gate] {
            QThread::msleep(200);
            gate->open();
        });
        answer.detach();
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(delivered, 0);
}

// The program quits while an application that never answers is being read:
// the reading is stopped rather than waited for, so the quit goes through
// (the self-updater waits for it).
TEST(AccessibilityServiceLifetime, QuittingStopsAReadingThatWouldNeverEnd)
{
    FakeAccessibility ax;
    ax.leadingMenus = 0;
    ax.addApplication(7, E::menuBar({E::barMenu("Go", {E::item("Back")})}));
    ax.application(7)->frozen = std::make_shared<Gate>(); // never opened by the test
    QObject receiver;
    int delivered = 0;
    {
        AccessibilityService service(ax);
        service.readMenuItems(RunningApplication{7, "Frozen", std::nullopt}, &receiver,
                              [&](const QList<MenuItem>&) { ++delivered; });
        QThread::msleep(50); // under way
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(delivered, 0);
}

TEST_F(AccessibilityServiceTest, PressesOffTheUiThreadAndRecordsOnIt)
{
    ax.leadingMenus = 0;
    ax.addApplication(kPid, E::menuBar({E::barMenu("File", {E::item("Save")})}));
    TempSettings settings;
    UsageTracker usage{settings.store()};
    const MenuItem item = service.getMenuItems(kEditor).value(0);
    auto gate = std::make_shared<Gate>();
    std::const_pointer_cast<FakeElement>(std::static_pointer_cast<const FakeElement>(item.axElement))->frozen = gate;
    service.press(item, usage); // the application is busy: the UI thread goes on
    EXPECT_EQ(usage.count("org.editor", "File → Save"), 0);
    gate->open();
    EXPECT_TRUE(eventually([&] { return usage.count("org.editor", "File → Save") == 1; }));
}

TEST_F(AccessibilityServiceTest, OpensTheSystemSettings)
{
    service.openAccessibilitySettings();
    EXPECT_EQ(ax.settingsOpened, 1);
}

} // namespace
