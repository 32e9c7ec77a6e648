#include "app/desktopshortcutpanel.h"
#include "app/formsection.h"
#include "app/settingsview.h"
#include "base/notificationhub.h"
#include "base/platformwords.h"
#include "base/styledlabel.h"
#include "hotkey/hotkeyservice.h"
#include "hotkey/shortcutrecorderbutton.h"
#include "menu/accessibilityservice.h"
#include "platform/fake/fakeaccessibility.h"
#include "platform/fake/fakeclock.h"
#include "platform/fake/fakehotkeyplatform.h"
#include "platform/fake/fakekeyboardlayout.h"
#include "platform/fake/fakeloginitem.h"
#include "platform/linux/tarupdatepackaging.h"
#include "search/usagetracker.h"
#include "support/eventually.h"
#include "support/loopbackhttpserver.h"
#include "support/tempsettings.h"
#include "update/installmarker.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

namespace {

const PlatformWords& words = PlatformWords::linuxDesktop();

using Check = SettingsView::UpdateCheckState;
using UpdaterState = SelfUpdater::State;

class Settings : public testing::Test {
protected:
    TempSettings settings;
    SettingsStore& store = settings.store();
    NotificationHub hub;
    FakeHotkeyPlatform keyboard;
    FakeClock clock;
    HotkeyService hotkey{keyboard, store, clock};
    FakeAccessibility ax;
    AccessibilityService accessibility{ax, PlatformWords::linuxDesktop().keys};
    UsageTracker usage{store};
    TarUpdatePackaging packaging;
    QTemporaryDir temporary;
    std::optional<QString> installation; // none: the updater refuses at once
    std::unique_ptr<SelfUpdater> updater;
    FakeLoginItem login;
    FakeKeyboardLayout layout;
    std::vector<SettingsView::UpdateCompletion> pendingChecks;
    int terminations = 0;
    // Each announcement with what the store held when it came.
    QStringList announced;
    std::unique_ptr<SettingsView> view;

    Settings()
    {
        QObject::connect(&hub, &NotificationHub::hotkeyModeChanged, [this] {
            announced << "hotkeyModeChanged " + store.hotkeyModeText().value_or("-") + " "
                    + QString::number(store.integerValue(SettingsKey::customHotkeyKeyCode));
        });
        QObject::connect(&hub, &NotificationHub::menuBarIconVisibilityChanged, [this] {
            announced << "menuBarIconVisibilityChanged " + QString::number(store.hideMenuBarIcon());
        });
        QObject::connect(&hub, &NotificationHub::analyticsOptInChanged, [this](bool enabled) {
            announced << QString("analyticsOptInChanged %1 %2").arg(enabled).arg(store.analyticsEnabled());
        });
    }

    void open()
    {
        updater = std::make_unique<SelfUpdater>(
            packaging, words,
            SelfUpdater::Environment{temporary.path(), installation, QCoreApplication::applicationPid(), {},
                                     // a key of the right form; nothing in these tests gets as far as checking with it
                                     QString::fromLatin1(QByteArray("Ed" + QByteArray(40, '\x01')).toBase64()),
                                     1 << 20, {}});
        view = std::make_unique<SettingsView>(SettingsView::Services{
            store, hub, hotkey, accessibility, usage, *updater, login, layout, words,
            [this](SettingsView::UpdateCompletion done) { pendingChecks.push_back(std::move(done)); },
            [this] { ++terminations; }});
        view->resize(440, 520);
        view->show();
    }

