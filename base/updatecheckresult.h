#pragma once

#include <QMetaType>
#include <QString>
#include <QUrl>

#include <optional>

// What a check found out about the published release.
struct UpdateCheckResult {
    QString latestVersion;
    std::optional<QString> releaseDate;
    QUrl downloadURL;
    std::optional<QString> releaseNotes;
    bool isNewer = false;

    friend bool operator==(const UpdateCheckResult&, const UpdateCheckResult&) = default;
};

Q_DECLARE_METATYPE(UpdateCheckResult)
