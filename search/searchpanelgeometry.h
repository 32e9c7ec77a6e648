#pragma once

#include <QList>
#include <QRectF>

#include <optional>

// The search panel's frame on a screen whose free area (without panels and
// docks) is `available`, in top-left coordinates: 600 × 400, centred
// horizontally, its centre 100 points above the centre of the free area.
QRectF searchPanelFrame(const QRectF& available);

// A screen as the toolkit describes it: its geometry in device-independent
// pixels (whose top left is also its top left in the desktop's own pixels)
// and how many of the desktop's pixels make one of them.
struct ScreenArea {
    QRect geometry;
    qreal devicePixelRatio = 1;
};

// The screen that holds `native`, a point in the desktop's own pixels (as the
// window manager gives window positions), by index, and the point in that
// screen's device-independent pixels; nothing when no screen holds it.
std::optional<std::pair<qsizetype, QPointF>> screenOfNativePoint(const QList<ScreenArea>& screens, QPoint native);

inline constexpr qreal kSearchPanelWidth = 600;
inline constexpr qreal kSearchPanelHeight = 400;
inline constexpr qreal kSearchPanelRaise = 100;
