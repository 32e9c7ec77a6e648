#pragma once

#include "platform/workspace.h"

class SwayWindows;

// The front application as sway's focus events tell it.
class SwayWorkspace final : public Workspace {
    Q_OBJECT

public:
    explicit SwayWorkspace(SwayWindows& windows);

    std::optional<RunningApplication> frontmostApplication() override;
    void startWatching() override;

private:
    SwayWindows& windows_;
    bool watching_ = false;
};
