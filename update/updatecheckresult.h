#pragma once

#include <QMetaType>
#include <QString>
#include <QUrl>

#include <optional>

struct VersionManifest;

// What a check found out about the published release.
struct UpdateCheckResult {
    QString latestVersion;
    std::optional<QString> releaseDate;
    QUrl downloadURL;
    std::optional<QString> releaseNotes;
    bool isNewer = false;

    // The result for a decoded manifest, compared with the running version;
    // nothing when its download address is not a URL.
    static std::optional<UpdateCheckResult> make(const VersionManifest& manifest, const QString& runningVersion);

    friend bool operator==(const UpdateCheckResult&, const UpdateCheckResult&) = default;
};

Q_DECLARE_METATYPE(UpdateCheckResult)