    template <typename T = QAbstractButton>
    T* control(const QString& text) const
    {
        for (T* candidate : view->findChildren<T*>()) {
            if (candidate->text() == text)
                return candidate;
        }
        ADD_FAILURE() << "no control " << text.toStdString();
        return nullptr;
    }
    bool shows(const QString& text) const
    {
        for (QWidget* w : view->findChildren<QWidget*>()) {
            const auto* styled = qobject_cast<StyledLabel*>(w);
            const auto* label = qobject_cast<QLabel*>(w);
            const auto* button = qobject_cast<QAbstractButton*>(w);
            const QString shown = styled ? styled->plainText() : label ? label->text() : button ? button->text() : QString();
            if (shown == text)
                return w->isVisibleTo(view.get());
        }
        return false;
    }
    QComboBox* activationMethod() const { return view->findChild<QComboBox*>(); }
    // A choice in the picker's pop-up.
    void choose(int index)
    {
        QComboBox* combo = activationMethod();
        combo->setCurrentIndex(index);
        emit combo->activated(index);
    }
    // A click on the toggle's label, as a user clicks it.
    void toggle(const QString& text) { QTest::mouseClick(control<QCheckBox>(text), Qt::LeftButton, {}, QPoint(8, 8)); }
    void finishCheck(const UpdateCheckService::Outcome& outcome)
    {
        ASSERT_EQ(pendingChecks.size(), 1u);
        auto done = std::move(pendingChecks.front());
        pendingChecks.clear();
        done(outcome);
    }
    static UpdateCheckResult release(bool newer)
    {
        return UpdateCheckResult{"2.0.0", std::nullopt, QUrl("http://127.0.0.1:9/k.tar.gz"), std::nullopt, newer};
    }
};

TEST_F(Settings, SixSectionsInOrderAndTheDefaults)
{
    open();
    QStringList titles;
    for (FormSection* section : view->sections())
        titles << section->title();
    EXPECT_EQ(titles, (QStringList{"General", "Hotkey", "Appearance", "Privacy", "Updates", "Data"}));
    EXPECT_FALSE(control<QCheckBox>("Launch at login")->isChecked());
    EXPECT_FALSE(control<QCheckBox>(words.hideIcon)->isChecked());
    EXPECT_FALSE(control<QCheckBox>("Share anonymous usage data")->isChecked());
    EXPECT_TRUE(control<QCheckBox>("Automatically check for updates")->isChecked());
    EXPECT_EQ(activationMethod()->currentText(), words.doubleTapCtrl);
    EXPECT_TRUE(control<QToolButton>("System")->isChecked());
    EXPECT_FALSE(shows("Shortcut:") || shows("Click to record"));
    EXPECT_FALSE(shows("Quit Kestrio"));
    EXPECT_FALSE(shows("Install Update"));
    EXPECT_EQ(view->updateCheckState(), Check::idle());
    EXPECT_TRUE(announced.isEmpty());
    EXPECT_EQ(SettingsView::privacyPolicyURL().path(), "/apps/kestrio/privacy/");
}

TEST_F(Settings, TogglesWriteTheirKeyThenAnnounceOnce)
{
    struct Case {
        QString toggle;
        QLatin1StringView key;
        bool after;
        QStringList announced;
    };
    const Case cases[] = {
        {words.hideIcon, SettingsKey::hideMenuBarIcon, true, {"menuBarIconVisibilityChanged 1"}},
        {"Share anonymous usage data", SettingsKey::analyticsEnabled, true, {"analyticsOptInChanged 1 1"}},
        {"Automatically check for updates", SettingsKey::autoUpdateCheck, false, {}},
        {"Launch at login", SettingsKey::launchAtLogin, true, {}},
    };
    open();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.toggle.toStdString());
        announced.clear();
        toggle(c.toggle);
        EXPECT_EQ(store.object(c.key), QVariant(c.after));
        EXPECT_EQ(announced, c.announced);
    }
    EXPECT_EQ(login.calls, QStringList{"register"});
    announced.clear();
    toggle("Share anonymous usage data");
    EXPECT_EQ(announced, QStringList{"analyticsOptInChanged 0 0"});
}

