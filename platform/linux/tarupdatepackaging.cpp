#include "platform/linux/tarupdatepackaging.h"

#include <QCoreApplication>
#include <QDir>

QStringList TarUpdatePackaging::listArguments(const QString& archive) const
{
    // One member a line, whatever its name holds, and exactly as stored: tar
    // would otherwise shorten unsafe names and say so between the names.
    return {QStringLiteral("--list"),          QStringLiteral("--gzip"), QStringLiteral("--quoting-style=escape"),
            QStringLiteral("--absolute-names"), QStringLiteral("--file"), archive};
}

QStringList TarUpdatePackaging::unpackArguments(const QString& archive, const QString& folder) const
{
    // The user's own files with the user's own permissions, even for root.
    return {QStringLiteral("--extract"),          QStringLiteral("--gzip"),
            QStringLiteral("--no-same-owner"),    QStringLiteral("--no-same-permissions"),
            QStringLiteral("--no-overwrite-dir"), QStringLiteral("--file"),
            archive,                              QStringLiteral("--directory"),
            folder};
}

std::optional<QString> TarUpdatePackaging::installedBundle() const
{
    // The prefix that holds bin/kestrio.
    QDir bin(QCoreApplication::applicationDirPath());
    if (bin.dirName() != QLatin1String("bin") || !bin.cdUp())
        return std::nullopt;
    return bin.absolutePath();
}
