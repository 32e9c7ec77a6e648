#include "update/versioncomparison.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(VersionComponents, StrictPiecesAndDroppedEmptyOnes)
{
    const qint64 max = std::numeric_limits<qint64>::max();
    const qint64 min = std::numeric_limits<qint64>::min();
    const std::vector<std::pair<QString, QList<qint64>>> table{
        {"1.4.2", {1, 4, 2}},
        {"", {}},
        {"..", {}},
        {"1..2", {1, 2}},
        {".1.2.", {1, 2}},
        {"07.010", {7, 10}},
        {"+3.-1", {3, -1}},
        {"3-beta.v2", {0, 0}},
        {"+.-.+-1.--1", {0, 0, 0, 0}},
        {" 1.2 ", {0, 0}},
        {"1.2.3.4.5.6.7", {1, 2, 3, 4, 5, 6, 7}},
        {"9223372036854775807", {max}},
        {"9223372036854775808", {0}},
        {"-9223372036854775808", {min}},
        {"-9223372036854775809", {0}},
        {"99999999999999999999999", {0}},
        {"١٢", {0}}, // digits of other scripts are not ASCII digits
    };
    for (const auto& [text, components] : table)
        EXPECT_EQ(versionComponents(text), components) << text.toStdString();
}

struct Comparison {
    const char* candidate;
    const char* current;
    bool newer;
};

class IsNewerVersion : public testing::TestWithParam<Comparison> {};

TEST_P(IsNewerVersion, ComparesPieceByPiece)
{
    const Comparison& c = GetParam();
    EXPECT_EQ(isNewerVersion(c.candidate, c.current), c.newer);
}

INSTANTIATE_TEST_SUITE_P(Examples, IsNewerVersion, testing::Values(
    Comparison{"1.2.10", "1.2.9", true},
    Comparison{"1.10", "1.9", true},
    Comparison{"1.2", "1.2.0", false},
    Comparison{"1.2.0", "1.2", false},
    Comparison{"1.2.0.0", "1.2", false},
    Comparison{"2.0", "10.0", false},
    Comparison{"10.0", "2.0", true},
    Comparison{"1.3-beta", "1.2", false},
    Comparison{"v2.0", "1.9", false},
    Comparison{"1..2", "1.1", true},
    Comparison{"", "0", false},
    Comparison{"0.0.1", "", true},
    Comparison{"1.-1", "1.0", false},
    Comparison{"1.0", "1.-1", true},
    Comparison{"1.2.1", "1.2", true},
    Comparison{"1.2", "1.2.1", false}));

} // namespace
