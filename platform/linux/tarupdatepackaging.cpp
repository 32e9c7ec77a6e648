#include "platform/linux/tarupdatepackaging.h"

#include <QCoreApplication>
#include <QDir>

QStringList TarUpdatePackaging::mountArguments(const QString& image, const QString& mountPoint) const
{
    return {QStringLiteral("-xzf"), image, QStringLiteral("-C"), mountPoint};
}

void TarUpdatePackaging::detach(const QString& mountPoint) const
{
    QDir(mountPoint).removeRecursively();
}

QString TarUpdatePackaging::detachLine(const QString& quotedMountPoint) const
{
    return QStringLiteral("rm -rf %1 2>/dev/null").arg(quotedMountPoint);
}

QString TarUpdatePackaging::relaunchLine(const QString& quotedInstalled) const
{
    // Started apart from the script, which ends right after.
    return QStringLiteral("setsid %1/bin/kestrio >/dev/null 2>&1 </dev/null &").arg(quotedInstalled);
}

std::optional<QString> TarUpdatePackaging::installedBundle() const
{
    // The prefix that holds bin/kestrio; a program run from elsewhere (a build
    // folder) has no installation to replace.
    QDir bin(QCoreApplication::applicationDirPath());
    if (bin.dirName() != QLatin1String("bin") || !bin.cdUp())
        return std::nullopt;
    return bin.absolutePath();
}
