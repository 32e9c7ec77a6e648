#include "platform/linux/xkb/xkbkeyboardlayout.h"

#include "platform/linux/evdev/evdevkeymap.h"

#include <xkbcommon/xkbcommon.h>

XkbKeyboardLayout::XkbKeyboardLayout(const QString& layout, const QString& variant)
{
    context_ = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    if (!context_)
        return;
    const QByteArray layoutName = layout.toUtf8(), variantName = variant.toUtf8();
    xkb_rule_names names{};
    names.layout = layout.isEmpty() ? nullptr : layoutName.constData();
    names.variant = variant.isEmpty() ? nullptr : variantName.constData();
    keymap_ = xkb_keymap_new_from_names(context_, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    if (keymap_)
        state_ = xkb_state_new(keymap_);
}

XkbKeyboardLayout::~XkbKeyboardLayout()
{
    if (state_)
        xkb_state_unref(state_);
    if (keymap_)
        xkb_keymap_unref(keymap_);
    if (context_)
        xkb_context_unref(context_);
}

QString XkbKeyboardLayout::characterAt(quint16 position) const
{
    std::lock_guard lock(mutex_);
    if (!state_ || position > 255 - EvdevKeyMap::kXkbKeycodeOffset)
        return {};
    char utf8[16] = {};
    if (xkb_state_key_get_utf8(state_, xkb_keycode_t(position + EvdevKeyMap::kXkbKeycodeOffset), utf8, sizeof utf8) <= 0)
        return {};
    return EvdevKeyMap::printableKeyText(utf8);
}

std::optional<quint16> XkbKeyboardLayout::positionOfScanCode(quint32 nativeScanCode) const
{
    return EvdevKeyMap::positionOfXkbKeycode(nativeScanCode);
}
