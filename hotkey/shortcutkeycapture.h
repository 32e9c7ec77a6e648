#pragma once

#include <QObject>

#include <functional>
#include <optional>

class KeyboardLayout;
class QKeyEvent;

// The recorder's key-capturing companion. While recording is enabled it sees
// every key press of the application before any widget or shortcut does,
// wherever the focus is: the first press that carries Shift, Control, Option
// or Command becomes a key code and those modifier bits and goes no further.
// A press without one goes on as usual, unless it is aimed at the recorder
// itself, which swallows it and stays armed.
class ShortcutKeyCapture : public QObject {
    Q_OBJECT

public:
    using Callback = std::function<void(quint16 keyCode, quint64 modifiers)>;

    explicit ShortcutKeyCapture(const KeyboardLayout& layout, QObject* parent = nullptr);
    ~ShortcutKeyCapture() override;

    Callback onShortcutRecorded;

    bool isRecordingEnabled() const { return enabled_; }
    void setRecordingEnabled(bool enabled);

    // Kestrio's four modifier bits of Qt's modifiers. Qt calls Super "Meta"
    // on X11 and Wayland; it is Kestrio's Command, as for the detector. Right
    // Alt is Option wherever it sits: Qt reports it as the group switch on
    // layouts where it is AltGr, and the detector counts it as Option.
    static quint64 modifierFlags(Qt::KeyboardModifiers modifiers);

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
