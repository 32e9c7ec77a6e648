#pragma once

#include "hotkey/customshortcut.h"
#include "update/selfupdater.h"
#include "update/updatecheckservice.h"

#include <QPointer>
#include <QUrl>
#include <QWidget>

#include <array>
#include <functional>
#include <optional>

class AccessibilityService;
class DesktopShortcutPanel;
class FormSection;
class HotkeyService;
class KeyboardLayout;
class LoginItem;
class NotificationHub;
class QAbstractButton;
class QButtonGroup;
class QCheckBox;
class QComboBox;
class QMessageBox;
class QProgressBar;
class QPushButton;
class QScrollArea;
class SettingsStore;
class ShortcutRecorderButton;
class StyledLabel;
class UsageTracker;
struct PlatformWords;

// The content of "Kestrio Settings": a form of six sections whose controls
// read and write the stored settings, announce the changes long-lived
// services act on, show the hotkey detector's live state, record the custom
// shortcut, check for and install an update, and reset the usage history.
class SettingsView : public QWidget {
    Q_OBJECT

public:
    using UpdateCompletion = std::function<void(const UpdateCheckService::Outcome&)>;

    // What the form works with; the program passes the shared ones.
    struct Services {
        SettingsStore& settings;
        NotificationHub& notifications;
        HotkeyService& hotkey;
        AccessibilityService& accessibility;
        UsageTracker& usage;
        SelfUpdater& selfUpdater;
        LoginItem& loginItem;
        const KeyboardLayout& keyboardLayout;
        const PlatformWords& words;
        std::function<void(UpdateCompletion)> checkForUpdates; // the update checker's manual check
        std::function<void()> terminate;                       // ends the program
    };

    // The manual check's progress since the window opened.
    struct UpdateCheckState {
        enum class Kind { available, failed, idle, checking, upToDate };
        Kind kind = Kind::idle;
        QString version; // available
        QUrl url;        // available
        QString message; // failed

        static UpdateCheckState idle() { return {}; }
        static UpdateCheckState checking() { return {Kind::checking, {}, {}, {}}; }
        static UpdateCheckState upToDate() { return {Kind::upToDate, {}, {}, {}}; }
        static UpdateCheckState available(QString version, QUrl url) { return {Kind::available, std::move(version), std::move(url), {}}; }
        static UpdateCheckState failed(QString message) { return {Kind::failed, {}, {}, std::move(message)}; }
        friend bool operator==(const UpdateCheckState&, const UpdateCheckState&) = default;
    };

    static constexpr int kFormWidth = 440;
    static constexpr int kFormHeight = 620;

    explicit SettingsView(Services services, QWidget* parent = nullptr);
    ~SettingsView() override;

    static QUrl privacyPolicyURL();

    // View state.
    const UpdateCheckState& updateCheckState() const { return updateCheckState_; }
    bool showResetConfirmation() const { return showResetConfirmation_; }
    bool isRecordingShortcut() const { return isRecordingShortcut_; }
    const std::optional<KeyChord>& recordedShortcut() const { return recordedShortcut_; }

    // The sections, top to bottom, and bringing one into view.
    QList<FormSection*> sections() const { return sections_; }
    void scrollToSection(const QString& title);
    ShortcutRecorderButton* recorderButton() const { return recorder_; }
    DesktopShortcutPanel* desktopShortcutPanel() const { return desktopShortcut_; }

protected:
    void changeEvent(QEvent* event) override;

private:
    void buildGeneral(FormSection* section);
    void buildHotkey(FormSection* section);
    void buildAppearance(FormSection* section);
    void buildPrivacy(FormSection* section);
    void buildUpdates(FormSection* section);
    void buildData(FormSection* section);

    // Brings every control in line with the stored values and the view state.
    void render();
    void renderUpdateStatus();
    void styleThemeSegments();
    void renderInstaller(const SelfUpdater::State& state);

    QString hotkeyModeRaw() const;
    void setLaunchAtLogin(bool enabled);
    void setRecordedShortcut(const std::optional<KeyChord>& shortcut);
    void setRecordingShortcut(bool recording);
    void checkNow();
    void confirmReset();

    Services services_;
    bool showResetConfirmation_ = false;
    bool isRecordingShortcut_ = false;
    std::optional<KeyChord> recordedShortcut_;
    UpdateCheckState updateCheckState_;
    SelfUpdater::State installerState_;

    QScrollArea* scroll_ = nullptr;
    QList<FormSection*> sections_;
    QCheckBox* launchAtLogin_ = nullptr;
    QCheckBox* hideMenuBarIcon_ = nullptr;
    QWidget* hiddenIconNote_ = nullptr;
    QWidget* inactiveBlock_ = nullptr;
    QWidget* keysUnavailableBlock_ = nullptr;
    QWidget* keysFromDevicesNote_ = nullptr;
    DesktopShortcutPanel* desktopShortcut_ = nullptr;
    QComboBox* activationMethod_ = nullptr;
    QWidget* shortcutRow_ = nullptr;
    ShortcutRecorderButton* recorder_ = nullptr;
    QButtonGroup* theme_ = nullptr;
    QCheckBox* analytics_ = nullptr;
    QCheckBox* autoUpdateCheck_ = nullptr;
    QPushButton* checkNow_ = nullptr;
    QWidget* checkingStatus_ = nullptr;
    StyledLabel* updateStatus_ = nullptr;
    QWidget* installerRow_ = nullptr;
    std::array<QWidget*, 3> installerPages_{}; // downloading, installing, ready
    QProgressBar* downloadProgress_ = nullptr;
    StyledLabel* downloadLabel_ = nullptr;
    StyledLabel* installFailure_ = nullptr;
    QPointer<QMessageBox> resetConfirmation_;
};
