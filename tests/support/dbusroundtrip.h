#pragma once

// A value as the receiving end of a D-Bus connection reads it: sent over a
// private peer-to-peer connection inside this process, so that code that
// decodes replies of other applications gets a real (demarshalling)
// QDBusArgument, which one written locally is not.

#include "support/eventually.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusServer>
#include <QDBusVirtualObject>
#include <QTemporaryDir>

#include <mutex>
#include <optional>

class DBusRoundTrip {
public:
    DBusRoundTrip() : server_(QStringLiteral("unix:tmpdir=") + folder_.path())
    {
        QObject::connect(&server_, &QDBusServer::newConnection, [this](const QDBusConnection& connection) {
            QDBusConnection(connection).registerVirtualObject(QStringLiteral("/"), &receiver_,
                                                              QDBusConnection::SubPath);
            serverSideName_ = connection.name();
            serverSide_ = true;
        });
        client_.emplace(QDBusConnection::connectToPeer(server_.address(), QStringLiteral("kestrio-round-trip")));
    }
    ~DBusRoundTrip()
    {
        // Both ends go before the receiver does: nothing may reach it afterwards.
        QDBusConnection::disconnectFromPeer(QStringLiteral("kestrio-round-trip"));
        if (serverSide_) {
            QDBusConnection(serverSideName_).unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
            QDBusConnection::disconnectFromPeer(serverSideName_);
        }
    }

    // The first argument of a message carrying `value`, as received.
    std::optional<QVariant> received(const QVariant& value)
    {
        receiver_.clear();
        if (!client_->isConnected() || !eventually([&] { return serverSide_; }, 10000))
            return std::nullopt;
        QDBusMessage message = QDBusMessage::createMethodCall(QString(), QStringLiteral("/o"),
                                                              QStringLiteral("org.kestrio.Test"), QStringLiteral("Take"));
        message.setArguments({value});
        message.setAutoStartService(false);
        client_->asyncCall(message);
        if (!eventually([&] { return receiver_.arrived(); }, 10000))
            return std::nullopt;
        return receiver_.value();
    }

private:
    class Receiver : public QDBusVirtualObject {
    public:
        QString introspect(const QString&) const override { return {}; }
        bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override
        {
            std::lock_guard lock(mutex_);
            if (!message.arguments().isEmpty())
                value_ = message.arguments().first();
            arrived_ = true;
            return false; // no answer: the sender does not wait for one
        }
        void clear()
        {
            std::lock_guard lock(mutex_);
            value_.reset();
            arrived_ = false;
        }
        bool arrived()
        {
            std::lock_guard lock(mutex_);
            return arrived_;
        }
        std::optional<QVariant> value()
        {
            std::lock_guard lock(mutex_);
            return value_;
        }

    private:
        std::mutex mutex_;
        std::optional<QVariant> value_;
        bool arrived_ = false;
    };

    QTemporaryDir folder_;
    QDBusServer server_;
    bool serverSide_ = false;
    QString serverSideName_;
    Receiver receiver_;
    std::optional<QDBusConnection> client_;
};
