#include "telemetry/sentrydsn.h"

std::optional<SentryDsn> SentryDsn::parse(const QString& dsn)
{
    const QUrl url(dsn, QUrl::StrictMode);
    const QString project = url.path().section(u'/', -1);
    bool numeric = false;
    project.toULongLong(&numeric);
    if (!url.isValid() || url.userName().isEmpty() || url.host().isEmpty() || !numeric)
        return std::nullopt;
    QUrl envelope;
    envelope.setScheme(url.scheme());
    envelope.setHost(url.host());
    envelope.setPort(url.port());
    // A DSN may carry a path prefix before the project id.
    const QString prefix = url.path().section(u'/', 0, -2);
    envelope.setPath(prefix + QStringLiteral("/api/") + project + QStringLiteral("/envelope/"));
    return SentryDsn{url.userName(), project, envelope};
}
