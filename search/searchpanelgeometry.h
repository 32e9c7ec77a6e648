#pragma once

#include <QRectF>

// The search panel's frame on a screen whose free area (without panels and
// docks) is `available`, in top-left coordinates: 600 × 400, centred
// horizontally, its centre 100 points above the centre of the free area.
QRectF searchPanelFrame(const QRectF& available);

inline constexpr qreal kSearchPanelWidth = 600;
inline constexpr qreal kSearchPanelHeight = 400;
inline constexpr qreal kSearchPanelRaise = 100;
