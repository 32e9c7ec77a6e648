#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// One entry of a release archive, as its listing describes it.
struct ArchiveMember {
    enum class Kind { file, folder, link, hardLink, other };
    QString name;
    Kind kind = Kind::other;
    QString target; // what a link or hard link points to

    friend bool operator==(const ArchiveMember&, const ArchiveMember&) = default;
};

// How this platform's release packages are unpacked and what an installation
// looks like.
class UpdatePackaging {
public:
    virtual ~UpdatePackaging();

    // The name a downloaded release is saved under.
    virtual QString archiveName() const = 0;
    // The tool that lists and unpacks a release, and its arguments.
    virtual QString unpackProgram() const = 0;
    // The listing names each member with its kind and a link's target.
    virtual QStringList listArguments(const QString& archive) const = 0;
    // The members of a listing the tool wrote; nothing when it cannot be read
    // whole (an unreadable listing is never taken for an empty archive).
    virtual std::optional<QList<ArchiveMember>> readListing(const QByteArray& listing) const = 0;
    virtual QStringList unpackArguments(const QString& archive, const QString& folder) const = 0;
    // The program inside an installation, relative to the installation's folder.
    virtual QString programInBundle() const = 0;
    // The folder the running program was started from, if it looks like an
    // installation at all; whether it is one the updater may replace is the
    // install marker's to say.
    virtual std::optional<QString> installedBundle() const = 0;

};
