#include "update/updatearchive.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

#include <climits>

namespace {

bool staysInside(const QString& relative)
{
    if (relative.isEmpty() || relative.startsWith(u'/'))
        return false;
    const QString clean = QDir::cleanPath(relative);
    return clean != QLatin1String("..") && !clean.startsWith(QLatin1String("../"));
}

} // namespace

std::optional<QString> UpdateArchive::unsafeMember(const QStringList& names)
{
    const QString top = QLatin1String(kTopFolder);
    for (const QString& name : names) {
        if (name.startsWith(u'/') || name.split(u'/').contains(QStringLiteral("..")))
            return name;
        QString trimmed = name;
        while (trimmed.startsWith(QLatin1String("./")))
            trimmed.remove(0, 2);
        if (trimmed != top && trimmed != top + u'/' && !trimmed.startsWith(top + u'/'))
            return name;
    }
    return std::nullopt;
}

std::optional<QString> UpdateArchive::treeProblem(const QString& folder)
{
    const QDir root(folder);
    const QStringList top = root.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    if (top != QStringList{QLatin1String(kTopFolder)})
        return QStringLiteral("the archive holds %1 beside Kestrio.app").arg(top.join(QStringLiteral(", ")));
    const QDir bundle(root.filePath(QLatin1String(kTopFolder)));
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
        const QString link = QFile::decodeName(raw.left(length));
        QString folderOfLink = bundle.relativeFilePath(QFileInfo(path).path());
        if (folderOfLink == QLatin1String("."))
            folderOfLink.clear();
        const QString fromBundle = folderOfLink.isEmpty() ? link : folderOfLink + u'/' + link;
        if (link.startsWith(u'/') || !staysInside(fromBundle))
            return QStringLiteral("the link %1 points outside Kestrio.app").arg(name);
    }
    return std::nullopt;
}
