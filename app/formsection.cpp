#include "app/formsection.h"

#include "base/styledlabel.h"

#include <QBoxLayout>
#include <QPainter>
#include <QPainterPath>

namespace {

// The rounded box, painted from the palette at paint time so that it follows
// theme switches.
class SectionBox : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QPalette& p = palette();
        const bool dark = p.color(QPalette::Window).lightness() < 128;
        QColor fill = dark ? p.color(QPalette::Window).lighter(125) : p.color(QPalette::Base);
        QColor border = p.color(QPalette::WindowText);
        border.setAlphaF(0.12f);
        QPainterPath path;
        path.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 8, 8);
        painter.fillPath(path, fill);
        painter.setPen(border);
        painter.drawPath(path);
        // Lines between visible rows.
        const auto* column = static_cast<QVBoxLayout*>(layout());
        bool first = true;
        for (int i = 0; i < column->count(); ++i) {
            QWidget* row = column->itemAt(i)->widget();
            if (!row || row->isHidden())
                continue;
            if (!first) {
                const int y = row->geometry().top() - column->spacing() / 2;
                painter.drawLine(QPointF(12, y), QPointF(width() - 12, y));
            }
            first = false;
        }
    }
};

} // namespace

FormSection::FormSection(const QString& title, QWidget* parent)
    : QWidget(parent), title_(new StyledLabel(title, StyledLabel::Font::subheadline, StyledLabel::Tone::secondary, this)),
      box_(new SectionBox(this)), rows_(new QVBoxLayout(box_))
{
    title_->setWeight(QFont::DemiBold);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(6);
    auto* titleRow = new QHBoxLayout;
    titleRow->setContentsMargins(4, 0, 0, 0);
    titleRow->addWidget(title_);
    column->addLayout(titleRow);
    column->addWidget(box_);
    rows_->setContentsMargins(12, 8, 12, 8);
    rows_->setSpacing(12);
}

QString FormSection::title() const
{
    return title_->plainText();
}

void FormSection::addRow(QWidget* row)
{
    rows_->addWidget(row);
}
