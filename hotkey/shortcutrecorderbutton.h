#pragma once

#include "hotkey/customshortcut.h"

#include <QPushButton>

#include <functional>
#include <optional>

class KeyboardLayout;
class ShortcutKeyCapture;

// Access to a value that its owner keeps: the recorder shows and changes the
// settings window's state without holding any of its own.
template <typename T>
struct Binding {
    std::function<T()> get;
    std::function<void(const T&)> set;
};

// The button of the "Shortcut:" row: shows the custom shortcut, a click arms
// recording, a second click cancels it, and the next key press with a
// modifier becomes the new shortcut.
class ShortcutRecorderButton : public QPushButton {
    Q_OBJECT

public:
    static constexpr int kMinimumWidth = 120;

    ShortcutRecorderButton(Binding<std::optional<KeyChord>> shortcut, Binding<bool> isRecording,
                           const KeyboardLayout& layout, const KeyWords& words, QWidget* parent = nullptr);

    // Shows the bound values again and puts the capture in step with them.
    void refresh();

    ShortcutKeyCapture& capture() const { return *capture_; }

protected:
    void changeEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void shortcutRecorded(const KeyChord& chord);
    void styleLabel();

    Binding<std::optional<KeyChord>> shortcut_;
    Binding<bool> isRecording_;
    const KeyboardLayout& layout_;
    const KeyWords& words_;
    ShortcutKeyCapture* capture_;
    bool styling_ = false;
};
