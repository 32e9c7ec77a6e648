#pragma once

#include <QString>
#include <QUrl>

#include <optional>

// A crash-report project's address: https://PUBLIC_KEY@HOST/PROJECT_ID.
struct SentryDsn {
    QString publicKey;
    QString projectId;
    QUrl envelopeUrl; // where reports are posted

    static std::optional<SentryDsn> parse(const QString& dsn);
};
