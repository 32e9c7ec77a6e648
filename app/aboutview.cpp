#include "app/aboutview.h"

#include "telemetry/appinfo.h"

#include <QBoxLayout>
#include <QCoreApplication>
#include <QIcon>
#include <QLabel>

namespace {

QLabel* text(const QString& content, QWidget* parent, qreal scale, int weight = QFont::Normal, qreal alpha = 1.0)
{
    auto* label = new QLabel(content, parent);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * scale);
    font.setWeight(QFont::Weight(weight));
    label->setFont(font);
    label->setAlignment(Qt::AlignCenter);
    if (alpha < 1.0) {
        QPalette palette = label->palette();
        QColor color = palette.color(QPalette::WindowText);
        color.setAlphaF(float(alpha));
        palette.setColor(QPalette::WindowText, color);
        label->setPalette(palette);
    }
    return label;
}

QLabel* link(const QString& title, const QUrl& url, QWidget* parent, qreal scale, int weight = QFont::Normal)
{
    auto* label = text(QStringLiteral("<a href=\"%1\">%2</a>").arg(url.toString(QUrl::FullyEncoded), title.toHtmlEscaped()),
                       parent, scale, weight);
    label->setTextFormat(Qt::RichText);
    label->setOpenExternalLinks(true); // the default browser
    return label;
}

} // namespace

QString AboutView::nameText(const QString& name)
{
    return name.trimmed().isEmpty() ? QStringLiteral("Kestrio") : name;
}

QString AboutView::versionText(const QString& version, const QString& build)
{
    return QStringLiteral("Version %1 (%2)")
        .arg(version.trimmed().isEmpty() ? QStringLiteral("0.0.0") : version,
             build.trimmed().isEmpty() ? QStringLiteral("0") : build);
}

AboutView::AboutView(QUrl bwkURL, QUrl productURL, QWidget* parent)
    : QWidget(parent), bwkURL(std::move(bwkURL)), productURL(std::move(productURL))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(24, 24, 24, 24);
    column->setSpacing(16);

    auto* icon = new QLabel(this);
    icon->setPixmap(QIcon(QStringLiteral(":/icons/kestrio.svg")).pixmap(96, 96));
    icon->setAlignment(Qt::AlignCenter);
    column->addWidget(icon);

    auto* identity = new QVBoxLayout;
    identity->setSpacing(4);
    name_ = text(nameText(QCoreApplication::applicationName()), this, 1.6, QFont::DemiBold);
    version_ = text(versionText(appVersion(), appBuild()), this, 0.95, QFont::Normal, 0.62);
    identity->addWidget(name_);
    identity->addWidget(version_);
    column->addLayout(identity);
    column->addWidget(text(QStringLiteral("Find any menu item instantly."), this, 1.0, QFont::Normal, 0.62));

    auto* line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    auto* lineRow = new QHBoxLayout;
    lineRow->setContentsMargins(40, 0, 40, 0);
    lineRow->addWidget(line);
    column->addLayout(lineRow);

    auto* maker = new QVBoxLayout;
    maker->setSpacing(6);
    maker->addWidget(text(QStringLiteral("Brought to you by"), this, 0.85, QFont::Normal, 0.62));
    maker->addWidget(link(QStringLiteral("Brambleworks"), this->bwkURL, this, 1.1, QFont::DemiBold));
    column->addLayout(maker);

    auto* links = new QHBoxLayout;
    links->setSpacing(16);
    links->addStretch();
    links->addWidget(link(QStringLiteral("Product page"), this->productURL, this, 0.85));
    links->addWidget(link(QStringLiteral("Website"), this->bwkURL, this, 0.85));
    links->addStretch();
    column->addLayout(links);

    column->addSpacing(4);
    column->addWidget(text(QStringLiteral("© 2026 Brambleworks\nAll rights reserved."), this, 0.75, QFont::Normal, 0.42));
}

QString AboutView::shownName() const
{
    return name_->text();
}

QString AboutView::shownVersion() const
{
    return version_->text();
}
