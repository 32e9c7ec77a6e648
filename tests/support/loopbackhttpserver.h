#pragma once

// An HTTP server on 127.0.0.1 that records every request exactly as it came
// (header order included, which a parsed-header server would lose) and answers
// with an empty response of the chosen status.

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTcpServer>
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

class LoopbackHttpServer : public QObject {
public:
    int status = 200;
    QByteArray body;     // sent with every answer
    bool answer = true;  // false: keep the client waiting
    QList<RecordedRequest> requests;

    LoopbackHttpServer()
    {
        server_.listen(QHostAddress::LocalHost, 0);
        connect(&server_, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = server_.nextPendingConnection()) {
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
                connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            }
        });
    }

    QUrl url(const QString& path) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(server_.serverPort()).arg(path));
    }

    quint16 port() const { return server_.serverPort(); }

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

private:
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
        if (answer)
            socket->write(QByteArray("HTTP/1.1 ") + QByteArray::number(status) + " Answer\r\nContent-Length: "
                          + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
    }

    QTcpServer server_;
    QHash<QTcpSocket*, QByteArray> buffers_;
};