TEST_F(Settings, ALoginItemFailureIsPrintedAndTheChoiceKept)
{
    login.failure = "Permission denied";
    open();
    testing::internal::CaptureStdout();
    toggle("Launch at login");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Failed to set launch at login: Permission denied\n");
    EXPECT_TRUE(control<QCheckBox>("Launch at login")->isChecked());
    EXPECT_TRUE(store.launchAtLogin());
    toggle("Launch at login");
    EXPECT_EQ(login.calls, (QStringList{"register", "unregister"}));
}

TEST_F(Settings, HidingTheIconOffersQuit)
{
    open();
    toggle(words.hideIcon);
    EXPECT_TRUE(shows("Quit Kestrio"));
    EXPECT_TRUE(shows(words.hiddenIconNote));
    QTest::mouseClick(control("Quit Kestrio"), Qt::LeftButton);
    EXPECT_EQ(terminations, 1);
}

TEST_F(Settings, CustomShortcutRowOnlyInCustomModeAndTheShortcutKept)
{
    layout.scanCodes = {{45, 37}}; // K
    layout.characters = {{37, "k"}};
    open();
    choose(2);
    EXPECT_EQ(store.hotkeyModeText(), "customShortcut");
    EXPECT_EQ(announced, QStringList{"hotkeyModeChanged customShortcut 0"});
    EXPECT_TRUE(shows("Shortcut:"));
    EXPECT_TRUE(shows("Click to record"));

    // Recording saves the shortcut, then tells the detector.
    announced.clear();
    QTest::mouseClick(view->recorderButton(), Qt::LeftButton);
    EXPECT_TRUE(view->isRecordingShortcut());
    QKeyEvent press(QEvent::KeyPress, Qt::Key_K, Qt::MetaModifier | Qt::AltModifier, 45, 0, 0);
    QApplication::sendEvent(view->recorderButton(), &press);
    EXPECT_FALSE(view->isRecordingShortcut());
    EXPECT_EQ(view->recordedShortcut(), (KeyChord{Modifier::super | Modifier::alt, Key::at(37)}));
    EXPECT_EQ(announced, QStringList{"hotkeyModeChanged customShortcut 40"});
    EXPECT_TRUE(shows("Super+Alt+K"));

    announced.clear();
    choose(1);
    EXPECT_EQ(store.hotkeyModeText(), "doubleTapOption");
    EXPECT_EQ(announced, QStringList{"hotkeyModeChanged doubleTapOption 40"});
    EXPECT_FALSE(shows("Shortcut:"));
    EXPECT_EQ(loadCustomShortcut(store), (KeyChord{Modifier::super | Modifier::alt, Key::at(37)}));

    announced.clear();
    choose(1); // the same choice again is no change
    EXPECT_TRUE(announced.isEmpty());
}

TEST_F(Settings, WarningsFollowTheDetectorWhileOpen)
{
    const QString inactive = "Hotkey inactive";
    store.setString(SettingsKey::hotkeyMode, "customShortcut");
    keyboard.trusted = false;
    hotkey.start();
    open();
    EXPECT_TRUE(shows(inactive));
    QTest::mouseClick(control(words.openAccessibilitySettings), Qt::LeftButton);
    EXPECT_EQ(ax.settingsOpened, 1);

    keyboard.trusted = true;
    hotkey.pollTick(); // the detector notices the grant
    EXPECT_FALSE(shows(inactive));
    keyboard.trusted = false;
    hotkey.start(); // withdrawn: noticed at the next start
    EXPECT_TRUE(shows(inactive));
}

