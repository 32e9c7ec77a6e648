#pragma once

#include "platform/workspace.h"

class FakeWorkspace final : public Workspace {
public:
    std::optional<RunningApplication> frontmost;
    bool watching = false;

    std::optional<RunningApplication> frontmostApplication() override { return frontmost; }
    void startWatching() override { watching = true; }

    // Another application comes to the front.
    void activate(std::optional<RunningApplication> app)
    {
        frontmost = std::move(app);
        emit applicationActivated();
    }
};
