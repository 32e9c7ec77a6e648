#pragma once

#include "platform/runningapplication.h"

#include <QObject>

#include <optional>

// Which application the user works in, and word when that changes.
class Workspace : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;
    ~Workspace() override;

    virtual std::optional<RunningApplication> frontmostApplication() = 0;
    // Starts announcing activations.
    virtual void startWatching() = 0;


signals:
    void applicationActivated();
};
