#include "platform/linux/sway/swaywindows.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QLocalSocket>

SwayWindows::SwayWindows(QString socketPath, QObject* parent)
    : QObject(parent), path_(std::move(socketPath)), socket_(new QLocalSocket(this))
{
    connect(socket_, &QLocalSocket::connected, this, &SwayWindows::connected);
    connect(socket_, &QLocalSocket::readyRead, this, &SwayWindows::readAnswers);
    connect(socket_, &QLocalSocket::disconnected, this, [this] { reconnect_.start(); });
    connect(socket_, &QLocalSocket::errorOccurred, this, [this] {
        if (socket_->state() == QLocalSocket::UnconnectedState)
            reconnect_.start();
    });
    reconnect_.setSingleShot(true);
    reconnect_.setInterval(kReconnectMs);
    connect(&reconnect_, &QTimer::timeout, this, &SwayWindows::connectToSway);
    connectToSway();
}

SwayWindows::~SwayWindows()
{
    reconnect_.stop();
    socket_->abort();
}

void SwayWindows::connectToSway()
{
    decoder_ = {};
    treeRequested_ = false;
    treeStale_ = false;
    socket_->abort();
    socket_->connectToServer(path_); // answers with connected() or errorOccurred()
}

void SwayWindows::connected()
{
    send(SwayIpc::subscribe, R"(["window","workspace"])");
    requestTree();
}

void SwayWindows::send(quint32 type, const QByteArray& payload)
{
    if (socket_->state() == QLocalSocket::ConnectedState) {
        socket_->write(SwayIpc::encode(type, payload));
        socket_->flush(); // writes what the socket takes now, without waiting
    }
}

void SwayWindows::requestTree()
{
    // One request at a time; what changes meanwhile is asked for once more.
    if (treeRequested_) {
        treeStale_ = true;
        return;
    }
    treeRequested_ = true;
    send(SwayIpc::getTree, {});
}

void SwayWindows::readAnswers()
{
    decoder_.append(socket_->readAll());
    while (auto message = decoder_.next())
        handle(*message);
    if (decoder_.failed()) {
        // Not sway speaking: start over later rather than guess.
        socket_->abort();
        reconnect_.start();
    }
}

void SwayWindows::handle(const SwayIpc::Message& message)
{
    switch (message.type) {
    case SwayIpc::getTree:
        treeRequested_ = false;
        adoptTree(SwayTree::parse(message.payload));
        if (treeStale_) {
            treeStale_ = false;
            requestTree();
        }
        return;
    case SwayIpc::windowEvent: {
        // The focus is known at once from the event; the rest of the tree follows.
        const QJsonObject event = QJsonDocument::fromJson(message.payload).object();
        if (event.value(QStringLiteral("change")).toString() == QStringLiteral("focus")) {
            if (const auto window = SwayTree::windowOf(event.value(QStringLiteral("container")).toObject())) {
                {
                    std::lock_guard lock(mutex_);
                    tree_.windows.insert(window->id, *window);
                }
                setFocused(window->id);
            }
        }
        requestTree();
        return;
    }
    case SwayIpc::workspaceEvent:
        requestTree();
        return;
    default:
        return; // command and subscription answers
    }
}

void SwayWindows::adoptTree(SwayTree tree)
{
    const auto focused = tree.focused;
    {
        std::lock_guard lock(mutex_);
        tree.focused = tree_.focused;
        tree_ = std::move(tree);
        haveTree_ = true;
    }
    setFocused(focused);
}

void SwayWindows::setFocused(std::optional<quint64> focused)
{
    {
        std::lock_guard lock(mutex_);
        if (tree_.focused == focused)
            return;
        tree_.focused = focused;
    }
    emit focusChanged();
}

std::optional<quint64> SwayWindows::activeWindow()
{
    std::lock_guard lock(mutex_);
    return tree_.focused;
}

std::optional<DesktopWindow> SwayWindows::window(quint64 id)
{
    std::lock_guard lock(mutex_);
    const auto found = tree_.windows.constFind(id);
    return found == tree_.windows.cend() ? std::nullopt : std::optional(*found);
}

std::optional<quint64> SwayWindows::windowOfProcess(qint32 pid)
{
    std::lock_guard lock(mutex_);
    // The lowest id: the process's oldest window, the same one every time.
    std::optional<quint64> found;
    for (const DesktopWindow& window : std::as_const(tree_.windows)) {
        if (window.pid == pid && (!found || window.id < *found))
            found = window.id;
    }
    return found;
}

void SwayWindows::focus(quint64 id)
{
    send(SwayIpc::runCommand, QByteArray("[con_id=") + QByteArray::number(id) + "] focus");
}

bool SwayWindows::waitForTree(int timeoutMs)
{
    QElapsedTimer waited;
    waited.start();
    if (socket_->state() != QLocalSocket::ConnectedState && !socket_->waitForConnected(timeoutMs))
        return false;
    for (;;) {
        {
            std::lock_guard lock(mutex_);
            if (haveTree_)
                return true;
        }
        const qint64 left = timeoutMs - waited.elapsed();
        if (left <= 0 || !socket_->waitForReadyRead(int(left)))
            return false;
        readAnswers();
    }
}
