#include "platform/linux/evdev/evdevkeystate.h"

#include "hotkey/hotkeymode.h"
#include "platform/linux/evdev/evdevkeymap.h"

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

quint64 EvdevKeyState::currentFlags() const
{
    quint64 flags = capsLock_ ? ModifierFlag::CapsLock : 0;
    if (down_.contains(kLeftShift) || down_.contains(kRightShift))
        flags |= ModifierFlag::Shift;
    if (down_.contains(kLeftCtrl) || down_.contains(kRightCtrl))
        flags |= ModifierFlag::Command;
    if (down_.contains(kLeftAlt) || down_.contains(kRightAlt))
        flags |= ModifierFlag::Option;
    if (down_.contains(kLeftMeta) || down_.contains(kRightMeta))
        flags |= ModifierFlag::Control;
    return flags;
}

std::optional<KeyEvent> EvdevKeyState::translate(int evdevCode, bool pressed)
{
    // Synthetic input repeats releases of keys already up, and a held key is
    // one key-down, so a held shortcut activates once, not once per repeat.
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

void EvdevKeyState::clear()
{
    down_.clear();
}