TEST_F(Settings, TheHotkeySectionSaysHowKeysReachKestrio)
{
    // What the session shows Kestrio of the keys, and where it shows none,
    // how the desktop's own shortcut comes about.
    struct Case {
        KeyboardAccess access;
        DesktopShortcutSetup setup;
        bool unavailable, fromDevices, inactive, setUpButton, command, configLine;
    };
    using Setup = DesktopShortcutSetup;
    for (const Case& c : {Case{KeyboardAccess::sessionWide, Setup::notNeeded, false, false, true, false, false, false},
                          Case{KeyboardAccess::inputDevices, Setup::notNeeded, false, true, true, false, false, false},
                          Case{KeyboardAccess::none, Setup::desktopWatches, true, false, false, true, false, false},
                          Case{KeyboardAccess::none, Setup::configLine, true, false, false, false, false, true},
                          Case{KeyboardAccess::none, Setup::byHand, true, false, false, false, true, false}}) {
        SCOPED_TRACE(int(c.setup));
        keyboard.access = c.access;
        keyboard.setup = c.setup;
        keyboard.refuseTap = true; // no tap: the detector is inactive in every case
        hotkey.start();
        open();
        EXPECT_EQ(shows(words.keysUnavailableTitle), c.unavailable);
        EXPECT_EQ(shows(words.keysFromDevicesNote), c.fromDevices);
        // Accessibility is no remedy for keys the session never shows.
        EXPECT_EQ(shows("Hotkey inactive"), c.inactive);
        EXPECT_EQ(shows(words.setUpDesktopShortcut), c.setUpButton);
        EXPECT_EQ(shows(words.toggleCommand), c.command);
        EXPECT_EQ(shows(words.configLineNote), c.configLine);
        if (c.configLine) {
            // The shortcut Kestrio offers until one is recorded, in sway's words.
            EXPECT_EQ(view->desktopShortcutPanel()->lineText(), "bindsym ctrl+alt+57");
            QApplication::clipboard()->clear();
            QTest::mouseClick(control(words.copyCommand), Qt::LeftButton);
            EXPECT_EQ(QApplication::clipboard()->text(), "bindsym ctrl+alt+57");
        }
        if (c.command) {
            QApplication::clipboard()->clear();
            QTest::mouseClick(control(words.copyCommand), Qt::LeftButton);
            EXPECT_EQ(QApplication::clipboard()->text(), "kestrio --toggle");
        }
    }
}

// The one click where the desktop watches the shortcut: Ctrl+Alt+Space
// becomes the custom shortcut, the controller hears of it, and what the
// desktop made of it shows; a refusal says why and offers the click again.
TEST_F(Settings, SetUpShortcutAsksTheDesktopAndShowsWhatItGranted)
{
    keyboard.access = KeyboardAccess::none;
    keyboard.desktopWatchesShortcuts = true;
    keyboard.refuseTap = true;
    hotkey.start();
    open();
    DesktopShortcutPanel* panel = view->desktopShortcutPanel();
    EXPECT_EQ(panel->statusText(), words.noDesktopShortcut);
    QTest::mouseClick(control(words.setUpDesktopShortcut), Qt::LeftButton);
    EXPECT_EQ(store.hotkeyModeText(), "customShortcut");
    EXPECT_EQ(loadCustomShortcut(store), defaultDesktopShortcut());
    EXPECT_EQ(announced, QStringList{"hotkeyModeChanged customShortcut 49"});

    // The controller applies it (as on hotkeyModeChanged): the desktop is asked,
    // replacing what it had.
    hotkey.setMode(HotkeyMode::customShortcut);
    hotkey.customShortcut = loadCustomShortcut(store);
    hotkey.applyDesktopShortcutChoice();
    EXPECT_EQ(keyboard.desktopShortcut, defaultDesktopShortcut());
    EXPECT_TRUE(keyboard.desktopReplaced);
    keyboard.desktopChanged({DesktopShortcutState::Kind::bound, "Ctrl+Alt+Space", {}});
    EXPECT_EQ(panel->statusText(), "Ctrl+Alt+Space opens Kestrio");
    EXPECT_FALSE(panel->setUpButton()->isVisible());
    EXPECT_TRUE(panel->removeButton()->isVisible());

    keyboard.desktopChanged({DesktopShortcutState::Kind::refused, {}, "Ctrl+Alt+Space is already taken."});
    EXPECT_EQ(panel->statusText(), "Ctrl+Alt+Space is already taken.");
    EXPECT_TRUE(panel->setUpButton()->isVisible());
    EXPECT_FALSE(panel->removeButton()->isVisible());

    // Remove leaves the custom mode, which takes the desktop's shortcut away
    // once the controller applies it; the recorded keys stay for next time.
    keyboard.desktopChanged({DesktopShortcutState::Kind::bound, "Ctrl+Alt+Space", {}});
    announced.clear();
    QTest::mouseClick(panel->removeButton(), Qt::LeftButton);
    EXPECT_EQ(store.hotkeyModeText(), "doubleTapCommand");
    EXPECT_EQ(announced, QStringList{"hotkeyModeChanged doubleTapCommand 49"});
    EXPECT_EQ(loadCustomShortcut(store), defaultDesktopShortcut());
    hotkey.setMode(HotkeyMode::doubleTapCtrl);
    hotkey.applyDesktopShortcutChoice();
    EXPECT_EQ(keyboard.desktopForgotten, 1);
    EXPECT_EQ(panel->statusText(), words.noDesktopShortcut);
    EXPECT_TRUE(panel->setUpButton()->isVisible());
}

