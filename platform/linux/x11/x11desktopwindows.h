#pragma once

#include "platform/desktopwindows.h"
#include "platform/linux/x11/x11windows.h"

// DesktopWindows through the window manager's EWMH hints.
class X11DesktopWindows final : public DesktopWindows {
public:
    explicit X11DesktopWindows(X11Windows& windows) : windows_(windows) {}

    std::optional<QRect> windowGeometry(const RunningApplication& app) override;
    void activate(const RunningApplication& app) override;
    void activateOwnWindow(quintptr windowId) override;
    void showOnAllWorkspaces(quintptr windowId) override;
    bool hasCompositor() override;

private:
    std::optional<quint64> windowOf(const RunningApplication& app);

    X11Windows& windows_;
};
