#pragma once

#include "base/updatecheckresult.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <variant>

// The published release, as the maker's manifest document describes it.
struct VersionManifest {
    QString version;
    std::optional<QString> build;
    QString downloadUrl;
    std::optional<QString> releaseDate;
    std::optional<QString> releaseNotes;
    std::optional<QString> minimumSystemVersion;

    struct DecodeError {
        QString description;
        friend bool operator==(const DecodeError&, const DecodeError&) = default;
    };

    // Strict decoding: a JSON object whose six known keys hold strings (the
    // optional ones may be missing or null); the first failing key is reported.
    static std::variant<VersionManifest, DecodeError> decode(const QByteArray& body);

    friend bool operator==(const VersionManifest&, const VersionManifest&) = default;
};

// The result for a decoded manifest, compared with the running version;
// nothing when its download address is not a URL.
std::optional<UpdateCheckResult> checkResultOf(const VersionManifest& manifest, const QString& runningVersion);
