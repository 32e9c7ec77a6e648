#include "app/aboutview.h"
#include "app/appdelegate.h"
#include "app/desktopshortcutpanel.h"
#include "base/notificationhub.h"
#include "app/onboardingview.h"
#include "base/platformwords.h"
#include "app/settingsview.h"
#include "base/styledlabel.h"
#include "hotkey/hotkeyservice.h"
#include "hotkey/shortcutrecorderbutton.h"
#include "platform/fake/fakeaccessibility.h"
#include "platform/fake/fakeclock.h"
#include "platform/fake/fakedesktopwindows.h"
#include "platform/fake/fakehotkeyplatform.h"
#include "platform/fake/fakekeyboardlayout.h"
#include "platform/fake/fakeloginitem.h"
#include "platform/fake/fakesysteminfo.h"
#include "platform/fake/fakeworkspace.h"
#include "platform/linux/tarupdatepackaging.h"
#include "search/searchpanel.h"
#include "search/searchpanelcontroller.h"
#include "search/searchviewmodel.h"
#include "search/usagetracker.h"
#include "support/eventually.h"
#include "support/faketimers.h"
#include "support/testtelemetry.h"
#include "support/tempsettings.h"
#include "telemetry/analyticsservice.h"
#include "telemetry/crashreporter.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QCoreApplication>
#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QSystemTrayIcon>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

const PlatformWords& words = PlatformWords::linuxDesktop();

namespace E = FakeMenus;

const RunningApplication kMousepad{42, "mousepad", "org.xfce.mousepad", 0x400003};

class Controller : public testing::Test {
protected:
    TempSettings settings;
    TestTelemetry telemetry{settings.store()};
    LoopbackHttpServer& events = telemetry.events;
    CrashReporter& crashReporter = telemetry.crashReporter;
    AnalyticsService& analytics = telemetry.analytics;
    FakeClock monotonic;
    FakeHotkeyPlatform keyboard;
    HotkeyService hotkey{keyboard, settings.store(), monotonic};
    FakeAccessibility ax;
    FakeDesktopWindows windows;
    FakeWorkspace workspace;
    NotificationHub hub;
    FakeTimers timers;
    UsageTracker usage{settings.store()};
    int terminations = 0;
    int updateChecks = 0;
    int settingsViews = 0;
    std::function<QWidget*()> makeSettingsView;
    bool tray = true;
    const PlatformWords* shownWords = &words; // what the program hands its windows
    std::unique_ptr<AppDelegate> app;

    Controller()
    {
        ax.addApplication(42, E::menuBar({E::menu("File", {E::item("Save As…")})}));
        workspace.frontmost = kMousepad;
    }

    void launch()
    {
        app = std::make_unique<AppDelegate>(AppDelegate::Services{
            settings.store(), hotkey, analytics, usage, ax, windows, workspace, hub, timers, *shownWords,
            [this] { ++terminations; }, [this] { ++updateChecks; }, {}, QStringLiteral("kestrio"),
            [this] {
                ++settingsViews;
                return makeSettingsView ? makeSettingsView() : new QWidget;
            },
            [this] { return tray; }});
        app->setSearchServices(SearchServices{&usage, &analytics, [](const MenuItem&) { return true; }});
        app->applicationDidFinishLaunching();
    }

    // The status menu as text: titles, "-" for separators, "(off)" for disabled rows.
    QStringList menu() const
    {
        QStringList rows;
        for (QAction* action : app->statusMenu()->actions()) {
            if (action->isSeparator())
                rows << "-";
            else
                rows << action->text() + (action->isEnabled() ? "" : " (off)")
                        + (action->shortcut().isEmpty() ? "" : " [" + action->shortcut().toString() + "]");
        }
        return rows;
    }

    QAction* row(const QString& title) const
    {
        for (QAction* action : app->statusMenu()->actions()) {
            if (action->text() == title)
                return action;
        }
        return nullptr;
    }

    QStringList sentEventNames() const { return telemetry.sentEventNames(); }

    // What a real settings form works with, beside the controller's own.
    struct SettingsFormParts {
        TarUpdatePackaging packaging;
        SelfUpdater updater{packaging, words,
                            SelfUpdater::Environment{QDir::tempPath(), std::nullopt, 0, {}, {}, 0, {}}};
        FakeLoginItem login;
        FakeKeyboardLayout layout;
    };
    std::optional<SettingsFormParts> settingsFormParts;

