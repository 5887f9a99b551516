// Walks over ranges of residue numbers.
#pragma once

#include <cstdint>
#include <ranges>

/// The numbers `first` to `last`, both included; counted in 64 bits, so that the walk ends whatever they are.
inline auto residueRange(int first, int last) {
  return std::views::iota(std::int64_t{first}, std::int64_t{last} + 1) |
         std::views::transform([](std::int64_t resid) { return static_cast<int>(resid); });
}
