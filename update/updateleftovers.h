#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// What earlier updates left behind, put right at start: the private download
// folders of attempts that never finished, and the folders beside the
// installation that an interrupted swap left. Only folders the updater made
// itself, by their names, and only when everything in them is Kestrio's own
// (installations carrying their install marker and nothing else); anything
// else is left where it is.
class UpdateLeftovers {
public:
    // Where the updater makes its download folders ("update-…").
    static constexpr const char* kWorkspacePrefix = "update-";
    // The folders it makes beside the installation (".kestrio-update-…").
    static constexpr const char* kStagingPrefix = ".kestrio-update-";

    struct Report {
        bool recovered = false; // the installation was brought back from where a swap left it
        QStringList removed;    // folders taken away, as full paths
        QStringList kept;       // folders by the updater's names that hold something else
    };

    // Waits on the file system: never on the UI thread.
    static Report tidy(const QString& workspaceParent, const std::optional<QString>& installed);

private:
    // Whether `folder` is an installation of Kestrio's with nothing foreign in it.
    static bool isOwnInstallation(const QString& folder);
};
