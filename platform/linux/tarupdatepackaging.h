#pragma once

#include "platform/updatepackaging.h"

// Linux releases are gzip-compressed tar archives holding Kestrio.app, a
// folder laid out like an install prefix (Kestrio.app/bin/kestrio).
class TarUpdatePackaging final : public UpdatePackaging {
public:
    QString mountProgram() const override { return QStringLiteral("/bin/tar"); }
    QStringList mountArguments(const QString& image, const QString& mountPoint) const override;
    void detach(const QString& mountPoint) const override;
    QString detachLine(const QString& quotedMountPoint) const override;
    QString relaunchLine(const QString& quotedInstalled) const override;
    std::optional<QString> installedBundle() const override;
};
