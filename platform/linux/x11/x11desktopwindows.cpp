#include "platform/linux/x11/x11desktopwindows.h"

std::optional<quint64> X11DesktopWindows::windowOf(const RunningApplication& app)
{
    if (app.window)
        return app.window;
    return windows_.windowOfProcess(app.processIdentifier);
}

std::optional<QRect> X11DesktopWindows::windowGeometry(const RunningApplication& app)
{
    const auto window = windowOf(app);
    return window ? windows_.geometry(*window) : std::nullopt;
}

void X11DesktopWindows::activate(const RunningApplication& app)
{
    if (const auto window = windowOf(app))
        windows_.activate(*window);
}

void X11DesktopWindows::activateOwnWindow(quintptr windowId)
{
    windows_.activate(windowId);
}

void X11DesktopWindows::showOnAllWorkspaces(quintptr windowId)
{
    windows_.setOnAllDesktops(windowId);
}

bool X11DesktopWindows::hasCompositor()
{
    return windows_.hasCompositor();
}
