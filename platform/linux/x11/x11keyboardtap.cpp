#include "platform/linux/x11/x11keyboardtap.h"

#include "hotkey/hotkeymode.h"
#include "platform/linux/evdev/evdevkeymap.h"

#include <QSocketNotifier>

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

namespace {

// evdev codes of the modifier keys.
constexpr int kLeftCtrl = 29, kRightCtrl = 97, kLeftShift = 42, kRightShift = 54, kLeftAlt = 56, kRightAlt = 100,
              kLeftMeta = 125, kRightMeta = 126, kCapsLock = 58;

bool isModifier(int code)
{
    switch (code) {
    case kLeftCtrl: case kRightCtrl: case kLeftShift: case kRightShift: case kLeftAlt: case kRightAlt:
    case kLeftMeta: case kRightMeta: case kCapsLock:
        return true;
    default:
        return false;
    }
}

} // namespace

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
    down_.clear();
    if (display_) {
        XCloseDisplay(display_);
        display_ = nullptr;
    }
}

quint64 X11KeyboardTap::currentFlags() const
{
    quint64 flags = capsLock_ ? ModifierFlag::CapsLock : 0;
    if (down_.contains(kLeftShift) || down_.contains(kRightShift))
        flags |= ModifierFlag::Shift;
    // Ctrl plays Command's part, as Qt has it on macOS; Super, which desktops
    // keep for themselves (a tap opens GNOME's overview), plays Control's.
    if (down_.contains(kLeftCtrl) || down_.contains(kRightCtrl))
        flags |= ModifierFlag::Command;
    if (down_.contains(kLeftAlt) || down_.contains(kRightAlt))
        flags |= ModifierFlag::Option;
    if (down_.contains(kLeftMeta) || down_.contains(kRightMeta))
        flags |= ModifierFlag::Control;
    return flags;
}

std::optional<KeyEvent> X11KeyboardTap::translate(int evdevCode, bool pressed)
{
    // Synthetic input repeats releases of keys already up; raw events carry no
    // auto-repeat, so a held shortcut activates once, not once per repeat.
    if (pressed == down_.contains(evdevCode))
        return std::nullopt;
    if (pressed)
        down_.insert(evdevCode);
    else
        down_.remove(evdevCode);
    if (evdevCode == kCapsLock && pressed)
        capsLock_ = !capsLock_;
    if (isModifier(evdevCode))
        return KeyEvent{KeyEvent::flagsChanged, currentFlags(), 0};
    if (!pressed)
        return std::nullopt;
    return KeyEvent{KeyEvent::keyDown, currentFlags(), EvdevKeyMap::virtualKeyCode(evdevCode)};
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
            const std::optional<KeyEvent> key = translate(raw->detail - 8, cookie->evtype == XI_RawKeyPress);
            if (key && enabled_ && callback_)
                callback_(*key);
        }
        XFreeEventData(display_, cookie);
    }
}
