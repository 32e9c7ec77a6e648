#include "base/styledlabel.h"

#include <QApplication>
#include <QEvent>

namespace {

qreal scale(StyledLabel::Font font)
{
    switch (font) {
    case StyledLabel::Font::title: return 1.6;
    case StyledLabel::Font::headline: return 1.05;
    case StyledLabel::Font::body: return 1.0;
    case StyledLabel::Font::callout: return 0.95;
    case StyledLabel::Font::subheadline: return 0.92;
    case StyledLabel::Font::caption: return 0.85;
    case StyledLabel::Font::caption2: return 0.78;
    }
    return 1.0;
}

} // namespace

StyledLabel::StyledLabel(const QString& text, Font font, Tone tone, QWidget* parent)
    : QLabel(text, parent), tone_(tone), plainText_(text)
{
    QFont f = this->font();
    f.setPointSizeF(f.pointSizeF() * scale(font));
    if (font == Font::headline)
        f.setWeight(QFont::DemiBold);
    setFont(f);
    setWordWrap(true);
    applyTone();
}

StyledLabel* StyledLabel::centred(const QString& text, Font font, Tone tone, QWidget* parent)
{
    auto* label = new StyledLabel(text, font, tone, parent);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

StyledLabel* StyledLabel::link(const QString& title, const QUrl& url, Font font, QWidget* parent)
{
    auto* label = new StyledLabel(QString(), font, Tone::primary, parent);
    label->setTextFormat(Qt::RichText);
    label->setText(QStringLiteral("<a href=\"%1\">%2</a>").arg(url.toString(QUrl::FullyEncoded).toHtmlEscaped(),
                                                             title.toHtmlEscaped()));
    label->plainText_ = title;
    label->setOpenExternalLinks(true); // the default browser
    label->setWordWrap(false);
    return label;
}

StyledLabel* StyledLabel::withIcon(const QString& iconPath, const QString& text, Font font, Tone tone,
                                   QWidget* parent)
{
    auto* label = new StyledLabel(QString(), font, tone, parent);
    label->setContent(text, iconPath);
    label->setWordWrap(false);
    return label;
}

void StyledLabel::setContent(const QString& text, const QString& iconPath)
{
    plainText_ = text;
    if (iconPath.isEmpty()) {
        setTextFormat(Qt::PlainText);
        setText(text);
        return;
    }
    setTextFormat(Qt::RichText);
    setText(QStringLiteral("<img src=\"%1\" width=%2 height=%2 style=\"vertical-align:middle\">&nbsp;%3")
                .arg(iconPath)
                .arg(fontMetrics().height())
                .arg(text.toHtmlEscaped()));
}

void StyledLabel::setTone(Tone tone)
{
    tone_ = tone;
    applyTone();
}

void StyledLabel::setWeight(QFont::Weight weight)
{
    QFont f = font();
    f.setWeight(weight);
    setFont(f);
}

QString StyledLabel::plainText() const
{
    return textFormat() == Qt::RichText ? plainText_ : text();
}

void StyledLabel::changeEvent(QEvent* event)
{
    QLabel::changeEvent(event);
    if (!applying_ && (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange))
        applyTone(); // the application's palette is already the new theme's
}

QColor StyledLabel::toneColor(Tone tone, QColor text)
{
    switch (tone) {
    case Tone::primary: break;
    case Tone::secondary: text.setAlphaF(0.62f); break;
    case Tone::tertiary: text.setAlphaF(0.42f); break;
    case Tone::orange: return QColor(0xE0, 0x7B, 0x00);
    case Tone::green: return QColor(0x1E, 0x9E, 0x4A);
    case Tone::blue: return QColor(0x1C, 0x6F, 0xD9);
    case Tone::red: return QColor(0xD9, 0x30, 0x25);
    }
    return text;
}

void StyledLabel::applyTone()
{
    // The application's palette is the theme's; ours only overrides the text colour.
    const QColor color = toneColor(tone_, QApplication::palette(this).color(QPalette::WindowText));
    QPalette own = palette();
    if (own.color(QPalette::WindowText) == color)
        return;
    applying_ = true;
    own.setColor(QPalette::WindowText, color);
    setPalette(own);
    applying_ = false;
}
