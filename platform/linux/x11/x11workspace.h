#pragma once

#include "platform/workspace.h"

#include <memory>

class QSocketNotifier;
typedef struct _XDisplay Display;

// The active window as the window manager announces it on the root window.
class X11Workspace final : public Workspace {
    Q_OBJECT

public:
    X11Workspace();
    ~X11Workspace() override;

    std::optional<RunningApplication> frontmostApplication() override;
    void startWatching() override;

private:
    void readEvents();

    Display* display_ = nullptr;
    unsigned long activeAtom_ = 0;
    std::unique_ptr<QSocketNotifier> notifier_;
};
