#include "search/fuzzymatch.h"

#include "search/graphemecoder.h"

namespace {

bool isBoundary(char32_t c)
{
    return c == U' ' || c == U'>' || c == U'→' || c == U'-' || c == U'/';
}

} // namespace

int fuzzyScore(const char32_t* query, size_t queryLength, const char32_t* text, size_t textLength)
{
    if (queryLength == 0)
        return 0;
    int score = 0;
    int streak = 0;
    size_t q = 0;
    size_t previousMatch = size_t(-2); // no previous query character yet
    for (size_t i = 0; i < textLength; ++i) {
        if (text[i] != query[q])
            continue;
        score += FuzzyScore::perMatch;
        if (previousMatch + 1 == i) {
            streak += FuzzyScore::streakStep;
            score += streak;
        } else {
            streak = 0;
        }
        if (i == 0)
            score += FuzzyScore::startBonus;
        else if (isBoundary(text[i - 1]))
            score += FuzzyScore::boundaryBonus;
        if (i <= 2)
            score += FuzzyScore::positionBonusBase * (3 - int(i));
        previousMatch = i;
        if (++q == queryLength)
            return score;
    }
    return -1;
}

std::optional<int> fuzzyMatch(const QString& query, const QString& text)
{
    GraphemeCoder coder;
    std::vector<char32_t> t, q;
    coder.encode(text, t);
    coder.encodeQuery(query, q);
    const int score = fuzzyScore(q.data(), q.size(), t.data(), t.size());
    if (score < 0)
        return std::nullopt;
    return score;
}
