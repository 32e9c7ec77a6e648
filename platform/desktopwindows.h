#pragma once

#include "platform/runningapplication.h"

#include <QRect>

#include <optional>

// The desktop's windows, beyond what the toolkit offers.
class DesktopWindows {
public:
    virtual ~DesktopWindows();

    // Where the application's window is, in global coordinates, if known.
    virtual std::optional<QRect> windowGeometry(const RunningApplication& app) = 0;
    // Makes the application's window the active one with the keyboard focus.
    virtual void activate(const RunningApplication& app) = 0;
    // Brings one of this program's own windows to the front with the focus,
    // even though the program was not the active one.
    virtual void activateOwnWindow(quintptr windowId) = 0;
    // Keeps one of this program's windows on every workspace.
    virtual void showOnAllWorkspaces(quintptr windowId) = 0;
    // Whether a compositing manager draws translucency and shadows.
    virtual bool hasCompositor() = 0;
    // The desktop's permission for this program's next window to take the
    // focus, handed over by the command that asked for it; where the
    // desktop needs none, it is ignored.
    virtual void setActivationToken(const QString& token) { Q_UNUSED(token); }

};
