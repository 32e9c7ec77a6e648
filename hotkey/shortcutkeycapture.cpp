#include "hotkey/shortcutkeycapture.h"

#include "hotkey/hotkeymode.h"
#include "platform/keyboardlayout.h"

#include <QCoreApplication>
#include <QKeyEvent>

namespace {

bool isModifierKey(int key)
{
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_Hyper_L:
    case Qt::Key_Hyper_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
        return true;
    default:
        return false;
    }
}

} // namespace

ShortcutKeyCapture::ShortcutKeyCapture(const KeyboardLayout& layout, QObject* parent)
    : QObject(parent), layout_(layout)
{
}

ShortcutKeyCapture::~ShortcutKeyCapture()
{
    if (installed_ && QCoreApplication::instance())
        QCoreApplication::instance()->removeEventFilter(this);
}

quint64 ShortcutKeyCapture::modifierFlags(Qt::KeyboardModifiers modifiers)
{
    quint64 flags = 0;
    if (modifiers & Qt::ShiftModifier)
        flags |= ModifierFlag::Shift;
    if (modifiers & Qt::ControlModifier)
        flags |= ModifierFlag::Control;
    if (modifiers & Qt::AltModifier)
        flags |= ModifierFlag::Option;
    if (modifiers & Qt::MetaModifier)
        flags |= ModifierFlag::Command;
    return flags;
}

void ShortcutKeyCapture::setRecordingEnabled(bool enabled)
{
    if (enabled && !enabled_)
        pendingRelease_.reset(); // a new recording
    enabled_ = enabled;
    updateFilter();
}

void ShortcutKeyCapture::updateFilter()
{
    QCoreApplication* app = QCoreApplication::instance();
    const bool wanted = enabled_ || pendingRelease_;
    if (!app || wanted == installed_)
        return;
    // An application-wide filter runs before the focus widget and before
    // Qt's shortcut map, so no key combination slips past it.
    if (wanted)
        app->installEventFilter(this);
    else
        app->removeEventFilter(this);
    installed_ = wanted;
}

bool ShortcutKeyCapture::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        if (!enabled_)
            return QObject::eventFilter(watched, event);
        // Claimed as a plain key press, so that no shortcut fires while armed.
        event->accept();
        return true;
    case QEvent::KeyPress:
        if (!enabled_)
            return QObject::eventFilter(watched, event);
        handleKeyPress(static_cast<QKeyEvent&>(*event));
        return true;
    case QEvent::KeyRelease: {
        const auto& key = static_cast<QKeyEvent&>(*event);
        if (pendingRelease_ && key.nativeScanCode() == *pendingRelease_ && !key.isAutoRepeat()) {
            pendingRelease_.reset();
            QMetaObject::invokeMethod(this, &ShortcutKeyCapture::updateFilter, Qt::QueuedConnection);
            return true;
        }
        return enabled_ || QObject::eventFilter(watched, event);
    }
    default:
        return QObject::eventFilter(watched, event);
    }
}

void ShortcutKeyCapture::handleKeyPress(const QKeyEvent& event)
{
    // Every press is swallowed; only one with a modifier and a known key records.
    if (isModifierKey(event.key()))
        return;
    const quint64 modifiers = modifierFlags(event.modifiers());
    if (modifiers == 0)
        return;
    const std::optional<quint16> keyCode = layout_.keyCodeForScanCode(event.nativeScanCode());
    if (!keyCode)
        return;
    enabled_ = false;
    pendingRelease_ = event.nativeScanCode();
    if (onShortcutRecorded)
        onShortcutRecorded(*keyCode, modifiers);
}
