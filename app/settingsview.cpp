#include "app/settingsview.h"

#include "app/appearancetheme.h"
#include "app/desktopshortcutpanel.h"
#include "app/formsection.h"
#include "base/notificationhub.h"
#include "base/platformwords.h"
#include "base/settingsstore.h"
#include "base/styledlabel.h"
#include "buildconfig.h"
#include "hotkey/hotkeymode.h"
#include "hotkey/hotkeyservice.h"
#include "hotkey/shortcutrecorderbutton.h"
#include "menu/accessibilityservice.h"
#include "platform/loginitem.h"
#include "search/busyspinner.h"
#include "search/usagetracker.h"

#include <QApplication>
#include <QBoxLayout>
#include <QButtonGroup>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QToolButton>

#include <cstdio>

namespace {

using Font = StyledLabel::Font;
using Tone = StyledLabel::Tone;

struct ThemeOption {
    const char* title;
    const char* stored;
};
constexpr ThemeOption kThemes[] = {{"System", "system"}, {"Light", "light"}, {"Dark", "dark"}};

QHBoxLayout* row(QWidget* parent = nullptr, int spacing = 8)
{
    auto* layout = new QHBoxLayout(parent);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
    return layout;
}

QVBoxLayout* column(QWidget* parent, int spacing, int verticalPadding = 0)
{
    auto* layout = new QVBoxLayout(parent);
    layout->setContentsMargins(0, verticalPadding, 0, verticalPadding);
    layout->setSpacing(spacing);
    return layout;
}

// An explanation under a heading: caption size, dimmed, wrapped.
StyledLabel* note(const QString& text, QWidget* parent)
{
    return new StyledLabel(text, Font::caption, Tone::secondary, parent);
}

// The hotkey section's warnings: an orange heading with its symbol, what
// happened, and the remedy's button where there is one.
QWidget* warningBlock(const QString& icon, const QString& heading, const QString& explanation,
                      QPushButton* remedy, QWidget* parent)
{
    auto* block = new QWidget(parent);
    QVBoxLayout* layout = column(block, 6, 2);
    StyledLabel* title = StyledLabel::withIcon(icon, heading, Font::callout, Tone::orange, block);
    title->setWeight(QFont::Medium);
    layout->addWidget(title);
    layout->addWidget(note(explanation, block));
    if (remedy) {
        remedy->setParent(block);
        layout->addWidget(remedy, 0, Qt::AlignLeft);
    }
    return block;
}

// A destructive action's button, in red text.
void markDestructive(QPushButton* button)
{
    QPalette red;
    red.setColor(QPalette::ButtonText, StyledLabel::toneColor(Tone::red, {}));
    button->setPalette(red);
}

QWidget* labelled(const QString& label, QWidget* control, QWidget* parent)
{
    auto* line = new QWidget(parent);
    QHBoxLayout* layout = row(line);
    layout->addWidget(new QLabel(label, line));
    layout->addStretch(1);
    control->setParent(line);
    layout->addWidget(control);
    return line;
}

} // namespace

SettingsView::SettingsView(Services services, QWidget* parent)
    : QWidget(parent),
      services_(std::move(services)),
      recordedShortcut_(loadCustomShortcut(services_.settings)),
      installerState_(services_.selfUpdater.state())
{
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    scroll_ = new QScrollArea(this);
    scroll_->setFrameShape(QFrame::NoFrame);
    scroll_->setWidgetResizable(true);
    scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll_->setFocusPolicy(Qt::NoFocus); // the keyboard starts on the first control
    outer->addWidget(scroll_);

    auto* form = new QWidget;
    form->setMinimumHeight(kFormHeight);
    auto* layout = new QVBoxLayout(form);
    layout->setContentsMargins(20, 20, 20, 20);
    layout->setSpacing(18);
    for (const char* title : {"General", "Hotkey", "Appearance", "Privacy", "Updates", "Data"}) {
        auto* section = new FormSection(QString::fromUtf8(title), form);
        sections_ << section;
        layout->addWidget(section);
    }
    layout->addStretch(1);
    buildGeneral(sections_[0]);
    buildHotkey(sections_[1]);
    buildAppearance(sections_[2]);
    buildPrivacy(sections_[3]);
    buildUpdates(sections_[4]);
    buildData(sections_[5]);
    scroll_->setWidget(form);
    // Let the form fill the window's width whatever the scroll bar takes.
    form->setMinimumWidth(kFormWidth - scroll_->verticalScrollBar()->sizeHint().width());

    // Program-wide states shown live while the window exists.
    connect(&services_.hotkey, &HotkeyService::isActiveChanged, this, &SettingsView::render);
    connect(&services_.notifications, &NotificationHub::hotkeyModeChanged, this, &SettingsView::render);
    connect(&services_.selfUpdater, &SelfUpdater::stateChanged, this, &SettingsView::renderInstaller);
    render();
}