    // "Settings…" opens the real form instead of an empty stand-in.
    SettingsFormParts& useSettingsForm()
    {
        SettingsFormParts& parts = settingsFormParts.emplace();
        makeSettingsView = [this, &parts]() -> QWidget* {
            return new SettingsView(SettingsView::Services{settings.store(), hub, hotkey, app->accessibilityService(),
                                                           usage, parts.updater, parts.login, parts.layout, *shownWords,
                                                           {}, {}});
        };
        return parts;
    }
};

TEST_F(Controller, StartUpInOrder)
{
    settings.store().setBool(SettingsKey::hasLaunchedBefore, true);
    launch();
    EXPECT_TRUE(app->statusItem()->isVisible());
    EXPECT_EQ(app->statusItem()->toolTip(), "Kestrio");
    EXPECT_TRUE(hotkey.isActive());
    EXPECT_TRUE(workspace.watching);
    EXPECT_EQ(app->lastActiveApp(), kMousepad);
    EXPECT_FALSE(app->onboardingWindow()); // launched before and trusted: no window
    timers.advance(AppDelegate::kUpdateCheckDelayMs - 1);
    EXPECT_EQ(updateChecks, 0);
    timers.advance(1);
    EXPECT_EQ(updateChecks, 1);
}

TEST_F(Controller, StatusMenuRows)
{
    launch();
    const QStringList normal{"Search Menus…", "-", "Settings… [Ctrl+,]", "About Kestrio", "-",
                             "Quit Kestrio [Ctrl+Q]"};
    EXPECT_EQ(menu(), normal);

    keyboard.trusted = false;
    hotkey.start(); // the detector goes inactive: the menu says so
    EXPECT_EQ(menu(), (QStringList{"Search Menus…", "-", words.hotkeyInactiveMenuRow, "-",
                                   "Settings… [Ctrl+,]", "About Kestrio", "-", "Quit Kestrio [Ctrl+Q]"}));

    keyboard.trusted = true;
    hotkey.pollTick(); // active again: the warning row goes
    EXPECT_EQ(menu(), normal);
    row("Settings…")->trigger();
    ASSERT_TRUE(app->settingsWindow());
    EXPECT_EQ(app->settingsWindow()->windowTitle(), "Kestrio Settings");

    hub.postUpdateAvailable(UpdateCheckResult{"2.1.0", std::nullopt, QUrl("https://example.invalid/k.tar.gz"), std::nullopt, true});
    EXPECT_EQ(menu().mid(1, 3), (QStringList{"-", "Download Update — v2.1.0 (off)", "-"}));
    EXPECT_EQ(app->statusItem()->toolTip(), "Kestrio — update available");
}

TEST_F(Controller, TheInactiveRowOpensTheAccessibilitySettings)
{
    saveHotkeyMode(HotkeyMode::customShortcut, settings.store());
    keyboard.trusted = false;
    hotkey.setMode(HotkeyMode::customShortcut);
    launch();
    EXPECT_EQ(menu().value(2), words.hotkeyInactiveMenuRow);
    row(words.hotkeyInactiveMenuRow)->trigger();
    EXPECT_EQ(ax.settingsOpened, 1);
}

TEST_F(Controller, WhereTheSessionShowsNoKeysTheTrayPointsToTheSettings)
{
    keyboard.access = KeyboardAccess::none;
    keyboard.refuseTap = true;
    hotkey.start();
    launch();
    EXPECT_EQ(menu().value(2), words.keysUnavailableMenuRow);
    EXPECT_FALSE(menu().contains(words.hotkeyInactiveMenuRow));
    row(words.keysUnavailableMenuRow)->trigger();
    ASSERT_TRUE(app->settingsWindow());
    EXPECT_EQ(ax.settingsOpened, 0); // accessibility would not help
}

