#pragma once

#include "platform/remotecontrol.h"

#include <QObject>

// The instance on the session bus as com.brambleworks.Kestrio: the method
// Toggle(activation_token) at /com/brambleworks/Kestrio, for desktops and
// scripts that bind keys to D-Bus calls.
class SessionBusControl final : public QObject, public RemoteControl {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.brambleworks.Kestrio")

public:
    static constexpr const char* kService = "com.brambleworks.Kestrio";
    static constexpr const char* kPath = "/com/brambleworks/Kestrio";

    void publish(Toggle toggle) override;

public slots:
    Q_SCRIPTABLE void Toggle(const QString& activationToken);

private:
    RemoteControl::Toggle toggle_;
    bool published_ = false;
};
