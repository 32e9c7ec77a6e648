#include "search/graphemecoder.h"

#include <QTextBoundaryFinder>

namespace {

constexpr char32_t kFirstClusterCode = 0x80000000;

bool isPlainAscii(const QString& text)
{
    for (const QChar c : text) {
        // CR LF is one cluster; everything else ASCII is one cluster per character.
        if (c.unicode() >= 0x80 || c == u'\r')
            return false;
    }
    return true;
}

} // namespace

template <typename Lookup>
void GraphemeCoder::encodeWith(const QString& text, std::vector<char32_t>& out, Lookup lookup)
{
    if (isPlainAscii(text)) {
        for (const QChar c : text) {
            const char16_t u = c.unicode();
            out.push_back(u >= u'A' && u <= u'Z' ? char32_t(u + 32) : char32_t(u));
        }
        return;
    }
    const QString folded = text.toLower().normalized(QString::NormalizationForm_C);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, folded);
    qsizetype start = 0;
    for (qsizetype end = finder.toNextBoundary(); end != -1 && end > start; end = finder.toNextBoundary()) {
        const QStringView cluster = QStringView(folded).mid(start, end - start);
        const bool singleScalar = cluster.size() == 1 || (cluster.size() == 2 && cluster[0].isHighSurrogate());
        if (singleScalar)
            out.push_back(cluster.size() == 1 ? char32_t(cluster[0].unicode())
                                              : char32_t(QChar::surrogateToUcs4(cluster[0], cluster[1])));
        else
            out.push_back(lookup(cluster.toString()));
        start = end;
    }
}

void GraphemeCoder::encode(const QString& text, std::vector<char32_t>& out)
{
    encodeWith(text, out, [this](const QString& cluster) {
        auto it = clusters_.constFind(cluster);
        if (it == clusters_.constEnd())
            it = clusters_.insert(cluster, kFirstClusterCode + char32_t(clusters_.size()));
        return *it;
    });
}

void GraphemeCoder::encodeQuery(const QString& text, std::vector<char32_t>& out) const
{
    encodeWith(text, out, [this](const QString& cluster) { return clusters_.value(cluster, kNoCharacter); });
}
