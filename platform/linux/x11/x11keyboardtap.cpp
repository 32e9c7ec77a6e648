#include "platform/linux/x11/x11keyboardtap.h"

#include "platform/linux/evdev/evdevkeymap.h"

#include <QSocketNotifier>

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

X11KeyboardTap::X11KeyboardTap() = default;

X11KeyboardTap::~X11KeyboardTap()
{
    release();
}

bool X11KeyboardTap::create(HotkeyPlatform::Callback callback)
{
    release();
    display_ = XOpenDisplay(nullptr);
    if (!display_)
        return false;
    int event = 0, error = 0;
    // 2.2 or later: with 2.0, releases go missing while another client grabs the keyboard.
    int major = 2, minor = 2;
    if (!XQueryExtension(display_, "XInputExtension", &opcode_, &event, &error)
        || XIQueryVersion(display_, &major, &minor) != Success || major < 2 || (major == 2 && minor < 2)) {
        release();
        return false;
    }
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(bits, XI_RawKeyPress);
    XISetMask(bits, XI_RawKeyRelease);
    // Buttons too (the wheel is buttons 4 to 7): a modifier held for a click
    // or a zoom is not a tap.
    XISetMask(bits, XI_RawButtonPress);
    XIEventMask mask{XIAllMasterDevices, int(sizeof bits), bits};
    XISelectEvents(display_, DefaultRootWindow(display_), &mask, 1);
    XFlush(display_);

    callback_ = std::move(callback);
    notifier_ = std::make_unique<QSocketNotifier>(ConnectionNumber(display_), QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, [this] { readEvents(); });
    return true;
}

void X11KeyboardTap::setEnabled(bool enabled)
{
    enabled_ = enabled;
}

void X11KeyboardTap::release()
{
    notifier_.reset();
    callback_ = nullptr;
    enabled_ = false;
    keys_.clear();
    if (display_) {
        XCloseDisplay(display_);
        display_ = nullptr;
    }
}

void X11KeyboardTap::readEvents()
{
    while (display_ && XPending(display_)) {
        XEvent event;
        XNextEvent(display_, &event);
        XGenericEventCookie* cookie = &event.xcookie;
        if (cookie->type != GenericEvent || cookie->extension != opcode_ || !XGetEventData(display_, cookie))
            continue;
        if (cookie->evtype == XI_RawKeyPress || cookie->evtype == XI_RawKeyRelease) {
            const auto* raw = static_cast<const XIRawEvent*>(cookie->data);
            const std::optional<KeyEvent> key = translate(raw->detail - EvdevKeyMap::kXkbKeycodeOffset, cookie->evtype == XI_RawKeyPress);
            if (key && enabled_ && callback_)
                callback_(*key);
        } else if (cookie->evtype == XI_RawButtonPress && enabled_ && callback_) {
            callback_(keys_.pointerInput());
        }
        XFreeEventData(display_, cookie);
    }
}
