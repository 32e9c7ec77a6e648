#include "platform/linux/x11/x11keyboardlayout.h"

#include "platform/linux/evdev/evdevkeymap.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <xkbcommon/xkbcommon.h>

X11KeyboardLayout::X11KeyboardLayout() : display_(XOpenDisplay(nullptr)) {}

X11KeyboardLayout::~X11KeyboardLayout()
{
    if (display_)
        XCloseDisplay(display_);
}

QString X11KeyboardLayout::characterAt(quint16 position) const
{
    std::lock_guard lock(mutex_);
    if (!display_ || position > 255 - EvdevKeyMap::kXkbKeycodeOffset)
        return {};
    XkbStateRec state{};
    XkbGetState(display_, XkbUseCoreKbd, &state);
    const KeySym keysym = XkbKeycodeToKeysym(display_, KeyCode(position + EvdevKeyMap::kXkbKeycodeOffset), state.group, 0);
    char utf8[16] = {};
    if (keysym == NoSymbol || xkb_keysym_to_utf8(xkb_keysym_t(keysym), utf8, sizeof utf8) <= 1)
        return {};
    return EvdevKeyMap::printableKeyText(utf8);
}

std::optional<quint16> X11KeyboardLayout::positionOfScanCode(quint32 nativeScanCode) const
{
    return EvdevKeyMap::positionOfXkbKeycode(nativeScanCode);
}
