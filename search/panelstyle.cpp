#include "search/panelstyle.h"

#include <QWidget>

namespace {

QColor withAlpha(QColor color, qreal alpha)
{
    color.setAlphaF(float(alpha));
    return color;
}

} // namespace

PanelStyle PanelStyle::of(const QWidget& widget)
{
    const QPalette palette = widget.palette();
    const QColor text = palette.color(QPalette::WindowText);
    PanelStyle style;
    style.background = withAlpha(palette.color(QPalette::Window), 0.96);
    style.text = text;
    style.secondary = withAlpha(text, 0.62);
    style.tertiary = withAlpha(text, 0.42);
    style.badgeFill = withAlpha(text, 0.08);
    style.selection = withAlpha(palette.color(QPalette::Highlight), 0.20);
    style.divider = withAlpha(text, 0.12);
    style.body = widget.font();
    style.bodyMedium = style.body;
    style.bodyMedium.setWeight(QFont::Medium);
    style.title2 = style.body;
    style.title2.setPointSizeF(style.body.pointSizeF() * 1.4);
    style.caption = style.body;
    style.caption.setPointSizeF(style.body.pointSizeF() * 0.85);
    return style;
}