TEST_F(Settings, ThemeIsStoredAndApplied)
{
    const QPalette original = QApplication::palette();
    open();
    StyledLabel* note = nullptr;
    for (StyledLabel* label : view->findChildren<StyledLabel*>())
        note = label->plainText().startsWith("Off by default.") ? label : note;
    ASSERT_TRUE(note);
    QTest::mouseClick(control("Dark"), Qt::LeftButton);
    EXPECT_EQ(store.appearance(), "dark");
    EXPECT_LT(QApplication::palette().color(QPalette::Window).lightness(), 100);
    QCoreApplication::processEvents();
    EXPECT_GT(note->palette().color(QPalette::WindowText).lightness(), 150); // dimmed text turned light too
    QTest::mouseClick(control("Light"), Qt::LeftButton);
    EXPECT_EQ(store.appearance(), "light");
    EXPECT_GT(QApplication::palette().color(QPalette::Window).lightness(), 200);
    QTest::mouseClick(control("System"), Qt::LeftButton);
    EXPECT_EQ(store.appearance(), "system");
    EXPECT_EQ(QApplication::palette().color(QPalette::Window), original.color(QPalette::Window));
    EXPECT_TRUE(announced.isEmpty());
}

TEST_F(Settings, CheckNowStates)
{
    open();
    QPushButton* checkNow = control<QPushButton>("Check Now");
    QTest::mouseClick(checkNow, Qt::LeftButton);
    EXPECT_EQ(view->updateCheckState(), Check::checking());
    EXPECT_TRUE(shows("Checking…"));
    EXPECT_FALSE(checkNow->isEnabled());
    QTest::mouseClick(checkNow, Qt::LeftButton); // impossible while the first runs
    EXPECT_EQ(pendingChecks.size(), 1u);

    finishCheck(UpdateCheckError{UpdateCheckError::Kind::network, "Connection refused"});
    EXPECT_EQ(view->updateCheckState(), Check::failed("Network error: Connection refused"));
    EXPECT_TRUE(shows("Network error: Connection refused"));
    EXPECT_TRUE(checkNow->isEnabled());

    QTest::mouseClick(checkNow, Qt::LeftButton);
    finishCheck(release(false));
    EXPECT_EQ(view->updateCheckState(), Check::upToDate());
    EXPECT_TRUE(shows("Up to date"));
    EXPECT_FALSE(shows("Network error: Connection refused"));
    EXPECT_FALSE(shows("Install Update"));

    QTest::mouseClick(checkNow, Qt::LeftButton);
    finishCheck(release(true));
    EXPECT_EQ(view->updateCheckState(), Check::available("2.0.0", QUrl("http://127.0.0.1:9/k.tar.gz")));
    EXPECT_TRUE(shows("v2.0.0 available"));
    EXPECT_TRUE(shows("Install Update"));
}

