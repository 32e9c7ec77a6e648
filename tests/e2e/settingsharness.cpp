// Shows the settings window (or the about window) in one prepared state, for
// screenshots and for recording a shortcut with real key presses. Reports on
// standard output as JSON lines: {"ready": …, "recorder": [x, y]} once the
// state is shown, {"shortcut": …} for each recorded shortcut.
//   kestrio-settings-harness SCENE
// Scenes: general, hotkey, appearance, updates-available, updates-downloading,
// data, dark, about, onboarding (as before the permission is granted).
#include "app/aboutview.h"
#include "app/appearancetheme.h"
#include "app/onboardingview.h"
#include "app/settingsview.h"
#include "base/notificationhub.h"
#include "base/platformwords.h"
#include "base/settingsstore.h"
#include "base/timers.h"
#include "hotkey/hotkeyservice.h"
#include "hotkey/shortcutrecorderbutton.h"
#include "menu/accessibilityservice.h"
#include "platform/accessibility.h"
#include "platform/clock.h"
#include "platform/fake/fakeaccessibility.h"
#include "platform/hotkeyplatform.h"
#include "platform/keyboardlayout.h"
#include "platform/linux/atspi/atspiaccessibility.h"
#include "platform/linux/linuxplatform.h"
#include "platform/loginitem.h"
#include "platform/updatepackaging.h"
#include "search/usagetracker.h"
#include "support/loopbackhttpserver.h"
#include "update/installmarker.h"

#include <QApplication>
#include <QBoxLayout>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>

namespace {

void report(const QJsonObject& line)
{
    std::printf("%s\n", QJsonDocument(line).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

QWidget* window(const QString& title, QSize size, QWidget* content)
{
    auto* w = new QWidget;
    w->setWindowTitle(title);
    auto* layout = new QVBoxLayout(w);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
    w->setFixedSize(size);
    w->move(200, 80);
    w->show();
    w->activateWindow();
    return w;
}

QPushButton* button(QWidget* in, const QString& text)
{
    for (QPushButton* b : in->findChildren<QPushButton*>()) {
        if (b->text() == text)
            return b;
    }
    return nullptr;
}

// A download that stops at 42 % and stays there.
} // namespace

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    LinuxPlatform platform; // the backends of this session
    app.setApplicationName(QStringLiteral("Kestrio"));
    app.setQuitOnLastWindowClosed(false);
    const QString scene = app.arguments().value(1, QStringLiteral("general"));

    if (scene == QLatin1String("about")) {
        const QUrl site(QStringLiteral("https://kestrio.brambleworks.invalid/"));
        window(QStringLiteral("About Kestrio"), QSize(340, 420), new AboutView(site, site.resolved(QUrl("apps/kestrio/"))));
        QTimer::singleShot(500, &app, [] { report({{"ready", true}}); });
        return app.exec();
    }

    if (scene == QLatin1String("onboarding")) {
        static FakeAccessibility untrusted; // as before the user grants the permission
        untrusted.trusted = false;
        static AccessibilityService service(untrusted, PlatformWords::linuxDesktop().keys);
        static QtTimers timers;
        window(QStringLiteral("Welcome to Kestrio"), QSize(480, 360),
               new OnboardingView(PlatformWords::linuxDesktop(), service, timers, [] {}));
        QTimer::singleShot(500, &app, [] { report({{"ready", true}}); });
        return app.exec();
    }

    QTemporaryDir folder;
    SettingsStore store(folder.filePath(QStringLiteral("settings.json")));
    if (scene == QLatin1String("general"))
        store.setBool(SettingsKey::hideMenuBarIcon, true);
    if (scene == QLatin1String("hotkey"))
        store.setString(SettingsKey::hotkeyMode, QStringLiteral("customShortcut"));
    if (scene == QLatin1String("dark"))
        store.setString(SettingsKey::appearance, QStringLiteral("dark"));
    AppearanceTheme::apply(store.appearance());

    // Like the program, start once the platform knows whether menus may be
    // read, so the hotkey's state does not change under the screenshots.
    bool trustKnown = false;
    platform.accessibility().afterTrustIsKnown(&app, [&trustKnown] { trustKnown = true; });
    while (!trustKnown)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);

