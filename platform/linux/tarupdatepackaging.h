#pragma once

#include "platform/updatepackaging.h"

// Linux releases are gzip-compressed tar archives holding Kestrio.app, a
// folder laid out like an install prefix (Kestrio.app/bin/kestrio).
class TarUpdatePackaging final : public UpdatePackaging {
public:
    QString archiveName() const override { return QStringLiteral("Kestrio-update.tar.gz"); }
    QString unpackProgram() const override { return QStringLiteral("/bin/tar"); }
    QStringList listArguments(const QString& archive) const override;
    std::optional<QList<ArchiveMember>> readListing(const QByteArray& listing) const override;
    QStringList unpackArguments(const QString& archive, const QString& folder) const override;
    QString programInBundle() const override { return QStringLiteral("bin/kestrio"); }
    std::optional<QString> installedBundle() const override;
};