// Where the desktop watches shortcuts for Kestrio (GNOME, KDE under
// Wayland), the welcome's one click sets one up: the controller applies the
// choice, the desktop is asked, and what it granted shows in the welcome.
TEST_F(Controller, TheWelcomeSetsUpTheDesktopsShortcut)
{
    keyboard.access = KeyboardAccess::none;
    keyboard.refuseTap = true;
    keyboard.desktopWatchesShortcuts = true;
    launch();
    ASSERT_TRUE(app->onboardingWindow());
    auto* panel = app->onboardingWindow()->findChild<DesktopShortcutPanel*>();
    ASSERT_TRUE(panel);
    EXPECT_GT(app->onboardingWindow()->height(), 360); // the window grew to fit it
    QTest::mouseClick(panel->setUpButton(), Qt::LeftButton);
    EXPECT_EQ(hotkey.mode(), HotkeyMode::customShortcut);
    EXPECT_EQ(keyboard.desktopShortcut, defaultDesktopShortcut());
    EXPECT_TRUE(keyboard.desktopReplaced);
    ASSERT_TRUE(keyboard.desktopChanged);
    keyboard.desktopChanged({DesktopShortcutState::Kind::bound, "Ctrl+Alt+Space", {}});
    EXPECT_EQ(panel->statusText(), "Ctrl+Alt+Space opens Kestrio");
}

// Under Wayland the desktop names the front application a moment after
// Kestrio starts; a toggle sooner than that (the one that started the
// program, or the user's first) waits for it rather than open over nothing.
TEST_F(Controller, AToggleBeforeTheFrontIsKnownWaitsToLearnIt)
{
    settings.store().setBool(SettingsKey::hasLaunchedBefore, true);
    workspace.frontmost = std::nullopt; // the desktop has not told yet
    launch();
    app->toggleFromCommand(QStringLiteral("token-1"));
    EXPECT_FALSE(app->searchPanelController());
    workspace.activate(std::nullopt); // word of a change that names no application yet
    EXPECT_FALSE(app->searchPanelController());

    workspace.activate(kMousepad);
    ASSERT_TRUE(app->searchPanelController());
    EXPECT_EQ(app->searchPanelController()->targetApp(), kMousepad);
    EXPECT_EQ(windows.activationTokens, QStringList{"token-1"});
    app->searchPanelController()->dismiss();

    // Once: later activations open nothing, nor does the wait's end.
    workspace.activate(RunningApplication{77, "featherpad", "featherpad"});
    timers.advance(AppDelegate::kFrontWaitMs);
    EXPECT_FALSE(app->searchPanelController()->panel());
}

TEST_F(Controller, AToggleBeforeTheFrontIsKnownOpensAnywayWhenNoOneTells)
{
    settings.store().setBool(SettingsKey::hasLaunchedBefore, true);
    workspace.frontmost = std::nullopt;
    launch();
    app->toggleSearchPanel();
    timers.advance(AppDelegate::kFrontWaitMs - 1);
    EXPECT_FALSE(app->searchPanelController());
    timers.advance(1);
    EXPECT_TRUE(app->searchPanelController() && app->searchPanelController()->panel());
    EXPECT_EQ(app->searchPanelController()->targetApp(), std::nullopt);
}

TEST_F(Controller, ASecondToggleWhileWaitingForTheFrontOpensAtOnce)
{
    settings.store().setBool(SettingsKey::hasLaunchedBefore, true);
    workspace.frontmost = std::nullopt;
    launch();
    app->toggleSearchPanel();
    EXPECT_FALSE(app->searchPanelController());
    app->toggleSearchPanel(); // the user, seeing nothing yet
    ASSERT_TRUE(app->searchPanelController() && app->searchPanelController()->panel());
    SearchPanelController* opened = app->searchPanelController();

    // The wait is over: neither word of the front nor its end opens another.
    workspace.activate(kMousepad);
    timers.advance(AppDelegate::kFrontWaitMs);
    EXPECT_EQ(app->searchPanelController(), opened);
    EXPECT_TRUE(opened->panel()->isVisible());
}

TEST_F(Controller, TrayIconFollowsTheSetting)
{
    settings.store().setBool(SettingsKey::hideMenuBarIcon, true);
    launch();
    EXPECT_FALSE(app->statusItem()->isVisible());
    settings.store().setBool(SettingsKey::hideMenuBarIcon, false);
    hub.postMenuBarIconVisibilityChanged();
    EXPECT_TRUE(app->statusItem()->isVisible());
}

