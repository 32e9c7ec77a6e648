#include "telemetry/appinfo.h"

#include "buildconfig.h"
#include "platform/systeminfo.h"

#include <QRegularExpression>
#include <QStringConverter>

QString versionOr(const char* text, const char* fallback)
{
    const QString value = QString::fromUtf8(text).trimmed();
    return value.isEmpty() ? QString::fromUtf8(fallback) : value;
}

QString appVersion()
{
    return versionOr(KESTRIO_VERSION, "0.0.0");
}

QString appBuild()
{
    return versionOr(KESTRIO_BUILD_NUMBER, "0");
}

QString osVersionString(const SystemInfo& system)
{
    // The leading dotted numbers of the release; missing ones are 0.
    static const QRegularExpression leading(QStringLiteral("^(\\d+)(?:\\.(\\d+))?(?:\\.(\\d+))?"));
    const QRegularExpressionMatch match = leading.match(system.osVersion().trimmed());
    QStringList parts;
    for (int i = 1; i <= 3; ++i) {
        const QString piece = match.captured(i);
        parts << QString::number(piece.isEmpty() ? 0 : piece.toULongLong());
    }
    return parts.join(u'.');
}

QString deviceModel(const SystemInfo& system)
{
    QByteArray bytes = system.deviceModel();
    if (const qsizetype nul = bytes.indexOf('\0'); nul >= 0)
        bytes.truncate(nul);
    auto decode = QStringDecoder(QStringDecoder::Utf8);
    return decode(bytes);
}
