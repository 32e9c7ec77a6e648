#include "hotkey/shortcutkeycapture.h"

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

Modifiers ShortcutKeyCapture::modifiersOf(Qt::KeyboardModifiers modifiers)
{
    Modifiers held;
    if (modifiers & Qt::ShiftModifier)
        held |= Modifier::shift;
    if (modifiers & Qt::ControlModifier)
        held |= Modifier::ctrl;
    if (modifiers & (Qt::AltModifier | Qt::GroupSwitchModifier))
        held |= Modifier::alt;
    if (modifiers & Qt::MetaModifier)
        held |= Modifier::super;
    return held;
}

void ShortcutKeyCapture::setRecordingEnabled(bool enabled)
{
    // A release still to come is kept: the recorder may be re-armed and
    // disarmed while the recorded key is still down.
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
    const bool atRecorder = watched == parent();
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        // A press that will be recorded is claimed, so that no shortcut fires
        // with it; the rest keep their shortcuts.
        if (!enabled_ || !(wouldRecord(static_cast<QKeyEvent&>(*event)) || atRecorder))
            return QObject::eventFilter(watched, event);
        event->accept();
        return true;
    case QEvent::KeyPress: {
        const auto& key = static_cast<QKeyEvent&>(*event);
        if (!enabled_) {
            // The key is down again: its release went elsewhere (the window lost the focus).
            if (pendingRelease_ && key.nativeScanCode() == *pendingRelease_ && !key.isAutoRepeat()) {
                pendingRelease_.reset();
                QMetaObject::invokeMethod(this, &ShortcutKeyCapture::updateFilter, Qt::QueuedConnection);
            }
            return QObject::eventFilter(watched, event);
        }
        return handleKeyPress(key) || atRecorder;
    }
    case QEvent::KeyRelease: {
        const auto& key = static_cast<QKeyEvent&>(*event);
        if (pendingRelease_ && key.nativeScanCode() == *pendingRelease_ && !key.isAutoRepeat()) {
            pendingRelease_.reset();
            QMetaObject::invokeMethod(this, &ShortcutKeyCapture::updateFilter, Qt::QueuedConnection);
            return true;
        }
        return (enabled_ && atRecorder) || QObject::eventFilter(watched, event);
    }
    default:
        return QObject::eventFilter(watched, event);
    }
}

bool ShortcutKeyCapture::wouldRecord(const QKeyEvent& event) const
{
    return !isModifierKey(event.key()) && modifiersOf(event.modifiers()) != Modifiers()
        && layout_.positionOfScanCode(event.nativeScanCode());
}

bool ShortcutKeyCapture::handleKeyPress(const QKeyEvent& event)
{
    if (!wouldRecord(event))
        return false;
    enabled_ = false;
    pendingRelease_ = event.nativeScanCode();
    if (onShortcutRecorded)
        onShortcutRecorded(
            KeyChord{modifiersOf(event.modifiers()), Key::at(*layout_.positionOfScanCode(event.nativeScanCode()))});
    return true;
}