SettingsView::~SettingsView() = default;

QUrl SettingsView::privacyPolicyURL()
{
    return QUrl(QStringLiteral("https://%1/apps/kestrio/privacy/").arg(QStringLiteral(KESTRIO_WEBSITE_HOST)));
}

void SettingsView::buildGeneral(FormSection* section)
{
    launchAtLogin_ = new QCheckBox(QStringLiteral("Launch at login"), section);
    connect(launchAtLogin_, &QCheckBox::clicked, this, &SettingsView::setLaunchAtLogin);
    section->addRow(launchAtLogin_);

    hideMenuBarIcon_ = new QCheckBox(services_.words.hideIcon, section);
    connect(hideMenuBarIcon_, &QCheckBox::clicked, this, [this](bool hide) {
        if (hide == services_.settings.hideMenuBarIcon())
            return;
        services_.settings.setBool(SettingsKey::hideMenuBarIcon, hide);
        services_.notifications.postMenuBarIconVisibilityChanged();
        render();
    });
    section->addRow(hideMenuBarIcon_);

    // Without the tray icon the tray menu's Quit is gone too.
    hiddenIconNote_ = new QWidget(section);
    QVBoxLayout* layout = column(hiddenIconNote_, 8);
    layout->addWidget(note(services_.words.hiddenIconNote, hiddenIconNote_));
    auto* quit = new QPushButton(QStringLiteral("Quit Kestrio"), hiddenIconNote_);
    connect(quit, &QPushButton::clicked, this, [this] {
        if (services_.terminate)
            services_.terminate();
    });
    layout->addWidget(quit, 0, Qt::AlignLeft);
    section->addRow(hiddenIconNote_);
}

void SettingsView::buildHotkey(FormSection* section)
{
    auto* openAccessibility = new QPushButton(services_.words.openAccessibilitySettings);
    connect(openAccessibility, &QPushButton::clicked, this,
            [this] { services_.accessibility.openAccessibilitySettings(); });
    inactiveBlock_ = warningBlock(
        QStringLiteral(":/icons/warning.svg"), QStringLiteral("Hotkey inactive"),
        services_.words.hotkeyInactiveText,
        openAccessibility, section);
    section->addRow(inactiveBlock_);

    const PlatformWords& words = services_.words;
    // The remedy is the command row below it.
    keysUnavailableBlock_ = warningBlock(QStringLiteral(":/icons/warning.svg"), words.keysUnavailableTitle,
                                         words.keysUnavailableText, nullptr, section);
    section->addRow(keysUnavailableBlock_);

    activationMethod_ = new QComboBox;
    for (HotkeyMode mode : allHotkeyModes())
        activationMethod_->addItem(displayName(mode, words), rawValue(mode));
    connect(activationMethod_, &QComboBox::activated, this, [this](int index) {
        const QString chosen = activationMethod_->itemData(index).toString();
        if (chosen == services_.settings.hotkeyModeText().value_or(rawValue(HotkeyMode::doubleTapCtrl)))
            return;
        services_.settings.setString(SettingsKey::hotkeyMode, chosen);
        services_.notifications.postHotkeyModeChanged();
    });
    section->addRow(labelled(QStringLiteral("Activation method"), activationMethod_, section));

    recorder_ = new ShortcutRecorderButton(
        Binding<std::optional<KeyChord>>{[this] { return recordedShortcut_; },
                                               [this](const std::optional<KeyChord>& s) { setRecordedShortcut(s); }},
        Binding<bool>{[this] { return isRecordingShortcut_; }, [this](const bool& r) { setRecordingShortcut(r); }},
        services_.keyboardLayout, words.keys);
    shortcutRow_ = labelled(QStringLiteral("Shortcut:"), recorder_, section);
    section->addRow(shortcutRow_);

    keysFromDevicesNote_ = note(words.keysFromDevicesNote, section);
    section->addRow(keysFromDevicesNote_);

    // Where keys cannot reach Kestrio: the desktop's own shortcut, set up here.
    desktopShortcut_ =
        new DesktopShortcutPanel(words, services_.hotkey, services_.settings, services_.notifications, section);
    section->addRow(desktopShortcut_);
}

