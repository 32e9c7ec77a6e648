#include "app/kestrioapp.h"

#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>

KestrioApp::KestrioApp(int& argc, char** argv) : QApplication(argc, argv)
{
    setApplicationName(QStringLiteral("Kestrio"));
    setOrganizationName(QStringLiteral("Brambleworks"));
    // The installed desktop entry's name, so desktops match windows to it.
    setDesktopFileName(QStringLiteral("com.brambleworks.Kestrio"));
    setQuitOnLastWindowClosed(false);
}

QString KestrioApp::socketPath()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    return folder + QStringLiteral("/kestrio.socket");
}

bool KestrioApp::passToRunningInstance(const InstanceRequest& request)
{
    // This launch is not the instance: waiting here freezes no window.
    QLocalSocket other;
    other.connectToServer(socketPath());
    if (!other.waitForConnected(1000))
        return false;
    other.write(request.encode());
    other.waitForBytesWritten(1000);
    other.disconnectFromServer();
    return true;
}

bool KestrioApp::claimSingleInstance(const InstanceRequest& request)
{
    if (passToRunningInstance(request))
        return false;
    // Nobody answers: a socket file left behind by a crash is stale.
    QLocalServer::removeServer(socketPath());
    server_ = new QLocalServer(this);
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server_->listen(socketPath()))
        return true; // keep working alone rather than not at all
    connect(server_, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = server_->nextPendingConnection()) {
            connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
                // One short line per launch; whatever else arrives is ignored.
                while (socket->canReadLine())
                    handle(socket->readLine(1024));
                if (socket->bytesAvailable() > 1024)
                    socket->abort();
            });
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
    return true;
}

void KestrioApp::handle(const QByteArray& line)
{
    const auto request = InstanceRequest::decode(line);
    if (!request)
        return;
    if (request->kind == InstanceRequest::Kind::toggle)
        emit toggleRequested(request->activationToken);
    else
        emit reopenRequested();
}
