#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

// Linux input (evdev) key codes, X keycode − 8, and the layout-independent
// virtual key codes Kestrio stores and names: those of a US keyboard's
// positions (A = 0, S = 1, Return = 36, Space = 49, F1 = 122, …). Keys without
// such a position get 0x1000 + their evdev code, so shortcuts on them still work.
namespace EvdevKeyMap {

inline constexpr quint16 kUnmappedBase = 0x1000;

quint16 virtualKeyCode(int evdevCode);
std::optional<int> evdevCode(quint16 virtualKeyCode);

// XKB keycodes (X11's, and the native scan codes of Qt's key events on X11
// and Wayland) are evdev codes + 8.
inline constexpr int kXkbKeycodeOffset = 8;
// The virtual key code of an XKB keycode; nothing when it names no key
// (0 comes with synthetic events).
std::optional<quint16> virtualKeyCodeOfXkbKeycode(quint32 xkbKeycode);
// What a key types (UTF-8 from XKB), when it is printable; else empty.
QString printableKeyText(const char* utf8);

} // namespace EvdevKeyMap
