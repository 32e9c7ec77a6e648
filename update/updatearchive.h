#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// What a release archive may hold: one top folder, Kestrio.app, with plain
// files, folders and links that stay inside it. Checked on the member names
// before anything is unpacked, and on the unpacked tree before it is used.
class UpdateArchive {
public:
    static constexpr const char* kTopFolder = "Kestrio.app";

    // The first member name that would land outside Kestrio.app.
    static std::optional<QString> unsafeMember(const QStringList& names);
    // What is wrong with the unpacked tree under `folder` (which should hold
    // Kestrio.app and nothing else), or nothing.
    static std::optional<QString> treeProblem(const QString& folder);
};
