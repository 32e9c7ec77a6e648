#pragma once

#include "platform/instancerequest.h"

#include <QApplication>

class QLocalServer;

// The program: lives in the tray, so closing its last window does not end it.
// One runs per user session; a second launch passes its request (a reopen,
// or a toggle of the panel) to the first and ends.
class KestrioApp : public QApplication {
    Q_OBJECT

public:
    KestrioApp(int& argc, char** argv);

    // True when this is the one instance; false when another one runs and
    // was handed `request`.
    bool claimSingleInstance(const InstanceRequest& request = {});
    // Hands `request` to the running instance, if there is one; needs only a
    // QCoreApplication, so that a toggle starts no GUI of its own. Only a
    // listener of this user gets it (and its activation token).
    static bool passToRunningInstance(const InstanceRequest& request, const QString& socket = socketPath());
    // The instance's socket: in the user's runtime folder, named for the
    // user; empty where there is no such folder.
    static QString socketPath();

signals:
    void reopenRequested();
    void toggleRequested(const QString& activationToken);

private:
    void handle(const QByteArray& line);
    QLocalServer* server_ = nullptr;
};
