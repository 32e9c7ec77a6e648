#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <variant>

// The file that makes a folder a Kestrio installation the self-updater may
// replace: it names the product, the version, and every file the release put
// there. A folder that holds anything else (another program's files, the
// user's data) is never replaced, because replacing it would delete them.
struct InstallMarker {
    static constexpr const char* kFileName = "kestrio-install.json";
    static constexpr const char* kProduct = "Kestrio";

    QString product;
    QString version;
    QStringList files; // relative paths of the files and links, sorted; the marker itself not included

    friend bool operator==(const InstallMarker&, const InstallMarker&) = default;

    // The marker for what `folder` holds now (written by the release tooling).
    static std::variant<InstallMarker, QString> describe(const QString& folder, const QString& version);
    // The marker in `folder`, or why there is none that counts.
    static std::variant<InstallMarker, QString> read(const QString& folder);
    // Writes the marker into `folder`; the failure's description, if any.
    std::optional<QString> write(const QString& folder) const;

    QByteArray toJson() const;
    static std::variant<InstallMarker, QString> fromJson(const QByteArray& json);

    // Every entry a folder it describes may hold, sorted: its files and
    // links, the folders above them, and the marker itself.
    QStringList entries() const;
    // The first entry under `folder` that this marker does not account for:
    // a file or link it does not list, or a folder that holds none of its files.
    std::optional<QString> foreignEntry(const QString& folder) const;
    // The first listed file that `folder` lacks.
    std::optional<QString> missingFile(const QString& folder) const;
};
