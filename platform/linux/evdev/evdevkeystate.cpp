#include "platform/linux/evdev/evdevkeystate.h"


namespace {

using namespace KeyPosition;

bool isModifier(int code)
{
    switch (code) {
    case leftCtrl: case rightCtrl: case leftShift: case rightShift: case leftAlt: case rightAlt:
    case leftSuper: case rightSuper: case capsLock:
        return true;
    default:
        return false;
    }
}

} // namespace

Modifiers EvdevKeyState::held() const
{
    Modifiers held;
    if (down_.contains(leftShift) || down_.contains(rightShift))
        held |= Modifier::shift;
    if (down_.contains(leftCtrl) || down_.contains(rightCtrl))
        held |= Modifier::ctrl;
    if (down_.contains(leftAlt) || down_.contains(rightAlt))
        held |= Modifier::alt;
    if (down_.contains(leftSuper) || down_.contains(rightSuper))
        held |= Modifier::super;
    return held;
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
    if (isModifier(evdevCode))
        return KeyEvent{KeyEvent::Kind::modifiersChanged, held(), 0};
    if (!pressed || evdevCode < 0 || evdevCode > 0xFFFF)
        return std::nullopt;
    return KeyEvent{KeyEvent::Kind::keyDown, held(), quint16(evdevCode)};
}

void EvdevKeyState::clear()
{
    down_.clear();
}