TEST_F(Controller, OnboardingAtFirstLaunchAndWhileUntrusted)
{
    launch();
    ASSERT_TRUE(app->onboardingWindow());
    EXPECT_EQ(app->onboardingWindow()->windowTitle(), "Welcome to Kestrio");
    EXPECT_EQ(app->onboardingWindow()->size(), QSize(480, 360));
    EXPECT_TRUE(settings.store().hasLaunchedBefore());

    // Both closing buttons only close the window.
    auto* view = app->onboardingWindow()->findChild<OnboardingView*>();
    ASSERT_TRUE(view);
    EXPECT_EQ(view->closingButton()->text(), words.continueWithoutPermission); // first look after a second
    timers.advance(OnboardingView::kPollMs);
    EXPECT_TRUE(eventually([&] { return view->hasPermission(); }));
    EXPECT_EQ(view->closingButton()->text(), "Get Started");
    QTest::mouseClick(view->closingButton(), Qt::LeftButton);
    EXPECT_FALSE(app->onboardingWindow());

    // Launched before but untrusted: shown again, and instead of the panel.
    app.reset();
    ax.trusted = false;
    launch();
    EXPECT_TRUE(app->onboardingWindow());
    app->toggleSearchPanel();
    EXPECT_FALSE(app->searchPanelController());
}

// The platform finds out about trust in the background: a grant shows at
// the next look, not a look later.
TEST_F(Controller, AGrantShowsAtTheNextLook)
{
    ax.trusted = false;
    ax.answersLate = true;
    launch();
    auto* view = app->onboardingWindow()->findChild<OnboardingView*>();
    ASSERT_TRUE(view);
    const auto nextLook = [&] {
        const int before = ax.trustChecks;
        timers.advance(OnboardingView::kPollMs);
        EXPECT_EQ(ax.trustChecks, before + 1);
        QCoreApplication::processEvents(); // its answer
    };
    nextLook();
    EXPECT_FALSE(view->hasPermission());
    ax.trusted = true; // granted in the desktop's settings
    nextLook();
    EXPECT_TRUE(view->hasPermission());
}

TEST_F(Controller, TheWelcomeComesOnceAndGoesWithItsWindowAndItsPoll)
{
    ax.trusted = false;
    launch();
    QPointer<QWidget> welcome = app->onboardingWindow();
    ASSERT_TRUE(welcome);
    app->toggleSearchPanel(); // still untrusted: the same welcome comes forward
    EXPECT_EQ(app->onboardingWindow(), welcome.data());
    int shown = 0;
    for (QWidget* window : QApplication::topLevelWidgets())
        shown += window->isVisible() && window->windowTitle() == "Welcome to Kestrio";
    EXPECT_EQ(shown, 1);

    welcome->close(); // by the window manager, not by one of its buttons
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(welcome);
    EXPECT_FALSE(app->onboardingWindow());
    const int checks = ax.trustChecks;
    timers.advance(OnboardingView::kPollMs * 3);
    EXPECT_EQ(ax.trustChecks, checks); // its poll went with it

    // The platform knows about trust a moment after start: the start-up waits
    // for it instead of taking "not yet known" for "untrusted".
    for (const bool trusted : {true, false}) {
        SCOPED_TRACE(trusted);
        app.reset();
        ax.trusted = trusted;
        ax.trustKnown = false;
        launch();
        EXPECT_FALSE(app->statusItem());
        ax.announceTrust();
        EXPECT_TRUE(app->statusItem());
        EXPECT_EQ(bool(app->onboardingWindow()), !trusted); // launched before: only when untrusted
    }
}

TEST_F(Controller, ToggleOpensOverTheLastOtherApplicationAndClosesWhenShown)
{
    settings.store().setBool(SettingsKey::hasLaunchedBefore, true);
    launch();
    // Kestrio itself in front (its own window, by pid or by its id) is never the target.
    workspace.activate(RunningApplication{qint32(QCoreApplication::applicationPid()), "Kestrio", std::nullopt});
    workspace.activate(RunningApplication{99, "Kestrio", "kestrio"});
    workspace.activate(std::nullopt);
    EXPECT_EQ(app->lastActiveApp(), kMousepad);

    app->toggleSearchPanel();
    ASSERT_TRUE(app->searchPanelController());
    EXPECT_TRUE(app->searchPanelController()->panel()->isVisible());
    EXPECT_EQ(app->searchPanelController()->targetApp(), kMousepad);

    app->toggleSearchPanel(); // visible: closes it
    EXPECT_FALSE(app->searchPanelController()->panel());
    EXPECT_EQ(windows.activated.size(), 1);

    app->toggleSearchPanel(); // a fresh panel
    EXPECT_TRUE(app->searchPanelController()->panel());
}