void SettingsView::buildAppearance(FormSection* section)
{
    auto* segments = new QWidget;
    QHBoxLayout* layout = row(segments, 0);
    theme_ = new QButtonGroup(this);
    theme_->setExclusive(true);
    for (const ThemeOption& option : kThemes) {
        auto* segment = new QToolButton(segments);
        segment->setText(QString::fromUtf8(option.title));
        segment->setCheckable(true);
        segment->setToolButtonStyle(Qt::ToolButtonTextOnly);
        segment->setMinimumWidth(64);
        segment->setProperty("stored", QString::fromUtf8(option.stored));
        theme_->addButton(segment);
        layout->addWidget(segment);
    }
    connect(theme_, &QButtonGroup::buttonClicked, this, [this](QAbstractButton* segment) {
        const QString chosen = segment->property("stored").toString();
        if (chosen == services_.settings.appearance())
            return;
        services_.settings.setString(SettingsKey::appearance, chosen);
        AppearanceTheme::apply(chosen);
        styleThemeSegments();
    });
    section->addRow(labelled(QStringLiteral("Theme"), segments, section));
}

void SettingsView::buildPrivacy(FormSection* section)
{
    analytics_ = new QCheckBox(QStringLiteral("Share anonymous usage data"), section);
    connect(analytics_, &QCheckBox::clicked, this, [this](bool enabled) {
        if (enabled == services_.settings.analyticsEnabled())
            return;
        services_.settings.setBool(SettingsKey::analyticsEnabled, enabled);
        services_.notifications.postAnalyticsOptInChanged(enabled);
    });
    auto* text = new QWidget(section);
    QVBoxLayout* layout = column(text, 6);
    layout->addWidget(analytics_);
    layout->addWidget(note(QStringLiteral("Off by default. When enabled, Kestrio sends anonymous usage events and "
                                          "crash reports to help improve the app. No personal data, no query text, "
                                          "no menu contents — ever. You can disable this at any time."),
                           text));
    layout->addWidget(StyledLabel::link(QStringLiteral("Read our privacy policy"), privacyPolicyURL(), Font::caption, text));
    section->addRow(text);
}

void SettingsView::buildUpdates(FormSection* section)
{
    autoUpdateCheck_ = new QCheckBox(QStringLiteral("Automatically check for updates"), section);
    // Read by the checker when it next decides whether a check is due.
    connect(autoUpdateCheck_, &QCheckBox::clicked, this,
            [this](bool enabled) { services_.settings.setBool(SettingsKey::autoUpdateCheck, enabled); });
    section->addRow(autoUpdateCheck_);

    auto* checkRow = new QWidget(section);
    QHBoxLayout* layout = row(checkRow);
    checkNow_ = new QPushButton(QStringLiteral("Check Now"), checkRow);
    connect(checkNow_, &QPushButton::clicked, this, &SettingsView::checkNow);
    layout->addWidget(checkNow_);
    layout->addStretch(1);
    checkingStatus_ = new QWidget(checkRow);
    QHBoxLayout* checking = row(checkingStatus_, 6);
    auto* spinner = new BusySpinner(checkingStatus_);
    spinner->setFixedSize(16, 16);
    checking->addWidget(spinner);
    checking->addWidget(note(QStringLiteral("Checking…"), checkingStatus_));
    layout->addWidget(checkingStatus_);
    updateStatus_ = new StyledLabel(QString(), Font::caption, Tone::primary, checkRow);
    layout->addWidget(updateStatus_);
    section->addRow(checkRow);

    // One of three rows shows, each at its own height.
    installerRow_ = new QWidget(section);
    QVBoxLayout* installer = column(installerRow_, 0);

    auto* downloading = new QWidget(installerRow_);
    QVBoxLayout* down = column(downloading, 4);
    downloadLabel_ = new StyledLabel(QString(), Font::caption, Tone::primary, downloading);
    downloadProgress_ = new QProgressBar(downloading);
    downloadProgress_->setRange(0, 1000);
    downloadProgress_->setTextVisible(false);
    downloadProgress_->setFixedHeight(8);
    auto* cancel = new QPushButton(QStringLiteral("Cancel"), downloading);
    connect(cancel, &QPushButton::clicked, this, [this] { services_.selfUpdater.cancelUpdate(); });
    down->addWidget(downloadLabel_);
    down->addWidget(downloadProgress_);
    down->addWidget(cancel, 0, Qt::AlignLeft);

    auto* installing = new QWidget(installerRow_);
    QHBoxLayout* busy = row(installing, 8);
    auto* installSpinner = new BusySpinner(installing);
    installSpinner->setFixedSize(16, 16);
    busy->addWidget(installSpinner);
    busy->addWidget(note(QStringLiteral("Installing update…"), installing));
    busy->addStretch(1);

    auto* ready = new QWidget(installerRow_);
    QVBoxLayout* readyColumn = column(ready, 4);
    auto* install = new QPushButton(QStringLiteral("Install Update"), ready);
    install->setDefault(true);
    connect(install, &QPushButton::clicked, this, [this] {
        if (updateCheckState_.kind == UpdateCheckState::Kind::available)
            services_.selfUpdater.startUpdate(updateCheckState_.url, updateCheckState_.version);
    });
    installFailure_ = new StyledLabel(QString(), Font::caption, Tone::red, ready);
    readyColumn->addWidget(install, 0, Qt::AlignLeft);
    readyColumn->addWidget(installFailure_);
    installerPages_ = {downloading, installing, ready};
    for (QWidget* page : installerPages_)
        installer->addWidget(page);
    section->addRow(installerRow_);
}

