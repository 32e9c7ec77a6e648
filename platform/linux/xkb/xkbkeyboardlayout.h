#pragma once

#include "platform/keyboardlayout.h"

#include <QString>

#include <mutex>

struct xkb_context;
struct xkb_keymap;
struct xkb_state;

// What a key types on an XKB layout named by rules, model, layout and variant
// (empty: the XKB_DEFAULT_* environment, else a US keyboard). For Wayland
// sessions, where the compositor hands its keymap only to its clients' own
// windows.
class XkbKeyboardLayout final : public KeyboardLayout {
public:
    explicit XkbKeyboardLayout(const QString& layout = {}, const QString& variant = {});
    ~XkbKeyboardLayout() override;
    XkbKeyboardLayout(const XkbKeyboardLayout&) = delete;
    XkbKeyboardLayout& operator=(const XkbKeyboardLayout&) = delete;

    QString characterAt(quint16 position) const override;
    // Wayland's scan codes are XKB keycodes too: evdev codes + 8.
    std::optional<quint16> positionOfScanCode(quint32 nativeScanCode) const override;

private:
    mutable std::mutex mutex_;
    xkb_context* context_ = nullptr;
    xkb_keymap* keymap_ = nullptr;
    xkb_state* state_ = nullptr;
};
