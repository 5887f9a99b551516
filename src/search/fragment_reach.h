// The reach of a fragment and its array indices.
#pragma once

#include <algorithm>
#include <cstddef>

/// Longest reach of a fragment on either side of its centre.
inline constexpr int kMaxHalfWidth = 3;

/// Residues of a fragment on either side of its centre.
constexpr int fragmentHalfWidth(int alignLength) {
  return std::clamp((alignLength - 1) / 2, 1, kMaxHalfWidth);
}

/// Array index of an entry, a position or a rank; `i` must not be negative.
constexpr std::size_t toIndex(int i) {
  return static_cast<std::size_t>(i);
}
