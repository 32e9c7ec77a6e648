#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// How this platform's release packages are unpacked and what an installation
// looks like.
class UpdatePackaging {
public:
    virtual ~UpdatePackaging();

    // The name a downloaded release is saved under.
    virtual QString archiveName() const = 0;
    // The tool that lists and unpacks a release, and its arguments.
    virtual QString unpackProgram() const = 0;
    virtual QStringList listArguments(const QString& archive) const = 0;
    virtual QStringList unpackArguments(const QString& archive, const QString& folder) const = 0;
    // The program inside an installation, relative to the installation's folder.
    virtual QString programInBundle() const = 0;
    // The folder the running program was started from, if it looks like an
    // installation at all; whether it is one the updater may replace is the
    // install marker's to say.
    virtual std::optional<QString> installedBundle() const = 0;

    static UpdatePackaging& current();
};