TEST_F(Controller, TheHotkeyOpensThePanel)
{
    settings.store().setBool(SettingsKey::hasLaunchedBefore, true);
    launch();
    keyboard.modifiers(Modifier::ctrl);
    keyboard.modifiers({});
    monotonic.advance(0.1);
    keyboard.modifiers(Modifier::ctrl);
    keyboard.modifiers({});
    EXPECT_TRUE(eventually([&] { return app->searchPanelController() && app->searchPanelController()->panel(); }));
}

TEST_F(Controller, SearchOpenedEventNamesTheTargetOrUnknown)
{
    settings.store().setBool(SettingsKey::hasLaunchedBefore, true);
    settings.store().setBool(SettingsKey::analyticsEnabled, true);
    workspace.frontmost = std::nullopt;
    launch();
    app->toggleSearchPanel();
    timers.advance(AppDelegate::kFrontWaitMs); // nobody says which application is in front
    ASSERT_TRUE(events.waitForRequests(2));
    const QJsonObject opened = QJsonDocument::fromJson(events.requests[1].body).object();
    EXPECT_EQ(opened.value("eventName"), "search_opened");
    EXPECT_EQ(opened.value("props").toObject().value("active_app_bundle_id"), "unknown");
}

TEST_F(Controller, ReloadingTheHotkeyMode)
{
    settings.store().setBool(SettingsKey::hasLaunchedBefore, true);
    settings.store().setBool(SettingsKey::analyticsEnabled, true);
    launch();
    settings.store().setString(SettingsKey::hotkeyMode, "tripleTap"); // unknown: double-tap Command
    hub.postHotkeyModeChanged();
    EXPECT_EQ(hotkey.mode(), HotkeyMode::doubleTapCtrl);
    EXPECT_EQ(settings.store().hotkeyModeText(), "doubleTapCommand");

    settings.store().setString(SettingsKey::hotkeyMode, "customShortcut");
    saveCustomShortcut(KeyChord{Modifier::super, Key::at(37)}, settings.store());
    hub.postHotkeyModeChanged();
    EXPECT_EQ(hotkey.mode(), HotkeyMode::customShortcut);
    EXPECT_EQ(hotkey.customShortcut, (KeyChord{Modifier::super, Key::at(37)}));
    ASSERT_TRUE(events.waitForRequests(3));
    EXPECT_EQ(sentEventNames(), (QStringList{"app_launched", "settings_changed", "settings_changed"}));
}

TEST_F(Controller, OptOutAndQuitFlushOnlyWhenStarted)
{
    launch();
    app->applyAnalyticsOptIn(false);
    EXPECT_FALSE(analytics.isStarted());
    settings.store().setBool(SettingsKey::analyticsEnabled, true);
    hub.postAnalyticsOptInChanged(true);
    EXPECT_TRUE(analytics.isStarted());
    EXPECT_TRUE(crashReporter.isActive());
    hub.postAnalyticsOptInChanged(false);
    EXPECT_FALSE(analytics.isStarted());
    EXPECT_FALSE(crashReporter.isActive());

    row("Quit Kestrio")->trigger();
    EXPECT_EQ(terminations, 1);
    app->applicationWillTerminate();
    EXPECT_FALSE(analytics.isStarted());
}

