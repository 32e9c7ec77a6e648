#pragma once

#include "platform/keys.h"

#include <QObject>

#include <functional>
#include <optional>

class KeyboardLayout;
class QKeyEvent;

// The recorder's key-capturing companion. While recording is enabled it sees
// every key press of the application before any widget or shortcut does,
// wherever the focus is: the first press that carries Ctrl, Alt, Shift or
// Super becomes a key chord and goes no further.
// A press without one goes on as usual, unless it is aimed at the recorder
// itself, which swallows it and stays armed.
class ShortcutKeyCapture : public QObject {
    Q_OBJECT

public:
    using Callback = std::function<void(const KeyChord& chord)>;

    explicit ShortcutKeyCapture(const KeyboardLayout& layout, QObject* parent = nullptr);
    ~ShortcutKeyCapture() override;

    Callback onShortcutRecorded;

    bool isRecordingEnabled() const { return enabled_; }
    void setRecordingEnabled(bool enabled);

    // Kestrio's four modifiers of Qt's. Qt calls Super "Meta" on X11 and
    // Wayland. Right Alt is Alt wherever it sits: Qt reports it as the group
    // switch on layouts where it is AltGr, and the detector counts it as Alt.
    static Modifiers modifiersOf(Qt::KeyboardModifiers modifiers);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // Records the press if it makes a shortcut; whether it did.
    bool handleKeyPress(const QKeyEvent& event);
    bool wouldRecord(const QKeyEvent& event) const;
    void updateFilter();

    const KeyboardLayout& layout_;
    bool enabled_ = false;
    bool installed_ = false;
    // The recorded key's release still to come, so that it reaches no widget.
    std::optional<quint32> pendingRelease_;
};
