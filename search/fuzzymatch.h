#pragma once

#include <QString>

#include <cstddef>
#include <optional>

// Scoring of a fuzzy subsequence match.
namespace FuzzyScore {
inline constexpr int perMatch = 1;
inline constexpr int streakStep = 2;
inline constexpr int startBonus = 10;
inline constexpr int boundaryBonus = 8;
inline constexpr int positionBonusBase = 3; // 3 × (3 − position) for positions 0…2
} // namespace FuzzyScore

// How well `query` matches `text` as a subsequence of characters, ignoring
// case; nothing when some query character is missing or out of order.
std::optional<int> fuzzyMatch(const QString& query, const QString& text);

// The same on texts already encoded by GraphemeCoder; −1 for no match.
int fuzzyScore(const char32_t* query, size_t queryLength, const char32_t* text, size_t textLength);
