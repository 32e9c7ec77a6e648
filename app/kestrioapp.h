#pragma once

#include <QApplication>

class QLocalServer;

// The program: lives in the tray, so closing its last window does not end it.
// One runs per user session; a second launch asks the first to handle a
// reopen and ends.
class KestrioApp : public QApplication {
    Q_OBJECT

public:
    KestrioApp(int& argc, char** argv);

    // True when this is the one instance; false when another one runs and was
    // asked to reopen.
    bool claimSingleInstance();

signals:
    void reopenRequested();

private:
    QString socketPath() const;
    QLocalServer* server_ = nullptr;
};
