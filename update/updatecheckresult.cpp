#include "update/updatecheckresult.h"

#include "update/versioncomparison.h"
#include "update/versionmanifest.h"

std::optional<UpdateCheckResult> UpdateCheckResult::make(const VersionManifest& manifest, const QString& runningVersion)
{
    // Strict parsing rejects what a URL parser of RFC 3986 references would:
    // the empty text, spaces and other characters outside the syntax.
    const QUrl url(manifest.downloadUrl, QUrl::StrictMode);
    if (manifest.downloadUrl.isEmpty() || !url.isValid())
        return std::nullopt;
    return UpdateCheckResult{
        .latestVersion = manifest.version,
        .releaseDate = manifest.releaseDate,
        .downloadURL = url,
        .releaseNotes = manifest.releaseNotes,
        .isNewer = isNewerVersion(manifest.version, runningVersion),
    };
}
