#pragma once

#include "platform/desktopwindows.h"

#include <QList>
#include <QStringList>

class FakeDesktopWindows final : public DesktopWindows {
public:
    std::optional<QRect> geometry;
    bool compositor = false;
    QList<RunningApplication> activated;
    QList<quintptr> ownActivated;
    QList<quintptr> onAllWorkspaces;
    QStringList activationTokens;

    std::optional<QRect> windowGeometry(const RunningApplication&) override { return geometry; }
    void activate(const RunningApplication& app) override { activated << app; }
    void activateOwnWindow(quintptr id) override { ownActivated << id; }
    void showOnAllWorkspaces(quintptr id) override { onAllWorkspaces << id; }
    bool hasCompositor() override { return compositor; }
    void setActivationToken(const QString& token) override { activationTokens << token; }
};
