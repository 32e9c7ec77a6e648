#include "platform/linux/sway/swayworkspace.h"

#include "platform/accessibility.h"
#include "platform/linux/sway/swaywindows.h"

SwayWorkspace::SwayWorkspace(SwayWindows& windows) : windows_(windows) {}

std::optional<RunningApplication> SwayWorkspace::frontmostApplication()
{
    // Named by the accessibility backend from the window sway reports focused.
    return Accessibility::current().frontmostApplication();
}

void SwayWorkspace::startWatching()
{
    if (watching_)
        return;
    watching_ = true;
    connect(&windows_, &SwayWindows::focusChanged, this, &Workspace::applicationActivated);
}
