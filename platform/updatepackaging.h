#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// How a release's package is opened and how the installed program is replaced
// and started again, on this platform.
class UpdatePackaging {
public:
    virtual ~UpdatePackaging();

    // The tool that "mounts" the image at the mount point: program and arguments.
    virtual QString mountProgram() const = 0;
    virtual QStringList mountArguments(const QString& image, const QString& mountPoint) const = 0;
    // Undoes the mount from here.
    virtual void detach(const QString& mountPoint) const = 0;
    // The updater script's line that undoes the mount, with the mount point quoted.
    virtual QString detachLine(const QString& quotedMountPoint) const = 0;
    // The updater script's line that starts the new installation, quoted.
    virtual QString relaunchLine(const QString& quotedInstalled) const = 0;
    // Where this program is installed (the bundle the update replaces), if it is.
    virtual std::optional<QString> installedBundle() const = 0;

    static UpdatePackaging& current();
};
