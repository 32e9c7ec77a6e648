#pragma once

#include "platform/systeminfo.h"

// The Linux answers to SystemInfo: the one place that names this platform.
class LinuxSystemInfo final : public SystemInfo {
public:
    QString osName() const override;
    QString sdkName() const override;
    QString osVersion() const override;
    QByteArray deviceModel() const override;
    QString localeIdentifier() const override;
    QString languageCode() const override;
};
