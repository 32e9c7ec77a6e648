#include "app/aboutview.h"

#include "base/styledlabel.h"
#include "telemetry/appinfo.h"

#include <QBoxLayout>
#include <QCoreApplication>
#include <QIcon>
#include <QLabel>

namespace {

using Font = StyledLabel::Font;
using Tone = StyledLabel::Tone;

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
    StyledLabel* name =
        StyledLabel::centred(nameText(QCoreApplication::applicationName()), Font::title, Tone::primary, this);
    name->setWeight(QFont::DemiBold);
    identity->addWidget(name);
    identity->addWidget(
        StyledLabel::centred(versionText(appVersion(), appBuild()), Font::callout, Tone::secondary, this));
    column->addLayout(identity);
    column->addWidget(
        StyledLabel::centred(QStringLiteral("Find any menu item instantly."), Font::subheadline, Tone::secondary, this));

    auto* line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    auto* lineRow = new QHBoxLayout;
    lineRow->setContentsMargins(40, 0, 40, 0);
    lineRow->addWidget(line);
    column->addLayout(lineRow);

    auto* maker = new QVBoxLayout;
    maker->setSpacing(6);
    maker->addWidget(StyledLabel::centred(QStringLiteral("Brought to you by"), Font::caption, Tone::secondary, this));
    StyledLabel* brambleworks = StyledLabel::link(QStringLiteral("Brambleworks"), this->bwkURL, Font::headline, this);
    brambleworks->setAlignment(Qt::AlignCenter);
    maker->addWidget(brambleworks);
    column->addLayout(maker);

    auto* links = new QHBoxLayout;
    links->setSpacing(16);
    links->addStretch();
    links->addWidget(StyledLabel::link(QStringLiteral("Product page"), this->productURL, Font::caption, this));
    links->addWidget(StyledLabel::link(QStringLiteral("Website"), this->bwkURL, Font::caption, this));
    links->addStretch();
    column->addLayout(links);

    column->addSpacing(4);
    column->addWidget(StyledLabel::centred(QStringLiteral("© 2026 Brambleworks\nAll rights reserved."), Font::caption2,
                                           Tone::tertiary, this));
}
