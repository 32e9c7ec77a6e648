#pragma once

#include "base/settingsstore.h"

#include <QTemporaryDir>

#include <memory>

// A settings store in a file of its own that disappears with the test.
class TempSettings {
public:
    TempSettings() : store_(std::make_unique<SettingsStore>(path())) {}

    SettingsStore& store() { return *store_; }
    QString path() const { return dir_.filePath(QStringLiteral("settings.json")); }

    // Another store over the same file, as the next launch would see it.
    std::unique_ptr<SettingsStore> reopened() const { return std::make_unique<SettingsStore>(path()); }

private:
    QTemporaryDir dir_;
    std::unique_ptr<SettingsStore> store_;
};