TEST_F(Controller, SettingsAndAboutWindowsAreReusedWhileTheyShow)
{
    struct Case {
        const char* row;
        QWidget* (AppDelegate::*window)() const;
        QSize size;
    };
    settings.store().setBool(SettingsKey::hasLaunchedBefore, true);
    launch();
    for (const Case& c : {Case{"Settings…", &AppDelegate::settingsWindow, {440, 520}},
                          Case{"About Kestrio", &AppDelegate::aboutWindow, {340, 420}}}) {
        SCOPED_TRACE(c.row);
        row(c.row)->trigger();
        QPointer<QWidget> first = (app.get()->*c.window)();
        ASSERT_TRUE(first);
        EXPECT_TRUE(first->isVisible());
        EXPECT_EQ(first->size(), c.size);
        const qsizetype raised = windows.ownActivated.size();

        row(c.row)->trigger(); // still showing: the same window comes forward
        EXPECT_EQ((app.get()->*c.window)(), first.data());
        EXPECT_EQ(windows.ownActivated.size(), raised + 1);

        first->close();
        row(c.row)->trigger(); // closed: a new one in its place
        ASSERT_TRUE((app.get()->*c.window)());
        EXPECT_NE((app.get()->*c.window)(), first.data());
        EXPECT_TRUE((app.get()->*c.window)()->isVisible());
        EXPECT_FALSE(first); // the closed one is gone
    }
    EXPECT_EQ(settingsViews, 2);

    auto* view = app->aboutWindow()->findChild<AboutView*>();
    ASSERT_TRUE(view);
    EXPECT_EQ(view->productURL, view->bwkURL.resolved(QUrl("apps/kestrio/")));
    EXPECT_EQ(view->productURL.path(), "/apps/kestrio/");
}

TEST_F(Controller, ARecordedShortcutReplacesTheActiveOneAtOnce)
{
    constexpr quint16 kA = 30, kK = 37;
    settings.store().setBool(SettingsKey::hasLaunchedBefore, true);
    saveHotkeyMode(HotkeyMode::customShortcut, settings.store());
    saveCustomShortcut(KeyChord{Modifier::ctrl, Key::at(kA)}, settings.store());
    hotkey.setMode(HotkeyMode::customShortcut);
    hotkey.customShortcut = loadCustomShortcut(settings.store());
    useSettingsForm().layout.scanCodes = {{45, kK}};
    launch();
    int activations = 0;
    hotkey.onActivate = [&] { ++activations; };
    auto panels = [&] {
        QCoreApplication::processEvents(); // activations come as tasks of their own
        return activations;
    };
    keyboard.keyDown(kA, Modifier::ctrl);
    EXPECT_EQ(panels(), 1);

    row("Settings…")->trigger();
    auto* recorder = app->settingsWindow()->findChild<ShortcutRecorderButton*>();
    ASSERT_TRUE(recorder);
    QTest::mouseClick(recorder, Qt::LeftButton);
    QKeyEvent press(QEvent::KeyPress, Qt::Key_K, Qt::MetaModifier | Qt::ShiftModifier, 45, 0, 0);
    QApplication::sendEvent(recorder, &press);

    const KeyChord recorded{Modifier::super | Modifier::shift, Key::at(kK)};
    EXPECT_EQ(loadCustomShortcut(settings.store()), recorded);
    EXPECT_EQ(hotkey.customShortcut, recorded);
    keyboard.keyDown(kA, Modifier::ctrl); // the old one stopped working
    EXPECT_EQ(panels(), 1);
    keyboard.keyDown(kK, Modifier::super | Modifier::shift);
    EXPECT_EQ(panels(), 2);
}

TEST_F(Controller, LaunchingAgainOpensTheSettingsOnlyWithoutTrayIcon)
{
    settings.store().setBool(SettingsKey::hasLaunchedBefore, true);
    launch();
    EXPECT_FALSE(app->applicationShouldHandleReopen());
    EXPECT_FALSE(app->settingsWindow());

    settings.store().setBool(SettingsKey::hideMenuBarIcon, true);
    EXPECT_FALSE(app->applicationShouldHandleReopen());
    ASSERT_TRUE(app->settingsWindow());
    EXPECT_TRUE(app->settingsWindow()->isVisible());
}

TEST(AboutView, FallbacksWhenTheProgramsFactsAreMissing)
{
    EXPECT_EQ(AboutView::nameText(""), "Kestrio");
    EXPECT_EQ(AboutView::nameText("Kestrio Beta"), "Kestrio Beta");
    EXPECT_EQ(AboutView::versionText("", ""), "Version 0.0.0 (0)");
    EXPECT_EQ(AboutView::versionText("1.2.0", "45"), "Version 1.2.0 (45)");
}

} // namespace

