#include "app/onboardingview.h"

#include "menu/accessibilityservice.h"
#include "platform/accessibility.h"

#include <QBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>

namespace {

QLabel* text(const QString& content, QWidget* parent, qreal scale = 1.0, bool bold = false)
{
    auto* label = new QLabel(content, parent);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * scale);
    font.setBold(bold);
    label->setFont(font);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    return label;
}

void setColor(QWidget* widget, const QColor& color)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    widget->setPalette(palette);
}

QColor secondary(const QWidget* widget)
{
    QColor c = widget->palette().color(QPalette::WindowText);
    c.setAlphaF(0.62f);
    return c;
}

// A headline with a small symbol before its text.
QLabel* iconLabel(const QString& icon, const QString& content, QWidget* parent)
{
    auto* label = new QLabel(parent);
    const int size = label->fontMetrics().height();
    label->setText(QStringLiteral("<img src=\"%1\" width=%2 height=%2 style=\"vertical-align:middle\">&nbsp;%3")
                       .arg(icon)
                       .arg(size)
                       .arg(content.toHtmlEscaped()));
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

OnboardingView::OnboardingView(AccessibilityService& accessibilityService, std::function<void()> onComplete,
                               QWidget* parent)
    : QWidget(parent), accessibilityService_(accessibilityService), onComplete_(std::move(onComplete))
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(32, 32, 32, 32);
    column->setSpacing(24);

    auto* symbol = new QLabel(this);
    symbol->setPixmap(QIcon(QStringLiteral(":/icons/kestrio.svg")).pixmap(48, 48));
    symbol->setAlignment(Qt::AlignCenter);
    column->addWidget(symbol);
    column->addWidget(text(QStringLiteral("Welcome to Kestrio"), this, 1.6, true));
    auto* intro = text(QStringLiteral("Search and execute any menu item in the active app instantly.\n"
                                      "Just double-tap ⌘ Command to get started."),
                       this);
    setColor(intro, secondary(this));
    column->addWidget(intro);
    auto* line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Plain);
    setColor(line, secondary(this));
    column->addWidget(line);

    permission_ = new QStackedWidget(this);
    auto* missing = new QWidget(permission_);
    auto* missingColumn = new QVBoxLayout(missing);
    missingColumn->setContentsMargins(0, 0, 0, 0);
    missingColumn->setSpacing(12);
    required_ = iconLabel(QStringLiteral(":/icons/lock.svg"), QStringLiteral("Accessibility permission required"), missing);
    missingColumn->addWidget(required_);
    auto* explain = text(QStringLiteral("Kestrio needs Accessibility access to read menu items from other apps."),
                         missing, 0.85);
    setColor(explain, secondary(this));
    missingColumn->addWidget(explain);
    openSettings_ = new QPushButton(QStringLiteral("Open System Settings"), missing);
    openSettings_->setDefault(true);
    missingColumn->addWidget(openSettings_, 0, Qt::AlignHCenter);
    granted_ = iconLabel(QStringLiteral(":/icons/check.svg"), QStringLiteral("Accessibility permission granted!"),
                         permission_);
    setColor(granted_, QColor(0x1E, 0x9E, 0x4A));
    permission_->addWidget(missing);
    permission_->addWidget(granted_);
    column->addWidget(permission_);
    column->addStretch(1);

    closing_ = new QPushButton(this);
    column->addWidget(closing_, 0, Qt::AlignHCenter);
    setPermission(false);

    connect(openSettings_, &QPushButton::clicked, this,
            [this] { accessibilityService_.accessibility().requestTrust(); });
    connect(closing_, &QPushButton::clicked, this, [this] {
        if (onComplete_)
            onComplete_();
    });
    // The first look comes a second after showing, like every later one.
    timer_.setInterval(kPollMs);
    connect(&timer_, &QTimer::timeout, this,
            [this] { setPermission(accessibilityService_.accessibility().isProcessTrusted()); });
    timer_.start();
}

void OnboardingView::setPermission(bool granted)
{
    hasPermission_ = granted;
    permission_->setCurrentIndex(granted ? 1 : 0);
    closing_->setText(granted ? QStringLiteral("Get Started") : QStringLiteral("Continue Without Permission"));
}

QString OnboardingView::permissionText() const
{
    return hasPermission_ ? QStringLiteral("Accessibility permission granted!")
                          : QStringLiteral("Accessibility permission required");
}
