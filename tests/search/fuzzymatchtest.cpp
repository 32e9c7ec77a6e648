#include "search/fuzzymatch.h"

#include <gtest/gtest.h>

namespace {

struct MatchCase {
    const char* query;
    const char* text;
    std::optional<int> score;
};

class FuzzyMatch : public testing::TestWithParam<MatchCase> {};

TEST_P(FuzzyMatch, Scores)
{
    const MatchCase& c = GetParam();
    EXPECT_EQ(fuzzyMatch(QString::fromUtf8(c.query), QString::fromUtf8(c.text)), c.score)
        << c.query << " / " << c.text;
}

INSTANTIATE_TEST_SUITE_P(WorkedExamples, FuzzyMatch, testing::Values(
    MatchCase{"sa", "save as…", 29},
    MatchCase{"cop", "copy", 37},
    MatchCase{"nt", "new tab", 29},
    MatchCase{"new tab", "new tab", 85},
    MatchCase{"fo", "open", std::nullopt}));

INSTANTIATE_TEST_SUITE_P(EdgeCases, FuzzyMatch, testing::Values(
    MatchCase{"", "anything", 0},
    MatchCase{"", "", 0},
    MatchCase{"a", "", std::nullopt},
    MatchCase{"ypoc", "copy", std::nullopt},           // order matters
    MatchCase{"COPY", "copy", 20 + 9 + 8 + 7},
    MatchCase{"copy", "COPY", 44},                     // case does not matter
    MatchCase{"fo", "File → Open", 20 + 1 + 8},        // boundary after the arrow
    MatchCase{"o", "a>o", 1 + 8 + 3},
    MatchCase{"o", "a-o", 12},
    MatchCase{"o", "a/o", 12},
    MatchCase{"o", "abco", 1},                         // no bonus after position 2
    MatchCase{"ss", "s s", 20 + 1 + 8 + 3},            // a space in the query is just a character
    MatchCase{"s s", "ss", std::nullopt},
    MatchCase{"aa", "a-aa", 20 + 1 + 8 + 3},           // greedy: the first a after the first
    MatchCase{"é", "cafe\u0301", 1},                   // canonically equivalent spellings
    MatchCase{"e\u0301", "café", 1},
    MatchCase{"É", "café", 1},
    MatchCase{"e", "café", std::nullopt},              // é is one character, not e plus an accent
    MatchCase{"🇩🇪", "flag 🇩🇪", 1 + 8},                 // a flag is one character
    MatchCase{"ß", "straße", 1}));

} // namespace
