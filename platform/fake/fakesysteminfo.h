#pragma once

#include "platform/systeminfo.h"

class FakeSystemInfo final : public SystemInfo {
public:
    QString name = "Linux";
    QString sdk = "kestrio-linux";
    QString version = "6.1.0-27-amd64";
    QByteArray model = "Test Machine 3000";
    QString locale = "en_US";
    QString language = "en";

    QString osName() const override { return name; }
    QString sdkName() const override { return sdk; }
    QString osVersion() const override { return version; }
    QByteArray deviceModel() const override { return model; }
    QString localeIdentifier() const override { return locale; }
    QString languageCode() const override { return language; }
};
