#include "update/versioncomparison.h"

#include <limits>

namespace {

// Optional single sign, then one or more ASCII digits, within 64 bits; else 0.
qint64 strictDecimal(QStringView piece)
{
    bool negative = false;
    if (!piece.isEmpty() && (piece.front() == u'+' || piece.front() == u'-')) {
        negative = piece.front() == u'-';
        piece = piece.mid(1);
    }
    if (piece.isEmpty())
        return 0;
    // Magnitude limit: one more for negatives, so the minimum parses.
    const quint64 limit = quint64(std::numeric_limits<qint64>::max()) + (negative ? 1 : 0);
    quint64 magnitude = 0;
    for (const QChar c : piece) {
        if (c < u'0' || c > u'9')
            return 0;
        const quint64 digit = c.unicode() - u'0';
        if (magnitude > (limit - digit) / 10)
            return 0;
        magnitude = magnitude * 10 + digit;
    }
    if (!negative)
        return qint64(magnitude);
    return magnitude == limit ? std::numeric_limits<qint64>::min() : -qint64(magnitude);
}

} // namespace

QList<qint64> versionComponents(const QString& version)
{
    QList<qint64> components;
    for (QStringView piece : QStringView(version).split(u'.', Qt::SkipEmptyParts))
        components.append(strictDecimal(piece));
    return components;
}

bool isNewerVersion(const QString& candidate, const QString& current)
{
    const QList<qint64> a = versionComponents(candidate);
    const QList<qint64> b = versionComponents(current);
    const qsizetype n = std::max(a.size(), b.size());
    for (qsizetype i = 0; i < n; ++i) {
        const qint64 x = a.value(i, 0);
        const qint64 y = b.value(i, 0);
        if (x != y)
            return x > y;
    }
    return false;
}