void SettingsView::buildData(FormSection* section)
{
    auto* reset = new QPushButton(QStringLiteral("Reset Usage History"), section);
    markDestructive(reset);
    connect(reset, &QPushButton::clicked, this, &SettingsView::confirmReset);
    auto* line = new QWidget(section);
    row(line)->addWidget(reset, 0, Qt::AlignLeft);
    section->addRow(line);
}

QString SettingsView::hotkeyModeRaw() const
{
    return rawValue(hotkeyModeFromRawValue(services_.settings.hotkeyModeText()));
}

void SettingsView::render()
{
    SettingsStore& settings = services_.settings;
    launchAtLogin_->setChecked(settings.launchAtLogin());
    const bool hideIcon = settings.hideMenuBarIcon();
    hideMenuBarIcon_->setChecked(hideIcon);
    hiddenIconNote_->setVisible(hideIcon);

    const HotkeyService& hotkey = services_.hotkey;
    const QString mode = hotkeyModeRaw();
    const bool custom = mode == rawValue(HotkeyMode::customShortcut);
    // Keys the session never shows need the desktop's shortcut, not accessibility.
    const KeyboardAccess access = hotkey.keyboardAccess();
    inactiveBlock_->setVisible(!hotkey.isActive() && access != KeyboardAccess::none);
    // The desktop may still watch a custom shortcut for Kestrio (its shortcut portal).
    keysUnavailableBlock_->setVisible(access == KeyboardAccess::none && !hotkey.isActive());
    keysFromDevicesNote_->setVisible(access == KeyboardAccess::inputDevices);
    activationMethod_->setCurrentIndex(activationMethod_->findData(mode));
    shortcutRow_->setVisible(custom);
    recorder_->refresh();

    // Not exclusive while set, so that an unknown stored theme selects no segment.
    const QString appearance = settings.appearance();
    theme_->setExclusive(false);
    for (QAbstractButton* segment : theme_->buttons())
        segment->setChecked(segment->property("stored").toString() == appearance);
    theme_->setExclusive(true);
    styleThemeSegments();
    analytics_->setChecked(settings.analyticsEnabled());
    autoUpdateCheck_->setChecked(settings.autoUpdateCheck());
    renderUpdateStatus();
}

void SettingsView::styleThemeSegments()
{
    // The chosen segment in the accent colour, as a segmented control shows it.
    const QPalette theme = QApplication::palette();
    for (QAbstractButton* segment : theme_->buttons()) {
        QPalette own; // nothing of its own: the theme's
        if (segment->isChecked()) {
            own.setColor(QPalette::Button, theme.color(QPalette::Highlight));
            own.setColor(QPalette::ButtonText, theme.color(QPalette::HighlightedText));
        }
        segment->setPalette(own);
    }
}

void SettingsView::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        styleThemeSegments();
}

void SettingsView::renderUpdateStatus()
{
    using Kind = UpdateCheckState::Kind;
    const UpdateCheckState& state = updateCheckState_;
    checkNow_->setEnabled(state.kind != Kind::checking);
    checkingStatus_->setVisible(state.kind == Kind::checking);
    switch (state.kind) {
    case Kind::idle:
    case Kind::checking:
        updateStatus_->hide();
        break;
    case Kind::upToDate:
        updateStatus_->setContent(QStringLiteral("Up to date"), QStringLiteral(":/icons/check.svg"));
        updateStatus_->setTone(Tone::green);
        updateStatus_->show();
        break;
    case Kind::available:
        updateStatus_->setContent(QStringLiteral("v") + state.version + QStringLiteral(" available"),
                                  QStringLiteral(":/icons/download.svg"));
        updateStatus_->setTone(Tone::blue);
        updateStatus_->show();
        break;
    case Kind::failed:
        updateStatus_->setContent(state.message);
        updateStatus_->setTone(Tone::red);
        updateStatus_->show();
        break;
    }
    renderInstaller(installerState_);
}

