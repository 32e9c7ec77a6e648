#pragma once

#include "platform/updatepackaging.h"

#include <QString>
#include <QStringList>

#include <optional>

// What a release archive may hold: one top folder, Kestrio.app, with plain
// files, folders and links that point into their own folder or below it.
// Checked on the archive's listing before anything is unpacked, and on the
// unpacked tree before it is used.
class UpdateArchive {
public:
    static constexpr const char* kTopFolder = "Kestrio.app";

    // What is wrong with the first member that breaks the rule, or nothing.
    static std::optional<QString> listingProblem(const QList<ArchiveMember>& members);
    // Whether a link with this target stays in its own folder or below: no
    // absolute target and no "..", so that no chain of links climbs out.
    static bool isSafeLinkTarget(const QString& target);
    // What is wrong with the unpacked tree under `folder` (which should hold
    // Kestrio.app and nothing else), or nothing.
    static std::optional<QString> treeProblem(const QString& folder);
};
