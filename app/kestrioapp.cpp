#include "app/kestrioapp.h"

#include "platform/socketpeer.h"

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
    // Never a folder other users share: whoever got there first would be handed our requests.
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        return {};
    return folder + QStringLiteral("/kestrio-%1.socket").arg(SocketPeer::currentUser());
}

bool KestrioApp::passToRunningInstance(const InstanceRequest& request, const QString& socket)
{
    if (socket.isEmpty())
        return false;
    // This launch is not the instance: waiting here freezes no window.
    QLocalSocket other;
    other.connectToServer(socket);
    if (!other.waitForConnected(1000))
        return false;
    const std::optional<SocketPeer> listener = SocketPeer::of(other.socketDescriptor());
    if (!listener || listener->uid != SocketPeer::currentUser())
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
    const QString socket = socketPath();
    if (socket.isEmpty())
        return true; // keep working alone rather than not at all
    // Nobody answers: a socket file left behind by a crash is stale.
    QLocalServer::removeServer(socket);
    server_ = new QLocalServer(this);
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server_->listen(socket))
        return true;
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