namespace {

// Every text a widget tree can show: titles, labels, buttons, choices, hints,
// tool tips, menu rows and the rows of item views.
QStringList textsOf(QWidget* root)
{
    QStringList texts{root->windowTitle(), root->toolTip()};
    QList<QWidget*> widgets = root->findChildren<QWidget*>();
    widgets.prepend(root);
    for (QWidget* w : widgets) {
        texts << w->toolTip() << w->windowTitle();
        if (const auto* styled = qobject_cast<StyledLabel*>(w))
            texts << styled->plainText();
        if (const auto* label = qobject_cast<QLabel*>(w))
            texts << label->text();
        if (const auto* button = qobject_cast<QAbstractButton*>(w))
            texts << button->text();
        if (const auto* box = qobject_cast<QComboBox*>(w)) {
            for (int i = 0; i < box->count(); ++i)
                texts << box->itemText(i);
        }
        if (const auto* field = qobject_cast<QLineEdit*>(w))
            texts << field->placeholderText() << field->text();
        if (const auto* view = qobject_cast<QAbstractItemView*>(w); view && view->model()) {
            for (int row = 0; row < view->model()->rowCount(); ++row) {
                for (int role = Qt::DisplayRole; role <= Qt::UserRole + 8; ++role)
                    texts << view->model()->index(row, 0).data(role).toString();
            }
        }
        for (QAction* action : w->actions())
            texts << action->text() << action->toolTip();
    }
    texts.removeAll(QString());
    return texts;
}

QStringList macOSWordsIn(const QStringList& texts)
{
    QStringList found;
    for (const QString& text : texts) {
        for (const QString& word : macOSOnlyWords()) {
            if (text.contains(word))
                found << word + " in “" + text + "”";
        }
    }
    return found;
}

} // namespace

// Every window in every state, hidden parts included, and the tray menu's
// every row, as the program shows them in `shown`'s words.
class EveryText : public Controller {
protected:
    // `saveAsShortcut`: how the words write Ctrl+Shift+S.
    void collect(const PlatformWords& shown, const QString& saveAsShortcut)
    {
        shownWords = &shown;
        const KeyChord saveAs{Modifier::ctrl | Modifier::shift, Key{0, std::nullopt, "s"}};
        ax.addApplication(42, E::menuBar({E::menu("File", {E::withShortcut(E::item("Save As…"), saveAs)})}));
        useSettingsForm();
        saveCustomShortcut(KeyChord{Modifier::ctrl | Modifier::alt | Modifier::shift | Modifier::super, Key::at(57)},
                           settings.store());
        keyboard.trusted = false;
        ax.trusted = false;
        launch();
        ASSERT_TRUE(app->onboardingWindow());
        texts << textsOf(app->onboardingWindow());
        ax.trusted = true;
        keyboard.trusted = true;
        timers.advance(OnboardingView::kPollMs); // the welcome's next look finds the permission granted
        QCoreApplication::processEvents();
        texts << textsOf(app->onboardingWindow());

        for (HotkeyMode mode : allHotkeyModes()) {
            hotkey.setMode(mode);
            hub.postHotkeyModeChanged();
            app->rebuildStatusMenu();
            texts << textsOf(app->statusMenu());
        }
        keyboard.trusted = false;
        hotkey.start();
        app->rebuildStatusMenu();
        texts << textsOf(app->statusMenu());
        keyboard.trusted = true;
        hotkey.start();
        hub.postUpdateAvailable(
            UpdateCheckResult{"2.1.0", std::nullopt, QUrl("https://example.invalid/k.tar.gz"), std::nullopt, true});
        texts << textsOf(app->statusMenu());

        app->openSettings();
        ASSERT_TRUE(app->settingsWindow());
        texts << textsOf(app->settingsWindow());
        settings.store().setBool(SettingsKey::hideMenuBarIcon, true);
        hub.postMenuBarIconVisibilityChanged();
        texts << textsOf(app->settingsWindow());
        app->openAbout();
        ASSERT_TRUE(app->aboutWindow());
        texts << textsOf(app->aboutWindow());

        app->toggleSearchPanel();
        ASSERT_TRUE(app->searchPanelController() && app->searchPanelController()->panel());
        QWidget* panel = app->searchPanelController()->panel();
        texts << textsOf(panel); // reading
        ASSERT_TRUE(eventually([&] { return textsOf(panel).contains(saveAsShortcut); }));
        texts << textsOf(panel);
        QTest::keyClicks(QApplication::focusWidget(), "zzzq");
        texts << textsOf(panel); // nothing matches
    }

