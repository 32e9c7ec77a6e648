#include "menu/accessibilityservice.h"
#include "base/platformwords.h"
#include "platform/fake/fakeaccessibility.h"
#include "platform/fake/fakeclock.h"
#include "support/eventually.h"

#include <QThread>

#include <thread>

#include <gtest/gtest.h>

namespace {

namespace E = FakeMenus;

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

MenuNode withShortcut(MenuNode item, Modifiers modifiers, const QString& character)
{
    return E::withShortcut(std::move(item), KeyChord{modifiers, Key{0, std::nullopt, character}});
}

MenuNode withShortcut(MenuNode item, Modifiers modifiers, NamedKey key)
{
    return E::withShortcut(std::move(item), KeyChord{modifiers, Key{0, key, {}}});
}

MenuNode ofKind(MenuNode::Kind kind, const QString& title)
{
    MenuNode node = E::item(title);
    node.kind = kind;
    return node;
}

class AccessibilityServiceTest : public testing::Test {
protected:
    FakeAccessibility ax;
    FakeClock clock;
    AccessibilityService service{ax, PlatformWords::linuxDesktop().keys, clock};

    void addEditor(std::initializer_list<MenuNode> menus, qint32 pid = kPid) { ax.addApplication(pid, E::menuBar(menus)); }
};

TEST_F(AccessibilityServiceTest, WalksMenusDepthFirstWithPathsShortcutsAndStates)
{
    const MenuNode disabled = E::item("Paste", false);
    addEditor({
        E::menu("File", {
            withShortcut(E::item("Save"), Modifier::ctrl, "s"),
            withShortcut(E::item("Save As…"), Modifier::ctrl | Modifier::shift, "s"),
            E::separator(),
            E::menu("Recent", {E::item("a.txt"), E::separator(), E::item("Clear")}),
            E::item(""), // no title: nothing to find it by
            ofKind(MenuNode::Kind::check, "Word Wrap"),
            ofKind(MenuNode::Kind::radio, "Insert Mode"),
        }),
        E::menu("", {E::item("Hidden")}), // no title: skipped
        E::item("Stray"),                  // a command on the bar itself, where menus belong: skipped
        E::menu("Edit", {disabled, withShortcut(E::item("Close"), {}, NamedKey::escape)}),
        E::menu("View", {withShortcut(E::item("Full Screen"), Modifier::ctrl, *functionKey(1))}),
    });

    const QList<MenuItem> items = service.getMenuItems(kEditor);
    EXPECT_EQ(rows(items), (std::vector<Row>{
        {"File → Save", "Ctrl+S", true},
        {"File → Save As…", "Ctrl+Shift+S", true},
        {"File → Recent → a.txt", std::nullopt, true},
        {"File → Recent → Clear", std::nullopt, true},
        {"File → Word Wrap", std::nullopt, true},
        {"File → Insert Mode", std::nullopt, true},
        {"Edit → Paste", std::nullopt, false},
        {"Edit → Close", "Esc", true},
        {"View → Full Screen", "Ctrl+F1", true},
    }));
    ASSERT_EQ(items.size(), 9);
    EXPECT_EQ(items[0].appName, "Editor");
    EXPECT_EQ(items[0].appBundleID, "org.editor");
    EXPECT_EQ(items[6].handle.get(), disabled.handle.get());
}

// A submenu filled only when opened is not a command; the command line names it.
TEST_F(AccessibilityServiceTest, EmptySubmenusAreLeftOutAndNamedWhenAsked)
{
    addEditor({E::menu("File", {E::menu("Open Recent", {}), E::item("Save"),
                                E::menu("Templates", {E::menu("Mine", {}), E::separator()})})});
    QStringList empty;
    EXPECT_EQ(rows(service.getMenuItems(kEditor, &empty)), (std::vector<Row>{{"File → Save", std::nullopt, true}}));
    EXPECT_EQ(empty, (QStringList{"File → Open Recent", "File → Templates → Mine", "File → Templates"}));
}

TEST_F(AccessibilityServiceTest, TargetDefaultsAndNames)
{
    addEditor({E::menu("File", {E::item("Open")})});
    EXPECT_TRUE(service.getMenuItems(std::nullopt).isEmpty()); // nothing frontmost
    EXPECT_FALSE(service.cache());

    ax.frontmost = RunningApplication{kPid, std::nullopt, std::nullopt};
    const QList<MenuItem> items = service.getMenuItems(std::nullopt);
    ASSERT_EQ(items.size(), 1);
    EXPECT_EQ(items[0].appName, "Unknown");
    EXPECT_EQ(items[0].appBundleID, std::nullopt);
}

TEST_F(AccessibilityServiceTest, AnEmptyMenuBarGivesAnEmptyListThatIsCached)
{
    addEditor({});
    EXPECT_TRUE(service.getMenuItems(kEditor).isEmpty());
    ASSERT_TRUE(service.cache());
    EXPECT_EQ(service.cache()->pid, kPid);
    EXPECT_TRUE(service.cache()->items.isEmpty());
}

TEST_F(AccessibilityServiceTest, CacheServesTheSamePidForLessThanTwoSeconds)
{
    addEditor({E::menu("File", {E::item("Open")})});
    const QList<MenuItem> first = service.getMenuItems(kEditor);
    EXPECT_EQ(service.cache()->timestamp, clock.now);

    clock.advance(1.9);
    const int readsBefore = ax.readings;
    const QList<MenuItem> cached = service.getMenuItems(kEditor);
    EXPECT_EQ(ax.readings, readsBefore);
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
    addEditor({E::menu("File", {E::item("Open")})});
    addEditor({E::menu("Go", {E::item("Back")})}, 7);
    service.getMenuItems(kEditor);
    const QList<MenuItem> other = service.getMenuItems(RunningApplication{7, "Viewer", std::nullopt});
    ASSERT_EQ(other.size(), 1);
    EXPECT_EQ(other[0].pathKey(), "Go → Back");
    EXPECT_EQ(service.cache()->pid, 7);
}

TEST_F(AccessibilityServiceTest, AFailedReadingKeepsTheEarlierCache)
{
    addEditor({E::menu("File", {E::item("Open")})});
    const QList<MenuItem> first = service.getMenuItems(kEditor);

    // A process without menus, one that is gone, and an untrusted reader.
    ax.addApplication(8, std::nullopt);
    EXPECT_TRUE(service.getMenuItems(RunningApplication{8, "A", std::nullopt}).isEmpty());
    EXPECT_TRUE(service.getMenuItems(RunningApplication{404, "C", std::nullopt}).isEmpty());
    ax.trusted = false;
    EXPECT_TRUE(service.getMenuItems(RunningApplication{10, "D", std::nullopt}).isEmpty());

    clock.advance(1.0);
    EXPECT_EQ(service.getMenuItems(kEditor)[0].id, first[0].id);
}

TEST_F(AccessibilityServiceTest, OverlappingReadingsFromSeveralThreads)
{
    addEditor({E::menu("File", {E::item("Open"), E::item("Close")})});
    addEditor({E::menu("Go", {E::item("Back")})}, 7);
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
    // The application stopped answering half-way.
    ax.addApplication(kPid, E::menuBar({E::menu("File", {E::item("Open")})}, false));
    EXPECT_EQ(service.getMenuItems(kEditor).size(), 1);
    EXPECT_FALSE(service.cache());
    addEditor({E::menu("File", {E::item("Open")})});
    service.getMenuItems(kEditor);
    EXPECT_TRUE(service.cache());
}

// One process, two windows with menus of their own (a document and a
// spreadsheet): each window gets its own, also from the cache.
TEST_F(AccessibilityServiceTest, EachWindowOfAProcessHasItsOwnMenus)
{
    ax.addApplication(kPid, E::menuBar({E::menu("Text", {E::item("Bold")})}), 0x100);
    ax.addApplication(kPid, E::menuBar({E::menu("Sheet", {E::item("Sum")})}), 0x200);
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
    addEditor({E::menu("File", {E::item("Open")})});
    addEditor({E::menu("Go", {E::item("Back")})}, 7);
    auto gate = std::make_shared<Gate>();
    ax.freeze(7, gate);
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
    ax.addApplication(7, E::menuBar({E::menu("Go", {E::item("Back")})}));
    auto gate = std::make_shared<Gate>();
    ax.freeze(7, gate);
    int delivered = 0;
    {
        auto receiver = std::make_unique<QObject>();
        AccessibilityService service(ax, PlatformWords::linuxDesktop().keys);
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
    ax.addApplication(7, E::menuBar({E::menu("Go", {E::item("Back")})}));
    ax.freeze(7, std::make_shared<Gate>()); // never opened by the test
    QObject receiver;
    int delivered = 0;
    {
        AccessibilityService service(ax, PlatformWords::linuxDesktop().keys);
        service.readMenuItems(RunningApplication{7, "Frozen", std::nullopt}, &receiver,
                              [&](const QList<MenuItem>&) { ++delivered; });
        QThread::msleep(50); // under way
    }
    QCoreApplication::processEvents();
    EXPECT_EQ(delivered, 0);
}

TEST_F(AccessibilityServiceTest, PressesOffTheUiThreadAndTellsItOfASuccess)
{
    const MenuNode save = E::item("Save");
    addEditor({E::menu("File", {save})});
    const MenuItem item = service.getMenuItems(kEditor).value(0);
    auto gate = std::make_shared<Gate>();
    E::handleOf(save).frozen = gate;
    int pressed = 0;
    service.press(item, [&] { ++pressed; }); // the application is busy: the UI thread goes on
    EXPECT_EQ(pressed, 0);
    gate->open();
    EXPECT_TRUE(eventually([&] { return pressed == 1; }));

    E::handleOf(save).enabled = false; // pressed, but no use to record
    service.press(item, [&] { ++pressed; });
    EXPECT_TRUE(eventually([&] { return E::handleOf(save).pressCount == 2; }));
    QThread::msleep(50);
    QCoreApplication::processEvents();
    EXPECT_EQ(pressed, 1);
}

TEST_F(AccessibilityServiceTest, OpensTheSystemSettings)
{
    service.openAccessibilitySettings();
    EXPECT_EQ(ax.settingsOpened, 1);
}

} // namespace
