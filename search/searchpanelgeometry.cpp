#include "search/searchpanelgeometry.h"

#include <QtMath>

std::optional<std::pair<qsizetype, QPointF>> screenOfNativePoint(const QList<ScreenArea>& screens, QPoint native)
{
    for (qsizetype i = 0; i < screens.size(); ++i) {
        const ScreenArea& s = screens[i];
        // The toolkit scales each screen around its own top left.
        const QPoint origin = s.geometry.topLeft();
        const QRect nativeRect(origin, QSize(qCeil(s.geometry.width() * s.devicePixelRatio),
                                             qCeil(s.geometry.height() * s.devicePixelRatio)));
        if (nativeRect.contains(native))
            return std::pair{i, QPointF(origin) + QPointF(native - origin) / s.devicePixelRatio};
    }
    return std::nullopt;
}

QRectF searchPanelFrame(const QRectF& available)
{
    const QPointF centre = available.center();
    return QRectF(centre.x() - kSearchPanelWidth / 2, centre.y() - kSearchPanelRaise - kSearchPanelHeight / 2,
                  kSearchPanelWidth, kSearchPanelHeight);
}
