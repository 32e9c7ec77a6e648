#pragma once

#include "platform/desktopwindows.h"

#include <functional>

class WindowDirectory;

// DesktopWindows on a Wayland compositor: clients cannot place or focus
// windows themselves. Frames come from the window directory where the
// compositor tells them; focusing another window needs the compositor's own
// interface (`focusWindow`, empty where there is none). Kestrio's own windows
// take the focus through the activation token Qt hands the compositor.
class WaylandDesktopWindows final : public DesktopWindows {
public:
    WaylandDesktopWindows(WindowDirectory& windows, std::function<void(quint64)> focusWindow);

    std::optional<QRect> windowGeometry(const RunningApplication& app) override;
    void activate(const RunningApplication& app) override;
    void activateOwnWindow(quintptr windowId) override;
    void showOnAllWorkspaces(quintptr) override {}
    // Every Wayland compositor composites.
    bool hasCompositor() override { return true; }
    void setActivationToken(const QString& token) override { token_ = token; }

private:
    std::optional<quint64> windowOf(const RunningApplication& app);

    WindowDirectory& windows_;
    std::function<void(quint64)> focusWindow_;
    QString token_;
};
