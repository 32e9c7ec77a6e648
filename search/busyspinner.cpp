#include "search/busyspinner.h"

#include <QPainter>

BusySpinner::BusySpinner(QWidget* parent) : QWidget(parent)
{
    timer_.setInterval(16);
    connect(&timer_, &QTimer::timeout, this, [this] {
        angle_ = (angle_ + 8) % 360;
        update();
    });
}

void BusySpinner::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal side = qMin(width(), height()) - 4;
    const QRectF ring((width() - side) / 2, (height() - side) / 2, side, side);
    QColor track = palette().color(QPalette::WindowText);
    track.setAlphaF(0.15f);
    painter.setPen(QPen(track, 3));
    painter.drawEllipse(ring);
    QPen arc(palette().color(QPalette::Highlight), 3);
    arc.setCapStyle(Qt::RoundCap);
    painter.setPen(arc);
    painter.drawArc(ring, -angle_ * 16, 100 * 16);
}
