// Residue codes as the search reads them, the reach of a fragment and its array indices.
#pragma once

#include <algorithm>
#include <cstddef>

/// Oxidised cysteine and the alternative histidine code count as the common type.
constexpr char foldedCode(char code) {
  if (code == 'c') return 'C';
  if (code == 'h') return 'H';
  return code;
}

/// Alanine and glycine have no chi1, that of proline is bound by its ring.
constexpr bool hasChi1Rotamers(char code) {
  return code != 'A' && code != 'G' && code != 'P';
}

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
