#pragma once

#include <QLabel>
#include <QUrl>

// Text in one of the styles Kestrio's windows share: a size relative to the
// desktop's body font, a weight, and a tone. Secondary and tertiary text is
// the window text dimmed, recomputed when the palette changes, so that a
// theme switch never leaves dark-on-dark text behind.
class StyledLabel : public QLabel {
    Q_OBJECT

public:
    enum class Font { title, headline, body, callout, subheadline, caption, caption2 };
    enum class Tone { primary, secondary, tertiary, orange, green, blue, red };

    StyledLabel(const QString& text, Font font = Font::body, Tone tone = Tone::primary, QWidget* parent = nullptr);

    // Centred text, as the about and welcome windows lay it out.
    static StyledLabel* centred(const QString& text, Font font, Tone tone, QWidget* parent = nullptr);
    // A link that opens `url` in the default browser.
    static StyledLabel* link(const QString& title, const QUrl& url, Font font, QWidget* parent = nullptr);
    // A label with a small symbol from the resources before its text.
    static StyledLabel* withIcon(const QString& iconPath, const QString& text, Font font, Tone tone,
                                 QWidget* parent = nullptr);

    // New text, with a symbol before it when `iconPath` is given.
    void setContent(const QString& text, const QString& iconPath = {});
    void setTone(Tone tone);
    // A tone's colour over a theme whose plain text is `text`; also for the
    // text of other controls (buttons) that take a tone.
    static QColor toneColor(Tone tone, QColor text);
    void setWeight(QFont::Weight weight);
    // The text without the markup of a link or symbol.
    QString plainText() const;

protected:
    void changeEvent(QEvent* event) override;

private:
    void applyTone();

    Tone tone_;
    QString plainText_;
    bool applying_ = false;
};
