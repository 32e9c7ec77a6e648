#include "platform/linux/x11/x11workspace.h"

#include "platform/accessibility.h"

#include <QSocketNotifier>

#include <X11/Xlib.h>

X11Workspace::X11Workspace() = default;

X11Workspace::~X11Workspace()
{
    notifier_.reset();
    if (display_)
        XCloseDisplay(display_);
}

std::optional<RunningApplication> X11Workspace::frontmostApplication()
{
    return Accessibility::current().frontmostApplication();
}

void X11Workspace::startWatching()
{
    if (display_)
        return;
    display_ = XOpenDisplay(nullptr);
    if (!display_)
        return;
    activeAtom_ = XInternAtom(display_, "_NET_ACTIVE_WINDOW", False);
    XSelectInput(display_, DefaultRootWindow(display_), PropertyChangeMask);
    XFlush(display_);
    notifier_ = std::make_unique<QSocketNotifier>(ConnectionNumber(display_), QSocketNotifier::Read);
    connect(notifier_.get(), &QSocketNotifier::activated, this, &X11Workspace::readEvents);
}

void X11Workspace::readEvents()
{
    bool activated = false;
    while (display_ && XPending(display_)) {
        XEvent event;
        XNextEvent(display_, &event);
        if (event.type == PropertyNotify && event.xproperty.atom == activeAtom_)
            activated = true;
    }
    if (activated)
        emit applicationActivated();
}
