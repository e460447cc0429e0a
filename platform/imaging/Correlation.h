#pragma once

#include <span>

/// Correlation coefficients of two rows of numbers of one length. Any thread.
namespace Correlation
{

/// Pearson's: -1..1; 0 where a row is flat.
[[nodiscard]] double ofValues(std::span<const float> first, std::span<const float> second);

/// Spearman's: that of the ranks, equal values sharing their mean rank. A change of tone that keeps
/// lighter lighter does not change it.
[[nodiscard]] double ofRanks(std::span<const float> first, std::span<const float> second);

} // namespace Correlation
