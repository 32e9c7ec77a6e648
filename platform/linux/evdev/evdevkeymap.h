#pragma once

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

} // namespace EvdevKeyMap
