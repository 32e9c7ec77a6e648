#pragma once

#include <QDateTime>
#include <QSettings>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <memory>
#include <optional>

// Keys of the user's settings; no other key is ever written.
namespace SettingsKey {
inline constexpr QLatin1StringView hasLaunchedBefore{"hasLaunchedBefore"};
inline constexpr QLatin1StringView hideMenuBarIcon{"hideMenuBarIcon"};
inline constexpr QLatin1StringView launchAtLogin{"launchAtLogin"};
inline constexpr QLatin1StringView appearance{"appearance"};
inline constexpr QLatin1StringView hotkeyMode{"hotkeyMode"};
inline constexpr QLatin1StringView customHotkeyKeyCode{"customHotkeyKeyCode"};
inline constexpr QLatin1StringView customHotkeyModifiers{"customHotkeyModifiers"};
inline constexpr QLatin1StringView analyticsEnabled{"analyticsEnabled"};
inline constexpr QLatin1StringView autoUpdateCheck{"autoUpdateCheck"};
inline constexpr QLatin1StringView lastUpdateCheckDate{"lastUpdateCheckDate"};
inline constexpr QLatin1StringView menuItemUsage{"menuItemUsage"};
// Desktops without a tray: the user was told once.
inline constexpr QLatin1StringView noTrayNoticeShown{"noTrayNoticeShown"};
} // namespace SettingsKey

// The user's persistent settings: one flat namespace of typed keys in a JSON
// file, read and written through QSettings. Reads apply the defaults of an
// absent key; writes reach the disk at once.
class SettingsStore {
public:
    // A store kept in the JSON file at `filePath`.
    explicit SettingsStore(const QString& filePath);
    ~SettingsStore();

    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;

    // Where the user's settings live: $XDG_CONFIG_HOME/kestrio/settings.json.
    static QString standardPath();

    QString filePath() const;

    // Untyped access.
    bool contains(QAnyStringView key) const;
    QVariant object(QAnyStringView key) const;
    void setObject(QAnyStringView key, const QVariant& value);
    void remove(QAnyStringView key);

    // Typed reads with the store's conversions; absent or unreadable gives the
    // type's empty value (false, 0, nothing).
    bool boolValue(QAnyStringView key) const;
    qint64 integerValue(QAnyStringView key) const;
    std::optional<QString> stringValue(QAnyStringView key) const;
    std::optional<QDateTime> dateValue(QAnyStringView key) const;
    std::optional<QVariantMap> dictionaryValue(QAnyStringView key) const;

    void setBool(QAnyStringView key, bool value);
    void setInteger(QAnyStringView key, qint64 value);
    void setString(QAnyStringView key, const QString& value);
    void setDate(QAnyStringView key, const QDateTime& value);

    // The keys with their defaults.
    bool hasLaunchedBefore() const { return boolValue(SettingsKey::hasLaunchedBefore); }
    bool hideMenuBarIcon() const { return boolValue(SettingsKey::hideMenuBarIcon); }
    bool launchAtLogin() const { return boolValue(SettingsKey::launchAtLogin); }
    QString appearance() const;
    // The stored text as it is; interpreting it is the hotkey mode's rule.
    std::optional<QString> hotkeyModeText() const { return stringValue(SettingsKey::hotkeyMode); }
    bool analyticsEnabled() const { return boolValue(SettingsKey::analyticsEnabled); }
    // Raw read: only a stored Boolean false turns the automatic check off.
    bool autoUpdateCheck() const;
    std::optional<QDateTime> lastUpdateCheckDate() const { return dateValue(SettingsKey::lastUpdateCheckDate); }

private:
    std::unique_ptr<QSettings> settings_;
};
