#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

// Linux input (evdev) key codes, which Kestrio takes for a key's position,
// and the XKB keycodes X11 and Qt's key events carry.
namespace EvdevKeyMap {

// XKB keycodes (X11's, and the native scan codes of Qt's key events on X11
// and Wayland) are evdev codes + 8.
inline constexpr int kXkbKeycodeOffset = 8;
// The position of an XKB keycode; nothing when it names no key (0 comes
// with synthetic events).
std::optional<quint16> positionOfXkbKeycode(quint32 xkbKeycode);
// What a key types (UTF-8 from XKB), when it is printable; else empty.
QString printableKeyText(const char* utf8);

} // namespace EvdevKeyMap
