#pragma once

#include <QHash>
#include <QString>

#include <vector>

// Turns texts into one number per user-perceived character (grapheme
// cluster), lower-cased and in canonical composed form, so that matching is
// integer comparison. A cluster of one scalar is that scalar; longer clusters
// get numbers of their own, the same for canonically equivalent spellings.
class GraphemeCoder {
public:
    // A number no text character ever has.
    static constexpr char32_t kNoCharacter = 0xFFFFFFFF;

    // Appends the codes of `text`, numbering clusters not seen before.
    void encode(const QString& text, std::vector<char32_t>& out);
    // The same without numbering anything new: unknown clusters become kNoCharacter.
    void encodeQuery(const QString& text, std::vector<char32_t>& out) const;

private:
    template <typename Lookup>
    static void encodeWith(const QString& text, std::vector<char32_t>& out, Lookup lookup);

    QHash<QString, char32_t> clusters_;
};
