// Walks over ranges of residue numbers.
#pragma once

#include <cstdint>
#include <ranges>

/// The numbers `first` to `last`, both included; counted in 64 bits, so that the walk ends whatever they are.
inline auto residueRange(int first, int last) {
  return std::views::iota(std::int64_t{first}, std::int64_t{last} + 1) |
         std::views::transform([](std::int64_t resid) { return static_cast<int>(resid); });
}

/// The residues of a run: those to predict and those with shifts.
struct ResidueSpan {
  int first, last;
  int shiftFirst, shiftLast;

  /// Outside, or at an end that an option cut off: the residue lacks a neighbour that has shifts.
  bool isCutEnd(int resid) const {
    return resid < first || resid > last || (resid == first && first != shiftFirst) ||
           (resid == last && last != shiftLast);
  }
};
