#pragma once

#include <QByteArray>
#include <QString>

// Facts about the machine and the operating system Kestrio runs on, and the
// texts that name that system in reports. Each platform fills them its way.
class SystemInfo {
public:
    virtual ~SystemInfo();

    // How reports name the operating system: "Linux", "macOS".
    virtual QString osName() const = 0;
    // Prefix of the reporting client's name: "kestrio-linux".
    virtual QString sdkName() const = 0;
    // The system's version as it reports it, e.g. "6.1.0-27-amd64".
    virtual QString osVersion() const = 0;
    // The hardware model as raw bytes, empty when unknown.
    virtual QByteArray deviceModel() const = 0;
    // The user's locale, e.g. "en_US", and its language code, e.g. "en" (may be empty).
    virtual QString localeIdentifier() const = 0;
    virtual QString languageCode() const = 0;

};
