#include "app/onboardingview.h"

#include "base/timers.h"

#include "base/platformwords.h"
#include "base/styledlabel.h"
#include "menu/accessibilityservice.h"
#include "platform/accessibility.h"

#include <QBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>

namespace {

using Font = StyledLabel::Font;
using Tone = StyledLabel::Tone;

// A bold line with a small symbol before its text.
StyledLabel* iconLabel(const QString& icon, const QString& content, Tone tone, QWidget* parent)
{
    StyledLabel* label = StyledLabel::withIcon(icon, content, Font::body, tone, parent);
    label->setWeight(QFont::Bold);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

OnboardingView::OnboardingView(const PlatformWords& words, AccessibilityService& accessibilityService,
                               Timers& timers, std::function<void()> onComplete, KeyboardAccess keyboardAccess,
                               QWidget* desktopShortcut, QWidget* parent)
    : QWidget(parent),
      words_(words),
      accessibilityService_(accessibilityService),
      onComplete_(std::move(onComplete)),
      timers_(timers)
{
    auto* column = new QVBoxLayout(this);
    // Both permission states fit the 480 × 360 window.
    column->setContentsMargins(32, 20, 32, 20);
    column->setSpacing(14);

    auto* symbol = new QLabel(this);
    symbol->setPixmap(QIcon(QStringLiteral(":/icons/kestrio.svg")).pixmap(48, 48));
    symbol->setAlignment(Qt::AlignCenter);
    column->addWidget(symbol);
    StyledLabel* welcome =
        StyledLabel::centred(QStringLiteral("Welcome to Kestrio"), Font::title, Tone::primary, this);
    welcome->setWeight(QFont::Bold);
    column->addWidget(welcome);
    column->addWidget(StyledLabel::centred(
        keyboardAccess == KeyboardAccess::none ? words.welcomeHintWithoutKeys : words.welcomeHint, Font::body,
        Tone::secondary, this));
    if (desktopShortcut) {
        desktopShortcut->setParent(this);
        column->addWidget(desktopShortcut);
    }
    auto* line = new QFrame(this);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    column->addWidget(line);

    permission_ = new QStackedWidget(this);
    auto* missing = new QWidget(permission_);
    auto* missingColumn = new QVBoxLayout(missing);
    missingColumn->setContentsMargins(0, 0, 0, 0);
    missingColumn->setSpacing(8);
    required_ = iconLabel(QStringLiteral(":/icons/lock.svg"), words.permissionMissing,
                          Tone::primary, missing);
    missingColumn->addWidget(required_);
    missingColumn->addWidget(StyledLabel::centred(
        words.permissionExplanation, Font::caption,
        Tone::secondary, missing));
    openSettings_ = new QPushButton(words.grantPermission, missing);
    openSettings_->setDefault(true);
    missingColumn->addWidget(openSettings_, 0, Qt::AlignHCenter);
    granted_ = iconLabel(QStringLiteral(":/icons/check.svg"), words.permissionGranted,
                         Tone::green, permission_);
    permission_->addWidget(missing);
    permission_->addWidget(granted_);
    column->addWidget(permission_);

    noTray_ = new QWidget(this);
    auto* noTrayColumn = new QVBoxLayout(noTray_);
    noTrayColumn->setContentsMargins(0, 0, 0, 0);
    noTrayColumn->setSpacing(6);
    noTrayColumn->addWidget(iconLabel(QStringLiteral(":/icons/warning.svg"), words.noTrayTitle,
                                      Tone::orange, noTray_));
    noTrayColumn->addWidget(
        StyledLabel::centred(words.noTrayText, Font::caption, Tone::secondary, noTray_));
    noTray_->hide();
    column->addWidget(noTray_);
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
    lookLater();
}

void OnboardingView::lookLater()
{
    // Each look asks afresh: the answer comes a moment later, not a poll later.
    // The poll goes with the view.
    timers_.after(kPollMs, this, [this] {
        accessibilityService_.accessibility().askTrust(this, [this](bool trusted) { setPermission(trusted); });
        lookLater();
    });
}

void OnboardingView::setPermission(bool granted)
{
    hasPermission_ = granted;
    permission_->setCurrentIndex(granted ? 1 : 0);
    closing_->setText(granted ? QStringLiteral("Get Started") : words_.continueWithoutPermission);
}

void OnboardingView::showNoTrayNotice()
{
    if (!noTray_->isHidden())
        return;
    noTray_->show();
    QWidget* frame = window();
    frame->setFixedSize(frame->width(), frame->height() + noTray_->sizeHint().height() + layout()->spacing());
}

bool OnboardingView::showsNoTrayNotice() const
{
    return !noTray_->isHidden();
}
