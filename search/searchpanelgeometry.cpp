#include "search/searchpanelgeometry.h"

QRectF searchPanelFrame(const QRectF& available)
{
    const QPointF centre = available.center();
    return QRectF(centre.x() - kSearchPanelWidth / 2, centre.y() - kSearchPanelRaise - kSearchPanelHeight / 2,
                  kSearchPanelWidth, kSearchPanelHeight);
}
