#include "platform/linux/wayland/waylanddesktopwindows.h"

#include "platform/linux/windows/windowdirectory.h"

#include <QGuiApplication>
#include <QWindow>

WaylandDesktopWindows::WaylandDesktopWindows(WindowDirectory& windows, std::function<void(quint64)> focusWindow)
    : windows_(windows), focusWindow_(std::move(focusWindow))
{
}

std::optional<quint64> WaylandDesktopWindows::windowOf(const RunningApplication& app)
{
    if (app.window && windows_.window(*app.window))
        return app.window;
    return windows_.windowOfProcess(app.processIdentifier);
}

std::optional<QRect> WaylandDesktopWindows::windowGeometry(const RunningApplication& app)
{
    const auto id = windowOf(app);
    const auto window = id ? windows_.window(*id) : std::nullopt;
    return window ? window->frame : std::nullopt;
}

void WaylandDesktopWindows::activate(const RunningApplication& app)
{
    // Where the compositor cannot be asked, it gives the focus back itself
    // when the panel closes.
    if (!focusWindow_)
        return;
    if (const auto id = windowOf(app))
        focusWindow_(*id);
}

void WaylandDesktopWindows::activateOwnWindow(quintptr windowId)
{
    // Qt's Wayland platform activates with the token the environment holds,
    // the way a program started by the desktop would.
    if (token_.isEmpty())
        return;
    const QString token = std::exchange(token_, QString());
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
        if (window->winId() == windowId) {
            qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
            window->requestActivate();
            return;
        }
    }
}
