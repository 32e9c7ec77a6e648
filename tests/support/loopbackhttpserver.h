#pragma once

// An HTTP or HTTPS server on 127.0.0.1 that records every request exactly as
// it came (header order included, which a parsed-header server would lose)
// and answers each path as the test says: whole, never, or broken off.

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QSslKey>
#include <QSslServer>
#include <QSslSocket>
#include <QTcpServer>
#include <QTimer>
#include <QTcpSocket>
#include <QUrl>

#include <memory>

struct RecordedRequest {
    QByteArray method;
    QByteArray path;
    QList<std::pair<QByteArray, QByteArray>> headers; // in the order sent
    QByteArray body;

    QByteArray header(const QByteArray& name) const
    {
        for (const auto& [key, value] : headers) {
            if (key.compare(name, Qt::CaseInsensitive) == 0)
                return value;
        }
        return {};
    }

    qsizetype headerIndex(const QByteArray& name) const
    {
        for (qsizetype i = 0; i < headers.size(); ++i) {
            if (headers[i].first.compare(name, Qt::CaseInsensitive) == 0)
                return i;
        }
        return -1;
    }
};

struct LoopbackAnswer {
    enum class Ending {
        whole,        // status, headers and the whole body
        never,        // nothing at all: the client keeps waiting
        stalled,      // status, headers and half the body, then nothing more
        resetMidBody, // status, headers and half the body, then the connection drops
        trickle,      // status, headers, then one byte of the body every 50 ms
    };
    int status = 200;
    QByteArray body;
    Ending ending = Ending::whole;
};

class LoopbackHttpServer : public QObject {
public:
    enum class Scheme { http, https };

    // What every path without an answer of its own gets.
    int status = 200;
    QByteArray body;
    bool answer = true; // false: keep the client waiting
    QHash<QByteArray, LoopbackAnswer> paths;
    QList<RecordedRequest> requests;

    explicit LoopbackHttpServer(Scheme scheme = Scheme::http) : scheme_(scheme)
    {
        if (scheme == Scheme::https) {
            auto tls = std::make_unique<QSslServer>();
            tls->setSslConfiguration(serverConfiguration());
            server_ = std::move(tls);
            trustTestCertificate();
        } else {
            server_ = std::make_unique<QTcpServer>();
        }
        server_->listen(QHostAddress::LocalHost, 0);
        connect(server_.get(), &QTcpServer::pendingConnectionAvailable, this, [this] {
            while (QTcpSocket* socket = server_->nextPendingConnection()) {
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
                connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            }
        });
    }

    QUrl url(const QString& path) const
    {
        return QUrl(QStringLiteral("%1://127.0.0.1:%2%3")
                        .arg(scheme_ == Scheme::https ? "https" : "http")
                        .arg(server_->serverPort())
                        .arg(path));
    }

    quint16 port() const { return server_->serverPort(); }

    // Runs the event loop until `count` requests arrived or patience runs out.
    bool waitForRequests(qsizetype count, int timeoutMs = 30000)
    {
        QDeadlineTimer deadline(timeoutMs);
        while (requests.size() < count && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
        return requests.size() >= count;
    }

    // Gives anything that would still arrive a chance to, then says whether nothing did.
    bool staysQuiet(int forMs = 300)
    {
        const qsizetype before = requests.size();
        QDeadlineTimer deadline(forMs);
        while (!deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        return requests.size() == before;
    }

    // Clients in this process trust the test certificate from now on.
    static void trustTestCertificate()
    {
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        const QSslCertificate certificate = testCertificate();
        if (!configuration.caCertificates().contains(certificate)) {
            configuration.addCaCertificate(certificate);
            QSslConfiguration::setDefaultConfiguration(configuration);
        }
    }

    static QSslCertificate testCertificate()
    {
        return QSslCertificate::fromPath(QStringLiteral(TLS_DIR "/loopback.crt")).value(0);
    }

private:
    static QSslConfiguration serverConfiguration()
    {
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setLocalCertificate(testCertificate());
        QFile key(QStringLiteral(TLS_DIR "/loopback.key"));
        key.open(QIODevice::ReadOnly);
        configuration.setPrivateKey(QSslKey(&key, QSsl::Ec));
        configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
        return configuration;
    }

    void read(QTcpSocket* socket)
    {
        QByteArray& buffer = buffers_[socket];
        buffer += socket->readAll();
        const qsizetype end = buffer.indexOf("\r\n\r\n");
        if (end < 0)
            return;
        RecordedRequest request;
        const QList<QByteArray> lines = buffer.left(end).split('\n');
        const QList<QByteArray> first = lines.value(0).trimmed().split(' ');
        request.method = first.value(0);
        request.path = first.value(1);
        qsizetype length = 0;
        for (qsizetype i = 1; i < lines.size(); ++i) {
            const QByteArray line = lines[i].trimmed();
            const qsizetype colon = line.indexOf(':');
            if (colon < 0)
                continue;
            request.headers.append({line.left(colon).trimmed(), line.mid(colon + 1).trimmed()});
            if (request.headers.last().first.compare("Content-Length", Qt::CaseInsensitive) == 0)
                length = request.headers.last().second.toLongLong();
        }
        if (buffer.size() < end + 4 + length)
            return;
        request.body = buffer.mid(end + 4, length);
        buffers_.remove(socket);
        requests.append(request);
        respond(socket, paths.value(request.path, LoopbackAnswer{status, body,
                                                                 answer ? LoopbackAnswer::Ending::whole
                                                                        : LoopbackAnswer::Ending::never}));
    }

    static void respond(QTcpSocket* socket, const LoopbackAnswer& reply)
    {
        using Ending = LoopbackAnswer::Ending;
        if (reply.ending == Ending::never)
            return;
        const QByteArray head = QByteArray("HTTP/1.1 ") + QByteArray::number(reply.status)
            + " Answer\r\nContent-Length: " + QByteArray::number(reply.body.size()) + "\r\nConnection: close\r\n\r\n";
        if (reply.ending == Ending::whole) {
            socket->write(head + reply.body);
            return;
        }
        if (reply.ending == Ending::trickle) {
            socket->write(head);
            auto* drip = new QTimer(socket);
            QObject::connect(drip, &QTimer::timeout, socket, [socket, body = reply.body, sent = qsizetype(0)]() mutable {
                if (sent < body.size())
                    socket->write(body.mid(sent++, 1));
            });
            drip->start(50);
            return;
        }
        socket->write(head + reply.body.left(reply.body.size() / 2));
        socket->flush();
        if (reply.ending == Ending::resetMidBody)
            socket->abort();
    }

    Scheme scheme_;
    std::unique_ptr<QTcpServer> server_;
    QHash<QTcpSocket*, QByteArray> buffers_;
};
