// Runs the real hotkey detector on this X session and prints "activated" for
// every activation. Usage:
//   kestrio-hotkey-probe doubleTapCommand | doubleTapOption
//   kestrio-hotkey-probe customShortcut KEYCODE MODIFIERS
//   kestrio-hotkey-probe --measure N   (injects N double taps of Ctrl with
//                                       XTest and prints the delays)
#include "base/settingsstore.h"
#include "hotkey/hotkeyservice.h"
#include "platform/clock.h"
#include "platform/hotkeyplatform.h"
#include "platform/linux/linuxplatform.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTimer>

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

#include <algorithm>
#include <cstdio>

namespace {

void say(const char* line)
{
    std::printf("%s\n", line);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    LinuxPlatform platform; // the backends of this session
    const QStringList args = app.arguments();
    SettingsStore settings(QDir::temp().filePath(QStringLiteral("kestrio-hotkey-probe-%1.json").arg(app.applicationPid())));
    const bool measure = args.value(1) == QLatin1String("--measure");
    settings.setString(SettingsKey::hotkeyMode, measure ? QStringLiteral("doubleTapCommand") : args.value(1));
    if (args.value(1) == QLatin1String("customShortcut")) { // as stored: macOS's key code and modifier bits
        settings.setInteger(SettingsKey::customHotkeyKeyCode, args.value(2).toLongLong());
        settings.setInteger(SettingsKey::customHotkeyModifiers, args.value(3).toLongLong(nullptr, 0));
    }

    HotkeyService service(platform.hotkeys(), settings, Clock::monotonic());
    QElapsedTimer sinceInjection;
    std::vector<double> delaysUs;
    service.onActivate = [&] {
        if (measure && sinceInjection.isValid())
            delaysUs.push_back(double(sinceInjection.nsecsElapsed()) / 1000.0);
        say("activated");
    };
    QObject::connect(&service, &HotkeyService::isActiveChanged, [](bool active) { say(active ? "active" : "inactive"); });
    if (service.start())
        say("active");

    if (measure) {
        Display* display = XOpenDisplay(nullptr);
        const KeyCode ctrl = XKeysymToKeycode(display, XStringToKeysym("Control_L"));
        const int rounds = args.value(2).toInt();
        auto key = [display, ctrl](bool down) {
            XTestFakeKeyEvent(display, ctrl, down ? True : False, CurrentTime);
            XFlush(display);
        };
        int round = 0;
        auto* timer = new QTimer(&app);
        QObject::connect(timer, &QTimer::timeout, [&] {
            if (round++ == rounds) {
                std::sort(delaysUs.begin(), delaysUs.end());
                if (!delaysUs.empty())
                    std::printf("delay from injected release to activation: median %.0f µs, min %.0f, max %.0f (%zu of %d)\n",
                                delaysUs[delaysUs.size() / 2], delaysUs.front(), delaysUs.back(), delaysUs.size(), rounds);
                app.exit(int(delaysUs.size()) == rounds ? 0 : 1); // a tap not seen is a failure, not a sample
                return;
            }
            key(true);
            key(false);
            key(true);
            sinceInjection.start();
            key(false);
        });
        // Far apart, so rounds never form a double tap together; from when the
        // keyboard is watched (trust is known a moment after start).
        if (service.isActive())
            timer->start(400);
        else
            QObject::connect(&service, &HotkeyService::isActiveChanged, timer, [timer](bool active) {
                if (active && !timer->isActive())
                    timer->start(400);
            });
    }
    return app.exec();
}