TEST_F(Settings, AnAutomaticCheckAloneOffersNoInstaller)
{
    open();
    hub.postUpdateAvailable(release(true));
    EXPECT_FALSE(shows("Install Update"));
    EXPECT_EQ(view->updateCheckState(), Check::idle());
}

TEST_F(Settings, InstallerRowFollowsTheSelfUpdater)
{
    LoopbackHttpServer site{LoopbackHttpServer::Scheme::https};
    site.answer = false; // the download stays under way
    QTemporaryDir home;
    installation = home.filePath("Kestrio.app");
    QDir().mkpath(*installation);
    ASSERT_FALSE((InstallMarker{"Kestrio", "1.0.0", {}}.write(*installation)));
    open();
    QTest::mouseClick(control("Check Now"), Qt::LeftButton);
    finishCheck(UpdateCheckResult{"2.0.0", std::nullopt, site.url("/k.tar.gz"), std::nullopt, true});

    QTest::mouseClick(control("Install Update"), Qt::LeftButton);
    EXPECT_EQ(updater->state(), UpdaterState::downloading(0));
    EXPECT_TRUE(site.waitForRequests(1));
    EXPECT_TRUE(shows("Downloading… 0%"));
    EXPECT_FALSE(shows("Install Update"));

    emit updater->stateChanged(UpdaterState::downloading(0.429));
    EXPECT_TRUE(shows("Downloading… 42%"));
    EXPECT_EQ(view->findChild<QProgressBar*>()->value(), 429);
    emit updater->stateChanged(UpdaterState::installing());
    EXPECT_TRUE(shows("Installing update…"));
    EXPECT_FALSE(shows("Cancel"));
    emit updater->stateChanged(UpdaterState::downloading(0.0));

    QTest::mouseClick(control("Cancel"), Qt::LeftButton);
    EXPECT_EQ(updater->state(), UpdaterState::idle());
    EXPECT_TRUE(shows("Install Update"));

    emit updater->stateChanged(UpdaterState::failed("The download was damaged."));
    EXPECT_TRUE(shows("Install Update")); // another attempt stays possible
    EXPECT_TRUE(shows("The download was damaged."));
}

TEST_F(Settings, AnUpdaterFailureShowsUnderTheButton)
{
    open(); // not installed where it can update itself
    QTest::mouseClick(control("Check Now"), Qt::LeftButton);
    finishCheck(release(true));
    QTest::mouseClick(control("Install Update"), Qt::LeftButton);
    EXPECT_TRUE(shows("This copy of Kestrio is updated by its package manager, not by Kestrio itself. "
                      "The release page opens in your browser."));
    EXPECT_TRUE(shows("Install Update"));
}

TEST_F(Settings, ResetAsksFirst)
{
    usage.recordUsage("org.xfce.mousepad", "File → Save");
    open();
    for (const char* answer : {"Cancel", "Reset"}) {
        SCOPED_TRACE(answer);
        QTest::mouseClick(control("Reset Usage History"), Qt::LeftButton);
        EXPECT_TRUE(view->showResetConfirmation());
        auto* box = view->findChild<QMessageBox*>();
        ASSERT_TRUE(box);
        EXPECT_EQ(box->text(), "Reset all usage history?");
        QAbstractButton* chosen = nullptr;
        for (QAbstractButton* b : box->buttons())
            chosen = b->text() == answer ? b : chosen;
        ASSERT_TRUE(chosen);
        QTest::mouseClick(chosen, Qt::LeftButton);
        EXPECT_FALSE(view->showResetConfirmation());
        EXPECT_EQ(usage.count("org.xfce.mousepad", "File → Save"), QString(answer) == "Cancel" ? 1 : 0);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

} // namespace
