#include "hotkey/shortcutrecorderbutton.h"

#include "base/styledlabel.h"
#include "hotkey/shortcutkeycapture.h"

#include <QApplication>
#include <QEvent>

ShortcutRecorderButton::ShortcutRecorderButton(Binding<std::optional<KeyChord>> shortcut,
                                               Binding<bool> isRecording, const KeyboardLayout& layout,
                                               const KeyWords& words, QWidget* parent)
    : QPushButton(parent),
      shortcut_(std::move(shortcut)),
      isRecording_(std::move(isRecording)),
      layout_(layout),
      words_(words),
      capture_(new ShortcutKeyCapture(layout, this))
{
    setMinimumWidth(kMinimumWidth);
    setAutoDefault(false);
    capture_->onShortcutRecorded = [this](const KeyChord& chord) { shortcutRecorded(chord); };
    connect(this, &QPushButton::clicked, this, [this] {
        isRecording_.set(!isRecording_.get());
        refresh();
    });
    refresh();
}

void ShortcutRecorderButton::shortcutRecorded(const KeyChord& chord)
{
    shortcut_.set(chord);
    isRecording_.set(false);
    refresh();
}

void ShortcutRecorderButton::refresh()
{
    const bool recording = isRecording_.get();
    const std::optional<KeyChord> shortcut = shortcut_.get();
    if (recording)
        setText(QStringLiteral("Press shortcut…"));
    else if (!shortcut)
        setText(QStringLiteral("Click to record"));
    else
        setText(shortcutText(*shortcut, layout_, words_));
    styleLabel();
    capture_->setRecordingEnabled(recording);
    // Key presses come to this window while armed.
    if (recording)
        setFocus(Qt::OtherFocusReason);
}

void ShortcutRecorderButton::styleLabel()
{
    // Orange while armed, dimmed without a shortcut; from the theme's colour,
    // so it is recomputed whenever the palette changes.
    using Tone = StyledLabel::Tone;
    const Tone tone = isRecording_.get() ? Tone::orange : !shortcut_.get() ? Tone::secondary : Tone::primary;
    const QColor color = StyledLabel::toneColor(tone, QApplication::palette(this).color(QPalette::ButtonText));
    QPalette own = palette();
    if (own.color(QPalette::ButtonText) == color)
        return;
    own.setColor(QPalette::ButtonText, color);
    styling_ = true;
    setPalette(own);
    styling_ = false;
}

void ShortcutRecorderButton::changeEvent(QEvent* event)
{
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !styling_)
        styleLabel();
}

void ShortcutRecorderButton::hideEvent(QHideEvent* event)
{
    QPushButton::hideEvent(event);
    // A closed window or a hidden row stops recording: the capture must not
    // keep every other window of the program from its keys.
    if (isRecording_.get()) {
        isRecording_.set(false);
        refresh();
    }
}
