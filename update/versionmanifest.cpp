#include "update/versionmanifest.h"

#include "update/versioncomparison.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

namespace {

QString typeName(const QJsonValue& value)
{
    switch (value.type()) {
    case QJsonValue::Bool: return QStringLiteral("a boolean");
    case QJsonValue::Double: return QStringLiteral("a number");
    case QJsonValue::Array: return QStringLiteral("an array");
    case QJsonValue::Object: return QStringLiteral("an object");
    default: return QStringLiteral("another value");
    }
}

// Reads one key in document order; the first failure stops the decoding.
class KeyReader {
public:
    explicit KeyReader(const QJsonObject& object) : object_(object) {}

    std::optional<QString> optional(const QString& key)
    {
        if (error_)
            return std::nullopt;
        const QJsonValue value = object_.value(key);
        if (value.isUndefined() || value.isNull())
            return std::nullopt;
        if (!value.isString()) {
            error_ = QStringLiteral("The value of \"%1\" should be a string but is %2.").arg(key, typeName(value));
            return std::nullopt;
        }
        return value.toString();
    }

    QString required(const QString& key)
    {
        if (error_)
            return {};
        const QJsonValue value = object_.value(key);
        if (value.isUndefined()) {
            error_ = QStringLiteral("The key \"%1\" is missing.").arg(key);
            return {};
        }
        if (value.isNull()) {
            error_ = QStringLiteral("The value of \"%1\" is null.").arg(key);
            return {};
        }
        return optional(key).value_or(QString());
    }

    const std::optional<QString>& error() const { return error_; }

private:
    const QJsonObject& object_;
    std::optional<QString> error_;
};

} // namespace

std::variant<VersionManifest, VersionManifest::DecodeError> VersionManifest::decode(const QByteArray& body)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(body, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return DecodeError{QStringLiteral("The data is not valid JSON (%1 at offset %2).")
                               .arg(parseError.errorString())
                               .arg(parseError.offset)};
    if (!document.isObject())
        return DecodeError{QStringLiteral("The document is not a JSON object.")};

    const QJsonObject object = document.object();
    KeyReader read(object);
    VersionManifest manifest;
    manifest.version = read.required(QStringLiteral("version"));
    manifest.build = read.optional(QStringLiteral("build"));
    manifest.downloadUrl = read.required(QStringLiteral("downloadUrl"));
    manifest.releaseDate = read.optional(QStringLiteral("releaseDate"));
    manifest.releaseNotes = read.optional(QStringLiteral("releaseNotes"));
    manifest.minimumSystemVersion = read.optional(QStringLiteral("minimumSystemVersion"));
    if (read.error())
        return DecodeError{*read.error()};
    return manifest;
}

std::optional<UpdateCheckResult> checkResultOf(const VersionManifest& manifest, const QString& runningVersion)
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
