#include "platform/linux/x11/x11workspace.h"

#include "platform/accessibility.h"
#include "platform/crossthread.h"
#include "platform/linux/x11/x11windows.h"

#include <QPointer>

X11Workspace::X11Workspace(X11Windows& windows, Accessibility& accessibility)
    : windows_(windows), accessibility_(accessibility)
{
}

std::optional<RunningApplication> X11Workspace::frontmostApplication()
{
    return accessibility_.frontmostApplication();
}

void X11Workspace::startWatching()
{
    if (std::exchange(watching_, true))
        return;
    // Called on the directory's thread; the news goes to this object's.
    QPointer<X11Workspace> self(this);
    windows_.setActiveChanged([self] {
        CrossThread::post(self.data(), [self] {
            if (self)
                emit self->applicationActivated();
        });
    });
}