    QStringList texts;
};

// A Linux user reads Linux words everywhere.
TEST_F(EveryText, NoWindowNamesAMacOSThing)
{
    collect(PlatformWords::linuxDesktop(), "Ctrl+Shift+S");
    if (HasFatalFailure())
        return;
    EXPECT_GT(texts.size(), 100);
    EXPECT_EQ(macOSWordsIn(texts), QStringList());
    EXPECT_TRUE(texts.contains(words.doubleTapCtrl));
    EXPECT_TRUE(texts.contains("Super+Ctrl+Alt+Shift+Space"));
}

// The words come from the program's root alone: no window, row or shortcut
// picks its own.
TEST_F(EveryText, EveryWindowSpeaksTheWordsItIsHanded)
{
    const PlatformWords& mac = PlatformWords::macOS();
    collect(mac, "⇧⌘S");
    if (HasFatalFailure())
        return;
    const PlatformWords& linuxDesktop = PlatformWords::linuxDesktop();
    for (const QString& linuxOnly :
         {linuxDesktop.doubleTapCtrl, linuxDesktop.hotkeyInactiveMenuRow, linuxDesktop.grantPermission,
          linuxDesktop.permissionMissing, linuxDesktop.hideIcon, QStringLiteral("Ctrl+Shift+S")})
        EXPECT_FALSE(texts.contains(linuxOnly)) << linuxOnly.toStdString();
    for (const QString& macWords : {mac.doubleTapCtrl, mac.hotkeyInactiveMenuRow, mac.grantPermission,
                                    mac.permissionMissing, mac.hideIcon, QStringLiteral("⌃⌥⇧⌘Space")})
        EXPECT_TRUE(texts.contains(macWords)) << macWords.toStdString();
}

// Without a tray the icon, and the menu behind it, are nowhere: the welcome
// says so once and what to do; launching again opens the settings.
TEST_F(Controller, ADesktopWithoutTrayIsToldOnce)
{
    settings.store().setBool(SettingsKey::hasLaunchedBefore, true);
    tray = false;
    launch();
    EXPECT_FALSE(app->onboardingWindow()); // a tray host may still come
    timers.advance(AppDelegate::kTrayGraceMs - 1);
    EXPECT_FALSE(app->onboardingWindow());
    timers.advance(1);
    ASSERT_TRUE(app->onboardingWindow());
    auto* welcome = app->onboardingWindow()->findChild<OnboardingView*>();
    ASSERT_TRUE(welcome);
    EXPECT_TRUE(welcome->showsNoTrayNotice());
    EXPECT_GT(app->onboardingWindow()->height(), 360);
    EXPECT_TRUE(settings.store().boolValue(SettingsKey::noTrayNoticeShown));
    app->applicationShouldHandleReopen();
    EXPECT_TRUE(app->settingsWindow() && app->settingsWindow()->isVisible());
    EXPECT_TRUE(hotkey.isActive()); // everything else goes on

    app->onboardingWindow()->close();
    app.reset();
    launch(); // the next start says nothing
    timers.advance(AppDelegate::kTrayGraceMs);
    EXPECT_FALSE(app->onboardingWindow());
}

TEST_F(Controller, NoTrayNoticeWhenTheTrayCameInTimeOrTheIconIsHidden)
{
    settings.store().setBool(SettingsKey::hasLaunchedBefore, true);
    tray = false;
    launch();
    tray = true; // the session's tray host came up
    timers.advance(AppDelegate::kTrayGraceMs);
    EXPECT_FALSE(app->onboardingWindow());
    EXPECT_FALSE(settings.store().boolValue(SettingsKey::noTrayNoticeShown));

    app.reset();
    tray = false;
    settings.store().setBool(SettingsKey::hideMenuBarIcon, true);
    launch();
    timers.advance(AppDelegate::kTrayGraceMs);
    EXPECT_FALSE(app->onboardingWindow());
}
