#include "update/updateleftovers.h"

#include "update/installmarker.h"

#include <QDir>
#include <QFileInfo>

#include <variant>

bool UpdateLeftovers::isOwnInstallation(const QString& folder)
{
    const QFileInfo info(folder);
    if (info.isSymLink() || !info.isDir())
        return false;
    const auto marker = InstallMarker::read(folder);
    return std::holds_alternative<InstallMarker>(marker) && !std::get<InstallMarker>(marker).foreignEntry(folder);
}

UpdateLeftovers::Report UpdateLeftovers::tidy(const QString& workspaceParent, const std::optional<QString>& installed)
{
    Report report;
    const QDir::Filters folders = QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot | QDir::NoSymLinks;

    // Download folders: private to this user, inside Kestrio's own cache folder.
    if (!workspaceParent.isEmpty()) {
        const QDir parent(workspaceParent);
        for (const QString& name : parent.entryList({QLatin1String(kWorkspacePrefix) + u'*'}, folders)) {
            QDir workspace(parent.filePath(name));
            if (workspace.removeRecursively())
                report.removed << workspace.path();
        }
    }

    if (!installed)
        return report;
    const QFileInfo installation(*installed);
    const QDir beside = installation.absoluteDir();
    for (const QString& name : beside.entryList({QLatin1String(kStagingPrefix) + u'*'}, folders)) {
        const QDir staging(beside.filePath(name));
        // A swap cut off after the old installation was moved aside: it comes back.
        const QString previous = staging.filePath(QStringLiteral("previous"));
        if (!installation.exists() && !installation.isSymLink() && isOwnInstallation(previous)
            && QDir().rename(previous, installation.absoluteFilePath()))
            report.recovered = true;
        // What the updater puts in there: the new installation, the old one, a failed one.
        bool ours = true;
        for (const QFileInfo& entry : staging.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
            const QStringList names{QStringLiteral("Kestrio.app"), QStringLiteral("previous"), QStringLiteral("failed")};
            if (!names.contains(entry.fileName()) || !isOwnInstallation(entry.filePath()))
                ours = false;
        }
        if (ours && QDir(staging).removeRecursively())
            report.removed << staging.path();
        else
            report.kept << staging.path();
    }
    return report;
}
