#pragma once

#include <QString>

#include <optional>

// Another running program: the target of a search.
struct RunningApplication {
    qint32 processIdentifier = 0;
    std::optional<QString> localizedName;
    std::optional<QString> bundleIdentifier;

    friend bool operator==(const RunningApplication&, const RunningApplication&) = default;
};
