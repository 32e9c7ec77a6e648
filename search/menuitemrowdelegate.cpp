#include "search/menuitemrowdelegate.h"

#include "search/resultlistmodel.h"

#include <QPainter>
#include <QPainterPath>

namespace {

// Draws a single line, cut off with an ellipsis only when it does not fit.
void drawLine(QPainter* painter, const QFontMetrics& metrics, const QRect& box, const QString& text)
{
    if (metrics.horizontalAdvance(text) <= box.width())
        painter->drawText(box, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text);
    else
        painter->drawText(box, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                          metrics.elidedText(text, Qt::ElideRight, box.width()));
}

} // namespace

MenuItemRowDelegate::MenuItemRowDelegate(const PanelStyle& style, QObject* parent)
    : QStyledItemDelegate(parent), style_(style), titleMetrics_(style.bodyMedium), captionMetrics_(style.caption)
{
}

QSize MenuItemRowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const bool hasBreadcrumb = !index.data(ResultListModel::BreadcrumbRole).toString().isEmpty();
    const int content = titleMetrics_.height() + (hasBreadcrumb ? kLineSpacing + captionMetrics_.height() : 0);
    return QSize(option.rect.width(), kRowInsetV * 2 + kPadV * 2 + content);
}

void MenuItemRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect row = option.rect.adjusted(kRowInsetH, kRowInsetV, -kRowInsetH, -kRowInsetV);
    if (index.data(ResultListModel::SelectedRole).toBool()) {
        QPainterPath background;
        background.addRoundedRect(row, kRadius, kRadius);
        painter->fillPath(background, style_.selection);
    }
    QRect content = row.adjusted(kPadH, kPadV, -kPadH, -kPadV);

    const QString shortcut = index.data(ResultListModel::ShortcutRole).toString();
    if (!shortcut.isEmpty()) {
        const int width = captionMetrics_.horizontalAdvance(shortcut) + kBadgePadH * 2;
        const int height = captionMetrics_.height() + kBadgePadV * 2;
        const QRect badge(content.right() - width + 1, content.center().y() - height / 2, width, height);
        QPainterPath fill;
        fill.addRoundedRect(badge, kBadgeRadius, kBadgeRadius);
        painter->fillPath(fill, style_.badgeFill);
        painter->setFont(style_.caption);
        painter->setPen(style_.secondary);
        painter->drawText(badge, Qt::AlignCenter | Qt::TextSingleLine, shortcut);
        content.setRight(badge.left() - kSpacing);
    }

    const QString breadcrumb = index.data(ResultListModel::BreadcrumbRole).toString();
    const int lines = titleMetrics_.height() + (breadcrumb.isEmpty() ? 0 : kLineSpacing + captionMetrics_.height());
    int y = content.center().y() - lines / 2;
    painter->setFont(style_.bodyMedium);
    painter->setPen(style_.text);
    drawLine(painter, titleMetrics_, QRect(content.left(), y, content.width(), titleMetrics_.height()),
             index.data(ResultListModel::TitleRole).toString());
    if (!breadcrumb.isEmpty()) {
        y += titleMetrics_.height() + kLineSpacing;
        painter->setFont(style_.caption);
        painter->setPen(style_.secondary);
        drawLine(painter, captionMetrics_, QRect(content.left(), y, content.width(), captionMetrics_.height()), breadcrumb);
    }
    painter->restore();
}
