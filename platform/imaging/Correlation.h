#pragma once

#include <span>
#include <vector>

/// Correlation coefficients of two rows of numbers of one length. Any thread.
namespace Correlation
{

/// Pearson's: -1..1; 0 where a row is flat.
[[nodiscard]] double ofValues(std::span<const float> first, std::span<const float> second);

/// Spearman's: that of the ranks. A change of tone that keeps lighter lighter does not change it.
[[nodiscard]] double ofRanks(std::span<const float> first, std::span<const float> second);

/// The ranks themselves, 0 for the least, equal values sharing their mean rank. Values count as
/// equal in each of 4096 equal steps of the range of all: of pictures' values, a sixteenth of a
/// step of 8 bits.
[[nodiscard]] std::vector<float> ranksOf(std::span<const float> values);

} // namespace Correlation
