#include "update/updatearchive.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

#include <climits>

bool UpdateArchive::isSafeLinkTarget(const QString& target)
{
    return !target.isEmpty() && !target.startsWith(u'/') && !target.split(u'/').contains(QStringLiteral(".."));
}

std::optional<QString> UpdateArchive::listingProblem(const QList<ArchiveMember>& members)
{
    const QString top = QLatin1String(kTopFolder);
    for (const ArchiveMember& member : members) {
        const QString& name = member.name;
        QString trimmed = name;
        while (trimmed.startsWith(QLatin1String("./")))
            trimmed.remove(0, 2);
        const bool inside = !name.startsWith(u'/') && !name.split(u'/').contains(QStringLiteral(".."))
            && (trimmed == top || trimmed == top + u'/' || trimmed.startsWith(top + u'/'));
        if (!inside)
            return QStringLiteral("it holds %1, outside Kestrio.app").arg(name);
        switch (member.kind) {
        case ArchiveMember::Kind::file:
        case ArchiveMember::Kind::folder:
            break;
        case ArchiveMember::Kind::link:
            if (!isSafeLinkTarget(member.target))
                return QStringLiteral("the link %1 points outside its own folder").arg(name);
            break;
        case ArchiveMember::Kind::hardLink:
            return QStringLiteral("%1 is a hard link").arg(name); // a second name could reach outside the tree
        case ArchiveMember::Kind::other:
            return QStringLiteral("%1 is not a plain file, folder or link").arg(name);
        }
    }
    return std::nullopt;
}

std::optional<QString> UpdateArchive::treeProblem(const QString& folder)
{
    const QDir root(folder);
    const QStringList top = root.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    if (top != QStringList{QLatin1String(kTopFolder)})
        return QStringLiteral("the archive holds %1 beside Kestrio.app").arg(top.join(QStringLiteral(", ")));
    QDirIterator it(root.path(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QString name = root.relativeFilePath(path);
        const QByteArray native = QFile::encodeName(path);
        struct stat info {};
        if (::lstat(native.constData(), &info) != 0)
            return QStringLiteral("%1 cannot be read").arg(name);
        if (info.st_mode & (S_ISUID | S_ISGID))
            return QStringLiteral("%1 would run with another user's rights").arg(name);
        if (S_ISDIR(info.st_mode))
            continue;
        if (S_ISREG(info.st_mode)) {
            // A second name for a file could reach outside the tree.
            if (info.st_nlink != 1)
                return QStringLiteral("%1 is a hard link").arg(name);
            continue;
        }
        if (!S_ISLNK(info.st_mode))
            return QStringLiteral("%1 is not a plain file, folder or link").arg(name);
        QByteArray raw(PATH_MAX, Qt::Uninitialized);
        const ssize_t length = ::readlink(native.constData(), raw.data(), size_t(raw.size()));
        if (length < 0)
            return QStringLiteral("%1 cannot be read").arg(name);
        if (!isSafeLinkTarget(QFile::decodeName(raw.left(length))))
            return QStringLiteral("the link %1 points outside its own folder").arg(name);
    }
    return std::nullopt;
}
