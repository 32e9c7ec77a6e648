#pragma once

#include "platform/workspace.h"

class Accessibility;
class X11Windows;

// The active window as the window manager announces it, heard through the
// window directory once it has read what is new about it.
class X11Workspace final : public Workspace {
    Q_OBJECT

public:
    // `accessibility` names the application behind the active window.
    X11Workspace(X11Windows& windows, Accessibility& accessibility);

    std::optional<RunningApplication> frontmostApplication() override;
    void startWatching() override;

private:
    X11Windows& windows_;
    Accessibility& accessibility_;
    bool watching_ = false;
};
