#pragma once

#include <QString>

#include <optional>

// Another running program: the target of a search.
struct RunningApplication {
    RunningApplication() = default;
    RunningApplication(qint32 pid, std::optional<QString> name, std::optional<QString> bundle,
                       std::optional<quint64> window = std::nullopt)
        : processIdentifier(pid), localizedName(std::move(name)), bundleIdentifier(std::move(bundle)), window(window)
    {
    }

    qint32 processIdentifier = 0;
    std::optional<QString> localizedName;
    std::optional<QString> bundleIdentifier;
    // The window it was last active in, where the platform has such handles.
    std::optional<quint64> window;

    friend bool operator==(const RunningApplication&, const RunningApplication&) = default;
};
