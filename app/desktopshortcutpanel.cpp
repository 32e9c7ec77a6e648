#include "app/desktopshortcutpanel.h"

#include "base/notificationhub.h"
#include "base/platformwords.h"
#include "base/settingsstore.h"
#include "base/styledlabel.h"
#include "hotkey/customshortcut.h"
#include "hotkey/hotkeymode.h"
#include "hotkey/hotkeyservice.h"

#include <QBoxLayout>
#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>

namespace {

using Font = StyledLabel::Font;
using Tone = StyledLabel::Tone;

// A line to select or copy: a command, or a line of configuration.
QLabel* copyable(const QString& text, const QString& copyLabel, QWidget* parent, QBoxLayout* into)
{
    auto* row = new QWidget(parent);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* label = new QLabel(text, row);
    label->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setWordWrap(true);
    layout->addWidget(label, 1);
    auto* copy = new QPushButton(copyLabel, row);
    QObject::connect(copy, &QPushButton::clicked, label, [label] { QGuiApplication::clipboard()->setText(label->text()); });
    layout->addWidget(copy);
    into->addWidget(row);
    return label;
}

} // namespace

DesktopShortcutPanel::DesktopShortcutPanel(const PlatformWords& words, HotkeyService& hotkey, SettingsStore& settings,
                                           NotificationHub& notifications, QWidget* parent)
    : QWidget(parent),
      words_(words),
      hotkey_(hotkey),
      settings_(settings),
      notifications_(notifications),
      setup_(hotkey.desktopShortcutSetup())
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    switch (setup_) {
    case DesktopShortcutSetup::notNeeded:
        hide();
        break;
    case DesktopShortcutSetup::desktopWatches: {
        auto* row = new QWidget(this);
        auto* rowLayout = new QHBoxLayout(row);
        rowLayout->setContentsMargins(0, 0, 0, 0);
        status_ = new StyledLabel(QString(), Font::callout, Tone::secondary, row);
        status_->setWordWrap(true);
        rowLayout->addWidget(status_, 1);
        setUp_ = new QPushButton(words.setUpDesktopShortcut, row);
        connect(setUp_, &QPushButton::clicked, this, &DesktopShortcutPanel::setUp);
        rowLayout->addWidget(setUp_);
        remove_ = new QPushButton(words.removeDesktopShortcut, row);
        connect(remove_, &QPushButton::clicked, this, &DesktopShortcutPanel::remove);
        rowLayout->addWidget(remove_);
        layout->addWidget(row);
        break;
    }
    case DesktopShortcutSetup::configLine:
        layout->addWidget(new StyledLabel(words.configLineNote, Font::caption, Tone::secondary, this));
        line_ = copyable(QString(), words.copyCommand, this, layout);
        break;
    case DesktopShortcutSetup::byHand:
        layout->addWidget(new StyledLabel(words.toggleCommandNote, Font::caption, Tone::secondary, this));
        line_ = copyable(words.toggleCommand, words.copyCommand, this, layout);
        break;
    }
    connect(&hotkey_, &HotkeyService::desktopShortcutChanged, this, &DesktopShortcutPanel::render);
    connect(&notifications_, &NotificationHub::hotkeyModeChanged, this, &DesktopShortcutPanel::render);
    render();
}

void DesktopShortcutPanel::setUp()
{
    if (!loadCustomShortcut(settings_))
        saveCustomShortcut(defaultDesktopShortcut(), settings_);
    saveHotkeyMode(HotkeyMode::customShortcut, settings_);
    notifications_.postHotkeyModeChanged(); // the controller applies it, the desktop is asked
}

void DesktopShortcutPanel::remove()
{
    saveHotkeyMode(HotkeyMode::doubleTapCtrl, settings_);
    notifications_.postHotkeyModeChanged(); // the controller applies it: Kestrio's entry leaves the desktop
}

QString DesktopShortcutPanel::statusText(const DesktopShortcutState& state) const
{
    switch (state.kind) {
    case DesktopShortcutState::Kind::none:
        return words_.noDesktopShortcut;
    case DesktopShortcutState::Kind::pending:
        return words_.desktopShortcutPending;
    case DesktopShortcutState::Kind::bound:
        return words_.desktopShortcutBound.arg(state.keys);
    case DesktopShortcutState::Kind::refused:
        return state.problem;
    }
    return {};
}

QString DesktopShortcutPanel::statusText() const
{
    return status_ ? status_->plainText() : QString();
}

QString DesktopShortcutPanel::lineText() const
{
    return line_ ? line_->text() : QString();
}

void DesktopShortcutPanel::render()
{
    if (setup_ == DesktopShortcutSetup::configLine)
        line_->setText(hotkey_.desktopShortcutConfigLine());
    if (!status_)
        return;
    const DesktopShortcutState& state = hotkey_.desktopShortcut();
    status_->setText(statusText(state));
    status_->setTone(state.kind == DesktopShortcutState::Kind::bound     ? Tone::green
                     : state.kind == DesktopShortcutState::Kind::refused ? Tone::orange
                                                                         : Tone::secondary);
    // Offered until the desktop has granted keys: a refusal may be tried
    // again after recording another shortcut.
    setUp_->setVisible(state.kind != DesktopShortcutState::Kind::bound
                       && state.kind != DesktopShortcutState::Kind::pending);
    remove_->setVisible(state.kind == DesktopShortcutState::Kind::bound);
}
