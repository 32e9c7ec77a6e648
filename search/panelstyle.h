#pragma once

#include <QColor>
#include <QFont>

class QWidget;

// The panel's semantic colours and text styles, derived from the desktop's
// palette and font so that light and dark themes both look right.
struct PanelStyle {
    QColor background;
    QColor text;
    QColor secondary;
    QColor tertiary;
    QColor badgeFill;
    QColor selection;
    QColor divider;
    QFont body;
    QFont bodyMedium;
    QFont title2;
    QFont caption;

    static PanelStyle of(const QWidget& widget);
};
