#pragma once

#include "search/panelstyle.h"

#include <QStyledItemDelegate>

// Draws one result: the title in medium weight, the chain of menus that leads
// to it beneath, the shortcut as a light badge at the right edge, and the
// selected row on the accent colour. Disabled items look like enabled ones.
class MenuItemRowDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    // Row insets and inner spacing, in points.
    static constexpr int kRowInsetV = 2, kRowInsetH = 8, kPadV = 4, kPadH = 8, kSpacing = 10, kLineSpacing = 2,
                         kBadgePadH = 6, kBadgePadV = 2, kRadius = 6, kBadgeRadius = 4;

    explicit MenuItemRowDelegate(const PanelStyle& style, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    PanelStyle style_;
    QFontMetrics titleMetrics_;
    QFontMetrics captionMetrics_;
};