void SettingsView::renderInstaller(const SelfUpdater::State& state)
{
    installerState_ = state;
    using Kind = SelfUpdater::State::Kind;
    installerRow_->setVisible(updateCheckState_.kind == UpdateCheckState::Kind::available);
    switch (state.kind) {
    case Kind::downloading: {
        const int percent = int(state.progress * 100); // cut toward zero
        downloadLabel_->setText(QStringLiteral("Downloading… %1%").arg(percent));
        downloadProgress_->setValue(int(std::clamp(state.progress, 0.0, 1.0) * 1000));
        break;
    }
    case Kind::installing:
        break;
    case Kind::idle:
    case Kind::failed:
        installFailure_->setText(state.message);
        installFailure_->setVisible(state.kind == Kind::failed);
        break;
    }
    const int page = state.kind == Kind::downloading ? 0 : state.kind == Kind::installing ? 1 : 2;
    for (int i = 0; i < int(installerPages_.size()); ++i)
        installerPages_[size_t(i)]->setVisible(i == page);
}

void SettingsView::setLaunchAtLogin(bool enabled)
{
    if (enabled == services_.settings.launchAtLogin())
        return;
    services_.settings.setBool(SettingsKey::launchAtLogin, enabled);
    // The toggle keeps the user's choice either way; a failure is only logged.
    const std::optional<QString> error =
        enabled ? services_.loginItem.registerItem() : services_.loginItem.unregisterItem();
    if (error) {
        std::printf("Failed to set launch at login: %s\n", qUtf8Printable(*error));
        std::fflush(stdout);
    }
}

void SettingsView::setRecordedShortcut(const std::optional<KeyChord>& shortcut)
{
    if (shortcut == recordedShortcut_)
        return;
    recordedShortcut_ = shortcut;
    if (!shortcut)
        return;
    saveCustomShortcut(*shortcut, services_.settings);
    services_.notifications.postHotkeyModeChanged();
}

void SettingsView::setRecordingShortcut(bool recording)
{
    isRecordingShortcut_ = recording;
}

void SettingsView::checkNow()
{
    if (updateCheckState_.kind == UpdateCheckState::Kind::checking || !services_.checkForUpdates)
        return;
    updateCheckState_ = UpdateCheckState::checking();
    renderUpdateStatus();
    QPointer<SettingsView> self(this);
    services_.checkForUpdates([self](const UpdateCheckService::Outcome& outcome) {
        if (!self)
            return;
        if (const auto* result = std::get_if<UpdateCheckResult>(&outcome)) {
            self->updateCheckState_ = result->isNewer
                ? UpdateCheckState::available(result->latestVersion, result->downloadURL)
                : UpdateCheckState::upToDate();
        } else {
            self->updateCheckState_ = UpdateCheckState::failed(std::get<UpdateCheckError>(outcome).description());
        }
        self->renderUpdateStatus();
    });
}

void SettingsView::confirmReset()
{
    if (resetConfirmation_)
        return;
    showResetConfirmation_ = true;
    resetConfirmation_ = new QMessageBox(this);
    resetConfirmation_->setWindowTitle(QStringLiteral("Reset all usage history?"));
    resetConfirmation_->setText(QStringLiteral("Reset all usage history?"));
    resetConfirmation_->setInformativeText(
        QStringLiteral("Commands you ran often will no longer rise to the top of the results."));
    // Wide enough for the title and the explanation on one line each.
    if (auto* explanation = resetConfirmation_->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel")))
        explanation->setMinimumWidth(320);
    resetConfirmation_->setIcon(QMessageBox::Warning);
    QPushButton* reset = resetConfirmation_->addButton(QStringLiteral("Reset"), QMessageBox::DestructiveRole);
    markDestructive(reset);
    resetConfirmation_->setDefaultButton(resetConfirmation_->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole));
    resetConfirmation_->setAttribute(Qt::WA_DeleteOnClose);
    // Any way out (a button, Escape, the close box) ends the confirmation.
    connect(resetConfirmation_, &QMessageBox::finished, this, [this, reset] {
        if (resetConfirmation_ && resetConfirmation_->clickedButton() == reset)
            services_.usage.resetUsage();
        showResetConfirmation_ = false;
        resetConfirmation_ = nullptr;
    });
    resetConfirmation_->open();
}

void SettingsView::scrollToSection(const QString& title)
{
    for (FormSection* section : sections_) {
        if (section->title() == title) {
            scroll_->verticalScrollBar()->setValue(section->y() - 12);
            return;
        }
    }
}
