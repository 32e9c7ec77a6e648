#include "platform/linux/tarupdatepackaging.h"

#include <QCoreApplication>
#include <QDir>
#include <QStringDecoder>

namespace {

// A name as tar's "c" quoting writes it: in double quotes, with C's escapes
// and every other byte as octal. `at` moves past it; the bytes, or nothing.
std::optional<QByteArray> readQuoted(const QByteArray& line, qsizetype& at)
{
    if (at >= line.size() || line[at] != '"')
        return std::nullopt;
    QByteArray out;
    for (++at; at < line.size(); ++at) {
        const char c = line[at];
        if (c == '"') {
            ++at;
            return out;
        }
        if (c != '\\') {
            out += c;
            continue;
        }
        if (++at >= line.size())
            return std::nullopt;
        const char e = line[at];
        if (e >= '0' && e <= '7') {
            int value = 0;
            for (int digits = 0; digits < 3 && at < line.size() && line[at] >= '0' && line[at] <= '7'; ++digits, ++at)
                value = value * 8 + (line[at] - '0');
            --at;
            if (value > 0xff)
                return std::nullopt;
            out += char(value);
            continue;
        }
        static const QByteArray from = "abfnrtv\\\"'?", to = "\a\b\f\n\r\t\v\\\"'?";
        const qsizetype which = from.indexOf(e);
        if (which < 0)
            return std::nullopt;
        out += to[which];
    }
    return std::nullopt; // no closing quote
}

std::optional<QString> utf8(const QByteArray& bytes)
{
    auto decode = QStringDecoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decode(bytes);
    if (decode.hasError() || text.contains(QChar(0)))
        return std::nullopt;
    return text;
}

} // namespace

QStringList TarUpdatePackaging::listArguments(const QString& archive) const
{
    // A line per member with its type and a link's target, each name quoted
    // exactly as stored (tar would otherwise shorten unsafe names); numeric
    // owners, so that nothing before the name holds a quote.
    return {QStringLiteral("--list"),           QStringLiteral("--verbose"),         QStringLiteral("--numeric-owner"),
            QStringLiteral("--gzip"),           QStringLiteral("--quoting-style=c"), QStringLiteral("--absolute-names"),
            QStringLiteral("--file"),           archive};
}

std::optional<QList<ArchiveMember>> TarUpdatePackaging::readListing(const QByteArray& listing) const
{
    // "lrwxrwxrwx 0/0  0 2026-11-25 06:01 "Kestrio.app/d/up" -> "..""
    QList<ArchiveMember> members;
    for (const QByteArray& line : listing.split('\n')) {
        if (line.isEmpty())
            continue;
        ArchiveMember member;
        switch (line[0]) {
        case '-': member.kind = ArchiveMember::Kind::file; break;
        case 'd': member.kind = ArchiveMember::Kind::folder; break;
        case 'l': member.kind = ArchiveMember::Kind::link; break;
        case 'h': member.kind = ArchiveMember::Kind::hardLink; break;
        default: member.kind = ArchiveMember::Kind::other; break;
        }
        qsizetype at = line.indexOf('"');
        const std::optional<QByteArray> name = at > 0 ? readQuoted(line, at) : std::nullopt;
        const std::optional<QString> text = name ? utf8(*name) : std::nullopt;
        if (!text)
            return std::nullopt;
        member.name = *text;
        const QByteArray rest = line.mid(at);
        if (member.kind == ArchiveMember::Kind::link || member.kind == ArchiveMember::Kind::hardLink) {
            const QByteArray lead = member.kind == ArchiveMember::Kind::link ? " -> " : " link to ";
            qsizetype targetAt = lead.size();
            const std::optional<QByteArray> target = rest.startsWith(lead) ? readQuoted(rest, targetAt) : std::nullopt;
            const std::optional<QString> targetText = target ? utf8(*target) : std::nullopt;
            if (!targetText || targetAt != rest.size())
                return std::nullopt;
            member.target = *targetText;
        } else if (!rest.isEmpty()) {
            return std::nullopt;
        }
        members.append(member);
    }
    return members;
}

QStringList TarUpdatePackaging::unpackArguments(const QString& archive, const QString& folder) const
{
    // The user's own files with the user's own permissions, even for root.
    return {QStringLiteral("--extract"),          QStringLiteral("--gzip"),
            QStringLiteral("--no-same-owner"),    QStringLiteral("--no-same-permissions"),
            QStringLiteral("--no-overwrite-dir"), QStringLiteral("--file"),
            archive,                              QStringLiteral("--directory"),
            folder};
}

std::optional<QString> TarUpdatePackaging::installedBundle() const
{
    // The prefix that holds bin/kestrio.
    QDir bin(QCoreApplication::applicationDirPath());
    if (bin.dirName() != QLatin1String("bin") || !bin.cdUp())
        return std::nullopt;
    return bin.absolutePath();
}
