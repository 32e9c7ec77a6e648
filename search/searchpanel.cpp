#include "search/searchpanel.h"

#include "search/searchview.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QPainterPath>
#include <QRegion>

SearchPanel::SearchPanel(QWidget* content, bool compositor)
    : QWidget(nullptr, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint), compositor_(compositor)
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_DeleteOnClose, false);
    setWindowTitle(QStringLiteral("Kestrio"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
}

void SearchPanel::keyPressEvent(QKeyEvent* event)
{
    event->accept();
}

void SearchPanel::mousePressEvent(QMouseEvent* event)
{
    // Only presses that no child took reach here: the background.
    if (event->button() == Qt::LeftButton) {
        dragging_ = true;
        dragOffset_ = event->globalPosition().toPoint() - frameGeometry().topLeft();
    }
}

void SearchPanel::mouseMoveEvent(QMouseEvent* event)
{
    if (dragging_ && (event->buttons() & Qt::LeftButton))
        move(event->globalPosition().toPoint() - dragOffset_);
}

void SearchPanel::resizeEvent(QResizeEvent*)
{
    // Without a compositor translucent corners would show black: cut them off.
    if (compositor_) {
        clearMask();
        return;
    }
    QPainterPath shape;
    shape.addRoundedRect(QRectF(rect()).adjusted(0, 0, -1, -1), SearchView::kCornerRadius, SearchView::kCornerRadius);
    setMask(QRegion(shape.toFillPolygon().toPolygon(), Qt::WindingFill));
}
