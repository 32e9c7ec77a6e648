#include "update/installmarker.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QSet>

namespace {

// A marker never lists more than this; a bigger one is not ours.
constexpr qsizetype kMaxMarkerBytes = 1 << 20;

bool isFolder(const QFileInfo& info)
{
    return info.isDir() && !info.isSymLink();
}

// Every entry below `folder` but folders, as relative paths; links are not followed.
QStringList filesBelow(const QString& folder)
{
    QStringList found;
    const QDir root(folder);
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        if (!isFolder(it.fileInfo()))
            found << root.relativeFilePath(it.filePath());
    }
    return found;
}

bool isSafeRelativePath(const QString& path)
{
    if (path.isEmpty() || path.startsWith(u'/') || QDir::cleanPath(path) != path)
        return false;
    return !path.split(u'/').contains(QStringLiteral(".."));
}

} // namespace

std::variant<InstallMarker, QString> InstallMarker::describe(const QString& folder, const QString& version)
{
    if (!QFileInfo(folder).isDir())
        return QStringLiteral("%1 is not a folder").arg(folder);
    QStringList files = filesBelow(folder);
    files.removeAll(QLatin1String(kFileName));
    files.sort();
    return InstallMarker{QLatin1String(kProduct), version, files};
}

std::variant<InstallMarker, QString> InstallMarker::read(const QString& folder)
{
    const QString path = QDir(folder).filePath(QLatin1String(kFileName));
    const QFileInfo info(path);
    if (!info.exists() && !info.isSymLink())
        return QStringLiteral("no %1").arg(QLatin1String(kFileName));
    if (info.isSymLink() || !info.isFile())
        return QStringLiteral("%1 is not a plain file").arg(QLatin1String(kFileName));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return file.errorString();
    const QByteArray json = file.read(kMaxMarkerBytes + 1);
    if (json.size() > kMaxMarkerBytes)
        return QStringLiteral("%1 is too large").arg(QLatin1String(kFileName));
    return fromJson(json);
}

std::optional<QString> InstallMarker::write(const QString& folder) const
{
    QSaveFile file(QDir(folder).filePath(QLatin1String(kFileName)));
    if (!file.open(QIODevice::WriteOnly) || file.write(toJson()) < 0 || !file.commit())
        return file.errorString();
    return std::nullopt;
}

QByteArray InstallMarker::toJson() const
{
    return QJsonDocument(QJsonObject{{"product", product},
                                     {"version", version},
                                     {"files", QJsonArray::fromStringList(files)}})
        .toJson(QJsonDocument::Indented);
}

std::variant<InstallMarker, QString> InstallMarker::fromJson(const QByteArray& json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (!document.isObject())
        return QStringLiteral("the install marker is not a JSON object");
    const QJsonObject object = document.object();
    InstallMarker marker;
    marker.product = object.value("product").toString();
    marker.version = object.value("version").toString();
    if (marker.product != QLatin1String(kProduct))
        return QStringLiteral("the install marker names another product");
    if (marker.version.isEmpty())
        return QStringLiteral("the install marker names no version");
    if (!object.value("files").isArray())
        return QStringLiteral("the install marker lists no files");
    for (const QJsonValue& value : object.value("files").toArray()) {
        const QString file = value.toString();
        if (!value.isString() || !isSafeRelativePath(file) || file == QLatin1String(kFileName))
            return QStringLiteral("the install marker lists a path it may not: %1").arg(file);
        marker.files << file;
    }
    return marker;
}

namespace {

QSet<QString> foldersAbove(const QStringList& files)
{
    QSet<QString> ancestors;
    for (const QString& file : files) {
        for (qsizetype slash = file.indexOf(u'/'); slash > 0; slash = file.indexOf(u'/', slash + 1))
            ancestors.insert(file.left(slash));
    }
    return ancestors;
}

} // namespace

QStringList InstallMarker::entries() const
{
    const QSet<QString> ancestors = foldersAbove(files);
    QStringList all = files + QStringList(ancestors.begin(), ancestors.end());
    all.append(QLatin1String(kFileName));
    all.sort();
    all.removeDuplicates();
    return all;
}

std::optional<QString> InstallMarker::foreignEntry(const QString& folder) const
{
    const QSet<QString> listed(files.begin(), files.end());
    const QSet<QString> ancestors = foldersAbove(files);
    const QDir root(folder);
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        const QFileInfo info = it.fileInfo();
        const QString relative = root.relativeFilePath(info.filePath());
        const bool ours = isFolder(info) ? ancestors.contains(relative)
                                         : listed.contains(relative) || relative == QLatin1String(kFileName);
        if (!ours)
            return relative;
    }
    return std::nullopt;
}

std::optional<QString> InstallMarker::missingFile(const QString& folder) const
{
    const QDir root(folder);
    for (const QString& file : files) {
        const QFileInfo info(root.filePath(file));
        if (!info.exists() && !info.isSymLink())
            return file;
    }
    return std::nullopt;
}
