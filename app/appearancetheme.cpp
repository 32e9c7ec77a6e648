#include "app/appearancetheme.h"

#include <QApplication>
#include <QStyle>

namespace {

QPalette darkPalette()
{
    const QColor window(0x2B, 0x2B, 0x2E);
    const QColor base(0x1F, 0x1F, 0x22);
    const QColor text(0xEC, 0xEC, 0xEE);
    const QColor dimmed(0x80, 0x80, 0x86);
    QPalette p(window);
    p.setColor(QPalette::WindowText, text);
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, window.lighter(112));
    p.setColor(QPalette::Text, text);
    p.setColor(QPalette::Button, QColor(0x3A, 0x3A, 0x3E));
    p.setColor(QPalette::ButtonText, text);
    p.setColor(QPalette::BrightText, Qt::white);
    p.setColor(QPalette::ToolTipBase, base);
    p.setColor(QPalette::ToolTipText, text);
    p.setColor(QPalette::PlaceholderText, dimmed);
    p.setColor(QPalette::Highlight, QColor(0x2F, 0x6F, 0xD6));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Link, QColor(0x6A, 0xA8, 0xFF));
    p.setColor(QPalette::LinkVisited, QColor(0xB0, 0x8C, 0xFF));
    p.setColor(QPalette::Light, window.lighter(150));
    p.setColor(QPalette::Midlight, window.lighter(125));
    p.setColor(QPalette::Mid, window.darker(120));
    p.setColor(QPalette::Dark, window.darker(150));
    p.setColor(QPalette::Shadow, Qt::black);
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, dimmed);
    return p;
}

QPalette lightPalette()
{
    QPalette p(QColor(0xEF, 0xEF, 0xF0));
    p.setColor(QPalette::WindowText, QColor(0x1D, 0x1D, 0x1F));
    p.setColor(QPalette::Base, Qt::white);
    p.setColor(QPalette::AlternateBase, QColor(0xF6, 0xF6, 0xF7));
    p.setColor(QPalette::Text, QColor(0x1D, 0x1D, 0x1F));
    p.setColor(QPalette::Button, QColor(0xF7, 0xF7, 0xF8));
    p.setColor(QPalette::ButtonText, QColor(0x1D, 0x1D, 0x1F));
    p.setColor(QPalette::Highlight, QColor(0x2F, 0x6F, 0xD6));
    p.setColor(QPalette::HighlightedText, Qt::white);
    p.setColor(QPalette::Link, QColor(0x1C, 0x5F, 0xC8));
    p.setColor(QPalette::PlaceholderText, QColor(0x8A, 0x8A, 0x8E));
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        p.setColor(QPalette::Disabled, role, QColor(0x9A, 0x9A, 0x9E));
    return p;
}

} // namespace

QPalette AppearanceTheme::palette(const QString& appearance)
{
    if (appearance == QLatin1String("dark"))
        return darkPalette();
    if (appearance == QLatin1String("light"))
        return lightPalette();
    return QPalette();
}

void AppearanceTheme::apply(const QString& appearance)
{
    QApplication::setPalette(palette(appearance));
}