    NotificationHub hub;
    HotkeyService hotkey(platform.hotkeys(), store, Clock::monotonic());
    hotkey.start();
    AccessibilityService accessibility(platform.accessibility(), PlatformWords::linuxDesktop().keys);
    UsageTracker usage(store);
    usage.recordUsage(QStringLiteral("org.xfce.mousepad"), QStringLiteral("File → Save"));
    // A marked installation and a download that stalls half-way, so the
    // installer row stays on its progress.
    const QString installation = folder.filePath(QStringLiteral("Kestrio.app"));
    QDir().mkpath(installation);
    InstallMarker{QStringLiteral("Kestrio"), QStringLiteral("1.0.0"), {}}.write(installation);
    SelfUpdater updater(platform.updatePackaging(), PlatformWords::linuxDesktop(),
                        SelfUpdater::Environment{folder.path(), installation, QCoreApplication::applicationPid(), [] {},
                                                 QString::fromLatin1(QByteArray("Ed" + QByteArray(40, '\x01')).toBase64()),
                                                 1 << 20, [] {}});
    LoopbackHttpServer download{LoopbackHttpServer::Scheme::https};
    download.paths["/Kestrio-9.9.9.tar.gz"] = {200, QByteArray(1000, 'x'), LoopbackAnswer::Ending::stalled};
    download.paths["/Kestrio-9.9.9.tar.gz.minisig"] = {200, "signature"};
    auto* view = new SettingsView(SettingsView::Services{
        store, hub, hotkey, accessibility, usage, updater, platform.loginItem(), platform.keyboardLayout(),
        PlatformWords::linuxDesktop(),
        [&download](SettingsView::UpdateCompletion done) {
            QTimer::singleShot(300, [done, url = download.url(QStringLiteral("/Kestrio-9.9.9.tar.gz"))] {
                done(UpdateCheckResult{QStringLiteral("9.9.9"), std::nullopt, url, std::nullopt, true});
            });
        },
        [] { QCoreApplication::quit(); }});
    QWidget* settingsWindow = window(QStringLiteral("Kestrio Settings"), QSize(440, 520), view);

    // Reported once the recorder shows it.
    QObject::connect(&hub, &NotificationHub::hotkeyModeChanged, &app, [&] { QTimer::singleShot(0, &app, [&] {
        // As stored: macOS's key code and modifier bits.
        if (loadCustomShortcut(store))
            report({{"shortcut", QJsonObject{{"keyCode", store.integerValue(SettingsKey::customHotkeyKeyCode)},
                                             {"modifiers", store.integerValue(SettingsKey::customHotkeyModifiers)},
                                             {"text", view->recorderButton()->text()}}}});
    }); });

    const bool updates = scene.startsWith(QLatin1String("updates"));
    const QString section = updates ? QStringLiteral("Updates")
        : scene == QLatin1String("appearance") ? QStringLiteral("Appearance")
        : scene == QLatin1String("data")       ? QStringLiteral("Data")
        : scene == QLatin1String("hotkey")     ? QStringLiteral("Hotkey")
                                               : QStringLiteral("General");
    QTimer::singleShot(300, &app, [&] {
        view->scrollToSection(section);
        if (updates)
            button(view, QStringLiteral("Check Now"))->click();
        if (scene == QLatin1String("data"))
            button(view, QStringLiteral("Reset Usage History"))->click();
    });
    QTimer::singleShot(900, &app, [&] {
        if (scene == QLatin1String("updates-downloading"))
            button(view, QStringLiteral("Install Update"))->click();
    });
    QTimer::singleShot(1600, &app, [&] {
        ShortcutRecorderButton* recorder = view->recorderButton();
        const QPoint center = recorder->mapToGlobal(recorder->rect().center());
        report({{"ready", true},
                {"window", qint64(settingsWindow->winId())},
                {"recorder", QJsonArray{center.x(), center.y()}},
                {"recorderVisible", recorder->isVisible()}});
    });
    return app.exec();
}
